// Textures of the village, computed from noise; all tile.

#include "examples/village/textures.h"

#include "tools/terrain/noise.h"

#include <algorithm>
#include <cmath>

namespace village {

using ravolt::tool::terrain::tiledNoise;

static float wrapped(float value) { return value - std::floor(value); }

// A number from 0 to 1 for a cell, always the same.
static float cellTone(int i, int j, int seed) {
    const float value = std::sin(static_cast<float>(i * 127 + j * 311 + seed * 74)) * 43758.5f;
    return wrapped(value);
}

static Color shade(const Color &color, float tone) { return color * tone; }

// Courses of stones, each course shifted by half a stone; joints are darker.
struct Course {
    float tone, joint; // of the stone; 0 in the joint to 1 in the stone
};
static Course courseAt(float u, float v, int columns, int rows, float jointWidth, int seed) {
    const int row = static_cast<int>(v * static_cast<float>(rows));
    const float along = u * static_cast<float>(columns) + (row % 2 ? 0.5f : 0.0f);
    const int column = static_cast<int>(std::floor(along)) % columns;
    const float x = wrapped(along), y = wrapped(v * static_cast<float>(rows));
    const float ratio = static_cast<float>(columns) / static_cast<float>(rows);
    const float edge = std::min(std::min(x, 1 - x) / ratio, std::min(y, 1 - y));
    return {0.8f + 0.2f * cellTone(column, row, seed), std::clamp(edge / jointWidth, 0.0f, 1.0f)};
}

Color pavingTexture(float u, float v) {
    const Course stone = courseAt(u, v, 5, 8, 0.07f, 1);
    const float grain =
        0.86f + 0.16f * tiledNoise(u, v, 64, 2, 3) + 0.08f * tiledNoise(u, v, 4, 3, 5);
    return shade({0.64f, 0.60f, 0.54f}, stone.tone * grain * (0.55f + 0.45f * stone.joint));
}

Color gravelTexture(float u, float v) {
    const float grain = 0.8f + 0.32f * tiledNoise(u, v, 64, 2, 101);
    const float tuft = std::clamp(2.2f * tiledNoise(u, v, 8, 4, 103), 0.0f, 1.0f);
    return shade({0.54f, 0.47f, 0.36f}, grain) * (1 - 0.7f * tuft) +
           shade({0.27f, 0.36f, 0.12f}, grain) * (0.7f * tuft);
}

Color stoneTexture(float u, float v) {
    const float wave = 0.012f * tiledNoise(u, v, 8, 2, 7);
    const Course block = courseAt(wrapped(u + wave), wrapped(v + wave), 3, 5, 0.1f, 2);
    const float grain = 0.85f + 0.22f * tiledNoise(u, v, 32, 3, 9);
    return shade({0.58f, 0.56f, 0.52f}, block.tone * grain * (0.5f + 0.5f * block.joint));
}

Color brickTexture(float u, float v) {
    const Course block = courseAt(u, v, 4, 10, 0.12f, 4);
    const Color body =
        shade({0.60f, 0.30f, 0.22f}, block.tone * (0.9f + 0.15f * tiledNoise(u, v, 64, 2, 2)));
    return block.joint < 0.6f ? Color{0.60f, 0.57f, 0.52f} : body;
}

Color tilesTexture(float u, float v) {
    const Course tile = courseAt(u, v, 8, 8, 0.09f, 6);
    const float lower = 0.72f + 0.36f * wrapped(v * 8); // each overlaps the one below
    const float moss = std::max(0.0f, tiledNoise(u, v, 4, 3, 13));
    const Color clay =
        shade({0.66f, 0.30f, 0.20f}, tile.tone * lower * (0.55f + 0.45f * tile.joint));
    return clay * (1 - 0.4f * moss) + Color{0.26f, 0.28f, 0.14f} * (0.4f * moss);
}

static float plasterGrain(float u, float v) {
    return 0.93f + 0.05f * tiledNoise(u, v, 64, 2, 15) + 0.09f * tiledNoise(u, v, 4, 4, 17);
}
Color creamTexture(float u, float v) { return shade({0.86f, 0.80f, 0.66f}, plasterGrain(u, v)); }
Color ochreTexture(float u, float v) { return shade({0.82f, 0.62f, 0.36f}, plasterGrain(u, v)); }
Color roseTexture(float u, float v) { return shade({0.80f, 0.56f, 0.46f}, plasterGrain(u, v)); }
Color paleTexture(float u, float v) { return shade({0.74f, 0.78f, 0.74f}, plasterGrain(u, v)); }

// Grain along V.
static float woodGrain(float u, float v, int seed) {
    const float bend = 0.02f * tiledNoise(u, v, 4, 2, seed);
    return 0.8f + 0.25f * tiledNoise(wrapped(u + bend), wrapped(v * 0.0625f), 64, 2, seed + 1) +
           0.08f * tiledNoise(u, v, 16, 2, seed + 2);
}
Color timberTexture(float u, float v) { return shade({0.38f, 0.25f, 0.15f}, woodGrain(u, v, 21)); }
Color whitewoodTexture(float u, float v) {
    return shade({0.86f, 0.84f, 0.78f}, woodGrain(u, v, 21));
}
Color planksTexture(float u, float v) {
    const int plank = static_cast<int>(u * 5);
    const float x = wrapped(u * 5), gap = std::clamp(std::min(x, 1 - x) / 0.05f, 0.0f, 1.0f);
    return shade({0.56f, 0.39f, 0.23f}, (0.8f + 0.25f * cellTone(plank, 3, 8)) *
                                            woodGrain(u, v, 31) * (0.4f + 0.6f * gap));
}
Color shutterTexture(float u, float v) {
    const float slat = 0.7f + 0.35f * wrapped(v * 12);
    return shade({0.20f, 0.42f, 0.38f}, slat * woodGrain(v, u, 41));
}
Color barkTexture(float u, float v) {
    const float ridge = std::fabs(tiledNoise(u, wrapped(v * 0.25f), 16, 3, 51));
    return shade({0.42f, 0.32f, 0.24f}, 0.55f + 1.1f * ridge);
}
Color leavesTexture(float u, float v) {
    const float leaf = tiledNoise(u, v, 32, 2, 61), depth = tiledNoise(u, v, 8, 3, 63);
    const float light = std::clamp(0.62f + 0.55f * leaf + 0.25f * depth, 0.2f, 1.2f);
    return shade({0.36f, 0.52f, 0.17f}, light) + Color{0.10f, 0.06f, 0} * std::max(0.0f, leaf);
}
Color flowersTexture(float u, float v) {
    const float bloom = tiledNoise(u, v, 8, 2, 71);
    const float kind = tiledNoise(u, v, 4, 1, 73);
    if (bloom < 0.16f)
        return leavesTexture(u, v);
    return kind > 0 ? Color{0.90f, 0.26f, 0.28f} : Color{0.95f, 0.80f, 0.28f};
}
Color awningTexture(float u, float v) {
    const bool red = wrapped(u * 4) < 0.5f;
    const float folds = 0.92f + 0.08f * std::sin(u * 50.27f) + 0.04f * tiledNoise(u, v, 16, 2, 81);
    return shade(red ? Color{0.78f, 0.20f, 0.16f} : Color{0.92f, 0.88f, 0.78f}, folds);
}
Color windowTexture(float u, float v) {
    const float glow = 0.75f + 0.25f * std::sin(3.14f * u) * (1 - 0.5f * v);
    return shade({0.46f, 0.56f, 0.66f}, glow * (0.9f + 0.2f * tiledNoise(u, v, 4, 2, 91)));
}

Color rockTexture(float u, float v) {
    const float crack = std::sqrt(std::fabs(tiledNoise(u, v, 8, 2, 111)));
    const float lichen = std::clamp(2.5f * tiledNoise(u, v, 8, 3, 113) - 0.3f, 0.0f, 1.0f);
    const float tone = (0.55f + 0.45f * crack) * (0.9f + 0.25f * tiledNoise(u, v, 64, 2, 115));
    return shade({0.56f, 0.53f, 0.49f}, tone) * (1 - 0.4f * lichen) +
           shade({0.50f, 0.52f, 0.34f}, tone) * (0.4f * lichen);
}
Color needlesTexture(float u, float v) {
    const float needle = tiledNoise(u, wrapped(v * 0.5f), 64, 2, 121);
    const float depth = tiledNoise(u, v, 8, 3, 123);
    return shade({0.17f, 0.34f, 0.16f},
                 std::clamp(0.8f + 0.5f * needle + 0.3f * depth, 0.2f, 1.4f));
}
Color hullTexture(float u, float v) {
    const float gap = std::clamp(std::min(wrapped(v * 4), 1 - wrapped(v * 4)) / 0.08f, 0.0f, 1.0f);
    return shade({0.60f, 0.42f, 0.26f}, woodGrain(v, u, 131) * (0.5f + 0.5f * gap));
}
// From the snout, at V = 1, to the tail.
Color fishTexture(float u, float v) {
    const float stripe = std::sin(22 * v + 0.6f * std::sin(6.2831853f * u));
    return stripe > 0.35f ? Color{0.96f, 0.94f, 0.88f} : Color{0.96f, 0.50f, 0.14f};
}

} // namespace village
