#pragma once

// Pictures in formats that stb_image does not read: SGI, DDS, TIFF, WebP, JPEG 2000 and PCX, known
// by their first bytes. ImageMagick decodes them; a build without it decodes none.

#include "tools/convert/image.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace ravolt::tool {

// The format by ImageMagick's name; NULL for any other format.
const char *otherFormatOf(const unsigned char *bytes, std::size_t size);

// Reads a picture of at most `maxPixels`; an empty one, with the reason, if it cannot be read.
Image decodeOther(const char *format, const unsigned char *bytes, std::size_t size,
                  std::uint64_t maxPixels, std::string &reason);

} // namespace ravolt::tool
