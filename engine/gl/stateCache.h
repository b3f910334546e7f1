#pragma once

// Every test of a cached OpenGL state goes through here. One switch of the build makes all of them
// miss; what is drawn must be the same with and without it, or a cache lies.

namespace ravolt {

// Whether the call to OpenGL can be left out, `holds` being what the cache knows.
inline bool cacheHit([[maybe_unused]] bool holds) {
#ifdef RAVOLT_CACHES_MISS
    return false;
#else
    return holds;
#endif
}

} // namespace ravolt
