// Computes layer weights and tangents from height and slope.

#include "tools/terrain/ground.h"

#include "tools/terrain/noise.h"
#include "tools/terrain/texture.h"

#include <algorithm>
#include <cmath>

namespace ravolt::tool::terrain {

namespace {

// What is left of the lower layers below rock: with nothing left the frame would have no third
// axis.
constexpr float minUpright = 0.04f;

// The third axis of the frame does not lean with the ground, so that the tangent has to lean more.
constexpr float reliefGain = 2, maxRelief = 1.2f;

// Borders of layers wander with noise of these sizes, in units.
constexpr float coarseNoise = 37, fineNoise = 7;

struct Slope {
    float alongX, alongZ; // rise over run
    float amount() const { return std::hypot(alongX, alongZ); }
};

Slope slopeAt(const Heights &heights, float spacing, unsigned int i, unsigned int j) {
    const unsigned int left = i ? i - 1 : 0, right = std::min(i + 1, heights.width - 1);
    const unsigned int up = j ? j - 1 : 0, down = std::min(j + 1, heights.depth - 1);
    return {(heights.at(right, j) - heights.at(left, j)) /
                (static_cast<float>(right - left) * spacing),
            (heights.at(i, down) - heights.at(i, up)) / (static_cast<float>(down - up) * spacing)};
}

// -1 to 1 about.
float borderNoise(float x, float z) {
    return 0.65f * noise(x / coarseNoise, z / coarseNoise, 11) +
           0.6f * noise(x / fineNoise, z / fineNoise, 12);
}

Vector weightsAt(const GroundRules &rules, float height, float slope, float wander) {
    const float rock = smoothStep(0.75f * rules.steepSlope, 1.25f * rules.steepSlope,
                                  slope * (1 + 0.35f * wander));
    const float highBand = std::max(0.12f * std::fabs(rules.highFrom), 1.0f);
    const float high = smoothStep(rules.highFrom - highBand, rules.highFrom + highBand,
                                  height + highBand * wander);
    const float shoreBand = std::max(0.2f * std::fabs(rules.shoreUpTo + 2), 0.4f);
    const float shore = 1 - smoothStep(rules.shoreUpTo - shoreBand, rules.shoreUpTo + shoreBand,
                                       height + shoreBand * wander);
    // Below rock the other layers fade too, so that they do not lean the frame there.
    const float upright = 1 - (1 - minUpright) * rock;
    const float cube = upright * upright * upright;
    return {shore * cube, upright, high * cube};
}

// Along X as far as the third axis allows, and as short as that one is.
Vector tangentAt(const Vector &weights, float riseAlongX) {
    const auto [x, y, z] = weights;
    const float square = x * x + y * y + z * z;
    Vector tangent = {1 - x * x / square, -x * y / square, -x * z / square};
    const float length = std::hypot(tangent[0], tangent[1], tangent[2]);
    const float scale = std::min(1.0f, std::sqrt(square));
    for (float &part : tangent)
        part *= scale / length;
    // In layer 3 the tangent makes up for the leaning axis; it must not lean by itself there.
    const float relief = std::clamp(reliefGain * riseAlongX, -maxRelief, maxRelief);
    tangent[1] += scale * (1 - std::min(1.0f, x)) * relief;
    return tangent;
}

} // namespace

GroundVertex groundVertex(const Heights &heights, const GroundRules &rules, unsigned int i,
                          unsigned int j) {
    const Slope slope = slopeAt(heights, rules.spacing, i, j);
    const float wander =
        borderNoise(static_cast<float>(i) * rules.spacing, static_cast<float>(j) * rules.spacing);
    GroundVertex vertex;
    vertex.weights = weightsAt(rules, heights.at(i, j), slope.amount(), wander);
    vertex.tangent = tangentAt(vertex.weights, slope.alongX);
    return vertex;
}

std::array<float, numberOfLayers> layerShares(const Vector &weights) {
    const auto [x, y, z] = weights;
    return {(1 - z) * (1 - x) * y, z * (1 - x) * y, x * y, 1 - y};
}

} // namespace ravolt::tool::terrain
