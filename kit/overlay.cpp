// Drawing in the state that RAVOLT::begin2D has set: no program, no lighting, no texture, pixels.
// What is changed of it is texturing, blending, which stays on as after a widget, and the current
// colour.

#include "ravolt/kit/overlay.h"

#include "ravolt/RVFONT.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVTEXTURE.h"
#include "ravolt/zlf.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

#include <stb/stb_easy_font.h>

namespace ravolt::kit {

namespace {

constexpr int dotsOfALine = 12;             // from one to the next
constexpr std::size_t bytesOfLetter = 2048; // more than any letter needs
constexpr std::size_t bytesOfCorner = 16;   // of a quad
constexpr std::size_t maxLetters = 4096;    // of a line

// What the built-in letters have.
std::string printable(const std::string &line) {
    std::string result = line;
    for (char &c : result)
        if (c < ' ' || c > '~')
            c = '?';
    return result;
}

std::vector<std::string> linesOf(const std::string &text) {
    std::vector<std::string> lines = {""};
    for (const char c : text)
        if (c == '\n')
            lines.emplace_back();
        else
            lines.back() += c;
    return lines;
}

// Far outside of every window a place is as good as any other.
int limited(long long pixels) {
    constexpr long long high = std::numeric_limits<int>::max(),
                        low = std::numeric_limits<int>::min();
    return static_cast<int>(std::clamp(pixels, low, high));
}

// RVFONT's tag of a colour.
std::string tagOf(const float (&color)[4]) {
    std::string tag = "^c";
    for (const float part : color)
        tag += static_cast<char>('0' + std::lround(part * 8));
    return tag;
}

} // namespace

void Overlay::setScale(int pixels) { scale = std::clamp(pixels, 1, 64); }

void Overlay::setColor(float red, float green, float blue, float alpha) {
    const float parts[] = {red, green, blue, alpha};
    for (int i = 0; i < 4; ++i)
        color[i] = parts[i] > 0 ? std::min(parts[i], 1.0f) : 0;
}

void Overlay::applyState() const {
    RVOPENGL::blendingOn();
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    glColor4fv(color);
}

bool Overlay::text(int x, int y, const std::string &text) {
    bool drawn = true;
    int top = y;
    const std::string tag = tagOf(color);
    for (const std::string &line : linesOf(text)) {
        // The last call has switched it off, and the texture may be cached.
        RVTEXTURE::texturingOn(0);
        if (font)
            drawn = font->putText(x, top, (tag + line).c_str()) && drawn;
        else
            drawLetters(x, top, printable(line));
        top = limited(0LL + top + heightOf(""));
    }
    RVTEXTURE::texturingOff(0);
    glColor4f(1, 1, 1, 1);
    return drawn;
}

void Overlay::drawLetters(int x, int y, const std::string &line) const {
    std::string letters = line.substr(0, maxLetters);
    std::vector<char> corners(letters.size() * bytesOfLetter);
    const int quads = stb_easy_font_print(0, 0, letters.data(), nullptr, corners.data(),
                                          static_cast<int>(corners.size()));
    RVTEXTURE::texturingOff(0);
    applyState();
    glBegin(GL_QUADS);
    for (std::size_t corner = 0; corner < 4 * static_cast<std::size_t>(quads); ++corner) {
        float dots[2];
        std::memcpy(dots, &corners[corner * bytesOfCorner], sizeof dots);
        glVertex2f(static_cast<float>(x) + dots[0] * static_cast<float>(scale),
                   static_cast<float>(y) + dots[1] * static_cast<float>(scale));
    }
    glEnd();
}

int Overlay::widthOf(const std::string &text) const {
    int width = 0;
    for (const std::string &line : linesOf(text)) {
        std::string letters = printable(line);
        const int own = font ? static_cast<int>(font->stringLength(line.c_str()))
                             : limited(1LL * stb_easy_font_width(letters.data()) * scale);
        width = std::max(width, own);
    }
    return width;
}

int Overlay::heightOf(const std::string &text) const {
    const auto lines = static_cast<long long>(linesOf(text).size());
    return limited(lines * (font ? static_cast<int>(font->getCharSizeY()) : dotsOfALine * scale));
}

bool Overlay::picture(RVTEXTURE *texture, int x, int y, int width, int height) {
    if (!texture) {
        zlfLog("   [!] Invalid params @ Overlay::picture\n");
        return false;
    }
    const int right =
        limited(0LL + x + (width > 0 ? width : static_cast<int>(texture->getSizeX())));
    const int bottom =
        limited(0LL + y + (height > 0 ? height : static_cast<int>(texture->getSizeY())));
    RVTEXTURE::texturingOn(0); // as in text
    texture->render(nullptr);
    applyState();
    glBegin(GL_QUADS); // the first row of a texture is its lowest
    glTexCoord2f(0, 1), glVertex2i(x, y);
    glTexCoord2f(0, 0), glVertex2i(x, bottom);
    glTexCoord2f(1, 0), glVertex2i(right, bottom);
    glTexCoord2f(1, 1), glVertex2i(right, y);
    glEnd();
    RVTEXTURE::texturingOff(0);
    glColor4f(1, 1, 1, 1);
    return true;
}

} // namespace ravolt::kit
