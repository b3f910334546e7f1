#pragma once

#include <vector>

namespace ravolt::tool {

// Rows from the top down, R G B A.
struct Image {
    unsigned int width = 0;
    unsigned int height = 0;
    std::vector<unsigned char> pixels;

    bool empty() const { return pixels.empty(); }
};

} // namespace ravolt::tool
