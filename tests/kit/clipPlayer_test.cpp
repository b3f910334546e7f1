// The clip player against poses that are computed here, from matrices and quaternions of its own.

#include "ravolt/RVANIM.h"
#include "ravolt/RVNODE.h"
#include "ravolt/kit/clipPlayer.h"
#include "tests/support/logReader.h"
#include "tests/support/recorder.h"

#include <array>
#include <cmath>
#include <map>
#include <numbers>

namespace ravolt::test {
namespace {

using kit::ClipOptions;
using kit::ClipPlayer;
using Names = std::vector<std::string>;

// --- quaternions, and the rotation of a node as a matrix by rows

struct Quat {
    double w, x, y, z;
};

Quat about(double degrees, double x, double y, double z) {
    const double half = degrees * std::numbers::pi / 360;
    return {std::cos(half), std::sin(half) * x, std::sin(half) * y, std::sin(half) * z};
}

Quat times(const Quat &a, const Quat &b) {
    return {a.w * b.w - a.x * b.x - a.y * b.y - a.z * b.z,
            a.w * b.x + a.x * b.w + a.y * b.z - a.z * b.y,
            a.w * b.y + a.y * b.w + a.z * b.x - a.x * b.z,
            a.w * b.z + a.z * b.w + a.x * b.y - a.y * b.x};
}

Quat eulers(double x, double y, double z) {
    return times(about(x, 1, 0, 0), times(about(y, 0, 1, 0), about(z, 0, 0, 1)));
}

// The rotation from a to b to the power t, after a: another way than the sum of sines.
Quat between(const Quat &a, const Quat &b, double t) {
    Quat step = times({a.w, -a.x, -a.y, -a.z}, b);
    if (step.w < 0)
        step = {-step.w, -step.x, -step.y, -step.z};
    const double sine = std::sqrt(step.x * step.x + step.y * step.y + step.z * step.z);
    if (sine < 1e-12)
        return a;
    const double degrees = 2 * std::atan2(sine, step.w) * 180 / std::numbers::pi;
    return times(a, about(degrees * t, step.x / sine, step.y / sine, step.z / sine));
}

using Rows = std::array<double, 9>;

Rows matrixOf(const Quat &q) {
    const auto turned = [&](double x, double y, double z) {
        const Quat v = times(times(q, {0, x, y, z}), {q.w, -q.x, -q.y, -q.z});
        return std::array{v.x, v.y, v.z};
    };
    const auto x = turned(1, 0, 0), y = turned(0, 1, 0), z = turned(0, 0, 1);
    return {x[0], y[0], z[0], x[1], y[1], z[1], x[2], y[2], z[2]};
}

// What the engine makes of a node's angles: glRotatef about X, Y and Z.
Rows matrixOf(const RVNODE &node) {
    const Z3MVECTOR3D r = node.getRotation();
    Z3MMATRIX x, y, z;
    x.setRotation(r.x, 1, 0, 0);
    y.setRotation(r.y, 0, 1, 0);
    z.setRotation(r.z, 0, 0, 1);
    const Z3MMATRIX m = z * y * x; // the last factor is applied last, to the left
    return {m.e[0], m.e[4], m.e[8], m.e[1], m.e[5], m.e[9], m.e[2], m.e[6], m.e[10]};
}

testing::AssertionResult isTurned(const RVNODE *node, const Quat &expected, double limit = 2e-6) {
    const Rows actual = matrixOf(*node), wanted = matrixOf(expected);
    for (std::size_t i = 0; i < 9; ++i)
        if (!(std::fabs(actual[i] - wanted[i]) <= limit))
            return testing::AssertionFailure() << node->getName() << ": element " << i << " is "
                                               << actual[i] << ", not " << wanted[i];
    return testing::AssertionSuccess();
}

// --- a skeleton of three bones, and clips for it

class ClipPlayerTest : public testing::Test {
  protected:
    RVNODE *root = bone("root", nullptr), *hip = bone("hip", root), *arm = bone("arm", hip);

    ClipPlayerTest() { arm->setRotation(5, 10, 15); }
    ~ClipPlayerTest() override {
        RVANIM::cleanUp();
        RVNODE::cleanUp();
    }

    static RVNODE *bone(const char *name, RVNODE *parent) {
        auto *node = new RVNODE;
        node->setName(name);
        if (parent)
            node->link(parent);
        return node;
    }

