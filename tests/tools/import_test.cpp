#include "tools/convert/import.h"

#include "tests/tools/figure.h"
#include "tests/tools/support.h"
#include "tools/convert/container.h"
#include "tools/convert/vertices.h"

#include <array>
#include <cmath>
#include <cstdint>
#include <gtest/gtest.h>
#include <limits>
#include <memory>

namespace {

using namespace tool_test;

constexpr float nan = std::numeric_limits<float>::quiet_NaN();
constexpr float infinity = std::numeric_limits<float>::infinity();

// A scene with one mesh of `points` and `faces`, one material and one node.
std::unique_ptr<aiScene> sceneWith(const std::vector<aiVector3D> &points,
                                   const std::vector<std::vector<unsigned int>> &faces) {
    auto scene = std::make_unique<aiScene>();
    scene->mRootNode = new aiNode("root");
    scene->mRootNode->mNumMeshes = 1;
    scene->mRootNode->mMeshes = new unsigned int[1]{0};
    scene->mNumMaterials = 1;
    scene->mMaterials = new aiMaterial *[1] { new aiMaterial };
    aiMesh *mesh = new aiMesh;
    scene->mNumMeshes = 1;
    scene->mMeshes = new aiMesh *[1] { mesh };
    mesh->mNumVertices = static_cast<unsigned int>(points.size());
    mesh->mVertices = new aiVector3D[points.size()];
    std::copy(points.begin(), points.end(), mesh->mVertices);
    mesh->mNormals = new aiVector3D[points.size()];
    mesh->mNumFaces = static_cast<unsigned int>(faces.size());
    mesh->mFaces = new aiFace[faces.size()];
    for (std::size_t i = 0; i < faces.size(); ++i) {
        mesh->mFaces[i].mNumIndices = static_cast<unsigned int>(faces[i].size());
        mesh->mFaces[i].mIndices = new unsigned int[faces[i].size()];
        std::copy(faces[i].begin(), faces[i].end(), mesh->mFaces[i].mIndices);
    }
    return scene;
}

const std::vector<aiVector3D> square = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}};

TEST(CleanScene, LeavesASoundSceneAlone) {
    Report report;
    const auto scene = sceneWith(square, {{0, 1, 2}, {0, 2, 3}});
    cleanScene(*scene, report);
    EXPECT_EQ(scene->mMeshes[0]->mNumFaces, 2u);
    EXPECT_TRUE(report.warnings().empty());
}

TEST(CleanScene, DropsFacesWithAbsurdIndices) {
    Report report;
    const auto scene = sceneWith(square, {{0, 1, 4}, {0, 1, 2}, {0xffffffff, 0, 1}, {2, 3, 0}});
    cleanScene(*scene, report);
    ASSERT_EQ(scene->mMeshes[0]->mNumFaces, 2u);
    EXPECT_EQ(scene->mMeshes[0]->mFaces[0].mIndices[2], 2u);
    EXPECT_EQ(scene->mMeshes[0]->mFaces[1].mIndices[0], 2u);
    EXPECT_EQ(report.warnings(),
              (std::vector<std::string>{"2 faces dropped: vertices that do not exist or have no "
                                        "finite position"}));
}

TEST(CleanScene, DropsFacesAtPlacesThatAreNone) {
    for (const aiVector3D &nowhere :
         {aiVector3D(nan, 0, 0), aiVector3D(0, infinity, 0), aiVector3D(0, 0, -infinity)}) {
        Report report;
        std::vector<aiVector3D> points = square;
        points[3] = nowhere;
        const auto scene = sceneWith(points, {{0, 1, 2}, {0, 2, 3}});
        cleanScene(*scene, report);
        EXPECT_EQ(scene->mMeshes[0]->mNumFaces, 1u);
        EXPECT_EQ(scene->mMeshes[0]->mVertices[3], aiVector3D());
        EXPECT_EQ(report.warnings().size(), 1u);
    }
}

TEST(CleanScene, DropsWeightsOfNoVertex) {
    Report report;
    const auto scene = sceneWith(square, {{0, 1, 2}});
    aiMesh &mesh = *scene->mMeshes[0];
    aiBone *bone = new aiBone;
    bone->mNumWeights = 3;
    bone->mWeights = new aiVertexWeight[3];
    bone->mWeights[0] = aiVertexWeight(99, 1);
    bone->mWeights[1] = aiVertexWeight(1, 0.5f);
    bone->mWeights[2] = aiVertexWeight(2, nan);
    mesh.mNumBones = 1;
    mesh.mBones = new aiBone *[1] { bone };
    cleanScene(*scene, report);
    ASSERT_EQ(bone->mNumWeights, 1u);
    EXPECT_EQ(bone->mWeights[0].mVertexId, 1u);
    EXPECT_EQ(report.warnings(), (std::vector<std::string>{"2 bone weights of no vertex dropped"}));
}

