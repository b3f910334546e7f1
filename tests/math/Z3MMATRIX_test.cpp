// Matrices of 4 by 4.

#include "tests/math/references.h"

#include <type_traits>

namespace ravolt::test {
namespace {

// Elements 0 to 15, so that each one is recognized.
Z3MMATRIX counting() { return Z3MMATRIX(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15); }

using Elements = std::array<float, 16>;

void expectElements(const Z3MMATRIX &m, const Elements &expected) {
    EXPECT_EQ(std::to_array(m.e), expected);
}

void expectSame(const Z3MMATRIX &a, const Z3MMATRIX &b) { expectElements(a, std::to_array(b.e)); }

const Elements identity = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

// --- Construction and access

TEST(Z3MMATRIX, IsSixteenFloatsAndTheIdentityByDefault) {
    static_assert(sizeof(Z3MMATRIX) == 64);
    static_assert(std::is_standard_layout_v<Z3MMATRIX>);
    expectElements(Z3MMATRIX(), identity);
    Z3MMATRIX m = counting();
    m.setIdentity();
    expectElements(m, identity);
}

TEST(Z3MMATRIX, StoresItsElementsInOrder) {
    const Elements numbers = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
    const Z3MMATRIX m = counting();
    Z3MMATRIX assigned;
    static_assert(std::is_same_v<decltype(assigned = m), Z3MMATRIX>);
    assigned = m;
    for (const Z3MMATRIX &matrix : {m, Z3MMATRIX(numbers.data()), Z3MMATRIX(m), assigned})
        expectElements(matrix, numbers);
}

TEST(Z3MMATRIX, HasRowsAndColumns) {
    const Z3MMATRIX m = counting();
    const Z3MVECTOR4D zero(0, 0, 0, 0);
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(m.getRow(i), Z3MVECTOR4D(i, 4 + i, 8 + i, 12 + i));
        EXPECT_EQ(m.getColumn(i), Z3MVECTOR4D(4 * i, 4 * i + 1, 4 * i + 2, 4 * i + 3));
    }
    for (const int index : {-1, 4, 2147483647, -2147483647 - 1}) {
        EXPECT_EQ(m.getRow(index), zero);
        EXPECT_EQ(m.getColumn(index), zero);
    }
}

TEST(Z3MMATRIX, HasItsTranslationInElements12To14) {
    Z3MMATRIX m = counting();
    EXPECT_EQ(m.getTranslation(), Z3MVECTOR3D(12, 13, 14));
    m.setTranslation(-1, -2, -3);
    expectElements(m, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, -1, -2, -3, 15});
    Z3MVECTOR3D v(-4, -5, -6);
    m.setTranslation(v);
    expectElements(m, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, -4, -5, -6, 15});
}

// --- Products

TEST(Z3MMATRIX, MultipliesRowsByColumnsOfTheStorage) {
    Numbers numbers;
    for (int round = 0; round < 50; ++round) {
        const Z3MMATRIX a = numbers.matrix(), b = numbers.matrix();
        std::array<double, 16> expected{};
        for (std::size_t i = 0; i < 4; ++i)
            for (std::size_t j = 0; j < 4; ++j)
                for (std::size_t k = 0; k < 4; ++k)
                    expected[4 * i + j] += double(a.e[4 * i + k]) * b.e[4 * k + j];
        expectNear(a * b, expected, 100.0);
        Z3MMATRIX product(a);
        const Z3MMATRIX copy = product *= b;
        expectNear(product, expected, 100.0);
        expectNear(copy, expected, 100.0);
        Z3MMATRIX square(a);
        square *= square;
        expectSame(square, a * a);
    }
}