    // A clip of these bones with as many frames, all of them zero.
    static RVANIM *clipOf(const Names &bones, unsigned int frames) {
        auto *clip = new RVANIM;
        clip->setNumberOfBones(static_cast<unsigned int>(bones.size()));
        clip->setNumberOfFrames(frames);
        for (unsigned int i = 0; i < bones.size(); ++i)
            clip->setBoneName(i, bones[i].c_str());
        return clip;
    }

    // One bone that turns about Y, by so many degrees in each frame.
    static RVANIM *turning(const char *name, unsigned int frames, float degreesAFrame) {
        RVANIM *clip = clipOf({name}, frames);
        for (unsigned int frame = 0; frame < frames; ++frame)
            clip->setFrame(frame, 0, 0, degreesAFrame * static_cast<float>(frame), 0);
        return clip;
    }

    static ClipOptions at(float framesPerSecond, bool looping = true, float speed = 1,
                          float fade = 0) {
        return {framesPerSecond, speed, looping, fade};
    }
};

// --- poses

TEST_F(ClipPlayerTest, APoseBetweenFramesIsOnTheShorterArc) {
    RVANIM *clip = clipOf({"hip", "arm"}, 3);
    clip->setFrame(0, 0, 10, 20, 30);
    clip->setFrame(1, 0, -70, 95, 200);
    clip->setFrame(0, 1, 0, 170, 0);
    clip->setFrame(1, 1, 0, -170, 0); // 20 degrees further, through 180
    ClipPlayer player(root);
    ASSERT_TRUE(player.play(clip, at(10, false)));
    for (const float part : {0.0f, 0.25f, 0.5f, 0.9f, 1.0f}) {
        ASSERT_TRUE(player.seek(part / 10));
        ASSERT_TRUE(player.update(0));
        EXPECT_TRUE(isTurned(hip, between(eulers(10, 20, 30), eulers(-70, 95, 200), part)));
        EXPECT_TRUE(isTurned(arm, eulers(0, 170 + 20 * part, 0))) << part;
    }
}

std::array<float, 3> numbersOf(const Z3MVECTOR3D &v) { return {v.x, v.y, v.z}; }

TEST_F(ClipPlayerTest, AWholeFrameIsExactlyWhatTheClipAppliesAlsoAtThePolesOfTheAngles) {
    const float angles[][3] = {{0, 90, 0},    {30, 90, 40},  {30, -90, 40}, {1, 89.999f, 2},
                               {-120, 45, 7}, {180, 0, 180}, {0, 180, 0},   {725, -3, 1000}};
    for (const auto &[x, y, z] : angles) {
        RVANIM *clip = clipOf({"hip"}, 2);
        clip->setFrame(0, 0, 1, 2, 3);
        clip->setFrame(1, 0, x, y, z);
        clip->getKeyframe(1, 0)->translation = Z3MVECTOR3D(x / 3, y / 7, 1e9f);
        clip->setTranslating(true);
        ClipPlayer player(root);
        ASSERT_TRUE(player.play(clip));
        ASSERT_TRUE(player.seekFrame(1));
        ASSERT_TRUE(player.update(0));
        EXPECT_EQ(numbersOf(hip->getRotation()), (std::array{x, y, z}));
        EXPECT_EQ(numbersOf(hip->getPosition()), (std::array{x / 3, y / 7, 1e9f}));
    }
}

TEST_F(ClipPlayerTest, TheRestPoseReturnsExactly) {
    arm->setRotation(0.1f, 90, 723.4f);
    arm->setPosition(0.1f, 1e-7f, 3e8f);
    ClipPlayer player(root);
    RVANIM *clip = turning("arm", 3, 20);
    clip->setTranslating(true);
    player.play(clip);
    player.update(0.01f);
    EXPECT_FALSE(isTurned(arm, eulers(0.1f, 90, 723.4f)));
    player.stop();
    player.update(0);
    EXPECT_EQ(numbersOf(arm->getRotation()), (std::array{0.1f, 90.0f, 723.4f}));
    EXPECT_EQ(numbersOf(arm->getPosition()), (std::array{0.1f, 1e-7f, 3e8f}));
}

TEST_F(ClipPlayerTest, WholeFramesAreShownWithoutPosesBetweenThem) {
    ClipPlayer player(root);
    ClipOptions options = at(10);
    options.wholeFrames = true;
    player.play(turning("hip", 4, 17.3f), options); // a loop of 0.4 seconds
    for (const auto &[seconds, frame] : {std::pair{0.05f, 0u},
                                         {0.1f, 1u},
                                         {0.1f, 2u},
                                         {0.06f, 3u},
                                         {0.08f, 3u},
                                         {0.02f, 0u},
                                         {0.1f, 1u}}) {
        player.update(seconds);
        EXPECT_EQ(player.getFrame(), frame) << seconds;
        EXPECT_EQ(hip->getRotation().y, 17.3f * static_cast<float>(frame));
    }
}

TEST_F(ClipPlayerTest, EachFrameIsReachedByItsNumberAtEveryRate) {
    RVANIM *clip = turning("hip", 101, 3.6f); // its last frame equals the first
    for (const float rate : {7.0f, 24.0f, 29.97f, 30.0f, 1000.0f}) {
        ClipPlayer player(root);
        player.play(clip, at(rate));
        for (unsigned int frame = 0; frame <= 100; ++frame) {
            ASSERT_TRUE(player.seekFrame(frame));
            player.update(0);
            EXPECT_EQ(player.getFrame(), frame) << rate;
            EXPECT_EQ(hip->getRotation().y, 3.6f * static_cast<float>(frame)) << rate;
        }
        EXPECT_FLOAT_EQ(player.getTime(), 100 / rate);
    }
}

TEST_F(ClipPlayerTest, PositionsMoveOnlyWhereTheClipTranslates) {
    RVANIM *clip = clipOf({"hip"}, 2);
    clip->getKeyframe(0, 0)->translation = Z3MVECTOR3D(1, 2, 3);
    clip->getKeyframe(1, 0)->translation = Z3MVECTOR3D(3, 2, -1);
    hip->setPosition(7, 8, 9);
    ClipPlayer player(root);
    ASSERT_TRUE(player.play(clip, at(1, false)));
    player.update(0.25f);
    EXPECT_EQ(hip->getPosition().x, 7);
    clip->setTranslating(true);
    player.update(0);
    EXPECT_FLOAT_EQ(hip->getPosition().x, 1.5f);
    EXPECT_FLOAT_EQ(hip->getPosition().y, 2);
    EXPECT_FLOAT_EQ(hip->getPosition().z, 2);
}

TEST_F(ClipPlayerTest, BonesThatNoClipMovesAreNotChanged) {
    RVANIM *clip = clipOf({"hip", "nobody"}, 2);
    ClipPlayer player(root);
    ASSERT_TRUE(player.play(clip));
    arm->setRotation(1, 2, 3);
    player.update(0.1f);
    EXPECT_TRUE(isTurned(arm, eulers(1, 2, 3)));
    EXPECT_EQ(arm->getRotation().y, 2);
}

TEST_F(ClipPlayerTest, OfEqualNamesTheFirstInTheTreeMovesAsWithApply) {
    RVNODE *second = bone("hip", arm);
    RVNODE *third = bone("hip", root);
    RVANIM *clip = turning("hip", 2, 40);
    ClipPlayer player(root);
    ASSERT_TRUE(player.play(clip, at(1, false)));
    player.update(1);
    EXPECT_TRUE(isTurned(hip, eulers(0, 40, 0)));
    EXPECT_EQ(second->getRotation().y, 0);
    EXPECT_EQ(third->getRotation().y, 0);
}

// --- time

TEST_F(ClipPlayerTest, OfEqualNamesInTheClipTheLastMovesTheBoneAsWithApply) {
    RVANIM *clip = clipOf({"hip", "arm", "hip"}, 1);
    clip->setFrame(0, 0, 0, 40, 0);
    clip->setFrame(0, 2, 0, 70, 0);
    ClipPlayer player(root);
    player.play(clip);
    player.update(0);
    EXPECT_EQ(hip->getRotation().y, 70);
    clip->apply(0, root);
    EXPECT_EQ(hip->getRotation().y, 70);
}

TEST_F(ClipPlayerTest, ALoopDoesNotShowALastFrameThatEqualsTheFirst) {
    RVANIM *doubled = turning("hip", 5, 90); // 0, 90, 180, 270, 360
    ClipPlayer player(root);
    ASSERT_TRUE(player.play(doubled, at(10)));
    EXPECT_FLOAT_EQ(player.getDuration(), 0.4f);
    player.update(0.45f);
    EXPECT_NEAR(player.getTime(), 0.05f, 1e-6);
    EXPECT_TRUE(isTurned(hip, eulers(0, 45, 0)));
}

TEST_F(ClipPlayerTest, AnotherLoopGoesFromTheLastFrameToTheFirst) {
    ClipPlayer player(root);
    ASSERT_TRUE(player.play(turning("hip", 4, 90), at(10))); // 0, 90, 180, 270
    EXPECT_FLOAT_EQ(player.getDuration(), 0.4f);
    player.update(0.35f);
    EXPECT_TRUE(isTurned(hip, eulers(0, 315, 0)));
    player.update(0.1f);
    EXPECT_TRUE(isTurned(hip, eulers(0, 45, 0)));
}

TEST_F(ClipPlayerTest, ALoopOfPositionsIsClosedOnlyIfTheyAreEqual) {
    RVANIM *clip = clipOf({"hip"}, 3);
    clip->setTranslating(true);
    clip->getKeyframe(2, 0)->translation = Z3MVECTOR3D(0, 0, 5);
    ClipPlayer player(root);
    ASSERT_TRUE(player.play(clip, at(1)));
    EXPECT_FLOAT_EQ(player.getDuration(), 3);
    clip->setTranslating(false);
    ASSERT_TRUE(player.play(clip, at(1)));
    EXPECT_FLOAT_EQ(player.getDuration(), 2);
}

TEST_F(ClipPlayerTest, AClipThatDoesNotLoopEndsWithItsLastFrame) {
    ClipPlayer player(root);
    EXPECT_TRUE(player.isFinished());
    ASSERT_TRUE(player.play(turning("hip", 4, 30), at(10, false)));
    EXPECT_FLOAT_EQ(player.getDuration(), 0.3f);
    player.update(0.25f);
    EXPECT_FALSE(player.isFinished());
    player.update(17);
    EXPECT_TRUE(player.isFinished());
    EXPECT_TRUE(isTurned(hip, eulers(0, 90, 0)));
}

TEST_F(ClipPlayerTest, SpeedScalesTimeAndNegativeSpeedPlaysBackwardsFromTheEnd) {
    RVANIM *clip = turning("hip", 4, 30);
    ClipPlayer player(root);
    ASSERT_TRUE(player.play(clip, at(10, false, 2)));
    player.update(0.05f);
    EXPECT_TRUE(isTurned(hip, eulers(0, 30, 0)));
    ASSERT_TRUE(player.setSpeed(-0.5f));
    player.update(0.1f);
    EXPECT_TRUE(isTurned(hip, eulers(0, 15, 0)));
    player.update(1);
    EXPECT_TRUE(player.isFinished());

    ASSERT_TRUE(player.play(clip, at(10, false, -1)));
    player.update(0.05f);
    EXPECT_TRUE(isTurned(hip, eulers(0, 75, 0)));
    ASSERT_TRUE(player.play(clip, at(10, true, -1))); // closed by the way from 90 to 0
    player.update(0.75f);
    EXPECT_TRUE(isTurned(hip, eulers(0, 15, 0)));
}

TEST_F(ClipPlayerTest, ThePoseDoesNotDependOnTheFrameRate) {
    RVANIM *clip = turning("hip", 7, 40);
    ClipPlayer one(root), many(root);
    one.play(clip, at(30, true, 1.7f));
    many.play(clip, at(30, true, 1.7f));
    one.update(2);
    const Rows whole = matrixOf(*hip);
    for (int i = 0; i < 1024; ++i)
        many.update(2.0f / 1024);
    for (std::size_t i = 0; i < 9; ++i)
        EXPECT_NEAR(matrixOf(*hip)[i], whole[i], 1e-5);
}

TEST_F(ClipPlayerTest, AClipOfOneFrameIsAPose) {
    ClipPlayer player(root);
    RVANIM *clip = clipOf({"hip"}, 1);
    clip->setFrame(0, 0, 0, 50, 0);
    for (const bool looping : {true, false}) {
        ASSERT_TRUE(player.play(clip, at(30, looping)));
        EXPECT_EQ(player.getDuration(), 0);
        player.update(3600);
        EXPECT_TRUE(isTurned(hip, eulers(0, 50, 0)));
    }
}

TEST_F(ClipPlayerTest, AClipMayLoseFramesAndBonesWhileItPlays) {
    RVANIM *clip = turning("hip", 1024, 1);
    clip->setNumberOfFrames(60000);
    ClipPlayer player(root);
    ASSERT_TRUE(player.play(clip, at(1, false)));
    EXPECT_FLOAT_EQ(player.getDuration(), 1023);
    clip->setNumberOfFrames(1);
    clip->setNumberOfBones(0);
    player.update(2000);
    EXPECT_TRUE(isTurned(hip, eulers(0, 1023, 0), 1e-5));
}

// --- fades

TEST_F(ClipPlayerTest, AFadeMixesTwoClipsAlongTheShorterArcBetweenThem) {
    RVANIM *first = clipOf({"hip"}, 1), *second = clipOf({"hip"}, 1);
    first->setFrame(0, 0, 20, 170, 0);
    second->setFrame(0, 0, 0, -150, 40);
    ClipPlayer player(root);
    player.play(first);
    player.update(0);
    ASSERT_TRUE(player.play(second, at(30, true, 1, 2)));
    for (int quarter = 1; quarter <= 4; ++quarter) {
        player.update(0.5f);
        const double part = quarter / 4.0;
        EXPECT_TRUE(isTurned(hip, between(eulers(20, 170, 0), eulers(0, -150, 40), part)));
        EXPECT_FLOAT_EQ(player.getWeight(second), static_cast<float>(part));
        EXPECT_FLOAT_EQ(player.getWeight(first), static_cast<float>(1 - part));
    }
    player.update(0.5f);
    EXPECT_EQ(player.getWeight(first), 0);
    EXPECT_EQ(player.getWeight(second), 1);
}

TEST_F(ClipPlayerTest, AFadeWithinAFadeDoesNotJumpAndTheWeightsAddUpToOne) {
    RVANIM *clips[3];
    for (int i = 0; i < 3; ++i) {
        clips[i] = clipOf({"hip"}, 1);
        clips[i]->setFrame(0, 0, 0, 40.0f * static_cast<float>(i), 0);
    }
    ClipPlayer player(root);
    player.play(clips[0]);
    player.update(0);
    player.play(clips[1], at(30, true, 1, 1));
    player.update(0.6f); // 0.4 and 0.6
    EXPECT_TRUE(isTurned(hip, eulers(0, 24, 0)));
    player.play(clips[2], at(30, true, 1, 1));
    player.update(0);
    EXPECT_TRUE(isTurned(hip, eulers(0, 24, 0)));
    player.update(0.25f); // 0.3, 0.45, 0.25
    EXPECT_TRUE(isTurned(hip, eulers(0, 0.45 * 40 + 0.25 * 80, 0)));
    EXPECT_NEAR(player.getWeight(clips[0]), 0.3, 1e-6);
    EXPECT_NEAR(player.getWeight(clips[1]), 0.45, 1e-6);
    EXPECT_NEAR(player.getWeight(clips[2]), 0.25, 1e-6);
    for (int i = 0; i < 40; ++i) {
        player.update(0.01f);
        if (i % 7 == 0)
            player.play(clips[i % 3], at(30, true, 1, 0.13f));
        EXPECT_NEAR(player.getWeight(clips[0]) + player.getWeight(clips[1]) +
                        player.getWeight(clips[2]),
                    1, 1e-6);
    }
}

TEST_F(ClipPlayerTest, TheFirstClipFadesInFromTheRestPoseAndStopFadesBackToIt) {
    RVANIM *clip = clipOf({"arm"}, 1);
    clip->setFrame(0, 0, 5, 10, 75);
    clip->setTranslating(true);
    clip->getKeyframe(0, 0)->translation = Z3MVECTOR3D(4, 0, 0);
    ClipPlayer player(root);
    player.play(clip, at(30, true, 1, 1));
    player.update(0.25f);
    EXPECT_TRUE(isTurned(arm, eulers(5, 10, 30)));
    EXPECT_FLOAT_EQ(arm->getPosition().x, 1);
    player.update(1);
    EXPECT_TRUE(isTurned(arm, eulers(5, 10, 75)));
    ASSERT_TRUE(player.stop(1));
    player.update(0.5f);
    EXPECT_TRUE(isTurned(arm, eulers(5, 10, 45)));
    EXPECT_EQ(player.getClip(), clip);
    player.update(0.5f);
    EXPECT_TRUE(isTurned(arm, eulers(5, 10, 15)));
    EXPECT_FLOAT_EQ(arm->getPosition().x, 0);
    EXPECT_EQ(player.getClip(), nullptr);
    arm->setRotation(1, 1, 1); // from here on it is the application's
    player.update(0.5f);
    EXPECT_EQ(arm->getRotation().x, 1);
}

TEST_F(ClipPlayerTest, ABoneThatTheNextClipDoesNotMoveReturnsToTheRestPose) {
    RVANIM *both = clipOf({"hip", "arm"}, 1), *one = clipOf({"hip"}, 1);
    both->setFrame(0, 1, 5, 10, 55);
    ClipPlayer player(root);
    player.play(both);
    player.update(0);
    player.play(one, at(30, true, 1, 1));
    player.update(0.25f);
    EXPECT_TRUE(isTurned(arm, eulers(5, 10, 45)));
    player.update(0.75f);
    EXPECT_TRUE(isTurned(arm, eulers(5, 10, 15)));

    player.play(both);
    player.update(0);
    EXPECT_TRUE(isTurned(arm, eulers(5, 10, 55)));
    player.play(one); // without a fade
    player.update(0);
    EXPECT_TRUE(isTurned(arm, eulers(5, 10, 15)));
}

// --- layers

TEST_F(ClipPlayerTest, ALayerPlaysOnItsBonesAloneByItsWeight) {
    RVANIM *base = clipOf({"hip", "arm"}, 1), *over = clipOf({"hip", "arm"}, 1);
    base->setFrame(0, 0, 10, 0, 0);
    base->setFrame(0, 1, 20, 0, 0);
    over->setFrame(0, 0, 0, 0, 90);
    over->setFrame(0, 1, 0, 0, 60);
    ClipPlayer player(root);
    const std::size_t upper = player.addLayer({"arm"});
    EXPECT_EQ(upper, 1u);
    player.play(base);
    ASSERT_TRUE(player.play(over, {}, upper));
    player.update(0);
    EXPECT_TRUE(isTurned(hip, eulers(10, 0, 0)));
    EXPECT_TRUE(isTurned(arm, eulers(0, 0, 60)));
    ASSERT_TRUE(player.setLayerWeight(upper, 0.25f));
    player.update(0);
    EXPECT_TRUE(isTurned(arm, between(eulers(20, 0, 0), eulers(0, 0, 60), 0.25)));
    ASSERT_TRUE(player.stop(1, upper));
    player.update(0.5f);
    EXPECT_TRUE(isTurned(arm, between(eulers(20, 0, 0), eulers(0, 0, 60), 0.125)));
    player.update(0.5f);
    EXPECT_TRUE(isTurned(arm, eulers(20, 0, 0)));
}

TEST_F(ClipPlayerTest, LayersHaveTimesSpeedsAndFadesOfTheirOwn) {
    ClipPlayer player(root);
    const std::size_t upper = player.addLayer(ClipPlayer::bonesFrom(arm));
    player.play(turning("hip", 11, 10), at(10, false));
    player.play(turning("arm", 11, 10), at(10, false, 2), upper);
    player.update(0.2f);
    EXPECT_FLOAT_EQ(player.getTime(), 0.2f);
    EXPECT_FLOAT_EQ(player.getTime(upper), 0.4f);
    EXPECT_TRUE(isTurned(hip, eulers(0, 20, 0)));
    EXPECT_TRUE(isTurned(arm, eulers(0, 40, 0)));
}

TEST_F(ClipPlayerTest, BonesFromANodeAreItsOwnAndAllBelow) {
    bone("leg", hip);
    bone("hand", arm);
    EXPECT_EQ(ClipPlayer::bonesFrom(hip), (Names{"hip", "arm", "hand", "leg"}));
    EXPECT_EQ(ClipPlayer::bonesFrom(nullptr), Names{});
}

// --- events

class ClipEvents : public ClipPlayerTest {
  protected:
    RVANIM *clip = turning("hip", 11, 36); // a loop of one second at ten frames per second
    ClipPlayer player{root};
    Names names;

