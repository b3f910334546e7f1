// The OpenGL functions of the program: each records its call, overrides the result or simulates a
// failure where a test has set one, and otherwise calls the real function. The core functions are
// ordinary definitions, which hide the driver's; the extension functions are trampolines, one for
// each name of the engine's list of entry points.

#define GL_GLEXT_PROTOTYPES
#include <GL/gl.h>
#include <GL/glext.h>

#include "testing/callWriter.h"
#include "testing/glRecorder.h"
#include "testing/recorderState.h"

#include <algorithm>
#include <cstring>
#include <sstream>

namespace ravolt::test {

using State = RecorderState;

namespace {

GLenum driverError() {
    static const auto real = reinterpret_cast<decltype(&::glGetError)>(realFunction("glGetError"));
    return real();
}

// Results instead of the driver's. Each member has the name of its function and returns whether it
// has overridden the call.
struct Overrides {
    State &state;

    bool glGetIntegerv(GLenum name, GLint *value) {
        return overrideValue(state.integers, name, value);
    }
    bool glGetFloatv(GLenum name, GLfloat *value) {
        return overrideValue(state.floats, name, value);
    }

    bool glEnable(GLenum what) { return suppressUnitError(what, ::glEnable); }
    bool glDisable(GLenum what) { return suppressUnitError(what, ::glDisable); }

    bool glReadPixels(GLint, GLint, GLsizei width, GLsizei height, GLenum format, GLenum type,
                      GLvoid *pixels) {
        if (state.fakePixels.empty())
            return false;
        const std::vector<unsigned char> bytes = state.fakePixels.front();
        state.fakePixels.pop_front();
        const auto wanted = bytesOfPixel(format, type) * static_cast<std::size_t>(width * height);
        std::memcpy(pixels, bytes.data(), std::min(bytes.size(), wanted));
        return true;
    }

  private:
    bool suppressUnitError(GLenum what, void (*real)(GLenum)) {
        if (!state.unitErrorsSuppressed || state.silent || what != GL_TEXTURE_2D)
            return false;
        ScopedUnrecorded unrecorded;
        GLint unit = GL_TEXTURE0, units = 0;
        ::glGetIntegerv(GL_ACTIVE_TEXTURE, &unit);
        ::glGetIntegerv(GL_MAX_TEXTURE_UNITS, &units);
        if (unit < GL_TEXTURE0 + units)
            return false;
        for (GLenum error; (error = driverError()) != GL_NO_ERROR;)
            state.errors.push_back(error);
        real(what);
        driverError();
        return true;
    }

    template <class Value>
    bool overrideValue(const std::map<GLenum, Value> &values, GLenum name, Value *value) {
        const auto found = values.find(name);
        if (found == values.end())
            return false;
        *value = found->second;
        return true;
    }
};

// The traits of a function, found by its name.
#define DESCRIBE(function)                                                                         \
    struct Traits_##function {                                                                     \
        static constexpr const char *name = #function;                                             \
        template <class... Arguments>                                                              \
        static bool callOverride(auto &overrides, Arguments... arguments) {                        \
            if constexpr (requires { overrides.function(arguments...); })                          \
                return overrides.function(arguments...);                                           \
            else                                                                                   \
                return false;                                                                      \
        }                                                                                          \
        template <class Result, class... Arguments>                                                \
        static Result silent(auto &driver, Arguments... arguments) {                               \
            if constexpr (requires { driver.function(arguments...); })                             \
                return driver.function(arguments...);                                              \
            else                                                                                   \
                return Result();                                                                   \
        }                                                                                          \
    };

// Appends the names that a glGen... has generated to its entry of the recording.
template <class... Arguments> void addGeneratedNames(Call *, Arguments...) {}
void addGeneratedNames(Call *call, GLsizei number, GLuint *names) {
    if (call && call->name.rfind("glGen", 0) == 0)
        call->arguments.insert(call->arguments.end(), names, names + std::max(number, 0));
}

template <class Traits, class Result, class Real, class... Arguments>
Result resultOf(State &state, Real real, Arguments... arguments) {
    Overrides overrides{state};
    if constexpr (std::is_void_v<Result>)
        if (Traits::callOverride(overrides, arguments...))
            return;
    if (state.silent)
        return Traits::template silent<Result>(state.driver, arguments...);
    ScopedUnrecorded unrecorded;
    return real()(arguments...);
}

// The body of every function. `real` returns the address of the real one.
template <class Traits, class Result, class Real, class... Arguments>
Result forwardCall(Real real, Arguments... arguments) {
    if (ScopedUnrecorded::isActive())
        return real()(arguments...);
    const ScopedUnrecorded ownWork; // the recorder's own allocations do not fail
    State &state = recorderState();
    Call *call = state.recording ? state.record(writeCall(Traits::name, arguments...)) : nullptr;
    if (state.simulatesFailureOf(Traits::name))
        return Result();
    if constexpr (std::is_void_v<Result>) {
        resultOf<Traits, Result>(state, real, arguments...);
        addGeneratedNames(call, arguments...);
    } else {
        return resultOf<Traits, Result>(state, real, arguments...);
    }
}

#define CORE(result, name, parameters, arguments) DESCRIBE(name)
#include "testing/coreFunctions.inc"
#undef CORE

// An extension function: records, and calls what SDL_GL_GetProcAddress has returned.
template <class Traits, class Function> struct Trampoline;
template <class Traits, class Result, class... Arguments>
struct Trampoline<Traits, Result (*)(Arguments...)> {
    static inline void *real = nullptr;

