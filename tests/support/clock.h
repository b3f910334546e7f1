#pragma once

// The simulated clock, which only a test advances. The linker wraps the library's own counter
// (--wrap).

#include <cstdint>

namespace ravolt::test {

struct Clock {
    bool stopped = false;
    std::int64_t count = 0; // while it is stopped
};
extern Clock ownClock;

} // namespace ravolt::test
