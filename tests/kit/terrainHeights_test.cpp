// The heights of a geometry file, compared with those that the file was made from.

#include <ravolt/kit/terrainHeights.h>

#include "tests/effects/terrainScene.h"
#include "tests/support/logReader.h"

#include <cmath>
#include <gtest/gtest.h>

namespace ravolt::test {
namespace {

using kit::TerrainHeights;

float heightOf(unsigned int column, unsigned int row) {
    return static_cast<float>(column * column + 10 * row);
}

TerrainShape shape() {
    TerrainShape wanted;
    wanted.columns = 3;
    wanted.rows = 2;
    wanted.scale = 2;
    wanted.height = heightOf;
    return wanted;
}

struct Heights : testing::Test {
    TerrainHeights heights;
    void SetUp() override {
        TerrainFile(shape()).write();
        markLog();
        ASSERT_TRUE(heights.load("land.geo"));
        EXPECT_NOTHING_LOGGED();
    }
};

TEST_F(Heights, AreThoseOfTheVertices) {
    for (unsigned int column = 0; column < 13; ++column)
        for (unsigned int row = 0; row < 9; ++row)
            EXPECT_FLOAT_EQ(heights.at(2.0 * column, 2.0 * row), heightOf(column, row));
    EXPECT_EQ(heights.getWidth(), 24);
    EXPECT_EQ(heights.getDepth(), 16);
}

TEST_F(Heights, AreMixedBetweenTheVertices) {
    EXPECT_NEAR(heights.at(3, 0), (1 + 4) / 2.0, 1e-9);
    EXPECT_NEAR(heights.at(0, 3), 15, 1e-9);
    EXPECT_NEAR(heights.at(2.5, 4.5), 1 + 0.25 * 3 + 22.5, 1e-9);
    EXPECT_EQ(heights.drawnAt(3, 0), heights.at(3, 0) + 2);
}

TEST_F(Heights, BeyondTheRimAreThoseOfTheRim) {
    EXPECT_FLOAT_EQ(heights.at(-5, -5), heightOf(0, 0));
    EXPECT_FLOAT_EQ(heights.at(1e30, 4), heightOf(12, 2));
    EXPECT_FLOAT_EQ(heights.at(INFINITY, INFINITY), heightOf(12, 8));
    EXPECT_EQ(heights.at(NAN, 0), 0);
}

TEST_F(Heights, OfABadFileAreThoseFromBefore) {
    const double before = heights.at(5, 5);
    const auto expectRefused = [&](const char *name) {
        EXPECT_FALSE(heights.load(name));
        EXPECT_LOGGED_EXACTLY("   [!] File " + std::string(name ? name : "NULL") +
                              " has no heights of a terrain @ TerrainHeights::load\n");
        EXPECT_EQ(heights.at(5, 5), before);
    };
    expectRefused(nullptr);
    expectRefused("gone.geo");
    const TerrainFile good(shape());
    for (std::size_t length = 0; length < terrainHeaderBytes; ++length) {
        TerrainFile(good).cut(length).write();
        expectRefused("land.geo");
    }
    // Chunks are found from the end: a file that ends early may only be seen by its size or by the
    // numbers of the grid.
    TerrainFile(good).cut(good.chunk(1)).write();
    expectRefused("land.geo");
    using Word = unsigned short;
    for (const auto &[offset, value] : std::initializer_list<std::pair<std::size_t, Word>>{
             {chunkSizeAt, Word(0)},
             {chunkSizeAt, Word(1)},
             {chunkSizeAt, Word(60000)},
             {terrainSizeXAt, Word(1)},
             {terrainSizeZAt, Word(0)},
             {terrainSizeXAt, Word(65535)},
             {good.chunk(3) + gridXAt, Word(3)},
             {good.chunk(3) + gridZAt, Word(65535)}}) {
        TerrainFile(good).set(offset, value).write();
        expectRefused("land.geo");
    }
    for (const float scale : {0.0f, -1.0f, INFINITY, NAN}) {
        TerrainFile(good).set(scaleAt, scale).write();
        expectRefused("land.geo");
    }
}

TEST(NoHeights, AreZero) {
    const TerrainHeights none;
    EXPECT_EQ(none.at(1, 2), 0);
    EXPECT_EQ(none.drawnAt(1, 2), 2);
    EXPECT_EQ(none.getWidth(), 0);
    EXPECT_EQ(none.getDepth(), 0);
}

} // namespace
} // namespace ravolt::test
