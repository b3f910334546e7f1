#include "tests/math/references.h"

namespace ravolt::test {
namespace {

TEST(Z3MVECTOR2D, IsZeroAtFirst) {
    const Z3MVECTOR2D v;
    EXPECT_EQ(v.x, 0.0f);
    EXPECT_EQ(v.y, 0.0f);
    static_assert(sizeof(Z3MVECTOR2D) == 8);
}

TEST(Z3MVECTOR2D, TakesAnyMixOfNumbers) {
    EXPECT_EQ(Z3MVECTOR2D(1, 2), Z3MVECTOR2D(1.0f, 2.0f));
    EXPECT_EQ(Z3MVECTOR2D(1.0, 2.0), Z3MVECTOR2D(1.0f, 2.0f));
    EXPECT_EQ(Z3MVECTOR2D(1, 2.5), Z3MVECTOR2D(1.0f, 2.5f));
    EXPECT_EQ(Z3MVECTOR2D(1u, 2l), Z3MVECTOR2D(1.0f, 2.0f));
    Z3MVECTOR2D v;
    EXPECT_EQ(v.set(1, 2.5), Z3MVECTOR2D(1.0f, 2.5f));
    EXPECT_EQ(v, Z3MVECTOR2D(1.0f, 2.5f));
    EXPECT_EQ(v.set(3.0f, 4.0f), Z3MVECTOR2D(3, 4));
    EXPECT_EQ(v.set(5.0, 6.0), Z3MVECTOR2D(5, 6));
    EXPECT_EQ(v.set(7, 8), Z3MVECTOR2D(7, 8));
}

TEST(Z3MVECTOR2D, HasADistance) { EXPECT_EQ(Z3MVECTOR2D(1, 1).distance(Z3MVECTOR2D(4, 5)), 5.0f); }

} // namespace
} // namespace ravolt::test
