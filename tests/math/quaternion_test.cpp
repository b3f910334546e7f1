// Quaternions, which are vectors of four.

#include "tests/math/references.h"

namespace ravolt::test {
namespace {

TEST(Quaternion, CanBeSetToTheIdentity) {
    Z3MVECTOR4D q(1, 2, 3, 4);
    EXPECT_EQ(q.quaternionSetIdentity(), Z3MVECTOR4D(0, 0, 0, 1));
    EXPECT_EQ(q, Z3MVECTOR4D(0, 0, 0, 1));
}

TEST(Quaternion, ComesFromAnglesInRadians) {
    Numbers numbers(pi);
    for (int round = 0; round < 200; ++round) {
        const Z3MVECTOR3D angles = numbers.vector<Z3MVECTOR3D>();
        const double sx = std::sin(angles.x / 2.0), cx = std::cos(angles.x / 2.0);
        const double sy = std::sin(angles.y / 2.0), cy = std::cos(angles.y / 2.0);
        const double sz = std::sin(angles.z / 2.0), cz = std::cos(angles.z / 2.0);
        Z3MVECTOR4D q, r;
        const Z3MVECTOR4D copy = q.quaternionSetEulers(angles.x, angles.y, angles.z);
        expectNear(q, sx * cy * sz + cx * sy * cz, sx * cy * cz - cx * sy * sz,
                   cx * cy * sz - sx * sy * cz, sx * sy * sz + cx * cy * cz);
        EXPECT_EQ(copy, q);
        EXPECT_EQ(r.quaternionSetEulers(angles), q);
        EXPECT_EQ(r, q);
    }
}

TEST(Quaternion, HasItsComponentsAsEulers) {
    Z3MVECTOR4D q;
    q.quaternionSetEulers(0.5f, 0.25f, 0.125f);
    EXPECT_EQ(q.quaternionGetEulers(), Z3MVECTOR3D(q.x, q.y, q.z));
    EXPECT_EQ(Z3MVECTOR4D(1, 2, 3, 4).quaternionGetEulers(), Z3MVECTOR3D(1, 2, 3));
}

TEST(Quaternion, HasAnAxisAndAnAngle) {
    Numbers numbers;
    for (int round = 0; round < 200; ++round) {
        const Z3MVECTOR3D axis = numbers.unitVector();
        const double angle = 0.1 + 0.03 * round; // up to nearly 2 pi
        const double s = std::sin(angle / 2), c = std::cos(angle / 2);
        const Z3MVECTOR4D q(axis.x * s, axis.y * s, axis.z * s, c);
        expectNear(q.quaternionGetAxisAngles(), axis.x, axis.y, axis.z, angle, 200.0);
    }
}

TEST(Quaternion, WithoutARotationHasTheAxisY) {
    EXPECT_EQ(Z3MVECTOR4D(0, 0, 0, 1).quaternionGetAxisAngles(), Z3MVECTOR4D(0, 1, 0, 0));
    EXPECT_EQ(Z3MVECTOR4D(0.5f, 0, 0, 1).quaternionGetAxisAngles(), Z3MVECTOR4D(0, 1, 0, 0));
    // The nearest w below 1 is an angle of 0.0007, and counts as a rotation.
    const float w = std::nextafter(1.0f, 0.0f);
    EXPECT_NE(Z3MVECTOR4D(0.5f, 0, 0, w).quaternionGetAxisAngles().x, 0.0f);
    const Z3MVECTOR4D none = Z3MVECTOR4D(0.5f, 0, 0, 1.5f).quaternionGetAxisAngles();
    EXPECT_EQ(none.y, 1.0f);
    EXPECT_TRUE(std::isnan(none.w));
}

TEST(Quaternion, InvertsByItsSigns) {
    Z3MVECTOR4D q(1, 2, 3, 4);
    EXPECT_EQ(q.quaternionInverted(), Z3MVECTOR4D(-1, -2, -3, 4));
    EXPECT_EQ(q, Z3MVECTOR4D(1, 2, 3, 4));
    EXPECT_EQ(q.quaternionInvert(), Z3MVECTOR4D(-1, -2, -3, 4));
    EXPECT_EQ(q, Z3MVECTOR4D(-1, -2, -3, 4));
}

TEST(Quaternion, MultipliesByTheFormula) {
    Numbers numbers;
    for (int round = 0; round < 100; ++round) {
        const Z3MVECTOR4D p = numbers.vector<Z3MVECTOR4D>(), q = numbers.vector<Z3MVECTOR4D>();
        const double px = p.x, py = p.y, pz = p.z, pw = p.w;
        expectNear(p.quaternionMultiply(q), pw * q.x + px * q.w + py * q.z - pz * q.y,
                   pw * q.y + py * q.w + pz * q.x - px * q.z,
                   pw * q.z + pz * q.w + px * q.y - py * q.x,
                   pw * q.w - px * q.x - py * q.y - pz * q.z, 100.0);
    }
}

} // namespace
} // namespace ravolt::test
