#pragma once

// Makes TGA files that the engine reads: 24 or 32 bits, plain or run-length.

#include <string>
#include <vector>

namespace ravolt {

enum class TgaEncoding { uncompressed, runLength };

// Rows of R G B [A], one byte each and without gaps. The engine reads 1 to 4096 pixels each way.
struct TgaPicture {
    unsigned int width = 0;
    unsigned int height = 0;
    unsigned int channels = 3; // 3 or 4
    bool topRowFirst = false;
    const unsigned char *pixels = nullptr;
};

std::vector<unsigned char> encodeTga(const TgaPicture &picture,
                                     TgaEncoding encoding = TgaEncoding::uncompressed);

// False if the file cannot be written completely; then it is unchanged.
bool writeTga(const std::string &path, const TgaPicture &picture,
              TgaEncoding encoding = TgaEncoding::uncompressed);

} // namespace ravolt
