#pragma once

// What the commands `info` and `check` have in common: options, the beginning, and what --json
// prints.

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

// Removes the log: what the engine's readers log is among the findings.
void startInspecting();

void printJson(const inspect::Json &json);

} // namespace ravolt::tool
