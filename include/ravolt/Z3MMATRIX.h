#pragma once

// A matrix of 4 by 4 floats, a value, in OpenGL's memory order: `e` can be passed to glLoadMatrixf
// and glMultMatrixf. The axes of a rotation are elements 0 to 2, 4 to 6 and 8 to 10, the
// translation is 12 to 14, and element 15 is normally 1. `A * B` applies A first and then B:
// `T * M` is the current matrix after glMultMatrixf(T), if M was current. Angles are degrees.
// Nothing here allocates or logs.

#include "ravolt/Z3MVECTOR2D.h"
#include "ravolt/Z3MVECTOR3D.h"
#include "ravolt/Z3MVECTOR4D.h"
#include "ravolt/api.h"

class RV_API Z3MMATRIX {
  public:
    // The elements, column by column.
    float e[16];

    // Identity.
    Z3MMATRIX() { setIdentity(); }

    // Copies sixteen floats. A literal 0 does not compile.
    Z3MMATRIX(std::nullptr_t) = delete;
    Z3MMATRIX(const float *elements) {
        for (int i = 0; i < 16; ++i)
            e[i] = elements[i];
    }
    Z3MMATRIX(const Z3MMATRIX &other) = default;
    Z3MMATRIX(float e0, float e1, float e2, float e3, float e4, float e5, float e6, float e7,
              float e8, float e9, float e10, float e11, float e12, float e13, float e14, float e15)
        : e{e0, e1, e2, e3, e4, e5, e6, e7, e8, e9, e10, e11, e12, e13, e14, e15} {}

    // The result is a copy.
    Z3MMATRIX operator=(const Z3MMATRIX &other) {
        for (int i = 0; i < 16; ++i)
            e[i] = other.e[i];
        return *this;
    }

    // (e[r], e[4+r], e[8+r], e[12+r]), and e[4c] to e[4c+3]; (0, 0, 0, 0) outside 0 to 3.
    Z3MVECTOR4D getRow(int r) const {
        if (r < 0 || r > 3)
            return Z3MVECTOR4D(0.0f, 0.0f, 0.0f, 0.0f);
        return Z3MVECTOR4D(e[r], e[4 + r], e[8 + r], e[12 + r]);
    }
    Z3MVECTOR4D getColumn(int c) const {
        if (c < 0 || c > 3)
            return Z3MVECTOR4D(0.0f, 0.0f, 0.0f, 0.0f);
        return Z3MVECTOR4D(e + 4 * c);
    }

    // This first, then `b`.
    Z3MMATRIX operator*(const Z3MMATRIX &b) const {
        Z3MMATRIX result(b);
        for (int i = 0; i < 16; i += 4)
            for (int j = 0; j < 4; ++j)
                result.e[i + j] = e[i] * b.e[j] + e[i + 1] * b.e[4 + j] + e[i + 2] * b.e[8 + j] +
                                  e[i + 3] * b.e[12 + j];
        return result;
    }
    Z3MMATRIX operator*=(const Z3MMATRIX &b) { return *this = *this * b; }

    // Elements 12 to 14; the setters write these and nothing else.
    Z3MVECTOR3D getTranslation() const { return Z3MVECTOR3D(e + 12); }
    void setTranslation(float x, float y, float z) {
        e[12] = x;
        e[13] = y;
        e[14] = z;
    }
    void setTranslation(const Z3MVECTOR3D &v) { setTranslation(v.x, v.y, v.z); }

    // The identity: ones on the diagonal, zeros elsewhere.
    void setIdentity() {
        for (int i = 0; i < 16; ++i)
            e[i] = i % 5 == 0 ? 1.0f : 0.0f;
    }

    // The matrix of glRotatef, all sixteen elements. The axis must be a unit vector.
    void setRotation(float angle, float x, float y, float z);

    // On purpose: these leave a 1 in element 12 and do not touch element 15.
    void setRotationX(float angle);
    void setRotationY(float angle);
    void setRotationZ(float angle);

    // Writes elements 0, 5 and 10 only: a rotation is not scaled, its diagonal is replaced.
    void setScaling(const Z3MVECTOR3D &scale) {
        e[0] = scale.x;
        e[5] = scale.y;
        e[10] = scale.z;
    }

    // Exchanges rows and columns, in place.
    void transpose();

    // The inverse of an affine matrix, new or in place. Elements 3, 7, 11 and 15 of the source are
    // taken as 0, 0, 0 and 1, and a determinant of 0 gives infinities.
    Z3MMATRIX inverse() const;
    void invert() { *this = inverse(); }

    // Of the upper left 3 by 3 block.
    float determinant() const;

    // A direction: no translation. A w is ignored.
    Z3MVECTOR3D rotate(const Z3MVECTOR2D &v) const {
        return Z3MVECTOR3D(v.x * e[0] + v.y * e[4], v.x * e[1] + v.y * e[5],
                           v.x * e[2] + v.y * e[6]);
    }
    Z3MVECTOR3D rotate(const Z3MVECTOR3D &v) const {
        return Z3MVECTOR3D(v.x * e[0] + v.y * e[4] + v.z * e[8],
                           v.x * e[1] + v.y * e[5] + v.z * e[9],
                           v.x * e[2] + v.y * e[6] + v.z * e[10]);
    }
    Z3MVECTOR3D rotate(const Z3MVECTOR4D &v) const { return rotate(Z3MVECTOR3D(v.x, v.y, v.z)); }

    // A point, with translation and no division by w. A missing z counts as 0 and a missing w as 1.
    Z3MVECTOR4D transform(const Z3MVECTOR2D &v) const { return transform(Z3MVECTOR4D(v)); }
    Z3MVECTOR4D transform(const Z3MVECTOR3D &v) const { return transform(Z3MVECTOR4D(v)); }
    Z3MVECTOR4D transform(const Z3MVECTOR4D &v) const {
        return Z3MVECTOR4D(v.x * e[0] + v.y * e[4] + v.z * e[8] + v.w * e[12],
                           v.x * e[1] + v.y * e[5] + v.z * e[9] + v.w * e[13],
                           v.x * e[2] + v.y * e[6] + v.z * e[10] + v.w * e[14],
                           v.x * e[3] + v.y * e[7] + v.z * e[11] + v.w * e[15]);
    }

    // A pair of conversions. On purpose: their sense of rotation is opposite to that of
    // setRotation, so toQuaterion of a matrix made by setRotation is the conjugate of its rotation.
    // fromQuaternion overwrites all sixteen elements and returns a copy.
    // On purpose: where the sum of elements 0, 5 and 10 is not above -1, as for half a turn, and
    // element 0 or element 10 is the largest of the three, toQuaterion gives the conjugate of what
    // it gives otherwise.
    Z3MMATRIX fromQuaternion(Z3MVECTOR4D q);
    Z3MVECTOR4D toQuaterion() const;

    // The quaternion of the rotation in the sense of setRotation; the engine uses this one.
    Z3MVECTOR4D toQuaternionAlt() const;

    // The angles about x, y and z in degrees. An element 4 beyond 0.998 counts as a pole: the angle
    // about y is then 90 or -90, and that about z 0.
    Z3MVECTOR3D toEuler() const;
};
