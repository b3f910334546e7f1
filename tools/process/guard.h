#pragma once

// Some readers of model files crash on invalid files or take unlimited memory and time. Therefore a
// conversion runs in a process of its own, within limits: if that process dies, the tool reports it
// in one line and removes the files that it created.

#include "kit/files/fileTransaction.h"
#include "tools/common/inputFiles.h"

#include <functional>
#include <string>

namespace ravolt::tool {

// What the process may use in addition to what it starts with.
struct Limits {
    unsigned int megabytes = 4096;
    unsigned int seconds = 600; // of processor time
};

// The results of a job: the files that it staged and read, and the message to print when the staged
// files are committed.
struct GuardedJob {
    FileTransaction files;
    InputFiles inputs;
    std::string closingMessage;
    std::function<void()> beforeCommit; // called by the parent, unless empty
};

// Runs `job` in a child of this process, waits for it and commits the files that it has staged. A
// Failure of the job is thrown here again; the end of the child by a signal or by a limit is thrown
// as a Failure that names `file`. A signal to this process ends the
// child and throws Interrupted. The job must not use a window that this process has opened.
void runGuarded(const std::string &file, const Limits &limits,
                const std::function<void(GuardedJob &)> &job, GuardedJob &done);

} // namespace ravolt::tool
