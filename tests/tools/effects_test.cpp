// How each effect changes a picture of the stage.

#include "tests/support/limitedDriver.h"
#include "tools/stage/effects.h"

#include "tests/tools/openStage.h"
#include "tools/stage/glow.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <gtest/gtest.h>
#include <memory>

namespace {

using namespace tool_test;

constexpr WindowSize size = {240, 160};

Effects with(const std::vector<Effect> &wanted) {
    Effects effects;
    for (const Effect effect : wanted)
        effects.switchOn(effect);
    return effects;
}

TEST(EffectTables, HaveEachRowAtItsIndex) {
    for (std::size_t i = 0; i < numberOfEffects; ++i)
        EXPECT_EQ(static_cast<std::size_t>(effectTable()[i].effect), i);
    for (std::size_t i = 0; i < numberOfEffectParameters; ++i) {
        const EffectParameterRow &row = effectParameterTable()[i];
        EXPECT_EQ(static_cast<std::size_t>(row.parameter), i);
        EXPECT_LE(row.min, row.start) << row.option;
        EXPECT_LE(row.start, row.max) << row.option;
        EXPECT_GT(row.step, 0) << row.option;
    }
}

TEST(EffectsSwitches, SwitchWhatIsNeededOnAndWhatNeedsThemOff) {
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

TEST(EffectsNumbers, AreLimitedToTheirRange) {
    Effects effects;
    EXPECT_EQ(effects.get(EffectParameter::brightness), 1);
    effects.set(EffectParameter::spotPitch, 90);
    EXPECT_EQ(effects.get(EffectParameter::spotPitch), 85);
    effects.set(EffectParameter::focusDepth, 0);
    EXPECT_EQ(effects.get(EffectParameter::focusDepth), 0.01);
}

// A box of side 2 that stands on the ground, with seven thin poles in a row to its left.
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

double mean(const Picture &picture) {
    double sum = 0;
    for (const unsigned char value : picture.getPixels())
        sum += value;
    return sum / static_cast<double>(picture.getPixels().size());
}

// The mean step from a pixel to its right neighbour: high where a picture is sharp.
double sharpness(const Picture &picture) {
    double sum = 0;
    for (std::size_t i = 3; i < picture.getPixels().size(); ++i)
        sum += std::abs(picture.getPixels()[i] - picture.getPixels()[i - 3]);
    return sum / static_cast<double>(picture.getPixels().size());
}

class EffectsOnStage : public ::testing::Test {
  protected:
    EffectsOnStage() {
        makeScene(boxObj());
        drawing.programs = true;
        drawing.picture = size;
    }

    void SetUp() override { SKIP_ON_LIMITED_DRIVER(); }

    static void makeScene(const std::string &model, const std::string &diffuse = "0.9 0.9 0.9",
                          bool twoSided = false) {
        writeFile("m.mtl", "newmtl a\nKa 1 1 1\nKd " + diffuse + "\n");
        writeFile("m.obj", model);
        ConvertOptions options = optionsOf("m.obj");
        options.twoSided = twoSided;
        writeScene(options);
    }

    void open(WindowSize window = size) {
        opened.reset();
        opened = std::make_unique<OpenStage>(window, drawing);
        opened->picture = size;
        opened->stage.setPitch(40);
    }

    Picture shoot(const Effects &effects) {
        if (!opened)
            open();
        opened->stage.setEffects(effects);
        settle(opened->stage);
        return opened->shoot();
    }

    Drawing drawing;
    std::unique_ptr<OpenStage> opened;
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
    makeScene(boxObj(), "0.9 0.9 0.9", true);
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
    for (const auto &[parameter, value] : {std::pair{EffectParameter::spotYaw, 0},
                                           {EffectParameter::spotAngle, 8},
                                           {EffectParameter::spotPitch, 5},
                                           {EffectParameter::brightness, 2}})
        effects.set(parameter, value);
    const auto brightest = [&]() -> int {
        const Picture picture = shoot(effects);
        return *std::max_element(picture.getPixels().begin(), picture.getPixels().end());
    };
    EXPECT_LT(brightest(), 100);
    effects.switchOn(Effect::perPixel);
    EXPECT_GT(brightest(), 200);
}

TEST_F(EffectsOnStage, TheFloorCoversTheGround) {
    const Picture bare = shoot({}), floored = shoot(with({Effect::floor}));
    for (const double x : {0.05, 0.95}) {
        EXPECT_LT(brightnessAt(bare, x, 0.9), 60);
        EXPECT_GT(brightnessAt(floored, x, 0.9), 80);
    }
}

TEST_F(EffectsOnStage, OnlyWhatIsBrighterThanWhiteGlows) {
    Effects effects = with({Effect::perPixel});
    const auto glow = [&] {
        effects.switchOff(Effect::bloom);
        const double plain = mean(shoot(effects));
        effects.switchOn(Effect::bloom);
        return mean(shoot(effects)) - plain;
    };
    EXPECT_NEAR(glow(), 0, 0.2);
    effects.set(EffectParameter::brightness, 4);
    effects.set(EffectParameter::bloomIntensity, 1);
    const double usual = glow();
    EXPECT_GT(usual, 3);
    effects.set(EffectParameter::bloomIntensity, 0.2);
    EXPECT_LT(glow(), 0.6 * usual);
}

// Which `covered` are: those that are not the background of the same picture.
double partAtWhite(const Picture &picture, const Picture &covered) {
    double all = 0, white = 0;
    for (std::size_t i = 0; i < picture.getPixels().size(); i += 3) {
        const unsigned char *pixel = &covered.getPixels()[i];
        if (Stage::isBackground(pixel[0], pixel[1], pixel[2]))
            continue;
        ++all;
        white += std::min({picture.getPixels()[i], picture.getPixels()[i + 1],
                           picture.getPixels()[i + 2]}) == 255;
    }
    return white / all;
}

TEST_F(EffectsOnStage, SomeOfTheSceneGlowsAtTheBrightnessForBloom) {
    for (const char *diffuse : {"0.95 0.95 0.95", "0.4 0.4 0.4", "0.6 0.2 0.1"}) {
        makeScene(boxObj(), diffuse);
        open();
        opened->stage.setYaw(30);
        opened->stage.setPitch(20);
        for (const std::vector<Effect> &lit : {std::vector<Effect>{}, {Effect::shadows}}) {
            Effects effects = with(lit);
            effects.switchOn(Effect::bloom);
            opened->stage.setEffects(effects);
            effects.set(EffectParameter::brightness, brightnessForBloom(opened->stage));
            // It is as it was.
            EXPECT_EQ(opened->stage.getEffects().get(EffectParameter::brightness), 1);
            const Picture glowing = shoot(effects);
            effects.switchOff(Effect::bloom);
            const Picture plain = shoot(effects);
            EXPECT_GT(mean(glowing) - mean(plain), 0.5) << diffuse << effects.names();
            // One face of the box at most, which is lit alike all over.
            EXPECT_LT(partAtWhite(glowing, plain), 0.4) << diffuse << effects.names();
        }
    }
}

TEST_F(EffectsOnStage, ToneMappingMakesContrastTheMoreTheLowerItsExposure) {
    Effects effects = with({Effect::spot, Effect::floor, Effect::bloom});
    const auto contrastOf = [](const Picture &picture) {
        return brightnessAt(picture, 0.5, 0.8) / std::max(1.0, brightnessAt(picture, 0.02, 0.05));
    };
    const double plain = contrastOf(shoot(effects));
    effects.switchOn(Effect::toneMapping);
    EXPECT_GT(contrastOf(shoot(effects)), 1.2 * plain);
    const auto contrastAt = [&](double exposure) {
        effects.set(EffectParameter::exposure, exposure);
        opened->stage.setEffects(effects); // used to the light already
        return contrastOf(opened->shoot());
    };
    const double gentle = contrastAt(16);
    EXPECT_GT(gentle, 1.03 * plain);
    EXPECT_GT(contrastAt(1), 1.3 * gentle);
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

TEST_F(EffectsOnStage, FocusMovesFromFrontToBack) {
    Effects effects = with({Effect::depthOfField});
    effects.set(EffectParameter::focusDepth, 0.3);
    effects.set(EffectParameter::focus, 0.15);
    const Picture front = shoot(effects);
    effects.set(EffectParameter::focus, 0.85);
    const Picture back = shoot(effects);
    // The poles are one after the other on the left, the nearest one lowest in the picture.
    const auto sharpnessOfRow = [](const Picture &picture, double y) {
        double steepest = 0;
        for (double x = 0.02; x < 0.42; x += 1.0 / size.width)
            steepest = std::max(steepest, std::abs(brightnessAt(picture, x, y) -
                                                   brightnessAt(picture, x + 1.0 / size.width, y)));
        return steepest;
    };
    EXPECT_GT(sharpnessOfRow(front, 0.78), 1.5 * sharpnessOfRow(back, 0.78));
    EXPECT_GT(sharpnessOfRow(back, 0.3), 1.5 * sharpnessOfRow(front, 0.3));
}

TEST_F(EffectsOnStage, APictureInItsTargetEqualsTheOneOfAWindowOfItsSize) {
    std::vector<Picture> shown;
    for (const bool useTarget : {false, true}) {
        drawing.useTarget = useTarget;
        open(useTarget ? WindowSize{120, 100} : size);
        for (const Effect third : {Effect::floor, Effect::depthOfField}) {
            Effects effects = with({Effect::shadows, Effect::bloom, third});
            effects.set(EffectParameter::brightness, 2);
            shown.push_back(shoot(effects));
        }
    }
    for (std::size_t i = 0; i < 2; ++i)
        EXPECT_EQ(differences(shown[i], shown[i + 2], 2), 0u) << i;
}

TEST_F(EffectsOnStage, AreShownWhileTheyAreOn) {
    open();
    const Picture before = opened->shoot();
    for (const EffectRow &row : effectTable()) {
        Effects effects = with({row.effect});
        effects.set(EffectParameter::brightness, row.wholePicture ? 3 : 1);
        EXPECT_GT(differences(shoot(effects), before, 8), 0u) << row.name;
        opened->stage.setEffects({});
        EXPECT_EQ(differences(opened->shoot(), before), 0u) << row.name;
    }
    EXPECT_EQ(readText("ravolt_log.txt").find("Invalid shadow pass"), std::string::npos);
}

TEST_F(EffectsOnStage, WireframeIsDrawnWithoutThoseOfTheWholePicture) {
    open();
    opened->stage.setWireframe(true);
    const Picture plain = opened->shoot();
    EXPECT_TRUE(showsSomething(plain));
    opened->stage.setEffects(with({Effect::depthOfField}));
    EXPECT_EQ(differences(opened->shoot(), plain), 0u);
    opened->stage.setWireframe(false); // a state of the process
}

// An upright square, and the only bone of it, which is moved to the right.
void openMovedSquare(OpenStage &open) {
    open.root->findByNameInHierarchy("bone")->setPosition(1.5f, 0.0f, 0.0f);
    open.stage.setZoom(0.5);
}

void writeSquareWithBone() {
    RveNode square = skinnedSquare("square", "bone");
    square.mesh.material = "a";
    writeRve({meshNode("bone"), square}, "a");
}

TEST_F(EffectsOnStage, SkinMeshesWhilePerPixelLightingIsOff) {
    writeSquareWithBone();
    for (const bool programs : {false, true}) {
        drawing.programs = programs;
        OpenStage open(size, drawing);
        openMovedSquare(open);
        open.shoot();
        const Picture picture = open.shoot();
        EXPECT_GT(brightnessAt(picture, 0.65, 0.5), 80) << programs;
        EXPECT_LT(brightnessAt(picture, 0.45, 0.5), 60) << programs;
    }
}

TEST_F(EffectsOnStage, ShadowsOfSkinnedMeshesAreCastFromTheFirstPictureOn) {
    writeSquareWithBone();
    open();
    openMovedSquare(*opened);
    opened->stage.setPitch(20);
    Effects effects = with({Effect::shadows, Effect::floor});
    effects.set(EffectParameter::spotYaw, 180); // back faces alone cast shadows
    const Picture first = shoot(effects);
    EXPECT_EQ(differences(opened->shoot(), first), 0u);
    effects.switchOff(Effect::shadows);
    opened->stage.setEffects(effects);
    EXPECT_GT(differences(opened->shoot(), first, 30), 0u);
}

TEST_F(EffectsOnStage, PrintNothing) {
    open();
    opened->stage.setEffects(with({Effect::toneMapping}));
    testing::internal::CaptureStdout();
    opened->stage.draw();
    std::fflush(stdout);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    RAVOLT::swap();
}

TEST_F(EffectsOnStage, AreSwitchedOffWhereTheDisplayDoesNotSupportThem) {
    drawing.programs = false; // as on a display that has none
    open();
    Effects effects =
        with({Effect::shadows, Effect::floor, Effect::toneMapping, Effect::depthOfField});
    EXPECT_EQ(effects.switchOffUnsupported(),
              "per-pixel lighting, shadows, bloom, tone mapping, depth of field");
    EXPECT_EQ(effects.names(), "spot light, floor");
    EXPECT_EQ(effects.switchOffUnsupported(), "");
    opened->stage.setEffects(effects);
    EXPECT_TRUE(showsSomething(opened->shoot()));
}

} // namespace
