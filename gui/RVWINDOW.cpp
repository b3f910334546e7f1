// Windows: their title bar and scroll bar, the layout of their content, and its clipping by the
// scissor.

#include "ravolt/RVWINDOW.h"

#include "foundation/registry.h"
#include "foundation/text.h"
#include "gui/boxNodes.h"
#include "ravolt/RVFONT.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVSETTINGS.h"
#include "ravolt/RVVSCROLLBAR.h"
#include "ravolt/zlf.h"

#include <algorithm>
#include <cstdarg>
#include <cstring>
#include <new>

using ravolt::truncated;

namespace {

constexpr unsigned int firstContent = 2; // children before are the title bar and the scroll bar
constexpr int titleHeight = 19;
constexpr int barWidth = 8, barMargin = 16; // of the scroll bar, from the right, above and below
constexpr int minCursorSize = 8;
constexpr int labelHeight = 16; // a line of text
constexpr std::size_t markLength = 4;

} // namespace

RVWINDOW::RVWINDOW()
    : maximized(true), text(), formattedText(), scrollLine(0), lastScrollLine(0), contentHeight(0),
      textHeight(0), captionMarked(false) {
    initType(RV_NODE_TYPE_WINDOW);
    setCheckStatus(true);
    setStaticStatus(false);
    RVBOX::setSizes(128, 128);
    setPosition(0.0f, static_cast<float>(titleHeight));
    setColor(0.0f, 0.0f, 0.6f, 0.9f);
    setThickness(2);
    caption[0] = '\0';
    createTitleBar();
    createScrollBar();
}

void RVWINDOW::createTitleBar() {
    auto *const bar = new (std::nothrow) RVBUTTON;
    if (!bar) {
        zlfLog("   [!] Out of memory for the title bar @ RVWINDOW::RVWINDOW\n");
        return;
    }
    titleBar.set(bar);
    bar->setStaticStatus(false);
    bar->setScissorStatus(false);
    bar->setSizes(128, titleHeight);
    bar->setPosition(0.0f, static_cast<float>(-titleHeight));
    bar->setColor(0.8f, 0.3f, 0.0f, 0.9f);
    bar->setEventType(RV_BUTTON_TITLEBAR);
    bar->link(this);
}

void RVWINDOW::createScrollBar() {
    auto *const bar = new (std::nothrow) RVVSCROLLBAR;
    if (!bar) {
        zlfLog("   [!] Out of memory for the scroll bar @ RVWINDOW::RVWINDOW\n");
        return;
    }
    scrollBar.set(bar);
    bar->setPosition(120.0f, static_cast<float>(barMargin));
    bar->setSizeY(96);
    bar->setValue(0.0f);
    bar->link(this);
}

RVWINDOW::RVWINDOW(const RVWINDOW &other) : RVBUTTON(other) {
    copyFields(other);
    setDynamicClass(RV_NODE_TYPE_WINDOW);
}

RVWINDOW &RVWINDOW::operator=(const RVWINDOW &other) {
    RVBUTTON::operator=(other);
    if (this != &other)
        copyFields(other);
    return *this;
}

void RVWINDOW::copyFields(const RVWINDOW &other) {
    maximized = other.maximized;
    ravolt::copyText(text, other.text);
    ravolt::copyText(formattedText, other.formattedText);
    titleBar.set(other.titleBar.get());
    scrollBar.set(other.scrollBar.get());
    scrollLine = other.scrollLine;
    lastScrollLine = other.lastScrollLine;
    contentHeight = other.contentHeight;
    textHeight = other.textHeight;
    captionMarked = other.captionMarked;
}

RVBUTTON *RVWINDOW::getTitleBar() const { return static_cast<RVBUTTON *>(titleBar.get()); }
RVVSCROLLBAR *RVWINDOW::getScrollBar() const {
    return static_cast<RVVSCROLLBAR *>(scrollBar.get());
}

bool RVWINDOW::write(const char *format, ...) {
    if (!format) {
        zlfLog("   [!] Invalid params @ RVWINDOW::write\n");
        return false;
    }
    char added[textSize];
    va_list arguments;
    va_start(arguments, format);
    const int length = ravolt::formatArguments(added, sizeof added, format, arguments);
    va_end(arguments);
    const std::size_t present = std::strlen(text);
    if (length < 0 || present + static_cast<std::size_t>(length) >= textSize) {
        zlfLog("   [!] Text overflow @ RVWINDOW::write\n");
        return false;
    }
    ravolt::copyText(text + present, textSize - present, added);
    return true;
}

bool RVWINDOW::format() {
    if (!font)
        return false;
    textHeight = font->formatInto(text, formattedText, sizeof formattedText,
                                  static_cast<unsigned int>(getSizeX()));
    return true;
}

void RVWINDOW::clear() {
    text[0] = '\0';
    textHeight = 0;
}

void RVWINDOW::setCaption(const char *newCaption) {
    if (RVBUTTON *bar = getTitleBar())
        bar->setCaption(newCaption);
}

void RVWINDOW::setFont(RVFONT *newFont) {
    if (RVBUTTON *bar = getTitleBar())
        bar->setFont(newFont);
    RVBUTTON::setFont(newFont);
}

