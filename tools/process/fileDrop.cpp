// Classic SDL 1.2 passes the messages of other programs on as events of the window system, and this
// answers them. SDL 2 knows the protocol: its windows are announced already and it answers by
// itself, but SDL 1.2's interface on top of it has no event for the result. Then only the last step
// is done here, which reads the files from the window's property.
//
// The source of a drag may end at any time: what is sent to its window may not reach one. Xlib
// would end the program for that, so the answers are sent with an error handler of their own.

#include "tools/process/fileDrop.h"

#include "tools/common/uriList.h"

#include <SDL.h>
#include <SDL_syswm.h>
#include <algorithm>
#include <array>
#include <string>
#include <utility>

namespace fs = std::filesystem;

#ifdef SDL_VIDEO_DRIVER_X11
#include <X11/Xatom.h>
#include <X11/Xlib.h>

namespace ravolt::tool {

namespace {

using Files = std::vector<fs::path>;

constexpr long version = 5;
constexpr long maxBytes = 1 << 22; // of a list of files
constexpr long maxTypes = 1024;

int ignoreError(Display *, XErrorEvent *) { return 0; }

// Errors of X while it exists are ignored, also those of requests that are still on their way.
class IgnoredErrors {
  public:
    explicit IgnoredErrors(Display *shown)
        : display(shown), before(XSetErrorHandler(ignoreError)) {}
    ~IgnoredErrors() {
        XSync(display, False);
        XSetErrorHandler(before);
    }
    IgnoredErrors(const IgnoredErrors &) = delete;
    IgnoredErrors &operator=(const IgnoredErrors &) = delete;

  private:
    Display *display;
    XErrorHandler before;
};

// A property of a window; of another type or format it is empty.
struct Property {
    Property(Display *display, Window window, Atom name, Atom wanted, int format, long units) {
        Atom type = None;
        int found = 0;
        unsigned long rest = 0;
        if (XGetWindowProperty(display, window, name, 0, units, False, wanted, &type, &found,
                               &count, &rest, &data) != Success ||
            type != wanted || found != format || rest > 0)
            count = 0;
    }
    ~Property() {
        if (data)
            XFree(data);
    }
    Property(const Property &) = delete;
    Property &operator=(const Property &) = delete;

    unsigned char *data = nullptr;
    unsigned long count = 0;
};

} // namespace

class FileDrop::Target {
  public:
    // Nothing where SDL has no window of X11.
    void announce();
    // The files of a drop that this event completes.
    Files handle(const XEvent &event);

  private:
    Atom atom(const char *name) const { return XInternAtom(display, name, False); }
    bool isAnnounced() const;
    void enter(const XClientMessageEvent &message);
    void answer(const XClientMessageEvent &message);
    void requestFiles(const XClientMessageEvent &message);
    void send(const char *type, std::array<long, 5> data) const;
    void sendStatus() const;
    void sendFinished(bool done) const;
    Files receive(const XSelectionEvent &event);

