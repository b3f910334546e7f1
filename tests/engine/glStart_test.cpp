// The detection of the capabilities, one after the other, with a driver that draws nothing and
// offers what a test sets.

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
#include <sstream>
#include <string>
#include <vector>

namespace ravolt::test {
namespace {

using Names = std::vector<std::string>;

Names namesIn(const char *text) {
    std::istringstream words(text);
    return Names(std::istream_iterator<std::string>(words), {});
}

bool contains(const Names &names, const std::string &name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

const Names extensionNames =
    namesIn("GL_EXT_texture_filter_anisotropic GL_ARB_multitexture GL_ARB_vertex_buffer_object "
            "GL_ARB_vertex_shader GL_ARB_fragment_shader GL_ARB_depth_texture GL_ARB_shadow "
            "GL_ARB_texture_non_power_of_two GL_ARB_texture_float GL_EXT_framebuffer_object "
            "GL_ARB_occlusion_query");

// What the recorder makes of the driver.
struct Display {
    Names extensions = extensionNames;
    std::string vendor = "Somebody";
    int units = 16;
    bool shadersRequested = true;

    std::string list() const {
        std::string text;
        for (const std::string &name : extensions)
            text += name + " ";
        return text;
    }
};

Display without(const std::string &name) {
    Display display;
    std::erase(display.extensions, name);
    return display;
}

Display with(const std::string &name) {
    Display display;
    display.extensions.push_back(name);
    return display;
}

// The names of the flags that are set.
std::string namesOf(bool anisotropic, bool multitexture, bool VBO, bool shaders, bool FBO,
                    bool queries) {
    return std::string(anisotropic ? "anisotropic " : "") + (multitexture ? "multitexture " : "") +
           (VBO ? "VBO " : "") + (shaders ? "shaders " : "") + (FBO ? "FBO " : "") +
           (queries ? "queries " : "");
}
const std::string all = namesOf(true, true, true, true, true, true);

std::string found() {
    return namesOf(RVOPENGL::useAnisotropic(), RVOPENGL::useMultitexturing(), RVOPENGL::useVBO(),
                   RVOPENGL::useShaders(), RVOPENGL::useFBO(), RVOPENGL::useOcclusionQuery());
}

const std::string atiLine =
    "      GL_EXT_framebuffer_object found but disabled because driver-side bugged (buy an NVidia "
    "card, your ATI OpenGL driver is just a piece of crap)\n";

// What the start must make of a driver.
struct Outcome {
    std::string log, capabilities;
    bool targets;

    explicit Outcome(const Display &display)
        : log("   Init OpenGL...\n      Vendor    : " + display.vendor +
              "\n      Renderer  : Silent\n      Version   : 2.1\n      Extensions: " +
              display.list() + "\n\n") {
        const std::string number = std::to_string(display.units);
        const bool enough = display.units >= 16;
        const bool trusted = display.vendor.find("ATI") == std::string::npos;
        // A capability: its extensions, and what is logged for it.
        const auto has = [&](const char *needed, const std::string &line, const char *missing) {
            for (const std::string &name : namesIn(needed))
                if (!contains(display.extensions, name)) {
                    log += missing;
                    return false;
                }
            log += line;
            return true;
        };
        const bool anisotropic =
            has("GL_EXT_texture_filter_anisotropic",
                "      GL_EXT_texture_filter_anisotropic (level 8.0)\n",
                "   [!] GL_EXT_texture_filter_anisotropic not supported @ RVOPENGL::init\n");
        const bool multitexture =
            has("GL_ARB_multitexture",
                "      GL_ARB_multitexture (" +
                    (enough ? "" : "   [!] Only " + number + " texture units (16 required)") +
                    number + " units)\n",
                "   [!] GL_ARB_multitexture not supported @ RVOPENGL::init\n") &&
            enough;
        const bool VBO = has("GL_ARB_vertex_buffer_object", "      GL_ARB_vertex_buffer_object\n",
                             "   [!] GL_ARB_vertex_buffer_object not found @ RVOPENGL::init\n");
        const bool shaders = display.shadersRequested &&
                             has("GL_ARB_vertex_shader GL_ARB_fragment_shader",
                                 "      GL_ARB_vertex_shader\n      GL_ARB_fragment_shader\n",
                                 "   [!] Shaders not found @ RVOPENGL::init\n");
        has("GL_ARB_depth_texture GL_ARB_shadow",
            "      GL_ARB_depth_texture\n      GL_ARB_shadow\n",
            "   [!] GL_ARB_depth_texture or GL_ARB_shadow not found @ RVOPENGL::init\n");
        targets = has("GL_ARB_texture_non_power_of_two", "      GL_ARB_texture_non_power_of_two\n",
                      "   [!] GL_ARB_texture_non_power_of_two not found @ RVOPENGL::init\n") &&
                  has("GL_ARB_texture_float", "      GL_ARB_texture_float\n",
                      "   [!] GL_ARB_texture_float not found @ RVOPENGL::init\n") &&
                  has("GL_EXT_framebuffer_object",
                      trusted ? "      GL_EXT_framebuffer_object\n" : atiLine,
                      "   [!] GL_EXT_framebuffer_object not found @ RVOPENGL::init\n") &&
                  trusted;
        const bool queries = has("GL_ARB_occlusion_query", "      GL_ARB_occlusion_query\n",
                                 "   [!] GL_ARB_occlusion_query not found @ RVOPENGL::init\n");
        log += "   OpenGL initialized\n";
        capabilities = namesOf(anisotropic, multitexture, VBO, shaders, targets, queries);
    }
};

// The entry points of each extension, in the order in which they are fetched.
Names entryNames(const std::string &group) {
    Names names;
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

class GlStart : public SilentTest {
  protected:
    void SetUp() override {
        SilentTest::SetUp();
        zlfSetConsoleEcho(false);
        finalMemoryRatio(); // a new log
        resetCapabilities();
    }

    void TearDown() override {
        stop();
        RVSETTINGS::forceShadersOff();
        zlfSetConsoleEcho(true);
        SilentTest::TearDown();
    }

    static void stop() {
        stopOpenGL();
        RVFBO::cleanUp();
        RVTEXTURE::cleanUp();
        resetCapabilities();
    }

    Calls start(const Display &display = {}) {
        recorder.setExtensions(display.list());
        recorder.setVendor(display.vendor);
        recorder.setTextureUnits(display.units);
        recorder.setFloat(GL_MAX_TEXTURE_MAX_ANISOTROPY_EXT, 8);
        display.shadersRequested ? RVSETTINGS::forceShadersOn() : RVSETTINGS::forceShadersOff();
        markLog();
        return callsOf([] { EXPECT_TRUE(startOpenGL()); });
    }

    // A start with the outcome expected of that display, whose log is returned.
    std::string startAsExpected(const Display &display) {
        start(display);
        const Outcome outcome(display);
        EXPECT_LOGGED_EXACTLY(outcome.log);
        EXPECT_EQ(found(), outcome.capabilities);
        for (int index = 0; index < 14; ++index)
            EXPECT_EQ(RVOPENGL::getFbo(index) != nullptr, outcome.targets) << index;
        EXPECT_EQ(RVFBO::getNumberOfFbos(), outcome.targets ? 14u : 0u);
        return outcome.log;
    }
};

// Twice a percent sign is one within a text for the console. Here it is two.
TEST_F(GlStart, LogsAListOfExtensionsOfAnyLengthAndCharacters) {
    Display display;
    display.extensions = {"GL_100%%", "", "GL_%d%s"}; // two blanks too
    for (int name = 0; name < 600; ++name)
        display.extensions.push_back("GL_EXT_name_" + std::to_string(name));
    zlfSetConsoleEcho(true);
    testing::internal::CaptureStdout();
    const LogMark mark = markLog();
    start(display);
    const std::string console = testing::internal::GetCapturedStdout();
    zlfSetConsoleEcho(false);
    const std::string line = "      Extensions: " + display.list() + "\n\n";
    EXPECT_NE(logTextSince(mark).find(line), std::string::npos);
    EXPECT_NE(console.find(line), std::string::npos);
}

TEST_F(GlStart, LogsAFullDriverLineByLine) {
    start();
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
    EXPECT_EQ(found(), all);
    EXPECT_EQ(RVOPENGL::getAnisotropicLevel(), 8);
}

TEST_F(GlStart, FetchesEveryEntryPointInTheOrderOfTheTable) {
    Names asked;
    for (const Call &call : start().named("SDL_GL_GetProcAddress"))
        asked.push_back(call.text);
    const Names wanted = namesIn(
        "glActiveTextureARB glMultiTexCoord2fARB glClientActiveTextureARB "
        "glGenBuffersARB glBindBufferARB glBufferDataARB glDeleteBuffersARB "
        "glCreateShaderObjectARB glShaderSourceARB glCompileShaderARB glCreateProgramObjectARB "
        "glAttachObjectARB glLinkProgramARB glUseProgramObjectARB glDeleteObjectARB "
        "glDetachObjectARB glGetObjectParameterivARB glGetUniformLocationARB glUniform1iARB "
        "glUniform1fARB glUniform3fARB glUniform4fARB glUniform3fvARB glUniform4fvARB "
        "glUniformMatrix4fvARB glVertexAttribPointerARB glEnableVertexAttribArrayARB "
        "glDisableVertexAttribArrayARB glGetAttribLocationARB "
        "glGenFramebuffersEXT glDeleteFramebuffersEXT glBindFramebufferEXT "
        "glFramebufferTexture2DEXT glGenRenderbuffersEXT glDeleteRenderbuffersEXT "
        "glBindRenderbufferEXT glRenderbufferStorageEXT glFramebufferRenderbufferEXT "
        "glGenerateMipmapEXT glCheckFramebufferStatusEXT "
        "glGenQueriesARB glDeleteQueriesARB glIsQueryARB glBeginQueryARB glEndQueryARB "
        "glGetQueryivARB glGetQueryObjectivARB glGetQueryObjectuivARB");
    EXPECT_EQ(wanted.size(), 48u);
    EXPECT_EQ(asked, wanted);
    for (const std::string &name : wanted)
        EXPECT_TRUE(isLoaded(name)) << name;
}

struct Driver {
    const char *name;
    const char *vendor;
    int units;
    bool shadersRequested;
};

void PrintTo(const Driver &driver, std::ostream *out) { *out << driver.name; }

class AnyCombination : public GlStart, public testing::WithParamInterface<Driver> {};

TEST_P(AnyCombination, OfTheExtensionsIsALineAndAFlagEach) {
    const std::size_t combinations = std::size_t(1) << extensionNames.size();
    ASSERT_EQ(combinations, 2048u);
    for (std::size_t combination = 0; combination < combinations; ++combination) {
        Display display{{}, GetParam().vendor, GetParam().units, GetParam().shadersRequested};
        for (std::size_t bit = 0; bit < extensionNames.size(); ++bit)
            if (combination >> bit & 1)
                display.extensions.push_back(extensionNames[bit]);
        startAsExpected(display);
        ASSERT_FALSE(HasFailure()) << display.list();
        stop();
        if (combination % 64 == 0)
            finalMemoryRatio(); // starts a new log
    }
}

constexpr const char *distrusted = "ATI Technologies Inc.";

INSTANTIATE_TEST_SUITE_P(
    BeforeEachDriver, AnyCombination,
    testing::Values(Driver{"Full", "Somebody", 16, true}, Driver{"EightUnits", "Somebody", 8, true},
                    Driver{"Distrusted", distrusted, 16, true},
                    Driver{"DistrustedWithEightUnits", distrusted, 8, true},
                    Driver{"ShadersNotRequested", "Somebody", 16, false},
                    Driver{"EightUnitsShadersNotRequested", "Somebody", 8, false},
                    Driver{"DistrustedShadersNotRequested", distrusted, 16, false},
                    Driver{"DistrustedWithEightUnitsShadersNotRequested", distrusted, 8, false}),
    [](const auto &tested) { return std::string(tested.param.name); });

TEST_F(GlStart, EntryPointsOfWhatIsNotUsableAreNotFetchedButThoseOfTooFewUnits) {
    Display few, noShaders, ati;
    few.units = 15;
    noShaders.shadersRequested = false;
    ati.vendor = "ATI";
    const struct {
        Display display;
        const char *group;
        bool loaded;
    } rows[] = {{few, "multitexture", true},
                {noShaders, "shaders", false},
                {ati, "framebuffers", false},
                {without("GL_ARB_texture_non_power_of_two"), "framebuffers", false}};
    for (const auto &row : rows) {
        startAsExpected(row.display);
        for (const std::string &name : entryNames(row.group))
            EXPECT_EQ(isLoaded(name), row.loaded) << name;
        stop();
    }
}

TEST_F(GlStart, TheExactTextOfOddDriversIsLoggedAndSearched) {
    const auto startAs = [this](const char *vendor, int units) {
        Display display;
        display.vendor = vendor;
        display.units = units;
        const std::string log = startAsExpected(display);
        stop();
        return log;
    };
    EXPECT_NE(
        startAs("Somebody", 8)
            .find("      GL_ARB_multitexture (   [!] Only 8 texture units (16 required)8 units)\n"),
        std::string::npos);
    for (const char *vendor : {"ATI", "ATI Technologies Inc.", "MATIC CORPORATION", "NATIONAL"})
        EXPECT_NE(
            startAs(vendor, 16)
                .find("      GL_ARB_texture_float\n" + atiLine + "      GL_ARB_occlusion_query\n"),
            std::string::npos)
            << vendor;
    EXPECT_EQ(startAs("National Ati", 16).find(atiLine), std::string::npos) << "case counts";
    for (const std::string &name : {std::string("GL_%s%d%%"), std::string(5000, 'x')}) {
        startAsExpected(with(name)); // no format, and longer than a log text
        stop();
    }
}

TEST_F(GlStart, ALongerNameCountsAsTheShorterOneInIt) {
    Display display = without("GL_ARB_occlusion_query");
    display.extensions.push_back("XGL_ARB_occlusion_query2");
    start(display);
    EXPECT_TRUE(RVOPENGL::useOcclusionQuery());
}

TEST_F(GlStart, AnEntryPointThatIsNullIsReportedAndTheStartContinues) {
    const struct {
        const char *group, *message;
        const char *before; // the line that follows
    } rows[] = {
        {"multitexture", "", ""},
        {"vertexBuffers", "", ""},
        {"shaders", "INCOMPLETE EXTENSION\n", "      GL_ARB_vertex_shader\n"},
        {"framebuffers", "   [!] FBO incomplete extension!!\n",
         "      GL_EXT_framebuffer_object\n"},
        {"occlusionQueries", "   [!] Occlusion Query incomplete extension!!\n",
         "      GL_ARB_occlusion_query\n"},
    };
    for (const auto &row : rows)
        for (const std::string &name : entryNames(row.group)) {
            SCOPED_TRACE(name);
            recorder.reset();
            recorder.silent();
            finalMemoryRatio();
            recorder.nullEntryPoint(name);
            start();
            Outcome outcome({});
            outcome.log.insert(outcome.log.find(row.before, outcome.log.find("\n\n")), row.message);
            EXPECT_LOGGED_EXACTLY(outcome.log);
            EXPECT_EQ(found(), all);
            for (const std::string &other : entryNames(row.group))
                EXPECT_EQ(isLoaded(other), other != name) << other;
            stop();
        }
    recorder.nullEntryPoint("glGenFramebuffersEXT");
    recorder.nullEntryPoint("glCheckFramebufferStatusEXT");
    start();
    EXPECT_LOGGED_TIMES(1, "   [!] FBO incomplete extension!!");
}

TEST_F(GlStart, ASecondStartOrStopIsRefusedAndNeitherCallsOpenGL) {
    start();
    EXPECT_TRUE(isOpenGLActive());
    markLog();
    recorder.start();
    EXPECT_FALSE(startOpenGL());
    EXPECT_TRUE(isOpenGLActive());
    EXPECT_TRUE(stopOpenGL());
    EXPECT_FALSE(isOpenGLActive());
    EXPECT_FALSE(stopOpenGL());
    EXPECT_TRUE(recorder.stop().empty());
    EXPECT_LOGGED_EXACTLY("   [!] OpenGL already active @ RVOPENGL::init\n"
                          "   Release OpenGL...\n"
                          "   OpenGL released\n");
}

TEST_F(GlStart, FlagsAndEntryPointsOutliveAStopAndAPoorerStart) {
    start();
    stopOpenGL();
    EXPECT_EQ(found(), all);
    const Display poor{{}};
    start(poor);
    EXPECT_EQ(found(), all);
    EXPECT_EQ(RVFBO::getNumberOfFbos(), 28u) << "by the flag there is a pool once more";
    EXPECT_TRUE(isLoaded("glGenFramebuffersEXT"));
    EXPECT_EQ(RVOPENGL::getAnisotropicLevel(), 8);
    EXPECT_LOGGED_EXACTLY(Outcome(poor).log);
}

TEST_F(GlStart, ResetSetsTheBaseStateInItsOrder) {
    RVOPENGL::cullingOff();
    const Calls calls = callsOf([] { EXPECT_TRUE(resetOpenGL()); });
    EXPECT_EQ(calls.without({"glLightf"}),
              (Calls{{"glClearColor", 0.2, 0.2, 0.6, 1},
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
                     {"glEnable", GL_CULL_FACE}}));
    EXPECT_TRUE(calls.haveInOrder(
        {{"glEnable", GL_CULL_FACE}, {"glLightf", GL_LIGHT0, GL_SPOT_EXPONENT, 0}}));
    EXPECT_EQ(calls.count("glLightf"), 20u); // which ones, see RVOPENGL_test.cpp
}

TEST_F(GlStart, ThePoolIsMadeTargetsFirstThenTheirTexturesWithTheMapAhead) {
    const Calls calls = start();
    std::vector<double> order, wanted;
    for (const Call &call : calls.named("glFramebufferTexture2DEXT"))
        order.push_back(call.arguments[3]);
    for (int index : {2, 0, 1, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13})
        wanted.push_back(RVOPENGL::getFbo(index)->getTexture()->getGLId());
    EXPECT_EQ(order, wanted);
    EXPECT_EQ(calls.count("glRenderbufferStorageEXT"), 2u);
    Names made(14, "glGenFramebuffersEXT");
    made.resize(28, "glGenTextures");
    EXPECT_EQ(calls.named({"glGenFramebuffersEXT", "glGenTextures"}).names(), made);
    EXPECT_EQ(calls.named("glBindFramebufferEXT").back(),
              (Call{"glBindFramebufferEXT", GL_FRAMEBUFFER_EXT, 0}));
    EXPECT_TRUE(calls.haveInOrder({{"glGetString", GL_EXTENSIONS},
                                   {"glGetString", GL_VENDOR},
                                   {"glGetString", GL_RENDERER},
                                   {"glGetString", GL_VERSION},
                                   {"SDL_GL_GetProcAddress"},
                                   {"glClearColor", 0.2, 0.2, 0.6, 1}})) // the base state
        << calls.text();
}

} // namespace
} // namespace ravolt::test
