// Runs a target once for each file of a folder, without a fuzzer: replay TARGET FOLDER. Prints each
// name before its run, so that the last one is that of a crash. Fails without files.

#include "fuzz/targets.h"

#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <glob.h>

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

// Not by std::filesystem, which the memory sanitizer does not see.
std::vector<std::string> filesOf(const std::string &folder) {
    glob_t found{};
    std::vector<std::string> files;
    if (glob((folder + "/*").c_str(), 0, nullptr, &found) == 0)
        files.assign(found.gl_pathv, found.gl_pathv + found.gl_pathc);
    globfree(&found);
    return files;
}

} // namespace

int main(int number, char **arguments) {
    const Target target = number == 3 ? targetNamed(arguments[1]) : nullptr;
    if (!target) {
        std::fprintf(stderr, "usage: replay TARGET FOLDER\n");
        return 2;
    }
    const std::vector<std::string> files = filesOf(arguments[2]);
    for (const std::string &path : files) {
        std::printf("%s\n", path.c_str());
        std::fflush(stdout);
        std::ifstream file(path, std::ios::binary);
        const std::vector<std::uint8_t> bytes(std::istreambuf_iterator<char>(file), {});
        target(bytes);
    }
    std::printf("%zu inputs\n", files.size());
    return files.empty() ? 1 : 0;
}
