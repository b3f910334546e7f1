#pragma once

// The engine's library opens its log in the working folder, and prints a greeting on standard
// output, as soon as it is loaded: before main. The tool writes no log into its user's folders and
// only its own text to standard output, so it redirects both before the library's constructors run.

#include <filesystem>

namespace ravolt::tool {

class LogRedirect {
  public:
    // Create it first in main: restores the user's folder and output, and ends the echo of the log.
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