    ClipEvents() {
        player.setEventHandler([this](const std::string &name) { names.push_back(name); });
        player.addEvent(clip, 0.75f, "right");
        player.addEvent(clip, 0.25f, "left");
    }

    Names during(float seconds) {
        names.clear();
        player.update(seconds);
        return names;
    }
};

TEST_F(ClipEvents, OccurOnceInEachPassInTheirOrder) {
    player.play(clip, at(10));
    EXPECT_EQ(during(0.25f), Names{"left"}) << "exactly at its time";
    EXPECT_EQ(during(0), Names{}) << "and not again";
    EXPECT_EQ(during(0.45f), Names{});
    EXPECT_EQ(during(0.1f), Names{"right"});
    EXPECT_EQ(during(3.0f), (Names{"left", "right", "left", "right", "left", "right"}));
    player.setSpeed(-1);
    EXPECT_EQ(during(1.1f), (Names{"right", "left", "right"}));
}

TEST_F(ClipEvents, AtBothEndsOfThePassOccurOnceInEach) {
    player.addEvent(clip, 0, "begin");
    player.addEvent(clip, 1, "end");
    player.play(clip, at(10));
    EXPECT_EQ(during(0), Names{"begin"});
    EXPECT_EQ(during(1), (Names{"left", "right", "end"}));
    EXPECT_EQ(during(0), Names{}) << "the next pass begins with the next step";
    EXPECT_EQ(during(0.1f), Names{"begin"});
    player.play(clip, at(10, true, -1));
    EXPECT_EQ(during(0), Names{"end"});
    EXPECT_EQ(during(1.5f), (Names{"right", "left", "begin", "end", "right"}));
    player.play(clip, at(10, false));
    EXPECT_EQ(during(100), (Names{"begin", "left", "right", "end"}));
    EXPECT_EQ(during(100), Names{}) << "it has ended";
}

TEST_F(ClipEvents, OccurAsOftenAtAnyFrameRateAndSpeed) {
    player.addEvent(clip, 0, "begin");
    player.addEvent(clip, 1, "end");
    for (const float speed : {1.0f, -1.0f, 0.37f, -2.9f})
        for (const int updates : {1, 7, 60, 1000, 9999}) {
            player.play(clip, at(10, true, speed));
            std::map<std::string, int> counted;
            const float seconds = 10.5f / std::fabs(speed) / static_cast<float>(updates);
            for (int i = 0; i < updates; ++i)
                for (const std::string &name : during(seconds))
                    ++counted[name];
            const bool back = speed < 0;
            EXPECT_EQ(counted["begin"], back ? 10 : 11) << speed << ", " << updates;
            EXPECT_EQ(counted["end"], back ? 11 : 10) << speed << ", " << updates;
            EXPECT_EQ(counted["left"], back ? 10 : 11) << speed << ", " << updates;
            EXPECT_EQ(counted["right"], back ? 11 : 10) << speed << ", " << updates;
        }
}

TEST_F(ClipEvents, DoNotOccurOnTheWayOfASeekButAtItsTarget) {
    player.play(clip, at(10));
    player.seek(0.75f);
    EXPECT_EQ(during(0.1f), Names{"right"});
}

TEST_F(ClipEvents, OccurWhileTheClipFadesOutAndNotAfterwards) {
    RVANIM *other = turning("hip", 2, 1);
    player.play(clip, at(10));
    player.update(0);
    player.play(other, at(10, true, 1, 0.5f));
    EXPECT_EQ(during(0.3f), Names{"left"});
    EXPECT_EQ(during(0.3f), Names{});
    EXPECT_EQ(during(0.3f), Names{});
}

TEST_F(ClipEvents, MayStartClipsAndSetTheHandler) {
    RVANIM *other = turning("hip", 2, 1);
    player.setEventHandler([&](const std::string &name) {
        names.push_back(name);
        player.play(other);
        player.setEventHandler(nullptr);
    });
    player.play(clip, at(10));
    EXPECT_EQ(during(0.8f), (Names{"left", "right"})) << "the two of this update";
    EXPECT_EQ(player.getClip(), other);
    EXPECT_EQ(during(0.8f), Names{});
}

// --- what is refused

class ClipPlayerFaults : public ClipPlayerTest {
  protected:
    ClipPlayerFaults() { markLog(); }
};

TEST_F(ClipPlayerFaults, BadParametersAreRefusedWithALine) {
    RVANIM *clip = turning("hip", 11, 36);
    const float nan = std::nanf("");
    ClipPlayer player(root);
    const char *badPlay = "   [!] Invalid params @ ClipPlayer::play\n";
    EXPECT_FALSE(player.play(nullptr));
    EXPECT_LOGGED_EXACTLY(badPlay);
    EXPECT_FALSE(player.play(clipOf({"hip"}, 0)));
    EXPECT_LOGGED_EXACTLY(badPlay);
    EXPECT_FALSE(player.play(clip, {}, 1));
    EXPECT_LOGGED_EXACTLY(badPlay);
    for (const ClipOptions &options :
         {at(0), at(nan), at(1001), at(30, true, 101), at(30, true, nan), at(30, true, 1, -1)}) {
        EXPECT_FALSE(player.play(clip, options));
        EXPECT_LOGGED_EXACTLY(badPlay);
    }
    EXPECT_EQ(player.getClip(), nullptr);
    for (const float seconds : {-0.1f, nan, HUGE_VALF, 3601.0f}) {
        EXPECT_FALSE(player.update(seconds));
        EXPECT_LOGGED_EXACTLY("   [!] Invalid params @ ClipPlayer::update\n");
    }
    EXPECT_FALSE(player.setSpeed(1));
    EXPECT_LOGGED_EXACTLY("   [!] Invalid params @ ClipPlayer::setSpeed\n");
    EXPECT_FALSE(player.seek(0));
    EXPECT_LOGGED_EXACTLY("   [!] Invalid params @ ClipPlayer::seek\n");
    player.play(clip, at(10));
    for (const float seconds : {-1.0f, 1.01f, nan}) {
        EXPECT_FALSE(player.seek(seconds));
        EXPECT_LOGGED_EXACTLY("   [!] Invalid params @ ClipPlayer::seek\n");
    }
    EXPECT_FALSE(player.seekFrame(11));
    EXPECT_LOGGED_EXACTLY("   [!] Invalid params @ ClipPlayer::seekFrame\n");
    EXPECT_FALSE(player.seekFrame(0, 1));
    EXPECT_LOGGED_EXACTLY("   [!] Invalid params @ ClipPlayer::seekFrame\n");
    EXPECT_EQ(player.getFrame(7), 0u);
    EXPECT_FALSE(player.stop(0, 3));
    EXPECT_LOGGED_EXACTLY("   [!] Invalid params @ ClipPlayer::stop\n");
    EXPECT_FALSE(player.addEvent(nullptr, 0, "x"));
    EXPECT_LOGGED_EXACTLY("   [!] Invalid params @ ClipPlayer::addEvent\n");
    EXPECT_FALSE(player.addEvent(clip, nan, "x"));
    EXPECT_LOGGED_EXACTLY("   [!] Invalid params @ ClipPlayer::addEvent\n");
    EXPECT_FALSE(player.setLayerWeight(0, 1.5f));
    EXPECT_LOGGED_EXACTLY("   [!] Invalid params @ ClipPlayer::setLayerWeight\n");
    EXPECT_FLOAT_EQ(player.getTime(7), 0);
    EXPECT_EQ(player.getWeight(clip, 7), 0);
}

TEST_F(ClipPlayerFaults, UnknownBonesAreReported) {
    ClipPlayer player(root);
    player.addLayer({"arm", "tail"});
    EXPECT_LOGGED_EXACTLY("   [!] Bone tail not found @ ClipPlayer::addLayer\n");
    RVANIM *clip = turning("wing", 2, 1);
    EXPECT_FALSE(player.play(clip));
    EXPECT_LOGGED_EXACTLY("   [!] No bone of clip " + std::string(clip->getFilename()) +
                          " found @ ClipPlayer::play\n");
}

TEST_F(ClipPlayerFaults, WithoutATreeNothingPlays) {
    ClipPlayer player(nullptr);
    EXPECT_LOGGED_EXACTLY("   [!] Invalid params @ ClipPlayer::ClipPlayer\n");
    EXPECT_FALSE(player.play(turning("hip", 2, 1)));
    EXPECT_TRUE(player.update(1));
}

TEST_F(ClipPlayerFaults, ADeletedClipStopsAndItsEventsAreGone) {
    ClipPlayer player(root);
    int events = 0;
    player.setEventHandler([&](const std::string &) { ++events; });
    RVANIM *first = turning("hip", 11, 36), *second = turning("hip", 11, 0);
    player.addEvent(second, 0.5f, "x");
    player.play(first, at(10));
    player.update(0.1f);
    player.play(second, at(10, true, 1, 1));
    player.update(0.1f);
    delete second;
    EXPECT_EQ(player.getClip(), nullptr);
    EXPECT_TRUE(player.update(5));
    delete first;
    EXPECT_TRUE(player.update(5));
    EXPECT_EQ(events, 0);
    EXPECT_TRUE(isTurned(hip, eulers(0, 0, 0)));
}

} // namespace
} // namespace ravolt::test
