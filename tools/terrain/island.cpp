// Generates the heights of an island, and levels a square on it.

#include "tools/terrain/island.h"

#include "tools/terrain/noise.h"
#include "tools/terrain/texture.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace ravolt::tool::terrain {

namespace {

constexpr float seaFloor = -16;
constexpr float hills = 22, mountains = 96; // heights over the water
constexpr float squareHeight = 4.5f, squareRadius = 16, squareSlope = 22;

// 1 in the middle, 0 at the coast, below 0 in the sea.
float inland(float x, float z, int seed) {
    const float wander = 0.30f * fractalNoise(x * 2.2f, z * 2.2f, 5, seed);
    const float border = smoothStep(0.85f, 1.0f, std::max(std::fabs(x), std::fabs(z)));
    return 1 - (std::hypot(x, z) + wander) / 0.76f - 0.5f * border;
}

// x and z from -1 to 1 over the terrain.
float heightAt(float x, float z, int seed) {
    const float inner = inland(x, z, seed);
    if (inner < 0)
        return std::max(seaFloor, 60 * inner);
    const float beach = 5 * smoothStep(0, 0.12f, inner) + 14 * inner;
    const float rolling = hills * smoothStep(0.08f, 0.5f, inner) *
                          (0.35f + 0.5f * fractalNoise(x * 5, z * 5, 5, seed + 40));
    const float crest = ridgedNoise(x * 2.6f + 3, z * 2.6f, 6, seed + 80);
    const float range = smoothStep(-0.25f, 0.35f, noise(x * 1.7f, z * 1.7f + 9, seed + 120));
    return beach + rolling +
           mountains * smoothStep(0.22f, 0.72f, inner) * (0.25f + 0.75f * range) * crest * crest;
}

struct Place {
    float i, j; // in values
    float misfit;
};

// How far the ground around is from the height of the square.
float misfitAt(const Heights &heights, float i, float j) {
    constexpr int step = 8, steps = static_cast<int>(squareRadius) / step; // to each side
    const auto heightAtStep = [&](int across, int down) {
        return heights.at(static_cast<unsigned int>(i + static_cast<float>(step * across)),
                          static_cast<unsigned int>(j + static_cast<float>(step * down)));
    };
    float sum = 0;
    int count = 0;
    for (int down = -steps; down <= steps; ++down)
        for (int across = -steps; across <= steps; ++across, ++count)
            sum += std::fabs(heightAtStep(across, down) - squareHeight);
    return sum / static_cast<float>(count);
}

// From the middle outwards in many directions: near the shore, on ground that is level already.
Place findSquare(const Heights &heights) {
    constexpr int directions = 96, step = 4;
    const float middle = static_cast<float>(heights.width - 1) / 2;
    const float farthest = middle - squareRadius - 2;
    Place best = {middle, middle, INFINITY};
    for (int k = 0; k < directions; ++k) {
        const float angle = 2 * std::numbers::pi_v<float> * static_cast<float>(k) / directions;
        for (int values = 0; static_cast<float>(values) < farthest; values += step) {
            const float way = static_cast<float>(values);
            Place place = {middle + way * std::cos(angle), middle + way * std::sin(angle), 0};
            place.misfit = misfitAt(heights, place.i, place.j);
            if (place.misfit < best.misfit)
                best = place;
        }
    }
    return best;
}

void levelSquare(Heights &heights, const Place &place) {
    for (unsigned int j = 0; j < heights.depth; ++j)
        for (unsigned int i = 0; i < heights.width; ++i) {
            const float distance =
                std::hypot(static_cast<float>(i) - place.i, static_cast<float>(j) - place.j);
            const float level = 1 - smoothStep(squareRadius, squareRadius + squareSlope, distance);
            heights.at(i, j) += (squareHeight - heights.at(i, j)) * level;
        }
}

} // namespace

Island makeIsland(unsigned int side, unsigned int seed) {
    const int own = static_cast<int>(seed * 5 + 1); // few octaves in common with the next seed
    Island island{Heights(side, side), {}};
    const float scale = 2.0f / static_cast<float>(side - 1);
    for (unsigned int j = 0; j < side; ++j)
        for (unsigned int i = 0; i < side; ++i)
            island.heights.at(i, j) =
                heightAt(static_cast<float>(i) * scale - 1, static_cast<float>(j) * scale - 1, own);
    const Place place = findSquare(island.heights);
    levelSquare(island.heights, place);
    island.square = {place.i, squareHeight, place.j, squareRadius};
    return island;
}

} // namespace ravolt::tool::terrain
