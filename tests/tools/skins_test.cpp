#include "tests/tools/figure.h"
#include "tests/tools/gltfData.h"
#include "tests/tools/support.h"
#include "tools/convert/skins.h"

#include <cmath>
#include <gtest/gtest.h>

namespace {

using namespace tool_test;
using ravolt::RveKind;
using ravolt::RveNode;

bool hasVertex(const RveNode &node, float x, float y, float z) {
    for (const auto &v : node.mesh.vertices)
        if (std::abs(v[0] - x) + std::abs(v[1] - y) + std::abs(v[2] - z) < 1e-5f)
            return true;
    return false;
}

// Two bones: one where it was bound, one moved up by 2. The square's vertices go with them.
Made makeSkinnedSquare() {
    const float points[] = {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0};
    const unsigned short indices[] = {0, 1, 2, 0, 2, 3};
    const unsigned short joints[] = {0, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0};
    const float weights[] = {1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0};
    std::string bytes(reinterpret_cast<const char *>(points), sizeof points);
    bytes += std::string(reinterpret_cast<const char *>(indices), sizeof indices);
    bytes += std::string(reinterpret_cast<const char *>(joints), sizeof joints);
    bytes += std::string(reinterpret_cast<const char *>(weights), sizeof weights);
    for (int bone = 0; bone < 2; ++bone) {
        const float identity[] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
        bytes += std::string(reinterpret_cast<const char *>(identity), sizeof identity);
    }
    writeFile("skin.bin", bytes);
    writeFile("skin.gltf", R"({"asset":{"version":"2.0"},"scene":0,"scenes":[{"nodes":[0,1]}],
        "nodes":[{"name":"body","mesh":0,"skin":0,"translation":[50,0,0]},
          {"name":"low","children":[2]},{"name":"high","translation":[0,2,0]}],
        "skins":[{"joints":[1,2],"inverseBindMatrices":4}],
        "meshes":[{"primitives":[{"attributes":{"POSITION":0,"JOINTS_0":2,"WEIGHTS_0":3},
          "indices":1}]}],
        "accessors":[{"bufferView":0,"componentType":5126,"count":4,"type":"VEC3",
          "min":[0,0,0],"max":[1,1,0]},
          {"bufferView":1,"componentType":5123,"count":6,"type":"SCALAR"},
          {"bufferView":2,"componentType":5123,"count":4,"type":"VEC4"},
          {"bufferView":3,"componentType":5126,"count":4,"type":"VEC4"},
          {"bufferView":4,"componentType":5126,"count":2,"type":"MAT4"}],
        "bufferViews":[{"buffer":0,"byteLength":48},
          {"buffer":0,"byteOffset":48,"byteLength":12},
          {"buffer":0,"byteOffset":60,"byteLength":32},
          {"buffer":0,"byteOffset":92,"byteLength":64},
          {"buffer":0,"byteOffset":156,"byteLength":128}],
        "buffers":[{"byteLength":284,"uri":"skin.bin"}]})");
    return make("skin.gltf");
}

// The engine bends a mesh in the frame of the node that its bones stand below.
TEST(Skins, StandUnmovedBesideTheirBonesBelowTheSkeletonsRoot) {
    const Made made = makeSkinnedSquare();
    ASSERT_EQ(made.scene.root.children.size(), 1u);
    const RveNode &figure = made.scene.root.children[0];
    EXPECT_EQ(figure.name, "HumanoidRoot");
    EXPECT_EQ(figure.position, (ravolt::RveVector{0, 0, 0}));
    EXPECT_TRUE(find(figure, "high"));
    const RveNode &body = figure.children.back();
    EXPECT_EQ(body.name, "body");
    EXPECT_EQ(body.position, (ravolt::RveVector{0, 0, 0})); // its own place means nothing
    for (const auto &[x, y] : {std::pair{0.0f, 0.0f}, {1.0f, 0.0f}, {1.0f, 3.0f}, {0.0f, 3.0f}})
        EXPECT_TRUE(hasVertex(body, x, y, 0)) << x << " " << y;
}

