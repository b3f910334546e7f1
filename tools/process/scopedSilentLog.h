#pragma once

// Standard output, redirected to /dev/null.

namespace ravolt::tool {

// Redirects it and returns a descriptor of where it went before; -1 where that cannot be done.
int silenceOutput();

// Ends that; nothing for -1.
void restoreOutput(int former);

// During its lifetime nothing is written to standard output.
class ScopedSilentLog {
  public:
    ScopedSilentLog();
    ~ScopedSilentLog();
    ScopedSilentLog(const ScopedSilentLog &) = delete;
    ScopedSilentLog &operator=(const ScopedSilentLog &) = delete;

  private:
    int former;
};

} // namespace ravolt::tool
