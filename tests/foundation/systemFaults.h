#pragma once

// Faults of the system's clock, memory and memory figures. The test program is linked so that
// clock_gettime, open and madvise are called here first; without a fault they call the real ones.

#include <cstdint>
#include <optional>

namespace ravolt::test {

struct SystemFaults {
    std::optional<std::int64_t> realTime;     // the clock of the day, nanoseconds since 1970
    std::optional<std::uint64_t> memoryInUse; // of the whole machine, in bytes; whole kilobytes
    bool memoryUnknown = false;               // the system has no figures
    bool adviceRefused = false;               // the system takes no pages back
};
extern SystemFaults systemFaults;

} // namespace ravolt::test
