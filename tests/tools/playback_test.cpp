// Playing the clips of a scene.

#include "tools/stage/playback.h"

#include "tests/tools/support.h"
#include "tools/common/failure.h"
#include "tools/stage/engine.h"
#include "tools/stage/skins.h"
#include "tools/writers/rvaWriter.h"
#include "tools/writers/rveWriter.h"

#include <gtest/gtest.h>
#include <memory>
#include <ravolt.h>

namespace {

using namespace tool_test;
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
    PlaybackTest() {
        ravolt::RveScene scene;
        scene.root = meshNode("[root]", true);
        scene.root.children.push_back(squareNode("square", 0));
        scene.root.children[0].position = {0, 5, 0};
        EXPECT_EQ(ravolt::writeRve("played.rve", scene), "");
        for (const auto &[name, frames] : {std::pair{"played.rise", 3},
                                           {"played.pose", 1},
                                           {"played.run", 2},
                                           {"played.2.run", 2},
                                           {"playedon.run", 2}})
            writeClip(name, rising(static_cast<std::size_t>(frames)));
        clips = clipsBeside("played.rve");
    }

    static void writeClip(const std::string &name, const ravolt::RvaClip &clip) {
        EXPECT_EQ(ravolt::writeRva(name + ".rva", clip), "");
    }

    Playback &open() {
        engine = std::make_unique<Engine>(WindowSize{64, 64}, "test", false, "ravolt_log.txt");
        root = engine->load("played.rve");
        playback = std::make_unique<Playback>(root, clips);
        return *playback;
    }

    std::vector<ClipFile> clips;
    std::unique_ptr<Engine> engine;
    RVNODE *root = nullptr;
    std::unique_ptr<Playback> playback;
};

TEST_F(PlaybackTest, FindsTheClipsOfASceneAndNoOthers) {
    Lines names;
    for (const ClipFile &clip : clips)
        names.push_back(clip.name);
    EXPECT_EQ(names, (Lines{"rise", "run", "pose"}));
    EXPECT_EQ(clips[0].file, fs::absolute("played.rise.rva"));
}

TEST_F(PlaybackTest, ShowsFramesAndTheSceneAsLoaded) {
    Playback &played = open();
    RVNODE *node = root->findByNameInHierarchy("square");
    EXPECT_EQ(played.state(), "no clip");
    EXPECT_EQ(node->getPosition().y, 5);
    played.choose("rise");
    EXPECT_EQ(played.state(), "rise 0/2");
    EXPECT_EQ(node->getPosition().y, 0);
    played.setFrame(2);
    EXPECT_EQ(node->getPosition().y, 20);
    played.setFrame(3); // on from the end
    EXPECT_EQ(played.frame(), 0);
    played.setFrame(-1);
    EXPECT_EQ(played.frame(), 2);
    played.next(false);
    EXPECT_EQ(played.state(), "run 0/1");
    played.next(true);
    played.next(true);
    EXPECT_EQ(played.state(), "no clip");
    EXPECT_EQ(node->getPosition().y, 5);
}

// The last frame of a loop equals the first one, be it by other angles, and would be shown twice.
TEST_F(PlaybackTest, DoesNotRepeatTheLastFrameOfALoop) {
    ravolt::RvaClip loop = rising(3), open3 = rising(3);
    loop.frames[0][0].rotation = {10, 20, 30};
    loop.frames[2][0] = loop.frames[0][0];
    loop.frames[2][0].rotation = {190, 160, 210};
    open3.frames[2][0] = open3.frames[0][0];
    open3.frames[2][0].rotation = {1, 0, 0};
    writeClip("loop", loop);
    writeClip("open", open3);
    for (const char *name : {"loop", "open"})
        clips.push_back({name, fs::absolute(name + std::string(".rva"))});
    Playback &played = open();
    EXPECT_EQ(played.period(), 1); // no clip
    for (const auto &[clip, period] :
         {std::pair{"loop", 2}, {"open", 3}, {"rise", 3}, {"run", 2}, {"pose", 1}}) {
        played.choose(clip);
        EXPECT_EQ(played.period(), period) << clip;
    }
    played.choose("loop");
    played.setFrame(2); // it can be shown all the same
    EXPECT_EQ(played.state(), "loop 2/2");
}

