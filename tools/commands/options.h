#pragma once

// Options that several commands have, and checks of what CLI11 does not check.

#include "tools/common/message.h"
#include "tools/convert/convert.h"
#include "tools/process/guard.h"

#include <filesystem>

namespace CLI {
class App;
}

namespace ravolt::tool {

// An output file of this name is standard output.
constexpr const char *standardOutput = "-";

void addVerbosity(CLI::App &app, Verbosity &to);
void addAlpha(CLI::App &app, AlphaUse &to);
void addSources(CLI::App &app, SourceOptions &to);
void addLimits(CLI::App &app, Limits &to);

// Throws WrongOptions for an empty name.
void requireName(const char *what, const std::filesystem::path &name);

} // namespace ravolt::tool
