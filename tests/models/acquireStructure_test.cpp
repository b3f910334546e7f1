// Clips that take the bones of a mesh from a scene file.

#include "ravolt/RVANIM.h"
#include "ravolt/RVMESH.h"
#include "tests/models/modelScenes.h"
#include "tests/support/engineFixture.h"

using namespace ravolt;
using namespace ravolt::test;

namespace {

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

} // namespace
