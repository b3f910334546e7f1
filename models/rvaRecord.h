#pragma once

// A clip's file as a view of its bytes, checked to its end.

#include "models/rvaFormat.h"

#include <cstddef>
#include <cstdint>

namespace ravolt {

class ByteReader;

struct RvaRecord {
    std::uint16_t numberOfBones = 0;
    std::uint16_t numberOfFrames = 0;
    const char *boneName[rva::maxBones] = {};
    const unsigned char *entries = nullptr; // rva::entryBytes for each bone of each frame
};

// Whether a file starts with the magic.
bool readRvaHeader(const void *file, std::size_t size);

// Reads everything after the header, and returns whether it is complete and within the limits;
// otherwise the reader has failed where and why.
bool readRvaRecord(ByteReader &reader, RvaRecord &record);

} // namespace ravolt
