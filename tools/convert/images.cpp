// Decodes, resizes and combines pictures.

#include "tools/convert/images.h"

#include "tools/convert/morePictures.h"

#include <algorithm>
#include <bit>
#include <climits>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <memory>
#include <new>

#define STB_IMAGE_IMPLEMENTATION
#define STB_IMAGE_STATIC
#define STBI_NO_STDIO
#define STBI_NO_HDR
#define STBI_NO_LINEAR
#include <stb/stb_image.h>

#define STB_IMAGE_RESIZE_IMPLEMENTATION
#define STB_IMAGE_RESIZE_STATIC
#include <stb/stb_image_resize.h>

namespace ravolt::tool {

namespace {

// A decoded picture above this is a mistake or an attack, and would not fit into memory with its
// copies.
constexpr std::uint64_t maxPixels = 16384ull * 16384ull / 2;

Image imageFrom(const unsigned char *pixels, int width, int height) {
    Image image;
    image.width = static_cast<unsigned int>(width);
    image.height = static_cast<unsigned int>(height);
    image.pixels.assign(pixels, pixels + std::size_t(4) * image.width * image.height);
    return image;
}

Image rawTexels(const aiTexture &texture, std::string &reason) {
    const std::uint64_t count = std::uint64_t(texture.mWidth) * texture.mHeight;
    if (!texture.pcData || count == 0 || count > maxPixels) {
        reason = "has an impossible size";
        return {};
    }
    Image image;
    image.width = texture.mWidth;
    image.height = texture.mHeight;
    image.pixels.reserve(4 * count);
    for (std::uint64_t i = 0; i < count; ++i) {
        const aiTexel &texel = texture.pcData[i];
        image.pixels.insert(image.pixels.end(), {texel.r, texel.g, texel.b, texel.a});
    }
    return image;
}

} // namespace

Image decodeMemory(const unsigned char *bytes, std::size_t size, std::string &reason) {
    if (size == 0 || size > INT_MAX) {
        reason = size ? "is too large" : "is empty";
        return {};
    }
    if (const char *other = otherFormatOf(bytes, size))
        return decodeOther(other, bytes, size, maxPixels, reason);
    const int length = static_cast<int>(size);
    int width = 0, height = 0, channels = 0;
    if (!stbi_info_from_memory(bytes, length, &width, &height, &channels)) {
        reason = "is in no picture format that is known here";
        return {};
    }
    if (width < 1 || height < 1 || std::uint64_t(width) * height > maxPixels) {
        reason = "has an impossible size";
        return {};
    }
    const std::unique_ptr<unsigned char, decltype(&stbi_image_free)> pixels(
        stbi_load_from_memory(bytes, length, &width, &height, &channels, 4), &stbi_image_free);
    if (!pixels && std::strcmp(stbi_failure_reason(), "outofmem") == 0)
        throw std::bad_alloc(); // the picture is as good as any
    if (!pixels) {
        reason = std::string("is broken (") + stbi_failure_reason() + ")";
        return {};
    }
    return imageFrom(pixels.get(), width, height);
}

Image decodeFile(const std::filesystem::path &file, std::string &reason) {
    std::ifstream stream(file, std::ios::binary);
    std::vector<char> bytes((std::istreambuf_iterator<char>(stream)),
                            std::istreambuf_iterator<char>());
    if (!stream.good() && !stream.eof()) {
        reason = "cannot be opened";
        return {};
    }
    return decodeMemory(reinterpret_cast<const unsigned char *>(bytes.data()), bytes.size(),
                        reason);
}

Image decodeEmbedded(const aiTexture &texture, std::string &reason) {
    // With a height of 0 the data is a whole picture file of mWidth bytes.
    return texture.mHeight == 0
               ? decodeMemory(reinterpret_cast<const unsigned char *>(texture.pcData),
                              texture.pcData ? texture.mWidth : 0, reason)
               : rawTexels(texture, reason);
}

unsigned int textureSide(unsigned int width, unsigned int height, unsigned int limit) {
    return std::min(std::bit_ceil(std::max(width, height)), std::bit_floor(limit));
}

Image resized(const Image &image, unsigned int width, unsigned int height, bool sRgb) {
    if (image.width == width && image.height == height)
        return image;
    Image result;
    result.width = width;
    result.height = height;
    result.pixels.resize(std::size_t(4) * width * height);
    if (!stbir_resize_uint8_generic(
            image.pixels.data(), static_cast<int>(image.width), static_cast<int>(image.height), 0,
            result.pixels.data(), static_cast<int>(width), static_cast<int>(height), 0, 4, 3, 0,
            STBIR_EDGE_CLAMP, STBIR_FILTER_DEFAULT,
            sRgb ? STBIR_COLORSPACE_SRGB : STBIR_COLORSPACE_LINEAR, nullptr))
        throw std::bad_alloc(); // it has no other reason
    return result;
}

bool isSeeThrough(const Image &image) {
    for (std::size_t i = 3; i < image.pixels.size(); i += 4)
        if (image.pixels[i] != 255)
            return true;
    return false;
}

Alpha alphaOf(const Image &image) {
    std::size_t clear = 0, solid = 0;
    for (std::size_t i = 3; i < image.pixels.size(); i += 4) {
        clear += image.pixels[i] <= 8;
        solid += image.pixels[i] >= 247;
    }
    const std::size_t all = image.pixels.size() / 4;
    if ((all - solid) * 200 < all || (all - clear) * 200 < all)
        return Alpha::opaque;
    return (all - solid - clear) * 5 <= all && clear * 200 >= all ? Alpha::cutout : Alpha::blended;
}

void cutOut(Image &image, unsigned char threshold) {
    for (std::size_t i = 3; i < image.pixels.size(); i += 4)
        image.pixels[i] = image.pixels[i] >= threshold ? 255 : 0;
}

void applyOpacity(Image &image, const Image &map) {
    const bool fromAlpha = isSeeThrough(map);
    const Image fitting = resized(map, image.width, image.height, false);
    for (std::size_t i = 0; i < image.pixels.size(); i += 4) {
        const unsigned char *p = &fitting.pixels[i];
        image.pixels[i + 3] =
            fromAlpha ? p[3]
                      : static_cast<unsigned char>((p[0] * 77 + p[1] * 150 + p[2] * 29) >> 8);
    }
}

} // namespace ravolt::tool
