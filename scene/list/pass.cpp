// Filling the render list: the tree is walked with OpenGL's modelview stack, and each node that is
// drawn gets an entry with the matrix found there. Nothing is drawn.

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
    if (numberOfPassedElements >= numberOfElements) {
        zlfLog("   [!] Scene too complex @ RVELEMENT::pass\n");
        return false;
    }
    const ravolt::ModelviewScope scope;
    ravolt::applyLocalTransform(*node);
    if (isListed(*node))
        ravolt::RenderList::add(*node);
    const bool minimized = isMinimized(*node);
    const unsigned int children =
        minimized ? std::min(node->getNumberOfChildren(), 1u) : node->getNumberOfChildren();
    for (unsigned int index = 0; index < children; ++index)
        if (RVNODE *child = node->getChild(index))
            child->pass(minimized);
    return true;
}

bool RVELEMENT::passSkeleton(RVNODE *node, RVMESH *mesh) {
    if (!node || !mesh) {
        zlfLog("   [!] Invalid params @ RVELEMENT::skeletonPass\n");
        return false;
    }
    const ravolt::ModelviewScope scope;
    ravolt::applyLocalTransform(*node);
    if (isMesh(*node))
        ravolt::RenderList::storeBoneMatrix(*node, *mesh);
    for (unsigned int index = 0; index < node->getNumberOfChildren(); ++index)
        if (RVNODE *child = node->getChild(index))
            passSkeleton(child, mesh);
    return true;
}

namespace ravolt {

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

void RenderList::add(RVNODE &node) {
    Z3MMATRIX &eye = RVELEMENT::element[RVELEMENT::numberOfPassedElements].matrix;
    glGetFloatv(GL_MODELVIEW_MATRIX, eye.e);
    if (RVELEMENT::clipping && isClipped(node, eye))
        return;

    RVELEMENT &entry = RVELEMENT::element[RVELEMENT::numberOfPassedElements];
    entry.node = &node;
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
    const ModelviewScope scope;
    glLoadIdentity();
    RVELEMENT::passSkeleton(mesh.getParent(), &mesh);
    RVMESH::skeletonElement[RVMESH::currentSkeleton].mesh = &mesh;
    return RVMESH::currentSkeleton++;
}

void RenderList::storeBoneMatrix(const RVNODE &node, const RVMESH &mesh) {
    if (!RVMESH::skeletonElement || RVMESH::currentSkeleton >= skeletonCacheSize)
        return;
    RVSKELETON &skeleton = RVMESH::skeletonElement[RVMESH::currentSkeleton];
    const std::size_t bones = std::min<std::size_t>(mesh.numberOfBones, std::size(skeleton.matrix));
    for (std::size_t index = 0; index < bones; ++index) {
        if (mesh.bone[index].node == &node) {
            glGetFloatv(GL_MODELVIEW_MATRIX, skeleton.matrix[index].e);
            return;
        }
    }
}

} // namespace ravolt
