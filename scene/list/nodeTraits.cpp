// The table of the node kinds with the functions of their classes. In the layer above all of them.

#include "scene/nodeTraits.h"

#include "models/rveFormat.h"
#include "ravolt/RVEMITTER.h"
#include "ravolt/RVHELPER.h"
#include "ravolt/RVLIGHT.h"
#include "ravolt/RVMATERIAL.h"
#include "ravolt/RVMESH.h"
#include "ravolt/RVNODE.h"
#include "scene/nodeInternals.h"

#include <bit>
#include <iterator>

namespace ravolt {

namespace {

float meshRadius(const RVNODE &node) { return static_cast<const RVMESH &>(node).getRadius(); }

// On purpose: the type's bits, since the first field of an emitter counts as its radius.
float emitterRadius(const RVNODE &node) {
    return std::bit_cast<float>(static_cast<const RVEMITTER &>(node).getEmitterType());
}

float helperRadius(const RVNODE &node) { return static_cast<const RVHELPER &>(node).getRadius(); }

constexpr NodeReader plainNodeRow = {
    rve::kindNode, [](char *buffer, long *cursor, bool) { return RVNODE::load(buffer, cursor); }};

constexpr NodeReader lightRow = {
    rve::kindLight, [](char *buffer, long *cursor, bool) { return RVLIGHT::load(buffer, cursor); }};

constexpr NodeReader meshRow = {rve::kindMesh, [](char *buffer, long *cursor, bool obsolete) {
                                    return RVMESH::load(buffer, cursor, obsolete);
                                }};

// The names of the columns' functions in the table.
constexpr auto none = nullptr;
constexpr const NodeReader *plainNodeReader = &plainNodeRow, *lightReader = &lightRow,
                           *meshReader = &meshRow;

constexpr NodeTraits kinds[] = {
#define RV_NODE_KIND(type, name, defaultName, listed, clipped, order, inBlock2D, casts, pickable,  \
                     radius, reader)                                                               \
    {listed, clipped, DrawOrder::order, inBlock2D, casts, pickable, radius, reader},
#include "scene/nodeKinds.inc"
};
static_assert(std::size(kinds) == RV_NODE_TYPE_CUSTOM + 1);

constexpr NodeTraits unknownKind = {true, false, DrawOrder::opaque, true, true, false, none, none};

} // namespace

const NodeTraits &traitsOf(const RVNODE &node) {
    const auto type = static_cast<unsigned int>(node.getType());
    return type < std::size(kinds) ? kinds[type] : unknownKind;
}

float radiusOf(const RVNODE &node) {
    const NodeTraits &traits = traitsOf(node);
    return traits.radius && NodeInternals::isObjectOf(node, node.getType()) ? traits.radius(node)
                                                                            : 0.0f;
}

bool isTransparent(const RVNODE &node) {
    const DrawOrder order = traitsOf(node).order;
    if (order != DrawOrder::byMaterial || !NodeInternals::isObjectOf(node, node.getType()))
        return order == DrawOrder::transparent;
    const RVMATERIAL *material = static_cast<const RVMESH &>(node).getMaterial();
    return material && material->isTransparent();
}

const NodeReader *readerOf(unsigned char kind) {
    for (const NodeTraits &traits : kinds)
        if (traits.reader && traits.reader->kind == kind)
            return traits.reader;
    return nullptr;
}

} // namespace ravolt
