#pragma once

// TGA images in memory: 24 and 32 bits a pixel, plain and run-length, at most 4096 pixels each way.
// First inspectTga looks at the whole file, then decodeTga, which trusts it, makes the pixels.

#include "foundation/bytes.h"

#include <cstddef>

namespace ravolt {

enum class TgaKind { uncompressed, runLength, unsupported };

enum class TgaResult { ok, corrupted, unsupportedDepthOrSizes };

struct TgaImage {
    unsigned int width = 0;
    unsigned int height = 0;
    unsigned int depth = 0;   // bytes a pixel: 3 or 4
    bool reverseRows = false; // the file has its top row first
    TgaKind kind = TgaKind::unsupported;
    const unsigned char *body = nullptr; // pixels or packets, inside the file's bytes

    std::size_t pixels() const { return std::size_t(width) * height; }
    std::size_t bytes() const { return pixels() * depth; }
};

// Reads the header of a file of `size` bytes. A file that is cut off, or whose packets run past the
// end of the file or of the image, is corrupted as a whole. An unsupported kind is a good result
// here; only its sizes mean something. `problem` gets where and why the result is not good.
TgaResult inspectTga(const void *file, std::size_t size, TgaImage &image,
                     FileProblem *problem = nullptr);

// Writes the image's bytes() into `pixels`: R G B [A], bottom row first. The image comes from
// inspectTga with TgaResult::ok, its kind is a supported one, and the file's bytes are still there.
void decodeTga(const TgaImage &image, unsigned char *pixels);

} // namespace ravolt
