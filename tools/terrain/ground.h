#pragma once

// Which of the four layers covers a vertex, and how it is lit.
//
// The engine's program takes one vector of a vertex both as the weights of the layers and as the
// third axis of the frame that light is computed in. From layer 1 on, z adds layer 2, then x layer
// 3, then 1 - y layer 4. So the frame is upright only where layers 1 and 4 are; it leans by 45
// degrees towards +Z in layer 2 and towards +X in layer 3. The normal maps of these two lean the
// other way (see groundTextures.h), so that level ground is lit as level ground in all of them. The
// tangent is free: it rises and falls with the ground along X, by which slopes to the east and to
// the west are told apart by light from either side.

#include "tools/terrain/heights.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace ravolt::tool::terrain {

// Heights are in units, above the water.
struct GroundRules {
    float spacing = 1;       // units between two vertices
    float steepSlope = 0.8f; // rise over run where layer 4, rock, covers half of the ground
    float highFrom = 50;     // height where layer 2, snow, covers half
    float shoreUpTo = 3;     // height where layer 3, sand, covers half
};

using Vector = std::array<float, 3>;

struct GroundVertex {
    Vector weights;
    Vector tangent;
};

// Of the vertex in column i and row j of the whole terrain. It depends on nothing else, so that the
// two copies of a vertex on the border of two chunks are equal.
GroundVertex groundVertex(const Heights &heights, const GroundRules &rules, unsigned int i,
                          unsigned int j);

constexpr std::size_t numberOfLayers = 4;

// How much of each layer is to be seen with these weights; the sum is 1.
std::array<float, numberOfLayers> layerShares(const Vector &weights);

} // namespace ravolt::tool::terrain
