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

// `before` stands in front of the program: settings of the environment.
Outcome run(const std::string &arguments, const std::string &before = "");

std::string contentsOf(const fs::path &file);

inline void writeSquare() {
    writeFile("m.mtl", "newmtl a\nKd 1 1 1\n");
    writeFile("m.obj", squareObj("m.mtl", "a"));
}

inline bool startsWith(const std::string &text, const std::string &start) {
    return text.rfind(start, 0) == 0;
}

inline std::size_t lines(const std::string &text) {
    return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
}

inline bool isPng(const fs::path &file) { return startsWith(contentsOf(file), "\x89PNG"); }

} // namespace tool_test
