#pragma once

// The program itself, run as its users run it.

#include "tests/tools/support.h"

#include <algorithm>
#include <string>

namespace tool_test {

struct Outcome {
    int code = -1;
    std::string out, err;
};

// `before` comes in front of the program: settings of the environment.
Outcome run(const std::string &arguments, const std::string &before = "");

// It succeeds and prints nothing, but these lines to the standard error output.
void expectSuccess(const std::string &arguments, const std::string &err = "",
                   const std::string &before = "");

// It fails with that code, one line that starts so after "ravolt: " (all of it where that ends with
// a line end), and without the files x.rve and x.png.
void expectFailure(const std::string &arguments, int code, const std::string &start,
                   const std::string &before = "");

inline bool startsWith(const std::string &text, const std::string &start) {
    return text.rfind(start, 0) == 0;
}

inline bool has(const std::string &text, const std::string &part) {
    return text.find(part) != std::string::npos;
}

inline std::size_t lines(const std::string &text) {
    return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
}

inline bool isPng(const fs::path &file) { return startsWith(readText(file), "\x89PNG"); }

inline bool areEqual(const fs::path &file, const fs::path &other) {
    return readText(file) == readText(other);
}

} // namespace tool_test
