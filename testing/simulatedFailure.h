#pragma once

namespace ravolt::test {

// `after` calls succeed, then `times` calls fail.
struct SimulatedFailure {
    unsigned int after = 0;
    unsigned int times = 0;

    bool occurs() {
        if (after) {
            --after;
            return false;
        }
        if (!times)
            return false;
        if (times != ~0u)
            --times;
        return true;
    }
};

} // namespace ravolt::test
