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
bool aside = false;
char **programArguments = nullptr;
sigset_t formerMask;

// Goes to a fresh folder below `place`.
bool goBelow(const char *place) {
    const int length = std::snprintf(logFolder, sizeof logFolder, "%s/ravolt-log-XXXXXX", place);
    return length > 0 && length < static_cast<int>(sizeof logFolder) && place[0] == '/' &&
           mkdtemp(logFolder) && chdir(logFolder) == 0;
}

// Of all code in the process this runs first: no library's constructor has run yet, not even that
// of getenv's own.
void redirect(int, char **arguments, char **environment) {
    programArguments = arguments;
    // Signals wait until somebody can remove what is made here. A full disk and a reader that has
    // gone shall fail a write, not end the process.
    sigset_t ending;
    sigemptyset(&ending);
    for (const int number : {SIGINT, SIGTERM, SIGHUP})
        sigaddset(&ending, number);
    sigprocmask(SIG_BLOCK, &ending, &formerMask);
    signal(SIGXFSZ, SIG_IGN);
    signal(SIGPIPE, SIG_IGN);
    userFolder = open(".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    userOutput = silenceOutput();
    // Without a way back the log stays where it always is.
    constexpr const char *variable = "TMPDIR=";
    for (char **entry = environment; entry && *entry && userFolder >= 0 && !aside; ++entry)
        if (std::strncmp(*entry, variable, std::strlen(variable)) == 0)
            aside = goBelow(*entry + std::strlen(variable));
    aside = aside || (userFolder >= 0 && goBelow("/tmp"));
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
    return (aside ? std::filesystem::path(logFolder) : std::filesystem::path(".")) /
           "ravolt_log.txt";
}

char **LogRedirect::arguments() { return programArguments; }

void LogRedirect::clear() {
    if (!aside)
        return;
    // The library still writes its closing lines, into a file that has no name any more.
    std::error_code error;
    std::filesystem::remove_all(logFolder, error);
}

} // namespace ravolt::tool
