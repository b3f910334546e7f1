// Finds a window by its title over a connection of its own to the X server.

#include "tests/tools/otherWindow.h"

#include <X11/Xlib.h>
#include <chrono>
#include <thread>

namespace tool_test {

namespace {

template <class Condition> bool comesTrue(const Condition &condition) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return true;
}

std::string titleOf(Display *display, Window window) {
    char *name = nullptr;
    XFetchName(display, window, &name);
    const std::string title = name ? name : "";
    if (name)
        XFree(name);
    return title;
}

// Windows of other programs may be closed while they are read.
int ignore(Display *, XErrorEvent *) { return 0; }

} // namespace

struct OtherWindow::Connection {
    Display *display = XOpenDisplay(nullptr);
    std::string part;
    Window window = 0;
    Time time = 1000;

    bool find() {
        Window root = 0, parent = 0, *children = nullptr;
        unsigned int count = 0;
        window = 0;
        if (!XQueryTree(display, DefaultRootWindow(display), &root, &parent, &children, &count))
            return false;
        for (unsigned int i = 0; i < count; ++i)
            if (titleOf(display, children[i]).find(part) != std::string::npos)
                window = children[i];
        if (children)
            XFree(children);
        return window != 0;
    }

    // Events without time between them are the keyboard's own repetition to SDL.
    void send(int type, KeyCode code) {
        XEvent event = {};
        event.xkey.type = type;
        event.xkey.display = display;
        event.xkey.window = window;
        event.xkey.root = DefaultRootWindow(display);
        event.xkey.same_screen = True;
        event.xkey.time = time += 50;
        event.xkey.keycode = code;
        XSendEvent(display, window, False, type == KeyPress ? KeyPressMask : KeyReleaseMask,
                   &event);
        XSync(display, False);
    }
};

OtherWindow::OtherWindow(const std::string &part) : connection(new Connection) {
    connection->part = part;
    if (!connection->display)
        return;
    XSetErrorHandler(ignore);
    comesTrue([this] { return connection->find(); });
}

OtherWindow::~OtherWindow() {
    if (connection->display)
        XCloseDisplay(connection->display);
}

bool OtherWindow::isThere() const { return connection->window != 0; }

void OtherWindow::press(const std::string &key) {
    const KeyCode code = XKeysymToKeycode(connection->display, XStringToKeysym(key.c_str()));
    connection->send(KeyPress, code);
    connection->send(KeyRelease, code);
}

std::string OtherWindow::titleOnceItIs(const std::string &title) const {
    std::string seen;
    comesTrue([&] {
        seen = titleOf(connection->display, connection->window);
        return seen == title;
    });
    return seen;
}

bool OtherWindow::isClosed() const {
    return comesTrue([this] { return !connection->find(); });
}

} // namespace tool_test
