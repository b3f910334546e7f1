#pragma once

// The recorder stands between the engine and its two neighbours. A test program that links the test
// support has the functions of OpenGL 1.1 and the SDL 1.2 functions that the engine calls defined
// in itself, in front of the real ones; the extension functions that SDL_GL_GetProcAddress hands
// out are its own too. Each one writes down its name and arguments while a recording runs, tells a
// lie where a test asked for one, and calls the real function.
//
//     EXPECT_EQ(callsOf(RVOPENGL::blendingOn), (Calls{{"glEnable", GL_BLEND}}));
//
// In silent mode nothing behind the recorder is called: SDL succeeds, the driver is a plausible one
// that has every extension, and matrices, viewport, switches and object names are kept. Calls that
// a library makes to itself are neither recorded nor lied to. RecorderTest (below) puts all back
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

// Stands for an address in the arguments of a call. Addresses below 1 MiB are offsets into a buffer
// object and stand as numbers; NULL is 0.
inline constexpr double anyAddress = -1.0e300;

// One call: the function's name and its arguments as numbers. The elements that a function reads
// from a short array (glColor4fv, glLoadMatrixf, glLightfv, glDeleteTextures ...) stand one by one
// in place of the address; names that it makes (glGenTextures) likewise; other output pointers and
// texts are left out. `text` is the text argument, where there is one (a caption, a GLSL source),
// and takes no part in the comparison.
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

    // Same name and same numbers, as far as a float tells them apart.
    friend bool operator==(const Call &a, const Call &b);
    friend void PrintTo(const Call &call, std::ostream *out); // glEnable(GL_BLEND)
};

// Calls in their order, with the questions that tests ask.
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

    // What lies behind a mark, or between two of them (see Recorder::mark), the marks left out. An
    // unknown mark fails the test and gives nothing.
    Calls since(const std::string &mark) const;
    Calls between(const std::string &from, const std::string &to) const;

    // Whether `wanted` stand in this order among the calls, others between them or not. Tells which
    // one is missing: EXPECT_TRUE(calls.haveInOrder({{"glFlush"}, {"glFinish"}})).
    testing::AssertionResult haveInOrder(const Calls &wanted) const;

    // One call a line, in all.
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

    // Recording. start() empties what was there; stop() hands the calls out and ends the recording;
    // calls() looks at them while it runs. A mark is an entry of its own name among the calls.
    void start();
    Calls stop();
    const Calls &calls() const;
    bool isRecording() const;
    void mark(const std::string &name);

    // Ends the recording, the silent mode and every lie (but not forgiveUnits).
    void reset();

    // Nothing behind the recorder is called from now on (until reset).
    void silent();
    bool isSilent() const;

    // Lies of the driver. An extension is hidden with all those whose names contain its name.
    void hideExtension(const std::string &name);
    void setExtensions(const std::string &all); // in place of the driver's own list
    void setVendor(const std::string &text);
    void setRenderer(const std::string &text);
    void setVersion(const std::string &text);
    void setTextureUnits(int number);              // GL_MAX_TEXTURE_IMAGE_UNITS_ARB
    void setInteger(unsigned int name, int value); // any value of glGetIntegerv
    void setFloat(unsigned int name, float value); // any value of glGetFloatv
    void nullEntryPoint(const std::string &name);  // SDL_GL_GetProcAddress gives NULL
    // The next glReadPixels gives these bytes, the one after it those of the next answer ...; then
    // the truth again.
    void answerReadPixels(std::vector<unsigned char> bytes);
    // From the (after + 1)-th call on (`times` of them) the function is recorded, not called, and
    // gives 0: a glCreateShaderObjectARB that fails.
    void refuse(const std::string &name, unsigned int after = 0, unsigned int times = ~0u);

    // Enabling 2D texturing on units that the fixed-function pipeline does not have is an error
    // that the engine lives with: from now on it leaves none behind. The engine's fixtures do this.
    void forgiveUnits();

    // Lies of SDL. SDL_GetError gives `error` after a failure that was told.
    void failSdlInit(const std::string &error = "no such device"); // SDL_Init gives -1
    void refuseVideoMode();                                        // SDL_VideoModeOK gives 0
    void failSetVideoMode(const std::string &error = "no such mode");
    void videoMemory(unsigned int kilobytes);
    void setAttribute(int attribute, int value); // what SDL_GL_GetAttribute finds
    void channelSizes(int red, int green, int blue, int alpha);
    void driverName(const std::string &name);

    // Lies of the heap: malloc, calloc, realloc and nothrow new, called from the program's own
    // code, give NULL (and plain new throws) for requests of at least `bytes` bytes, after the
    // first `after` of them. Ends with allocationsWork() or reset().
    void failAllocation(std::size_t bytes, unsigned int after = 0, unsigned int times = ~0u);
    void allocationsWork();
    // Number of allocations (malloc family and new) of the program's own code since the start of
    // the process; the recorder's own are counted too, so count while it does not record.
    unsigned long allocations() const;

    // Lies of the clock: it stands still from now on, but for what is let pass. Frames of no length
    // count as a second. Ends with reset().
    void stopClock();
    void letPass(double seconds);

    // For the definitions behind it; tests have no use for it.
    struct State;
    State &state() { return *hidden; }

  private:
    Recorder();
    State *hidden;
};

// What `step` calls.
template <class Step> Calls callsOf(Step step) {
    Recorder &recorder = Recorder::instance();
    recorder.start();
    step();
    return recorder.stop();
}

// Puts the recorder back after each test.
class RecorderTest : public testing::Test {
  protected:
    Recorder &recorder = Recorder::instance();
    void TearDown() override { recorder.reset(); }
};

// As above, for tests that need no display: nothing real is called.
class SilentTest : public RecorderTest {
  protected:
    void SetUp() override { recorder.silent(); }
};

} // namespace ravolt::test
