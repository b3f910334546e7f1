#pragma once

#include "tools/font/cells.h"

#include <array>
#include <string>

namespace ravolt::tool::font {

// How many pixels less than a cell each character advances; entry i is for firstCharacter + i.
using Kerning = std::array<int, kerningEntries>;

// The text of a kerning file that the engine reads back.
std::string kerningText(const Kerning &kerning);

} // namespace ravolt::tool::font
