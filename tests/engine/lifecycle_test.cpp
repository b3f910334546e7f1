// Start and stop: the whole chain, each failure with what it undoes, the second start. No display:
// a silent driver stands behind.

#include "ravolt/RAVOLT.h"
#include "ravolt/RVANIM.h"
#include "ravolt/RVELEMENT.h"
#include "ravolt/RVEMITTER.h"
#include "ravolt/RVFBO.h"
#include "ravolt/RVMATERIAL.h"
#include "ravolt/RVMESH.h"
#include "ravolt/RVNODE.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVSETTINGS.h"
#include "ravolt/RVSHADER.h"
#include "ravolt/RVTEXTURE.h"
#include "ravolt/zlf.h"
#include "tests/engine/openGLAccess.h"
#include "tests/support/logReader.h"
#include "tests/support/recorder.h"

#include <SDL/SDL.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace ravolt::test;

namespace {

bool meshClassFails = false;
bool emitterClassFails = false;

} // namespace

// Stands in front of RVMESH::init, which cannot fail by itself (see the linker's --wrap).
extern "C" {
bool __real__ZN6RVMESH4initEv();
bool __wrap__ZN6RVMESH4initEv() { return !meshClassFails && __real__ZN6RVMESH4initEv(); }
bool __real__ZN9RVEMITTER4initEv();
bool __wrap__ZN9RVEMITTER4initEv() { return !emitterClassFails && __real__ZN9RVEMITTER4initEv(); }
}

namespace ravolt::test {

// The private start and stop of RVSETTINGS and RVSHADER, handed out by explicit instantiations.
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
        mark = markLog();
    }
    void TearDown() override {
        meshClassFails = false;
        emitterClassFails = false;
        RAVOLT::free();
        SilentTest::TearDown();
    }

    // The calls of a start that must fail, without the reading of the error's text.
    Calls failingStart() {
        recorder.start();
        EXPECT_FALSE(RAVOLT::init(nullptr));
        const Calls calls = recorder.stop().without({"SDL_GetError"});
        EXPECT_FALSE(RAVOLT::isActive());
        EXPECT_FALSE(RVSETTINGS::isActive());
        EXPECT_FALSE(RVELEMENT::isActive());
        return calls;
    }

    // What the log says behind the (last) line given.
    std::string logBehind(const std::string &line) const {
        const std::string log = logTextSince(mark);
        const std::size_t place = log.rfind(line);
        return place == std::string::npos ? "not there: " + line : log.substr(place + line.size());
    }

    // The engine's own targets, textures and programs went with the start that made them.
    static void expectNothingLeft() {
        EXPECT_EQ(RVFBO::getNumberOfFbos(), 0u);
        EXPECT_EQ(RVTEXTURE::getNumberOfTextures(), 0u);
        EXPECT_EQ(RVSHADER::getNumberOfShaders(), 0u);
        EXPECT_EQ(RAVOLT::getUsedVideoMemory(), 0u);
        EXPECT_EQ(RVTEXTURE::getUsedMemory(), 0);
        const unsigned int id = zlfNewId();
        EXPECT_EQ(id, 1u);
        releaseId(id);
    }

    // A start that works tells that nothing of the failed one is left.
    void expectCleanStart() {
        recorder.reset();
        recorder.silent();
        markLog();
        EXPECT_TRUE(RAVOLT::init(nullptr));
        EXPECT_NOT_LOGGED("   [!] Settings already active");
        EXPECT_NOT_LOGGED("   [!] OpenGL already active @ RVOPENGL::init");
        EXPECT_NOT_LOGGED("   [!] Already active @ RVELEMENT::init");
        EXPECT_TRUE(RAVOLT::free());
    }

    LogMark mark = 0;
};

// With the engine's own render targets, their textures and the programs.
std::vector<std::string> logOfStop(const std::string &nodes = "", const std::string &materials = "",
                                   int textures = 14) {
    std::vector<std::string> lines = {"   Ravolt is shutting down...", nodes,
                                      "   14 fbo(s) released", "   35 shader(s) released",
                                      materials};
    lines.insert(lines.end(), 14, "   [dynamic] unloaded");
    for (const std::string &line :
         {"   " + std::to_string(textures) + " texture(s) released",
          std::string("   Release OpenGL..."), std::string("   OpenGL released"),
          std::string("   Release settings..."), std::string("   Settings released"),
          std::string("   SDL released"), std::string("   Shutdown complete")})
        lines.push_back(line);
    std::erase(lines, "");
    lines.push_back("");
    return lines;
}

