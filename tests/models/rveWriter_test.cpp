// What the writer of scene files refuses, and what it does with files that it cannot write.

#include "tools/writers/rveWriter.h"

#include "tests/models/modelScenes.h"
#include "tests/support/fileLimit.h"

#include <filesystem>
#include <functional>

#include <gtest/gtest.h>

using namespace ravolt;
using namespace ravolt::test;

namespace {

// What the writer reports about a scene whose root is this node.
std::string errorOf(const RveNode &root, const std::vector<RveMaterial> &materials = {}) {
    const RveResult result = encodeRve({materials, root});
    EXPECT_EQ(result.ok(), !result.bytes.empty());
    return result.error;
}

TEST(RveWriter, WhatTheEngineWouldRefuseIsAnError) {
    const std::string name(256, 'n'), tooLong = "': a text of 256 characters, at most 255";
    const std::string face = "a face names a vertex that has no position or texture coordinate";
    RveMaterial longTexture = materialNamed("paint");
    longTexture.texture = name;
    EXPECT_EQ(errorOf(rootOver({skinnedSquare("square", {"bone"})}), {materialNamed("paint")}), "");
    EXPECT_EQ(errorOf(nodeNamed(name.substr(1))), "");
    EXPECT_EQ(errorOf(nodeNamed(name)), "node '" + name + tooLong);
    EXPECT_EQ(errorOf(rootOver({}), {longTexture}), "material 'paint" + tooLong);
    EXPECT_EQ(errorOf(rootOver({}), std::vector<RveMaterial>(65536)),
              "the scene: 65536 materials, at most 65535");
    EXPECT_EQ(errorOf(nodeNamed("arm", std::vector<RveNode>(65536))),
              "node 'arm': 65536 children, at most 65535");

    const struct {
        std::function<void(RveMesh &mesh)> change; // to a square with a skin
        std::string error;
    } rows[] = {
        {[](RveMesh &mesh) { mesh.material = std::string("a\0b", 3); },
         "a text with a zero byte in it"},
        {[](RveMesh &mesh) {
             mesh.vertices.resize(65536);
             mesh.normals.resize(65536);
             mesh.skin = {};
         },
         "65536 vertices, at most 65535"},
        {[](RveMesh &mesh) { mesh.skin.bones.assign(101, "bone"); }, "101 bones, at most 100"},
        {[](RveMesh &mesh) { mesh.normals.pop_back(); }, "normals must be as many as vertices"},
        {[](RveMesh &mesh) { mesh.faceNormals.resize(1); },
         "face normals must be as many as faces, or none"},
        {[](RveMesh &mesh) { mesh.faces[1][2] = 4; }, face},
        {[](RveMesh &mesh) { mesh.uvs.pop_back(); }, face},
        {[](RveMesh &mesh) { mesh.skin.boneWeights.pop_back(); },
         "bone numbers and weights must be as many as vertices times weights"},
        {[](RveMesh &mesh) { mesh.skin.boneIndices[3] = 1; },
         "a vertex names a bone that the mesh does not have"},
    };
    for (const auto &row : rows) {
        RveNode square = skinnedSquare("square", {"bone"});
        row.change(square.mesh);
        EXPECT_EQ(errorOf(square), "node 'square': " + row.error);
    }
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

TEST(RveWriter, FileThatCannotBeWrittenIsAnErrorAndLosesNothing) {
    const RveScene scene{{}, rootOver({})};
    const auto expectWritten = [&scene](const char *name) {
        ASSERT_TRUE(std::filesystem::exists(name));
        EXPECT_EQ(std::filesystem::file_size(name), encodeRve(scene).bytes.size());
    };
    EXPECT_EQ(writeRve("no such folder/scene.rve", scene),
              "no such folder/scene.rve: cannot be written");
    EXPECT_EQ(writeRve("old.rve", scene), "");
    expectWritten("old.rve");
    {
        const FileLimit limit(RLIMIT_FSIZE, 10);
        EXPECT_EQ(writeRve("part.rve", scene), "part.rve: cannot be written");
    }
    EXPECT_FALSE(std::filesystem::exists("part.rve"));
    {
        const FileLimit limit(RLIMIT_NOFILE, 0);
        EXPECT_EQ(writeRve("old.rve", scene), "old.rve: cannot be written");
    }
    expectWritten("old.rve");

    std::filesystem::remove("full");
    std::filesystem::create_symlink("/dev/full", "full");
    EXPECT_EQ(writeRve("full", scene), "full: cannot be written");
    EXPECT_TRUE(std::filesystem::is_symlink("full"));
}

} // namespace
