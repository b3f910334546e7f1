// The engine's own programs: the table, the order of their making, and what the engine says and
// does when each of them fails. A silent driver stands behind; what the texts compute is tested
// elsewhere.

#include "ravolt/RAVOLT.h"
#include "ravolt/RVELEMENT.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVSETTINGS.h"
#include "ravolt/RVSHADER.h"
#include "resources/shaderTexts.h"
#include "tests/support/engineFixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

namespace ravolt::test {

namespace {

struct Row {
    RVSHADER **program;
    const char *name, *vertexLabel, *pixelLabel;
};

#define ROW(member, name, vertex, pixel)                                                           \
    { &RVSHADER::member, name, vertex ".glsl", pixel ".glsl" }
const Row rows[] = {
    ROW(pplDirect, "pplDirect", "pplVSdirect", "pplPSdirect"),
    ROW(pplOmni, "pplOmni", "pplVSomni", "pplPSomni"),
    ROW(pplSpot, "pplSpot", "pplVSspot", "pplPSspot"),
    ROW(pplDirectA, "pplDirectA", "pplVSdirectA", "pplPSdirectA"),
    ROW(pplOmniA, "pplOmniA", "pplVSomniA", "pplPSomniA"),
    ROW(pplSpotA, "pplSpotA", "pplVSspotA", "pplPSspotA"),
    ROW(pplDirectT, "pplDirectT", "pplVSdirectT", "pplPSdirectT"),
    ROW(pplOmniT, "pplOmniT", "pplVSomniT", "pplPSomniT"),
    ROW(pplSpotT, "pplSpotT", "pplVSspotT", "pplPSspotT"),
    ROW(pplDirectTA, "pplDirectTA", "pplVSdirectTA", "pplPSdirectTA"),
    ROW(pplOmniTA, "pplOmniTA", "pplVSomniTA", "pplPSomniTA"),
    ROW(pplSpotTA, "pplSpotTA", "pplVSspotTA", "pplPSspotTA"),
    ROW(pplSpotS, "pplSpotS", "pplVSspotS", "pplPSspotS"),
    ROW(pplSpotSA, "pplSpotSA", "pplVSspotSA", "pplPSspotSA"),
    ROW(pplSpotTS, "pplSpotTS", "pplVSspotTS", "pplPSspotTS"),
    ROW(pplSpotTSA, "pplSpotTSA", "pplVSspotTSA", "pplPSspotTSA"),
    ROW(passthrough, "passthrough", "passthroughVS", "passthroughPS"),
    ROW(passthroughA, "passthroughA", "passthroughVSA", "passthroughPSA"),
    ROW(passthroughZPass, "passhtroughZPass", "passthroughZPassVS", "passthroughZPassPS"),
    ROW(passthroughZPassA, "passhtroughZPassA", "passthroughZPassVSA", "passthroughZPassPSA"),
    ROW(bloomBright, "bloomBright", "bloomBrightVST", "bloomBrightPST"),
    ROW(bloomToneMapping, "bloomToneMapping", "bloomToneMappingVST", "bloomToneMappingPST"),
    ROW(bloomCombine, "bloomCombine", "bloomCombineVST", "bloomCombinePST"),
    ROW(bloomForceAlpha, "bloomForceAlpha", "bloomForceAlphaVST", "bloomForceAlphaPST"),
    ROW(bloomV, "bloomVert", "bloomVertVST", "bloomVertPST"),
    ROW(bloomH, "bloomHor", "bloomHorVST", "bloomHorPST"),
    ROW(gaussian, "gaussian", "gaussianVS", "gaussianPS"),
    ROW(emitter, "emitter", "emitterShaderVS", "emitterShaderPS"),
    ROW(dofCombine, "dofCombine", "dofCombineVST", "dofCombinePST"),
    ROW(dof, "dof", "dofVS", "dofPS"),
    ROW(skydome, "skydomeShader", "skydomeVS", "skydomeFS"),
    ROW(water, "waterShader", "waterVS", "waterPS"),
    ROW(waterS, "waterShaderS", "waterSVS", "waterSPS"),
    ROW(terrainComplex, "terrainComplex", "terrainComplexVS", "terrainComplexPS"),
    ROW(terrainSimple, "terrainSimple", "terrainSimpleVS", "terrainSimplePS"),
};
#undef ROW

struct Feature {
    const char *name; // in the log
    bool (*use)();
    std::set<std::string> needs; // by the names of the members
    std::set<std::string> dropped;
};

const std::set<std::string> basic = {"pplDirect",  "pplOmni",  "pplSpot",
                                     "pplDirectT", "pplOmniT", "pplSpotT"};
const std::set<std::string> passing = {"passthrough", "passthroughA", "passhtroughZPass",
                                       "passhtroughZPassA"};
const std::set<std::string> blooming = {"bloomCombine", "bloomBright", "bloomVert", "bloomHor"};
const std::set<std::string> skinned = {"pplDirectTA", "pplOmniTA", "pplSpotTA",
                                       "pplDirectA",  "pplOmniA",  "pplSpotA"};

// In the order of the probe, programs by their names.
const std::vector<Feature> features = {
    {"Basic per-pixel lighting", RVSHADER::usePPL, basic, basic},
    {"Passthrough", RVSHADER::usePassthrough, passing, passing},
    {"Bloom lighting", RVSHADER::useBloom, blooming, blooming},
    {"Soft shadow-mapping",
     RVSHADER::useShadows,
     {"pplSpotS", "pplSpotTS", "pplSpotTSA", "pplSpotSA"},
     {"pplSpotS", "pplSpotTS", "pplSpotTSA"}},
    {"Hardware skinning", RVSHADER::useSkinning, skinned, skinned},
    {"Hardware particle engine", RVSHADER::useEmitter, {"emitter"}, {}},
    {"Depth of field",
     RVSHADER::useDOF,
     {"dofCombine", "dof", "bloomVert", "bloomHor"},
     {"dofCombine", "dof"}},
    {"Skydome", RVSHADER::useSkydome, {"skydomeShader"}, {"skydomeShader"}},
    {"Water", RVSHADER::useWater, {"waterShader", "waterShaderS"}, {"waterShader", "waterShaderS"}},
    {"Terrain",
     RVSHADER::useTerrain,
     {"terrainComplex", "terrainSimple"},
     {"terrainComplex", "terrainSimple"}},
};

// What the probe leaves of `operative`, and what it says, when these features cannot be.
struct Outcome {
    std::set<std::string> operative;
    std::vector<bool> on;
    std::string log = "   Check advanced codepaths:\n";
};

Outcome probe(std::set<std::string> operative, const std::set<std::string> &impossible = {}) {
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

std::set<std::string> allNames() {
    std::set<std::string> names;
    for (const Row &row : rows)
        names.insert(row.name);
    return names;
}

void expectOutcome(const Outcome &expected, LogMark mark) {
    for (std::size_t i = 0; i < features.size(); ++i)
        EXPECT_EQ(features[i].use(), expected.on[i]) << features[i].name;
    for (const Row &row : rows)
        EXPECT_EQ((*row.program)->isOperative(), expected.operative.count(row.name) != 0)
            << row.name;
    const std::string log = logTextSince(mark);
    const std::size_t start = log.find("   Check advanced codepaths:\n");
    ASSERT_NE(start, std::string::npos);
    EXPECT_EQ(log.substr(start, expected.log.size()), expected.log);
}

class BuiltinProgramsTest : public SilentEngineTest {
  protected:
    BuiltinProgramsTest() { settings.setShaders(true); }
    void TearDown() override {
        RVSHADER::reset();
        SilentEngineTest::TearDown();
    }
};

class WithoutShadersTest : public SilentEngineTest {};

class WithoutShaderExtensionTest : public SilentEngineTest {
  protected:
    WithoutShaderExtensionTest() {
        settings.setShaders(true);
        recorder.hideExtension("GL_ARB_vertex_shader");
    }
    void SetUp() override {
        SilentEngineTest::SetUp();
        if (RVOPENGL::useShaders())
            GTEST_SKIP() << "an earlier test of this process had shaders; run it alone";
    }
};

// --- The table

TEST_F(BuiltinProgramsTest, TableIsComplete) {
    ASSERT_EQ(std::size(rows), 35u);
    EXPECT_EQ(RVSHADER::getNumberOfShaders(), 35u);
    RVSHADER *inOrder = RVSHADER::getFirst();
    for (const Row &row : rows) {
        ASSERT_NE(*row.program, nullptr) << row.name;
        EXPECT_EQ(*row.program, inOrder) << row.name;
        inOrder = inOrder->getNext();
        EXPECT_STREQ((*row.program)->getName(), row.name);
        EXPECT_STREQ((*row.program)->getVSFilename(), row.vertexLabel);
        EXPECT_STREQ((*row.program)->getPSFilename(), row.pixelLabel);
        EXPECT_EQ(RVSHADER::findByName(row.name), *row.program);
    }
    EXPECT_EQ(inOrder, nullptr);
}

TEST_F(BuiltinProgramsTest, DepthProgramIsFoundByItsMisspeltNameAlone) {
    EXPECT_EQ(RVSHADER::findByName("passthroughZPass"), nullptr);
    EXPECT_EQ(RVSHADER::findByName("passhtroughZPass"), RVSHADER::passthroughZPass);
}

TEST_F(BuiltinProgramsTest, EachProgramIsMadeOfTheTextsOfItsLabels) {
    recorder.start();
    ASSERT_TRUE(restart());
    const Calls sources = recorder.stop().named("glShaderSourceARB");
    ASSERT_EQ(sources.size(), 2 * std::size(rows));
    for (std::size_t i = 0; i < std::size(rows); ++i) {
        ASSERT_NE(shaderText(rows[i].vertexLabel), nullptr) << rows[i].vertexLabel;
        ASSERT_NE(shaderText(rows[i].pixelLabel), nullptr) << rows[i].pixelLabel;
        EXPECT_EQ(sources[2 * i].text, shaderText(rows[i].vertexLabel));
        EXPECT_EQ(sources[2 * i + 1].text, shaderText(rows[i].pixelLabel));
    }
}

// The parameters that are looked up behind the 28 of load.
TEST_F(BuiltinProgramsTest, WaterAndTerrainHaveSlotsBoundToOtherNames) {
    recorder.start();
    ASSERT_TRUE(restart());
    const Calls calls = recorder.stop();
    std::vector<std::vector<std::string>> extra;
    unsigned int found = 0;
    for (const Call &call :
         calls.named({"glLinkProgramARB", "glGetUniformLocationARB", "glGetAttribLocationARB"})) {
        if (call.name == "glLinkProgramARB") {
            extra.emplace_back();
            found = 0;
        } else if (++found > 28) {
            EXPECT_EQ(call.name, "glGetUniformLocationARB");
            extra.back().push_back(call.text);
        }
    }
    using Names = std::vector<std::string>;
    ASSERT_EQ(extra.size(), std::size(rows));
    const Names terrain = {"inv", "repeat1", "repeat2", "repeat3", "repeat4"};
    for (std::size_t i = 0; i < std::size(rows); ++i) {
        const std::string name = rows[i].name;
        EXPECT_EQ(extra[i], name.rfind("water", 0) == 0     ? Names{"repeat"}
                            : name.rfind("terrain", 0) == 0 ? terrain
                                                            : Names{})
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

TEST_F(BuiltinProgramsTest, StartSaysWhatItDoes) {
    std::string expected = "   Init shaders...\n";
    for (const Row &row : rows)
        expected += std::string("   Vertex shader: ") + row.vertexLabel +
                    ", compiled\n   Pixel shader : " + row.pixelLabel + ", compiled\n";
    expected += "   Shaders initialized\n" + probe(allNames()).log;
    const std::string log = logTextSince(startMark);
    const std::size_t start = log.find("   Init shaders...\n");
    ASSERT_NE(start, std::string::npos);
    EXPECT_EQ(log.substr(start, expected.size()), expected);
    EXPECT_TRUE(RVSHADER::isActive());
}

TEST_F(BuiltinProgramsTest, FreeSaysSoOnceAndDeletesNothing) {
    EXPECT_TRUE(RVSHADER::free());
    EXPECT_LOGGED_EXACTLY("   Release shaders...\n   Shaders released\n");
    EXPECT_FALSE(RVSHADER::isActive());
    EXPECT_FALSE(RVSHADER::free());
    EXPECT_EQ(RVSHADER::getNumberOfShaders(), 35u);
    EXPECT_TRUE(RVSHADER::usePPL()); // the flags stay
}

TEST_F(BuiltinProgramsTest, SecondInitIsRefusedAndHasMadeItsObjects) {
    EXPECT_FALSE(RVSHADER::init());
    EXPECT_LOGGED_EXACTLY("   [!] Shaders already active @ RVSHADER::init\n");
    EXPECT_EQ(RVSHADER::getNumberOfShaders(), 70u);
    EXPECT_FALSE(RVSHADER::pplDirect->isOperative());
    EXPECT_TRUE(RVSHADER::usePPL());
}

TEST_F(BuiltinProgramsTest, EngineStartsAndStopsThemInTheirPlaces) {
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

TEST_F(BuiltinProgramsTest, StartWithoutShadersClearsTheFlagsOfTheFormerRun) {
    ASSERT_TRUE(RVSHADER::useSkinning());
    settings.setShaders(false);
    ASSERT_TRUE(restart());
    for (const Feature &feature : features)
        EXPECT_FALSE(feature.use()) << feature.name;
    EXPECT_EQ(RVSHADER::getNumberOfShaders(), 35u);
}

TEST_F(WithoutShadersTest, ObjectsExistAndNothingIsUsed) {
    EXPECT_EQ(RVSHADER::getNumberOfShaders(), 35u);
    for (const Row &row : rows)
        EXPECT_FALSE((*row.program)->isOperative()) << row.name;
    for (const Feature &feature : features)
        EXPECT_FALSE(feature.use()) << feature.name;
    EXPECT_FALSE(RVSHADER::isActive());
    const std::string log = logTextSince(startMark);
    EXPECT_EQ(log.find("Init shaders"), std::string::npos);
    EXPECT_EQ(log.find("shaders supported"), std::string::npos);
    EXPECT_EQ(log.find("RVSHADER"), std::string::npos);
}

TEST_F(WithoutShaderExtensionTest, LackIsReportedAndIsNoFailure) {
    EXPECT_TRUE(RAVOLT::isActive());
    EXPECT_FALSE(RVSHADER::isActive());
    const std::string log = logTextSince(startMark);
    EXPECT_NE(log.find("   [!] Shaders required but not supported on this hardware @ "
                       "RVSHADER::init\n"),
              std::string::npos);
    EXPECT_EQ(RVSHADER::getNumberOfShaders(), 35u);
    for (const Feature &feature : features)
        EXPECT_FALSE(feature.use()) << feature.name;
}

TEST_F(BuiltinProgramsTest, ProgramsOfAFailedStartGoWithIt) {
    ASSERT_TRUE(RAVOLT::free());
    ASSERT_TRUE(RVELEMENT::init(1)); // what comes behind the programs fails
    markLog();
    EXPECT_FALSE(RAVOLT::init(&settings));
    EXPECT_LOGGED("   Shaders released");
    EXPECT_EQ(RVSHADER::getNumberOfShaders(), 0u);
    RVELEMENT::free();
    ASSERT_TRUE(RAVOLT::init(&settings));
    EXPECT_EQ(RVSHADER::getNumberOfShaders(), 35u);
    EXPECT_TRUE(RVSHADER::findByName("pplOmni")->isOperative());
}

// --- Each program failing in turn

class FailingProgramTest : public SilentEngineTest, public testing::WithParamInterface<unsigned> {
  protected:
    FailingProgramTest() { settings.setShaders(true); }
    void TearDown() override {
        RVSHADER::reset();
        SilentEngineTest::TearDown();
    }
};

TEST_P(FailingProgramTest, DropsItsFeaturesAndNoOthers) {
    const unsigned int stage = GetParam();
    const Row &row = rows[stage / 2];
    recorder.refuse("glGetObjectParameterivARB", stage, 1);
    const LogMark mark = markLog();
    ASSERT_TRUE(restart());
    if (stage % 2)
        EXPECT_LOGGED_TIMES(1, std::string("   [!] Pixel shader ") + row.pixelLabel +
                                   " not compiled @ RVSHADER::loadPixelShader");
    else
        EXPECT_LOGGED_TIMES(1, std::string("   [!] Vertex shader ") + row.vertexLabel +
                                   " not compiled @ RVSHADER::loadVertexShader");
    EXPECT_EQ(problemsSince(mark).size(), 2u); // this line, and that no video memory was found
    std::set<std::string> operative = allNames();
    operative.erase(row.name);
    expectOutcome(probe(operative), mark);
    RAVOLT::clear(true, true, false);
    RAVOLT::begin3D(nullptr);
    RAVOLT::end3D(true);
}

INSTANTIATE_TEST_SUITE_P(Stages, FailingProgramTest, testing::Range(0u, 70u), [](const auto &each) {
    const Row &row = rows[each.param / 2];
    return std::string(row.name) + (each.param % 2 ? "Pixel" : "Vertex");
});

TEST_F(BuiltinProgramsTest, FailingBrightPassTakesTheBlursAndSoTheDepthOfField) {
    recorder.refuse("glGetObjectParameterivARB", 2 * 20, 1);
    ASSERT_TRUE(restart());
    EXPECT_FALSE(RVSHADER::bloomBright->isOperative());
    EXPECT_FALSE(RVSHADER::bloomV->isOperative());
    EXPECT_FALSE(RVSHADER::bloomH->isOperative());
    EXPECT_FALSE(RVSHADER::useBloom());
    EXPECT_FALSE(RVSHADER::useDOF());
    EXPECT_FALSE(RVSHADER::dof->isOperative());
    EXPECT_TRUE(RVSHADER::bloomToneMapping->isOperative());
    EXPECT_TRUE(RVSHADER::bloomForceAlpha->isOperative());
}

TEST_F(BuiltinProgramsTest, FailingShadowProgramLeavesTheSkinnedUntexturedOne) {
    recorder.refuse("glGetObjectParameterivARB", 2 * 14, 1);
    ASSERT_TRUE(restart());
    EXPECT_FALSE(RVSHADER::useShadows());
    EXPECT_FALSE(RVSHADER::pplSpotS->isOperative());
    EXPECT_FALSE(RVSHADER::pplSpotTS->isOperative());
    EXPECT_FALSE(RVSHADER::pplSpotTSA->isOperative());
    EXPECT_TRUE(RVSHADER::pplSpotSA->isOperative());
}

TEST_F(BuiltinProgramsTest, NothingCompiles) {
    recorder.refuse("glGetObjectParameterivARB");
    const LogMark mark = markLog();
    ASSERT_TRUE(restart());
    expectOutcome(probe({}), mark);
    EXPECT_TRUE(RVSHADER::isActive());
}

// --- Drivers that lack what a feature needs

class LackingDriverTest : public SilentEngineTest {
  protected:
    LackingDriverTest() { settings.setShaders(true); }
    void TearDown() override {
        RVSHADER::reset();
        SilentEngineTest::TearDown();
    }
    void SetUp() override {}
    // The engine never forgets what a driver offered.
    void startWithout(const std::set<std::string> &impossible, bool (*offered)()) {
        SilentEngineTest::SetUp();
        if (offered())
            GTEST_SKIP() << "an earlier test of this process had it; run it alone";
        expectOutcome(probe(allNames(), impossible), startMark);
    }
};

TEST_F(LackingDriverTest, WithoutFramebuffersLightingAndSkinningStay) {
    recorder.hideExtension("GL_EXT_framebuffer_object");
    startWithout({"Bloom lighting", "Soft shadow-mapping", "Depth of field"}, RVOPENGL::useFBO);
    EXPECT_TRUE(RVSHADER::usePPL());
    EXPECT_TRUE(RVSHADER::useSkinning());
}

TEST_F(LackingDriverTest, WithFewUnitsTheSame) {
    recorder.setTextureUnits(8);
    startWithout({"Bloom lighting", "Soft shadow-mapping", "Depth of field"},
                 RVOPENGL::useMultitexturing);
}

TEST_F(LackingDriverTest, WithoutVertexBuffersSkinningFalls) {
    recorder.hideExtension("GL_ARB_vertex_buffer_object");
    startWithout({"Hardware skinning"}, RVOPENGL::useVBO);
}

} // namespace

} // namespace ravolt::test
