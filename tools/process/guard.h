#pragma once

// Readers of model files are many and old; some crash on what they do not expect, and some take
// whatever memory and time a file makes them take. So a conversion runs in a process of its own and
// within limits: when that dies, the tool still says so in a line, and removes what it has made.

#include "tools/common/inputFiles.h"
#include "tools/writers/fileTransaction.h"

#include <functional>
#include <string>

namespace ravolt::tool {

// What the process may take beside what it starts with.
struct Limits {
    unsigned int megabytes = 4096;
    unsigned int seconds = 600; // of processor time
};

// What a job has done: the files that it staged and read, and what is to be said of it when the
// staged files have taken their places.
struct GuardedJob {
    FileTransaction files;
    InputFiles inputs;
    std::string closingWords;
};

// Runs `job` in a child of this process, waits for it and commits the files that it has staged. A
// Failure of the job comes out here as if it had been thrown here; the child's end by a signal, and
// a limit that it has met, become a Failure that names `file`. A signal to this process ends the
// child and throws Interrupted. Call it before the engine starts: a child must not share a window.
void runGuarded(const std::string &file, const Limits &limits,
                const std::function<void(GuardedJob &)> &job, GuardedJob &done);

} // namespace ravolt::tool