TEST(Z3MMATRIX, AppliesTheLeftFactorFirst) {
    Z3MMATRIX move, turn;
    move.setTranslation(1, 0, 0);
    turn.setRotation(90, 0, 0, 1);
    expectNear((move * turn).transform(Z3MVECTOR3D(0, 0, 0)), 0, 1, 0, 1);
    expectNear((turn * move).transform(Z3MVECTOR3D(0, 0, 0)), 1, 0, 0, 1);
    Numbers numbers;
    const Z3MMATRIX a = numbers.matrix(), b = numbers.matrix();
    const Z3MVECTOR4D v = numbers.vector<Z3MVECTOR4D>();
    const Z3MVECTOR4D both = (a * b).transform(v), inTurn = b.transform(a.transform(v));
    expectNear(both, inTurn.x, inTurn.y, inTurn.z, inTurn.w, 4000.0);
}

TEST(Z3MMATRIX, Transposes) {
    Z3MMATRIX m = counting();
    m.transpose();
    expectElements(m, {0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15});
}

// --- Rotations and scaling

Z3MMATRIX rotation(float degrees, const Z3MVECTOR3D &axis) {
    Z3MMATRIX m = counting();
    m.setRotation(degrees, axis.x, axis.y, axis.z);
    return m;
}

TEST(Z3MMATRIX, RotatesAboutAnyAxis) {
    Numbers numbers;
    for (int round = 0; round < 100; ++round) {
        const Z3MVECTOR3D axis = numbers.unitVector();
        const float angle = numbers.next() * 36.0f;
        const double c = std::cos(radians(angle)), s = std::sin(radians(angle)), t = 1 - c;
        const double x = axis.x, y = axis.y, z = axis.z;
        expectNear(rotation(angle, axis),
                   {x * x * t + c, z * s + x * y * t, x * z * t - y * s, 0, //
                    x * y * t - z * s, y * y * t + c, x * s + y * z * t, 0, //
                    y * s + x * z * t, y * z * t - x * s, z * z * t + c, 0, //
                    0, 0, 0, 1});
    }
}

TEST(Z3MMATRIX, RotationsAboutOneAxisLeaveAnXOfOneAndElement15) {
    for (const float angle : {30.0f, -77.0f, 190.0f}) {
        const double c = std::cos(radians(angle)), s = std::sin(radians(angle));
        Z3MMATRIX x = counting(), y = counting(), z = counting();
        x.setRotationX(angle);
        y.setRotationY(angle);
        z.setRotationZ(angle);
        expectNear(x, {1, 0, 0, 0, 0, c, s, 0, 0, -s, c, 0, 1, 0, 0, 15});
        expectNear(y, {c, 0, -s, 0, 0, 1, 0, 0, s, 0, c, 0, 1, 0, 0, 15});
        expectNear(z, {c, s, 0, 0, -s, c, 0, 0, 0, 0, 1, 0, 1, 0, 0, 15});
    }
}

TEST(Z3MMATRIX, AQuarterTurnAboutZ) {
    Z3MMATRIX m;
    m.setRotationZ(90);
    expectNear(m, {0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 1, 0, 1, 0, 0, 1});
    EXPECT_EQ(m.e[12], 1.0f);
    EXPECT_EQ(m.e[15], 1.0f);
    expectNear(rotation(90, {0, 0, 1}), {0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1});
    // An axis is not normalized.
    expectNear(rotation(90, {0, 0, 2}), {0, 2, 0, 0, -2, 0, 0, 0, 0, 0, 4, 0, 0, 0, 0, 1});
}

TEST(Z3MMATRIX, ScalingReplacesTheDiagonal) {
    Z3MMATRIX m = counting();
    m.setScaling(Z3MVECTOR3D(-2, -3, -4));
    expectElements(m, {-2, 1, 2, 3, 4, -3, 6, 7, 8, 9, -4, 11, 12, 13, 14, 15});
}

// --- Inverse

