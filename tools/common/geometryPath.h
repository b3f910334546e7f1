#pragma once

#include <filesystem>

namespace ravolt::tool {

// The folder from which the path of a geometry in a configuration leads to a file: that of the
// configuration, the first of the folders above it, or the working folder. Empty for none.
std::filesystem::path folderOfGeometry(const std::filesystem::path &path,
                                       const std::filesystem::path &config);

} // namespace ravolt::tool
