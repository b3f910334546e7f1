#pragma once

// Faults of the file system: a call of the program's own code that writes, syncs, renames or links
// fails, or is the last that the process makes.

#include "testing/simulatedFailure.h"

namespace ravolt::test {

class FileFaults {
  public:
    enum class Kind { failure, kill };

    // Of the call of that number, from 1.
    FileFaults(Kind kind, unsigned int number);
    ~FileFaults() { failure = {}; }
    FileFaults(const FileFaults &) = delete;
    FileFaults &operator=(const FileFaults &) = delete;

    // Whether the call was made.
    static bool reached() { return !failure.times; }

    // Renames that succeeded, those of child processes too.
    static int &renames();

    // For the calls themselves: whether this one fails.
    static bool occurs();

  private:
    static Kind planned;
    static SimulatedFailure failure;
};

} // namespace ravolt::test
