#include "tests/foundation/ownLog.h"

namespace ravolt::test {
namespace {

using Timers = OwnLog;

constexpr std::int64_t second = 1'000'000'000;

TEST_F(Timers, AreGivenFromTheFirstFreeOneOn) {
    for (int i = 0; i < 8; ++i)
        EXPECT_EQ(zlfNewTimer(1.0f), i);
    EXPECT_NOTHING_LOGGED();
    EXPECT_EQ(zlfNewTimer(1.0f), -1);
    EXPECT_LOGGED_EXACTLY("zlfNewTimer: no more timers\n");
    zlfFreeTimer(5);
    zlfFreeTimer(2);
    EXPECT_EQ(zlfNewTimer(1.0f), 2);
    EXPECT_EQ(zlfNewTimer(1.0f), 5);
    EXPECT_NOTHING_LOGGED();
}

TEST_F(Timers, WithARateOfZeroStayFree) {
    EXPECT_EQ(zlfNewTimer(0.0f), 0);
    EXPECT_EQ(zlfNewTimer(0.0f), 0);
    EXPECT_FALSE(zlfAdjournTimer(0));
    EXPECT_EQ(zlfNewTimer(1.0f), 0);
}

TEST_F(Timers, MeasureInUnitsOfTheirRate) {
    systemFaults.counter = 50 * second;
    const int seconds = zlfNewTimer(1.0f), sixtieths = zlfNewTimer(60.0f);
    systemFaults.counter = 50 * second + second / 4;
    EXPECT_TRUE(zlfAdjournTimer(seconds));
    EXPECT_TRUE(zlfAdjournTimer(sixtieths));
    EXPECT_FLOAT_EQ(zlfGetTimerFactor(seconds), 0.25f);
    EXPECT_FLOAT_EQ(zlfGetTimerFps(seconds), 4.0f);
    EXPECT_FLOAT_EQ(zlfGetTimerFactor(sixtieths), 15.0f);
    EXPECT_FLOAT_EQ(zlfGetTimerFps(sixtieths), 4.0f);
}

TEST_F(Timers, MeasureFromTheLastAdjourn) {
    systemFaults.counter = 0;
    const int timer = zlfNewTimer(1.0f);
    systemFaults.counter = 3 * second;
    zlfAdjournTimer(timer);
    systemFaults.counter = 5 * second;
    EXPECT_FLOAT_EQ(zlfGetTimerFactor(timer), 3.0f); // no counter is read here
    zlfAdjournTimer(timer);
    EXPECT_FLOAT_EQ(zlfGetTimerFactor(timer), 2.0f);
    EXPECT_FLOAT_EQ(zlfGetTimerFps(timer), 0.5f);
}

TEST_F(Timers, KeepShortIntervalsAfterALongUptime) {
    const std::int64_t uptime = 400ll * 24 * 3600 * second;
    systemFaults.counter = uptime;
    const int timer = zlfNewTimer(1.0f);
    systemFaults.counter = uptime + second / 1000;
    zlfAdjournTimer(timer);
    EXPECT_FLOAT_EQ(zlfGetTimerFactor(timer), 0.001f);
}

TEST_F(Timers, CountNoTimeAsOneUnit) {
    systemFaults.counter = 7 * second;
    const int timer = zlfNewTimer(30.0f);
    EXPECT_TRUE(zlfAdjournTimer(timer));
    EXPECT_EQ(zlfGetTimerFactor(timer), 1.0f);
    EXPECT_EQ(zlfGetTimerFps(timer), 30.0f);
    systemFaults.counter = 6 * second; // and time that runs backwards
    EXPECT_TRUE(zlfAdjournTimer(timer));
    EXPECT_EQ(zlfGetTimerFactor(timer), 1.0f);
}

TEST_F(Timers, WithANegativeRateHaveAFactorOfOne) {
    systemFaults.counter = 0;
    const int timer = zlfNewTimer(-2.0f);
    systemFaults.counter = second;
    EXPECT_TRUE(zlfAdjournTimer(timer));
    EXPECT_EQ(zlfGetTimerFactor(timer), 1.0f);
    EXPECT_EQ(zlfGetTimerFps(timer), -2.0f);
}

TEST_F(Timers, HoldTheFiguresOfTheirSlotUntilTheFirstAdjourn) {
    systemFaults.counter = 0;
    const int timer = zlfNewTimer(1.0f);
    systemFaults.counter = 8 * second;
    zlfAdjournTimer(timer);
    zlfFreeTimer(timer);
    ASSERT_EQ(zlfNewTimer(100.0f), timer);
    EXPECT_FLOAT_EQ(zlfGetTimerFactor(timer), 8.0f);
    EXPECT_FLOAT_EQ(zlfGetTimerFps(timer), 0.125f);
}

TEST_F(Timers, RefuseABadIndexAndAFreeSlot) {
    zlfNewTimer(1.0f);
    for (const int timer : {-1, 8, 1, 1000000, -2147483647}) {
        zlfFreeTimer(timer);
        EXPECT_LOGGED_EXACTLY("zlfFreeTimer: wrong params\n");
        EXPECT_FALSE(zlfAdjournTimer(timer));
        EXPECT_LOGGED_EXACTLY("zlfAdjournTimer: wrong params\n");
        EXPECT_EQ(zlfGetTimerFactor(timer), -1.0f);
        EXPECT_LOGGED_EXACTLY("zlfGetTimerFactor: wrong params\n");
        EXPECT_EQ(zlfGetTimerFps(timer), -1.0f);
        EXPECT_LOGGED_EXACTLY("zlfGetTimerFps: wrong params\n");
    }
}

TEST_F(Timers, AreAllFreeInANewLog) {
    zlfNewTimer(1.0f);
    zlfNewTimer(1.0f);
    zlfCloseLog();
    ASSERT_TRUE(zlfOpenLog("own.txt"));
    EXPECT_EQ(zlfNewTimer(1.0f), 0);
}

TEST_F(Timers, RunOnTheRealClock) {
    const int timer = zlfNewTimer(1000.0f);
    const timespec pause{0, 20'000'000};
    nanosleep(&pause, nullptr);
    ASSERT_TRUE(zlfAdjournTimer(timer));
    EXPECT_GE(zlfGetTimerFactor(timer), 20.0f);
    EXPECT_LT(zlfGetTimerFactor(timer), 10000.0f);
}

} // namespace
} // namespace ravolt::test
