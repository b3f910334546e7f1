#pragma once

// What the library exports. Everything else in it is hidden.
#define RV_API __attribute__((visibility("default")))

namespace ravolt {
// Keeper of a class's chain of live objects; see foundation/registry.h.
template <class T> struct Registry;
} // namespace ravolt