TEST(CleanScene, MendsReferences) {
    Report report;
    const auto scene = sceneWith(square, {{0, 1, 2}});
    scene->mMeshes[0]->mMaterialIndex = 7;
    scene->mRootNode->mMeshes[0] = 12;
    cleanScene(*scene, report);
    EXPECT_EQ(scene->mMeshes[0]->mMaterialIndex, 0u);
    EXPECT_EQ(scene->mRootNode->mNumMeshes, 0u);
}

TEST(CleanScene, ZeroesTexCoordsThatAreNotFinite) {
    Report report;
    const auto scene = sceneWith(square, {{0, 1, 2}});
    scene->mMeshes[0]->mTextureCoords[0] = new aiVector3D[4];
    scene->mMeshes[0]->mTextureCoords[0][1] = aiVector3D(nan, 0, 0);
    cleanScene(*scene, report);
    EXPECT_EQ(scene->mMeshes[0]->mTextureCoords[0][1], aiVector3D());
    EXPECT_EQ(report.warnings(), (std::vector<std::string>{
                                     "1 texture coordinate without a finite value set to zero"}));
}

TEST(CleanScene, GivesCornersTheirOwnVerticesWhereNormalsAreToBeMade) {
    Report report;
    const auto scene = sceneWith(square, {{0, 1, 2}, {0, 2, 3}});
    aiMesh &mesh = *scene->mMeshes[0];
    delete[] mesh.mNormals;
    mesh.mNormals = nullptr;
    aiBone *bone = new aiBone;
    bone->mNumWeights = 1;
    bone->mWeights = new aiVertexWeight[1];
    bone->mWeights[0] = aiVertexWeight(2, 0.5f);
    mesh.mNumBones = 1;
    mesh.mBones = new aiBone *[1] { bone };
    cleanScene(*scene, report);
    ASSERT_EQ(mesh.mNumVertices, 6u);
    EXPECT_EQ(mesh.mVertices[mesh.mFaces[1].mIndices[2]], square[3]);
    // The weight follows both copies of its vertex.
    ASSERT_EQ(bone->mNumWeights, 2u);
    EXPECT_EQ(mesh.mVertices[bone->mWeights[0].mVertexId], square[2]);
    EXPECT_EQ(mesh.mVertices[bone->mWeights[1].mVertexId], square[2]);
}

// Six vertices for the four corners of a square.
std::unique_ptr<aiScene> sceneOfTwoTriangles() {
    return sceneWith({square[0], square[1], square[2], square[0], square[2], square[3]},
                     {{0, 1, 2}, {3, 4, 5}});
}

std::vector<aiVector3D> cornersOf(const aiMesh &mesh) {
    std::vector<aiVector3D> corners;
    for (unsigned int i = 0; i < mesh.mNumFaces; ++i)
        for (unsigned int k = 0; k < mesh.mFaces[i].mNumIndices; ++k)
            corners.push_back(mesh.mVertices[mesh.mFaces[i].mIndices[k]]);
    return corners;
}

TEST(WeldVertices, JoinsEqualOnes) {
    const auto scene = sceneOfTwoTriangles();
    aiMesh &mesh = *scene->mMeshes[0];
    const std::vector<aiVector3D> corners = cornersOf(mesh);
    weldVertices(mesh);
    EXPECT_EQ(mesh.mNumVertices, 4u);
    EXPECT_EQ(cornersOf(mesh), corners);
}

TEST(WeldVertices, KeepsThoseApartThatDifferInNormalOrTextureCoordinates) {
    const auto scene = sceneOfTwoTriangles();
    aiMesh &mesh = *scene->mMeshes[0];
    mesh.mNormals[3] = aiVector3D(0, 0, 1);
    mesh.mTextureCoords[1] = new aiVector3D[6];
    mesh.mTextureCoords[1][4] = aiVector3D(0.5f, 0, 0);
    weldVertices(mesh);
    EXPECT_EQ(mesh.mNumVertices, 6u);
}

