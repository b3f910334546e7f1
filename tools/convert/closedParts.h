#pragma once

// The parts of a geometry that can be seen from outside alone.

#include "tools/convert/geometry.h"

#include <cstddef>
#include <vector>

namespace ravolt::tool {

// For each face from `firstFace` on, whether it belongs to a connected part that is closed and
// faces outward: its inside is invisible from outside. Vertices at one position count as one,
// on a skinned mesh if the same bones move them as well. A part is closed if each of its edges has
// exactly two triangles, which run along it in opposite directions; it faces outward if its signed
// volume is above 0.
std::vector<bool> closedOutward(const Geometry &geometry, std::size_t firstFace);

} // namespace ravolt::tool
