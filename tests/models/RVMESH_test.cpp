#include "ravolt/RAVOLT.h"
#include "ravolt/RVELEMENT.h"
#include "ravolt/RVLIGHT.h"
#include "ravolt/RVMATERIAL.h"
#include "ravolt/RVMESH.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVSHADER.h"
#include "ravolt/RVTEXTURE.h"
#include "tests/models/modelScenes.h"
#include "tests/support/engineFixture.h"

#include <memory>
#include <set>

using namespace ravolt;
using namespace ravolt::test;

namespace {

class MeshTest : public SilentEngineTest {
  protected:
    void TearDown() override {
        RVMESH::hideNormals();
        RVOPENGL::setProfile(RV_OPENGL_PROFILE_FULL);
        switchAllOff();
        SilentEngineTest::TearDown();
    }

    // What stays from test to test.
    static void switchAllOff() {
        RVMESH::reset();
        RVMATERIAL::reset();
        RVLIGHT::lightingOff();
        RVTEXTURE::texturingOff(RV_TEXTURE_UNITS);
        RVOPENGL::blendingOff();
        RVOPENGL::twoSideOff();
    }

    // A square under the root, every switch that it uses off.
    static RVMESH *makeSquare(float transparency = 1.0f) {
        loadScene(RveScene{{materialNamed("paint", transparency)},
                           rootOver({squareMesh("square", "paint")})});
        switchAllOff();
        return meshNamed("square");
    }

    // What a render of the mesh calls. Materials and lights speak for themselves elsewhere.
    Calls render(RVMESH *mesh, const RVELEMENT *prepared = nullptr) {
        RVELEMENT entry = prepared ? *prepared : RVELEMENT();
        return callsOf([&] { EXPECT_TRUE(mesh->render(&entry)); });
    }

