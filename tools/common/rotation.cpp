#include "tools/common/rotation.h"

#include <cmath>
#include <numbers>

namespace ravolt::tool {

namespace {

constexpr double degree = std::numbers::pi / 180;

} // namespace

Matrix rotationFromDegrees(const Vector &degrees) {
    const double sx = std::sin(degrees.x * degree), cx = std::cos(degrees.x * degree);
    const double sy = std::sin(degrees.y * degree), cy = std::cos(degrees.y * degree);
    const double sz = std::sin(degrees.z * degree), cz = std::cos(degrees.z * degree);
    const Matrix x(1, 0, 0, 0, cx, -sx, 0, sx, cx);
    const Matrix y(cy, 0, sy, 0, 1, 0, -sy, 0, cy);
    const Matrix z(cz, -sz, 0, sz, cz, 0, 0, 0, 1);
    return x * y * z;
}

Vector degreesFromRotation(const Matrix &r) {
    const double cosineOfY = std::hypot(r[0][0], r[0][1]);
    // At +-90 degrees only the sum or the difference of the other two angles counts.
    const bool locked = cosineOfY < 1e-9;
    const double x = locked ? std::atan2(r[2][1], r[1][1]) : std::atan2(-r[1][2], r[2][2]);
    const double y = std::atan2(r[0][2], cosineOfY);
    const double z = locked ? 0 : std::atan2(-r[0][1], r[0][0]);
    return Vector{x, y, z} * (1 / degree);
}

} // namespace ravolt::tool
