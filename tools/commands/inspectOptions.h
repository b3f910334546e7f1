#pragma once

// The options that `info` and `check` have in common.

#include "tools/inspect/files.h"

#include <string>

namespace CLI {
class App;
}

namespace ravolt::tool {

struct InspectOptions {
    inspect::InspectionOptions inspection;
    std::string kind; // of --as; empty without it
    bool json = false;
};

void addInspect(CLI::App &app, InspectOptions &to);

// Reads --as. Throws WrongOptions for a word that is no kind.
void check(InspectOptions &options);

} // namespace ravolt::tool
