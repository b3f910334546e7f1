// Geometries of terrains: what the header and the chunks say, and whether they agree.

#include "tools/inspect/geometryFile.h"

#include "tools/inspect/formats.h"
#include "tools/inspect/values.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <fstream>
#include <limits>
#include <map>

namespace ravolt::tool::inspect {

namespace {

constexpr unsigned int drawnLevels = 6;
constexpr std::size_t bytesPerVertex = 36;
constexpr double heightTolerance = 1e-3;

unsigned int cellsOf(const RVTERRAIN_HEADER &header) { return header.chunkSize - 1u; }

std::string nameOfChunk(std::size_t number) { return "chunk " + std::to_string(number + 1); }

// The checks of a file that the engine loads.
class GeometryCheck {
  public:
    GeometryCheck(GeometryFile &checked, std::ifstream &opened)
        : result(checked), file(opened), header(checked.geometry.header),
          chunks(checked.geometry.chunks) {}

    void check() {
        checkHeader();
        checkSize();
        for (std::size_t number = 0; number < chunks.size(); ++number)
            checkChunk(number);
        checkVertices();
    }

  private:
    void warn(std::uint64_t offset, const std::string &reason) {
        result.warnings.push_back({false, atOffset(offset), reason});
    }

    std::uint64_t offsetOf(std::size_t chunk) const { return terrainChunkOffset(header, chunk); }

    void checkHeader() {
        const unsigned int cells = cellsOf(header);
        if (!std::isfinite(header.vertexScale) || header.vertexScale <= 0)
            warn(8, "a distance between two vertices that is not above 0");
        if (header.levels > drawnLevels)
            warn(20, "more than six levels of detail: the engine draws the first six");
        else if (cells % (1u << (header.levels - 1u)) != 0)
            warn(20, "the levels of detail do not divide the " + std::to_string(cells) +
                         " cells along a side of a chunk: there are gaps");
        if ((header.terrainSizeX - 1u) % cells != 0 || (header.terrainSizeY - 1u) % cells != 0)
            warn(2, "the sizes of the terrain are no whole numbers of chunks");
    }

    void checkSize() {
        file.clear();
        file.seekg(0, std::ios::end);
        const auto size = static_cast<std::uint64_t>(file.tellg());
        const std::uint64_t read = terrainFileBytes(result.geometry);
        if (size > read)
            warn(read,
                 std::to_string(size - read) + " bytes after the last chunk, which are not read");
    }

    void checkChunk(std::size_t number) {
        const RVTERRAIN_CHUNK_HEADER &chunk = chunks[number];
        const auto [other, first] = positions.emplace(std::pair(chunk.gridX, chunk.gridY), number);
        if (!first)
            warn(offsetOf(number),
                 nameOfChunk(number) + " is where " + nameOfChunk(other->second) + " is");
        if (!(chunk.minHeight <= chunk.maxHeight) || !std::isfinite(chunk.minHeight) ||
            !std::isfinite(chunk.maxHeight))
            warn(offsetOf(number) + 4, "the lowest height of " + nameOfChunk(number) +
                                           " is above its highest, or no number");
        for (std::size_t side = 0; side < std::size(chunk.neighbour); ++side)
            if (chunk.neighbour[side])
                checkNeighbour(number, side, chunk.neighbour[side] - std::size_t{1});
    }

    // Sides 0 and 1 are opposite, and so are 2 and 3.
    void checkNeighbour(std::size_t number, std::size_t side, std::size_t other) {
        const RVTERRAIN_CHUNK_HEADER &chunk = chunks[number], &neighbour = chunks[other];
        const int alongX = std::abs(chunk.gridX - neighbour.gridX),
                  alongZ = std::abs(chunk.gridY - neighbour.gridY);
        const std::uint64_t offset = offsetOf(number) + 12 + 2 * side;
        if (alongX + alongZ != 1)
            warn(offset, nameOfChunk(other) + " is a neighbour of " + nameOfChunk(number) +
                             " and not next to it");
        else if (neighbour.neighbour[side ^ 1] != number + 1)
            warn(offset, nameOfChunk(other) + " is a neighbour of " + nameOfChunk(number) +
                             ", and not the other way round");
    }