TEST(Z3MMATRIX, HasTheDeterminantOfItsUpperLeftBlock) {
    Numbers numbers;
    for (int round = 0; round < 50; ++round) {
        const Z3MMATRIX m = numbers.matrix();
        const float *e = m.e;
        const double expected = double(e[0]) * (double(e[5]) * e[10] - double(e[6]) * e[9]) -
                                double(e[1]) * (double(e[4]) * e[10] - double(e[6]) * e[8]) +
                                double(e[2]) * (double(e[4]) * e[9] - double(e[5]) * e[8]);
        expectNear(m.determinant(), expected, 1000.0);
        Z3MMATRIX other(m);
        for (const int i : {3, 7, 11, 12, 13, 14, 15})
            other.e[i] = 99.0f;
        EXPECT_EQ(other.determinant(), m.determinant());
    }
    EXPECT_EQ(Z3MMATRIX().determinant(), 1.0f);
}

// A matrix of an affine transformation that is far from singular.
Z3MMATRIX affine(Numbers &numbers) {
    Z3MMATRIX scale;
    scale.setScaling(Z3MVECTOR3D(2, 3, 0.5f));
    const Z3MVECTOR3D axis = numbers.unitVector();
    Z3MMATRIX result = scale * rotation(numbers.next() * 18.0f, axis);
    result.setTranslation(numbers.vector<Z3MVECTOR3D>());
    return result;
}

TEST(Z3MMATRIX, TimesItsInverseIsTheIdentity) {
    Numbers numbers;
    for (int round = 0; round < 100; ++round) {
        const Z3MMATRIX m = affine(numbers);
        Z3MMATRIX inverted(m);
        inverted.invert();
        const std::array<double, 16> expected = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
        expectNear(m * m.inverse(), expected, 50.0);
        expectNear(m.inverse() * m, expected, 50.0);
        expectSame(inverted, m.inverse());
    }
}

TEST(Z3MMATRIX, TheInverseOfAProjectionIsThatOfItsAffinePart) {
    Z3MMATRIX m;
    m.setScaling(Z3MVECTOR3D(2, 4, 8));
    for (const int i : {3, 7, 11, 15})
        m.e[i] = 5.0f;
    expectElements(m.inverse(), {0.5f, 0, 0, 0, 0, 0.25f, 0, 0, 0, 0, 0.125f, 0, 0, 0, 0, 1});
}

TEST(Z3MMATRIX, ASingularMatrixHasAnInfiniteInverse) {
    Z3MMATRIX m;
    m.setScaling(Z3MVECTOR3D(1, 1, 0));
    const Z3MMATRIX inverse = m.inverse();
    EXPECT_TRUE(std::isinf(inverse.e[10]));
    EXPECT_EQ(inverse.e[15], 1.0f);
}

// --- Vectors

TEST(Z3MMATRIX, RotatesDirectionsWithoutTheTranslation) {
    const Z3MMATRIX m = counting();
    EXPECT_EQ(m.rotate(Z3MVECTOR3D(1, 10, 100)), Z3MVECTOR3D(840, 951, 1062));
    EXPECT_EQ(m.rotate(Z3MVECTOR2D(1, 10)), Z3MVECTOR3D(40, 51, 62));
    EXPECT_EQ(m.rotate(Z3MVECTOR4D(1, 10, 100, 1000)), Z3MVECTOR3D(840, 951, 1062));
}

TEST(Z3MMATRIX, TransformsPointsWithTheTranslation) {
    const Z3MMATRIX m = counting();
    EXPECT_EQ(m.transform(Z3MVECTOR4D(1, 10, 100, 1000)), Z3MVECTOR4D(12840, 13951, 15062, 16173));
    EXPECT_EQ(m.transform(Z3MVECTOR3D(1, 10, 100)), Z3MVECTOR4D(852, 964, 1076, 1188));
    EXPECT_EQ(m.transform(Z3MVECTOR2D(1, 10)), Z3MVECTOR4D(52, 64, 76, 88));
}

// --- Quaternions

