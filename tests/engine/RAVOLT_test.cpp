// Switches, clock, the count of video memory and the calls of a frame that need no scene. No
// display: the driver is silent.

#include "ravolt/RAVOLT.h"

#include "ravolt/RVNODE.h"
#include "tests/engine/adaptedLuminance.h"
#include "tests/support/logReader.h"
#include "tests/support/recorder.h"

#include <GL/gl.h>

#include <gtest/gtest.h>

#include <string>

using namespace ravolt::test;

namespace {

class RavoltTest : public SilentTest {
  protected:
    void SetUp() override {
        SilentTest::SetUp();
        markLog();
    }
    void TearDown() override {
        RAVOLT::free();
        SilentTest::TearDown();
    }
};

TEST_F(RavoltTest, FrameDurationReplacesTheMeasuredOneUntilItIsZero) {
    recorder.stopClock();
    ASSERT_TRUE(RAVOLT::init(nullptr));
    EXPECT_EQ(RAVOLT::getFrameDuration(), 0.0f);
    const float measured = RAVOLT::getFPSfactor();
    RAVOLT::setFrameDuration(0.04f);
    EXPECT_EQ(RAVOLT::getFrameDuration(), 0.04f);
    EXPECT_EQ(RAVOLT::getFPSfactor(), 0.04f);
    EXPECT_FLOAT_EQ(RAVOLT::getFPS(), 25.0f);
    RAVOLT::setFrameDuration(-1.0f);
    EXPECT_EQ(RAVOLT::getFrameDuration(), 0.0f);
    EXPECT_EQ(RAVOLT::getFPSfactor(), measured);
}

} // namespace

// --- Switches

TEST_F(RavoltTest, StartValuesAreStated) {
    for (bool (*is)() : {RAVOLT::isActive, RAVOLT::isWireframed, RAVOLT::isShadowed,
                         RAVOLT::isBlooming, RAVOLT::isHDR})
        EXPECT_FALSE(is());
    EXPECT_EQ(RAVOLT::getVideoMemory(), 0u);
    EXPECT_EQ(RAVOLT::getUsedVideoMemory(), 0u);
    EXPECT_STREQ(RAVOLT::getRVEPath(), "");
    EXPECT_EQ(RAVOLT::getSkybox(), nullptr);
    EXPECT_EQ(RAVOLT::getTimeStamp(), 65536);
    EXPECT_EQ(adaptedLuminance(), 1.0f);
}

TEST_F(RavoltTest, SwitchesTurnOnAndOffWithoutCallsAndShadowingNeedsItsPrograms) {
    const struct {
        void (*on)();
        void (*off)();
        bool (*isOn)();
        bool wanted = true;
    } rows[] = {
        {RAVOLT::wireframeOn, RAVOLT::wireframeOff, RAVOLT::isWireframed},
        {RAVOLT::bloomingOn, RAVOLT::bloomingOff, RAVOLT::isBlooming}, // without a guard
        {RAVOLT::HDROn, RAVOLT::HDROff, RAVOLT::isHDR},
        {RAVOLT::shadowingOn, RAVOLT::shadowingOff, RAVOLT::isShadowed, false},
    };
    recorder.start();
    for (const auto &row : rows) {
        row.on();
        EXPECT_EQ(row.isOn(), row.wanted);
        row.off();
        EXPECT_FALSE(row.isOn());
    }
    RAVOLT::DOFOn();
    RAVOLT::DOFOff();
    RAVOLT::skipShadowsGeneration();
    RAVOLT::updateVideo();
    EXPECT_TRUE(recorder.stop().empty());
    EXPECT_NOTHING_LOGGED();
}

TEST_F(RavoltTest, ParametersOfTheEffectsHaveDefaultsAndAreStored) {
    const struct {
        void (*set)(float);
        float (*get)();
        float standard;
    } rows[] = {
        {RAVOLT::setBloomingIntensity, RAVOLT::getBloomingIntensity, 1.0f},
        {RAVOLT::setHDRExposure, RAVOLT::getHDRExposure, 1.0f},
        {RAVOLT::setDOFFocus, RAVOLT::getDOFFocus, 1.0f},
        {RAVOLT::setDOFRange, RAVOLT::getDOFRange, 2.0f},
        {[](float value) { RAVOLT::setShadowOffset(value, RAVOLT::getShadowOffsetUnits()); },
         RAVOLT::getShadowOffsetFactor, 0.0f},
        {[](float value) { RAVOLT::setShadowOffset(RAVOLT::getShadowOffsetFactor(), value); },
         RAVOLT::getShadowOffsetUnits, 0.0f},
    };
    float value = -3.5f;
    for (const auto &row : rows) {
        EXPECT_EQ(row.get(), row.standard);
        row.set(value += 1.25f);
    }
    value = -3.5f;
    for (const auto &row : rows) {
        EXPECT_EQ(row.get(), value += 1.25f);
        row.set(row.standard);
    }
}

TEST_F(RavoltTest, SkyboxIsStoredAndNotOwned) {
    RVNODE *sky = new RVNODE;
    RAVOLT::setSkybox(sky);
    EXPECT_EQ(RAVOLT::getSkybox(), sky);
    RAVOLT::setSkybox(nullptr);
    EXPECT_EQ(RAVOLT::getSkybox(), nullptr);
    EXPECT_EQ(RVNODE::findById(sky->getId()), sky);
    delete sky;
}

