#include "ravolt/RAVOLT.h"
#include "ravolt/RVELEMENT.h"
#include "ravolt/RVMATERIAL.h"
#include "ravolt/RVMESH.h"
#include "ravolt/RVOPENGL.h"
#include "tests/models/skinReference.h"
#include "tests/support/engineFixture.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <random>

using namespace ravolt;
using namespace ravolt::test;

namespace {

// Drawn vertices and normals: the client arrays at the time of glDrawElements.
struct Drawn {
    std::vector<Z3MVECTOR3D> vertices, normals;
};

RveNode joint(const std::string &name, RveVector position, RveVector rotation,
              std::vector<RveNode> children = {}) {
    RveNode node = emptyMesh(name, position, std::move(children));
    node.rotation = rotation;
    node.origin = {0.25f, -0.5f, 0.125f};
    return node;
}

// With a real driver: the matrices are OpenGL's own.
class SkinningTest : public EngineTest {
  protected:
    static constexpr unsigned int vertices = 60;

    // A figure of five bones beside a skinned mesh, under a node of this name.
    RVNODE *loadFigure(unsigned int weightsPerVertex, const std::string &figureName) {
        RveNode mesh = emptyMesh("skin", {0.5f, 1.0f, -0.25f});
        mesh.rotation = {15, -25, 40};
        mesh.mesh.skin = randomSkin(weightsPerVertex);
        fillGeometry(mesh.mesh);
        RveNode figure =
            nodeNamed(figureName, {joint("hips", {0, 1, 0}, {5, 10, 15},
                                         {joint("spine", {0, 1, 0.5f}, {20, 0, -10},
                                                {joint("head", {0, 1.5f, 0}, {0, 45, 0}),
                                                 joint("arm", {1, 0.5f, 0}, {0, 0, -60})}),
                                          joint("leg", {-0.5f, -1, 0}, {-30, 5, 0})}),
                                   mesh});
        figure.position = {3, -2, 1};
        figure.origin = {0.5f, 0.5f, 0.5f};
        RVNODE *root = loadScene({nodeNamed("crowd", {figure})});
        noteBindPose(root);
        RVNODE::findByName("crowd")->setPosition(10, 20, 30);
        return root;
    }

    void noteBindPose(RVNODE *root) { binding = Binding(*root, skin.bones); }

    // The bones leave their bind pose.
    static void moveBones() {
        meshNamed("hips")->rotate(0, 30, 0);
        meshNamed("hips")->move(0.2f, 0.1f, -0.3f);
        meshNamed("spine")->rotate(-15, 0, 25);
        meshNamed("head")->rotate(10, -80, 5);
        meshNamed("arm")->rotate(45, 45, 45);
        meshNamed("leg")->rotate(60, 0, 0);
    }

    // Draws a frame and looks at the client arrays of the only mesh with faces.
    Drawn draw(RVNODE *root) {
        drawFrame(nullptr, root);
        Drawn drawn;
        drawn.vertices = clientArray(GL_VERTEX_ARRAY_POINTER, vertices);
        drawn.normals = clientArray(GL_NORMAL_ARRAY_POINTER, vertices);
        return drawn;
    }

    void expectReference(RVNODE *root, const Drawn &drawn) {
        ASSERT_NE(root, nullptr);
        const RVMESH *mesh = meshNamed("skin");
        const std::vector<Transform> bones = binding.bonesNow(*mesh);
        ASSERT_EQ(drawn.vertices.size(), vertices);
        for (unsigned int v = 0; v < vertices; ++v) {
            SCOPED_TRACE(v);
            const Influences influences = influencesOf(skin, v);
            expectNear(drawn.vertices[v], bentPoint(bones, mesh->getVertexPtr()[v], influences),
                       1e-4);
            expectNear(drawn.normals[v],
                       bentDirection(bones, mesh->getVertexNormalPtr()[v], influences), 1e-5);
        }
    }

    RveSkin skin;
    Binding binding;

