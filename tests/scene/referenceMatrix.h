#pragma once

// The modelview stack's arithmetic in double precision.

#include "ravolt/Z3MMATRIX.h"
#include "ravolt/Z3MVECTOR3D.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace ravolt::test {

// Columns of four, as in OpenGL. Each step is multiplied on the right.
struct ReferenceMatrix {
    double e[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

    ReferenceMatrix &multiply(const double *other) {
        double product[16];
        for (int column = 0; column < 4; ++column)
            for (int row = 0; row < 4; ++row) {
                double sum = 0;
                for (int k = 0; k < 4; ++k)
                    sum += e[4 * k + row] * other[4 * column + k];
                product[4 * column + row] = sum;
            }
        std::copy(product, product + 16, e);
        return *this;
    }
    ReferenceMatrix &multiply(const Z3MMATRIX &other) {
        double wide[16];
        std::copy(other.e, other.e + 16, wide);
        return multiply(wide);
    }
    ReferenceMatrix &translate(double x, double y, double z) {
        const double step[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, x, y, z, 1};
        return multiply(step);
    }
    ReferenceMatrix &turnX(double degrees) { return turn(degrees, 1, 2); }
    ReferenceMatrix &turnY(double degrees) { return turn(degrees, 2, 0); }
    ReferenceMatrix &turnZ(double degrees) { return turn(degrees, 0, 1); }
    // The position (with the origin), then the rotations.
    ReferenceMatrix &node(const Z3MVECTOR3D &position, const Z3MVECTOR3D &rotation) {
        translate(position.x, position.y, position.z);
        return turnX(rotation.x).turnY(rotation.y).turnZ(rotation.z);
    }

  private:
    // Rotates axis `from` towards axis `to`.
    ReferenceMatrix &turn(double degrees, int from, int to) {
        const double angle = degrees * std::numbers::pi / 180;
        ReferenceMatrix step;
        step.e[5 * from] = step.e[5 * to] = std::cos(angle);
        step.e[4 * from + to] = std::sin(angle);
        step.e[4 * to + from] = -std::sin(angle);
        return multiply(step.e);
    }
};

// Each element within `tolerance`, relative to numbers above one.
inline testing::AssertionResult isNear(const float *actual, const ReferenceMatrix &expected,
                                       double tolerance = 1e-5) {
    for (int index = 0; index < 16; ++index) {
        const double allowed = tolerance * std::max(1.0, std::abs(expected.e[index]));
        if (!(std::abs(actual[index] - expected.e[index]) <= allowed))
            return testing::AssertionFailure() << "element " << index << " is " << actual[index]
                                               << " and not " << expected.e[index];
    }
    return testing::AssertionSuccess();
}
inline testing::AssertionResult isNear(const Z3MMATRIX &actual, const ReferenceMatrix &expected,
                                       double tolerance = 1e-5) {
    return isNear(actual.e, expected, tolerance);
}

} // namespace ravolt::test
