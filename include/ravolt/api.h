#pragma once

// What the library exports. Everything else in it is hidden.
#define RV_API __attribute__((visibility("default")))

namespace ravolt {
// The rules of a class's list of live objects; see foundation/registry.h.
template <class T> struct Registry;
} // namespace ravolt

// Texture units that the engine drives. A unit's number is also the number of a material's slot and
// of a program's sampler.
constexpr unsigned int RV_TEXTURE_UNITS = 16;
