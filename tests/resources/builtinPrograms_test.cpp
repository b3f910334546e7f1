// The engine's own programs: the table, the order of their creation, and the messages and features
// when each of them fails. The silent driver compiles everything; what the texts compute is tested
// elsewhere.

#include "ravolt/RAVOLT.h"
#include "ravolt/RVELEMENT.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVSETTINGS.h"
#include "ravolt/RVSHADER.h"
#include "resources/shaderTexts.h"
#include "tests/resources/builtinTable.h"
#include "tests/support/engineFixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

namespace ravolt::test {

namespace {

using Names = std::set<std::string>;

struct Feature {
    const char *name; // in the log
    bool (*use)();
    Names needs; // by the names of the programs
    Names dropped = needs;
};

// In the order of the probe.
const std::vector<Feature> features = {
    {"Basic per-pixel lighting",
     RVSHADER::usePPL,
     {"pplDirect", "pplOmni", "pplSpot", "pplDirectT", "pplOmniT", "pplSpotT"}},
    {"Passthrough",
     RVSHADER::usePassthrough,
     {"passthrough", "passthroughA", "passhtroughZPass", "passhtroughZPassA"}},
    {"Bloom lighting",
     RVSHADER::useBloom,
     {"bloomCombine", "bloomBright", "bloomVert", "bloomHor"}},
    {"Soft shadow-mapping",
     RVSHADER::useShadows,
     {"pplSpotS", "pplSpotTS", "pplSpotTSA", "pplSpotSA"},
     {"pplSpotS", "pplSpotTS", "pplSpotTSA"}}, // without the skinned untextured one
    {"Hardware skinning",
     RVSHADER::useSkinning,
     {"pplDirectTA", "pplOmniTA", "pplSpotTA", "pplDirectA", "pplOmniA", "pplSpotA"}},
    {"Hardware particle engine", RVSHADER::useEmitter, {"emitter"}, {}},
    {"Depth of field",
     RVSHADER::useDOF,
     {"dofCombine", "dof", "bloomVert", "bloomHor"},
     {"dofCombine", "dof"}},
    {"Skydome", RVSHADER::useSkydome, {"skydomeShader"}},
    {"Water", RVSHADER::useWater, {"waterShader", "waterShaderS"}},
    {"Terrain", RVSHADER::useTerrain, {"terrainComplex", "terrainSimple"}},
};

// The operative programs after the probe of `operative`, and its log, if these features are
// impossible.
struct Outcome {
    Names operative;
    std::vector<bool> on;
    std::string log = "   Check advanced codepaths:\n";
};

Outcome probe(Names operative, const Names &impossible = {}) {
    Outcome outcome;
    for (const Feature &feature : features) {
        const bool on =
            !impossible.count(feature.name) &&
            std::all_of(feature.needs.begin(), feature.needs.end(),
                        [&](const std::string &name) { return operative.count(name) != 0; });
        outcome.on.push_back(on);
        outcome.log += std::string("      ") + feature.name + (on ? "" : " not") + " supported\n";
        if (!on)
            for (const std::string &name : feature.dropped)
                operative.erase(name);
    }
    outcome.log += "   Codepaths initialized\n";
    outcome.operative = operative;
    return outcome;
}

Names allNames() {
    Names names;
    for (const BuiltinProgram &row : builtinPrograms)
        names.insert(row.name);
    return names;
}

// The log from this line on is `expected`.
void expectLogFrom(const char *line, const std::string &expected, LogMark mark) {
    const std::string log = logTextSince(mark);
    const std::size_t start = log.find(line);
    ASSERT_NE(start, std::string::npos);
    EXPECT_EQ(log.substr(start, expected.size()), expected);
}

void expectOutcome(const Outcome &expected, LogMark mark) {
    for (std::size_t i = 0; i < features.size(); ++i)
        EXPECT_EQ(features[i].use(), expected.on[i]) << features[i].name;
    for (const BuiltinProgram &row : builtinPrograms)
        EXPECT_EQ((*row.program)->isOperative(), expected.operative.count(row.name) != 0)
            << row.name;
    expectLogFrom("   Check advanced codepaths:\n", expected.log, mark);
}

void expectNoFeature() {
    EXPECT_EQ(RVSHADER::getNumberOfShaders(), 35u);
    for (const Feature &feature : features)
        EXPECT_FALSE(feature.use()) << feature.name;
}

class BuiltinProgramsTest : public SilentEngineTest {
  protected:
    BuiltinProgramsTest() { settings.setShaders(true); }
    void TearDown() override {
        RVSHADER::reset();
        SilentEngineTest::TearDown();
    }
    Calls restartCalls() {
        return callsOf([this] { ASSERT_TRUE(restart()); });
    }
};

// --- The table

TEST_F(BuiltinProgramsTest, TableIsComplete) {
    ASSERT_EQ(std::size(builtinPrograms), 35u);
    EXPECT_EQ(RVSHADER::getNumberOfShaders(), 35u);
    RVSHADER *inOrder = RVSHADER::getFirst();
    for (const BuiltinProgram &row : builtinPrograms) {
        SCOPED_TRACE(row.name);
        ASSERT_NE(*row.program, nullptr);
        EXPECT_EQ(*row.program, inOrder);
        inOrder = inOrder->getNext();
        EXPECT_STREQ((*row.program)->getName(), row.name);
        EXPECT_STREQ((*row.program)->getVSFilename(), row.vertexLabel);
        EXPECT_STREQ((*row.program)->getPSFilename(), row.pixelLabel);
        EXPECT_EQ(RVSHADER::findByName(row.name), *row.program);
    }
    EXPECT_EQ(inOrder, nullptr);
    EXPECT_EQ(RVSHADER::findByName("passthroughZPass"), nullptr); // its name is misspelt
}

TEST_F(BuiltinProgramsTest, EachProgramIsMadeOfTheTextsOfItsLabels) {
    const Calls sources = restartCalls().named("glShaderSourceARB");
    ASSERT_EQ(sources.size(), 2 * std::size(builtinPrograms));
    std::size_t source = 0;
    for (const BuiltinProgram &row : builtinPrograms)
        for (const char *label : {row.vertexLabel, row.pixelLabel}) {
            ASSERT_NE(shaderText(label), nullptr) << label;
            EXPECT_EQ(sources[source++].text, shaderText(label)) << label;
        }
}

// The parameters that are bound after the 28 of load.
TEST_F(BuiltinProgramsTest, WaterAndTerrainHaveSlotsBoundToOtherNames) {
    std::vector<std::string> extra;
    unsigned int found = 0;
    for (const Call &call : restartCalls().named(
             {"glLinkProgramARB", "glGetUniformLocationARB", "glGetAttribLocationARB"})) {
        if (call.name == "glLinkProgramARB") {
            extra.emplace_back();
            found = 0;
        } else if (++found > 28) {
            EXPECT_EQ(call.name, "glGetUniformLocationARB");
            extra.back() += call.text + " ";
        }
    }
    ASSERT_EQ(extra.size(), std::size(builtinPrograms));
    for (std::size_t i = 0; i < extra.size(); ++i) {
        const std::string name = builtinPrograms[i].name;
        EXPECT_EQ(extra[i], name.starts_with("water")     ? "repeat "
                            : name.starts_with("terrain") ? "inv repeat1 repeat2 repeat3 repeat4 "
                                                          : "")
            << name;
    }
    // The silent driver gives every name a location of its own.
    EXPECT_EQ(RVSHADER::water->getParam(20), RVSHADER::waterS->getParam(20));
    EXPECT_NE(RVSHADER::water->getParam(20), RVSHADER::skydome->getParam(20));
    for (const unsigned int slot : {2u, 3u, 4u, 5u, 6u}) {
        EXPECT_EQ(RVSHADER::terrainSimple->getParam(slot),
                  RVSHADER::terrainComplex->getParam(slot));
        EXPECT_NE(RVSHADER::terrainSimple->getParam(slot), RVSHADER::skydome->getParam(slot));
    }
}

// --- Start and stop

TEST_F(BuiltinProgramsTest, StartIsLogged) {
    std::string expected = "   Init shaders...\n";
    for (const BuiltinProgram &row : builtinPrograms)
        expected += std::string("   Vertex shader: ") + row.vertexLabel +
                    ", compiled\n   Pixel shader : " + row.pixelLabel + ", compiled\n";
    expected += "   Shaders initialized\n" + probe(allNames()).log;
    expectLogFrom("   Init shaders...\n", expected, startMark);
    EXPECT_TRUE(RVSHADER::isActive());
}

TEST_F(BuiltinProgramsTest, FreeIsLoggedOnceAndDeletesNothing) {
    EXPECT_TRUE(RVSHADER::free());
    EXPECT_LOGGED_EXACTLY("   Release shaders...\n   Shaders released\n");
    EXPECT_FALSE(RVSHADER::isActive());
    EXPECT_FALSE(RVSHADER::free());
    EXPECT_EQ(RVSHADER::getNumberOfShaders(), 35u);
    EXPECT_TRUE(RVSHADER::usePPL()); // the flags stay
}

TEST_F(BuiltinProgramsTest, SecondInitIsRefusedAfterItMadeItsObjects) {
    EXPECT_FALSE(RVSHADER::init());
    EXPECT_LOGGED_EXACTLY("   [!] Shaders already active @ RVSHADER::init\n");
    EXPECT_EQ(RVSHADER::getNumberOfShaders(), 70u);
    EXPECT_FALSE(RVSHADER::pplDirect->isOperative());
    EXPECT_TRUE(RVSHADER::usePPL());
}

TEST_F(BuiltinProgramsTest, EngineStartsAndStopsThemInOrder) {
    const LogMark mark = markLog();
    ASSERT_TRUE(RAVOLT::free());
    const std::string stopLog = logTextSince(mark);
    EXPECT_NE(stopLog.find("   35 shader(s) released\n"), std::string::npos) << stopLog;
    EXPECT_LT(stopLog.find("   35 shader(s) released\n"), stopLog.find("texture(s) released\n"));
    EXPECT_NE(stopLog.find("   Release shaders...\n   Shaders released\n   Release OpenGL...\n"),
              std::string::npos)
        << stopLog;
    EXPECT_EQ(RVSHADER::pplOmni, nullptr);
    const LogMark again = markLog();
    ASSERT_TRUE(RAVOLT::init(&settings));
    EXPECT_TRUE(RVSHADER::pplOmni->isOperative());
    const std::string startLog = logTextSince(again);
    EXPECT_LT(startLog.find("   OpenGL initialized"), startLog.find("   Init shaders..."));
    EXPECT_LT(startLog.find("   Codepaths initialized"), startLog.find("elements allocated"));
}

TEST_F(BuiltinProgramsTest, WithoutShadersTheObjectsExistAndTheFlagsOfTheFormerRunAreCleared) {
    ASSERT_TRUE(RVSHADER::useSkinning());
    settings.setShaders(false);
    ASSERT_TRUE(RAVOLT::free());
    const LogMark mark = markLog();
    ASSERT_TRUE(RAVOLT::init(&settings));
    expectNoFeature();
    for (const BuiltinProgram &row : builtinPrograms)
        EXPECT_FALSE((*row.program)->isOperative()) << row.name;
    EXPECT_FALSE(RVSHADER::isActive());
    for (const char *text : {"Init shaders", "shaders supported", "RVSHADER"})
        EXPECT_EQ(logTextSince(mark).find(text), std::string::npos) << text;
}

TEST_F(BuiltinProgramsTest, FailedStartDeletesItsPrograms) {
    ASSERT_TRUE(RAVOLT::free());
    ASSERT_TRUE(RVELEMENT::init(1)); // the step after the programs fails
    markLog();
    EXPECT_FALSE(RAVOLT::init(&settings));
    EXPECT_LOGGED("   Shaders released");
    EXPECT_EQ(RVSHADER::getNumberOfShaders(), 0u);
    RVELEMENT::free();
    ASSERT_TRUE(RAVOLT::init(&settings));
    EXPECT_EQ(RVSHADER::getNumberOfShaders(), 35u);
    EXPECT_TRUE(RVSHADER::findByName("pplOmni")->isOperative());
}

// --- Failing programs

// The bright pass drops the blurs and so the depth of field.
TEST_F(BuiltinProgramsTest, FailingStageDropsItsFeaturesAndNoOthers) {
    for (unsigned int stage = 0; stage < 70; ++stage) {
        const BuiltinProgram &row = builtinPrograms[stage / 2];
        SCOPED_TRACE(testing::Message() << row.name << ", stage " << stage % 2);
        recorder.failCalls("glGetObjectParameterivARB", stage, 1);
        const LogMark mark = markLog();
        ASSERT_TRUE(restart());
        if (stage % 2)
            EXPECT_LOGGED_TIMES(1, std::string("   [!] Pixel shader ") + row.pixelLabel +
                                       " not compiled @ RVSHADER::loadPixelShader");
        else
            EXPECT_LOGGED_TIMES(1, std::string("   [!] Vertex shader ") + row.vertexLabel +
                                       " not compiled @ RVSHADER::loadVertexShader");
        EXPECT_EQ(problemsSince(mark).size(), 2u); // and that no video memory was found
        Names operative = allNames();
        operative.erase(row.name);
        expectOutcome(probe(operative), mark);
        RAVOLT::clear(true, true, false);
        RAVOLT::begin3D(nullptr);
        RAVOLT::end3D(true);
    }
}

TEST_F(BuiltinProgramsTest, NothingCompiles) {
    recorder.failCalls("glGetObjectParameterivARB");
    const LogMark mark = markLog();
    ASSERT_TRUE(restart());
    expectOutcome(probe({}), mark);
    EXPECT_TRUE(RVSHADER::isActive());
}

// --- Drivers that lack what a feature needs

class LackingDriverTest : public BuiltinProgramsTest {
  protected:
    void SetUp() override {}
    // Capabilities once detected stay set.
    void startWithout(const Names &impossible, bool (*offered)()) {
        BuiltinProgramsTest::SetUp();
        if (offered())
            GTEST_SKIP() << "an earlier test of this process had it; run it alone";
        expectOutcome(probe(allNames(), impossible), startMark);
    }
};

TEST_F(LackingDriverTest, WithoutFramebuffersTheirEffectsAreOff) {
    recorder.hideExtension("GL_EXT_framebuffer_object");
    startWithout({"Bloom lighting", "Soft shadow-mapping", "Depth of field"}, RVOPENGL::useFBO);
}

TEST_F(LackingDriverTest, WithFewUnitsTheSameEffectsAreOff) {
    recorder.setTextureUnits(8);
    startWithout({"Bloom lighting", "Soft shadow-mapping", "Depth of field"},
                 RVOPENGL::useMultitexturing);
}

TEST_F(LackingDriverTest, WithoutVertexBuffersSkinningIsOff) {
    recorder.hideExtension("GL_ARB_vertex_buffer_object");
    startWithout({"Hardware skinning"}, RVOPENGL::useVBO);
}

TEST_F(LackingDriverTest, WithoutShadersTheStartSucceeds) {
    recorder.hideExtension("GL_ARB_vertex_shader");
    BuiltinProgramsTest::SetUp();
    if (RVOPENGL::useShaders())
        GTEST_SKIP() << "an earlier test of this process had shaders; run it alone";
    EXPECT_TRUE(RAVOLT::isActive());
    EXPECT_FALSE(RVSHADER::isActive());
    EXPECT_NE(
        logTextSince(startMark).find("   [!] Shaders required but not supported on this hardware @ "
                                     "RVSHADER::init\n"),
        std::string::npos);
    expectNoFeature();
}

} // namespace

} // namespace ravolt::test
