// SDL's events in a real window: the pixel in which a widget is seen is the pixel that presses it,
// in landscape mode, in a resized window, in a forced target and in a part of the window; and what
// happens within one frame.

#include <ravolt/kit/input.h>

#include "ravolt/RVBUTTON.h"
#include "ravolt/RVFBO.h"
#include "ravolt/RVFONT.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVTEXTFIELD.h"
#include "tests/kit/events.h"
#include "tests/support/engineFixture.h"
#include "tests/support/realDriver.h"

#include <optional>
#include <set>

namespace ravolt::test {
namespace {

using kit::Input;

// Pushes events through SDL's queue, and draws a button in a colour of its own.
class InputPixels : public EngineTest {
  protected:
    static constexpr int left = 10, top = 20, sizeX = 24, sizeY = 12;
    static constexpr Pixel color = {255, 0, 255};
    Input input;
    RVBUTTON *button = nullptr;
    RVNODE *root = nullptr;

    void SetUp() override {
        EngineTest::SetUp();
        root = new RVNODE;
        button = new RVBUTTON;
        button->setThickness(0);
        button->setSizes(sizeX, sizeY);
        button->setPosition(float(left), float(top));
        button->setColor(1, 0, 1, 1);
        button->setScissorStatus(false);
        button->link(root);
        input.poll(); // what the start of the window has left in the queue
    }

    static void push(SDL_Event event) { ASSERT_EQ(SDL_PushEvent(&event), 0); }
    static void pushClick(int x, int y) {
        push(buttonEvent(x, y, true));
        push(buttonEvent(x, y, false));
    }

    void draw() {
        RAVOLT::clear(true, true, false);
        RAVOLT::begin2D();
        root->pass();
        RAVOLT::end2D();
    }

    unsigned int frame() {
        EXPECT_TRUE(input.poll());
        draw();
        return input.manageGUI();
    }

    // Whether a click on the window's pixel uses the button.
    bool isClickedAt(int x, int y) {
        pushClick(x, y);
        bool used = frame() == button->getId();
        while (frame() == button->getId()) // the rest of a click
            used = true;
        return used;
    }

    // The pixels of a picture that show the button, from the top left.
    static std::set<std::pair<int, int>> shown(const Picture &picture) {
        std::set<std::pair<int, int>> pixels;
        for (int y = 0; y < picture.height; ++y)
            for (int x = 0; x < picture.width; ++x)
                if (picture.at(x, y) == color)
                    pixels.insert({x, y});
        return pixels;
    }

