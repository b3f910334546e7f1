// The recorder with the simulated driver.

#include "tests/support/recorder.h"

#include "ravolt/zlf.h"
#include "tests/support/expectNear.h"
#include "tests/support/glState.h"

#include <GL/gl.h>
#include <GL/glext.h>
#include <SDL/SDL.h>

#include <cstdlib>
#include <memory>
#include <new>
#include <stdexcept>

using namespace ravolt::test;

namespace {

struct SilentRecorder : SilentTest {};

std::string string(GLenum name) { return reinterpret_cast<const char *>(glGetString(name)); }

template <class Function> Function entryPoint(const char *name) {
    return reinterpret_cast<Function>(SDL_GL_GetProcAddress(name));
}

TEST_F(SilentRecorder, NothingIsRecordedBeforeStartAndAfterStop) {
    glEnable(GL_BLEND);
    recorder.start();
    glDisable(GL_BLEND);
    const Calls calls = recorder.stop();
    glEnable(GL_BLEND);
    EXPECT_EQ(calls, (Calls{{"glDisable", GL_BLEND}}));
    EXPECT_TRUE(recorder.calls().empty());
}

TEST_F(SilentRecorder, NumbersAreInTheirOrderAndFloatsCompareAsFloats) {
    const Calls calls = callsOf([] {
        glColor4f(0.1f, 0.2f, 0.3f, 1);
        glOrtho(0, 128, 96, 0, -1, 1);
    });
    EXPECT_EQ(calls, (Calls{{"glColor4f", 0.1, 0.2, 0.3, 1}, {"glOrtho", 0, 128, 96, 0, -1, 1}}));
    EXPECT_FALSE(calls[0] == Call("glColor4f", 0.1, 0.2, 0.3001, 1));
    EXPECT_FALSE(calls[0] == Call("glColor4f", 0.1, 0.2, 0.3));
}

// Element by element; addresses and offsets differ.
TEST_F(SilentRecorder, ShortArraysAndAddressesAreRecorded) {
    const GLfloat four[4] = {1, 2, 3, 4};
    const GLuint names[2] = {7, 9};
    GLuint made[2] = {};
    const Calls calls = callsOf([&] {
        glColor4fv(four);
        glLightfv(GL_LIGHT1, GL_POSITION, four);
        glLightfv(GL_LIGHT1, GL_SPOT_DIRECTION, four);
        glMaterialfv(GL_FRONT, GL_SHININESS, four);
        glDeleteTextures(2, names);
        glVertexPointer(3, GL_FLOAT, 0, four);
        glVertexPointer(3, GL_FLOAT, 0, reinterpret_cast<const void *>(24));
        glVertexPointer(3, GL_FLOAT, 0, nullptr);
        glGenTextures(2, made);
    });
    EXPECT_EQ(calls, (Calls{{"glColor4fv", 1, 2, 3, 4},
                            {"glLightfv", GL_LIGHT1, GL_POSITION, 1, 2, 3, 4},
                            {"glLightfv", GL_LIGHT1, GL_SPOT_DIRECTION, 1, 2, 3},
                            {"glMaterialfv", GL_FRONT, GL_SHININESS, 1},
                            {"glDeleteTextures", 2, 7, 9},
                            {"glVertexPointer", 3, GL_FLOAT, 0, anyAddress},
                            {"glVertexPointer", 3, GL_FLOAT, 0, 24},
                            {"glVertexPointer", 3, GL_FLOAT, 0, 0},
                            {"glGenTextures", 2, made[0], made[1]}}));
    EXPECT_NE(made[0], 0u);
    EXPECT_NE(made[0], made[1]);
}

TEST_F(SilentRecorder, FailuresNameEnumerants) {
    EXPECT_EQ((Calls{{"glEnable", GL_BLEND},
                     {"glBegin", GL_QUADS},
                     {"glViewport", 0, 0, 1024, 768},
                     {"glClear", GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT},
                     {"glVertexPointer", 3, GL_FLOAT, 0, anyAddress}})
                  .text(),
              "glEnable(GL_BLEND)\nglBegin(GL_QUADS)\nglViewport(0, 0, 1024, 768)\n"
              "glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT)\n"
              "glVertexPointer(3, GL_FLOAT, 0, (address))\n");
}

TEST_F(SilentRecorder, MarksDivideTheCalls) {
    recorder.start();
    glFlush();
    recorder.mark("a");
    glFinish();
    recorder.mark("b");
    glFlush();
    const Calls calls = recorder.stop();
    EXPECT_EQ(calls.between("a", "b"), (Calls{{"glFinish"}}));
    EXPECT_EQ(calls.since("b"), (Calls{{"glFlush"}}));
    EXPECT_EQ(calls.named("glFlush").size(), 2u);
    EXPECT_EQ(calls.count(Call("glFinish")), 1u);
    EXPECT_TRUE(calls.haveInOrder({{"glFlush"}, {"glFinish"}, {"glFlush"}}));
    EXPECT_FALSE(calls.haveInOrder({{"glFinish"}, {"glFinish"}}));
    EXPECT_EQ(
        calls.haveInOrder({{"glFinish"}, {"glFinish"}}).explanation,
        "call 1, glFinish() is missing; after the call before it come\n--- mark: b\nglFlush()\n");
    EXPECT_THROW(calls.since("c"), std::out_of_range);
    EXPECT_THROW(calls.between("b", "a"), std::out_of_range);
}

TEST_F(SilentRecorder, AssertionsOfGoogleTestHaveTheExplanation) {
    const testing::AssertionResult failed(Calls().haveInOrder({{"glFlush"}}));
    EXPECT_FALSE(failed);
    EXPECT_NE(std::string(failed.message()).find("glFlush() is missing"), std::string::npos);
    EXPECT_TRUE(testing::AssertionResult(Calls().haveInOrder({})));
}

TEST_F(SilentRecorder, ExtensionFunctionsRecordTheirCalls) {
    const auto bind = entryPoint<PFNGLBINDBUFFERARBPROC>("glBindBufferARB");
    const auto generate = entryPoint<PFNGLGENBUFFERSARBPROC>("glGenBuffersARB");
    ASSERT_TRUE(bind && generate);
    GLuint name = 0;
    recorder.start();
    generate(1, &name);
    bind(GL_ARRAY_BUFFER_ARB, name);
    EXPECT_EQ(recorder.stop(), (Calls{{"glGenBuffersARB", 1, name},
                                      {"glBindBufferARB", GL_ARRAY_BUFFER_ARB, name}}));
    EXPECT_NE(name, 0u);
    EXPECT_EQ(SDL_GL_GetProcAddress("glNoSuchFunction"), nullptr);
    recorder.nullEntryPoint("glBindBufferARB");
    EXPECT_EQ(SDL_GL_GetProcAddress("glBindBufferARB"), nullptr);
    EXPECT_NE(SDL_GL_GetProcAddress("glBufferDataARB"), nullptr);
}

TEST_F(SilentRecorder, HidingAnExtensionHidesLongerNames) {
    recorder.setExtensions("GL_ARB_shadow GL_ARB_shadow_ambient GL_ARB_multitexture");
    EXPECT_NE(string(GL_EXTENSIONS).find("GL_ARB_shadow"), std::string::npos);
    recorder.hideExtension("GL_ARB_shadow");
    EXPECT_EQ(string(GL_EXTENSIONS), "GL_ARB_multitexture ");
}

TEST_F(SilentRecorder, OverridesValuesOfTheDriver) {
    recorder.setVendor("ATI Technologies");
    recorder.setTextureUnits(8);
    GLint units = 0;
    glGetIntegerv(GL_MAX_TEXTURE_IMAGE_UNITS_ARB, &units);
    EXPECT_EQ(string(GL_VENDOR), "ATI Technologies");
    EXPECT_EQ(units, 8);
    recorder.reset();
    recorder.silent();
    glGetIntegerv(GL_MAX_TEXTURE_IMAGE_UNITS_ARB, &units);
    EXPECT_EQ(string(GL_VENDOR), "Nobody");
    EXPECT_EQ(units, 16);
}

TEST_F(SilentRecorder, OverridesResultsOfSdl) {
    EXPECT_EQ(SDL_Init(SDL_INIT_VIDEO), 0);
    recorder.failSdlInit("nothing plugged in");
    EXPECT_EQ(SDL_Init(SDL_INIT_VIDEO), -1);
    EXPECT_STREQ(SDL_GetError(), "nothing plugged in");

    EXPECT_NE(SDL_VideoModeOK(128, 96, 16, SDL_OPENGL), 0);
    recorder.failVideoModeCheck();
    EXPECT_EQ(SDL_VideoModeOK(128, 96, 16, SDL_OPENGL), 0);

    EXPECT_NE(SDL_SetVideoMode(128, 96, 16, SDL_OPENGL), nullptr);
    recorder.failSetVideoMode("too small");
    EXPECT_EQ(SDL_SetVideoMode(128, 96, 16, SDL_OPENGL), nullptr);
    EXPECT_STREQ(SDL_GetError(), "too small");

    EXPECT_EQ(SDL_GetVideoInfo()->video_mem, 0u);
    recorder.videoMemory(4096);
    EXPECT_EQ(SDL_GetVideoInfo()->video_mem, 4096u);

    recorder.channelSizes(5, 6, 5, 0);
    int green = 0;
    EXPECT_EQ(SDL_GL_GetAttribute(SDL_GL_GREEN_SIZE, &green), 0);
    EXPECT_EQ(green, 6);

    char name[64] = {};
    EXPECT_STREQ(SDL_VideoDriverName(name, sizeof name), "silent");
    recorder.driverName("x11");
    EXPECT_STREQ(SDL_VideoDriverName(name, 3), "x1");
}

TEST_F(SilentRecorder, FailingFunctionsReturnZeroAfterTheStatedNumberOfCalls) {
    const auto create = entryPoint<PFNGLCREATESHADEROBJECTARBPROC>("glCreateShaderObjectARB");
    recorder.failCalls("glCreateShaderObjectARB", 1, 1);
    EXPECT_NE(create(GL_VERTEX_SHADER_ARB), 0u);
    EXPECT_EQ(create(GL_VERTEX_SHADER_ARB), 0u);
    EXPECT_NE(create(GL_VERTEX_SHADER_ARB), 0u);
}

TEST_F(SilentRecorder, FakePixelsAreReadOnceEach) {
    recorder.fakeReadPixels({1, 2, 3, 4});
    recorder.fakeReadPixels({5, 6, 7, 8});
    for (const int first : {1, 5, 0}) {
        unsigned char pixel[4] = {};
        glReadPixels(0, 0, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, pixel);
        EXPECT_EQ(pixel[0], first);
    }
}

TEST_F(SilentRecorder, MatricesMultiplyFromTheRightAsOpenGLHasThem) {
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    glTranslatef(1, 2, 3);
    glPushMatrix();
    glRotatef(90, 0, 0, 1);
    glTranslatef(4, 0, 0);
    const auto expectMatrix = [](const std::array<float, 16> &expected) {
        expectNear(matrixOf(GL_MODELVIEW_MATRIX), expected, 1e-6);
    };
    expectMatrix({0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 1, 0, 1, 6, 3, 1});
    glPopMatrix();
    expectMatrix({1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 1, 2, 3, 1});
}

TEST_F(SilentRecorder, ViewportAndSwitchesAreStored) {
    glViewport(1, 2, 30, 40);
    EXPECT_EQ(viewportNow(), (std::array{1, 2, 30, 40}));
    EXPECT_FALSE(glIsEnabled(GL_LIGHTING));
    glEnable(GL_LIGHTING);
    EXPECT_TRUE(glIsEnabled(GL_LIGHTING));
}

TEST_F(SilentRecorder, LargeAllocationsFailOnDemand) {
    // Through volatile pointers, or the compiler removes the pairs.
    void *(*volatile allocate)(std::size_t) = std::malloc;
    recorder.failAllocation(1000, 1, 1);
    void *small = allocate(999), *first = allocate(1000), *second = allocate(1000),
         *third = allocate(1000);
    EXPECT_TRUE(small);
    EXPECT_TRUE(first);
    EXPECT_FALSE(second);
    EXPECT_TRUE(third);
    std::free(small), std::free(first), std::free(third);

    recorder.failAllocation(1000);
    EXPECT_FALSE(std::unique_ptr<char[]>(new (std::nothrow) char[1000]));
    EXPECT_THROW(std::make_unique<char[]>(1000), std::bad_alloc);
    recorder.allocationsWork();
    EXPECT_TRUE(std::unique_ptr<char[]>(new (std::nothrow) char[1000]));
}

TEST_F(SilentRecorder, TheClockIsStoppedAndAdvancedByTheTest) {
    recorder.stopClock();
    const int timer = zlfNewTimer(1);
    recorder.advanceClock(0.25);
    zlfAdjournTimer(timer);
    EXPECT_EQ(zlfGetTimerFactor(timer), 0.25f);
    recorder.advanceClock(3);
    zlfAdjournTimer(timer);
    EXPECT_EQ(zlfGetTimerFactor(timer), 3);
    recorder.reset();
    zlfAdjournTimer(timer);
    EXPECT_LT(zlfGetTimerFactor(timer), 3);
    zlfFreeTimer(timer);
}

TEST_F(SilentRecorder, AllocationsAreCounted) {
    const unsigned long before = recorder.allocations();
    auto *volatile allocated = new int(3);
    EXPECT_EQ(recorder.allocations(), before + 1);
    delete allocated;
}

} // namespace
