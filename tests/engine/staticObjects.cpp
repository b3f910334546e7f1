// Objects that exist before main and go after it, without any start of the engine: they have their
// ids and reach the log from their first line to their last.

#include "ravolt.h"

namespace {

struct Witness {
    Witness() { zlfLog("   Static objects are built\n"); }
    ~Witness() { zlfLog("   Static objects are gone\n"); }
};

Witness witness;
RVNODE first;
RVMATERIAL second;

} // namespace

int main() {
    static const RVNODE third;
    return first.getId() == 1 && second.getId() == 2 && third.getId() == 3 ? 0 : 1;
}
