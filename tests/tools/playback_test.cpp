#include "tools/stage/playback.h"

#include "tests/tools/support.h"
#include "tools/common/failure.h"
#include "tools/stage/engine.h"
#include "tools/stage/skins.h"
#include "tools/writers/rvaWriter.h"
#include "tools/writers/rveWriter.h"

#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <ravolt.h>

namespace {

using namespace tool_test;
using ravolt::RveKind;
using ravolt::RveNode;

RveNode square(const std::string &name) {
    RveNode node;
    node.kind = RveKind::mesh;
    node.name = name;
    node.mesh.vertices = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}};
    node.mesh.normals.assign(4, {0, 0, 1});
    node.mesh.faces = {{0, 1, 2}, {0, 2, 3}};
    return node;
}

// A square that rises by ten in each of the frames.
ravolt::RvaClip rising(std::size_t frames) {
    ravolt::RvaClip clip;
    clip.bones = {"square"};
    for (std::size_t i = 0; i < frames; ++i)
        clip.frames.push_back({{{0, 0, 0}, {0, 10 * static_cast<float>(i), 0}, true}});
    return clip;
}

class PlaybackTest : public ::testing::Test {
  protected:
    void SetUp() override {
        ravolt::RveScene scene;
        scene.root.kind = RveKind::mesh;
        scene.root.name = "[root]";
        scene.root.mesh.hidden = true;
        scene.root.children.push_back(square("square"));
        scene.root.children[0].position = {0, 5, 0};
        fs::create_directories("played");
        ASSERT_EQ(ravolt::writeRve("played/scene.rve", scene), "");
        ASSERT_EQ(ravolt::writeRva("played/scene.rise.rva", rising(3)), "");
        ASSERT_EQ(ravolt::writeRva("played/scene.pose.rva", rising(1)), "");
        ASSERT_EQ(ravolt::writeRva("played/scene.run.rva", rising(2)), "");
        ASSERT_EQ(ravolt::writeRva("played/scene.2.run.rva", rising(2)), "");
        ASSERT_EQ(ravolt::writeRva("played/scenery.run.rva", rising(2)), "");
        clips = clipsBeside("played/scene.rve");
    }

    std::vector<ClipFile> clips;
};

TEST_F(PlaybackTest, FindsTheClipsOfASceneAndNoOthers) {
    std::vector<std::string> names;
    for (const ClipFile &clip : clips)
        names.push_back(clip.name);
    EXPECT_EQ(names, (std::vector<std::string>{"rise", "run", "pose"}));
    EXPECT_EQ(clips[0].file, fs::absolute("played/scene.rise.rva"));
}

TEST_F(PlaybackTest, ShowsFramesAndTheSceneAsLoaded) {
    Engine engine({64, 64}, "test", false, "ravolt_log.txt");
    RVNODE *root = engine.load("played/scene.rve");
    RVNODE *node = root->findByNameInHierarchy("square");
    Playback playback(root, clips);
    EXPECT_EQ(playback.state(), "no clip");
    EXPECT_EQ(node->getPosition().y, 5);
    playback.choose("rise");
    EXPECT_EQ(playback.state(), "rise 0/2");
    EXPECT_EQ(node->getPosition().y, 0);
    playback.setFrame(2);
    EXPECT_EQ(node->getPosition().y, 20);
    playback.setFrame(3); // on from the end
    EXPECT_EQ(playback.frame(), 0);
    playback.setFrame(-1);
    EXPECT_EQ(playback.frame(), 2);
    playback.next(false);
    EXPECT_EQ(playback.state(), "run 0/1");
    playback.next(true);
    playback.next(true);
    EXPECT_EQ(playback.state(), "no clip");
    EXPECT_EQ(node->getPosition().y, 5);
    fs::current_path("..");
}

// The last frame of a loop equals the first one, be it by other angles, and would be shown twice.
TEST_F(PlaybackTest, LeavesTheLastFrameOfALoopOut) {
    ravolt::RvaClip loop = rising(3), open = rising(3);
    loop.frames[0][0].rotation = {10, 20, 30};
    loop.frames[2][0] = loop.frames[0][0];
    loop.frames[2][0].rotation = {190, 160, 210};
    open.frames[2][0] = open.frames[0][0];
    open.frames[2][0].rotation = {1, 0, 0};
    ASSERT_EQ(ravolt::writeRva("loop.rva", loop), "");
    ASSERT_EQ(ravolt::writeRva("open.rva", open), "");
    for (const char *name : {"loop", "open"})
        clips.push_back({name, fs::absolute(name + std::string(".rva"))});
    Engine engine({64, 64}, "test", false, "ravolt_log.txt");
    Playback playback(engine.load("played/scene.rve"), clips);
    EXPECT_EQ(playback.period(), 1); // no clip
    for (const auto &[clip, period] :
         {std::pair{"loop", 2}, {"open", 3}, {"rise", 3}, {"run", 2}, {"pose", 1}}) {
        playback.choose(clip);
        EXPECT_EQ(playback.period(), period) << clip;
    }
    playback.choose("loop");
    playback.setFrame(2); // it can be shown all the same
    EXPECT_EQ(playback.state(), "loop 2/2");
    fs::current_path("..");
}

