// The vertices of all chunks, of which the heights are put together to one grid. The chunks are the
// end of the file; their positions in the grid are in their headers.

#include "ravolt/kit/terrainHeights.h"

#include "ravolt/RVTERRAIN_HEADERS.h"
#include "ravolt/zlf.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <utility>

namespace ravolt::kit {

namespace {

constexpr std::size_t vertexFloats = 9; // position, weights of the layers, tangent

struct Chunk {
    std::size_t column, row; // of its first vertex
    std::vector<float> heights;
};

template <class T> bool readBytes(std::istream &file, T *values, std::size_t count) {
    return static_cast<bool>(file.read(reinterpret_cast<char *>(values),
                                       static_cast<std::streamsize>(count * sizeof(T))));
}

// Moves to the first of the chunks.
bool findChunks(std::istream &file, std::size_t bytesOfChunks) {
    file.seekg(0, std::ios::end);
    const std::streamoff size = file.tellg();
    if (size < static_cast<std::streamoff>(sizeof(RVTERRAIN_HEADER) + bytesOfChunks))
        return false;
    file.seekg(size - static_cast<std::streamoff>(bytesOfChunks));
    return static_cast<bool>(file);
}

// None for a file that is malformed.
std::vector<Chunk> readChunks(std::istream &file, const RVTERRAIN_HEADER &header) {
    const std::size_t side = header.chunkSize, cells = side - 1;
    const std::size_t alongX = (header.terrainSizeX - 1u) / cells,
                      alongZ = (header.terrainSizeY - 1u) / cells;
    const std::size_t floats = side * side * vertexFloats;
    const std::size_t bytes = sizeof(RVTERRAIN_CHUNK_HEADER) + floats * sizeof(float);
    if (!findChunks(file, alongX * alongZ * bytes))
        return {};
    std::vector<Chunk> chunks(alongX * alongZ);
    std::vector<float> vertices(chunks.empty() ? 0 : floats);
    for (Chunk &chunk : chunks) {
        RVTERRAIN_CHUNK_HEADER start;
        if (!readBytes(file, &start, 1) || !readBytes(file, vertices.data(), floats) ||
            std::max(start.gridX, start.gridY) >= std::max(alongX, alongZ))
            return {};
        chunk.column = start.gridX * cells;
        chunk.row = start.gridY * cells;
        for (std::size_t i = 0; i < side * side; ++i)
            chunk.heights.push_back(vertices[vertexFloats * i + 1]);
    }
    return chunks;
}

bool isSound(const RVTERRAIN_HEADER &header) {
    return header.chunkSize > 1 && std::min(header.terrainSizeX, header.terrainSizeY) > 1 &&
           header.vertexScale > 0 && std::isfinite(header.vertexScale);
}

} // namespace

bool TerrainHeights::load(const char *filename) {
    if (filename && read(filename))
        return true;
    zlfLog("   [!] File %s has no heights of a terrain @ TerrainHeights::load\n",
           filename ? filename : "NULL");
    return false;
}

bool TerrainHeights::read(const char *filename) {
    std::ifstream file(filename, std::ios::binary);
    RVTERRAIN_HEADER header;
    if (!readBytes(file, &header, 1) || !isSound(header))
        return false;
    const std::vector<Chunk> chunks = readChunks(file, header);
    if (chunks.empty())
        return false;
    const std::size_t side = header.chunkSize;
    columns = rows = 0;
    for (const Chunk &chunk : chunks) {
        columns = std::max(columns, chunk.column + side);
        rows = std::max(rows, chunk.row + side);
    }
    heights.assign(columns * rows, 0);
    for (const Chunk &chunk : chunks)
        for (std::size_t i = 0; i < side * side; ++i)
            heights[(chunk.row + i / side) * columns + chunk.column + i % side] = chunk.heights[i];
    scale = static_cast<double>(header.vertexScale);
    return true;
}

double TerrainHeights::at(double x, double z) const {
    if (heights.empty() || std::isnan(x) || std::isnan(z))
        return 0;
    const auto cellOf = [](double position, std::size_t vertices) {
        const double last = static_cast<double>(vertices) - 1;
        const double inside = std::clamp(position, 0.0, last);
        const double cell = std::min(std::floor(inside), last - 1);
        return std::pair(static_cast<std::size_t>(cell), inside - cell);
    };
    const auto [i, s] = cellOf(x / scale, columns);
    const auto [j, t] = cellOf(z / scale, rows);
    const double upper = vertex(i, j) * (1 - s) + vertex(i + 1, j) * s;
    const double lower = vertex(i, j + 1) * (1 - s) + vertex(i + 1, j + 1) * s;
    return upper * (1 - t) + lower * t;
}

double TerrainHeights::getWidth() const {
    return columns ? static_cast<double>(columns - 1) * scale : 0;
}

double TerrainHeights::getDepth() const { return rows ? static_cast<double>(rows - 1) * scale : 0; }

} // namespace ravolt::kit
