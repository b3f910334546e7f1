// Textures: the registry, the file reader and the state of the units. The upload is in
// textureUpload.cpp, what concerns the budget in textureMemory.cpp; only these three may call
// glBindTexture, glGenTextures, glDeleteTextures and enable or disable GL_TEXTURE_2D.
//
// Invariants: a pixel copy has room for sizeX times sizeY pixels of the texture's format. An entry
// of channelCache names a living texture that OpenGL has bound there, or is NULL: it is set to
// NULL when OpenGL's name is deleted, which unbinds it, so that a new object at the address of a
// deleted one never counts as bound.

#include "ravolt/RVTEXTURE.h"

#include "engine/gl/bindings.h"
#include "engine/gl/stateCache.h"
#include "foundation/bytes.h"
#include "foundation/registry.h"
#include "foundation/text.h"
#include "ravolt/RAVOLT.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVSHADER.h"
#include "ravolt/zlf.h"
#include "resources/framebuffers.h"
#include "resources/textureInternals.h"
#include "resources/tga.h"

#include <algorithm>
#include <cstring>

using ravolt::FileBytes;
using TextureRegistry = ravolt::Registry<RVTEXTURE>;

RVTEXTURE *RVTEXTURE::firstTexture = nullptr;
RVTEXTURE *RVTEXTURE::lastTexture = nullptr;
unsigned long RVTEXTURE::usedMemory = 0;
unsigned long RVTEXTURE::releases = 0;
RVTEXTURE *RVTEXTURE::channelCache[RV_TEXTURE_UNITS] = {};
bool RVTEXTURE::channelActive[RV_TEXTURE_UNITS] = {};
char RVTEXTURE::texturePath[256] = "";

namespace {

constexpr char dynamicName[] = "[dynamic]";
constexpr unsigned int largestSize = 4096;
constexpr unsigned int smallestDepth = RV_TEXTURE_RGB, largestDepth = RV_TEXTURE_HALF_FLOAT;
constexpr unsigned int budgetBytesPerPixel = 4;

bool hasPixelCopy(unsigned int depth) {
    return depth == RV_TEXTURE_RGB || depth == RV_TEXTURE_RGBA;
}

unsigned char *allocatePixels(std::size_t bytes) {
    return static_cast<unsigned char *>(zlfMalloc(std::max<std::size_t>(bytes, 1)));
}

bool readFile(const char *path, FileBytes &file) {
    switch (file.read(path)) {
    case FileBytes::Result::ok:
        return true;
    case FileBytes::Result::notOpened:
        zlfLog("   [!] Unable to open file %s @ RVTEXTURE::loadTGA\n", path);
        return false;
    case FileBytes::Result::outOfMemory:
        zlfLog("   [!] Out of memory for %s @ RVTEXTURE::loadTGA\n", path);
        return false;
    case FileBytes::Result::shortRead:
        break;
    }
    zlfLog("   [!] File corrupted %s @ RVTEXTURE::loadTGA\n", path);
    return false;
}

bool readImage(const char *path, FileBytes &file, ravolt::TgaImage &image) {
    if (!readFile(path, file))
        return false;
    switch (ravolt::inspectTga(file.data(), file.size(), image)) {
    case ravolt::TgaResult::ok:
        return true;
    case ravolt::TgaResult::unsupportedDepthOrSizes:
        zlfLog("   [!] Unsupported depth or sizes for %s @ RVTEXTURE::loadTGA\n", path);
        return false;
    case ravolt::TgaResult::corrupted:
        break;
    }
    zlfLog("   [!] File corrupted %s @ RVTEXTURE::loadTGA\n", path);
    return false;
}

// The image's pixels, owned by the caller; NULL when memory runs out.
// On purpose: a file of another kind is no failure. Its pixels are black.
unsigned char *makePixels(const char *path, const ravolt::TgaImage &image) {
    unsigned char *pixels = allocatePixels(image.bytes());
    if (!pixels) {
        zlfLog("   [!] Out of memory for %s @ RVTEXTURE::loadTGA\n", path);
        return nullptr;
    }
    if (image.kind != ravolt::TgaKind::unsupported) {
        ravolt::decodeTga(image, pixels);
        return pixels;
    }
    zlfLog("   [!] Unsupported file header for %s @ RVTEXTURE::loadTGA\n", path);
    std::memset(pixels, 0, image.bytes());
    return pixels;
}

// Without multitexturing unit 0 stays the active one.
void activateUnit(unsigned int unit) {
    if (RVOPENGL::useMultitexturing())
        ravolt::selectUnit(unit);
}

} // namespace