void addBone(aiMesh &mesh, const std::vector<aiVertexWeight> &weights) {
    aiBone *bone = new aiBone;
    bone->mNumWeights = static_cast<unsigned int>(weights.size());
    bone->mWeights = new aiVertexWeight[weights.size()];
    std::copy(weights.begin(), weights.end(), bone->mWeights);
    std::vector<aiBone *> bones(mesh.mBones, mesh.mBones + mesh.mNumBones);
    bones.push_back(bone);
    delete[] mesh.mBones;
    tool_test::moveInto(bones, mesh.mBones, mesh.mNumBones);
}

// Two legs that touch each other at two corners, of which one is moved alike on both sides.
TEST(WeldVertices, KeepsThoseApartThatOtherBonesMove) {
    const auto scene = sceneOfTwoTriangles();
    aiMesh &mesh = *scene->mMeshes[0];
    addBone(mesh, {{0, 1}, {1, 1}, {2, 0.5f}, {4, 0.5f}});
    addBone(mesh, {{2, 0.5f}, {3, 1}, {4, 0.5f}, {5, 1}});
    const std::vector<aiVector3D> corners = cornersOf(mesh);
    weldVertices(mesh);
    EXPECT_EQ(mesh.mNumVertices, 5u);
    EXPECT_EQ(cornersOf(mesh), corners);
    const aiBone &left = *mesh.mBones[0], &right = *mesh.mBones[1];
    ASSERT_EQ(left.mNumWeights, 3u);
    ASSERT_EQ(right.mNumWeights, 3u);
    EXPECT_EQ(left.mWeights[0].mVertexId, mesh.mFaces[0].mIndices[0]);
    EXPECT_EQ(left.mWeights[2].mVertexId, mesh.mFaces[1].mIndices[1]);
    EXPECT_EQ(right.mWeights[0].mVertexId, mesh.mFaces[0].mIndices[2]);
    EXPECT_EQ(right.mWeights[1].mVertexId, mesh.mFaces[1].mIndices[0]);
}

// The pointers of a scene that a reader has left empty.
TEST(CleanScene, DropsPointersToNothing) {
    Report report;
    const auto scene = sceneWith(square, {{0, 1, 2}});
    scene->mRootNode->mNumChildren = 2;
    scene->mRootNode->mChildren = new aiNode *[2] { nullptr, new aiNode("child") };
    scene->mRootNode->mChildren[1]->mNumMeshes = 3;
    aiMesh &mesh = *scene->mMeshes[0];
    mesh.mNumBones = 2;
    mesh.mBones = new aiBone *[2] { nullptr, new aiBone };
    mesh.mBones[1]->mNumWeights = 5;
    delete[] scene->mMeshes;
    scene->mNumMeshes = 2;
    scene->mMeshes = new aiMesh *[2] { &mesh, nullptr };
    scene->mNumMaterials = 2;
    delete scene->mMaterials[0];
    delete[] scene->mMaterials;
    scene->mMaterials = new aiMaterial *[2] { nullptr, new aiMaterial };
    scene->mNumLights = 1;
    scene->mLights = new aiLight *[1] { nullptr };
    scene->mNumAnimations = 2;
    scene->mAnimations = new aiAnimation *[2] { nullptr, new aiAnimation };
    scene->mAnimations[1]->mNumChannels = 1;
    scene->mAnimations[1]->mChannels = new aiNodeAnim *[1] { nullptr };
    cleanScene(*scene, report);
    ASSERT_EQ(scene->mRootNode->mNumChildren, 1u);
    EXPECT_STREQ(scene->mRootNode->mChildren[0]->mName.C_Str(), "child");
    EXPECT_EQ(scene->mRootNode->mChildren[0]->mNumMeshes, 0u);
    ASSERT_EQ(mesh.mNumBones, 1u);
    EXPECT_EQ(mesh.mBones[0]->mNumWeights, 0u);
    ASSERT_EQ(scene->mNumMeshes, 2u) << "named by number";
    EXPECT_EQ(scene->mMeshes[1]->mNumFaces, 0u);
    ASSERT_EQ(scene->mNumMaterials, 2u) << "named by number";
    EXPECT_NE(scene->mMaterials[0], nullptr);
    EXPECT_EQ(scene->mNumLights, 0u);
    ASSERT_EQ(scene->mNumAnimations, 1u);
    EXPECT_EQ(scene->mAnimations[0]->mNumChannels, 0u);
}

