#pragma once

// From the tool's vectors to the engine's and back, and angles.

#include "tools/common/algebra.h"

#include <numbers>
#include <ravolt/Z3MVECTOR3D.h>

namespace ravolt::tool {

constexpr double degree = std::numbers::pi / 180; // in radians

inline Vector vectorFrom(const Z3MVECTOR3D &v) { return {v.x, v.y, v.z}; }

inline Z3MVECTOR3D floats(const Vector &v) {
    return Z3MVECTOR3D(static_cast<float>(v.x), static_cast<float>(v.y), static_cast<float>(v.z));
}

} // namespace ravolt::tool
