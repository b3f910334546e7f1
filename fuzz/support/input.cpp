// Numbers of an input: special ones for low bytes, else small ones.

#include "fuzz/support/input.h"

#include <algorithm>
#include <climits>
#include <iterator>
#include <limits>

namespace ravolt::fuzz {

float Input::real() {
    using Limits = std::numeric_limits<float>;
    static constexpr float special[] = {0.0f,
                                        -0.0f,
                                        1.0f,
                                        -1.0f,
                                        Limits::max(),
                                        Limits::min(),
                                        Limits::lowest(),
                                        Limits::infinity(),
                                        -Limits::infinity(),
                                        Limits::quiet_NaN(),
                                        Limits::denorm_min(),
                                        1e9f,
                                        0.001f};
    const std::uint8_t choice = byte();
    if (choice < std::size(special))
        return special[choice];
    return (static_cast<float>(choice) - 128.0f) / 4.0f;
}

int Input::integer() {
    static constexpr int special[] = {0,   1,   -1,    INT_MAX, INT_MIN, 255,
                                      256, 257, 65535, 65536,   4096,    4097};
    const std::uint8_t choice = byte();
    return choice < std::size(special) ? special[choice] : static_cast<int>(choice) - 64;
}

std::string Input::text(std::size_t size) {
    const Bytes taken = rest.first(std::min(rest.size(), size));
    rest = rest.subspan(taken.size());
    const auto end = std::find(taken.begin(), taken.end(), 0);
    return {taken.begin(), end};
}

} // namespace ravolt::fuzz
