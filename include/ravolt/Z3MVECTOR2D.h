#pragma once

// A vector of two floats, a value: x, y. All that the vectors have in common (components,
// arithmetic, length, angle, comparison) is in vectorFamily.h.

#include "ravolt/api.h"
#include "ravolt/vectorFamily.h"

class RV_API Z3MVECTOR2D : public ravolt::VectorFamily<Z3MVECTOR2D, 2> {
  public:
    // The components.
    float x, y;

    // Zero.
    Z3MVECTOR2D() : x(0.0f), y(0.0f) {}

    // Two numbers of any mix of arithmetic types.
    template <class X, class Y, ravolt::EnableIf<ravolt::AreNumbers<X, Y>::value> = 0>
    Z3MVECTOR2D(X vx, Y vy) : x(static_cast<float>(vx)), y(static_cast<float>(vy)) {}

    // Copies two floats. A literal 0 does not compile.
    Z3MVECTOR2D(std::nullptr_t) = delete;
    Z3MVECTOR2D(const float *values) : x(values[0]), y(values[1]) {}
};
