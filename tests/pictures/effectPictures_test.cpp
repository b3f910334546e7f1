// The effects on one scene: each alone, and all together. The whole file runs a second time against
// a library whose state caches all miss: what is drawn must be the same.

#include "ravolt/RVCAMERA.h"
#include "ravolt/RVLIGHT.h"
#include "ravolt/RVOPENGL.h"
#include "tests/engine/adaptedLuminance.h"
#include "tests/engine/resetEffects.h"
#include "tests/models/modelScenes.h"
#include "tests/pictures/cubes.h"
#include "tests/support/engineFixture.h"
#include "tests/support/realDriver.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <vector>

using namespace ravolt;
using namespace ravolt::test;

namespace {

constexpr Tolerance edges{
    .maximum = 24, .mean = 0.1, .reason = "samples at edges differ between the two settings"};

class EffectPictures : public EngineTest {
  protected:
    EffectPictures() {
        settings.setShaders(true);
        settings.setFBOSizeX(128);
        settings.setFBOSizeY(96);
        settings.setShadowMapSize(256);
    }

    // Three cubes in a row away from the camera, on a floor, under a spot from the upper left.
    void SetUp() override {
        EngineTest::SetUp();
        SKIP_WITHOUT_EXTENSIONS(allExtensions);
        camera = new RVCAMERA;
        camera->setPosition(0, 4, 11);
        camera->setRotation(-20, 0, 0);
        root = loadScene(
            {{coloured("red", {0.9f, 0.2f, 0.1f, 1}), coloured("green", {0.2f, 0.8f, 0.2f, 1}),
              coloured("blue", {0.2f, 0.3f, 0.9f, 1}), coloured("floor", {0.8f, 0.8f, 0.7f, 1})},
             rootOver({placed(squareMesh("floor", "floor", 14), {0, -1, 0}, {-90, 0, 0}),
                       placed(cubeMesh("near", "red"), {-2.5f, 0, 4}, {0, 30, 0}),
                       placed(cubeMesh("middle", "green"), {0, 0, 0}, {0, 20, 0}),
                       placed(cubeMesh("far", "blue"), {3, 0, -5}, {0, 40, 0})})});
        light = new RVLIGHT;
        light->setLightType(RV_LIGHT_TYPE_SPOT);
        light->setPosition(-7, 9, 7);
        light->setDirection(Z3MVECTOR3D(0.55f, -0.68f, -0.48f));
        light->setCutOff(35);
        light->setExponent(1);
        light->setShadowNearPlane(2);
        light->setShadowFarPlane(40);
        light->castShadows(true);
        light->link(root);
    }

    void TearDown() override {
        resetEffects();
        EngineTest::TearDown();
    }

    // The light's own colour lifts what faces it above white.
    void brighten() { light->setDiffuse(1.3f, 1.3f, 1.3f, 1); }

    // A focus at the middle cube: its distance by the far plane.
    static void focusOnTheMiddle() {
        RAVOLT::DOFOn();
        RAVOLT::setDOFFocus(13.0f / 1024);
        RAVOLT::setDOFRange(150);
    }

    // From the second frame on: a mesh without a chosen light switches programs off, also
    // in the depth pass, and the first lights are chosen after that pass.
    void expectPicture(const char *name) {
        drawFrame(camera, root);
        RAVOLT::swap();
        drawFrame2D(nullptr);
        drawFrame(camera, root);
        const Picture picture = readFrame();
        EXPECT_PICTURE(picture, name, edges);
        RAVOLT::swap();
        drawFrame2D(nullptr);
        drawFrame(camera, root);
        EXPECT_EQ(differenceOf(readFrame(), picture).maximum, 0) << name << " changes";
    }