TEST(Z3MMATRIX, ComesFromAQuaternion) {
    Numbers numbers;
    for (int round = 0; round < 50; ++round) {
        const Z3MVECTOR4D q = numbers.unitQuaternion();
        const double x = q.x, y = q.y, z = q.z, w = q.w;
        Z3MMATRIX m = counting();
        const Z3MMATRIX copy = m.fromQuaternion(q);
        const std::array<double, 16> expected = {1 - 2 * (y * y + z * z),
                                                 2 * (x * y - z * w),
                                                 2 * (x * z + y * w),
                                                 0,
                                                 2 * (x * y + z * w),
                                                 1 - 2 * (x * x + z * z),
                                                 2 * (y * z - x * w),
                                                 0,
                                                 2 * (x * z - y * w),
                                                 2 * (y * z + x * w),
                                                 1 - 2 * (x * x + y * y),
                                                 0,
                                                 0,
                                                 0,
                                                 0,
                                                 1};
        expectNear(m, expected);
        expectNear(copy, expected);
    }
}

// The quaternion of a turn about an axis.
Z3MVECTOR4D turnAbout(const Z3MVECTOR3D &axis, double degrees) {
    const double s = std::sin(radians(degrees) / 2), c = std::cos(radians(degrees) / 2);
    return Z3MVECTOR4D(axis.x * s, axis.y * s, axis.z * s, c);
}

// Two quaternions of opposite signs are the same rotation.
void expectSameRotation(Z3MVECTOR4D actual, const Z3MVECTOR4D &expected, double scale) {
    if (actual % expected < 0.0f)
        actual = -actual;
    expectNear(actual, expected.x, expected.y, expected.z, expected.w, scale);
}

TEST(Z3MMATRIX, ReturnsTheQuaternionThatItComesFrom) {
    Numbers numbers;
    for (int round = 0; round < 200; ++round) {
        const Z3MVECTOR4D q = numbers.unitQuaternion();
        if (std::abs(q.w) < 0.1f) // too near to a half turn for single precision
            continue;
        Z3MMATRIX m;
        m.fromQuaternion(q);
        expectSameRotation(m.toQuaterion(), q, 20.0);
    }
    EXPECT_EQ(Z3MMATRIX().toQuaterion(), Z3MVECTOR4D(0, 0, 0, 1));
}

// No rotation has a trace plus 1 below 0, so these are literal: large elements, and the
// three given ones of the diagonal.
Z3MMATRIX withDiagonal(float e0, float e5, float e10) {
    return Z3MMATRIX(e0, 0.5f, -0.25f, 0, 0.75f, e5, 0.125f, 0, 0.375f, -0.625f, e10, 0, 0, 0, 0,
                     1);
}

TEST(Z3MMATRIX, ToQuaterionHasABranchForTheLargestDiagonalElement) {
    const struct {
        float diagonal[3];
        int branch; // the later one where two elements are equal
    } rows[] = {{{-1, -2, -3}, 0}, {{-2, -1, -3}, 5},  {{-2, -3, -1}, 10},
                {{-1, -1, -3}, 5}, {{-3, -1, -1}, 10}, {{-1, -3, -1}, 10}};
    for (const auto &[d, branch] : rows) {
        const double s = 2 * std::sqrt(-1.0 - d[0] - d[1] - d[2]); // the largest element is -1
        const Z3MVECTOR4D q = withDiagonal(d[0], d[1], d[2]).toQuaterion();
        if (branch == 0)
            expectNear(q, 0.25 * s, 1.25 / s, 0.125 / s, 0.75 / s);
        else if (branch == 5)
            expectNear(q, 1.25 / s, 0.25 * s, -0.5 / s, -0.625 / s);
        else
            expectNear(q, 0.125 / s, -0.5 / s, 0.25 * s, -0.25 / s);
    }
}

// Half turns about the axes: the trace is -1, and the first branch does not apply.
TEST(Z3MMATRIX, ToQuaterionTreatsATraceOfMinusOneAsAHalfTurn) {
    for (int axis = 0; axis < 3; ++axis) {
        Z3MMATRIX m;
        for (const int other : {0, 1, 2})
            m.e[5 * other] = other == axis ? 1.0f : -1.0f;
        expectNear(m.toQuaterion(), axis == 0, axis == 1, axis == 2, 0);
    }
}

