#include "tools/terrain/media.h"
#include "tools/terrain/noise.h"
#include "tools/terrain/texture.h"

namespace ravolt::tool::terrain {

namespace {

constexpr float waveHeight = 0.012f;     // in sides of the texture
constexpr float strongestOffset = 0.05f; // of the slopes, which fills the range of the colours

float waves(float u, float v) { return tiledNoise(u, v, 8, 3, 71); }
float swell(float u, float v) { return tiledNoise(u, v, 4, 2, 81); }

} // namespace

void makeWaterTextures(unsigned int side, const FileSink &sink) {
    const TiledField height(side, waves), offset(side, swell);
    Texture normal(side, 3), dudv(side, 3);
    for (unsigned int y = 0; y < side; ++y)
        for (unsigned int x = 0; x < side; ++x) {
            const auto [alongU, alongV] = height.slope(x, y);
            normal.set(x, y, packed({-waveHeight * alongU, -waveHeight * alongV, 1}));
            const auto [shiftU, shiftV] = offset.slope(x, y);
            dudv.set(x, y,
                     {0.5f + 0.5f * strongestOffset * shiftU,
                      0.5f + 0.5f * strongestOffset * shiftV, 0.5f});
        }
    sink(waterNormal, normal.tga());
    sink(waterDudv, dudv.tga());
}

} // namespace ravolt::tool::terrain
