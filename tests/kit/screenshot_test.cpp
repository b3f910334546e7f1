// Screenshots and overlays: pictures of known pixels, in windows and targets.

#include "ravolt/kit/screenshot.h"

#include "ravolt/RVCAMERA.h"
#include "ravolt/RVFBO.h"
#include "ravolt/RVFONT.h"
#include "ravolt/RVLIGHT.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVTEXTURE.h"
#include "ravolt/kit/frameStatistics.h"
#include "ravolt/kit/overlay.h"
#include "tests/models/modelScenes.h"
#include "tests/support/engineFixture.h"
#include "tests/support/glState.h"
#include "tests/support/realDriver.h"

#include <algorithm>
#include <cstring>
#include <fstream>

namespace ravolt::test {
namespace {

using kit::FrameStatistics;
using kit::Overlay;
using kit::Screenshot;

constexpr Pixel red{255, 0, 0}, green{0, 255, 0}, blue{0, 0, 255}, white{255, 255, 255},
    black{0, 0, 0};

// Row by row from the top: its first pixel is the upper left one.
RVTEXTURE *textureOf(unsigned int width, std::vector<Pixel> pixels) {
    auto *texture = new RVTEXTURE;
    texture->setFilter(false, false, true);
    const auto rows = static_cast<unsigned int>(pixels.size()) / width;
    texture->create(width, rows, RV_TEXTURE_RGBA);
    for (unsigned int y = 0; y < rows; ++y)
        for (unsigned int x = 0; x < width; ++x) {
            const Pixel &pixel = pixels[(rows - 1 - y) * width + x]; // the lowest row first
            const unsigned char bytes[] = {pixel.red, pixel.green, pixel.blue, pixel.alpha};
            std::copy_n(bytes, 4, texture->getBitmap() + 4 * (y * width + x));
        }
    texture->update();
    return texture;
}

Pixel at(const Screenshot &shot, int x, int y) {
    const unsigned char *bytes =
        &shot.getPixels().at(3 * static_cast<std::size_t>(y * shot.getWidth() + x));
    return {bytes[0], bytes[1], bytes[2]};
}

class Shot : public EngineTest {
  protected:
    Screenshot shot;

    Shot() { settings.setMaxAnisotropy(1); } // pixels of textures are exact

    void SetUp() override {
        EngineTest::SetUp();
        RVOPENGL::setBackgroundColor(0, 0, 0, 1);
    }

    // A frame with a picture of four colours in a 2D block of `width` by `height`.
    static void drawColours(int columns, int rows) {
        RVTEXTURE *texture = textureOf(2, {red, green, blue, white});
        RAVOLT::clear(true, true, false);
        RAVOLT::begin2D();
        Overlay().picture(texture, 0, 0, columns, rows);
        RAVOLT::end2D();
    }

    void expectColours(int columns, int rows) {
        ASSERT_TRUE(shot.take());
        EXPECT_EQ(shot.getWidth(), columns);
        EXPECT_EQ(shot.getHeight(), rows);
        EXPECT_EQ(at(shot, 0, 0), red);
        EXPECT_EQ(at(shot, columns - 1, 0), green);
        EXPECT_EQ(at(shot, 0, rows - 1), blue);
        EXPECT_EQ(at(shot, columns - 1, rows - 1), white);
        EXPECT_EQ(at(shot, columns / 5, rows / 5), red);
        EXPECT_EQ(at(shot, 4 * columns / 5, rows / 5), green);
    }
};

class LandscapeShot : public Shot {
  protected:
    LandscapeShot() { settings.setLandscape(true); }
};

class TargetShot : public Shot {
  protected:
    TargetShot() { settings.setForceFBO(true); }

