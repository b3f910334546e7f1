// Redirects the log and standard output before the constructors of the engine's library run.

#include "tools/process/logRedirect.h"

#include "tools/common/message.h"
#include "tools/process/scopedSilentLog.h"
#include "tools/process/signals.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <ravolt/zlf.h>
#include <signal.h>
#include <stdlib.h>
#include <unistd.h>

namespace ravolt::tool {

namespace {

// Set before any constructor runs, so they are plain data.
int userFolder = -1;
int userOutput = -1;
char logFolder[512];
bool redirected = false;
char **programArguments = nullptr;
sigset_t formerMask;

// Changes to a new folder below `parent`.
bool enterNewFolder(const char *parent) {
    const int length = std::snprintf(logFolder, sizeof logFolder, "%s/ravolt-log-XXXXXX", parent);
    return length > 0 && length < static_cast<int>(sizeof logFolder) && parent[0] == '/' &&
           mkdtemp(logFolder) && chdir(logFolder) == 0;
}

// Of all code in the process this runs first: no library's constructor has run yet, not even that
// of getenv's own.
void redirect(int, char **arguments, char **environment) {
    programArguments = arguments;
    // Signals are blocked until something can remove the folder. On a full disk or a closed pipe a
    // write is to fail instead of ending the process.
    sigset_t ending;
    sigemptyset(&ending);
    for (const int number : {SIGINT, SIGTERM, SIGHUP})
        sigaddset(&ending, number);
    sigprocmask(SIG_BLOCK, &ending, &formerMask);
    signal(SIGXFSZ, SIG_IGN);
    signal(SIGPIPE, SIG_IGN);
    userFolder = open(".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    userOutput = silenceOutput();
    // If the working folder cannot be restored, the log is written there.
    constexpr const char *variable = "TMPDIR=";
    for (char **entry = environment; entry && *entry && userFolder >= 0 && !redirected; ++entry)
        if (std::strncmp(*entry, variable, std::strlen(variable)) == 0)
            redirected = enterNewFolder(*entry + std::strlen(variable));
    redirected = redirected || (userFolder >= 0 && enterNewFolder("/tmp"));
}

[[gnu::section(".preinit_array"), gnu::used]] void (*const first)(int, char **, char **) = redirect;

} // namespace

LogRedirect::LogRedirect() {
    catchSignals();
    sigprocmask(SIG_SETMASK, &formerMask, nullptr);
    zlfSetConsoleEcho(false);
    std::fflush(stdout);
    restoreOutput(userOutput);
    if (userFolder >= 0) {
        if (fchdir(userFolder) != 0)
            sayError(std::string("cannot return to the working folder: ") + std::strerror(errno));
        close(userFolder);
    }
}

LogRedirect::~LogRedirect() { clear(); }

std::filesystem::path LogRedirect::log() {
    return (redirected ? std::filesystem::path(logFolder) : std::filesystem::path(".")) /
           "ravolt_log.txt";
}

char **LogRedirect::arguments() { return programArguments; }

void LogRedirect::clear() {
    if (!redirected)
        return;
    // The library still writes its closing lines, into a file that has no name any more. No memory
    // is needed for that, as there may be none.
    char log[sizeof logFolder + 32];
    std::snprintf(log, sizeof log, "%s/ravolt_log.txt", logFolder);
    unlink(log);
    rmdir(logFolder);
}

} // namespace ravolt::tool
