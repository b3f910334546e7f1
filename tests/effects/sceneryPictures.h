#pragma once

// Images, tolerances and checks of the pictures of sky and water.

#include "ravolt/RAVOLT.h"
#include "tests/resources/tgaFiles.h"
#include "tests/support/engineFixture.h"

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
            const unsigned int brightest = light ? 200 : 100;
            file.push_back(static_cast<unsigned char>(light ? 160 : 60));
            file.push_back(static_cast<unsigned char>(brightest * y / side + 20));
            file.push_back(static_cast<unsigned char>(brightest * x / side + 20));
        }
    writeFile(fileName, file);
}

// A picture cut by a plane that passes its left half.
template <class Draw> Picture drawCut(Draw draw) {
    const double left[] = {-1, 0, 0, 0};
    glLoadIdentity();
    glClipPlane(GL_CLIP_PLANE0, left);
    glEnable(GL_CLIP_PLANE0);
    const Picture cut = draw();
    glDisable(GL_CLIP_PLANE0);
    return cut;
}

// The state after a frame does not change the next ones.
template <class Draw> void expectSameFrames(Draw draw) {
    const Picture first = draw();
    for (int again = 0; again < 2; ++again) {
        RAVOLT::swap();
        drawFrame2D(nullptr);
        EXPECT_EQ(differenceOf(draw(), first).maximum, 0);
    }
}

} // namespace ravolt::test
