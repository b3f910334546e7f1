#pragma once

union SDL_Event;

namespace ravolt::kit {

// The engine's window: its size and the full screen, changed without the loss of textures, buffers
// and programs. Where SDL's video driver would lose them nothing is changed, and the result is
// false. It has no state of its own; use it from RAVOLT::init to RAVOLT::free.
//
//     while (input.poll([&](const SDL_Event &event) { return window.handle(event); })) ...
class Window {
  public:
    // Follows the user: a window that was resized (RVSETTINGS::setResizable), and Alt and Enter for
    // the full screen. True for these events, also when the change has failed.
    bool handle(const SDL_Event &event);

    // The size of the window in pixels, and of viewport and projection; render targets are not
    // resized. False, with a line in the log, for a size below 1 or above what OpenGL draws, and
    // where SDL cannot change it: the size is then the one before.
    bool resize(int width, int height);

    // The full screen and back, in the same number of pixels, which the display scales or centres.
    // RVSETTINGS::isSDLFullScreen remains what it was at the start. False, with a line in the log,
    // where SDL's video driver cannot change it.
    bool setFullScreen(bool on);
    bool isFullScreen() const;
};

} // namespace ravolt::kit