    void SetUp() override {
        Shot::SetUp();
        SKIP_WITHOUT_EXTENSIONS(targetExtensions);
    }
};

class MultisampledShot : public Shot {
  protected:
    MultisampledShot() { settings.setMultisampling(4); }
};

TEST_F(MultisampledShot, IsTheWindowsPicture) {
    drawColours(128, 96);
    expectColours(128, 96);
}

TEST_F(Shot, IsTheWindowsPictureUpright) {
    drawColours(128, 96);
    expectColours(128, 96);
}

TEST_F(LandscapeShot, IsUpright) {
    drawColours(96, 128);
    expectColours(96, 128);
}

TEST_F(TargetShot, IsTheTargetsPictureUntilTheWindowIsBound) {
    drawColours(64, 48);
    expectColours(64, 48);
    RVFBO::unbind();
    glViewport(0, 0, width, height);
    ASSERT_TRUE(shot.take());
    EXPECT_EQ(shot.getWidth(), 128);
}

// OpenGL binds the window then, but the engine has recorded the target.
TEST_F(TargetShot, OfATargetThatWasDeletedIsTheWindowsPicture) {
    auto *target = new RVFBO;
    RVTEXTURE *const image = textureOf(1, {red});
    ASSERT_TRUE(target->bindTexture(0, image));
    target->render(nullptr);
    ASSERT_TRUE(shot.take());
    EXPECT_EQ(shot.getWidth(), 1);
    delete target;
    ASSERT_TRUE(shot.take());
    EXPECT_EQ(shot.getWidth(), width);
    EXPECT_EQ(shot.getHeight(), height);
}

TEST_F(Shot, OddWidthsHaveNoGapsBetweenRows) {
    RVSETTINGS::resize(0, 0, 101, 51);
    drawColours(101, 51);
    glPixelStorei(GL_PACK_ALIGNMENT, 8);
    ASSERT_TRUE(shot.take());
    EXPECT_EQ(at(shot, 0, 50), blue);
    EXPECT_EQ(at(shot, 0, 0), red);
    EXPECT_EQ(at(shot, 100, 0), green);
    EXPECT_EQ(integerOf(GL_PACK_ALIGNMENT), 8);
    glPixelStorei(GL_PACK_ALIGNMENT, 4);
}

TEST_F(Shot, IsWrittenAsAPngFile) {
    drawColours(128, 96);
    ASSERT_TRUE(shot.take());
    ASSERT_TRUE(shot.save("shot.png"));
    const Picture read = loadPicture("shot.png");
    ASSERT_EQ(read.width, 128);
    ASSERT_EQ(read.height, 96);
    for (const auto &[x, y] : {std::pair{0, 0}, {127, 0}, {0, 95}, {127, 95}})
        EXPECT_EQ(read.at(x, y), at(shot, x, y));
    std::ifstream file("shot.png", std::ios::binary);
    const std::vector<unsigned char> bytes((std::istreambuf_iterator<char>(file)), {});
    EXPECT_EQ(bytes, shot.encode());
}

TEST_F(Shot, ShrinksByTheMeanOfSquares) {
    RVTEXTURE *texture = textureOf(2, {white, black, black, red});
    RAVOLT::clear(true, true, false);
    RAVOLT::begin2D();
    Overlay overlay;
    overlay.picture(texture, 0, 0); // two by two pixels
    overlay.picture(texture, 3, 0, 1, 1);
    RAVOLT::end2D();
    ASSERT_TRUE(shot.take());
    ASSERT_TRUE(shot.shrink(2));
    EXPECT_EQ(shot.getWidth(), 64);
    EXPECT_EQ(shot.getHeight(), 48);
    EXPECT_EQ(at(shot, 0, 0), (Pixel{128, 64, 64}));
    EXPECT_EQ(at(shot, 5, 5), black);
    ASSERT_TRUE(shot.shrink(5)); // 64 by 48 to 12 by 9
    EXPECT_EQ(shot.getWidth(), 12);
    EXPECT_EQ(shot.getHeight(), 9);
    EXPECT_EQ(shot.getPixels().size(), 3u * 12 * 9);
    markLog();
    for (const int factor : {0, -1, 10})
        EXPECT_FALSE(shot.shrink(factor));
    EXPECT_LOGGED_TIMES(3, "   [!] Invalid params @ Screenshot::shrink");
    EXPECT_EQ(shot.getWidth(), 12);
}

TEST_F(Shot, FaultsAreLoggedAndThePictureIsAsBefore) {
    markLog();
    EXPECT_FALSE(shot.save("none.png"));
    EXPECT_LOGGED_EXACTLY("   [!] No picture @ Screenshot::save\n");
    EXPECT_TRUE(shot.encode().empty());
    EXPECT_FALSE(shot.shrink(1));
    drawColours(128, 96);
    ASSERT_TRUE(shot.take());
    markLog();
    EXPECT_FALSE(shot.save("no/folder.png"));
    const std::vector<std::string> lines = linesSince(0);
    EXPECT_NE(lines.back().find("no/folder.png"), std::string::npos) << lines.back();
    EXPECT_NE(lines.back().find(" @ Screenshot::save"), std::string::npos);
    markLog();
    EXPECT_FALSE(shot.takeSmooth(nullptr));
    EXPECT_FALSE(shot.takeSmooth([] {}, 0));
    EXPECT_FALSE(shot.takeSmooth([] {}, 17));
    EXPECT_LOGGED_TIMES(3, "   [!] Invalid params @ Screenshot::takeSmooth");
    EXPECT_EQ(shot.getWidth(), 128);
}

TEST_F(Shot, WithoutMemoryThereIsALineAndThePictureIsAsBefore) {
    drawColours(128, 96);
    ASSERT_TRUE(shot.take());
    const auto before = shot.getPixels();
    markLog();
    recorder.failAllocation(128 * 96);
    EXPECT_FALSE(shot.take());
    EXPECT_FALSE(shot.save("shot.png"));
    EXPECT_TRUE(shot.encode().empty());
    recorder.failAllocation(4 * 3 * 128 * 96);
    EXPECT_FALSE(shot.takeSmooth([] {}, 1));
    recorder.allocationsWork();
    EXPECT_LOGGED_EXACTLY("   [!] Out of memory @ Screenshot::take\n"
                          "   [!] Out of memory @ Screenshot::save\n"
                          "   [!] Out of memory @ Screenshot::encode\n"
                          "   [!] Out of memory @ Screenshot::takeSmooth\n");
    EXPECT_EQ(shot.getPixels(), before);
}

TEST(ShotWithoutEngine, TakesOverPixelsOfAnotherPicture) {
    Screenshot shot;
    const std::vector<unsigned char> pixels = {0, 0, 9, 4, 0, 9, 8, 1, 2, 8, 1, 2,
                                               0, 0, 9, 4, 3, 9, 8, 1, 3, 8, 1, 3};
    ASSERT_TRUE(shot.setPixels(4, 2, pixels));
    EXPECT_TRUE(shot.shrink(1));
    EXPECT_EQ(shot.getPixels(), pixels);
    ASSERT_TRUE(shot.shrink(2));
    EXPECT_EQ(shot.getWidth(), 2);
    EXPECT_EQ(shot.getHeight(), 1);
    EXPECT_EQ(shot.getPixels(), (std::vector<unsigned char>{2, 1, 9, 8, 1, 3}));
    markLog();
    EXPECT_FALSE(shot.setPixels(4, 3, pixels));
    EXPECT_FALSE(shot.setPixels(-4, -2, pixels));
    EXPECT_FALSE(shot.setPixels(0, 0, {}));
    EXPECT_LOGGED_TIMES(3, "   [!] Invalid params @ Screenshot::setPixels");
    EXPECT_EQ(shot.getWidth(), 2);
    ASSERT_TRUE(shot.setPixels(4, 3, std::vector<unsigned char>(36, 7)));
    ASSERT_TRUE(shot.shrink(3)); // without the column that remains
    EXPECT_EQ(shot.getPixels(), (std::vector<unsigned char>{7, 7, 7}));
}

TEST(ShotWithoutEngine, IsRefused) {
    Screenshot shot;
    markLog();
    EXPECT_FALSE(shot.take());
    EXPECT_FALSE(shot.takeSmooth([] {}));
    EXPECT_LOGGED_EXACTLY("   [!] Engine not running @ Screenshot::take\n"
                          "   [!] Engine not running @ Screenshot::takeSmooth\n");
}

// --- smooth pictures

class SmoothShot : public Shot {
  protected:
    RVCAMERA *camera = nullptr;
    RVNODE *scene = nullptr;

