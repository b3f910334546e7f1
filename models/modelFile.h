#pragma once

#include "foundation/bytes.h"

namespace ravolt {

// Whether the whole file is in `file`; otherwise a line in the log that ends in the name of the
// loader.
bool readModelFile(const char *path, const char *loader, FileBytes &file);

} // namespace ravolt
