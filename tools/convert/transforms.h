#pragma once

// Transforms of nodes. A model transforms its nodes by any affine matrix, the scene format by a
// position and a rotation alone. Each matrix is decomposed into those two and a residual (scale,
// shear and mirroring), which is applied to the vertices of the node and to the positions of its
// children. All in double precision.

#include "tools/common/algebra.h"

namespace ravolt::tool {

// A node relative to its parent, and the residual for its vertices and its children:
//   parentResidual * local = translation(position) * rotation(degrees) * residual
// `position` and `degrees` are rounded to floats, and `residual` makes up for the
// rounding of the angles, so errors do not add up along a branch.
struct Placement {
    Vector position;
    Vector degrees;
    Matrix residual;
};

Placement decompose(const Affine &local, const Matrix &parentResidual);

// The same rotation by the equivalent angles nearest to `near`, so that an animation has no jumps
// from one frame to the next: by whole turns, to the other equivalent triple of angles, or where
// the second angle is a quarter turn and only the sum or difference of the other two counts.
Placement turnedNear(const Placement &placement, const Vector &near);

} // namespace ravolt::tool
