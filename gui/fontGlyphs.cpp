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

#include <cstddef>
#include <cstdint>
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

struct Rectangle {
    float left, top, right, bottom;
};

// The two triangles of a rectangle, in the order of their vertices.
void storeQuad(float *target, const Rectangle &r) {
    target[0] = target[4] = target[10] = r.left;
    target[2] = target[6] = target[8] = r.right;
    target[1] = target[3] = target[7] = r.bottom;
    target[5] = target[9] = target[11] = r.top;
}

// The far edge of a cell on the screen.
float farEdge(int nearEdge, unsigned int size) {
    return static_cast<float>(static_cast<long long>(nearEdge) + size);
}

// The texture coordinates of a byte's glyph. Those of `^`, and of bytes that are no character, are
// not stored for the next time: these bytes end a run of known glyphs.
struct alignas(64) GlyphCoordinates {
    float values[floatsPerGlyph];
    std::uint64_t widthPlusOne; // on the screen, for which the values are known; 0 for none

    bool areKnown(unsigned int width) const { return widthPlusOne == std::uint64_t{width} + 1; }

    // On purpose: the width on the screen counts as the cells of a row.
    void compute(char c, unsigned int width) {
        const auto cell = static_cast<unsigned int>(cellOf(c));
        const unsigned int row = cell / cellsPerRow;
        const auto column = static_cast<float>(cell - static_cast<long long>(width) * row);
        const float u = column * cellSize, v = static_cast<float>(cellsPerRow - row) * cellSize;
        storeQuad(values, {u, v, u + cellSize, v - cellSize});
        widthPlusOne = ravolt::isCharacter(c) && c != '^' ? std::uint64_t{width} + 1 : 0;
    }
};

GlyphCoordinates coordinatesOfBytes[256] = {};

std::size_t byteOf(char c) { return static_cast<unsigned char>(c); }

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
        countGlyphs(1);
        return true;
    }
    if (!texture)
        return false;
    bindAtlas();
    setPointers(fontCachedCurrent);
    glDrawArrays(GL_TRIANGLES, 0, verticesPerGlyph);
    return true;
}

// Into the current slot.
void RVFONT::storeGlyph(int x, int y, char c) const {
    const unsigned int glyph = fontCachedCurrent;
    GlyphCoordinates &coordinates = coordinatesOfBytes[byteOf(c)];
    coordinates.compute(c, charSizeX);
    storeQuad(fontCachedVertex + glyph * floatsPerGlyph,
              {static_cast<float>(x), static_cast<float>(y), farEdge(x, charSizeX),
               farEdge(y, charSizeY)});
    std::memcpy(fontCachedTexCoord + glyph * floatsPerGlyph, coordinates.values,
                sizeof coordinates.values);
    std::memcpy(fontCachedColor + glyph * colorBytesPerGlyph, fontCachedBlockColor,
                sizeof fontCachedBlockColor);
}

// Counts glyphs that were stored from the current slot on.
void RVFONT::countGlyphs(unsigned int number) {
    fontCachedCurrent += number;
    if (fontCachedCurrent >= RV_FONT_GLYPHS)
        drawFullCache();
}

// Adds the glyph of the first byte, whatever it is, and some of those after it. Moves the pen at x,
// and returns the end of what was added.
const char *RVFONT::addGlyphs(int &x, int y, const char *text) const {
    if (coordinatesOfBytes[byteOf(*text)].areKnown(charSizeX))
        return addKnownGlyphs(x, y, text);
    storeGlyph(x, y, *text);
    countGlyphs(1);
    x = static_cast<int>(static_cast<unsigned int>(x) + advanceOf(*text));
    return text + 1;
}

// As addGlyphs, up to a byte whose coordinates are not known; those of the first one are. The
// compiler would load what does not change again for each glyph, were it not in local variables.
const char *RVFONT::addKnownGlyphs(int &x, int y, const char *text) const {
    float *vertices = fontCachedVertex + fontCachedCurrent * floatsPerGlyph;
    float *coordinates = fontCachedTexCoord + fontCachedCurrent * floatsPerGlyph;
    unsigned char *colors = fontCachedColor + fontCachedCurrent * colorBytesPerGlyph;
    const unsigned char *const endOfCache = fontCachedColor + RV_FONT_GLYPHS * colorBytesPerGlyph;
    unsigned char color[colorBytesPerGlyph];
    std::memcpy(color, fontCachedBlockColor, sizeof color);
    const unsigned int width = charSizeX;
    const float top = static_cast<float>(y), bottom = farEdge(y, charSizeY);

    const char *const first = text;
    auto pen = static_cast<unsigned int>(x);
    std::size_t byte = byteOf(*text);
    do {
        const int left = static_cast<int>(pen);
        storeQuad(vertices, {static_cast<float>(left), top, farEdge(left, width), bottom});
        std::memcpy(coordinates, coordinatesOfBytes[byte].values,
                    sizeof coordinatesOfBytes[byte].values);
        std::memcpy(colors, color, sizeof color);
        vertices += floatsPerGlyph;
        coordinates += floatsPerGlyph;
        colors += colorBytesPerGlyph;
        pen += width - static_cast<unsigned int>(kerning[byte - ravolt::firstCharacter]);
        byte = byteOf(*++text);
    } while (coordinatesOfBytes[byte].areKnown(width) && colors != endOfCache);
    x = static_cast<int>(pen);
    countGlyphs(static_cast<unsigned int>(text - first));
    return text;
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
