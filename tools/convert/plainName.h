#pragma once

#include <string>

namespace ravolt::tool {

// A file name that every file system accepts: other characters become '_', and it is cut.
std::string plainName(const std::string &text);

// The letters A to Z as small ones: names that some file systems take for one are then equal.
std::string inSmallLetters(std::string text);

} // namespace ravolt::tool