    // Clicks on the corners of what is seen, just inside of it, and some pixels beside it.
    void expectClicksWhereItIsSeen(const std::set<std::pair<int, int>> &pixels, double scaleX = 1,
                                   double scaleY = 1) {
        ASSERT_FALSE(pixels.empty());
        int minX = 1 << 20, minY = 1 << 20, maxX = 0, maxY = 0;
        for (const auto &[x, y] : pixels) {
            minX = std::min(minX, x);
            minY = std::min(minY, y);
            maxX = std::max(maxX, x);
            maxY = std::max(maxY, y);
        }
        EXPECT_EQ(pixels.size(), std::size_t(maxX - minX + 1) * std::size_t(maxY - minY + 1));
        const auto at = [&](double x, double y) {
            return isClickedAt(static_cast<int>((x + 0.5) * scaleX),
                               static_cast<int>((y + 0.5) * scaleY));
        };
        const double middleX = (minX + maxX) / 2, middleY = (minY + maxY) / 2;
        EXPECT_TRUE(at(minX + 1, minY + 1));
        EXPECT_TRUE(at(maxX - 1, minY + 1));
        EXPECT_TRUE(at(minX + 1, maxY - 1));
        EXPECT_TRUE(at(maxX - 1, maxY - 1));
        EXPECT_FALSE(at(minX - 3, middleY));
        EXPECT_FALSE(at(maxX + 4, middleY));
        EXPECT_FALSE(at(middleX, minY - 3));
        EXPECT_FALSE(at(middleX, maxY + 4));
    }
};

TEST_F(InputPixels, AWindowHasItsOwnPixels) {
    frame();
    EXPECT_EQ(input.getBlockSize().x, width);
    EXPECT_EQ(input.getBlockSize().y, height);
    expectClicksWhereItIsSeen(shown(readFrame()));
    push(motionEvent(50, 60));
    input.poll();
    EXPECT_EQ(input.getPointer().x, 50);
    EXPECT_EQ(input.getPointer().y, 60);
}

TEST_F(InputPixels, AResizedWindowHasItsNewPixels) {
    frame();
    ASSERT_TRUE(RVSETTINGS::resize(0, 0, 200, 150));
    EXPECT_EQ(input.getBlockSize().x, 200); // before the next frame, too
    frame();
    RAVOLT::swap();
    frame();
    EXPECT_EQ(input.getBlockSize().x, 200);
    expectClicksWhereItIsSeen(shown(readFrame()));
}

TEST_F(InputPixels, APartOfTheWindowHasItsOwnPixels) {
    RVOPENGL::resize(40, 30, 64, 48); // from the top left
    frame();
    const auto pixels = shown(readFrame());
    EXPECT_TRUE(pixels.count({40 + left, 30 + top}));
    EXPECT_EQ(input.getBlockSize().x, 64);
    expectClicksWhereItIsSeen(pixels);
}

// Without manageGUI the viewport is not known.
TEST_F(InputPixels, TheApplicationSetsAPart) {
    EXPECT_EQ(input.getBlockSize().x, width);
    input.setArea(40, 30, 64, 48);
    EXPECT_EQ(input.getBlockSize().x, 64);
    push(motionEvent(50, 60));
    input.poll();
    EXPECT_EQ(input.getPointer().x, 10);
    EXPECT_EQ(input.getPointer().y, 30);
    input.setArea(0, 0, 0, 0);
    EXPECT_EQ(input.getPointer().x, 50);
}

class LandscapePixels : public InputPixels {
  protected:
    LandscapePixels() { settings.setLandscape(true); }
};

TEST_F(LandscapePixels, AreTurned) {
    frame();
    EXPECT_EQ(input.getBlockSize().x, height);
    EXPECT_EQ(input.getBlockSize().y, width);
    expectClicksWhereItIsSeen(shown(readFrame()));
    push(motionEvent(50, 60, 3, 4));
    input.poll();
    EXPECT_EQ(input.getPointer().x, height - 60);
    EXPECT_EQ(input.getPointer().y, 50);
    EXPECT_EQ(input.getMotion().x, -4);
    EXPECT_EQ(input.getMotion().y, 3);
}

TEST_F(LandscapePixels, OfAPartAreTurnedInIt) {
    RVOPENGL::resize(40, 20, 48, 64);
    frame();
    expectClicksWhereItIsSeen(shown(readFrame()));
}

class TargetPixels : public InputPixels {
  protected:
    TargetPixels() { settings.setForceFBO(true); }

    void SetUp() override {
        InputPixels::SetUp();
        SKIP_WITHOUT_EXTENSIONS(targetExtensions);
    }

