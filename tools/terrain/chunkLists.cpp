// Builds the index lists of the levels of detail as triangle strips.

#include "tools/terrain/chunkLists.h"

#include <algorithm>

namespace ravolt::tool::terrain {

namespace {

// The vertices of a level, numbered in cells of that level.
struct LevelGrid {
    unsigned int chunkSize, step, cells;

    LevelGrid(unsigned int size, unsigned int level)
        : chunkSize(size), step(1u << level), cells((size - 1) / step) {}

    std::uint16_t at(unsigned int i, unsigned int j) const {
        return static_cast<std::uint16_t>((j * chunkSize + i) * step);
    }
};

// One strip over all cells from `first` up to, not including, `end`, both ways. Rows are joined by
// triangles without an area.
IndexList stripOver(const LevelGrid &grid, unsigned int first, unsigned int end) {
    IndexList list;
    for (unsigned int j = first; j < end; ++j) {
        if (j > first) {
            list.push_back(list.back());
            list.push_back(grid.at(first, j));
        }
        for (unsigned int i = first; i <= end; ++i) {
            list.push_back(grid.at(i, j));
            list.push_back(grid.at(i, j + 1));
        }
    }
    return list;
}

// Vertex `along` of an edge: on its rim, or on the row one cell inside.
std::uint16_t edgeVertex(const LevelGrid &grid, Edge edge, unsigned int along, bool inside) {
    const unsigned int low = inside ? 1 : 0, high = grid.cells - low;
    switch (edge) {
    case edgeMinusZ:
        return grid.at(along, low);
    case edgePlusZ:
        return grid.at(along, high);
    case edgeMinusX:
        return grid.at(low, along);
    default:
        return grid.at(high, along);
    }
}

} // namespace

IndexList bodyList(unsigned int chunkSize, unsigned int level) {
    const LevelGrid grid(chunkSize, level);
    const unsigned int ring = level + 1 < terrainLevels ? 1 : 0;
    return stripOver(grid, ring, grid.cells - ring);
}

IndexList edgeList(unsigned int chunkSize, unsigned int level, Edge edge, bool coarserNeighbour) {
    const LevelGrid grid(chunkSize, level);
    const bool rimFirst = edge == edgeMinusZ || edge == edgePlusX; // the winding
    IndexList list;
    for (unsigned int k = 0; k <= grid.cells; ++k) {
        const unsigned int onRim = coarserNeighbour ? k & ~1u : k;
        const std::uint16_t rim = edgeVertex(grid, edge, onRim, false);
        const std::uint16_t inner = edgeVertex(grid, edge, std::clamp(k, 1u, grid.cells - 1), true);
        list.push_back(rimFirst ? rim : inner);
        list.push_back(rimFirst ? inner : rim);
    }
    return list;
}

} // namespace ravolt::tool::terrain
