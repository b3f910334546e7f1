#include "tools/convert/files.h"

#include "tools/failure.h"

#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <unistd.h>

namespace ravolt::tool {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t longestPlainName = 96;

} // namespace

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
