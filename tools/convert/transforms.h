#pragma once

// Transforms of nodes. A model places its nodes by any affine matrix; the scene format by a
// position and a rotation alone. Each matrix is taken apart into those two and a rest (scale, shear
// and mirroring) that goes into the vertices of the node and into the places of its children. All
// of it in double precision.

#include "tools/common/algebra.h"

namespace ravolt::tool {

// A node relative to its parent, and the residual for its vertices and its children:
//   parentResidual * local = translation(position) * rotation(degrees) * residual
// `position` and `degrees` are rounded to what a float holds, and `residual` makes up for the
// rounding of the angles, so errors do not add up along a branch.
struct Placement {
    Vector position;
    Vector degrees;
    Matrix residual;
};

Placement place(const Affine &local, const Matrix &parentResidual);

// The same rotation by those angles that lie nearest to `near`: without jumps from one frame of a
// movement to the next, be it by whole turns, by the other three angles that mean the same, or
// where the second angle is a quarter turn and the other two say the same.
Placement turnedNear(const Placement &placement, const Vector &near);

} // namespace ravolt::tool
