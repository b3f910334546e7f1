#pragma once

// How a job ends: with a message for what went wrong, and an exit code.

#include <functional>

namespace ravolt::tool {

// Runs the job and prints the error that it throws. Returns its result, or 1 for a job that failed,
// 2 for wrong options, and 128 plus the signal's number where a signal has ended it.
int exitCodeOf(const std::function<int()> &job);

// Where memory runs out while something is cleaned up, no exception can be caught: the process then
// ends with the same line and exit code, without removing more than its log.
void endOrderlyWithoutMemory();

} // namespace ravolt::tool
