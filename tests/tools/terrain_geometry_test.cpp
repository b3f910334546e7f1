// The geometry file as it is written, by its geometry: what the lists cover, how they wind, and
// whether the rims of neighbours are the same.

#include "tests/tools/support.h"
#include "tests/tools/terrainFile.h"
#include "tools/terrain/geometryWriter.h"
#include "tools/terrain/lodDistances.h"
#include "tools/terrain/terrain.h"

#include <cmath>
#include <map>
#include <set>

namespace {

using namespace ravolt::tool::terrain;
using namespace terrain_test;
using tool_test::failureOf;

// Hills without any symmetry.
Heights hills(const GridSize &size) {
    Heights heights(size.width(), size.depth());
    for (unsigned int j = 0; j < heights.depth; ++j)
        for (unsigned int i = 0; i < heights.width; ++i)
            heights.at(i, j) = 30 * std::sin(static_cast<float>(i) * 0.031f) +
                               17 * std::cos(static_cast<float>(j) * 0.057f) +
                               0.02f * static_cast<float>(i);
    return heights;
}

struct Built {
    File file;
    WrittenGeometry written;
};

Built build(const GridSize &size, const Heights &heights, const GroundRules &rules = {}) {
    std::string bytes;
    const auto append = [&](const void *data, std::size_t count) {
        bytes.append(static_cast<const char *>(data), count);
        return true;
    };
    Built built;
    built.written = writeGeometry({heights, size, rules}, append, [](double) {});
    built.file = parse(bytes);
    return built;
}

// A vertex of a chunk, in cells of the finest level.
struct Point {
    int i, j;
    auto operator<=>(const Point &) const = default;
};

struct Triangle {
    Point a, b, c;

