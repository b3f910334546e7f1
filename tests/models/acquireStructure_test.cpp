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
        RveNode square = squareMesh("skin");
        square.mesh.skin = {1, {0, 0, 0, 0}, {1, 1, 1, 1}, bones};
        loadScene({square});
        markLog();
        return meshNamed("skin");
    }
};

TEST_F(AcquireStructureTest, TakesNumberAndNamesOfTheBones) {
    RVANIM &clip = *new RVANIM;
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

TEST_F(AcquireStructureTest, TakesAsManyBonesAsAMeshCanHave) {
    RVANIM &clip = *new RVANIM;
    std::vector<std::string> bones;
    for (unsigned int bone = 0; bone < RV_BONES; ++bone)
        bones.push_back("bone " + std::to_string(bone));
    EXPECT_TRUE(clip.acquireStructure(loadSkin(bones)));
    EXPECT_EQ(clip.getNumberOfBones(), 100);
    for (unsigned int bone = 0; bone < RV_BONES; ++bone)
        EXPECT_EQ(clip.getBoneName(bone), bones[bone]);
}

TEST_F(AcquireStructureTest, MeshWithoutBonesGivesNothingAndSaysNothing) {
    RVANIM &clip = *new RVANIM;
    clip.setNumberOfBones(2);
    loadScene({squareMesh("rigid")});
    markLog();
    EXPECT_FALSE(clip.acquireStructure(meshNamed("rigid")));
    EXPECT_FALSE(clip.acquireStructure(new RVMESH));
    EXPECT_EQ(clip.getNumberOfBones(), 2);
    EXPECT_NOTHING_LOGGED();
}

// A clip outlives neither the engine nor its own deletion, and needs the mesh no more.
TEST_F(AcquireStructureTest, ClipKeepsNamesOfItsOwn) {
    RVANIM &clip = *new RVANIM;
    EXPECT_TRUE(clip.acquireStructure(loadSkin({"hips"})));
    RVNODE::cleanUp();
    EXPECT_STREQ(clip.getBoneName(0), "hips");
    EXPECT_EQ(clip.findBoneByName("hips"), 0);
}

} // namespace
