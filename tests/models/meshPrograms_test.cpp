// The programs of a mesh in each kind of pass, and the names of programs in scene files. A silent
// driver that compiles everything stands behind.

#include "ravolt/RAVOLT.h"
#include "ravolt/RVELEMENT.h"
#include "ravolt/RVLIGHT.h"
#include "ravolt/RVMATERIAL.h"
#include "ravolt/RVMESH.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVSHADER.h"
#include "ravolt/RVTEXTURE.h"
#include "tests/models/modelScenes.h"
#include "tests/resources/programNames.h"
#include "tests/support/engineFixture.h"

#include <map>
#include <string>

using namespace ravolt;
using namespace ravolt::test;

namespace {

class MeshProgramTest : public SilentEngineTest {
  protected:
    MeshProgramTest() { settings.setShaders(true); }
    void SetUp() override {
        SilentEngineTest::SetUp();
        nameOf = programNames();
        nameOf[0] = "none";
        start();
    }
    void TearDown() override {
        RVOPENGL::setProfile(RV_OPENGL_PROFILE_FULL);
        RVMESH::hideNormals();
        start();
        RVSHADER::setPath(nullptr);
        SilentEngineTest::TearDown();
    }

    // The state before each drawing.
    static void start() {
        RVSHADER::reset();
        RVMESH::reset();
        RVMATERIAL::reset();
        RVLIGHT::lightingOff();
        RVTEXTURE::texturingOff(RV_TEXTURE_UNITS);
        RVOPENGL::blendingOff();
        RVOPENGL::twoSideOff();
    }

    static RVMESH *makeSquare() {
        loadScene(RveScene{{materialNamed("paint")}, rootOver({squareMesh("square", "paint")})});
        return meshNamed("square");
    }

    static RVMESH *makeSkin(unsigned int weights) {
        RveNode square = squareMesh("square", "paint");
        square.mesh.skin = {weights,
                            std::vector<std::uint8_t>(4 * weights, 0),
                            std::vector<float>(4 * weights, 1.0f / static_cast<float>(weights)),
                            {"bone"}};
        loadScene(RveScene{{materialNamed("paint")}, rootOver({square, emptyMesh("bone")})});
        return meshNamed("square");
    }

    // What a drawing in this kind of pass calls; with a light in its entry, or without.
    Calls render(RVMESH *mesh, RV_OPENGL_PROFILE profile, bool lit = true) {
        RVELEMENT light, entry;
        entry.setNearestLight(0, lit ? &light : nullptr);
        RVOPENGL::setProfile(profile);
        return callsOf([&] { EXPECT_TRUE(mesh->render(&entry)); });
    }

    // The programs that were put in use, one after the other.
    std::vector<std::string> programs(const Calls &calls) {
        std::vector<std::string> names;
        for (const Call &call : calls.named("glUseProgramObjectARB"))
            names.push_back(nameOf[call.arguments[0]]);
        return names;
    }

