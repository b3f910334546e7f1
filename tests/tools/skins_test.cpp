// Converting skins: bones, weights and poses.

#include "tools/convert/skins.h"

#include "tests/tools/figure.h"
#include "tests/tools/gltfData.h"
#include "tests/tools/support.h"

#include <gtest/gtest.h>

namespace {

using namespace tool_test;

// Two bones: one where it was bound, one moved up by 2. The square's vertices follow them.
Made makeSkinnedSquare() {
    GltfData data;
    data.square();
    data.joints({0, 0, 1, 1});
    data.roots = "0,1";
    data.nodes = R"({"name":"body","mesh":0,"skin":0,"translation":[50,0,0]},
        {"name":"low","children":[2]},{"name":"high","translation":[0,2,0]})";
    data.members = R"(,"skins":[{"joints":[1,2],"inverseBindMatrices":)" +
                   data.bindMatrices({{0, 0, 0}, {0, 0, 0}}) + "}]";
    writeFile("skin.gltf", data.text());
    return make("skin.gltf");
}

// The engine skins a mesh in the frame of the node above its bones.
TEST(Skins, AreUnmovedBesideTheirBonesBelowTheSkeletonsRoot) {
    const Made made = makeSkinnedSquare();
    ASSERT_EQ(made.scene.root.children.size(), 1u);
    const RveNode &figure = made.scene.root.children[0];
    EXPECT_EQ(figure.name, "HumanoidRoot");
    EXPECT_EQ(figure.position, (ravolt::RveVector{0, 0, 0}));
    const RveNode &body = figure.children.back();
    EXPECT_EQ(body.name, "body");
    EXPECT_EQ(body.position, (ravolt::RveVector{0, 0, 0})); // not its own position
    for (const ravolt::RveVector &corner :
         {ravolt::RveVector{0, 0, 0}, {1, 0, 0}, {1, 3, 0}, {0, 3, 0}})
        EXPECT_TRUE(hasVertex(body, corner)) << corner[0] << " " << corner[1];
    // Their bones are hidden meshes.
    EXPECT_EQ(body.mesh.skin.weightsPerVertex, 4u);
    EXPECT_EQ(body.mesh.skin.bones, (Lines{"low", "high"}));
    for (const char *bone : {"low", "high"}) {
        const RveNode *node = find(figure, bone);
        ASSERT_TRUE(node) << bone;
        EXPECT_EQ(node->kind, RveKind::mesh) << bone;
        EXPECT_TRUE(node->mesh.hidden) << bone;
    }
    EXPECT_TRUE(ravolt::encodeRve(made.scene).ok());
}

// Two squares side by side, each with four corners of its own, and a bone for each.
TEST(Skins, DoNotWeldTouchingPartsOfTwoBones) {
    GltfData data;
    data.positions({0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0, 1, 0, 0, 2, 0, 0, 2, 1, 0, 1, 1, 0});
    data.indices({0, 1, 2, 0, 2, 3, 4, 5, 6, 4, 6, 7});
    data.attribute("NORMAL", data.vectors({0, 0, 1, 0, 0, 1, 0, 0, 1, 0, 0, 1,
                                           0, 0, 1, 0, 0, 1, 0, 0, 1, 0, 0, 1}));
    data.joints({0, 0, 0, 0, 1, 1, 1, 1});
    data.roots = "0,1,2";
    data.nodes = R"({"name":"body","mesh":0,"skin":0},{"name":"left"},{"name":"right"})";
    data.members = R"(,"skins":[{"joints":[1,2],"inverseBindMatrices":)" +
                   data.bindMatrices({{0, 0, 0}, {0, 0, 0}}) + "}]";
    writeFile("legs.gltf", data.text());
    const Made made = make("legs.gltf");
    const ravolt::RveMesh &mesh = nodeOf(made, "body").mesh;
    ASSERT_EQ(mesh.faces.size(), 4u);
    EXPECT_EQ(mesh.vertices.size(), 8u);
    for (std::size_t face = 0; face < 4; ++face)
        for (const std::uint16_t vertex : mesh.faces[face])
            EXPECT_EQ(mesh.skin.bones.at(mesh.skin.boneIndices.at(4 * vertex)),
                      face < 2 ? "left" : "right");
}

