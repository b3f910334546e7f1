#include "kit/files/wholeFile.h"

#include "kit/files/fileTransaction.h"

std::string ravolt::writeWholeFile(const std::string &path,
                                   const std::vector<unsigned char> &bytes) {
    FileTransaction file;
    const std::string error = file.stage(path, bytes);
    return error.empty() ? file.commit() : error;
}
