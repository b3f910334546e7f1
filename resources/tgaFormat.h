#pragma once

// The numbers of the TGA image format, as far as the engine's reader and the tool's writer use it.

#include <cstddef>

namespace ravolt::tga {

// The header opens with these bytes, of which the third is the kind and the others are 0.
constexpr std::size_t kindBytes = 12;
constexpr unsigned char uncompressed = 2, runLength = 10;

constexpr unsigned int maxSize = 4096; // pixels each way

// A packet encodes at most so many pixels; from the flag on it repeats one.
constexpr unsigned int maxPacket = 128;
constexpr unsigned int repeatFlag = 128;

constexpr unsigned int topLeftOrigin = 32; // of the descriptor's bits
constexpr unsigned int alphaBits = 8;      // the descriptor's number of them

} // namespace ravolt::tga
