// The path of the demo's camera over the island whose files are in this folder, as runExample.sh
// has made them: how long it takes, and how far from the ground and the water it is.

#include "examples/stage.h"
#include "examples/world/parts.h"

#include <ravolt/kit/terrainHeights.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <functional>
#include <gtest/gtest.h>
#include <string>

namespace {

using namespace world;

constexpr double minSeconds = 85, maxSeconds = 95; // of the flight
constexpr float samplesPerSecond = 4;
constexpr float waterLevel = 0;

bool isUnderWater(const Part &part) { return &part.lighting == &underWater; }

// Also at the end of each part.
void forEachSample(const std::function<void(const Part &, float progress)> &check) {
    for (std::size_t number = 0; number < numberOfParts; ++number) {
        const Part &part = parts[number];
        const int samples = static_cast<int>(std::ceil(part.seconds * samplesPerSecond));
        for (int i = 0; i <= samples; ++i) {
            const float progress = static_cast<float>(i) / static_cast<float>(samples);
            SCOPED_TRACE(part.name + (" at " + std::to_string(progress * part.seconds)) + " s");
            check(part, progress);
        }
    }
}

TEST(WorldFlight, TakesAMinuteAndAHalf) {
    double seconds = 0;
    for (std::size_t number = 0; number < numberOfParts; ++number)
        seconds += static_cast<double>(parts[number].seconds);
    EXPECT_GE(seconds, minSeconds);
    EXPECT_LE(seconds, maxSeconds);
}

TEST(WorldFlight, IsAboveTheGround) {
    ravolt::kit::TerrainHeights ground;
    ASSERT_TRUE(ground.load("island/terrain.geo"));
    double lowest = 1e9;
    forEachSample([&](const Part &part, float progress) {
        const Point eye = eyeAt(part, progress);
        const double above = static_cast<double>(eye.y) -
                             ground.drawnAt(static_cast<double>(eye.x), static_cast<double>(eye.z));
        EXPECT_GT(above, static_cast<double>(nearPlane)) << "the ground is cut open";
        lowest = std::min(lowest, above);
    });
    std::printf("at least %.2f units above the ground\n", lowest);
}

TEST(WorldFlight, IsBelowTheWaterInThatPartAlone) {
    int below = 0;
    forEachSample([&](const Part &part, float progress) {
        const float eye = eyeAt(part, progress).y;
        if (isUnderWater(part)) {
            EXPECT_LT(eye, waterLevel);
            ++below;
        } else {
            EXPECT_GT(eye, waterLevel);
        }
    });
    EXPECT_GT(below, 0);
}

} // namespace
