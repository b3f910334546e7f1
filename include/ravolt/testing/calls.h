#pragma once

// Recorded calls of OpenGL and SDL: comparing, selecting and printing them.

#include <cstddef>
#include <functional>
#include <initializer_list>
#include <iosfwd>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

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
    std::string name;              // of the function
    std::vector<double> arguments; // in their order
    std::string text;              // the text argument, empty without one

    // A call with these arguments.
    template <class... Numbers,
              class = std::enable_if_t<(std::is_convertible_v<Numbers, double> && ...)>>
    Call(const char *function, Numbers... numbers)
        : name(function), arguments{static_cast<double>(numbers)...} {}
    Call(std::string function, std::vector<double> numbers)
        : name(std::move(function)), arguments(std::move(numbers)) {}
};

// Same name and same numbers, compared with the precision of a float.
bool operator==(const Call &a, const Call &b);
// The opposite.
bool operator!=(const Call &a, const Call &b);
// As in a source: glEnable(GL_BLEND).
std::ostream &operator<<(std::ostream &out, const Call &call);

// The result of a check and, for a failed one, its explanation. It converts to bool, and to a test
// framework's own result to which a text can be appended (the AssertionResult of GoogleTest).
struct CheckResult {
    bool passed = false;     // the result
    std::string explanation; // empty when it has passed

    // Whether it has passed.
    explicit operator bool() const { return passed; }
    // The result of a test framework, with the explanation.
    template <class Result,
              class = std::enable_if_t<std::is_same_v<
                  Result &, decltype(std::declval<Result &>() << std::declval<std::string>())>>>
    operator Result() const {
        Result result(passed);
        result << explanation;
        return result;
    }
};

// Calls in their order, with queries for tests.
class Calls {
  public:
    // None.
    Calls() = default;
    // These, in their order.
    Calls(std::initializer_list<Call> calls) : list(calls) {}
    explicit Calls(std::vector<Call> calls) : list(std::move(calls)) {}

    // How many there are.
    std::size_t size() const { return list.size(); }
    bool empty() const { return list.empty(); } // whether there are none
    auto begin() const { return list.begin(); } // iterators of constant calls
    auto end() const { return list.end(); }     // past the last one
    // One of them, from 0; past the end it throws std::out_of_range.
    const Call &operator[](std::size_t index) const { return list.at(index); }
    // The last one; without any it throws std::out_of_range.
    const Call &back() const { return (*this)[size() - 1]; }

    // Those of one function, or of any of these, in the order of the calls.
    Calls named(const std::string &name) const;
    Calls named(std::initializer_list<std::string> names) const;
    // Those of all other functions.
    Calls without(std::initializer_list<std::string> names) const;
    // Those for which `wanted` is true.
    Calls where(const std::function<bool(const Call &)> &wanted) const;

    // How many are of one function, or equal one call.
    std::size_t count(const std::string &name) const;
    std::size_t count(const Call &call) const;
    std::size_t count(const char *name) const { return count(std::string(name)); }
    // Whether one is of a function, or equals a call.
    bool contains(const std::string &name) const { return count(name) != 0; }
    bool contains(const char *name) const { return count(name) != 0; }
    bool contains(const Call &call) const { return count(call) != 0; }
    // The names of the functions, in the order of the calls.
    std::vector<std::string> names() const;

    // The calls after a mark, or between two of them (see CallRecorder::mark), without the marks.
    // An unknown mark throws std::out_of_range.
    Calls since(const std::string &mark) const;
    Calls between(const std::string &from, const std::string &to) const;

    // Whether the calls contain `wanted` in this order, with or without others in between. The
    // explanation of a failure names the missing one.
    CheckResult haveInOrder(const Calls &wanted) const;

    // All calls, one a line.
    std::string text() const;

  private:
    friend struct RecorderState;
    std::vector<Call> list;
};

// The same calls in the same order.
bool operator==(const Calls &a, const Calls &b);
// The opposite.
bool operator!=(const Calls &a, const Calls &b);
// Their number, and `text`.
std::ostream &operator<<(std::ostream &out, const Calls &calls);

} // namespace ravolt::test
