// A mesh skinned by a program and by the processor: the same picture under each light.

#include "ravolt/RAVOLT.h"
#include "ravolt/RVLIGHT.h"
#include "ravolt/RVMATERIAL.h"
#include "ravolt/RVMESH.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVSHADER.h"
#include "ravolt/RVTEXTURE.h"
#include "tests/models/modelScenes.h"
#include "tests/support/engineFixture.h"
#include "tests/support/realDriver.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <iterator>
#include <ostream>
#include <string>
#include <vector>

using namespace ravolt;
using namespace ravolt::test;

namespace {

constexpr unsigned int columns = 9; // of vertices, along x
constexpr unsigned int vertices = 2 * columns;

// A strip of squares under a chain of three bones.
RveNode strip() {
    RveNode node = emptyMesh("strip", {0.5f, 0.25f, 0});
    RveMesh &mesh = node.mesh;
    mesh.material = "paint";
    mesh.radius = 8;
    mesh.minimum = {-4, -1, 0};
    mesh.maximum = {4, 1, 0};
    mesh.skin = {4, {}, {}, {"left", "middle", "right"}};
    for (unsigned int vertex = 0; vertex < vertices; ++vertex) {
        mesh.vertices.push_back({static_cast<float>(vertex / 2) - 4, vertex % 2 ? 1.0f : -1.0f, 0});
        mesh.normals.push_back({0, 0, 1});
        mesh.uvs.push_back({static_cast<float>(vertex / 2) / 2, static_cast<float>(vertex % 2)});
        const float right = static_cast<float>(vertex / 2) / (columns - 1.0f), left = 1 - right;
        mesh.skin.boneIndices.insert(mesh.skin.boneIndices.end(), {0, 1, 2, 0});
        mesh.skin.boneWeights.insert(mesh.skin.boneWeights.end(),
                                     {0.5f * left, 0.25f, 0.75f * right, 0.25f * left});
    }
    for (std::uint16_t at = 0; at + 3u < vertices; at = static_cast<std::uint16_t>(at + 2)) {
        const auto v = [at](int more) { return static_cast<std::uint16_t>(at + more); };
        mesh.faces.push_back({v(0), v(2), v(3)});
        mesh.faces.push_back({v(0), v(3), v(1)});
    }
    return node;
}

// What lights the strip, by which programs.
struct Look {
    const char *byProgram, *byProcessor; // the names of the programs
    RV_LIGHT_TYPE light;
    bool textured;
    bool shadowed = false; // by something that the camera does not see
};

void PrintTo(const Look &look, std::ostream *out) { *out << look.byProgram; }

// Those whose light needs the skinned vertex or none.
const Look looks[] = {
    {"pplDirectA", "pplDirect", RV_LIGHT_TYPE_DIRECTIONAL, false},
    {"pplDirectTA", "pplDirectT", RV_LIGHT_TYPE_DIRECTIONAL, true},
    {"pplSpotTA", "pplSpotT", RV_LIGHT_TYPE_SPOT, true},
    {"pplSpotTSA", "pplSpotTS", RV_LIGHT_TYPE_SPOT, true, true},
};

// The pictures of the strip in one run of the engine.
struct Outcome {
    Picture unshadowed, lit, flat;
};

class HardwareSkinningTest : public EngineTest, public testing::WithParamInterface<Look> {
  protected:
    HardwareSkinningTest() { settings.setShaders(true); }

    void SetUp() override {
        EngineTest::SetUp();
        SKIP_WITHOUT_EXTENSIONS(allOf({programExtensions, vertexBufferExtensions}));
        if (GetParam().shadowed) {
            SKIP_WITHOUT_EXTENSIONS(targetExtensions);
        }
    }

    void TearDown() override {
        RVOPENGL::setProfile(RV_OPENGL_PROFILE_FULL);
        RVOPENGL::setBackgroundColor(0.2f, 0.2f, 0.6f, 1);
        RAVOLT::shadowingOff();
        RVLIGHT::lightingOff();
        RVSHADER::reset();
        EngineTest::TearDown();
    }

