#pragma once

#include <string>
#include <vector>

namespace ravolt {

// What is wrong, or an empty text. A file that cannot be written whole stays as it was; see
// FileTransaction.
std::string writeWholeFile(const std::string &path, const std::vector<unsigned char> &bytes);

} // namespace ravolt
