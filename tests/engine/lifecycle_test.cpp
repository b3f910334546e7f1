// Start and stop: the whole chain, each failure with what it undoes, the second start. No display:
// the driver is silent.

#include "ravolt/RAVOLT.h"
#include "ravolt/RVANIM.h"
#include "ravolt/RVELEMENT.h"
#include "ravolt/RVEMITTER.h"
#include "ravolt/RVFBO.h"
#include "ravolt/RVFONT.h"
#include "ravolt/RVMATERIAL.h"
#include "ravolt/RVMESH.h"
#include "ravolt/RVNODE.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVSETTINGS.h"
#include "ravolt/RVSHADER.h"
#include "ravolt/RVTEXTURE.h"
#include "ravolt/zlf.h"
#include "tests/engine/openGLAccess.h"
#include "tests/engine/resetEffects.h"
#include "tests/support/logReader.h"
#include "tests/support/recorder.h"

#include <SDL/SDL.h>

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

using namespace ravolt::test;

namespace {

bool meshClassFails = false;
bool emitterClassFails = false;
bool fontClassFails = false;

} // namespace

// In front of those that cannot fail by themselves, and of that which fails without memory (see the
// linker's --wrap).
extern "C" {
bool __real__ZN6RVFONT4initEv();
bool __wrap__ZN6RVFONT4initEv() {
    if (!fontClassFails)
        return __real__ZN6RVFONT4initEv();
    Recorder::instance().failAllocation(1, 3, 1);
    const bool started = __real__ZN6RVFONT4initEv();
    Recorder::instance().allocationsWork();
    zlfFree(nullptr); // the refused block counts as live
    return started;
}
bool __real__ZN6RVMESH4initEv();
bool __wrap__ZN6RVMESH4initEv() { return !meshClassFails && __real__ZN6RVMESH4initEv(); }
bool __real__ZN9RVEMITTER4initEv();
bool __wrap__ZN9RVEMITTER4initEv() { return !emitterClassFails && __real__ZN9RVEMITTER4initEv(); }
}

namespace ravolt::test {

// The private start and stop of RVSETTINGS and RVSHADER.
struct SettingsInit {
    using Type = bool (RVSETTINGS::*)();
    friend Type reach(SettingsInit);
};
struct SettingsFree {
    using Type = bool (*)();
    friend Type reach(SettingsFree);
};
struct ShadersInit {
    using Type = bool (*)();
    friend Type reach(ShadersInit);
};
struct ShadersFree {
    using Type = bool (*)();
    friend Type reach(ShadersFree);
};
template struct Opened<ShadersInit, &RVSHADER::init>;
template struct Opened<ShadersFree, &RVSHADER::free>;
template struct Opened<SettingsInit, &RVSETTINGS::init>;
template struct Opened<SettingsFree, &RVSETTINGS::free>;

} // namespace ravolt::test

namespace {

class LifecycleTest : public SilentTest {
  protected:
    void SetUp() override {
        SilentTest::SetUp();
        shaders.setShaders(true);
        mark = markLog();
    }
    void TearDown() override {
        RAVOLT::free();
        SilentTest::TearDown();
    }

    // What was logged after the last line given, if any.
    std::string logAfter(const std::string &line) const {
        const std::string log = logTextSince(mark);
        const std::size_t found = line.empty() ? 0 : log.rfind(line);
        return found == std::string::npos ? "not there: " + line : log.substr(found + line.size());
    }

    static void expectActive(bool active) {
        EXPECT_EQ(RAVOLT::isActive(), active);
        EXPECT_EQ(RVSETTINGS::isActive(), active);
        EXPECT_EQ(RVELEMENT::isActive(), active);
    }

    // Neither objects nor flags of a failed start remain, and the next one works.
    void expectNothingLeftAndACleanStart() {
        expectActive(false);
        EXPECT_EQ(RVFBO::getNumberOfFbos(), 0u);
        EXPECT_EQ(RVTEXTURE::getNumberOfTextures(), 0u);
        EXPECT_EQ(RVSHADER::getNumberOfShaders(), 0u);
        EXPECT_EQ(RAVOLT::getUsedVideoMemory(), 0u);
        EXPECT_EQ(RVTEXTURE::getUsedMemory(), 0);
        const unsigned int id = zlfNewId();
        EXPECT_EQ(id, 1u);
        releaseId(id);
        recorder.reset();
        recorder.silent();
        mark = markLog();
        EXPECT_TRUE(RAVOLT::init(&shaders));
        EXPECT_EQ(logTextSince(mark).find("lready active"), std::string::npos);
        EXPECT_TRUE(RAVOLT::free());
    }

