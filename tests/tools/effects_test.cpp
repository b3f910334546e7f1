// What each effect makes of a picture of the stage.

#include "tools/stage/effects.h"

#include "tests/tools/support.h"
#include "tools/stage/engine.h"
#include "tools/stage/glow.h"
#include "tools/stage/picture.h"
#include "tools/stage/stage.h"
#include "tools/writers/rveWriter.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <gtest/gtest.h>
#include <ravolt.h>

namespace {

using namespace tool_test;

constexpr WindowSize size = {240, 160};

Effects with(const std::vector<Effect> &wanted) {
    Effects effects;
    for (const Effect effect : wanted)
        effects.switchOn(effect);
    return effects;
}

TEST(EffectTables, HaveEachRowAtItsPlace) {
    for (std::size_t i = 0; i < numberOfEffects; ++i)
        EXPECT_EQ(static_cast<std::size_t>(effectTable()[i].effect), i);
    for (std::size_t i = 0; i < numberOfEffectParameters; ++i) {
        const EffectParameterRow &row = effectParameterTable()[i];
        EXPECT_EQ(static_cast<std::size_t>(row.parameter), i);
        EXPECT_LE(row.lowest, row.start) << row.option;
        EXPECT_LE(row.start, row.highest) << row.option;
        EXPECT_GT(row.step, 0) << row.option;
    }
}

TEST(EffectsSwitches, BringWhatIsNeededAndTakeWhatNeedsIt) {
    Effects effects;
    EXPECT_EQ(effects.names(), "no effects");
    EXPECT_FALSE(effects.needPrograms());
    effects.switchOn(Effect::toneMapping);
    EXPECT_EQ(effects.names(), "per-pixel lighting, bloom, tone mapping");
    EXPECT_TRUE(effects.needPrograms());
    EXPECT_TRUE(effects.needWholePicture());
    effects.switchOn(Effect::shadows);
    EXPECT_TRUE(effects.isOn(Effect::spot));
    effects.switchOff(Effect::perPixel);
    EXPECT_EQ(effects.names(), "spot light");
    EXPECT_FALSE(effects.needWholePicture());
}

TEST(EffectsNumbers, KeepWithinTheirRange) {
    Effects effects;
    EXPECT_EQ(effects.get(EffectParameter::brightness), 1);
    effects.set(EffectParameter::spotPitch, 90);
    EXPECT_EQ(effects.get(EffectParameter::spotPitch), 85);
    effects.set(EffectParameter::focusDepth, 0);
    EXPECT_EQ(effects.get(EffectParameter::focusDepth), 0.01);
}

// A box of side 2 that stands on the ground, with seven thin poles behind each other to its left.
std::string boxObj() {
    std::string text = "mtllib m.mtl\nusemtl a\n";
    int first = 1;
    const auto box = [&](double left, double near, double width, double height) {
        for (int corner = 0; corner < 8; ++corner)
            text += "v " + std::to_string(left + (corner & 1 ? width : 0)) + " " +
                    std::to_string(corner & 2 ? height : 0) + " " +
                    std::to_string(near - (corner & 4 ? width : 0)) + "\n";
        for (const auto &face :
             {std::array{0, 1, 3, 2}, std::array{5, 4, 6, 7}, std::array{1, 5, 7, 3},
              std::array{4, 0, 2, 6}, std::array{2, 3, 7, 6}, std::array{4, 5, 1, 0}}) {
            text += "f";
            for (const int corner : face)
                text += " " + std::to_string(first + corner);
            text += "\n";
        }
        first += 8;
    };
    box(-1, 1, 2, 2);
    for (int pole = 0; pole < 7; ++pole)
        box(-3, 3 - pole, 0.1, 1.5);
    return text;
}

double brightnessAt(const Picture &picture, double x, double y) {
    const auto column = static_cast<std::size_t>(x * picture.width);
    const auto row = static_cast<std::size_t>(y * picture.height);
    const unsigned char *p =
        &picture.pixels[3 * (row * static_cast<std::size_t>(picture.width) + column)];
    return (p[0] + p[1] + p[2]) / 3.0;
}

double mean(const Picture &picture) {
    double sum = 0;
    for (const unsigned char value : picture.pixels)
        sum += value;
    return sum / static_cast<double>(picture.pixels.size());
}

// The mean step from a pixel to its right neighbour: high where a picture is sharp.
double sharpness(const Picture &picture) {
    double sum = 0;
    for (std::size_t i = 3; i < picture.pixels.size(); ++i)
        sum += std::abs(picture.pixels[i] - picture.pixels[i - 3]);
    return sum / static_cast<double>(picture.pixels.size());
}

int largestDifference(const Picture &a, const Picture &b) {
    int largest = 0;
    for (std::size_t i = 0; i < std::min(a.pixels.size(), b.pixels.size()); ++i)
        largest = std::max(largest, std::abs(a.pixels[i] - b.pixels[i]));
    return a.pixels.size() == b.pixels.size() ? largest : 256;
}

// A square that stands upright, and the only bone that bends it.
void writeSquareWithBone() {
    ravolt::RveScene scene;
    scene.root.kind = ravolt::RveKind::mesh;
    scene.root.name = "[root]";
    ravolt::RveNode bone;
    bone.kind = ravolt::RveKind::mesh;
    bone.name = "bone";
    ravolt::RveNode square = bone;
    square.name = "square";
    square.mesh.vertices = {{-1, -1, 0}, {1, -1, 0}, {1, 1, 0}, {-1, 1, 0}};
    square.mesh.normals = {{0, 0, 1}, {0, 0, 1}, {0, 0, 1}, {0, 0, 1}};
    square.mesh.faces = {{0, 1, 2}, {0, 2, 3}};
    square.mesh.material = "a";
    square.mesh.skin.weightsPerVertex = 4;
    square.mesh.skin.boneIndices.assign(16, 0);
    for (int vertex = 0; vertex < 4; ++vertex)
        for (const float weight : {1.0f, 0.0f, 0.0f, 0.0f})
            square.mesh.skin.boneWeights.push_back(weight);
    square.mesh.skin.bones = {"bone"};
    scene.root.children = {bone, square};
    ravolt::RveMaterial material;
    material.name = "a";
    scene.materials = {material};
    ASSERT_EQ(ravolt::writeRve("scene.rve", scene), "");
}

class EffectsOnStage : public ::testing::Test {
  protected:
    void SetUp() override {
        makeScene(boxObj());
        drawing.programs = true;
        drawing.picture = size;
    }

