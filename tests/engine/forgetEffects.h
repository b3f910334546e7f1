#pragma once

// The wishes for effects, their numbers and what the eye has adapted to outlive the engine: each
// fixture that touches them puts them back to what they are at first.

#include "tests/engine/adaptedLuminance.h"

namespace ravolt::test {

inline void forgetEffects() {
    RAVOLT::bloomingOff();
    RAVOLT::HDROff();
    RAVOLT::DOFOff();
    RAVOLT::shadowingOff();
    RAVOLT::setBloomingIntensity(1);
    RAVOLT::setHDRExposure(1);
    RAVOLT::setDOFFocus(1);
    RAVOLT::setDOFRange(2);
    RAVOLT::setShadowOffset(0, 0);
    adaptedLuminance() = 1;
}

} // namespace ravolt::test