TEST_F(PlaybackTest, GoesPastBrokenClips) {
    std::ofstream("played/scene.run.rva") << "no clip";
    Engine engine({64, 64}, "test", false, "ravolt_log.txt");
    Playback playback(engine.load("played/scene.rve"), clips);
    playback.next(false);
    EXPECT_EQ(playback.name(), "rise");
    EXPECT_THROW(playback.next(false), Failure);
    EXPECT_EQ(playback.name(), "rise");
    playback.next(false);
    EXPECT_EQ(playback.name(), "pose");
    playback.next(true);
    EXPECT_EQ(playback.name(), "rise");
    fs::current_path("..");
}

TEST_F(PlaybackTest, MeasuresTheRoomOfAllFrames) {
    Engine engine({64, 64}, "test", false, "ravolt_log.txt");
    Playback playback(engine.load("played/scene.rve"), clips);
    EXPECT_NEAR(playback.sphere().center.y, 5.5, 1e-5);
    playback.choose("rise");
    playback.setFrame(1);
    const Sphere sphere = playback.sphere();
    EXPECT_NEAR(sphere.center.y, 10.5, 1e-5);
    EXPECT_NEAR(sphere.lowest, 0, 1e-5);
    EXPECT_GT(sphere.radius, 10.5);
    EXPECT_EQ(playback.frame(), 1);
    fs::current_path("..");
}

// A square on a bone, ten away from it, and a bone far off that holds nothing.
class SkinnedPlaybackTest : public ::testing::Test {
  protected:
    void SetUp() override {
        RveNode body = square("body");
        body.mesh.skin.weightsPerVertex = 4;
        body.mesh.skin.bones = {"bone"};
        body.mesh.skin.boneIndices.assign(16, 0);
        body.mesh.skin.boneWeights = {1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0};
        ravolt::RveScene scene;
        scene.root = hidden("[root]");
        scene.root.children.push_back(hidden("HumanoidRoot"));
        std::vector<RveNode> &figure = scene.root.children[0].children;
        figure.push_back(hidden("bone"));
        figure[0].position = {10, 0, 0};
        figure.push_back(hidden("target"));
        figure[1].position = {0, 500, 0};
        figure.push_back(body);
        fs::create_directories("played");
        ASSERT_EQ(ravolt::writeRve("played/scene.rve", scene), "");
        ravolt::RvaClip clip;
        clip.bones = {"bone"};
        clip.frames = {{{{0, 0, 0}, {10, 0, 0}, true}}, {{{0, 0, 90}, {10, 0, 0}, true}}};
        ASSERT_EQ(ravolt::writeRva("played/scene.turn.rva", clip), "");
    }

    static RveNode hidden(const std::string &name) {
        RveNode node;
        node.kind = RveKind::mesh;
        node.name = name;
        node.mesh.hidden = true;
        node.mesh.material = "";
        return node;
    }
};

// In the second frame the square is turned about the bone, from x 0 to 1 to y -10 to -9.
TEST_F(SkinnedPlaybackTest, MeasuresSkinsWhereTheirBonesPutThem) {
    const std::vector<ClipFile> clips = clipsBeside("played/scene.rve");
    const std::vector<SceneSkin> skins = readSkins("played/scene.rve");
    Engine engine({64, 64}, "test", false, "ravolt_log.txt");
    Playback playback(engine.load("played/scene.rve"), clips, skins);
    playback.choose("turn");
    const Sphere sphere = playback.sphere();
    EXPECT_NEAR(sphere.lowest, -10, 1e-3);
    EXPECT_NEAR(sphere.center.x, 5, 1e-3);
    EXPECT_NEAR(sphere.center.y, -4.5, 1e-3);
    EXPECT_LT(sphere.radius, 7.5);
    fs::current_path("..");
}

TEST_F(SkinnedPlaybackTest, ReadsNoSkinsOfBrokenScenes) {
    EXPECT_EQ(readSkins("played/scene.rve").size(), 1u);
    EXPECT_EQ(readSkins("played/scene.rve")[0].node, 4u);
    std::ifstream stream("played/scene.rve", std::ios::binary);
    const std::string whole{std::istreambuf_iterator<char>(stream), {}};
    for (std::size_t length = 0; length < whole.size(); ++length) {
        writeFile("cut.rve", whole.substr(0, length));
        EXPECT_TRUE(readSkins("cut.rve").empty()) << length;
    }
    EXPECT_TRUE(readSkins("missing.rve").empty());
}

} // namespace
