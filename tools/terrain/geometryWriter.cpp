// Writes the geometry file chunk by chunk, and measures the written chunks.

#include "tools/terrain/geometryWriter.h"

#include "tools/terrain/chunkLists.h"
#include "tools/terrain/geometryFormat.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace ravolt::tool::terrain {

namespace {

constexpr unsigned int cornerVariants = 4; // all alike, since no edge depends on its neighbours

class Writer {
  public:
    Writer(const TerrainGround &source, const FileTransaction::Append &target)
        : ground(source), size(source.size), append(target),
          vertices(size.chunkSize * size.chunkSize), centers(size.chunks()) {}

    WrittenGeometry write(const std::function<void(double)> &progress);

  private:
    template <class Item> bool writeItems(const std::vector<Item> &items) {
        return append(items.data(), items.size() * sizeof(Item));
    }
    bool writeHeader();
    bool writeLists();
    bool writeLevel(unsigned int level);
    bool writeTexCoords();
    bool writeChunk(unsigned int chunkX, unsigned int chunkZ);
    void fillVertices(unsigned int chunkX, unsigned int chunkZ);
    GeometryChunk headerOf(unsigned int chunkX, unsigned int chunkZ) const;
    std::uint16_t numberOf(unsigned int chunkX, unsigned int chunkZ) const;
    void measure(unsigned int chunkX, unsigned int chunkZ, const GeometryChunk &chunk);
    void compareCenters(std::size_t one, std::size_t other);

    const TerrainGround &ground;
    const GridSize &size;
    const FileTransaction::Append &append;
    std::vector<GeometryVertex> vertices; // of one chunk
    std::vector<float> centers;           // heights, in the order of the file
    WrittenGeometry result;
};

bool Writer::writeHeader() {
    GeometryHeader header;
    header.chunkSize = static_cast<std::uint16_t>(size.chunkSize);
    header.terrainSizeY = static_cast<std::uint16_t>(size.width());
    header.terrainSizeX = static_cast<std::uint16_t>(size.depth());
    header.vertexScale = ground.rules.spacing;
    header.levels = terrainLevels;
    return append(&header, sizeof header);
}

bool Writer::writeLevel(unsigned int level) {
    if (!writeItems(bodyList(size.chunkSize, level)))
        return false;
    for (unsigned int variant = 0; variant < cornerVariants; ++variant)
        for (const bool coarser : {true, false})
            for (unsigned int edge = 0; edge < numberOfEdges; ++edge)
                if (!writeItems(edgeList(size.chunkSize, level, static_cast<Edge>(edge), coarser)))
                    return false;
    return true;
}

bool Writer::writeLists() {
    for (unsigned int level = 0; level < terrainLevels; ++level)
        if (!writeLevel(level))
            return false;
    return true;
}

// From 0 to 1 over a chunk: repeats are integers, so that textures continue in the next chunk.
bool Writer::writeTexCoords() {
    std::vector<std::array<float, 2>> coords;
    const float cells = static_cast<float>(size.cells());
    for (unsigned int j = 0; j < size.chunkSize; ++j)
        for (unsigned int i = 0; i < size.chunkSize; ++i)
            coords.push_back({static_cast<float>(i) / cells, static_cast<float>(j) / cells});
    return writeItems(coords);
}

// A vertex is computed from its position in the whole terrain alone, so that the copies on the
// borders of chunks are equal.
void Writer::fillVertices(unsigned int chunkX, unsigned int chunkZ) {
    GeometryVertex *next = vertices.data();
    for (unsigned int j = chunkZ * size.cells(); j <= (chunkZ + 1) * size.cells(); ++j)
        for (unsigned int i = chunkX * size.cells(); i <= (chunkX + 1) * size.cells(); ++i) {
            const GroundVertex own = groundVertex(ground.heights, ground.rules, i, j);
            const float spacing = ground.rules.spacing;
            *next++ = {{static_cast<float>(i) * spacing, ground.heights.at(i, j),
                        static_cast<float>(j) * spacing},
                       own.weights,
                       own.tangent};
        }
}

std::uint16_t Writer::numberOf(unsigned int chunkX, unsigned int chunkZ) const {
    if (chunkX >= size.chunksX || chunkZ >= size.chunksZ) // also one before 0
        return 0;
    return static_cast<std::uint16_t>(chunkX * size.chunksZ + chunkZ + 1);
}

GeometryChunk Writer::headerOf(unsigned int chunkX, unsigned int chunkZ) const {
    GeometryChunk chunk;
    chunk.gridX = static_cast<std::uint16_t>(chunkX);
    chunk.gridY = static_cast<std::uint16_t>(chunkZ);
    const auto [lowest, highest] = std::minmax_element(
        vertices.begin(), vertices.end(), [](const GeometryVertex &a, const GeometryVertex &b) {
            return a.position[1] < b.position[1];
        });
    chunk.minHeight = lowest->position[1];
    chunk.maxHeight = highest->position[1];
    chunk.neighbours[edgeMinusZ] = numberOf(chunkX, chunkZ - 1);
    chunk.neighbours[edgePlusZ] = numberOf(chunkX, chunkZ + 1);
    chunk.neighbours[edgeMinusX] = numberOf(chunkX - 1, chunkZ);
    chunk.neighbours[edgePlusX] = numberOf(chunkX + 1, chunkZ);
    return chunk;
}

void Writer::compareCenters(std::size_t one, std::size_t other) {
    const double way = size.cells() * static_cast<double>(ground.rules.spacing);
    result.centerDistance =
        std::max(result.centerDistance, std::hypot(way, centers[one] - centers[other]));
}

void Writer::measure(unsigned int chunkX, unsigned int chunkZ, const GeometryChunk &chunk) {
    const std::size_t number = std::size_t(chunkX) * size.chunksZ + chunkZ;
    centers[number] = (chunk.minHeight + chunk.maxHeight) / 2;
    if (chunkZ > 0)
        compareCenters(number, number - 1);
    if (chunkX > 0)
        compareCenters(number, number - size.chunksZ);
    result.lowest = number ? std::min(result.lowest, chunk.minHeight) : chunk.minHeight;
    result.highest = number ? std::max(result.highest, chunk.maxHeight) : chunk.maxHeight;
    const double all = static_cast<double>(vertices.size() * size.chunks());
    for (const GeometryVertex &vertex : vertices) {
        const auto shares = layerShares(vertex.weights);
        for (std::size_t layer = 0; layer < numberOfLayers; ++layer)
            result.shares[layer] += shares[layer] / all;
    }
}

bool Writer::writeChunk(unsigned int chunkX, unsigned int chunkZ) {
    fillVertices(chunkX, chunkZ);
    const GeometryChunk chunk = headerOf(chunkX, chunkZ);
    measure(chunkX, chunkZ, chunk);
    return append(&chunk, sizeof chunk) && writeItems(vertices);
}

WrittenGeometry Writer::write(const std::function<void(double)> &progress) {
    if (!writeHeader() || !writeLists() || !writeTexCoords())
        return result;
    for (unsigned int x = 0; x < size.chunksX; ++x) {
        progress(static_cast<double>(x) / size.chunksX);
        for (unsigned int z = 0; z < size.chunksZ; ++z)
            if (!writeChunk(x, z))
                return result;
    }
    result.whole = true;
    return result;
}

} // namespace

WrittenGeometry writeGeometry(const TerrainGround &ground, const FileTransaction::Append &append,
                              const std::function<void(double)> &progress) {
    return Writer(ground, append).write(progress);
}

} // namespace ravolt::tool::terrain
