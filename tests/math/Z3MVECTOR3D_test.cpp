#include "tests/math/references.h"

namespace ravolt::test {
namespace {

TEST(Z3MVECTOR3D, IsZeroAtFirst) {
    const Z3MVECTOR3D v;
    EXPECT_EQ(v.x, 0.0f);
    EXPECT_EQ(v.y, 0.0f);
    EXPECT_EQ(v.z, 0.0f);
    static_assert(sizeof(Z3MVECTOR3D) == 12);
}

TEST(Z3MVECTOR3D, TakesAnyMixOfNumbers) {
    EXPECT_EQ(Z3MVECTOR3D(1, 2, 3), Z3MVECTOR3D(1.0f, 2.0f, 3.0f));
    EXPECT_EQ(Z3MVECTOR3D(1.0, 2.0, 3.0), Z3MVECTOR3D(1.0f, 2.0f, 3.0f));
    EXPECT_EQ(Z3MVECTOR3D(1, 2.5, 3.5f), Z3MVECTOR3D(1.0f, 2.5f, 3.5f));
    Z3MVECTOR3D v;
    EXPECT_EQ(v.set(1u, 2.5, 3.5f), Z3MVECTOR3D(1.0f, 2.5f, 3.5f));
    EXPECT_EQ(v.set(4, 5, 6), Z3MVECTOR3D(4, 5, 6));
    EXPECT_EQ(v, Z3MVECTOR3D(4, 5, 6));
}

TEST(Z3MVECTOR3D, WidensWithAZOfZero) {
    const Z3MVECTOR2D flat(1, 2);
    EXPECT_EQ(Z3MVECTOR3D(flat), Z3MVECTOR3D(1, 2, 0));
    Z3MVECTOR3D v(7, 8, 9);
    v = flat;
    EXPECT_EQ(v, Z3MVECTOR3D(1, 2, 0));
    EXPECT_EQ(v + flat, Z3MVECTOR3D(2, 4, 0));
}

TEST(Z3MVECTOR3D, HasADistance) {
    EXPECT_EQ(Z3MVECTOR3D(1, 1, 1).distance(Z3MVECTOR3D(3, 4, 7)), 7.0f);
}

TEST(Z3MVECTOR3D, HasACrossProduct) {
    EXPECT_EQ(Z3MVECTOR3D(1, 0, 0) ^ Z3MVECTOR3D(0, 1, 0), Z3MVECTOR3D(0, 0, 1));
    EXPECT_EQ(Z3MVECTOR3D(0, 1, 0) ^ Z3MVECTOR3D(0, 0, 1), Z3MVECTOR3D(1, 0, 0));
    EXPECT_EQ(Z3MVECTOR3D(0, 0, 1) ^ Z3MVECTOR3D(1, 0, 0), Z3MVECTOR3D(0, 1, 0));
    EXPECT_EQ(Z3MVECTOR3D(2, 3, 5) ^ Z3MVECTOR3D(7, 11, 13), Z3MVECTOR3D(-16, 9, 1));
}

} // namespace
} // namespace ravolt::test
