#include "tests/support/clock.h"

#include "foundation/platform.h"
#include "tests/support/recorder.h"

namespace ravolt::test {
Clock ownClock;
}

using ravolt::test::ownClock;

extern "C" {

// ravolt::platform::counter
std::int64_t __real__ZN6ravolt8platform7counterEv();
std::int64_t __wrap__ZN6ravolt8platform7counterEv() {
    return ownClock.stopped ? ownClock.count : __real__ZN6ravolt8platform7counterEv();
}
}

namespace ravolt::test {

void Recorder::stopClock() { ownClock = {true, __real__ZN6ravolt8platform7counterEv()}; }

void Recorder::advanceClock(double seconds) {
    const auto frequency = static_cast<double>(platform::counterFrequency());
    ownClock.count += static_cast<std::int64_t>(seconds * frequency);
}

} // namespace ravolt::test
