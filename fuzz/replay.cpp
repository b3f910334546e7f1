// Runs a target once for each file of a folder, without a fuzzer: replay TARGET FOLDER. Prints each
// name before its run, so that the last one is that of a crash. Fails without files.

#include "fuzz/targets.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace {

using Target = void (*)(ravolt::fuzz::Bytes);

Target targetNamed(const std::string &name) {
#define RV_FUZZ_TARGET(target)                                                                     \
    if (name == #target)                                                                           \
        return ravolt::fuzz::target;
#include "fuzz/targets.inc"
#undef RV_FUZZ_TARGET
    return nullptr;
}

std::vector<std::filesystem::path> filesOf(const std::filesystem::path &folder) {
    std::vector<std::filesystem::path> files;
    for (const auto &entry : std::filesystem::directory_iterator(folder))
        if (entry.is_regular_file())
            files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    return files;
}

} // namespace

int main(int number, char **arguments) {
    const Target target = number == 3 ? targetNamed(arguments[1]) : nullptr;
    if (!target) {
        std::fprintf(stderr, "usage: replay TARGET FOLDER\n");
        return 2;
    }
    const std::vector<std::filesystem::path> files = filesOf(arguments[2]);
    for (const std::filesystem::path &path : files) {
        std::printf("%s\n", path.filename().c_str());
        std::fflush(stdout);
        std::ifstream file(path, std::ios::binary);
        const std::vector<std::uint8_t> bytes(std::istreambuf_iterator<char>(file), {});
        target(bytes);
    }
    std::printf("%zu inputs\n", files.size());
    return files.empty() ? 1 : 0;
}
