#include "tools/common/message.h"

#include <cstdio>

namespace ravolt::tool {

namespace {

std::string prefix;

void say(const char *kind, const std::string &line) {
    const bool prefixed = line.rfind(prefix, 0) == 0;
    std::fprintf(stderr, "ravolt: %s%s%s\n", prefixed ? "" : prefix.c_str(), kind, line.c_str());
}

} // namespace

void setMessagePrefix(const std::string &text) { prefix = text; }

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