    // The calls from the matrix on.
    Calls renderSurfaces(RVMESH *mesh) {
        const Calls calls = render(mesh);
        std::vector<Call> surfaces;
        for (const Call &call : calls)
            if (!surfaces.empty() || call.name == "glLoadMatrixf")
                surfaces.push_back(call);
        EXPECT_FALSE(surfaces.empty());
        surfaces.erase(surfaces.begin());
        return Calls(surfaces);
    }
};

// The engine never forgets what a driver offered: the extensions must be hidden from the first
// start of the process on.
class BareDriverTest : public MeshTest {
  protected:
    void SetUp() override {
        recorder.hideExtension("GL_ARB_multitexture");
        recorder.hideExtension("GL_ARB_vertex_buffer_object");
        MeshTest::SetUp();
        if (RVOPENGL::useVBO() || RVOPENGL::useMultitexturing())
            GTEST_SKIP() << "an earlier test of this process had the extensions; run it alone";
    }
};

const Call unbindElements{"glBindBufferARB", GL_ELEMENT_ARRAY_BUFFER_ARB, 0};

TEST_F(MeshTest, NewMeshHasNoGeometryAndDrawsNothing) {
    RVMESH *mesh = new RVMESH;
    EXPECT_EQ(mesh->getType(), RV_NODE_TYPE_MESH);
    EXPECT_EQ(mesh->getName(), "[mesh " + std::to_string(mesh->getId()) + "]");
    EXPECT_EQ(mesh->getRadius(), -1.0f);
    EXPECT_EQ(mesh->getMinimum().length() + mesh->getMaximum().length(), 0.0f);
    EXPECT_EQ(mesh->getMaterial(), nullptr);
    EXPECT_FALSE(mesh->getShadowCaster());
    EXPECT_FALSE(mesh->isClosed());
    EXPECT_FALSE(mesh->isHidden());
    EXPECT_FALSE(mesh->isSkinned());
    EXPECT_EQ(mesh->getNumberOfBones(), 0);
    EXPECT_EQ(mesh->getNumberOfVertices() + mesh->getNumberOfUVs() + mesh->getNumberOfFaces(), 0u);
    EXPECT_EQ(mesh->getVertexPtr(), nullptr);
    EXPECT_EQ(mesh->getVertexNormalPtr(), nullptr);
    EXPECT_EQ(mesh->getUVPtr(), nullptr);
    EXPECT_EQ(mesh->getFacePtr(), nullptr);
    EXPECT_EQ(mesh->getFaceNormalPtr(), nullptr);
    EXPECT_FALSE(render(mesh).contains("glDrawElements"));
}

TEST_F(MeshTest, RenderWantsAnEntry) {
    RVMESH *mesh = new RVMESH;
    EXPECT_FALSE(mesh->render(nullptr));
    EXPECT_LOGGED_EXACTLY("   [!] Invalid params @ RVMESH::render\n");
}

TEST_F(MeshTest, ShadowCasterIsAPlainFlag) {
    RVMESH *mesh = new RVMESH;
    mesh->setShadowCaster(true);
    EXPECT_TRUE(mesh->getShadowCaster());
}

TEST_F(MeshTest, HiddenMeshCallsNothing) {
    RVMESH *mesh = makeSquare();
    mesh->setDisplayStatus(false);
    EXPECT_TRUE(mesh->isHidden());
    EXPECT_TRUE(render(mesh).empty());
    mesh->setDisplayStatus(true);
    EXPECT_FALSE(mesh->isHidden());
    EXPECT_TRUE(render(mesh).contains("glDrawElements"));
}

TEST_F(MeshTest, ChildrenOfAHiddenMeshAreDrawn) {
    RveNode hidden = squareMesh("hidden");
    hidden.mesh.hidden = true;
    hidden.children = {squareMesh("child")};
    RVNODE *root = loadScene({hidden});
    EXPECT_EQ(callsOf([&] { drawFrame(nullptr, root); }).count("glDrawElements"), 1u);
}

TEST_F(MeshTest, MaterialCountsItsMeshes) {
    RVMESH *mesh = makeSquare();
    RVMATERIAL *paint = RVMATERIAL::findByName("paint");
    RVMATERIAL *other = new RVMATERIAL;
    EXPECT_EQ(paint->getReferences(), 1);
    mesh->setMaterial(paint);
    EXPECT_EQ(paint->getReferences(), 1);
    mesh->setMaterial(other);
    EXPECT_EQ(paint->getReferences(), 0);
    EXPECT_EQ(other->getReferences(), 1);
    mesh->setMaterial(nullptr);
    EXPECT_EQ(other->getReferences(), 0);
    EXPECT_EQ(mesh->getMaterial(), nullptr);
    mesh->setMaterial(other);
    mesh->unlink();
    delete mesh;
    EXPECT_EQ(other->getReferences(), 0);
}

TEST_F(MeshTest, LoadUploadsEachArrayOnceAndUnbinds) {
    writeFile("scene.rve", bytesOf({{}, rootOver({squareMesh("square")})}));
    recorder.start();
    ASSERT_NE(RAVOLT::load("scene.rve"), nullptr);
    const Calls calls = recorder.stop();
    EXPECT_EQ(calls.count("glGenBuffersARB"), 4u);
    EXPECT_EQ(calls.named("glBufferDataARB"),
              (Calls{{"glBufferDataARB", GL_ARRAY_BUFFER_ARB, 48, anyAddress, GL_STATIC_DRAW_ARB},
                     {"glBufferDataARB", GL_ARRAY_BUFFER_ARB, 48, anyAddress, GL_STATIC_DRAW_ARB},
                     {"glBufferDataARB", GL_ARRAY_BUFFER_ARB, 32, anyAddress, GL_STATIC_DRAW_ARB},
                     {"glBufferDataARB", GL_ELEMENT_ARRAY_BUFFER_ARB, 12, anyAddress,
                      GL_STATIC_DRAW_ARB}}));
    EXPECT_EQ(calls[calls.size() - 2], Call("glBindBufferARB", GL_ARRAY_BUFFER_ARB, 0));
    EXPECT_EQ(calls.back(), unbindElements);
}

TEST_F(MeshTest, SkinIsUploadedAsFloats) {
    RveNode square = squareMesh("square");
    square.mesh.skin = {
        2, std::vector<std::uint8_t>(8, 0), std::vector<float>(8, 0.5f), {"square"}};
    writeFile("scene.rve", bytesOf({{}, rootOver({square})}));
    recorder.start();
    ASSERT_NE(RAVOLT::load("scene.rve"), nullptr);
    const Calls uploads = recorder.stop().named("glBufferDataARB");
    ASSERT_EQ(uploads.size(), 6u);
    for (std::size_t i : {4, 5})
        EXPECT_EQ(uploads[i],
                  Call("glBufferDataARB", GL_ARRAY_BUFFER_ARB, 32, anyAddress, GL_STATIC_DRAW_ARB));
}

TEST_F(MeshTest, DestructorDeletesItsBuffers) {
    recorder.start();
    RVMESH *mesh = makeSquare();
    std::vector<Call> deletions;
    for (const Call &made : recorder.stop().named("glGenBuffersARB"))
        deletions.emplace_back("glDeleteBuffersARB", made.arguments);
    ASSERT_EQ(deletions.size(), 4u);
    mesh->unlink();
    EXPECT_EQ(callsOf([&] { delete mesh; }), Calls(deletions));
}

TEST_F(MeshTest, CopySharesTheArraysAndReleasesNothing) {
    RVMESH *mesh = makeSquare();
    {
        RVMESH copy(*mesh);
        EXPECT_EQ(copy.getVertexPtr(), mesh->getVertexPtr());
        RVMESH assigned;
        assigned = *mesh;
        EXPECT_EQ(assigned.getFacePtr(), mesh->getFacePtr());
        recorder.start();
    }
    EXPECT_FALSE(recorder.stop().contains("glDeleteBuffersARB"));
    EXPECT_EQ(mesh->getVertexPtr()[1].x, 1.0f);
}

TEST_F(MeshTest, MeshesOfADeletedMaterialHaveNone) {
    RVMESH *const square = makeSquare(), *const other = new RVMESH;
    RVMATERIAL *const paint = square->getMaterial(), *const glass = new RVMATERIAL;
    const RVMESH copy(*square);
    other->setMaterial(paint);
    other->setMaterial(glass);
    delete paint;
    EXPECT_EQ(square->getMaterial(), nullptr);
    EXPECT_EQ(copy.getMaterial(), nullptr);
    EXPECT_EQ(other->getMaterial(), glass);
    EXPECT_TRUE(render(square).contains("glDrawElements"));

    square->setMaterial(glass);
    EXPECT_EQ(glass->getReferences(), 2);
    RVMATERIAL::cleanUp();
    EXPECT_EQ(square->getMaterial(), nullptr);
    EXPECT_EQ(other->getMaterial(), nullptr);
}

// Between the pass and the drawing.
TEST_F(MeshTest, AFrameIsDrawnWithoutWhatWasDeletedMeanwhile) {
    for (const float transparency : {1.0f, 0.5f}) {
        RVMESH *const square = makeSquare(transparency);
        RVTEXTURE *const texture = new RVTEXTURE;
        texture->create(2, 2, 3);
        RVMATERIAL *const paint = square->getMaterial();
        paint->setTexture(0, texture);
        RVSHADER *const program = new RVSHADER;
        paint->setShader(program);
        auto *light = new RVLIGHT;
        const auto drawWithout = [&](auto &gone) {
            RAVOLT::begin3D(nullptr);
            light->pass();
            square->getParent()->pass();
            delete &gone;
            recorder.start();
            RAVOLT::end3D(true);
            EXPECT_TRUE(recorder.stop().contains("glDrawElements"));
        };
        drawWithout(*texture);
        EXPECT_EQ(paint->getTexture(0), nullptr);
        drawWithout(*program);
        EXPECT_EQ(paint->getShader(), nullptr);
        drawWithout(*paint);
        EXPECT_EQ(square->getMaterial(), nullptr);
        drawWithout(*light);
        RVNODE::cleanUp();
    }
}

TEST_F(MeshTest, AssignmentMovesTheCountOfTheMaterialAlong) {
    RVMESH *mesh = makeSquare();
    RVMATERIAL *paint = mesh->getMaterial();
    RVMATERIAL *former = new RVMATERIAL;
    RVMESH *assigned = new RVMESH;
    assigned->setMaterial(former);
    *assigned = *mesh;
    EXPECT_EQ(former->getReferences(), 0);
    EXPECT_EQ(paint->getReferences(), 2);
    const RVMESH &same = *assigned;
    *assigned = same;
    EXPECT_EQ(paint->getReferences(), 2);
    delete assigned;
    EXPECT_EQ(paint->getReferences(), 1);
    RVMESH bare;
    *mesh = bare;
    EXPECT_EQ(mesh->getMaterial(), nullptr);
    EXPECT_EQ(paint->getReferences(), 0);
}

TEST_F(MeshTest, CopyCountsAndReleasesNoMaterial) {
    RVMESH *mesh = makeSquare();
    RVMATERIAL *paint = mesh->getMaterial();
    RVMATERIAL *other = new RVMATERIAL;
    {
        RVMESH copy(*mesh);
        EXPECT_EQ(copy.getMaterial(), paint);
        copy.setMaterial(other);
        EXPECT_EQ(copy.getMaterial(), other);
        EXPECT_EQ(paint->getReferences(), 1);
        EXPECT_EQ(other->getReferences(), 0);
        RVMESH second(copy);
        second = *mesh;
        EXPECT_EQ(second.getMaterial(), paint);
        *mesh = copy;
        EXPECT_EQ(paint->getReferences(), 0);
        EXPECT_EQ(other->getReferences(), 1);
    }
    EXPECT_EQ(paint->getReferences(), 0);
    EXPECT_EQ(other->getReferences(), 1);
}

// What the mesh owned itself stays its own, and is released with it, once.
TEST_F(MeshTest, AssignmentToAMeshWithGeometryLosesNothing) {
    recorder.start();
    loadScene({squareMesh("a"), squareMesh("b")});
    const std::size_t buffers = recorder.stop().count("glGenBuffersARB");
    RVMESH *a = meshNamed("a"), *b = meshNamed("b");
    const Z3MVECTOR3D *const vertices = a->getVertexPtr();
    *b = *a;
    EXPECT_EQ(b->getVertexPtr(), vertices);
    recorder.start();
    RVNODE::cleanUp();
    std::set<double> names;
    for (const Call &call : recorder.stop().named("glDeleteBuffersARB"))
        EXPECT_TRUE(names.insert(call.arguments[1]).second);
    EXPECT_EQ(names.size(), buffers);
}

TEST_F(MeshTest, OpaqueMeshIsDrawnOnceFromItsBuffers) {
    recorder.start();
    RVMESH *mesh = makeSquare();
    const Calls made = recorder.stop().named("glGenBuffersARB");
    ASSERT_EQ(made.size(), 4u);
    const auto name = [&](std::size_t i) { return made[i].arguments.back(); };
    EXPECT_EQ(renderSurfaces(mesh),
              (Calls{{"glEnableClientState", GL_VERTEX_ARRAY},
                     {"glBindBufferARB", GL_ARRAY_BUFFER_ARB, name(0)},
                     {"glVertexPointer", 3, GL_FLOAT, 0, 0},
                     {"glEnableClientState", GL_NORMAL_ARRAY},
                     {"glBindBufferARB", GL_ARRAY_BUFFER_ARB, name(1)},
                     {"glNormalPointer", GL_FLOAT, 0, 0},
                     {"glClientActiveTextureARB", GL_TEXTURE0},
                     {"glEnableClientState", GL_TEXTURE_COORD_ARRAY},
                     {"glBindBufferARB", GL_ARRAY_BUFFER_ARB, name(2)},
                     {"glTexCoordPointer", 2, GL_FLOAT, 0, 0},
                     {"glBindBufferARB", GL_ELEMENT_ARRAY_BUFFER_ARB, name(3)},
                     {"glDrawElements", GL_TRIANGLES, 6, GL_UNSIGNED_SHORT, 0}}));
}

TEST_F(MeshTest, SecondDrawingSwitchesNothing) {
    RVMESH *mesh = makeSquare();
    render(mesh);
    const Calls calls = render(mesh);
    EXPECT_TRUE(calls
                    .named({"glEnable", "glDisable", "glEnableClientState", "glDisableClientState",
                            "glColor4f", "glMaterialfv", "glLightModelf"})
                    .empty())
        << calls.text();
}

TEST_F(BareDriverTest, OwnMemoryIsDrawn) {
    recorder.start();
    RVMESH *mesh = makeSquare();
    EXPECT_FALSE(recorder.stop().contains("glGenBuffersARB"));
    EXPECT_EQ(renderSurfaces(mesh),
              (Calls{{"glEnableClientState", GL_VERTEX_ARRAY},
                     {"glVertexPointer", 3, GL_FLOAT, 0, anyAddress},
                     {"glEnableClientState", GL_NORMAL_ARRAY},
                     {"glNormalPointer", GL_FLOAT, 0, anyAddress},
                     {"glEnableClientState", GL_TEXTURE_COORD_ARRAY},
                     {"glTexCoordPointer", 2, GL_FLOAT, 0, anyAddress},
                     {"glDrawElements", GL_TRIANGLES, 6, GL_UNSIGNED_SHORT, anyAddress}}));
}

TEST_F(MeshTest, DriverThatLacksAnEntryPointIsDrawnFromOwnMemory) {
    for (const char *name : {"glGenBuffersARB", "glBindBufferARB", "glBufferDataARB"}) {
        SCOPED_TRACE(name);
        recorder.reset();
        recorder.silent();
        recorder.nullEntryPoint(name);
        ASSERT_TRUE(restart());
        RVMESH *mesh = makeSquare();
        EXPECT_TRUE(renderSurfaces(mesh).contains(
            Call("glDrawElements", GL_TRIANGLES, 6, GL_UNSIGNED_SHORT, anyAddress)));
        RVNODE::cleanUp();
    }
}

TEST_F(MeshTest, SkinnedMeshIsDrawnFromItsBentArrays) {
    RveNode square = squareMesh("square");
    square.mesh.skin = {1, {0, 0, 0, 0}, {1, 1, 1, 1}, {"square"}};
    RVNODE *root = loadScene({square});
    const Calls calls = callsOf([&] { drawFrame(nullptr, root); });
    EXPECT_TRUE(calls.haveInOrder({{"glBindBufferARB", GL_ARRAY_BUFFER_ARB, 0},
                                   {"glVertexPointer", 3, GL_FLOAT, 0, anyAddress},
                                   {"glBindBufferARB", GL_ARRAY_BUFFER_ARB, 0},
                                   {"glNormalPointer", GL_FLOAT, 0, anyAddress},
                                   {"glBindBufferARB", GL_ARRAY_BUFFER_ARB, 0},
                                   {"glTexCoordPointer", 2, GL_FLOAT, 0, anyAddress},
                                   {"glDrawElements", GL_TRIANGLES, 6, GL_UNSIGNED_SHORT, 0}}));
}

TEST_F(MeshTest, MeshWithoutFacesDrawsNothingAndUnbindsTheElements) {
    loadScene({emptyMesh("empty")});
    switchAllOff();
    EXPECT_EQ(renderSurfaces(meshNamed("empty")), (Calls{unbindElements}));
}

TEST_F(MeshTest, ArraysThatAMeshLacksAreSwitchedOff) {
    render(makeSquare());
    loadScene({emptyMesh("empty")});
    EXPECT_EQ(renderSurfaces(meshNamed("empty")),
              (Calls{{"glDisableClientState", GL_VERTEX_ARRAY},
                     {"glDisableClientState", GL_NORMAL_ARRAY},
                     {"glClientActiveTextureARB", GL_TEXTURE0},
                     {"glDisableClientState", GL_TEXTURE_COORD_ARRAY},
                     unbindElements}));
}

// --- Transparency

class TransparentMeshTest : public MeshTest, public testing::WithParamInterface<bool> {};

TEST_P(TransparentMeshTest, InnerFacesComeFirstAndCullingIsAsBefore) {
    RVMESH *mesh = makeSquare(0.5f);
    RVLIGHT::lightingOn();
    GetParam() ? RVOPENGL::cullingOn() : RVOPENGL::cullingOff();
    const Calls calls = render(mesh);
    EXPECT_TRUE(calls.haveInOrder({{"glLightModelf", GL_LIGHT_MODEL_TWO_SIDE, 1},
                                   {"glCullFace", GL_FRONT},
                                   {"glDrawElements", GL_TRIANGLES, 6, GL_UNSIGNED_SHORT, 0},
                                   {"glCullFace", GL_BACK},
                                   {"glDrawElements", GL_TRIANGLES, 6, GL_UNSIGNED_SHORT, 0}}))
        << calls.text();
    EXPECT_EQ(calls.count("glDrawElements"), 2u);
    EXPECT_EQ(calls.count(Call("glEnable", GL_CULL_FACE)), GetParam() ? 0u : 1u);
    EXPECT_EQ(calls.count(Call("glDisable", GL_CULL_FACE)), GetParam() ? 0u : 1u);
    EXPECT_EQ(RVOPENGL::isCulled(), GetParam());
    EXPECT_TRUE(RVOPENGL::isTwoSide());
    if (!GetParam()) {
        EXPECT_EQ(calls.back(), Call("glDisable", GL_CULL_FACE));
    }
    RVOPENGL::cullingOn();
}

INSTANTIATE_TEST_SUITE_P(Culling, TransparentMeshTest, testing::Bool());

TEST_F(MeshTest, OpaqueMeshAfterATransparentOneIsLitOnOneSide) {
    RVMESH *mesh = makeSquare(0.5f);
    RVLIGHT::lightingOn();
    render(mesh);
    mesh->getMaterial()->setTransparency(1.0f);
    EXPECT_TRUE(render(mesh).contains(Call("glLightModelf", GL_LIGHT_MODEL_TWO_SIDE, 0)));
}

TEST_F(MeshTest, TransparentMeshWithoutLightingIsDrawnOnce) {
    const Calls calls = render(makeSquare(0.5f));
    EXPECT_EQ(calls.count("glDrawElements"), 1u);
    EXPECT_FALSE(calls.contains("glCullFace"));
    EXPECT_TRUE(calls.contains(Call("glEnable", GL_BLEND)));
}

TEST_F(MeshTest, TransparentMeshIsDrawnOnceInFlatPasses) {
    RVMESH *mesh = makeSquare(0.5f);
    for (RV_OPENGL_PROFILE profile : {RV_OPENGL_PROFILE_FLAT, RV_OPENGL_PROFILE_ZPASS}) {
        RVOPENGL::setProfile(profile);
        EXPECT_EQ(render(mesh).count("glDrawElements"), 1u);
    }
}

// --- Lights

TEST_F(MeshTest, LightsOfEarlierFramesAreNotFollowed) {
    RVMESH *mesh = makeSquare();
    RVLIGHT::lightingOn();
    RVELEMENT nowhere;
    RVELEMENT entry;
    entry.setNearestLight(0, nullptr);
    render(mesh, &entry);
    entry.setNearestLight(0, &nowhere);
    render(mesh, &entry);
    {
        auto gone = std::make_unique<RVELEMENT>();
        entry.setNearestLight(0, gone.get());
    }
    EXPECT_TRUE(render(mesh, &entry).contains("glDrawElements"));
}

TEST_F(MeshTest, MaterialIsAppliedOnceForARunOfMeshes) {
    loadScene(RveScene{{materialNamed("paint")},
                       rootOver({squareMesh("one", "paint"), squareMesh("two", "paint")})});
    EXPECT_EQ(callsOf([&] { drawFrame(nullptr, meshNamed("[root]")); }).count("glMaterialf"), 1u);
}

// --- Flat passes

struct DepthCase {
    int red, green, blue, alpha; // bits
    unsigned int id;
    double color[4];

