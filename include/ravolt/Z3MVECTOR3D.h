#pragma once

// A vector of three floats, a value: x, y, z. All that the vectors have in common (components,
// arithmetic, length, angle, comparison) is in vectorFamily.h.

#include "ravolt/Z3MVECTOR2D.h"
#include "ravolt/api.h"
#include "ravolt/vectorFamily.h"

class RV_API Z3MVECTOR3D : public ravolt::VectorFamily<Z3MVECTOR3D, 3> {
  public:
    // The components.
    float x, y, z;

    // Zero.
    Z3MVECTOR3D() : x(0.0f), y(0.0f), z(0.0f) {}

    // Three numbers of any mix of arithmetic types.
    template <class X, class Y, class Z, ravolt::EnableIf<ravolt::AreNumbers<X, Y, Z>::value> = 0>
    Z3MVECTOR3D(X vx, Y vy, Z vz)
        : x(static_cast<float>(vx)), y(static_cast<float>(vy)), z(static_cast<float>(vz)) {}

    // Copies three floats. A literal 0 does not compile.
    Z3MVECTOR3D(std::nullptr_t) = delete;
    Z3MVECTOR3D(const float *values) : x(values[0]), y(values[1]), z(values[2]) {}

    // Widens, with a z of 0; an assignment from a 2D vector does the same.
    Z3MVECTOR3D(const Z3MVECTOR2D &v) : x(v.x), y(v.y), z(0.0f) {}

    // Cross product.
    Z3MVECTOR3D operator^(const Z3MVECTOR3D &b) const {
        return Z3MVECTOR3D(y * b.z - z * b.y, z * b.x - x * b.z, x * b.y - y * b.x);
    }
};
