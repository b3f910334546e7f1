// Fills missing heights by the nearest known values in their row and column, weighted by
// distance.

#include "tools/terrain/voids.h"

#include <algorithm>

namespace ravolt::tool::terrain {

namespace {

class Filler {
  public:
    Filler(Heights &target, std::vector<bool> &areKnown)
        : heights(target), known(areKnown), sums(known.size()), weights(known.size()) {}

    // False when nothing was missing. What has no known value in its row and column remains
    // missing.
    bool fill();

  private:
    // `count` values from `start` on, one every `step`.
    void scan(std::ptrdiff_t start, std::ptrdiff_t step, unsigned int count);

    Heights &heights;
    std::vector<bool> &known;
    std::vector<float> sums, weights;
};

void Filler::scan(std::ptrdiff_t start, std::ptrdiff_t step, unsigned int count) {
    std::ptrdiff_t last = -1;
    float distance = 0;
    for (std::ptrdiff_t place = start; count > 0; --count, place += step) {
        const auto i = static_cast<std::size_t>(place);
        ++distance;
        if (known[i]) {
            last = place;
            distance = 0;
        } else if (last >= 0) {
            sums[i] += heights.values[static_cast<std::size_t>(last)] / distance;
            weights[i] += 1 / distance;
        }
    }
}

bool Filler::fill() {
    if (std::find(known.begin(), known.end(), false) == known.end())
        return false;
    std::fill(sums.begin(), sums.end(), 0.0f);
    std::fill(weights.begin(), weights.end(), 0.0f);
    const std::ptrdiff_t width = heights.width, depth = heights.depth;
    for (std::ptrdiff_t j = 0; j < depth; ++j) {
        scan(j * width, 1, heights.width);
        scan(j * width + width - 1, -1, heights.width);
    }
    for (std::ptrdiff_t i = 0; i < width; ++i) {
        scan(i, width, heights.depth);
        scan((depth - 1) * width + i, -width, heights.depth);
    }
    for (std::size_t i = 0; i < known.size(); ++i)
        if (!known[i] && weights[i] > 0) {
            heights.values[i] = sums[i] / weights[i];
            known[i] = true;
        }
    return true;
}

} // namespace

void fillVoids(Heights &heights, std::vector<bool> known) {
    Filler filler(heights, known);
    while (filler.fill()) {
    }
}

} // namespace ravolt::tool::terrain