    friend void PrintTo(const DepthCase &one, std::ostream *out) {
        *out << one.red + one.green + one.blue + one.alpha << " bits, id " << one.id;
    }
};

// The colours obtained say how identities are coded.
class PickingColorTest : public MeshTest, public testing::WithParamInterface<DepthCase> {};

TEST_P(PickingColorTest, IdentityBecomesTheColor) {
    const DepthCase &wanted = GetParam();
    recorder.channelSizes(wanted.red, wanted.green, wanted.blue, wanted.alpha);
    ASSERT_TRUE(restart());
    RVMESH *mesh = makeSquare();
    mesh->setAuxId(wanted.id);
    for (RV_OPENGL_PROFILE profile : {RV_OPENGL_PROFILE_FLAT, RV_OPENGL_PROFILE_ZPASS}) {
        RVOPENGL::setProfile(profile);
        EXPECT_EQ(callsOf([&] { drawFrame(nullptr, mesh); }).named("glColor4f"),
                  (Calls{{"glColor4f", wanted.color[0], wanted.color[1], wanted.color[2],
                          wanted.color[3]}}));
    }
}

INSTANTIATE_TEST_SUITE_P(
    Depths, PickingColorTest,
    testing::Values(
        DepthCase{8, 8, 8, 8, 0x80402010u, {16 / 255.0, 32 / 255.0, 64 / 255.0, 128 / 255.0}},
        DepthCase{8, 8, 8, 0, 0x00ff00ffu, {1, 0, 1, 0}},
        DepthCase{5, 6, 5, 0, 0x1234f81fu, {1, 0, 1, 0}},
        DepthCase{5, 6, 5, 0, 0x000008a3u, {1 / 31.0, 5 / 63.0, 3 / 31.0, 0}}),
    [](const auto &test) {
        const DepthCase &one = test.param;
        return "At" + std::to_string(one.red + one.green + one.blue + one.alpha) + "BitsId" +
               std::to_string(one.id);
    });

TEST_F(MeshTest, WithoutAnAuxiliaryIdTheOwnOneIsTheColor) {
    RVMESH *mesh = makeSquare();
    RVOPENGL::setProfile(RV_OPENGL_PROFILE_FLAT);
    EXPECT_EQ(callsOf([&] { drawFrame(nullptr, mesh); }).named("glColor4f"),
              (Calls{{"glColor4f", mesh->getId() / 255.0, 0, 0, 0}}));
}

TEST_F(MeshTest, FlatPassesSwitchLightsTexturesAndBlendingOff) {
    for (RV_OPENGL_PROFILE profile : {RV_OPENGL_PROFILE_FLAT, RV_OPENGL_PROFILE_ZPASS}) {
        RVMESH *mesh = makeSquare();
        RVLIGHT::lightingOn();
        RVTEXTURE::texturingOn(3);
        RVOPENGL::blendingOn();
        RVOPENGL::setProfile(profile);
        const Calls calls = render(mesh);
        EXPECT_TRUE(calls.haveInOrder({{"glDisable", GL_LIGHTING},
                                       {"glActiveTextureARB", GL_TEXTURE3},
                                       {"glDisable", GL_TEXTURE_2D},
                                       {"glDisable", GL_BLEND}}))
            << calls.text();
        EXPECT_FALSE(calls.contains("glMaterialfv"));
    }
}

TEST_F(MeshTest, TextureCoordinatesAreLeftOutOfTheSelectionAlone) {
    RVMESH *mesh = makeSquare();
    RVOPENGL::setProfile(RV_OPENGL_PROFILE_ZPASS);
    EXPECT_TRUE(render(mesh).contains("glTexCoordPointer"));
    RVOPENGL::setProfile(RV_OPENGL_PROFILE_FLAT);
    const Calls calls = render(mesh);
    EXPECT_FALSE(calls.contains("glTexCoordPointer"));
    EXPECT_TRUE(calls.contains(Call("glDisableClientState", GL_TEXTURE_COORD_ARRAY)));
}

// --- Start of a frame

TEST_F(MeshTest, ResetSwitchesArraysOffAndUnbindsTheElements) {
    render(makeSquare());
    RVOPENGL::colorArrayOn();
    recorder.start();
    RVMESH::reset();
    EXPECT_EQ(recorder.stop(), (Calls{{"glDisableClientState", GL_VERTEX_ARRAY},
                                      {"glDisableClientState", GL_NORMAL_ARRAY},
                                      {"glDisableClientState", GL_COLOR_ARRAY},
                                      {"glClientActiveTextureARB", GL_TEXTURE0},
                                      {"glDisableClientState", GL_TEXTURE_COORD_ARRAY},
                                      {"glClientActiveTextureARB", GL_TEXTURE1},
                                      {"glDisableClientState", GL_TEXTURE_COORD_ARRAY},
                                      {"glClientActiveTextureARB", GL_TEXTURE0},
                                      {"glDisableClientState", GL_TEXTURE_COORD_ARRAY},
                                      unbindElements}));
}

TEST_F(BareDriverTest, ResetSwitchesTheOnlyUnit) {
    RVMESH::reset();
    recorder.start();
    RVMESH::reset();
    EXPECT_EQ(recorder.stop(), (Calls{{"glDisableClientState", GL_TEXTURE_COORD_ARRAY}}));
}

// --- Normals

TEST_F(MeshTest, NormalsAreLinesFromGreenToDarkGreen) {
    RVMESH *mesh = makeSquare();
    RVLIGHT::lightingOn();
    RVMESH::showNormals();
    const Calls calls = render(mesh);
    EXPECT_EQ(calls.count("glBegin"), 1u);
    EXPECT_EQ(calls.count("glVertex3f"), 8u);
    EXPECT_TRUE(calls.haveInOrder({{"glDrawElements", GL_TRIANGLES, 6, GL_UNSIGNED_SHORT, 0},
                                   {"glDisable", GL_LIGHTING},
                                   {"glBegin", GL_LINES},
                                   {"glColor4f", 0, 1, 0, 1},
                                   {"glVertex3f", -1, -1, 0},
                                   {"glColor4f", 0, 0.1, 0, 1},
                                   {"glVertex3f", -1, -1, 1},
                                   {"glColor4f", 0, 1, 0, 1},
                                   {"glVertex3f", 1, -1, 0},
                                   {"glEnd"}}))
        << calls.text();
    RVMESH::hideNormals();
    EXPECT_FALSE(render(mesh).contains("glBegin"));
}

TEST_F(MeshTest, MaterialIsAppliedAnewAfterNormals) {
    RVMESH *mesh = makeSquare();
    render(mesh);
    EXPECT_FALSE(render(mesh).contains("glMaterialf"));
    RVMESH::showNormals();
    render(mesh);
    EXPECT_TRUE(render(mesh).contains("glMaterialf"));
}

TEST_F(MeshTest, NormalsOfAMeshWithoutArraysAreNone) {
    RVMESH::showNormals();
    EXPECT_FALSE(render(new RVMESH).contains("glBegin"));
}

TEST_F(MeshTest, NormalsOfASkinnedMeshAreBentToo) {
    RveNode square = squareMesh("square");
    square.position = {0, 0, 0};
    square.mesh.skin = {1, {0, 0, 0, 0}, {1, 1, 1, 1}, {"bone"}};
    RVNODE *root = loadScene({square, emptyMesh("bone")});
    meshNamed("bone")->setPosition(5, 0, 0);
    RVMESH::showNormals();
    recorder.start();
    drawFrame(nullptr, root);
    EXPECT_TRUE(recorder.stop().haveInOrder({{"glVertex3f", 4, -1, 0}, {"glVertex3f", 4, -1, 1}}));
}

} // namespace
