// X11 by way of SDL_GetWMInfo. The connection is SDL's, so every use of it stands between SDL's
// lock and unlock. The window manager may take windows away at any time, hence the error handler:
// Xlib's own would end the process.

#include "engine/app/windowSystem.h"

#include <SDL/SDL.h>
#include <SDL/SDL_syswm.h>
#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>

#include <algorithm>
#include <cstdint>

namespace {

int ignoreError(Display *, XErrorEvent *) { return 0; }

// One use of SDL's connection.
class Connection {
  public:
    Connection(void *opened, void (*lock)(), void (*leave)())
        : display(static_cast<Display *>(opened)), unlock(leave) {
        if (lock)
            lock();
        XSync(display, False);
        before = XSetErrorHandler(ignoreError);
    }
    Connection(const Connection &) = delete;
    Connection &operator=(const Connection &) = delete;
    ~Connection() {
        XSync(display, False);
        XSetErrorHandler(before);
        if (unlock)
            unlock();
    }

    Display *const display;

  private:
    void (*unlock)();
    XErrorHandler before;
};

struct Size {
    int width = 0;
    int height = 0;
};

// Size with the border; zeros when the window is gone.
Size sizeOf(Display *display, Window window) {
    Window root;
    int x, y;
    unsigned int width, height, border, depth;
    if (!XGetGeometry(display, window, &root, &x, &y, &width, &height, &border, &depth))
        return {};
    return {static_cast<int>(width + 2 * border), static_cast<int>(height + 2 * border)};
}

// The frame that a window manager has put around `window`: its ancestor right below the root, or
// the window itself.
Window frameOf(Display *display, Window window) {
    for (;;) {
        Window root, parent, *children = nullptr;
        unsigned int number;
        if (!XQueryTree(display, window, &root, &parent, &children, &number))
            return window;
        if (children)
            XFree(children);
        if (parent == root || parent == None)
            return window;
        window = parent;
    }
}

// A window of a fixed size says so to the window manager, which would hold it to that size.
void moveFixedSize(Display *display, Window window, Size size) {
    XSizeHints hints;
    long supplied;
    if (!XGetWMNormalHints(display, window, &hints, &supplied) || !(hints.flags & PMaxSize))
        return;
    hints.min_width = hints.max_width = size.width;
    hints.min_height = hints.max_height = size.height;
    XSetWMNormalHints(display, window, &hints);
}

} // namespace

namespace ravolt {

SystemWindow::SystemWindow() {
    SDL_SysWMinfo info = {};
    info.version = {1, 2, 12};
    if (SDL_GetWMInfo(&info) != 1 || info.subsystem != SDL_SYSWM_X11 || !info.info.x11.display)
        return;
    display = info.info.x11.display;
    window = info.info.x11.wmwindow ? info.info.x11.wmwindow : info.info.x11.window;
    lock = info.info.x11.lock_func;
    unlock = info.info.x11.unlock_func;
}

void *SystemWindow::handle() const {
    return reinterpret_cast<void *>(static_cast<std::uintptr_t>(window));
}

void SystemWindow::setOuterSize(int width, int height) const {
    if (!window)
        return;
    const Connection connection(display, lock, unlock);
    const Size inner = sizeOf(connection.display, window);
    const Size outer = sizeOf(connection.display, frameOf(connection.display, window));
    const Size wanted = {std::max(1, width - (outer.width - inner.width)),
                         std::max(1, height - (outer.height - inner.height))};
    if (wanted.width == inner.width && wanted.height == inner.height)
        return;
    moveFixedSize(connection.display, window, wanted);
    XResizeWindow(connection.display, window, static_cast<unsigned int>(wanted.width),
                  static_cast<unsigned int>(wanted.height));
}

void SystemWindow::raiseToTop() const {
    if (!window)
        return;
    const Connection connection(display, lock, unlock);
    XMoveWindow(connection.display, window, 0, 0);
    XRaiseWindow(connection.display, window);

    // A window manager keeps windows on top itself, when it is asked.
    constexpr long add = 1, fromApplication = 1;
    XEvent request = {};
    request.xclient.type = ClientMessage;
    request.xclient.window = window;
    request.xclient.message_type = XInternAtom(connection.display, "_NET_WM_STATE", False);
    request.xclient.format = 32;
    request.xclient.data.l[0] = add;
    request.xclient.data.l[1] =
        static_cast<long>(XInternAtom(connection.display, "_NET_WM_STATE_ABOVE", False));
    request.xclient.data.l[3] = fromApplication;
    XSendEvent(connection.display, DefaultRootWindow(connection.display), False,
               SubstructureNotifyMask | SubstructureRedirectMask, &request);
}

} // namespace ravolt
