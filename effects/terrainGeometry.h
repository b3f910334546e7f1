#pragma once

// Reader of a terrain's geometry file, without OpenGL: first checks and reads everything except the
// vertices, and then reads the vertices chunk by chunk. A valid file has:
//
// - at least 2 vertices a side of a chunk and of the terrain, at least one level and one chunk; an
//   even number of chunks, since loops may advance by two chunks;
// - as many bytes as the header announces, or more;
// - numbers in the lists below those of the vertices of a chunk, and neighbours in the file.

#include "ravolt/RVTERRAIN_HEADERS.h"
#include "ravolt/Z3MVECTOR2D.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <istream>
#include <vector>

namespace ravolt {

// The lists of a level, strips of triangles. For each of the four variants: the four edges at
// coarser neighbours, then the four at others.
struct TerrainLevel {
    static constexpr std::size_t edges = 4;
    static constexpr std::size_t corners = 4;

    std::vector<unsigned short> body;
    std::array<std::array<std::vector<unsigned short>, 2 * edges>, corners> edge;
};

struct TerrainGeometry {
    RVTERRAIN_HEADER header{};
    std::vector<TerrainLevel> levels;
    std::vector<Z3MVECTOR2D> texCoords; // chunkSize times chunkSize
    std::vector<RVTERRAIN_CHUNK_HEADER> chunks;
    std::uint64_t problemOffset = 0; // where a file is wrong
};

// Numbers in the lists of a level, from 0 to header.levels - 1. A negative result of the formula is
// an empty list.
std::size_t terrainBodyLength(const RVTERRAIN_HEADER &header, unsigned int level);
std::size_t terrainEdgeLength(const RVTERRAIN_HEADER &header, unsigned int level);

// Reads and checks a file, opened in binary mode at its start. NULL, or what is wrong with it.
// Throws std::bad_alloc.
const char *readTerrainGeometry(std::istream &file, TerrainGeometry &geometry);

// Bytes of the whole file, as its header says.
std::uint64_t terrainFileBytes(const TerrainGeometry &geometry);

// The offset of a chunk, and the bytes of its vertices.
std::uint64_t terrainChunkOffset(const RVTERRAIN_HEADER &header, std::uint64_t chunk);
std::size_t terrainVertexBytes(const RVTERRAIN_HEADER &header);

// Reads the vertices of a chunk; `vertices` has their number. False when the file has been
// truncated meanwhile.
bool readTerrainVertices(std::istream &file, const TerrainGeometry &geometry, std::size_t chunk,
                         std::vector<unsigned char> &vertices);

} // namespace ravolt
