#include "tools/convert/clips.h"

#include "tests/tools/figure.h"
#include "tests/tools/support.h"

#include <cmath>
#include <gtest/gtest.h>
#include <numbers>

namespace {

using namespace tool_test;

aiQuaternion about(const aiVector3D &axis, double degrees) {
    return aiQuaternion(axis, static_cast<float>(degrees * std::numbers::pi / 180));
}

const aiVector3D upwards(0, 1, 0);

class ClipsTest : public ::testing::Test {
  protected:
    ClipsTest() { figure.node("arm", nullptr, {0, 0, 0}); }

    const std::vector<Clip> &convert(double fps = 10) {
        const aiScene &scene = figure.finish();
        skeleton = std::make_unique<Skeleton>(scene, 1, 1, report);
        skins = std::make_unique<Skins>(scene, *skeleton, report);
        clips = std::make_unique<Clips>(scene, interpolations, *skeleton, *skins, fps, report);
        return clips->all();
    }

    std::vector<float> heights(const Clip &clip) {
        std::vector<float> result;
        for (const auto &frame : clip.frames.frames)
            result.push_back(frame[0].translation[1]);
        return result;
    }

    Figure figure;
    Interpolations interpolations;
    Report report;
    std::unique_ptr<Skeleton> skeleton;
    std::unique_ptr<Skins> skins;
    std::unique_ptr<Clips> clips;
};

TEST_F(ClipsTest, ShowTheTimesOfTheirFrames) {
    figure.clip("up", 100, 40)->move("arm", {{0, {0, 0, 0}}, {40, {0, 4, 0}}});
    const Clip &clip = convert().at(0);
    EXPECT_EQ(clip.name, "up");
    EXPECT_EQ(clip.animation, 0);
    EXPECT_EQ(clip.frames.bones, (std::vector<std::string>{"arm"}));
    const std::vector<float> shown = heights(clip);
    ASSERT_EQ(shown.size(), 5u);
    for (std::size_t i = 0; i < shown.size(); ++i)
        EXPECT_NEAR(shown[i], static_cast<float>(i), 1e-5f);
    EXPECT_TRUE(clip.frames.frames[0][0].set);
}

TEST_F(ClipsTest, EndWithTheEndOfTheMovement) {
    figure.clip("up", 100, 25)->move("arm", {{0, {0, 0, 0}}, {25, {0, 2.5f, 0}}});
    EXPECT_EQ(heights(convert().at(0)), (std::vector<float>{0, 1, 2, 2.5f}));
}

TEST_F(ClipsTest, TakeTwentyFiveTicksASecondWhereNoneAreStated) {
    figure.clip("up", 0, 25)->move("arm", {{0, {0, 0, 0}}, {25, {0, 1, 0}}});
    EXPECT_EQ(convert().at(0).frames.frames.size(), 11u);
}

TEST_F(ClipsTest, EndWithTheLastKeyUnlessTheMovementGoesOn) {
    figure.clip("up", 100, 1000)->move("arm", {{0, {0, 0, 0}}, {10, {0, 1, 0}}});
    figure.clip("on", 100, 40)->move("arm", {{0, {0, 0, 0}}, {10, {0, 1, 0}}}).mPostState =
        aiAnimBehaviour_LINEAR;
    const std::vector<Clip> &all = convert();
    EXPECT_EQ(heights(all.at(0)), (std::vector<float>{0, 1}));
    EXPECT_EQ(heights(all.at(1)), (std::vector<float>{0, 1, 2, 3, 4}));
}

TEST_F(ClipsTest, AreCutAtTheMaximumOfFrames) {
    figure.clip("long", 1, 200)->move("arm", {{0, {0, 0, 0}}, {200, {0, 2000, 0}}});
    const Clip &clip = convert().at(0);
    EXPECT_EQ(clip.frames.frames.size(), 1024u);
    EXPECT_NEAR(heights(clip).back(), 1023, 1e-3);
    EXPECT_EQ(report.warnings(),
              (std::vector<std::string>{"clip 'long': 200.0 seconds cut to 102.3, a clip has 1024 "
                                        "frames at most: --fps 5.1 fits"}));
    EXPECT_TRUE(ravolt::encodeRva(clip.frames).ok());
}

TEST_F(ClipsTest, AreWholeAtTheRateThatTheWarningNames) {
    figure.clip("long", 1, 200)->move("arm", {{0, {0, 0, 0}}, {200, {0, 2000, 0}}});
    EXPECT_EQ(heights(convert(5.1).at(0)).back(), 2000);
    EXPECT_TRUE(report.warnings().empty());
}

TEST_F(ClipsTest, NameNoRateThatIsNotOffered) {
    figure.clip("days", 1, 200000)->move("arm", {{0, {0, 0, 0}}, {200000, {0, 2000, 0}}});
    convert();
    EXPECT_EQ(report.warnings(),
              (std::vector<std::string>{"clip 'days': 200000.0 seconds cut to 102.3, a clip has "
                                        "1024 frames at most"}));
}

TEST_F(ClipsTest, StartWithTheFirstKeyWhereKeysAreNumberedFromOne) {
    figure.clip("up", 10, 4)->move("arm", {{1, {0, 1, 0}}, {5, {0, 5, 0}}});
    EXPECT_EQ(heights(convert().at(0)), (std::vector<float>{1, 2, 3, 4, 5}));
}

TEST_F(ClipsTest, LoseNoKeyBehindTheStatedDuration) {
    figure.clip("up", 10, 3)->move("arm", {{0, {0, 0, 0}}, {5, {0, 5, 0}}});
    EXPECT_EQ(heights(convert().at(0)), (std::vector<float>{0, 1, 2, 3, 4, 5}));
}

TEST_F(ClipsTest, TurnWithoutJumps) {
    // Three turns about an axis that leads every angle past its borders.
    std::vector<aiQuatKey> keys;
    for (int i = 0; i <= 12; ++i)
        keys.emplace_back(10 * i, about(aiVector3D(1, 2, 0.5f).Normalize(), 90 * i));
    figure.clip("spin", 100, 120)->turn("arm", keys);
    const Clip &clip = convert(100).at(0);
    ASSERT_EQ(clip.frames.frames.size(), 121u);
    double largest = 0;
    for (std::size_t i = 1; i < clip.frames.frames.size(); ++i)
        for (std::size_t axis = 0; axis < 3; ++axis)
            largest =
                std::max(largest, std::abs(double{clip.frames.frames[i][0].rotation[axis]} -
                                           double{clip.frames.frames[i - 1][0].rotation[axis]}));
    EXPECT_LT(largest, 40); // 9 degrees a frame, more for outer angles near a quarter turn
    EXPECT_GT(largest, 9);
}

TEST_F(ClipsTest, UnwindWholeTurns) {
    std::vector<aiQuatKey> keys;
    for (int i = 0; i <= 8; ++i)
        keys.emplace_back(10 * i, about({0, 0, 1}, 90 * i));
    figure.clip("spin", 100, 80)->turn("arm", keys);
    const Clip &clip = convert().at(0);
    for (std::size_t i = 0; i < 9; ++i)
        EXPECT_NEAR(clip.frames.frames[i][0].rotation[2], 90.0f * static_cast<float>(i), 1e-3f);
}

TEST_F(ClipsTest, StateEveryNodeThatAnyOfThemMoves) {
    figure.node("leg", nullptr, {0, 0, 0});
    figure.node("still", nullptr, {0, 0, 0});
    figure.clip("a", 100, 10)->move("arm", {{0, {0, 0, 0}}, {10, {0, 1, 0}}});
    figure.clip("b", 100, 10)->move("leg", {{0, {0, 0, 0}}, {10, {0, 1, 0}}});
    for (const Clip &clip : convert())
        EXPECT_EQ(clip.frames.bones, (std::vector<std::string>{"arm", "leg"}));
    EXPECT_TRUE(clips->moves(1));
    EXPECT_FALSE(clips->moves(3));
}

TEST_F(ClipsTest, HoldTheNodesThatTheyHaveRoomFor) {
    FigureClip *clip = figure.clip("all", 100, 10);
    for (int i = 0; i < 130; ++i) {
        const std::string name = "node" + std::to_string(i);
        figure.node(name, nullptr, {0, 0, 0});
        clip->move(name, {{0, {0, 0, 0}}, {10, {0, 1, 0}}});
    }
    const Clip &made = convert().at(0);
    EXPECT_EQ(made.frames.bones.size(), 128u);
    EXPECT_EQ(made.frames.bones.back(), "node127");
    EXPECT_EQ(report.warnings(),
              (std::vector<std::string>{
                  "clip 'all': moves 130 nodes, a clip holds the first 128 of them"}));
}

TEST_F(ClipsTest, SayThatTheyHaveNoRoomForWhatOthersMove) {
    for (const int first : {0, 100}) {
        FigureClip *clip = figure.clip("part" + std::to_string(first), 100, 10);
        for (int i = first; i < first + 100; ++i) {
            const std::string name = "node" + std::to_string(i);
            figure.node(name, nullptr, {0, 0, 0});
            clip->move(name, {{0, {0, 0, 0}}, {10, {0, 1, 0}}});
        }
    }
    for (const Clip &clip : convert())
        EXPECT_EQ(clip.frames.bones.size(), 100u);
    EXPECT_EQ(report.warnings(),
              (std::vector<std::string>{
                  "the clips move 200 nodes together, a clip holds 128: each has its own alone, "
                  "the others stay as the clip before has put them"}));
}

TEST_F(ClipsTest, HaveNamesThatFilesCanHave) {
    for (const char *name : {"", "Run", "run", "a/b.c", "../x"})
        figure.clip(name, 100, 10)->move("arm", {{0, {0, 0, 0}}, {10, {0, 1, 0}}});
    std::vector<std::string> names;
    for (const Clip &clip : convert())
        names.push_back(clip.name);
    EXPECT_EQ(names, (std::vector<std::string>{"clip", "Run", "run_2", "a_b_c", "____x"}));
    EXPECT_EQ(clipFile("folder/scene.rve", "Run"), fs::path("folder/scene.Run.rva"));
}

TEST_F(ClipsTest, SayWhatTheyCannotHold) {
    figure.triangle(figure.node("thing", nullptr, {0, 0, 0}));
    FigureClip *clip = figure.clip("grow", 100, 10);
    clip->scale("thing", {{0, {1, 1, 1}}, {10, {2, 2, 2}}});
    clip->move("ghost", {{0, {0, 0, 0}}});
    clip->move("arm", {{0, {0, 0, 0}}, {10, {0, 1, 0}}});
    figure.clip("nothing", 100, 10)->scale("arm", {{0, {1, 1, 1}}, {10, {2, 2, 2}}});
    convert();
    EXPECT_EQ(report.warnings(),
              (std::vector<std::string>{
                  "clip 'grow': 1 node that the model does not have left out",
                  "clip 'grow': scaling of 1 node left out, a clip holds places and rotations "
                  "alone"}));
}

TEST_F(ClipsTest, ThatMoveNothingAreLeftOut) {
    figure.clip("still", 100, 10)->move("arm", {{0, {0, 0, 0}}});
    EXPECT_TRUE(convert().empty());
    EXPECT_EQ(report.notes(),
              (std::vector<std::string>{"clip 'still' left out: it moves nothing"}));
}

// Scaling a parent moves its children apart, which clips can hold.
TEST_F(ClipsTest, MoveTheChildrenOfWhatIsScaled) {
    aiNode *parent = figure.node("parent", nullptr, {0, 0, 0});
    figure.node("child", parent, {0, 3, 0});
    figure.clip("grow", 100, 10)->scale("parent", {{0, {1, 1, 1}}, {10, {2, 2, 2}}});
    const Clip &clip = convert().at(0);
    EXPECT_EQ(clip.frames.bones, (std::vector<std::string>{"child"}));
    EXPECT_EQ(heights(clip), (std::vector<float>{3, 6}));
    EXPECT_TRUE(report.warnings().empty());
}

TEST_F(ClipsTest, ShowTheModelsPoseWhereTheFileHasAnother) {
    aiNode *low = figure.node("low", nullptr, {0, 0, 0});
    figure.node("high", low, {0, 1, 0});
    FigureMesh *mesh = figure.triangle(figure.node("body", nullptr, {0, 0, 0}));
    mesh->bone("low", {0, 0, 0}, {{0, 0.5f}, {1, 1}, {2, 1}});
    mesh->bone("high", {0, -2, 0}, {{0, 0.5f}});
    const Clip &clip = convert().at(0);
    EXPECT_EQ(clip.name, "pose");
    EXPECT_EQ(clip.animation, -1);
    EXPECT_EQ(clip.frames.bones, (std::vector<std::string>{"high"}));
    EXPECT_EQ(heights(clip), (std::vector<float>{1}));
}

// ---- files that number their frames from one ------------------------------------------------

template <class... T> std::string bytesOf(T... values) {
    std::string bytes;
    (bytes.append(reinterpret_cast<const char *>(&values), sizeof values), ...);
    return bytes;
}

std::string chunk(const char *tag, const std::string &content) {
    return tag + bytesOf(static_cast<int>(content.size())) + content;
}

TEST(Clips, OfB3dFilesHaveTheirLastKey) {
    const std::string brush = bytesOf(-1), none("\0", 1);
    const std::string vertices =
        chunk("VRTS", bytesOf(0, 0, 0, 0.f, 0.f, 0.f, 1.f, 0.f, 0.f, 0.f, 1.f, 0.f));
    const std::string mesh =
        chunk("MESH", brush + vertices + chunk("TRIS", brush + bytesOf(0, 1, 2)));
    const auto key = [](int frame) { return bytesOf(frame, 0.f, static_cast<float>(frame), 0.f); };
    const std::string keys = chunk("KEYS", bytesOf(1) + key(1) + key(2) + key(5));
    const std::string node = "arm" + none +
                             bytesOf(0.f, 0.f, 0.f, 1.f, 1.f, 1.f, 1.f, 0.f, 0.f, 0.f) + mesh +
                             keys + chunk("ANIM", bytesOf(0, 4, 10.f));
    writeFile("arm.b3d", chunk("BB3D", bytesOf(1) + chunk("NODE", node)));
    ConvertOptions options;
    options.model = "arm.b3d";
    options.scene = "scene.rve";
    options.fps = 10;
    const Made made = make(options);
    ASSERT_EQ(made.clips.size(), 1u) << joined(made.report.warnings());
    std::vector<float> heights;
    for (const auto &frame : made.clips[0].frames.frames)
        heights.push_back(frame[0].translation[1]);
    EXPECT_EQ(heights, (std::vector<float>{1, 2, 3, 4, 5}));
}

// ---- motions -------------------------------------------------------------------------------

TEST(Motion, TurnsTheShorterWay) {
    const Quaternion a{1, 0, 0, 0}, b{-std::cos(0.1), 0, -std::sin(0.1), 0};
    const Quaternion middle = between(a, b, 0.5);
    EXPECT_NEAR(std::abs(middle.w), std::cos(0.05), 1e-12);
    EXPECT_NEAR(std::abs(middle.y), std::sin(0.05), 1e-12);
}

TEST(Motion, KeepsItsEndsOutsideOfItsKeysOrGoesOnAsItSays) {
    FigureClip clip("x", 1, 1);
    aiNodeAnim &channel = clip.move("n", {{1, {1, 0, 0}}, {2, {2, 0, 0}}});
    const auto at = [&](double ticks) { return Motion(channel).at(ticks, aiMatrix4x4()).offset.x; };
    EXPECT_EQ(at(0), 1);
    EXPECT_EQ(at(3), 2);
    channel.mPreState = channel.mPostState = aiAnimBehaviour_LINEAR;
    EXPECT_EQ(at(0), 0);
    EXPECT_EQ(at(4), 4);
    channel.mPreState = channel.mPostState = aiAnimBehaviour_REPEAT;
    EXPECT_EQ(at(0.25), 1.25);
    EXPECT_EQ(at(4.5), 1.5);
    clip.finish();
    delete clip.clip;
}

TEST(Motion, PassesOverKeysThatAreNone) {
    const float nan = std::nanf("");
    FigureClip clip("x", 1, 1);
    aiNodeAnim &moved = clip.move("n", {{0, {1, 0, 0}}, {1, {nan, 0, 0}}, {2, {3, 0, 0}}});
    EXPECT_EQ(Motion(moved).at(1, aiMatrix4x4()).offset.x, 2);
    aiNodeAnim &turned = clip.turn("n", {{0, aiQuaternion(0, 0, 0, 0)}});
    EXPECT_EQ(Motion(turned).at(1, aiMatrix4x4()).linear.row[0][0], 1);
    clip.finish();
    delete clip.clip;
}

} // namespace
