#pragma once

// The numbers of the animation file format (RVA), which the engine's reader and writer and the
// tool's writer share; docs/formats.md describes the file.

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace ravolt::rva {

inline constexpr std::string_view magic = "RVA file v1.6a";
constexpr std::uint8_t separator = 0x1a; // after the magic; readers ignore it
constexpr std::size_t headerBytes = magic.size() + sizeof separator;

// One bone of one frame: rotation, translation, and whether it is a key.
constexpr std::size_t entryBytes = 2 * 3 * sizeof(float) + 1;

constexpr std::size_t maxTextLength = 255; // characters of a bone's name
constexpr std::size_t maxBones = 128;
constexpr std::size_t maxFrames = 1024;

} // namespace ravolt::rva
