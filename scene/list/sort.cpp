// Ordering the render list. Only pointers move, never entries, and nothing is allocated.

#include "engine/gl/stateCache.h"
#include "gui/boxNodes.h"
#include "ravolt/RVBOX.h"
#include "ravolt/RVELEMENT.h"
#include "ravolt/RVLIGHT.h"
#include "ravolt/RVMATERIAL.h"
#include "ravolt/RVMESH.h"
#include "ravolt/RVNODE.h"
#include "ravolt/RVSHADER.h"
#include "ravolt/RVTEXTURE.h"
#include "scene/entryOrder.h"
#include "scene/nodeInternals.h"
#include "scene/nodeTraits.h"
#include "scene/renderList.h"

#include <algorithm>

namespace {

// Identifiers have 16 bits.
std::uint64_t surfaceKey(const RVNODE &node) {
    if (!ravolt::NodeInternals::isObjectOf(node, RV_NODE_TYPE_MESH))
        return 0;
    const RVMATERIAL *material = static_cast<const RVMESH &>(node).getMaterial();
    if (!material)
        return 0;
    const RVTEXTURE *texture = material->getTexture(0);
    const std::uint64_t textureId = texture ? texture->getId() & 0xffffu : 0;
    return textureId << 16 | (material->getId() & 0xffffu);
}

enum Group : std::uint64_t { lightGroup, opaqueGroup, transparentGroup };

Group groupOf(const RVELEMENT &entry) {
    if (ravolt::traitsOf(*entry.getNode()).order == ravolt::DrawOrder::light)
        return lightGroup;
    return ravolt::isTransparent(*entry.getNode()) ? transparentGroup : opaqueGroup;
}

// Lights, opaque entries, transparent entries. Opaque entries may be drawn in any order: they are
// ordered by texture and then by material, because a change of the bound texture is the most
// expensive one for a driver.
std::uint64_t groupKey(const RVELEMENT &entry) {
    const Group group = groupOf(entry);
    return group << 32 | (group == opaqueGroup ? surfaceKey(*entry.getNode()) : 0);
}

std::uint64_t lowBits(unsigned int number, unsigned int bits) {
    return number & ((1u << bits) - 1);
}

// Of each number as many low bits as there is room for: where two are equal in these, meshes of one
// are drawn between those of the other.
std::uint64_t stateKey(const RVELEMENT &entry) {
    const Group group = groupOf(entry);
    const RVNODE &node = *entry.getNode();
    std::uint64_t key = group;
    if (group != opaqueGroup || !ravolt::NodeInternals::isObjectOf(node, RV_NODE_TYPE_MESH))
        return key << 46;
    const auto &mesh = static_cast<const RVMESH &>(node);
    const RVMATERIAL *material = mesh.getMaterial();
    const RVSHADER *program = material ? material->getShader() : nullptr;
    const RVTEXTURE *texture = material ? material->getTexture(0) : nullptr;
    key = key << 10 | lowBits(program ? program->getId() : 0, 10);
    key = key << 12 | lowBits(texture ? texture->getId() : 0, 12);
    key = key << 12 | lowBits(material ? material->getId() : 0, 12);
    return key << 12 | lowBits(ravolt::RenderList::shapeOf(mesh), 12);
}

// By the far end of each entry along the view, farthest first: the eye looks down -z.
std::uint64_t depthKey(const RVELEMENT &entry) {
    return ravolt::orderedBits(entry.getMatrix()->e[14] - ravolt::radiusOf(*entry.getNode()));
}

// What is no box is below all boxes, in the order of the pass.
std::uint64_t stampKey(const RVELEMENT &entry) {
    constexpr long maxStamp = (1L << 48) - 2;
    const RVBOX *box = ravolt::asBox(entry.getNode());
    return box ? static_cast<std::uint64_t>(std::clamp(box->getForemostTimeStamp(), 0L, maxStamp)) +
                     1
               : 0;
}

} // namespace

bool RVELEMENT::sort2D() {
    if (numberOfPassedElements == 0)
        return false;
    ravolt::orderEntries(elementPointer, numberOfPassedElements, stampKey);
    return true;
}

bool RVELEMENT::sort3D() {
    if (numberOfPassedElements == 0)
        return false;
    if (stateOrder)
        ravolt::orderEntries(elementPointer, numberOfPassedElements, stateKey);
    else if (numberOfLights != 0 || numberOfTransparencies != 0)
        ravolt::orderEntries(elementPointer, numberOfPassedElements, groupKey);
    if (numberOfTransparencies > 1)
        ravolt::orderEntries(elementPointer + (numberOfPassedElements - numberOfTransparencies),
                             numberOfTransparencies, depthKey);
    return true;
}

// Exclusive lights first, then by distance from `point`. While the state is known, nobody else
// sorts them or moves one.
bool RVELEMENT::sortLights(const Z3MVECTOR3D &point) {
    if (numberOfPassedElements == 0 || numberOfLights == 0)
        return false;
    static Z3MVECTOR3D sortedFor;
    static unsigned int period = 0;
    if (ravolt::KnownState::hit(period, sortedFor == point))
        return true;
    sortedFor = point;
    period = ravolt::KnownState::period();
    ravolt::orderEntries(elementPointer, numberOfLights, [&point](RVELEMENT &entry) {
        entry.distance = point.distance(entry.matrix.getTranslation());
        const bool isLight = ravolt::NodeInternals::isObjectOf(*entry.node, RV_NODE_TYPE_LIGHT);
        const bool ahead = isLight && static_cast<const RVLIGHT *>(entry.node)->isExclusive();
        const std::uint64_t group = ahead ? 0 : 1;
        return group << 32 | ravolt::orderedBits(entry.distance);
    });
    return true;
}
