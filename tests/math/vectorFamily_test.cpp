#include "ravolt/Z3MMATRIX.h"
#include "ravolt/Z3MPLANE.h"
#include "ravolt/zlf.h"
#include "tests/math/references.h"

#include <type_traits>

// What the three classes of vectors have in common.

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

TYPED_TEST(VectorFamilyTest, TakesEnumeratorsForNumbers) {
    this->expectEach(this->a + three, [](int i, int) { return i + 3; });
    this->expectEach(this->a - three, [](int i, int) { return i - 3; });
    this->expectEach(this->a * three, [](int i, int) { return i * 3; });
    this->a *= three;
    this->expectEach(this->a, [](int i, int) { return i * 3; });
}

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

// A literal 0 would be the address of nothing.
TEST(VectorFamily, IsNotMadeFromALiteralZero) {
    static_assert(!std::is_constructible_v<Z3MVECTOR2D, std::nullptr_t>);
    static_assert(!std::is_constructible_v<Z3MVECTOR3D, std::nullptr_t>);
    static_assert(!std::is_constructible_v<Z3MVECTOR4D, std::nullptr_t>);
    static_assert(!std::is_constructible_v<Z3MMATRIX, std::nullptr_t>);
}

TYPED_TEST(VectorFamilyTest, IsItsFloatsAndNothingElse) {
    static_assert(std::is_standard_layout_v<TypeParam>);
    static_assert(std::is_trivially_copyable_v<TypeParam>);
    static_assert(!std::is_polymorphic_v<TypeParam>);
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
    EXPECT_EQ(this->a[1], 2.0f);
    EXPECT_EQ(this->a[1u], 2.0f);
    EXPECT_EQ(this->a[1l], 2.0f);
    EXPECT_EQ(this->a[1ul], 2.0f);
    EXPECT_EQ(this->a[1ll], 2.0f);
    EXPECT_EQ(this->a[short{1}], 2.0f);
    EXPECT_EQ(this->a['\1'], 2.0f);
    EXPECT_EQ(this->a[std::size_t{1}], 2.0f);
    EXPECT_EQ(constant[1], 2.0f);
    EXPECT_EQ(constant[1u], 2.0f);
    EXPECT_EQ(constant[1l], 2.0f);
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
    for (int i = 0; i < this->N; ++i)
        EXPECT_EQ(pointer[i], static_cast<float>(i + 1));
}

TYPED_TEST(VectorFamilyTest, HasSigns) {
    this->expectEach(-this->a, [](int x, int) { return -x; });
    this->expectEach(+this->a, [](int x, int) { return x; });
}

TYPED_TEST(VectorFamilyTest, TakesAScalarOnEachComponent) {
    this->expectEach(this->a + 1.5f, [](int x, int) { return x + 1.5; });
    this->expectEach(this->a - 1.5f, [](int x, int) { return x - 1.5; });
    this->expectEach(this->a * 1.5f, [](int x, int) { return x * 1.5; });
    this->expectEach(this->a / 2.0f, [](int x, int) { return x / 2.0; });
}

TYPED_TEST(VectorFamilyTest, TakesScalarsOfEveryArithmeticType) {
    const auto plusTwo = [](int x, int) { return x + 2; };
    this->expectEach(this->a + 2, plusTwo);
    this->expectEach(this->a + 2u, plusTwo);
    this->expectEach(this->a + 2l, plusTwo);
    this->expectEach(this->a + 2.0, plusTwo);
    this->expectEach(this->a - -2l, plusTwo);
    this->expectEach(this->a * 2.0 / 2, [](int x, int) { return x; });
}

TYPED_TEST(VectorFamilyTest, TakesAVectorComponentByComponent) {
    this->expectEach(this->a + this->b, [](int x, int y) { return x + y; });
    this->expectEach(this->a - this->b, [](int x, int y) { return x - y; });
    this->expectEach(this->a * this->b, [](int x, int y) { return x * y; });
    this->expectEach(this->a / this->b, [](float x, float y) { return x / y; });
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

TYPED_TEST(VectorFamilyTest, ResetsAllComponentsToZero) {
    this->a.reset();
    this->expectEach(this->a, [](int, int) { return 0; });
}

TYPED_TEST(VectorFamilyTest, SetsFromFloatsAndReturnsACopy) {
    const float floats[] = {5, 7, 9, 11};
    const TypeParam copy = this->a.set(floats);
    EXPECT_TRUE(copy == this->b);
    EXPECT_TRUE(this->a == this->b);
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

TYPED_TEST(VectorFamilyTest, TakesALength) {
    TypeParam v = this->a;
    const TypeParam copy = v.setLength(7.0f);
    EXPECT_TRUE(copy == v);
    expectNear(v.length(), 7.0, 7.0);
    expectNear(v.angle(this->a), 0.0, 1000.0);
    v.setLength(-7.0f);
    EXPECT_LT(v[0], 0.0f) << "a negative length turns it round";
}

TYPED_TEST(VectorFamilyTest, AZeroVectorTakesNoLength) {
    this->a.reset();
    this->a.setLength(2.0f);
    for (int i = 0; i < this->N; ++i)
        EXPECT_TRUE(std::isnan(this->a[i]));
}

TYPED_TEST(VectorFamilyTest, Normalizes) {
    TypeParam v = this->a;
    const TypeParam copy = v.normalize();
    EXPECT_TRUE(copy == v);
    for (int i = 0; i < this->N; ++i)
        expectNear(v[i], (i + 1) / std::sqrt(double(this->a.squaredLength())));
}

TYPED_TEST(VectorFamilyTest, AZeroVectorStaysZeroWhenNormalized) {
    this->a.reset();
    this->a.normalize();
    this->expectEach(this->a, [](int, int) { return 0; });
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

TYPED_TEST(VectorFamilyTest, AnAngleThatIsNoneIsZero) {
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

} // namespace
} // namespace ravolt::test
