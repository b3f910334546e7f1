// The OpenGL functions of the program: each records, lies where asked to, and calls the real one.
// The core functions are ordinary definitions that stand in front of the driver's; the extension
// functions are trampolines, one for each name of the engine's own list.

#define GL_GLEXT_PROTOTYPES
#include <GL/gl.h>
#include <GL/glext.h>

#include "tests/support/callWriter.h"
#include "tests/support/glRecorder.h"
#include "tests/support/recorderState.h"

#include <algorithm>
#include <cstring>
#include <sstream>

namespace ravolt::test {

using State = Recorder::State;

namespace {

GLenum trueError() {
    static const auto real = reinterpret_cast<decltype(&::glGetError)>(realFunction("glGetError"));
    return real();
}

// Answers in place of the driver's. Each member has the name of its function and tells whether it
// has answered.
struct Lies {
    State &state;

    bool glGetIntegerv(GLenum name, GLint *value) { return answer(state.integers, name, value); }
    bool glGetFloatv(GLenum name, GLfloat *value) { return answer(state.floats, name, value); }

    bool glEnable(GLenum what) { return forgive(what, ::glEnable); }
    bool glDisable(GLenum what) { return forgive(what, ::glDisable); }

    bool glReadPixels(GLint, GLint, GLsizei width, GLsizei height, GLenum format, GLenum type,
                      GLvoid *pixels) {
        if (state.pixelAnswers.empty())
            return false;
        const std::vector<unsigned char> bytes = state.pixelAnswers.front();
        state.pixelAnswers.pop_front();
        const auto wanted = bytesOfPixel(format, type) * static_cast<std::size_t>(width * height);
        std::memcpy(pixels, bytes.data(), std::min(bytes.size(), wanted));
        return true;
    }

  private:
    bool forgive(GLenum what, void (*real)(GLenum)) {
        if (!state.unitsForgiven || state.silent || what != GL_TEXTURE_2D)
            return false;
        Inside inside;
        GLint unit = GL_TEXTURE0, units = 0;
        ::glGetIntegerv(GL_ACTIVE_TEXTURE, &unit);
        ::glGetIntegerv(GL_MAX_TEXTURE_UNITS, &units);
        if (unit < GL_TEXTURE0 + units)
            return false;
        for (GLenum error; (error = trueError()) != GL_NO_ERROR;)
            state.errors.push_back(error);
        real(what);
        trueError();
        return true;
    }

