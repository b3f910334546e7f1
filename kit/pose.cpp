// All in double precision: angles near 90 degrees about Y lose half of the digits on the way.

#include "kit/pose.h"

#include <cmath>

namespace ravolt::kit {

namespace {

constexpr double degree = 3.14159265358979323846 / 180;

double dot(const Quaternion &a, const Quaternion &b) {
    return a.x * b.x + a.y * b.y + a.z * b.z + a.w * b.w;
}

Quaternion product(const Quaternion &a, const Quaternion &b) {
    return {a.w * b.x + a.x * b.w + a.y * b.z - a.z * b.y,
            a.w * b.y - a.x * b.z + a.y * b.w + a.z * b.x,
            a.w * b.z + a.x * b.y - a.y * b.x + a.z * b.w,
            a.w * b.w - a.x * b.x - a.y * b.y - a.z * b.z};
}

Quaternion sum(const Quaternion &a, double s, const Quaternion &b, double t) {
    const Quaternion q = {a.x * s + b.x * t, a.y * s + b.y * t, a.z * s + b.z * t,
                          a.w * s + b.w * t};
    const double length = std::sqrt(dot(q, q));
    return {q.x / length, q.y / length, q.z / length, q.w / length};
}

} // namespace

Quaternion quaternionFromDegrees(const Z3MVECTOR3D &degrees) {
    const double x = static_cast<double>(degrees.x) * degree / 2,
                 y = static_cast<double>(degrees.y) * degree / 2,
                 z = static_cast<double>(degrees.z) * degree / 2;
    return product({std::sin(x), 0, 0, std::cos(x)},
                   product({0, std::sin(y), 0, std::cos(y)}, {0, 0, std::sin(z), std::cos(z)}));
}

Z3MVECTOR3D degreesFromQuaternion(const Quaternion &q) {
    // The matrix X * Y * Z, of which the first row and the last column have simple terms.
    const double m00 = 1 - 2 * (q.y * q.y + q.z * q.z), m01 = 2 * (q.x * q.y - q.z * q.w),
                 m02 = 2 * (q.x * q.z + q.y * q.w), m12 = 2 * (q.y * q.z - q.x * q.w),
                 m22 = 1 - 2 * (q.x * q.x + q.y * q.y);
    const double cosineOfY = std::hypot(m00, m01);
    // At 90 and -90 degrees only the sum or the difference of the other two angles counts.
    const bool locked = cosineOfY < 1e-9;
    const double m11 = 1 - 2 * (q.x * q.x + q.z * q.z), m21 = 2 * (q.y * q.z + q.x * q.w);
    const double x = locked ? std::atan2(m21, m11) : std::atan2(-m12, m22);
    const double z = locked ? 0 : std::atan2(-m01, m00);
    return Z3MVECTOR3D(x / degree, std::atan2(m02, cosineOfY) / degree, z / degree);
}

Quaternion slerp(const Quaternion &from, const Quaternion &to, double part) {
    const double cosine = dot(from, to), sign = cosine < 0 ? -1 : 1;
    const double angle = std::acos(std::fmin(1.0, cosine * sign));
    const double sine = std::sin(angle);
    if (sine < 1e-6) // so close that the chord is the arc
        return sum(from, 1 - part, to, sign * part);
    return sum(from, std::sin((1 - part) * angle) / sine, to, sign * std::sin(part * angle) / sine);
}

Rotation mix(const Rotation &from, const Rotation &to, double part) {
    if (part == 0)
        return from;
    if (part == 1)
        return to;
    return {slerp(from.quaternion, to.quaternion, part), {}, false};
}

double similarity(const Quaternion &a, const Quaternion &b) { return std::fabs(dot(a, b)); }

} // namespace ravolt::kit