TEST_F(PlaybackTest, AdvancesFromWholeFrameToWholeFrame) {
    Playback &played = open();
    EXPECT_FALSE(played.advance(1));
    played.choose("rise"); // 0.1 seconds
    const RVNODE *node = root->findByNameInHierarchy("square");
    for (const auto &[seconds, frame] :
         {std::pair{0.04, 1}, {0.02, 1}, {0.02, 2}, {0.03, 0}, {1.05, 1}, {1e9, 1}}) {
        const int before = played.frame();
        EXPECT_EQ(played.advance(seconds), frame != before) << seconds;
        EXPECT_EQ(played.frame(), frame) << seconds;
        EXPECT_EQ(node->getPosition().y, 10 * static_cast<float>(frame)) << seconds;
    }
}

TEST_F(PlaybackTest, AClipThatMovesNothingStandsStill) {
    ravolt::RvaClip other = rising(3);
    other.bones = {"nobody"};
    writeClip("other", other);
    clips.push_back({"other", fs::absolute("other.rva")});
    Playback &played = open();
    played.choose("rise");
    played.setFrame(1);
    played.choose("other");
    EXPECT_EQ(played.missingNodes(), 1u);
    EXPECT_EQ(root->findByNameInHierarchy("square")->getPosition().y, 5) << "as loaded";
    EXPECT_FALSE(played.advance(0.04));
    played.setFrame(2);
    EXPECT_EQ(played.state(), "other 2/2");
    EXPECT_EQ(readText("ravolt_log.txt").find("[!] No bone"), std::string::npos);
}

TEST_F(PlaybackTest, SkipsBrokenClips) {
    writeFile("played.run.rva", "no clip");
    Playback &played = open();
    played.next(false);
    EXPECT_EQ(played.name(), "rise");
    EXPECT_THROW(played.next(false), Failure);
    EXPECT_EQ(played.name(), "rise");
    played.next(false);
    EXPECT_EQ(played.name(), "pose");
    played.next(true);
    EXPECT_EQ(played.name(), "rise");
}

TEST_F(PlaybackTest, MeasuresTheExtentOfAllFrames) {
    Playback &played = open();
    EXPECT_NEAR(played.sphere().center.y, 5.5, 1e-5);
    played.choose("rise");
    played.setFrame(1);
    const Sphere sphere = played.sphere();
    EXPECT_NEAR(sphere.center.y, 10.5, 1e-5);
    EXPECT_NEAR(sphere.lowest, 0, 1e-5);
    EXPECT_GT(sphere.radius, 10.5);
    EXPECT_EQ(played.frame(), 1);
}

// A square on a bone, ten away from it, and a bone far off that moves nothing. In the second frame
// the square is turned about the bone, from x 0 to 1 to y -10 to -9.
TEST(SkinnedPlayback, MeasuresSkinsAsTheirBonesMoveThem) {
    ravolt::RveScene scene;
    scene.root = meshNode("[root]", true);
    scene.root.children = {meshNode("HumanoidRoot", true)};
    std::vector<RveNode> &figure = scene.root.children[0].children;
    figure = {meshNode("bone", true), meshNode("target", true), skinnedSquare("body", "bone", 0)};
    figure[0].position = {10, 0, 0};
    figure[1].position = {0, 500, 0};
    ASSERT_EQ(ravolt::writeRve("skinned.rve", scene), "");
    ravolt::RvaClip clip;
    clip.bones = {"bone"};
    clip.frames = {{{{0, 0, 0}, {10, 0, 0}, true}}, {{{0, 0, 90}, {10, 0, 0}, true}}};
    ASSERT_EQ(ravolt::writeRva("skinned.turn.rva", clip), "");
    const std::vector<SceneSkin> skins = readSkins("skinned.rve");
    ASSERT_EQ(skins.size(), 1u);
    EXPECT_EQ(skins[0].node, 4u);
    {
        Engine engine({64, 64}, "test", false, "ravolt_log.txt");
        Playback playback(engine.load("skinned.rve"), clipsBeside("skinned.rve"), skins);
        playback.choose("turn");
        const Sphere sphere = playback.sphere();
        EXPECT_NEAR(sphere.lowest, -10, 1e-3);
        EXPECT_NEAR(sphere.center.x, 5, 1e-3);
        EXPECT_NEAR(sphere.center.y, -4.5, 1e-3);
        EXPECT_LT(sphere.radius, 7.5);
    }
    // Of a broken scene none are read.
    const std::string whole = readText("skinned.rve");
    for (std::size_t length = 0; length < whole.size(); ++length) {
        writeFile("cut.rve", whole.substr(0, length));
        EXPECT_TRUE(readSkins("cut.rve").empty()) << length;
    }
    EXPECT_TRUE(readSkins("missing.rve").empty());
}

} // namespace
