#pragma once

// An island of noise: mountains inland, beaches, and a level place near the shore for a village.

#include "tools/terrain/heights.h"

namespace ravolt::tool::terrain {

struct Island {
    Heights heights;                           // in units, above the water
    struct Square {                            // level ground, round
        float x = 0, y = 0, z = 0, radius = 0; // in units, from the corner of the terrain
    } square;
};

// `side` values a side, one unit apart.
Island makeIsland(unsigned int side, unsigned int seed);

} // namespace ravolt::tool::terrain
