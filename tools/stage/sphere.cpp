// Computes the bounding sphere of a scene from its vertices.

#include "tools/stage/sphere.h"

#include "tools/common/sceneNames.h"
#include "tools/stage/vectors.h"
#include "tools/stage/walk.h"

#include <algorithm>
#include <ravolt/RVMESH.h>

namespace ravolt::tool {

namespace {

Affine affineFrom(const Z3MMATRIX &matrix) {
    const float *m = matrix.e; // column by column
    return {matrixOfColumns({m[0], m[1], m[2]}, {m[4], m[5], m[6]}, {m[8], m[9], m[10]}),
            {m[12], m[13], m[14]}};
}

Affine worldOf(RVNODE *node) { return affineFrom(node->getFinalMatrix(nullptr)); }

// In the frame in which the engine binds skins.
Affine inFigure(RVNODE *node) { return affineFrom(node->getFinalMatrix(skeletonRootName)); }

Affine inverseOf(const Affine &transform) {
    Affine result;
    return invert(transform, result) ? result : Affine();
}

void addVertices(RVNODE *node, std::vector<Vector> &points) {
    const RVMESH *mesh = visibleMesh(node);
    if (!mesh)
        return;
    const Affine world = worldOf(node);
    const Z3MVECTOR3D *vertices = mesh->getVertexPtr();
    for (unsigned int i = 0; i < mesh->getNumberOfVertices(); ++i)
        points.push_back(world(vectorFrom(vertices[i])));
}

Sphere sphereOf(const std::vector<Vector> &points) {
    Sphere sphere;
    Box box;
    for (const Vector &point : points)
        box.add(point);
    sphere.center = (box.low + box.high) * 0.5;
    sphere.lowest = box.low.y;
    for (const Vector &p : points)
        sphere.radius = std::max(sphere.radius, length(p - sphere.center));
    return sphere;
}

} // namespace

const RVMESH *visibleMesh(const RVNODE *node) {
    if (node->getType() != RV_NODE_TYPE_MESH)
        return nullptr;
    const RVMESH *mesh = static_cast<const RVMESH *>(node);
    return !mesh->isHidden() && mesh->getNumberOfFaces() > 0 ? mesh : nullptr;
}

Sphere sphereAround(RVNODE *root) {
    std::vector<Vector> points;
    walk(root, [&](RVNODE *node) { addVertices(node, points); });
    return sphereOf(points);
}

void Box::add(const Vector &p) {
    if (empty)
        low = high = p;
    empty = false;
    low = {std::min(low.x, p.x), std::min(low.y, p.y), std::min(low.z, p.z)};
    high = {std::max(high.x, p.x), std::max(high.y, p.y), std::max(high.z, p.z)};
}

Extent::Extent(RVNODE *root, const std::vector<SceneSkin> &all) : scene(root) {
    std::vector<RVNODE *> nodes;
    walk(scene, [&](RVNODE *node) { nodes.push_back(node); });
    for (const SceneSkin &data : all)
        if (data.node < nodes.size() && bind(data, nodes[data.node]))
            followed.insert(nodes[data.node]);
}

// False for a skin that is not that of the node.
bool Extent::bind(const SceneSkin &data, RVNODE *node) {
    const RVMESH *mesh = visibleMesh(node);
    const int number = static_cast<int>(data.bones.size());
    if (!mesh || !mesh->isSkinned() || mesh->getNumberOfBones() != number || !node->getParent() ||
        std::any_of(data.boneIndices.begin(), data.boneIndices.end(),
                    [=](std::uint8_t bone) { return bone >= number; }))
        return false;
    Skin skin{&data, node, {}};
    for (const std::string &name : data.bones) {
        RVNODE *bone = scene->findByNameInHierarchy(name.c_str());
        skin.bones.push_back({bone, bone ? inverseOf(inFigure(bone)) : Affine()});
    }
    skins.push_back(std::move(skin));
    return true;
}

// As the engine skins it: relative to its parent, in the frame of the figure.
void Extent::add(const Skin &skin) {
    const Affine toWorld = worldOf(skin.mesh) * inverseOf(inFigure(skin.mesh)) *
                           inverseOf(worldOf(skin.mesh->getParent()));
    std::vector<Affine> moved;
    for (const Bone &bone : skin.bones)
        moved.push_back(bone.node ? toWorld * worldOf(bone.node) * bone.toBone : Affine());
    const SceneSkin &data = *skin.data;
    for (std::size_t i = 0; i < data.vertices.size(); ++i) {
        Vector place;
        for (std::size_t k = i * data.weightsPerVertex; k < (i + 1) * data.weightsPerVertex; ++k)
            if (data.boneWeights[k] != 0)
                place += moved[data.boneIndices[k]](data.vertices[i]) * double(data.boneWeights[k]);
        points.push_back(place);
    }
}

void Extent::add() {
    walk(scene, [this](RVNODE *node) {
        if (!followed.count(node))
            addVertices(node, points);
    });
    for (const Skin &skin : skins)
        add(skin);
}

Sphere Extent::sphere() const { return points.empty() ? sphereAround(scene) : sphereOf(points); }

std::vector<Vector> areaNormals(RVNODE *root, double size) {
    std::vector<Vector> result;
    walk(root, [&](RVNODE *node) {
        const RVMESH *mesh = visibleMesh(node);
        if (!mesh)
            return;
        const Affine world = worldOf(node);
        const auto corner = [&](unsigned int face, int index) {
            const unsigned short vertex = mesh->getFacePtr()[face].vertex[index];
            return world(vectorFrom(mesh->getVertexPtr()[vertex])) * (1 / size);
        };
        for (unsigned int i = 0; i < mesh->getNumberOfFaces(); ++i)
            result.push_back(cross(corner(i, 1) - corner(i, 0), corner(i, 2) - corner(i, 0)));
    });
    return result;
}

} // namespace ravolt::tool
