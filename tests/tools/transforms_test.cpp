// Angles of rotations, and dividing matrices into rotations and residuals.

#include "tools/convert/transforms.h"

#include "tests/support/expectNear.h"
#include "tools/common/rotation.h"

#include <array>
#include <cmath>
#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace {

using namespace ravolt::tool;

Affine rigid(const Placement &placement) {
    return {rotationFromDegrees(placement.degrees), placement.position};
}

Matrix scaling(double x, double y, double z) {
    return matrixOfColumns({x, 0, 0}, {0, y, 0}, {0, 0, z});
}

class Random {
  public:
    double number(double from, double to) {
        return std::uniform_real_distribution<double>(from, to)(engine);
    }
    Vector vector(double size) {
        return {number(-size, size), number(-size, size), number(-size, size)};
    }
    Matrix matrix() { return matrixOfColumns(vector(3), vector(3), vector(3)); }

  private:
    std::mt19937 engine{12345};
};

void expectNear(const Vector &actual, const Vector &expected, double tolerance) {
    ravolt::test::expectNear(std::array{actual.x, actual.y, actual.z},
                             std::array{expected.x, expected.y, expected.z}, tolerance);
}

TEST(Transforms, RotatesAboutXThenYThenZAsTheEngineDoes) {
    // (1, 0, 0) by 90 degrees about Z first, as the innermost rotation, is (0, 1, 0); about X that
    // is (0, 0, 1).
    expectNear(rotationFromDegrees({90, 0, 90}) * Vector{1, 0, 0}, {0, 0, 1}, 1e-12);
}

TEST(Transforms, FindsTheAnglesOfEveryRotation) {
    for (int x = -180; x <= 180; x += 15)
        for (int y = -180; y <= 180; y += 15)
            for (int z = -180; z <= 180; z += 15) {
                const Matrix rotation = rotationFromDegrees(
                    {static_cast<double>(x), static_cast<double>(y), static_cast<double>(z)});
                const Matrix again = rotationFromDegrees(degreesFromRotation(rotation));
                ASSERT_LT(largestDifference(rotation, again), 1e-9) << x << " " << y << " " << z;
            }
}

TEST(Transforms, DivideAMatrixIntoARotationAndAResidual) {
    const Placement rotated = decompose({rotationFromDegrees({20, -35, 70}), {1, 2, 3}}, Matrix());
    expectNear(rotated.degrees, {20, -35, 70}, 1e-5);
    EXPECT_LT(largestDifference(rotated.residual, Matrix()), 1e-7);
    for (const Matrix &scale : {scaling(2, 3, 4), scaling(-1, 1, 1)}) {
        const Placement placement = decompose({scale, {5, 6, 7}}, Matrix());
        expectNear(placement.degrees, {}, 0);
        EXPECT_LT(largestDifference(placement.residual, scale), 1e-12);
    }
    for (double scale : {1e-30, 1e-9, 1e9, 1e30}) {
        const Placement placement =
            decompose({rotationFromDegrees({10, 20, 30}) * scale, {}}, Matrix());
        EXPECT_NEAR(placement.degrees.y, 20, 1e-5);
        EXPECT_LT(largestDifference(placement.residual, Matrix() * scale), scale * 1e-6);
    }
}

TEST(Transforms, ScalesThePositionsOfChildren) {
    const Placement parent = decompose({scaling(2, 3, 4), {}}, Matrix());
    expectNear(decompose({Matrix(), {1, 1, 1}}, parent.residual).position, {2, 3, 4}, 0);
}

// Whatever the matrices, points end up where the model has them.
TEST(Transforms, PreservesWorldPositionsAlongBranchesOfAnyMatrices) {
    Random random;
    for (int branch = 0; branch < 500; ++branch) {
        Affine model, engine;
        Matrix residual;
        double size = 1; // of the numbers involved
        for (int level = 0; level < 6; ++level) {
            const Affine local{random.matrix(), random.vector(10)};
            const Placement placement = decompose(local, residual);
            model = model * local;
            engine = engine * rigid(placement);
            residual = placement.residual;
            size = std::max({size, largestEntry(model.linear), length(model.offset)});
        }
        const Vector point = random.vector(5);
        const Vector expected = model(point), found = engine(residual * point);
        // Positions are rounded to floats; nothing else is lost.
        ASSERT_LT(length(expected - found), size * 1e-6) << "branch " << branch;
    }
}

TEST(Transforms, PreservesWorldPositionsOfFlattenedNodes) {
    const Matrix flat[] = {scaling(1, 1, 0),
                           scaling(0, 2, 3),
                           scaling(0, 0, 5),
                           scaling(0, 0, 0),
                           rotationFromDegrees({30, 40, 50}) * scaling(1, 0, 2),
                           matrixOfColumns({1, 2, 3}, {2, 4, 6}, {-1, -2, -3})};
    for (const Matrix &matrix : flat) {
        const Placement placement = decompose({matrix, {}}, Matrix());
        const Matrix again = rotationFromDegrees(placement.degrees) * placement.residual;
        EXPECT_LT(largestDifference(again, matrix), 1e-6);
    }
}

TEST(Transforms, InvertsWhatCanBeInverted) {
    const Affine map{rotationFromDegrees({10, 20, 30}) * scaling(1, -2, 3), {4, 5, 6}};
    Affine inverse;
    ASSERT_TRUE(invert(map, inverse));
    const Vector point{7, 8, 9};
    EXPECT_LT(length(inverse(map(point)) - point), 1e-12);

    Affine untouched{Matrix(), {1, 2, 3}};
    EXPECT_FALSE(invert({scaling(1, 1, 0), {}}, untouched));
    EXPECT_EQ(untouched.offset.z, 3);
}

TEST(Transforms, TurnsNearOtherAnglesWithTheSameRotation) {
    Random random;
    for (int i = 0; i < 1000; ++i) {
        const Vector near = random.vector(1000);
        const Matrix rotation = rotationFromDegrees(near + random.vector(1));
        const Placement turned = turnedNear(decompose({rotation, {}}, Matrix()), near);
        EXPECT_LT(
            largestDifference(rotationFromDegrees(turned.degrees) * turned.residual, rotation),
            1e-9);
        if (std::abs(std::cos(near.y / 57.29577951308232)) > 0.1) {
            EXPECT_LT(length(turned.degrees - near), 30) << i;
        }
    }
}

TEST(Transforms, PreservesTheThirdAngleWhereOnlyTheSumCounts) {
    for (double y : {90.0, -90.0}) {
        const Matrix rotation = rotationFromDegrees({30, y, 40});
        const Placement turned = turnedNear(decompose({rotation, {}}, Matrix()), {29, y, 41});
        EXPECT_NEAR(turned.degrees.z, 41, 1e-3);
        EXPECT_NEAR(turned.degrees.x, y > 0 ? 29 : 31, 1e-3);
        EXPECT_LT(largestDifference(rotationFromDegrees(turned.degrees), rotation), 1e-5);
    }
}

} // namespace
