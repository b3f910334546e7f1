// The cache of glyphs: their vertices, and the calls that draw them.
//
// Invariants: fontCachedCurrent is below RV_FONT_GLYPHS between two calls. The four arrays are used
// only if all are allocated.

#include "ravolt/RVFONT.h"

#include "engine/gl/bindings.h"
#include "gui/fontCharacters.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVTEXTURE.h"
#include "ravolt/zlf.h"

#include <cstring>

float *RVFONT::fontCachedVertex = nullptr;
float *RVFONT::fontCachedTexCoord = nullptr;
unsigned char *RVFONT::fontCachedColor = nullptr;
unsigned short *RVFONT::fontCachedIndex = nullptr;
unsigned int RVFONT::fontCachedCurrent = 0;
unsigned char RVFONT::fontCachedBlockColor[24] = {0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff,
                                                  0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff,
                                                  0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff};
bool RVFONT::fontCacheFlushed = false;

namespace {

constexpr unsigned int verticesPerGlyph = 6;
constexpr unsigned int cachedVertices = RV_FONT_GLYPHS * verticesPerGlyph;
constexpr unsigned int floatsPerGlyph = 2 * verticesPerGlyph;
constexpr unsigned int colorBytesPerGlyph = 4 * verticesPerGlyph;

constexpr unsigned int cellsPerRow = 16;
constexpr float cellSize = 1.0f / cellsPerRow;

// Cells are counted from that of the blank, which is also used for bytes without a character.
int cellOf(char c) { return ravolt::isCharacter(c) ? c - ravolt::firstCharacter : 0; }

template <class T> T *allocate(std::size_t count) {
    return static_cast<T *>(zlfMalloc(count * sizeof(T)));
}

template <class T> void release(T *&array) {
    if (array)
        zlfFree(array);
    array = nullptr;
}

// The two triangles of a rectangle, in the order of their vertices.
void storeQuad(float *target, float left, float top, float right, float bottom) {
    target[0] = target[4] = target[10] = left;
    target[2] = target[6] = target[8] = right;
    target[1] = target[3] = target[7] = bottom;
    target[5] = target[9] = target[11] = top;
}

} // namespace

// On purpose: arrays that were allocated before a failure remain until the next init or free.
bool RVFONT::init() {
    free();
    fontCachedVertex = allocate<float>(RV_FONT_GLYPHS * floatsPerGlyph);
    fontCachedTexCoord = allocate<float>(RV_FONT_GLYPHS * floatsPerGlyph);
    fontCachedColor = allocate<unsigned char>(RV_FONT_GLYPHS * colorBytesPerGlyph);
    fontCachedIndex = allocate<unsigned short>(cachedVertices);
    if (!hasCache()) {
        zlfLog("   [!] Out of memory @ RVFONT::init\n");
        return false;
    }
    for (unsigned int i = 0; i < cachedVertices; ++i)
        fontCachedIndex[i] = static_cast<unsigned short>(i);
    reset();
    return true;
}

bool RVFONT::free() {
    release(fontCachedVertex);
    release(fontCachedTexCoord);
    release(fontCachedColor);
    release(fontCachedIndex);
    return true;
}

bool RVFONT::hasCache() {
    return fontCachedVertex && fontCachedTexCoord && fontCachedColor && fontCachedIndex;
}

void RVFONT::reset() { fontCachedCurrent = 0; }

bool RVFONT::putChar(int x, int y, char c, bool immediate) {
    if (!hasCache())
        return false;
    storeGlyph(x, y, c);
    if (!immediate) {
        if (++fontCachedCurrent >= RV_FONT_GLYPHS)
            drawFullCache();
        return true;
    }
    if (!texture)
        return false;
    bindAtlas();
    setPointers(fontCachedCurrent);
    glDrawArrays(GL_TRIANGLES, 0, verticesPerGlyph);
    return true;
}

// Into the current slot. On purpose: the width on the screen counts as the cells of a row.
void RVFONT::storeGlyph(int x, int y, char c) const {
    const auto cell = static_cast<unsigned int>(cellOf(c));
    const unsigned int row = cell / cellsPerRow;
    const auto column = static_cast<float>(cell - static_cast<long long>(charSizeX) * row);
    const float u = column * cellSize, v = static_cast<float>(cellsPerRow - row) * cellSize;
    const auto right = static_cast<float>(static_cast<long long>(x) + charSizeX);
    const auto bottom = static_cast<float>(static_cast<long long>(y) + charSizeY);

    const unsigned int glyph = fontCachedCurrent;
    float *const vertices = fontCachedVertex + glyph * floatsPerGlyph;
    float *const coordinates = fontCachedTexCoord + glyph * floatsPerGlyph;
    std::memcpy(fontCachedColor + glyph * colorBytesPerGlyph, fontCachedBlockColor,
                sizeof fontCachedBlockColor);
    storeQuad(vertices, static_cast<float>(x), static_cast<float>(y), right, bottom);
    storeQuad(coordinates, u, v, u + cellSize, v - cellSize);
}

void RVFONT::bindAtlas() const {
    texture->render(nullptr);
    RVOPENGL::blendingOn();
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
}

void RVFONT::setPointers(unsigned int firstGlyph) {
    ravolt::useMemory(GL_ARRAY_BUFFER_ARB);
    ravolt::useMemory(GL_ELEMENT_ARRAY_BUFFER_ARB);
    glColorPointer(4, GL_UNSIGNED_BYTE, 0, fontCachedColor + firstGlyph * colorBytesPerGlyph);
    RVOPENGL::normalArrayOff(); // of a mesh
    glVertexPointer(2, GL_FLOAT, 0, fontCachedVertex + firstGlyph * floatsPerGlyph);
    glTexCoordPointer(2, GL_FLOAT, 0, fontCachedTexCoord + firstGlyph * floatsPerGlyph);
}

void RVFONT::drawFullCache() {
    fontCacheFlushed = true;
    setPointers(0);
    glDrawElements(GL_TRIANGLES, static_cast<GLsizei>(fontCachedCurrent * verticesPerGlyph),
                   GL_UNSIGNED_SHORT, fontCachedIndex);
    glFinish();
    fontCachedCurrent = 0;
}
