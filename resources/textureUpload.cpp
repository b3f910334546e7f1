// Uploads of the pixel copy to OpenGL. An upload binds the texture on unit 0 with direct calls and
// then invalidates the cached binding of that unit.

#include "engine/gl/bindings.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVSETTINGS.h"
#include "ravolt/RVTEXTURE.h"
#include "ravolt/zlf.h"
#include "resources/framebuffers.h"
#include "resources/textureInternals.h"

#include <algorithm>
#include <cstring>

namespace {

struct TextureFormat {
    GLint internal;
    GLenum format;
    GLenum type;
    bool pixels; // is filled from the pixel copy
};

constexpr TextureFormat formats[] = {
    {GL_RGB, GL_RGB, GL_UNSIGNED_BYTE, true},
    {GL_RGBA, GL_RGBA, GL_UNSIGNED_BYTE, true},
    {GL_DEPTH_COMPONENT, GL_DEPTH_COMPONENT, GL_UNSIGNED_BYTE, false},
    {GL_RGBA16F_ARB, GL_RGBA, GL_HALF_FLOAT_ARB, false},
};

constexpr unsigned int rgbDepth = 3, shadowMapDepth = 5, floatDepth = 6;

// A texture that was neither created nor loaded has depth 0 and no pixels.
const TextureFormat &formatOf(unsigned int depth) {
    return formats[std::clamp(depth, rgbDepth, floatDepth) - rgbDepth];
}

GLint magnification(bool linear) { return linear ? GL_LINEAR : GL_NEAREST; }

GLint minification(bool linear, bool mipmap) {
    if (!mipmap)
        return magnification(linear);
    return linear ? GL_LINEAR_MIPMAP_LINEAR : GL_NEAREST_MIPMAP_NEAREST;
}

unsigned int halved(unsigned int size) { return size > 1 ? size / 2 : size; }

// The mean of four pixels for each pixel of a level, in place: writing never overtakes reading.
// On purpose: the rows of the level above count as twice the new width, so that only the levels of
// a square image of a power of two are correct. Beyond the image its last pixel is read.
void halvePixels(unsigned char *pixels, unsigned int width, unsigned int height,
                 unsigned int channels, std::size_t lastPixel) {
    const std::size_t stride = std::size_t(width) * 2;
    unsigned char *target = pixels;
    for (std::size_t y = 0; y < height; ++y)
        for (std::size_t x = 0; x < width; ++x) {
            const std::size_t corner = 2 * y * stride + 2 * x;
            const auto source = [=](std::size_t pixel) {
                return pixels + std::min(pixel, lastPixel) * channels;
            };
            const unsigned char *const a = source(corner), *const b = source(corner + 1);
            const unsigned char *const c = source(corner + stride);
            const unsigned char *const d = source(corner + stride + 1);
            for (unsigned int channel = 0; channel < channels; ++channel)
                *target++ = static_cast<unsigned char>(
                    (a[channel] + b[channel] + c[channel] + d[channel]) >> 2);
        }
}

// Uploads the levels above the base one. Overwrites the pixels.
void uploadMipmapChain(unsigned int width, unsigned int height, unsigned char *pixels,
                       GLenum format) {
    if (width == 0 || height == 0)
        return;
    const unsigned int channels = format == GL_RGB ? 3 : 4;
    const std::size_t lastPixel = std::size_t(width) * height - 1;
    for (GLint level = 1; width > 1 || height > 1; ++level) {
        width = halved(width);
        height = halved(height);
        halvePixels(pixels, width, height, channels, lastPixel);
        glTexImage2D(GL_TEXTURE_2D, level, static_cast<GLint>(format), static_cast<GLsizei>(width),
                     static_cast<GLsizei>(height), 0, format, GL_UNSIGNED_BYTE, pixels);
    }
}

bool uploadsPlaceholder = false; // instead of an image with the texture's sizes

// The driver's largest, unless the settings limit it.
float anisotropy() {
    const float driver = RVOPENGL::getAnisotropicLevel();
    const int limit = RVSETTINGS::getSDLMaxAnisotropy();
    return limit > 0 ? std::min(driver, static_cast<float>(limit)) : driver;
}

} // namespace

bool RVTEXTURE::update() {
    if (depth != shadowMapDepth && depth != floatDepth && !bitmap) {
        zlfLog("   [!] Invalid params @ RVTEXTURE::update\n");
        return false;
    }
    ravolt::RenderTargets::allocateIfTarget(*this);
    releaseUpload();
    unsigned char *const pixels = bitmap;
    reserveVideoMemory();

    const GLclampf priority = 1.0f;
    glGenTextures(1, &glId);
    glPrioritizeTextures(1, &glId, &priority);
    bindForUpload();
    uploadParameters();
    uploadImage(pixels);
    countUpload();
    if (pixels != bitmap) // the collector has detached them from the texture
        zlfFree(pixels);
    return true;
}

