// Picking compared with a camera computed here: two squares at known positions, at a grid of pixels
// of the window, in windows, targets and with effects of every kind.

#include "ravolt/kit/picker.h"

#include "ravolt/RVCAMERA.h"
#include "ravolt/RVFBO.h"
#include "ravolt/RVHELPER.h"
#include "ravolt/RVLIGHT.h"
#include "ravolt/RVMATERIAL.h"
#include "ravolt/RVMESH.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVSHADER.h"
#include "ravolt/RVTEXTURE.h"
#include "ravolt/kit/screenshot.h"
#include "tests/models/modelScenes.h"
#include "tests/pictures/cubes.h"
#include "tests/support/engineFixture.h"
#include "tests/support/glState.h"

#include <cmath>
#include <functional>

namespace ravolt::test {
namespace {

using kit::Pick;
using kit::Picker;
using kit::Ray;

struct Vec {
    double x, y, z;
};

// The line of a pixel for a camera at the origin that looks along -z, as the settings say.
Vec directionOf(int x, int y) {
    const double width = RVSETTINGS::getSDLWindowX(), height = RVSETTINGS::getSDLWindowY();
    const double right = 2 * (x + 0.5) / width - 1, up = 1 - 2 * (y + 0.5) / height;
    const double slope =
        std::tan(static_cast<double>(RVOPENGL::getAngleOfView()) / 2 * 0.017453292519943295);
    if (RVSETTINGS::isSDLLandscape()) // up is to the left
        return {up * slope * height / width, -right * slope, -1};
    return {right * slope * width / height, up * slope, -1};
}

struct Rectangle {
    const char *name;
    double x, y, z, half; // its middle, parallel to the screen

    // How far inside the line hits it; negative outside, in pixels.
    double inside(const Vec &line) const {
        const double px = line.x * -z, py = line.y * -z;
        const double pixel = 2 * std::tan(0.3926990816987241) * -z /
                             std::max(RVSETTINGS::getSDLWindowX(), RVSETTINGS::getSDLWindowY());
        return (half - std::max(std::fabs(px - x), std::fabs(py - y))) / pixel;
    }
};

const Rectangle nearSquare = {"near", 0.5, 0.3, -5, 0.8}, farSquare = {"far", -1, -0.7, -9, 1.7};

RVNODE *twoSquares() {
    const auto at = [](const Rectangle &r) {
        return placed(squareMesh(r.name, r.name, static_cast<float>(r.half)),
                      {static_cast<float>(r.x), static_cast<float>(r.y), static_cast<float>(r.z)});
    };
    return loadScene(
        RveScene{{coloured("near", {0.8f, 0.3f, 0.1f, 1}), coloured("far", {0.1f, 0.4f, 0.9f, 1})},
                 rootOver({at(nearSquare), at(farSquare)})});
}

struct Situation {
    const char *name;
    void (*prepare)(RVSETTINGS &);
    void (*start)();
};

void nothing() {}

void frame(RVCAMERA *camera, RVLIGHT *light, RVNODE *scene) {
    RAVOLT::clear(true, true, false);
    RAVOLT::begin3D(camera);
    light->pass();
    scene->pass();
    RAVOLT::end3D(true);
}

const Situation situations[] = {
    {"Window", [](RVSETTINGS &) {}, nothing},
    {"OddWindow",
     [](RVSETTINGS &s) {
         s.setWindowX(131);
         s.setWindowY(77);
     },
     nothing},
    {"ResizedWindow", [](RVSETTINGS &) {}, [] { RVSETTINGS::resize(0, 0, 150, 61); }},
    {"Landscape", [](RVSETTINGS &s) { s.setLandscape(true); }, nothing},
    {"SmallTarget", [](RVSETTINGS &s) { s.setForceFBO(true); }, nothing},
    {"LargeTarget",
     [](RVSETTINGS &s) {
         s.setForceFBO(true);
         s.setFBOSizeX(256);
         s.setFBOSizeY(200);
     },
     nothing},
    {"LandscapeInLargeTarget",
     [](RVSETTINGS &s) {
         s.setForceFBO(true);
         s.setLandscape(true);
         s.setFBOSizeX(256);
         s.setFBOSizeY(200);
     },
     nothing},
    {"Bloom", [](RVSETTINGS &s) { s.setShaders(true); }, [] { RAVOLT::bloomingOn(); }},
    {"BloomInLandscape",
     [](RVSETTINGS &s) {
         s.setShaders(true);
         s.setLandscape(true);
     },
     [] { RAVOLT::bloomingOn(); }},
    {"ToneMappingInLargeTarget",
     [](RVSETTINGS &s) {
         s.setShaders(true);
         s.setFBOSizeX(256);
         s.setFBOSizeY(192);
     },
     [] {
         RAVOLT::bloomingOn();
         RAVOLT::HDROn();
     }},
    {"DepthOfField", [](RVSETTINGS &s) { s.setShaders(true); }, [] { RAVOLT::DOFOn(); }},
    {"EverythingInForcedTarget",
     [](RVSETTINGS &s) {
         s.setShaders(true);
         s.setForceFBO(true);
     },
     [] {
         RAVOLT::bloomingOn();
         RAVOLT::HDROn();
         RAVOLT::DOFOn();
         RAVOLT::shadowingOn();
     }},
    {"Shadows", [](RVSETTINGS &s) { s.setShaders(true); }, [] { RAVOLT::shadowingOn(); }},
    {"Wireframe", [](RVSETTINGS &) {}, [] { RAVOLT::wireframeOn(); }},
    {"Multisampling", [](RVSETTINGS &s) { s.setMultisampling(4); }, nothing},
};

class PickerTest : public EngineTest {
  protected:
    RVCAMERA *camera = nullptr;
    RVLIGHT *light = nullptr;
    Picker picker;

