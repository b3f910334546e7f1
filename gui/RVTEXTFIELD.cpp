// Text fields: editing the caption, and drawing it with the cursor.

#include "ravolt/RVTEXTFIELD.h"

#include "foundation/registry.h"
#include "foundation/text.h"
#include "gui/pixels.h"
#include "ravolt/RAVOLT.h"
#include "ravolt/RVFONT.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVTEXTURE.h"

#include <cstring>
#include <initializer_list>

namespace {

constexpr char backspace = 8;
constexpr char cursorGlyph = 0x7f;
constexpr float cursorOffPhase = 0.3f;

} // namespace

RVTEXTFIELD::RVTEXTFIELD() : hasFocus(false), cursorPhase(0.0f) {
    initType(RV_NODE_TYPE_TEXTFIELD);
    setThickness(1);
    setCheckStatus(true);
}

RVTEXTFIELD::RVTEXTFIELD(const RVTEXTFIELD &other)
    : RVBUTTON(other), hasFocus(other.hasFocus), cursorPhase(other.cursorPhase) {
    setDynamicClass(RV_NODE_TYPE_TEXTFIELD);
}

bool RVTEXTFIELD::manageKey(char key) {
    if (!font)
        return false;
    hasFocus = true;
    const auto byte = static_cast<unsigned char>(key);
    if (byte >= 0x20 && byte <= 0x7f)
        append(key);
    else if (key == backspace && caption[0])
        caption[std::strlen(caption) - 1] = '\0';
    return true;
}

// On purpose: the correction of the new character is added, and its width does not count.
void RVTEXTFIELD::append(char key) {
    const std::size_t length = std::strlen(caption);
    const auto correction =
        static_cast<unsigned int>(static_cast<signed char>(font->getKerning(key)));
    const unsigned int room = static_cast<unsigned int>(getSizeX()) - font->getCharSizeX();
    if (font->stringLength(caption) + correction > room || length >= sizeof caption - 1)
        return;
    caption[length] = key;
    caption[length + 1] = '\0';
}

// On purpose: the display status counts for the button alone.
bool RVTEXTFIELD::render(void *element) {
    RVBUTTON::render(element);
    drawContents();
    if (getThickness() != 0)
        drawFrame();
    return true;
}

// The caption once more, with the cursor.
void RVTEXTFIELD::drawContents() {
    char text[sizeof caption + 1];
    ravolt::copyText(text, caption);
    if (hasFocus) {
        if (cursorPhase > cursorOffPhase) {
            const std::size_t length = std::strlen(text);
            text[length] = cursorGlyph;
            text[length + 1] = '\0';
        }
        cursorPhase += RAVOLT::getFPSfactor();
        if (cursorPhase >= 1.0f)
            cursorPhase = 0.0f;
        hasFocus = false;
    }
    if (font &&
        font->stringLength(caption) < static_cast<unsigned int>(getSizeX()) - font->getCharSizeX())
        drawText(captionOffset(), captionOffset(), text);
}

// The opposite of the border of a box, so that the field appears sunken.
void RVTEXTFIELD::drawFrame() const {
    RVTEXTURE::texturingOff(RV_TEXTURE_UNITS);
    RVOPENGL::blendingOn();
    const float rim = static_cast<float>(getThickness());
    const ravolt::Pixels border = 2 * ravolt::Pixels{getThickness()};
    const ravolt::Pixels w = getSizeX() - border, h = getSizeY() - border;
    const float dark = isClicked() ? 1.3f : 0.7f, light = isClicked() ? 0.7f : 1.3f;
    const float darkest = isClicked() ? 1.6f : 0.4f, lightest = isClicked() ? 0.4f : 1.6f;
    const auto draw = [this](GLenum primitive, float factor,
                             std::initializer_list<ravolt::Pixels> points) {
        glBegin(primitive);
        glColor4fv(shadeOf(factor, 0.5f));
        for (const ravolt::Pixels *point = points.begin(); point != points.end(); point += 2)
            glVertex2i(ravolt::clampedToInt(point[0]), ravolt::clampedToInt(point[1]));
        glEnd();
    };
    glTranslatef(rim, rim, 0);
    for (int i = 0; i < borderRings(); ++i) {
        draw(GL_LINES, dark, {i + 1, i + 1, w - i - 1, i + 1});
        draw(GL_LINES, dark, {i, i + 1, i, h - i - 1});
        draw(GL_LINES, light, {i + 1, h - i, w - i - 1, h - i});
        draw(GL_LINES, light, {w - i - 1, i + 1, w - i - 1, h - i - 1});
        draw(GL_POINTS, darkest, {i, i + 1});
        draw(GL_POINTS, 1.0f, {i, h - i});
        draw(GL_POINTS, 1.0f, {w - i - 1, i + 1});
        draw(GL_POINTS, lightest, {w - i - 1, h - i});
    }
    glTranslatef(-rim, -rim, 0);
}
