// RVSETTINGS as it opens the window: the SDL calls and their order, the splash, the log, the
// applied settings. No display: the driver is silent.

#include "engine/app/splash.h"
#include "ravolt/RAVOLT.h"
#include "ravolt/RVANIM.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVSETTINGS.h"
#include "ravolt/RVTEXTURE.h"
#include "tests/support/logReader.h"
#include "tests/support/recorder.h"

#include <GL/gl.h>
#include <GL/glext.h>
#include <SDL/SDL.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <utility>

using namespace ravolt::test;

namespace {

const std::string banner = "Ravolt 3D Graphics Engine for PC v1.6.6a (debug)";

class WindowTest : public SilentTest {
  protected:
    void SetUp() override {
        SilentTest::SetUp();
        recorder.channelSizes(8, 8, 8, 0);
        markLog();
    }
    void TearDown() override {
        RAVOLT::free();
        SilentTest::TearDown();
    }

    // The calls of a start, and its result.
    Calls start() {
        return callsOf([&] { started = RAVOLT::init(&settings); });
    }

    // The lines about multisampling.
    std::vector<std::string> problems() const {
        std::vector<std::string> lines = problemsSince(beginning);
        std::erase_if(lines, [](const std::string &line) {
            return line.find("multisampling") == std::string::npos;
        });
        return lines;
    }

    const LogMark beginning = markLog();
    RVSETTINGS settings;
    bool started = false;
};

// The first call of this name; the test fails when there is none.
Call firstOf(const Calls &calls, const std::string &name) {
    const Calls found = calls.named(name);
    if (found.empty()) {
        ADD_FAILURE() << name << " was not called";
        return Call("");
    }
    return found[0];
}

} // namespace

// --- The order of a start

TEST_F(WindowTest, CallsSdlInItsOrder) {
    const Calls calls = start().where([](const Call &call) {
        return call.name.rfind("SDL_", 0) == 0 && call.name != "SDL_GL_GetProcAddress";
    });
    ASSERT_TRUE(started);
    const Calls wanted{
        {"SDL_Init", SDL_INIT_VIDEO},
        {"SDL_VideoModeOK", 640, 480, 16, SDL_OPENGL},
        {"SDL_GL_LoadLibrary"},
        {"SDL_GL_SetAttribute", SDL_GL_RED_SIZE, 5},
        {"SDL_GL_SetAttribute", SDL_GL_GREEN_SIZE, 5},
        {"SDL_GL_SetAttribute", SDL_GL_BLUE_SIZE, 5},
        {"SDL_GL_SetAttribute", SDL_GL_ACCUM_RED_SIZE, 0},
        {"SDL_GL_SetAttribute", SDL_GL_ACCUM_GREEN_SIZE, 0},
        {"SDL_GL_SetAttribute", SDL_GL_ACCUM_BLUE_SIZE, 0},
        {"SDL_GL_SetAttribute", SDL_GL_ACCUM_ALPHA_SIZE, 0},
        {"SDL_GL_SetAttribute", SDL_GL_ALPHA_SIZE, 0},
        {"SDL_GL_SetAttribute", SDL_GL_DEPTH_SIZE, 16},
        {"SDL_GL_SetAttribute", SDL_GL_STENCIL_SIZE, 0},
        {"SDL_GL_SetAttribute", SDL_GL_DOUBLEBUFFER, 1},
        {"SDL_WM_SetCaption"},
        {"SDL_SetVideoMode", 640, 480, 16, SDL_HWSURFACE | SDL_OPENGL},
        {"SDL_GetWMInfo"},
        {"SDL_GL_SwapBuffers"},
        {"SDL_GL_GetAttribute", SDL_GL_RED_SIZE},
        {"SDL_GL_GetAttribute", SDL_GL_GREEN_SIZE},
        {"SDL_GL_GetAttribute", SDL_GL_BLUE_SIZE},
        {"SDL_GL_GetAttribute", SDL_GL_ALPHA_SIZE},
        {"SDL_GL_GetAttribute", SDL_GL_DEPTH_SIZE},
        {"SDL_GL_GetAttribute", SDL_GL_STENCIL_SIZE},
        {"SDL_GL_GetAttribute", SDL_GL_DOUBLEBUFFER},
    };
    ASSERT_GE(calls.size(), wanted.size());
    for (std::size_t index = 0; index < wanted.size(); ++index)
        EXPECT_EQ(calls[index], wanted[index]) << "call " << index;
    EXPECT_EQ(firstOf(calls, "SDL_WM_SetCaption").text, banner);
}