TEST(Z3MMATRIX, ToQuaternionAltIsTheRotationOfSetRotation) {
    Numbers numbers;
    EXPECT_EQ(Z3MMATRIX().toQuaternionAlt(), Z3MVECTOR4D(0, 0, 0, 1));
    for (int round = 0; round < 500; ++round) {
        const Z3MVECTOR3D axis = numbers.unitVector();
        const float angle = numbers.next() * 18.0f; // past a half turn too
        expectSameRotation(rotation(angle, axis).toQuaternionAlt(), turnAbout(axis, angle), 5.0);
    }
    // A branch for each largest element of the diagonal.
    for (const float angle : {150.0f, -150.0f, 180.0f, 179.0f})
        for (const Z3MVECTOR3D &axis :
             {Z3MVECTOR3D(0.8f, 0.6f, 0), Z3MVECTOR3D(0, 0.8f, 0.6f), Z3MVECTOR3D(0.6f, 0, 0.8f),
              Z3MVECTOR3D(1, 0, 0), Z3MVECTOR3D(0, 1, 0), Z3MVECTOR3D(0, 0, 1)}) {
            const Z3MMATRIX m = rotation(angle, axis);
            ASSERT_LE(m.e[0] + m.e[5] + m.e[10], 0.0f);
            expectSameRotation(m.toQuaternionAlt(), turnAbout(axis, angle), 5.0);
        }
}

TEST(Z3MMATRIX, ToQuaternionAltUsesTheEarlierBranchWhereTwoAreEqual) {
    const double root = std::sqrt(4.0), r = 0.5 / root;
    const Z3MVECTOR4D x(root / 2, 1.25 * r, 0.125 * r, 0.75 * r);
    const Z3MVECTOR4D y(1.25 * r, root / 2, -0.5 * r, 0.625 * r);
    EXPECT_EQ(withDiagonal(-1, -1, -3).toQuaternionAlt(), x);
    EXPECT_EQ(withDiagonal(-1, -3, -1).toQuaternionAlt(), x);
    EXPECT_EQ(withDiagonal(-3, -1, -1).toQuaternionAlt(), y);
    // and the last where it is above both
    expectNear(withDiagonal(-2, -2, -1).toQuaternionAlt(), 0.125 * r, -0.5 * r, root / 2,
               -0.25 * r);
}

TEST(Z3MMATRIX, ToQuaternionAltTreatsATraceOfZeroAsAHalfTurn) {
    expectNear(withDiagonal(0, 0, 0).toQuaternionAlt(), 0.5, 0.625, 0.0625, 0.375);
}

// --- Angles

TEST(Z3MMATRIX, HasAnglesInDegrees) {
    Numbers numbers(1.0);
    for (int round = 0; round < 100; ++round) {
        Z3MMATRIX m = numbers.matrix();
        m.e[4] *= 0.998f;
        const double degrees = 180.0 / pi;
        expectNear(m.toEuler(), std::atan2(-m.e[8], m.e[0]) * degrees,
                   std::atan2(-m.e[6], m.e[5]) * degrees, std::asin(m.e[4]) * degrees, 720.0);
    }
}

// They begin beyond 0.998.
TEST(Z3MMATRIX, HasFixedAnglesAtThePoles) {
    Z3MMATRIX m;
    m.e[2] = 1.0f;
    for (const float sign : {1.0f, -1.0f}) {
        m.e[4] = 0.998f * sign;
        expectNear(m.toEuler(), 0, 0, sign * std::asin(0.998) * 180 / pi, 1000.0);
        for (const float pole : {std::nextafter(0.998f, 1.0f), 0.999f, 5.0f}) {
            m.e[4] = pole * sign;
            expectNear(m.toEuler(), 45, 90 * sign, 0, 180.0);
        }
    }
}

} // namespace
} // namespace ravolt::test
