// The order of messages of a command that writes files: its report, then a line about the result.

#include "tools/commands/fileJob.h"

#include "tools/commands/scene.h"
#include "tools/process/logRedirect.h"

#include <cstdio>

namespace ravolt::tool {

void writeFiles(const std::string &input, const Limits &limits, const Verbosity &verbosity,
                const std::function<std::string(GuardedJob &, Report &)> &job,
                const std::function<void()> &beforeCommit) {
    LogRedirect::clear(); // no engine, so nothing to log
    GuardedJob done;
    done.beforeCommit = beforeCommit;
    runGuarded(
        input, limits,
        [&](GuardedJob &guarded) {
            Report report;
            guarded.closingMessage = job(guarded, report);
            say(report, verbosity);
        },
        done);
    if (!verbosity.quiet)
        std::printf("%s\n", done.closingMessage.c_str());
}

} // namespace ravolt::tool
