// Resampling heights and reading files of heights.

#include "tests/tools/heightPictures.h"
#include "tests/tools/support.h"
#include "tools/terrain/gridSize.h"
#include "tools/terrain/heightFiles.h"
#include "tools/terrain/heights.h"
#include "tools/terrain/island.h"
#include "tools/terrain/voids.h"

#include <cmath>

namespace {

using namespace ravolt::tool::terrain;
using terrain_test::pngOf;
using tool_test::failureOf;
using tool_test::writeFile;

Heights from(unsigned int width, unsigned int depth, float (*height)(float u, float v)) {
    Heights heights(width, depth);
    for (unsigned int j = 0; j < depth; ++j)
        for (unsigned int i = 0; i < width; ++i)
            heights.at(i, j) = height(static_cast<float>(i) / static_cast<float>(width - 1),
                                      static_cast<float>(j) / static_cast<float>(depth - 1));
    return heights;
}

float plane(float u, float v) { return 100 * u - 40 * v; }
float wave(float u, float v) { return 10 * std::sin(6 * u) * std::cos(5 * v); }

double largestDifference(const Heights &a, const Heights &b) {
    double largest = 0;
    for (std::size_t i = 0; i < a.values.size(); ++i)
        largest = std::max<double>(largest, std::fabs(a.values[i] - b.values[i]));
    return largest;
}

// --- Resampling

TEST(TerrainResampling, KeepsTheSurfaceAndItsCornersWithMoreValues) {
    const Heights fine = resampled(from(40, 31, wave), 129, 65);
    EXPECT_LT(largestDifference(fine, from(129, 65, wave)), 0.05);
    EXPECT_FLOAT_EQ(fine.at(0, 0), wave(0, 0));
    EXPECT_FLOAT_EQ(fine.at(128, 64), wave(1, 1));
}

TEST(TerrainResampling, AveragesWithFewerValues) {
    const Heights coarse = resampled(from(700, 500, wave), 65, 65);
    EXPECT_LT(largestDifference(coarse, from(65, 65, wave)), 0.2);
    // A spike of one value does not remain a spike, and is not lost either.
    Heights spike(257, 257);
    spike.at(128, 128) = 64;
    const Heights small = resampled(spike, 65, 65);
    EXPECT_FLOAT_EQ(small.at(32, 32), 64.0f / 16);
}

TEST(TerrainResampling, APlaneRemainsAPlane) {
    EXPECT_LT(largestDifference(resampled(from(50, 50, plane), 113, 81), from(113, 81, plane)),
              1e-3);
    EXPECT_LT(largestDifference(resampled(from(500, 700, plane), 65, 81), from(65, 81, plane)),
              1e-2);
    const Heights even = resampled(from(33, 500, [](float, float) { return 7.0f; }), 129, 65);
    for (const float value : even.values)
        EXPECT_FLOAT_EQ(value, 7);
}

TEST(TerrainResampling, TheSameSizeChangesNothing) {
    EXPECT_EQ(resampled(from(65, 97, wave), 65, 97).values, from(65, 97, wave).values);
}

TEST(TerrainSteps, AreRoundedOffWithinHalfAStep) {
    Heights stairs = from(200, 20, [](float u, float) { return std::floor(10 * u); });
    const Heights before = stairs;
    smoothSteps(stairs);
    EXPECT_LE(largestDifference(stairs, before), 0.5);
    float steepest = 0;
    for (unsigned int i = 1; i < 200; ++i)
        steepest = std::max(steepest, stairs.at(i, 10) - stairs.at(i - 1, 10));
    EXPECT_LT(steepest, 0.2f); // it was 1
}

TEST(TerrainQuantile, IsTheValueThatShareIsBelow) {
    const Heights ramp = from(101, 2, [](float u, float) { return 100 * u; });
    EXPECT_FLOAT_EQ(quantile(ramp, 0), 0);
    EXPECT_FLOAT_EQ(quantile(ramp, 0.5), 50);
    EXPECT_FLOAT_EQ(quantile(ramp, 1), 100);
}

// --- Missing values

TEST(TerrainVoids, AreFilledFromAround) {
    Heights heights = from(41, 41, plane);
    std::vector<bool> known(heights.values.size(), true);
    for (unsigned int j = 10; j < 30; ++j)
        for (unsigned int i = 12; i < 27; ++i) {
            heights.at(i, j) = -32768;
            known[j * 41 + i] = false;
        }
    fillVoids(heights, known);
    EXPECT_LT(largestDifference(heights, from(41, 41, plane)), 25); // of 140
}

TEST(TerrainVoids, OneKnownValueFillsAll) {
    Heights heights(5, 4);
    heights.at(3, 1) = 12;
    std::vector<bool> known(20, false);
    known[1 * 5 + 3] = true;
    fillVoids(heights, known);
    for (const float value : heights.values)
        EXPECT_FLOAT_EQ(value, 12);
}

// --- Sizes

TEST(TerrainSizes, TheNearestOneKeepsTheProportionsAndIsLegal) {
    struct Case {
        unsigned int width, depth, chunk, maxSide, x, z;
    };
    for (const Case &c :
         {Case{512, 512, 65, 1025, 8, 8}, Case{513, 513, 65, 1025, 8, 8},
          Case{403, 344, 65, 1025, 6, 5}, Case{64, 64, 65, 1025, 2, 2}, Case{2, 2, 65, 1025, 2, 2},
          Case{3601, 3601, 65, 1025, 16, 16}, Case{1000, 500, 65, 1025, 16, 8},
          Case{300, 300, 225, 65, 2, 2}, Case{100, 9000, 65, 1025, 1, 16}}) {
        const GridSize size = nearestSize(c.width, c.depth, c.chunk, c.maxSide);
        EXPECT_TRUE(isLegal(size)) << c.width << " x " << c.depth;
        EXPECT_EQ(size.chunksX, c.x) << c.width << " x " << c.depth;
        EXPECT_EQ(size.chunksZ, c.z) << c.width << " x " << c.depth;
    }
}

TEST(TerrainSizes, AnExactOneIsAnEvenNumberOfWholeChunks) {
    EXPECT_EQ(exactSize(129, 65, 65).chunks(), 2u);
    EXPECT_EQ(exactSize(513, 257, 65).chunks(), 32u);
    EXPECT_EQ(exactSize(193, 97, 97).chunks(), 2u);
    EXPECT_EQ(exactSize(512, 512, 65).chunks(), 0u);
    EXPECT_EQ(exactSize(65, 65, 65).chunks(), 0u);   // one
    EXPECT_EQ(exactSize(193, 193, 65).chunks(), 0u); // nine
    EXPECT_EQ(exactSize(2, 2, 65).chunks(), 0u);
}

TEST(TerrainSizes, MoreChunksThanTheFileCanNumberAreNotLegal) {
    EXPECT_TRUE(isLegal({65, 254, 256}));
    EXPECT_FALSE(isLegal({65, 256, 256}));
    EXPECT_FALSE(isLegal({65, 1, 1024})); // 65537 vertices
}

// --- Files

std::string bytesOf(const std::vector<int> &values, bool bigEndian) {
    std::string bytes;
    for (const int value : values) {
        const char low = static_cast<char>(value & 255), high = static_cast<char>(value >> 8 & 255);
        bytes += bigEndian ? std::string{high, low} : std::string{low, high};
    }
    return bytes;
}

HeightFile read(const std::string &name, const HeightFileOptions &options = {}) {
    return readHeights(name, options);
}

TEST(TerrainFiles, RawValuesInBothOrdersOfBytes) {
    const std::vector<int> values = {1, 256, 65535, 0, 77, 300};
    writeFile("a.raw", bytesOf(values, false));
    writeFile("b.bin", bytesOf(values, true));
    HeightFileOptions options;
    options.rawWidth = 3;
    options.rawDepth = 2;
    const std::vector<float> expected(values.begin(), values.end());
    EXPECT_EQ(read("a.raw", options).heights.values, expected);
    options.bigEndian = true;
    EXPECT_EQ(read("b.bin", options).heights.values, expected);
    EXPECT_EQ(read("b.bin", options).heights.width, 3u);
}

TEST(TerrainFiles, RawValuesAreASquareByDefault) {
    writeFile("square.r16", bytesOf({1, 2, 3, 4, 5, 6, 7, 8, 9}, false));
    const HeightFile file = read("square.r16");
    EXPECT_EQ(file.heights.width, 3u);
    EXPECT_EQ(file.heights.depth, 3u);
    EXPECT_FALSE(file.coarse);
    EXPECT_EQ(file.heights.at(2, 0), 3);
}

TEST(TerrainFiles, PngOfEightAndSixteenBits) {
    writeFile("8.png", pngOf(3, 8, {0, 17, 255, 128, 3, 200}));
    const HeightFile coarse = read("8.png");
    EXPECT_TRUE(coarse.coarse);
    EXPECT_EQ(coarse.heights.values, (std::vector<float>{0, 17, 255, 128, 3, 200}));
    EXPECT_EQ(coarse.heights.width, 3u);
    writeFile("16.PNG", pngOf(3, 16, {0, 258, 65535, 32768, 1, 40000}));
    const HeightFile fine = read("16.PNG");
    EXPECT_FALSE(fine.coarse);
    EXPECT_EQ(fine.heights.values, (std::vector<float>{0, 258, 65535, 32768, 1, 40000}));
    EXPECT_EQ(fine.stepsPerSample, 0);
}

std::string tile(int value) {
    std::vector<int> values(1201u * 1201u, value);
    values[0] = 100;              // the north-western corner
    values[1201 * 600 + 600] = 7; // below the sea next
    values[1201 * 1200 + 1200] = -5;
    return bytesOf(values, true);
}

TEST(TerrainFiles, HgtTileIsBigEndianMetresFromTheNorthWest) {
    writeFile("N45E007.hgt", tile(300));
    const HeightFile file = read("N45E007.hgt");
    EXPECT_EQ(file.heights.width, 1201u);
    EXPECT_EQ(file.heights.at(0, 0), 100);
    EXPECT_EQ(file.heights.at(1, 0), 300);
    EXPECT_EQ(file.heights.at(1200, 1200), -5);
    EXPECT_NEAR(file.stepsPerSample, 92.6, 0.1);
    EXPECT_EQ(file.filled, 0u);
}

TEST(TerrainFiles, MissingValuesOfAnHgtTileAreFilled) {
    writeFile("N45E008.HGT", tile(-32768));
    const HeightFile file = read("N45E008.HGT");
    EXPECT_EQ(file.filled, 1201u * 1201u - 3u);
    for (const float value : file.heights.values) {
        ASSERT_GT(value, -5.001f);
        ASSERT_LT(value, 100.001f);
    }
}

TEST(TerrainFiles, WhatCannotBeReadIsNamedWithItsReason) {
    writeFile("empty.raw", "");
    writeFile("odd.raw", "abc");
    writeFile("oblong.raw", "abcdabcdabcd");
    writeFile("short.hgt", "abcd");
    writeFile("text.txt", "hills");
    writeFile("broken.png", pngOf(3, 8, {1, 2, 3, 4, 5, 6}).substr(0, 44));
    writeFile("one.raw", "ab");
    std::filesystem::create_directory("folder");
    const std::vector<int> voids(1201u * 1201u, -32768);
    writeFile("void.hgt", bytesOf(voids, true));
    const auto complaint = [](const std::string &name, HeightFileOptions options = {}) {
        return failureOf([&] { read(name, options); });
    };
    EXPECT_EQ(complaint("none.png"), "none.png: no such file");
    EXPECT_EQ(complaint("folder"), "folder: is a folder");
    EXPECT_EQ(complaint("empty.raw"), "empty.raw: is empty");
    EXPECT_EQ(complaint("odd.raw"),
              "odd.raw: has 3 bytes, which is no square of 16-bit values; state --raw-size");
    EXPECT_EQ(complaint("oblong.raw"),
              "oblong.raw: has 12 bytes, which is no square of 16-bit values; state --raw-size");
    HeightFileOptions options;
    options.rawWidth = options.rawDepth = 2;
    EXPECT_EQ(complaint("oblong.raw", options),
              "oblong.raw: has 12 bytes; 2 x 2 values of 16 bits have 8");
    EXPECT_EQ(complaint("one.raw"), "one.raw: has 1 x 1 values; 2 to 16384 a side are possible");
    EXPECT_EQ(complaint("short.hgt"), "short.hgt: has 4 bytes; an .hgt file has 1201 x 1201 or "
                                      "3601 x 3601 values of 2 bytes");
    EXPECT_EQ(complaint("void.hgt"), "void.hgt: has no known height");
    EXPECT_EQ(complaint("text.txt"),
              "text.txt: is no PNG picture, and its name ends neither in .raw or .r16 nor in .hgt; "
              "state --format");
    options = {};
    options.format = HeightFormat::png;
    EXPECT_EQ(complaint("text.txt", options), "text.txt: is no PNG picture");
    EXPECT_EQ(complaint("broken.png"), "broken.png: is broken (outofdata)");
}

// --- The island

TEST(TerrainIsland, IsTheSameForTheSameNumberAlone) {
    EXPECT_EQ(makeIsland(129, 3).heights.values, makeIsland(129, 3).heights.values);
    EXPECT_NE(makeIsland(129, 3).heights.values, makeIsland(129, 4).heights.values);
}

class TerrainIslands : public testing::TestWithParam<unsigned int> {};

TEST_P(TerrainIslands, HasSeaAroundMountainsAndALevelSquareAtTheShore) {
    const Island island = makeIsland(513, GetParam());
    const Heights &heights = island.heights;
    for (unsigned int k = 0; k < 513; ++k) {
        EXPECT_LT(heights.at(k, 0), -2);
        EXPECT_LT(heights.at(k, 512), -2);
        EXPECT_LT(heights.at(0, k), -2);
        EXPECT_LT(heights.at(512, k), -2);
    }
    EXPECT_GT(quantile(heights, 1), 40);
    const auto &square = island.square;
    bool seaNear = false;
    for (unsigned int j = 0; j < 513; ++j)
        for (unsigned int i = 0; i < 513; ++i) {
            const float distance =
                std::hypot(static_cast<float>(i) - square.x, static_cast<float>(j) - square.z);
            if (distance <= square.radius) {
                ASSERT_FLOAT_EQ(heights.at(i, j), square.y);
            }
            seaNear = seaNear || (distance < 100 && heights.at(i, j) < 0);
        }
    EXPECT_GT(square.y, 2);
    EXPECT_GE(square.radius, 12);
    EXPECT_TRUE(seaNear);
}

INSTANTIATE_TEST_SUITE_P(Numbers, TerrainIslands, testing::Values(3u, 5u, 7u, 20u, 31u, 65535u));

} // namespace
