// The numbers made of frame times, and the key that shows them.

#include "ravolt/kit/frameStatistics.h"

#include <SDL/SDL.h>
#include <gtest/gtest.h>

#include <cmath>

namespace ravolt::kit {
namespace {

TEST(FrameStatistics, NumbersOfAnOddAndOfAnEvenCount) {
    FrameStatistics frames;
    for (const float seconds : {0.5f, 0.1f, 0.3f})
        frames.add(seconds);
    EXPECT_FLOAT_EQ(frames.getMean(), 0.3f);
    EXPECT_FLOAT_EQ(frames.getMedian(), 0.3f);
    EXPECT_FLOAT_EQ(frames.getRate(), 1 / 0.3f);
    frames.add(0.2f);
    EXPECT_FLOAT_EQ(frames.getMean(), 0.275f);
    EXPECT_FLOAT_EQ(frames.getMedian(), 0.25f);
}

TEST(FrameStatistics, PercentilesAreTimesOfNearestRank) {
    FrameStatistics frames;
    for (int i = 200; i >= 1; --i)
        frames.add(static_cast<float>(i));
    EXPECT_EQ(frames.getPercentile(99), 198);
    EXPECT_EQ(frames.getPercentile(99.1f), 199);
    EXPECT_EQ(frames.getPercentile(50), 100);
    EXPECT_EQ(frames.getPercentile(100), 200);
    EXPECT_EQ(frames.getPercentile(0), 1);
    EXPECT_EQ(frames.getPercentile(-3), 1);
    EXPECT_EQ(frames.getPercentile(120), 200);
    EXPECT_EQ(frames.getPercentile(std::nanf("")), 1);
}

TEST(FrameStatistics, TheOldestFramesAreReplaced) {
    FrameStatistics frames(3);
    for (const float seconds : {9.0f, 1.0f, 2.0f, 3.0f})
        frames.add(seconds);
    EXPECT_EQ(frames.getNumberOfFrames(), 3u);
    EXPECT_FLOAT_EQ(frames.getMean(), 2);
    frames.add(7);
    EXPECT_FLOAT_EQ(frames.getMean(), 4);
    frames.clear();
    EXPECT_EQ(frames.getNumberOfFrames(), 0u);
    frames.add(5);
    EXPECT_FLOAT_EQ(frames.getMean(), 5);
    FrameStatistics none(0);
    none.add(1);
    none.add(2);
    EXPECT_FLOAT_EQ(none.getMean(), 2);
}

TEST(FrameStatistics, WhatIsNoDurationIsIgnored) {
    FrameStatistics frames;
    for (const float seconds : {0.0f, -1.0f, std::nanf(""), HUGE_VALF})
        frames.add(seconds);
    EXPECT_EQ(frames.getNumberOfFrames(), 0u);
    EXPECT_EQ(frames.getMean(), 0);
    EXPECT_EQ(frames.getMedian(), 0);
    EXPECT_EQ(frames.getPercentile(99), 0);
    EXPECT_EQ(frames.getRate(), 0);
}

TEST(FrameStatistics, TheTextIsInMilliseconds) {
    FrameStatistics frames;
    frames.add(0.02f);
    frames.add(0.02f);
    frames.add(0.08f);
    EXPECT_EQ(frames.getText(), "25.0 frames/s\nmean 40.00  median 20.00  99% 80.00 ms");
}

TEST(FrameStatistics, AKeyShowsAndHidesThem) {
    SDL_Event event = {};
    event.type = SDL_KEYDOWN;
    event.key.keysym.sym = SDLK_F3;
    FrameStatistics frames, byOther(10, SDLK_f);
    EXPECT_FALSE(frames.isShown());
    EXPECT_TRUE(frames.handle(event));
    EXPECT_TRUE(frames.isShown());
    event.type = SDL_KEYUP;
    EXPECT_FALSE(frames.handle(event));
    EXPECT_TRUE(frames.isShown());
    event.type = SDL_KEYDOWN;
    EXPECT_FALSE(byOther.handle(event));
    EXPECT_TRUE(frames.handle(event));
    EXPECT_FALSE(frames.isShown());
    frames.show(true);
    EXPECT_TRUE(frames.isShown());
}

} // namespace
} // namespace ravolt::kit
