// The effects on one scene: each alone, and all together. The whole file runs a second time against
// a library whose state caches all miss: what is drawn must be the same.

#include "ravolt/RVCAMERA.h"
#include "ravolt/RVLIGHT.h"
#include "tests/models/modelScenes.h"
#include "tests/pictures/cubes.h"
#include "tests/support/engineFixture.h"

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

    // Three cubes one behind the other on a floor, under a spot from the upper left.
    void SetUp() override {
        EngineTest::SetUp();
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
        RAVOLT::bloomingOff();
        RAVOLT::HDROff();
        RAVOLT::DOFOff();
        RAVOLT::shadowingOff();
        RAVOLT::setHDRExposure(1);
        RAVOLT::setDOFFocus(1);
        RAVOLT::setDOFRange(2);
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

    // From the second frame on: a mesh that no light was ever picked for leaves its program, also
    // in the depth pass, and the first lights are picked behind that pass.
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

} // namespace
