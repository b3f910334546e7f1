#pragma once

// Numbers to test with, and formulas in double precision to compare with.

#include "ravolt/Z3MMATRIX.h"

#include <array>
#include <cmath>
#include <iterator>
#include <random>

#include <gtest/gtest.h>

namespace ravolt::test {

constexpr double pi = 3.14159265358979323846;

inline double radians(double degrees) { return degrees / 180.0 * pi; }

// The same numbers in every run.
class Numbers {
  public:
    explicit Numbers(double magnitude = 10.0) : size(magnitude) {}

    float next() { return static_cast<float>(uniform(random) * size); }

    template <class Vector> Vector vector() {
        Vector v;
        for (std::size_t i = 0; i < sizeof(Vector) / sizeof(float); ++i)
            v[i] = next();
        return v;
    }

    Z3MMATRIX matrix() {
        Z3MMATRIX m;
        for (float &element : m.e)
            element = next();
        return m;
    }

    Z3MVECTOR4D unitQuaternion() { return vector<Z3MVECTOR4D>().normalize(); }
    Z3MVECTOR3D unitVector() { return vector<Z3MVECTOR3D>().normalize(); }

  private:
    std::mt19937 random{12345};
    std::uniform_real_distribution<double> uniform{-1.0, 1.0};
    double size;
};

// `scale` is the size of the terms that are summed up: rounding is relative to it.
inline void expectNear(double actual, double expected, double scale = 1.0) {
    EXPECT_NEAR(actual, expected, 4e-6 * scale);
}

template <class Numbers>
void expectEachNear(const float *actual, const Numbers &expected, double scale) {
    for (std::size_t i = 0; i < std::size(expected); ++i)
        EXPECT_NEAR(actual[i], std::data(expected)[i], 4e-6 * scale) << "element " << i;
}
inline void expectNear(const Z3MVECTOR3D &v, double x, double y, double z, double scale = 1.0) {
    expectEachNear(&v.x, std::array{x, y, z}, scale);
}
inline void expectNear(const Z3MVECTOR4D &v, double x, double y, double z, double w,
                       double scale = 1.0) {
    expectEachNear(&v.x, std::array{x, y, z, w}, scale);
}
inline void expectNear(const Z3MMATRIX &m, const std::array<double, 16> &expected,
                       double scale = 1.0) {
    expectEachNear(m.e, expected, scale);
}

} // namespace ravolt::test
