#pragma once

#include "ravolt/Z3MVECTOR3D.h"

#include <functional>

class RVMATERIAL;
class RVNODE;

namespace ravolt::kit {

// A line from the eye into the scene.
struct Ray {
    Z3MVECTOR3D origin;    // on the near plane, in the world
    Z3MVECTOR3D direction; // of length 1
    float length = 0;      // to the far plane; 0: no ray
};

// What is under a pixel.
struct Pick {
    RVNODE *node = nullptr;         // a mesh or a custom node, not owned; NULL for none
    RVMATERIAL *material = nullptr; // of a mesh, NULL for none
    int face = -1;                  // its index in RVMESH::getFacePtr, -1 for none: see Picker
    bool isGround = false;          // the ground of Picker::setGround, and no node
    Z3MVECTOR3D point;              // in the world
    float distance = 0;             // of the point from the origin of the ray

    // Whether there is anything.
    bool isHit() const { return node || isGround; }
};

// Finds what is under a pixel of the window, as the events of the pointer count them: from the top
// left, also in landscape mode, whatever the size of the window and of render target 0, and with
// all effects. Where two nodes share an identifier (RVNODE::setAuxId), the one whose face is there
// is returned. The picture does not change.
class Picker {
  public:
    // What RAVOLT::select does not draw, as the ground of a terrain: the height at a point of the
    // world, or NaN where there is none. It hides nodes that are farther away. `step` is the
    // distance of the points of a ray that are compared with it, in units of the scene: ridges that
    // are thinner may be missed. An empty function for no ground; a step that is not positive is 1.
    void setGround(std::function<float(float x, float z)> height, float step = 1);

    // Between RAVOLT::end3D and begin2D, with the projection that the frame was drawn with. The
    // face is -1 for a skinned mesh, for a custom node, and for a node that was passed more than
    // once where another of its passes is hit. Nothing, with a line in the log, while the engine is
    // not running; nothing outside of the window.
    Pick pick(int x, int y) const;

    // The ray through the middle of a pixel, at the same time.
    static Ray rayAt(int x, int y);

  private:
    bool hitGround(const Ray &ray, float limit, float &distance) const;

    std::function<float(float, float)> ground;
    float groundStep = 1;
};

} // namespace ravolt::kit
