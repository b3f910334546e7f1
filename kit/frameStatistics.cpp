// Times are sorted only when a number is asked for: some hundred of them, once in a frame.

#include "ravolt/kit/frameStatistics.h"

#include "ravolt/kit/overlay.h"

#include <SDL/SDL.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <numeric>

namespace ravolt::kit {

static_assert(SDLK_F3 == 284, "the default key in the header");

FrameStatistics::FrameStatistics(std::size_t newCapacity, int newKey)
    : capacity(std::max<std::size_t>(newCapacity, 1)), key(newKey) {}

void FrameStatistics::add(float seconds) {
    if (!std::isfinite(seconds) || seconds <= 0)
        return;
    if (times.size() < capacity) {
        times.push_back(seconds);
        return;
    }
    times[oldest] = seconds;
    oldest = (oldest + 1) % capacity;
}

void FrameStatistics::clear() {
    times.clear();
    oldest = 0;
}

float FrameStatistics::getMean() const {
    if (times.empty())
        return 0;
    const double sum = std::accumulate(times.begin(), times.end(), 0.0);
    return static_cast<float>(sum / static_cast<double>(times.size()));
}

// Of an even number of frames the mean of the two in the middle.
float FrameStatistics::getMedian() const {
    if (times.empty())
        return 0;
    std::vector<float> sorted = times;
    std::sort(sorted.begin(), sorted.end());
    const std::size_t half = sorted.size() / 2;
    return sorted.size() % 2 ? sorted[half] : (sorted[half - 1] + sorted[half]) / 2;
}

float FrameStatistics::getPercentile(float percent) const {
    if (times.empty())
        return 0;
    std::vector<float> sorted = times;
    std::sort(sorted.begin(), sorted.end());
    const double part = percent > 0 ? std::min(static_cast<double>(percent), 100.0) : 0;
    const double rank = std::ceil(part * static_cast<double>(sorted.size()) / 100);
    return sorted[rank < 1 ? 0 : static_cast<std::size_t>(rank) - 1];
}

float FrameStatistics::getRate() const { return times.empty() ? 0 : 1 / getMean(); }

std::string FrameStatistics::getText() const {
    const auto milliseconds = [](float seconds) { return static_cast<double>(seconds) * 1000; };
    char text[160];
    std::snprintf(text, sizeof text, "%.1f frames/s\nmean %.2f  median %.2f  99%% %.2f ms",
                  static_cast<double>(getRate()), milliseconds(getMean()),
                  milliseconds(getMedian()), milliseconds(getPercentile(99)));
    return text;
}

bool FrameStatistics::handle(const SDL_Event &event) {
    if (event.type != SDL_KEYDOWN || event.key.keysym.sym != key)
        return false;
    isVisible = !isVisible;
    return true;
}

bool FrameStatistics::draw(Overlay &overlay, int x, int y) const {
    return isVisible && overlay.text(x, y, getText());
}

} // namespace ravolt::kit