    // One warning each, for the first vertex.
    void checkVertices() {
        std::vector<unsigned char> vertices(terrainVertexBytes(header));
        bool finite = true, within = true;
        file.clear();
        for (std::size_t number = 0; number < chunks.size() && (finite || within); ++number) {
            if (!readTerrainVertices(file, result.geometry, number, vertices))
                return;
            for (std::size_t at = 0; at < vertices.size(); at += bytesPerVertex)
                checkVertex(&vertices[at], offsetOf(number) + sizeof(RVTERRAIN_CHUNK_HEADER) + at,
                            chunks[number], finite, within);
        }
    }

    void checkVertex(const unsigned char *bytes, std::uint64_t offset,
                     const RVTERRAIN_CHUNK_HEADER &chunk, bool &finite, bool &within) {
        float values[bytesPerVertex / sizeof(float)];
        std::memcpy(values, bytes, sizeof values);
        if (finite && !std::all_of(std::begin(values), std::end(values),
                                   [](float value) { return std::isfinite(value); })) {
            finite = false;
            warn(offset, "a value of a vertex is no number");
        }
        const double spare = heightTolerance * std::max(1.0, std::abs(double{values[1]}));
        if (within &&
            (values[1] < chunk.minHeight - spare || values[1] > chunk.maxHeight + spare)) {
            within = false;
            warn(offset, "a vertex is not between the lowest and the highest height of its chunk, "
                         "which vanishes while the vertex is seen");
        }
    }

    GeometryFile &result;
    std::ifstream &file;
    const RVTERRAIN_HEADER &header;
    const std::vector<RVTERRAIN_CHUNK_HEADER> &chunks;
    std::map<std::pair<unsigned short, unsigned short>, std::size_t> positions;
};

} // namespace

GeometryFile readGeometryFile(const std::filesystem::path &path) {
    GeometryFile result;
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        result.problem = "it cannot be read";
        return result;
    }
    if (const char *problem = readTerrainGeometry(file, result.geometry))
        result.problem = problem;
    else
        GeometryCheck(result, file).check();
    return result;
}

double GeometryFile::centerDistance() const {
    const double cells = cellsOf(geometry.header), scale = double{geometry.header.vertexScale};
    double maximum = 0;
    for (const RVTERRAIN_CHUNK_HEADER &chunk : geometry.chunks)
        for (const unsigned short number : chunk.neighbour) {
            if (number == 0)
                continue;
            const RVTERRAIN_CHUNK_HEADER &other = geometry.chunks[number - 1u];
            const double height = (double{chunk.minHeight} + double{chunk.maxHeight} -
                                   double{other.minHeight} - double{other.maxHeight}) /
                                  2;
            maximum =
                std::max(maximum, std::hypot((chunk.gridX - other.gridX) * cells * scale, height,
                                             (chunk.gridY - other.gridY) * cells * scale));
        }
    return maximum;
}

Json GeometryFile::description() const {
    const RVTERRAIN_HEADER &header = geometry.header;
    float lowest = std::numeric_limits<float>::max(), highest = -lowest;
    for (const RVTERRAIN_CHUNK_HEADER &chunk : geometry.chunks) {
        lowest = std::min(lowest, chunk.minHeight);
        highest = std::max(highest, chunk.maxHeight);
    }
    const unsigned int cells = cellsOf(header);
    return {{"verticesAlongChunk", header.chunkSize},
            {"verticesAlongX", header.terrainSizeX},
            {"verticesAlongZ", header.terrainSizeY},
            {"columns", (header.terrainSizeX - 1u) / cells},
            {"rows", (header.terrainSizeY - 1u) / cells},
            {"chunks", geometry.chunks.size()},
            {"levels", header.levels},
            {"vertexScale", number(header.vertexScale)},
            {"lowest", number(lowest)},
            {"highest", number(highest)}};
}

void inspectGeometry(Inspection &inspection) {
    GeometryFile file = readGeometryFile(inspection.file);
    if (!file.problem.empty()) {
        inspection.error(atOffset(file.geometry.problemOffset), file.problem);
        return;
    }
    inspection.content = file.description();
    inspection.findings = std::move(file.warnings);
}

} // namespace ravolt::tool::inspect
