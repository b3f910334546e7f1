#pragma once

// What the commands that write files without the engine have in common.

#include "tools/common/message.h"
#include "tools/process/guard.h"

#include <functional>
#include <string>

namespace ravolt::tool {

class Report;

// Runs `job` as runGuarded does, prints the report that it fills, commits its files and prints what
// it returns, a line about the result, unless `verbosity` is quiet.
void writeFiles(const std::string &input, const Limits &limits, const Verbosity &verbosity,
                const std::function<std::string(GuardedJob &job, Report &report)> &job);

} // namespace ravolt::tool
