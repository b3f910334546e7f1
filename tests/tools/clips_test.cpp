// Sampling the animations of a model as clips.

#include "tools/convert/clips.h"

#include "tests/tools/figure.h"
#include "tests/tools/support.h"

#include <cmath>
#include <gtest/gtest.h>
#include <numbers>

namespace {

using namespace tool_test;
using Keys = std::vector<aiVectorKey>;

aiQuaternion about(const aiVector3D &axis, double degrees) {
    return aiQuaternion(axis, static_cast<float>(degrees * std::numbers::pi / 180));
}

// From one height to another.
Keys rise(double first, double last, float from = 0, float to = 1) {
    return {{first, {0, from, 0}}, {last, {0, to, 0}}};
}

class ClipsTest : public ::testing::Test {
  protected:
    ClipsTest() { figure.node("arm"); }

    const std::vector<Clip> &convert(double fps = 10) {
        skeleton = std::make_unique<Skeleton>(figure.scene, Matrix(), 1, report);
        skins = std::make_unique<Skins>(figure.scene, *skeleton, report);
        clips =
            std::make_unique<Clips>(figure.scene, interpolations, *skeleton, *skins, fps, report);
        return clips->all();
    }

    // As many nodes, which the clip moves.
    void moveNodes(const std::string &name, int first, int number) {
        FigureClip clip = figure.clip(name, 100, 10);
        for (int i = first; i < first + number; ++i) {
            figure.node("node" + std::to_string(i));
            clip.move("node" + std::to_string(i), rise(0, 10));
        }
    }

