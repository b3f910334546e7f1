#pragma once

// Names of files as programs pass them on when files are dragged: text/uri-list.

#include <filesystem>
#include <string>
#include <vector>

namespace ravolt::tool {

// The files of this machine in the list, in its order. Comments, other kinds of URI, files of other
// machines and URIs that are not valid are ignored.
std::vector<std::filesystem::path> filesOfUriList(const std::string &list);

} // namespace ravolt::tool
