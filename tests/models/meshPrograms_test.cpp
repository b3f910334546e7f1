// The programs of a mesh in each kind of pass, and the names of programs in scene files, with a
// silent driver that compiles everything.

#include "ravolt/RAVOLT.h"
#include "ravolt/RVELEMENT.h"
#include "ravolt/RVLIGHT.h"
#include "ravolt/RVMATERIAL.h"
#include "ravolt/RVMESH.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVSHADER.h"
#include "tests/models/modelScenes.h"
#include "tests/resources/programNames.h"
#include "tests/support/engineFixture.h"

#include <map>
#include <string>

using namespace ravolt;
using namespace ravolt::test;

namespace {

using Names = std::vector<std::string>;

constexpr RV_OPENGL_PROFILE full = RV_OPENGL_PROFILE_FULL, flat = RV_OPENGL_PROFILE_FLAT,
                            depth = RV_OPENGL_PROFILE_ZPASS;
const Call drawFaces{"glDrawElements", GL_TRIANGLES, 6, GL_UNSIGNED_SHORT, 0};

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
        RVOPENGL::setProfile(full);
        RVMESH::hideNormals();
        start();
        RVSHADER::setPath(nullptr);
        SilentEngineTest::TearDown();
    }

    // The state before each drawing.
    static void start() {
        RVSHADER::reset();
        disableDrawingState();
    }

    // With as many weights a vertex; none is a rigid mesh.
    static RVMESH *makeSquare(unsigned int weights = 0) {
        loadScene(RveScene{
            {materialNamed("paint")},
            rootOver({skinnedSquare("square", {"bone"}, weights, "paint"), emptyMesh("bone")})});
        return meshNamed("square");
    }

    // What a drawing in this kind of pass calls; with a light in its entry, or without.
    static Calls render(RVMESH *mesh, RV_OPENGL_PROFILE profile, bool lit = true) {
        RVELEMENT light, entry;
        entry.setNearestLight(0, lit ? &light : nullptr);
        RVOPENGL::setProfile(profile);
        return callsOf([&] { EXPECT_TRUE(mesh->render(&entry)); });
    }

    // The programs that were applied, one after the other.
    Names programs(const Calls &calls) {
        Names names;
        for (const Call &call : calls.named("glUseProgramObjectARB"))
            names.push_back(nameOf[call.arguments[0]]);
        return names;
    }
    template <class Step> Names programsOf(Step step) { return programs(callsOf(step)); }

    std::map<double, std::string> nameOf; // by OpenGL's name of the program
};

// The material has the program of the sky.
TEST_F(MeshProgramTest, EachPassAppliesItsProgramOrNone) {
    const struct {
        unsigned int weights;
        RV_OPENGL_PROFILE profile;
        bool lit;
        Names programs;
    } rows[] = {
        {0, flat, true, {"passthrough"}},
        {0, depth, true, {"passhtroughZPass"}},
        {0, full, true, {"skydomeShader"}},
        {4, flat, true, {"passthroughA"}},
        {4, depth, true, {"passhtroughZPassA"}},
        // Without a light the fixed functions draw. On purpose: also in the passes without lights.
        {0, flat, false, {"passthrough", "none"}},
        {0, depth, false, {"passhtroughZPass", "none"}},
        {0, full, false, {"skydomeShader", "none"}},
        {4, flat, false, {"passthroughA", "none"}},
        // Another number of weights than four is drawn in the bind pose.
        {1, flat, true, {"passthroughA", "none"}},
        {3, flat, true, {"passthroughA", "none"}},
        {5, flat, true, {"passthroughA", "none"}},
        {2, full, true, {"skydomeShader", "none"}},
    };
    for (const auto &[weights, profile, lit, wanted] : rows) {
        SCOPED_TRACE(testing::Message()
                     << weights << " weights, profile " << profile << ", lit " << lit);
        RVMESH *mesh = makeSquare(weights);
        mesh->getMaterial()->setShader(RVSHADER::skydome);
        const Calls calls = render(mesh, profile, lit);
        EXPECT_EQ(programs(calls), wanted);
        EXPECT_EQ(calls.count("glUniform4fvARB"), weights == 4 ? 1u : 0u) << "bones";
        EXPECT_TRUE(calls.contains(Call("glVertexPointer", 3, GL_FLOAT, 0, 0))) << "its buffer";
        if (profile != full) {
            EXPECT_EQ(calls.count("glColor4f"), profile == flat ? 1u : 0u);
            EXPECT_EQ(calls.count("glUniform1fARB"), profile == flat ? 0u : 2u);
        }
        // Again: nothing is applied that was not disabled.
        EXPECT_EQ(programs(render(mesh, profile, lit)), wanted.size() == 1 ? Names{} : wanted);
        RVNODE::cleanUp();
        start();
    }
}

