#pragma once

// The luminance that the eye has adapted to, which no accessor of RAVOLT hands out.

#include "ravolt/RAVOLT.h"
#include "tests/engine/openGLAccess.h"

namespace ravolt::test {

struct AdaptedLuminance {
    using Type = float *;
    friend Type reach(AdaptedLuminance);
};
template struct Opened<AdaptedLuminance, &RAVOLT::HDRCurrentLuminance>;

inline float &adaptedLuminance() { return *reach(AdaptedLuminance()); }

} // namespace ravolt::test