void RVWINDOW::setSizes(int width, int height) {
    if (RVBUTTON *bar = getTitleBar())
        bar->setSizeX(width);
    if (RVVSCROLLBAR *bar = getScrollBar()) {
        bar->setSizeY(truncated(double(height) - 2 * barMargin));
        bar->setPosition(static_cast<float>(double(width) - barWidth),
                         static_cast<float>(barMargin));
        bar->setValue(0.0f);
    }
    RVBOX::setSizes(width, height);
}

// The origin of the interface is at the top left, OpenGL's at the bottom left.
void RVWINDOW::enableScissor() {
    const Z3MVECTOR2D parents = ravolt::parentsPosition(*this);
    RVOPENGL::scissorOn();
    GLint viewport[4] = {};
    glGetIntegerv(GL_VIEWPORT, viewport);
    const int x = truncated(parents.x + getPosition().x);
    const int y = truncated(parents.y + getPosition().y);
    glPushMatrix();
    glLoadIdentity();
    if (RVSETTINGS::isSDLLandscape())
        glScissor(y, x, getSizeY(), getSizeX());
    else
        glScissor(x, truncated(double(viewport[3]) - y - getSizeY()), getSizeX(), getSizeY());
    glPopMatrix();
}

void RVWINDOW::disableScissor() {
    const int width = RVSETTINGS::getSDLWindowX(), height = RVSETTINGS::getSDLWindowY();
    if (RVSETTINGS::isSDLLandscape())
        glScissor(0, 0, height, width);
    else
        glScissor(0, 0, width, height);
    RVOPENGL::scissorOff();
}

bool RVWINDOW::minmaximize() {
    maximized = !maximized;
    RVBUTTON *const bar = getTitleBar();
    if (!bar)
        return maximized;
    const std::size_t length = std::strlen(bar->getCaption());
    if (maximized) {
        if (captionMarked && length >= markLength)
            bar->setCaption(bar->getCaption() + markLength);
        return maximized;
    }
    char marked[ravolt::textSize];
    captionMarked = length + markLength < sizeof marked;
    if (captionMarked) {
        ravolt::formatText(marked, "[+] %s", bar->getCaption());
        bar->setCaption(marked);
    }
    return maximized;
}

template <class Action> void RVWINDOW::forEachContent(const Action &action) {
    for (unsigned int index = firstContent; index < getNumberOfChildren(); ++index)
        if (RVNODE *child = getChild(index); child && !ravolt::asWindow(child))
            action(*child);
}

bool RVWINDOW::updateScroll() {
    contentHeight = textHeight;
    measureChildren();
    showScrollBar();
    if (const int delta = truncated(double(lastScrollLine) - scrollLine); delta != 0)
        moveChildren(delta);
    return true;
}

// The positions of the children have the scroll offset applied already. On purpose: with a
// hundredth of it on top, and with the new offset in the test of a label.
void RVWINDOW::measureChildren() {
    forEachContent([this](RVNODE &child) {
        RVBOX *const box = ravolt::asBox(&child);
        if (!box)
            return;
        const float y = box->getPosition().y;
        const auto last = static_cast<float>(lastScrollLine);
        const double rest = lastScrollLine * 0.01;
        if (box->getType() == RV_NODE_TYPE_LABEL) {
            if (static_cast<float>(contentHeight) <
                y + labelHeight + static_cast<float>(scrollLine))
                contentHeight = truncated(y + labelHeight + last + rest);
        } else if (static_cast<long long>(truncated(y)) + box->getSizeY() + lastScrollLine >
                   contentHeight) {
            contentHeight = truncated(static_cast<float>(box->getSizeY()) + y + last + rest);
        }
    });
}

void RVWINDOW::showScrollBar() {
    RVVSCROLLBAR *const bar = getScrollBar();
    const bool scrolls = contentHeight > getSizeY();
    if (bar)
        bar->setDisplayStatus(scrolls);
    if (!scrolls) {
        scrollLine = 0;
        return;
    }
    const float visible = static_cast<float>(getSizeY()) / static_cast<float>(contentHeight);
    const float length = visible * (static_cast<float>(getSizeY()) - 2 * barMargin);
    if (bar)
        bar->setCursorSize(std::max(truncated(length), minCursorSize));
}

void RVWINDOW::moveChildren(int delta) {
    forEachContent([delta](RVNODE &child) { child.move(0.0f, static_cast<float>(delta)); });
}

bool RVWINDOW::render(void *element) {
    if (!getDisplayStatus() || !maximized)
        return true;
    if (RVVSCROLLBAR *bar = getScrollBar())
        scrollLine =
            truncated(bar->getValue() * static_cast<float>(double(contentHeight) - getSizeY()));
    updateScroll();
    RVBUTTON::render(element);
    if (getScissorStatus())
        RVOPENGL::scissorOn();
    const int offset = isClicked() ? 1 : 0;
    drawText(offset, truncated(double(offset) - lastScrollLine), formattedText);
    lastScrollLine = scrollLine;
    if (getScissorStatus())
        RVOPENGL::scissorOff();
    return true;
}
