// The least window manager that SDL 2 needs to fill the screen: it maps windows where they want to
// be, and gives a window the whole screen when it requests _NET_WM_STATE_FULLSCREEN. It prints a
// line whenever a window begins ("full") or ceases ("window") to cover the whole screen, which
// SDL 1.2 does by a window of its own. It ends with the X server.

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <cstdio>
#include <map>

namespace {

Display *display = nullptr;
Window root = 0;
std::map<Window, XWindowAttributes> before; // of the windows that have the full screen

Atom atom(const char *name) { return XInternAtom(display, name, False); }

// Windows of other programs may be closed while they are read.
int ignore(Display *, XErrorEvent *) { return 0; }

void setAtoms(Window window, const char *property, Atom *values, int count) {
    XChangeProperty(display, window, atom(property), XA_ATOM, 32, PropModeReplace,
                    reinterpret_cast<unsigned char *>(values), count);
}

void announceManager() {
    Window child = XCreateSimpleWindow(display, root, -10, -10, 1, 1, 0, 0, 0);
    for (const Window window : {root, child})
        XChangeProperty(display, window, atom("_NET_SUPPORTING_WM_CHECK"), XA_WINDOW, 32,
                        PropModeReplace, reinterpret_cast<unsigned char *>(&child), 1);
    Atom supported[] = {atom("_NET_WM_STATE"), atom("_NET_WM_STATE_FULLSCREEN")};
    setAtoms(root, "_NET_SUPPORTED", supported, 2);
}

void fillScreen(Window window, bool fill) {
    XWindowAttributes screen;
    XGetWindowAttributes(display, root, &screen);
    if (fill && !before.count(window)) {
        XGetWindowAttributes(display, window, &before[window]);
        XMoveResizeWindow(display, window, 0, 0, screen.width, screen.height);
        XRaiseWindow(display, window);
    } else if (!fill && before.count(window)) {
        const XWindowAttributes &old = before[window];
        XMoveResizeWindow(display, window, old.x, old.y, old.width, old.height);
        before.erase(window);
    }
    Atom state[] = {atom("_NET_WM_STATE_FULLSCREEN")};
    setAtoms(window, "_NET_WM_STATE", state, fill ? 1 : 0);
}

void changeState(const XClientMessageEvent &message) {
    const Atom full = atom("_NET_WM_STATE_FULLSCREEN");
    if (message.message_type != atom("_NET_WM_STATE") ||
        (Atom(message.data.l[1]) != full && Atom(message.data.l[2]) != full))
        return;
    const long action = message.data.l[0]; // remove, add, toggle
    fillScreen(message.window, action == 1 || (action == 2 && !before.count(message.window)));
}

void map(Window window) {
    XMoveWindow(display, window, 0, 0);
    XMapWindow(display, window);
}

void configure(const XConfigureRequestEvent &request) {
    XWindowChanges changes = {};
    changes.width = request.width;
    changes.height = request.height;
    XConfigureWindow(display, request.window,
                     static_cast<unsigned int>(request.value_mask & (CWWidth | CWHeight)),
                     &changes);
}

bool isCovered() {
    XWindowAttributes screen, window;
    XGetWindowAttributes(display, root, &screen);
    Window parent = 0, top = 0, *children = nullptr;
    unsigned int count = 0;
    bool covered = false;
    if (!XQueryTree(display, root, &top, &parent, &children, &count))
        return false;
    for (unsigned int i = 0; i < count; ++i)
        covered = covered || (XGetWindowAttributes(display, children[i], &window) &&
                              window.map_state == IsViewable && window.x <= 0 && window.y <= 0 &&
                              window.x + window.width >= screen.width &&
                              window.y + window.height >= screen.height);
    if (children)
        XFree(children);
    return covered;
}

} // namespace

int main() {
    display = XOpenDisplay(nullptr);
    if (!display)
        return 1;
    root = DefaultRootWindow(display);
    XSetErrorHandler(ignore);
    XSelectInput(display, root, SubstructureRedirectMask | SubstructureNotifyMask);
    announceManager();
    bool covered = false;
    std::puts("window");
    for (std::fflush(stdout);; std::fflush(stdout)) {
        XEvent event;
        XNextEvent(display, &event);
        if (event.type == MapRequest)
            map(event.xmaprequest.window);
        else if (event.type == ConfigureRequest)
            configure(event.xconfigurerequest);
        else if (event.type == ClientMessage)
            changeState(event.xclient);
        if (isCovered() != covered)
            std::puts((covered = !covered) ? "full" : "window");
    }
}
