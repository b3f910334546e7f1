#pragma once

// Rotations of bones as quaternions.

#include "ravolt/Z3MVECTOR3D.h"

namespace ravolt::kit {

struct Quaternion {
    double x = 0, y = 0, z = 0, w = 1;
};

// Angles in degrees and the rotation that a node makes of them: about X, then Y, then Z.
Quaternion quaternionFromDegrees(const Z3MVECTOR3D &degrees);
Z3MVECTOR3D degreesFromQuaternion(const Quaternion &rotation);

// Of two unit quaternions, along the shorter arc, at constant speed; `part` from 0 to 1.
Quaternion slerp(const Quaternion &from, const Quaternion &to, double part);

// The cosine of half the angle between two rotations, 1 for equal ones.
double similarity(const Quaternion &a, const Quaternion &b);

inline Z3MVECTOR3D mix(const Z3MVECTOR3D &from, const Z3MVECTOR3D &to, double part) {
    const float t = static_cast<float>(part);
    return Z3MVECTOR3D(from.x + (to.x - from.x) * t, from.y + (to.y - from.y) * t,
                       from.z + (to.z - from.z) * t);
}

} // namespace ravolt::kit
