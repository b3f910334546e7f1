// A timer with a rate of 0 is free. Its other fields are then stale.

#include "foundation/platform.h"
#include "foundation/services.h"
#include "ravolt/zlf.h"

#include <algorithm>
#include <iterator>

namespace {

constexpr int timerCount = 8;

constinit zlfTIMER timers[timerCount]{};

// NULL for an index outside the table and for a free timer.
zlfTIMER *inUse(int timer) {
    const bool valid = timer >= 0 && timer < timerCount && timers[timer].rate != 0.0f;
    return valid ? &timers[timer] : nullptr;
}

} // namespace

void ravolt::markAllTimersFree() {
    for (zlfTIMER &timer : timers)
        timer.rate = 0.0f;
}

int zlfNewTimer(float rate) {
    zlfTIMER *timer = std::find_if(std::begin(timers), std::end(timers),
                                   [](const zlfTIMER &each) { return each.rate == 0.0f; });
    if (timer == std::end(timers)) {
        zlfLog("zlfNewTimer: no more timers\n");
        return -1;
    }
    timer->rate = rate;
    timer->last = ravolt::platform::counter();
    timer->frequency = ravolt::platform::counterFrequency();
    return static_cast<int>(timer - timers);
}

void zlfFreeTimer(int timer) {
    if (zlfTIMER *found = inUse(timer))
        found->rate = 0.0f;
    else
        zlfLog("zlfFreeTimer: wrong params\n");
}

bool zlfAdjournTimer(int timer) {
    zlfTIMER *found = inUse(timer);
    if (!found) {
        zlfLog("zlfAdjournTimer: wrong params\n");
        return false;
    }
    found->current = ravolt::platform::counter();
    const double ticks = static_cast<double>(found->current - found->last);
    const double ticksPerUnit = static_cast<double>(found->frequency) / found->rate;
    found->factor = static_cast<float>(ticks / ticksPerUnit);
    if (found->factor <= 0.0f) // no division by zero below
        found->factor = 1.0f;
    found->fps = found->rate / found->factor;
    found->last = found->current;
    return true;
}

float zlfGetTimerFactor(int timer) {
    if (const zlfTIMER *found = inUse(timer))
        return found->factor;
    zlfLog("zlfGetTimerFactor: wrong params\n");
    return -1.0f;
}

float zlfGetTimerFps(int timer) {
    if (const zlfTIMER *found = inUse(timer))
        return found->fps;
    zlfLog("zlfGetTimerFps: wrong params\n");
    return -1.0f;
}
