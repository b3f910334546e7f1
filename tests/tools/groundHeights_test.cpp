// The heights of the ground under somebody who walks on a terrain, read from its geometry.

#include "tests/tools/cli.h"
#include "tests/tools/terrainFile.h"

#include <ravolt/kit/terrainHeights.h>

#include <cstdint>
#include <cstring>

namespace {

using namespace tool_test;
using ravolt::kit::TerrainHeights;

TerrainHeights heightsOf(const char *file) {
    TerrainHeights heights;
    EXPECT_TRUE(heights.load(file));
    return heights;
}

template <class Value> void append(std::string &bytes, Value value) {
    char raw[sizeof value];
    std::memcpy(raw, &value, sizeof value);
    bytes.append(raw, sizeof raw);
}

void appendWord(std::string &bytes, std::size_t value) {
    append(bytes, static_cast<std::uint16_t>(value));
}

// What matters of a geometry file: its head and, at its end, the chunks, of which the last comes
// first. A chunk has `side` vertices each way, and neighbours share their rims.
std::string geometry(std::size_t side, std::size_t chunksX, std::size_t chunksZ, float scale,
                     float (*height)(std::size_t i, std::size_t j)) {
    std::string bytes;
    const std::size_t cells = side - 1;
    for (const std::size_t word : {side, chunksX * cells + 1, chunksZ * cells + 1, std::size_t()})
        appendWord(bytes, word);
    append(bytes, scale);
    bytes += std::string(12 + 1001, '\x7f'); // the rest of the head, and lists
    for (std::size_t chunk = chunksX * chunksZ; chunk-- > 0;) {
        const std::size_t gridX = chunk % chunksX, gridZ = chunk / chunksX;
        appendWord(bytes, gridX);
        appendWord(bytes, gridZ);
        bytes += std::string(16, '\0');
        for (std::size_t vertex = 0; vertex < side * side; ++vertex) {
            const std::size_t i = gridX * cells + vertex % side, j = gridZ * cells + vertex / side;
            append(bytes, 1e6f);
            append(bytes, height(i, j));
            bytes += std::string(7 * sizeof(float), '\x7f');
        }
    }
    return bytes;
}

float bumps(std::size_t i, std::size_t j) {
    return static_cast<float>(100 * (i % 3) + 10 * (j % 4)) + 7;
}

TEST(GroundHeights, AreThoseOfTheVerticesAtVertices) {
    writeFile("ground.geo", geometry(5, 2, 2, 2.5f, bumps));
    const TerrainHeights heights = heightsOf("ground.geo");
    for (std::size_t j = 0; j < 8; ++j)
        for (std::size_t i = 0; i < 8; ++i)
            EXPECT_NEAR(heights.at(2.5 * double(i), 2.5 * double(j)), double(bumps(i, j)), 1e-9)
                << i << " " << j;
}

TEST(GroundHeights, AreBetweenThoseOfTheFourVerticesAround) {
    writeFile("ground.geo", geometry(5, 2, 2, 2, bumps));
    const TerrainHeights heights = heightsOf("ground.geo");
    // A quarter of the way from column 3 to 4, half of that from row 3 to 4, across two chunks.
    EXPECT_NEAR(heights.at(2 * 3.25, 2 * 3.5),
                (0.75 * double(bumps(3, 3)) + 0.25 * double(bumps(4, 3)) +
                 0.75 * double(bumps(3, 4)) + 0.25 * double(bumps(4, 4))) /
                    2,
                1e-9);
}

TEST(GroundHeights, BeyondTheRimAreThoseOfTheRim) {
    const auto along = [](std::size_t i, std::size_t j) {
        return static_cast<float>(i) + 100 * static_cast<float>(j);
    };
    for (const auto &[chunksX, chunksZ] :
         std::vector<std::pair<std::size_t, std::size_t>>{{2, 2}, {4, 2}, {2, 4}}) {
        SCOPED_TRACE(std::to_string(chunksX) + " x " + std::to_string(chunksZ));
        writeFile("ground.geo", geometry(3, chunksX, chunksZ, 1, along));
        const TerrainHeights heights = heightsOf("ground.geo");
        const double lastX = 2 * double(chunksX), lastZ = 2 * double(chunksZ);
        const double tolerance = 0.2; // the rim itself is approached to a thousandth of a cell
        EXPECT_NEAR(heights.at(-50, 1), 100, tolerance);
        EXPECT_NEAR(heights.at(1, -50), 1, tolerance);
        EXPECT_NEAR(heights.at(lastX + 50, 1), lastX + 100, tolerance);
        EXPECT_NEAR(heights.at(1, lastZ + 50), 1 + 100 * lastZ, tolerance);
        EXPECT_NEAR(heights.at(1e9, 1e9), lastX + 100 * lastZ, tolerance);
    }
}

TEST(GroundHeights, AreThoseOfTheVerticesThatTheToolWrites) {
    ASSERT_EQ(run("terrain --island 3 -o isle --size 129 --no-textures -q").code, 0);
    const terrain_test::File file = terrain_test::parse(readText("isle/terrain.geo"));
    const TerrainHeights heights = heightsOf("isle/terrain.geo");
    for (const terrain_test::Chunk &chunk : file.chunks)
        for (unsigned int j = 0; j < file.chunkSize; j += 9)
            for (unsigned int i = 0; i < file.chunkSize; i += 9) {
                const auto &[x, y, z] = file.at(chunk, i, j).position;
                ASSERT_NEAR(heights.at(double(x), double(z)), double(y), 0.01) << x << " " << z;
            }
}

TEST(GroundHeights, RefuseAFileThatIsShorterThanItsHeaderSays) {
    const std::string whole = geometry(5, 2, 2, 1, bumps);
    for (const std::size_t length : {std::size_t(0), std::size_t(11), whole.size() - 1014}) {
        writeFile("ground.geo", whole.substr(0, length));
        EXPECT_FALSE(TerrainHeights().load("ground.geo")) << length;
    }
}

} // namespace
