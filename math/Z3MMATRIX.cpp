// All arithmetic is in single precision. There are two conventions for the sense of rotation, each
// with its own conversions; see the header.

#include "ravolt/Z3MMATRIX.h"

#include <cmath>
#include <utility>

namespace {

constexpr float pi = 3.1415927410125732f;
constexpr float degreesPerRadian = 57.2957763671875f;

float toDegrees(float radians) { return radians / pi * 180.0f; }

} // namespace

void Z3MMATRIX::setRotation(float angle, float x, float y, float z) {
    const float radians = angle / 180.0f * pi;
    const float c = std::cos(radians), s = std::sin(radians), t = 1.0f - c;
    *this = Z3MMATRIX(x * x * t + c, z * s + x * y * t, x * z * t - y * s, 0.0f, //
                      x * y * t - z * s, y * y * t + c, x * s + y * z * t, 0.0f, //
                      y * s + x * z * t, y * z * t - x * s, z * z * t + c, 0.0f, //
                      0.0f, 0.0f, 0.0f, 1.0f);
}

void Z3MMATRIX::setRotationX(float angle) {
    const float radians = angle / degreesPerRadian;
    const float c = std::cos(radians), s = std::sin(radians);
    *this = Z3MMATRIX(1.0f, 0.0f, 0.0f, 0.0f, //
                      0.0f, c, s, 0.0f,       //
                      0.0f, -s, c, 0.0f,      //
                      1.0f, 0.0f, 0.0f, e[15]);
}

void Z3MMATRIX::setRotationY(float angle) {
    const float radians = angle / degreesPerRadian;
    const float c = std::cos(radians), s = std::sin(radians);
    *this = Z3MMATRIX(c, 0.0f, -s, 0.0f,      //
                      0.0f, 1.0f, 0.0f, 0.0f, //
                      s, 0.0f, c, 0.0f,       //
                      1.0f, 0.0f, 0.0f, e[15]);
}

void Z3MMATRIX::setRotationZ(float angle) {
    const float radians = angle / degreesPerRadian;
    const float c = std::cos(radians), s = std::sin(radians);
    *this = Z3MMATRIX(c, s, 0.0f, 0.0f,       //
                      -s, c, 0.0f, 0.0f,      //
                      0.0f, 0.0f, 1.0f, 0.0f, //
                      1.0f, 0.0f, 0.0f, e[15]);
}

void Z3MMATRIX::transpose() {
    for (int row = 0; row < 4; ++row)
        for (int column = row + 1; column < 4; ++column)
            std::swap(e[4 * row + column], e[4 * column + row]);
}

float Z3MMATRIX::determinant() const {
    return e[0] * (e[5] * e[10] - e[6] * e[9]) - e[1] * (e[4] * e[10] - e[6] * e[8]) +
           e[2] * (e[4] * e[9] - e[5] * e[8]);
}

Z3MMATRIX Z3MMATRIX::inverse() const {
    const float d = 1.0f / determinant();
    Z3MMATRIX result;
    float *const i = result.e;
    i[0] = (e[5] * e[10] - e[6] * e[9]) * d;
    i[1] = -(e[1] * e[10] - e[2] * e[9]) * d;
    i[2] = (e[1] * e[6] - e[2] * e[5]) * d;
    i[4] = -(e[4] * e[10] - e[6] * e[8]) * d;
    i[5] = (e[0] * e[10] - e[2] * e[8]) * d;
    i[6] = -(e[0] * e[6] - e[2] * e[4]) * d;
    i[8] = (e[4] * e[9] - e[5] * e[8]) * d;
    i[9] = -(e[0] * e[9] - e[1] * e[8]) * d;
    i[10] = (e[0] * e[5] - e[1] * e[4]) * d;
    i[12] = -(e[12] * i[0] + e[13] * i[4] + e[14] * i[8]);
    i[13] = -(e[12] * i[1] + e[13] * i[5] + e[14] * i[9]);
    i[14] = -(e[12] * i[2] + e[13] * i[6] + e[14] * i[10]);
    return result;
}

