#pragma once

// Additional: the recorder of the engine's calls of OpenGL and SDL, for tests of applications. A
// program that is linked with Ravolt::testing and uses the recorder defines the functions of OpenGL
// 1.1 and the SDL 1.2 functions that the engine calls, which hides the real ones, also for the
// shared library; SDL_GL_GetProcAddress returns wrappers of the extension functions. Each of them
// records its name and arguments while a recording runs, overrides its result or simulates a
// failure where a test has set one, and otherwise calls the real function.
//
//     const Calls calls = callsOf([&] { sprite->render(entry); });
//     assert(calls.contains(Call("glEnable", GL_BLEND)));
//
// In silent mode no real function is called: SDL succeeds, and the driver is a simulated one that
// has every extension and stores matrices, viewport, switches and object names, but no pixels.
// Calls that a library makes itself are neither recorded nor overridden. The recorder is not
// thread-safe. Only for tests: see docs/testing.md.

#include "ravolt/testing/calls.h"

#include <string>
#include <vector>

namespace ravolt::test {

class CallRecorder {
  public:
    // The one recorder of the program.
    static CallRecorder &instance();

    // Recording. start() clears the calls; stop() ends the recording and returns them; calls() are
    // those recorded so far. A mark is an entry with a name of its own among the calls.
    void start();
    Calls stop();
    const Calls &calls() const;
    bool isRecording() const;
    void mark(const std::string &name);

    // Ends the recording, the silent mode, every override and every simulated failure (but not
    // suppressUnitErrors).
    void reset();

    // No real function is called from now on (until reset).
    void silent();
    bool isSilent() const;

    // Overrides of the driver. An extension is hidden with all those whose names contain its name.
    void hideExtension(const std::string &name);
    void setExtensions(const std::string &all); // instead of the driver's own list
    void setVendor(const std::string &text);
    void setRenderer(const std::string &text);
    void setVersion(const std::string &text);
    void setTextureUnits(int number);              // GL_MAX_TEXTURE_IMAGE_UNITS_ARB
    void setInteger(unsigned int name, int value); // any value of glGetIntegerv
    void setFloat(unsigned int name, float value); // any value of glGetFloatv
    void nullEntryPoint(const std::string &name);  // SDL_GL_GetProcAddress returns NULL
    // The next glReadPixels reads these bytes instead of the real ones. Several calls are queued:
    // each glReadPixels consumes one.
    void fakeReadPixels(std::vector<unsigned char> bytes);
    // From the (after + 1)-th call on (`times` of them) the function is recorded, not called, and
    // returns 0: a glCreateShaderObjectARB that fails.
    void failCalls(const std::string &name, unsigned int after = 0, unsigned int times = ~0u);

    // The engine enables 2D texturing on texture units that the fixed-function pipeline does not
    // have, which is an OpenGL error: from now on the recorder clears it.
    void suppressUnitErrors();

    // Simulated failures and overrides of SDL. SDL_GetError returns `error` after such a failure.
    void failSdlInit(const std::string &error = "no such device"); // SDL_Init returns -1
    void failVideoModeCheck();                                     // SDL_VideoModeOK returns 0
    // The first `times` calls.
    void failSetVideoMode(const std::string &error = "no such mode", unsigned int times = ~0u);
    void videoMemory(unsigned int kilobytes);
    void setAttribute(int attribute, int value); // the result of SDL_GL_GetAttribute
    void channelSizes(int red, int green, int blue, int alpha);
    void driverName(const std::string &name);

  private:
    CallRecorder() = default;
    friend class Recorder; // that of the engine's own tests, which simulates more
};

// The calls that `step` makes.
template <class Step> Calls callsOf(Step step) {
    CallRecorder &recorder = CallRecorder::instance();
    recorder.start();
    step();
    return recorder.stop();
}

} // namespace ravolt::test