TEST(Skins, NameTheirBonesWhichAreHiddenMeshes) {
    const Made made = makeSkinnedSquare();
    const ravolt::RveSkin &skin = find(made.scene.root, "body")->mesh.skin;
    EXPECT_EQ(skin.weightsPerVertex, 4u);
    EXPECT_EQ(skin.bones, (std::vector<std::string>{"low", "high"}));
    for (const char *bone : {"low", "high"}) {
        const RveNode *node = find(made.scene.root, bone);
        ASSERT_TRUE(node);
        EXPECT_EQ(node->kind, RveKind::mesh) << bone;
        EXPECT_TRUE(node->mesh.hidden) << bone;
    }
    EXPECT_TRUE(ravolt::encodeRve(made.scene).ok());
}

// Two squares side by side, each with four corners of its own, and a bone for each.
TEST(Skins, KeepTouchingPartsOfTwoBonesApart) {
    GltfData data;
    const int points =
        data.points({0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0, 1, 0, 0, 2, 0, 0, 2, 1, 0, 1, 1, 0});
    const int faces = data.indices({0, 1, 2, 0, 2, 3, 4, 5, 6, 4, 6, 7});
    const int normals =
        data.points({0, 0, 1, 0, 0, 1, 0, 0, 1, 0, 0, 1, 0, 0, 1, 0, 0, 1, 0, 0, 1, 0, 0, 1});
    const int joints = data.joints({0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
                                    1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0});
    const int weights = data.fours({1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0,
                                    1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0});
    const int bind = data.bindPlaces({{0, 0, 0}, {0, 0, 0}});
    const auto number = [](int value) { return std::to_string(value); };
    writeFile("legs.gltf", R"({"asset":{"version":"2.0"},"scene":0,"scenes":[{"nodes":[0,1,2]}],
        "nodes":[{"name":"body","mesh":0,"skin":0},{"name":"left"},{"name":"right"}],
        "skins":[{"joints":[1,2],"inverseBindMatrices":)" +
                               number(bind) + R"(}],
        "meshes":[{"primitives":[{"attributes":{"POSITION":)" +
                               number(points) + R"(,"NORMAL":)" + number(normals) +
                               R"(,"JOINTS_0":)" + number(joints) + R"(,"WEIGHTS_0":)" +
                               number(weights) + R"(},"indices":)" + number(faces) + "}]}]," +
                               data.members() + "}");
    const Made made = make("legs.gltf");
    const ravolt::RveMesh &mesh = find(made.scene.root, "body")->mesh;
    ASSERT_EQ(mesh.faces.size(), 4u);
    EXPECT_EQ(mesh.vertices.size(), 8u);
    for (std::size_t face = 0; face < 4; ++face)
        for (const std::uint16_t vertex : mesh.faces[face])
            EXPECT_EQ(mesh.skin.bones.at(mesh.skin.boneIndices.at(4 * vertex)),
                      face < 2 ? "left" : "right");
}

TEST(Skins, LeaveRigidScenesWithoutASkeletonsRoot) {
    writeFile("m.mtl", "newmtl a\nKd 1 1 1\n");
    writeFile("m.obj", squareObj("m.mtl", "a"));
    EXPECT_FALSE(find(make("m.obj").scene.root, "HumanoidRoot"));
}

TEST(Skins, SayWhenThereAreMoreThanOneFrameBends) {
    for (const int number : {256, 257}) {
        std::string text = "xof 0303txt 0032\nFrame bone { }\n";
        for (int i = 0; i < number; ++i)
            text += "Frame f" + std::to_string(i) +
                    " { Mesh { 3; 0.0;0.0;0.0;, 1.0;0.0;0.0;, 0.0;1.0;0.0;; 1; " +
                    "3;0;1;2;; XSkinMeshHeader { 1; 1; 1; } SkinWeights { \"bone\"; 3; 0, 1, 2; "
                    "1.0, 1.0, 1.0; 1.0,0.0,0.0,0.0, 0.0,1.0,0.0,0.0, 0.0,0.0,1.0,0.0, "
                    "0.0,0.0,0.0,1.0;; } } }\n";
        writeFile("many.x", text);
        const Made made = make("many.x");
        EXPECT_EQ(made.report.warnings().size(), number == 257 ? 1u : 0u)
            << joined(made.report.warnings());
        EXPECT_EQ(contains(made.report.warnings(), "257 meshes with bones: the engine draws at "
                                                   "most 256 in a frame"),
                  number == 257);
    }
}

// A figure of two joints, one above the other, and a triangle.
class SkinsTest : public ::testing::Test {
  protected:
    SkinsTest() {
        low = figure.node("low", nullptr, {0, 0, 0});
        high = figure.node("high", low, {0, 1, 0});
        body = figure.node("body", nullptr, {5, 0, 0});
        mesh = figure.triangle(body);
    }

    VertexTransform carried(std::size_t joint) {
        const aiScene &scene = figure.finish();
        skeleton = std::make_unique<Skeleton>(scene, 1, 2, report);
        skins = std::make_unique<Skins>(scene, *skeleton, report);
        VertexTransform transform;
        skins->setVertexTransform(0, joint, transform);
        return transform;
    }

    Figure figure;
    aiNode *low, *high, *body;
    FigureMesh *mesh;
    Report report;
    std::unique_ptr<Skeleton> skeleton;
    std::unique_ptr<Skins> skins;
};

TEST_F(SkinsTest, KeepTheStrongestBonesAndSaySo) {
    for (int i = 0; i < 6; ++i) {
        const std::string name = "b" + std::to_string(i);
        figure.node(name, low, {0, 0, 0});
        mesh->bone(name, {0, 0, 0}, {{0, 0.1f + 0.05f * static_cast<float>(i)}});
    }
    mesh->bone("low", {0, 0, 0}, {{1, 1}, {2, 1}});
    const VertexTransform transform = carried(3);
    const VertexInfluences &influences = transform.influences[0];
    float sum = 0;
    for (std::size_t k = 0; k < bonesOfAVertex; ++k) {
        EXPECT_EQ(skeleton->joints()[influences.bone[k]].name, "b" + std::to_string(5 - k));
        sum += influences.weight[k];
    }
    EXPECT_FLOAT_EQ(sum, 1);
    EXPECT_FLOAT_EQ(influences.weight[0], 0.35f / (0.35f + 0.3f + 0.25f + 0.2f));
    EXPECT_EQ(report.warnings(),
              (std::vector<std::string>{"1 vertex held by more than 4 bones: the strongest kept"}));
}

TEST_F(SkinsTest, LetTheNodeHoldVerticesWithoutABone) {
    mesh->bone("low", {0, 0, 0}, {{0, 1}, {1, 0.5f}});
    const VertexTransform transform = carried(3);
    EXPECT_EQ(skeleton->joints()[transform.influences[2].bone[0]].name, "body");
    EXPECT_EQ(transform.influences[2].weight[0], 1);
    EXPECT_NEAR(transform.posed[2]({0, 0, 0}).x, 5, 1e-9);
    EXPECT_TRUE(skins->isBone(3));
    EXPECT_EQ(transform.influences[1].weight[0], 1); // what is stated adds up to one
}

// Bound with `high` two above `low`; the model shows it one above.
TEST_F(SkinsTest, StandAsTheyWereBoundWhereJointsShareAVertex) {
    mesh->bone("low", {0, 0, 0}, {{0, 0.5f}, {1, 1}, {2, 1}});
    mesh->bone("high", {0, -2, 0}, {{0, 0.5f}});
    const VertexTransform transform = carried(3);
    EXPECT_TRUE(skins->differsFromOwnPose());
    EXPECT_NEAR(skins->bindPose().placement[2].position.y, 2, 1e-9);
    EXPECT_NEAR(length(transform.posed[0]({7, 8, 9}) - Vector{7, 8, 9}), 0, 1e-6);
}

TEST_F(SkinsTest, KeepThePoseOfTheModelWhereNoVertexIsShared) {
    mesh->bone("low", {0, 0, 0}, {{0, 1}, {1, 1}});
    mesh->bone("high", {0, -2, 0}, {{2, 1}});
    const VertexTransform transform = carried(3);
    EXPECT_FALSE(skins->differsFromOwnPose());
    EXPECT_NEAR(transform.posed[2]({0, 0, 0}).y, -1, 1e-9);
}

TEST_F(SkinsTest, SayWhenTheyAreBoundInDifferentPosesOnOneSkeleton) {
    FigureMesh *coat = figure.triangle(figure.node("coat", nullptr, {0, 0, 0}));
    mesh->bone("low", {0, 0, 0}, {{0, 0.5f}, {1, 1}, {2, 1}});
    mesh->bone("high", {0, -2, 0}, {{0, 0.5f}});
    coat->bone("low", {0, 0, 0}, {{0, 0.5f}, {1, 0.5f}, {2, 1}});
    coat->bone("high", {0, -3, 0}, {{0, 0.5f}, {1, 0.5f}});
    carried(3);
    EXPECT_EQ(report.warnings(),
              (std::vector<std::string>{
                  "skins bound in different poses on one skeleton, a scene has one pose: 2 "
                  "vertices of several bones moved only about as the model says"}));
}

TEST_F(SkinsTest, MayShareASkeletonInOnePose) {
    FigureMesh *coat = figure.triangle(figure.node("coat", nullptr, {0, 0, 0}));
    for (FigureMesh *one : {mesh, coat}) {
        one->bone("low", {0, 0, 0}, {{0, 0.5f}, {1, 1}, {2, 1}});
        one->bone("high", {0, -2, 0}, {{0, 0.5f}});
    }
    carried(3);
    EXPECT_TRUE(report.warnings().empty());
}

TEST_F(SkinsTest, PassOverBonesThatNoNodeIs) {
    mesh->bone("nobody", {0, 0, 0}, {{0, 1}, {1, 1}, {2, 1}});
    const aiScene &scene = figure.finish();
    Skeleton own(scene, 1, 2, report);
    EXPECT_FALSE(Skins(scene, own, report).any());
    EXPECT_EQ(report.warnings(), (std::vector<std::string>{"1 bone that no node is left out"}));
}

TEST_F(SkinsTest, LetVerticesOfMissingBonesFollowTheirNeighbours) {
    mesh->bone("low", {0, 0, 0}, {{0, 1}, {1, 0.25f}});
    mesh->bone("nobody", {0, 0, 0}, {{1, 0.75f}, {2, 1}});
    const VertexTransform transform = carried(3);
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(skeleton->joints()[transform.influences[i].bone[0]].name, "low");
        EXPECT_EQ(transform.influences[i].weight[0], 1);
    }
}

TEST(Skeleton, TellsItsNodesApartByTheirNames) {
    Figure figure;
    aiNode *first = figure.node("arm", nullptr, {0, 0, 0});
    figure.node("arm", first, {1, 0, 0});
    figure.node("HumanoidRoot", nullptr, {0, 0, 0});
    figure.node(std::string(300, 'x'), nullptr, {0, 0, 0});
    Report report;
    Skeleton skeleton(figure.finish(), 1, 2, report);
    EXPECT_EQ(skeleton.joints()[1].name, "arm");
    EXPECT_EQ(skeleton.joints()[2].name, "arm_2");
    EXPECT_EQ(skeleton.joints()[3].name, "HumanoidRoot_2");
    EXPECT_EQ(skeleton.joints()[4].name, std::string(243, 'x'));
    EXPECT_EQ(skeleton.find("arm"), 1u);
    EXPECT_EQ(report.notes(), (std::vector<std::string>{
                                  "2 nodes renamed: bones and clips find nodes by names, which "
                                  "must differ"}));
    EXPECT_EQ(report.warnings(),
              (std::vector<std::string>{"1 name of nodes cut: a name has at most 255 characters"}));
}

} // namespace
