#pragma once

// The names of all programs by OpenGL's, for tests in front of the recorder. No program is in use
// afterwards.

#include "ravolt/RVSHADER.h"
#include "tests/support/recorder.h"

#include <map>
#include <string>

namespace ravolt::test {

inline std::map<double, std::string> programNames() {
    std::map<double, std::string> names;
    for (RVSHADER *each = RVSHADER::getFirst(); each; each = each->getNext()) {
        RVSHADER::disable();
        names[callsOf([&] { each->render(nullptr); })[0].arguments[0]] = each->getName();
    }
    RVSHADER::disable();
    return names;
}

} // namespace ravolt::test
