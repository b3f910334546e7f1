// Resamples, smooths and measures grids of heights.

#include "tools/terrain/heights.h"

#include <algorithm>
#include <cmath>

namespace ravolt::tool::terrain {

namespace {

// The values that make one value of a resampled line.
struct Taps {
    unsigned int first = 0;
    std::vector<float> weights; // sum 1
};

float catmullRom(float distance) {
    const float x = std::fabs(distance);
    if (x < 1)
        return 1.5f * x * x * x - 2.5f * x * x + 1;
    return x < 2 ? -0.5f * x * x * x + 2.5f * x * x - 4 * x + 2 : 0;
}

float tent(float distance) { return std::max(0.0f, 1 - std::fabs(distance)); }

// Beyond its ends the line continues as its mirror image in the last value, upside down, so that
// slopes continue.
void addTap(Taps &taps, int i, int last, float weight) {
    const auto at = [&](int place) -> float & {
        return taps.weights[static_cast<unsigned int>(std::clamp(place, 0, last)) - taps.first];
    };
    const int end = std::clamp(i, 0, last);
    if (i == end) {
        at(i) += weight;
    } else {
        at(end) += 2 * weight;
        at(2 * end - i) -= weight;
    }
}

Taps tapsAt(double center, double step, unsigned int count) {
    const bool finer = step <= 1;
    const double reach = finer ? 2 : step;
    const int last = static_cast<int>(count) - 1;
    const int from = static_cast<int>(std::ceil(center - reach));
    const int to = static_cast<int>(std::floor(center + reach));
    Taps taps;
    taps.first = static_cast<unsigned int>(std::clamp(from, 0, last));
    taps.weights.resize(static_cast<std::size_t>(std::clamp(to, 0, last)) - taps.first + 1);
    float sum = 0;
    for (int i = from; i <= to; ++i) {
        const float weight = finer ? catmullRom(static_cast<float>(i - center))
                                   : tent(static_cast<float>((i - center) / step));
        addTap(taps, i, last, weight);
        sum += weight;
    }
    for (float &weight : taps.weights)
        weight /= sum;
    return taps;
}

std::vector<Taps> tapsOf(unsigned int from, unsigned int to) {
    const double step = (from - 1.0) / (to - 1.0);
    std::vector<Taps> taps(to);
    for (unsigned int k = 0; k < to; ++k)
        taps[k] = tapsAt(k * step, step, from);
    return taps;
}

Heights resampledAlongX(const Heights &heights, unsigned int width) {
    const std::vector<Taps> taps = tapsOf(heights.width, width);
    Heights result(width, heights.depth);
    for (unsigned int j = 0; j < heights.depth; ++j)
        for (unsigned int i = 0; i < width; ++i) {
            float sum = 0;
            for (std::size_t k = 0; k < taps[i].weights.size(); ++k)
                sum += taps[i].weights[k] *
                       heights.at(taps[i].first + static_cast<unsigned int>(k), j);
            result.at(i, j) = sum;
        }
    return result;
}

Heights resampledAlongZ(const Heights &heights, unsigned int depth) {
    const std::vector<Taps> taps = tapsOf(heights.depth, depth);
    Heights result(heights.width, depth);
    for (unsigned int j = 0; j < depth; ++j)
        for (std::size_t k = 0; k < taps[j].weights.size(); ++k)
            for (unsigned int i = 0; i < heights.width; ++i)
                result.at(i, j) += taps[j].weights[k] *
                                   heights.at(i, taps[j].first + static_cast<unsigned int>(k));
    return result;
}

} // namespace

Heights resampled(Heights heights, unsigned int width, unsigned int depth) {
    if (heights.width != width)
        heights = resampledAlongX(heights, width);
    if (heights.depth != depth)
        heights = resampledAlongZ(heights, depth);
    return heights;
}

void smoothSteps(Heights &heights) {
    constexpr int rounds = 24;
    constexpr float halfStep = 0.5f;
    const Heights stored = heights;
    Heights before;
    for (int round = 0; round < rounds; ++round) {
        before = heights;
        for (unsigned int j = 0; j < heights.depth; ++j)
            for (unsigned int i = 0; i < heights.width; ++i) {
                const unsigned int left = i ? i - 1 : 0, up = j ? j - 1 : 0;
                const unsigned int right = std::min(i + 1, heights.width - 1);
                const unsigned int down = std::min(j + 1, heights.depth - 1);
                const float mean = (before.at(left, j) + before.at(right, j) + before.at(i, up) +
                                    before.at(i, down) + 4 * before.at(i, j)) /
                                   8;
                heights.at(i, j) =
                    std::clamp(mean, stored.at(i, j) - halfStep, stored.at(i, j) + halfStep);
            }
    }
}

float quantile(const Heights &heights, double share) {
    std::vector<float> sample; // of a grid that is large enough for a share
    const std::size_t step = std::max<std::size_t>(1, heights.values.size() / 65536);
    for (std::size_t i = 0; i < heights.values.size(); i += step)
        sample.push_back(heights.values[i]);
    const auto place = sample.begin() +
                       static_cast<std::ptrdiff_t>(share * static_cast<double>(sample.size() - 1));
    std::nth_element(sample.begin(), place, sample.end());
    return *place;
}

} // namespace ravolt::tool::terrain
