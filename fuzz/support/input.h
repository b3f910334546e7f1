#pragma once

// Splits an input into numbers and the rest. Numbers are read from its end, so that a file of a
// format, with or without bytes appended, is an input of its target.

#include "fuzz/targets.h"

#include <string>

namespace ravolt::fuzz {

class Input {
  public:
    explicit Input(Bytes bytes) : rest(bytes) {}

    bool empty() const { return rest.empty(); }

    // 0 when nothing is left.
    std::uint8_t byte() {
        if (rest.empty())
            return 0;
        const std::uint8_t last = rest.back();
        rest = rest.first(rest.size() - 1);
        return last;
    }

    // From 0 to `limit` - 1.
    unsigned int below(unsigned int limit) { return limit ? byte() % limit : 0; }
    bool flag() { return byte() & 1; }

    // Small and large numbers, and those that are no number.
    float real();
    int integer();

    Bytes bytes() const { return rest; }

    // The rest up to its first zero, at most `size` characters.
    std::string text(std::size_t size = 4096);

  private:
    Bytes rest;
};

} // namespace ravolt::fuzz
