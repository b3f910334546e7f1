#pragma once

// What the recorder's definitions share: the recording, the lies, and whether a call comes from the
// program or from inside a library that the program has called.

#include "tests/support/recorder.h"
#include "tests/support/refusal.h"
#include "tests/support/silentDriver.h"

#include <deque>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace ravolt::test {

// A mark stands among the calls under this name, followed by its own.
inline constexpr const char *markName = "mark: ";

struct Recorder::State {
    bool recording = false;
    Calls calls;
    SilentDriver driver;
    bool silent = false;

    std::set<std::string> hiddenExtensions;
    std::map<unsigned int, std::string> strings; // glGetString
    std::map<unsigned int, int> integers;        // glGetIntegerv
    std::map<unsigned int, float> floats;        // glGetFloatv
    std::set<std::string> nullEntryPoints;
    std::deque<std::vector<unsigned char>> pixelAnswers;
    std::map<std::string, Refusal> refusals;

    bool unitsForgiven = false;
    std::deque<unsigned int> errors; // found before a forgiven call, for glGetError

    std::optional<std::string> initFailure;
    std::optional<std::string> modeFailure;
    bool modesRefused = false;
    std::optional<unsigned int> videoMemory;
    std::map<int, int> attributes;
    std::optional<std::string> driverName;
    std::string toldError; // for SDL_GetError, empty for the truth

    std::string shownExtensions; // the text that glGetString has handed out

    Call *record(Call call); // its entry, until the next one
    bool refuses(const char *name);
};

inline Recorder::State &recorderState() { return Recorder::instance().state(); }

// Alive while a real function runs: what it calls in its turn is left alone.
class Inside {
  public:
    Inside() { ++depth; }
    ~Inside() { --depth; }
    Inside(const Inside &) = delete;
    Inside &operator=(const Inside &) = delete;
    static bool isTrue() { return depth != 0; }

  private:
    static thread_local int depth;
};

// What glGetError gives, recorded or not.
unsigned int pendingError();

// The function of this name behind the program's own one; ends the program when there is none.
void *realFunction(const char *name);

} // namespace ravolt::test
