#pragma once

// What the window shows, as a picture.

#include <cstddef>
#include <filesystem>
#include <vector>

namespace ravolt::tool {

// Rows from the top down, R G B.
struct Picture {
    int width = 0;
    int height = 0;
    std::vector<unsigned char> pixels;
};

// Between the end of a frame's drawing and RAVOLT::swap.
Picture takePicture();

// Throws Failure when the file cannot be written.
void writePng(const Picture &picture, const std::filesystem::path &file);

} // namespace ravolt::tool
