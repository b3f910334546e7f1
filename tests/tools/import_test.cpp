// Cleaning imported scenes, and welding their vertices.

#include "tools/convert/import.h"

#include "tests/tools/figure.h"
#include "tests/tools/support.h"
#include "tools/convert/container.h"
#include "tools/convert/vertices.h"

#include <array>
#include <cstdint>
#include <gtest/gtest.h>
#include <limits>

namespace {

using namespace tool_test;

constexpr float nan = std::numeric_limits<float>::quiet_NaN();
constexpr float infinity = std::numeric_limits<float>::infinity();

const Points square = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}};

// A scene with one mesh, one material and one node.
class SceneOfOneMesh {
  public:
    explicit SceneOfOneMesh(const Faces &faces, const Points &points = square) {
        aiNode &root = *(scene.mRootNode = new aiNode("root"));
        root.mNumMeshes = 1;
        root.mMeshes = new unsigned int[1]{0};
        append(new aiMaterial, scene.mMaterials, scene.mNumMaterials);
        append(new aiMesh, scene.mMeshes, scene.mNumMeshes);
        fill(mesh(), points, faces, Points(points.size()));
    }

    aiMesh &mesh() const { return *scene.mMeshes[0]; }
    // Returns its warnings.
    Lines clean() {
        Report report;
        cleanScene(scene, report);
        return report.warnings();
    }

    aiScene scene;
};

std::vector<unsigned int> indicesOf(const aiMesh &mesh) {
    std::vector<unsigned int> indices;
    for (unsigned int i = 0; i < mesh.mNumFaces; ++i)
        indices.insert(indices.end(), mesh.mFaces[i].mIndices, mesh.mFaces[i].mIndices + 3);
    return indices;
}

Points cornersOf(const aiMesh &mesh) {
    Points corners;
    for (const unsigned int index : indicesOf(mesh))
        corners.push_back(mesh.mVertices[index]);
    return corners;
}

using Indices = std::vector<unsigned int>;

TEST(CleanScene, DropsFacesOfInvalidVertices) {
    const auto expect = [](const std::string &number, const aiVector3D &lastCorner,
                           const Faces &faces, const Indices &remaining) {
        SCOPED_TRACE(testing::PrintToString(faces));
        SceneOfOneMesh model(faces, {square[0], square[1], square[2], lastCorner});
        EXPECT_EQ(joined(model.clean()),
                  number.empty() ? ""
                                 : number + " dropped: vertices that do not exist or have no "
                                            "finite position\n");
        EXPECT_EQ(indicesOf(model.mesh()), remaining);
        EXPECT_EQ(model.mesh().mVertices[3], lastCorner == square[3] ? square[3] : aiVector3D());
    };
    expect("", square[3], {{0, 1, 2}, {0, 2, 3}}, {0, 1, 2, 0, 2, 3});
    expect("2 faces", square[3], {{0, 1, 4}, {0, 1, 2}, {0xffffffff, 0, 1}, {2, 3, 0}},
           {0, 1, 2, 2, 3, 0});
    for (const aiVector3D &corner :
         {aiVector3D(nan, 0, 0), aiVector3D(0, infinity, 0), aiVector3D(0, 0, -infinity)})
        expect("1 face", corner, {{0, 1, 2}, {0, 2, 3}}, {0, 1, 2});
}

TEST(CleanScene, DropsWeightsOfNoVertex) {
    SceneOfOneMesh model({{0, 1, 2}});
    const aiBone &bone = addBone(model.mesh(), "", {}, {{99, 1}, {1, 0.5f}, {2, nan}});
    EXPECT_EQ(model.clean(), Lines{"2 bone weights of no vertex dropped"});
    ASSERT_EQ(bone.mNumWeights, 1u);
    EXPECT_EQ(bone.mWeights[0].mVertexId, 1u);
}

TEST(CleanScene, RepairsReferences) {
    SceneOfOneMesh model({{0, 1, 2}});
    model.mesh().mMaterialIndex = 7;
    model.scene.mRootNode->mMeshes[0] = 12;
    model.clean();
    EXPECT_EQ(model.mesh().mMaterialIndex, 0u);
    EXPECT_EQ(model.scene.mRootNode->mNumMeshes, 0u);
}

TEST(CleanScene, ZeroesTexCoordsThatAreNotFinite) {
    SceneOfOneMesh model({{0, 1, 2}});
    model.mesh().mTextureCoords[0] = new aiVector3D[4]{{}, {nan, 0, 0}, {}, {}};
    EXPECT_EQ(model.clean(), Lines{"1 texture coordinate without a finite value set to zero"});
    EXPECT_EQ(model.mesh().mTextureCoords[0][1], aiVector3D());
}

TEST(CleanScene, GivesCornersTheirOwnVerticesWhereNormalsAreMissing) {
    SceneOfOneMesh model({{0, 1, 2}, {0, 2, 3}});
    aiMesh &mesh = model.mesh();
    delete[] mesh.mNormals;
    mesh.mNormals = nullptr;
    const Points corners = cornersOf(mesh);
    const aiBone &bone = addBone(mesh, "", {}, {{2, 0.5f}});
    model.clean();
    ASSERT_EQ(mesh.mNumVertices, 6u);
    EXPECT_EQ(cornersOf(mesh), corners);
    // The weight follows both copies of its vertex.
    ASSERT_EQ(bone.mNumWeights, 2u);
    EXPECT_EQ(mesh.mVertices[bone.mWeights[0].mVertexId], square[2]);
    EXPECT_EQ(mesh.mVertices[bone.mWeights[1].mVertexId], square[2]);
}

