#pragma once

// Pictures of a model: decoded from files or memory, and brought to a shape that the engine's
// textures can have.

#include "tools/convert/image.h"

#include <assimp/texture.h>
#include <cstddef>
#include <filesystem>
#include <string>

namespace ravolt::tool {

// The engine reads pictures up to this size each way.
constexpr unsigned int maxTextureSide = 4096;

// An empty image, with the reason, if it cannot be read.
Image decodeFile(const std::filesystem::path &file, std::string &reason);
Image decodeMemory(const unsigned char *bytes, std::size_t size, std::string &reason);
Image decodeEmbedded(const aiTexture &texture, std::string &reason);

// The sides of the texture made of a picture: a square of a power of two, which the engine's chain
// of smaller copies needs, not below the longer side and at most `limit`.
unsigned int textureSide(unsigned int width, unsigned int height, unsigned int limit);

// `sRgb` for colours, false for numbers such as normals.
Image resized(const Image &image, unsigned int width, unsigned int height, bool sRgb);

// Sets the alpha of `image` to the opacity that `map` states: its alpha if it has any, else its
// brightness.
void applyOpacity(Image &image, const Image &map);

bool isSeeThrough(const Image &image);

// What a picture's alpha does to a surface.
enum class Alpha { opaque, cutout, blended };

// Classifies an alpha channel by its pixels, where nothing else states its purpose. Clear are
// pixels with an alpha of at most 8, solid those with at least 247. Opaque: fewer than 1 in 200
// pixels are not solid, or as few are not clear (an alpha that nobody filled in). Cut-out: at most
// one in five is in between, and at least 1 in 200 is clear. Blended: all others.
Alpha alphaOf(const Image &image);

// Sets each alpha to 255 if it is at least `threshold`, else to 0.
void cutOut(Image &image, unsigned char threshold);

} // namespace ravolt::tool
