// A line of the list is a URI: file:/path, file:///path or file://host/path, with the bytes of the
// path as percent escapes where they are not plain letters. A host is this machine if it is empty,
// "localhost" or the name of the machine.

#include "tools/common/uriList.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <optional>
#include <sstream>
#include <string_view>
#include <unistd.h>

namespace ravolt::tool {

namespace {

constexpr std::string_view scheme = "file:";

bool areEqualInAnyCase(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](unsigned char x, unsigned char y) {
        return std::tolower(x) == std::tolower(y);
    });
}

bool isThisMachine(std::string_view host) {
    std::array<char, 256> name{};
    const bool known = gethostname(name.data(), name.size() - 1) == 0;
    return host.empty() || areEqualInAnyCase(host, "localhost") ||
           (known && areEqualInAnyCase(host, name.data()));
}

int digitOf(char c) {
    constexpr std::string_view digits = "0123456789abcdef";
    const std::size_t value = digits.find(static_cast<char>(std::tolower(c)));
    return value == std::string_view::npos ? -1 : static_cast<int>(value);
}

// Without its escapes; nothing for an escape that is none, and for a byte of 0.
std::optional<std::string> decoded(std::string_view text) {
    std::string bytes;
    for (std::size_t i = 0; i < text.size(); ++i) {
        char byte = text[i];
        if (byte == '%') {
            if (text.size() - i < 3 || digitOf(text[i + 1]) < 0 || digitOf(text[i + 2]) < 0)
                return {};
            byte = static_cast<char>(digitOf(text[i + 1]) * 16 + digitOf(text[i + 2]));
            i += 2;
        }
        if (byte == 0)
            return {};
        bytes += byte;
    }
    return bytes;
}

std::optional<std::string> pathOf(std::string_view uri) {
    if (!areEqualInAnyCase(uri.substr(0, scheme.size()), scheme))
        return {};
    uri.remove_prefix(scheme.size());
    if (uri.starts_with("//")) {
        uri.remove_prefix(2);
        const std::size_t end = std::min(uri.find('/'), uri.size());
        if (!isThisMachine(uri.substr(0, end)))
            return {};
        uri.remove_prefix(end);
    }
    return uri.starts_with('/') ? decoded(uri) : std::nullopt;
}

} // namespace

std::vector<std::filesystem::path> filesOfUriList(const std::string &list) {
    std::vector<std::filesystem::path> files;
    std::istringstream lines(list);
    for (std::string line; std::getline(lines, line);) {
        while (!line.empty() && (line.back() == '\r' || line.back() == '\0'))
            line.pop_back();
        if (const std::optional<std::string> path = pathOf(line))
            files.emplace_back(*path);
    }
    return files;
}

} // namespace ravolt::tool
