// Meshes as objects: material, arrays, copies; and the calls that draw them.

#include "ravolt/RAVOLT.h"
#include "ravolt/RVANIM.h"
#include "ravolt/RVBOX.h"
#include "ravolt/RVELEMENT.h"
#include "ravolt/RVLIGHT.h"
#include "ravolt/RVMATERIAL.h"
#include "ravolt/RVMESH.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVSHADER.h"
#include "ravolt/RVTEXTURE.h"
#include "tests/models/modelScenes.h"
#include "tests/support/engineFixture.h"

#include <cmath>
#include <functional>
#include <limits>
#include <memory>
#include <set>
#include <utility>
#include <vector>

using namespace ravolt;
using namespace ravolt::test;

namespace {

constexpr RV_OPENGL_PROFILE flatProfiles[] = {RV_OPENGL_PROFILE_FLAT, RV_OPENGL_PROFILE_ZPASS};

class MeshTest : public SilentEngineTest {
  protected:
    void TearDown() override {
        RVMESH::hideNormals();
        RVOPENGL::setProfile(RV_OPENGL_PROFILE_FULL);
        disableDrawingState();
        SilentEngineTest::TearDown();
    }

    // A square under the root, everything that it enables disabled.
    static RVMESH *makeSquare(float transparency = 1.0f) {
        loadScene(RveScene{{materialNamed("paint", transparency)},
                           rootOver({squareMesh("square", "paint")})});
        disableDrawingState();
        return meshNamed("square");
    }

    // What a render of the mesh calls. Materials and lights are tested elsewhere.
    static Calls render(RVMESH *mesh, const RVELEMENT *prepared = nullptr) {
        RVELEMENT entry = prepared ? *prepared : RVELEMENT();
        return callsOf([&] { EXPECT_TRUE(mesh->render(&entry)); });
    }

