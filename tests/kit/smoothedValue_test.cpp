// The motion of a smoothed number, and its integral, compared with the formulas.

#include <ravolt/kit/smoothedValue.h>

#include <cmath>
#include <gtest/gtest.h>

using ravolt::kit::SmoothedValue;

namespace {

TEST(SmoothedValue, ApproachesItsTargetExponentially) {
    SmoothedValue value(2, 4);
    value.setTarget(10);
    EXPECT_EQ(value.getValue(), 2);
    value.advance(0.25);
    EXPECT_NEAR(value.getValue(), 10 - 8 * std::exp(-1.0), 1e-12);
}

TEST(SmoothedValue, ManySmallStepsAreOneLargeStep) {
    SmoothedValue one(1, 7), many(1, 7);
    one.setTarget(-3);
    many.setTarget(-3);
    const double covered = one.advance(0.1);
    double sum = 0;
    for (int i = 0; i < 10; ++i)
        sum += many.advance(0.01);
    EXPECT_NEAR(many.getValue(), one.getValue(), 1e-12);
    EXPECT_NEAR(sum, covered, 1e-12);
}

TEST(SmoothedValue, TheIntegralIsThatOfTheMotion) {
    SmoothedValue value(5, 3);
    value.setTarget(1);
    // 1 t + 4 (1 - exp(-3 t)) / 3
    EXPECT_NEAR(value.advance(2), 2 + 4 * (1 - std::exp(-6.0)) / 3, 1e-12);
}

TEST(SmoothedValue, WithoutARateItReachesTheTargetAtOnce) {
    for (const double rate : {0.0, -1.0, std::nan("")}) {
        SmoothedValue value(5, rate);
        value.setTarget(8);
        EXPECT_EQ(value.advance(0.5), 4);
        EXPECT_EQ(value.getValue(), 8);
    }
}

TEST(SmoothedValue, NoTimeChangesNothing) {
    SmoothedValue value(5, 0);
    value.setTarget(8);
    for (const double seconds : {0.0, -1.0, std::nan("")})
        EXPECT_EQ(value.advance(seconds), 0);
    EXPECT_EQ(value.getValue(), 5);
}

TEST(SmoothedValue, JumpsWithoutMotion) {
    SmoothedValue value;
    value.setTarget(4);
    value.jump(7);
    EXPECT_EQ(value.getValue(), 7);
    EXPECT_EQ(value.getTarget(), 7);
}

} // namespace