    void load() {
        RVOPENGL::setBackgroundColor(0, 0, 0, 1);
        camera = new RVCAMERA;
        scene = loadScene({placed(squareMesh("a", "[none]"), {0.3f, 0.1f, -4}, {0, 0, 17}),
                           placed(squareMesh("b", "[none]"), {-0.9f, 0.4f, -6}, {0, 30, -9})});
    }
    void draw() { drawFrame(camera, scene); }
};

// The frame as it is in a target three times as large.
class LargeFrame : public SmoothShot {
  protected:
    LargeFrame() {
        settings.setForceFBO(true);
        settings.setFBOSizeX(3 * 128);
        settings.setFBOSizeY(3 * 96);
    }

    void SetUp() override {
        SmoothShot::SetUp();
        SKIP_WITHOUT_EXTENSIONS(targetExtensions);
    }
};

TEST_F(LargeFrame, IsTheSameAsASmoothPicture) {
    load();
    draw();
    ASSERT_TRUE(shot.take());
    ASSERT_EQ(shot.getWidth(), 3 * 128);
    ASSERT_TRUE(shot.shrink(3));
    const Screenshot large = shot;

    RVNODE::cleanUp();
    settings.setForceFBO(false);
    settings.setFBOSizeX(64);
    settings.setFBOSizeY(48);
    ASSERT_TRUE(restart());
    load();
    draw();
    ASSERT_TRUE(shot.take());
    const Screenshot plain = shot;
    const auto projection = matrixOf(GL_PROJECTION_MATRIX);
    ASSERT_TRUE(shot.takeSmooth([this] { draw(); }, 3));
    EXPECT_EQ(matrixOf(GL_PROJECTION_MATRIX), projection);
    ASSERT_EQ(shot.getWidth(), 128);
    const auto unlike = [&](const Screenshot &other) {
        int pixels = 0;
        for (int y = 0; y < 96; ++y)
            for (int x = 0; x < 128; ++x)
                pixels += std::abs(at(shot, x, y).red - at(other, x, y).red) > 1;
        return pixels;
    };
    EXPECT_LE(unlike(large), 2) << "positions of samples are rounded, and some are on an edge";
    EXPECT_GT(unlike(plain), 100) << "edges";
}

TEST_F(SmoothShot, CountsAsOneFrameForTheClocks) {
    load();
    recorder.stopClock();
    RAVOLT::setFrameDuration(0.25f);
    float seconds = 0;
    int drawn = 0;
    ASSERT_TRUE(shot.takeSmooth(
        [&] {
            draw();
            ++drawn;
            seconds += RAVOLT::getFPSfactor();
        },
        4));
    EXPECT_EQ(drawn, 16);
    EXPECT_NEAR(seconds, 0.25f, 1e-4);
    EXPECT_FLOAT_EQ(RAVOLT::getFrameDuration(), 0.25f);
    RAVOLT::setFrameDuration(0);
}

// --- overlays

class OverlayTest : public Shot {
  protected:
    // What `draw` draws in a 2D block.
    template <class Draw> const Screenshot &drawn(Draw draw) {
        RAVOLT::clear(true, true, false);
        RAVOLT::begin2D();
        draw();
        RAVOLT::end2D();
        EXPECT_TRUE(shot.take());
        return shot;
    }