bool RVTEXTURE::modify(const char *newBitmap, bool keep) {
    if (!newBitmap) {
        zlfLog("   [!] Invalid params @ RVTEXTURE::modify\n");
        return false;
    }
    const std::size_t pixels = std::size_t(sizeX) * sizeY;
    // On purpose: the call that allocates the copy does not fill it.
    if (keep && !bitmap) {
        bitmap = static_cast<unsigned char *>(zlfMalloc(std::max<std::size_t>(pixels * depth, 1)));
        if (!bitmap)
            zlfLog("   [!] Out of memory @ RVTEXTURE::modify\n");
        else
            std::memset(bitmap, 0, pixels * depth);
        return false;
    }
    ravolt::RenderTargets::allocateIfTarget(*this);
    const bool rgb = depth == rgbDepth;
    if (keep)
        std::memmove(bitmap, newBitmap, pixels * (rgb ? 3 : 4));
    ravolt::TextureInternals::replacePixels(*this, sizeX, sizeY, sizeX, newBitmap, rgb);
    return true;
}

void ravolt::TextureInternals::replacePixels(const RVTEXTURE &texture, unsigned int width,
                                             unsigned int height, unsigned int rowLength,
                                             const void *pixels, bool rgb) {
    texture.bindForUpload();
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    if (rowLength != width)
        glPixelStorei(GL_UNPACK_ROW_LENGTH, static_cast<GLint>(rowLength));
    glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, static_cast<GLsizei>(width),
                    static_cast<GLsizei>(height), rgb ? GL_RGB : GL_RGBA, GL_UNSIGNED_BYTE, pixels);
    if (rowLength != width)
        glPixelStorei(GL_UNPACK_ROW_LENGTH, 0);
}

void ravolt::TextureInternals::createPlaceholder(RVTEXTURE &texture, unsigned int sizeX,
                                                 unsigned int sizeY, unsigned int depth) {
    uploadsPlaceholder = true;
    texture.create(sizeX, sizeY, depth);
    uploadsPlaceholder = false;
}

void ravolt::TextureInternals::allocateImage(const RVTEXTURE &texture) {
    if (!texture.glId)
        return;
    GLint unit = GL_TEXTURE0, bound = 0;
    if (RVOPENGL::glActiveTextureARB)
        glGetIntegerv(GL_ACTIVE_TEXTURE, &unit);
    selectUnit(0);
    glGetIntegerv(GL_TEXTURE_BINDING_2D, &bound);
    glBindTexture(GL_TEXTURE_2D, texture.glId);
    // Where OpenGL refuses the image, for example without memory for it, the placeholder must not
    // stay.
    const TextureFormat &format = formatOf(texture.depth);
    glTexImage2D(GL_TEXTURE_2D, 0, format.internal, 0, 0, 0, format.format, format.type, nullptr);
    texture.uploadImage(texture.bitmap);
    glBindTexture(GL_TEXTURE_2D, static_cast<GLuint>(bound));
    selectUnit(static_cast<unsigned int>(unit) - GL_TEXTURE0);
}

void RVTEXTURE::bindForUpload() const {
    ravolt::selectUnit(0);
    channelCache[0] = nullptr;
    glBindTexture(GL_TEXTURE_2D, glId);
}

void RVTEXTURE::uploadParameters() const {
    const GLint wrap = clamp ? GL_CLAMP_TO_EDGE : GL_REPEAT;
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, magnification(linear));
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, minification(linear, mipmap));
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, wrap);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, wrap);
    if (formatOf(depth).pixels && RVOPENGL::useAnisotropic())
        glTexParameterf(GL_TEXTURE_2D, GL_TEXTURE_MAX_ANISOTROPY_EXT, anisotropy());
    if (depth == shadowMapDepth) {
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_COMPARE_MODE, GL_COMPARE_R_TO_TEXTURE);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_COMPARE_FUNC, GL_LEQUAL);
    }
}

void RVTEXTURE::uploadImage(unsigned char *pixels) const {
    const TextureFormat &format = formatOf(depth);
    const unsigned int width = uploadsPlaceholder ? 1 : sizeX;
    const unsigned int height = uploadsPlaceholder ? 1 : sizeY;
    glTexImage2D(GL_TEXTURE_2D, 0, format.internal, static_cast<GLsizei>(width),
                 static_cast<GLsizei>(height), 0, format.format, format.type,
                 format.pixels ? pixels : nullptr);
    if (mipmap && format.pixels)
        uploadMipmapChain(sizeX, sizeY, pixels, format.format);
}
