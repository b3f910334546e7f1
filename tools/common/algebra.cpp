// Vectors, matrices and affine maps in double precision.

#include "tools/common/algebra.h"

#include <algorithm>
#include <cmath>

namespace ravolt::tool {

Vector unit(const Vector &v, const Vector &otherwise) {
    const double size = length(v);
    return size > 0 && std::isfinite(size) ? v * (1 / size) : otherwise;
}

bool isFinite(const Vector &v) {
    return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
}

std::array<float, 3> floatsOf(const Vector &v) {
    return {static_cast<float>(v.x), static_cast<float>(v.y), static_cast<float>(v.z)};
}

Matrix matrixOfColumns(const Vector &a, const Vector &b, const Vector &c) {
    return {a.x, b.x, c.x, a.y, b.y, c.y, a.z, b.z, c.z};
}

Vector columnOf(const Matrix &m, unsigned int index) {
    return {m[0][index], m[1][index], m[2][index]};
}

Matrix operator*(const Matrix &m, double factor) {
    return matrixOfColumns(columnOf(m, 0) * factor, columnOf(m, 1) * factor,
                           columnOf(m, 2) * factor);
}

Matrix transposed(Matrix m) { return m.Transpose(); }

double largestDifference(const Matrix &a, const Matrix &b) {
    double largest = 0;
    for (unsigned int i = 0; i < 3; ++i)
        for (unsigned int j = 0; j < 3; ++j)
            largest = std::max(largest, std::abs(a[i][j] - b[i][j]));
    return largest;
}

double largestEntry(const Matrix &m) { return largestDifference(m, m * 0); }

Matrix normalMatrix(const Matrix &linear) {
    const Vector a = columnOf(linear, 0), b = columnOf(linear, 1), c = columnOf(linear, 2);
    const double sign = linear.Determinant() < 0 ? -1 : 1;
    return matrixOfColumns(cross(b, c), cross(c, a), cross(a, b)) * sign;
}

Affine operator*(const Affine &outer, const Affine &inner) {
    return {outer.linear * inner.linear, outer(inner.offset)};
}

bool isFinite(const Affine &transform) {
    bool finite = isFinite(transform.offset);
    for (unsigned int index = 0; index < 3; ++index)
        finite = finite && isFinite(columnOf(transform.linear, index));
    return finite;
}

bool invert(const Affine &transform, Affine &result) {
    const Matrix inverse = Matrix(transform.linear).Inverse(); // not finite if there is none
    const Affine candidate{inverse, inverse * (transform.offset * -1.0)};
    if (!isFinite(candidate))
        return false;
    result = candidate;
    return true;
}

Affine affineFrom(const aiMatrix4x4 &matrix) {
    const aiMatrix4x4t<double> m = matrix;
    return {Matrix(m), {m.a4, m.b4, m.c4}};
}

} // namespace ravolt::tool
