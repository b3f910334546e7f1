// Makes the island once more, as the terrain has it, and finds heights on it.

#include "examples/village/island.h"

#include <algorithm>
#include <cmath>

namespace village {

namespace {

constexpr unsigned int side = 513, number = 7; // as `ravolt terrain` has them
constexpr float drawnAbove = 2; // units, in which terrains are drawn over their heights

} // namespace

Island::Island() : island(ravolt::tool::terrain::makeIsland(side, number)) {}

float Island::heightAt(float x, float z) const {
    const auto &heights = island.heights;
    const float last = static_cast<float>(side) - 1.001f;
    const float i = std::clamp(x, 0.0f, last), j = std::clamp(z, 0.0f, last);
    const unsigned int left = static_cast<unsigned int>(i), up = static_cast<unsigned int>(j);
    const float right = i - static_cast<float>(left), down = j - static_cast<float>(up);
    const float above = heights.at(left, up) * (1 - right) + heights.at(left + 1, up) * right;
    const float below =
        heights.at(left, up + 1) * (1 - right) + heights.at(left + 1, up + 1) * right;
    return above * (1 - down) + below * down + drawnAbove;
}

float Island::slopeAt(float x, float z) const {
    return std::hypot(heightAt(x + 1, z) - heightAt(x - 1, z),
                      heightAt(x, z + 1) - heightAt(x, z - 1)) /
           2;
}

Point Island::square() const {
    return {island.square.x, island.square.y + drawnAbove, island.square.z};
}

Point Island::whereHeightIs(float height, float degrees) const {
    const Frame way = {square(), degrees};
    float distance = 0;
    Point at = square();
    while (distance < side && heightAt(at[0], at[2]) > height) {
        distance += 0.25f;
        at = way({0, 0, distance});
    }
    return {at[0], height, at[2]};
}

} // namespace village
