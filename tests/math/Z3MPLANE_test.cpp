// Planes.

#include "ravolt/Z3MPLANE.h"

#include "tests/math/references.h"

namespace ravolt::test {
namespace {

void expectPlane(const Z3MPLANE &plane, float a, float b, float c, float d) {
    EXPECT_EQ((std::array{plane.a, plane.b, plane.c, plane.d}), (std::array{a, b, c, d}));
}

TEST(Z3MPLANE, IsZeroByDefault) {
    expectPlane(Z3MPLANE(), 0, 0, 0, 0);
    static_assert(sizeof(Z3MPLANE) == 16);
}

TEST(Z3MPLANE, StoresItsNumbersUnchanged) {
    const Z3MPLANE plane(1, 2, 3, 4);
    expectPlane(plane, 1, 2, 3, 4);
    expectPlane(Z3MPLANE(Z3MVECTOR3D(5, 6, 7), 8), 5, 6, 7, 8);
    const Z3MPLANE copy(plane);
    expectPlane(copy, 1, 2, 3, 4);
    Z3MPLANE assigned;
    assigned = plane;
    expectPlane(assigned, 1, 2, 3, 4);
}

TEST(Z3MPLANE, GoesThroughThreePoints) {
    const Z3MVECTOR3D origin(0, 0, 0), x(1, 0, 0), y(0, 1, 0);
    expectPlane(Z3MPLANE(origin, x, y), 0, 0, 1, 0);
    expectPlane(Z3MPLANE(origin, y, x), 0, 0, -1, 0);
    const Z3MVECTOR3D lift(0, 0, 3);
    expectPlane(Z3MPLANE(x, x * 2, x * 3), 0, 0, 0, 0); // points on a line have no normal
    expectPlane(Z3MPLANE(lift, x * 5 + lift, y * 7 + lift), 0, 0, 1, -3);

    Numbers numbers;
    for (int round = 0; round < 100; ++round) {
        const Z3MVECTOR3D p = numbers.vector<Z3MVECTOR3D>(), q = numbers.vector<Z3MVECTOR3D>(),
                          r = numbers.vector<Z3MVECTOR3D>();
        const Z3MPLANE plane(p, q, r);
        expectNear(Z3MVECTOR3D(plane.a, plane.b, plane.c).length(), 1.0);
        for (const Z3MVECTOR3D &point : {p, q, r})
            expectNear(plane.signedDistance(point), 0.0, 20.0);
        EXPECT_GT(plane.signedDistance(p + ((q - p) ^ (r - p))), 0.0f);
    }
}

TEST(Z3MPLANE, BothDistancesAreSigned) {
    const Z3MPLANE plane(0, 0, 1, -3);
    Z3MVECTOR3D above(7, 8, 5), below(7, 8, 1);
    EXPECT_EQ(plane.distance(above), 2.0f);
    EXPECT_EQ(plane.distance(below), -2.0f);
    EXPECT_EQ(plane.signedDistance(above), 2.0f);
    EXPECT_EQ(plane.signedDistance(below), -2.0f);
    EXPECT_EQ(Z3MPLANE(2, 3, 4, 5).signedDistance(Z3MVECTOR3D(1, 10, 100)), 437.0f);
}

TEST(Z3MPLANE, FacesWhatRunsAgainstItOrInIt) {
    const Z3MPLANE plane(Z3MVECTOR3D(0, 0, 0), Z3MVECTOR3D(1, 0, 0), Z3MVECTOR3D(0, 1, 0));
    EXPECT_TRUE(plane.isFrontFacingTo(Z3MVECTOR3D(0, 0, -1)));
    EXPECT_FALSE(plane.isFrontFacingTo(Z3MVECTOR3D(0, 0, 1)));
    EXPECT_TRUE(plane.isFrontFacingTo(Z3MVECTOR3D(1, 1, 0)));
    EXPECT_FALSE(plane.isFrontFacingTo(Z3MVECTOR3D(1, 1, 0.001f)));
}

} // namespace
} // namespace ravolt::test
