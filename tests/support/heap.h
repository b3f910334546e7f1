#pragma once

// The lies about the heap, and the count of what the program allocates. The heap's functions are
// wrapped by the linker (--wrap), so that only the program's own code meets them. They run before
// main and before any static object is built: what they use is initialised at compile time.

#include "tests/support/recorderState.h"

#include <atomic>
#include <cstddef>

namespace ravolt::test {

struct Heap {
    std::size_t failFrom = 0; // 0: no failures
    Refusal refusal;
    std::atomic<unsigned long> allocations{0};
    unsigned int refusedBlocks = 0; // calls of malloc alone

    bool refuses(std::size_t bytes) {
        allocations.fetch_add(1, std::memory_order_relaxed);
        return failFrom && bytes >= failFrom && !Inside::isTrue() && refusal.takes();
    }
};
extern constinit Heap heap;

} // namespace ravolt::test