  private:
    RveSkin randomSkin(unsigned int weightsPerVertex) {
        skin.weightsPerVertex = weightsPerVertex;
        skin.bones = {"hips", "spine", "head", "arm", "leg"};
        std::uniform_real_distribution<float> anyWeight(0.1f, 1.0f);
        for (unsigned int v = 0; v < vertices; ++v) {
            std::vector<float> weight;
            float sum = 0;
            for (unsigned int k = 0; k < weightsPerVertex; ++k) {
                weight.push_back(anyWeight(random));
                sum += weight.back();
                skin.boneIndices.push_back(static_cast<std::uint8_t>(random() % skin.bones.size()));
            }
            for (float w : weight)
                skin.boneWeights.push_back(w / sum);
        }
        return skin;
    }

    void fillGeometry(RveMesh &mesh) {
        std::uniform_real_distribution<float> coordinate(-2.0f, 2.0f);
        for (unsigned int v = 0; v < vertices; ++v) {
            mesh.vertices.push_back({coordinate(random), coordinate(random), coordinate(random)});
            RveVector normal = {coordinate(random), coordinate(random), 0.5f};
            const float length = std::hypot(normal[0], normal[1], normal[2]);
            for (float &component : normal)
                component /= length;
            mesh.normals.push_back(normal);
        }
        for (std::uint16_t v = 0; v + 2u < vertices; v = static_cast<std::uint16_t>(v + 3))
            mesh.faces.push_back(
                {v, static_cast<std::uint16_t>(v + 1), static_cast<std::uint16_t>(v + 2)});
    }