RVTEXTURE::RVTEXTURE()
    : id(zlfNewId()), timeStamp(0), references(0), bitmap(nullptr), sizeX(0), sizeY(0),
      memorySize(0), depth(0), cubeType(0), glId(0), linear(true), mipmap(true), clamp(false),
      mipmapped(false) {
    ravolt::formatText(filename, "[texture %d]", id);
    TextureRegistry::append(firstTexture, lastTexture, this);
}

RVTEXTURE::~RVTEXTURE() {
    if (ravolt::TextureInternals::onDestruction)
        ravolt::TextureInternals::onDestruction(*this);
    unload(true);
    invalidateBindings();
    releaseId(id);
    TextureRegistry::unlink(firstTexture, lastTexture, this);
}

bool RVTEXTURE::create(unsigned int newSizeX, unsigned int newSizeY, unsigned int newDepth) {
    if (newSizeX > largestSize || newSizeY > largestSize || newDepth < smallestDepth ||
        newDepth > largestDepth) {
        zlfLog("   [!] Invalid params @ RVTEXTURE::create\n");
        return false;
    }
    // On purpose: what load counted for the old pixels is not subtracted.
    releasePixels();
    releaseUpload();
    if (hasPixelCopy(newDepth)) {
        const std::size_t bytes = std::size_t(newSizeX) * newSizeY * newDepth;
        bitmap = allocatePixels(bytes);
        if (!bitmap) {
            zlfLog("   [!] Out of memory @ RVTEXTURE::create\n");
            return false;
        }
        std::memset(bitmap, 0, bytes);
    }
    sizeX = newSizeX;
    sizeY = newSizeY;
    depth = newDepth;
    ravolt::copyText(filename, dynamicName);
    update();
    return true;
}

bool RVTEXTURE::load(const char *name) {
    if (!name) {
        zlfLog("   [!] Invalid params @ RVTEXTURE@loadTGA\n");
        return false;
    }
    if (std::strcmp(name, dynamicName) == 0)
        return true;

    const ravolt::FilePath path(texturePath, name);
    FileBytes file;
    ravolt::TgaImage image;
    if (!readImage(path.get(), file, image))
        return false;

    depth = image.depth;
    if (bitmap) {
        releasePixels();
        usedMemory -= memorySize;
    }
    bitmap = makePixels(path.get(), image);
    if (!bitmap)
        return false;
    sizeX = image.width;
    sizeY = image.height;
    memorySize = sizeX * sizeY * budgetBytesPerPixel;
    usedMemory += memorySize;
    if (name != filename)
        ravolt::copyText(filename, name);
    return true;
}

bool RVTEXTURE::reload() {
    if (glId)
        return false;
    if (!bitmap)
        load(filename);
    update();
    return true;
}

namespace ravolt {

void TextureInternals::restore(RVTEXTURE &texture) {
    if (!texture.glId && std::strcmp(texture.filename, dynamicName) == 0)
        texture.create(texture.sizeX, texture.sizeY, texture.depth);
    else
        texture.reload();
}

void TextureInternals::release(RVTEXTURE &texture) {
    texture.releasePixels();
    texture.releaseUpload();
}

void TextureInternals::invalidateUnit(unsigned int unit) {
    RVTEXTURE::channelCache[unit] = nullptr;
}

void (*TextureInternals::onDestruction)(const RVTEXTURE &texture) = nullptr;

unsigned long TextureInternals::releasedUploads() { return RVTEXTURE::releases; }

} // namespace ravolt

bool RVTEXTURE::setFilter(bool newLinear, bool newMipmap, bool newClamp) {
    linear = newLinear;
    mipmap = newMipmap;
    clamp = newClamp;
    if (glId)
        update();
    return true;
}

