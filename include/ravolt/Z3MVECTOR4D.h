#pragma once

// A vector of four floats, a value: x, y, z, w. It is also a colour (red, green, blue, alpha) and a
// quaternion, w being the scalar part. All that the vectors have in common (components, arithmetic,
// length, angle, comparison) is in vectorFamily.h. A new one has a w of 1, but reset() makes all
// four components 0.

#include "ravolt/Z3MVECTOR2D.h"
#include "ravolt/Z3MVECTOR3D.h"
#include "ravolt/api.h"
#include "ravolt/vectorFamily.h"

class RV_API Z3MVECTOR4D : public ravolt::VectorFamily<Z3MVECTOR4D, 4> {
  public:
    // The components.
    float x, y, z, w;

    // (0, 0, 0, 1): the origin, opaque black, the identity quaternion.
    Z3MVECTOR4D() : x(0.0f), y(0.0f), z(0.0f), w(1.0f) {}

    // Four numbers of any mix of arithmetic types.
    template <class X, class Y, class Z, class W,
              ravolt::EnableIf<ravolt::AreNumbers<X, Y, Z, W>::value> = 0>
    Z3MVECTOR4D(X vx, Y vy, Z vz, W vw)
        : x(static_cast<float>(vx)), y(static_cast<float>(vy)), z(static_cast<float>(vz)),
          w(static_cast<float>(vw)) {}

    // Copies four floats. A literal 0 does not compile.
    Z3MVECTOR4D(std::nullptr_t) = delete;
    Z3MVECTOR4D(const float *values) : x(values[0]), y(values[1]), z(values[2]), w(values[3]) {}

    // Widen, with a z of 0 and a w of 1; assignments from 2D and 3D vectors do the same.
    Z3MVECTOR4D(const Z3MVECTOR2D &v) : x(v.x), y(v.y), z(0.0f), w(1.0f) {}
    Z3MVECTOR4D(const Z3MVECTOR3D &v) : x(v.x), y(v.y), z(v.z), w(1.0f) {}

    // On purpose: the length of (v.x - x, v.y - y, v.z - z, v.z - w), with v.z in it twice.
    float distance(const Z3MVECTOR3D &v) const {
        return Z3MVECTOR4D(v.x - x, v.y - y, v.z - z, v.z - w).length();
    }

    // (0, 0, 0, 1); returns a copy.
    Z3MVECTOR4D quaternionSetIdentity() { return set(0.0f, 0.0f, 0.0f, 1.0f); }

    // The quaternion of three rotations, by angles in radians (Z3MMATRIX takes degrees); returns a
    // copy. On purpose: the first angle is about y, the second about x, the third about z. It is
    // the product of the three in this order, y times x times z, so that z is applied first.
    Z3MVECTOR4D quaternionSetEulers(float angleX, float angleY, float angleZ);
    Z3MVECTOR4D quaternionSetEulers(const Z3MVECTOR3D &angles);

    // On purpose: x, y and z themselves. It is not the inverse of quaternionSetEulers.
    Z3MVECTOR3D quaternionGetEulers() const { return Z3MVECTOR3D(x, y, z); }

    // The axis of the rotation in x, y, z and its angle in w, in radians. The axis is (0, 1, 0)
    // where there is no rotation.
    Z3MVECTOR4D quaternionGetAxisAngles() const;

    // The conjugate, which is the inverse of a unit quaternion: a new one, or in place with a copy
    // as the result.
    Z3MVECTOR4D quaternionInverted() const { return Z3MVECTOR4D(-x, -y, -z, w); }
    Z3MVECTOR4D quaternionInvert() { return *this = quaternionInverted(); }

    // The Hamilton product, this times `q`.
    Z3MVECTOR4D quaternionMultiply(Z3MVECTOR4D q) const;
};
