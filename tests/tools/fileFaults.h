#pragma once

// Faults of the file system: a call of the program's own code that writes, syncs, renames or links
// fails, or is the last that the process makes.

namespace ravolt::test {

class FileFaults {
  public:
    enum class Kind { none, failure, kill };

    // The call of that number, from 1.
    FileFaults(Kind kind, int number);
    ~FileFaults();
    FileFaults(const FileFaults &) = delete;
    FileFaults &operator=(const FileFaults &) = delete;

    // Whether the call was made.
    static bool reached() { return countdown <= 0; }

    // Renames that succeeded, those of child processes too.
    static int renames();

    // For the calls themselves: whether this one fails.
    static bool strikes();
    static void countRename();

  private:
    static Kind planned;
    static int countdown;
};

} // namespace ravolt::test
