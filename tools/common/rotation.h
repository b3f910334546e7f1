#pragma once

#include "tools/common/algebra.h"

namespace ravolt::tool {

// Angles in degrees and the rotation that the engine makes of them: about X, then Y, then Z, each
// by glRotatef, so that the matrix is X * Y * Z.
Matrix rotationFromDegrees(const Vector &degrees);
Vector degreesFromRotation(const Matrix &rotation);

} // namespace ravolt::tool