    // A start that fails for a reason: its last calls, what it logs after a line, and that nothing
    // of it is left when the reason is gone. `targets`: render targets that were made.
    void expectUndone(const char *what, const std::function<void()> &breakStart,
                      const std::function<void()> &restore, const Calls &lastCalls,
                      const char *line, const std::string &log, std::size_t targets = 0) {
        SCOPED_TRACE(what);
        breakStart();
        mark = markLog();
        const Calls calls =
            callsOf([this] { EXPECT_FALSE(RAVOLT::init(&shaders)); }).without({"SDL_GetError"});
        recorder.allocationsWork();
        EXPECT_FALSE(RAVOLT::isActive());
        EXPECT_EQ(logAfter(line), log);
        ASSERT_GE(calls.size(), lastCalls.size());
        const auto number = static_cast<std::ptrdiff_t>(lastCalls.size());
        EXPECT_EQ(Calls(std::vector<Call>(calls.end() - number, calls.end())), lastCalls);
        EXPECT_FALSE(calls.contains("SDL_GetVideoInfo"));
        EXPECT_EQ(calls.count("glDeleteFramebuffersEXT"), targets);
        EXPECT_EQ(calls.count("glDeleteRenderbuffersEXT"), targets ? 2u : 0u);
        EXPECT_GE(calls.count("glDeleteTextures"), targets ? 2u : 0u); // one is the splash's
        for (int index = 0; index < 14 && targets; ++index)
            EXPECT_EQ(RVOPENGL::getFbo(index), nullptr) << index;
        restore();
        expectNothingLeftAndACleanStart();
    }

    RVSETTINGS shaders; // with these on
    LogMark mark = 0;
};

// With the engine's own render targets, their textures and the programs.
std::string logOfStop(const std::string &nodes = "", const std::string &materials = "",
                      int textures = 14) {
    std::string log = "   Ravolt is shutting down...\n" + nodes +
                      "   14 fbo(s) released\n   35 shader(s) released\n" + materials;
    for (int target = 0; target < 14; ++target)
        log += "   [dynamic] unloaded\n";
    return log + "   " + std::to_string(textures) +
           " texture(s) released\n   Release OpenGL...\n   OpenGL released\n"
           "   Release settings...\n   Settings released\n   SDL released\n"
           "   Shutdown complete\n\n";
}

// The end of a failed start.
const std::string settingsUndone = "   Release settings...\n"
                                   "   Settings released\n";
const std::string openGLUndone = "   Release OpenGL...\n"
                                 "   OpenGL released\n" +
                                 settingsUndone;
const std::string allUndone = "   Release shaders...\n"
                              "   Shaders released\n" +
                              openGLUndone;
const std::string listFailed =
    "   [!] Rendering elements failed to initialize @ RAVOLT::init\n" + allUndone;

// All timers but those that run already, freed by the destructor.
class OtherTimers {
  public:
    OtherTimers() {
        for (int timer = zlfNewTimer(1); timer != -1; timer = zlfNewTimer(1))
            all.push_back(timer);
    }
    ~OtherTimers() {
        for (const int timer : all)
            zlfFreeTimer(timer);
    }
    OtherTimers(const OtherTimers &) = delete;
    OtherTimers &operator=(const OtherTimers &) = delete;

    std::vector<int> all;
};

} // namespace

// --- The chain