    static void makeScene(const std::string &model, const std::string &diffuse = "0.9 0.9 0.9") {
        writeFile("m.mtl", "newmtl a\nKa 1 1 1\nKd " + diffuse + "\n");
        writeFile("m.obj", model);
        ConvertOptions options;
        options.model = "m.obj";
        options.scene = "scene.rve";
        Report report;
        Progress silent(false);
        convertModel(options, report, silent);
    }

    Picture shoot(const Effects &effects, double pitch = 40) {
        Engine engine(window, "test", false, "ravolt_log.txt", drawing);
        Stage stage(engine.load("scene.rve"));
        stage.setYaw(0);
        stage.setPitch(pitch);
        stage.setEffects(effects);
        settle(stage);
        const Picture picture = ravolt::tool::shoot(stage, size);
        EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
        return picture;
    }

    Drawing drawing;
    WindowSize window = size;
};

TEST_F(EffectsOnStage, TheSpotsShadowFallsToTheOtherSide) {
    for (const double yaw : {90.0, -90.0}) {
        Effects effects = with({Effect::shadows, Effect::floor});
        effects.set(EffectParameter::spotYaw, yaw);
        const Picture shadowed = shoot(effects);
        effects.switchOff(Effect::shadows);
        const Picture lit = shoot(effects);
        const double left = brightnessAt(shadowed, 0.44, 0.62) / brightnessAt(lit, 0.44, 0.62);
        const double right = brightnessAt(shadowed, 0.72, 0.62) / brightnessAt(lit, 0.72, 0.62);
        EXPECT_LT(yaw > 0 ? left : right, 0.6) << yaw;
        EXPECT_NEAR(yaw > 0 ? right : left, 1, 0.15) << yaw;
    }
}

TEST_F(EffectsOnStage, TwoSidedSurfacesDoNotShadowThemselves) {
    writeFile("m.mtl", "newmtl a\nKa 1 1 1\nKd 0.9 0.9 0.9\n");
    writeFile("m.obj", boxObj());
    ConvertOptions options;
    options.model = "m.obj";
    options.scene = "scene.rve";
    options.twoSided = true;
    Report report;
    Progress silent(false);
    convertModel(options, report, silent);
    Effects effects = with({Effect::shadows});
    effects.set(EffectParameter::spotYaw, 20);
    const Picture shadowed = shoot(effects);
    effects.switchOff(Effect::shadows);
    const Picture lit = shoot(effects);
    // The box's top and front, far from its edges; no more than an occasional pixel is darker.
    int pixels = 0, darker = 0;
    for (const auto &[left, right, upper, lower] :
         {std::array{0.52, 0.62, 0.38, 0.42}, std::array{0.52, 0.62, 0.52, 0.6}})
        for (double y = upper; y < lower; y += 1.0 / size.height)
            for (double x = left; x < right; x += 1.0 / size.width) {
                ++pixels;
                darker += brightnessAt(shadowed, x, y) < 0.9 * brightnessAt(lit, x, y);
            }
    EXPECT_GT(pixels, 200);
    EXPECT_LT(darker, pixels / 50);
}

// A cone so narrow that it meets no corner of the square.
TEST_F(EffectsOnStage, PerPixelLightingLightsTheMiddleOfASurface) {
    makeScene(squareObj("m.mtl", "a"));
    Effects effects = with({Effect::spot});
    effects.set(EffectParameter::spotYaw, 0);
    effects.set(EffectParameter::spotAngle, 8);
    effects.set(EffectParameter::spotPitch, 5);
    effects.set(EffectParameter::brightness, 2);
    const Picture byCorners = shoot(effects);
    effects.switchOn(Effect::perPixel);
    const Picture byPixels = shoot(effects);
    const auto brightest = [](const Picture &picture) -> int {
        return *std::max_element(picture.pixels.begin(), picture.pixels.end());
    };
    EXPECT_LT(brightest(byCorners), 100);
    EXPECT_GT(brightest(byPixels), 200);
}

TEST_F(EffectsOnStage, TheFloorCoversTheGround) {
    const Picture bare = shoot({}), floored = shoot(with({Effect::floor}));
    EXPECT_FALSE(largestDifference(bare, floored) == 0);
    for (const double x : {0.05, 0.95}) {
        EXPECT_LT(brightnessAt(bare, x, 0.9), 60);
        EXPECT_GT(brightnessAt(floored, x, 0.9), 80);
    }
}

TEST_F(EffectsOnStage, OnlyWhatIsBrighterThanWhiteGlows) {
    Effects dim = with({Effect::perPixel}), bright = dim;
    bright.set(EffectParameter::brightness, 4);
    bright.set(EffectParameter::bloomIntensity, 1);
    const auto glow = [&](Effects effects) {
        const Picture plain = shoot(effects);
        effects.switchOn(Effect::bloom);
        return mean(shoot(effects)) - mean(plain);
    };
    EXPECT_NEAR(glow(dim), 0, 0.2);
    const double usual = glow(bright);
    EXPECT_GT(usual, 3);
    bright.set(EffectParameter::bloomIntensity, 0.2);
    EXPECT_LT(glow(bright), 0.6 * usual);
}

// Which `covered` are: those that are not the background of the same picture.
double partAtWhite(const Picture &picture, const Picture &covered) {
    double all = 0, white = 0;
    for (std::size_t i = 0; i < picture.pixels.size(); i += 3) {
        const unsigned char *pixel = &covered.pixels[i];
        if (Stage::isBackground(pixel[0], pixel[1], pixel[2]))
            continue;
        ++all;
        white += std::min({picture.pixels[i], picture.pixels[i + 1], picture.pixels[i + 2]}) == 255;
    }
    return white / all;
}

TEST_F(EffectsOnStage, SomeOfTheSceneGlowsAtTheBrightnessForBloom) {
    for (const std::vector<Effect> &lit : {std::vector<Effect>{}, {Effect::shadows}}) {
        for (const char *diffuse : {"0.95 0.95 0.95", "0.4 0.4 0.4", "0.6 0.2 0.1"}) {
            makeScene(boxObj(), diffuse);
            Engine engine(window, "test", false, "ravolt_log.txt", drawing);
            Stage stage(engine.load("scene.rve"));
            Effects effects = with(lit);
            effects.switchOn(Effect::perPixel);
            effects.switchOn(Effect::bloom);
            stage.setEffects(effects);
            effects.set(EffectParameter::brightness, brightnessForBloom(stage));
            EXPECT_EQ(stage.getEffects().get(EffectParameter::brightness), 1); // as it was
            stage.setEffects(effects);
            settle(stage);
            const Picture glowing = ravolt::tool::shoot(stage, size);
            effects.switchOff(Effect::bloom);
            stage.setEffects(effects);
            const Picture plain = ravolt::tool::shoot(stage, size);
            EXPECT_GT(mean(glowing) - mean(plain), 0.5) << diffuse << effects.names();
            // One face of the box at most, which is lit alike all over.
            EXPECT_LT(partAtWhite(glowing, plain), 0.4) << diffuse << effects.names();
        }
    }
}

TEST_F(EffectsOnStage, ToneMappingMakesContrastTheMoreTheLowerItsExposure) {
    Effects effects = with({Effect::spot, Effect::floor, Effect::bloom});
    const auto contrast = [&] {
        const Picture picture = shoot(effects);
        return brightnessAt(picture, 0.5, 0.8) / std::max(1.0, brightnessAt(picture, 0.02, 0.05));
    };
    const double plain = contrast();
    effects.switchOn(Effect::toneMapping);
    EXPECT_GT(contrast(), 1.2 * plain);
    effects.set(EffectParameter::exposure, 16);
    const double gentle = contrast();
    effects.set(EffectParameter::exposure, 1);
    const double strong = contrast();
    EXPECT_GT(gentle, 1.03 * plain);
    EXPECT_GT(strong, 1.3 * gentle);
}

TEST_F(EffectsOnStage, DepthOfFieldBlursWhatIsOutOfFocus) {
    const double plain = sharpness(shoot({}));
    Effects effects = with({Effect::depthOfField});
    effects.set(EffectParameter::focusDepth, 10);
    EXPECT_GT(sharpness(shoot(effects)), 0.85 * plain); // all within focus
    effects.set(EffectParameter::focus, 8);
    effects.set(EffectParameter::focusDepth, 1);
    EXPECT_LT(sharpness(shoot(effects)), 0.5 * plain);
}

TEST_F(EffectsOnStage, FocusGoesFromFrontToBack) {
    Effects effects = with({Effect::depthOfField});
    effects.set(EffectParameter::focusDepth, 0.3);
    // The poles stand behind each other on the left, the nearest one lowest in the picture.
    const auto sharpnessOfRow = [&](double focus, double y) {
        effects.set(EffectParameter::focus, focus);
        const Picture picture = shoot(effects);
        double steepest = 0;
        for (double x = 0.02; x < 0.42; x += 1.0 / picture.width)
            steepest = std::max(steepest, std::abs(brightnessAt(picture, x, y) -
                                                   brightnessAt(picture, x + 1.0 / 240, y)));
        return steepest;
    };
    EXPECT_GT(sharpnessOfRow(0.15, 0.78), 1.5 * sharpnessOfRow(0.85, 0.78));
    EXPECT_GT(sharpnessOfRow(0.85, 0.3), 1.5 * sharpnessOfRow(0.15, 0.3));
}

TEST_F(EffectsOnStage, APictureKeptInItsTargetIsTheOneOfAWindowOfItsSize) {
    for (const std::vector<Effect> &wanted :
         {std::vector{Effect::shadows, Effect::floor, Effect::bloom},
          std::vector{Effect::shadows, Effect::bloom, Effect::depthOfField}}) {
        Effects effects = with(wanted);
        effects.set(EffectParameter::brightness, 2);
        window = size;
        drawing.useTarget = false;
        const Picture shown = shoot(effects);
        window = {120, 100};
        drawing.useTarget = true;
        EXPECT_LE(largestDifference(shoot(effects), shown), 2) << effects.names();
    }
}

TEST_F(EffectsOnStage, ComeAndGoWithTheirSwitches) {
    Engine engine(size, "test", false, "ravolt_log.txt", drawing);
    Stage stage(engine.load("scene.rve"));
    const Picture before = ravolt::tool::shoot(stage, size);
    for (const EffectRow &row : effectTable()) {
        Effects effects = with({row.effect});
        effects.set(EffectParameter::brightness, row.wholePicture ? 3 : 1);
        stage.setEffects(effects);
        settle(stage);
        EXPECT_GT(largestDifference(ravolt::tool::shoot(stage, size), before), 8) << row.name;
        stage.setEffects({});
        EXPECT_EQ(largestDifference(ravolt::tool::shoot(stage, size), before), 0) << row.name;
    }
    std::ifstream log("ravolt_log.txt");
    for (std::string line; std::getline(log, line);)
        EXPECT_EQ(line.find("Invalid shadow pass"), std::string::npos) << line;
}

TEST_F(EffectsOnStage, WireframeIsDrawnWithoutThoseOfTheWholePicture) {
    Engine engine(size, "test", false, "ravolt_log.txt", drawing);
    Stage stage(engine.load("scene.rve"));
    stage.setWireframe(true);
    const Picture plain = ravolt::tool::shoot(stage, size);
    EXPECT_TRUE(showsSomething(plain));
    stage.setEffects(with({Effect::depthOfField}));
    EXPECT_EQ(largestDifference(ravolt::tool::shoot(stage, size), plain), 0);
    stage.setWireframe(false);
}

TEST_F(EffectsOnStage, LeaveMeshesWithBonesBentWhenPerPixelLightingIsOff) {
    writeSquareWithBone();
    for (const bool programs : {false, true}) {
        drawing.programs = programs;
        Engine engine(size, "test", false, "ravolt_log.txt", drawing);
        RVNODE *root = engine.load("scene.rve");
        root->findByNameInHierarchy("bone")->setPosition(1.5f, 0.0f, 0.0f);
        Stage stage(root);
        stage.setYaw(0);
        stage.setPitch(0);
        stage.setZoom(0.5);
        ravolt::tool::shoot(stage, size);
        const Picture picture = ravolt::tool::shoot(stage, size);
        EXPECT_GT(brightnessAt(picture, 0.65, 0.5), 80) << programs;
        EXPECT_LT(brightnessAt(picture, 0.45, 0.5), 60) << programs;
    }
}

// Whose bone has gone to the right: its shadow goes with it, in the first picture too.
TEST_F(EffectsOnStage, ShadowsOfBentMeshesAreThereFromTheFirstPictureOn) {
    writeSquareWithBone();
    Engine engine(size, "test", false, "ravolt_log.txt", drawing);
    RVNODE *root = engine.load("scene.rve");
    Stage stage(root);
    root->findByNameInHierarchy("bone")->setPosition(1.5f, 0.0f, 0.0f);
    stage.setYaw(0);
    stage.setZoom(0.5);
    Effects effects = with({Effect::shadows, Effect::floor});
    effects.set(EffectParameter::spotYaw, 180); // back faces alone cast shadows
    stage.setEffects(effects);
    settle(stage);
    const Picture first = ravolt::tool::shoot(stage, size);
    EXPECT_EQ(largestDifference(ravolt::tool::shoot(stage, size), first), 0);
    effects.switchOff(Effect::shadows);
    stage.setEffects(effects);
    EXPECT_GT(largestDifference(ravolt::tool::shoot(stage, size), first), 30);
}

TEST_F(EffectsOnStage, PrintNothing) {
    Engine engine(size, "test", false, "ravolt_log.txt", drawing);
    Stage stage(engine.load("scene.rve"));
    stage.setEffects(with({Effect::toneMapping}));
    testing::internal::CaptureStdout();
    stage.draw();
    std::fflush(stdout);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    RAVOLT::swap();
}

TEST_F(EffectsOnStage, AreLeftOutWhereTheDisplayCannotDoThem) {
    drawing.programs = false; // as on a display that has none
    Engine engine(size, "test", false, "ravolt_log.txt", drawing);
    Stage stage(engine.load("scene.rve"));
    Effects effects =
        with({Effect::shadows, Effect::floor, Effect::toneMapping, Effect::depthOfField});
    EXPECT_EQ(effects.switchOffUnsupported(),
              "per-pixel lighting, shadows, bloom, tone mapping, depth of field");
    EXPECT_EQ(effects.names(), "spot light, floor");
    EXPECT_EQ(effects.switchOffUnsupported(), "");
    stage.setEffects(effects);
    EXPECT_TRUE(showsSomething(ravolt::tool::shoot(stage, size)));
}

} // namespace