    void SetUp() override {
        EngineTest::SetUp();
        camera = new RVCAMERA;
        light = new RVLIGHT;
        light->setLightType(RV_LIGHT_TYPE_SPOT);
        light->setPosition(1, 2, 3);
        light->setCutOff(60);
        light->castShadows(true);
    }

    void TearDown() override {
        RAVOLT::bloomingOff();
        RAVOLT::HDROff();
        RAVOLT::DOFOff();
        RAVOLT::shadowingOff();
        RAVOLT::wireframeOff();
        drawFrame2D(nullptr);
        EngineTest::TearDown();
    }
};

class PickerIn : public PickerTest, public testing::WithParamInterface<Situation> {
  protected:
    PickerIn() { GetParam().prepare(settings); }
};

TEST_P(PickerIn, WhatIsSeenIsPickedAndThePictureIsAsBefore) {
    RVNODE *scene = twoSquares();
    GetParam().start();
    frame(camera, light, scene);
    frame(camera, light, scene); // effects know the lights
    kit::Screenshot before, after;
    before.take();
    const auto bound = RVFBO::getCurrent();
    const auto viewport = viewportNow();

    const RVFBO *target = RVOPENGL::getFbo(0); // a pixel of the target may be several of the window
    const double margin = target && RVSETTINGS::getSDLWindowX() > target->getSizeX() ? 3 : 1.1;
    int seen[3] = {};
    for (int y = 0; y < RVSETTINGS::getSDLWindowY(); y += 5)
        for (int x = 0; x < RVSETTINGS::getSDLWindowX(); x += 3) {
            const Vec line = directionOf(x, y);
            const double ofNear = nearSquare.inside(line), ofFar = farSquare.inside(line);
            if (std::fabs(ofNear) < margin || std::fabs(ofFar) < margin)
                continue;
            const Pick pick = picker.pick(x, y);
            const Rectangle *expected = ofNear > 0 ? &nearSquare : ofFar > 0 ? &farSquare : nullptr;
            ++seen[expected == &nearSquare ? 0 : expected ? 1 : 2];
            ASSERT_EQ(pick.node, expected ? RVNODE::findByName(expected->name) : nullptr)
                << x << ", " << y;
            EXPECT_EQ(pick.isHit(), expected != nullptr);
            EXPECT_FALSE(pick.isGround);
            if (!expected)
                continue;
            ASSERT_NE(pick.material, nullptr);
            EXPECT_STREQ(pick.material->getName(), expected->name);
            EXPECT_NEAR(pick.point.z, expected->z, 0.01) << x << ", " << y;
            EXPECT_NEAR(pick.point.x, line.x * -expected->z, 0.12);
            EXPECT_NEAR(pick.point.y, line.y * -expected->z, 0.12);
            // The first face is below the diagonal from the lower left.
            const double over = (pick.point.y - expected->y) - (pick.point.x - expected->x);
            if (std::fabs(over) > 0.01) {
                EXPECT_EQ(pick.face, over > 0 ? 1 : 0) << x << ", " << y;
            }
        }
    for (const int number : seen)
        EXPECT_GT(number, 20);

    EXPECT_EQ(RVFBO::getCurrent(), bound);
    EXPECT_EQ(viewportNow(), viewport);
    after.take();
    EXPECT_EQ(before.getPixels(), after.getPixels());
}

INSTANTIATE_TEST_SUITE_P(Kinds, PickerIn, testing::ValuesIn(situations),
                         [](const auto &test) { return test.param.name; });

TEST_F(PickerTest, OutsideOfTheWindowIsNothing) {
    frame(camera, light, twoSquares());
    for (const auto &[x, y] : {std::pair{-1, 40}, {128, 40}, {60, -1}, {60, 96}}) {
        EXPECT_FALSE(picker.pick(x, y).isHit());
        EXPECT_EQ(Picker::rayAt(x, y).length, 0);
    }
}

// RAVOLT::select counts rows from one below the window's and does not find the highest one.
TEST_F(PickerTest, TheRowsAtTheEdgesOfTheWindowAreFound) {
    RVNODE *scene = loadScene({placed(squareMesh("wall", "[none]", 50), {0, 0, -5})});
    frame(camera, light, scene);
    for (const int y : {0, 95})
        for (const int x : {0, 127})
            EXPECT_TRUE(picker.pick(x, y).isHit()) << x << ", " << y;
    EXPECT_EQ(RAVOLT::select(60, 0), 0u) << "select itself";
}

TEST_F(PickerTest, OfNodesThatShareAnIdentifierTheOneThatIsThereIsFound) {
    RVNODE *scene = twoSquares();
    RVNODE *near = RVNODE::findByName("near"), *far = RVNODE::findByName("far");
    far->setAuxId(near->getId());
    frame(camera, light, scene);
    EXPECT_EQ(picker.pick(75, 42).node, near);
    EXPECT_EQ(picker.pick(45, 60).node, far);
    near->setAuxId(77);
    far->setAuxId(77);
    frame(camera, light, scene);
    EXPECT_EQ(picker.pick(75, 42).node, near);
    EXPECT_EQ(picker.pick(45, 60).node, far);
}

// Drawing a mesh switches it off, but there may be none.
TEST_F(PickerTest, ATextureThatIsStillOnChangesNothing) {
    frame(camera, light, new RVNODE);
    const Picture before = readFrame();
    auto *grey = new RVTEXTURE;
    grey->create(2, 2, RV_TEXTURE_RGB);
    std::fill_n(grey->getBitmap(), 12, static_cast<unsigned char>(99));
    grey->update();
    grey->render(nullptr);
    EXPECT_FALSE(picker.pick(40, 40).isHit());
    EXPECT_EQ(readFrame().bytes, before.bytes);
}

TEST_F(PickerTest, ThePointIsInTheWorldOfATurnedCamera) {
    RVNODE *scene = loadScene({placed(squareMesh("wall", "[none]", 3), {10, 2, 0}, {0, 90, 0})});
    camera->setPosition(20, 3, 1);
    camera->setTarget(10, 2, 0.5f);
    camera->setTargetNode(camera);
    frame(camera, light, scene);
    const Pick pick = picker.pick(64, 48);
    ASSERT_TRUE(pick.node);
    EXPECT_NEAR(pick.point.x, 10, 0.01);
    EXPECT_NEAR(pick.point.y, 2, 0.1);
    EXPECT_NEAR(pick.point.z, 0.5, 0.1);
    EXPECT_NEAR(pick.distance, (pick.point - Picker::rayAt(64, 48).origin).length(), 1e-3);
}

TEST_F(PickerTest, ASkinnedMeshHasAPointAndNoFace) {
    RVNODE *scene = loadScene({skinnedSquare("skin", {"bone"}), emptyMesh("bone")});
    RVNODE::findByName("bone")->setPosition(0.5f, 0, 2); // off its bind pose
    camera->setPosition(0, 0, 8);
    frame(camera, light, scene);
    const Pick pick = picker.pick(64, 48);
    ASSERT_TRUE(pick.node);
    EXPECT_STREQ(pick.node->getName(), "skin");
    EXPECT_EQ(pick.face, -1);
    EXPECT_NEAR(pick.point.z, 2, 0.01);
}

TEST_F(PickerTest, TheDepthOfThePixelIsAsBefore) {
    auto *helper = new RVHELPER; // is seen, and not picked
    helper->setPosition(0.2f, 0.1f, -5);
    frame(camera, light, helper);
    const auto depthAt = [](int x, int y) {
        float depth = -1;
        glReadPixels(x, height - 1 - y, 1, 1, GL_DEPTH_COMPONENT, GL_FLOAT, &depth);
        return depth;
    };
    int covered = 0;
    for (int x = 40; x < 90; ++x) {
        const float before = depthAt(x, 46);
        covered += before < 1;
        EXPECT_FALSE(picker.pick(x, 46).isHit());
        EXPECT_FLOAT_EQ(depthAt(x, 46), before);
    }
    EXPECT_GT(covered, 5);
}

// --- the ground

class GroundPicker : public PickerTest {
  protected:
    static float hills(float x, float z) { return 0.7f * std::sin(x) + 0.4f * std::cos(z * 0.7f); }

