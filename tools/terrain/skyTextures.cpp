// The engine's dome is a half sphere that is sunk by a third of its radius. All is computed from
// the direction in which a pixel is seen, so that the texture closes round U and at the zenith.

#include "tools/terrain/media.h"
#include "tools/terrain/noise.h"
#include "tools/terrain/texture.h"

#include <algorithm>
#include <cmath>

namespace ravolt::tool::terrain {

namespace {

using Direction = std::array<float, 3>;

constexpr float sunHeight = 35 * pi / 180;

float dot(const Direction &a, const Direction &b) {
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

Direction normalized(const Direction &vector) {
    const float length = std::sqrt(dot(vector, vector));
    return {vector[0] / length, vector[1] / length, vector[2] / length};
}

Direction directionAt(float u, float v) {
    const float round = 2 * pi * (1 - u), fromZenith = pi / 2 * (1 - v);
    return normalized({std::sin(fromZenith) * std::cos(round), std::cos(fromZenith) - 1.0f / 3,
                       std::sin(fromZenith) * std::sin(round)});
}

// Clouds on a plane far above, from 0 to 1; they end before the horizon, where they would be too
// narrow for the texture.
float cloudsAt(const Direction &to, float scale, int seed) {
    if (to[1] <= 0.02f)
        return 0;
    const float x = scale * to[0] / (to[1] + 0.15f), z = scale * to[2] / (to[1] + 0.15f);
    const float density = fractalNoise(x, z, 6, seed) + 0.25f * noise(x * 0.3f, z * 0.3f, seed + 9);
    return smoothStep(-0.02f, 0.62f, density) * smoothStep(0.02f, 0.16f, to[1]);
}

// How much less light a cloud gets where it is thicker towards the sun, at +X.
float shadeAt(const Direction &to, float cloud, float scale, int seed) {
    if (cloud <= 0)
        return 0;
    const Direction nearer = {to[0] + 0.16f * (to[1] + 0.15f), to[1], to[2]};
    return smoothStep(-0.15f, 0.55f, cloudsAt(nearer, scale, seed) - 0.55f * cloud);
}

struct Light {
    Direction from;
    Color color;
    float disc; // the cosine of its radius
};

// The disc with its glow, from 0 to 1.
float glowAt(const Direction &to, const Light &light) {
    const float cosine = dot(to, light.from);
    const float disc = smoothStep(light.disc, light.disc + 0.0003f, cosine);
    const float near = std::max(cosine, 0.0f);
    return std::clamp(disc + 0.35f * std::pow(near, 350.0f) + 0.22f * std::pow(near, 24.0f), 0.0f,
                      1.0f);
}

const Light sun = {{std::cos(sunHeight), std::sin(sunHeight), 0}, {1.0f, 0.97f, 0.87f}, 0.9994f};
const Light moon = {{-std::cos(sunHeight), std::sin(sunHeight), 0}, {0.92f, 0.94f, 1.0f}, 0.9992f};

Color dayAt(const Direction &to) {
    constexpr Color zenith = {0.17f, 0.36f, 0.70f}, middle = {0.42f, 0.63f, 0.88f};
    constexpr Color haze = {0.79f, 0.86f, 0.92f}, shade = {0.66f, 0.71f, 0.79f};
    const float up = std::max(to[1], 0.0f);
    const Color blue = mixed(middle, zenith, smoothStep(0.15f, 0.9f, up));
    const Color air = mixed(haze, blue, smoothStep(0.0f, 0.32f, up));
    const Color lit = mixed(air, sun.color, glowAt(to, sun));
    const float cloud = cloudsAt(to, 0.9f, 91);
    const Color white = mixed({0.99f, 0.985f, 0.97f}, shade, shadeAt(to, cloud, 0.9f, 91));
    return mixed(lit, white, 0.92f * smoothStep(0.0f, 0.75f, cloud));
}

Color nightAt(const Direction &to) {
    constexpr Color zenith = {0.010f, 0.014f, 0.040f}, haze = {0.055f, 0.075f, 0.13f};
    const float up = std::max(to[1], 0.0f);
    const Color air = mixed(haze, zenith, smoothStep(0.0f, 0.55f, up));
    const Color lit = mixed(air, moon.color, 0.9f * glowAt(to, moon));
    const float cloud = cloudsAt(to, 0.8f, 101);
    return mixed(lit, {0.075f, 0.085f, 0.12f}, 0.75f * cloud);
}

// The rows of the zenith and of the lower rim touch where the texture repeats: the rim, which is
// far below the horizon, takes the colour of the zenith.
constexpr float rim = 0.012f;

template <class Look> Texture skyOf(unsigned int side, Look look) {
    Texture sky(side, 3);
    const Color zenith = look(Direction{0, 1, 0});
    for (unsigned int y = 0; y < side; ++y)
        for (unsigned int x = 0; x < side; ++x) {
            const float v = sky.coordinate(y);
            sky.set(
                x, y,
                mixed(look(directionAt(sky.coordinate(x), v)), zenith, 1 - smoothStep(0, rim, v)));
        }
    return sky;
}

void lighten(Texture &sky, unsigned int x, unsigned int y, const Color &color, float strength) {
    const unsigned char *old = sky.at(x, y);
    const Color before = {old[0] / 255.0f, old[1] / 255.0f, old[2] / 255.0f};
    sky.set(x, y, mixed(before, color, strength));
}

// A round star around (u, v): a pixel is four times as wide as high at the horizon, and narrows
// towards the zenith.
void addStar(Texture &sky, float u, float v, const Color &color, float strength) {
    const int side = static_cast<int>(sky.size());
    const float narrowing = std::max(std::sin(pi / 2 * (1 - v)), 0.02f);
    const float radiusX = 0.55f / narrowing, radiusY = 2.2f;
    const int middleX = static_cast<int>(u * static_cast<float>(side));
    const int middleY = static_cast<int>(v * static_cast<float>(side));
    const int reachX = static_cast<int>(radiusX), reachY = static_cast<int>(radiusY);
    for (int y = std::max(middleY - reachY, 0); y <= std::min(middleY + reachY, side - 1); ++y)
        for (int dx = -reachX; dx <= reachX; ++dx) {
            const float distance = std::hypot(static_cast<float>(dx) / radiusX,
                                              static_cast<float>(y - middleY) / radiusY);
            lighten(sky, static_cast<unsigned int>((middleX + dx + side) % side),
                    static_cast<unsigned int>(y), color,
                    strength * std::max(1 - distance * distance, 0.0f));
        }
}

void addStars(Texture &sky) {
    constexpr int stars = 1400;
    Dice dice(7);
    for (int i = 0; i < stars; ++i) {
        // Even over the half sphere.
        const float fromZenith = std::acos(dice.roll()), bright = dice.roll();
        const float v = 1 - fromZenith / (pi / 2), u = dice.roll();
        const Color color = mixed({0.75f, 0.82f, 1.0f}, {1.0f, 0.90f, 0.75f}, dice.roll());
        const Direction to = directionAt(u, v);
        if (to[1] > 0.03f)
            addStar(sky, u, v, color,
                    (0.2f + 0.8f * bright * bright * bright) * (1 - cloudsAt(to, 0.8f, 101)));
    }
}

} // namespace

void makeSkies(unsigned int side, const FileSink &sink) {
    sink(daySky, skyOf(side, dayAt).tga());
    Texture night = skyOf(side, nightAt);
    addStars(night);
    sink(nightSky, night.tga());
}

} // namespace ravolt::tool::terrain