    // The calls after that of the matrix.
    static Calls renderSurfaces(RVMESH *mesh) {
        std::vector<Call> surfaces;
        for (const Call &call : render(mesh))
            if (!surfaces.empty() || call.name == "glLoadMatrixf")
                surfaces.push_back(call);
        EXPECT_FALSE(surfaces.empty());
        surfaces.erase(surfaces.begin());
        return Calls(surfaces);
    }
};

// The engine's capabilities once detected stay set: the extensions must be hidden from the first
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

const Call unbindArrays{"glBindBufferARB", GL_ARRAY_BUFFER_ARB, 0};
const Call unbindElements{"glBindBufferARB", GL_ELEMENT_ARRAY_BUFFER_ARB, 0};
const Call drawBuffer{"glDrawElements", GL_TRIANGLES, 6, GL_UNSIGNED_SHORT, 0};
const Call drawMemory{"glDrawElements", GL_TRIANGLES, 6, GL_UNSIGNED_SHORT, anyAddress};

TEST_F(MeshTest, NewMeshHasNoGeometryAndDrawsNothing) {
    RVMESH *mesh = new RVMESH;
    EXPECT_EQ(mesh->getType(), RV_NODE_TYPE_MESH);
    EXPECT_EQ(mesh->getName(), "[mesh " + std::to_string(mesh->getId()) + "]");
    EXPECT_EQ(mesh->getRadius(), -1.0f);
    EXPECT_EQ(mesh->getMinimum().length() + mesh->getMaximum().length(), 0.0f);
    EXPECT_EQ(mesh->getMaterial(), nullptr);
    const std::vector<bool> flags{mesh->getShadowCaster(), mesh->isClosed(), mesh->isHidden(),
                                  mesh->isSkinned()};
    EXPECT_EQ(flags, std::vector<bool>(4));
    const std::vector<unsigned int> counts{static_cast<unsigned int>(mesh->getNumberOfBones()),
                                           mesh->getNumberOfVertices(), mesh->getNumberOfUVs(),
                                           mesh->getNumberOfFaces()};
    EXPECT_EQ(counts, std::vector<unsigned int>(4));
    const std::vector<const void *> arrays{mesh->getVertexPtr(), mesh->getVertexNormalPtr(),
                                           mesh->getUVPtr(), mesh->getFacePtr(),
                                           mesh->getFaceNormalPtr()};
    EXPECT_EQ(arrays, std::vector<const void *>(5));
    EXPECT_FALSE(render(mesh).contains("glDrawElements"));

    mesh->setShadowCaster(true);
    EXPECT_TRUE(mesh->getShadowCaster());
    EXPECT_NOTHING_LOGGED();
    EXPECT_FALSE(mesh->render(nullptr));
    EXPECT_LOGGED_EXACTLY("   [!] Invalid params @ RVMESH::render\n");
}

TEST_F(MeshTest, HiddenMeshCallsNothingButItsChildrenAreDrawn) {
    RveNode above = squareMesh("hidden");
    above.mesh.hidden = true;
    above.children = {squareMesh("child")};
    RVNODE *root = loadScene({above});
    RVMESH *hidden = meshNamed("hidden");
    EXPECT_TRUE(hidden->isHidden());
    EXPECT_TRUE(render(hidden).empty());
    EXPECT_EQ(callsOf([&] { drawFrame(nullptr, root); }).count("glDrawElements"), 1u);
    hidden->setDisplayStatus(true);
    EXPECT_FALSE(hidden->isHidden());
    EXPECT_TRUE(render(hidden).contains("glDrawElements"));
    hidden->setDisplayStatus(false);
    EXPECT_TRUE(hidden->isHidden());
    EXPECT_TRUE(render(hidden).empty());
}

// --- Material

TEST_F(MeshTest, MaterialCountsItsMeshesButNoCopies) {
    RVMESH *mesh = makeSquare(), *assigned = new RVMESH;
    RVMATERIAL *paint = RVMATERIAL::findByName("paint"), *other = new RVMATERIAL;
    std::unique_ptr<RVMESH> copy;
    const RVMESH bare;
    const RVMESH &same = *assigned;
    const auto assignToACopyOf = [&](const RVMESH &first) {
        RVMESH second(first);
        second = *mesh;
        EXPECT_EQ(second.getMaterial(), paint);
    };
    const struct {
        const char *what;
        std::function<void()> step;
        int paint, other; // references after it
        RVMATERIAL *ofMesh, *ofCopy = nullptr;
    } steps[] = {
        {"loaded", [] {}, 1, 0, paint},
        {"set again", [&] { mesh->setMaterial(paint); }, 1, 0, paint},
        {"replaced", [&] { mesh->setMaterial(other); }, 0, 1, other},
        {"removed", [&] { mesh->setMaterial(nullptr); }, 0, 0, nullptr},
        {"set", [&] { mesh->setMaterial(paint); }, 1, 0, paint},
        {"set in another mesh", [&] { assigned->setMaterial(other); }, 1, 1, paint},
        {"assigned over it", [&] { *assigned = *mesh; }, 2, 0, paint},
        {"assigned to itself", [&] { *assigned = same; }, 2, 0, paint},
        {"deleted", [&] { delete assigned; }, 1, 0, paint},
        {"copied", [&] { copy = std::make_unique<RVMESH>(*mesh); }, 1, 0, paint, paint},
        {"replaced in a copy", [&] { copy->setMaterial(other); }, 1, 0, paint, other},
        {"assigned to a copy's copy", [&] { assignToACopyOf(*copy); }, 1, 0, paint, other},
        {"assigned from a copy", [&] { *mesh = *copy; }, 0, 1, other, other},
        {"copy deleted", [&] { copy.reset(); }, 0, 1, other},
        {"assigned without a material", [&] { *mesh = bare; }, 0, 0, nullptr},
        {"set once more", [&] { mesh->setMaterial(other); }, 0, 1, other},
    };
    using Counts = std::pair<int, int>;
    for (const auto &[what, step, paintCount, otherCount, ofMesh, ofCopy] : steps) {
        SCOPED_TRACE(what);
        step();
        EXPECT_EQ(Counts(paint->getReferences(), other->getReferences()),
                  Counts(paintCount, otherCount));
        EXPECT_EQ(mesh->getMaterial(), ofMesh);
        EXPECT_EQ(copy ? copy->getMaterial() : nullptr, ofCopy);
    }
    mesh->unlink();
    delete mesh;
    EXPECT_EQ(other->getReferences(), 0);
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
            EXPECT_TRUE(callsOf([] { RAVOLT::end3D(true); }).contains("glDrawElements"));
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

TEST_F(MeshTest, MaterialIsAppliedOnceForARunOfMeshesAndAgainAfterNormals) {
    loadScene(RveScene{{materialNamed("paint")},
                       rootOver({squareMesh("one", "paint"), squareMesh("two", "paint")})});
    EXPECT_EQ(callsOf([&] { drawFrame(nullptr, meshNamed("[root]")); }).count("glMaterialf"), 1u);
    EXPECT_FALSE(render(meshNamed("one")).contains("glMaterialf"));
    RVMESH::showNormals();
    render(meshNamed("one"));
    EXPECT_TRUE(render(meshNamed("one")).contains("glMaterialf"));
}

// --- Arrays

// Vertices, normals and texture coordinates share a buffer: calls for one of their own are absent.
TEST_F(MeshTest, LoadUploadsTheArraysOnceAndUnbinds) {
    const auto upload = [](GLenum target, int bytes) {
        return Call("glBufferDataARB", target, bytes, anyAddress, GL_STATIC_DRAW_ARB);
    };
    const Call arrays = upload(GL_ARRAY_BUFFER_ARB, 48 + 48 + 32),
               floats = upload(GL_ARRAY_BUFFER_ARB, 32),
               faces = upload(GL_ELEMENT_ARRAY_BUFFER_ARB, 12);
    const Calls calls = callsOf([] { loadScene({squareMesh("square")}); });
    EXPECT_EQ(calls.count("glGenBuffersARB"), 2u);
    EXPECT_EQ(calls.named("glBufferDataARB"), (Calls{arrays, faces}));
    EXPECT_EQ(calls[calls.size() - 2], unbindArrays);
    EXPECT_EQ(calls.back(), unbindElements);
    // Bone numbers and weights as floats.
    EXPECT_EQ(
        callsOf([] { loadScene({skinnedSquare("skin", {"skin"}, 2)}); }).named("glBufferDataARB"),
        (Calls{arrays, faces, floats, floats}));
}

// The names that are passed to glGenBuffersARB or glDeleteBuffersARB.
std::multiset<double> buffersIn(const Calls &calls, const char *function) {
    std::multiset<double> names;
    for (const Call &call : calls.named(function))
        names.insert(call.arguments[1]);
    return names;
}

// The meshes of a file share buffers, which are deleted with the last of them. A mesh that was
// assigned to still uses its former buffers.
TEST_F(MeshTest, CopiesShareArraysAndEachBufferIsDeletedOnce) {
    const Calls made = callsOf([] { loadScene({squareMesh("a"), squareMesh("b")}); });
    const auto names = buffersIn(made, "glGenBuffersARB");
    EXPECT_EQ(names.size(), 2u);
    RVMESH *a = meshNamed("a"), *b = meshNamed("b");
    const Z3MVECTOR3D *const vertices = a->getVertexPtr();
    const Calls calls = callsOf([&] {
        const RVMESH copy(*a);
        EXPECT_EQ(copy.getVertexPtr(), vertices);
        *b = copy;
    });
    EXPECT_FALSE(calls.contains("glDeleteBuffersARB"));
    EXPECT_EQ(b->getVertexPtr(), vertices);
    EXPECT_EQ(vertices[1].x, 1.0f);
    EXPECT_EQ(buffersIn(callsOf([] { RVNODE::cleanUp(); }), "glDeleteBuffersARB"), names);
}

TEST_F(MeshTest, BuffersOfOneMeshAreDeletedWithIt) {
    for (const RveNode &node : {squareMesh("alone"), skinnedSquare("skin", {"skin"}, 2)}) {
        SCOPED_TRACE(node.name);
        const Calls made = callsOf([&node] { loadScene({node}); });
        const auto names = buffersIn(made, "glGenBuffersARB");
        EXPECT_GE(names.size(), 2u);
        EXPECT_EQ(buffersIn(callsOf([] { RVNODE::cleanUp(); }), "glDeleteBuffersARB"), names);
    }
}

TEST_F(MeshTest, OpaqueMeshIsDrawnOnceFromItsBuffers) {
    recorder.start();
    RVMESH *mesh = makeSquare();
    const Calls made = recorder.stop().named("glGenBuffersARB");
    ASSERT_EQ(made.size(), 2u);
    const auto bind = [&](GLenum target, std::size_t i) {
        return Call("glBindBufferARB", target, made[i].arguments.back());
    };
    EXPECT_EQ(renderSurfaces(mesh), (Calls{{"glEnableClientState", GL_VERTEX_ARRAY},
                                           bind(GL_ARRAY_BUFFER_ARB, 0),
                                           {"glVertexPointer", 3, GL_FLOAT, 0, 0},
                                           {"glEnableClientState", GL_NORMAL_ARRAY},
                                           bind(GL_ARRAY_BUFFER_ARB, 0),
                                           {"glNormalPointer", GL_FLOAT, 0, 48},
                                           {"glClientActiveTextureARB", GL_TEXTURE0},
                                           {"glEnableClientState", GL_TEXTURE_COORD_ARRAY},
                                           bind(GL_ARRAY_BUFFER_ARB, 0),
                                           {"glTexCoordPointer", 2, GL_FLOAT, 0, 96},
                                           bind(GL_ELEMENT_ARRAY_BUFFER_ARB, 1),
                                           drawBuffer}));
    const Calls again = render(mesh);
    EXPECT_TRUE(again
                    .named({"glEnable", "glDisable", "glEnableClientState", "glDisableClientState",
                            "glColor4f", "glMaterialfv", "glLightModelf"})
                    .empty())
        << again.text();
}

// A direct draw, without the frame's reset: the box's colours were on the stack of its drawing.
TEST_F(MeshTest, AMeshAfterABoxIsDrawnWithoutTheColoursOfTheBox) {
    const Call colorsOff("glDisableClientState", GL_COLOR_ARRAY);
    for (const float transparency : {1.0f, 0.5f}) {
        SCOPED_TRACE(transparency);
        RVMESH *const mesh = makeSquare(transparency);
        RVBOX *const box = new RVBOX;
        ASSERT_TRUE(callsOf([&] { drawFrame2D(box); })
                        .haveInOrder({{"glEnableClientState", GL_COLOR_ARRAY},
                                      {"glDrawArrays", GL_TRIANGLE_STRIP, 0, 4}}));
        const Calls calls = render(mesh);
        EXPECT_TRUE(calls.haveInOrder({colorsOff, drawBuffer})) << calls.text();
        EXPECT_FALSE(calls.contains(Call("glEnableClientState", GL_COLOR_ARRAY)));
        EXPECT_FALSE(render(mesh).contains(colorsOff)) << "it is off already";
        RVNODE::cleanUp();
    }
}

// Of two squares in one file the faces of the second begin after those of the first.
TEST_F(MeshTest, MeshesOfAFileAreDrawnFromSharedBuffers) {
    const auto upload = [](GLenum target, int bytes) {
        return Call("glBufferDataARB", target, bytes, anyAddress, GL_STATIC_DRAW_ARB);
    };
    RVNODE *root = nullptr;
    const Calls load = callsOf([&] { root = loadScene({squareMesh("a"), squareMesh("b")}); });
    EXPECT_EQ(load.named("glBufferDataARB"), (Calls{upload(GL_ARRAY_BUFFER_ARB, 2 * 128),
                                                    upload(GL_ELEMENT_ARRAY_BUFFER_ARB, 24)}));
    const Calls calls = callsOf([&] { drawFrame(nullptr, root); });
    EXPECT_EQ(
        calls.named({"glVertexPointer", "glNormalPointer", "glTexCoordPointer", "glDrawElements"}),
        (Calls{{"glVertexPointer", 3, GL_FLOAT, 0, 0},
               {"glNormalPointer", GL_FLOAT, 0, 96},
               {"glTexCoordPointer", 2, GL_FLOAT, 0, 192},
               {"glDrawElements", GL_TRIANGLES, 6, GL_UNSIGNED_SHORT, 0},
               {"glDrawElements", GL_TRIANGLES, 6, GL_UNSIGNED_SHORT, 12}}));
    RVMESH *a = meshNamed("a");
    a->unlink();
    EXPECT_FALSE(callsOf([a] { delete a; }).contains("glDeleteBuffersARB"));
    EXPECT_EQ(callsOf([] { RVNODE::cleanUp(); }).count("glDeleteBuffersARB"), 2u);
}

// 16-bit indices address 65,536 vertices: the third mesh has buffers of its own.
TEST_F(MeshTest, SharedBuffersHaveNoMoreVerticesThanIndicesReach) {
    std::vector<RveNode> meshes;
    for (const char *name : {"a", "b", "c"}) {
        RveNode mesh = squareMesh(name);
        mesh.mesh.vertices.resize(32768);
        mesh.mesh.normals.resize(32768);
        mesh.mesh.uvs.resize(32768);
        meshes.push_back(mesh);
    }
    const Calls calls = callsOf([&] { loadScene(RveScene{{}, rootOver(meshes)}); });
    EXPECT_EQ(calls.count("glBufferDataARB"), 4u);
    EXPECT_EQ(calls.named("glBufferDataARB")[0].arguments[1], 65536 * 32);
    EXPECT_EQ(calls.named("glBufferDataARB")[2].arguments[1], 32768 * 32);
}

// In a frame a mesh that is passed twice in a row, or shares the arrays of the one before, needs no
// call for its arrays.
TEST_F(MeshTest, ArraysThatAreSetAreNotSetAgain) {
    RVMESH *square = makeSquare();
    RVNODE *root = new RVNODE;
    square->unlink();
    square->link(root);
    RVMESH *copy = new RVMESH;
    *copy = *square;
    copy->link(root);
    for (int repeated = 0; repeated < 2; ++repeated) {
        const Calls calls = callsOf([&] { drawFrame(nullptr, root); });
        EXPECT_EQ(calls.count("glDrawElements"), 2u);
        EXPECT_EQ(calls.count("glVertexPointer"), 1u);
        EXPECT_EQ(calls.count("glNormalPointer"), 1u);
        EXPECT_EQ(calls.count("glTexCoordPointer"), 1u);
    }
}

TEST_F(BareDriverTest, OwnMemoryIsDrawn) {
    recorder.start();
    RVMESH *mesh = makeSquare();
    EXPECT_FALSE(recorder.stop().contains("glGenBuffersARB"));
    EXPECT_EQ(renderSurfaces(mesh), (Calls{{"glEnableClientState", GL_VERTEX_ARRAY},
                                           {"glVertexPointer", 3, GL_FLOAT, 0, anyAddress},
                                           {"glEnableClientState", GL_NORMAL_ARRAY},
                                           {"glNormalPointer", GL_FLOAT, 0, anyAddress},
                                           {"glEnableClientState", GL_TEXTURE_COORD_ARRAY},
                                           {"glTexCoordPointer", 2, GL_FLOAT, 0, anyAddress},
                                           drawMemory}));
}

TEST_F(MeshTest, DriverThatLacksAnEntryPointIsDrawnFromOwnMemory) {
    for (const char *name : {"glGenBuffersARB", "glBindBufferARB", "glBufferDataARB"}) {
        SCOPED_TRACE(name);
        recorder.reset();
        recorder.silent();
        recorder.nullEntryPoint(name);
        ASSERT_TRUE(restart());
        EXPECT_TRUE(renderSurfaces(makeSquare()).contains(drawMemory));
        RVNODE::cleanUp();
        loadScene({squareMesh("first"), squareMesh("second")}); // which would share buffers
        EXPECT_TRUE(renderSurfaces(meshNamed("second")).contains(drawMemory));
        RVNODE::cleanUp();
    }
}

// The indices in a shared buffer count from its first vertex, those in memory from the mesh's own.
TEST_F(MeshTest, MeshesThatGetOneOfTwoSharedBuffersAreDrawnFromOwnMemory) {
    for (const unsigned int after : {0u, 1u}) {
        SCOPED_TRACE(after);
        recorder.failCalls("glGenBuffersARB", after, 1);
        const Calls load = callsOf([] {
            loadScene({squareMesh("first"), squareMesh("second"), squareMesh("third")});
        });
        EXPECT_EQ(load.count("glDeleteBuffersARB"), 1u) << "the other buffer";
        for (const char *name : {"first", "second", "third"}) {
            disableDrawingState();
            EXPECT_EQ(render(meshNamed(name))
                          .named({"glVertexPointer", "glNormalPointer", "glTexCoordPointer",
                                  "glDrawElements"}),
                      (Calls{{"glVertexPointer", 3, GL_FLOAT, 0, anyAddress},
                             {"glNormalPointer", GL_FLOAT, 0, anyAddress},
                             {"glTexCoordPointer", 2, GL_FLOAT, 0, anyAddress},
                             drawMemory}))
                << name;
        }
        EXPECT_FALSE(callsOf([] { RVNODE::cleanUp(); }).contains("glDeleteBuffersARB"));
    }
}

// No buffer need be bound for the second and the third array.
TEST_F(MeshTest, SkinnedMeshIsDrawnFromItsSkinnedArrays) {
    RVNODE *root = loadScene({skinnedSquare("square", {"square"})});
    EXPECT_TRUE(callsOf([&] { drawFrame(nullptr, root); })
                    .haveInOrder({unbindArrays,
                                  {"glVertexPointer", 3, GL_FLOAT, 0, anyAddress},
                                  {"glNormalPointer", GL_FLOAT, 0, anyAddress},
                                  {"glTexCoordPointer", 2, GL_FLOAT, 0, anyAddress},
                                  drawBuffer}));
}

TEST_F(MeshTest, MeshWithoutArraysDisablesThemDrawsNothingAndUnbindsTheElements) {
    loadScene({emptyMesh("empty")});
    disableDrawingState();
    EXPECT_EQ(renderSurfaces(meshNamed("empty")), (Calls{unbindElements}));
    render(makeSquare());
    EXPECT_EQ(renderSurfaces(meshNamed("empty")),
              (Calls{{"glDisableClientState", GL_VERTEX_ARRAY},
                     {"glDisableClientState", GL_NORMAL_ARRAY},
                     {"glClientActiveTextureARB", GL_TEXTURE0},
                     {"glDisableClientState", GL_TEXTURE_COORD_ARRAY},
                     unbindElements}));
}

// --- Transparency

TEST_F(MeshTest, InnerFacesOfATransparentMeshComeFirstAndCullingIsAsBefore) {
    RVMESH *mesh = makeSquare(0.5f);
    RVLIGHT::lightingOn();
    for (const bool culled : {false, true}) {
        SCOPED_TRACE(culled);
        RVOPENGL::twoSideOff();
        culled ? RVOPENGL::cullingOn() : RVOPENGL::cullingOff();
        const Calls calls = render(mesh);
        EXPECT_TRUE(calls.haveInOrder({{"glLightModelf", GL_LIGHT_MODEL_TWO_SIDE, 1},
                                       {"glCullFace", GL_FRONT},
                                       drawBuffer,
                                       {"glCullFace", GL_BACK},
                                       drawBuffer}))
            << calls.text();
        EXPECT_EQ(calls.count("glDrawElements"), 2u);
        EXPECT_EQ(calls.count(Call("glEnable", GL_CULL_FACE)), culled ? 0u : 1u);
        EXPECT_EQ(calls.count(Call("glDisable", GL_CULL_FACE)), culled ? 0u : 1u);
        EXPECT_TRUE(culled || calls.back() == Call("glDisable", GL_CULL_FACE));
        EXPECT_EQ(RVOPENGL::isCulled(), culled);
        EXPECT_TRUE(RVOPENGL::isTwoSide());
    }
    mesh->getMaterial()->setTransparency(1.0f);
    EXPECT_TRUE(render(mesh).contains(Call("glLightModelf", GL_LIGHT_MODEL_TWO_SIDE, 0)));
}

TEST_F(MeshTest, TransparentMeshIsDrawnOnceWithoutLightingAndInFlatPasses) {
    RVMESH *mesh = makeSquare(0.5f);
    const Calls calls = render(mesh);
    EXPECT_EQ(calls.count("glDrawElements"), 1u);
    EXPECT_FALSE(calls.contains("glCullFace"));
    EXPECT_TRUE(calls.contains(Call("glEnable", GL_BLEND)));
    for (const RV_OPENGL_PROFILE profile : flatProfiles) {
        RVOPENGL::setProfile(profile);
        EXPECT_EQ(render(mesh).count("glDrawElements"), 1u);
    }
}

// --- Lights

TEST_F(MeshTest, LightsOfEarlierFramesAreNotUsed) {
    RVMESH *mesh = makeSquare();
    RVLIGHT::lightingOn();
    RVELEMENT outside, entry;
    entry.setNearestLight(0, nullptr);
    render(mesh, &entry);
    entry.setNearestLight(0, &outside);
    render(mesh, &entry);
    entry.setNearestLight(0, std::make_unique<RVELEMENT>().get()); // deleted
    EXPECT_TRUE(render(mesh, &entry).contains("glDrawElements"));
}

// --- Flat passes

// The channels obtained decide how identifiers are encoded.
TEST_F(MeshTest, IdentifierIsTheColorInFlatPasses) {
    const struct {
        int channels[4]; // bits
        unsigned int id;
        double color[4];
    } rows[] = {
        {{8, 8, 8, 8}, 0x80402010u, {16 / 255.0, 32 / 255.0, 64 / 255.0, 128 / 255.0}},
        {{8, 8, 8, 0}, 0x00ff00ffu, {1, 0, 1, 0}},
        {{5, 6, 5, 0}, 0x1234f81fu, {1, 0, 1, 0}},
        {{5, 6, 5, 0}, 0x000008a3u, {1 / 31.0, 5 / 63.0, 3 / 31.0, 0}},
        {{8, 8, 8, 0}, 0, {}}, // no auxiliary identifier: its own one below 256
    };
    for (const auto &[bits, id, color] : rows) {
        SCOPED_TRACE(id);
        recorder.channelSizes(bits[0], bits[1], bits[2], bits[3]);
        ASSERT_TRUE(restart());
        RVMESH *mesh = makeSquare();
        mesh->setAuxId(id);
        for (const RV_OPENGL_PROFILE profile : flatProfiles) {
            RVOPENGL::setProfile(profile);
            const double red = id ? color[0] : mesh->getId() / 255.0;
            EXPECT_EQ(callsOf([&] { drawFrame(nullptr, mesh); }).named("glColor4f"),
                      (Calls{{"glColor4f", red, color[1], color[2], color[3]}}));
        }
    }
}

TEST_F(MeshTest, FlatPassesDisableLightsTexturesAndBlending) {
    for (const RV_OPENGL_PROFILE profile : flatProfiles) {
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
        // Only the selection omits texture coordinates.
        EXPECT_EQ(calls.contains("glTexCoordPointer"), profile == RV_OPENGL_PROFILE_ZPASS);
    }
    RVOPENGL::setProfile(RV_OPENGL_PROFILE_FLAT);
    EXPECT_TRUE(
        render(meshNamed("square")).contains(Call("glDisableClientState", GL_TEXTURE_COORD_ARRAY)));
}

// --- Start of a frame

TEST_F(MeshTest, ResetDisablesArraysAndUnbindsTheElements) {
    render(makeSquare());
    RVOPENGL::colorArrayOn();
    EXPECT_EQ(callsOf(RVMESH::reset), (Calls{{"glDisableClientState", GL_VERTEX_ARRAY},
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

TEST_F(BareDriverTest, ResetDisablesTheOnlyUnit) {
    RVMESH::reset();
    EXPECT_EQ(callsOf(RVMESH::reset), (Calls{{"glDisableClientState", GL_TEXTURE_COORD_ARRAY}}));
}

// --- Normals

TEST_F(MeshTest, NormalsAreLinesFromGreenToDarkGreen) {
    RVMESH *mesh = makeSquare();
    RVLIGHT::lightingOn();
    RVMESH::showNormals();
    const Calls calls = render(mesh);
    EXPECT_EQ(calls.count("glBegin"), 1u);
    EXPECT_EQ(calls.count("glVertex3f"), 8u);
    EXPECT_TRUE(calls.haveInOrder({drawBuffer,
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
    EXPECT_FALSE(render(new RVMESH).contains("glBegin")) << "a mesh without arrays";
    RVMESH::hideNormals();
    EXPECT_FALSE(render(mesh).contains("glBegin"));
}

TEST_F(MeshTest, NormalsHaveTheRequestedLength) {
    RVMESH *mesh = makeSquare();
    RVMESH::showNormals();
    EXPECT_EQ(RVMESH::getNormalLength(), 1);
    render(mesh); // with what the state cache then knows
    const Calls before = render(mesh);
    RVMESH::setNormalLength(0.25f);
    const Calls calls = render(mesh);
    EXPECT_TRUE(calls.haveInOrder({{"glVertex3f", -1, -1, 0}, {"glVertex3f", -1, -1, 0.25}}))
        << calls.text();
    const float infinite = std::numeric_limits<float>::infinity();
    for (const float ignored : {0.0f, -1.0f, infinite, std::nanf("")}) {
        RVMESH::setNormalLength(ignored);
        EXPECT_EQ(RVMESH::getNormalLength(), 0.25f) << ignored;
    }
    RVMESH::setNormalLength(1);
    EXPECT_EQ(render(mesh), before);
}

TEST_F(MeshTest, NormalsOfASkinnedMeshAreSkinnedToo) {
    RVNODE *root = loadScene({skinnedSquare("square", {"bone"}), emptyMesh("bone")});
    meshNamed("bone")->setPosition(5, 0, 0);
    RVMESH::showNormals();
    EXPECT_TRUE(callsOf([&] {
                    drawFrame(nullptr, root);
                }).haveInOrder({{"glVertex3f", 4, -1, 0}, {"glVertex3f", 4, -1, 1}}));
}

// --- Clips that take the bones of a mesh

class AcquireStructureTest : public SilentEngineTest {
  protected:
    static RVMESH *loadSkin(const std::vector<std::string> &bones) {
        loadScene({skinnedSquare("skin", bones)});
        markLog();
        return meshNamed("skin");
    }

    RVANIM &clip = *new RVANIM;
};

TEST_F(AcquireStructureTest, TakesNumberAndNamesOfTheBones) {
    clip.setNumberOfBones(7);
    clip.setNumberOfFrames(5);
    clip.setBoneName(3, "old");
    clip.setFrame(1, 1, 1, 2, 3);
    const std::string longest(255, 'b');
    EXPECT_TRUE(clip.acquireStructure(loadSkin({"hips", longest, "head"})));
    EXPECT_EQ(clip.getNumberOfBones(), 3);
    EXPECT_STREQ(clip.getBoneName(0), "hips");
    EXPECT_EQ(clip.getBoneName(1), longest);
    EXPECT_STREQ(clip.getBoneName(2), "head");
    EXPECT_STREQ(clip.getBoneName(3), "old");
    EXPECT_EQ(clip.getNumberOfFrames(), 5);
    EXPECT_EQ(clip.getFrameRotation(1, 1).x, 1);
    EXPECT_TRUE(clip.getKeyframe(1, 1)->set);
    EXPECT_NOTHING_LOGGED();
}

// The names are its own: it does not need the mesh afterwards.
TEST_F(AcquireStructureTest, TakesAsManyBonesAsAMeshCanHave) {
    std::vector<std::string> bones;
    for (unsigned int bone = 0; bone < RV_BONES; ++bone)
        bones.push_back("bone " + std::to_string(bone));
    EXPECT_TRUE(clip.acquireStructure(loadSkin(bones)));
    RVNODE::cleanUp();
    EXPECT_EQ(clip.getNumberOfBones(), 100);
    for (unsigned int bone = 0; bone < RV_BONES; ++bone)
        EXPECT_EQ(clip.getBoneName(bone), bones[bone]);
    EXPECT_EQ(clip.findBoneByName("bone 99"), 99);
}

TEST_F(AcquireStructureTest, MeshWithoutBonesGivesNothingAndLogsNothing) {
    clip.setNumberOfBones(2);
    loadScene({squareMesh("rigid")});
    markLog();
    EXPECT_FALSE(clip.acquireStructure(meshNamed("rigid")));
    EXPECT_FALSE(clip.acquireStructure(new RVMESH));
    EXPECT_EQ(clip.getNumberOfBones(), 2);
    EXPECT_NOTHING_LOGGED();
}

// All are in the buffers of one file.
TEST_F(MeshTest, InStateOrderTheEntriesOfAMeshFollowOneAnother) {
    RVNODE *const root = loadScene({squareMesh("a"), squareMesh("b"), squareMesh("c")});
    const auto meshChanges = [root] {
        RAVOLT::begin3D(nullptr);
        for (int time = 0; time < 3; ++time)
            root->pass();
        const Calls draws = callsOf([] { RAVOLT::end3D(true); }).named("glDrawElements");
        EXPECT_EQ(draws.size(), 9u);
        int changes = 0;
        for (std::size_t index = 1; index < draws.size(); ++index)
            changes += draws[index].arguments[3] != draws[index - 1].arguments[3];
        return changes;
    };
    EXPECT_EQ(meshChanges(), 8);
    RVELEMENT::stateOrderOn();
    EXPECT_EQ(meshChanges(), 2);
    RVELEMENT::stateOrderOff();
}

} // namespace
