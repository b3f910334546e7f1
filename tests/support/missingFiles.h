#pragma once

// Names without a readable file, for every reader of files. The test program is linked with --wrap
// for zlfFileExists.

#include <functional>
#include <string>

namespace ravolt::test {

struct FileReader {
    std::string notFound, outOfMemory; // its messages, %s for the path
    std::function<bool(const char *fileName)> load;
    std::function<void(const char *path)> setPath;
    // What it logs of the name "missing" with the path "folder/" if that file is deleted after its
    // existence was checked.
    std::string unopened;
};

// NULL, missing files, folders, pipes, files that cannot be opened, names too long for the memory.
void expectNamesWithoutAFileAreRefused(const FileReader &reader);

} // namespace ravolt::test
