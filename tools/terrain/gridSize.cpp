// Chooses the chunk size and the numbers of chunks for a grid of heights.

#include "tools/terrain/gridSize.h"

#include <algorithm>
#include <cmath>

namespace ravolt::tool::terrain {

namespace {

constexpr unsigned int maxNumber = 65535; // of the file: sizes, and chunks counted from 1

// How far chunks are from the wanted ones: the proportions count most.
double misfit(unsigned int x, unsigned int z, double wantedX, double wantedZ) {
    const double overX = std::log(x / wantedX), overZ = std::log(z / wantedZ);
    return std::fabs(overX - overZ) + 0.25 * (std::fabs(overX) + std::fabs(overZ));
}

} // namespace

bool isLegal(const GridSize &size) {
    return size.chunks() > 0 && size.chunks() % 2 == 0 && size.chunks() <= maxNumber &&
           size.width() <= maxNumber && size.depth() <= maxNumber;
}

GridSize nearestSize(unsigned int width, unsigned int depth, unsigned int chunkSize,
                     unsigned int maxSide) {
    const unsigned int longer = std::max(width, depth);
    const double scale = longer > maxSide ? (maxSide - 1.0) / (longer - 1.0) : 1;
    const double wantedX = scale * (width - 1) / (chunkSize - 1);
    const double wantedZ = scale * (depth - 1) / (chunkSize - 1);
    const auto fromX = std::max(1u, static_cast<unsigned int>(wantedX));
    const auto fromZ = std::max(1u, static_cast<unsigned int>(wantedZ));
    const unsigned int most = std::max(2u, (maxSide - 1) / (chunkSize - 1));
    GridSize best;
    double bestMisfit = INFINITY;
    for (unsigned int x = fromX; x <= std::min(fromX + 2, most); ++x)
        for (unsigned int z = fromZ; z <= std::min(fromZ + 2, most); ++z) {
            const double own = misfit(x, z, wantedX, wantedZ);
            if (x * z % 2 == 0 && own < bestMisfit) {
                best = {chunkSize, x, z};
                bestMisfit = own;
            }
        }
    return best;
}

GridSize exactSize(unsigned int width, unsigned int depth, unsigned int chunkSize) {
    const unsigned int cells = chunkSize - 1;
    GridSize size{chunkSize, (width - 1) / cells, (depth - 1) / cells};
    if (size.width() != width || size.depth() != depth || !isLegal(size))
        size.chunksX = size.chunksZ = 0;
    return size;
}

} // namespace ravolt::tool::terrain