TEST_F(WindowTest, TheColorDepthChoosesTheChannels) {
    settings.setZetaDepth(24);
    settings.setStencilDepth(8);
    const struct {
        int depth, channel, alpha;
    } rows[] = {{16, 5, 0}, {15, 8, 0}, {24, 8, 0}, {32, 8, 8}};
    for (const auto &row : rows) {
        settings.setColorDepth(row.depth);
        const Calls calls = start();
        for (const auto &[attribute, size] : {std::pair<int, int>{SDL_GL_RED_SIZE, row.channel},
                                              {SDL_GL_GREEN_SIZE, row.channel},
                                              {SDL_GL_BLUE_SIZE, row.channel},
                                              {SDL_GL_ALPHA_SIZE, row.alpha},
                                              {SDL_GL_DEPTH_SIZE, 24},
                                              {SDL_GL_STENCIL_SIZE, 8}})
            EXPECT_TRUE(calls.contains(Call("SDL_GL_SetAttribute", attribute, size)));
        EXPECT_EQ(firstOf(calls, "SDL_SetVideoMode"),
                  Call("SDL_SetVideoMode", 640, 480, row.depth, SDL_HWSURFACE | SDL_OPENGL));
        RAVOLT::free();
    }
}

TEST_F(WindowTest, FlagsAndCaptionFollowTheRequest) {
    const struct {
        const char *title;
        bool fullScreen, resizable;
        Uint32 flags;
        unsigned int captions;
    } rows[] = {
        {"Storm", false, false, 0, 1},
        {"Storm", false, true, SDL_RESIZABLE, 1},
        {"Storm", true, false, SDL_FULLSCREEN, 0},
        {"Storm", true, true, SDL_FULLSCREEN, 0},
        {"", false, false, SDL_NOFRAME, 0},
        {"", false, true, SDL_NOFRAME | SDL_RESIZABLE, 0},
        {"", true, true, SDL_NOFRAME | SDL_FULLSCREEN, 0},
    };
    for (const auto &row : rows) {
        settings.setTitle(row.title);
        settings.setFullScreen(row.fullScreen);
        settings.setResizable(row.resizable);
        markLog();
        EXPECT_EQ(callsOf([&] { EXPECT_TRUE(settings.isOk()); }), // opens nothing
                  (Calls{{"SDL_VideoModeOK", 640, 480, 16,
                          SDL_OPENGL | (row.flags & ~Uint32(SDL_NOFRAME))}}));
        EXPECT_NOTHING_LOGGED();
        const Calls calls = start();
        EXPECT_EQ(firstOf(calls, "SDL_SetVideoMode"),
                  Call("SDL_SetVideoMode", 640, 480, 16, SDL_HWSURFACE | SDL_OPENGL | row.flags));
        EXPECT_EQ(calls.count("SDL_WM_SetCaption"), row.captions);
        for (const Call &caption : calls.named("SDL_WM_SetCaption"))
            EXPECT_EQ(caption.text, row.title);
        RAVOLT::free();
    }
    recorder.failVideoModeCheck();
    markLog();
    EXPECT_FALSE(settings.isOk());
    EXPECT_NOTHING_LOGGED();
}

// --- The splash

