#pragma once

// Every test of a cached OpenGL state calls one of the functions below. A build option makes all of
// them miss. The drawn result must be the same with and without the option, else a cache is wrong.

namespace ravolt {

// Whether the call to OpenGL can be omitted. `matches`: the cached state is the requested one.
inline bool cacheHit([[maybe_unused]] bool matches) {
#ifdef RAVOLT_CACHES_MISS
    return false;
#else
    return matches;
#endif
}

// For state that an application may change by calls of its own, so that no switch of the engine
// knows it: lights, colours of materials, arrays. It is known only while entries of the list are
// drawn whose `render` is the engine's own; whatever else runs, as the `render` of an application's
// class, makes all of it unknown.
class KnownState {
  public:
    // Whether the state that was recorded in period `recorded` is known, and is the requested one.
    static bool hit(unsigned int recorded, bool matches) {
        return known && recorded == currentPeriod && cacheHit(matches);
    }

    // The number to record with a state. 0, which is no period, while nothing is known.
    static unsigned int period() { return known ? currentPeriod : 0; }

    // Exists while a list is drawn. What was known before is unknown afterwards.
    KnownState() : outer(known) { known = false; }
    ~KnownState() {
        known = false;
        if (outer)
            start();
    }
    KnownState(const KnownState &) = delete;
    KnownState &operator=(const KnownState &) = delete;

    // Before a node is drawn. `own`: its `render` is the engine's.
    void beforeNode(bool own) {
        if (own && !known)
            start();
        known = own;
    }

  private:
    static void start() {
        known = true;
        if (++currentPeriod == 0)
            ++currentPeriod;
    }

    static inline bool known = false;
    static inline unsigned int currentPeriod = 0;
    const bool outer;
};

} // namespace ravolt
