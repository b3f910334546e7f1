#include "tools/writers/wholeFile.h"

#include <filesystem>
#include <fstream>

bool ravolt::writeWholeFile(const std::string &path, const std::vector<unsigned char> &bytes) {
    std::ofstream file(path, std::ios::binary);
    if (!file)
        return false;
    file.write(reinterpret_cast<const char *>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
    file.close();
    if (file)
        return true;
    std::error_code error;
    if (std::filesystem::is_regular_file(path, error)) // never a device
        std::filesystem::remove(path, error);
    return false;
}
