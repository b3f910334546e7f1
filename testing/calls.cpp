// Comparing, selecting and printing recorded calls.

#include "ravolt/testing/calls.h"

#include "testing/mark.h"

#include <GL/gl.h>
#include <GL/glext.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <ostream>
#include <set>
#include <sstream>
#include <stdexcept>

namespace ravolt::test {
namespace {

// The name of an enumerant's value: the first one where several share a value.
const std::map<long, const char *> &enumNames() {
    static const std::map<long, const char *> names = [] {
        std::map<long, const char *> made;
#define ENUM(name) made.try_emplace(static_cast<long>(name), #name);
#include "testing/enumNames.inc"
#undef ENUM
        return made;
    }();
    return names;
}

// Whether the numbers of a function may be enumerants: not those of sizes, positions and colours.
bool hasEnumArguments(const std::string &function) {
    static const std::set<std::string> plain{
        "glViewport", "glScissor",   "glOrtho",      "glFrustum", "glRotatef",  "glTranslatef",
        "glScalef",   "glLineWidth", "glClearDepth", "glRectf",   "glPointSize"};
    if (plain.count(function))
        return false;
    for (const char *family : {"glColor", "glVertex2", "glVertex3", "glVertex4", "glNormal3",
                               "glTexCoord", "glLoadMatrix", "glMultMatrix", "glUniform", "glRect"})
        if (function.rfind(family, 0) == 0)
            return function == "glColorPointer" || function == "glColorMaterial" ||
                   function == "glTexCoordPointer";
    return true;
}

std::string primitiveName(double value) {
    static constexpr const char *names[] = {
        "GL_POINTS",         "GL_LINES",        "GL_LINE_LOOP", "GL_LINE_STRIP", "GL_TRIANGLES",
        "GL_TRIANGLE_STRIP", "GL_TRIANGLE_FAN", "GL_QUADS",     "GL_QUAD_STRIP", "GL_POLYGON"};
    return value >= 0 && value < 10 ? names[static_cast<int>(value)] : "";
}

std::string maskName(double value) {
    const long mask = static_cast<long>(value);
    std::string text;
    for (const auto &[bit, name] : {std::pair{GL_COLOR_BUFFER_BIT, "GL_COLOR_BUFFER_BIT"},
                                    std::pair{GL_DEPTH_BUFFER_BIT, "GL_DEPTH_BUFFER_BIT"},
                                    std::pair{GL_STENCIL_BUFFER_BIT, "GL_STENCIL_BUFFER_BIT"}})
        if (mask & bit)
            text += (text.empty() ? "" : " | ") + std::string(name);
    return text;
}

std::string argumentText(const Call &call, std::size_t index) {
    const double value = call.arguments[index];
    if (value == anyAddress)
        return "(address)";
    std::string name;
    if (index == 0 &&
        (call.name == "glBegin" || call.name == "glDrawArrays" || call.name == "glDrawElements"))
        name = primitiveName(value);
    if (call.name == "glClear")
        name = maskName(value);
    if (!name.empty())
        return name;
    if (value >= 0x100 && value == std::floor(value) && hasEnumArguments(call.name)) {
        const auto found = enumNames().find(static_cast<long>(value));
        if (found != enumNames().end())
            return found->second;
    }
    std::ostringstream text;
    text.precision(9);
    text << value;
    return text.str();
}

std::string callText(const Call &call) {
    if (call.name.rfind(markName, 0) == 0)
        return "--- " + call.name;
    std::string text = call.name + "(";
    for (std::size_t index = 0; index < call.arguments.size(); ++index)
        text += (index ? ", " : "") + argumentText(call, index);
    if (!call.text.empty())
        text += (call.arguments.empty() ? "\"" : ", \"") + call.text.substr(0, 60) + "\"";
    return text + ")";
}

bool sameNumber(double a, double b) {
    if (a == b || (std::isnan(a) && std::isnan(b)))
        return true;
    const double limit = 16777216; // up to here a float represents every integer
    return std::abs(a) < limit && std::abs(b) < limit &&
           static_cast<float>(a) == static_cast<float>(b);
}

} // namespace

bool operator==(const Call &a, const Call &b) {
    return a.name == b.name && std::equal(a.arguments.begin(), a.arguments.end(),
                                          b.arguments.begin(), b.arguments.end(), sameNumber);
}

bool operator!=(const Call &a, const Call &b) { return !(a == b); }

std::ostream &operator<<(std::ostream &out, const Call &call) { return out << callText(call); }

Calls Calls::where(const std::function<bool(const Call &)> &wanted) const {
    Calls found;
    std::copy_if(list.begin(), list.end(), std::back_inserter(found.list), wanted);
    return found;
}

Calls Calls::named(const std::string &name) const { return named({name}); }

Calls Calls::named(std::initializer_list<std::string> names) const {
    const std::set<std::string> wanted(names);
    return where([&](const Call &call) { return wanted.count(call.name) != 0; });
}

Calls Calls::without(std::initializer_list<std::string> names) const {
    const std::set<std::string> unwanted(names);
    return where([&](const Call &call) { return unwanted.count(call.name) == 0; });
}

std::size_t Calls::count(const std::string &name) const { return named(name).size(); }

std::size_t Calls::count(const Call &call) const {
    return static_cast<std::size_t>(std::count(list.begin(), list.end(), call));
}

std::vector<std::string> Calls::names() const {
    std::vector<std::string> found;
    for (const Call &call : list)
        found.push_back(call.name);
    return found;
}

Calls Calls::since(const std::string &mark) const {
    const auto from = std::find_if(list.begin(), list.end(),
                                   [&](const Call &call) { return call.name == markName + mark; });
    if (from == list.end())
        throw std::out_of_range("no mark \"" + mark + "\" among the calls");
    return Calls(std::vector<Call>(from + 1, list.end()));
}

Calls Calls::between(const std::string &from, const std::string &to) const {
    Calls found = since(from);
    const auto end = std::find_if(found.list.begin(), found.list.end(),
                                  [&](const Call &call) { return call.name == markName + to; });
    if (end == found.list.end())
        throw std::out_of_range("no mark \"" + to + "\" after the mark \"" + from + "\"");
    found.list.erase(end, found.list.end());
    return found;
}

CheckResult Calls::haveInOrder(const Calls &wanted) const {
    auto from = list.begin();
    for (std::size_t index = 0; index < wanted.size(); ++index) {
        const auto found = std::find(from, list.end(), wanted[index]);
        if (found == list.end())
            return {false, "call " + std::to_string(index) + ", " + callText(wanted[index]) +
                               " is missing; after the call before it come\n" +
                               Calls(std::vector<Call>(from, list.end())).text()};
        from = found + 1;
    }
    return {true, ""};
}

std::string Calls::text() const {
    std::string all;
    for (const Call &call : list)
        all += callText(call) + "\n";
    return all;
}

bool operator==(const Calls &a, const Calls &b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end());
}

bool operator!=(const Calls &a, const Calls &b) { return !(a == b); }

std::ostream &operator<<(std::ostream &out, const Calls &calls) {
    return out << calls.size() << " calls\n" << calls.text();
}

} // namespace ravolt::test