    RVCAMERA *camera = nullptr;
    RVNODE *root = nullptr;
    RVLIGHT *light = nullptr;
};

TEST_F(EffectPictures, NoEffect) { expectPicture("effects_none"); }

TEST_F(EffectPictures, Shadows) {
    RAVOLT::shadowingOn();
    expectPicture("effects_shadows");
}

TEST_F(EffectPictures, Bloom) {
    brighten();
    RAVOLT::bloomingOn();
    expectPicture("effects_bloom");
}

TEST_F(EffectPictures, DepthOfField) {
    focusOnTheMiddle();
    expectPicture("effects_depthOfField");
}

TEST_F(EffectPictures, AllTogether) {
    brighten();
    RAVOLT::shadowingOn();
    RAVOLT::bloomingOn();
    focusOnTheMiddle();
    expectPicture("effects_all");
}

// Frames of no length count as a second, in which the eye adapts to all of the picture.
TEST_F(EffectPictures, AllTogetherWithToneMapping) {
    brighten();
    recorder.stopClock();
    RAVOLT::shadowingOn();
    RAVOLT::bloomingOn();
    RAVOLT::setBloomingIntensity(0.25f);
    RAVOLT::HDROn();
    RAVOLT::setHDRExposure(0.5f);
    focusOnTheMiddle();
    expectPicture("effects_allToneMapped");
}

// Squares that shine by themselves, grey above and orange below, most of them beyond white, seen by
// an eye that comes from somewhere brighter.
class BrightnessPictures : public EngineTest {
  protected:
    static constexpr float adapted = 16;
    static constexpr float values[] = {0.5f, 1, 1.5f, 2, 3, 4};

    BrightnessPictures() {
        settings.setShaders(true);
        settings.setFBOSizeX(128);
        settings.setFBOSizeY(96);
    }

    void SetUp() override {
        EngineTest::SetUp();
        SKIP_WITHOUT_EXTENSIONS(allExtensions);
        RVOPENGL::setBackgroundColor(0.1f, 0.1f, 0.1f, 1);
        RveScene scene;
        std::vector<RveNode> squares;
        for (std::size_t column = 0; column < std::size(values); ++column)
            for (bool upper : {true, false}) {
                const float value = values[column], x = (static_cast<float>(column) - 2.5f) * 1.8f;
                const std::string name = std::to_string(column) + (upper ? "grey" : "orange");
                RveMaterial material = coloured(name, {0, 0, 0, 1});
                material.ambient = material.specular = {0, 0, 0, 1};
                material.selfIllumination = {value, upper ? value : value / 2,
                                             upper ? value : value / 8, 1};
                scene.materials.push_back(material);
                squares.push_back(
                    placed(squareMesh(name, name, 0.6f), {x, upper ? 2.f : -2.f, -12}));
            }
        scene.root = rootOver(squares);
        root = loadScene(scene);
        auto *light = new RVLIGHT; // its programs let values through that are beyond white
        light->setPosition(0, 0, 20);
        light->link(root);
        RAVOLT::bloomingOn();
        RAVOLT::setBloomingIntensity(0.25f);
        recorder.stopClock();
    }

    void TearDown() override {
        resetEffects();
        RVOPENGL::setBackgroundColor(0.2f, 0.2f, 0.6f, 1);
        EngineTest::TearDown();
    }

    Picture picture() {
        RAVOLT::swap();
        recorder.advanceClock(1.0 / 64);
        adaptedLuminance() = adapted;
        drawFrame(nullptr, root);
        return readFrame();
    }

    // The middle of a grey square.
    static Pixel greyOf(const Picture &picture, std::size_t column) {
        const float x = (static_cast<float>(column) - 2.5f) * 1.8f / (12 * 0.41421f);
        return picture.at(static_cast<int>(64 + x * 48), static_cast<int>(48 - 2 / 4.9705f * 48));
    }

    RVNODE *root = nullptr;
};

TEST_F(BrightnessPictures, BloomAlone) {
    picture();
    const Picture clipped = picture();
    EXPECT_PICTURE(clipped, "effects_brightness", edges);
    for (std::size_t column = 1; column < std::size(values); ++column)
        EXPECT_PIXEL(greyOf(clipped, column), (Pixel{255, 255, 255}), 1) << column;
}

TEST_F(BrightnessPictures, ToneMapping) {
    RAVOLT::HDROn();
    picture();
    const Picture mapped = picture();
    EXPECT_PICTURE(mapped, "effects_toneMapping", edges);
    EXPECT_EQ(differenceOf(picture(), mapped).maximum, 0);
    // With the exposure 1 a value is shown by its square over what the eye has adapted to. The glow
    // is added after that.
    RAVOLT::setBloomingIntensity(0);
    const Picture withoutGlow = picture();
    for (std::size_t column = 0; column < std::size(values); ++column) {
        const double shown = 255.0 * static_cast<double>(values[column] * values[column] / adapted);
        const auto wanted = static_cast<unsigned char>(std::min(shown, 255.0));
        EXPECT_PIXEL(greyOf(withoutGlow, column), (Pixel{wanted, wanted, wanted}), 5) << column;
        EXPECT_GE(greyOf(mapped, column).red, greyOf(withoutGlow, column).red) << column;
    }
}

} // namespace
