// Switches, clock, ledger and the calls of a frame that need no scene. No display: a silent driver
// stands behind.

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

} // namespace

// --- Switches

TEST_F(RavoltTest, StartValuesAreStated) {
    EXPECT_FALSE(RAVOLT::isActive());
    EXPECT_FALSE(RAVOLT::isWireframed());
    EXPECT_FALSE(RAVOLT::isShadowed());
    EXPECT_FALSE(RAVOLT::isBlooming());
    EXPECT_FALSE(RAVOLT::isHDR());
    EXPECT_EQ(RAVOLT::getVideoMemory(), 0u);
    EXPECT_EQ(RAVOLT::getUsedVideoMemory(), 0u);
    EXPECT_STREQ(RAVOLT::getRVEPath(), "");
    EXPECT_EQ(RAVOLT::getSkybox(), nullptr);
    EXPECT_EQ(RAVOLT::getTimeStamp(), 65536);
    EXPECT_EQ(RAVOLT::getBloomingIntensity(), 1.0f);
    EXPECT_EQ(RAVOLT::getHDRExposure(), 1.0f);
    EXPECT_EQ(RAVOLT::getDOFFocus(), 1.0f);
    EXPECT_EQ(RAVOLT::getDOFRange(), 2.0f);
    EXPECT_EQ(adaptedLuminance(), 1.0f);
}

TEST_F(RavoltTest, SwitchesTurnOnAndOff) {
    const struct {
        void (*on)();
        void (*off)();
        bool (*isOn)();
    } rows[] = {
        {RAVOLT::wireframeOn, RAVOLT::wireframeOff, RAVOLT::isWireframed},
        {RAVOLT::bloomingOn, RAVOLT::bloomingOff, RAVOLT::isBlooming}, // without a guard
        {RAVOLT::HDROn, RAVOLT::HDROff, RAVOLT::isHDR},
    };
    recorder.start();
    for (const auto &row : rows) {
        row.on();
        EXPECT_TRUE(row.isOn());
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

TEST_F(RavoltTest, ShadowingIsIgnoredWithoutTheShadowPrograms) {
    RAVOLT::shadowingOn();
    EXPECT_FALSE(RAVOLT::isShadowed());
    RAVOLT::shadowingOff();
    EXPECT_FALSE(RAVOLT::isShadowed());
    EXPECT_NOTHING_LOGGED();
}

TEST_F(RavoltTest, FiguresOfTheEffectsAreKept) {
    const struct {
        void (*set)(float);
        float (*get)();
        float standard;
    } rows[] = {
        {RAVOLT::setBloomingIntensity, RAVOLT::getBloomingIntensity, 1.0f},
        {RAVOLT::setHDRExposure, RAVOLT::getHDRExposure, 1.0f},
        {RAVOLT::setDOFFocus, RAVOLT::getDOFFocus, 1.0f},
        {RAVOLT::setDOFRange, RAVOLT::getDOFRange, 2.0f},
    };
    float value = -3.5f;
    for (const auto &row : rows)
        row.set(value += 1.25f);
    value = -3.5f;
    for (const auto &row : rows) {
        EXPECT_EQ(row.get(), value += 1.25f);
        row.set(row.standard);
    }
}

TEST_F(RavoltTest, ShadowOffsetIsNothingAtFirstAndKept) {
    EXPECT_EQ(RAVOLT::getShadowOffsetFactor(), 0.0f);
    EXPECT_EQ(RAVOLT::getShadowOffsetUnits(), 0.0f);
    RAVOLT::setShadowOffset(4.5f, -8.0f);
    EXPECT_EQ(RAVOLT::getShadowOffsetFactor(), 4.5f);
    EXPECT_EQ(RAVOLT::getShadowOffsetUnits(), -8.0f);
    RAVOLT::setShadowOffset(0, 0);
}

TEST_F(RavoltTest, SkyboxIsKeptAndNotOwned) {
    RVNODE *sky = new RVNODE;
    RAVOLT::setSkybox(sky);
    EXPECT_EQ(RAVOLT::getSkybox(), sky);
    RAVOLT::setSkybox(nullptr);
    EXPECT_EQ(RAVOLT::getSkybox(), nullptr);
    EXPECT_EQ(RVNODE::findById(sky->getId()), sky);
    delete sky;
}

// --- Video memory

TEST_F(RavoltTest, LedgerAddsSubtractsAndWraps) {
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
    const struct {
        bool color, depth, stencil;
        unsigned int mask;
    } rows[] = {
        {true, false, false, GL_COLOR_BUFFER_BIT},
        {false, true, false, GL_DEPTH_BUFFER_BIT},
        {false, false, true, GL_STENCIL_BUFFER_BIT},
        {true, true, false, GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT},
        {true, true, true, GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT},
    };
    for (const auto &row : rows) {
        recorder.start();
        EXPECT_TRUE(RAVOLT::clear(row.color, row.depth, row.stencil));
        EXPECT_EQ(recorder.stop(), (Calls{{"glClear", row.mask}}));
    }
    EXPECT_TRUE(callsOf([&] { EXPECT_TRUE(RAVOLT::clear(false, false, false)); }).empty());
}

TEST_F(RavoltTest, SwapWaitsForTheGpuBeforeItShowsThePicture) {
    recorder.start();
    EXPECT_TRUE(RAVOLT::swap());
    EXPECT_EQ(recorder.stop(), (Calls{{"glFlush"}, {"glFinish"}, {"SDL_GL_SwapBuffers"}}));
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
    recorder.letPass(0.25);
    RAVOLT::updateTimer();
    EXPECT_FLOAT_EQ(RAVOLT::getFPSfactor(), 0.25f);
    EXPECT_FLOAT_EQ(RAVOLT::getFPS(), 4.0f);
    recorder.letPass(0.5);
    RAVOLT::updateTimer();
    EXPECT_FLOAT_EQ(RAVOLT::getFPSfactor(), 0.25f);

    RAVOLT::swap();
    recorder.letPass(1.25);
    EXPECT_FLOAT_EQ(RAVOLT::getFPSfactor(), 0.25f); // the swap alone does not read the clock
    RAVOLT::updateTimer();
    EXPECT_FLOAT_EQ(RAVOLT::getFPSfactor(), 1.75f); // since the last reading
}

TEST_F(RavoltTest, BothBlocksOfAFrameAdvanceTheClockOnce) {
    recorder.stopClock();
    ASSERT_TRUE(RAVOLT::init(nullptr));
    RAVOLT::swap();
    recorder.letPass(0.25);
    RAVOLT::begin3D(nullptr);
    EXPECT_FLOAT_EQ(RAVOLT::getFPSfactor(), 0.25f);
    RAVOLT::end3D(true);
    recorder.letPass(0.5);
    RAVOLT::begin2D();
    RAVOLT::end2D();
    EXPECT_FLOAT_EQ(RAVOLT::getFPSfactor(), 0.25f);
    RAVOLT::swap();
    recorder.letPass(0.125);
    RAVOLT::begin2D(); // a frame without a 3D block
    EXPECT_FLOAT_EQ(RAVOLT::getFPSfactor(), 0.625f);
    RAVOLT::end2D();
}

TEST_F(RavoltTest, StampRisesByOneInEachThreeDimensionalBlock) {
    ASSERT_TRUE(RAVOLT::init(nullptr));
    const long before = RAVOLT::getTimeStamp();
    RAVOLT::begin3D(nullptr);
    RAVOLT::end3D(true);
    RAVOLT::begin2D();
    RAVOLT::end2D();
    RAVOLT::swap();
    EXPECT_EQ(RAVOLT::getTimeStamp(), before + 1);
}
