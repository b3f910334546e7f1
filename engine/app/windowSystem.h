#pragma once

// The window as the window system knows it: the one place that differs between systems. On X11 the
// calls act on SDL's top-level window; with a video driver that has no X11 window, or none at all,
// they do nothing.

namespace ravolt {

class SystemWindow {
  public:
    // Asks SDL for the window it has open.
    SystemWindow();

    // The window system's handle: on X11 the window's number, cast. NULL for none.
    void *handle() const;

    // Gives the window's frame the size in pixels; the position stays.
    void setOuterSize(int width, int height) const;

    // Moves the window to the screen's top left corner and above all others; the size stays.
    void raiseToTop() const;

  private:
    void *display = nullptr;
    unsigned long window = 0;
    void (*lock)() = nullptr;
    void (*unlock)() = nullptr;
};

} // namespace ravolt
