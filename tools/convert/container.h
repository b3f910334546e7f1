#pragma once

// Whether a model file is as long as it says itself. Readers take a file that was cut off for many
// things, most of which help nobody.

#include <filesystem>
#include <string>

namespace ravolt::tool {

// The complaint, with the numbers, or an empty text: for a whole file, and for formats that do not
// state a length.
std::string cutOff(const std::filesystem::path &file);

// Whether the length is part of what the format demands, so that no reader needs to be tried.
bool isGlb(const std::filesystem::path &file);

} // namespace ravolt::tool
