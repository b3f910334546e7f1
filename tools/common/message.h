#pragma once

// Everything that the tool says on standard error, in lines that start with its name.

#include <string>

namespace ravolt::tool {

// How much is said on standard error: with `quiet` nothing but failures, with `verbose` also notes
// and the engine's log.
struct Verbosity {
    bool quiet = false;
    bool verbose = false;
};

// Why the job failed.
void sayError(const std::string &line);

// What is lost or wrong in the result; nothing with `quiet`.
void warn(const std::string &line, const Verbosity &verbosity);

// Anything else worth knowing, with `verbose` alone.
void note(const std::string &line, const Verbosity &verbosity);

} // namespace ravolt::tool
