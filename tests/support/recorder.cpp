// The recorder's interface: starts and stops recordings, and sets overrides and failures.

#include "tests/support/clock.h"
#include "tests/support/heap.h"
#include "tests/support/recorderState.h"

#include <GL/gl.h>
#include <GL/glext.h>
#include <SDL/SDL.h>
#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>
#include <utility>

namespace ravolt::test {
thread_local int ScopedUnrecorded::depth = 0;

// Also searched in the libraries by name, since the linker may have dropped them as unused.
void *realFunction(const char *name) {
    // An application is linked with OpenGL. Here a reference is needed, or SDL unloads the library
    // with its window and the addresses of its functions dangle.
    static void *const reference = dlopen("libGL.so.1", RTLD_LAZY);
    static_cast<void>(reference);
    void *found = dlsym(RTLD_NEXT, name);
    for (const char *library : {"libGL.so.1", "libSDL-1.2.so.0"})
        if (void *handle = found ? nullptr : dlopen(library, RTLD_LAZY))
            found = dlsym(handle, name);
    if (!found) {
        std::fprintf(stderr, "test support: no library has %s\n", name);
        std::abort();
    }
    return found;
}

Call *Recorder::State::record(Call call) {
    ScopedUnrecorded ownWork;
    calls.list.push_back(std::move(call));
    return &calls.list.back();
}

bool Recorder::State::simulatesFailureOf(const char *name) {
    if (callFailures.empty())
        return false;
    const auto found = callFailures.find(name);
    return found != callFailures.end() && found->second.occurs();
}

Recorder::Recorder() : hidden(new State) {}

// Never deleted, since calls come until the process ends.
Recorder &Recorder::instance() {
    static Recorder *const recorder = new Recorder;
    return *recorder;
}

void Recorder::start() {
    hidden->calls = {};
    hidden->recording = true;
}

Calls Recorder::stop() {
    hidden->recording = false;
    return std::exchange(hidden->calls, {});
}

const Calls &Recorder::calls() const { return hidden->calls; }
bool Recorder::isRecording() const { return hidden->recording; }

void Recorder::mark(const std::string &name) {
    if (hidden->recording)
        hidden->record(Call(markName + name, {}));
}

void Recorder::reset() {
    const bool suppressed = hidden->unitErrorsSuppressed;
    *hidden = State();
    hidden->unitErrorsSuppressed = suppressed;
    ownClock = {};
    allocationsWork();
}

void Recorder::silent() { hidden->silent = true; }
bool Recorder::isSilent() const { return hidden->silent; }

void Recorder::hideExtension(const std::string &name) { hidden->hiddenExtensions.insert(name); }
void Recorder::setExtensions(const std::string &all) { hidden->strings[GL_EXTENSIONS] = all; }
void Recorder::setVendor(const std::string &text) { hidden->strings[GL_VENDOR] = text; }
void Recorder::setRenderer(const std::string &text) { hidden->strings[GL_RENDERER] = text; }
void Recorder::setVersion(const std::string &text) { hidden->strings[GL_VERSION] = text; }

void Recorder::setTextureUnits(int number) { setInteger(GL_MAX_TEXTURE_IMAGE_UNITS_ARB, number); }
void Recorder::setInteger(unsigned int name, int value) { hidden->integers[name] = value; }
void Recorder::setFloat(unsigned int name, float value) { hidden->floats[name] = value; }
void Recorder::nullEntryPoint(const std::string &name) { hidden->nullEntryPoints.insert(name); }

void Recorder::fakeReadPixels(std::vector<unsigned char> bytes) {
    hidden->fakePixels.push_back(std::move(bytes));
}

void Recorder::suppressUnitErrors() { hidden->unitErrorsSuppressed = true; }

void Recorder::failCalls(const std::string &name, unsigned int after, unsigned int times) {
    hidden->callFailures[name] = {after, times};
}

void Recorder::failSdlInit(const std::string &error) { hidden->initFailure = error; }
void Recorder::failVideoModeCheck() { hidden->videoModeCheckFails = true; }
void Recorder::failSetVideoMode(const std::string &error, unsigned int times) {
    hidden->modeFailure = error;
    hidden->modeFailures = times;
}
void Recorder::videoMemory(unsigned int kilobytes) { hidden->videoMemory = kilobytes; }
void Recorder::setAttribute(int attribute, int value) { hidden->attributes[attribute] = value; }

void Recorder::channelSizes(int red, int green, int blue, int alpha) {
    setAttribute(SDL_GL_RED_SIZE, red);
    setAttribute(SDL_GL_GREEN_SIZE, green);
    setAttribute(SDL_GL_BLUE_SIZE, blue);
    setAttribute(SDL_GL_ALPHA_SIZE, alpha);
}

void Recorder::driverName(const std::string &name) { hidden->driverName = name; }

void Recorder::failAllocation(std::size_t bytes, unsigned int after, unsigned int times) {
    heap.failFrom = bytes ? bytes : 1;
    heap.failure = {after, times};
}

void Recorder::allocationsWork() { heap.failFrom = 0; }

unsigned long Recorder::allocations() const {
    return heap.allocations.load(std::memory_order_relaxed);
}

} // namespace ravolt::test
