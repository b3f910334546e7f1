#pragma once

// What the log does to the other services as it opens and closes, and the figures that it reports.

#include <cstdint>

namespace ravolt {

// All of the program since it was loaded; they are never reset.
struct MemoryFigures {
    std::uint32_t allocations;    // calls of zlfMalloc
    std::uint32_t releases;       // calls of zlfFree
    std::uint32_t bytesRequested; // sum of all sizes given to zlfMalloc
    std::uint32_t peakPhysical;   // highest memory use of the whole machine seen, in bytes
};
MemoryFigures memoryFigures();

// Makes the present memory use of the machine the peak.
void restartPeak();

void createIdTable();
void releaseIdTable();
void markAllTimersFree();

} // namespace ravolt
