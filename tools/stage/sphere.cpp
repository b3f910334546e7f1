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

std::vector<Vector> placesOfVertices(RVNODE *root) {
    std::vector<Vector> places;
    walk(root, [&](RVNODE *node) {
        const RVMESH *mesh = visibleMesh(node);
        if (!mesh)
            return;
        const Affine world = worldOf(node);
        const Z3MVECTOR3D *vertices = mesh->getVertexPtr();
        for (unsigned int i = 0; i < mesh->getNumberOfVertices(); ++i)
            places.push_back(world(vectorFrom(vertices[i])));
    });
    return places;
}

} // namespace

const RVMESH *visibleMesh(const RVNODE *node) {
    if (node->getType() != RV_NODE_TYPE_MESH)
        return nullptr;
    const RVMESH *mesh = static_cast<const RVMESH *>(node);
    return !mesh->isHidden() && mesh->getNumberOfFaces() > 0 ? mesh : nullptr;
}

Sphere sphereAround(RVNODE *root) {
    const std::vector<Vector> places = placesOfVertices(root);
    Sphere sphere;
    if (places.empty())
        return sphere;
    Vector low = places[0], high = places[0];
    for (const Vector &p : places) {
        low = {std::min(low.x, p.x), std::min(low.y, p.y), std::min(low.z, p.z)};
        high = {std::max(high.x, p.x), std::max(high.y, p.y), std::max(high.z, p.z)};
    }
    sphere.center = (low + high) * 0.5;
    sphere.lowest = low.y;
    for (const Vector &p : places)
        sphere.radius = std::max(sphere.radius, length(p - sphere.center));
    return sphere;
}

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