// A reader can leave pointers of a scene empty.
TEST(CleanScene, DropsNullPointers) {
    SceneOfOneMesh model({{0, 1, 2}});
    aiScene &scene = model.scene;
    aiNode &root = *scene.mRootNode;
    append<aiNode>(nullptr, root.mChildren, root.mNumChildren);
    append(new aiNode("child"), root.mChildren, root.mNumChildren);
    root.mChildren[1]->mNumMeshes = 3;
    aiMesh &mesh = model.mesh();
    append<aiBone>(nullptr, mesh.mBones, mesh.mNumBones);
    addBone(mesh, "", {}, {}).mNumWeights = 5;
    append<aiMesh>(nullptr, scene.mMeshes, scene.mNumMeshes);
    append<aiMaterial>(nullptr, scene.mMaterials, scene.mNumMaterials);
    append<aiLight>(nullptr, scene.mLights, scene.mNumLights);
    append<aiAnimation>(nullptr, scene.mAnimations, scene.mNumAnimations);
    append(new aiAnimation, scene.mAnimations, scene.mNumAnimations);
    append<aiNodeAnim>(nullptr, scene.mAnimations[1]->mChannels,
                       scene.mAnimations[1]->mNumChannels);
    model.clean();
    ASSERT_EQ(root.mNumChildren, 1u);
    EXPECT_STREQ(root.mChildren[0]->mName.C_Str(), "child");
    EXPECT_EQ(root.mChildren[0]->mNumMeshes, 0u);
    ASSERT_EQ(mesh.mNumBones, 1u);
    EXPECT_EQ(mesh.mBones[0]->mNumWeights, 0u);
    ASSERT_EQ(scene.mNumMeshes, 2u) << "named by number";
    EXPECT_EQ(scene.mMeshes[1]->mNumFaces, 0u);
    ASSERT_EQ(scene.mNumMaterials, 2u) << "named by number";
    EXPECT_NE(scene.mMaterials[1], nullptr);
    EXPECT_EQ(scene.mNumLights, 0u);
    ASSERT_EQ(scene.mNumAnimations, 1u);
    EXPECT_EQ(scene.mAnimations[0]->mNumChannels, 0u);
}

// Six vertices for the four corners of a square.
struct TwoTriangles : SceneOfOneMesh {
    TwoTriangles()
        : SceneOfOneMesh({{0, 1, 2}, {3, 4, 5}},
                         {square[0], square[1], square[2], square[0], square[2], square[3]}) {}
    unsigned int verticesWelded() const {
        const Points corners = cornersOf(mesh());
        weldVertices(mesh());
        EXPECT_EQ(cornersOf(mesh()), corners);
        return mesh().mNumVertices;
    }
};

TEST(WeldVertices, JoinsEqualOnes) { EXPECT_EQ(TwoTriangles().verticesWelded(), 4u); }

TEST(WeldVertices, DoesNotJoinDifferentNormalsOrTextureCoordinates) {
    const TwoTriangles model;
    model.mesh().mNormals[3] = aiVector3D(0, 0, 1);
    model.mesh().mTextureCoords[1] = new aiVector3D[6]{{}, {}, {}, {}, {0.5f, 0, 0}, {}};
    EXPECT_EQ(model.verticesWelded(), 6u);
}

// Two legs that touch each other at two corners, of which one is moved alike on both sides.
TEST(WeldVertices, DoesNotJoinWhatDifferentBonesMove) {
    const TwoTriangles model;
    const aiBone &left = addBone(model.mesh(), "", {}, {{0, 1}, {1, 1}, {2, 0.5f}, {4, 0.5f}});
    const aiBone &right = addBone(model.mesh(), "", {}, {{2, 0.5f}, {3, 1}, {4, 0.5f}, {5, 1}});
    EXPECT_EQ(model.verticesWelded(), 5u);
    const Indices indices = indicesOf(model.mesh());
    ASSERT_EQ(left.mNumWeights, 3u);
    ASSERT_EQ(right.mNumWeights, 3u);
    EXPECT_EQ(left.mWeights[0].mVertexId, indices[0]);
    EXPECT_EQ(left.mWeights[2].mVertexId, indices[4]);
    EXPECT_EQ(right.mWeights[0].mVertexId, indices[2]);
    EXPECT_EQ(right.mWeights[1].mVertexId, indices[3]);
}

// ---- files -----------------------------------------------------------------------------------

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
    writeFile("empty.obj", "");
    writeFile("points.obj", "v 0 0 0\nv 1 0 0\n");
    for (const auto &[file, reason] : std::vector<std::pair<std::string, std::string>>{
             {"missing.obj", "no such file"},
             {"folder", "is a folder, not a model"},
             {"empty.obj", "is empty"},
             {"points.obj", "has no triangles to draw"}})
        EXPECT_EQ(reading(file), file + ": " + reason);
    for (const std::string file : {"junk.glb", "no.ending"}) {
        writeFile(file, "glTF is what this is not");
        const std::string line = reading(file);
        EXPECT_EQ(line.rfind(file + ": ", 0), 0u) << line;
        EXPECT_EQ(line.find('\n'), std::string::npos) << line;
    }
}

const fs::path collection = "/usr/share/assimp/models";

TEST(Import, SkipsAChildThatIsNull) {
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

TEST(Import, ReportsATruncatedFile) {
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

TEST(Import, DoesNotTakeWholeFilesAsCutOff) {
    if (!fs::exists(collection))
        GTEST_SKIP() << "no collection of models";
    for (const char *file : {"glTF2/2CylinderEngine-glTF-Binary/2CylinderEngine.glb",
                             "FBX/spider.fbx", "3DS/fels.3ds", "LWO/LWO2/hierarchy.lwo"})
        EXPECT_EQ(cutOff(collection / file), "") << file;
}

} // namespace