TEST_F(LifecycleTest, StartFollowsItsChain) {
    const Calls calls = callsOf([] { ASSERT_TRUE(RAVOLT::init(nullptr)); });
    expectActive(true);
    EXPECT_EQ(calls[0], Call("SDL_Init", SDL_INIT_VIDEO));
    EXPECT_FALSE(calls.contains("SDL_Quit"));
    EXPECT_TRUE(calls.haveInOrder({
        {"SDL_SetVideoMode", 640, 480, 16, SDL_HWSURFACE | SDL_OPENGL},
        {"SDL_GL_SwapBuffers"},         // the splash
        {"glGetString", GL_EXTENSIONS}, // RVOPENGL::init
        {"glViewport", 0, 0, 640, 480}, // the first resize
        {"SDL_GetVideoInfo"},
        {"SDL_VideoDriverName"},
    }));
    EXPECT_EQ(logTextSince(mark).find("   SDL initialized\n"
                                      "   Initialize Ravolt\n"
                                      "\n"
                                      "   [!] Standard configuration used\n"
                                      "   Init settings...\n"),
              0u);
    EXPECT_EQ(logAfter("   OpenGL initialized\n"),
              "   4096 elements allocated\n"
              "   [!] No VRam detected: software mode supposed (16 MB allocated by default)\n"
              "   Driver name: silent\n"
              "   VRam detected: 16384 KB\n"
              "   Initialization complete\n\n");
}

TEST_F(LifecycleTest, GivenSettingsAreUsedWithoutAMessage) {
    RVSETTINGS settings;
    settings.setWindowX(320);
    settings.setWindowY(240);
    settings.setRenderingElements(12);
    ASSERT_TRUE(RAVOLT::init(&settings));
    EXPECT_NOT_LOGGED("   [!] Standard configuration used");
    EXPECT_LOGGED("   12 elements allocated");
    EXPECT_EQ(RVSETTINGS::getSDLWindowX(), 320);
    EXPECT_EQ(RVELEMENT::getNumberOfElements(), 12u);
}

TEST_F(LifecycleTest, ListCapacityBelowOneOrTooLargeMeans4096) {
    for (const int requested : {0, -1, 4097}) {
        RVSETTINGS settings;
        settings.setRenderingElements(requested);
        ASSERT_TRUE(RAVOLT::init(&settings));
        EXPECT_EQ(RVELEMENT::getNumberOfElements(), 4096u) << requested;
        RAVOLT::free();
    }
}

TEST_F(LifecycleTest, StopFollowsItsChainOnce) {
    ASSERT_TRUE(RAVOLT::init(nullptr));
    markLog();
    const Calls calls = callsOf([] { EXPECT_TRUE(RAVOLT::free()); });
    EXPECT_LOGGED_EXACTLY(logOfStop());
    EXPECT_EQ(calls.back(), Call("SDL_Quit"));
    EXPECT_EQ(calls.count("SDL_Quit"), 1u);
    expectActive(false);
    EXPECT_TRUE(callsOf([] { EXPECT_FALSE(RAVOLT::free()); }).empty());
    EXPECT_NOTHING_LOGGED();
}

TEST_F(LifecycleTest, StopDestroysWhatLivesNodesFirst) {
    new RVNODE; // objects may be made before the start
    ASSERT_TRUE(RAVOLT::init(nullptr));
    new RVNODE;
    new RVMATERIAL;
    new RVTEXTURE;
    new RVANIM; // not logged
    new RVFONT;
    markLog();
    EXPECT_TRUE(RAVOLT::free());
    EXPECT_LOGGED_EXACTLY(
        logOfStop("   1 font(s) released\n   2 node(s) released @ RVNODE::cleanUp\n",
                  "   1 material(s) released\n", 15));
    EXPECT_EQ(RVNODE::getNumberOfNodes(), 0u);
    EXPECT_EQ(RVANIM::getNumberOfAnims(), 0u);
    EXPECT_EQ(zlfNewId(), 1u); // every identifier is free again
    releaseId(1);
}

TEST_F(LifecycleTest, TheTimerIsFreedByTheStopAndMayBeMissing) {
    const OtherTimers others;
    markLog();
    EXPECT_TRUE(RAVOLT::init(nullptr));
    EXPECT_LOGGED_TIMES(1, "zlfNewTimer: no more timers");
    EXPECT_TRUE(RAVOLT::free());
    EXPECT_LOGGED_TIMES(1, "zlfFreeTimer: wrong params");
    zlfFreeTimer(others.all.front());
    ASSERT_TRUE(RAVOLT::init(nullptr));
    EXPECT_EQ(zlfNewTimer(1), -1); // the engine has the last one
    ASSERT_TRUE(RAVOLT::free());
    EXPECT_EQ(zlfNewTimer(1), others.all.front());
}

