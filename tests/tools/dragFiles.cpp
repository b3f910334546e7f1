// Drags a list of files to a window, as a file manager does: the source of XDND, version 5.
//
//     dragFiles TITLE LIST [none|many]
//
// The window's title starts with TITLE. With "none" the list is offered as plain text alone, with
// "many" as the last of five types, which are then in a property. Prints what the window answers:
// "status 1", "finished 1". Fails if it does not answer within some seconds.

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <array>
#include <cstdio>
#include <cstring>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

constexpr unsigned int patience = 20; // seconds
constexpr long version = 5;

class Source {
  public:
    Source(Display *connection, Window window, std::string files)
        : display(connection), target(window), list(std::move(files)),
          own(XCreateSimpleWindow(display, DefaultRootWindow(display), 0, 0, 1, 1, 0, 0, 0)) {
        XSetSelectionOwner(display, atom("XdndSelection"), own, CurrentTime);
    }

    // Until the window has finished, or has refused the position.
    void drag(const std::string &kind) {
        enter(kind);
        send("XdndPosition", {0, 0, (10 << 16) | 10, CurrentTime, long(atom("XdndActionCopy"))});
        for (bool waiting = true; waiting;) {
            XEvent event;
            XNextEvent(display, &event);
            if (event.type == SelectionRequest)
                answer(event.xselectionrequest);
            if (event.type == ClientMessage)
                waiting = take(event.xclient);
        }
    }

  private:
    Atom atom(const char *name) const { return XInternAtom(display, name, False); }

    void send(const char *type, std::array<long, 5> data) const {
        XEvent event = {};
        event.xclient.type = ClientMessage;
        event.xclient.window = target;
        event.xclient.message_type = atom(type);
        event.xclient.format = 32;
        data[0] = long(own);
        std::copy(data.begin(), data.end(), event.xclient.data.l);
        XSendEvent(display, target, False, NoEventMask, &event);
        XFlush(display);
    }

    void enter(const std::string &kind) const {
        const long text = long(atom("text/plain"));
        const long files = kind == "none" ? text : long(atom("text/uri-list"));
        if (kind != "many")
            return send("XdndEnter", {0, version << 24, files, 0, 0});
        const std::vector<long> types = {text, text, text, text, files};
        XChangeProperty(display, own, atom("XdndTypeList"), XA_ATOM, 32, PropModeReplace,
                        reinterpret_cast<const unsigned char *>(types.data()), int(types.size()));
        send("XdndEnter", {0, version << 24 | 1, text, text, text});
    }

    bool take(const XClientMessageEvent &message) const {
        const bool yes = (message.data.l[1] & 1) != 0;
        const bool isStatus = message.message_type == atom("XdndStatus");
        std::printf("%s %d\n", isStatus ? "status" : "finished", yes);
        if (!isStatus)
            return false;
        yes ? send("XdndDrop", {0, 0, CurrentTime, 0, 0}) : send("XdndLeave", {});
        return yes;
    }

    void answer(const XSelectionRequestEvent &request) const {
        XChangeProperty(display, request.requestor, request.property, request.target, 8,
                        PropModeReplace, reinterpret_cast<const unsigned char *>(list.data()),
                        int(list.size()));
        XEvent event = {};
        event.xselection.type = SelectionNotify;
        event.xselection.requestor = request.requestor;
        event.xselection.selection = request.selection;
        event.xselection.target = request.target;
        event.xselection.property = request.property;
        event.xselection.time = request.time;
        XSendEvent(display, request.requestor, False, NoEventMask, &event);
        XFlush(display);
    }

    Display *display;
    Window target;
    std::string list;
    Window own;
};

// With the interface of SDL 1.2 on SDL 2 the window itself has the title, with classic SDL the
// one that the window manager sees.
Window windowTitled(Display *display, Window parent, const std::string &start) {
    char *title = nullptr;
    if (XFetchName(display, parent, &title) && title) {
        const bool found = std::strncmp(title, start.c_str(), start.size()) == 0;
        XFree(title);
        if (found)
            return parent;
    }
    Window root = None, above = None, *children = nullptr, found = None;
    unsigned int number = 0;
    if (!XQueryTree(display, parent, &root, &above, &children, &number))
        return None;
    for (unsigned int i = 0; i < number && found == None; ++i)
        found = windowTitled(display, children[i], start);
    if (children)
        XFree(children);
    return found;
}

} // namespace

int main(int count, char **arguments) {
    Display *const display = count > 2 ? XOpenDisplay(nullptr) : nullptr;
    if (!display)
        return 2;
    alarm(patience);
    const Window window = windowTitled(display, DefaultRootWindow(display), arguments[1]);
    if (window == None)
        return 1;
    Source(display, window, arguments[2]).drag(count > 3 ? arguments[3] : "");
    XCloseDisplay(display);
    return 0;
}
