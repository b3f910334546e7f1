#pragma once

#include "foundation/bytes.h"

#include <string_view>

namespace ravolt {

// Reads the whole file into `file`. False, with a line in the log that ends in the name of the
// loader, when that fails.
bool readModelFile(const char *path, const char *loader, FileBytes &file);

// Whether `name` appended to a path stays below that path: it is not absolute and has no component
// "..". (Symbolic links are not considered.) A name in a file may come from any system, so slashes
// and backslashes are separators, and a name with a drive letter is absolute.
bool staysBelowPath(std::string_view name);

} // namespace ravolt
