// The recorder's interface: starts and stops recordings, and sets overrides and failures.

#include "ravolt/testing/callRecorder.h"
#include "testing/mark.h"
#include "testing/recorderState.h"

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
        std::fprintf(stderr, "Ravolt testing: no library has %s\n", name);
        std::abort();
    }
    return found;
}

// Never deleted, since calls come until the process ends.
RecorderState &recorderState() {
    static RecorderState *const state = new RecorderState;
    return *state;
}

Call *RecorderState::record(Call call) {
    ScopedUnrecorded ownWork;
    calls.list.push_back(std::move(call));
    return &calls.list.back();
}

bool RecorderState::simulatesFailureOf(const char *name) {
    if (callFailures.empty())
        return false;
    const auto found = callFailures.find(name);
    return found != callFailures.end() && found->second.occurs();
}

CallRecorder &CallRecorder::instance() {
    // A use of the recorder makes the linker take the functions that it replaces, too.
    static const bool linked = interceptsOpenGL() && interceptsSdl();
    static_cast<void>(linked);
    static CallRecorder recorder;
    return recorder;
}

void CallRecorder::start() {
    recorderState().calls = {};
    recorderState().recording = true;
}

Calls CallRecorder::stop() {
    recorderState().recording = false;
    return std::exchange(recorderState().calls, {});
}

const Calls &CallRecorder::calls() const { return recorderState().calls; }
bool CallRecorder::isRecording() const { return recorderState().recording; }

void CallRecorder::mark(const std::string &name) {
    if (recorderState().recording)
        recorderState().record(Call(markName + name, {}));
}

void CallRecorder::reset() {
    const bool suppressed = recorderState().unitErrorsSuppressed;
    recorderState() = RecorderState();
    recorderState().unitErrorsSuppressed = suppressed;
}

void CallRecorder::silent() { recorderState().silent = true; }
bool CallRecorder::isSilent() const { return recorderState().silent; }

void CallRecorder::hideExtension(const std::string &name) {
    recorderState().hiddenExtensions.insert(name);
}
void CallRecorder::setExtensions(const std::string &all) {
    recorderState().strings[GL_EXTENSIONS] = all;
}
void CallRecorder::setVendor(const std::string &text) { recorderState().strings[GL_VENDOR] = text; }
void CallRecorder::setRenderer(const std::string &text) {
    recorderState().strings[GL_RENDERER] = text;
}
void CallRecorder::setVersion(const std::string &text) {
    recorderState().strings[GL_VERSION] = text;
}

void CallRecorder::setTextureUnits(int number) {
    setInteger(GL_MAX_TEXTURE_IMAGE_UNITS_ARB, number);
}
void CallRecorder::setInteger(unsigned int name, int value) {
    recorderState().integers[name] = value;
}
void CallRecorder::setFloat(unsigned int name, float value) {
    recorderState().floats[name] = value;
}
void CallRecorder::nullEntryPoint(const std::string &name) {
    recorderState().nullEntryPoints.insert(name);
}

void CallRecorder::fakeReadPixels(std::vector<unsigned char> bytes) {
    recorderState().fakePixels.push_back(std::move(bytes));
}

void CallRecorder::suppressUnitErrors() { recorderState().unitErrorsSuppressed = true; }

void CallRecorder::failCalls(const std::string &name, unsigned int after, unsigned int times) {
    recorderState().callFailures[name] = {after, times};
}

void CallRecorder::failSdlInit(const std::string &error) { recorderState().initFailure = error; }
void CallRecorder::failVideoModeCheck() { recorderState().videoModeCheckFails = true; }
void CallRecorder::failSetVideoMode(const std::string &error, unsigned int times) {
    recorderState().modeFailure = error;
    recorderState().modeFailures = times;
}
void CallRecorder::videoMemory(unsigned int kilobytes) { recorderState().videoMemory = kilobytes; }
void CallRecorder::setAttribute(int attribute, int value) {
    recorderState().attributes[attribute] = value;
}

void CallRecorder::channelSizes(int red, int green, int blue, int alpha) {
    setAttribute(SDL_GL_RED_SIZE, red);
    setAttribute(SDL_GL_GREEN_SIZE, green);
    setAttribute(SDL_GL_BLUE_SIZE, blue);
    setAttribute(SDL_GL_ALPHA_SIZE, alpha);
}

void CallRecorder::driverName(const std::string &name) { recorderState().driverName = name; }

} // namespace ravolt::test
