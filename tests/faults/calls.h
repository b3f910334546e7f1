#pragma once

// The calls of a table of functions: of one function, with each of several values for each of its
// parameters.

#include "ravolt/zlf.h"
#include "tests/faults/hostileValues.h"
#include "tests/faults/world.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <tuple>
#include <utility>
#include <vector>

namespace ravolt::test {

// What a function returns is read.
inline void use(const char *text) {
    volatile std::size_t length = text ? std::strlen(text) : 0;
    static_cast<void>(length);
}
inline void use(FILE *file) {
    if (file)
        std::fclose(file);
}
template <class T> void use(const T &) {}

struct Prepared {
    World world;
    Buffers buffers;
};

// Calls an action with a fresh world for each combination of values.
class Session {
  public:
    Session(const char *name, std::function<void()> beforeEach, std::function<void()> afterEach)
        : function(name), begin(std::move(beforeEach)), end(std::move(afterEach)),
          traced(std::getenv("RAVOLT_TRACE_CALLS")) {}

    // `action` gets the world and the number of the combination, and returns whether there are
    // more.
    template <class Action> void forEach(const Action &action) {
        begin();
        for (bool more = true; more; ++number) {
            Prepared prepared;
            prepared.world = makeWorld();
            // A parser that is opened twice leaks the first file.
            if (std::strncmp(function, "zlfOpenParser(", 14) != 0)
                zlfOpenParser(&prepared.buffers.opened, "kerning.txt");
            if (traced)
                std::fprintf(stderr, "%s, combination %zu\n", function, number);
            more = action(prepared, number);
            drawWorld(prepared.world);
            for (zlfPARSER *parser : {&prepared.buffers.opened, &prepared.buffers.closed})
                if (parser->data)
                    zlfCloseParser(parser);
        }
        end();
        number = 0;
    }

    // A call of an object, or that there is none to call it of.
    void countObject(const void *object) { objects += object != nullptr; }
    unsigned int getObjects() const { return objects; }

  private:
    const char *function;
    unsigned int objects = 0;
    std::function<void()> begin, end;
    bool traced;
    std::size_t number = 0;
};

// The arguments of combination `number`: each parameter's further values in turn, with the first
// values of the others, and then the n-th value of all. False when there is none of that number.
//
// `source.values<T>()` are the values of a type; the first one is ordinary.
template <class Source, class... Arguments> class Combinations {
  public:
    explicit Combinations(const Source &source)
        : values(source.template values<std::decay_t<Arguments>>()...) {}

    using Tuple = std::tuple<std::decay_t<Arguments>...>;

    std::size_t count() const {
        return std::apply(
            [](const auto &...each) {
                return (std::size_t{1} + ... + (each.size() - 1)) +
                       (sizeof...(each) > 1 ? std::max({std::size_t{0}, each.size()...}) - 1 : 0);
            },
            values);
    }

    Tuple at(std::size_t number) const {
        return at(number, std::index_sequence_for<Arguments...>{});
    }

  private:
    template <std::size_t... I> Tuple at(std::size_t number, std::index_sequence<I...>) const {
        [[maybe_unused]] std::size_t indices[sizeof...(I) + 1] = {};
        std::size_t rest = number;
        bool found = number == 0;
        const std::size_t sizes[sizeof...(I) + 1] = {std::get<I>(values).size()..., 0};
        for (std::size_t i = 0; i < sizeof...(I) && !found; ++i) {
            if (rest < sizes[i]) {
                indices[i] = rest;
                found = true;
            } else
                rest -= sizes[i] - 1;
        }
        if (!found)
            for (std::size_t i = 0; i < sizeof...(I); ++i)
                indices[i] = std::min(rest, sizes[i] - 1);
        return Tuple(std::get<I>(values)[indices[I]]...);
    }

    std::tuple<std::vector<std::decay_t<Arguments>>...> values;
};

template <class Call> void invoke(const Call &call) {
    if constexpr (std::is_void_v<decltype(call())>)
        call();
    else
        use(call());
}

struct Row {
    const char *name;
    bool isMember;
    std::function<void(Session &)> run;
};

} // namespace ravolt::test
