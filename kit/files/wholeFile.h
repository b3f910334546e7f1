#pragma once

#include <string>
#include <vector>

namespace ravolt {

// Returns the error, or an empty text. A file that cannot be written completely is unchanged; see
// FileTransaction.
std::string writeWholeFile(const std::string &path, const std::vector<unsigned char> &bytes);

} // namespace ravolt
