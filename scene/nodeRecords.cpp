// Reading creates nothing: see scene/nodeLoad.cpp for the nodes.

#include "scene/nodeRecords.h"

#include "foundation/bytes.h"

namespace ravolt {

bool readPlainNodeRecord(ByteReader &reader, PlainNodeRecord &record) {
    record.auxId = reader.read<std::uint32_t>();
    record.name = reader.readText().data();
    record.position = reader.read<Z3MVECTOR3D>();
    record.origin = reader.read<Z3MVECTOR3D>();
    record.numberOfChildren = reader.read<std::uint16_t>();
    return reader.ok();
}

bool readLightRecord(ByteReader &reader, LightRecord &record) {
    reader.skip(4); // reserved
    record.lightType = reader.read<std::uint8_t>();
    record.name = reader.readText().data();
    record.position = reader.read<Z3MVECTOR3D>();
    record.direction = reader.read<Z3MVECTOR3D>();
    record.cutOff = reader.read<float>();
    record.color = reader.read<Z3MVECTOR3D>();
    record.numberOfChildren = reader.read<std::uint16_t>();
    return reader.ok();
}

} // namespace ravolt
