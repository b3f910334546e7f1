#pragma once

#include <array>
#include <bitset>
#include <deque>
#include <functional>
#include <string>

union SDL_Event;

namespace ravolt::kit {

// Pixels from the left and from the top.
struct Pixel {
    int x; // from the left
    int y; // from the top
};

// Keys, pointer and text from SDL's events, and the events of the engine's widgets. It has no state
// outside of itself; create it at any time and call `poll` once a frame.
//
//     while (input.poll()) {
//         ... a frame, with its 2D block ...
//         if (input.manageGUI() == button->getId()) ...
//         RAVOLT::swap();
//     }
//
// Coordinates are pixels of the 2D block wherever it is not said otherwise: those of the window or
// of its viewport, also after RVSETTINGS::resize, or those of the render target into which the
// block is drawn, as with RVSETTINGS::setForceFBO, and turned in landscape mode. What it is drawn
// into is what is bound in `manageGUI`; without that call it is the window, or target 0 where it is
// forced.
class Input {
  public:
    // Sees an event first; the input ignores those for which it returns true.
    using Filter = std::function<bool(const SDL_Event &)>;

    // Begins a frame and handles all events that are waiting. False once the window was closed.
    bool poll(const Filter &filter = nullptr);

    // For an application with a loop of its own, which calls these instead of `poll`. beginFrame
    // comes before the events of a frame; it also switches on SDL's characters and its key repeat.
    // `handle` returns whether the event was one of the keyboard or the pointer.
    void beginFrame();
    bool handle(const SDL_Event &event);

    // Whether SDL_QUIT has come, or `close` was called.
    bool isClosed() const { return closed; }
    // The next `poll` returns false.
    void close() { closed = true; }

    // Keys by SDL's numbers (SDLK_SPACE); other numbers are never down. A key that repeats is
    // pressed once. A key that was pressed and released since the last frame was pressed as well.
    // All keys and buttons are released when the window loses the keyboard.
    bool isKeyDown(int key) const;
    bool wasKeyPressed(int key) const;             // in this frame
    int keyAxis(int positive, int negative) const; // 1, 0 or -1: which of two keys is down

    // Text of this frame in UTF-8, with key repeat; '\b' for a backspace. No other control
    // characters.
    const std::string &getText() const { return text; }

    // Buttons by SDL's numbers, 1 for the left one.
    bool isButtonDown(int button = 1) const;
    bool wasButtonPressed(int button = 1) const; // in this frame
    int getWheel() const { return wheel; }       // steps of this frame, positive away from the user

    // Where the pointer is; (-1, -1) before it has moved. The second one is in pixels of the window
    // as RAVOLT::select takes them.
    Pixel getPointer() const { return toBlock(pointer); }
    Pixel getWindowPointer() const { return pointer; }
    // Its motion in this frame: pixels of the window, along the axes of the 2D block.
    Pixel getMotion() const;
    // The part of it while a button was down: what came before a press in this frame is no drag.
    Pixel getDrag(int button = 1) const;

    // Passes what has happened on to the widgets of the last 2D block, by
    // RVELEMENT::manageGUIEvents: call it once a frame directly after end2D, with the target and
    // the viewport of the block. Every character and every click counts, however many of them a
    // frame has. Returns the id of the button that was used, or 0; what comes after that is passed
    // on by the next call.
    unsigned int manageGUI();
    // Whether the pointer was on a widget, or a widget was held, at any moment that the last
    // manageGUI has passed on: such a press is not for the scene.
    bool isOnWidget() const { return onWidget; }

    // The part of the window in which the 2D block is shown, in its pixels. By default, and with a
    // width or height of 0, this is the viewport, or the whole window for a render target. For a
    // target that the application shows in a part of the window.
    void setArea(int x, int y, int width, int height);

    // Width and height of the 2D block; 0 by 0 before RAVOLT::init.
    static Pixel getWindowSize();
    Pixel getBlockSize() const;
    Pixel toBlock(Pixel windowPixel) const;

  private:
    // The input at one moment, for the widgets.
    struct Step {
        char key;
        Pixel pointer; // of the window
        bool left, right;
        bool moved; // nothing but the pointer has changed
    };

    bool handleKey(const SDL_Event &event);
    void addMotion(int dx, int dy);
    void handleText(unsigned int character);
    bool handleButton(const SDL_Event &event);
    void releaseAll();
    void addStep(char key, bool moved = false);

    // Left, top, width and height.
    struct Rectangle {
        int x, y, width, height;
        bool isEmpty() const { return width < 1 || height < 1; }
    };
    void findBlock();
    bool knowsViewport() const;
    Pixel drawnSize() const;
    Rectangle shownArea() const;
    Pixel toDrawn(Pixel windowPixel) const;

    static constexpr int numberOfKeys = 512, numberOfButtons = 32;
    std::bitset<numberOfKeys> keysDown, keysPressed;
    std::bitset<numberOfButtons> buttonsDown, buttonsPressed;
    std::string text;
    Pixel pointer = {-1, -1}, motion = {0, 0};
    std::array<Pixel, numberOfButtons> drags = {};
    int wheel = 0;
    std::deque<Step> steps; // that the widgets have not got yet
    bool onWidget = false, closed = false;
    Rectangle area = {0, 0, 0, 0};     // that the application has set; empty for none
    Rectangle viewport = {0, 0, 0, 0}; // of the last manageGUI; empty before
    bool drawnIntoTarget = false;      // then
    Pixel windowThen = {0, 0};         // its size
};

} // namespace ravolt::kit