// --- Video memory

TEST_F(RavoltTest, UsedVideoMemoryAddsSubtractsAndWraps) {
    ASSERT_EQ(RAVOLT::getUsedVideoMemory(), 0u);
    EXPECT_EQ(RAVOLT::pushVideoMemory(1000), 1000u);
    EXPECT_EQ(RAVOLT::pushVideoMemory(24), 1024u);
    EXPECT_EQ(RAVOLT::getUsedVideoMemory(), 1024u);
    EXPECT_EQ(RAVOLT::getFreeVideoMemory(), RAVOLT::getVideoMemory() - 1024u);
    EXPECT_EQ(RAVOLT::popVideoMemory(1025), 4294967295u);
    EXPECT_EQ(RAVOLT::getFreeVideoMemory(), RAVOLT::getVideoMemory() + 1u);
    EXPECT_EQ(RAVOLT::pushVideoMemory(1), 0u);
    EXPECT_NOTHING_LOGGED();
}

TEST_F(RavoltTest, FreeVideoMemoryWrapsWhenMoreIsChargedThanThereIs) {
    recorder.videoMemory(64);
    ASSERT_TRUE(RAVOLT::init(nullptr));
    const unsigned int used = RAVOLT::getUsedVideoMemory();
    RAVOLT::pushVideoMemory(64 * 1024 + 1);
    EXPECT_EQ(RAVOLT::getFreeVideoMemory(), 4294967295u - used);
    RAVOLT::popVideoMemory(64 * 1024 + 1);
}

// --- Clear and swap

TEST_F(RavoltTest, ClearBuildsTheMaskAndClearsNothingForNothing) {
    for (unsigned int bits = 0; bits < 8; ++bits) {
        const bool color = bits & 1, depth = bits & 2, stencil = bits & 4;
        const unsigned int mask = (color ? GL_COLOR_BUFFER_BIT : 0u) |
                                  (depth ? GL_DEPTH_BUFFER_BIT : 0u) |
                                  (stencil ? GL_STENCIL_BUFFER_BIT : 0u);
        EXPECT_EQ(callsOf([&] { EXPECT_TRUE(RAVOLT::clear(color, depth, stencil)); }),
                  mask ? Calls({{"glClear", mask}}) : Calls());
    }
}

TEST_F(RavoltTest, SwapWaitsForTheGpuBeforeItShowsThePicture) {
    EXPECT_EQ(callsOf([] { EXPECT_TRUE(RAVOLT::swap()); }),
              (Calls{{"glFlush"}, {"glFinish"}, {"SDL_GL_SwapBuffers"}}));
}

// --- The clock

TEST_F(RavoltTest, ClockOfAStoppedEngineIsLoggedAndMinusOne) {
    RAVOLT::updateTimer();
    EXPECT_LOGGED_EXACTLY("zlfAdjournTimer: wrong params\n");
    EXPECT_EQ(RAVOLT::getFPSfactor(), -1.0f);
    EXPECT_EQ(RAVOLT::getFPS(), -1.0f);
    EXPECT_LOGGED_EXACTLY("zlfGetTimerFactor: wrong params\n"
                          "zlfGetTimerFps: wrong params\n");
}

TEST_F(RavoltTest, ClockAdvancesOnceInAFrame) {
    recorder.stopClock();
    ASSERT_TRUE(RAVOLT::init(nullptr));
    RAVOLT::swap();
    recorder.advanceClock(0.25);
    RAVOLT::updateTimer();
    EXPECT_FLOAT_EQ(RAVOLT::getFPSfactor(), 0.25f);
    EXPECT_FLOAT_EQ(RAVOLT::getFPS(), 4.0f);
    recorder.advanceClock(0.5);
    RAVOLT::updateTimer();
    EXPECT_FLOAT_EQ(RAVOLT::getFPSfactor(), 0.25f);

    RAVOLT::swap();
    recorder.advanceClock(1.25);
    EXPECT_FLOAT_EQ(RAVOLT::getFPSfactor(), 0.25f); // the swap alone does not read the clock
    RAVOLT::updateTimer();
    EXPECT_FLOAT_EQ(RAVOLT::getFPSfactor(), 1.75f); // since the last reading
}

TEST_F(RavoltTest, BothBlocksOfAFrameAdvanceTheClockOnceAndOnlyThe3DOneTheStamp) {
    recorder.stopClock();
    ASSERT_TRUE(RAVOLT::init(nullptr));
    RAVOLT::swap();
    const long stamp = RAVOLT::getTimeStamp();
    recorder.advanceClock(0.25);
    RAVOLT::begin3D(nullptr);
    EXPECT_FLOAT_EQ(RAVOLT::getFPSfactor(), 0.25f);
    RAVOLT::end3D(true);
    recorder.advanceClock(0.5);
    RAVOLT::begin2D();
    RAVOLT::end2D();
    EXPECT_FLOAT_EQ(RAVOLT::getFPSfactor(), 0.25f);
    RAVOLT::swap();
    recorder.advanceClock(0.125);
    RAVOLT::begin2D(); // a frame without a 3D block
    EXPECT_FLOAT_EQ(RAVOLT::getFPSfactor(), 0.625f);
    RAVOLT::end2D();
    EXPECT_EQ(RAVOLT::getTimeStamp(), stamp + 1);
}