TEST_F(WindowTest, SplashIsOneTexturedQuadOnWhite) {
    const Calls calls = start();
    const Calls made = calls.named("glGenTextures");
    ASSERT_FALSE(made.empty());
    const double texture = made[0].arguments.at(1);
    EXPECT_TRUE(calls.haveInOrder({
        {"SDL_SetVideoMode", 640, 480, 16, SDL_HWSURFACE | SDL_OPENGL},
        {"glClearColor", 1, 1, 1, 1},
        {"glClear", GL_COLOR_BUFFER_BIT},
        {"glMatrixMode", GL_PROJECTION},
        {"glLoadIdentity"},
        {"glViewport", 0, 0, 640, 480},
        {"glOrtho", 0, 640, 480, 0, -1, 1},
        {"glMatrixMode", GL_MODELVIEW},
        {"glLoadIdentity"},
        {"glEnable", GL_TEXTURE_2D},
        {"glGenTextures", 1, texture},
        {"glBindTexture", GL_TEXTURE_2D, texture},
        {"glPixelStorei", GL_UNPACK_ALIGNMENT, 4},
        {"glTexParameteri", GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR},
        {"glTexParameteri", GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR},
        {"glTexImage2D", GL_TEXTURE_2D, 0, 3, 256, 256, 0, GL_BGR_EXT, GL_UNSIGNED_BYTE,
         anyAddress},
        {"glColor4f", 1, 1, 1, 1},
        {"glBegin", GL_QUADS},
        {"glEnd"}, // what it looks like, see windowContext_test.cpp
        {"glDisable", GL_TEXTURE_2D},
        {"glFlush"},
        {"glFinish"},
        {"SDL_GL_SwapBuffers"},
        {"glDeleteTextures", 1, texture},
        {"SDL_GL_GetAttribute", SDL_GL_RED_SIZE},
    }));
}

TEST_F(WindowTest, CaveSplashIsInTheLeftHalf) {
    settings.setCAVESplashScreen(true);
    settings.setWindowX(1281);
    settings.setWindowY(511);
    const Calls calls = start();
    EXPECT_TRUE(calls.haveInOrder({
        {"glViewport", 0, 0, 1281, 511},
        {"glOrtho", 0, 1281, 511, 0, -1, 1},
        {"glVertex2i", 192, 127}, // 1281 / 2 / 2 - 128, 511 / 2 - 128
        {"glVertex2i", 192, 383},
        {"glVertex2i", 448, 383},
        {"glVertex2i", 448, 127},
    }));
    EXPECT_EQ(settings.getWindowX(), 1281);
    EXPECT_EQ(RVSETTINGS::getSDLWindowX(), 1281);
}

TEST(SplashPictureTest, IsOnWhiteFromTheBottomUp) {
    const std::unique_ptr<unsigned char[]> picture = ravolt::splashPicture();
    constexpr std::size_t side = 256;
    ASSERT_NE(picture, nullptr);
    for (std::size_t step = 0; step < side; ++step)
        for (std::size_t pixel : {step, (side - 1) * side + step, step * side,
                                  step * side + side - 1}) // bottom, top, left, right
            for (std::size_t channel = 0; channel < 3; ++channel)
                EXPECT_EQ(picture[pixel * 3 + channel], 255);
    // The name is in the lowest quarter, dark on white; the emblem's middle is golden.
    std::size_t dark = 0;
    for (std::size_t pixel = 0; pixel < side * side / 4; ++pixel)
        dark += picture[pixel * 3] < 128 && picture[pixel * 3 + 1] < 128;
    EXPECT_GT(dark, 800u);
    const unsigned char *middle = &picture[((side - 1 - 98) * side + 128) * 3];
    EXPECT_GT(middle[2], 240); // red
    EXPECT_LT(middle[0], 200); // blue
}

// --- The log and the applied settings