    // The rows from `top`: a '#' for each pixel that is lit.
    std::string rows(int left, int top, int columns, int number) const {
        std::string text;
        for (int y = top; y < top + number; ++y, text += '\n')
            for (int x = left; x < left + columns; ++x)
                text += at(shot, x, y) == black ? '.' : '#';
        return text;
    }
};

TEST_F(OverlayTest, LettersAreOfDotsFromTheUpperLeftCorner) {
    Overlay overlay;
    overlay.setScale(1);
    drawn([&] { EXPECT_TRUE(overlay.text(10, 20, "LT")); });
    EXPECT_EQ(rows(10, 20, 13, 8), "#.....#####..\n"
                                   "#.......#....\n"
                                   "#.......#....\n"
                                   "#.......#....\n"
                                   "#.......#....\n"
                                   "#.......#....\n"
                                   "####....#....\n"
                                   ".............\n");
}

TEST_F(OverlayTest, ATextLiesWithinItsWidthAndHeightAndHasItsColour) {
    Overlay overlay;
    overlay.setColor(0, 1, 0);
    const std::string text = "Ravolt 1.6\n(99%) \xe4\n";
    drawn([&] { EXPECT_TRUE(overlay.text(7, 5, text)); });
    const int right = 7 + overlay.widthOf(text), bottom = 5 + overlay.heightOf(text);
    EXPECT_LT(right, 128);
    EXPECT_EQ(overlay.heightOf(text), 3 * 24);
    int lit = 0;
    for (int y = 0; y < 96; ++y)
        for (int x = 0; x < 128; ++x)
            if (at(shot, x, y) != black) {
                ++lit;
                EXPECT_EQ(at(shot, x, y), green);
                EXPECT_TRUE(x >= 7 && x < right && y >= 5 && y < bottom) << x << ", " << y;
            }
    EXPECT_GT(lit, 200);
    EXPECT_TRUE(callsOf([&] { EXPECT_EQ(overlay.widthOf(""), 0); }).empty());
}

TEST_F(OverlayTest, ACharacterWithoutALetterIsAQuestionMark) {
    Overlay overlay;
    const auto expected = drawn([&] { overlay.text(5, 5, "a??b"); }).getPixels();
    drawn([&] {
        overlay.text(5, 5,
                     "a\x7f\xe4"
                     "b");
    });
    EXPECT_EQ(shot.getPixels(), expected);
    EXPECT_EQ(overlay.widthOf("\x7f\x01"), overlay.widthOf("??"));
}

TEST_F(OverlayTest, AFontDrawsTheTextWithItsOwnCells) {
    auto *font = new RVFONT;
    Overlay overlay(font);
    drawn([&] { EXPECT_FALSE(overlay.text(0, 0, "A")) << "no texture yet"; });
    std::vector<Pixel> cells(256 * 256, Pixel{0, 0, 0, 0}); // 16 by 16 cells
    for (int y = 0; y < 8; ++y)                             // "A": the cell 33
        for (int x = 0; x < 8; ++x)
            cells[static_cast<std::size_t>((2 * 16 + y) * 256 + 16 + x)] = white;
    font->setTexture(textureOf(256, cells));
    overlay.setColor(1, 0, 0);
    drawn([&] { EXPECT_TRUE(overlay.text(32, 40, "A%d\nA")); });
    EXPECT_EQ(at(shot, 33, 41), red);
    EXPECT_EQ(at(shot, 41, 41), black);
    EXPECT_EQ(at(shot, 33, 57), red) << "the second line";
    EXPECT_EQ(overlay.widthOf("A%d\nA"), 48);
    EXPECT_EQ(overlay.heightOf("A%d\nA"), 32);
}

TEST_F(OverlayTest, ASecondTextAndPictureOfTheSameTextureAreTexturedToo) {
    RVTEXTURE *texture = textureOf(256, std::vector<Pixel>(256 * 256, Pixel{0, 0, 0, 0}));
    auto *font = new RVFONT;
    font->setTexture(texture);
    Overlay overlay(font);
    drawn([&] {
        for (const int x : {10, 40})
            EXPECT_TRUE(overlay.text(x, 10, "A"));
        for (const int x : {10, 40})
            EXPECT_TRUE(overlay.picture(texture, x, 40, 16, 16));
    });
    EXPECT_EQ(rows(0, 0, 128, 96).find('#'), std::string::npos) << "the texture is transparent";
}

TEST_F(OverlayTest, APictureIsUprightBlendedAndMultipliedByTheColour) {
    RVTEXTURE *texture = textureOf(2, {red, green, {255, 255, 255, 128}, {0, 0, 0, 0}});
    Overlay overlay;
    drawn([&] { EXPECT_TRUE(overlay.picture(texture, 10, 20, 20, 10)); });
    EXPECT_EQ(at(shot, 10, 20), red);
    EXPECT_EQ(at(shot, 29, 20), green);
    EXPECT_PIXEL(at(shot, 10, 29), (Pixel{128, 128, 128}), 1);
    EXPECT_EQ(at(shot, 29, 29), black);
    EXPECT_EQ(at(shot, 30, 20), black);
    EXPECT_EQ(at(shot, 9, 20), black);
    overlay.setColor(0.5f, 1, 1, 1);
    drawn([&] { EXPECT_TRUE(overlay.picture(texture, 10, 20)); });
    EXPECT_PIXEL(at(shot, 10, 20), (Pixel{128, 0, 0}), 1);
    EXPECT_EQ(at(shot, 12, 20), black) << "its own size";
}

TEST_F(OverlayTest, WhatFollowsIsDrawnWithoutTextureAndInWhite) {
    RVTEXTURE *texture = textureOf(2, {red, red, red, red});
    Overlay overlay;
    overlay.setColor(0, 1, 0);
    drawn([&] {
        overlay.picture(texture, 0, 0);
        overlay.text(20, 0, "x");
        glRecti(50, 50, 60, 60);
    });
    EXPECT_EQ(at(shot, 55, 55), white);
}

TEST_F(OverlayTest, NullIsNoPicture) {
    markLog();
    EXPECT_FALSE(Overlay().picture(nullptr, 0, 0));
    EXPECT_LOGGED_EXACTLY("   [!] Invalid params @ Overlay::picture\n");
}

TEST_F(OverlayTest, ScaleAndColourAreWithinTheirRanges) {
    Overlay overlay;
    EXPECT_EQ(overlay.getScale(), 2);
    overlay.setScale(0);
    EXPECT_EQ(overlay.getScale(), 1);
    overlay.setScale(1000);
    EXPECT_EQ(overlay.getScale(), 64);
}

TEST_F(OverlayTest, FrameStatisticsAreDrawnWhileTheyAreShown) {
    FrameStatistics frames;
    frames.add(0.02f);
    Overlay overlay;
    overlay.setScale(1);
    drawn([&] { EXPECT_FALSE(frames.draw(overlay)); });
    EXPECT_EQ(std::count(shot.getPixels().begin(), shot.getPixels().end(), 0), 3 * 128 * 96);
    frames.show(true);
    drawn([&] { EXPECT_TRUE(frames.draw(overlay, 3, 4)); });
    const auto pixels = shot.getPixels();
    drawn([&] { overlay.text(3, 4, frames.getText()); });
    EXPECT_EQ(shot.getPixels(), pixels);
    EXPECT_NE(std::count(pixels.begin(), pixels.end(), 0), 3 * 128 * 96);
}

} // namespace
} // namespace ravolt::test
