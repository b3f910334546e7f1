#pragma once

// The extent of a scene.

#include "tools/common/algebra.h"
#include "tools/stage/skins.h"

#include <set>
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

    void add(const Vector &point);
};

// Around all vertices of the visible meshes under `root`, in the world. Needs the running engine.
// The radius is 0 if there are none.
Sphere sphereAround(RVNODE *root);

// The extent of a scene while it moves, by its vertices, those of skins as their bones move them.
// Create it while the scene is in the pose of its file, in which its skins were bound.
class Extent {
  public:
    // `skins` are those of the scene's file; others count in their pose when they are loaded.
    Extent(RVNODE *root, const std::vector<SceneSkin> &skins);

    void add(); // the scene in its present pose
    // Around all poses that were added; without any, around the scene as it was loaded.
    Sphere sphere() const;

  private:
    struct Bone {
        RVNODE *node; // NULL: the scene does not have it
        Affine toBone;
    };
    struct Skin {
        const SceneSkin *data;
        RVNODE *mesh;
        std::vector<Bone> bones;
    };

    bool bind(const SceneSkin &data, RVNODE *node);
    void add(const Skin &skin);

    RVNODE *scene;
    std::vector<Skin> skins;
    std::set<const RVNODE *> followed; // the meshes of these
    std::vector<Vector> points;
};

// The triangles of the visible meshes as vectors along their normals, each as long as twice its
// area; scaled by the scene's own size, so that nothing overflows.
std::vector<Vector> areaNormals(RVNODE *root, double size);

// The node as a mesh that is to be seen, or NULL.
const RVMESH *visibleMesh(const RVNODE *node);

} // namespace ravolt::tool
