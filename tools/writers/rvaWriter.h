#pragma once

// Makes animation files (RVA) that the engine reads, from a plain description. Nothing of the
// engine is needed. What a file cannot store, or the engine would refuse, is an error that names
// the object and its limit.

#include "models/rvaFormat.h"
#include "tools/writers/byteWriter.h"

#include <array>
#include <string>
#include <vector>

namespace ravolt {

// Limits of the format's reader.
constexpr std::size_t rvaNameLength = writtenTextLength; // characters of a bone's name
constexpr std::size_t rvaBones = rva::maxBones;
constexpr std::size_t rvaFrames = rva::maxFrames;

// One bone in one frame.
struct RvaEntry {
    std::array<float, 3> rotation = {0.0f, 0.0f, 0.0f}; // degrees, about x, then y, then z
    std::array<float, 3> translation = {0.0f, 0.0f, 0.0f};
    bool set = false; // a key; 0 for a filler
};

struct RvaClip {
    std::vector<std::string> bones;            // names of nodes
    std::vector<std::vector<RvaEntry>> frames; // each has one entry for each bone
};

using RvaResult = WrittenBytes;

RvaResult encodeRva(const RvaClip &clip);

// Returns the error, or an empty text. A file that cannot be written completely is unchanged.
std::string writeRva(const std::string &path, const RvaClip &clip);

} // namespace ravolt
