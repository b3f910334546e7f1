// The log lives as long as the library is loaded: it opens before the first static object with an
// id can be built, and closes after the last one is gone. Hence the priority, ahead of all static
// objects (the numbers up to 100 are the compiler's own).

#include "engine/state/version.h"
#include "ravolt/zlf.h"

namespace {

[[gnu::constructor(101)]] void libraryLoaded() {
    zlfOpenLog("ravolt_log.txt");
    zlfLog("   Log file for %s\n", ravolt::banner);
}

[[gnu::destructor(101)]] void libraryUnloaded() {
    zlfLog("   Log completed\n");
    zlfCloseLog();
}

} // namespace