    Display *display = nullptr;
    Window window = None;
    bool answers = true;  // since SDL does not
    Window source = None; // of the drag
    bool accepted = false;
};

bool FileDrop::Target::isAnnounced() const {
    return Property(display, window, atom("XdndAware"), XA_ATOM, 32, 1).count > 0;
}

void FileDrop::Target::announce() {
    SDL_SysWMinfo info;
    SDL_VERSION(&info.version);
    if (SDL_GetWMInfo(&info) <= 0 || info.subsystem != SDL_SYSWM_X11)
        return;
    // SDL 1.2's interface on SDL 2 has one window only.
    const Window now = info.info.x11.wmwindow ? info.info.x11.wmwindow : info.info.x11.window;
    if (now == window && info.info.x11.display == display)
        return;
    display = info.info.x11.display;
    window = now;
    source = None;
    answers = !isAnnounced();
    if (answers)
        XChangeProperty(display, window, atom("XdndAware"), XA_ATOM, 32, PropModeReplace,
                        reinterpret_cast<const unsigned char *>(&version), 1);
}

// Up to three types are in the message, more of them in a property of the source.
void FileDrop::Target::enter(const XClientMessageEvent &message) {
    const Atom files = atom("text/uri-list");
    source = static_cast<Window>(message.data.l[0]);
    if ((message.data.l[1] & 1) == 0) {
        accepted = std::find(message.data.l + 2, message.data.l + 5, static_cast<long>(files)) !=
                   message.data.l + 5;
        return;
    }
    const IgnoredErrors ignored(display);
    const Property types(display, source, atom("XdndTypeList"), XA_ATOM, 32, maxTypes);
    const Atom *first = reinterpret_cast<const Atom *>(types.data); // Xlib's longs
    accepted = std::find(first, first + types.count, files) != first + types.count;
}

void FileDrop::Target::send(const char *type, std::array<long, 5> data) const {
    data[0] = static_cast<long>(window);
    XEvent event = {};
    event.xclient.type = ClientMessage;
    event.xclient.display = display;
    event.xclient.window = source;
    event.xclient.message_type = atom(type);
    event.xclient.format = 32;
    std::copy(data.begin(), data.end(), event.xclient.data.l);
    const IgnoredErrors ignored(display);
    XSendEvent(display, source, False, NoEventMask, &event);
}

// The same answer everywhere in the window.
void FileDrop::Target::sendStatus() const {
    constexpr long wantsPositions = 2;
    const Atom action = accepted ? atom("XdndActionCopy") : None;
    send("XdndStatus", {0, (accepted ? 1 : 0) | wantsPositions, 0, 0, static_cast<long>(action)});
}

void FileDrop::Target::sendFinished(bool done) const {
    const Atom action = done ? atom("XdndActionCopy") : None;
    send("XdndFinished", {0, done ? 1 : 0, static_cast<long>(action), 0, 0});
}

void FileDrop::Target::requestFiles(const XClientMessageEvent &message) {
    XConvertSelection(display, atom("XdndSelection"), atom("text/uri-list"), atom("RAVOLT_DROPPED"),
                      window, static_cast<Time>(message.data.l[2]));
    XFlush(display);
}

void FileDrop::Target::answer(const XClientMessageEvent &message) {
    if (message.message_type == atom("XdndEnter"))
        return enter(message);
    if (source == None || message.data.l[0] != static_cast<long>(source))
        return;
    if (message.message_type == atom("XdndPosition"))
        sendStatus();
    else if (message.message_type == atom("XdndLeave"))
        source = None;
    else if (message.message_type == atom("XdndDrop"))
        accepted ? requestFiles(message) : sendFinished(false);
}

// SDL 2 requests another type if the source names that first; it may list the files as well.
Files FileDrop::Target::receive(const XSelectionEvent &event) {
    if (event.selection != atom("XdndSelection"))
        return {};
    Files files;
    if (event.property != None) {
        const Property list(display, window, event.property, event.target, 8, maxBytes / 4);
        files = filesOfUriList(std::string(reinterpret_cast<const char *>(list.data), list.count));
    }
    if (answers && source != None) {
        XDeleteProperty(display, window, atom("RAVOLT_DROPPED"));
        sendFinished(!files.empty());
    }
    source = None;
    return files;
}

Files FileDrop::Target::handle(const XEvent &event) {
    if (event.type == SelectionNotify && event.xselection.requestor == window)
        return receive(event.xselection);
    if (event.type == ClientMessage && event.xclient.window == window && answers &&
        event.xclient.format == 32)
        answer(event.xclient);
    return {};
}

FileDrop::FileDrop() : target(std::make_unique<Target>()) {
    SDL_EventState(SDL_SYSWMEVENT, SDL_ENABLE);
    announce();
}

FileDrop::~FileDrop() { SDL_EventState(SDL_SYSWMEVENT, SDL_IGNORE); }

void FileDrop::announce() { target->announce(); }

bool FileDrop::handle(const SDL_Event &event) {
    if (event.type != SDL_SYSWMEVENT)
        return false;
    const SDL_SysWMmsg *message = event.syswm.msg;
    if (message && message->subsystem == SDL_SYSWM_X11)
        for (fs::path &file : target->handle(message->event.xevent))
            dropped.push_back(std::move(file));
    return true;
}

std::vector<fs::path> FileDrop::take() { return std::exchange(dropped, {}); }

} // namespace ravolt::tool

#else

namespace ravolt::tool {

class FileDrop::Target {};

FileDrop::FileDrop() = default;
FileDrop::~FileDrop() = default;
void FileDrop::announce() {}
bool FileDrop::handle(const SDL_Event &event) { return event.type == SDL_SYSWMEVENT; }
std::vector<fs::path> FileDrop::take() { return {}; }

} // namespace ravolt::tool

#endif