    // The strip, with moved bones, under one light.
    static RVNODE *loadFigure(const Look &look) {
        RveNode bones = emptyMesh(
            "left", {-3, 0, 0}, {emptyMesh("middle", {3, 0, 0}, {emptyMesh("right", {3, 0, 0})})});
        RveNode figure = nodeNamed("HumanoidRoot", {bones, strip()});
        RveMaterial paint = materialNamed("paint");
        paint.diffuse = {0.9f, 0.6f, 0.3f, 1};
        paint.shininess = 8;
        std::vector<RveNode> nodes = {figure};
        if (look.shadowed)
            nodes.push_back(
                placed(squareMesh("blocker", "plain", 2), {0.4f, -0.6f, -6}, {0, 180, 0}));
        RVNODE *root = loadScene({{paint, materialNamed("plain")}, rootOver(nodes)});
        RVNODE::findByName("HumanoidRoot")->setPosition(0, 0, -12);
        meshNamed("left")->rotate(0, 0, 15);
        meshNamed("middle")->rotate(10, 25, -50);
        meshNamed("right")->rotate(0, -20, 70);
        meshNamed("right")->move(0, 0.5f, 0.25f);
        RVLIGHT *light = new RVLIGHT;
        light->setLightType(look.light);
        light->setCutOff(30);
        light->setExponent(4);
        light->setDirection(0.3f, -0.2f, -1);
        light->setPosition(-2, 1, 2);
        light->castShadows(look.shadowed);
        light->setShadowNearPlane(1);
        light->setShadowFarPlane(40);
        light->link(root);
        if (look.textured)
            meshNamed("strip")->getMaterial()->setTexture(0, makeTexture());
        return root;
    }

    static RVTEXTURE *makeTexture() {
        RVTEXTURE *texture = new RVTEXTURE;
        EXPECT_TRUE(texture->create(2, 2, 3));
        const unsigned char pixels[] = {255, 200, 40, 60, 255, 180, 250, 90, 200, 120, 140, 255};
        std::copy(std::begin(pixels), std::end(pixels), texture->getBitmap());
        EXPECT_TRUE(texture->update());
        return texture;
    }

    // The name of the program that was used last.
    static std::string programOf(const Calls &calls) {
        const Calls used = calls.named("glUseProgramObjectARB").where([](const Call &call) {
            return call.arguments[0] != 0;
        });
        for (RVSHADER *each = RVSHADER::getFirst(); each && used.size(); each = each->getNext()) {
            RVSHADER::disable();
            if (callsOf([&] { each->render(nullptr); }).contains(used.back()))
                return each->getName();
        }
        return "none";
    }

    Outcome draw(bool byProgram, const Look &look) {
        RVOPENGL::setBackgroundColor(0, 0, 0, 1);
        RVNODE *root = loadFigure(look);
        // The mesh that the processor skins is lit by the program of rigid ones.
        meshNamed("strip")->getMaterial()->setSkinning(byProgram);
        meshNamed("strip")->setAuxId(0xff4080ffu);
        RVLIGHT::lightingOn();
        Outcome outcome;
        drawFrame(nullptr, root);
        outcome.unshadowed = readFrame();
        if (look.shadowed)
            RAVOLT::shadowingOn();
        const Calls calls = callsOf([&] { drawFrame(nullptr, root); });
        outcome.lit = readFrame();
        EXPECT_EQ(programOf(calls), byProgram ? look.byProgram : look.byProcessor);
        RAVOLT::shadowingOff();
        RVOPENGL::setProfile(RV_OPENGL_PROFILE_FLAT);
        drawFrame(nullptr, root);
        outcome.flat = readFrame();
        RVOPENGL::setProfile(RV_OPENGL_PROFILE_FULL);
        return outcome;
    }
};

constexpr Pixel black{0, 0, 0, 255};

// The numbers are compared in skinnedCharacters_test.cpp.
TEST_P(HardwareSkinningTest, ProgramSkinsAsTheProcessorDoes) {
    recorder.failCalls("glGetObjectParameterivARB", 2 * 3, 1); // pplDirectA, and skinning with it
    ASSERT_TRUE(restart());
    ASSERT_FALSE(RVSHADER::useSkinning());
    const Outcome processor = draw(false, GetParam());
    ASSERT_TRUE(restart());
    ASSERT_TRUE(RVSHADER::useSkinning());
    const Outcome program = draw(true, GetParam());

    // Samples on edges may fall to either side.
    EXPECT_GT(processor.lit.pixelsUnlike(black, 0), 500u);
    EXPECT_LE(differenceOf(processor.lit, program.lit).mean, 0.05);
    EXPECT_EQ(differenceOf(program.unshadowed, program.lit).mean > 1, GetParam().shadowed);
    EXPECT_GT(processor.flat.pixelsUnlike(black, 0), 500u);
    EXPECT_LE(differenceOf(processor.flat, program.flat).mean, 0.05);
    EXPECT_PIXEL(program.flat.at(width / 2, height / 2), (Pixel{255, 128, 64}), 1);
}

INSTANTIATE_TEST_SUITE_P(Lights, HardwareSkinningTest, testing::ValuesIn(looks),
                         [](const auto &each) { return std::string(each.param.byProgram); });

} // namespace
