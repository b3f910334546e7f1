#pragma once

// Draw calls of boxes as rectangles.

#include "tests/gui/drawnArrays.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <ostream>
#include <vector>

namespace ravolt::test {

// A rectangle as a strip of four vertices of one colour.
struct Quad {
    float x1, y1, x2, y2;
    std::array<float, 4> color;

    friend bool operator==(const Quad &a, const Quad &b) {
        return a.x1 == b.x1 && a.y1 == b.y1 && a.x2 == b.x2 && a.y2 == b.y2 &&
               std::equal(a.color.begin(), a.color.end(), b.color.begin(),
                          [](float x, float y) { return std::fabs(x - y) < 1e-5f; });
    }
    friend void PrintTo(const Quad &quad, std::ostream *out) {
        *out << "(" << quad.x1 << ", " << quad.y1 << ")-(" << quad.x2 << ", " << quad.y2 << ") in";
        for (const float channel : quad.color)
            *out << " " << channel;
    }
};

// The draws that are strips; one that is no rectangle fails the test.
inline std::vector<Quad> quadsOf(const std::vector<Drawing> &drawings) {
    std::vector<Quad> quads;
    for (const auto &[mode, v] : drawings) {
        if (mode != GL_TRIANGLE_STRIP)
            continue;
        if (v.size() != 4) {
            ADD_FAILURE() << "a strip of " << v.size() << " vertices";
            continue;
        }
        const Quad quad{v[0].x, v[0].y, v[3].x, v[3].y, v[0].color};
        EXPECT_TRUE(v[1].x == quad.x2 && v[1].y == quad.y1 && v[2].x == quad.x1 &&
                    v[2].y == quad.y2);
        for (const DrawnVertex &vertex : v)
            EXPECT_EQ(vertex.color, quad.color);
        quads.push_back(quad);
    }
    return quads;
}

} // namespace ravolt::test
