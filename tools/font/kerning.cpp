#include "tools/font/kerning.h"

#include <utility>

namespace ravolt::tool::font {

namespace {

// The engine drops blanks, "#" starts a comment and "=" separates: these have names.
constexpr std::pair<char, const char *> names[] = {{' ', "SPACE"}, {'#', "DIESIS"}, {'=', "EQUAL"}};

bool hasName(char c) {
    for (const auto &[character, name] : names)
        if (character == c)
            return true;
    return false;
}

} // namespace

// The engine looks for a key anywhere in a line, and takes the first line: the names come last,
// since that of the blank would be found for S, too.
std::string kerningText(const Kerning &kerning) {
    std::string text;
    const auto addLine = [&](const std::string &key, char c) {
        text += "RAVOLT_kerning_" + key + "=" +
                std::to_string(kerning[static_cast<std::size_t>(c - firstCharacter)]) + "\n";
    };
    for (char c = firstCharacter; c <= lastCharacter; ++c)
        if (!hasName(c))
            addLine(std::string(1, c), c);
    for (const auto &[character, name] : names)
        addLine(name, character);
    return text;
}

} // namespace ravolt::tool::font
