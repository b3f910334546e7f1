// The counters cover the whole life of the process and wrap at 32 bits. The sizes of blocks are not
// stored, so the number of bytes in use is unknown.

#include "foundation/platform.h"
#include "foundation/services.h"
#include "ravolt/zlf.h"

#include <algorithm>
#include <cstdlib>

namespace {

constinit ravolt::MemoryFigures figures{};

} // namespace

namespace ravolt {

MemoryFigures memoryFigures() { return figures; }

void restartPeak() { figures.peakPhysical = platform::physicalMemoryInUse(); }

} // namespace ravolt

void *zlfMalloc(std::size_t bytes) {
    ++figures.allocations;
    figures.bytesRequested += static_cast<std::uint32_t>(bytes);
    void *block = std::malloc(bytes);
    figures.peakPhysical = std::max(figures.peakPhysical, ravolt::platform::physicalMemoryInUse());
    return block;
}

void zlfFree(void *block) {
    // On purpose: NULL counts as a release too.
    ++figures.releases;
    std::free(block);
}