Z3MMATRIX Z3MMATRIX::fromQuaternion(Z3MVECTOR4D q) {
    const float x = q.x, y = q.y, z = q.z, w = q.w;
    return *this = Z3MMATRIX(1.0f - 2.0f * (y * y + z * z), 2.0f * (x * y - z * w),
                             2.0f * (x * z + y * w), 0.0f, 2.0f * (x * y + z * w),
                             1.0f - 2.0f * (x * x + z * z), 2.0f * (y * z - x * w), 0.0f,
                             2.0f * (x * z - y * w), 2.0f * (y * z + x * w),
                             1.0f - 2.0f * (x * x + y * y), 0.0f, 0.0f, 0.0f, 0.0f, 1.0f);
}

Z3MVECTOR4D Z3MMATRIX::toQuaterion() const {
    const float t = e[0] + e[5] + e[10] + 1.0f;
    if (t > 0.0f) {
        const float s = 0.5f / std::sqrt(t);
        return Z3MVECTOR4D((e[9] - e[6]) * s, (e[2] - e[8]) * s, (e[4] - e[1]) * s, 0.25f / s);
    }
    // On purpose: the signs of w in the first and the last of these give the conjugate rotation.
    if (e[0] > e[5] && e[0] > e[10]) {
        const float s = 2.0f * std::sqrt(e[0] + 1.0f - e[5] - e[10]);
        return Z3MVECTOR4D(0.25f * s, (e[1] + e[4]) / s, (e[2] + e[8]) / s, (e[6] - e[9]) / s);
    }
    if (e[5] > e[10]) {
        const float s = 2.0f * std::sqrt(e[5] + 1.0f - e[0] - e[10]);
        return Z3MVECTOR4D((e[1] + e[4]) / s, 0.25f * s, (e[6] + e[9]) / s, (e[2] - e[8]) / s);
    }
    const float s = 2.0f * std::sqrt(e[10] + 1.0f - e[0] - e[5]);
    return Z3MVECTOR4D((e[2] + e[8]) / s, (e[6] + e[9]) / s, 0.25f * s, (e[1] - e[4]) / s);
}

Z3MVECTOR4D Z3MMATRIX::toQuaternionAlt() const {
    const float trace = e[0] + e[5] + e[10];
    if (trace > 0.0f) {
        const float root = std::sqrt(trace + 1.0f), r = 0.5f / root;
        return Z3MVECTOR4D((e[6] - e[9]) * r, (e[8] - e[2]) * r, (e[1] - e[4]) * r, root / 2.0f);
    }
    const auto m = [this](int row, int column) { return e[4 * row + column]; };
    int i = e[0] < e[5] ? 1 : 0;
    if (m(i, i) < e[10])
        i = 2;
    const int j = (i + 1) % 3, k = (j + 1) % 3;
    float r = std::sqrt(m(i, i) - (m(j, j) + m(k, k)) + 1.0f);
    Z3MVECTOR4D q;
    q[i] = r / 2.0f;
    if (r != 0.0f)
        r = 0.5f / r;
    q.w = (m(j, k) - m(k, j)) * r;
    q[j] = (m(i, j) + m(j, i)) * r;
    q[k] = (m(i, k) + m(k, i)) * r;
    return q;
}

Z3MVECTOR3D Z3MMATRIX::toEuler() const {
    constexpr float pole = 0.998f;
    if (e[4] > pole)
        return Z3MVECTOR3D(toDegrees(std::atan2(e[2], e[10])), 90.0f, 0.0f);
    if (e[4] < -pole)
        return Z3MVECTOR3D(toDegrees(std::atan2(e[2], e[10])), -90.0f, 0.0f);
    return Z3MVECTOR3D(toDegrees(std::atan2(-e[8], e[0])), toDegrees(std::atan2(-e[6], e[5])),
                       toDegrees(std::asin(e[4])));
}
