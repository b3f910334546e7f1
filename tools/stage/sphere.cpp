#include "tools/stage/sphere.h"

#include "tools/stage/walk.h"

#include <algorithm>
#include <ravolt/RVMESH.h>

namespace ravolt::tool {

namespace {

Vector vectorFrom(const Z3MVECTOR3D &v) { return {v.x, v.y, v.z}; }

Affine worldOf(RVNODE *node) {
    const Z3MMATRIX matrix = node->getFinalMatrix(nullptr);
    const float *m = matrix.e; // column by column
    return {matrixOfColumns({m[0], m[1], m[2]}, {m[4], m[5], m[6]}, {m[8], m[9], m[10]}),
            {m[12], m[13], m[14]}};
}

enum class Kind { rigid, skinned, any };

std::vector<Vector> placesOfVertices(RVNODE *root, Kind kind) {
    std::vector<Vector> places;
    walk(root, [&](RVNODE *node) {
        const RVMESH *mesh = visibleMesh(node);
        if (!mesh || (kind != Kind::any && mesh->isSkinned() != (kind == Kind::skinned)))
            return;
        const Affine world = worldOf(node);
        const Z3MVECTOR3D *vertices = mesh->getVertexPtr();
        for (unsigned int i = 0; i < mesh->getNumberOfVertices(); ++i)
            places.push_back(world(vectorFrom(vertices[i])));
    });
    return places;
}

Sphere sphereOf(const std::vector<Vector> &places) {
    Sphere sphere;
    Box box;
    for (const Vector &place : places)
        box.take(place);
    sphere.center = (box.low + box.high) * 0.5;
    sphere.lowest = box.low.y;
    for (const Vector &p : places)
        sphere.radius = std::max(sphere.radius, length(p - sphere.center));
    return sphere;
}

Vector positive(const Vector &v) {
    return {std::max(v.x, 0.0), std::max(v.y, 0.0), std::max(v.z, 0.0)};
}

} // namespace

const RVMESH *visibleMesh(const RVNODE *node) {
    if (node->getType() != RV_NODE_TYPE_MESH)
        return nullptr;
    const RVMESH *mesh = static_cast<const RVMESH *>(node);
    return !mesh->isHidden() && mesh->getNumberOfFaces() > 0 ? mesh : nullptr;
}

Sphere sphereAround(RVNODE *root) { return sphereOf(placesOfVertices(root, Kind::any)); }

void Box::take(const Vector &p) {
    if (empty)
        low = high = p;
    empty = false;
    low = {std::min(low.x, p.x), std::min(low.y, p.y), std::min(low.z, p.z)};
    high = {std::max(high.x, p.x), std::max(high.y, p.y), std::max(high.z, p.z)};
}

Extent::Extent(RVNODE *root) : scene(root) {
    Box skins;
    for (const Vector &place : placesOfVertices(scene, Kind::skinned))
        skins.take(place);
    const Box around = bones();
    if (!skins.empty && !around.empty) {
        below = positive(around.low - skins.low);
        above = positive(skins.high - around.high);
    }
}

// Bones are meshes that are not to be seen themselves.
Box Extent::bones() const {
    Box box;
    walk(scene, [&](RVNODE *node) {
        if (node->getType() == RV_NODE_TYPE_MESH && !visibleMesh(node) && node->getParent())
            box.take(worldOf(node).offset);
    });
    return box;
}

void Extent::add() {
    for (const Vector &place : placesOfVertices(scene, Kind::rigid))
        places.push_back(place);
    const Box box = bones();
    if (!box.empty && (length(below) > 0 || length(above) > 0)) {
        places.push_back(box.low - below);
        places.push_back(box.high + above);
    }
}

Sphere Extent::sphere() const { return places.empty() ? sphereAround(scene) : sphereOf(places); }

std::vector<Vector> facings(RVNODE *root, double size) {
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
