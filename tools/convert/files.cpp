#include "tools/convert/files.h"

#include "tools/failure.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <cstring>
#include <unistd.h>

namespace ravolt::tool {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t longestPlainName = 96;

bool equalButForCase(const std::string &a, const std::string &b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) {
        return std::tolower(static_cast<unsigned char>(x)) ==
               std::tolower(static_cast<unsigned char>(y));
    });
}

// `name` in `folder`, in whatever letter case; empty when there is none.
fs::path entryOf(const fs::path &folder, const std::string &name) {
    std::error_code error;
    if (name == "." || name == "..")
        return folder / name;
    if (fs::exists(folder / name, error))
        return folder / name;
    for (const fs::directory_entry &entry : fs::directory_iterator(folder, error))
        if (equalButForCase(entry.path().filename().string(), name))
            return entry.path();
    return {};
}

// The file at the parts from `first` on, below `folder`.
fs::path below(fs::path folder, const std::vector<std::string> &parts, std::size_t first) {
    for (std::size_t i = first; i < parts.size() && !folder.empty(); ++i)
        folder = entryOf(folder, parts[i]);
    std::error_code error;
    return !folder.empty() && fs::is_regular_file(folder, error) ? folder : fs::path();
}

// "%20" and the like, as in addresses.
std::string withoutEscapes(const std::string &text) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i)
        if (text[i] == '%' && i + 2 < text.size() &&
            std::isxdigit(static_cast<unsigned char>(text[i + 1])) &&
            std::isxdigit(static_cast<unsigned char>(text[i + 2]))) {
            result += static_cast<char>(std::stoi(text.substr(i + 1, 2), nullptr, 16));
            i += 2;
        } else {
            result += text[i];
        }
    return result;
}

std::vector<std::string> partsOf(const std::string &path) {
    std::vector<std::string> parts;
    std::size_t start = 0;
    while (start <= path.size()) {
        const std::size_t end = std::min(path.find('/', start), path.size());
        const std::string part = path.substr(start, end - start);
        if (!part.empty() && part != ".")
            parts.push_back(part);
        start = end + 1;
    }
    return parts;
}

fs::path findParts(const fs::path &folder, const std::vector<std::string> &parts) {
    for (std::size_t first = 0; first < parts.size(); ++first)
        for (const fs::path &place : {folder, folder / ".."}) {
            // One folder up a mere file name is too little to go by.
            if (place != folder && first + 1 == parts.size() && parts.size() > 1)
                continue;
            const fs::path found = below(place, parts, first);
            if (!found.empty())
                return found;
        }
    return {};
}

} // namespace

fs::path findBeside(const fs::path &folder, std::string stated) {
    if (stated.empty() || stated.find('\0') != std::string::npos)
        return {};
    std::error_code error;
    if (fs::path(stated).is_absolute() && fs::is_regular_file(stated, error))
        return stated;
    for (const char *prefix : {"file://", "file:"})
        if (stated.rfind(prefix, 0) == 0)
            stated.erase(0, std::strlen(prefix));
    std::replace(stated.begin(), stated.end(), '\\', '/');
    const fs::path base = folder.empty() ? fs::path(".") : folder;
    const fs::path found = findParts(base, partsOf(stated));
    return found.empty() ? findParts(base, partsOf(withoutEscapes(stated))) : found;
}

WrittenFiles::~WrittenFiles() {
    std::error_code error;
    for (const fs::path &file : files)
        if (fs::is_regular_file(file, error)) // never a device
            fs::remove(file, error);
}

TemporaryFolder::TemporaryFolder() {
    const char *place = std::getenv("TMPDIR");
    std::string pattern = std::string(place && *place ? place : "/tmp") + "/ravolt-XXXXXX";
    if (!mkdtemp(pattern.data()))
        throw Failure(pattern,
                      std::string("cannot make a temporary folder: ") + std::strerror(errno));
    folder = pattern;
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code error;
    fs::remove_all(folder, error);
}

std::string plainName(const std::string &text) {
    std::string result;
    for (char c : text.substr(0, longestPlainName)) {
        const auto u = static_cast<unsigned char>(c);
        result += std::isalnum(u) || c == '-' || c == '_' || c == '.' || u >= 0x80 ? c : '_';
    }
    return result.empty() || result[0] == '.' ? "_" + result : result;
}

} // namespace ravolt::tool
