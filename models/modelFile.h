#pragma once

#include "foundation/bytes.h"

namespace ravolt {

// Reads the whole file into `file`. False, with a line in the log that ends in the name of the
// loader, when that fails.
bool readModelFile(const char *path, const char *loader, FileBytes &file);

} // namespace ravolt
