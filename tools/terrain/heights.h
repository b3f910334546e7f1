#pragma once

// A grid of heights. Column i goes along +X (east on a map), row j along +Z (south).

#include <cstddef>
#include <vector>

namespace ravolt::tool::terrain {

struct Heights {
    unsigned int width = 0; // values along X
    unsigned int depth = 0; // values along Z
    std::vector<float> values;

    Heights() = default;
    Heights(unsigned int alongX, unsigned int alongZ)
        : width(alongX), depth(alongZ), values(std::size_t(alongX) * alongZ) {}

    float &at(unsigned int i, unsigned int j) { return values[std::size_t(j) * width + i]; }
    float at(unsigned int i, unsigned int j) const { return values[std::size_t(j) * width + i]; }
};

// The same ground at another number of values, from corner to corner: cubic where they get more,
// averaged where they get fewer. All sizes are at least 2.
Heights resampled(Heights heights, unsigned int width, unsigned int depth);

// Rounds off the terraces of values that were stored in steps of 1: each remains within half a step
// of what it was.
void smoothSteps(Heights &heights);

// What share of the values lies below it, 0 to 1: the value at that place of their order.
float quantile(const Heights &heights, double share);

} // namespace ravolt::tool::terrain
