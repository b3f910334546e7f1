// The pieces of code in the guide do what is written beside them.

#include <ravolt.h>
#include <ravolt/kit.h>
#include <ravolt/testing.h>

#include "tests/effects/terrainScene.h"
#include "tests/support/engineFixture.h"
#include "tests/support/files.h"
#include "tests/support/realDriver.h"

#include <gtest/gtest.h>

#include <SDL/SDL.h>
#include <cmath>
#include <vector>

namespace effects {
#include "effects/samples.inc"
}
namespace fonts {
#include "fonts/samples.inc"
}
namespace interface {
#include "interface/samples.inc"
}
namespace lights {
#include "lights/samples.inc"
}
namespace ownNode {
#include "ownNode/samples.inc"
}
namespace terrain {
#include "terrain/samples.inc"
}
namespace testing_page {
#include "testing/samples.inc"
}
namespace videos {
#include "videos/samples.inc"
}
namespace walking {
#include "walking/samples.inc"
}

namespace ravolt::test {
namespace {

constexpr Pixel red{255, 0, 0, 255}, green{0, 255, 0, 255}, blue{0, 0, 255, 255},
    white{255, 255, 255, 255};

class Guide : public EngineTest {
  protected:
    Guide() { settings.setColorDepth(32); }

    // A character of one bone and a clip that moves it by one unit a frame.
    RVNODE *makeCharacter() {
        RVNODE *character = new RVNODE, *bone = new RVNODE;
        bone->setName("bone");
        bone->link(character);
        return character;
    }
    RVANIM *makeClip(unsigned int frames) {
        RVANIM *clip = new RVANIM;
        clip->setNumberOfBones(1);
        clip->setBoneName(0, "bone");
        clip->setNumberOfFrames(frames);
        clip->setTranslating(true);
        for (unsigned int frame = 0; frame < frames; ++frame)
            clip->getKeyframe(frame, 0)->translation.set(static_cast<float>(frame), 0, 0);
        return clip;
    }
};

TEST_F(Guide, LoopShowsNoFrameTwice) {
    RVNODE *character = makeCharacter();
    const RVANIM *clip = makeClip(5); // the last frame equals the first
    std::vector<float> shown;
    for (unsigned int tick = 0; tick < 9; ++tick) {
        walking::play(clip, character, (static_cast<float>(tick) + 0.5f) / 30);
        shown.push_back(character->getChild(0)->getPosition().x);
    }
    EXPECT_EQ(shown, (std::vector<float>{0, 1, 2, 3, 0, 1, 2, 3, 0}));
}

TEST_F(Guide, LoopOfOneFrameOrNoneIsNoFailure) {
    RVNODE *character = makeCharacter();
    const RVANIM *pose = makeClip(1), *nothing = makeClip(0);
    for (const float seconds : {0.0f, 0.5f, 100.0f}) {
        character->getChild(0)->setPosition(7, 7, 7);
        walking::play(nothing, character, seconds);
        EXPECT_EQ(character->getChild(0)->getPosition().x, 7);
        walking::play(pose, character, seconds);
        EXPECT_EQ(character->getChild(0)->getPosition().x, 0);
    }
}

TEST_F(Guide, EachPassOfACharacterIsDrawnWhereItWasThen) {
    RVNODE *character = makeCharacter();
    (new ownNode::Axes)->link(character->getChild(0));
    RAVOLT::clear(true, true, false);
    RAVOLT::begin3D(nullptr);
    walking::drawHerd(makeClip(3), character, 0);
    ASSERT_EQ(RVELEMENT::getNumberOfPassedElements(), 3u);
    RAVOLT::end3D(true);
    EXPECT_FLOAT_EQ(character->getPosition().x, 0.9f);
}

TEST_F(Guide, CustomNodeIsSeenAndFound) {
    auto *axes = new ownNode::Axes;
    axes->setPosition(0, 0, -3);
    drawFrame(nullptr, axes);
    const Picture picture = readFrame();
    const int middleX = width / 2, middleY = height / 2;
    int reds = 0, greens = 0, found = 0;
    for (int offset = -1; offset <= 1; ++offset) {
        reds += picture.at(middleX + 10, middleY + offset) == red;
        greens += picture.at(middleX + offset, middleY - 10) == green;
    }
    for (int row = middleY - 1; row <= middleY + 2; ++row)
        found += RAVOLT::select(middleX + 10, row) == axes->getId();
    EXPECT_EQ(reds, 1);
    EXPECT_EQ(greens, 1);
    EXPECT_EQ(found, 1);
}

TEST_F(Guide, CustomNodeDoesNotChangeTheLights) {
    auto *axes = new ownNode::Axes;
    for (bool on : {true, false}) {
        on ? RVLIGHT::lightingOn() : RVLIGHT::lightingOff();
        drawFrame(nullptr, axes);
        EXPECT_EQ(RVLIGHT::getLighting(), on);
    }
}

// Four squares of eight by eight pixels, the lower rows first: red and green below, blue and white
// above. Not single pixels, since an anisotropic filter may mix neighbours.
TEST_F(Guide, PictureIsUprightInPixelsOfTheWindow) {
    Bytes image = {0, 0, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 16, 0, 16, 0, 24, 0};
    const Pixel colors[2][2] = {{red, green}, {blue, white}};
    for (int row = 0; row < 16; ++row)
        for (int column = 0; column < 16; ++column) {
            const Pixel &pixel = colors[row / 8][column / 8];
            image.insert(image.end(), {pixel.blue, pixel.green, pixel.red});
        }
    writeFile("logo.tga", image);
    RVTEXTURE::setPath(nullptr);
    auto *logo = ownNode::loadPicture("logo.tga");
    logo->setPosition(10, 20);
    drawFrame(nullptr, nullptr);
    const Pixel background = pixelAt(64, 48);
    ownNode::drawOverlay(logo);
    const struct {
        int x, y;
        Pixel color;
    } rows[] = {{10, 20, blue},       {25, 20, white},     {10, 35, red},
                {25, 35, green},      {9, 20, background}, {26, 20, background},
                {10, 19, background}, {10, 36, background}};
    for (const auto &row : rows)
        EXPECT_PIXEL(pixelAt(row.x, row.y), row.color, 0) << row.x << ", " << row.y;
}

TEST_F(Guide, FontHasItsCellsAndItsKerning) {
    Bytes image = {0, 0, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0, 1, 0, 24, 0, 255, 255, 255};
    writeFile("font.tga", image);
    writeFile("font.txt", "RAVOLT_kerning_A=5\n");
    RVFONT *font = fonts::loadFont("font.tga", "font.txt", 8, 12);
    EXPECT_EQ(font->stringLength("AB"), 11u);
    EXPECT_EQ(font->getCharSizeY(), 12u);
    EXPECT_TRUE(font->putString(0, 0, "A"));
}

TEST_F(Guide, LandscapeIsLoadedOrNull) {
    EXPECT_EQ(terrain::loadLandscape("gone.xml", ""), nullptr);
    EXPECT_EQ(RVOPENGL::getFarPlane(), 1000.0f);
    TerrainFile().write();
    writeFile("terrain.xml", "<LAND><GEOMETRY>land.geo</GEOMETRY></LAND>");
    RVTERRAIN *terrain = terrain::loadLandscape("terrain.xml", "textures/");
    ASSERT_NE(terrain, nullptr);
    EXPECT_STREQ(RVTEXTURE::getPath(), "textures/");
    EXPECT_TRUE(RVTERRAIN::isRestoringTarget());
    RVTERRAIN::restoreTargetOff();
    RVTEXTURE::setPath(nullptr);
}

TEST_F(Guide, ClickOfATestUsesTheButtonAtItsPixel) {
    writeFile("menu.xml", "<root><button><name value='quit'/></button></root>");
    RVNODE *menu = RAVOLT::load("menu.xml");
    ASSERT_NE(menu, nullptr);
    EXPECT_EQ(testing_page::click(menu, 10, 10), menu->findByNameInHierarchy("quit")->getId());
    EXPECT_EQ(testing_page::click(menu, 300, 300), 0u);
}

TEST_F(Guide, ButtonOfAnInterfaceIsClickedWhenItIsReleased) {
    writeFile("menu.xml", "<root><button><name value='quit'/></button></root>");
    RVNODE *menu = RAVOLT::load("menu.xml");
    ASSERT_NE(menu, nullptr);
    std::vector<bool> clicked;
    for (const bool pressed : {false, true, true, false, false})
        clicked.push_back(interface::isClicked(menu, "quit", 10, 10, pressed, 0));
    EXPECT_EQ(clicked, (std::vector<bool>{false, false, false, true, false}));
    EXPECT_FALSE(interface::isClicked(menu, "gone", 10, 10, false, 0));
}

TEST_F(Guide, ACharacterWalksToItsFrontAndTheCameraIsBehindIt) {
    RVNODE *character = new RVNODE;
    character->setRotation(0, 90, 0); // its front is +X
    kit::Input input;
    input.beginFrame();
    SDL_Event key = {};
    key.type = SDL_KEYDOWN;
    key.key.keysym.sym = SDLK_UP;
    input.handle(key);
    walking::steer(character, input, 2, 0.5f);
    EXPECT_NEAR(character->getPosition().x, 1, 1e-4);
    EXPECT_NEAR(character->getPosition().z, 0, 1e-4);
    RVCAMERA *camera = new RVCAMERA;
    walking::follow(camera, character, 4, 2);
    EXPECT_NEAR(camera->getPosition().x, -3, 1e-4);
    EXPECT_NEAR(camera->getPosition().y, 2, 1e-4);
    EXPECT_NEAR(camera->getTarget().x, 1, 1e-4);
}

TEST_F(Guide, SkyIsSeenWithoutATerrain) {
    SKIP_WITHOUT_EXTENSIONS(vertexBufferExtensions);
    Bytes image = {0, 0, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0, 1, 0, 24, 0, 0, 0, 255}; // red
    writeFile("sky.tga", image);
    RVTEXTURE::setPath(nullptr);
    drawFrame(nullptr, terrain::makeSky("sky.tga"));
    EXPECT_PIXEL(pixelAt(width / 2, 2), red, 2);
}

// Focus at 6 units, and complete blur at 4 and 8: the codes differ by 1 / range.
TEST_F(Guide, FocusIsInUnits) {
    RVOPENGL::setNearPlane(0.5f);
    RVOPENGL::setFarPlane(50);
    effects::setFocus(6, 2);
    const auto code = [](float distance) { return (distance + 0.5f) / 50; };
    EXPECT_FLOAT_EQ(RAVOLT::getDOFFocus(), code(6));
    EXPECT_NEAR(code(8) - RAVOLT::getDOFFocus(), 1 / RAVOLT::getDOFRange(), 1e-6);
    RVOPENGL::setNearPlane(1);
    RVOPENGL::setFarPlane(1024);
    RAVOLT::setDOFFocus(1);
    RAVOLT::setDOFRange(2);
}

TEST_F(Guide, LampEnclosesItsGround) {
    const RVLIGHT *lamp = lights::makeLamp({10, 0, 5}, 6);
    EXPECT_TRUE(lamp->isShadowCaster());
    EXPECT_EQ(lamp->getTargetNode(), lamp);
    EXPECT_NE(lamp->getPosition().x, lamp->getTarget().x); // not exactly along Y
    const float distance = std::hypot(1.0f, 6.0f);
    EXPECT_LT(lamp->getShadowNearPlane(), distance);
    EXPECT_GT(lamp->getShadowFarPlane(), distance);
}

TEST_F(Guide, VideoThatIsNotThereIsLogged) {
    RVMATERIAL *screen = new RVMATERIAL;
    EXPECT_NE(videos::showVideo("gone.m2v", screen), nullptr);
    EXPECT_TRUE(screen->isTextured());
    EXPECT_LOGGED("   [!] Invalid params or file not found @ RVVIDEO::load");
}

} // namespace
} // namespace ravolt::test
