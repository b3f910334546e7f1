#pragma once

// While one lives, nothing reaches standard output.

namespace ravolt::tool {

class ScopedSilentLog {
  public:
    ScopedSilentLog();
    ~ScopedSilentLog();
    ScopedSilentLog(const ScopedSilentLog &) = delete;
    ScopedSilentLog &operator=(const ScopedSilentLog &) = delete;

  private:
    int output = -1; // where it went; -1 when it could not be turned aside
};

} // namespace ravolt::tool
