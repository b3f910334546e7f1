// Buttons: a box with a caption, which is shortened to the width of the box.

#include "ravolt/RVBUTTON.h"

#include "foundation/registry.h"
#include "foundation/text.h"
#include "ravolt/RVFONT.h"
#include "ravolt/RVOPENGL.h"

#include <cstring>

RVBUTTON::RVBUTTON() : eventType(RV_BUTTON_NORMAL) {
    initType(RV_NODE_TYPE_BUTTON);
    ravolt::formatText(caption, "[button %d]", getId());
    setColor(0.8f, 0.3f, 0.0f, 0.9f);
    setCheckStatus(true);
}

RVBUTTON::RVBUTTON(const RVBUTTON &other) : RVBOX(other), eventType(other.eventType) {
    font.set(other.font.get());
    ravolt::copyText(caption, other.caption);
    setDynamicClass(RV_NODE_TYPE_BUTTON);
}

RVBUTTON &RVBUTTON::operator=(const RVBUTTON &other) {
    RVBOX::operator=(other);
    font.set(other.font.get());
    ravolt::copyText(caption, other.caption);
    eventType = other.eventType;
    return *this;
}

void RVBUTTON::setCaption(const char *text) {
    if (text && std::strlen(text) < sizeof caption)
        ravolt::copyText(caption, text);
}

void RVBUTTON::setFont(RVFONT *newFont) { font.set(newFont); }

bool RVBUTTON::render(void *element) {
    if (!getDisplayStatus())
        return true;
    RVBOX::render(element);
    // The box has disabled it, but its rectangle is still valid.
    if (getScissorStatus())
        RVOPENGL::scissorOn();
    drawCaption();
    if (getScissorStatus())
        RVOPENGL::scissorOff();
    return true;
}

void RVBUTTON::drawCaption() const {
    if (!font || !caption[0])
        return;
    constexpr const char *ellipsis = "[...]";
    const auto width = static_cast<unsigned int>(getSizeX());
    if (font->stringLength(caption) < width)
        drawText(captionOffset(), captionOffset(), caption);
    else if (font->stringLength(ellipsis) < width)
        drawText(captionOffset(), captionOffset(), ellipsis);
}

void RVBUTTON::drawText(int x, int y, const char *stored) const {
    constexpr std::size_t longest = 3968; // a window's
    char expanded[longest];
    if (!font || std::strlen(stored) >= sizeof expanded)
        return;
    ravolt::applyFormat(expanded, stored);
    font->putText(x, y, expanded);
}
