// Draws the progress bar on the terminal, and erases it.

#include "tools/common/progress.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <unistd.h>

namespace ravolt::tool {

namespace {

constexpr int barWidth = 30;
constexpr std::chrono::milliseconds delay(500); // shorter work shows no bar

} // namespace

Progress::Progress(bool enabled) : shown(enabled && isatty(STDERR_FILENO)) {}

Progress::~Progress() {
    if (drawn)
        std::fputs("\r\033[K", stderr);
}

void Progress::step(const std::string &name, double from, double to) {
    label = name;
    start = from;
    end = to;
    lastPercent = -1;
    update(0);
}

void Progress::update(double part) {
    if (!shown || !std::isfinite(part) || Clock::now() - created < delay)
        return;
    const double whole = start + (end - start) * std::clamp(part, 0.0, 1.0);
    const int percent = static_cast<int>(whole * 100);
    if (percent == lastPercent)
        return;
    lastPercent = percent;
    const int filled = percent * barWidth / 100;
    std::fprintf(stderr, "\r\033[K[%s%s] %3d%%  %s", std::string(filled, '#').c_str(),
                 std::string(barWidth - filled, ' ').c_str(), percent, label.c_str());
    std::fflush(stderr);
    drawn = true;
}

} // namespace ravolt::tool
