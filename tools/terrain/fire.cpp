// The emitter files of the fire and its smoke, as literals.

#include "tools/terrain/media.h"
#include "tools/terrain/noise.h"
#include "tools/terrain/texture.h"

#include <cmath>
#include <string>

namespace ravolt::tool::terrain {

namespace {

constexpr const char *fireXml = R"(<?xml version="1.0"?>
<emitter>
    <type value="2"/>
    <texture value="fire.tga"/>
    <maxEnergy value="90"/>
    <maxVelocity value="4"/>
    <maxParticleSize value="11"/>
    <maxSpin value="120"/>
    <radius value="0.7"/>
    <gravity x="0" y="0.4" z="0"/>
    <upVector x="0" y="0.5" z="0"/>
    <colorStart x="0.75" y="0.42" z="0.12"/>
    <colorEnd x="0.55" y="0.1" z="0.01"/>
    <blendingSrc value="770"/>
    <blendingDst value="1"/>
    <nbOfParticles value="110"/>
</emitter>
)";

// As a node of its own some way above the fire.
constexpr const char *smokeXml = R"(<?xml version="1.0"?>
<emitter>
    <type value="2"/>
    <texture value="smoke.tga"/>
    <maxEnergy value="95"/>
    <maxVelocity value="3"/>
    <maxParticleSize value="18"/>
    <maxSpin value="30"/>
    <radius value="0.5"/>
    <center x="0" y="1.5" z="0"/>
    <gravity x="0.15" y="0.25" z="0"/>
    <upVector x="0.1" y="1" z="0.05"/>
    <colorStart x="0.38" y="0.36" z="0.35"/>
    <colorEnd x="0.62" y="0.62" z="0.64"/>
    <blendingSrc value="770"/>
    <blendingDst value="771"/>
    <nbOfParticles value="60"/>
</emitter>
)";

// A round puff, ragged by noise, that ends before the border of the picture.
Texture puff(unsigned int side, const Color &inner, const Color &outer, float ragged, float opacity,
             int seed) {
    Texture picture(side, 4);
    for (unsigned int y = 0; y < side; ++y)
        for (unsigned int x = 0; x < side; ++x) {
            const float u = 2 * picture.coordinate(x) - 1, v = 2 * picture.coordinate(y) - 1;
            const float distance = std::hypot(u, v);
            const float edge = distance + ragged * fractalNoise(2 * u, 2 * v, 4, seed);
            const float body =
                (1 - smoothStep(0.05f, 0.9f, edge)) * (1 - smoothStep(0.75f, 0.98f, distance));
            picture.set(x, y, mixed(outer, inner, body));
            picture.setAlpha(x, y, opacity * body);
        }
    return picture;
}

std::vector<unsigned char> bytesOf(const std::string &text) { return {text.begin(), text.end()}; }

} // namespace

void makeFire(const FileSink &sink) {
    sink("fire.tga", puff(64, {1, 0.95f, 0.8f}, {1, 0.6f, 0.3f}, 0.35f, 1, 111).tga());
    sink("smoke.tga", puff(128, {1, 1, 1}, {0.9f, 0.9f, 0.9f}, 0.6f, 0.75f, 121).tga());
    sink("fire.xml", bytesOf(fireXml));
    sink("smoke.xml", bytesOf(smokeXml));
}

} // namespace ravolt::tool::terrain
