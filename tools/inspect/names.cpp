// Names in files may have any bytes; what is printed is UTF-8.

#include "tools/inspect/names.h"

#include <algorithm>

namespace ravolt::tool::inspect {

namespace {

// The length of the UTF-8 character at the start of a text; 0 where there is none.
std::size_t characterLength(const std::string &text, std::size_t at) {
    const auto lead = static_cast<unsigned char>(text[at]);
    const std::size_t length = lead < 0x80                   ? 1
                               : lead >= 0xc2 && lead < 0xe0 ? 2
                               : lead >= 0xe0 && lead < 0xf0 ? 3
                               : lead >= 0xf0 && lead < 0xf5 ? 4
                                                             : 0;
    if (length == 0 || at + length > text.size())
        return 0;
    for (std::size_t i = 1; i < length; ++i)
        if ((static_cast<unsigned char>(text[at + i]) & 0xc0) != 0x80)
            return 0;
    return length;
}

bool isUtf8(const std::string &text) {
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t length = characterLength(text, at);
        if (length == 0)
            return false;
        at += length;
    }
    return true;
}

} // namespace

std::string utf8(const std::string &text) {
    if (isUtf8(text))
        return text;
    std::string converted;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x80) {
            converted += c;
        } else {
            converted += static_cast<char>(0xc0 | byte >> 6);
            converted += static_cast<char>(0x80 | (byte & 0x3f));
        }
    }
    return converted;
}

std::string quoted(const std::string &name) {
    std::string text = utf8(name);
    std::replace_if(
        text.begin(), text.end(), [](unsigned char c) { return c < ' ' || c == 0x7f; }, '?');
    return "'" + text + "'";
}

} // namespace ravolt::tool::inspect