    static Result call(Arguments... arguments) {
        const auto function = [] { return reinterpret_cast<Result (*)(Arguments...)>(real); };
        return forwardCall<Traits, Result>(function, arguments...);
    }
    static void *wrap(void *realFunction) {
        real = realFunction;
        return reinterpret_cast<void *>(&call);
    }
};

#define RV_GL_ENTRY_POINT(extension, name) DESCRIBE(name)
#include "engine/gl/glEntryPoints.inc"
#undef RV_GL_ENTRY_POINT

struct EntryRow {
    const char *name;
    void *(*wrap)(void *real);
};

constexpr EntryRow entryRows[] = {
#define RV_GL_ENTRY_POINT(extension, name)                                                         \
    {#name, &Trampoline<Traits_##name, decltype(&::name)>::wrap},
#include "engine/gl/glEntryPoints.inc"
#undef RV_GL_ENTRY_POINT
};

std::string visibleExtensions(const State &state, const char *all) {
    std::istringstream words(all ? all : "");
    std::string shown, word;
    while (words >> word) {
        const auto isHiddenBy = [&](const std::string &name) {
            return word.find(name) != std::string::npos;
        };
        if (std::none_of(state.hiddenExtensions.begin(), state.hiddenExtensions.end(), isHiddenBy))
            shown += word + " ";
    }
    return shown;
}

const GLubyte *bytes(const std::string &text) {
    return reinterpret_cast<const GLubyte *>(text.c_str());
}

const GLubyte *driverString(State &state, GLenum name) {
    static const auto real =
        reinterpret_cast<decltype(&::glGetString)>(realFunction("glGetString"));
    if (state.silent)
        return state.driver.glGetString(name);
    ScopedUnrecorded unrecorded;
    return real(name);
}

} // namespace

bool interceptsOpenGL() { return true; }

unsigned int pendingError() {
    State &state = recorderState();
    if (!state.errors.empty()) {
        const GLenum error = state.errors.front();
        state.errors.pop_front();
        return error;
    }
    return state.silent ? GL_NO_ERROR : driverError();
}

void *trampolineOf(const char *name, void *real) {
    for (const EntryRow &row : entryRows)
        if (std::strcmp(row.name, name) == 0)
            return row.wrap(real);
    return real;
}

} // namespace ravolt::test

using namespace ravolt::test;

extern "C" {

#define CORE(result, name, parameters, arguments)                                                  \
    result name parameters {                                                                       \
        const auto real = [] {                                                                     \
            static const auto found = reinterpret_cast<decltype(&::name)>(realFunction(#name));    \
            return found;                                                                          \
        };                                                                                         \
        return forwardCall<Traits_##name, result> arguments;                                       \
    }
#include "testing/coreFunctions.inc"
#undef CORE

GLenum glGetError(void) {
    State &state = recorderState();
    if (state.recording && !ScopedUnrecorded::isActive())
        state.record(Call("glGetError"));
    return pendingError();
}

const GLubyte *glGetString(GLenum name) {
    State &state = recorderState();
    if (ScopedUnrecorded::isActive())
        return driverString(state, name);
    if (state.recording)
        state.record(writeCall("glGetString", name));
    const auto fake = state.strings.find(name);
    const GLubyte *text =
        fake != state.strings.end() ? bytes(fake->second) : driverString(state, name);
    if (name != GL_EXTENSIONS || state.hiddenExtensions.empty())
        return text;
    state.visibleExtensions = visibleExtensions(state, reinterpret_cast<const char *>(text));
    return bytes(state.visibleExtensions);
}
}
