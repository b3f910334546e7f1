#pragma once

// Whether a model file is as long as its own header states. Readers report misleading reasons for a
// truncated file.

#include <filesystem>
#include <string>

namespace ravolt::tool {

// The error, with the numbers; an empty text for a complete file and for formats that do not state
// a length.
std::string cutOff(const std::filesystem::path &file);

// Whether the length is part of what the format demands, so that no reader needs to be tried.
bool isGlb(const std::filesystem::path &file);

} // namespace ravolt::tool