    std::mt19937 random{4711};
};

class SkinningWeightsTest : public SkinningTest,
                            public testing::WithParamInterface<unsigned int> {};

TEST_P(SkinningWeightsTest, MovedBonesBendTheMeshAsTheReferenceDoes) {
    RVNODE *root = loadFigure(GetParam(), "HumanoidRoot");
    moveBones();
    expectReference(root, draw(root));
}

TEST_P(SkinningWeightsTest, WithoutAHumanoidRootTheTopOfTheTreeServes) {
    RVNODE *root = loadFigure(GetParam(), "figure");
    moveBones();
    expectReference(root, draw(root));
}

INSTANTIATE_TEST_SUITE_P(WeightsPerVertex, SkinningWeightsTest, testing::Values(1, 2, 3, 4, 6));

TEST_F(SkinningTest, BindPoseLeavesTheMeshInItsShape) {
    RVNODE *root = loadFigure(4, "HumanoidRoot");
    const Drawn drawn = draw(root);
    const RVMESH *mesh = meshNamed("skin");
    ASSERT_EQ(drawn.vertices.size(), vertices);
    for (unsigned int v = 0; v < vertices; ++v) {
        const Z3MVECTOR3D p = mesh->getVertexPtr()[v];
        // The mesh is bound in the space of the figure and drawn in its own.
        expectNear(drawn.vertices[v], finalOf(*mesh).inverse().point({p.x, p.y, p.z}), 1e-4);
    }
}

TEST_F(SkinningTest, NormalsAreNotRenormalized) {
    RVNODE *root = loadFigure(2, "HumanoidRoot");
    meshNamed("arm")->rotate(0, 0, 180);
    const Drawn drawn = draw(root);
    ASSERT_EQ(drawn.normals.size(), vertices);
    const auto shorter = [](Z3MVECTOR3D normal) { return normal.length() < 0.9f; };
    EXPECT_GT(std::count_if(drawn.normals.begin(), drawn.normals.end(), shorter), 0);
}

TEST_F(SkinningTest, FileArraysStayAsTheyWere) {
    RVNODE *root = loadFigure(3, "HumanoidRoot");
    const Z3MVECTOR3D before = meshNamed("skin")->getVertexPtr()[7];
    moveBones();
    draw(root);
    EXPECT_TRUE(meshNamed("skin")->getVertexPtr()[7] == before);
}

TEST_F(SkinningTest, MissingBonesAreNamedAndTheMeshIsDrawnWithoutThem) {
    RveNode square = squareMesh("square");
    square.mesh.skin = {1, {0, 0, 0, 0}, {1, 1, 1, 1}, {"ghost"}};
    RVNODE *root = loadScene({square});
    EXPECT_LOGGED("   Building bones for square...    [!] Bone ghost not found @ "
                  "RVMESH::recursiveLoadZVE");
    EXPECT_LOGGED("done");
    markLog();
    drawFrame(nullptr, root);
    EXPECT_NOTHING_LOGGED();
}

TEST_F(SkinningTest, BuildingOfBonesIsOneLine) {
    RveNode square = squareMesh("square");
    square.mesh.skin = {1, {0, 0, 0, 0}, {1, 1, 1, 1}, {"square"}};
    loadScene({square});
    EXPECT_LOGGED("   Building bones for square... done");
}

TEST_F(SkinningTest, ResetBonesWantsARoot) {
    RVMESH *mesh = new RVMESH;
    EXPECT_FALSE(mesh->resetBones(nullptr));
    EXPECT_LOGGED_EXACTLY("   [!] Invalid params @ RVMESH::resetBones\n");
}

TEST_F(SkinningTest, RigidMeshHasNoBonesToReset) {
    RVMESH *mesh = new RVMESH;
    EXPECT_TRUE(mesh->resetBones(mesh));
    EXPECT_TRUE(mesh->animate(256));
    EXPECT_NOTHING_LOGGED();
}

TEST_F(SkinningTest, ResetBonesTakesThePoseOfTheMoment) {
    RVNODE *root = loadFigure(4, "HumanoidRoot");
    moveBones();
    EXPECT_TRUE(meshNamed("skin")->resetBones(root));
    noteBindPose(root);
    expectReference(root, draw(root));
}

TEST_F(SkinningTest, SkeletonBeyondTheCacheIsRefused) {
    loadFigure(4, "HumanoidRoot");
    markLog();
    EXPECT_FALSE(meshNamed("skin")->animate(256));
    EXPECT_FALSE(meshNamed("skin")->animate(~0u));
    EXPECT_LOGGED_EXACTLY("   [!] Animation not computed (cache full) @ RVMESH::animate\n"
                          "   [!] Animation not computed (cache full) @ RVMESH::animate\n");
    EXPECT_TRUE(meshNamed("skin")->animate(255));
}

TEST_F(SkinningTest, WithoutTheEngineNothingIsAnimated) {
    loadFigure(4, "HumanoidRoot");
    EXPECT_TRUE(RVMESH::free());
    markLog();
    EXPECT_FALSE(meshNamed("skin")->animate(0));
    EXPECT_LOGGED_EXACTLY("   [!] Animation not computed (cache full) @ RVMESH::animate\n");
    EXPECT_TRUE(RVMESH::init());
    EXPECT_TRUE(RVMESH::init());
}

// 257 skinned meshes in a frame: one more than the cache holds.
TEST_F(SkinningTest, CacheHolds256SkeletonsAFrame) {
    RveNode square = squareMesh("square");
    square.mesh.skin = {1, {0, 0, 0, 0}, {1, 1, 1, 1}, {"square"}};
    RVNODE *root = loadScene(std::vector<RveNode>(257, square));
    const std::size_t first = 1; // the root's own entry stands before them
    for (int frame = 0; frame < 2; ++frame) {
        markLog();
        EXPECT_EQ(callsOf([&] { drawFrame(nullptr, root); }).count("glDrawElements"), 256u);
        EXPECT_LOGGED_TIMES(1, "   [!] Skeleton cache full @ RVELEMENT::pass");
        EXPECT_LOGGED_TIMES(1, "   [!] Animation not computed (cache full) @ RVMESH::animate");
        EXPECT_EQ(RVELEMENT::getNumberOfPassedElements(), 257 + first);
    }
    RVELEMENT entry;
    entry.setParam1(256);
    EXPECT_FALSE(meshNamed("square")->render(&entry));
}

} // namespace
