// Selects the video driver of SDL by the display that is available.

#include "tools/process/display.h"

#include "tools/common/failure.h"
#include "tools/common/message.h"
#include "tools/process/logRedirect.h"

#include <SDL.h>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <unistd.h>
#include <vector>

namespace ravolt::tool {

namespace {

namespace fs = std::filesystem;

constexpr const char *libraryName = "libSDL-1.2.so.0";
constexpr const char *restartedVariable = "RAVOLT_TOOL_STARTED_ANEW"; // prevents a loop

bool isSet(const char *variable) {
    const char *value = std::getenv(variable);
    return value && *value;
}

// The releases of the library on top of SDL 2 begin with 1.2.50.
bool isOverSdl2() { return SDL_Linked_Version()->patch >= 50; }

// Whether a window can be opened on a display. The classic library must not
// try any driver but the X server's.
bool hasDisplay() {
    if (isSet("SDL_VIDEODRIVER"))
        return true;
    if (isOverSdl2())
        return isSet("DISPLAY") || isSet("WAYLAND_DISPLAY");
    if (isSet("DISPLAY"))
        setenv("SDL_VIDEODRIVER", "x11", 1);
    return isSet("DISPLAY");
}

// Debian installs it beside the classic library, in a folder of its own for each architecture.
std::string findLibraryFolder() {
    std::error_code error;
    for (const fs::directory_entry &entry : fs::directory_iterator("/usr/lib", error)) {
        const fs::path folder = entry.path() / "sdl12-compat";
        if (fs::exists(folder / libraryName, error))
            return folder;
    }
    return {};
}

[[noreturn]] void restart(const std::string &folder) {
    const char *before = std::getenv("LD_LIBRARY_PATH");
    const std::string path = before && *before ? folder + ":" + before : folder;
    setenv("LD_LIBRARY_PATH", path.c_str(), 1);
    setenv("SDL_VIDEODRIVER", "offscreen", 1);
    setenv(restartedVariable, "1", 1);
    LogRedirect::clear();
    std::fflush(nullptr);
    execv("/proc/self/exe", LogRedirect::arguments());
    throw Failure(std::string("cannot start anew to draw off screen: ") + std::strerror(errno));
}

} // namespace

void requireDisplay() {
    if (!hasDisplay())
        throw Failure("no display to open a window on. Set DISPLAY to one, or draw a picture "
                      "without: ravolt shot ... -o picture.png");
}

void requireDisplayOrOffscreen(const std::string &libraryFolder, const Verbosity &verbosity) {
    if (hasDisplay())
        return;
    if (isOverSdl2()) {
        setenv("SDL_VIDEODRIVER", "offscreen", 1);
        return;
    }
    std::error_code error;
    const std::string folder = libraryFolder.empty() ? findLibraryFolder() : libraryFolder;
    if (folder.empty() || !fs::exists(fs::path(folder) / libraryName, error) ||
        isSet(restartedVariable))
        throw Failure(
            (libraryFolder.empty() ? std::string("no display") : folder) +
            ": no library to draw with off screen. Install SDL 1.2's interface over SDL 2 "
            "(Debian: libsdl1.2-compat), or name its folder with --sdl, or set DISPLAY, "
            "or use xvfb-run");
    note("no display: drawing off screen with " + folder + "/" + libraryName, verbosity);
    restart(folder);
}

} // namespace ravolt::tool
