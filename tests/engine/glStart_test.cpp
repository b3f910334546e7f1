// The detection of the capabilities, one after the other, with a driver that draws nothing and
// offers what a test says.

#include "ravolt/RVFBO.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVSETTINGS.h"
#include "ravolt/RVTEXTURE.h"
#include "ravolt/zlf.h"
#include "tests/engine/openGLAccess.h"
#include "tests/support/logReader.h"
#include "tests/support/recorder.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

namespace ravolt::test {
namespace {

const std::vector<std::string> extensionNames = {"GL_EXT_texture_filter_anisotropic",
                                                 "GL_ARB_multitexture",
                                                 "GL_ARB_vertex_buffer_object",
                                                 "GL_ARB_vertex_shader",
                                                 "GL_ARB_fragment_shader",
                                                 "GL_ARB_depth_texture",
                                                 "GL_ARB_shadow",
                                                 "GL_ARB_texture_non_power_of_two",
                                                 "GL_ARB_texture_float",
                                                 "GL_EXT_framebuffer_object",
                                                 "GL_ARB_occlusion_query"};

// What the recorder makes of the driver, and what the start must make of it.
struct Display {
    std::vector<std::string> extensions = extensionNames;
    std::string vendor = "Somebody";
    int units = 16;
    bool shadersWanted = true;

    void lose(const std::string &name) { std::erase(extensions, name); }
    bool has(const std::string &name) const {
        return std::find(extensions.begin(), extensions.end(), name) != extensions.end();
    }
    std::string list() const {
        std::string text;
        for (const std::string &name : extensions)
            text += name + " ";
        return text;
    }
};

struct Capabilities {
    bool anisotropic = false, multitexture = false, VBO = false, shaders = false, FBO = false,
         queries = false;

