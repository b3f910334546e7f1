#pragma once

// A progress bar on the terminal for work that takes longer than a moment. It writes to standard
// error, only when that is a terminal, and takes itself away when the work is done.

#include <chrono>
#include <string>

namespace ravolt::tool {

class Progress {
  public:
    // `wanted` false keeps it silent.
    explicit Progress(bool wanted);
    ~Progress();
    Progress(const Progress &) = delete;
    Progress &operator=(const Progress &) = delete;

    // Names the step that begins, and the part of the whole, 0 to 1, that it spans.
    void step(const std::string &name, double from, double to);

    // How far the step has come, 0 to 1.
    void update(double part);

  private:
    using Clock = std::chrono::steady_clock;

    bool shown;
    bool drawn = false;
    int lastPercent = -1;
    double start = 0, end = 0;
    std::string label;
    Clock::time_point born = Clock::now();
};

} // namespace ravolt::tool
