// Timers of the foundation.

#include "tests/foundation/ownLog.h"

namespace ravolt::test {
namespace {

using Timers = OwnLog;

constexpr std::int64_t second = 1'000'000'000;

void setCounter(std::int64_t nanoseconds) { ownClock = {true, nanoseconds}; }

TEST_F(Timers, AreMadeFromTheFirstFreeOneOn) {
    EXPECT_EQ(zlfNewTimer(0.0f), 0) << "a rate of zero: stays free";
    EXPECT_FALSE(zlfAdjournTimer(0));
    EXPECT_LOGGED_EXACTLY("zlfAdjournTimer: wrong params\n");
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
    zlfCloseLog();
    ASSERT_TRUE(zlfOpenLog("own.txt"));
    EXPECT_EQ(zlfNewTimer(1.0f), 0) << "all are free in a new log";
}

// Factor and frames a second after an interval.
TEST_F(Timers, MeasureInUnitsOfTheirRate) {
    const struct {
        const char *what;
        float rate;
        std::int64_t from, to;
        float factor, fps;
    } rows[] = {
        {"seconds", 1, 50 * second, 50 * second + second / 4, 0.25f, 4},
        {"sixtieths", 60, 50 * second, 50 * second + second / 4, 15, 4},
        {"a short interval after a long uptime", 1, 400ll * 24 * 3600 * second,
         400ll * 24 * 3600 * second + second / 1000, 0.001f, 1000},
        {"no time counts as one unit", 30, 7 * second, 7 * second, 1, 30},
        {"and time that runs backwards", 30, 7 * second, 6 * second, 1, 30},
        {"a negative rate", -2, 0, second, 1, -2},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.what);
        setCounter(row.from);
        const int timer = zlfNewTimer(row.rate);
        setCounter(row.to);
        EXPECT_TRUE(zlfAdjournTimer(timer));
        EXPECT_FLOAT_EQ(zlfGetTimerFactor(timer), row.factor);
        EXPECT_FLOAT_EQ(zlfGetTimerFps(timer), row.fps);
        zlfFreeTimer(timer);
    }
}

TEST_F(Timers, MeasureFromTheLastAdjourn) {
    setCounter(0);
    const int timer = zlfNewTimer(1.0f);
    setCounter(3 * second);
    zlfAdjournTimer(timer);
    setCounter(11 * second);
    EXPECT_FLOAT_EQ(zlfGetTimerFactor(timer), 3.0f); // no counter is read here
    zlfAdjournTimer(timer);
    EXPECT_FLOAT_EQ(zlfGetTimerFactor(timer), 8.0f);
    zlfFreeTimer(timer);
    ASSERT_EQ(zlfNewTimer(100.0f), timer); // until its first adjourn: the figures of its slot
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
