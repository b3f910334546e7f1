// Objects with ids that exist before main and go after it, without any start of the engine.

#include "ravolt.h"

namespace {

RVNODE first;
RVMATERIAL second;

} // namespace

int main() {
    static const RVNODE third;
    return first.getId() == 1 && second.getId() == 2 && third.getId() == 3 ? 0 : 1;
}
