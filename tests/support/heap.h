#pragma once

// The simulated failures of the heap, and the number of the program's allocations. The linker wraps
// the heap's functions (--wrap) for the program's own code alone. They run before main and before
// any static object is constructed: what they use is initialised at compile time.

#include "testing/recorderState.h"

#include <atomic>
#include <cstddef>

namespace ravolt::test {

struct Heap {
    std::size_t failFrom = 0; // 0: no failures
    SimulatedFailure failure;
    std::atomic<unsigned long> allocations{0};
    unsigned int failedMallocs = 0; // calls of malloc alone

    bool fails(std::size_t bytes) {
        allocations.fetch_add(1, std::memory_order_relaxed);
        return failFrom && bytes >= failFrom && !ScopedUnrecorded::isActive() && failure.occurs();
    }
};
extern constinit Heap heap;

} // namespace ravolt::test
