// Labels: a text that is broken into lines of the label's width.

#include "ravolt/RVLABEL.h"

#include "foundation/registry.h"
#include "foundation/text.h"
#include "gui/boxNodes.h"
#include "ravolt/RVELEMENT.h"
#include "ravolt/RVFONT.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/zlf.h"

#include <cstdarg>

RVLABEL::RVLABEL() : text() {
    initType(RV_NODE_TYPE_LABEL);
    zlfLog("   RVLABEL() called\n");
}

RVLABEL::~RVLABEL() { zlfLog("   ~RVLABEL() called\n"); }

RVLABEL::RVLABEL(const RVLABEL &other) : RVBOX(other) {
    ravolt::copyText(text, other.text);
    font.set(other.font.get());
    setDynamicClass(RV_NODE_TYPE_LABEL);
}

RVLABEL &RVLABEL::operator=(const RVLABEL &other) {
    RVBOX::operator=(other);
    ravolt::copyText(text, other.text);
    font.set(other.font.get());
    return *this;
}

void RVLABEL::setFont(RVFONT *newFont) { font.set(newFont); }

// The limit of the width is so large that only the line breaks of the text itself count.
bool RVLABEL::write(const char *format, ...) {
    if (!format) {
        zlfLog("   [!] Invalid params @ RVLABEL::write\n");
        return false;
    }
    if (!font) {
        zlfLog("   [!] Font not specified @ RVLABEL::write\n");
        return false;
    }
    constexpr std::size_t bufferSize = 512;
    constexpr unsigned int maxWidth = 65000;
    char formatted[bufferSize];
    va_list arguments;
    va_start(arguments, format);
    const int length = ravolt::formatArguments(formatted, sizeof formatted, format, arguments);
    va_end(arguments);
    if (length < 0) { // characters that cannot be encoded
        zlfLog("   [!] Invalid params @ RVLABEL::write\n");
        return false;
    }
    font->formatInto(formatted, text, sizeof text, maxWidth);
    return true;
}

// On purpose: without a window around it nothing is cut, and the display status does not count.
bool RVLABEL::render(void *element) {
    if (element)
        glLoadMatrixf(static_cast<const RVELEMENT *>(element)->getMatrix()->e);
    if (getScissorStatus())
        if (RVBOX *window = ravolt::findWindow(*this))
            ravolt::enableWindowScissor(*window);
    if (font) {
        char expanded[sizeof text];
        ravolt::applyFormat(expanded, text);
        font->putText(0, 0, expanded);
    }
    if (getScissorStatus())
        RVOPENGL::scissorOff();
    return true;
}