TEST_F(WindowTest, RequestedAndAppliedSettingsAreLoggedAndUsed) {
    settings.setWindowX(800);
    settings.setWindowY(600);
    settings.setColorDepth(32);
    settings.setZetaDepth(24);
    settings.setStencilDepth(8);
    settings.setTitle("100% Storm");
    settings.setFullScreen(true);
    settings.setResizable(true);
    settings.setLandscape(true);
    settings.setShaders(true);
    settings.setForceFBO(true);
    settings.setRenderingElements(77);
    settings.setAudioChannels(1);
    settings.setAudioBuffers(2);
    settings.setAudioElements(3);
    settings.setShadowMapSize(64);
    settings.setFBOSizeX(320);
    settings.setFBOSizeY(200);
    settings.setWaterSize(32);
    settings.setRVEPath("a/");
    settings.setRVAPath("b/");
    settings.setMPGPath("c/");
    settings.setTexturePath("d/");
    settings.setShaderPath("e/");
    settings.setFontPath("f/");
    recorder.channelSizes(8, 8, 8, 8);
    recorder.setAttribute(SDL_GL_DEPTH_SIZE, 32);
    recorder.setAttribute(SDL_GL_STENCIL_SIZE, 0);
    const LogMark before = markLog();
    start();
    ASSERT_TRUE(started);
    const std::string log = logTextSince(before);
    const std::string wanted = "   Init settings...\n"
                               "      Configuration to set:\n"
                               "          X: 800, Y: 600\n"
                               "          depth: 32, zeta: 24, stencil: 8\n"
                               "          title: '100% Storm'\n"
                               "          fullscreen: 1\n"
                               "          resizable : 1\n"
                               "          landscape : 1\n"
                               "          shaders: 1\n"
                               "          max elems: 77\n"
                               "          audio: c: 1, b: 2, e: 3\n"
                               "          shadow map size: 64\n"
                               "          FBO map sizes  : 320, 200\n"
                               "          Water map size : 32\n"
                               "          RVE path    : 'a/'\n"
                               "          RVA path    : 'b/'\n"
                               "          Texture path: 'd/'\n"
                               "          Shader path : 'e/'\n"
                               "          Font path   : 'f/'\n"
                               "      Color bits (RGBA): 8, 8, 8, 8\n"
                               "      Shadow map size: 64\n"
                               "      FBO map sizes  : 320, 200\n"
                               "      Configuration used:\n"
                               "          SizeX: 800, SizeY: 600\n"
                               "          depth: 32, zeta: 32, stencil: 0\n"
                               "          title: '100% Storm'\n"
                               "          fullscreen: 1\n"
                               "          landscape : 1\n"
                               "          shaders: 1\n"
                               "          audio: c: 0, b: 0, e: 0\n"
                               "   Settings initialized\n";
    const std::size_t first = std::min(log.find("   Init settings...\n"), log.size());
    EXPECT_EQ(log.substr(first, wanted.size()), wanted);

    EXPECT_STREQ(RAVOLT::getRVEPath(), "a/");
    EXPECT_STREQ(RVANIM::getRVAPath(), "b/");
    EXPECT_STREQ(RVTEXTURE::getPath(), "d/");
    EXPECT_STREQ(RVSETTINGS::getSDLTitle(), "100% Storm");
    for (bool (*flag)() :
         {RVSETTINGS::isActive, RVSETTINGS::isSDLFullScreen, RVSETTINGS::isSDLResizable,
          RVSETTINGS::isSDLLandscape, RVSETTINGS::getSDLShaders, RVSETTINGS::getSDLForceFBO})
        EXPECT_TRUE(flag());
    const struct {
        int (*get)();
        int value;
    } numbers[] = {{RVSETTINGS::getSDLWindowX, 800},    {RVSETTINGS::getSDLWindowY, 600},
                   {RVSETTINGS::getSDLColorDepth, 32},  {RVSETTINGS::getSDLZetaDepth, 32},
                   {RVSETTINGS::getSDLStencilDepth, 0}, {RVSETTINGS::getSDLShadowMapSize, 64},
                   {RVSETTINGS::getSDLFBOSizeX, 320},   {RVSETTINGS::getSDLFBOSizeY, 200},
                   {RVSETTINGS::getSDLWaterSize, 32},   {RVSETTINGS::getZLAAudioChannels, 0},
                   {RVSETTINGS::getZLAAudioBuffers, 0}, {RVSETTINGS::getZLAAudioElements, 0}};
    for (const auto &row : numbers)
        EXPECT_EQ(row.get(), row.value) << "number " << &row - numbers;
    EXPECT_EQ(RVSETTINGS::getSDLWindow(), nullptr); // the silent display has no window
    EXPECT_EQ(settings.getZetaDepth(), 24);         // the record is not changed
}

