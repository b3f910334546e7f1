#pragma once

// For tests without an OpenGL context of their own, which run a program: whether the driver reports
// less than it has (scripts/drivers.sh), so that the program draws without the effects.

#include <cstdlib>

#include <gtest/gtest.h>

namespace ravolt::test {

// The last year whose extensions the driver reports, or NULL.
inline const char *yearOfExtensions() { return std::getenv("MESA_EXTENSION_MAX_YEAR"); }

} // namespace ravolt::test

#define SKIP_ON_LIMITED_DRIVER()                                                                   \
    if (const char *year = ravolt::test::yearOfExtensions(); !year)                                \
        ;                                                                                          \
    else                                                                                           \
        GTEST_SKIP() << "the driver has no extensions after " << year
