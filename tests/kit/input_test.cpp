// What the input remembers of SDL's events, without a window.

#include <ravolt/kit/input.h>

#include "tests/kit/events.h"

#include <gtest/gtest.h>

namespace ravolt::test {
namespace {

using kit::Input;

struct InputState : testing::Test {
    Input input;
    void next() { input.beginFrame(); }
};

TEST_F(InputState, AKeyIsDownUntilItIsReleased) {
    EXPECT_TRUE(input.handle(keyEvent(SDLK_w)));
    EXPECT_TRUE(input.isKeyDown(SDLK_w));
    EXPECT_FALSE(input.isKeyDown(SDLK_s));
    next();
    EXPECT_TRUE(input.isKeyDown(SDLK_w));
    EXPECT_TRUE(input.handle(keyEvent(SDLK_w, false)));
    EXPECT_FALSE(input.isKeyDown(SDLK_w));
}

TEST_F(InputState, ARepeatedKeyIsPressedOnce) {
    input.handle(keyEvent(SDLK_w));
    EXPECT_TRUE(input.wasKeyPressed(SDLK_w));
    next();
    input.handle(keyEvent(SDLK_w));
    EXPECT_FALSE(input.wasKeyPressed(SDLK_w));
}

TEST_F(InputState, AKeyThatIsReleasedInItsFrameWasPressed) {
    input.handle(keyEvent(SDLK_RETURN));
    input.handle(keyEvent(SDLK_RETURN, false));
    EXPECT_TRUE(input.wasKeyPressed(SDLK_RETURN));
    EXPECT_FALSE(input.isKeyDown(SDLK_RETURN));
}

TEST_F(InputState, AnAxisIsTheDifferenceOfTwoKeys) {
    EXPECT_EQ(input.keyAxis(SDLK_w, SDLK_s), 0);
    input.handle(keyEvent(SDLK_w));
    EXPECT_EQ(input.keyAxis(SDLK_w, SDLK_s), 1);
    input.handle(keyEvent(SDLK_s));
    EXPECT_EQ(input.keyAxis(SDLK_w, SDLK_s), 0);
    input.handle(keyEvent(SDLK_w, false));
    EXPECT_EQ(input.keyAxis(SDLK_w, SDLK_s), -1);
}

TEST_F(InputState, NumbersThatAreNoKeysAndNoButtonsAreNeverDown) {
    for (const int number : {-1, 512, 100000}) {
        EXPECT_TRUE(input.handle(keyEvent(static_cast<SDLKey>(number))));
        EXPECT_FALSE(input.isKeyDown(number));
        EXPECT_FALSE(input.wasKeyPressed(number));
    }
    EXPECT_TRUE(input.handle(buttonEvent(0, 0, true, 200)));
    for (const int number : {-1, 32, 200})
        EXPECT_FALSE(input.isButtonDown(number));
}

TEST_F(InputState, TextHasCharactersAndBackspaces) {
    input.handle(keyEvent(SDLK_a, true, 'A'));
    input.handle(keyEvent(SDLK_a, true, 'A')); // repeated
    input.handle(keyEvent(SDLK_BACKSPACE));    // without a character
    input.handle(keyEvent(SDLK_BACKSPACE, true, 8));
    EXPECT_EQ(input.getText(), "AA\b\b");
    next();
    EXPECT_EQ(input.getText(), "");
}

TEST_F(InputState, TextIsUtf8) {
    for (const Uint16 character : {0xe4, 0x3b1, 0x20ac})
        input.handle(keyEvent(SDLK_UNKNOWN, true, character));
    EXPECT_EQ(input.getText(), "\u00e4\u03b1\u20ac");
}

TEST_F(InputState, OtherControlCharactersAreNoText) {
    for (const Uint16 character : {0, 1, 9, 13, 27, 31, 127})
        input.handle(keyEvent(SDLK_UNKNOWN, true, character));
    input.handle(keyEvent(SDLK_b, false, 'b')); // a release
    EXPECT_EQ(input.getText(), "");
}

TEST_F(InputState, ButtonsAreDownUntilTheyAreReleased) {
    EXPECT_TRUE(input.handle(buttonEvent(3, 4, true)));
    EXPECT_TRUE(input.isButtonDown());
    EXPECT_TRUE(input.wasButtonPressed());
    EXPECT_FALSE(input.isButtonDown(SDL_BUTTON_RIGHT));
    EXPECT_EQ(input.getWindowPointer().x, 3);
    EXPECT_EQ(input.getWindowPointer().y, 4);
    next();
    EXPECT_TRUE(input.isButtonDown());
    EXPECT_FALSE(input.wasButtonPressed());
    EXPECT_TRUE(input.handle(buttonEvent(3, 4, false)));
    EXPECT_FALSE(input.isButtonDown());
}

TEST_F(InputState, TheWheelCountsItsStepsOfAFrame) {
    for (const Uint8 button : {SDL_BUTTON_WHEELUP, SDL_BUTTON_WHEELUP, SDL_BUTTON_WHEELDOWN}) {
        input.handle(buttonEvent(0, 0, true, button));
        input.handle(buttonEvent(0, 0, false, button));
    }
    EXPECT_EQ(input.getWheel(), 1);
    EXPECT_FALSE(input.isButtonDown(SDL_BUTTON_WHEELUP));
    next();
    EXPECT_EQ(input.getWheel(), 0);
}

TEST_F(InputState, MotionIsTheSumOfAFrame) {
    EXPECT_EQ(input.getWindowPointer().x, -1);
    EXPECT_EQ(input.getWindowPointer().y, -1);
    EXPECT_TRUE(input.handle(motionEvent(10, 20, 10, 20)));
    EXPECT_TRUE(input.handle(motionEvent(7, 25, -3, 5)));
    EXPECT_EQ(input.getMotion().x, 7);
    EXPECT_EQ(input.getMotion().y, 25);
    EXPECT_EQ(input.getWindowPointer().x, 7);
    next();
    EXPECT_EQ(input.getMotion().x, 0);
    EXPECT_EQ(input.getMotion().y, 0);
    EXPECT_EQ(input.getWindowPointer().y, 25);
}

TEST_F(InputState, AllIsReleasedWithoutTheKeyboard) {
    input.handle(keyEvent(SDLK_w));
    input.handle(buttonEvent(0, 0, true));
    EXPECT_FALSE(input.handle(focusEvent(SDL_APPMOUSEFOCUS, false)));
    EXPECT_FALSE(input.handle(focusEvent(SDL_APPINPUTFOCUS, true)));
    EXPECT_TRUE(input.isKeyDown(SDLK_w));
    EXPECT_TRUE(input.isButtonDown());
    EXPECT_FALSE(input.handle(focusEvent(SDL_APPINPUTFOCUS, false)));
    EXPECT_FALSE(input.isKeyDown(SDLK_w));
    EXPECT_FALSE(input.isButtonDown());
}

TEST_F(InputState, OtherEventsAreNoInput) {
    for (const Uint8 type : {SDL_VIDEORESIZE, SDL_VIDEOEXPOSE, SDL_USEREVENT, SDL_QUIT})
        EXPECT_FALSE(input.handle(eventOf(type)));
}

TEST_F(InputState, TheWindowOrTheApplicationClosesIt) {
    EXPECT_FALSE(input.isClosed());
    input.handle(eventOf(SDL_QUIT));
    EXPECT_TRUE(input.isClosed());
    Input other;
    other.close();
    EXPECT_TRUE(other.isClosed());
}

TEST_F(InputState, WithoutAWindowThePointerIsWhereSdlHasIt) {
    input.handle(motionEvent(10, 20));
    EXPECT_EQ(input.getPointer().x, 10);
    EXPECT_EQ(input.getPointer().y, 20);
    EXPECT_EQ(input.getBlockSize().x, 0);
}

} // namespace
} // namespace ravolt::test
