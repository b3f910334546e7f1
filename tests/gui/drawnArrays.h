#pragma once

// What the draw calls of the interface read from their arrays. The test program is linked with
// --wrap for the functions of drawnArrays.cpp; the recorder gets the calls as well.

#include <GL/gl.h>

#include <array>
#include <iosfwd>
#include <vector>

namespace ravolt::test {

struct DrawnVertex {
    float x, y, u, v;
    std::array<float, 4> color; // bytes from 0 to 255, floats from 0 to 1

    friend bool operator==(const DrawnVertex &, const DrawnVertex &) = default;
};
void PrintTo(const DrawnVertex &vertex, std::ostream *out);

// One draw call, with the vertices in the order of their indices.
struct Drawing {
    GLenum mode;
    std::vector<DrawnVertex> vertices;
};
using Drawings = std::vector<Drawing>;

void startDrawings();
Drawings stopDrawings();

template <class Step> Drawings drawingsOf(Step step) {
    startDrawings();
    step();
    return stopDrawings();
}

} // namespace ravolt::test