TEST(Skins, AddNoSkeletonsRootToRigidScenes) {
    writeSquare();
    EXPECT_FALSE(find(make("m.obj").scene.root, "HumanoidRoot"));
}

TEST(Skins, WarnWhereThereAreMoreThanAFrameDraws) {
    for (const int number : {256, 257}) {
        std::string text = "xof 0303txt 0032\nFrame bone { }\n";
        for (int i = 0; i < number; ++i)
            text += "Frame f" + std::to_string(i) +
                    " { Mesh { 3; 0.0;0.0;0.0;, 1.0;0.0;0.0;, 0.0;1.0;0.0;; 1; " +
                    "3;0;1;2;; XSkinMeshHeader { 1; 1; 1; } SkinWeights { \"bone\"; 3; 0, 1, 2; "
                    "1.0, 1.0, 1.0; 1.0,0.0,0.0,0.0, 0.0,1.0,0.0,0.0, 0.0,0.0,1.0,0.0, "
                    "0.0,0.0,0.0,1.0;; } } }\n";
        writeFile("many.x", text);
        EXPECT_EQ(joined(make("many.x").report.warnings()),
                  number == 256
                      ? ""
                      : "257 meshes with bones: the engine draws at most 256 in a frame\n");
    }
}

// A figure of two joints, one above the other, and a triangle.
class SkinsTest : public ::testing::Test {
  protected:
    VertexTransform transformOfBody() {
        skeleton = std::make_unique<Skeleton>(figure.scene, Matrix(), 2, report);
        skins = std::make_unique<Skins>(figure.scene, *skeleton, report);
        VertexTransform transform;
        skins->setVertexTransform(0, 3, transform);
        return transform;
    }

    // Most of the triangle follows 'low', its first corner both bones; `high` leads to that one.
    static void bindToBoth(aiMesh &mesh, float high) {
        addBone(mesh, "low", {0, 0, 0}, {{0, 0.5f}, {1, 1}, {2, 1}});
        addBone(mesh, "high", {0, high, 0}, {{0, 0.5f}});
    }

    const std::string &strongestBone(const VertexTransform &transform, std::size_t vertex) {
        return skeleton->joints()[transform.influences[vertex].bone[0]].name;
    }

    Figure figure;
    aiNode *low = figure.node("low"), *high = figure.node("high", low, {0, 1, 0});
    aiMesh &mesh = figure.triangle(figure.node("body", nullptr, {5, 0, 0}));
    Report report;
    std::unique_ptr<Skeleton> skeleton;
    std::unique_ptr<Skins> skins;
};

TEST_F(SkinsTest, HaveTheStrongestFourBonesOfAVertex) {
    for (int i = 0; i < 6; ++i) {
        const std::string name = "b" + std::to_string(i);
        figure.node(name, low);
        addBone(mesh, name, {0, 0, 0}, {{0, 0.1f + 0.05f * static_cast<float>(i)}});
    }
    addBone(mesh, "low", {0, 0, 0}, {{1, 1}, {2, 1}});
    const VertexInfluences influences = transformOfBody().influences[0];
    float sum = 0;
    for (std::size_t k = 0; k < bonesOfAVertex; ++k) {
        EXPECT_EQ(skeleton->joints()[influences.bone[k]].name, "b" + std::to_string(5 - k));
        sum += influences.weight[k];
    }
    EXPECT_FLOAT_EQ(sum, 1);
    EXPECT_FLOAT_EQ(influences.weight[0], 0.35f / (0.35f + 0.3f + 0.25f + 0.2f));
    EXPECT_EQ(report.warnings(), Lines{"1 vertex held by more than 4 bones: the strongest kept"});
}

