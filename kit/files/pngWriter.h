#pragma once

// Makes PNG files.

#include <string>
#include <vector>

namespace ravolt {

// Rows of R G B [A], one byte each and without gaps.
struct PngPicture {
    int width = 0;
    int height = 0;
    int channels = 3; // 3 or 4
    bool topRowFirst = true;
    const unsigned char *pixels = nullptr;
};

// Throws std::bad_alloc.
std::vector<unsigned char> encodePng(const PngPicture &picture);

// Returns the error, or an empty text. A file that cannot be written completely is unchanged.
std::string writePng(const std::string &path, const PngPicture &picture);

} // namespace ravolt
