#pragma once

// What the pictures of sky and water are made of.

#include "tests/resources/tgaFiles.h"
#include "tests/support/pictures.h"

#include <string>

namespace ravolt::test {

// Over SDL 2 the window is drawn upside down into a buffer, which rounds the edges the other way.
inline constexpr Tolerance edges{
    .maximum = 24, .mean = 0.2, .reason = "samples at edges differ between the two settings"};

inline constexpr Pixel background{51, 51, 153, 255}; // as the engine clears

// A board of fields with colours that grow to the right (red) and upwards (green), so that every
// orientation of it looks different.
inline void writeBoard(const std::string &fileName, unsigned int side, unsigned int fields) {
    Bytes file = tgaHeader(plainType, side, side, 24);
    for (unsigned int y = 0; y < side; ++y)
        for (unsigned int x = 0; x < side; ++x) {
            const bool light = (x * fields / side + y * fields / side) % 2 == 0;
            const unsigned int most = light ? 200 : 100;
            file.push_back(static_cast<unsigned char>(light ? 160 : 60));
            file.push_back(static_cast<unsigned char>(most * y / side + 20));
            file.push_back(static_cast<unsigned char>(most * x / side + 20));
        }
    writeFile(fileName, file);
}

} // namespace ravolt::test