// The end of a failed start.
const std::string settingsUndone = "   Release settings...\n"
                                   "   Settings released\n";
const std::string allUndone = "   Release OpenGL...\n"
                              "   OpenGL released\n" +
                              settingsUndone;

const std::string logOfFailedList =
    "   [!] Out of memory @ RVELEMENT::init\n"
    "   [!] Rendering elements failed to initialize @ RAVOLT::init\n" +
    allUndone;

// All timers but those that run already; gives them back.
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
    recorder.start();
    ASSERT_TRUE(RAVOLT::init(nullptr));
    const Calls calls = recorder.stop();
    EXPECT_TRUE(RAVOLT::isActive());
    EXPECT_TRUE(RVSETTINGS::isActive());
    EXPECT_TRUE(RVELEMENT::isActive());
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

    std::vector<std::string> lines = linesSince(mark);
    const std::vector<std::string> opening = {"   SDL initialized", "   Initialize Ravolt", "",
                                              "   [!] Standard configuration used",
                                              "   Init settings..."};
    ASSERT_GT(lines.size(), opening.size());
    EXPECT_EQ(std::vector<std::string>(lines.begin(), lines.begin() + 5), opening);
    EXPECT_EQ(logBehind("   OpenGL initialized\n"),
              "   4096 elements allocated\n"
              "   [!] No VRam detected: software mode supposed (16 MB allocated by default)\n"
              "   Driver name: silent\n"
              "   VRam detected: 16384 KB\n"
              "   Initialization complete\n\n");
}

TEST_F(LifecycleTest, GivenSettingsAreUsedWithoutAWord) {
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
    for (const int asked : {0, -1, 4097}) {
        RVSETTINGS settings;
        settings.setRenderingElements(asked);
        ASSERT_TRUE(RAVOLT::init(&settings));
        EXPECT_EQ(RVELEMENT::getNumberOfElements(), 4096u) << asked;
        RAVOLT::free();
    }
}

TEST_F(LifecycleTest, StopFollowsItsChain) {
    ASSERT_TRUE(RAVOLT::init(nullptr));
    mark = markLog();
    const Calls calls = callsOf([&] { EXPECT_TRUE(RAVOLT::free()); });
    EXPECT_EQ(linesSince(mark), logOfStop());
    EXPECT_EQ(calls.back(), Call("SDL_Quit"));
    EXPECT_EQ(calls.count("SDL_Quit"), 1u);
    EXPECT_FALSE(RAVOLT::isActive());
    EXPECT_FALSE(RVSETTINGS::isActive());
    EXPECT_FALSE(RVELEMENT::isActive());
}

TEST_F(LifecycleTest, StopDestroysWhatLivesNodesFirst) {
    new RVNODE; // objects may be made before the start
    ASSERT_TRUE(RAVOLT::init(nullptr));
    new RVNODE;
    new RVMATERIAL;
    new RVTEXTURE;
    new RVANIM; // goes without a word
    mark = markLog();
    EXPECT_TRUE(RAVOLT::free());
    EXPECT_EQ(linesSince(mark), logOfStop("   2 node(s) released @ RVNODE::cleanUp",
                                          "   1 material(s) released", 15));
    EXPECT_EQ(RVNODE::getNumberOfNodes(), 0u);
    EXPECT_EQ(RVANIM::getNumberOfAnims(), 0u);
    EXPECT_EQ(zlfNewId(), 1u); // every identifier is back
    releaseId(1);
}

TEST_F(LifecycleTest, StopOfAStoppedEngineSaysNothing) {
    EXPECT_TRUE(callsOf([&] { EXPECT_FALSE(RAVOLT::free()); }).empty());
    EXPECT_NOTHING_LOGGED();
}

TEST_F(LifecycleTest, StopFreesTheTimer) {
    const OtherTimers others;
    zlfFreeTimer(others.all.front());
    ASSERT_TRUE(RAVOLT::init(nullptr));
    EXPECT_EQ(zlfNewTimer(1), -1); // the engine has the last one
    ASSERT_TRUE(RAVOLT::free());
    EXPECT_EQ(zlfNewTimer(1), others.all.front());
}

TEST_F(LifecycleTest, StartDoesNotMindThatAllTimersAreTaken) {
    const OtherTimers others;
    markLog();
    EXPECT_TRUE(RAVOLT::init(nullptr));
    EXPECT_LOGGED_TIMES(1, "zlfNewTimer: no more timers");
    EXPECT_TRUE(RAVOLT::free());
    EXPECT_LOGGED_TIMES(1, "zlfFreeTimer: wrong params");
}