    void SetUp() override {
        PickerTest::SetUp();
        camera->setPosition(0, 4, 6);
        camera->setRotation(-25, 0, 0);
        picker.setGround(hills, 0.1f);
    }
};

TEST_F(GroundPicker, IsHitWhereTheRayFirstMeetsTheHeights) {
    frame(camera, light, new RVNODE);
    int hits = 0;
    for (int y = 3; y < 96; y += 9)
        for (int x = 2; x < 128; x += 9) {
            const Pick pick = picker.pick(x, y);
            const Ray ray = Picker::rayAt(x, y);
            float first = 0; // a finer walk along the same ray
            while (first < ray.length) {
                const Z3MVECTOR3D at = ray.origin + ray.direction * first;
                if (at.y <= hills(at.x, at.z))
                    break;
                first += 0.01f;
            }
            ASSERT_EQ(pick.isGround, first < ray.length) << x << ", " << y;
            if (!pick.isGround)
                continue;
            ++hits;
            EXPECT_NEAR(pick.distance, first, 0.02);
            EXPECT_NEAR(pick.point.y, hills(pick.point.x, pick.point.z), 1e-3);
            EXPECT_EQ(pick.node, nullptr);
        }
    EXPECT_GT(hits, 50);
}

TEST_F(GroundPicker, HidesNodesBehindItAndIsHiddenByNodesBeforeIt) {
    RVNODE *scene = loadScene({placed(squareMesh("above", "[none]", 0.3f), {0, 1.7f, 1}),
                               placed(squareMesh("below", "[none]", 5), {0, -7, -5})});
    frame(camera, light, scene);
    const Pick before = picker.pick(64, 48);
    ASSERT_TRUE(before.node) << "the square before the ground";
    EXPECT_STREQ(before.node->getName(), "above");
    const Pick hidden = picker.pick(64, 80);
    EXPECT_TRUE(hidden.isGround);
    EXPECT_EQ(hidden.material, nullptr);
    EXPECT_EQ(hidden.face, -1);
    picker.setGround(nullptr);
    ASSERT_TRUE(picker.pick(64, 80).node);
    EXPECT_STREQ(picker.pick(64, 80).node->getName(), "below");
}

TEST_F(GroundPicker, IsNotHitWhereThereIsNoneNorFromBelow) {
    frame(camera, light, new RVNODE);
    ASSERT_TRUE(picker.pick(64, 80).isGround);
    picker.setGround([](float, float) { return std::nanf(""); });
    EXPECT_FALSE(picker.pick(64, 80).isHit());
    picker.setGround([](float, float) { return 100.0f; }, -1);
    EXPECT_FALSE(picker.pick(64, 80).isHit());
}

TEST(PickerWithoutEngine, FindsNothingAndLogsALine) {
    markLog();
    EXPECT_FALSE(Picker().pick(0, 0).isHit());
    EXPECT_LOGGED_EXACTLY("   [!] Engine not running @ Picker::pick\n");
    EXPECT_EQ(Picker::rayAt(0, 0).length, 0);
}

} // namespace
} // namespace ravolt::test