TEST_F(SkinsTest, MoveVerticesWithoutABoneByTheNode) {
    addBone(mesh, "low", {0, 0, 0}, {{0, 1}, {1, 0.5f}});
    const VertexTransform transform = transformOfBody();
    EXPECT_EQ(strongestBone(transform, 2), "body");
    EXPECT_EQ(transform.influences[2].weight[0], 1);
    EXPECT_NEAR(transform.posed[2]({0, 0, 0}).x, 5, 1e-9);
    EXPECT_TRUE(skins->isBone(3));
    EXPECT_EQ(transform.influences[1].weight[0], 1); // the stated weights add up to one
}

// Bound with `high` two above `low`; the model shows it one above.
TEST_F(SkinsTest, HaveTheBindPoseWhereJointsShareAVertex) {
    bindToBoth(mesh, -2);
    const VertexTransform transform = transformOfBody();
    EXPECT_TRUE(skins->differsFromOwnPose());
    EXPECT_NEAR(skins->bindPose().placement[2].position.y, 2, 1e-9);
    EXPECT_NEAR(length(transform.posed[0]({7, 8, 9}) - Vector{7, 8, 9}), 0, 1e-6);
}

TEST_F(SkinsTest, HaveThePoseOfTheModelWhereNoVertexIsShared) {
    addBone(mesh, "low", {0, 0, 0}, {{0, 1}, {1, 1}});
    addBone(mesh, "high", {0, -2, 0}, {{2, 1}});
    const VertexTransform transform = transformOfBody();
    EXPECT_FALSE(skins->differsFromOwnPose());
    EXPECT_NEAR(transform.posed[2]({0, 0, 0}).y, -1, 1e-9);
}

TEST_F(SkinsTest, WarnWhereTheyAreBoundInDifferentPosesOnOneSkeleton) {
    aiMesh &coat = figure.triangle(figure.node("coat"));
    bindToBoth(mesh, -2);
    addBone(coat, "low", {0, 0, 0}, {{0, 0.5f}, {1, 0.5f}, {2, 1}});
    addBone(coat, "high", {0, -3, 0}, {{0, 0.5f}, {1, 0.5f}});
    transformOfBody();
    EXPECT_EQ(report.warnings(),
              Lines{"skins bound in different poses on one skeleton, a scene has one pose: 2 "
                    "vertices of several bones moved only about as the model says"});
}

TEST_F(SkinsTest, MayShareASkeletonInOnePose) {
    bindToBoth(mesh, -2);
    bindToBoth(figure.triangle(figure.node("coat")), -2);
    transformOfBody();
    EXPECT_EQ(joined(report.warnings()), "");
}

TEST_F(SkinsTest, IgnoreBonesWithoutANode) {
    addBone(mesh, "nobody", {0, 0, 0}, {{0, 1}, {1, 1}, {2, 1}});
    transformOfBody();
    EXPECT_FALSE(skins->any());
    EXPECT_EQ(report.warnings(), Lines{"1 bone that no node is left out"});
}

TEST_F(SkinsTest, MoveVerticesOfMissingBonesWithTheirNeighbours) {
    addBone(mesh, "low", {0, 0, 0}, {{0, 1}, {1, 0.25f}});
    addBone(mesh, "nobody", {0, 0, 0}, {{1, 0.75f}, {2, 1}});
    const VertexTransform transform = transformOfBody();
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(strongestBone(transform, i), "low");
        EXPECT_EQ(transform.influences[i].weight[0], 1);
    }
}

TEST(Skeleton, GivesItsNodesUniqueNames) {
    Figure figure;
    figure.node("arm", figure.node("arm"), {1, 0, 0});
    figure.node("HumanoidRoot");
    figure.node(std::string(300, 'x'));
    Report report;
    const Skeleton skeleton(figure.scene, Matrix(), 2, report);
    Lines names;
    for (std::size_t i = 1; i <= 4; ++i)
        names.push_back(skeleton.joints()[i].name);
    EXPECT_EQ(names, (Lines{"arm", "arm_2", "HumanoidRoot_2", std::string(243, 'x')}));
    EXPECT_EQ(skeleton.find("arm"), 1u);
    EXPECT_EQ(report.notes(),
              Lines{"2 nodes renamed: bones and clips find nodes by names, which must differ"});
    EXPECT_EQ(report.warnings(), Lines{"1 name of nodes cut: a name has at most 255 characters"});
}

} // namespace
