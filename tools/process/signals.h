#pragma once

// SIGINT, SIGTERM and SIGHUP end the tool between two steps of its work, so that temporary
// files are removed. A signal only sets a flag, which loops check.

#include <exception>

namespace ravolt::tool {

// Of a job that a signal has ended; the program ends with exit code 128 and the signal's number.
class Interrupted : public std::exception {
  public:
    explicit Interrupted(int number) : signalNumber(number) {}
    int signal() const { return signalNumber; }
    const char *what() const noexcept override { return "interrupted"; }

  private:
    int signalNumber;
};

// Records those signals from now on; one that is ignored already, as by nohup, remains ignored.
void catchSignals();

// The last one received; 0 for none.
int receivedSignal();

// Throws Interrupted when there is one.
void throwIfInterrupted();

// In a child process, which its parent ends.
void ignoreSignals();

} // namespace ravolt::tool
