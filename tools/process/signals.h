#pragma once

// SIGINT, SIGTERM and SIGHUP end the tool between two steps of its work, so that everything made
// for passing use is removed. A signal only sets a flag; loops look at it.

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

// From now on those signals are recorded; one that was ignored before, as by nohup, stays ignored.
void catchSignals();

// The last one received; 0 for none.
int receivedSignal();

// Throws Interrupted when there is one.
void throwIfInterrupted();

// In a child process, which its parent ends.
void ignoreSignals();

} // namespace ravolt::tool