    std::map<double, std::string> nameOf; // by OpenGL's name of the program
};

using Names = std::vector<std::string>;

// --- Flat passes

TEST_F(MeshProgramTest, SelectionGoesThroughThePassthrough) {
    RVMESH *mesh = makeSquare();
    mesh->setAuxId(0x00ff00ffu);
    const Calls calls = render(mesh, RV_OPENGL_PROFILE_FLAT);
    EXPECT_EQ(programs(calls), Names{"passthrough"});
    EXPECT_EQ(calls.count("glColor4f"), 1u);
    EXPECT_FALSE(calls.contains("glUniform1fARB"));
}

TEST_F(MeshProgramTest, DepthPassTellsThePlanesAndSetsNoColor) {
    RVOPENGL::setNearPlane(0.5f);
    RVOPENGL::setFarPlane(300);
    const Calls calls = render(makeSquare(), RV_OPENGL_PROFILE_ZPASS);
    RVOPENGL::setNearPlane(1);
    RVOPENGL::setFarPlane(1024);
    EXPECT_EQ(programs(calls), Names{"passhtroughZPass"});
    EXPECT_EQ(calls.named("glUniform1fARB"),
              (Calls{{"glUniform1fARB", RVSHADER::passthroughZPass->getParam(14), 0.5},
                     {"glUniform1fARB", RVSHADER::passthroughZPass->getParam(15), 300}}));
    EXPECT_FALSE(calls.contains("glColor4f"));
}

TEST_F(MeshProgramTest, SkinnedMeshTakesTheSkinnedOnes) {
    RVMESH *mesh = makeSkin(4);
    EXPECT_EQ(programs(render(mesh, RV_OPENGL_PROFILE_FLAT)), Names{"passthroughA"});
    start();
    EXPECT_EQ(programs(render(mesh, RV_OPENGL_PROFILE_ZPASS)), Names{"passhtroughZPassA"});
}

TEST_F(MeshProgramTest, SecondMeshOfAPassPutsNothingInUse) {
    RVMESH *mesh = makeSquare();
    render(mesh, RV_OPENGL_PROFILE_FLAT);
    EXPECT_EQ(programs(render(mesh, RV_OPENGL_PROFILE_FLAT)), Names{});
}

// On purpose: also in the passes that see no lights.
TEST_F(MeshProgramTest, WithoutALightTheFixedFunctionsDraw) {
    RVMESH *mesh = makeSquare();
    EXPECT_EQ(programs(render(mesh, RV_OPENGL_PROFILE_FLAT, false)),
              (Names{"passthrough", "none"}));
    EXPECT_EQ(programs(render(mesh, RV_OPENGL_PROFILE_ZPASS, false)),
              (Names{"passhtroughZPass", "none"}));
    mesh->getMaterial()->setShader(RVSHADER::skydome);
    EXPECT_EQ(programs(render(mesh, RV_OPENGL_PROFILE_FULL, false)),
              (Names{"skydomeShader", "none"}));
    start();
    EXPECT_EQ(programs(render(mesh, RV_OPENGL_PROFILE_FULL)), Names{"skydomeShader"});
}

TEST_F(MeshProgramTest, WithoutPassthroughTheFixedFunctionsTakeTheColorInBothPasses) {
    recorder.refuse("glGetObjectParameterivARB", 2 * 17, 1); // passthroughA
    ASSERT_TRUE(restart());
    ASSERT_FALSE(RVSHADER::usePassthrough());
    for (const RV_OPENGL_PROFILE profile : {RV_OPENGL_PROFILE_FLAT, RV_OPENGL_PROFILE_ZPASS}) {
        RVMESH *mesh = makeSquare();
        RVSHADER::gaussian->render(nullptr);
        const Calls calls = render(mesh, profile);
        EXPECT_EQ(programs(calls), Names{"none"});
        EXPECT_EQ(calls.count("glColor4f"), 1u);
    }
}

TEST_F(MeshProgramTest, WithoutThePassProgramItselfTheFixedFunctionsDraw) {
    delete RVSHADER::passthrough;
    RVMESH *mesh = makeSquare();
    RVSHADER::gaussian->render(nullptr);
    EXPECT_EQ(programs(render(mesh, RV_OPENGL_PROFILE_FLAT)), Names{"none"});
}

TEST_F(MeshProgramTest, LitMeshesAreDrawnByTheProgramOfTheirLight) {
    RVMESH *mesh = makeSquare();
    RVLIGHT *light = new RVLIGHT;
    light->setLightType(RV_LIGHT_TYPE_OMNI);
    light->link(meshNamed("[root]"));
    mesh->setPosition(0, 0, -5);
    RVLIGHT::lightingOn();
    const Names names = programs(callsOf([&] { drawFrame(nullptr, meshNamed("[root]")); }));
    ASSERT_FALSE(names.empty());
    EXPECT_EQ(names.back(), "pplOmni");
}

// --- Skin

TEST_F(MeshProgramTest, ProgramBendsFourWeights) {
    RVMESH *mesh = makeSkin(4);
    const Calls calls = render(mesh, RV_OPENGL_PROFILE_FLAT);
    const RVSHADER &program = *RVSHADER::passthroughA;
    EXPECT_EQ(calls.named("glUniform4fvARB")[0].arguments[0], program.getParam(4));
    EXPECT_EQ(calls.named("glUniform4fvARB")[0].arguments[1], 1);
    EXPECT_EQ(calls.named("glUniform3fvARB")[0].arguments[0], program.getParam(5));
    EXPECT_TRUE(calls.haveInOrder({{"glEnableVertexAttribArrayARB", program.getParam(6)},
                                   {"glEnableVertexAttribArrayARB", program.getParam(7)},
                                   {"glVertexPointer", 3, GL_FLOAT, 0, 0},
                                   {"glDrawElements", GL_TRIANGLES, 6, GL_UNSIGNED_SHORT, 0},
                                   {"glDisableVertexAttribArrayARB", program.getParam(6)},
                                   {"glDisableVertexAttribArrayARB", program.getParam(7)}}))
        << calls.text();
}

TEST_F(MeshProgramTest, WithoutALightTheArraysOfTheSkinAreOffBeforeTheDrawing) {
    const Calls calls = render(makeSkin(4), RV_OPENGL_PROFILE_FLAT, false);
    const unsigned int index = RVSHADER::passthroughA->getParam(6);
    EXPECT_TRUE(calls.haveInOrder({{"glEnableVertexAttribArrayARB", index},
                                   {"glDisableVertexAttribArrayARB", index},
                                   {"glUseProgramObjectARB", 0},
                                   {"glDrawElements", GL_TRIANGLES, 6, GL_UNSIGNED_SHORT, 0}}))
        << calls.text();
}

TEST_F(MeshProgramTest, AnotherNumberOfWeightsKeepsTheBindPose) {
    for (const unsigned int weights : {1u, 3u, 5u}) {
        SCOPED_TRACE(weights);
        RVMESH *mesh = makeSkin(weights);
        const Calls calls = render(mesh, RV_OPENGL_PROFILE_FLAT);
        EXPECT_FALSE(calls.contains("glUniform4fvARB"));
        EXPECT_EQ(programs(calls), (Names{"passthroughA", "none"}));
        EXPECT_TRUE(calls.contains(Call("glVertexPointer", 3, GL_FLOAT, 0, 0))); // its buffer
        RVNODE::cleanUp();
        start();
    }
}

TEST_F(MeshProgramTest, MaterialOfAMeshThatCannotBeBentServesItsOtherMeshesAnew) {
    RVMESH *stiff = makeSkin(2);
    stiff->getMaterial()->setShader(RVSHADER::skydome);
    EXPECT_EQ(programs(render(stiff, RV_OPENGL_PROFILE_FULL)), (Names{"skydomeShader", "none"}));
    loadScene({squareMesh("other", "paint")});
    EXPECT_EQ(programs(render(meshNamed("other"), RV_OPENGL_PROFILE_FULL)), Names{"skydomeShader"});
}

// The picture is in skinnedCharacters_test.cpp.
TEST_F(MeshProgramTest, RigidMeshOfASkinnedMaterialTakesTheRigidPrograms) {
    RveNode skin = squareMesh("skin", "paint");
    skin.mesh.skin = {4, std::vector<std::uint8_t>(16, 0), std::vector<float>(16, 0.25f), {"bone"}};
    RVNODE *root = loadScene(
        RveScene{{materialNamed("paint")},
                 rootOver({squareMesh("first", "paint"), emptyMesh("bone"), skin,
                           squareMesh("second", "paint"), squareMesh("third", "paint")})});
    root->setPosition(0, 0, -5);
    RVLIGHT *light = new RVLIGHT;
    light->setLightType(RV_LIGHT_TYPE_SPOT);
    light->link(root);
    RVLIGHT::lightingOn();
    const Names names = programs(callsOf([&] { drawFrame(nullptr, root); }));
    ASSERT_GE(names.size(), 3u);
    EXPECT_EQ(Names(names.end() - 3, names.end()), (Names{"pplSpot", "pplSpotA", "pplSpot"}));
    EXPECT_TRUE(meshNamed("skin")->getMaterial()->isSkinned());
}

TEST_F(MeshProgramTest, NormalsAreDrawnWithoutAProgramAndNotForASkinThatAProgramBends) {
    RVMESH::showNormals();
    RVMESH *mesh = makeSquare();
    const Calls calls = render(mesh, RV_OPENGL_PROFILE_FLAT);
    EXPECT_EQ(programs(calls), (Names{"passthrough", "none"}));
    EXPECT_EQ(calls.count("glVertex3f"), 8u);
    RVNODE::cleanUp();
    EXPECT_FALSE(render(makeSkin(4), RV_OPENGL_PROFILE_FLAT).contains("glVertex3f"));
    RVNODE::cleanUp();
    EXPECT_FALSE(render(makeSkin(2), RV_OPENGL_PROFILE_FLAT).contains("glVertex3f"));
}

// --- Scene files

RveMaterial shadedMaterial(const std::string &name, const std::string &shader) {
    RveMaterial material = materialNamed(name);
    material.shader = shader;
    return material;
}

TEST_F(MeshProgramTest, SceneNamesAProgramThatIsThere) {
    loadScene(RveScene{{shadedMaterial("sky", "skydomeShader")}, rootOver({})});
    EXPECT_EQ(RVMATERIAL::findByName("sky")->getShader(), RVSHADER::skydome);
    EXPECT_EQ(RVSHADER::getNumberOfShaders(), 35u);
}

TEST_F(MeshProgramTest, SceneWithoutAProgramLeavesTheChoice) {
    loadScene(RveScene{{materialNamed("plain")}, rootOver({})});
    EXPECT_EQ(RVMATERIAL::findByName("plain")->getShader(), nullptr);
    EXPECT_EQ(RVSHADER::getNumberOfShaders(), 35u);
}

TEST_F(MeshProgramTest, SceneNamesAProgramInFiles) {
    writeFile("toonVS.glsl", "v");
    writeFile("toonPS.glsl", "p");
    loadScene(
        RveScene{{shadedMaterial("one", "toon"), shadedMaterial("two", "toon")}, rootOver({})});
    EXPECT_LOGGED_TIMES(1, "   Vertex shader: toonVS.glsl, compiled");
    EXPECT_LOGGED_TIMES(1, "   Pixel shader : toonPS.glsl, compiled");
    RVSHADER *toon = RVSHADER::findByName("toon");
    ASSERT_NE(toon, nullptr);
    EXPECT_TRUE(toon->isOperative());
    EXPECT_EQ(RVMATERIAL::findByName("one")->getShader(), toon);
    EXPECT_EQ(RVMATERIAL::findByName("two")->getShader(), toon);
    EXPECT_EQ(RVSHADER::getNumberOfShaders(), 36u);
}

TEST_F(MeshProgramTest, ProgramWhoseFilesAreMissingIsUsedAllTheSame) {
    RVSHADER::setPath("shaders/");
    loadScene(RveScene{{shadedMaterial("one", "gone")}, rootOver({})});
    EXPECT_LOGGED_TIMES(1,
                        "   [!] File not found shaders/goneVS.glsl @ RVSHADER::loadVertexShader");
    RVSHADER *gone = RVSHADER::findByName("gone");
    ASSERT_NE(gone, nullptr);
    EXPECT_FALSE(gone->isOperative());
    EXPECT_EQ(RVMATERIAL::findByName("one")->getShader(), gone);
}

TEST_F(MeshProgramTest, MaterialThatIsThereKeepsItsProgramWhileTheRecordsIsLoaded) {
    RVMATERIAL *there = new RVMATERIAL;
    there->setName("one");
    loadScene(RveScene{{shadedMaterial("one", "gone")}, rootOver({})});
    EXPECT_EQ(there->getShader(), nullptr);
    EXPECT_NE(RVSHADER::findByName("gone"), nullptr);
}

TEST_F(MeshProgramTest, SettingsHandThePathOut) {
    settings.setShaderPath("programs/");
    ASSERT_TRUE(restart());
    EXPECT_STREQ(RVSHADER::getPath(), "programs/");
}

// --- The frame

TEST_F(MeshProgramTest, BothBlocksOfAFrameBeginWithoutAProgram) {
    RVSHADER::gaussian->render(nullptr);
    EXPECT_EQ(programs(callsOf([&] { RAVOLT::begin3D(nullptr); })), Names{"none"});
    EXPECT_FALSE(RVSHADER::bindTexture(0));
    RAVOLT::end3D(true);
    RVSHADER::gaussian->render(nullptr);
    const Calls calls = callsOf([&] { RAVOLT::begin2D(); });
    EXPECT_EQ(programs(calls), Names{"none"});
    EXPECT_TRUE(calls.haveInOrder({{"glPolygonMode", GL_FRONT_AND_BACK, GL_FILL},
                                   {"glUseProgramObjectARB", 0},
                                   {"glDisable", GL_DEPTH_TEST}}));
    RAVOLT::end2D();
}

TEST_F(MeshProgramTest, ShadowsAreSwitchedOnWhereThereArePrograms) {
    EXPECT_FALSE(RAVOLT::isShadowed());
    RAVOLT::shadowingOn();
    EXPECT_TRUE(RAVOLT::isShadowed());
    RAVOLT::shadowingOff();
    recorder.refuse("glGetObjectParameterivARB", 2 * 12, 1); // pplSpotS
    ASSERT_TRUE(restart());
    RAVOLT::shadowingOn();
    EXPECT_FALSE(RAVOLT::isShadowed());
}

TEST_F(MeshProgramTest, SelectionPutsThePixelBackWithoutAProgram) {
    RVMESH *mesh = makeSquare();
    drawFrame(nullptr, mesh);
    RVSHADER::gaussian->render(nullptr);
    mesh->setDisplayStatus(false); // so that nothing changes the program
    recorder.start();
    RAVOLT::select(1, 1);
    EXPECT_TRUE(
        recorder.stop().haveInOrder({{"glUseProgramObjectARB", 0}, {"glBegin", GL_POINTS}}));
}

} // namespace
