// The log is open as long as the library is loaded: it opens before the first static object with an
// id can be constructed, and closes after the last one is destroyed. Hence the priority, before all
// static objects (the numbers up to 100 are reserved for the compiler).

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
