// Starts and frees the engine for each test, draws frames and reads their pixels.

#include "tests/support/engineFixture.h"

#include "ravolt/RVANIM.h"
#include "ravolt/RVCAMERA.h"
#include "ravolt/RVFBO.h"
#include "ravolt/RVFONT.h"
#include "ravolt/RVMATERIAL.h"
#include "ravolt/RVNODE.h"
#include "ravolt/RVSHADER.h"
#include "ravolt/RVTEXTURE.h"
#include "ravolt/RVVIDEO.h"
#include "ravolt/zlf.h"
#include "testing/recorderState.h"

#include <GL/gl.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace ravolt::test {
namespace {

bool isSet(const char *variable) {
    const char *value = std::getenv(variable);
    return value && *value;
}

// Packs rows without padding; restores the former alignment at the end.
class ScopedPackAlignment {
  public:
    ScopedPackAlignment() {
        glGetIntegerv(GL_PACK_ALIGNMENT, &before);
        glPixelStorei(GL_PACK_ALIGNMENT, 1);
    }
    ~ScopedPackAlignment() { glPixelStorei(GL_PACK_ALIGNMENT, before); }
    ScopedPackAlignment(const ScopedPackAlignment &) = delete;
    ScopedPackAlignment &operator=(const ScopedPackAlignment &) = delete;

  private:
    GLint before = 4;
};

} // namespace

void expectNothingLeft() {
    EXPECT_EQ(RVNODE::getNumberOfNodes(), 0u);
    EXPECT_EQ(RVMATERIAL::getNumberOfMaterials(), 0u);
    EXPECT_EQ(RVTEXTURE::getNumberOfTextures(), 0u);
    EXPECT_EQ(RVSHADER::getNumberOfShaders(), 0u);
    EXPECT_EQ(RVVIDEO::getNumberOfVideos(), 0u);
    EXPECT_EQ(RVANIM::getNumberOfAnims(), 0u);
    EXPECT_EQ(RVFBO::getNumberOfFbos(), 0u);
    EXPECT_EQ(RVFONT::getNumberOfFonts(), 0u);
    const unsigned int id = zlfNewId();
    EXPECT_EQ(id, 1u) << "the identifiers below it were not released";
    releaseId(id);
}

RVSETTINGS smallSettings() {
    RVSETTINGS settings;
    settings.setTitle("Ravolt test");
    settings.setWindowX(128);
    settings.setWindowY(96);
    settings.setColorDepth(32);
    settings.setZetaDepth(24);
    settings.setFBOSizeX(64);
    settings.setFBOSizeY(48);
    settings.setShadowMapSize(64);
    settings.setWaterSize(64);
    return settings;
}

// The recorder suppresses the known errors where they arise, so a pending one is unknown.
void expectNoGlErrors() {
    if (Recorder::instance().isSilent())
        return;
    ScopedUnrecorded unrecorded;
    for (int number = 0; number < 16; ++number) {
        const GLenum error = pendingError();
        if (error == GL_NO_ERROR)
            return;
        ADD_FAILURE() << "OpenGL error 0x" << std::hex << error;
    }
}

Picture readArea(int x, int y, int width, int height) {
    Picture picture(width, height);
    if (Recorder::instance().isSilent())
        return picture;
    ScopedUnrecorded unrecorded;
    const ScopedPackAlignment unpadded;
    glReadPixels(x, RVSETTINGS::getSDLWindowY() - y - height, width, height, GL_RGBA,
                 GL_UNSIGNED_BYTE, picture.bytes.data());
    const auto row = static_cast<std::ptrdiff_t>(width) * 4;
    for (int upper = 0, lower = height - 1; upper < lower; ++upper, --lower)
        std::swap_ranges(picture.bytes.begin() + upper * row,
                         picture.bytes.begin() + (upper + 1) * row,
                         picture.bytes.begin() + lower * row);
    return picture;
}

Picture readFrame() {
    return readArea(0, 0, RVSETTINGS::getSDLWindowX(), RVSETTINGS::getSDLWindowY());
}

Pixel pixelAt(int x, int y) { return readArea(x, y, 1, 1).at(0, 0); }

void drawFrame(RVCAMERA *camera, RVNODE *root) {
    RAVOLT::clear(true, true, false);
    RAVOLT::begin3D(camera);
    if (root)
        root->pass(true);
    RAVOLT::end3D(true);
}

void drawFrame2D(RVNODE *root) {
    RAVOLT::begin2D();
    if (root)
        root->pass(true);
    RAVOLT::end2D();
}

testing::AssertionResult hasDisplay() {
    const char *driver = std::getenv("SDL_VIDEODRIVER");
    if ((driver && std::strcmp(driver, "x11") != 0) || isSet("DISPLAY"))
        return testing::AssertionSuccess();
    return testing::AssertionFailure()
           << "there is no display: run ./test.sh, which starts one, or start `Xvfb :99 -screen 0 "
              "1280x1024x24 &` and set DISPLAY=:99";
}

void EngineTest::SetUp() {
    if (!recorder.isSilent()) {
        ASSERT_TRUE(hasDisplay());
    }
    zlfSetConsoleEcho(false); // the log file is enough
    ratioBefore = finalMemoryRatio();
    startMark = logMark();
    recorder.suppressUnitErrors();
    ASSERT_TRUE(RAVOLT::init(&settings)) << logText();
    expectNoGlErrors();
    markLog();
}

void EngineTest::TearDown() {
    recorder.allocationsWork();
    EXPECT_EQ(recorderState().driver.faults(), std::vector<std::string>());
    if (RAVOLT::isActive()) {
        expectNoGlErrors();
        EXPECT_TRUE(RAVOLT::free());
    }
    expectNothingLeft();
    EXPECT_EQ(finalMemoryRatio(), ratioBefore) << "blocks allocated less blocks released";
    RecorderTest::TearDown();
}

bool EngineTest::restart() {
    RAVOLT::free();
    return RAVOLT::init(&settings);
}

void SilentEngineTest::SetUp() {
    recorder.silent();
    EngineTest::SetUp();
}

} // namespace ravolt::test
