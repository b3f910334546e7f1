#pragma once

// The adapted luminance, for which RAVOLT has no getter.

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
