// The SDL functions of the program, those that the engine calls: each records, lies where asked to,
// and calls the real one; in silent mode a small SDL of our own stands behind them.

#include "tests/support/callWriter.h"
#include "tests/support/glRecorder.h"
#include "tests/support/recorderState.h"

#include <SDL/SDL.h>
#include <SDL/SDL_syswm.h>

#include <algorithm>
#include <cstring>
#include <map>

namespace ravolt::test {
namespace {

using State = Recorder::State;

// What a display without a screen keeps between calls.
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

// The real function behind the one of this name.
#define REAL(name) (reinterpret_cast<decltype(&::name)>(realFunction(#name)))

// Every function starts so: its call is recorded.
template <class... Arguments> State &entered(const char *name, Arguments... arguments) {
    State &state = recorderState();
    if (state.recording && !Inside::isTrue())
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

} // namespace
} // namespace ravolt::test

using namespace ravolt::test;

extern "C" {

int SDL_Init(Uint32 flags) {
    static const auto real = REAL(SDL_Init);
    if (Inside::isTrue())
        return real(flags);
    State &state = entered("SDL_Init", flags);
    state.toldError = state.initFailure.value_or("");
    if (state.initFailure)
        return -1;
    if (state.silent)
        return 0;
    Inside inside;
    return real(flags);
}

// A question without an effect: it is not written down. In silent mode everything is up.
Uint32 SDL_WasInit(Uint32 flags) {
    static const auto real = REAL(SDL_WasInit);
    if (!Inside::isTrue() && Recorder::instance().isSilent())
        return flags;
    Inside inside;
    return real(flags);
}

void SDL_Quit(void) {
    static const auto real = REAL(SDL_Quit);
    if (!Inside::isTrue() && entered("SDL_Quit").silent)
        return;
    Inside inside;
    real();
}

char *SDL_GetError(void) {
    static const auto real = REAL(SDL_GetError);
    if (Inside::isTrue())
        return real();
    State &state = entered("SDL_GetError");
    if (state.silent || !state.toldError.empty())
        return state.toldError.data();
    return real();
}

const SDL_VideoInfo *SDL_GetVideoInfo(void) {
    static const auto real = REAL(SDL_GetVideoInfo);
    if (Inside::isTrue())
        return real();
    State &state = entered("SDL_GetVideoInfo");
    SilentSdl &sdl = silentSdl();
    if (state.silent) {
        sdl.info = {};
        sdl.info.vfmt = &sdl.format;
    } else {
        Inside inside;
        const SDL_VideoInfo *truth = real();
        if (!truth || !state.videoMemory)
            return truth;
        sdl.info = *truth;
    }
    sdl.info.video_mem = state.videoMemory.value_or(0);
    return &sdl.info;
}

char *SDL_VideoDriverName(char *buffer, int size) {
    static const auto real = REAL(SDL_VideoDriverName);
    if (Inside::isTrue())
        return real(buffer, size);
    State &state = entered("SDL_VideoDriverName");
    if (state.driverName || state.silent)
        return writeName(buffer, size, state.driverName.value_or("silent"));
    Inside inside;
    return real(buffer, size);
}

int SDL_VideoModeOK(int width, int height, int bitsPerPixel, Uint32 flags) {
    static const auto real = REAL(SDL_VideoModeOK);
    if (Inside::isTrue())
        return real(width, height, bitsPerPixel, flags);
    State &state = entered("SDL_VideoModeOK", width, height, bitsPerPixel, flags);
    if (state.modesRefused)
        return 0;
    if (state.silent)
        return bitsPerPixel;
    Inside inside;
    return real(width, height, bitsPerPixel, flags);
}

SDL_Surface *SDL_SetVideoMode(int width, int height, int bitsPerPixel, Uint32 flags) {
    static const auto real = REAL(SDL_SetVideoMode);
    if (Inside::isTrue())
        return real(width, height, bitsPerPixel, flags);
    State &state = entered("SDL_SetVideoMode", width, height, bitsPerPixel, flags);
    state.toldError = state.modeFailure.value_or("");
    if (state.modeFailure)
        return nullptr;
    if (state.silent)
        return silentMode(width, height, bitsPerPixel, flags);
    Inside inside;
    return real(width, height, bitsPerPixel, flags);
}

void SDL_WM_SetCaption(const char *title, const char *icon) {
    static const auto real = REAL(SDL_WM_SetCaption);
    if (!Inside::isTrue() && entered("SDL_WM_SetCaption", title).silent)
        return;
    Inside inside;
    real(title, icon);
}

int SDL_GetWMInfo(SDL_SysWMinfo *info) {
    static const auto real = REAL(SDL_GetWMInfo);
    if (!Inside::isTrue() && entered("SDL_GetWMInfo").silent)
        return 0;
    Inside inside;
    return real(info);
}

int SDL_GL_LoadLibrary(const char *path) {
    static const auto real = REAL(SDL_GL_LoadLibrary);
    if (!Inside::isTrue() && entered("SDL_GL_LoadLibrary", path).silent)
        return 0;
    Inside inside;
    return real(path);
}

int SDL_GL_SetAttribute(SDL_GLattr attribute, int value) {
    static const auto real = REAL(SDL_GL_SetAttribute);
    if (!Inside::isTrue() &&
        entered("SDL_GL_SetAttribute", static_cast<int>(attribute), value).silent) {
        silentSdl().attributes[attribute] = value;
        return 0;
    }
    Inside inside;
    return real(attribute, value);
}

int SDL_GL_GetAttribute(SDL_GLattr attribute, int *value) {
    static const auto real = REAL(SDL_GL_GetAttribute);
    if (Inside::isTrue())
        return real(attribute, value);
    State &state = entered("SDL_GL_GetAttribute", static_cast<int>(attribute));
    const auto told = state.attributes.find(attribute);
    if (told != state.attributes.end() || state.silent) {
        *value = told != state.attributes.end() ? told->second : silentSdl().attributes[attribute];
        return 0;
    }
    Inside inside;
    return real(attribute, value);
}

void *SDL_GL_GetProcAddress(const char *name) {
    static const auto real = REAL(SDL_GL_GetProcAddress);
    if (Inside::isTrue())
        return real(name);
    State &state = entered("SDL_GL_GetProcAddress", name);
    Inside inside;
    if (state.nullEntryPoints.count(name))
        return nullptr;
    if (state.silent)
        return trampolineOf(name, nullptr);
    void *found = real(name);
    return found ? trampolineOf(name, found) : nullptr;
}

void SDL_GL_SwapBuffers(void) {
    static const auto real = REAL(SDL_GL_SwapBuffers);
    if (!Inside::isTrue() && entered("SDL_GL_SwapBuffers").silent)
        return;
    Inside inside;
    real();
}
}
