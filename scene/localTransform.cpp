// The arithmetic of glTranslatef, glRotatef and glMultMatrixf on a matrix of our own. Sums and
// products are those of a matrix product, without the zeros of the rotation's matrix.

#include "scene/localTransform.h"

#include "ravolt/RVOPENGL.h"
#include "ravolt/Z3MMATRIX.h"

#include <cmath>
#include <numbers>

namespace ravolt {

namespace {

void turn(float degrees, float x, float y, float z) {
    if (degrees != 0.0f)
        glRotatef(degrees, x, y, z);
}

// Turns the columns `from` and `to` of the matrix, from the first to the second.
void turn(Z3MMATRIX &matrix, float degrees, unsigned int from, unsigned int to) {
    if (degrees == 0.0f)
        return;
    const auto radians = static_cast<float>(degrees * std::numbers::pi / 180.0);
    const float s = std::sin(radians), c = std::cos(radians);
    float *const a = matrix.e + 4 * from, *const b = matrix.e + 4 * to;
    for (unsigned int row = 0; row < 4; ++row) {
        const float first = a[row], second = b[row];
        a[row] = first * c + second * s;
        b[row] = second * c - first * s;
    }
}

} // namespace

void applyRotation(const Z3MVECTOR3D &degrees, Z3MMATRIX &matrix) {
    turn(matrix, degrees.x, 1, 2);
    turn(matrix, degrees.y, 2, 0);
    turn(matrix, degrees.z, 0, 1);
}

void applyRotation(const Z3MVECTOR3D &degrees) {
    turn(degrees.x, 1, 0, 0);
    turn(degrees.y, 0, 1, 0);
    turn(degrees.z, 0, 0, 1);
}

} // namespace ravolt
