#include "tools/signals.h"

#include <csignal>
#include <signal.h>

namespace ravolt::tool {

namespace {

constexpr int ending[] = {SIGINT, SIGTERM, SIGHUP};

volatile std::sig_atomic_t noted = 0;

void note(int number) { noted = number; }

void handle(int number, void (*handler)(int)) {
    struct sigaction action = {};
    sigaction(number, nullptr, &action);
    if (action.sa_handler == SIG_IGN)
        return;
    action = {};
    action.sa_handler = handler;
    sigemptyset(&action.sa_mask);
    sigaction(number, &action, nullptr);
}

} // namespace

void noteSignals() {
    for (const int number : ending)
        handle(number, note);
}

int notedSignal() { return noted; }

void throwIfInterrupted() {
    if (noted)
        throw Interrupted(noted);
}

void ignoreSignals() {
    for (const int number : ending)
        handle(number, SIG_IGN);
}

} // namespace ravolt::tool