    // The target's pixels, and how much larger those of the window are. The engine's target 0 is
    // 64 by 48.
    void expectClicksInTarget() {
        frame();
        const RVFBO *target = RVFBO::getCurrent();
        ASSERT_EQ(target, RVOPENGL::getFbo(0));
        const auto pixels = shown(readArea(0, height - 48, 64, 48)); // OpenGL's lowest 48 rows
        expectClicksWhereItIsSeen(pixels, RVSETTINGS::getSDLWindowX() / 64.0,
                                  RVSETTINGS::getSDLWindowY() / 48.0);
    }
};

TEST_F(TargetPixels, AreThoseOfTheTarget) {
    EXPECT_EQ(input.getBlockSize().x, 64); // before the first frame, too
    expectClicksInTarget();
    EXPECT_EQ(input.getBlockSize().x, 64);
    EXPECT_EQ(input.getBlockSize().y, 48);
    push(motionEvent(101, 60));
    input.poll();
    EXPECT_EQ(input.getPointer().x, 50);
    EXPECT_EQ(input.getPointer().y, 30);
}

// The lower right quarter of the window shows the target.
TEST_F(TargetPixels, AreShownInAPartOfTheWindow) {
    input.setArea(width / 2, height / 2, width / 2, height / 2);
    frame();
    push(motionEvent(width / 2 + 10, height / 2 + 5));
    input.poll();
    EXPECT_EQ(input.getPointer().x, 10);
    EXPECT_EQ(input.getPointer().y, 5);
    EXPECT_TRUE(isClickedAt(width / 2 + left + 2, height / 2 + top + 2));
}

// The application shows the target itself, and draws the 2D block into the window.
TEST_F(TargetPixels, AreThoseOfTheWindowWhereTheTargetIsUnbound) {
    const auto drawInWindow = [this] {
        input.poll();
        RAVOLT::clear(true, true, false);
        RVFBO::unbind();
        glViewport(0, 0, width, height);
        RAVOLT::begin2D();
        root->pass();
        RAVOLT::end2D();
        return input.manageGUI();
    };
    drawInWindow();
    EXPECT_EQ(input.getBlockSize().x, width);
    pushClick(left + 2, top + 2);
    EXPECT_EQ(drawInWindow(), button->getId());
}

class TurnedTargetPixels : public TargetPixels {
  protected:
    TurnedTargetPixels() { settings.setLandscape(true); }
};

TEST_F(TurnedTargetPixels, AreTurnedInTheTarget) {
    button->setPosition(5, 12);
    expectClicksInTarget();
    EXPECT_EQ(input.getBlockSize().x, 48);
}

// A click within a frame, and a drag within a frame.
TEST_F(InputPixels, AClickWithinAFrameCounts) {
    frame();
    pushClick(left + 2, top + 2);
    EXPECT_EQ(frame(), button->getId());
    EXPECT_TRUE(input.isOnWidget());
    EXPECT_EQ(frame(), 0u);
    push(motionEvent(0, 0));
    frame();
    EXPECT_FALSE(input.isOnWidget());
}

TEST_F(InputPixels, EachFrameUsesOneButtonAndLosesNone) {
    frame();
    pushClick(left + 2, top + 2);
    pushClick(left + 3, top + 3);
    EXPECT_EQ(frame(), button->getId());
    EXPECT_EQ(frame(), button->getId());
    EXPECT_EQ(frame(), 0u);
}

TEST_F(InputPixels, ADragWithinAFrameMovesTheBox) {
    button->setStaticStatus(false);
    frame();
    push(buttonEvent(left + 2, top + 2, true));
    for (int i = 1; i <= 5; ++i)
        push(motionEvent(left + 2 + i, top + 2 + i));
    push(buttonEvent(left + 7, top + 7, false));
    frame();
    EXPECT_EQ(button->getPosition().x, left + 5);
    EXPECT_EQ(button->getPosition().y, top + 5);
}

// A field in a font of 8 pixels, focused by a click.
TEST_F(InputPixels, AllCharactersOfAFrameAreTyped) {
    auto *font = new RVFONT;
    font->setCharSizeX(8);
    auto *field = new RVTEXTFIELD;
    field->setFont(font);
    field->setSizes(120, 16);
    field->setPosition(0, 60);
    field->clear();
    field->link(root);
    frame();
    pushClick(4, 64);
    frame();
    for (const char letter : {'R', 'a', 'w', 'x'})
        push(keyEvent(SDLK_UNKNOWN, true, static_cast<Uint16>(letter)));
    push(keyEvent(SDLK_UNKNOWN, true, 0xe4)); // not in the font
    push(keyEvent(SDLK_UNKNOWN, true, 127));
    push(keyEvent(SDLK_BACKSPACE));
    push(keyEvent(SDLK_BACKSPACE));
    push(keyEvent(SDLK_UNKNOWN, true, 'v'));
    frame();
    EXPECT_STREQ(field->getCaption(), "Rav");
}

TEST_F(InputPixels, WithoutManageGUITheOldestStepsAreDropped) {
    const auto click = [this] {
        input.handle(buttonEvent(left + 2, top + 2, true));
        input.handle(buttonEvent(left + 2, top + 2, false));
    };
    const auto type = [this](int characters) {
        for (int i = 0; i < characters; ++i)
            input.handle(keyEvent(SDLK_a, true, 'a'));
    };
    draw();
    click();
    type(1000);
    EXPECT_EQ(input.manageGUI(), button->getId());
    click();
    type(5000);
    EXPECT_EQ(input.manageGUI(), 0u);
}

TEST_F(InputPixels, AFilterHidesEvents) {
    push(keyEvent(SDLK_w));
    push(keyEvent(SDLK_s));
    EXPECT_TRUE(input.poll([](const SDL_Event &event) {
        return event.type == SDL_KEYDOWN && event.key.keysym.sym == SDLK_w;
    }));
    EXPECT_FALSE(input.isKeyDown(SDLK_w));
    EXPECT_TRUE(input.isKeyDown(SDLK_s));
}

TEST_F(InputPixels, PollEndsWithTheWindow) {
    push(eventOf(SDL_QUIT));
    EXPECT_FALSE(input.poll());
    EXPECT_FALSE(input.poll());
}

TEST_F(InputPixels, PollSwitchesCharactersAndRepeatOn) {
    EXPECT_EQ(SDL_EnableUNICODE(-1), 1);
    int delay = 0, interval = 0;
    SDL_GetKeyRepeat(&delay, &interval);
    EXPECT_EQ(delay, SDL_DEFAULT_REPEAT_DELAY);
    EXPECT_EQ(interval, SDL_DEFAULT_REPEAT_INTERVAL);
}

} // namespace
} // namespace ravolt::test