    // Twice its area; above 0 when it is front: counter-clockwise seen from above, where Z comes
    // down.
    int area() const { return (b.j - a.j) * (c.i - a.i) - (b.i - a.i) * (c.j - a.j); }
};

Point pointOf(unsigned int index, unsigned int chunkSize) {
    return {static_cast<int>(index % chunkSize), static_cast<int>(index / chunkSize)};
}

// The triangles with an area.
void addStrip(const Indices &strip, unsigned int chunkSize, std::vector<Triangle> &to) {
    for (std::size_t k = 2; k < strip.size(); ++k) {
        const Point first = pointOf(strip[k - 2], chunkSize);
        const Point second = pointOf(strip[k - 1], chunkSize);
        const Point third = pointOf(strip[k], chunkSize);
        const Triangle triangle =
            k % 2 ? Triangle{second, first, third} : Triangle{first, second, third};
        if (triangle.area() != 0)
            to.push_back(triangle);
    }
}

// The corner variant that the engine takes for an edge between two others.
int variantOf(bool beforeCoarser, bool afterCoarser) {
    return beforeCoarser && afterCoarser ? 3 : beforeCoarser ? 1 : afterCoarser ? 2 : 0;
}

// What the engine draws of a chunk of this level; bit e of `coarser`: the neighbour beyond edge e
// is.
std::vector<Triangle> drawn(const File &file, unsigned int level, unsigned int coarser) {
    const Level &lists = file.levels[level];
    std::vector<Triangle> triangles;
    addStrip(lists.body, file.chunkSize, triangles);
    if (level + 1 == file.numberOfLevels)
        return triangles;
    const auto is = [&](unsigned int edge) { return (coarser >> edge & 1) != 0; };
    for (unsigned int edge = 0; edge < 4; ++edge) {
        const int variant = edge < 2 ? variantOf(is(3), is(2)) : variantOf(is(0), is(1));
        addStrip(is(edge) ? lists.coarse[variant][edge] : lists.same[variant][edge], file.chunkSize,
                 triangles);
    }
    return triangles;
}

bool covers(const Triangle &t, double i, double j) {
    const auto side = [&](const Point &from, const Point &to) {
        return (to.j - from.j) * (i - from.i) - (to.i - from.i) * (j - from.j);
    };
    return side(t.a, t.b) > 0 && side(t.b, t.c) > 0 && side(t.c, t.a) > 0;
}

// How often the middle of each half of each cell is covered, seen from above, by front triangles.
std::vector<int> coverage(const std::vector<Triangle> &triangles, unsigned int cells) {
    constexpr double halves[2][2] = {{0.21, 0.34}, {0.77, 0.69}}; // on no diagonal
    std::vector<int> counts(std::size_t(2) * cells * cells);
    for (const Triangle &t : triangles) {
        const auto [lowI, highI] = std::minmax({t.a.i, t.b.i, t.c.i});
        const auto [lowJ, highJ] = std::minmax({t.a.j, t.b.j, t.c.j});
        for (int j = lowJ; j < highJ; ++j)
            for (int i = lowI; i < highI; ++i)
                for (int half = 0; half < 2; ++half)
                    counts[2 * (static_cast<std::size_t>(j) * cells + static_cast<std::size_t>(i)) +
                           static_cast<std::size_t>(half)] +=
                        covers(t, i + halves[half][0], j + halves[half][1]);
    }
    return counts;
}

// The pieces of a side of the chunk that are edges of triangles, as numbers along that side.
std::multiset<std::pair<int, int>> rimOf(const std::vector<Triangle> &triangles, unsigned int edge,
                                         int cells) {
    const auto along = [&](const Point &p) { return edge < 2 ? p.i : p.j; };
    const auto across = [&](const Point &p) { return edge < 2 ? p.j : p.i; };
    const int rim = edge % 2 ? cells : 0;
    std::multiset<std::pair<int, int>> pieces;
    for (const Triangle &t : triangles)
        for (const auto &[from, to] : {std::pair{t.a, t.b}, {t.b, t.c}, {t.c, t.a}})
            if (across(from) == rim && across(to) == rim)
                pieces.insert(std::minmax(along(from), along(to)));
    return pieces;
}

class TerrainLists : public testing::TestWithParam<unsigned int> {
  protected:
    void SetUp() override {
        const GridSize size{GetParam(), 1, 2};
        file = build(size, hills(size)).file;
        ASSERT_EQ(file.numberOfLevels, 6u);
    }
    int cells() const { return static_cast<int>(file.chunkSize) - 1; }

