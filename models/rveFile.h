#pragma once

// The contents of a scene file, checked and reported record by record, without building anything.

#include "models/rveRecords.h"
#include "scene/nodeRecords.h"

#include <cstddef>

namespace ravolt {

enum class RveVerdict { good, corrupted, unknownKind };

// Receives the records of a scene file in its order. Their texts and arrays are views of the file's
// bytes. `offset` is that of the record; `level` is the depth in the tree, 0 for the root.
class RveVisitor {
  public:
    virtual ~RveVisitor() = default;
    virtual void visit(const MaterialRecord &material, std::size_t offset) = 0;
    virtual void visit(const PlainNodeRecord &node, std::size_t offset, std::size_t level) = 0;
    virtual void visit(const LightRecord &light, std::size_t offset, std::size_t level) = 0;
    virtual void visit(const MeshRecord &mesh, std::size_t offset, std::size_t level) = 0;
};

// Whether a file starts with a known magic, which also states the version of the format.
bool readRveHeader(const void *file, std::size_t size, bool &obsolete);

// Reads everything after the header and checks it: bounds, texts, tables, indices, kinds, depth.
// The reader starts after the header. It ends after the tree, or has failed where and why. Throws
// std::bad_alloc.
RveVerdict checkRve(ByteReader &reader, bool obsolete, RveVisitor *visitor = nullptr);

} // namespace ravolt
