#pragma once

// Where things are in the world of the demo, and what its source files share.

#include <ravolt/Z3MVECTOR3D.h>

namespace world {

using Point = Z3MVECTOR3D;

// The level ground of `ravolt terrain --island 7`; terrains are drawn 2 units above their heights.
const Point square(162.7f, 6.53f, 116.3f);
const Point fire = square + Point(2, 0, -14.5f);
const Point seabed(101, -6.4f, 62); // above the ground there
const Point lamps[] = {square + Point(-5.4f, 3.4f, 9.2f), square + Point(6.6f, 3.4f, 7.0f),
                       square + Point(-6.6f, 3.4f, -5.6f)};
constexpr float worldFarPlane = 900; // the sky reaches nine tenths as far

inline Point mix(const Point &from, const Point &to, float ratio) {
    return Point(from.x + (to.x - from.x) * ratio, from.y + (to.y - from.y) * ratio,
                 from.z + (to.z - from.z) * ratio);
}

} // namespace world
