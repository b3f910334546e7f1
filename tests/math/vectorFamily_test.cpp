// What the three classes of vectors have in common.

#include "ravolt/Z3MPLANE.h"
#include "ravolt/zlf.h"
#include "tests/math/references.h"

#include <tuple>
#include <type_traits>

namespace ravolt::test {
namespace {

template <class V> class VectorFamilyTest : public testing::Test {
  protected:
    static constexpr int N = sizeof(V) / sizeof(float);

    // (1, 2, 3, 4) and (5, 7, 9, 11), as far as they go.
    VectorFamilyTest() {
        for (int i = 0; i < N; ++i) {
            a[i] = static_cast<float>(i + 1);
            b[i] = static_cast<float>(2 * i + 5);
        }
    }

    template <class Function> void expectEach(const V &v, Function expected) {
        for (int i = 0; i < N; ++i)
            EXPECT_EQ(v[i], static_cast<float>(expected(i + 1, 2 * i + 5))) << "component " << i;
    }

    V a, b;
};

using Vectors = testing::Types<Z3MVECTOR2D, Z3MVECTOR3D, Z3MVECTOR4D>;
TYPED_TEST_SUITE(VectorFamilyTest, Vectors);

enum Enumerators { three = 3 };

TEST(VectorFamily, ComparesTwoSizesAsTheSmallerOneWidens) {
    const Z3MVECTOR2D two(1, 2);
    const Z3MVECTOR3D flat(1, 2, 0), high(1, 2, 3);
    const Z3MVECTOR4D point(1, 2, 0, 1), direction(1, 2, 0, 0);
    EXPECT_EQ(two == flat, 1);
    EXPECT_EQ(flat == two, 1);
    EXPECT_EQ(two != high, 1);
    EXPECT_EQ(high == two, 0);
    EXPECT_EQ(flat == point, 1);
    EXPECT_EQ(point != flat, 0);
    EXPECT_EQ(two == point, 1);
    EXPECT_EQ(direction == two, 0);
}

TYPED_TEST(VectorFamilyTest, IsItsFloatsAndNothingElse) {
    static_assert(std::is_standard_layout_v<TypeParam>);
    static_assert(std::is_trivially_copyable_v<TypeParam>);
    static_assert(!std::is_polymorphic_v<TypeParam>);
    // A literal 0 would be a null pointer.
    static_assert(!std::is_constructible_v<TypeParam, std::nullptr_t>);
    static_assert(!std::is_constructible_v<Z3MMATRIX, std::nullptr_t>);
    EXPECT_EQ(static_cast<void *>(&this->a.x), &this->a);
}

TYPED_TEST(VectorFamilyTest, CopiesFromItsOwnClassAndFromFloats) {
    const float floats[] = {1, 2, 3, 4};
    float writable[] = {1, 2, 3, 4};
    EXPECT_TRUE(TypeParam(floats) == this->a);
    EXPECT_TRUE(TypeParam(writable) == this->a);
    EXPECT_TRUE(TypeParam(this->a) == this->a);
    TypeParam c;
    c = this->b;
    EXPECT_TRUE(c == this->b);
}

TYPED_TEST(VectorFamilyTest, IndexesWithEveryIntegerType) {
    const TypeParam &constant = this->a;
    const auto check = [&](auto index) {
        EXPECT_EQ(this->a[index], 2.0f);
        EXPECT_EQ(constant[index], 2.0f);
    };
    std::apply([&](auto... indices) { (check(indices), ...); },
               std::tuple(1, 1u, 1l, 1ul, 1ll, short{1}, '\1', std::size_t{1}));
    this->a[0] = 8.0f;
    EXPECT_EQ(this->a.x, 8.0f);
}

TYPED_TEST(VectorFamilyTest, ABadIndexEndsTheProcess) {
    zlfSetConsoleEcho(false);
    const TypeParam &constant = this->a;
    for (const int index : {-1, this->N, this->N + 1, 2147483647, -2147483647 - 1}) {
        EXPECT_EXIT(static_cast<void>(this->a[index]), testing::ExitedWithCode(1), "^$");
        EXPECT_EXIT(static_cast<void>(constant[index]), testing::ExitedWithCode(1), "^$");
    }
    EXPECT_EXIT(static_cast<void>(this->a[0x100000000l]), testing::ExitedWithCode(1), "^$");
    EXPECT_EXIT(static_cast<void>(this->a[4u]), testing::ExitedWithCode(1), "^$");
    zlfSetConsoleEcho(true);
}

TYPED_TEST(VectorFamilyTest, IsAPointerToItsFirstComponent) {
    float *pointer = this->a;
    EXPECT_EQ(pointer, &this->a.x);
    this->expectEach(TypeParam(pointer), [](int x, int) { return x; });
}

TYPED_TEST(VectorFamilyTest, OperatorsWorkOnEachComponent) {
    const TypeParam &v = this->a, &w = this->b;
    this->expectEach(-v, [](int x, int) { return -x; });
    this->expectEach(+v, [](int x, int) { return x; });
    this->expectEach(v + 1.5f, [](int x, int) { return x + 1.5; });
    this->expectEach(v - 1.5f, [](int x, int) { return x - 1.5; });
    this->expectEach(v * 1.5f, [](int x, int) { return x * 1.5; });
    this->expectEach(v / 2.0f, [](int x, int) { return x / 2.0; });
    this->expectEach(v + w, [](int x, int y) { return x + y; });
    this->expectEach(v - w, [](int x, int y) { return x - y; });
    this->expectEach(v * w, [](int x, int y) { return x * y; });
    this->expectEach(v / w, [](float x, float y) { return x / y; });
}

TYPED_TEST(VectorFamilyTest, OperatorsAcceptScalarsOfEveryArithmeticType) {
    const auto check = [this](auto... scalars) {
        (this->expectEach(this->a + scalars, [](int x, int) { return x + 3; }), ...);
        (this->expectEach(this->a - scalars, [](int x, int) { return x - 3; }), ...);
        (this->expectEach(this->a * scalars, [](int x, int) { return x * 3; }), ...);
        (this->expectEach(this->a / scalars, [](float x, int) { return x / 3; }), ...);
        (this->expectEach(TypeParam(this->a) *= scalars, [](int x, int) { return x * 3; }), ...);
    };
    check(3, 3u, 3l, 3.0, three);
    this->expectEach(this->a - -2l, [](int x, int) { return x + 2; });
}

TYPED_TEST(VectorFamilyTest, DoesNotGuardDivisions) {
    const TypeParam infinite = this->a / 0.0f;
    EXPECT_TRUE(std::isinf(infinite[0]));
    TypeParam zero;
    zero.reset();
    EXPECT_TRUE(std::isnan((zero / zero)[0]));
}

TYPED_TEST(VectorFamilyTest, ChangesInPlaceAndReturnsCopies) {
    static_assert(std::is_same_v<decltype(this->a += this->b), TypeParam>);
    static_assert(std::is_same_v<decltype(this->a -= this->b), TypeParam>);
    static_assert(std::is_same_v<decltype(this->a *= 2.0f), TypeParam>);
    static_assert(std::is_same_v<decltype(this->a /= this->b), TypeParam>);
    const auto check = [this](auto change, auto expected) {
        TypeParam v = this->a;
        this->expectEach(change(v), expected);
        this->expectEach(v, expected);
    };
    const TypeParam &other = this->b;
    check([&](TypeParam &v) { return v += other; }, [](int x, int y) { return x + y; });
    check([&](TypeParam &v) { return v -= other; }, [](int x, int y) { return x - y; });
    check([&](TypeParam &v) { return v *= other; }, [](int x, int y) { return x * y; });
    check([&](TypeParam &v) { return v /= other; }, [](float x, float y) { return x / y; });
    check([&](TypeParam &v) { return v *= 3.0f; }, [](int x, int) { return 3 * x; });
    check([&](TypeParam &v) { return v /= 4; }, [](int x, int) { return x / 4.0; });
    check([&](TypeParam &v) { return v += v; }, [](int x, int) { return 2 * x; });
    check([&](TypeParam &v) { return v /= v; }, [](int, int) { return 1; });
}

TYPED_TEST(VectorFamilyTest, HasADotProductOverAllComponents) {
    static_assert(std::is_same_v<decltype(this->a % this->b), float>);
    int expected = 0;
    for (int i = 0; i < this->N; ++i)
        expected += (i + 1) * (2 * i + 5);
    EXPECT_EQ(this->a % this->b, static_cast<float>(expected));
}

TYPED_TEST(VectorFamilyTest, ComparesExactly) {
    static_assert(std::is_same_v<decltype(this->a == this->b), int>);
    static_assert(std::is_same_v<decltype(this->a != this->b), int>);
    EXPECT_EQ(this->a == this->a, 1);
    EXPECT_EQ(this->a != this->a, 0);
    for (int i = 0; i < this->N; ++i) {
        TypeParam c = this->a;
        c[i] = std::nextafter(c[i], 100.0f);
        EXPECT_EQ(this->a == c, 0) << "component " << i;
        EXPECT_EQ(this->a != c, 1) << "component " << i;
    }
}

TYPED_TEST(VectorFamilyTest, SetsFromFloatsAndReturnsACopy) {
    const float floats[] = {5, 7, 9, 11};
    const TypeParam copy = this->a.set(floats);
    EXPECT_TRUE(copy == this->b);
    EXPECT_TRUE(this->a == this->b);
    this->a.reset();
    this->expectEach(this->a, [](int, int) { return 0; });
}

TYPED_TEST(VectorFamilyTest, InterpolatesWithoutAClamp) {
    EXPECT_TRUE(this->a.lerp(this->b, 0.0f) == this->a);
    EXPECT_TRUE(this->a.lerp(this->b, 1.0f) == this->b);
    this->expectEach(this->a.lerp(this->b, 0.25f), [](int x, int y) { return x + (y - x) * 0.25; });
    this->expectEach(this->a.lerp(this->b, 3.0f), [](int x, int y) { return x + (y - x) * 3; });
    this->expectEach(this->a.lerp(this->b, -1.0f), [](int x, int y) { return 2 * x - y; });
    this->expectEach(this->a, [](int x, int) { return x; });
}

TYPED_TEST(VectorFamilyTest, HasALengthOverAllComponents) {
    static_assert(std::is_same_v<decltype(this->a.length()), float>);
    Numbers numbers;
    for (int round = 0; round < 100; ++round) {
        const TypeParam v = numbers.vector<TypeParam>();
        double square = 0.0;
        for (int i = 0; i < this->N; ++i)
            square += double(v[i]) * v[i];
        expectNear(v.squaredLength(), square, square);
        expectNear(v.length(), std::sqrt(square), std::sqrt(square));
    }
}

TYPED_TEST(VectorFamilyTest, CanBeSetToALengthAndNormalized) {
    TypeParam v = this->a, unit = this->a, zero;
    const TypeParam copy = v.setLength(7.0f);
    EXPECT_TRUE(copy == v);
    expectNear(v.length(), 7.0, 7.0);
    expectNear(v.angle(this->a), 0.0, 1000.0);
    v.setLength(-7.0f);
    EXPECT_LT(v[0], 0.0f) << "a negative length inverts the direction";
    const TypeParam unitCopy = unit.normalize();
    EXPECT_TRUE(unitCopy == unit);
    for (int i = 0; i < this->N; ++i)
        expectNear(unit[i], (i + 1) / std::sqrt(double(this->a.squaredLength())));
    zero.reset();
    zero.normalize();
    this->expectEach(zero, [](int, int) { return 0; });
    zero.setLength(2.0f);
    for (int i = 0; i < this->N; ++i)
        EXPECT_TRUE(std::isnan(zero[i]));
}

TYPED_TEST(VectorFamilyTest, HasAnAngleInDoublePrecision) {
    static_assert(std::is_same_v<decltype(this->a.angle(this->b)), double>);
    TypeParam x, y;
    x.reset();
    y.reset();
    x[0] = 2.0f;
    y[1] = 0.5f;
    EXPECT_DOUBLE_EQ(x.angle(y), std::acos(0.0));
    EXPECT_DOUBLE_EQ(x.angle(-x), std::acos(-1.0));
    EXPECT_EQ(x.angle(x), 0.0);
    y[0] = 0.5f;
    EXPECT_NEAR(x.angle(y), pi / 4, 1e-7);
}

TYPED_TEST(VectorFamilyTest, AnUndefinedAngleIsZero) {
    TypeParam zero;
    zero.reset();
    EXPECT_EQ(zero.angle(this->a), 0.0);
    EXPECT_EQ(this->a.angle(zero), 0.0);
    EXPECT_EQ(zero.angle(zero), 0.0);
    Numbers numbers;
    for (int round = 0; round < 1000; ++round) { // some of these round to more than 1
        const TypeParam v = numbers.vector<TypeParam>();
        EXPECT_FALSE(std::isnan(v.angle(v * 3.0f)));
        EXPECT_LT(v.angle(v * 3.0f), 0.001);
    }
}

// --- What differs: sizes and defaults, distances and the cross product

TEST(VectorFamily, IsZeroByDefaultButForW) {
    static_assert(sizeof(Z3MVECTOR2D) == 8 && sizeof(Z3MVECTOR3D) == 12);
    static_assert(sizeof(Z3MVECTOR4D) == 16);
    EXPECT_EQ(Z3MVECTOR2D(), Z3MVECTOR2D(0, 0));
    EXPECT_EQ(Z3MVECTOR3D(), Z3MVECTOR3D(0, 0, 0));
    Z3MVECTOR4D v;
    EXPECT_EQ(v, Z3MVECTOR4D(0, 0, 0, 1));
    v.reset();
    EXPECT_EQ(v, Z3MVECTOR4D(0, 0, 0, 0));
}

TEST(VectorFamily, AcceptsAnyMixOfNumbers) {
    EXPECT_EQ(Z3MVECTOR2D(1, 2.5), Z3MVECTOR2D(1.0f, 2.5f));
    EXPECT_EQ(Z3MVECTOR2D(1.0, 2.0), Z3MVECTOR2D(1u, 2l));
    EXPECT_EQ(Z3MVECTOR3D(1, 2.0, 3u), Z3MVECTOR3D(1.0f, 2.0f, 3.0f));
    EXPECT_EQ(Z3MVECTOR3D(1.0, 2.0, 3.0), Z3MVECTOR3D(1, 2, 3));
    EXPECT_EQ(Z3MVECTOR4D(1, 2.5, 3.5f, 4u), Z3MVECTOR4D(1.0f, 2.5f, 3.5f, 4.0f));
    EXPECT_EQ(Z3MVECTOR4D(1.0, 2.0, 3.0, 4.0), Z3MVECTOR4D(1, 2, 3, 4));
    Z3MVECTOR2D two;
    EXPECT_EQ(two.set(1, 2.5), Z3MVECTOR2D(1.0f, 2.5f));
    EXPECT_EQ(two, Z3MVECTOR2D(1.0f, 2.5f));
    EXPECT_EQ(two.set(3.0f, 4.0f), Z3MVECTOR2D(3, 4));
    EXPECT_EQ(two.set(5.0, 6.0), Z3MVECTOR2D(5, 6));
    EXPECT_EQ(two.set(7, 8), Z3MVECTOR2D(7, 8));
    Z3MVECTOR3D v;
    EXPECT_EQ(v.set(1u, 2.5, 3.5f), Z3MVECTOR3D(1.0f, 2.5f, 3.5f));
    EXPECT_EQ(v.set(4, 5, 6), Z3MVECTOR3D(4, 5, 6));
    EXPECT_EQ(v, Z3MVECTOR3D(4, 5, 6));
    Z3MVECTOR4D four;
    EXPECT_EQ(four.set(1, 2.5, 3.5f, 4l), Z3MVECTOR4D(1.0f, 2.5f, 3.5f, 4.0f));
    EXPECT_EQ(four, Z3MVECTOR4D(1.0f, 2.5f, 3.5f, 4.0f));
}

TEST(VectorFamily, WidensWithAZOfZeroAndAWOfOne) {
    const Z3MVECTOR2D flat(1, 2);
    const Z3MVECTOR3D solid(1, 2, 3);
    EXPECT_EQ(Z3MVECTOR3D(flat), Z3MVECTOR3D(1, 2, 0));
    EXPECT_EQ(Z3MVECTOR4D(flat), Z3MVECTOR4D(1, 2, 0, 1));
    EXPECT_EQ(Z3MVECTOR4D(solid), Z3MVECTOR4D(1, 2, 3, 1));
    Z3MVECTOR3D v(7, 8, 9);
    v = flat;
    EXPECT_EQ(v, Z3MVECTOR3D(1, 2, 0));
    EXPECT_EQ(v + flat, Z3MVECTOR3D(2, 4, 0));
    Z3MVECTOR4D w(7, 8, 9, 10);
    w = flat;
    EXPECT_EQ(w, Z3MVECTOR4D(1, 2, 0, 1));
    w = Z3MVECTOR4D(7, 8, 9, 10);
    w = solid;
    EXPECT_EQ(w, Z3MVECTOR4D(1, 2, 3, 1));
}

TEST(VectorFamily, HasADistance) {
    EXPECT_EQ(Z3MVECTOR2D(1, 1).distance(Z3MVECTOR2D(4, 5)), 5.0f);
    EXPECT_EQ(Z3MVECTOR3D(1, 1, 1).distance(Z3MVECTOR3D(3, 4, 7)), 7.0f);
    // On purpose: z counts twice, as in (3 - 1, 4 - 2, 5 - 3, 5 - 4).
    EXPECT_FLOAT_EQ(Z3MVECTOR4D(1, 2, 3, 4).distance(Z3MVECTOR3D(3, 4, 5)), std::sqrt(13.0f));
    EXPECT_FLOAT_EQ(Z3MVECTOR4D().distance(Z3MVECTOR3D(0, 0, 0)), 1.0f);
    EXPECT_FLOAT_EQ(Z3MVECTOR4D(0, 0, 0, 2).distance(Z3MVECTOR2D(3, 4)), std::sqrt(29.0f));
}

TEST(VectorFamily, HasACrossProductIn3D) {
    const Z3MVECTOR3D x(1, 0, 0), y(0, 1, 0), z(0, 0, 1);
    EXPECT_EQ(x ^ y, z);
    EXPECT_EQ(y ^ z, x);
    EXPECT_EQ(z ^ x, y);
    EXPECT_EQ(Z3MVECTOR3D(2, 3, 5) ^ Z3MVECTOR3D(7, 11, 13), Z3MVECTOR3D(-16, 9, 1));
}

} // namespace
} // namespace ravolt::test
