// The pieces of code in the README do what is written beside them.

#include "ravolt.h"
#include "tests/effects/terrainScene.h"
#include "tests/support/engineFixture.h"
#include "tests/support/files.h"

#include <gtest/gtest.h>

#include <vector>

namespace readme {
#include "samples.inc"
}

namespace ravolt::test {
namespace {

constexpr Pixel red{255, 0, 0, 255}, green{0, 255, 0, 255}, blue{0, 0, 255, 255},
    white{255, 255, 255, 255};

class Readme : public EngineTest {
  protected:
    Readme() { settings.setColorDepth(32); }

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

TEST_F(Readme, LoopShowsNoFrameTwice) {
    RVNODE *character = makeCharacter();
    const RVANIM *clip = makeClip(5); // the last frame equals the first
    std::vector<float> shown;
    for (unsigned int tick = 0; tick < 9; ++tick) {
        readme::play(clip, character, (static_cast<float>(tick) + 0.5f) / 30);
        shown.push_back(character->getChild(0)->getPosition().x);
    }
    EXPECT_EQ(shown, (std::vector<float>{0, 1, 2, 3, 0, 1, 2, 3, 0}));
}

TEST_F(Readme, LoopOfOneFrameOrNoneIsNoFailure) {
    RVNODE *character = makeCharacter();
    const RVANIM *pose = makeClip(1), *nothing = makeClip(0);
    for (const float seconds : {0.0f, 0.5f, 100.0f}) {
        character->getChild(0)->setPosition(7, 7, 7);
        readme::play(nothing, character, seconds);
        EXPECT_EQ(character->getChild(0)->getPosition().x, 7);
        readme::play(pose, character, seconds);
        EXPECT_EQ(character->getChild(0)->getPosition().x, 0);
    }
}

TEST_F(Readme, EachPassOfACharacterIsDrawnWhereItWasThen) {
    RVNODE *character = makeCharacter();
    (new readme::Axes)->link(character->getChild(0));
    RAVOLT::clear(true, true, false);
    RAVOLT::begin3D(nullptr);
    readme::drawCrowd(makeClip(3), character);
    ASSERT_EQ(RVELEMENT::getNumberOfPassedElements(), 3u);
    RAVOLT::end3D(true);
    EXPECT_EQ(character->getPosition().x, 4);
}

TEST_F(Readme, CustomNodeIsSeenAndFound) {
    auto *axes = new readme::Axes;
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

TEST_F(Readme, CustomNodeDoesNotChangeTheLights) {
    auto *axes = new readme::Axes;
    for (bool on : {true, false}) {
        on ? RVLIGHT::lightingOn() : RVLIGHT::lightingOff();
        drawFrame(nullptr, axes);
        EXPECT_EQ(RVLIGHT::getLighting(), on);
    }
}

// Four squares of eight by eight pixels, the lower rows first: red and green below, blue and white
// above. Not single pixels, since an anisotropic filter may mix neighbours.
TEST_F(Readme, PictureIsUprightInPixelsOfTheWindow) {
    Bytes image = {0, 0, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 16, 0, 16, 0, 24, 0};
    const Pixel colors[2][2] = {{red, green}, {blue, white}};
    for (int row = 0; row < 16; ++row)
        for (int column = 0; column < 16; ++column) {
            const Pixel &pixel = colors[row / 8][column / 8];
            image.insert(image.end(), {pixel.blue, pixel.green, pixel.red});
        }
    writeFile("logo.tga", image);
    RVTEXTURE::setPath(nullptr);
    auto *logo = readme::loadPicture("logo.tga");
    logo->setPosition(10, 20);
    drawFrame(nullptr, nullptr);
    const Pixel background = pixelAt(64, 48);
    readme::drawOverlay(logo);
    const struct {
        int x, y;
        Pixel color;
    } rows[] = {{10, 20, blue},       {25, 20, white},     {10, 35, red},
                {25, 35, green},      {9, 20, background}, {26, 20, background},
                {10, 19, background}, {10, 36, background}};
    for (const auto &row : rows)
        EXPECT_PIXEL(pixelAt(row.x, row.y), row.color, 0) << row.x << ", " << row.y;
}

TEST_F(Readme, FontHasItsCellsAndItsKerning) {
    Bytes image = {0, 0, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0, 1, 0, 24, 0, 255, 255, 255};
    writeFile("font.tga", image);
    writeFile("font.txt", "RAVOLT_kerning_A=5\n");
    RVFONT *font = readme::loadFont("font.tga", "font.txt", 8, 12);
    EXPECT_EQ(font->stringLength("AB"), 11u);
    EXPECT_EQ(font->getCharSizeY(), 12u);
    EXPECT_TRUE(font->putString(0, 0, "A"));
}

TEST_F(Readme, LandscapeIsLoadedOrNull) {
    EXPECT_EQ(readme::loadLandscape("gone.xml", ""), nullptr);
    EXPECT_EQ(RVOPENGL::getFarPlane(), 1000.0f);
    TerrainFile().write();
    writeFile("terrain.xml", "<LAND><GEOMETRY>land.geo</GEOMETRY></LAND>");
    RVTERRAIN *terrain = readme::loadLandscape("terrain.xml", "textures/");
    ASSERT_NE(terrain, nullptr);
    EXPECT_STREQ(RVTEXTURE::getPath(), "textures/");
    EXPECT_TRUE(RVTERRAIN::isRestoringTarget());
    RVTERRAIN::restoreTargetOff();
    RVTEXTURE::setPath(nullptr);
}

TEST_F(Readme, ButtonOfAnInterfaceIsClickedWhenItIsReleased) {
    writeFile("menu.xml", "<root><button><name value='quit'/></button></root>");
    RVNODE *menu = RAVOLT::load("menu.xml");
    ASSERT_NE(menu, nullptr);
    std::vector<bool> clicked;
    for (const bool pressed : {false, true, true, false, false})
        clicked.push_back(readme::isClicked(menu, "quit", 10, 10, pressed, 0));
    EXPECT_EQ(clicked, (std::vector<bool>{false, false, false, true, false}));
    EXPECT_FALSE(readme::isClicked(menu, "gone", 10, 10, false, 0));
}

} // namespace
} // namespace ravolt::test
