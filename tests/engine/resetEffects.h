#pragma once

// All effects at once. Their switches, their numbers, the adapted luminance and the skybox are not
// reset by the engine: each fixture that changes them restores their defaults.

#include "tests/engine/adaptedLuminance.h"

namespace ravolt::test {

inline void allEffectsOn() {
    RAVOLT::bloomingOn();
    RAVOLT::HDROn();
    RAVOLT::DOFOn();
    RAVOLT::shadowingOn();
}

inline void resetEffects() {
    RAVOLT::setSkybox(nullptr);
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