    File file;
};

TEST_P(TerrainLists, FrontTrianglesCoverAChunkOnceAtEveryLevelWithAllNeighbours) {
    for (unsigned int level = 0; level < 6; ++level)
        for (unsigned int coarser = 0; coarser < 16; ++coarser) {
            const std::vector<Triangle> triangles = drawn(file, level, coarser);
            long area = 0;
            for (const Triangle &triangle : triangles) {
                ASSERT_GT(triangle.area(), 0) << "level " << level << ", coarser " << coarser;
                area += triangle.area();
            }
            ASSERT_EQ(area, 2L * cells() * cells()) << "level " << level << ", " << coarser;
            const std::vector<int> counts = coverage(triangles, static_cast<unsigned int>(cells()));
            ASSERT_EQ(std::count(counts.begin(), counts.end(), 1), static_cast<long>(counts.size()))
                << "level " << level << ", coarser " << coarser;
        }
}

TEST_P(TerrainLists, RimsOfNeighboursAreTheSameWhenLevelsDifferByAtMostOne) {
    constexpr unsigned int opposite[4] = {1, 0, 3, 2};
    for (unsigned int level = 0; level < 6; ++level)
        for (unsigned int edge = 0; edge < 4; ++edge)
            for (unsigned int others = 0; others < 16; ++others) {
                const unsigned int finer = others & ~(1u << edge);
                const auto own = rimOf(drawn(file, level, finer), edge, cells());
                ASSERT_EQ(own.size(), static_cast<std::size_t>(cells() >> level));
                ASSERT_EQ(own, rimOf(drawn(file, level, 0), opposite[edge], cells()));
                if (level + 1 == 6)
                    continue;
                const auto stitched = rimOf(drawn(file, level, others | 1u << edge), edge, cells());
                ASSERT_EQ(stitched, rimOf(drawn(file, level + 1, 0), opposite[edge], cells()))
                    << "level " << level << ", edge " << edge << ", coarser " << others;
            }
}

INSTANTIATE_TEST_SUITE_P(Sizes, TerrainLists, testing::ValuesIn(chunkSizes));

class TerrainGeometry : public testing::Test {
  protected:
    GridSize size{65, 3, 2};
    Heights heights = hills(size);
    GroundRules rules{.spacing = 0.7f};
    Built built = build(size, heights, rules);
    const File &file = built.file;
};

TEST_F(TerrainGeometry, HeaderHasTheSizesAndTheFileEndsWithTheLastChunk) {
    EXPECT_EQ(file.chunkSize, 65u);
    EXPECT_EQ(file.sizeY, 3 * 64 + 1u);
    EXPECT_EQ(file.sizeX, 2 * 64 + 1u);
    EXPECT_EQ(file.scale, 0.7f);
    EXPECT_EQ(file.chunks.size(), 6u);
    EXPECT_EQ(file.bytesAfterwards, 0u);
    EXPECT_TRUE(built.written.whole);
}

TEST_F(TerrainGeometry, TextureCoordinatesRunOnceOverAChunk) {
    for (unsigned int j = 0; j < 65; ++j)
        for (unsigned int i = 0; i < 65; ++i) {
            EXPECT_EQ(file.coords[j * 65 + i][0], static_cast<float>(i) / 64);
            EXPECT_EQ(file.coords[j * 65 + i][1], static_cast<float>(j) / 64);
        }
}

TEST_F(TerrainGeometry, EveryChunkIsOnceInTheGridAndItsVerticesAreThoseOfTheHeights) {
    std::set<std::pair<unsigned int, unsigned int>> places;
    for (const Chunk &chunk : file.chunks) {
        EXPECT_TRUE(places.insert({chunk.gridX, chunk.gridY}).second);
        ASSERT_LT(chunk.gridX, 3u);
        ASSERT_LT(chunk.gridY, 2u);
        float lowest = INFINITY, highest = -INFINITY;
        for (unsigned int j = 0; j < 65; ++j)
            for (unsigned int i = 0; i < 65; ++i) {
                const auto &[x, y, z] = file.at(chunk, i, j).position;
                const unsigned int globalI = chunk.gridX * 64 + i, globalJ = chunk.gridY * 64 + j;
                ASSERT_EQ(x, static_cast<float>(globalI) * 0.7f);
                ASSERT_EQ(y, heights.at(globalI, globalJ));
                ASSERT_EQ(z, static_cast<float>(globalJ) * 0.7f);
                lowest = std::min(lowest, y);
                highest = std::max(highest, y);
            }
        EXPECT_EQ(chunk.minHeight, lowest);
        EXPECT_EQ(chunk.maxHeight, highest);
    }
}

// The engine's water has terrainSizeY along X and terrainSizeX along Z.
TEST_F(TerrainGeometry, ItsExtentIsThatOfTheWater) {
    float x = 0, z = 0;
    for (const Chunk &chunk : file.chunks)
        for (const Vertex &vertex : chunk.vertices) {
            x = std::max(x, vertex.position[0]);
            z = std::max(z, vertex.position[2]);
        }
    EXPECT_FLOAT_EQ(x, static_cast<float>(file.sizeY - 1) * file.scale);
    EXPECT_FLOAT_EQ(z, static_cast<float>(file.sizeX - 1) * file.scale);
}

TEST_F(TerrainGeometry, NeighboursLieBeyondTheirEdgesAndShareAllOfTheirVertices) {
    constexpr int beyond[4][2] = {{0, -1}, {0, 1}, {-1, 0}, {1, 0}};
    for (const Chunk &chunk : file.chunks)
        for (unsigned int edge = 0; edge < 4; ++edge) {
            const int x = static_cast<int>(chunk.gridX) + beyond[edge][0];
            const int y = static_cast<int>(chunk.gridY) + beyond[edge][1];
            const bool there = x >= 0 && y >= 0 && x < 3 && y < 2;
            ASSERT_EQ(chunk.neighbours[edge] != 0, there);
            if (!there)
                continue;
            const Chunk &other = file.chunks.at(chunk.neighbours[edge] - 1);
            ASSERT_EQ(static_cast<int>(other.gridX), x);
            ASSERT_EQ(static_cast<int>(other.gridY), y);
            for (unsigned int k = 0; k < 65; ++k) {
                const unsigned int own = edge % 2 ? 64 : 0, its = 64 - own;
                const Vertex &a = edge < 2 ? file.at(chunk, k, own) : file.at(chunk, own, k);
                const Vertex &b = edge < 2 ? file.at(other, k, its) : file.at(other, its, k);
                ASSERT_EQ(a.position, b.position);
                ASSERT_EQ(a.weights, b.weights);
                ASSERT_EQ(a.tangent, b.tangent);
            }
        }
}

TEST_F(TerrainGeometry, WeightsAreSharesAndFramesHaveAnArea) {
    for (const Chunk &chunk : file.chunks)
        for (const Vertex &vertex : chunk.vertices) {
            for (const float weight : vertex.weights) {
                ASSERT_GE(weight, 0);
                ASSERT_LE(weight, 1);
            }
            const auto &[tx, ty, tz] = vertex.tangent;
            const auto &[nx, ny, nz] = vertex.weights;
            ASSERT_GT(std::hypot(ty * nz - tz * ny, tz * nx - tx * nz, tx * ny - ty * nx), 1e-4f);
        }
    double sum = 0;
    for (const double share : built.written.shares)
        sum += share;
    EXPECT_NEAR(sum, 1, 1e-5);
}

TEST_F(TerrainGeometry, AWriterThatFailsEndsTheWork) {
    for (int after = 0; after < 200; after += 7) {
        int calls = 0;
        const auto append = [&](const void *, std::size_t) { return ++calls <= after; };
        EXPECT_FALSE(writeGeometry({heights, size, rules}, append, [](double) {}).whole);
        EXPECT_EQ(calls, after + 1);
    }
}

// --- The distances

struct Chooser { // as the engine compares
    std::vector<float> thresholds;

