#pragma once

// Sorting of render-list entries by number: each entry's key is computed once, and entries of equal
// keys keep their order. Nothing is allocated, and every bit pattern is ordered, NaN too.

#include <cstdint>

class RVELEMENT;

namespace ravolt {

// The largest capacity of the render list.
constexpr unsigned int largestRenderList = 4096;

struct OrderedEntry {
    std::uint64_t key;
    RVELEMENT *entry;
};

// The one scratch table; the list belongs to the rendering thread.
extern OrderedEntry orderedEntries[largestRenderList];

void sortOrderedEntries(unsigned int number);

// A number that grows with `value`. Equal floats give equal numbers (0 and -0 too), and NaN comes
// after infinity.
std::uint32_t orderedBits(float value);

// Sorts the first `number` pointers, ascending by `keyOf(entry)`, a number below 2^48.
template <class KeyOf>
void orderEntries(RVELEMENT **entries, unsigned int number, const KeyOf &keyOf) {
    for (unsigned int place = 0; place < number; ++place)
        orderedEntries[place] = {static_cast<std::uint64_t>(keyOf(*entries[place])) << 16 | place,
                                 entries[place]};
    sortOrderedEntries(number);
    for (unsigned int place = 0; place < number; ++place)
        entries[place] = orderedEntries[place].entry;
}

} // namespace ravolt
