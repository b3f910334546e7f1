#pragma once

// The sizes that a terrain can have: whole chunks with a side that every level of detail divides,
// an even number of them in all.

#include <array>
#include <cstddef>

namespace ravolt::tool::terrain {

constexpr unsigned int terrainLevels = 6; // of detail: the engine supports that many

// Vertices a side of a chunk: 32 and more cells that halve five times, and indices of 16 bits.
constexpr std::array<unsigned int, 6> chunkSizes = {65, 97, 129, 161, 193, 225};

struct GridSize {
    unsigned int chunkSize = chunkSizes[0]; // vertices along a side
    unsigned int chunksX = 0, chunksZ = 0;

    unsigned int cells() const { return chunkSize - 1; }
    unsigned int width() const { return chunksX * cells() + 1; } // vertices along X
    unsigned int depth() const { return chunksZ * cells() + 1; }
    std::size_t chunks() const { return std::size_t(chunksX) * chunksZ; }
};

// Whether the engine takes it, and whether its numbers are within the 16 bits of the file.
bool isLegal(const GridSize &size);

// The legal size nearest to `width` x `depth` vertices, in its proportions first of all, with at
// most `maxSide` vertices along the longer side as far as one has so few.
GridSize nearestSize(unsigned int width, unsigned int depth, unsigned int chunkSize,
                     unsigned int maxSide);

// Exactly that size; one without chunks where there is none.
GridSize exactSize(unsigned int width, unsigned int depth, unsigned int chunkSize);

} // namespace ravolt::tool::terrain
