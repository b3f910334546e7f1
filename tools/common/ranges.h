#pragma once

#include "tools/common/failure.h"

#include <cstdio>

namespace ravolt::tool {

// Throws WrongOptions for a number beyond its range, and for one that is none.
inline void requireWithin(const char *option, double value, double lowest, double highest) {
    if (value >= lowest && value <= highest) // no NaN is
        return;
    char line[96];
    std::snprintf(line, sizeof line, "%s %g: expected a number from %g to %g", option, value,
                  lowest, highest);
    throw WrongOptions(line);
}

} // namespace ravolt::tool
