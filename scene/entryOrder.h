#pragma once

// Sorting of render-list entries by number: each entry's key is computed once, and entries of equal
// keys keep their order. Nothing is allocated, and every bit pattern is ordered, NaN too.

#include <bit>
#include <cmath>
#include <cstdint>

class RVELEMENT;

namespace ravolt {

// The largest capacity of the render list.
constexpr unsigned int maxRenderListEntries = 4096;

struct OrderedEntry {
    std::uint64_t key;
    RVELEMENT *entry;
};

// The only scratch table: render lists are used in the rendering thread alone.
extern OrderedEntry orderedEntries[maxRenderListEntries];

void sortOrderedEntries(unsigned int number);

// A number that increases with `value`. Equal floats give equal numbers (0 and -0 too), and NaN
// comes after infinity.
inline std::uint32_t orderedBits(float value) {
    if (std::isnan(value))
        return 0xffffffffu;
    const auto bits = std::bit_cast<std::uint32_t>(value + 0.0f); // -0 becomes 0
    return bits & 0x80000000u ? ~bits : bits | 0x80000000u;
}

// Sorts the first `number` pointers, ascending by `keyOf(entry)`, a number below 2^48.
template <class KeyOf>
void orderEntries(RVELEMENT **entries, unsigned int number, const KeyOf &keyOf) {
    for (unsigned int index = 0; index < number; ++index)
        orderedEntries[index] = {static_cast<std::uint64_t>(keyOf(*entries[index])) << 16 | index,
                                 entries[index]};
    sortOrderedEntries(number);
    for (unsigned int index = 0; index < number; ++index)
        entries[index] = orderedEntries[index].entry;
}

} // namespace ravolt
