#include "tools/process/scopedSilentLog.h"

#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace ravolt::tool {

ScopedSilentLog::ScopedSilentLog() {
    std::fflush(stdout);
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (nowhere < 0)
        return;
    output = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 3);
    if (output >= 0)
        dup2(nowhere, STDOUT_FILENO);
    close(nowhere);
}

ScopedSilentLog::~ScopedSilentLog() {
    if (output < 0)
        return;
    std::fflush(stdout);
    dup2(output, STDOUT_FILENO);
    close(output);
}

} // namespace ravolt::tool
