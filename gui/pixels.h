#pragma once

// Arithmetic with positions and sizes that an application may set to any number.

#include <algorithm>
#include <climits>

namespace ravolt {

// With a wider range than a position or a size, so that sums of them do not overflow.
using Pixels = long long;

inline int clampedToInt(Pixels value) {
    return static_cast<int>(std::clamp<Pixels>(value, INT_MIN, INT_MAX));
}

} // namespace ravolt
