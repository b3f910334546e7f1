// Only zlfOpenFile leaves a file open; its caller owns it.

#include "foundation/platform.h"
#include "ravolt/zlf.h"

#include <climits>

using ravolt::platform::openForReading;

int zlfGetFileSize(const char *filename) {
    const ravolt::File file = openForReading(filename);
    if (!file || std::fseek(file.get(), 0, SEEK_END) != 0)
        return -1;
    const long size = std::ftell(file.get());
    return size <= INT_MAX ? static_cast<int>(size) : -1;
}

bool zlfFileExists(const char *filename) { return openForReading(filename) != nullptr; }

FILE *zlfOpenFile(const char *filename, const char *mode) {
    return filename && mode ? std::fopen(filename, mode) : nullptr;
}

// This system has no file dialogs of its own.
bool zlfOpenFileDialog(char *, const char *) { return false; }
bool zlfSaveFileDialog(char *, const char *, const char *) { return false; }

unsigned int zlfGetSystemTime() { return ravolt::platform::systemTime(); }
