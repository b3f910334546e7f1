#pragma once

// A plane, a value: the points p of a p.x + b p.y + c p.z + d = 0, where (a, b, c) is the unit
// normal and d the offset. Distances are signed: positive on the side that the normal points to.

#include "ravolt/Z3MVECTOR3D.h"
#include "ravolt/api.h"

class RV_API Z3MPLANE {
  public:
    // The normal and the offset.
    float a, b, c, d;

    // All four zero.
    Z3MPLANE() : a(0.0f), b(0.0f), c(0.0f), d(0.0f) {}

    // The four as they are: nothing is normalised.
    Z3MPLANE(float normalX, float normalY, float normalZ, float offset)
        : a(normalX), b(normalY), c(normalZ), d(offset) {}
    Z3MPLANE(const Z3MVECTOR3D &normal, float offset)
        : a(normal.x), b(normal.y), c(normal.z), d(offset) {}

    // The plane through three points, which are counter-clockwise as seen from its front.
    Z3MPLANE(const Z3MVECTOR3D &p, const Z3MVECTOR3D &q, const Z3MVECTOR3D &r) {
        Z3MVECTOR3D normal = (q - p) ^ (r - p);
        normal.normalize();
        *this = Z3MPLANE(normal, -(normal % p));
    }

    // On purpose: both are signed, the first too, in spite of its name.
    float distance(const Z3MVECTOR3D &point) const { return signedDistance(point); }
    float signedDistance(const Z3MVECTOR3D &point) const {
        return Z3MVECTOR3D(a, b, c) % point + d;
    }

    // True for a direction whose angle with the normal is 90 degrees or more.
    bool isFrontFacingTo(const Z3MVECTOR3D &direction) const {
        return Z3MVECTOR3D(a, b, c) % direction <= 0.0f;
    }
};
