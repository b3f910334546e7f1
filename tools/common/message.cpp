#include "tools/common/message.h"

#include <cstdio>

namespace ravolt::tool {

namespace {

void say(const char *kind, const std::string &line) {
    std::fprintf(stderr, "ravolt: %s%s\n", kind, line.c_str());
}

} // namespace

void sayError(const std::string &line) { say("", line); }

void warn(const std::string &line, const Verbosity &verbosity) {
    if (!verbosity.quiet)
        say("warning: ", line);
}

void note(const std::string &line, const Verbosity &verbosity) {
    if (verbosity.verbose)
        say("note: ", line);
}

} // namespace ravolt::tool
