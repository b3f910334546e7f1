// The computed textures of terrains.

#include "tests/tools/support.h"
#include "tests/tools/terrainFile.h"
#include "tools/terrain/ground.h"
#include "tools/terrain/media.h"

#include <cmath>
#include <cstdlib>
#include <map>

namespace {

using namespace ravolt::tool::terrain;
using terrain_test::textsOf;

// A texture as the engine reads it: bytes 12 to 17 of the file state its size.
struct Picture {
    unsigned int width = 0, height = 0, channels = 0;
    std::vector<unsigned char> bytes; // B G R [A]

    // In memory order, R G B [A].
    double at(unsigned int x, unsigned int y, unsigned int channel) const {
        const unsigned int stored = channel == 3 ? 3 : 2 - channel;
        return bytes[18 + (std::size_t(y) * width + x) * channels + stored] / 255.0;
    }
};

using Files = std::map<std::string, std::vector<unsigned char>>;

Picture pictureOf(const Files &files, const std::string &name) {
    Picture picture;
    picture.bytes = files.at(name);
    picture.width = picture.bytes[12] + 256u * picture.bytes[13];
    picture.height = picture.bytes[14] + 256u * picture.bytes[15];
    picture.channels = picture.bytes[16] / 8u;
    return picture;
}

Files filesBy(const std::function<void(const FileSink &)> &make) {
    Files files;
    make([&](const std::string &name, const std::vector<unsigned char> &bytes) {
        EXPECT_TRUE(files.emplace(name, bytes).second) << name;
    });
    return files;
}

// The largest step between neighbours with the distance `border`: inside the picture, or over its
// border.
double largestStep(const Picture &picture, bool alongX, bool overBorder) {
    double largest = 0;
    const unsigned int length = alongX ? picture.width : picture.height;
    const unsigned int lines = alongX ? picture.height : picture.width;
    for (unsigned int line = 0; line < lines; ++line)
        for (unsigned int k = overBorder ? length - 1 : 0; k < (overBorder ? length : length - 1);
             ++k)
            for (unsigned int channel = 0; channel < picture.channels; ++channel) {
                const unsigned int next = (k + 1) % length;
                const double one =
                    alongX ? picture.at(k, line, channel) : picture.at(line, k, channel);
                const double other =
                    alongX ? picture.at(next, line, channel) : picture.at(line, next, channel);
                largest = std::max(largest, std::fabs(one - other));
            }
    return largest;
}

void expectTiles(const Files &files, const std::string &name) {
    const Picture picture = pictureOf(files, name);
    for (const bool alongX : {true, false})
        EXPECT_LE(largestStep(picture, alongX, true), largestStep(picture, alongX, false))
            << name << (alongX ? " along X" : " along Y");
}

void expectTga(const Files &files, const std::string &name, unsigned int side,
               unsigned int channels) {
    const Picture picture = pictureOf(files, name);
    const unsigned char start[12] = {0, 0, 2};
    EXPECT_TRUE(std::equal(start, start + 12, picture.bytes.begin())) << name;
    EXPECT_EQ(picture.width, side) << name;
    EXPECT_EQ(picture.height, side) << name;
    EXPECT_EQ(picture.channels, channels) << name;
    EXPECT_LT(picture.bytes[17], 16) << name; // the rows are as they are stored
    EXPECT_EQ(picture.bytes.size(), 18u + std::size_t(side) * side * channels) << name;
}

TEST(TerrainTextures, GroundIsFourPairsThatTile) {
    const Files files = filesBy([](const FileSink &sink) { makeGroundTextures(128, sink); });
    EXPECT_EQ(files.size(), 8u);
    for (const char *layer : layerNames)
        for (const char *ending : {diffuseEnding, normalEnding}) {
            expectTga(files, std::string(layer) + ending, 128, 4);
            expectTiles(files, std::string(layer) + ending);
        }
}

TEST(TerrainTextures, HeightsFillTheAlphaOfADiffuseMap) {
    const Files files = filesBy([](const FileSink &sink) { makeGroundTextures(64, sink); });
    for (const char *layer : layerNames) {
        const Picture picture = pictureOf(files, std::string(layer) + diffuseEnding);
        double lowest = 1, highest = 0;
        for (unsigned int y = 0; y < 64; ++y)
            for (unsigned int x = 0; x < 64; ++x) {
                lowest = std::min(lowest, picture.at(x, y, 3));
                highest = std::max(highest, picture.at(x, y, 3));
            }
        EXPECT_EQ(lowest, 0) << layer;
        EXPECT_EQ(highest, 1) << layer;
    }
}

// Level ground of each layer, by its own normal map in its own frame, is lit as much from either
// side, and brighter the higher the light is.
TEST(TerrainTextures, LevelGroundOfEveryLayerIsLitAsLevelGround) {
    const Files files = filesBy([](const FileSink &sink) { makeGroundTextures(128, sink); });
    const float levelHeights[] = {20, 90, -9};
    Heights plane(3, 3);
    for (std::size_t layer = 0; layer < 3; ++layer) {
        std::fill(plane.values.begin(), plane.values.end(), levelHeights[layer]);
        const GroundVertex ground = groundVertex(plane, {}, 1, 1);
        ASSERT_EQ(layerShares(ground.weights)[layer], 1) << layerNames[layer];
        const Picture map = pictureOf(files, std::string(layerNames[layer]) + normalEnding);
        std::array<double, 3> mean{};
        for (unsigned int y = 0; y < 128; ++y)
            for (unsigned int x = 0; x < 128; ++x)
                for (unsigned int axis = 0; axis < 3; ++axis)
                    mean[axis] += map.at(x, y, axis) * 2 - 1;
        const auto lit = [&](double x, double y, double z) {
            return terrain_test::lambert({{}, ground.weights, ground.tangent}, mean, {x, y, z});
        };
        EXPECT_GT(lit(0, 1, 0), 0.9) << layerNames[layer];
        for (const auto &[x, z] : {std::pair{0.8, 0.0}, {-0.8, 0.0}, {0.0, 0.8}, {0.0, -0.8}}) {
            EXPECT_GT(lit(x, 0.6, z), 0.4) << layerNames[layer] << " " << x << " " << z;
            EXPECT_LT(lit(x, 0.6, z), 0.8) << layerNames[layer] << " " << x << " " << z;
            EXPECT_LT(std::fabs(lit(x, 0, z)), 0.1) << layerNames[layer] << " " << x << " " << z;
        }
    }
}

TEST(TerrainTextures, WaterMapsTileAndOffsetsAreAroundTheMiddle) {
    const Files files = filesBy([](const FileSink &sink) { makeWaterTextures(128, sink); });
    for (const char *name : {waterNormal, waterDudv}) {
        expectTga(files, name, 128, 3);
        expectTiles(files, name);
    }
    const Picture dudv = pictureOf(files, waterDudv);
    for (unsigned int channel = 0; channel < 2; ++channel) {
        double sum = 0;
        for (unsigned int y = 0; y < 128; ++y)
            for (unsigned int x = 0; x < 128; ++x)
                sum += dudv.at(x, y, channel);
        EXPECT_NEAR(sum / (128 * 128), 0.5, 0.01);
    }
}

TEST(TerrainTextures, SkiesCloseRoundTheHorizonAndAtTheZenith) {
    const Files files = filesBy([](const FileSink &sink) { makeSkies(256, sink); });
    for (const char *name : {daySky, nightSky}) {
        expectTga(files, name, 256, 3);
        const Picture sky = pictureOf(files, name);
        EXPECT_LE(largestStep(sky, true, true), largestStep(sky, true, false)) << name;
    }
    const Picture day = pictureOf(files, daySky), night = pictureOf(files, nightSky);
    for (unsigned int channel = 0; channel < 3; ++channel) {
        // The zenith is one point, and the texture repeats from there to its first row.
        for (unsigned int x = 0; x < 256; ++x) {
            EXPECT_NEAR(day.at(x, 255, channel), day.at(0, 255, channel), 0.03);
            EXPECT_NEAR(day.at(x, 0, channel), day.at(x, 255, channel), 0.2);
        }
        EXPECT_GT(day.at(80, 150, channel), night.at(80, 150, channel) + 0.1);
    }
}

TEST(TerrainTextures, FireAndSmokeNameTheirTextures) {
    const Files files = filesBy([](const FileSink &sink) { makeFire(sink); });
    expectTga(files, "fire.tga", 64, 4);
    expectTga(files, "smoke.tga", 128, 4);
    for (const char *name : {"fire", "smoke"}) {
        const auto &bytes = files.at(std::string(name) + ".xml");
        const std::string xml(bytes.begin(), bytes.end());
        EXPECT_NE(xml.find("<texture value=\"" + std::string(name) + ".tga\"/>"),
                  std::string::npos);
        // The particles are born with the values before it.
        EXPECT_GT(xml.find("<nbOfParticles"), xml.find("<blendingDst"));
    }
    const Picture fire = pictureOf(files, "fire.tga");
    for (unsigned int k = 0; k < 64; ++k) // nothing is cut off
        for (const auto &[x, y] : {std::pair{k, 0u}, {k, 63u}, {0u, k}, {63u, k}})
            EXPECT_EQ(fire.at(x, y, 3), 0);
}

} // namespace
