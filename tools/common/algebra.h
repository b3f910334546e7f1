#pragma once

// Vectors and affine maps in double precision, as far as the conversion of models needs them.

#include <array>
#include <assimp/matrix4x4.h>
#include <assimp/vector3.h>

namespace ravolt::tool {

struct Vector {
    double x = 0, y = 0, z = 0;
};

inline Vector operator+(const Vector &a, const Vector &b) {
    return {a.x + b.x, a.y + b.y, a.z + b.z};
}
inline Vector operator-(const Vector &a, const Vector &b) {
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}
inline Vector operator*(const Vector &a, double factor) {
    return {a.x * factor, a.y * factor, a.z * factor};
}
inline double dot(const Vector &a, const Vector &b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
inline Vector cross(const Vector &a, const Vector &b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

double length(const Vector &v);
// Of length 1; a vector without a direction gives `otherwise`.
Vector unit(const Vector &v, const Vector &otherwise = {});
bool isFinite(const Vector &v);

// Three rows of three; the default is the identity.
struct Matrix {
    std::array<std::array<double, 3>, 3> row = {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};

    Vector column(int index) const { return {row[0][index], row[1][index], row[2][index]}; }
};

Matrix matrixOfColumns(const Vector &a, const Vector &b, const Vector &c);
Matrix operator*(const Matrix &a, const Matrix &b);
Matrix operator*(const Matrix &m, double factor);
Vector operator*(const Matrix &m, const Vector &v);
Matrix transposed(const Matrix &m); // the inverse of a rotation
Matrix cofactors(const Matrix &m);
double determinantOf(const Matrix &m);
double largestEntry(const Matrix &m);                       // by its absolute value
double largestDifference(const Matrix &a, const Matrix &b); // of two entries

// The matrix that carries normals along with `linear`: its inverse transpose times the absolute
// value of the determinant, which exists for a singular matrix too.
Matrix normalMatrix(const Matrix &linear);

// x' = linear * x + offset
struct Affine {
    Matrix linear;
    Vector offset;

    Vector operator()(const Vector &point) const { return linear * point + offset; }
};

Affine operator*(const Affine &outer, const Affine &inner);
bool isFinite(const Affine &transform);

// The inverse of an affine map; false, and `result` untouched, when there is none.
bool invert(const Affine &transform, Affine &result);

inline Vector vectorFrom(const aiVector3D &v) { return {v.x, v.y, v.z}; }
Affine affineFrom(const aiMatrix4x4 &matrix);

} // namespace ravolt::tool
