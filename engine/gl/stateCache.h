#pragma once

// Every test of a cached OpenGL state calls this. A build option makes all of them miss. The drawn
// result must be the same with and without the option, else a cache is wrong.

namespace ravolt {

// Whether the call to OpenGL can be omitted. `matches`: the cached state is the requested one.
inline bool cacheHit([[maybe_unused]] bool matches) {
#ifdef RAVOLT_CACHES_MISS
    return false;
#else
    return matches;
#endif
}

} // namespace ravolt
