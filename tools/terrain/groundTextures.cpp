// Procedural textures of grass, snow, sand and rock.

#include "tools/terrain/media.h"
#include "tools/terrain/noise.h"
#include "tools/terrain/texture.h"

#include <cmath>

namespace ravolt::tool::terrain {

namespace {

// How the engine's frame leans where this layer is alone; its normal map makes up for it.
enum class Lean { none, towardsZ, towardsX };

struct Layer {
    float (*height)(float u, float v); // of the surface; it tiles
    Color (*color)(float u, float v, float height);
    float bump;  // the height of the surface, in sides of the texture
    float gloss; // of its highest points
    Lean lean;
};

float unit(float noiseValue) { return 0.5f + 0.5f * noiseValue; }

// --- Grass: tufts of blades, some of them dry.

float grassHeight(float u, float v) {
    const float tufts = tiledNoise(u, v, 16, 2, 21);
    const float blades = tiledNoise(u + 0.01f * tufts, v, 64, 2, 24);
    return 0.45f * tufts + 0.55f * blades;
}

Color grassColor(float u, float v, float height) {
    const Color green = mixed({0.15f, 0.25f, 0.06f}, {0.42f, 0.54f, 0.17f}, height);
    const float dry = smoothStep(0.05f, 0.6f, tiledNoise(u, v, 8, 3, 27));
    return mixed(green, {0.50f, 0.49f, 0.21f}, 0.55f * dry * height);
}

// --- Snow: soft drifts.

float snowHeight(float u, float v) {
    return tiledNoise(u, v, 4, 3, 31) + 0.12f * tiledNoise(u, v, 64, 1, 35);
}

Color snowColor(float, float, float height) {
    return mixed({0.78f, 0.84f, 0.93f}, {0.96f, 0.97f, 0.99f}, height);
}

// --- Sand: ripples of the wind, and grains.

float sandHeight(float u, float v) {
    const float bent = v + 0.05f * tiledNoise(u, v, 4, 2, 41);
    const float ripples = std::sin(2 * pi * 14 * bent + 2 * tiledNoise(u, v, 8, 1, 43));
    return 0.35f * ripples + 0.35f * tiledNoise(u, v, 8, 3, 44) +
           0.3f * tiledNoise(u, v, 128, 1, 47);
}

Color sandColor(float u, float v, float height) {
    const Color dry = mixed({0.66f, 0.56f, 0.38f}, {0.93f, 0.84f, 0.64f}, height);
    return mixed(dry, {0.80f, 0.74f, 0.62f}, 0.5f * unit(tiledNoise(u, v, 128, 1, 48)));
}

// --- Rock: blocks between cracks, in courses.

float rockHeight(float u, float v) {
    const float warp = 0.06f * tiledNoise(u, v, 4, 3, 51);
    const float cracks = std::sqrt(std::fabs(tiledNoise(u + warp, v - warp, 8, 1, 54)));
    const float courses = std::sin(2 * pi * (6 * v + 12 * warp));
    return 0.6f * cracks + 0.14f * courses + 0.35f * tiledNoise(u, v, 16, 4, 56);
}

Color rockColor(float u, float v, float height) {
    const Color stone = mixed({0.20f, 0.18f, 0.16f}, {0.55f, 0.51f, 0.46f}, height);
    const float lichen = smoothStep(0.25f, 0.7f, tiledNoise(u, v, 8, 3, 61));
    return mixed(stone, {0.47f, 0.47f, 0.34f}, 0.45f * lichen);
}

constexpr std::array<Layer, layerNames.size()> layers = {
    Layer{grassHeight, grassColor, 0.014f, 0.12f, Lean::none},
    Layer{snowHeight, snowColor, 0.035f, 0.35f, Lean::towardsZ},
    Layer{sandHeight, sandColor, 0.010f, 0.15f, Lean::towardsX},
    Layer{rockHeight, rockColor, 0.055f, 0.25f, Lean::none},
};

// The normal of level ground, in the axes of a frame that leans so.
std::array<float, 3> leaning(const std::array<float, 3> &normal, Lean lean) {
    const auto [x, y, z] = normal;
    // The second axis is as long as the third, and the tangent shorter by the root of 2.
    const float along = std::sqrt(2.0f / 3), up = std::sqrt(1.0f / 3), half = std::sqrt(0.5f);
    switch (lean) {
    case Lean::towardsZ:
        return {x, half * (y - z), half * (y + z)};
    case Lean::towardsX:
        return {up * x - along * z, y, along * x + up * z};
    default:
        return normal;
    }
}

void makeLayer(const Layer &layer, const char *name, unsigned int side, const FileSink &sink) {
    TiledField height(side, layer.height);
    height.normalize();
    Texture diffuse(side, 4), normal(side, 4);
    for (unsigned int y = 0; y < side; ++y)
        for (unsigned int x = 0; x < side; ++x) {
            const float own = height.at(x, y);
            diffuse.set(x, y, layer.color(diffuse.coordinate(x), diffuse.coordinate(y), own));
            diffuse.setAlpha(x, y, own);
            const auto [alongU, alongV] = height.slope(x, y);
            normal.set(
                x, y, packed(leaning({-layer.bump * alongU, -layer.bump * alongV, 1}, layer.lean)));
            normal.setAlpha(x, y, layer.gloss * own);
        }
    sink(std::string(name) + diffuseEnding, diffuse.tga());
    sink(std::string(name) + normalEnding, normal.tga());
}

} // namespace

void makeGroundTextures(unsigned int side, const FileSink &sink) {
    for (std::size_t i = 0; i < layers.size(); ++i)
        makeLayer(layers[i], layerNames[i], side, sink);
}

} // namespace ravolt::tool::terrain