std::string reading(const std::string &path) {
    return failureOf([&] {
        Report report;
        Progress silent(false);
        ModelFiles files(path, {}, report);
        const Model model(path, files, report, silent);
    });
}

TEST(Import, NamesTheFileAndTheReason) {
    fs::create_directory("folder");
    writeFile("junk.glb", "glTF is what this is not");
    writeFile("no.ending", "nothing");
    writeFile("empty.obj", "");
    EXPECT_EQ(reading("missing.obj"), "missing.obj: no such file");
    EXPECT_EQ(reading("folder"), "folder: is a folder, not a model");
    EXPECT_EQ(reading("empty.obj"), "empty.obj: is empty");
    for (const char *file : {"junk.glb", "no.ending"}) {
        const std::string line = reading(file);
        EXPECT_EQ(line.rfind(std::string(file) + ": ", 0), 0u) << line;
        EXPECT_EQ(line.find('\n'), std::string::npos) << line;
    }
}

TEST(Import, RefusesAModelWithoutTriangles) {
    writeFile("points.obj", "v 0 0 0\nv 1 0 0\n");
    EXPECT_EQ(reading("points.obj"), "points.obj: has no triangles to draw");
}

const fs::path collection = "/usr/share/assimp/models";

TEST(Import, GoesPastAChildThatIsNone) {
    if (!fs::exists(collection))
        GTEST_SKIP() << "no collection of models";
    EXPECT_EQ(reading(collection / "RAW/WithColor.raw"), "");
}

// A number of four bytes, the lowest first.
std::string number(std::uint32_t value) {
    std::string bytes;
    for (int i = 0; i < 4; ++i, value >>= 8)
        bytes += static_cast<char>(value);
    return bytes;
}

TEST(Import, SaysOfACutFileThatItIsCutOff) {
    using namespace std::string_literals;
    const std::string scene = R"({"asset":{"version":"2.0"}}  )";
    const std::string glb = "glTF" + number(2) + number(20 + 29 + 8 + 100) + number(29) + "JSON" +
                            scene + number(100) + "BIN\0"s + std::string(100, 'x');
    for (const auto &[name, bytes, reason] : std::vector<std::array<std::string, 3>>{
             {"header.glb", glb.substr(0, 10), "a header has 12 bytes, the file has 10"},
             {"data.glb", glb.substr(0, 90), "its header states 157 bytes, the file has 90"},
             {"chunk.glb",
              "glTF" + number(2) + number(28) + number(99) + "JSON" + number(0) + number(0),
              "a chunk ends at 119 bytes, the file has 28"},
             {"first.glb", "glTF" + number(1) + number(20) + number(9) + number(0),
              "its scene ends at 29 bytes, the file has 20"},
             {"m.3ds", "\x4d\x4d"s + number(500) + std::string(20, '\0'),
              "its header states 500 bytes, the file has 26"},
             {"m.lwo", "FORM\0\0\x01\0LWO2"s, "its header states 264 bytes, the file has 12"},
             {"m.fbx",
              "Kaydara FBX Binary  \0\x1a\0"s + number(7400) + number(1000) + std::string(30, '\0'),
              "a record ends at 1000 bytes, the file has 61"},
             {"end.fbx", "Kaydara FBX Binary  \0\x1a\0"s + number(7400),
              "its records go on behind 27 bytes, the file has 27"}}) {
        writeFile(name, bytes);
        EXPECT_EQ(reading(name), name + ": is cut off: " + reason);
    }
    // Other damage than that.
    writeFile("damaged.fbx", "Kaydara FBX Binary  \0\x1a\0"s + number(7500) +
                                 std::string(8, '\x20') + std::string(30, '\0'));
    EXPECT_EQ(cutOff("damaged.fbx"), "");
    writeFile("whole.glb", glb);
    EXPECT_EQ(reading("whole.glb").find("cut off"), std::string::npos);
}

TEST(Import, FindsNoWholeFileCutOff) {
    if (!fs::exists(collection))
        GTEST_SKIP() << "no collection of models";
    for (const char *file : {"glTF2/2CylinderEngine-glTF-Binary/2CylinderEngine.glb",
                             "FBX/spider.fbx", "3DS/fels.3ds", "LWO/LWO2/hierarchy.lwo"})
        EXPECT_EQ(cutOff(collection / file), "") << file;
}

} // namespace
