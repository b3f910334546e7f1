#include "tools/writers/rveWriter.h"

#include "tests/models/modelScenes.h"
#include "tests/support/fileLimit.h"

#include <filesystem>

#include <gtest/gtest.h>

using namespace ravolt;
using namespace ravolt::test;

namespace {

// What the writer says of a scene whose root is this node.
std::string errorOf(const RveNode &root, const std::vector<RveMaterial> &materials = {}) {
    const RveResult result = encodeRve({materials, root});
    EXPECT_EQ(result.ok(), !result.bytes.empty());
    return result.error;
}

RveNode skinnedSquare() {
    RveNode square = squareMesh("square");
    square.mesh.skin = {1, {0, 0, 0, 0}, {1, 1, 1, 1}, {"bone"}};
    return square;
}

TEST(RveWriter, GoodSceneIsNoError) {
    EXPECT_EQ(errorOf(rootOver({skinnedSquare()}), {materialNamed("paint")}), "");
}

TEST(RveWriter, LongTextIsAnError) {
    EXPECT_EQ(errorOf(nodeNamed(std::string(255, 'n'))), "");
    const std::string name(256, 'n');
    EXPECT_EQ(errorOf(nodeNamed(name)),
              "node '" + name + "': a text of 256 characters, at most 255");
    RveMaterial material = materialNamed("paint");
    material.texture = name;
    EXPECT_EQ(errorOf(rootOver({}), {material}),
              "material 'paint': a text of 256 characters, at most 255");
}

TEST(RveWriter, ZeroByteInATextIsAnError) {
    RveNode mesh = emptyMesh("mesh");
    mesh.mesh.material = std::string("a\0b", 3);
    EXPECT_EQ(errorOf(mesh), "node 'mesh': a text with a zero byte in it");
}

TEST(RveWriter, TooManyOfAnythingIsAnError) {
    RveNode mesh = emptyMesh("mesh");
    mesh.mesh.vertices.resize(65536);
    mesh.mesh.normals.resize(65536);
    EXPECT_EQ(errorOf(mesh), "node 'mesh': 65536 vertices, at most 65535");
    EXPECT_EQ(errorOf(nodeNamed("arm", std::vector<RveNode>(65536))),
              "node 'arm': 65536 children, at most 65535");
    EXPECT_EQ(errorOf(rootOver({}), std::vector<RveMaterial>(65536)),
              "the scene: 65536 materials, at most 65535");
    RveNode square = skinnedSquare();
    square.mesh.skin.bones.assign(101, "bone");
    EXPECT_EQ(errorOf(square), "node 'square': 101 bones, at most 100");
}

TEST(RveWriter, ArraysThatDoNotFitTogetherAreErrors) {
    RveNode mesh = squareMesh("mesh");
    mesh.mesh.normals.pop_back();
    EXPECT_EQ(errorOf(mesh), "node 'mesh': normals must be as many as vertices");

    mesh = squareMesh("mesh");
    mesh.mesh.faceNormals.resize(1);
    EXPECT_EQ(errorOf(mesh), "node 'mesh': face normals must be as many as faces, or none");

    mesh = squareMesh("mesh");
    mesh.mesh.faces[1][2] = 4;
    EXPECT_EQ(errorOf(mesh),
              "node 'mesh': a face names a vertex that has no position or texture coordinate");

    mesh = squareMesh("mesh");
    mesh.mesh.uvs.pop_back();
    EXPECT_EQ(errorOf(mesh),
              "node 'mesh': a face names a vertex that has no position or texture coordinate");

    mesh = skinnedSquare();
    mesh.mesh.skin.boneWeights.pop_back();
    EXPECT_EQ(errorOf(mesh),
              "node 'square': bone numbers and weights must be as many as vertices times weights");

    mesh = skinnedSquare();
    mesh.mesh.skin.boneIndices[3] = 1;
    EXPECT_EQ(errorOf(mesh), "node 'square': a vertex names a bone that the mesh does not have");
}

TEST(RveWriter, TreeDeeperThanTheEngineReadsIsAnError) {
    RveNode chain = nodeNamed("end");
    for (std::size_t level = 1; level < rveDepth; ++level) {
        RveNode above = nodeNamed("level");
        above.children.push_back(std::move(chain));
        chain = std::move(above);
    }
    EXPECT_EQ(errorOf(chain), "");
    EXPECT_EQ(errorOf(rootOver({chain})), "node 'end': a tree deeper than 1024 nodes");
}

TEST(RveWriter, FileThatCannotBeWrittenIsAnError) {
    const RveScene scene{{}, rootOver({})};
    EXPECT_EQ(writeRve("no such folder/scene.rve", scene),
              "no such folder/scene.rve: cannot be written");
    EXPECT_EQ(writeRve("written.rve", scene), "");
    EXPECT_EQ(std::filesystem::file_size("written.rve"), encodeRve(scene).bytes.size());
}

TEST(RveWriter, LeavesNoPartOfAFile) {
    const RveScene scene{{}, rootOver({})};
    {
        const FileLimit limit(RLIMIT_FSIZE, 10);
        EXPECT_EQ(writeRve("part.rve", scene), "part.rve: cannot be written");
    }
    EXPECT_FALSE(std::filesystem::exists("part.rve"));
}

TEST(RveWriter, LeavesAFileThatItCannotOpenAndADevice) {
    const RveScene scene{{}, rootOver({})};
    ASSERT_EQ(writeRve("old.rve", scene), "");
    {
        const FileLimit limit(RLIMIT_NOFILE, 0);
        EXPECT_EQ(writeRve("old.rve", scene), "old.rve: cannot be written");
    }
    ASSERT_TRUE(std::filesystem::exists("old.rve"));
    EXPECT_EQ(std::filesystem::file_size("old.rve"), encodeRve(scene).bytes.size());

    std::filesystem::remove("full");
    std::filesystem::create_symlink("/dev/full", "full");
    EXPECT_EQ(writeRve("full", scene), "full: cannot be written");
    EXPECT_TRUE(std::filesystem::is_symlink("full"));
}

} // namespace
