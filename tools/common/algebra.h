#pragma once

// assimp's vectors and matrices in double precision, and affine maps of them.

#include <array>
#include <assimp/types.h>
#include <cmath>

namespace ravolt::tool {

using Vector = aiVector3t<double>;
using Matrix = aiMatrix3x3t<double>; // rows of three; the default is the identity

// Names for assimp's operators.
inline double dot(const Vector &a, const Vector &b) { return a * b; }
inline Vector cross(const Vector &a, const Vector &b) { return a ^ b; }
// More exact than Length(), by which the longer of two equal axes would be another one.
inline double length(const Vector &v) { return std::hypot(v.x, v.y, v.z); }

// The vector scaled to length 1; `otherwise` for a vector without a direction.
Vector unit(const Vector &v, const Vector &otherwise = {});
bool isFinite(const Vector &v);
std::array<float, 3> floatsOf(const Vector &v);

Matrix matrixOfColumns(const Vector &a, const Vector &b, const Vector &c);
Vector columnOf(const Matrix &m, unsigned int index);
Matrix operator*(const Matrix &m, double factor);
Matrix transposed(Matrix m);                                // the inverse of a rotation
double largestEntry(const Matrix &m);                       // by its absolute value
double largestDifference(const Matrix &a, const Matrix &b); // of two entries

// The matrix that transforms normals along with `linear`: its inverse transpose times the absolute
// value of the determinant, which exists for a singular matrix too.
Matrix normalMatrix(const Matrix &linear);

// x' = linear * x + offset
struct Affine {
    Matrix linear;
    Vector offset;

    Vector operator()(const Vector &point) const { return linear * point + offset; }
    bool operator==(const Affine &) const = default;
};

Affine operator*(const Affine &outer, const Affine &inner);
bool isFinite(const Affine &transform);

// The inverse of an affine map; false, and `result` unchanged, if there is none.
bool invert(const Affine &transform, Affine &result);

Affine affineFrom(const aiMatrix4x4 &matrix);

} // namespace ravolt::tool
