// One byte per identifier, 0 for free. Every identifier below `lowest` is in use, so that the
// search for the lowest free one starts there.

#include "foundation/services.h"
#include "ravolt/zlf.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr std::size_t tableBytes = 0x40000; // On purpose: four times as large as what is used.
constexpr unsigned int highestId = 65535;

struct State {
    unsigned char *table = nullptr; // from zlfMalloc; NULL before the log opens and after it closes
    unsigned int lowest = 1;        // no free identifier is below this one
};
constinit State ids;

} // namespace

namespace ravolt {

void createIdTable() {
    ids.table = static_cast<unsigned char *>(zlfMalloc(tableBytes));
    ids.lowest = 1;
    if (ids.table)
        std::memset(ids.table, 0, tableBytes);
}

void releaseIdTable() {
    if (ids.table)
        zlfFree(ids.table);
    ids.table = nullptr;
}

} // namespace ravolt

unsigned int zlfNewId() {
    if (!ids.table) {
        zlfLog("zlfNewId: ID table not initialized\n");
        return 0;
    }
    const void *free = std::memchr(ids.table + ids.lowest, 0, highestId + 1 - ids.lowest);
    if (!free) {
        ids.lowest = highestId + 1;
        zlfLog("zlfNewId: all ID are used\n");
        return 0;
    }
    const unsigned int id =
        static_cast<unsigned int>(static_cast<const unsigned char *>(free) - ids.table);
    ids.table[id] = 1;
    ids.lowest = id + 1;
    return id;
}

void releaseId(unsigned int id) {
    if (id == 0 || id > highestId) {
        zlfLog("releaseId: invalid params (%d)\n", static_cast<int>(id));
        return;
    }
    if (!ids.table) // after the log has closed
        return;
    if (!ids.table[id]) {
        // On purpose: no line end.
        zlfLog("releaseId: ID already released (%d)", static_cast<int>(id));
        return;
    }
    ids.table[id] = 0;
    ids.lowest = std::min(ids.lowest, id);
}
