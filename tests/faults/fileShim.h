#pragma once

// The files that the program opens, and faults of opening and reading them. The functions of the C
// library that open and read files are defined in the test program, in front of the real ones, and
// so for the C++ library, too.

#include "tests/support/loadVerdicts.h"

#include <set>
#include <string>

namespace ravolt::test {

enum class FileFault {
    none,
    notOpened, // the n-th opening fails, by `error`
    readError, // the n-th read and all later ones fail, by EIO
    shortRead, // the n-th read and all later ones return half of what there is
};

struct FileShim {
    FileFault fault = FileFault::none;
    int error = 0;
    std::string name;        // of the files that have the fault: their paths end with it
    unsigned int number = 1; // n, of the openings or reads of these files

    unsigned int calls = 0; // openings or reads of these files so far
    bool recording = false;
    std::set<std::string> opened; // while recording, as passed
};
// Exists from its first use on: the library opens its log before static objects are constructed.
FileShim &fileShim();

// A fault while one is alive.
class ScopedFileFault {
  public:
    ScopedFileFault(FileFault fault, std::string name, unsigned int number, int error = 0) {
        fileShim().fault = fault;
        fileShim().name = std::move(name);
        fileShim().number = number;
        fileShim().error = error;
        fileShim().calls = 0;
    }
    ~ScopedFileFault() { fileShim().fault = FileFault::none; }
    ScopedFileFault(const ScopedFileFault &) = delete;
    ScopedFileFault &operator=(const ScopedFileFault &) = delete;

    // Whether the fault occurred.
    static bool occurred() { return fileShim().calls >= fileShim().number; }

  private:
    UncomparedLoads uncompared; // the inspection would open and read the files, too
};

} // namespace ravolt::test
