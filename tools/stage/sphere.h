#pragma once

// The extent of a scene.

#include "tools/convert/algebra.h"

#include <vector>

class RVMESH;
class RVNODE;

namespace ravolt::tool {

struct Sphere {
    Vector center;
    double radius = 0;
    double lowest = 0; // height of the scene's lowest point
};

// Around all vertices of the visible meshes under `root`, in the world. Needs the live engine.
// The radius is 0 when there are none.
Sphere sphereAround(RVNODE *root);

// The triangles of the visible meshes as vectors along their normals, each as long as twice its
// area; scaled by the scene's own size, so that nothing overflows.
std::vector<Vector> facings(RVNODE *root, double size);

// The node as a mesh that is to be seen, or NULL.
const RVMESH *visibleMesh(const RVNODE *node);

} // namespace ravolt::tool