TEST_F(WindowTest, ColorDepthIsTheSumOfTheChannels) {
    const struct {
        int red, green, blue, alpha, sum;
    } rows[] = {{8, 8, 8, 0, 24}, {5, 6, 5, 0, 16}, {5, 5, 5, 0, 15}, {8, 8, 8, 8, 32}};
    for (const auto &row : rows) {
        recorder.channelSizes(row.red, row.green, row.blue, row.alpha);
        start();
        EXPECT_EQ(RVSETTINGS::getSDLColorDepth(), row.sum);
        RAVOLT::free();
    }
}

TEST_F(WindowTest, AppliedSettingsKeepTheirValuesAfterAStopAndAFailedMode) {
    settings.setWindowX(720);
    start();
    RAVOLT::free();
    for (bool failed : {false, true}) {
        if (failed) {
            settings.setWindowX(333);
            recorder.failSetVideoMode();
            start();
            EXPECT_FALSE(started);
        }
        EXPECT_FALSE(RVSETTINGS::isActive());
        EXPECT_EQ(RVSETTINGS::getSDLTitle(), banner);
        EXPECT_EQ(RVSETTINGS::getSDLWindowX(), 720);
        EXPECT_EQ(RVSETTINGS::getSDLColorDepth(), 24);
    }
    EXPECT_EQ(settings.getWindowX(), 333);
}

// --- Multisampling, an addition

namespace {

using Lines = std::vector<std::string>;

Calls samplesOf(const Calls &calls) {
    return calls.where([](const Call &call) {
        if (call.name != "SDL_GL_SetAttribute")
            return call.name == "SDL_SetVideoMode";
        const int attribute = static_cast<int>(call.arguments[0]);
        return attribute == SDL_GL_MULTISAMPLEBUFFERS || attribute == SDL_GL_MULTISAMPLESAMPLES;
    });
}

const Call plainMode("SDL_SetVideoMode", 640, 480, 16, SDL_HWSURFACE | SDL_OPENGL);

Calls samplesSet(int buffers, int samples) {
    return {{"SDL_GL_SetAttribute", SDL_GL_MULTISAMPLEBUFFERS, buffers},
            {"SDL_GL_SetAttribute", SDL_GL_MULTISAMPLESAMPLES, samples}};
}

} // namespace

TEST_F(WindowTest, WithoutMultisamplingNoAttributeOfItIsSet) {
    recorder.setInteger(GL_SAMPLES, 4); // of a window that has it anyway
    for (const int samples : {0, -4}) {
        settings.setMultisampling(samples);
        const Calls calls = start();
        EXPECT_EQ(samplesOf(calls), Calls{plainMode});
        EXPECT_FALSE(calls.contains(Call("glGetIntegerv", GL_SAMPLES)));
        EXPECT_EQ(RVSETTINGS::getSDLMultisampling(), 0);
        EXPECT_EQ(samplesOf(callsOf(RAVOLT::free)), Calls());
    }
    EXPECT_EQ(problems(), Lines());
}

TEST_F(WindowTest, MultisamplingIsSetBeforeTheWindowOpensAndResetAtTheEnd) {
    recorder.setInteger(GL_SAMPLES, 4);
    settings.setMultisampling(3);
    Calls wanted = samplesSet(1, 3);
    EXPECT_TRUE(start().haveInOrder({wanted[0], wanted[1], plainMode}));
    EXPECT_EQ(RVSETTINGS::getSDLMultisampling(), 4) << "what was obtained";
    EXPECT_EQ(settings.getMultisampling(), 3);
    EXPECT_EQ(problems(), Lines());
    EXPECT_EQ(samplesOf(callsOf(RAVOLT::free)), samplesSet(0, 0));
    EXPECT_EQ(samplesOf(callsOf(RAVOLT::free)), Calls());
}