bool RVTEXTURE::render(void *data) {
    const unsigned int unit = data ? *static_cast<const unsigned int *>(data) : 0;
    if (unit >= RV_TEXTURE_UNITS) {
        zlfLog("   [!] Invalid params @ RVTEXTURE::render\n");
        return false;
    }
    timeStamp = static_cast<int>(RAVOLT::getTimeStamp());
    if (ravolt::cacheHit(channelCache[unit] == this))
        return true;
    ravolt::RenderTargets::allocateIfTarget(*this);
    if (!glId)
        reload();
    texturingOn(unit);
    activateUnit(unit);
    glBindTexture(GL_TEXTURE_2D, glId);
    RVSHADER::bindTexture(unit);
    channelCache[unit] = this;
    return true;
}

bool RVTEXTURE::texturingOn(unsigned int unit) {
    if (unit >= RV_TEXTURE_UNITS) {
        for (unsigned int each = 0; each < RV_TEXTURE_UNITS; ++each)
            texturingOn(each);
        return true;
    }
    if (ravolt::cacheHit(channelActive[unit]))
        return true;
    activateUnit(unit);
    glEnable(GL_TEXTURE_2D);
    channelActive[unit] = true;
    return true;
}

// On purpose: switching one unit off does not change its cache entry, so that the next render of
// the same texture there does not switch it on again.
bool RVTEXTURE::texturingOff(unsigned int unit) {
    if (unit >= RV_TEXTURE_UNITS) {
        for (unsigned int each = 0; each < RV_TEXTURE_UNITS; ++each)
            texturingOff(each);
        std::fill(std::begin(channelCache), std::end(channelCache), nullptr);
        return true;
    }
    if (ravolt::cacheHit(!channelActive[unit]))
        return true;
    activateUnit(unit);
    glDisable(GL_TEXTURE_2D);
    channelActive[unit] = false;
    return true;
}

void RVTEXTURE::invalidateBindings() {
    for (RVTEXTURE *&bound : channelCache)
        if (bound == this)
            bound = nullptr;
}

bool RVTEXTURE::cleanUp() {
    if (!firstTexture)
        return false;
    const unsigned int number = TextureRegistry::cleanUp(firstTexture);
    zlfLog("   %d texture(s) released\n", number);
    return true;
}

unsigned int RVTEXTURE::getNumberOfTextures() { return TextureRegistry::count(firstTexture); }

RVTEXTURE *RVTEXTURE::findById(unsigned int id) {
    return TextureRegistry::findById(firstTexture, id);
}

RVTEXTURE *RVTEXTURE::findByFilename(const char *filename) {
    return TextureRegistry::findByText(firstTexture, &RVTEXTURE::filename, filename);
}

RVTEXTURE *RVTEXTURE::getFirst() { return firstTexture; }
RVTEXTURE *RVTEXTURE::getNext() const { return next; }
RVTEXTURE *RVTEXTURE::getPrevious() const { return previous; }

char *RVTEXTURE::getPath() { return texturePath; }
void RVTEXTURE::setPath(const char *path) { ravolt::copyText(texturePath, path); }

int RVTEXTURE::getUsedMemory() { return static_cast<int>(usedMemory); }

unsigned int RVTEXTURE::getId() const { return id; }

unsigned int RVTEXTURE::getGLId() const {
    ravolt::RenderTargets::allocateIfTarget(*this);
    return glId;
}

bool RVTEXTURE::isLoaded() const { return glId != 0; }
char *RVTEXTURE::getFilename() { return filename; }
unsigned int RVTEXTURE::getSizeX() const { return sizeX; }
unsigned int RVTEXTURE::getSizeY() const { return sizeY; }
unsigned char *RVTEXTURE::getBitmap() const { return bitmap; }
int RVTEXTURE::getTimeStamp() const { return timeStamp; }

int RVTEXTURE::getReferences() const { return references; }
void RVTEXTURE::incReferences() { ++references; }
void RVTEXTURE::decReferences() { --references; }

bool RVTEXTURE::isTrilinear() const { return linear; }
bool RVTEXTURE::isMipmapped() const { return mipmap; }
bool RVTEXTURE::isClamped() const { return clamp; }

void RVTEXTURE::setCubeType(unsigned int newCubeType) { cubeType = newCubeType; }
