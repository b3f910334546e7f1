#pragma once

#include "tools/common/failure.h"

#include <cstdio>

namespace ravolt::tool {

// Throws WrongOptions for a number out of range and for NaN, which CLI::Range accepts.
inline void requireWithin(const char *option, double value, double min, double max) {
    if (value >= min && value <= max)
        return;
    char line[96];
    std::snprintf(line, sizeof line, "%s %g: expected a number from %g to %g", option, value, min,
                  max);
    throw WrongOptions(line);
}

} // namespace ravolt::tool
