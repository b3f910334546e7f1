#pragma once

#include "foundation/bytes.h"

#include <string_view>

namespace ravolt {

// Whether the whole file is in `file`; otherwise a line in the log that ends in the name of the
// loader.
bool readModelFile(const char *path, const char *loader, FileBytes &file);

// Whether a file that is found by putting a path in front of `name` lies below that path, as far as
// the name tells: it is not absolute and has no component "..". Names that come with a file may be
// of any system, so both kinds of slashes separate and a drive letter counts as absolute.
bool staysBelowPath(std::string_view name);

} // namespace ravolt
