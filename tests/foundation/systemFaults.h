#pragma once

// Lies of the system, told to the library under test. The test program is linked so that malloc,
// fread, clock_gettime and open come here first; without an order they pass on.

#include <cstddef>
#include <cstdint>
#include <optional>

namespace ravolt::test {

struct SystemFaults {
    std::optional<std::size_t> failMallocOf;  // malloc of this many bytes gives NULL
    bool shortRead = false;                   // fread reads one byte less than was asked for
    std::optional<std::int64_t> counter;      // the monotonic clock in nanoseconds
    std::optional<std::int64_t> realTime;     // the clock of the day, nanoseconds since 1970
    std::optional<std::uint64_t> memoryInUse; // of the whole machine, in bytes; whole kilobytes
    bool memoryUnknown = false;               // the system does not say
};
extern SystemFaults systemFaults;

} // namespace ravolt::test
