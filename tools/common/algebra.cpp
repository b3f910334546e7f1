#include "tools/common/algebra.h"

#include <algorithm>
#include <cmath>

namespace ravolt::tool {

double length(const Vector &v) { return std::hypot(v.x, v.y, v.z); }

Vector unit(const Vector &v, const Vector &otherwise) {
    const double size = length(v);
    return size > 0 && std::isfinite(size) ? v * (1 / size) : otherwise;
}

bool isFinite(const Vector &v) {
    return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
}

Matrix matrixOfColumns(const Vector &a, const Vector &b, const Vector &c) {
    return {{{{a.x, b.x, c.x}, {a.y, b.y, c.y}, {a.z, b.z, c.z}}}};
}

Matrix operator*(const Matrix &a, const Matrix &b) {
    return matrixOfColumns(a * b.column(0), a * b.column(1), a * b.column(2));
}

Matrix operator*(const Matrix &m, double factor) {
    return matrixOfColumns(m.column(0) * factor, m.column(1) * factor, m.column(2) * factor);
}

Vector operator*(const Matrix &m, const Vector &v) {
    return m.column(0) * v.x + m.column(1) * v.y + m.column(2) * v.z;
}

Matrix transposed(const Matrix &m) {
    Matrix result;
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
            result.row[i][j] = m.row[j][i];
    return result;
}

Matrix cofactors(const Matrix &m) {
    const Vector a = m.column(0), b = m.column(1), c = m.column(2);
    return matrixOfColumns(cross(b, c), cross(c, a), cross(a, b));
}

double determinantOf(const Matrix &m) { return dot(m.column(0), cross(m.column(1), m.column(2))); }

double largestDifference(const Matrix &a, const Matrix &b) {
    double largest = 0;
    for (std::size_t i = 0; i < 3; ++i)
        for (std::size_t j = 0; j < 3; ++j)
            largest = std::max(largest, std::abs(a.row[i][j] - b.row[i][j]));
    return largest;
}

double largestEntry(const Matrix &m) {
    double largest = 0;
    for (const auto &row : m.row)
        for (double entry : row)
            largest = std::max(largest, std::abs(entry));
    return largest;
}

Matrix normalMatrix(const Matrix &linear) {
    return cofactors(linear) * (determinantOf(linear) < 0 ? -1 : 1);
}

Affine operator*(const Affine &outer, const Affine &inner) {
    return {outer.linear * inner.linear, outer(inner.offset)};
}

bool isFinite(const Affine &transform) {
    bool finite = isFinite(transform.offset);
    for (int index = 0; index < 3; ++index)
        finite = finite && isFinite(transform.linear.column(index));
    return finite;
}

bool invert(const Affine &transform, Affine &result) {
    const double determinant = determinantOf(transform.linear);
    const Matrix inverse = transposed(cofactors(transform.linear)) * (1 / determinant);
    const Affine candidate{inverse, inverse * (transform.offset * -1.0)};
    if (determinant == 0 || !isFinite(candidate))
        return false;
    result = candidate;
    return true;
}

Affine affineFrom(const aiMatrix4x4 &m) {
    Affine result;
    result.linear = matrixOfColumns({m.a1, m.b1, m.c1}, {m.a2, m.b2, m.c2}, {m.a3, m.b3, m.c3});
    result.offset = {m.a4, m.b4, m.c4};
    return result;
}

} // namespace ravolt::tool
