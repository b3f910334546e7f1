#pragma once

// What the log does to the other services as it opens and closes, and the figures that it reports.

#include <cstdint>

namespace ravolt {

// Totals since the library was loaded, which are never reset, and the peak.
struct MemoryFigures {
    std::uint32_t allocations;    // calls of zlfMalloc
    std::uint32_t releases;       // calls of zlfFree
    std::uint32_t bytesRequested; // sum of all sizes given to zlfMalloc
    std::uint32_t
        peakPhysical; // highest memory use of the whole machine since restartPeak, in bytes
};
MemoryFigures memoryFigures();

// Sets the peak to the present memory use of the machine.
void restartPeak();

void createIdTable();
void releaseIdTable();
void markAllTimersFree();

} // namespace ravolt
