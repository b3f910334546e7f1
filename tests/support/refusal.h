#pragma once

namespace ravolt::test {

// A function that is not called: `after` calls pass, then `times` are refused.
struct Refusal {
    unsigned int after = 0;
    unsigned int times = 0;

    bool takes() {
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
