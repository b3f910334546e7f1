// Fractal, tiled and ridged sums of gradient noise.

#include "tools/terrain/noise.h"

#include <algorithm>
#include <cmath>

#define STB_PERLIN_IMPLEMENTATION
#include <stb/stb_perlin.h>

namespace ravolt::tool::terrain {

namespace {

// Octaves and seeds take layers of the noise's third dimension that are no whole numbers, where it
// would be 0 at every corner of its grid.
float layerOf(int octave, int seed) {
    return 0.5f + static_cast<float>(octave * 7 + (seed >> 8) % 31 * 8);
}

// Another direction for each octave: the noise shows the axes of its grid.
struct Turned {
    float x, y;
    Turned(float fromX, float fromY, int octave) {
        const float angle = 0.9f + 1.1f * static_cast<float>(octave);
        const float sine = std::sin(angle), cosine = std::cos(angle);
        x = cosine * fromX - sine * fromY + 0.37f;
        y = sine * fromX + cosine * fromY + 0.71f;
    }
};

template <class Octave> float summed(int octaves, Octave octave) {
    float sum = 0, weight = 1;
    for (int k = 0; k < octaves; ++k, weight *= 0.5f)
        sum += weight * octave(k, static_cast<float>(1 << k));
    return sum;
}

} // namespace

float noise(float x, float y, int seed) { return fractalNoise(x, y, 1, seed); }

float noise(float x, float y, float z, int seed) {
    return stb_perlin_noise3_seed(x, y, z, 0, 0, 0, seed);
}

float fractalNoise(float x, float y, int octaves, int seed) {
    return summed(octaves, [&](int k, float scale) {
        const Turned at(x * scale, y * scale, k);
        return stb_perlin_noise3_seed(at.x, at.y, layerOf(k, seed), 0, 0, 0, seed + k);
    });
}

float fractalNoise(float x, float y, float z, int octaves, int seed) {
    return summed(octaves, [&](int k, float scale) {
        return stb_perlin_noise3_seed(x * scale, y * scale, z * scale, 0, 0, 0, seed + k);
    });
}

float tiledNoise(float u, float v, int period, int octaves, int seed) {
    return summed(octaves, [&](int k, float scale) {
        const float features = static_cast<float>(period) * scale;
        const int wrap = period << k;
        return stb_perlin_noise3_seed(u * features, v * features, layerOf(k, seed), wrap, wrap, 0,
                                      seed + k);
    });
}

float ridgedNoise(float x, float y, int octaves, int seed) {
    float sum = 0, weight = 1, total = 0, above = 1;
    for (int k = 0; k < octaves; ++k, weight *= 0.5f) {
        const float scale = static_cast<float>(1 << k);
        const Turned at(x * scale, y * scale, k);
        const float crest =
            1 - std::fabs(stb_perlin_noise3_seed(at.x, at.y, layerOf(k, seed), 0, 0, 0, seed + k));
        // Slopes below a crest get crests of their own, valleys remain smooth.
        sum += weight * above * crest * crest;
        total += weight;
        above = std::clamp(crest * crest * 1.4f, 0.0f, 1.0f);
    }
    return sum / total;
}

float Dice::roll() {
    state = state * 747796405u + 2891336453u;
    const std::uint32_t word = ((state >> ((state >> 28) + 4)) ^ state) * 277803737u;
    return static_cast<float>(((word >> 22) ^ word) >> 8) / 16777216.0f;
}

} // namespace ravolt::tool::terrain
