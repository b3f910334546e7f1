#pragma once

// What the recorder's definitions share: the recording, the overrides, the simulated failures, and
// whether a call comes from the program or from inside a library that the program has called.

#include "ravolt/testing/calls.h"
#include "testing/silentDriver.h"
#include "testing/simulatedFailure.h"

#include <deque>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace ravolt::test {

struct RecorderState {
    bool recording = false;
    Calls calls;
    SilentDriver driver;
    bool silent = false;

    std::set<std::string> hiddenExtensions;
    std::map<unsigned int, std::string> strings; // glGetString
    std::map<unsigned int, int> integers;        // glGetIntegerv
    std::map<unsigned int, float> floats;        // glGetFloatv
    std::set<std::string> nullEntryPoints;
    std::deque<std::vector<unsigned char>> fakePixels;
    std::map<std::string, SimulatedFailure> callFailures;

    bool unitErrorsSuppressed = false;
    std::deque<unsigned int> errors; // pending before a suppressed error, for glGetError

    std::optional<std::string> initFailure;
    std::optional<std::string> modeFailure;
    unsigned int modeFailures = 0; // still to come
    bool videoModeCheckFails = false;
    std::optional<unsigned int> videoMemory;
    std::map<int, int> attributes;
    std::optional<std::string> driverName;
    std::string fakeError; // for SDL_GetError, empty for the real one

    std::string visibleExtensions; // the text that glGetString has returned

    Call *record(Call call); // its entry, until the next one
    bool simulatesFailureOf(const char *name);
};

RecorderState &recorderState();

// Alive while a real function runs: the calls that it makes are neither recorded nor overridden.
class ScopedUnrecorded {
  public:
    ScopedUnrecorded() { ++depth; }
    ~ScopedUnrecorded() { --depth; }
    ScopedUnrecorded(const ScopedUnrecorded &) = delete;
    ScopedUnrecorded &operator=(const ScopedUnrecorded &) = delete;
    static bool isActive() { return depth != 0; }

  private:
    static thread_local int depth;
};

// True. What calls them is linked with the functions that replace those of OpenGL and of SDL.
bool interceptsOpenGL();
bool interceptsSdl();

// The result of glGetError, recorded or not.
unsigned int pendingError();

// The library's function of this name, which the program's own one hides; aborts when there is
// none.
void *realFunction(const char *name);

} // namespace ravolt::test