    Figure figure;
    Interpolations interpolations;
    Report report;
    std::unique_ptr<Skeleton> skeleton;
    std::unique_ptr<Skins> skins;
    std::unique_ptr<Clips> clips;
};

TEST_F(ClipsTest, SampleTheirKeysAtTheTimesOfTheFrames) {
    struct Case {
        const char *what;
        double ticksPerSecond, duration;
        Keys keys;
        bool continues;
        std::vector<float> heights;
    };
    const Case cases[] = {
        {"in time", 100, 40, rise(0, 40, 0, 4), false, {0, 1, 2, 3, 4}},
        {"a last frame of less time", 100, 25, rise(0, 25, 0, 2.5f), false, {0, 1, 2, 2.5f}},
        {"25 ticks a second by default", 0, 5, rise(0, 5, 0, 2), false, {0, 1, 2}},
        {"up to the last key", 100, 1000, rise(0, 10), false, {0, 1}},
        {"after the last key", 100, 40, rise(0, 10), true, {0, 1, 2, 3, 4}},
        {"keys numbered from one", 10, 4, rise(1, 5, 1, 5), false, {1, 2, 3, 4, 5}},
        {"keys after the duration", 10, 3, rise(0, 5, 0, 5), false, {0, 1, 2, 3, 4, 5}},
    };
    for (const Case &c : cases) {
        FigureClip clip = figure.clip(c.what, c.ticksPerSecond, c.duration);
        clip.move("arm", c.keys).mPostState =
            c.continues ? aiAnimBehaviour_LINEAR : aiAnimBehaviour_DEFAULT;
    }
    const std::vector<Clip> &all = convert();
    ASSERT_EQ(all.size(), std::size(cases));
    for (std::size_t i = 0; i < all.size(); ++i) {
        SCOPED_TRACE(cases[i].what);
        EXPECT_EQ(all[i].animation, static_cast<int>(i));
        EXPECT_EQ(all[i].frames.bones, Lines{"arm"});
        EXPECT_TRUE(all[i].frames.frames[0][0].set);
        EXPECT_EQ(heights(all[i]), cases[i].heights);
    }
}

TEST_F(ClipsTest, AreCutAtTheMaximumOfFramesAndNameARateThatFits) {
    figure.clip("long", 1, 200).move("arm", rise(0, 200, 0, 2000));
    const Clip cut = convert().at(0);
    EXPECT_EQ(cut.name, "long");
    EXPECT_EQ(cut.frames.frames.size(), 1024u);
    EXPECT_NEAR(heights(cut).back(), 1023, 1e-3);
    EXPECT_EQ(report.warnings(), Lines{"clip 'long': 200.0 seconds cut to 102.3, a clip has 1024 "
                                       "frames at most: --fps 5.1 fits"});
    EXPECT_TRUE(ravolt::encodeRva(cut.frames).ok());
    EXPECT_EQ(heights(convert(5.1).at(0)).back(), 2000);
    EXPECT_EQ(report.warnings().size(), 1u);

    figure.clip("days", 1, 200000).move("arm", rise(0, 200000, 0, 2000));
    convert();
    EXPECT_EQ(report.warnings().back(), "clip 'days': 200000.0 seconds cut to 102.3, a clip has "
                                        "1024 frames at most"); // no rate is that low
}

TEST_F(ClipsTest, TurnWithoutJumps) {
    // Three turns about an axis that leads every angle past its limits.
    std::vector<aiQuatKey> keys;
    for (int i = 0; i <= 12; ++i)
        keys.emplace_back(10 * i, about(aiVector3D(1, 2, 0.5f).Normalize(), 90 * i));
    figure.clip("spin", 100, 120).turn("arm", keys);
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
    figure.clip("spin", 100, 80).turn("arm", keys);
    const Clip &clip = convert().at(0);
    for (std::size_t i = 0; i < 9; ++i)
        EXPECT_NEAR(clip.frames.frames[i][0].rotation[2], 90.0f * static_cast<float>(i), 1e-3f);
}

TEST_F(ClipsTest, StateEveryNodeThatAnyOfThemMoves) {
    figure.node("leg");
    figure.node("still");
    for (const char *node : {"arm", "leg"})
        figure.clip(node, 100, 10).move(node, rise(0, 10));
    for (const Clip &clip : convert())
        EXPECT_EQ(clip.frames.bones, (Lines{"arm", "leg"}));
    EXPECT_TRUE(clips->moves(1));
    EXPECT_FALSE(clips->moves(3));
}

TEST_F(ClipsTest, ContainUpTo128Nodes) {
    moveNodes("all", 0, 130);
    const Clip &made = convert().at(0);
    EXPECT_EQ(made.frames.bones.size(), 128u);
    EXPECT_EQ(made.frames.bones.back(), "node127");
    EXPECT_EQ(report.warnings(),
              Lines{"clip 'all': moves 130 nodes, a clip holds the first 128 of them"});
}

TEST_F(ClipsTest, WarnWhereTheyDoNotContainWhatOthersMove) {
    moveNodes("low", 0, 100);
    moveNodes("high", 100, 100);
    for (const Clip &clip : convert())
        EXPECT_EQ(clip.frames.bones.size(), 100u);
    EXPECT_EQ(report.warnings(),
              Lines{"the clips move 200 nodes together, a clip holds 128: each has its own alone, "
                    "the others stay as the clip before has put them"});
}

TEST_F(ClipsTest, HaveUniqueNamesThatFilesCanHave) {
    for (const char *name : {"", "Run", "run", "a/b.c", "../x"})
        figure.clip(name, 100, 10).move("arm", rise(0, 10));
    Lines names;
    for (const Clip &clip : convert())
        names.push_back(clip.name);
    EXPECT_EQ(names, (Lines{"clip", "Run", "run_2", "a_b_c", "____x"}));
    EXPECT_EQ(clipFile("folder/scene.rve", "Run"), fs::path("folder/scene.Run.rva"));
}

TEST_F(ClipsTest, WarnOfWhatTheyCannotContain) {
    figure.triangle(figure.node("thing"));
    const Keys growth = {{0, {1, 1, 1}}, {10, {2, 2, 2}}};
    FigureClip clip = figure.clip("grow", 100, 10);
    clip.scale("thing", growth);
    clip.move("ghost", {{0, {0, 0, 0}}});
    clip.move("arm", rise(0, 10));
    figure.clip("nothing", 100, 10).scale("arm", growth);
    convert();
    EXPECT_EQ(report.warnings(), (Lines{"clip 'grow': 1 node that the model does not have left out",
                                        "clip 'grow': scaling of 1 node left out, a clip holds "
                                        "places and rotations alone"}));
}

TEST_F(ClipsTest, ThatMoveNothingAreLeftOut) {
    figure.clip("still", 100, 10).move("arm", {{0, {0, 0, 0}}});
    EXPECT_TRUE(convert().empty());
    EXPECT_EQ(report.notes(), Lines{"clip 'still' left out: it moves nothing"});
}

// Scaling a parent moves its children apart, which clips can contain.
TEST_F(ClipsTest, MoveTheChildrenOfWhatIsScaled) {
    figure.node("child", figure.node("parent"), {0, 3, 0});
    figure.clip("grow", 100, 10).scale("parent", {{0, {1, 1, 1}}, {10, {2, 2, 2}}});
    const Clip &clip = convert().at(0);
    EXPECT_EQ(clip.frames.bones, Lines{"child"});
    EXPECT_EQ(heights(clip), (std::vector<float>{3, 6}));
    EXPECT_EQ(joined(report.warnings()), "");
}

TEST_F(ClipsTest, ShowTheModelsPoseWhereTheFileHasAnother) {
    figure.node("high", figure.node("low"), {0, 1, 0});
    aiMesh &mesh = figure.triangle(figure.node("body"));
    addBone(mesh, "low", {0, 0, 0}, {{0, 0.5f}, {1, 1}, {2, 1}});
    addBone(mesh, "high", {0, -2, 0}, {{0, 0.5f}});
    const Clip &clip = convert().at(0);
    EXPECT_EQ(clip.name, "pose");
    EXPECT_EQ(clip.animation, -1);
    EXPECT_EQ(clip.frames.bones, Lines{"high"});
    EXPECT_EQ(heights(clip), std::vector<float>{1});
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
    ConvertOptions options = optionsOf("arm.b3d");
    options.fps = 10;
    const Made made = make(options);
    ASSERT_EQ(made.clips.size(), 1u) << joined(made.report.warnings());
    EXPECT_EQ(heights(made.clips[0]), (std::vector<float>{1, 2, 3, 4, 5}));
}

// ---- motions -------------------------------------------------------------------------------

double xAt(const aiNodeAnim &channel, double ticks) {
    return Motion(channel).at(ticks, aiMatrix4x4()).offset.x;
}

TEST(Motion, TurnsTheShorterWay) {
    const Quaternion a{1, 0, 0, 0}, b{-std::cos(0.1), 0, -std::sin(0.1), 0};
    const Quaternion middle = interpolate(a, b, 0.5);
    EXPECT_NEAR(std::abs(middle.w), std::cos(0.05), 1e-12);
    EXPECT_NEAR(std::abs(middle.y), std::sin(0.05), 1e-12);
}

TEST(Motion, ExtrapolatesAsItStates) {
    Figure figure;
    aiNodeAnim &channel = figure.clip("x", 1, 1).move("n", {{1, {1, 0, 0}}, {2, {2, 0, 0}}});
    struct Case {
        aiAnimBehaviour behaviour;
        double ticks, x;
    };
    for (const Case &c :
         {Case{aiAnimBehaviour_DEFAULT, 0, 1}, Case{aiAnimBehaviour_DEFAULT, 3, 2},
          Case{aiAnimBehaviour_LINEAR, 0, 0}, Case{aiAnimBehaviour_LINEAR, 4, 4},
          Case{aiAnimBehaviour_REPEAT, 0.25, 1.25}, Case{aiAnimBehaviour_REPEAT, 4.5, 1.5}}) {
        channel.mPreState = channel.mPostState = c.behaviour;
        EXPECT_EQ(xAt(channel, c.ticks), c.x) << c.behaviour << " at " << c.ticks;
    }
}

TEST(Motion, SkipsKeysThatAreNotFinite) {
    Figure figure;
    FigureClip clip = figure.clip("x", 1, 1);
    EXPECT_EQ(xAt(clip.move("n", {{0, {1, 0, 0}}, {1, {std::nanf(""), 0, 0}}, {2, {3, 0, 0}}}), 1),
              2);
    const Motion turned(clip.turn("n", {{0, aiQuaternion(0, 0, 0, 0)}}));
    EXPECT_EQ(turned.at(1, aiMatrix4x4()).linear[0][0], 1);
}

} // namespace
