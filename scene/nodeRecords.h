#pragma once

// Plain nodes and lights of a scene file. Reading and building are apart, so that a loader can
// check a whole file before it makes anything.

#include "ravolt/Z3MVECTOR3D.h"

#include <cstdint>

class RVNODE;

namespace ravolt {

class ByteReader;

// The names point into the bytes that were read.
struct PlainNodeRecord {
    std::uint32_t auxId = 0;
    const char *name = "";
    Z3MVECTOR3D position;
    Z3MVECTOR3D origin;
    std::uint16_t numberOfChildren = 0;
};

struct LightRecord {
    std::uint8_t lightType = 0;
    const char *name = "";
    Z3MVECTOR3D position;
    Z3MVECTOR3D direction;
    float cutOff = 0;
    Z3MVECTOR3D color;
    std::uint16_t numberOfChildren = 0;
};

// Each reads one body and returns whether the bytes have all of it.
bool readPlainNodeRecord(ByteReader &reader, PlainNodeRecord &record);
bool readLightRecord(ByteReader &reader, LightRecord &record);

// New nodes with the record's values and as many empty entries for children as it has. NULL
// when memory runs out.
RVNODE *makePlainNode(const PlainNodeRecord &record);
RVNODE *makeLight(const LightRecord &record);

} // namespace ravolt
