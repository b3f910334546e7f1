#pragma once

// What the commands that write files without the engine have in common.

#include "tools/common/message.h"
#include "tools/process/guard.h"

#include <functional>
#include <string>

namespace ravolt::tool {

class Report;

// Runs `job` as runGuarded does, prints the report that it fills, commits its files and prints what
// it returns, a line about the result, unless `verbosity` is quiet. `beforeCommit`, unless it is
// empty, is called before the files are committed.
void writeFiles(const std::string &input, const Limits &limits, const Verbosity &verbosity,
                const std::function<std::string(GuardedJob &job, Report &report)> &job,
                const std::function<void()> &beforeCommit = {});

} // namespace ravolt::tool
