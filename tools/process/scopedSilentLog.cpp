#include "tools/process/scopedSilentLog.h"

#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace ravolt::tool {

int silenceOutput() {
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (nowhere < 0)
        return -1;
    const int former = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 3);
    if (former >= 0)
        dup2(nowhere, STDOUT_FILENO);
    close(nowhere);
    return former;
}

void restoreOutput(int former) {
    if (former < 0)
        return;
    dup2(former, STDOUT_FILENO);
    close(former);
}

ScopedSilentLog::ScopedSilentLog() {
    std::fflush(stdout);
    former = silenceOutput();
}

ScopedSilentLog::~ScopedSilentLog() {
    std::fflush(stdout);
    restoreOutput(former);
}

} // namespace ravolt::tool
