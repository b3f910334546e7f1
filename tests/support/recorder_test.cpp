#include "tests/support/recorder.h"

#include "ravolt/zlf.h"

#include <GL/gl.h>
#include <GL/glext.h>
#include <SDL/SDL.h>

#include <cstdlib>
#include <memory>
#include <new>

using namespace ravolt::test;

namespace {

struct RecorderInSilence : SilentTest {};

std::string string(GLenum name) { return reinterpret_cast<const char *>(glGetString(name)); }

template <class Function> Function entryPoint(const char *name) {
    return reinterpret_cast<Function>(SDL_GL_GetProcAddress(name));
}

TEST_F(RecorderInSilence, NothingIsRecordedBeforeStartAndAfterStop) {
    glEnable(GL_BLEND);
    recorder.start();
    glDisable(GL_BLEND);
    const Calls calls = recorder.stop();
    glEnable(GL_BLEND);
    EXPECT_EQ(calls, (Calls{{"glDisable", GL_BLEND}}));
    EXPECT_TRUE(recorder.calls().empty());
}

TEST_F(RecorderInSilence, NumbersStandInTheirOrderAndFloatsCompareAsFloats) {
    recorder.start();
    glColor4f(0.1f, 0.2f, 0.3f, 1);
    glOrtho(0, 128, 96, 0, -1, 1);
    const Calls calls = recorder.stop();
    EXPECT_EQ(calls, (Calls{{"glColor4f", 0.1, 0.2, 0.3, 1}, {"glOrtho", 0, 128, 96, 0, -1, 1}}));
    EXPECT_FALSE(calls ==
                 (Calls{{"glColor4f", 0.1, 0.2, 0.3001, 1}, {"glOrtho", 0, 128, 96, 0, -1, 1}}));
    EXPECT_FALSE(calls[0] == Call("glColor4f", 0.1, 0.2, 0.3));
}

TEST_F(RecorderInSilence, ShortArraysStandElementByElement) {
    const GLfloat four[4] = {1, 2, 3, 4};
    const GLuint names[2] = {7, 9};
    recorder.start();
    glColor4fv(four);
    glLightfv(GL_LIGHT1, GL_POSITION, four);
    glLightfv(GL_LIGHT1, GL_SPOT_DIRECTION, four);
    glMaterialfv(GL_FRONT, GL_SHININESS, four);
    glDeleteTextures(2, names);
    EXPECT_EQ(recorder.stop(), (Calls{{"glColor4fv", 1, 2, 3, 4},
                                      {"glLightfv", GL_LIGHT1, GL_POSITION, 1, 2, 3, 4},
                                      {"glLightfv", GL_LIGHT1, GL_SPOT_DIRECTION, 1, 2, 3},
                                      {"glMaterialfv", GL_FRONT, GL_SHININESS, 1},
                                      {"glDeleteTextures", 2, 7, 9}}));
}

TEST_F(RecorderInSilence, AddressesAreToldFromOffsets) {
    const GLfloat three[3] = {};
    recorder.start();
    glVertexPointer(3, GL_FLOAT, 0, three);
    glVertexPointer(3, GL_FLOAT, 0, reinterpret_cast<const void *>(24));
    glVertexPointer(3, GL_FLOAT, 0, nullptr);
    EXPECT_EQ(recorder.stop(), (Calls{{"glVertexPointer", 3, GL_FLOAT, 0, anyAddress},
                                      {"glVertexPointer", 3, GL_FLOAT, 0, 24},
                                      {"glVertexPointer", 3, GL_FLOAT, 0, 0}}));
}

TEST_F(RecorderInSilence, MadeNamesAreFreshAndRecorded) {
    GLuint names[2] = {};
    recorder.start();
    glGenTextures(2, names);
    const Calls calls = recorder.stop();
    EXPECT_NE(names[0], 0u);
    EXPECT_NE(names[0], names[1]);
    EXPECT_EQ(calls, (Calls{{"glGenTextures", 2, names[0], names[1]}}));
}

TEST_F(RecorderInSilence, FailuresNameEnumerants) {
    EXPECT_EQ(testing::PrintToString(Call("glEnable", GL_BLEND)), "glEnable(GL_BLEND)");
    EXPECT_EQ(testing::PrintToString(Call("glBegin", GL_QUADS)), "glBegin(GL_QUADS)");
    EXPECT_EQ(testing::PrintToString(Call("glViewport", 0, 0, 1024, 768)),
              "glViewport(0, 0, 1024, 768)");
    EXPECT_EQ(testing::PrintToString(Call("glClear", GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT)),
              "glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT)");
    EXPECT_EQ(testing::PrintToString(Call("glVertexPointer", 3, GL_FLOAT, 0, anyAddress)),
              "glVertexPointer(3, GL_FLOAT, 0, (address))");
}

TEST_F(RecorderInSilence, MarksCutTheCalls) {
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
}

TEST_F(RecorderInSilence, ExtensionFunctionsRecordTheirCalls) {
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
}

TEST_F(RecorderInSilence, EntryPointsCanBeMissing) {
    recorder.nullEntryPoint("glBindBufferARB");
    EXPECT_EQ(SDL_GL_GetProcAddress("glBindBufferARB"), nullptr);
    EXPECT_NE(SDL_GL_GetProcAddress("glBufferDataARB"), nullptr);
}

TEST_F(RecorderInSilence, HiddenExtensionsTakeLongerNamesWithThem) {
    recorder.setExtensions("GL_ARB_shadow GL_ARB_shadow_ambient GL_ARB_multitexture");
    EXPECT_NE(string(GL_EXTENSIONS).find("GL_ARB_shadow"), std::string::npos);
    recorder.hideExtension("GL_ARB_shadow");
    EXPECT_EQ(string(GL_EXTENSIONS), "GL_ARB_multitexture ");
}

TEST_F(RecorderInSilence, DriverLies) {
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

TEST_F(RecorderInSilence, SdlLies) {
    EXPECT_EQ(SDL_Init(SDL_INIT_VIDEO), 0);
    recorder.failSdlInit("nothing plugged in");
    EXPECT_EQ(SDL_Init(SDL_INIT_VIDEO), -1);
    EXPECT_STREQ(SDL_GetError(), "nothing plugged in");

    EXPECT_NE(SDL_VideoModeOK(128, 96, 16, SDL_OPENGL), 0);
    recorder.refuseVideoMode();
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

TEST_F(RecorderInSilence, RefusedFunctionsGiveZeroAfterTheStatedNumberOfCalls) {
    const auto create = entryPoint<PFNGLCREATESHADEROBJECTARBPROC>("glCreateShaderObjectARB");
    recorder.refuse("glCreateShaderObjectARB", 1, 1);
    EXPECT_NE(create(GL_VERTEX_SHADER_ARB), 0u);
    EXPECT_EQ(create(GL_VERTEX_SHADER_ARB), 0u);
    EXPECT_NE(create(GL_VERTEX_SHADER_ARB), 0u);
}

TEST_F(RecorderInSilence, PixelsAreAnsweredOnceEach) {
    recorder.answerReadPixels({1, 2, 3, 4});
    recorder.answerReadPixels({5, 6, 7, 8});
    unsigned char pixel[4] = {};
    glReadPixels(0, 0, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, pixel);
    EXPECT_EQ(pixel[3], 4);
    glReadPixels(0, 0, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, pixel);
    EXPECT_EQ(pixel[0], 5);
    glReadPixels(0, 0, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, pixel);
    EXPECT_EQ(pixel[0], 0);
}

TEST_F(RecorderInSilence, MatricesMultiplyFromTheRightAsOpenGLHasThem) {
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    glTranslatef(1, 2, 3);
    glPushMatrix();
    glRotatef(90, 0, 0, 1);
    glTranslatef(4, 0, 0);
    GLfloat m[16] = {};
    glGetFloatv(GL_MODELVIEW_MATRIX, m);
    EXPECT_NEAR(m[0], 0, 1e-6);
    EXPECT_NEAR(m[1], 1, 1e-6);
    EXPECT_NEAR(m[4], -1, 1e-6);
    EXPECT_NEAR(m[12], 1, 1e-6);
    EXPECT_NEAR(m[13], 6, 1e-6);
    EXPECT_NEAR(m[14], 3, 1e-6);
    glPopMatrix();
    glGetFloatv(GL_MODELVIEW_MATRIX, m);
    EXPECT_EQ(m[12], 1);
    EXPECT_EQ(m[13], 2);
}

TEST_F(RecorderInSilence, ViewportAndSwitchesAreKept) {
    glViewport(1, 2, 30, 40);
    GLint viewport[4] = {};
    glGetIntegerv(GL_VIEWPORT, viewport);
    EXPECT_EQ(viewport[0], 1);
    EXPECT_EQ(viewport[3], 40);
    EXPECT_FALSE(glIsEnabled(GL_LIGHTING));
    glEnable(GL_LIGHTING);
    EXPECT_TRUE(glIsEnabled(GL_LIGHTING));
}

TEST_F(RecorderInSilence, LargeAllocationsFailOnDemand) {
    // Through pointers that the compiler can not see through, or it leaves the pairs out.
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

TEST_F(RecorderInSilence, TheClockStandsStillButForWhatIsLetPass) {
    recorder.stopClock();
    const int timer = zlfNewTimer(1);
    recorder.letPass(0.25);
    zlfAdjournTimer(timer);
    EXPECT_EQ(zlfGetTimerFactor(timer), 0.25f);
    recorder.letPass(3);
    zlfAdjournTimer(timer);
    EXPECT_EQ(zlfGetTimerFactor(timer), 3);
    recorder.reset();
    zlfAdjournTimer(timer);
    EXPECT_LT(zlfGetTimerFactor(timer), 3);
    zlfFreeTimer(timer);
}

TEST_F(RecorderInSilence, AllocationsAreCounted) {
    const unsigned long before = recorder.allocations();
    auto *volatile kept = new int(3);
    EXPECT_EQ(recorder.allocations(), before + 1);
    delete kept;
}

} // namespace
