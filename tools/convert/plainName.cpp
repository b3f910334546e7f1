#include "tools/convert/plainName.h"

#include <algorithm>
#include <cctype>

namespace ravolt::tool {

std::string plainName(const std::string &text) {
    constexpr std::size_t maxLength = 96;
    std::string result;
    for (char c : text.substr(0, maxLength)) {
        const auto u = static_cast<unsigned char>(c);
        result += std::isalnum(u) || c == '-' || c == '_' || c == '.' || u >= 0x80 ? c : '_';
    }
    return result.empty() || result[0] == '.' ? "_" + result : result;
}

std::string inSmallLetters(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

} // namespace ravolt::tool
