#pragma once

// A node's transform has one definition. Used by the pass, the skeleton pass and the final matrix.
// It is computed as OpenGL's matrix stack does, in single precision and in its order of steps, so
// that OpenGL is called only where it must use the result.

#include "ravolt/Z3MVECTOR3D.h"

class RVNODE;
class Z3MMATRIX;

namespace ravolt {

// Multiplies the node's own transform onto the matrix of its parent. Defined in scene/RVNODE.cpp.
void applyLocalTransform(const RVNODE &node, Z3MMATRIX &matrix);

// Turns a matrix about X, Y and Z in this order, as three calls of glRotatef. Turns by exactly zero
// degrees change nothing and are left out.
void applyRotation(const Z3MVECTOR3D &degrees, Z3MMATRIX &matrix);

// Turns OpenGL's current matrix likewise.
void applyRotation(const Z3MVECTOR3D &degrees);

} // namespace ravolt
