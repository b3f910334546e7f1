// Invariant: a key ends with the entry's position before the sort, so no two keys are equal and the
// order is the same on every run.

#include "scene/entryOrder.h"

#include <algorithm>

namespace ravolt {

OrderedEntry orderedEntries[maxRenderListEntries];

void sortOrderedEntries(unsigned int number) {
    const auto before = [](const OrderedEntry &a, const OrderedEntry &b) { return a.key < b.key; };
    OrderedEntry *const end = orderedEntries + number;
    // The order of one frame is often that of the pass, or that of the last object's lights.
    if (!std::is_sorted(orderedEntries, end, before))
        std::sort(orderedEntries, end, before);
}

} // namespace ravolt
