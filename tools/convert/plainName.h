#pragma once

#include <string>

namespace ravolt::tool {

// A file name that every file system accepts: other characters become '_', and it is cut.
std::string plainName(const std::string &text);

} // namespace ravolt::tool