TEST_F(MeshProgramTest, DepthPassBindsThePlanes) {
    RVOPENGL::setNearPlane(0.5f);
    RVOPENGL::setFarPlane(300);
    const Calls calls = render(makeSquare(), depth);
    RVOPENGL::setNearPlane(1);
    RVOPENGL::setFarPlane(1024);
    EXPECT_EQ(calls.named("glUniform1fARB"),
              (Calls{{"glUniform1fARB", RVSHADER::passthroughZPass->getParam(14), 0.5},
                     {"glUniform1fARB", RVSHADER::passthroughZPass->getParam(15), 300}}));
}

TEST_F(MeshProgramTest, WithoutPassthroughTheFixedFunctionsDraw) {
    delete RVSHADER::passthrough;
    RVMESH *mesh = makeSquare();
    RVSHADER::gaussian->render(nullptr);
    EXPECT_EQ(programs(render(mesh, flat)), Names{"none"});

    recorder.failCalls("glGetObjectParameterivARB", 2 * 17, 1); // passthroughA
    ASSERT_TRUE(restart());
    ASSERT_FALSE(RVSHADER::usePassthrough());
    for (const RV_OPENGL_PROFILE profile : {flat, depth}) {
        mesh = makeSquare();
        RVSHADER::gaussian->render(nullptr);
        const Calls calls = render(mesh, profile);
        EXPECT_EQ(programs(calls), Names{"none"});
        EXPECT_EQ(calls.count("glColor4f"), 1u); // in both passes
    }
}

// --- Skin

TEST_F(MeshProgramTest, ProgramSkinsFourWeights) {
    RVMESH *mesh = makeSquare(4);
    const RVSHADER &program = *RVSHADER::passthroughA;
    const unsigned int indices = program.getParam(6), weights = program.getParam(7);
    const Calls calls = render(mesh, flat);
    EXPECT_EQ(calls.named("glUniform4fvARB")[0].arguments[0], program.getParam(4));
    EXPECT_EQ(calls.named("glUniform4fvARB")[0].arguments[1], 1);
    EXPECT_EQ(calls.named("glUniform3fvARB")[0].arguments[0], program.getParam(5));
    EXPECT_TRUE(calls.haveInOrder({{"glEnableVertexAttribArrayARB", indices},
                                   {"glEnableVertexAttribArrayARB", weights},
                                   {"glVertexPointer", 3, GL_FLOAT, 0, 0},
                                   drawFaces,
                                   {"glDisableVertexAttribArrayARB", indices},
                                   {"glDisableVertexAttribArrayARB", weights}}))
        << calls.text();
    start();
    const Calls unlit = render(mesh, flat, false);
    EXPECT_TRUE(unlit.haveInOrder({{"glEnableVertexAttribArrayARB", indices},
                                   {"glDisableVertexAttribArrayARB", indices},
                                   {"glUseProgramObjectARB", 0},
                                   drawFaces}))
        << unlit.text();
}

TEST_F(MeshProgramTest, MaterialIsAppliedAgainAfterAMeshThatCannotBeSkinned) {
    RVMESH *skin = makeSquare(2);
    skin->getMaterial()->setShader(RVSHADER::skydome);
    EXPECT_EQ(programs(render(skin, full)), (Names{"skydomeShader", "none"}));
    loadScene({squareMesh("other", "paint")});
    EXPECT_EQ(programs(render(meshNamed("other"), full)), Names{"skydomeShader"});
}

