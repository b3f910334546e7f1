#pragma once

#include "ravolt/Z3MVECTOR2D.h"
#include "ravolt/api.h"

// The texture coordinates of a box: a value.
struct RV_API RVBOXCOORD {
    // The whole texture, upright.
    RVBOXCOORD() : RVBOXCOORD(1.0f, 1.0f, false) {}

    // The part from 0 to `u` and `v`, the used fractions of a partly filled texture; `flipped` has
    // its V = 0 at the top.
    RVBOXCOORD(float u, float v, bool flipped)
        : topLeft(0.0f, flipped ? 0.0f : v), topRight(u, flipped ? 0.0f : v),
          bottomLeft(0.0f, flipped ? v : 0.0f), bottomRight(u, flipped ? v : 0.0f) {}

    RVBOXCOORD(const RVBOXCOORD &) = default;
    RVBOXCOORD &operator=(const RVBOXCOORD &) = default;

    // In the order of the vertices of the box's strip.
    Z3MVECTOR2D topLeft, topRight, bottomLeft, bottomRight;
};
