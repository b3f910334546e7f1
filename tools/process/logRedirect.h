#pragma once

// The engine's library opens its log in the working folder, and greets on standard output, as soon
// as it is loaded: before main. The tool leaves no log in its user's folders and keeps its output
// for itself, so it redirects both before the library's constructors run.

#include <filesystem>

namespace ravolt::tool {

class LogRedirect {
  public:
    // First thing in main: back to the user's folder and output, and no more echo of the log.
    LogRedirect();
    // Removes the log.
    ~LogRedirect();
    LogRedirect(const LogRedirect &) = delete;
    LogRedirect &operator=(const LogRedirect &) = delete;

    // The engine's log of this run.
    static std::filesystem::path log();

    // The program's own arguments, the name first.
    static char **arguments();

    // Removes the log now; for a process that is about to execute another program.
    static void clear();
};

} // namespace ravolt::tool