// --- Start again

TEST_F(LifecycleTest, SecondStartDoesNotTouchTheRunningEngine) {
    ASSERT_TRUE(RAVOLT::init(nullptr));
    RVSETTINGS other;
    other.setWindowX(99);
    markLog();
    EXPECT_TRUE(callsOf([&] { EXPECT_FALSE(RAVOLT::init(&other)); }).empty());
    EXPECT_LOGGED_EXACTLY("   [!] RAVOLT already active\n");
    EXPECT_TRUE(RAVOLT::isActive());
    EXPECT_EQ(RVSETTINGS::getSDLWindowX(), 640);
}

TEST_F(LifecycleTest, StartAfterStopRunsTheSameChain) {
    ASSERT_TRUE(RAVOLT::init(nullptr));
    std::vector<std::string> names[2], logs[2];
    for (int run = 0; run < 2; ++run) {
        RAVOLT::free();
        mark = markLog();
        names[run] = callsOf([] { ASSERT_TRUE(RAVOLT::init(nullptr)); }).names();
        logs[run] = linesSince(mark);
    }
    EXPECT_EQ(names[1], names[0]);
    EXPECT_EQ(logs[1], logs[0]);
}

TEST_F(LifecycleTest, StopKeepsSwitchesAndStamp) {
    ASSERT_TRUE(RAVOLT::init(nullptr));
    RAVOLT::wireframeOn();
    RAVOLT::bloomingOn();
    RAVOLT::setDOFRange(7);
    RAVOLT::begin3D(nullptr);
    RAVOLT::end3D(true);
    const long stamp = RAVOLT::getTimeStamp();
    RAVOLT::pushVideoMemory(5);
    RAVOLT::free();
    EXPECT_EQ(RAVOLT::getUsedVideoMemory(), 5u);
    ASSERT_TRUE(RAVOLT::init(nullptr));
    EXPECT_TRUE(RAVOLT::isWireframed());
    EXPECT_TRUE(RAVOLT::isBlooming());
    EXPECT_EQ(RAVOLT::getDOFRange(), 7.0f);
    EXPECT_EQ(RAVOLT::getTimeStamp(), stamp);
    RAVOLT::wireframeOff();
    RAVOLT::bloomingOff();
    RAVOLT::setDOFRange(2);
    RAVOLT::popVideoMemory(5);
}

// --- Failures

