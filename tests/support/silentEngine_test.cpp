// The engine without a display, as tests of applications start it.

#include "ravolt.h"
#include "ravolt/testing.h"
#include "tests/support/logReader.h"

#include <gtest/gtest.h>

namespace ravolt::test {
namespace {

TEST(SilentEngine, RunsFromItsConstructorToItsDestructor) {
    {
        const SilentEngine engine;
        EXPECT_TRUE(engine.isActive());
        EXPECT_TRUE(RAVOLT::isActive());
        EXPECT_TRUE(CallRecorder::instance().isSilent());
        new RVNODE; // owned by the engine
    }
    EXPECT_FALSE(RAVOLT::isActive());
    EXPECT_FALSE(CallRecorder::instance().isSilent());
    EXPECT_EQ(RVNODE::getNumberOfNodes(), 0u);
}

TEST(SilentEngine, TakesTheSettings) {
    RVSETTINGS settings;
    settings.setWindowX(320);
    const SilentEngine engine(settings);
    EXPECT_EQ(RVSETTINGS::getSDLWindowX(), 320);
}

TEST(SilentEngine, StartsOnTheSimulatedMachine) {
    RVSETTINGS settings;
    settings.setShaders(true);
    CallRecorder::instance().hideExtension("GL_ARB_vertex_shader");
    const SilentEngine engine(settings);
    EXPECT_TRUE(engine.isActive());
    EXPECT_FALSE(RVOPENGL::useShaders());
}

TEST(SilentEngine, ReportsAStartThatFails) {
    CallRecorder::instance().failSetVideoMode("simulated");
    {
        const SilentEngine engine;
        EXPECT_FALSE(engine.isActive());
    }
    const SilentEngine afterwards; // nothing is simulated any more
    EXPECT_TRUE(afterwards.isActive());
}

TEST(SilentEngine, DrawsABoxIntoTheRecording) {
    const SilentEngine engine;
    RVBOX *box = new RVBOX;
    box->setSizes(64, 16);
    const Calls calls = callsOf([&] {
        RAVOLT::begin2D();
        box->pass();
        RAVOLT::end2D();
    });
    EXPECT_TRUE(calls.contains("glDrawArrays")) << calls;
}

} // namespace
} // namespace ravolt::test
