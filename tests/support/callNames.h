#pragma once

#include "tests/support/recorder.h"

#include <string>

namespace ravolt::test {

// The names of the functions in the order of the calls, separated by blanks.
inline std::string namesOf(const Calls &calls) {
    std::string names;
    for (const Call &call : calls)
        names += (names.empty() ? "" : " ") + call.name;
    return names;
}

} // namespace ravolt::test
