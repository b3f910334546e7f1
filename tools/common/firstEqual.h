#pragma once

// Equal items among numbered ones, by a hash table of their numbers alone.

#include <bit>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <utility>
#include <vector>

namespace ravolt::tool {

// Mixes a number into a hash. Equal floats have equal hashes, 0 and -0 too.
inline std::size_t mixed(std::size_t hash, std::uint32_t number) {
    hash = (hash ^ number) * 0x9E3779B97F4A7C15u;
    return hash ^ hash >> 32;
}
inline std::size_t mixed(std::size_t hash, float number) {
    return mixed(hash, std::bit_cast<std::uint32_t>(number + 0.0f));
}

// `hashOf` gives the hash of an item, `areEqual` compares two.
template <class HashOf, class AreEqual> class FirstEqual {
  public:
    FirstEqual(HashOf itemHash, AreEqual itemsAreEqual)
        : hashOf(std::move(itemHash)), areEqual(std::move(itemsAreEqual)), slots(1024, none) {}

    // The first of the items so far that is equal to this one, or this one.
    std::uint32_t of(std::uint32_t item) {
        std::uint32_t &slot = slotOf(item);
        if (slot != none)
            return slot;
        slot = item;
        if (2 * ++used > slots.size())
            grow();
        return item;
    }

  private:
    static constexpr std::uint32_t none = std::numeric_limits<std::uint32_t>::max();

    // Its slot, or the free one for it.
    std::uint32_t &slotOf(std::uint32_t item) {
        std::size_t slot = hashOf(item) & (slots.size() - 1);
        while (slots[slot] != none && !areEqual(slots[slot], item))
            slot = (slot + 1) & (slots.size() - 1);
        return slots[slot];
    }

    void grow() {
        const std::vector<std::uint32_t> former =
            std::exchange(slots, std::vector<std::uint32_t>(2 * slots.size(), none));
        for (const std::uint32_t item : former) {
            if (item == none)
                continue;
            std::size_t slot = hashOf(item) & (slots.size() - 1);
            while (slots[slot] != none)
                slot = (slot + 1) & (slots.size() - 1);
            slots[slot] = item;
        }
    }

    HashOf hashOf;
    AreEqual areEqual;
    std::vector<std::uint32_t> slots; // a power of two, at most half of them used
    std::size_t used = 0;
};

} // namespace ravolt::tool
