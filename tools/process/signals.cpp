// Signal handlers that store the last received signal in a flag.

#include "tools/process/signals.h"

#include <csignal>
#include <signal.h>

namespace ravolt::tool {

namespace {

constexpr int ending[] = {SIGINT, SIGTERM, SIGHUP};

volatile std::sig_atomic_t received = 0;

void store(int number) { received = number; }

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

void catchSignals() {
    for (const int number : ending)
        handle(number, store);
}

int receivedSignal() { return received; }

void throwIfInterrupted() {
    if (received)
        throw Interrupted(received);
}

void ignoreSignals() {
    for (const int number : ending)
        handle(number, SIG_IGN);
}

} // namespace ravolt::tool
