#pragma once

// The tool's messages on standard error, in lines that start with its name.

#include <string>

namespace ravolt::tool {

// Which messages are printed: with `quiet` only errors, with `verbose` also notes
// and the engine's log.
struct Verbosity {
    bool quiet = false;
    bool verbose = false;
};

// Every message from now on starts with this text, unless it does by itself: the file of a job
// among several.
void setMessagePrefix(const std::string &text);

// An error: why the job failed.
void sayError(const std::string &line);

// A warning: what is lost or wrong in the result.
void warn(const std::string &line, const Verbosity &verbosity);

// A note, with `verbose` only.
void note(const std::string &line, const Verbosity &verbosity);

} // namespace ravolt::tool
