#pragma once

// Vectors and matrices in double precision, for the references that the programs are compared with.
// One type serves vectors of two, three and four components: what is not used stays 0.

#include <algorithm>
#include <array>
#include <cmath>

namespace ravolt::test {

struct Vec {
    double x = 0, y = 0, z = 0, w = 0;

    friend Vec operator+(Vec a, Vec b) { return {a.x + b.x, a.y + b.y, a.z + b.z, a.w + b.w}; }
    friend Vec operator-(Vec a, Vec b) { return {a.x - b.x, a.y - b.y, a.z - b.z, a.w - b.w}; }
    friend Vec operator*(Vec a, Vec b) { return {a.x * b.x, a.y * b.y, a.z * b.z, a.w * b.w}; }
    friend Vec operator*(Vec a, double s) { return {a.x * s, a.y * s, a.z * s, a.w * s}; }
    friend Vec operator*(double s, Vec a) { return a * s; }
    friend Vec operator-(Vec a) { return a * -1.0; }
    Vec &operator+=(Vec b) { return *this = *this + b; }
};

inline Vec xyz(Vec a) { return {a.x, a.y, a.z, 0}; }
inline Vec withW(Vec a, double w) { return {a.x, a.y, a.z, w}; }
inline double dot(Vec a, Vec b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
inline double length(Vec a) { return std::sqrt(dot(a, a)); }
inline Vec normalize(Vec a) { return xyz(a) * (1 / length(a)); }
inline Vec cross(Vec a, Vec b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x, 0};
}
inline double radians(double degrees) { return degrees * 3.14159265358979323846 / 180; }

using Matrix = std::array<Vec, 4>; // columns, as in OpenGL

inline constexpr Matrix identity = {Vec{1, 0, 0, 0}, Vec{0, 1, 0, 0}, Vec{0, 0, 1, 0},
                                    Vec{0, 0, 0, 1}};

inline Vec operator*(const Matrix &m, Vec v) {
    return m[0] * v.x + m[1] * v.y + m[2] * v.z + m[3] * v.w;
}
inline Matrix operator*(const Matrix &a, const Matrix &b) {
    return {a * b[0], a * b[1], a * b[2], a * b[3]};
}
inline Matrix operator*(const Matrix &m, double s) {
    return {m[0] * s, m[1] * s, m[2] * s, m[3] * s};
}
inline Matrix operator+(const Matrix &a, const Matrix &b) {
    return {a[0] + b[0], a[1] + b[1], a[2] + b[2], a[3] + b[3]};
}
// A row vector times the matrix.
inline Vec operator*(Vec v, const Matrix &m) {
    return {dot(v, m[0]), dot(v, m[1]), dot(v, m[2]), 0};
}

// The inverse of the upper three by three, transposed; a normal has w = 0.
inline Matrix normalMatrix(const Matrix &m) {
    const double s = 1 / dot(m[0], cross(m[1], m[2]));
    return {cross(m[1], m[2]) * s, cross(m[2], m[0]) * s, cross(m[0], m[1]) * s, Vec{}};
}

// Of a matrix whose last row is 0, 0, 0, 1.
inline Matrix affineInverse(const Matrix &m) {
    const Matrix rows = normalMatrix(m); // its columns are the rows of the inverse
    Matrix inverse = {Vec{rows[0].x, rows[1].x, rows[2].x, 0},
                      Vec{rows[0].y, rows[1].y, rows[2].y, 0},
                      Vec{rows[0].z, rows[1].z, rows[2].z, 0}, Vec{}};
    inverse[3] = withW(-(inverse * xyz(m[3])), 1);
    return inverse;
}

inline Matrix translation(double x, double y, double z) {
    Matrix m = identity;
    m[3] = {x, y, z, 1};
    return m;
}
inline Matrix scale(double x, double y, double z) {
    return {Vec{x, 0, 0, 0}, Vec{0, y, 0, 0}, Vec{0, 0, z, 0}, Vec{0, 0, 0, 1}};
}

// The turn of a quaternion (x, y, z, w), then the translation.
inline Matrix boneMatrix(Vec q, Vec translation) {
    return {Vec{1 - 2 * q.y * q.y - 2 * q.z * q.z, 2 * q.x * q.y + 2 * q.z * q.w,
                2 * q.x * q.z - 2 * q.y * q.w, 0},
            Vec{2 * q.x * q.y - 2 * q.z * q.w, 1 - 2 * q.x * q.x - 2 * q.z * q.z,
                2 * q.y * q.z + 2 * q.x * q.w, 0},
            Vec{2 * q.x * q.z + 2 * q.y * q.w, 2 * q.y * q.z - 2 * q.x * q.w,
                1 - 2 * q.x * q.x - 2 * q.y * q.y, 0},
            withW(translation, 1)};
}

// A turn about an axis of length 1.
inline Matrix turn(double degrees, Vec axis) {
    const double half = radians(degrees) / 2;
    return boneMatrix(withW(axis * std::sin(half), std::cos(half)), {});
}

} // namespace ravolt::test
