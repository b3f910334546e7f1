// Meshes skinned by the processor, against the reference, with a real driver: the matrices are
// OpenGL's own.

#include "ravolt/RAVOLT.h"
#include "ravolt/RVELEMENT.h"
#include "ravolt/RVMESH.h"
#include "ravolt/RVOPENGL.h"
#include "tests/models/skinReference.h"
#include "tests/support/engineFixture.h"

#include <cmath>
#include <random>

using namespace ravolt;
using namespace ravolt::test;

namespace {

RveNode joint(const std::string &name, RveVector position, RveVector rotation,
              std::vector<RveNode> children = {}) {
    RveNode node = placed(emptyMesh(name, position, std::move(children)), position, rotation);
    node.origin = {0.25f, -0.5f, 0.125f};
    return node;
}

class SkinningTest : public EngineTest {
  protected:
    static constexpr unsigned int vertices = 60;

    // A figure of five bones beside a skinned mesh, under a node of this name.
    RVNODE *loadFigure(unsigned int weightsPerVertex, const std::string &figureName) {
        RveNode mesh = placed(emptyMesh("skin"), {0.5f, 1.0f, -0.25f}, {15, -25, 40});
        mesh.mesh.skin = skin = randomSkin(weightsPerVertex);
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
        binding = Binding(*root, skin.bones);
        RVNODE::findByName("crowd")->setPosition(10, 20, 30);
        return root;
    }

    static void moveBones() {
        meshNamed("hips")->rotate(0, 30, 0);
        meshNamed("hips")->move(0.2f, 0.1f, -0.3f);
        meshNamed("spine")->rotate(-15, 0, 25);
        meshNamed("head")->rotate(10, -80, 5);
        meshNamed("arm")->rotate(45, 45, 45);
        meshNamed("leg")->rotate(60, 0, 0);
    }

    // Draws a frame: the client arrays of the only mesh with faces are those of the reference.
    void expectReference(RVNODE *root) {
        drawFrame(nullptr, root);
        const std::vector<Z3MVECTOR3D> points = clientArray(GL_VERTEX_ARRAY_POINTER, vertices),
                                       normals = clientArray(GL_NORMAL_ARRAY_POINTER, vertices);
        ASSERT_EQ(points.size(), vertices);
        ASSERT_EQ(normals.size(), vertices);
        const RVMESH *mesh = meshNamed("skin");
        const std::vector<Transform> bones = binding.bonesNow(*mesh);
        for (unsigned int v = 0; v < vertices; ++v) {
            SCOPED_TRACE(v);
            const Influences influences = influencesOf(skin, v);
            expectNear(points[v], skinnedPoint(bones, mesh->getVertexPtr()[v], influences), 1e-4);
            // On purpose: they are not normalized again.
            expectNear(normals[v],
                       skinnedDirection(bones, mesh->getVertexNormalPtr()[v], influences), 1e-5);
        }
    }

    RveSkin skin;
    Binding binding;

  private:
    RveSkin randomSkin(unsigned int weightsPerVertex) {
        RveSkin made{weightsPerVertex, {}, {}, {"hips", "spine", "head", "arm", "leg"}};
        std::uniform_real_distribution<float> anyWeight(0.1f, 1.0f);
        for (unsigned int v = 0; v < vertices; ++v) {
            std::vector<float> weight(weightsPerVertex);
            float sum = 0;
            for (float &w : weight) {
                sum += w = anyWeight(random);
                made.boneIndices.push_back(static_cast<std::uint8_t>(random() % made.bones.size()));
            }
            for (const float w : weight)
                made.boneWeights.push_back(w / sum);
        }
        return made;
    }

    void fillGeometry(RveMesh &mesh) {
        std::uniform_real_distribution<float> coordinate(-2.0f, 2.0f);
        for (unsigned int v = 0; v < vertices; ++v) {
            mesh.vertices.push_back({coordinate(random), coordinate(random), coordinate(random)});
            const float x = coordinate(random), y = coordinate(random);
            const float length = std::hypot(x, y, 0.5f);
            mesh.normals.push_back({x / length, y / length, 0.5f / length});
        }
        for (std::uint16_t v = 0; v + 2u < vertices; v = static_cast<std::uint16_t>(v + 3))
            mesh.faces.push_back(
                {v, static_cast<std::uint16_t>(v + 1), static_cast<std::uint16_t>(v + 2)});
    }

    std::mt19937 random{4711};
};

// Without a HumanoidRoot the top of the tree is used instead.
TEST_F(SkinningTest, MovedBonesSkinTheMeshAsTheReferenceDoes) {
    for (const unsigned int weights : {1u, 2u, 3u, 4u, 6u})
        for (const char *figure : {"HumanoidRoot", "figure"}) {
            SCOPED_TRACE(testing::Message() << weights << " weights under " << figure);
            RVNODE *root = loadFigure(weights, figure);
            const Z3MVECTOR3D before = meshNamed("skin")->getVertexPtr()[7];
            expectReference(root);
            moveBones();
            expectReference(root);
            EXPECT_TRUE(meshNamed("skin")->getVertexPtr()[7] == before);

            EXPECT_TRUE(meshNamed("skin")->resetBones(root)); // binds it in this pose
            binding = Binding(*root, skin.bones);
            expectReference(root);
            RVNODE::cleanUp();
        }
}

TEST_F(SkinningTest, MissingBonesAreNamedAndTheMeshIsDrawnWithoutThem) {
    RVNODE *root = loadScene({skinnedSquare("square", {"ghost"})});
    EXPECT_LOGGED("   Building bones for square...    [!] Bone ghost not found @ "
                  "RVMESH::recursiveLoadZVE");
    EXPECT_LOGGED("done");
    markLog();
    drawFrame(nullptr, root);
    EXPECT_NOTHING_LOGGED();
    loadScene({skinnedSquare("square", {"square"})});
    EXPECT_LOGGED("   Building bones for square... done");
}

TEST_F(SkinningTest, RigidMeshHasNoBonesToReset) {
    RVMESH *mesh = new RVMESH;
    EXPECT_TRUE(mesh->resetBones(mesh));
    EXPECT_TRUE(mesh->animate(256));
    EXPECT_NOTHING_LOGGED();
    EXPECT_FALSE(mesh->resetBones(nullptr));
    EXPECT_LOGGED_EXACTLY("   [!] Invalid params @ RVMESH::resetBones\n");
}

TEST_F(SkinningTest, SkeletonBeyondTheCacheOrWithoutTheEngineIsRefused) {
    loadFigure(4, "HumanoidRoot");
    const auto expectRefused = [](unsigned int skeleton) {
        markLog();
        EXPECT_FALSE(meshNamed("skin")->animate(skeleton)) << skeleton;
        EXPECT_LOGGED_EXACTLY("   [!] Animation not computed (cache full) @ RVMESH::animate\n");
    };
    EXPECT_TRUE(meshNamed("skin")->animate(255));
    expectRefused(256);
    expectRefused(~0u);
    RVELEMENT entry;
    entry.setParam1(256);
    EXPECT_FALSE(meshNamed("skin")->render(&entry));
    EXPECT_TRUE(RVMESH::free());
    expectRefused(0);
    EXPECT_TRUE(RVMESH::init());
    EXPECT_TRUE(RVMESH::init());
}

} // namespace
