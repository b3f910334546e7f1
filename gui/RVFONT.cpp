// Fonts: the registry, the atlas, the corrections and the cache of glyphs. The texts are in
// gui/fontText.cpp.
//
// Invariants: fontCachedCurrent is below RV_FONT_GLYPHS between two calls. The four arrays are used
// only if all are allocated.

#include "ravolt/RVFONT.h"

#include "engine/gl/bindings.h"
#include "foundation/registry.h"
#include "foundation/text.h"
#include "gui/kerningFile.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVTEXTURE.h"
#include "ravolt/zlf.h"

#include <algorithm>
#include <cstring>
#include <iterator>

using FontRegistry = ravolt::Registry<RVFONT>;

RVFONT *RVFONT::firstFont = nullptr;
RVFONT *RVFONT::lastFont = nullptr;
char RVFONT::fontPath[256] = "";
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
constexpr int firstCharacter = 0x20, lastCharacter = 0x7f;

bool isCharacter(char c) {
    const int byte = static_cast<unsigned char>(c);
    return byte >= firstCharacter && byte <= lastCharacter;
}

// Cells are counted from that of the blank, which is also used for bytes without a character.
int cellOf(char c) { return isCharacter(c) ? c - firstCharacter : 0; }

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

RVFONT::RVFONT()
    : id(zlfNewId()), kerning{}, charSizeX(16), charSizeY(16), previous(nullptr), next(nullptr),
      registration(Registration{true, id}) {
    ravolt::formatText(name, "[font %d]", id);
    FontRegistry::append(firstFont, lastFont, this);
}

RVFONT::~RVFONT() {
    if (!registration->registered)
        return;
    if (texture)
        texture->decReferences();
    releaseId(registration->id);
    FontRegistry::unlink(firstFont, lastFont, this);
}

RVFONT::RVFONT(const RVFONT &other) : previous(nullptr), next(nullptr) { *this = other; }

RVFONT &RVFONT::operator=(const RVFONT &other) {
    id = other.id;
    texture.set(other.texture.get());
    std::copy(std::begin(other.kerning), std::end(other.kerning), kerning);
    charSizeX = other.charSizeX;
    charSizeY = other.charSizeY;
    ravolt::copyText(name, other.name);
    return *this;
}

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

bool RVFONT::cleanUp() {
    if (!firstFont)
        return false;
    const unsigned int number = FontRegistry::cleanUp(firstFont);
    zlfLog("   %d font(s) released\n", number);
    return true;
}

unsigned int RVFONT::getNumberOfFonts() { return FontRegistry::count(firstFont); }
RVFONT *RVFONT::findById(unsigned int wanted) { return FontRegistry::findById(firstFont, wanted); }
RVFONT *RVFONT::findByName(const char *wanted) {
    return FontRegistry::findByText(firstFont, &RVFONT::name, wanted);
}

void RVFONT::setPath(const char *path) { ravolt::copyText(fontPath, path); }
char *RVFONT::getPath() { return fontPath; }

void RVFONT::setName(const char *newName) {
    if (newName && std::strlen(newName) < sizeof name)
        ravolt::copyText(name, newName);
}

bool RVFONT::setTexture(RVTEXTURE *newTexture) {
    if (!newTexture) {
        zlfLog("   [!] Invalid params @ RVFONT::setTexture\n");
        return false;
    }
    if (texture)
        texture->decReferences();
    texture.set(newTexture);
    texture->incReferences();
    return true;
}

bool RVFONT::loadKerning(const char *filename) {
    if (!filename) {
        zlfLog("   [!] Invalid params @ RVFONT::loadKerning\n");
        return false;
    }
    const ravolt::FilePath path(fontPath, filename);
    if (!zlfFileExists(path.get())) {
        zlfLog("   [!] File not found (%s) @ RVFONT::loadKerning\n", filename);
        return false;
    }
    return ravolt::readKerningFile(path.get(), kerning);
}

bool RVFONT::setKerning(char c, char value) {
    if (!isCharacter(c)) {
        zlfLog("   [!] Invalid params @ RVFONT::setKerning\n");
        return false;
    }
    kerning[c - firstCharacter] = static_cast<signed char>(value);
    return true;
}

char RVFONT::getKerning(char c) const {
    return isCharacter(c) ? static_cast<char>(kerning[c - firstCharacter]) : '\0';
}

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

// Wraps around where the character moves the pen to the left.
unsigned int RVFONT::advanceOf(char c) const {
    return charSizeX - static_cast<unsigned int>(static_cast<signed char>(getKerning(c)));
}
