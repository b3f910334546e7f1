#include "models/modelFile.h"

#include "ravolt/zlf.h"

#include <algorithm>

bool ravolt::readModelFile(const char *path, const char *loader, FileBytes &file) {
    switch (file.read(path)) {
    case FileBytes::Result::ok:
        return true;
    case FileBytes::Result::notOpened:
        zlfLog("   [!] Unable to open file %s @ %s\n", path, loader);
        return false;
    case FileBytes::Result::outOfMemory:
        zlfLog("   [!] Out of memory for file %s @ %s\n", path, loader);
        return false;
    case FileBytes::Result::shortRead:
        zlfLog("   [!] Corrupted file %s @ %s\n", path, loader);
        return false;
    }
    return false;
}

bool ravolt::staysBelowPath(std::string_view name) {
    constexpr std::string_view separators = "/\\";
    const bool hasDrive = name.size() > 1 && name[1] == ':';
    if (hasDrive || (!name.empty() && separators.find(name[0]) != separators.npos))
        return false;
    while (!name.empty()) {
        const std::size_t end = std::min(name.find_first_of(separators), name.size());
        if (name.substr(0, end) == "..")
            return false;
        name.remove_prefix(std::min(end + 1, name.size()));
    }
    return true;
}
