// Reads geometry files and checks every number before anything is created from it.

#include "effects/terrainGeometry.h"

#include <algorithm>
#include <bit>
#include <iterator>

static_assert(std::endian::native == std::endian::little,
              "values are read as they are in the file");
static_assert(sizeof(Z3MVECTOR2D) == 8, "a pair of the file");

namespace ravolt {

namespace {

constexpr std::size_t bytesPerVertex = 36;

// Cells along a side of a chunk; none for levels above the bits of chunkSize.
std::int64_t cellsOf(const RVTERRAIN_HEADER &header, unsigned int level) {
    return level < 16 ? (header.chunkSize - 1) >> level : 0;
}

std::size_t notNegative(std::int64_t length) {
    return static_cast<std::size_t>(std::max<std::int64_t>(length, 0));
}

unsigned int chunksAlong(unsigned short vertices, unsigned short chunkSize) {
    return (vertices - 1u) / (chunkSize - 1u);
}

std::uint64_t verticesOf(const RVTERRAIN_HEADER &header) {
    return std::uint64_t{header.chunkSize} * header.chunkSize;
}

std::uint64_t chunkBytes(const RVTERRAIN_HEADER &header) {
    return sizeof(RVTERRAIN_CHUNK_HEADER) + verticesOf(header) * bytesPerVertex;
}

// Bytes before the first chunk.
std::uint64_t chunksOffset(const RVTERRAIN_HEADER &header) {
    std::uint64_t indices = 0;
    for (unsigned int level = 0; level < header.levels; ++level)
        indices += terrainBodyLength(header, level) + 2 * TerrainLevel::edges *
                                                          TerrainLevel::corners *
                                                          terrainEdgeLength(header, level);
    return sizeof header + indices * sizeof(unsigned short) +
           verticesOf(header) * sizeof(Z3MVECTOR2D);
}

template <class T> bool readBytes(std::istream &file, T *values, std::size_t count) {
    return static_cast<bool>(file.read(reinterpret_cast<char *>(values),
                                       static_cast<std::streamsize>(count * sizeof(T))));
}

// 0 if it cannot be determined, as for a file that is not a regular one.
std::uint64_t sizeOf(std::istream &file) {
    const auto start = file.tellg();
    file.seekg(0, std::ios::end);
    const auto end = file.tellg();
    file.seekg(start);
    return file && end > start ? static_cast<std::uint64_t>(end - start) : 0;
}

const char *checkHeader(const RVTERRAIN_HEADER &header, std::uint64_t fileSize,
                        std::uint64_t &numberOfChunks, std::uint64_t &problemOffset) {
    if (header.chunkSize < 2 || header.terrainSizeX < header.chunkSize ||
        header.terrainSizeY < header.chunkSize || header.levels == 0)
        return "a size or the levels are 0";
    numberOfChunks = std::uint64_t{chunksAlong(header.terrainSizeY, header.chunkSize)} *
                     chunksAlong(header.terrainSizeX, header.chunkSize);
    if (numberOfChunks % 2 != 0)
        return "an odd number of chunks";
    const std::uint64_t offset = chunksOffset(header);
    if (fileSize < offset || (fileSize - offset) / chunkBytes(header) < numberOfChunks) {
        problemOffset = fileSize;
        return "shorter than its header says";
    }
    return nullptr;
}

// `offset` is that of the list, and then of what is wrong with it or of the end of the list.
const char *readList(std::istream &file, std::size_t length, std::uint64_t vertices,
                     std::vector<unsigned short> &list, std::uint64_t &offset) {
    list.resize(length);
    if (!readBytes(file, list.data(), length))
        return "it cannot be read";
    const auto bad = std::find_if(list.begin(), list.end(),
                                  [vertices](unsigned short index) { return index >= vertices; });
    offset += static_cast<std::uint64_t>(bad - list.begin()) * sizeof(unsigned short);
    return bad == list.end() ? nullptr : "an index beyond the vertices";
}

const char *readLevel(std::istream &file, unsigned int number, TerrainGeometry &geometry) {
    const RVTERRAIN_HEADER &header = geometry.header;
    TerrainLevel &level = geometry.levels[number];
    const std::uint64_t vertices = verticesOf(header);
    if (const char *problem = readList(file, terrainBodyLength(header, number), vertices,
                                       level.body, geometry.problemOffset))
        return problem;
    for (auto &variant : level.edge)
        for (std::vector<unsigned short> &list : variant)
            if (const char *problem = readList(file, terrainEdgeLength(header, number), vertices,
                                               list, geometry.problemOffset))
                return problem;
    return nullptr;
}

void seekChunk(std::istream &file, const RVTERRAIN_HEADER &header, std::uint64_t chunk) {
    file.seekg(static_cast<std::streamoff>(terrainChunkOffset(header, chunk)));
}

const char *readLevels(std::istream &file, TerrainGeometry &geometry) {
    geometry.problemOffset = sizeof geometry.header;
    geometry.levels.resize(geometry.header.levels);
    for (unsigned int number = 0; number < geometry.levels.size(); ++number)
        if (const char *problem = readLevel(file, number, geometry))
            return problem;
    return nullptr;
}

const char *readChunkHeaders(std::istream &file, TerrainGeometry &geometry,
                             std::uint64_t numberOfChunks) {
    geometry.chunks.resize(numberOfChunks);
    for (std::size_t number = 0; number < numberOfChunks; ++number) {
        RVTERRAIN_CHUNK_HEADER &chunk = geometry.chunks[number];
        seekChunk(file, geometry.header, number);
        geometry.problemOffset = terrainChunkOffset(geometry.header, number);
        if (!readBytes(file, &chunk, 1))
            return "it cannot be read";
        const auto bad = std::find_if(
            std::begin(chunk.neighbour), std::end(chunk.neighbour),
            [numberOfChunks](unsigned short neighbour) { return neighbour > numberOfChunks; });
        if (bad != std::end(chunk.neighbour)) {
            geometry.problemOffset += static_cast<std::uint64_t>(
                reinterpret_cast<const char *>(bad) - reinterpret_cast<const char *>(&chunk));
            return "a neighbour beyond the chunks";
        }
    }
    return nullptr;
}

} // namespace

std::size_t terrainBodyLength(const RVTERRAIN_HEADER &header, unsigned int level) {
    const std::int64_t n = cellsOf(header, level);
    if (level + 1 < header.levels)
        return notNegative(((n - 2) * (n - 1) - 3 + n) * 2);
    return notNegative((n * (n + 1) + n) * 2 - 2);
}

std::size_t terrainEdgeLength(const RVTERRAIN_HEADER &header, unsigned int level) {
    return notNegative(cellsOf(header, level) * 2 + 2);
}

const char *readTerrainGeometry(std::istream &file, TerrainGeometry &geometry) {
    const std::uint64_t size = sizeOf(file);
    std::uint64_t numberOfChunks = 0;
    if (!readBytes(file, &geometry.header, 1))
        return "shorter than its header";
    if (const char *problem =
            checkHeader(geometry.header, size, numberOfChunks, geometry.problemOffset))
        return problem;
    if (const char *problem = readLevels(file, geometry))
        return problem;
    geometry.texCoords.resize(verticesOf(geometry.header));
    if (!readBytes(file, geometry.texCoords.data(), geometry.texCoords.size()))
        return "it cannot be read";
    return readChunkHeaders(file, geometry, numberOfChunks);
}

std::uint64_t terrainChunkOffset(const RVTERRAIN_HEADER &header, std::uint64_t chunk) {
    return chunksOffset(header) + chunk * chunkBytes(header);
}

std::uint64_t terrainFileBytes(const TerrainGeometry &geometry) {
    return terrainChunkOffset(geometry.header, geometry.chunks.size());
}

std::size_t terrainVertexBytes(const RVTERRAIN_HEADER &header) {
    return verticesOf(header) * bytesPerVertex;
}

bool readTerrainVertices(std::istream &file, const TerrainGeometry &geometry, std::size_t chunk,
                         std::vector<unsigned char> &vertices) {
    seekChunk(file, geometry.header, chunk);
    file.seekg(sizeof(RVTERRAIN_CHUNK_HEADER), std::ios::cur);
    return readBytes(file, vertices.data(), vertices.size());
}

} // namespace ravolt
