#pragma once

// From which distances on the chunks of a terrain are drawn in less detail.

#include "tools/terrain/gridSize.h"

#include <array>

namespace ravolt::tool::terrain {

using LodDistances = std::array<double, terrainLevels - 1>;

// The distances, not squared, beyond which the levels 1, 2 and so on begin. Neighbours must never
// be two levels apart, since an edge fits the next coarser level alone. The distances of an eye
// from two neighbouring centres differ by at most the way between them: with a ring at least as
// wide as the longest such way, `centerDistance`, no eye anywhere sees such a pair. `detail` is
// where full detail ends; 0 for a distance that suits the chunks.
LodDistances lodDistances(double centerDistance, double detail);

} // namespace ravolt::tool::terrain
