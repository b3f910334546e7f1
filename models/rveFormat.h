#pragma once

// The numbers of the scene file format (RVE), which the engine's reader and the tool's writer
// share; docs/formats.md describes the file.

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace ravolt::rve {

// The older format has extra bytes for each vertex and each face, which readers skip.
inline constexpr std::string_view magic = "RVE file v1.6a";
inline constexpr std::string_view obsoleteMagic = "RVE file v1.5a";
constexpr std::size_t headerBytes = magic.size() + 1; // with a terminator, which readers ignore
constexpr std::size_t obsoleteVertexBytes = 12;
constexpr std::size_t obsoleteFaceBytes = 16;

// The byte before each node.
enum Kind : std::uint8_t { kindNode = 0, kindLight = 1, kindMesh = 2 };

// The name for no texture, no program or no material.
inline constexpr char noName[] = "[none]";

constexpr std::size_t vectorBytes = 3 * sizeof(float);
constexpr std::size_t uvBytes = 2 * sizeof(float);
constexpr std::size_t faceBytes = 3 * sizeof(std::uint16_t);
constexpr std::size_t reservedBytes = 4; // at the start of a light and of a mesh

constexpr std::size_t maxTextLength = 255; // characters of any name
constexpr std::size_t maxBones = 100;      // of one mesh
// Recursion over a deeper tree would overflow the stack.
constexpr std::size_t maxTreeDepth = 1024;

} // namespace ravolt::rve
