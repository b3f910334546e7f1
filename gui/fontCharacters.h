#pragma once

// The characters that a font has: those with a cell in its texture and a correction.

namespace ravolt {

constexpr int firstCharacter = 0x20, lastCharacter = 0x7f;

inline bool isCharacter(char c) {
    const int byte = static_cast<unsigned char>(c);
    return byte >= firstCharacter && byte <= lastCharacter;
}

} // namespace ravolt
