#pragma once

// The geometry file of a terrain, made in one go from its heights: beside these no more than a
// chunk is in memory. See docs/formats.md.

#include "kit/files/fileTransaction.h"
#include "tools/terrain/gridSize.h"
#include "tools/terrain/ground.h"
#include "tools/terrain/heights.h"

#include <functional>

namespace ravolt::tool::terrain {

struct TerrainGround {
    const Heights &heights; // as many as `size` has vertices
    GridSize size;
    GroundRules rules;
};

// What the rest of the terrain has to fit.
struct WrittenGeometry {
    bool whole = false;        // all of it could be written
    double centerDistance = 0; // the longest way between the centres of two neighbours
    float lowest = 0, highest = 0;
    std::array<double, numberOfLayers> shares{}; // of the ground, for each layer; the sum is 1
};

// `progress` gets the part that is done, 0 to 1.
WrittenGeometry writeGeometry(const TerrainGround &ground, const FileTransaction::Append &append,
                              const std::function<void(double)> &progress);

} // namespace ravolt::tool::terrain
