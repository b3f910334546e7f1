// Filling the render list: the tree is walked, from OpenGL's modelview matrix on, and each node
// that is drawn gets an entry with its matrix. Nothing is drawn, and OpenGL's matrix does not
// change.

#include "gui/boxNodes.h"
#include "ravolt/RAVOLT.h"
#include "ravolt/RVELEMENT.h"
#include "ravolt/RVMESH.h"
#include "ravolt/RVNODE.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVWINDOW.h"
#include "ravolt/zlf.h"
#include "scene/localTransform.h"
#include "scene/nodeInternals.h"
#include "scene/nodeTraits.h"
#include "scene/renderList.h"

#include <algorithm>
#include <cstdint>
#include <iterator>

namespace {

// Skeletons in the cache of RVMESH; also the param1 of a mesh for which it was full.
constexpr unsigned int skeletonCacheSize = 256;

bool isMesh(const RVNODE &node) {
    return ravolt::NodeInternals::isObjectOf(node, RV_NODE_TYPE_MESH);
}

const RVMESH &asMesh(const RVNODE &node) { return static_cast<const RVMESH &>(node); }

bool isListed(const RVNODE &node) {
    return ravolt::traitsOf(node).listed && !(isMesh(node) && asMesh(node).isHidden());
}

// Of a minimized window only the title bar is passed.
bool isMinimized(RVNODE &node) {
    const RVWINDOW *window = ravolt::asWindow(&node);
    return window && window->isMinimized();
}

Z3MMATRIX currentModelview() {
    Z3MMATRIX matrix;
    glGetFloatv(GL_MODELVIEW_MATRIX, matrix.e);
    return matrix;
}

} // namespace

bool RVNODE::pass(bool flag) {
    timeStamp = static_cast<int>(RAVOLT::getTimeStamp());
    RVELEMENT::pass(this, flag);
    return true;
}

bool RVELEMENT::pass(RVNODE *node, bool) {
    if (!node) {
        zlfLog("   [!] Invalid params @ RVELEMENT::pass\n");
        return false;
    }
    return ravolt::RenderList::pass(*node, currentModelview());
}

bool RVELEMENT::passSkeleton(RVNODE *node, RVMESH *mesh) {
    if (!node || !mesh) {
        zlfLog("   [!] Invalid params @ RVELEMENT::skeletonPass\n");
        return false;
    }
    ravolt::RenderList::passSkeleton(*node, *mesh, currentModelview());
    return true;
}

namespace ravolt {

bool RenderList::pass(RVNODE &node, const Z3MMATRIX &around) {
    if (RVELEMENT::numberOfPassedElements >= RVELEMENT::numberOfElements) {
        zlfLog("   [!] Scene too complex @ RVELEMENT::pass\n");
        return false;
    }
    Z3MMATRIX matrix(around);
    applyLocalTransform(node, matrix);
    if (isListed(node))
        add(node, matrix);
    const unsigned int all = node.getNumberOfChildren();
    const unsigned int children = isMinimized(node) ? std::min(all, 1u) : all;
    for (unsigned int index = 0; index < children; ++index)
        if (RVNODE *child = node.getChild(index)) {
            NodeInternals::setTimeStamp(*child, static_cast<int>(RAVOLT::getTimeStamp()));
            pass(*child, matrix);
        }
    return true;
}

void RenderList::passSkeleton(const RVNODE &node, const RVMESH &mesh, const Z3MMATRIX &around) {
    Z3MMATRIX matrix(around);
    applyLocalTransform(node, matrix);
    if (isMesh(node))
        storeBoneMatrix(node, mesh, matrix);
    for (unsigned int index = 0; index < node.getNumberOfChildren(); ++index)
        if (const RVNODE *child = node.getChild(index))
            passSkeleton(*child, mesh, matrix);
}

// By the distance from the eye to the node's origin, which is the translation of the matrix. On
// purpose: a clipped node is logged in every frame.
bool RenderList::isClipped(const RVNODE &node, const Z3MMATRIX &eye) {
    if (!traitsOf(node).clipped)
        return false;
    const float distance = eye.getTranslation().length();
    if (!(RVELEMENT::clippingRadius + 2.0f * radiusOf(node) < distance))
        return false;
    zlfLog(" (clipped) %s at distance %.2f\n", node.getName(), static_cast<double>(distance));
    return true;
}

void RenderList::add(RVNODE &node, const Z3MMATRIX &eye) {
    if (RVELEMENT::clipping && isClipped(node, eye))
        return;

    RVELEMENT &entry = RVELEMENT::element[RVELEMENT::numberOfPassedElements];
    entry.node = &node;
    entry.matrix = eye;
    NodeInternals::setListStamp(node, static_cast<int>(RAVOLT::getTimeStamp()));
    entry.auxId = node.getAuxId();
    *node.getCachedMatrix() = eye;
    RVELEMENT::elementPointer[RVELEMENT::numberOfPassedElements] = &entry;
    // On purpose: other entries have the number of an earlier frame.
    if (isMesh(node) && asMesh(node).isSkinned())
        entry.param1 = addSkeleton(static_cast<RVMESH &>(node));

    ++RVELEMENT::numberOfPassedElements;
    entry.countedAsLight = traitsOf(node).order == DrawOrder::light;
    entry.countedAsTransparent = isTransparent(node);
    RVELEMENT::numberOfLights += entry.countedAsLight;
    RVELEMENT::numberOfTransparencies += entry.countedAsTransparent;
}

unsigned int RenderList::addSkeleton(RVMESH &mesh) {
    if (!RVMESH::skeletonElement || RVMESH::currentSkeleton >= skeletonCacheSize) {
        zlfLog("   [!] Skeleton cache full @ RVELEMENT::pass\n");
        return skeletonCacheSize;
    }
    if (RVNODE *const parent = mesh.getParent())
        passSkeleton(*parent, mesh, Z3MMATRIX());
    else
        RVELEMENT::passSkeleton(nullptr, &mesh); // logs it
    RVMESH::skeletonElement[RVMESH::currentSkeleton].mesh = &mesh;
    return RVMESH::currentSkeleton++;
}

// The buffer first, then the position in it, as a hash.
unsigned int RenderList::shapeOf(const RVMESH &mesh) {
    const auto face = static_cast<unsigned int>(reinterpret_cast<std::uintptr_t>(mesh.face) >> 4);
    const unsigned int position = (mesh.faceBuffer ? mesh.faceOffset : face) * 2654435761u >> 26;
    return (mesh.vertexBuffer & 63) << 6 | position;
}

void RenderList::storeBoneMatrix(const RVNODE &node, const RVMESH &mesh, const Z3MMATRIX &matrix) {
    if (!RVMESH::skeletonElement || RVMESH::currentSkeleton >= skeletonCacheSize)
        return;
    RVSKELETON &skeleton = RVMESH::skeletonElement[RVMESH::currentSkeleton];
    const std::size_t bones = std::min<std::size_t>(mesh.numberOfBones, std::size(skeleton.matrix));
    for (std::size_t index = 0; index < bones; ++index) {
        if (mesh.bone[index].node == &node) {
            skeleton.matrix[index] = matrix;
            return;
        }
    }
}

} // namespace ravolt
