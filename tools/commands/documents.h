#pragma once

// Documents that are made of the tables of options, so that they never differ from them.

#include <filesystem>

namespace CLI {
class App;
}

namespace ravolt::tool {

// Writes ravolt.1, ravolt-COMMAND.1 for each command and the completion for bash, `ravolt`, into a
// folder that exists. Throws Failure.
void writeDocuments(const CLI::App &program, const std::filesystem::path &folder);

} // namespace ravolt::tool
