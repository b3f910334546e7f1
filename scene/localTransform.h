#pragma once

// A node's transform has one definition, and OpenGL's modelview stack is what computes it. Used by
// the pass, the skeleton pass and the final matrix. Needs the live context in modelview mode.

#include "ravolt/Z3MVECTOR3D.h"

class RVNODE;

namespace ravolt {

// Multiplies the node's own transform onto the modelview matrix. Defined in scene/RVNODE.cpp.
void applyLocalTransform(const RVNODE &node);

// Turns the modelview matrix about X, Y and Z in this order. Turns by exactly zero degrees change
// nothing and are left out.
void applyRotation(const Z3MVECTOR3D &degrees);

// Restores the modelview matrix at the end of its scope: glPushMatrix and glPopMatrix, and,
// where the driver's stack is full, a copy of the matrix, so that trees may be of any depth.
// Objects are nested, never moved.
class ModelviewScope {
  public:
    ModelviewScope();
    ~ModelviewScope();
    ModelviewScope(const ModelviewScope &) = delete;
    ModelviewScope &operator=(const ModelviewScope &) = delete;

  private:
    bool pushed;
    float saved[16]; // when not pushed
};

} // namespace ravolt
