// Draws the texts in a font that has a shadow, so that they are read before bright and dark
// pictures.

#include "examples/world/titles.h"

#include "examples/world/parts.h"

#include <ravolt.h>
#include <ravolt/kit/overlay.h>

#include <SDL/SDL_opengl.h>

#include <algorithm>

namespace world {

namespace {

constexpr int wideWindow = 640, smallWindow = 480; // pixels; the font fits into the wide one
constexpr float fading = 0.6f;                     // seconds

void drawLine(int x, int height) {
    RVTEXTURE::texturingOff(0);
    glColor4f(1, 1, 1, 1);
    glBegin(GL_QUADS);
    glVertex2i(x - 1, 0), glVertex2i(x - 1, height);
    glVertex2i(x + 1, height), glVertex2i(x + 1, 0);
    glEnd();
}

} // namespace

bool loadTitleFont(const std::string &folder) {
    constexpr unsigned int cell = 32; // pixels
    RVFONT::setPath(folder.c_str());
    RVTEXTURE::setPath(folder.c_str());
    RVTEXTURE *letters = new RVTEXTURE();
    RVFONT *font = new RVFONT();
    font->setName("title");
    font->setCharSizeX(cell);
    font->setCharSizeY(cell);
    letters->setFilter(true, false, false);
    return letters->load("title.tga") && font->setTexture(letters) &&
           font->loadKerning("title.txt");
}

void drawTitles(const Part &part, float secondsOfPart, float split) {
    const int width = RVSETTINGS::getSDLWindowX(), height = RVSETTINGS::getSDLWindowY();
    ravolt::kit::Overlay overlay(width < wideWindow ? nullptr : RVFONT::findByName("title"));
    overlay.setScale(width < smallWindow ? 1 : 2); // of the letters without a font
    const int x = width / 40, line = overlay.heightOf(""), low = height - height / 20 - line;
    if (part.comparison) {
        const int middle = static_cast<int>(split * static_cast<float>(width));
        drawLine(middle, height);
        overlay.text(std::min(x, middle - x - overlay.widthOf("without")), low, "without");
        overlay.text(middle + x, low, part.comparison);
    }
    const float toTheEnd = std::min(secondsOfPart, part.seconds - secondsOfPart);
    overlay.setColor(1, 1, 1, std::clamp(toTheEnd / fading, 0.0f, 1.0f));
    overlay.text(x, part.comparison ? height / 20 : low, part.name);
}

} // namespace world
