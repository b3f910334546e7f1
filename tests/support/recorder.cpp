#include "tests/support/recorder.h"

#include "tests/support/clock.h"
#include "tests/support/heap.h"

namespace ravolt::test {

Recorder &Recorder::instance() {
    static Recorder recorder;
    return recorder;
}

void Recorder::reset() {
    CallRecorder::reset();
    ownClock = {};
    allocationsWork();
}

void Recorder::failAllocation(std::size_t bytes, unsigned int after, unsigned int times) {
    heap.failFrom = bytes ? bytes : 1;
    heap.failure = {after, times};
}

void Recorder::allocationsWork() { heap.failFrom = 0; }

unsigned long Recorder::allocations() const {
    return heap.allocations.load(std::memory_order_relaxed);
}

} // namespace ravolt::test
