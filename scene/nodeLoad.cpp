// Plain nodes and lights from their records. Building fails only when memory runs out, so a file
// that is refused creates nothing.

#include "foundation/bytes.h"
#include "ravolt/RVLIGHT.h"
#include "ravolt/RVNODE.h"
#include "ravolt/Z3MVECTOR4D.h"
#include "ravolt/zlf.h"
#include "scene/nodeInternals.h"
#include "scene/nodeRecords.h"

#include <cstddef>
#include <limits>
#include <new>

namespace ravolt {

namespace {

// Deletes the node if allocation fails.
RVNODE *reserveOrDelete(RVNODE *node, unsigned int count) {
    if (NodeInternals::reserveChildren(*node, count))
        return node;
    delete node;
    return nullptr;
}

Z3MVECTOR4D opaque(const Z3MVECTOR3D &color) { return Z3MVECTOR4D(color.x, color.y, color.z, 1); }

} // namespace

RVNODE *makePlainNode(const PlainNodeRecord &record) {
    RVNODE *node = new (std::nothrow) RVNODE;
    if (!node)
        return nullptr;
    node->setAuxId(record.auxId);
    node->setName(record.name);
    node->setPosition(record.position);
    node->setOrigin(record.origin);
    return reserveOrDelete(node, record.numberOfChildren);
}

RVNODE *makeLight(const LightRecord &record) {
    RVLIGHT *light = new (std::nothrow) RVLIGHT;
    if (!light)
        return nullptr;
    light->setLightType(static_cast<RV_LIGHT_TYPE>(record.lightType));
    light->setName(record.name);
    light->setPosition(record.position);
    light->setDirection(record.direction);
    light->setTarget(record.direction + record.position);
    light->setCutOff(record.cutOff);
    light->setAmbient(opaque(record.color / 5.0f));
    light->setDiffuse(opaque(record.color));
    light->setSpecular(opaque(record.color / 10.0f));
    return reserveOrDelete(light, record.numberOfChildren);
}

namespace {

// One body at `buffer + *cursor`, whose end is unknown.
template <class Record>
RVNODE *loadBody(const char *buffer, long *cursor, bool (*read)(ByteReader &, Record &),
                 RVNODE *(*make)(const Record &)) {
    ByteReader reader(buffer, std::numeric_limits<std::ptrdiff_t>::max(),
                      static_cast<std::size_t>(*cursor));
    Record record;
    RVNODE *node = read(reader, record) ? make(record) : nullptr;
    if (node)
        *cursor = static_cast<long>(reader.position());
    return node;
}

} // namespace

} // namespace ravolt

RVNODE *RVNODE::load(const char *buffer, long *cursor) {
    RVNODE *node = ravolt::loadBody<ravolt::PlainNodeRecord>(
        buffer, cursor, ravolt::readPlainNodeRecord, ravolt::makePlainNode);
    if (!node)
        zlfLog("   [!] Consistency error: node == NULL @ RVNODE::load\n");
    return node;
}

RVNODE *RVLIGHT::load(const char *buffer, long *cursor) {
    RVNODE *light = ravolt::loadBody<ravolt::LightRecord>(buffer, cursor, ravolt::readLightRecord,
                                                          ravolt::makeLight);
    if (!light)
        zlfLog("   [!] Consistency error: light == NULL @ RVLIGHT::load\n");
    return light;
}