    template <class Value>
    bool answer(const std::map<GLenum, Value> &answers, GLenum name, Value *value) {
        const auto found = answers.find(name);
        if (found == answers.end())
            return false;
        *value = found->second;
        return true;
    }
};

// What is known of a function by its name alone.
#define DESCRIBE(function)                                                                         \
    struct Of_##function {                                                                         \
        static constexpr const char *name = #function;                                             \
        template <class... Arguments> static bool lie(auto &lies, Arguments... arguments) {        \
            if constexpr (requires { lies.function(arguments...); })                               \
                return lies.function(arguments...);                                                \
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

// The names that a glGen... has made, in its entry of the recording.
template <class... Arguments> void addMade(Call *, Arguments...) {}
void addMade(Call *call, GLsizei number, GLuint *names) {
    if (call && call->name.rfind("glGen", 0) == 0)
        call->arguments.insert(call->arguments.end(), names, names + std::max(number, 0));
}

template <class Of, class Result, class Real, class... Arguments>
Result answer(State &state, Real real, Arguments... arguments) {
    Lies lies{state};
    if constexpr (std::is_void_v<Result>)
        if (Of::lie(lies, arguments...))
            return;
    if (state.silent)
        return Of::template silent<Result>(state.driver, arguments...);
    Inside inside;
    return real()(arguments...);
}

// The one way of every function. `real` gives the address of the real one.
template <class Of, class Result, class Real, class... Arguments>
Result through(Real real, Arguments... arguments) {
    if (Inside::isTrue())
        return real()(arguments...);
    const Inside ownWork; // its memory is none of the library's
    State &state = recorderState();
    Call *call = state.recording ? state.record(writeCall(Of::name, arguments...)) : nullptr;
    if (state.refuses(Of::name))
        return Result();
    if constexpr (std::is_void_v<Result>) {
        answer<Of, Result>(state, real, arguments...);
        addMade(call, arguments...);
    } else {
        return answer<Of, Result>(state, real, arguments...);
    }
}

#define CORE(result, name, parameters, arguments) DESCRIBE(name)
#include "tests/support/coreFunctions.inc"
#undef CORE

// An extension function: records, and calls what SDL_GL_GetProcAddress gave.
template <class Of, class Function> struct Trampoline;
template <class Of, class Result, class... Arguments>
struct Trampoline<Of, Result (*)(Arguments...)> {
    static inline void *real = nullptr;

    static Result call(Arguments... arguments) {
        const auto function = [] { return reinterpret_cast<Result (*)(Arguments...)>(real); };
        return through<Of, Result>(function, arguments...);
    }
    static void *over(void *realFunction) {
        real = realFunction;
        return reinterpret_cast<void *>(&call);
    }
};

#define RV_GL_ENTRY_POINT(extension, name) DESCRIBE(name)
#include "engine/gl/glEntryPoints.inc"
#undef RV_GL_ENTRY_POINT

struct EntryRow {
    const char *name;
    void *(*over)(void *real);
};

constexpr EntryRow entryRows[] = {
#define RV_GL_ENTRY_POINT(extension, name) {#name, &Trampoline<Of_##name, decltype(&::name)>::over},
#include "engine/gl/glEntryPoints.inc"
#undef RV_GL_ENTRY_POINT
};

std::string withoutHidden(const State &state, const char *all) {
    std::istringstream words(all ? all : "");
    std::string shown, word;
    while (words >> word) {
        const auto hides = [&](const std::string &name) {
            return word.find(name) != std::string::npos;
        };
        if (std::none_of(state.hiddenExtensions.begin(), state.hiddenExtensions.end(), hides))
            shown += word + " ";
    }
    return shown;
}

const GLubyte *bytes(const std::string &text) {
    return reinterpret_cast<const GLubyte *>(text.c_str());
}

const GLubyte *trueString(State &state, GLenum name) {
    static const auto real =
        reinterpret_cast<decltype(&::glGetString)>(realFunction("glGetString"));
    if (state.silent)
        return state.driver.glGetString(name);
    Inside inside;
    return real(name);
}

} // namespace

unsigned int pendingError() {
    State &state = recorderState();
    if (!state.errors.empty()) {
        const GLenum error = state.errors.front();
        state.errors.pop_front();
        return error;
    }
    return state.silent ? GL_NO_ERROR : trueError();
}

void *trampolineOf(const char *name, void *real) {
    for (const EntryRow &row : entryRows)
        if (std::strcmp(row.name, name) == 0)
            return row.over(real);
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
        return through<Of_##name, result> arguments;                                               \
    }
#include "tests/support/coreFunctions.inc"
#undef CORE

GLenum glGetError(void) {
    State &state = recorderState();
    if (state.recording && !Inside::isTrue())
        state.record(Call("glGetError"));
    return pendingError();
}

const GLubyte *glGetString(GLenum name) {
    State &state = recorderState();
    if (Inside::isTrue())
        return trueString(state, name);
    if (state.recording)
        state.record(writeCall("glGetString", name));
    const auto told = state.strings.find(name);
    const GLubyte *text =
        told != state.strings.end() ? bytes(told->second) : trueString(state, name);
    if (name != GL_EXTENSIONS || state.hiddenExtensions.empty())
        return text;
    state.shownExtensions = withoutHidden(state, reinterpret_cast<const char *>(text));
    return bytes(state.shownExtensions);
}
}