TEST_F(WindowTest, RefusedMultisamplingOpensAWindowWithout) {
    recorder.setInteger(GL_SAMPLES, 4);
    recorder.failSetVideoMode("no such visual", 1);
    settings.setMultisampling(64);
    const Calls on = samplesSet(1, 64), off = samplesSet(0, 0);
    EXPECT_EQ(samplesOf(start()), (Calls{on[0], on[1], plainMode, off[0], off[1], plainMode}));
    EXPECT_TRUE(started);
    EXPECT_EQ(RVSETTINGS::getSDLMultisampling(), 0);
    EXPECT_LOGGED("   [!] Unsupported multisampling (64 samples) @ RVSETTINGS::init");
    EXPECT_EQ(problems().size(), 1u);
    EXPECT_EQ(samplesOf(callsOf(RAVOLT::free)), Calls());
}

TEST_F(WindowTest, WindowObtainedWithoutSamplesIsOpenedOnceMore) {
    recorder.setInteger(GL_SAMPLES, 0);
    settings.setMultisampling(8);
    const Calls on = samplesSet(1, 8), off = samplesSet(0, 0);
    EXPECT_EQ(samplesOf(start()), (Calls{on[0], on[1], plainMode, off[0], off[1], plainMode}));
    EXPECT_TRUE(started);
    EXPECT_EQ(RVSETTINGS::getSDLMultisampling(), 0);
    EXPECT_LOGGED("   [!] Unsupported multisampling (8 samples) @ RVSETTINGS::init");
    EXPECT_EQ(problems().size(), 1u);
}

TEST_F(WindowTest, NoWindowWithAndWithoutMultisamplingIsTheFailureOfTheMode) {
    recorder.failSetVideoMode("no such mode");
    settings.setMultisampling(4);
    EXPECT_EQ(samplesOf(start()).count("SDL_SetVideoMode"), 2u);
    EXPECT_FALSE(started);
    EXPECT_LOGGED("   [!] Unsupported video config (no such mode) @ RVSETTINGS::init");
    EXPECT_NOT_LOGGED("   [!] Unsupported multisampling (4 samples) @ RVSETTINGS::init");
}

// --- Resize

TEST_F(WindowTest, ResizeRequestsTheFirstModeAndNotTheObtainedOne) {
    settings.setResizable(true);
    start();
    const Calls calls = callsOf([] { EXPECT_TRUE(RVSETTINGS::resize(10, 20, 300, 200)); });
    EXPECT_TRUE(calls.haveInOrder({
        {"glViewport", 10, -20, 300, 200}, // by the new height: 200 - 20 - 200
        {"SDL_SetVideoMode", 300, 200, 16, SDL_HWSURFACE | SDL_OPENGL | SDL_RESIZABLE},
    }));
    EXPECT_EQ(calls.count("SDL_SetVideoMode"), 1u);
    EXPECT_EQ(RVSETTINGS::getSDLWindowX(), 300);
    EXPECT_EQ(RVSETTINGS::getSDLWindowY(), 200);
    EXPECT_EQ(settings.getWindowX(), 640);
}

TEST_F(WindowTest, ResizeToNothingOrAfterAStopOpensNoWindow) {
    start();
    markLog();
    EXPECT_FALSE(callsOf([] {
                     EXPECT_TRUE(RVSETTINGS::resize(0, 0, 0, 200));
                 }).contains("SDL_SetVideoMode"));
    EXPECT_LOGGED_EXACTLY("   [!] invalid params @ RVOPENGL::resize\n");
    EXPECT_EQ(RVSETTINGS::getSDLWindowX(), 0);
    RAVOLT::free();
    EXPECT_FALSE(callsOf([] {
                     EXPECT_TRUE(RVSETTINGS::resize(0, 0, 300, 200));
                 }).contains("SDL_SetVideoMode"));
}