// Targets, textures and programs are destroyed while their context exists: their names would mean
// other objects in the next one.
TEST_F(LifecycleTest, AFailureUndoesWhatTheStartHasDone) {
    RVSETTINGS running;
    const auto nothing = [] {};
    const Call init("SDL_Init", SDL_INIT_VIDEO), quit("SDL_Quit");
    expectUndone(
        "no video", [&] { recorder.failSdlInit("the screen is gone"); }, nothing, {init}, "",
        "   [!] Unable to init SDL_INIT_VIDEO (the screen is gone) @ RAVOLT::init\n");
    expectUndone(
        "incompatible mode", [&] { recorder.failVideoModeCheck(); }, nothing,
        {init, {"SDL_VideoModeOK", 640, 480, 16, SDL_OPENGL}, quit},
        "          Water map size : 256\n",
        "   [!] Incompatible config @ RVSETTINGS::init\n"
        "   [!] Unable to init settings @ RAVOLT::init\n");
    expectUndone(
        "no such mode", [&] { recorder.failSetVideoMode("no visual"); }, nothing,
        {{"SDL_SetVideoMode", 640, 480, 16, SDL_HWSURFACE | SDL_OPENGL}, quit},
        "          Font path   : ''\n",
        "   [!] Unsupported video config (no visual) @ RVSETTINGS::init\n"
        "   [!] Unable to init settings @ RAVOLT::init\n");
    expectUndone(
        "active settings", [&] { EXPECT_TRUE((running.*reach(SettingsInit()))()); },
        [] {
            EXPECT_TRUE(RVSETTINGS::isActive());
            EXPECT_TRUE(reach(SettingsFree())());
            EXPECT_FALSE(reach(SettingsFree())());
        },
        {init, quit}, "   Initialize Ravolt\n\n",
        "   [!] Settings already active\n"
        "   [!] Unable to init settings @ RAVOLT::init\n");
    expectUndone(
        "active OpenGL", [] { EXPECT_TRUE(startOpenGL()); },
        [] {
            EXPECT_TRUE(stopOpenGL());
            RVFBO::cleanUp();
            RVTEXTURE::cleanUp();
        },
        {quit}, "   Settings initialized\n",
        "   [!] OpenGL already active @ RVOPENGL::init\n"
        "   [!] Unable to init OpenGL @ RAVOLT::init\n" +
            settingsUndone);
    expectUndone(
        "no memory for the list", [&] { recorder.failAllocation(4096 * sizeof(RVELEMENT)); },
        nothing, {quit}, "   Codepaths initialized\n",
        "   [!] Out of memory @ RVELEMENT::init\n" + listFailed, 14);
    expectUndone(
        "active list", [] { EXPECT_TRUE(RVELEMENT::init(1)); },
        [] {
            EXPECT_TRUE(RVELEMENT::isActive()); // the start did not make it
            RVELEMENT::free();
        },
        {quit}, "   Codepaths initialized\n",
        "   [!] Already active @ RVELEMENT::init\n" + listFailed, 14);
    expectUndone(
        "no memory for the font class", [] { fontClassFails = true; },
        [] { fontClassFails = false; }, {quit}, "   4096 elements allocated\n",
        "   [!] Out of memory @ RVFONT::init\n"
        "   [!] Unable to initialize font class @ RAVOLT::init\n" +
            allUndone,
        14);
    expectUndone(
        "mesh class", [] { meshClassFails = true; }, [] { meshClassFails = false; }, {quit},
        "   4096 elements allocated\n",
        "   [!] Unable to initialize mesh class @ RAVOLT::init\n" + allUndone, 14);
    expectUndone(
        "emitter class", [] { emitterClassFails = true; }, [] { emitterClassFails = false; },
        {quit}, "   4096 elements allocated\n",
        "   [!] Unable to initialize emitter class @ RAVOLT::init\n" + allUndone, 14);
}

TEST_F(LifecycleTest, FailedOrderOfTheListUndoesTheSame) {
    // The splash picture, the pixel copies of six render targets and the list's entries are
    // allocated first. Nothing is recorded meanwhile, since a recording allocates too.
    recorder.failAllocation(4096 * sizeof(RVELEMENT *), 8, 1);
    EXPECT_FALSE(RAVOLT::init(&shaders));
    EXPECT_EQ(logAfter("   Codepaths initialized\n"),
              "   [!] Out of memory @ RVELEMENT::init\n" + listFailed);
    expectNothingLeftAndACleanStart();
}

// Objects that existed before the start are the application's.
TEST_F(LifecycleTest, AFailedStartDoesNotDestroyWhatItHasNotMade) {
    auto *target = new RVFBO;
    auto *texture = new RVTEXTURE;
    auto *program = new RVSHADER;
    meshClassFails = true;
    EXPECT_FALSE(RAVOLT::init(nullptr));
    meshClassFails = false;
    EXPECT_EQ(RVFBO::getNumberOfFbos(), 1u);
    EXPECT_EQ(RVTEXTURE::findById(texture->getId()), texture);
    EXPECT_EQ(RVTEXTURE::getNumberOfTextures(), 1u);
    EXPECT_EQ(RVSHADER::findById(program->getId()), program);
    EXPECT_EQ(RVSHADER::getNumberOfShaders(), 1u);
    delete target;
    delete texture;
    delete program;
    expectNothingLeftAndACleanStart();
}

