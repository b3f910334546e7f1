// The SDL functions that the engine calls: each records its call, fakes the result where a test has
// set one, and otherwise calls the real function; silent mode uses a small simulated SDL.

#include "testing/callWriter.h"
#include "testing/glRecorder.h"
#include "testing/recorderState.h"

#include <SDL/SDL.h>
#include <SDL/SDL_syswm.h>

#include <algorithm>
#include <cstring>
#include <map>

namespace ravolt::test {
namespace {

using State = RecorderState;

// The state of a display without a screen.
struct SilentSdl {
    std::map<int, int> attributes;
    SDL_PixelFormat format = {};
    SDL_Surface surface = {};
    SDL_VideoInfo info = {};
};

SilentSdl &silentSdl() {
    static SilentSdl *const sdl = new SilentSdl;
    return *sdl;
}

SDL_Surface *silentMode(int width, int height, int bitsPerPixel, Uint32 flags) {
    SilentSdl &sdl = silentSdl();
    sdl.format.BitsPerPixel = static_cast<Uint8>(bitsPerPixel);
    sdl.surface.format = &sdl.format;
    sdl.surface.w = width;
    sdl.surface.h = height;
    sdl.surface.flags = flags;
    return &sdl.surface;
}

// Records the call of the program.
template <class... Arguments> State &recordCall(const char *name, Arguments... arguments) {
    State &state = recorderState();
    if (state.recording)
        state.record(writeCall(name, arguments...));
    return state;
}

char *writeName(char *buffer, int size, const std::string &name) {
    if (!buffer || size < 1)
        return nullptr;
    const std::size_t length = std::min(name.size(), static_cast<std::size_t>(size - 1));
    std::memcpy(buffer, name.data(), length);
    buffer[length] = '\0';
    return buffer;
}

// Whether a failure is set; SDL_GetError then returns its text.
bool simulatesFailure(State &state, const std::optional<std::string> &error) {
    state.fakeError = error.value_or("");
    return error.has_value();
}

} // namespace

bool interceptsSdl() { return true; }

} // namespace ravolt::test

using namespace ravolt::test;

// The start of every function: the real one of this name, and whether a library has made the call.
// The calls that the function makes are not recorded.
#define REAL(name)                                                                                 \
    static const auto real = reinterpret_cast<decltype(&::name)>(realFunction(#name));             \
    const bool nested = ScopedUnrecorded::isActive();                                              \
    const ScopedUnrecorded unrecorded

extern "C" {

int SDL_Init(Uint32 flags) {
    REAL(SDL_Init);
    if (!nested) {
        State &state = recordCall("SDL_Init", flags);
        if (simulatesFailure(state, state.initFailure))
            return -1;
        if (state.silent)
            return 0;
    }
    return real(flags);
}

// A query without an effect: it is not recorded. In silent mode everything is initialized.
Uint32 SDL_WasInit(Uint32 flags) {
    REAL(SDL_WasInit);
    return !nested && recorderState().silent ? flags : real(flags);
}

void SDL_Quit(void) {
    REAL(SDL_Quit);
    if (nested || !recordCall("SDL_Quit").silent)
        real();
}

char *SDL_GetError(void) {
    REAL(SDL_GetError);
    if (!nested)
        if (State &state = recordCall("SDL_GetError"); state.silent || !state.fakeError.empty())
            return state.fakeError.data();
    return real();
}

const SDL_VideoInfo *SDL_GetVideoInfo(void) {
    REAL(SDL_GetVideoInfo);
    if (nested)
        return real();
    State &state = recordCall("SDL_GetVideoInfo");
    SilentSdl &sdl = silentSdl();
    if (state.silent) {
        sdl.info = {};
        sdl.info.vfmt = &sdl.format;
    } else {
        const SDL_VideoInfo *actual = real();
        if (!actual || !state.videoMemory)
            return actual;
        sdl.info = *actual;
    }
    sdl.info.video_mem = state.videoMemory.value_or(0);
    return &sdl.info;
}

char *SDL_VideoDriverName(char *buffer, int size) {
    REAL(SDL_VideoDriverName);
    if (!nested)
        if (State &state = recordCall("SDL_VideoDriverName"); state.driverName || state.silent)
            return writeName(buffer, size, state.driverName.value_or("silent"));
    return real(buffer, size);
}

int SDL_VideoModeOK(int width, int height, int bitsPerPixel, Uint32 flags) {
    REAL(SDL_VideoModeOK);
    if (!nested)
        if (State &state = recordCall("SDL_VideoModeOK", width, height, bitsPerPixel, flags);
            state.videoModeCheckFails || state.silent)
            return state.videoModeCheckFails ? 0 : bitsPerPixel;
    return real(width, height, bitsPerPixel, flags);
}

SDL_Surface *SDL_SetVideoMode(int width, int height, int bitsPerPixel, Uint32 flags) {
    REAL(SDL_SetVideoMode);
    if (!nested) {
        State &state = recordCall("SDL_SetVideoMode", width, height, bitsPerPixel, flags);
        if (simulatesFailure(state, state.modeFailure)) {
            if (state.modeFailures != ~0u && --state.modeFailures == 0)
                state.modeFailure.reset();
            return nullptr;
        }
        if (state.silent)
            return silentMode(width, height, bitsPerPixel, flags);
    }
    return real(width, height, bitsPerPixel, flags);
}

void SDL_WM_SetCaption(const char *title, const char *icon) {
    REAL(SDL_WM_SetCaption);
    if (nested || !recordCall("SDL_WM_SetCaption", title).silent)
        real(title, icon);
}

int SDL_GetWMInfo(SDL_SysWMinfo *info) {
    REAL(SDL_GetWMInfo);
    return nested || !recordCall("SDL_GetWMInfo").silent ? real(info) : 0;
}

int SDL_GL_LoadLibrary(const char *path) {
    REAL(SDL_GL_LoadLibrary);
    return nested || !recordCall("SDL_GL_LoadLibrary", path).silent ? real(path) : 0;
}

int SDL_GL_SetAttribute(SDL_GLattr attribute, int value) {
    REAL(SDL_GL_SetAttribute);
    if (nested || !recordCall("SDL_GL_SetAttribute", static_cast<int>(attribute), value).silent)
        return real(attribute, value);
    silentSdl().attributes[attribute] = value;
    return 0;
}

int SDL_GL_GetAttribute(SDL_GLattr attribute, int *value) {
    REAL(SDL_GL_GetAttribute);
    if (nested)
        return real(attribute, value);
    State &state = recordCall("SDL_GL_GetAttribute", static_cast<int>(attribute));
    const auto faked = state.attributes.find(attribute);
    if (faked == state.attributes.end() && !state.silent)
        return real(attribute, value);
    *value = faked != state.attributes.end() ? faked->second : silentSdl().attributes[attribute];
    return 0;
}

void *SDL_GL_GetProcAddress(const char *name) {
    REAL(SDL_GL_GetProcAddress);
    if (nested)
        return real(name);
    State &state = recordCall("SDL_GL_GetProcAddress", name);
    if (state.nullEntryPoints.count(name))
        return nullptr;
    void *found = state.silent ? nullptr : real(name);
    return found || state.silent ? trampolineOf(name, found) : nullptr;
}

void SDL_GL_SwapBuffers(void) {
    REAL(SDL_GL_SwapBuffers);
    if (nested || !recordCall("SDL_GL_SwapBuffers").silent)
        real();
}
}
