// The members for quaternions that are longer than a line. All angles are radians, and quaternions
// are assumed to be unit quaternions.

#include "ravolt/Z3MVECTOR4D.h"

#include <cmath>

Z3MVECTOR4D Z3MVECTOR4D::quaternionSetEulers(float angleX, float angleY, float angleZ) {
    const float sx = std::sin(angleX / 2.0f), cx = std::cos(angleX / 2.0f);
    const float sy = std::sin(angleY / 2.0f), cy = std::cos(angleY / 2.0f);
    const float sz = std::sin(angleZ / 2.0f), cz = std::cos(angleZ / 2.0f);
    return set(sx * cy * sz + cx * sy * cz, //
               sx * cy * cz - cx * sy * sz, //
               cx * cy * sz - sx * sy * cz, //
               sx * sy * sz + cx * cy * cz);
}

Z3MVECTOR4D Z3MVECTOR4D::quaternionSetEulers(const Z3MVECTOR3D &angles) {
    return quaternionSetEulers(angles.x, angles.y, angles.z);
}

Z3MVECTOR4D Z3MVECTOR4D::quaternionGetAxisAngles() const {
    constexpr float smallestAngle = 0.0001f;
    const float a = 2.0f * std::acos(w);
    if (!(std::abs(a) >= smallestAngle))
        return Z3MVECTOR4D(0.0f, 1.0f, 0.0f, a);
    const float r = 1.0f / std::sin(a / 2.0f);
    return Z3MVECTOR4D(x * r, y * r, z * r, a);
}

Z3MVECTOR4D Z3MVECTOR4D::quaternionMultiply(Z3MVECTOR4D q) const {
    return Z3MVECTOR4D(w * q.x + x * q.w + y * q.z - z * q.y, //
                       w * q.y + y * q.w + z * q.x - x * q.z, //
                       w * q.z + z * q.w + x * q.y - y * q.x, //
                       w * q.w - x * q.x - y * q.y - z * q.z);
}