// --- Start again

TEST_F(LifecycleTest, SecondStartLeavesTheRunningEngineUntouched) {
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
    RAVOLT::free();
    const LogMark second = markLog();
    recorder.start();
    ASSERT_TRUE(RAVOLT::init(nullptr));
    const Calls again = recorder.stop();
    const std::string secondLog = logTextSince(second);
    RAVOLT::free();
    const LogMark third = markLog();
    recorder.start();
    ASSERT_TRUE(RAVOLT::init(nullptr));
    EXPECT_EQ(recorder.stop().names(), again.names());
    EXPECT_EQ(logTextSince(third), secondLog);
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

TEST_F(LifecycleTest, FailedSdlInitUndoesNothing) {
    recorder.failSdlInit("the screen is gone");
    EXPECT_EQ(failingStart(), (Calls{{"SDL_Init", SDL_INIT_VIDEO}}));
    EXPECT_LOGGED_EXACTLY(
        "   [!] Unable to init SDL_INIT_VIDEO (the screen is gone) @ RAVOLT::init\n");
    expectCleanStart();
}

TEST_F(LifecycleTest, IncompatibleModeQuitsSdl) {
    recorder.refuseVideoMode();
    EXPECT_EQ(failingStart(), (Calls{{"SDL_Init", SDL_INIT_VIDEO},
                                     {"SDL_VideoModeOK", 640, 480, 16, SDL_OPENGL},
                                     {"SDL_Quit"}}));
    EXPECT_EQ(logBehind("          Water map size : 256\n"),
              "   [!] Incompatible config @ RVSETTINGS::init\n"
              "   [!] Unable to init settings @ RAVOLT::init\n");
    expectCleanStart();
}

TEST_F(LifecycleTest, FailedModeQuitsSdl) {
    recorder.failSetVideoMode("no visual");
    const Calls calls = failingStart();
    ASSERT_GE(calls.size(), 2u);
    EXPECT_EQ(calls[calls.size() - 2].name, "SDL_SetVideoMode");
    EXPECT_EQ(calls.back(), Call("SDL_Quit"));
    EXPECT_EQ(logBehind("          Font path   : ''\n"),
              "   [!] Unsupported video config (no visual) @ RVSETTINGS::init\n"
              "   [!] Unable to init settings @ RAVOLT::init\n");
    expectCleanStart();
}

TEST_F(LifecycleTest, SettingsThatAreActiveAlreadyQuitSdl) {
    RVSETTINGS running;
    ASSERT_TRUE((running.*reach(SettingsInit()))());
    mark = markLog();
    recorder.start();
    EXPECT_FALSE(RAVOLT::init(nullptr));
    EXPECT_EQ(recorder.stop(), (Calls{{"SDL_Init", SDL_INIT_VIDEO}, {"SDL_Quit"}}));
    EXPECT_EQ(logBehind("   [!] Standard configuration used\n"),
              "   [!] Settings already active\n"
              "   [!] Unable to init settings @ RAVOLT::init\n");
    EXPECT_TRUE(RVSETTINGS::isActive());
    EXPECT_TRUE(reach(SettingsFree())());
    EXPECT_FALSE(reach(SettingsFree())());
    expectCleanStart();
}

TEST_F(LifecycleTest, FailedOpenGLUndoesSettingsAndSdl) {
    ASSERT_TRUE(startOpenGL());
    mark = markLog();
    const Calls calls = failingStart();
    EXPECT_EQ(calls.back(), Call("SDL_Quit"));
    EXPECT_EQ(logBehind("   Settings initialized\n"),
              "   [!] OpenGL already active @ RVOPENGL::init\n"
              "   [!] Unable to init OpenGL @ RAVOLT::init\n" +
                  settingsUndone);
    EXPECT_TRUE(stopOpenGL());
    expectCleanStart();
}

// Targets, textures and programs go while their context is there: their names would mean other
// things in the next one.
TEST_F(LifecycleTest, FailedListUndoesOpenGLSettingsAndSdl) {
    recorder.failAllocation(4096 * sizeof(RVELEMENT));
    const Calls calls = failingStart();
    EXPECT_EQ(calls.back(), Call("SDL_Quit"));
    EXPECT_FALSE(calls.contains("SDL_GetVideoInfo"));
    EXPECT_EQ(logBehind("   OpenGL initialized\n"), logOfFailedList);
    expectNothingLeft();
    for (int index = 0; index < 14; ++index)
        EXPECT_EQ(RVOPENGL::getFbo(index), nullptr) << index;
    for (const char *name :
         {"glDeleteFramebuffersEXT", "glDeleteTextures", "glDeleteRenderbuffersEXT"})
        EXPECT_TRUE(calls.haveInOrder({{calls.named(name).back()}, {"SDL_Quit"}})) << name;
    EXPECT_EQ(calls.count("glDeleteFramebuffersEXT"), 14u);
    EXPECT_EQ(calls.count("glDeleteRenderbuffersEXT"), 2u);
    expectCleanStart();
}

TEST_F(LifecycleTest, FailedOrderOfTheListUndoesTheSame) {
    // The splash picture, the pixel copies of six render targets and the list's entries come
    // first. Nothing is recorded meanwhile, since a recording allocates too.
    recorder.failAllocation(4096 * sizeof(RVELEMENT *), 8, 1);
    EXPECT_FALSE(RAVOLT::init(nullptr));
    EXPECT_FALSE(RVELEMENT::isActive());
    EXPECT_EQ(logBehind("   OpenGL initialized\n"), logOfFailedList);
    expectNothingLeft();
    expectCleanStart();
}

TEST_F(LifecycleTest, ListThatIsThereAlreadyUndoesTheRest) {
    ASSERT_TRUE(RVELEMENT::init(1));
    EXPECT_FALSE(RAVOLT::init(nullptr));
    EXPECT_EQ(logBehind("   OpenGL initialized\n"),
              "   [!] Already active @ RVELEMENT::init\n"
              "   [!] Rendering elements failed to initialize @ RAVOLT::init\n" +
                  allUndone);
    EXPECT_TRUE(RVELEMENT::isActive()); // the start did not make it
    RVELEMENT::free();
    expectCleanStart();
}

TEST_F(LifecycleTest, FailedMeshClassUndoesTheListAndTheRest) {
    meshClassFails = true;
    const Calls calls = failingStart();
    EXPECT_EQ(calls.back(), Call("SDL_Quit"));
    EXPECT_EQ(logBehind("   4096 elements allocated\n"),
              "   [!] Unable to initialize mesh class @ RAVOLT::init\n" + allUndone);
    meshClassFails = false;
    expectNothingLeft();
    expectCleanStart();
}

TEST_F(LifecycleTest, FailedEmitterClassUndoesTheMeshClassAndTheRest) {
    emitterClassFails = true;
    const Calls calls = failingStart();
    emitterClassFails = false;
    EXPECT_EQ(calls.back(), Call("SDL_Quit"));
    EXPECT_EQ(logBehind("   4096 elements allocated\n"),
              "   [!] Unable to initialize emitter class @ RAVOLT::init\n"
              "   Release OpenGL...\n"
              "   OpenGL released\n"
              "   Release settings...\n"
              "   Settings released\n");
    expectNothingLeft();
    expectCleanStart();
}

// Objects that were there before the start are the application's.
TEST_F(LifecycleTest, AFailedStartLeavesWhatItHasNotMade) {
    auto *target = new RVFBO;
    auto *texture = new RVTEXTURE;
    auto *program = new RVSHADER;
    meshClassFails = true;
    failingStart();
    meshClassFails = false;
    EXPECT_EQ(RVFBO::getNumberOfFbos(), 1u);
    EXPECT_EQ(RVTEXTURE::findById(texture->getId()), texture);
    EXPECT_EQ(RVTEXTURE::getNumberOfTextures(), 1u);
    EXPECT_EQ(RVSHADER::findById(program->getId()), program);
    EXPECT_EQ(RVSHADER::getNumberOfShaders(), 1u);
    delete target;
    delete texture;
    delete program;
    expectNothingLeft();
    expectCleanStart();
}

// The only way for them to fail is that they have run.
TEST_F(LifecycleTest, ClassesOfProgramsThatFailUndoTheTargets) {
    RVSETTINGS settings;
    settings.setShaders(true);
    ASSERT_TRUE((settings.*reach(SettingsInit()))());
    ASSERT_TRUE(startOpenGL());
    ASSERT_TRUE(reach(ShadersInit())());
    ASSERT_TRUE(stopOpenGL());
    ASSERT_TRUE(reach(SettingsFree())());
    const unsigned int programs = RVSHADER::getNumberOfShaders();
    const unsigned int targets = RVFBO::getNumberOfFbos();
    mark = markLog();
    EXPECT_EQ(callsOf([&] { EXPECT_FALSE(RAVOLT::init(&settings)); }).back(), Call("SDL_Quit"));
    EXPECT_FALSE(RVSETTINGS::isActive());
    EXPECT_EQ(logBehind("   OpenGL initialized\n"),
              "   [!] Shaders already active @ RVSHADER::init\n"
              "   [!] Unable to init shaders @ RAVOLT::init\n" +
                  allUndone);
    EXPECT_EQ(RVSHADER::getNumberOfShaders(), programs);
    EXPECT_EQ(RVFBO::getNumberOfFbos(), targets);
    EXPECT_TRUE(reach(ShadersFree())());
    RVFBO::cleanUp();
    RVTEXTURE::cleanUp();
    RVSHADER::cleanUp();
    expectCleanStart();
}

// The pool's pointers stay, and name nothing any more.
TEST_F(LifecycleTest, AFrameOfAStoppedEngineAsksForNoTarget) {
    RVSETTINGS settings;
    settings.setShaders(true);
    settings.setForceFBO(true);
    ASSERT_TRUE(RAVOLT::init(&settings));
    ASSERT_TRUE(RVSHADER::useBloom());
    RAVOLT::bloomingOn();
    RAVOLT::DOFOn();
    RAVOLT::shadowingOn();
    ASSERT_TRUE(RAVOLT::free());
    recorder.start();
    RAVOLT::clear(true, true, false);
    RAVOLT::begin3D(nullptr);
    RAVOLT::end3D(true);
    const Calls calls = recorder.stop();
    RAVOLT::bloomingOff();
    RAVOLT::DOFOff();
    RAVOLT::shadowingOff();
    EXPECT_EQ(calls[0], Call("glClear", GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT));
    EXPECT_FALSE(calls.contains("glBindFramebufferEXT"));
}

// --- Video memory

TEST_F(LifecycleTest, VideoMemoryIsWhatSdlReports) {
    recorder.videoMemory(262144);
    recorder.driverName("x11");
    ASSERT_TRUE(RAVOLT::init(nullptr));
    EXPECT_EQ(RAVOLT::getVideoMemory(), 268435456u);
    EXPECT_EQ(logBehind("   4096 elements allocated\n"), "   Driver name: x11\n"
                                                         "   VRam detected: 262144 KB\n"
                                                         "   Initialization complete\n\n");
}

TEST_F(LifecycleTest, AVideoMemoryBudgetReplacesWhatSdlReports) {
    struct Row {
        int budget;
        unsigned int bytes;
        const char *figure;
    };
    for (const Row &row :
         {Row{64, 67108864u, "65536"}, Row{1, 1048576u, "1024"}, Row{2047, 2146435072u, "2096128"},
          Row{2048, 2146435072u, "2096128"}, Row{2147483647, 2146435072u, "2096128"}}) {
        for (const unsigned int reported : {0u, 262144u}) {
            recorder.videoMemory(reported);
            recorder.driverName("x11");
            RVSETTINGS settings;
            settings.setVideoMemory(row.budget);
            ASSERT_TRUE(RAVOLT::init(&settings));
            EXPECT_EQ(RAVOLT::getVideoMemory(), row.bytes);
            EXPECT_EQ(logBehind("   4096 elements allocated\n"),
                      "   Driver name: x11\n"
                      "   VRam budget: " +
                          std::string(row.figure) +
                          " KB\n"
                          "   Initialization complete\n\n");
            RAVOLT::free();
        }
    }
}

TEST_F(LifecycleTest, ANegativeVideoMemoryBudgetIsNone) {
    recorder.videoMemory(262144);
    RVSETTINGS settings;
    settings.setVideoMemory(-1);
    ASSERT_TRUE(RAVOLT::init(&settings));
    EXPECT_EQ(RAVOLT::getVideoMemory(), 268435456u);
    EXPECT_LOGGED("   VRam detected: 262144 KB");
}

TEST_F(LifecycleTest, NoVideoMemoryMeans16Megabytes) {
    for (const unsigned int kilobytes : {0u, 4194304u}) { // 4 GB wrap to nothing
        recorder.videoMemory(kilobytes);
        markLog();
        ASSERT_TRUE(RAVOLT::init(nullptr));
        EXPECT_EQ(RAVOLT::getVideoMemory(), 16777216u);
        EXPECT_LOGGED_TIMES(
            1, "   [!] No VRam detected: software mode supposed (16 MB allocated by default)");
        EXPECT_LOGGED("   VRam detected: 16384 KB");
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
