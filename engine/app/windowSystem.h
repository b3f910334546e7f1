#pragma once

// The window system's own window, the only code that differs between window systems. On X11 the
// calls act on SDL's top-level window. With a video driver without X11 windows, or without any,
// they do nothing.

namespace ravolt {

class SystemWindow {
  public:
    // Gets the open window from SDL.
    SystemWindow();

    // The window system's handle: on X11 the window's number, cast. NULL for none.
    void *handle() const;

    // Resizes the window so that, with its frame, it has this size in pixels. Does not move it.
    void setOuterSize(int width, int height) const;

    // Moves the window to the screen's top left corner and above all others. Does not resize it.
    void raiseToTop() const;

  private:
    void *display = nullptr;
    unsigned long window = 0;
    void (*lock)() = nullptr;
    void (*unlock)() = nullptr;
};

} // namespace ravolt