    friend bool operator==(const Capabilities &, const Capabilities &) = default;
    friend void PrintTo(const Capabilities &is, std::ostream *out) {
        *out << "anisotropic " << is.anisotropic << " multitexture " << is.multitexture << " VBO "
             << is.VBO << " shaders " << is.shaders << " FBO " << is.FBO << " queries "
             << is.queries;
    }
};

Capabilities found() {
    return {RVOPENGL::useAnisotropic(), RVOPENGL::useMultitexturing(),
            RVOPENGL::useVBO(),         RVOPENGL::useShaders(),
            RVOPENGL::useFBO(),         RVOPENGL::useOcclusionQuery()};
}

struct Outcome {
    std::string log;
    Capabilities capabilities;
};

const std::string atiLine =
    "      GL_EXT_framebuffer_object found but disabled because driver-side bugged (buy an NVidia "
    "card, your ATI OpenGL driver is just a piece of crap)\n";

void expectTargets(const Display &display, Outcome &outcome) {
    std::string &log = outcome.log;
    if (!display.has("GL_ARB_texture_non_power_of_two")) {
        log += "   [!] GL_ARB_texture_non_power_of_two not found @ RVOPENGL::init\n";
        return;
    }
    log += "      GL_ARB_texture_non_power_of_two\n";
    if (!display.has("GL_ARB_texture_float")) {
        log += "   [!] GL_ARB_texture_float not found @ RVOPENGL::init\n";
        return;
    }
    log += "      GL_ARB_texture_float\n";
    if (!display.has("GL_EXT_framebuffer_object")) {
        log += "   [!] GL_EXT_framebuffer_object not found @ RVOPENGL::init\n";
    } else if (display.vendor.find("ATI") != std::string::npos) {
        log += atiLine;
    } else {
        log += "      GL_EXT_framebuffer_object\n";
        outcome.capabilities.FBO = true;
    }
}

void expectUnits(const Display &display, Outcome &outcome) {
    std::string &log = outcome.log;
    if (!display.has("GL_ARB_multitexture")) {
        log += "   [!] GL_ARB_multitexture not supported @ RVOPENGL::init\n";
        return;
    }
    log += "      GL_ARB_multitexture (";
    outcome.capabilities.multitexture = display.units >= 16;
    if (display.units < 16)
        log += "   [!] Only " + std::to_string(display.units) + " texture units (16 required)";
    log += std::to_string(display.units) + " units)\n";
}

void expectShaders(const Display &display, Outcome &outcome) {
    if (!display.shadersWanted)
        return;
    outcome.capabilities.shaders =
        display.has("GL_ARB_vertex_shader") && display.has("GL_ARB_fragment_shader");
    outcome.log += outcome.capabilities.shaders
                       ? "      GL_ARB_vertex_shader\n      GL_ARB_fragment_shader\n"
                       : "   [!] Shaders not found @ RVOPENGL::init\n";
}

Outcome expected(const Display &display) {
    Outcome outcome;
    std::string &log = outcome.log;
    log = "   Init OpenGL...\n      Vendor    : " + display.vendor +
          "\n      Renderer  : Silent\n      Version   : 2.1\n      Extensions: " + display.list() +
          "\n\n";
    outcome.capabilities.anisotropic = display.has("GL_EXT_texture_filter_anisotropic");
    log += outcome.capabilities.anisotropic
               ? "      GL_EXT_texture_filter_anisotropic (level 8.0)\n"
               : "   [!] GL_EXT_texture_filter_anisotropic not supported @ RVOPENGL::init\n";
    expectUnits(display, outcome);
    outcome.capabilities.VBO = display.has("GL_ARB_vertex_buffer_object");
    log += outcome.capabilities.VBO
               ? "      GL_ARB_vertex_buffer_object\n"
               : "   [!] GL_ARB_vertex_buffer_object not found @ RVOPENGL::init\n";
    expectShaders(display, outcome);
    log += display.has("GL_ARB_depth_texture") && display.has("GL_ARB_shadow")
               ? "      GL_ARB_depth_texture\n      GL_ARB_shadow\n"
               : "   [!] GL_ARB_depth_texture or GL_ARB_shadow not found @ RVOPENGL::init\n";
    expectTargets(display, outcome);
    outcome.capabilities.queries = display.has("GL_ARB_occlusion_query");
    log += outcome.capabilities.queries
               ? "      GL_ARB_occlusion_query\n"
               : "   [!] GL_ARB_occlusion_query not found @ RVOPENGL::init\n";
    log += "   OpenGL initialized\n";
    return outcome;
}

// What each extension brings, in the order in which it is fetched.
const std::vector<std::pair<std::string, std::vector<std::string>>> functionsOf = {
    {"multitexture", {"glActiveTextureARB", "glMultiTexCoord2fARB", "glClientActiveTextureARB"}},
    {"vertexBuffers",
     {"glGenBuffersARB", "glBindBufferARB", "glBufferDataARB", "glDeleteBuffersARB"}},
    {"shaders",
     {"glCreateShaderObjectARB",
      "glShaderSourceARB",
      "glCompileShaderARB",
      "glCreateProgramObjectARB",
      "glAttachObjectARB",
      "glLinkProgramARB",
      "glUseProgramObjectARB",
      "glDeleteObjectARB",
      "glDetachObjectARB",
      "glGetObjectParameterivARB",
      "glGetUniformLocationARB",
      "glUniform1iARB",
      "glUniform1fARB",
      "glUniform3fARB",
      "glUniform4fARB",
      "glUniform3fvARB",
      "glUniform4fvARB",
      "glUniformMatrix4fvARB",
      "glVertexAttribPointerARB",
      "glEnableVertexAttribArrayARB",
      "glDisableVertexAttribArrayARB",
      "glGetAttribLocationARB"}},
    {"framebuffers",
     {"glGenFramebuffersEXT", "glDeleteFramebuffersEXT", "glBindFramebufferEXT",
      "glFramebufferTexture2DEXT", "glGenRenderbuffersEXT", "glDeleteRenderbuffersEXT",
      "glBindRenderbufferEXT", "glRenderbufferStorageEXT", "glFramebufferRenderbufferEXT",
      "glGenerateMipmapEXT", "glCheckFramebufferStatusEXT"}},
    {"occlusionQueries",
     {"glGenQueriesARB", "glDeleteQueriesARB", "glIsQueryARB", "glBeginQueryARB", "glEndQueryARB",
      "glGetQueryivARB", "glGetQueryObjectivARB", "glGetQueryObjectuivARB"}},
};

const std::vector<std::string> &entryNames(const std::string &group) {
    return std::find_if(functionsOf.begin(), functionsOf.end(),
                        [&](const auto &row) { return row.first == group; })
        ->second;
}

// The names that the engine's list holds for a group, in its order.
std::vector<std::string> listedNames(const std::string &group) {
    std::vector<std::string> names;
#define RV_GL_ENTRY_POINT(extension, name)                                                         \
    if (group == #extension)                                                                       \
        names.push_back(#name);
#include "engine/gl/glEntryPoints.inc"
    return names;
}

bool isLoaded(const std::string &wanted) {
#define RV_GL_ENTRY_POINT(group, name)                                                             \
    if (wanted == #name)                                                                           \
        return RVOPENGL::name != nullptr;
#include "engine/gl/glEntryPoints.inc"
    ADD_FAILURE() << wanted << " is not in the list";
    return false;
}

std::vector<std::string> askedFor(const Calls &calls) {
    std::vector<std::string> names;
    for (const Call &call : calls.named("SDL_GL_GetProcAddress"))
        names.push_back(call.text);
    return names;
}

class GlStart : public SilentTest {
  protected:
    void SetUp() override {
        SilentTest::SetUp();
        zlfSetConsoleEcho(false);
        finalMemoryRatio(); // a new log
        resetCapabilities();
    }

    void TearDown() override {
        stopOpenGL();
        RVFBO::cleanUp();
        RVTEXTURE::cleanUp();
        resetCapabilities();
        RVSETTINGS::forceShadersOff();
        zlfSetConsoleEcho(true);
        SilentTest::TearDown();
    }

    void show(const Display &display) {
        recorder.setExtensions(display.list());
        recorder.setVendor(display.vendor);
        recorder.setTextureUnits(display.units);
        recorder.setFloat(GL_MAX_TEXTURE_MAX_ANISOTROPY_EXT, 8);
        display.shadersWanted ? RVSETTINGS::forceShadersOn() : RVSETTINGS::forceShadersOff();
    }

    void start(const Display &display) {
        show(display);
        markLog();
        EXPECT_TRUE(startOpenGL());
    }

    void expectOutcome(const Display &display) {
        const Outcome outcome = expected(display);
        EXPECT_LOGGED_EXACTLY(outcome.log);
        EXPECT_EQ(found(), outcome.capabilities);
        for (int index = 0; index < 14; ++index)
            EXPECT_EQ(RVOPENGL::getFbo(index) != nullptr, outcome.capabilities.FBO) << index;
        EXPECT_EQ(RVFBO::getNumberOfFbos(), outcome.capabilities.FBO ? 14u : 0u);
        RVFBO::cleanUp();
        RVTEXTURE::cleanUp();
    }
};

TEST_F(GlStart, LogsAFullDriverLineByLine) {
    start({});
    EXPECT_LOGGED_EXACTLY(
        "   Init OpenGL...\n"
        "      Vendor    : Somebody\n"
        "      Renderer  : Silent\n"
        "      Version   : 2.1\n"
        "      Extensions: GL_EXT_texture_filter_anisotropic GL_ARB_multitexture "
        "GL_ARB_vertex_buffer_object GL_ARB_vertex_shader GL_ARB_fragment_shader "
        "GL_ARB_depth_texture GL_ARB_shadow GL_ARB_texture_non_power_of_two GL_ARB_texture_float "
        "GL_EXT_framebuffer_object GL_ARB_occlusion_query \n"
        "\n"
        "      GL_EXT_texture_filter_anisotropic (level 8.0)\n"
        "      GL_ARB_multitexture (16 units)\n"
        "      GL_ARB_vertex_buffer_object\n"
        "      GL_ARB_vertex_shader\n"
        "      GL_ARB_fragment_shader\n"
        "      GL_ARB_depth_texture\n"
        "      GL_ARB_shadow\n"
        "      GL_ARB_texture_non_power_of_two\n"
        "      GL_ARB_texture_float\n"
        "      GL_EXT_framebuffer_object\n"
        "      GL_ARB_occlusion_query\n"
        "   OpenGL initialized\n");
    EXPECT_EQ(found(), (Capabilities{true, true, true, true, true, true}));
    EXPECT_EQ(RVOPENGL::getAnisotropicLevel(), 8);
}

TEST_F(GlStart, FetchesEveryEntryPointInTheOrderOfTheTable) {
    show({});
    recorder.start();
    startOpenGL();
    std::vector<std::string> all;
    for (const auto &[group, names] : functionsOf) {
        all.insert(all.end(), names.begin(), names.end());
        EXPECT_EQ(listedNames(group), names); // what other tests go through
    }
    EXPECT_EQ(all.size(), 48u);
    EXPECT_EQ(askedFor(recorder.stop()), all);
    for (const std::string &name : all)
        EXPECT_TRUE(isLoaded(name)) << name;
}

TEST_F(GlStart, AMissingExtensionIsALineAndAFlag) {
    for (const std::string &name : extensionNames) {
        SCOPED_TRACE(name);
        Display display;
        display.lose(name);
        start(display);
        expectOutcome(display);
        stopOpenGL();
        resetCapabilities();
    }
}

struct Driver {
    const char *name;
    const char *vendor;
    int units;
    bool shadersWanted;
};

void PrintTo(const Driver &driver, std::ostream *out) { *out << driver.name; }

class AnyCombination : public GlStart, public testing::WithParamInterface<Driver> {};

TEST_P(AnyCombination, OfTheExtensionsIsALineAndAFlagEach) {
    const std::size_t combinations = std::size_t(1) << extensionNames.size();
    ASSERT_EQ(combinations, 2048u);
    Display display;
    display.vendor = GetParam().vendor;
    display.units = GetParam().units;
    display.shadersWanted = GetParam().shadersWanted;
    for (std::size_t combination = 0; combination < combinations; ++combination) {
        display.extensions.clear();
        for (std::size_t bit = 0; bit < extensionNames.size(); ++bit)
            if (combination >> bit & 1)
                display.extensions.push_back(extensionNames[bit]);
        start(display);
        expectOutcome(display);
        ASSERT_FALSE(HasFailure()) << display.list();
        stopOpenGL();
        resetCapabilities();
        if (combination % 64 == 0)
            finalMemoryRatio(); // keeps the log short
    }
}

constexpr const char *distrusted = "ATI Technologies Inc.";

INSTANTIATE_TEST_SUITE_P(
    BeforeEachDriver, AnyCombination,
    testing::Values(Driver{"Full", "Somebody", 16, true}, Driver{"EightUnits", "Somebody", 8, true},
                    Driver{"Distrusted", distrusted, 16, true},
                    Driver{"DistrustedWithEightUnits", distrusted, 8, true},
                    Driver{"ShadersNotWanted", "Somebody", 16, false},
                    Driver{"EightUnitsShadersNotWanted", "Somebody", 8, false},
                    Driver{"DistrustedShadersNotWanted", distrusted, 16, false},
                    Driver{"DistrustedWithEightUnitsShadersNotWanted", distrusted, 8, false}),
    [](const auto &tested) { return std::string(tested.param.name); });

TEST_F(GlStart, WithoutTexturesOfAnySizeTargetsAreNotLookedFor) {
    Display display;
    display.lose("GL_ARB_texture_non_power_of_two");
    show(display);
    markLog();
    const std::vector<std::string> asked = askedFor(callsOf([&] { startOpenGL(); }));
    for (const std::string &name : entryNames("framebuffers"))
        EXPECT_EQ(std::count(asked.begin(), asked.end(), name), 0) << name;
    EXPECT_LOGGED("   [!] GL_ARB_texture_non_power_of_two not found @ RVOPENGL::init");
    EXPECT_NOT_LOGGED("      GL_ARB_texture_float");
    EXPECT_NOT_LOGGED("      GL_EXT_framebuffer_object");
    EXPECT_FALSE(RVOPENGL::useFBO());
}

TEST_F(GlStart, EightImageUnitsSayItInOneLineAndLeaveTheFunctionsLoaded) {
    Display display;
    display.units = 8;
    start(display);
    EXPECT_LOGGED("      GL_ARB_multitexture (   [!] Only 8 texture units (16 required)8 units)");
    EXPECT_FALSE(RVOPENGL::useMultitexturing());
    for (const std::string &name : entryNames("multitexture"))
        EXPECT_TRUE(isLoaded(name)) << name;
}

TEST_F(GlStart, SixteenImageUnitsAreEnoughAndFifteenAreNot) {
    Display display;
    display.units = 15;
    start(display);
    EXPECT_FALSE(RVOPENGL::useMultitexturing());
    stopOpenGL();
    display.units = 16;
    start(display);
    EXPECT_TRUE(RVOPENGL::useMultitexturing());
    EXPECT_LOGGED("      GL_ARB_multitexture (16 units)");
}

TEST_F(GlStart, AVendorWithTheThreeLettersAnywhereHasNoTargets) {
    for (const char *vendor : {"ATI", "ATI Technologies Inc.", "MATIC CORPORATION", "NATIONAL"}) {
        SCOPED_TRACE(vendor);
        Display display;
        display.vendor = vendor;
        start(display);
        EXPECT_TRUE(logTextSince(0).find("      GL_ARB_texture_float\n" + atiLine +
                                         "      GL_ARB_occlusion_query\n") != std::string::npos);
        expectOutcome(display);
        EXPECT_FALSE(isLoaded("glGenFramebuffersEXT"));
        stopOpenGL();
    }
}

TEST_F(GlStart, TheThreeLettersCountAsTheyStand) {
    Display display;
    display.vendor = "National Ati";
    start(display);
    EXPECT_TRUE(RVOPENGL::useFBO());
}

TEST_F(GlStart, ShadersNotRequestedAreNotLogged) {
    Display display;
    display.shadersWanted = false;
    start(display);
    EXPECT_FALSE(RVOPENGL::useShaders());
    EXPECT_FALSE(isLoaded("glCreateShaderObjectARB"));
    const std::string list = display.list();
    std::string log = logTextSince(0);
    log.erase(log.find(list), list.size());
    EXPECT_EQ(log.find("hader"), std::string::npos) << log;
}

TEST_F(GlStart, ALongerNameCountsAsTheShorterOneInIt) {
    Display display;
    display.lose("GL_ARB_occlusion_query");
    display.extensions.push_back("XGL_ARB_occlusion_query2");
    start(display);
    EXPECT_TRUE(RVOPENGL::useOcclusionQuery());
}

TEST_F(GlStart, ExtensionNamesAreNoFormats) {
    Display display;
    display.extensions.push_back("GL_%s%d%%");
    start(display);
    EXPECT_TRUE(logTextSince(0).find(" GL_%s%d%% \n\n") != std::string::npos);
}

TEST_F(GlStart, AListLongerThanALogTextIsLoggedWhole) {
    Display display;
    display.extensions.push_back(std::string(5000, 'x'));
    start(display);
    EXPECT_TRUE(logTextSince(0).find("      Extensions: " + display.list() + "\n\n") !=
                std::string::npos);
}

// What an entry point that comes back NULL adds to the log, and before what.
struct Gap {
    const char *group;
    const char *message;
    const char *before;
};

const Gap gaps[] = {
    {"multitexture", "", ""},
    {"vertexBuffers", "", ""},
    {"shaders", "INCOMPLETE EXTENSION\n", "      GL_ARB_vertex_shader\n"},
    {"framebuffers", "   [!] FBO incomplete extension!!\n", "      GL_EXT_framebuffer_object\n"},
    {"occlusionQueries", "   [!] Occlusion Query incomplete extension!!\n",
     "      GL_ARB_occlusion_query\n"},
};

TEST_F(GlStart, AnEntryPointThatIsNullIsReportedAndTheStartGoesOn) {
    for (const Gap &gap : gaps) {
        for (const std::string &name : entryNames(gap.group)) {
            SCOPED_TRACE(name);
            recorder.reset();
            recorder.silent();
            resetCapabilities();
            finalMemoryRatio();
            recorder.nullEntryPoint(name);
            start({});
            Outcome outcome = expected({});
            outcome.log.insert(outcome.log.find(gap.before, outcome.log.find("\n\n")), gap.message);
            EXPECT_LOGGED_EXACTLY(outcome.log);
            EXPECT_EQ(found(), outcome.capabilities);
            for (const std::string &other : entryNames(gap.group))
                EXPECT_EQ(isLoaded(other), other != name) << other;
            stopOpenGL();
        }
    }
}

TEST_F(GlStart, TwoMissingEntryPointsAreReportedOnce) {
    recorder.nullEntryPoint("glGenFramebuffersEXT");
    recorder.nullEntryPoint("glCheckFramebufferStatusEXT");
    start({});
    EXPECT_LOGGED_TIMES(1, "   [!] FBO incomplete extension!!");
}

TEST_F(GlStart, ASecondStartIsRefused) {
    start({});
    EXPECT_TRUE(isOpenGLActive());
    markLog();
    EXPECT_TRUE(callsOf([&] { EXPECT_FALSE(startOpenGL()); }).empty());
    EXPECT_LOGGED_EXACTLY("   [!] OpenGL already active @ RVOPENGL::init\n");
    EXPECT_TRUE(isOpenGLActive());
}

TEST_F(GlStart, FreeSaysSoOnceAndCallsNothing) {
    start({});
    markLog();
    recorder.start();
    EXPECT_TRUE(stopOpenGL());
    EXPECT_FALSE(isOpenGLActive());
    EXPECT_FALSE(stopOpenGL());
    EXPECT_TRUE(recorder.stop().empty());
    EXPECT_LOGGED_EXACTLY("   Release OpenGL...\n   OpenGL released\n");
}

TEST_F(GlStart, FlagsAndEntryPointsOutliveAStopAndAPoorerStart) {
    start({});
    stopOpenGL();
    const Capabilities all{true, true, true, true, true, true};
    EXPECT_EQ(found(), all);
    Display poor;
    poor.extensions.clear();
    start(poor);
    EXPECT_EQ(found(), all);
    EXPECT_EQ(RVFBO::getNumberOfFbos(), 28u) << "by the flag there is a pool once more";
    EXPECT_TRUE(isLoaded("glGenFramebuffersEXT"));
    EXPECT_EQ(RVOPENGL::getAnisotropicLevel(), 8);
    EXPECT_LOGGED_EXACTLY(expected(poor).log);
}

TEST_F(GlStart, ResetSetsTheBaseStateInItsOrder) {
    RVOPENGL::cullingOff();
    recorder.start();
    EXPECT_TRUE(resetOpenGL());
    Calls wanted{{"glClearColor", 0.2, 0.2, 0.6, 1},
                 {"glLightModelfv", GL_LIGHT_MODEL_AMBIENT, 0.2, 0.2, 0.2, 1},
                 {"glClearDepth", 1},
                 {"glClearStencil", 0},
                 {"glDepthFunc", GL_LESS},
                 {"glEnable", GL_DEPTH_TEST},
                 {"glShadeModel", GL_SMOOTH},
                 {"glHint", GL_PERSPECTIVE_CORRECTION_HINT, GL_NICEST},
                 {"glDisable", GL_DITHER},
                 {"glBlendFunc", GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA},
                 {"glAlphaFunc", GL_GREATER, 0.5},
                 {"glEnable", GL_CULL_FACE}};
    const Calls calls = recorder.stop();
    EXPECT_EQ(calls.without({"glLightf"}), wanted);
    EXPECT_TRUE(calls.haveInOrder(
        {{"glEnable", GL_CULL_FACE}, {"glLightf", GL_LIGHT0, GL_SPOT_EXPONENT, 0}}));
    EXPECT_EQ(calls.count("glLightf"), 20u); // which ones, see RVOPENGL_test.cpp
}

TEST_F(GlStart, ThePoolIsMadeTargetsFirstThenTheirTexturesWithTheMapAhead) {
    show({});
    const Calls calls = callsOf([&] { startOpenGL(); });
    std::vector<double> order;
    for (const Call &call : calls.named("glFramebufferTexture2DEXT"))
        order.push_back(call.arguments[3]);
    std::vector<double> wanted;
    for (int index : {2, 0, 1, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13})
        wanted.push_back(RVOPENGL::getFbo(index)->getTexture()->getGLId());
    EXPECT_EQ(order, wanted);
    EXPECT_EQ(calls.count("glRenderbufferStorageEXT"), 2u);
    const Calls made = calls.named({"glGenFramebuffersEXT", "glGenTextures"});
    ASSERT_EQ(made.size(), 28u);
    for (std::size_t index = 0; index < 28; ++index)
        EXPECT_EQ(made[index].name, index < 14 ? "glGenFramebuffersEXT" : "glGenTextures");
    EXPECT_EQ(calls.named("glBindFramebufferEXT").back(),
              (Call{"glBindFramebufferEXT", GL_FRAMEBUFFER_EXT, 0}));
}

TEST_F(GlStart, TheBaseStateIsSetAfterTheDetection) {
    show({});
    recorder.start();
    startOpenGL();
    EXPECT_TRUE(recorder.stop().haveInOrder({{"glGetString", GL_EXTENSIONS},
                                             {"glGetString", GL_VENDOR},
                                             {"glGetString", GL_RENDERER},
                                             {"glGetString", GL_VERSION},
                                             {"SDL_GL_GetProcAddress"},
                                             {"glClearColor", 0.2, 0.2, 0.6, 1}}));
}

} // namespace
} // namespace ravolt::test
