#pragma once

// A progress bar on the terminal for longer work. It writes to standard error, only if that is a
// terminal, and is erased when the work is done.

#include <chrono>
#include <string>

namespace ravolt::tool {

class Progress {
  public:
    // `enabled` false draws nothing.
    explicit Progress(bool enabled);
    ~Progress();
    Progress(const Progress &) = delete;
    Progress &operator=(const Progress &) = delete;

    // Names the step that begins, and the part of the whole, 0 to 1, that it spans.
    void step(const std::string &name, double from, double to);

    // The completed part of the step, 0 to 1.
    void update(double part);

  private:
    using Clock = std::chrono::steady_clock;

    bool shown;
    bool drawn = false;
    int lastPercent = -1;
    double start = 0, end = 0;
    std::string label;
    Clock::time_point created = Clock::now();
};

} // namespace ravolt::tool
