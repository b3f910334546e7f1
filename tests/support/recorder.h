#pragma once

// The recorder intercepts the engine's calls of OpenGL and SDL. A test program that links the test
// support defines the functions of OpenGL 1.1 and the SDL 1.2 functions that the engine calls,
// which hides the real ones; SDL_GL_GetProcAddress returns wrappers of the extension functions.
// Each of them records its name and arguments while a recording runs, overrides its result or
// simulates a failure where a test has set one, and otherwise calls the real function.
//
//     EXPECT_EQ(callsOf(RVOPENGL::blendingOn), (Calls{{"glEnable", GL_BLEND}}));
//
// In silent mode no real function is called: SDL succeeds, and the driver is a simulated one that
// has every extension and stores matrices, viewport, switches and object names. Calls that a
// library makes itself are neither recorded nor overridden. RecorderTest (below) resets everything
// after each test.

#include <cstddef>
#include <functional>
#include <initializer_list>
#include <iosfwd>
#include <string>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

namespace ravolt::test {

// Represents an address in the arguments of a call. Addresses below 1 MiB are offsets into a buffer
// object and are recorded as numbers; NULL is 0.
inline constexpr double anyAddress = -1.0e300;

// One call: the function's name and its arguments as numbers. The elements that a function reads
// from a short array (glColor4fv, glLoadMatrixf, glLightfv, glDeleteTextures ...) and the names
// that it generates (glGenTextures) are recorded one by one instead of the address; other output
// pointers are omitted. `text` is the text argument if there is one (a caption, a GLSL source);
// comparisons ignore it.
struct Call {
    std::string name;
    std::vector<double> arguments;
    std::string text;

    template <class... Numbers>
    requires(std::is_convertible_v<Numbers, double> &&...)
        Call(const char *function, Numbers... numbers)
        : name(function), arguments{static_cast<double>(numbers)...} {}
    Call(std::string function, std::vector<double> numbers)
        : name(std::move(function)), arguments(std::move(numbers)) {}

    // Same name and same numbers, compared with the precision of a float.
    friend bool operator==(const Call &a, const Call &b);
    friend void PrintTo(const Call &call, std::ostream *out); // glEnable(GL_BLEND)
};

// Calls in their order, with queries for tests.
class Calls {
  public:
    Calls() = default;
    Calls(std::initializer_list<Call> calls) : list(calls) {}
    explicit Calls(std::vector<Call> calls) : list(std::move(calls)) {}

    std::size_t size() const { return list.size(); }
    bool empty() const { return list.empty(); }
    auto begin() const { return list.begin(); }
    auto end() const { return list.end(); }
    const Call &operator[](std::size_t index) const {
        return list.at(index);
    } // throws past the end
    const Call &back() const { return (*this)[size() - 1]; }

    Calls named(const std::string &name) const;
    Calls
    named(std::initializer_list<std::string> names) const; // any of them, in order of the calls
    Calls without(std::initializer_list<std::string> names) const;
    Calls where(const std::function<bool(const Call &)> &wanted) const;

    std::size_t count(const std::string &name) const;
    std::size_t count(const Call &call) const;
    std::size_t count(const char *name) const { return count(std::string(name)); }
    bool contains(const std::string &name) const { return count(name) != 0; }
    bool contains(const char *name) const { return count(name) != 0; }
    bool contains(const Call &call) const { return count(call) != 0; }
    std::vector<std::string> names() const;

    // The calls after a mark, or between two of them (see Recorder::mark), without the marks. An
    // unknown mark fails the test and returns no calls.
    Calls since(const std::string &mark) const;
    Calls between(const std::string &from, const std::string &to) const;

    // Whether the calls contain `wanted` in this order, with or without others in between. The
    // failure names the missing one: EXPECT_TRUE(calls.haveInOrder({{"glFlush"}, {"glFinish"}})).
    testing::AssertionResult haveInOrder(const Calls &wanted) const;

    // All calls, one a line.
    std::string text() const;

    friend bool operator==(const Calls &a, const Calls &b) { return a.list == b.list; }
    friend void PrintTo(const Calls &calls, std::ostream *out);

  private:
    friend class Recorder;
    std::vector<Call> list;
};

class Recorder {
  public:
    static Recorder &instance();

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
    // have, which is an OpenGL error: from now on the recorder clears it. The engine's fixtures
    // call this.
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

    // Simulated failures of the heap: malloc, calloc, realloc and nothrow new, called from the
    // program's own code, return NULL (and plain new throws) for requests of at least `bytes`
    // bytes, after the first `after` of them. Ends with allocationsWork() or reset().
    void failAllocation(std::size_t bytes, unsigned int after = 0, unsigned int times = ~0u);
    void allocationsWork();
    // Number of allocations (malloc family and new) of the program's own code since the start of
    // the process; the recorder's own are counted too, so count while it does not record.
    unsigned long allocations() const;

    // A simulated clock, which only advanceClock() advances. Frames of no length count as a second.
    // Ends with reset().
    void stopClock();
    void advanceClock(double seconds);

    // Internal, for the definitions of the recorder.
    struct State;
    State &state() { return *hidden; }

  private:
    Recorder();
    State *hidden;
};

// The calls that `step` makes.
template <class Step> Calls callsOf(Step step) {
    Recorder &recorder = Recorder::instance();
    recorder.start();
    step();
    return recorder.stop();
}

// Resets the recorder after each test.
class RecorderTest : public testing::Test {
  protected:
    Recorder &recorder = Recorder::instance();
    void TearDown() override { recorder.reset(); }
};

// As above, for tests that need no display: no real function is called.
class SilentTest : public RecorderTest {
  protected:
    void SetUp() override { recorder.silent(); }
};

} // namespace ravolt::test
