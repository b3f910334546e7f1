#pragma once

// The functions that are fuzzed: each passes one input to the engine in front of the silent driver.
// They abort when the engine has drawn outside its buffers, or an object is left afterwards; the
// sanitizers find the rest.

#include <cstddef>
#include <cstdint>
#include <span>

namespace ravolt::fuzz {

using Bytes = std::span<const std::uint8_t>;

#define RV_FUZZ_TARGET(name) void name(Bytes input);
#include "fuzz/targets.inc"
#undef RV_FUZZ_TARGET

} // namespace ravolt::fuzz
