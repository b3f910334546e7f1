#pragma once

// The lie about the clock: a clock that stands still, but for what a test lets pass. The library's
// own counter is wrapped by the linker (--wrap).

#include <cstdint>

namespace ravolt::test {

struct Clock {
    bool stopped = false;
    std::int64_t count = 0; // while it is stopped
};
extern Clock ownClock;

} // namespace ravolt::test
