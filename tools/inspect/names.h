#pragma once

#include <string>

namespace ravolt::tool::inspect {

// Bytes that are no UTF-8 are those of Latin-1.
std::string utf8(const std::string &text);

// 'name', in UTF-8 and on one line: control characters are question marks.
std::string quoted(const std::string &name);

} // namespace ravolt::tool::inspect
