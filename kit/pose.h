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

// The rotation of a bone. Degrees that a node or a frame has are preserved: degrees made of a
// quaternion are other ones for the same rotation, or differ by rounding.
struct Rotation {
    Quaternion quaternion;
    Z3MVECTOR3D degrees;
    bool hasDegrees = false;

    static Rotation from(const Z3MVECTOR3D &degrees) {
        return {quaternionFromDegrees(degrees), degrees, true};
    }
    Z3MVECTOR3D toDegrees() const {
        return hasDegrees ? degrees : degreesFromQuaternion(quaternion);
    }
};

// Of two unit quaternions, along the shorter arc, at constant speed; `part` from 0 to 1.
Quaternion slerp(const Quaternion &from, const Quaternion &to, double part);

// The same of two rotations, exact at both ends.
Rotation mix(const Rotation &from, const Rotation &to, double part);

// The cosine of half the angle between two rotations, 1 for equal ones.
double similarity(const Quaternion &a, const Quaternion &b);

// Exact at both ends.
inline Z3MVECTOR3D mix(const Z3MVECTOR3D &from, const Z3MVECTOR3D &to, double part) {
    if (part == 1)
        return to;
    const float t = static_cast<float>(part);
    return Z3MVECTOR3D(from.x + (to.x - from.x) * t, from.y + (to.y - from.y) * t,
                       from.z + (to.z - from.z) * t);
}

} // namespace ravolt::kit
