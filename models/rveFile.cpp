// Checks scene files. The tree is read with a stack of its own, since it may be deep.

#include "models/rveFile.h"

#include "foundation/bytes.h"
#include "models/rveFormat.h"

#include <algorithm>
#include <string_view>
#include <vector>

namespace ravolt {

namespace {

// Reads one node after its kind, and the number of its children.
class NodeCheck {
  public:
    NodeCheck(ByteReader &bytes, bool obsoleteFormat, RveVisitor *receiver)
        : reader(bytes), obsolete(obsoleteFormat), visitor(receiver) {}

    RveVerdict check(std::size_t level, unsigned int &numberOfChildren) {
        const std::size_t offset = reader.position();
        const unsigned char *const kind = reader.take(1);
        if (!kind)
            return RveVerdict::corrupted;
        if (level == rve::maxTreeDepth) {
            reader.fail("a tree that is deeper than 1024 levels", kind);
            return RveVerdict::corrupted;
        }
        switch (*kind) {
        case rve::kindNode: {
            PlainNodeRecord node;
            return finish(readPlainNodeRecord(reader, node), node, {offset, level},
                          numberOfChildren);
        }
        case rve::kindLight: {
            LightRecord light;
            return finish(readLightRecord(reader, light), light, {offset, level}, numberOfChildren);
        }
        case rve::kindMesh: {
            MeshRecord mesh;
            const bool whole = readMeshRecord(reader, obsolete, mesh) && checkIndices(mesh, reader);
            return finish(whole, mesh, {offset, level}, numberOfChildren);
        }
        default:
            reader.fail("a kind of node that is not known", kind);
            return RveVerdict::unknownKind;
        }
    }

  private:
    struct Location {
        std::size_t offset, level;
    };

    template <class Record>
    RveVerdict finish(bool whole, const Record &record, const Location &location,
                      unsigned int &numberOfChildren) {
        numberOfChildren = record.numberOfChildren;
        if (whole && visitor)
            visitor->visit(record, location.offset, location.level);
        return whole ? RveVerdict::good : RveVerdict::corrupted;
    }

    ByteReader &reader;
    bool obsolete;
    RveVisitor *visitor;
};

// `open` contains, for each node on the path from the root, how many children are still to come.
RveVerdict checkTree(NodeCheck nodes) {
    std::vector<unsigned int> open;
    open.reserve(rve::maxTreeDepth);
    do {
        unsigned int children = 0;
        const RveVerdict verdict = nodes.check(open.size(), children);
        if (verdict != RveVerdict::good)
            return verdict;
        open.push_back(children);
        while (!open.empty() && open.back() == 0)
            open.pop_back();
        if (!open.empty())
            --open.back();
    } while (!open.empty());
    return RveVerdict::good;
}

} // namespace

bool readRveHeader(const void *file, std::size_t size, bool &obsolete) {
    const std::string_view header(static_cast<const char *>(file),
                                  std::min(size, rve::magic.size()));
    obsolete = header == rve::obsoleteMagic;
    return obsolete || header == rve::magic;
}

RveVerdict checkRve(ByteReader &reader, bool obsolete, RveVisitor *visitor) {
    MaterialRecord material;
    for (unsigned int left = reader.read<std::uint16_t>(); left; --left) {
        const std::size_t offset = reader.position();
        if (!readMaterialRecord(reader, material))
            return RveVerdict::corrupted;
        if (visitor)
            visitor->visit(material, offset);
    }
    return checkTree(NodeCheck(reader, obsolete, visitor));
}

} // namespace ravolt
