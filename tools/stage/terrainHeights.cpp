// The vertices of all chunks, of which the heights are put together to one grid.

#include "tools/stage/terrainHeights.h"

#include "tools/common/failure.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <fstream>

namespace ravolt::tool {

namespace {

constexpr std::size_t chunkHeaderBytes = 20, vertexFloats = 9;

std::uint16_t wordAt(const char *bytes) {
    std::uint16_t value;
    std::memcpy(&value, bytes, sizeof value);
    return value;
}

} // namespace

// The chunks are the end of the file. Their numbers along X and Z are in their headers.
TerrainHeights::TerrainHeights(const std::filesystem::path &geometry) {
    std::ifstream file(geometry, std::ios::binary);
    std::array<char, 12> head{};
    if (!file.read(head.data(), head.size()))
        throw Failure(geometry.string(), "is no geometry of a terrain");
    const std::size_t side = wordAt(head.data()), cells = side - 1;
    const std::size_t alongX = (wordAt(&head[2]) - 1) / cells,
                      alongZ = (wordAt(&head[4]) - 1) / cells;
    float spacing;
    std::memcpy(&spacing, &head[8], sizeof spacing);
    scale = static_cast<double>(spacing);
    stride = std::max(alongX, alongZ) * cells + 1; // whichever of them goes along X
    heights.resize(stride * stride);

    const std::size_t chunkBytes = chunkHeaderBytes + side * side * vertexFloats * sizeof(float);
    const std::size_t all = alongX * alongZ * chunkBytes;
    file.seekg(-static_cast<std::streamoff>(all), std::ios::end);
    std::vector<char> header(chunkHeaderBytes);
    std::vector<float> vertices(side * side * vertexFloats);
    for (std::size_t chunk = 0; chunk < alongX * alongZ; ++chunk) {
        file.read(header.data(), chunkHeaderBytes);
        file.read(reinterpret_cast<char *>(vertices.data()),
                  static_cast<std::streamsize>(vertices.size() * sizeof(float)));
        const std::size_t left = wordAt(header.data()) * cells, top = wordAt(&header[2]) * cells;
        if (!file || left + cells >= stride || top + cells >= stride)
            throw Failure(geometry.string(), "is shorter than its header says");
        for (std::size_t i = 0; i < side * side; ++i)
            heights[(top + i / side) * stride + left + i % side] = vertices[i * vertexFloats + 1];
        columns = std::max(columns, left + side);
        rows = std::max(rows, top + side);
    }
}

double TerrainHeights::at(double x, double z) const {
    const double column = std::clamp(x / scale, 0.0, columns - 1.001);
    const double row = std::clamp(z / scale, 0.0, rows - 1.001);
    const auto i = static_cast<std::size_t>(column), j = static_cast<std::size_t>(row);
    const double s = column - static_cast<double>(i), t = row - static_cast<double>(j);
    const double upper = vertex(i, j) * (1 - s) + vertex(i + 1, j) * s;
    const double lower = vertex(i, j + 1) * (1 - s) + vertex(i + 1, j + 1) * s;
    return upper * (1 - t) + lower * t;
}

} // namespace ravolt::tool
