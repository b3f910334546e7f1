#pragma once

#include <string>
#include <vector>

namespace ravolt {

// Whether the file could be written whole. What could be written of it otherwise is removed; a file
// that could not be opened, and anything that is no regular file, stays.
bool writeWholeFile(const std::string &path, const std::vector<unsigned char> &bytes);

} // namespace ravolt
