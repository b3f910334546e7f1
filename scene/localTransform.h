#pragma once

// A node's transform has one definition, and OpenGL's modelview stack is what computes it. Used by
// the pass, the skeleton pass and the final matrix. Needs the live context in modelview mode.

class RVNODE;

namespace ravolt {

// Multiplies the node's own transform onto the modelview matrix. Turns by exactly zero degrees
// change nothing and are left out.
void applyLocalTransform(const RVNODE &node);

// Keeps the modelview matrix for as long as the object lives: glPushMatrix and glPopMatrix, and,
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
