#pragma once

// The records of a geometry file, as they stand in it: little-endian and packed.

#include <array>
#include <bit>
#include <cstdint>

namespace ravolt::tool::terrain {

static_assert(std::endian::native == std::endian::little, "records are written as they are");

// Rows of chunks go along Z and follow each other along X: the engine's water has the extent of
// terrainSizeY along X and of terrainSizeX along Z, and so fits a terrain that is no square.
struct GeometryHeader {
    std::uint16_t chunkSize = 0;    // vertices a side
    std::uint16_t terrainSizeY = 0; // vertices across the rows, along X
    std::uint16_t terrainSizeX = 0; // vertices along a row, along Z
    std::uint16_t unused = 0;
    float vertexScale = 1; // units between two vertices
    std::array<std::uint32_t, 2> unused2{};
    std::uint8_t levels = 0;
    std::array<std::uint8_t, 3> unused3{};
};

struct GeometryChunk {
    std::uint16_t gridX = 0, gridY = 0; // along X and along Z, in chunks
    float minHeight = 0, maxHeight = 0;
    std::array<std::uint16_t, 4> neighbours{}; // counted from 1; 0 for none
};

struct GeometryVertex {
    std::array<float, 3> position;
    std::array<float, 3> weights; // of the layers
    std::array<float, 3> tangent;
};

static_assert(sizeof(GeometryHeader) == 24 && sizeof(GeometryChunk) == 20 &&
              sizeof(GeometryVertex) == 36);

} // namespace ravolt::tool::terrain
