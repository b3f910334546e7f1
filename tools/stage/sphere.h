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

struct Box {
    Vector low, high;
    bool empty = true;

    void take(const Vector &place);
};

// Around all vertices of the visible meshes under `root`, in the world. Needs the live engine.
// The radius is 0 when there are none.
Sphere sphereAround(RVNODE *root);

// The room that a scene takes while it moves. Rigid meshes are measured by their vertices, skinned
// ones by their bones, with as much around them as when the scene stands as it was loaded. Make it
// at that time.
class Extent {
  public:
    explicit Extent(RVNODE *root);

    void add(); // the scene as it stands now
    // Without any such time the one around the scene as it was loaded.
    Sphere sphere() const;

  private:
    Box bones() const;

    RVNODE *scene;
    Vector below, above; // what of the skins is beyond their bones
    std::vector<Vector> places;
};

// The triangles of the visible meshes as vectors along their normals, each as long as twice its
// area; scaled by the scene's own size, so that nothing overflows.
std::vector<Vector> facings(RVNODE *root, double size);

// The node as a mesh that is to be seen, or NULL.
const RVMESH *visibleMesh(const RVNODE *node);

} // namespace ravolt::tool
