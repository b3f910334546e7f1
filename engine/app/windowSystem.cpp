// X11 through SDL_GetWMInfo. SDL owns the connection, so it is used only between SDL's lock and
// unlock functions. A window may be destroyed at any time, hence the error handler: Xlib's own ends
// the process.

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

// Locks SDL's connection and ignores errors for its lifetime.
class Connection {
  public:
    Connection(void *opened, void (*lock)(), void (*release)())
        : display(static_cast<Display *>(opened)), unlock(release) {
        if (lock)
            lock();
        XSync(display, False);
        previousHandler = XSetErrorHandler(ignoreError);
    }
    Connection(const Connection &) = delete;
    Connection &operator=(const Connection &) = delete;
    ~Connection() {
        XSync(display, False);
        XSetErrorHandler(previousHandler);
        if (unlock)
            unlock();
    }

    Display *const display;

  private:
    void (*unlock)();
    XErrorHandler previousHandler;
};

struct Size {
    int width = 0;
    int height = 0;
};

// Size with the border; zeros when the window does not exist.
Size sizeOf(Display *display, Window window) {
    Window root;
    int x, y;
    unsigned int width, height, border, depth;
    if (!XGetGeometry(display, window, &root, &x, &y, &width, &height, &border, &depth))
        return {};
    return {static_cast<int>(width + 2 * border), static_cast<int>(height + 2 * border)};
}

// The frame window that a window manager has created for `window`: its ancestor directly below the
// root, or the window itself.
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

// Changes the size hints of a window that is not resizable, which the window manager enforces.
void setFixedSize(Display *display, Window window, Size size) {
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
    const Size newSize = {std::max(1, width - (outer.width - inner.width)),
                          std::max(1, height - (outer.height - inner.height))};
    if (newSize.width == inner.width && newSize.height == inner.height)
        return;
    setFixedSize(connection.display, window, newSize);
    XResizeWindow(connection.display, window, static_cast<unsigned int>(newSize.width),
                  static_cast<unsigned int>(newSize.height));
}

void SystemWindow::raiseToTop() const {
    if (!window)
        return;
    const Connection connection(display, lock, unlock);
    XMoveWindow(connection.display, window, 0, 0);
    XRaiseWindow(connection.display, window);

    // Requests the window manager to show the window always on top.
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
