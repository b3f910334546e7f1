#include "models/rvaRecord.h"

#include "foundation/bytes.h"

#include <algorithm>
#include <string_view>

namespace ravolt {

bool readRvaHeader(const void *file, std::size_t size) {
    return std::string_view(static_cast<const char *>(file), std::min(size, rva::magic.size())) ==
           rva::magic;
}

bool readRvaRecord(ByteReader &reader, RvaRecord &record) {
    record.numberOfBones = reader.read<std::uint16_t>();
    record.numberOfFrames = reader.read<std::uint16_t>();
    if (record.numberOfBones > rva::maxBones)
        reader.fail("more than 128 bones");
    if (record.numberOfFrames > rva::maxFrames)
        reader.fail("more than 1024 frames");
    for (unsigned int bone = 0; bone < record.numberOfBones && reader.ok(); ++bone)
        record.boneName[bone] = reader.readText().data();
    record.entries =
        reader.take(std::size_t{record.numberOfFrames} * record.numberOfBones * rva::entryBytes);
    return reader.ok();
}

} // namespace ravolt