TEST_F(MeshProgramTest, NormalsAreDrawnWithoutAProgramAndNotForASkinOfAProgram) {
    RVMESH::showNormals();
    const Calls calls = render(makeSquare(), flat);
    EXPECT_EQ(programs(calls), (Names{"passthrough", "none"}));
    EXPECT_EQ(calls.count("glVertex3f"), 8u);
    for (const unsigned int weights : {4u, 2u}) {
        RVNODE::cleanUp();
        EXPECT_FALSE(render(makeSquare(weights), flat).contains("glVertex3f")) << weights;
    }
}

// --- Scene files

RVMATERIAL *loadShaded(const std::string &name, const std::string &shader) {
    RveMaterial material = materialNamed(name);
    material.shader = shader;
    loadScene(RveScene{{material}, rootOver({})});
    return RVMATERIAL::findByName(name.c_str());
}

TEST_F(MeshProgramTest, SceneNamesItsPrograms) {
    const unsigned int builtin = RVSHADER::getNumberOfShaders();
    EXPECT_EQ(builtin, 35u);
    EXPECT_EQ(loadShaded("sky", "skydomeShader")->getShader(), RVSHADER::skydome);
    EXPECT_EQ(loadShaded("plain", "[none]")->getShader(), nullptr);
    EXPECT_EQ(RVSHADER::getNumberOfShaders(), builtin);

    writeFile("toonVS.glsl", "v");
    writeFile("toonPS.glsl", "p");
    RVSHADER *toon = loadShaded("one", "toon")->getShader();
    ASSERT_NE(toon, nullptr);
    EXPECT_EQ(loadShaded("two", "toon")->getShader(), toon);
    EXPECT_LOGGED_TIMES(1, "   Vertex shader: toonVS.glsl, compiled");
    EXPECT_LOGGED_TIMES(1, "   Pixel shader : toonPS.glsl, compiled");
    EXPECT_EQ(RVSHADER::findByName("toon"), toon);
    EXPECT_TRUE(toon->isOperative());
    EXPECT_EQ(RVSHADER::getNumberOfShaders(), builtin + 1);

    // Its files are missing: it is used all the same.
    RVSHADER::setPath("shaders/");
    RVSHADER *gone = loadShaded("three", "gone")->getShader();
    EXPECT_LOGGED_TIMES(1,
                        "   [!] File not found shaders/goneVS.glsl @ RVSHADER::loadVertexShader");
    ASSERT_NE(gone, nullptr);
    EXPECT_EQ(RVSHADER::findByName("gone"), gone);
    EXPECT_FALSE(gone->isOperative());

    // A registered material does not change, but the program is loaded.
    EXPECT_EQ(loadShaded("plain", "unused")->getShader(), nullptr);
    EXPECT_NE(RVSHADER::findByName("unused"), nullptr);
}

TEST_F(MeshProgramTest, SettingsSetThePath) {
    settings.setShaderPath("programs/");
    ASSERT_TRUE(restart());
    EXPECT_STREQ(RVSHADER::getPath(), "programs/");
}

// --- The frame

TEST_F(MeshProgramTest, BothBlocksOfAFrameBeginWithoutAProgram) {
    RVSHADER::gaussian->render(nullptr);
    EXPECT_EQ(programsOf([] { RAVOLT::begin3D(nullptr); }), Names{"none"});
    EXPECT_FALSE(RVSHADER::bindTexture(0));
    RAVOLT::end3D(true);
    RVSHADER::gaussian->render(nullptr);
    const Calls calls = callsOf([] { RAVOLT::begin2D(); });
    EXPECT_EQ(programs(calls), Names{"none"});
    EXPECT_TRUE(calls.haveInOrder({{"glPolygonMode", GL_FRONT_AND_BACK, GL_FILL},
                                   {"glUseProgramObjectARB", 0},
                                   {"glDisable", GL_DEPTH_TEST}}));
    RAVOLT::end2D();
}

TEST_F(MeshProgramTest, SelectionRestoresThePixelWithoutAProgram) {
    RVMESH *mesh = makeSquare();
    drawFrame(nullptr, mesh);
    RVSHADER::gaussian->render(nullptr);
    mesh->setDisplayStatus(false); // so that nothing changes the program
    EXPECT_TRUE(callsOf([] {
                    RAVOLT::select(1, 1);
                }).haveInOrder({{"glUseProgramObjectARB", 0}, {"glBegin", GL_POINTS}}));
}

} // namespace
