#pragma once

// The index lists that all chunks of a terrain share: strips of triangles that are front when they
// are counter-clockwise seen from above. Vertex (i, j) of a chunk, i along +X and j along +Z, has
// the number j * chunkSize + i.
//
// A level of detail uses every 2^level-th vertex. Its body does not include the outermost ring of
// cells, which is for four edge lists, one a side, each between the rim and the body's outer row
// and bounded by the diagonals of the corner cells. So no edge depends on its neighbours, and a rim
// may skip every second vertex where the next chunk is coarser. The body of the last level includes
// the ring.

#include "tools/terrain/gridSize.h"

#include <cstdint>
#include <vector>

namespace ravolt::tool::terrain {

using IndexList = std::vector<std::uint16_t>;

// The sides of a chunk; the neighbour of that number is beyond.
enum Edge : unsigned int { edgeMinusZ, edgePlusZ, edgeMinusX, edgePlusX, numberOfEdges };

IndexList bodyList(unsigned int chunkSize, unsigned int level);

IndexList edgeList(unsigned int chunkSize, unsigned int level, Edge edge, bool coarserNeighbour);

} // namespace ravolt::tool::terrain