    int levelAt(const std::array<float, 3> &center, const std::array<float, 3> &eye) const {
        float square = 0;
        for (std::size_t axis = 0; axis < 3; ++axis)
            square += (center[axis] - eye[axis]) * (center[axis] - eye[axis]);
        int level = 0;
        while (level < 5 && !(square < thresholds[static_cast<std::size_t>(level)]))
            ++level;
        return level;
    }
};

Chooser chooserFor(const LodDistances &distances) {
    Chooser chooser;
    for (const double distance : distances) {
        char text[40]; // as the configuration has it
        std::snprintf(text, sizeof text, "%.9g", distance * distance);
        chooser.thresholds.push_back(static_cast<float>(std::atof(text)));
    }
    return chooser;
}

double longestWay(const File &file) {
    double longest = 0;
    for (const Chunk &chunk : file.chunks)
        for (const unsigned int neighbour : chunk.neighbours)
            if (neighbour) {
                const auto a = chunk.center(file), b = file.chunks[neighbour - 1].center(file);
                longest = std::max(longest, std::hypot(double(a[0]) - b[0], double(a[1]) - b[1],
                                                       double(a[2]) - b[2]));
            }
    return longest;
}

// One mountain as steep as a wall, so that the height counts.
TEST(TerrainDistances, NoEyeSeesNeighboursTwoLevelsApart) {
    const GridSize size{65, 6, 4};
    Heights heights = hills(size);
    for (unsigned int j = 100; j < 120; ++j)
        for (unsigned int i = 130; i < 180; ++i)
            heights.at(i, j) = 700;
    const Built built = build(size, heights);
    EXPECT_NEAR(built.written.centerDistance, longestWay(built.file), 1e-3);
    for (const double detail : {0.0, 1.0, 333.0}) {
        const Chooser chooser = chooserFor(lodDistances(built.written.centerDistance, detail));
        for (std::size_t k = 0; k + 1 < 5; ++k)
            EXPECT_GE(std::sqrt(double(chooser.thresholds[k + 1])) -
                          std::sqrt(double(chooser.thresholds[k])),
                      longestWay(built.file));
        if (detail > 0) {
            EXPECT_FLOAT_EQ(chooser.thresholds[0], static_cast<float>(detail * detail));
        }
        for (float x = -600; x < 1000; x += 37)
            for (float z = -600; z < 900; z += 41)
                for (const float y : {-20.0f, 5.0f, 350.0f, 900.0f})
                    for (const Chunk &chunk : built.file.chunks)
                        for (const unsigned int edge : {1u, 3u})
                            if (const unsigned int number = chunk.neighbours[edge]) {
                                const Chunk &other = built.file.chunks[number - 1];
                                ASSERT_LE(
                                    std::abs(chooser.levelAt(chunk.center(built.file), {x, y, z}) -
                                             chooser.levelAt(other.center(built.file), {x, y, z})),
                                    1);
                            }
    }
}

// --- The layers

Vertex vertexOn(float slopeX, float height, const GroundRules &rules) {
    Heights plane(9, 9);
    for (unsigned int j = 0; j < 9; ++j)
        for (unsigned int i = 0; i < 9; ++i)
            plane.at(i, j) = height + slopeX * (static_cast<float>(i) - 4);
    const GroundVertex vertex = groundVertex(plane, rules, 4, 4);
    return {{}, vertex.weights, vertex.tangent};
}

std::array<float, 4> sharesOn(float slopeX, float height) {
    return layerShares(vertexOn(slopeX, height, {}).weights);
}

TEST(TerrainLayers, FollowSlopeHeightAndShore) {
    EXPECT_EQ(sharesOn(0, 20)[0], 1);      // grass
    EXPECT_NEAR(sharesOn(0, 80)[1], 1, 0); // snow
    EXPECT_EQ(sharesOn(0, -5)[2], 1);      // sand
    EXPECT_GT(sharesOn(3, 20)[3], 0.95f);  // rock
    EXPECT_GT(sharesOn(-3, 80)[3], 0.95f); // above snow too
    EXPECT_GT(sharesOn(3, -5)[3], 0.95f);
}

TEST(TerrainLayers, SteepGroundAboveTheSnowLineIsLitFromTheNorthToo) {
    const std::array<double, 3> rockMap = {0, 0, 1}, north = {0, 0.57, -0.82};
    EXPECT_GT(lambert(vertexOn(3, 20, {}), rockMap, north), 0.1);
    EXPECT_GT(lambert(vertexOn(3, 80, {}), rockMap, north), 0.1);
}

TEST(TerrainLayers, SteepGroundTurnsTowardsTheLightOrAwayFromIt) {
    const std::array<double, 3> flatMap = {0, 0, 1};
    for (const float slope : {0.3f, 3.0f}) // grass and rock
        for (const double side : {1.0, -1.0}) {
            const std::array<double, 3> light = {0.8 * side, 0.6, 0.1};
            const auto towards = vertexOn(side > 0 ? -slope : slope, 20, {});
            const auto away = vertexOn(side > 0 ? slope : -slope, 20, {});
            const double level = lambert(vertexOn(0, 20, {}), flatMap, light);
            EXPECT_GT(lambert(towards, flatMap, light), level + 0.05);
            EXPECT_LT(lambert(away, flatMap, light), level - 0.1);
        }
}

} // namespace
