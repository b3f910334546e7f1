#include "tools/common/inputFiles.h"

#include <optional>
#include <sys/stat.h>

namespace ravolt::tool {

namespace {

std::optional<InputFiles::Identity> identityOf(const std::filesystem::path &file) {
    struct stat state;
    if (stat(file.c_str(), &state) != 0 || !S_ISREG(state.st_mode))
        return std::nullopt;
    return InputFiles::Identity{state.st_dev, state.st_ino};
}

} // namespace

void InputFiles::add(const std::filesystem::path &file) {
    if (const auto identity = identityOf(file))
        files.insert(*identity);
}

bool InputFiles::contains(const std::filesystem::path &file) const {
    const auto identity = identityOf(file);
    return identity && files.count(*identity) > 0;
}

} // namespace ravolt::tool