// The only way for them to fail is that they have run.
TEST_F(LifecycleTest, ClassesOfProgramsThatFailUndoTheTargets) {
    ASSERT_TRUE((shaders.*reach(SettingsInit()))());
    ASSERT_TRUE(startOpenGL());
    ASSERT_TRUE(reach(ShadersInit())());
    ASSERT_TRUE(stopOpenGL());
    ASSERT_TRUE(reach(SettingsFree())());
    const unsigned int programs = RVSHADER::getNumberOfShaders();
    const unsigned int targets = RVFBO::getNumberOfFbos();
    mark = markLog();
    EXPECT_EQ(callsOf([&] { EXPECT_FALSE(RAVOLT::init(&shaders)); }).back(), Call("SDL_Quit"));
    EXPECT_EQ(logAfter("   OpenGL initialized\n"),
              "   [!] Shaders already active @ RVSHADER::init\n"
              "   [!] Unable to init shaders @ RAVOLT::init\n" +
                  openGLUndone);
    EXPECT_EQ(RVSHADER::getNumberOfShaders(), programs);
    EXPECT_EQ(RVFBO::getNumberOfFbos(), targets);
    EXPECT_TRUE(reach(ShadersFree())());
    RVFBO::cleanUp();
    RVTEXTURE::cleanUp();
    RVSHADER::cleanUp();
    expectNothingLeftAndACleanStart();
}

// The pool's pointers stay, and name nothing any more.
TEST_F(LifecycleTest, AFrameOfAStoppedEngineBindsNoTarget) {
    shaders.setForceFBO(true);
    ASSERT_TRUE(RAVOLT::init(&shaders));
    ASSERT_TRUE(RVSHADER::useBloom());
    allEffectsOn();
    ASSERT_TRUE(RAVOLT::free());
    const Calls calls = callsOf([] {
        RAVOLT::clear(true, true, false);
        RAVOLT::begin3D(nullptr);
        RAVOLT::end3D(true);
    });
    resetEffects();
    EXPECT_EQ(calls[0], Call("glClear", GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT));
    EXPECT_FALSE(calls.contains("glBindFramebufferEXT"));
}

// --- Video memory

TEST_F(LifecycleTest, VideoMemoryIsTheBudgetOrWhatSdlReportsOr16Megabytes) {
    const std::string none =
        "   [!] No VRam detected: software mode supposed (16 MB allocated by default)\n";
    const struct {
        unsigned int reported; // KB
        int budget;
        unsigned int bytes;
        std::string before, after; // the line of the driver's name
    } rows[] = {
        {262144, 0, 268435456u, "", "   VRam detected: 262144 KB\n"},
        {262144, -1, 268435456u, "", "   VRam detected: 262144 KB\n"},
        {0, 0, 16777216u, none, "   VRam detected: 16384 KB\n"},
        {4194304, 0, 16777216u, none, "   VRam detected: 16384 KB\n"}, // 4 GB wrap to nothing
        {0, 64, 67108864u, "", "   VRam budget: 65536 KB\n"},
        {262144, 64, 67108864u, "", "   VRam budget: 65536 KB\n"},
        {262144, 1, 1048576u, "", "   VRam budget: 1024 KB\n"},
        {0, 2047, 2146435072u, "", "   VRam budget: 2096128 KB\n"},
        {0, 2048, 2146435072u, "", "   VRam budget: 2096128 KB\n"},
        {0, 2147483647, 2146435072u, "", "   VRam budget: 2096128 KB\n"},
    };
    recorder.driverName("x11");
    for (const auto &row : rows) {
        recorder.videoMemory(row.reported);
        RVSETTINGS settings;
        settings.setVideoMemory(row.budget);
        ASSERT_TRUE(RAVOLT::init(&settings));
        EXPECT_EQ(RAVOLT::getVideoMemory(), row.bytes);
        EXPECT_EQ(logAfter("   4096 elements allocated\n"), row.before + "   Driver name: x11\n" +
                                                                row.after +
                                                                "   Initialization complete\n\n");
        RAVOLT::free();
    }
}

TEST_F(LifecycleTest, LongDriverNamesAreCut) {
    recorder.driverName(std::string(100, 'd'));
    ASSERT_TRUE(RAVOLT::init(nullptr));
    EXPECT_LOGGED("   Driver name: " + std::string(63, 'd'));
}

// --- Leaks

TEST_F(LifecycleTest, RunsEndWithAMemoryRatioOfZero) {
    const int before = finalMemoryRatio();
    for (int run = 0; run < 3; ++run) {
        ASSERT_TRUE(RAVOLT::init(nullptr));
        new RVNODE;
        RAVOLT::begin3D(nullptr);
        RAVOLT::end3D(true);
        RAVOLT::swap();
        ASSERT_TRUE(RAVOLT::free());
    }
    EXPECT_EQ(finalMemoryRatio(), before);
}
