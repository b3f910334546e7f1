#pragma once

// What the engine knows of the cells of a font: 16 by 16, one for each character from the blank on,
// of which it draws those up to 0x7F. The last one is the cursor of text fields.

namespace ravolt::tool::font {

constexpr unsigned int cellsPerSide = 16;
constexpr char firstCharacter = 0x20, lastCharacter = 0x7e, cursor = 0x7f;
constexpr unsigned int kerningEntries = lastCharacter - firstCharacter + 1;

// A texture has at most 4096 pixels a side, and a correction is a signed byte.
constexpr unsigned int minCell = 4, maxCell = 128;

// The engine takes the width of a cell on the screen for the number of cells in a row: it draws
// cell i of row r from column i - width * r, in a texture that repeats.
constexpr unsigned int rowOf(char c) {
    return static_cast<unsigned int>(c - firstCharacter) / cellsPerSide;
}
constexpr unsigned int columnOf(char c, unsigned int width) {
    const auto column = static_cast<int>(c - firstCharacter) - static_cast<int>(width * rowOf(c));
    return static_cast<unsigned int>(column) %
           cellsPerSide; // 16 divides the numbers of an unsigned
}

} // namespace ravolt::tool::font
