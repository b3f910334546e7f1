// The fixtures that start the engine.

#include "tests/support/engineFixture.h"

#include "ravolt/RVOPENGL.h"
#include "tests/support/realDriver.h"

#include <GL/gl.h>

#include <string>

using namespace ravolt::test;

namespace {

struct EngineFixture : EngineTest {};
struct SilentEngineFixture : SilentEngineTest {};

TEST_F(EngineFixture, StartsTheEngineInASmallWindow) {
    EXPECT_TRUE(RAVOLT::isActive());
    EXPECT_EQ(RVSETTINGS::getSDLWindowX(), width);
    EXPECT_EQ(RVSETTINGS::getSDLWindowY(), height);
    EXPECT_NE(logTextSince(startMark).find("   Initialization complete"), std::string::npos);
    EXPECT_NOTHING_LOGGED();
}

TEST_F(EngineFixture, TheExtensionsOfTheRealDriverAreNotThoseOfTheRecorder) {
    const std::string list = reinterpret_cast<const char *>(glGetString(GL_EXTENSIONS));
    const std::string first = list.substr(0, list.find(' '));
    recorder.hideExtension(first.c_str());
    EXPECT_TRUE(driverHas({first}));
    EXPECT_STREQ(driverHas({first, "GL_RAVOLT_none"}).message(), "the driver lacks GL_RAVOLT_none");
    EXPECT_FALSE(driverHas({"GL_RAVOLT_none", first}));
}

TEST_F(EngineFixture, PixelsAreReadFromTheTopLeft) {
    RVOPENGL::setBackgroundColor(0, 0, 1, 1);
    drawFrame(nullptr, nullptr);
    RVOPENGL::scissorOn();
    glScissor(0, height - 10, 20, 10); // the upper left corner, as OpenGL counts from below
    RVOPENGL::setBackgroundColor(1, 0, 0, 1);
    RAVOLT::clear(true, false, false);
    RVOPENGL::scissorOff();

    const Picture frame = readFrame();
    EXPECT_EQ(frame.width, width);
    const Pixel red{255, 0, 0}, blue{0, 0, 255};
    const struct {
        int x, y;
        Pixel pixel;
    } rows[] = {{0, 0, red}, {19, 9, red}, {20, 9, blue}, {19, 10, blue}};
    for (const auto &row : rows) {
        EXPECT_PIXEL(pixelAt(row.x, row.y), row.pixel, 0);
        EXPECT_EQ(frame.at(row.x, row.y), pixelAt(row.x, row.y));
    }
    EXPECT_EQ(frame.pixelsUnlike(blue), 200u);
}

TEST_F(EngineFixture, RecordsTheEngineBeforeTheRealDriver) {
    RVOPENGL::blendingOff();
    EXPECT_EQ(callsOf([] {
                  RVOPENGL::blendingOn();
                  readFrame(); // is not recorded
              }),
              (Calls{{"glEnable", GL_BLEND}}));
    EXPECT_TRUE(glIsEnabled(GL_BLEND));
    RVOPENGL::blendingOff();
}

// A capability flag once set stays set over a restart, so this hides the extension before the first
// start.
struct EngineWithoutVbo : EngineTest {
    EngineWithoutVbo() { recorder.hideExtension("GL_ARB_vertex_buffer_object"); }
};

TEST_F(EngineWithoutVbo, StartsWithTheOverrides) {
    const std::string start = logTextSince(startMark);
    EXPECT_NE(start.find("   [!] GL_ARB_vertex_buffer_object not found @ RVOPENGL::init\n"),
              std::string::npos);
    EXPECT_FALSE(RVOPENGL::useVBO());
}

TEST_F(EngineFixture, RestartsWithOverrides) {
    recorder.hideExtension("GL_ARB_vertex_buffer_object");
    ASSERT_TRUE(restart());
    EXPECT_LOGGED("   [!] GL_ARB_vertex_buffer_object not found @ RVOPENGL::init");
}

TEST_F(EngineFixture, UnitsBeyondTheFixedFunctionOnesRaiseNoError) {
    SKIP_WITHOUT_EXTENSIONS(multitextureExtensions);
    ASSERT_TRUE(RVOPENGL::glActiveTextureARB);
    RVOPENGL::glActiveTextureARB(GL_TEXTURE0 + 15);
    glEnable(GL_TEXTURE_2D);
    glDisable(GL_TEXTURE_2D);
    RVOPENGL::glActiveTextureARB(GL_TEXTURE0);
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
    glEnable(0xdead);
    RVOPENGL::glActiveTextureARB(GL_TEXTURE0 + 15);
    glEnable(GL_TEXTURE_2D);
    RVOPENGL::glActiveTextureARB(GL_TEXTURE0);
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_INVALID_ENUM));
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
}

TEST_F(SilentEngineFixture, StartsTheEngineWithoutARealDriver) {
    EXPECT_TRUE(RAVOLT::isActive());
    recorder.start();
    drawFrame(nullptr, nullptr);
    RAVOLT::swap();
    EXPECT_TRUE(recorder.stop().haveInOrder(
        {{"glClear", GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT}, {"SDL_GL_SwapBuffers"}}));
    EXPECT_EQ(readFrame().width, width);
}

} // namespace
