#pragma once

// Faults of the system's clock, memory, its figures, and files. The test program is linked so that
// the functions of systemFaults.cpp are called instead of the real ones, which they call without a
// fault.

#include <cstdint>
#include <optional>
#include <string>

namespace ravolt::test {

struct SystemFaults {
    std::optional<std::int64_t> realTime;     // the clock of the day, nanoseconds since 1970
    std::optional<std::uint64_t> memoryInUse; // of the whole machine, in bytes; whole kilobytes
    bool memoryUnknown = false;               // the system has no figures
    bool adviceRefused = false;               // the system takes no pages back
    std::optional<std::string> memoryFigures; // the text that has them
    bool failUnlink = false;                  // files cannot be removed
    std::optional<unsigned int> failSeek;     // the call of fseek that fails, 0 for the next one
    bool failTell = false;                    // ftell fails
    bool failStream = false;                  // there is no memory for streams
};
extern SystemFaults systemFaults;

} // namespace ravolt::test
