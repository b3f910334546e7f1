// The mirror of OpenGL's matrix stacks. A matrix call replaces the top with `matrix * top`, a
// product of Z3MMATRIX, which applies its left side first. Both indices are always valid.

#include "ravolt/shadowMatrixStack.h"

#include "ravolt/Z3MMATRIX.h"
#include "ravolt/zlf.h"

#include <GL/gl.h>

#include <algorithm>
#include <iterator>

namespace {

struct MatrixStack {
    static constexpr unsigned int limit = 32; // of the index

    // On purpose: one slot more than the 32 of a stack, since the 32nd push succeeds.
    Z3MMATRIX slot[limit + 1];
    unsigned int index = 0; // of the top

    Z3MMATRIX &top() { return slot[index]; }
    bool isFull() const { return index >= limit; }
    bool isEmpty() const { return index == 0; }
};

MatrixStack modelview, projection;
MatrixStack *current = &modelview;

void multiply(const Z3MMATRIX &matrix) { current->top() = matrix * current->top(); }

MatrixStack *stackOf(GLenum name, GLenum modelviewName, GLenum projectionName) {
    if (name == modelviewName)
        return &modelview;
    return name == projectionName ? &projection : nullptr;
}

} // namespace

void glWrapperMatrixMode(unsigned int mode) {
    if (MatrixStack *chosen = stackOf(mode, GL_MODELVIEW, GL_PROJECTION))
        current = chosen;
    glMatrixMode(mode);
}

void glWrapperLoadIdentity() {
    current->top().setIdentity();
    glLoadIdentity();
}

void glWrapperLoadMatrixf(const float *matrix) {
    if (!matrix) {
        zlfLog("   [!] Invalid params @ glWrapperLoadMatrixf\n");
        return;
    }
    current->top() = Z3MMATRIX(matrix);
    glLoadMatrixf(matrix);
}

void glWrapperMultMatrixf(const float *matrix) {
    if (!matrix) {
        zlfLog("   [!] Invalid params @ glWrapperMultMatrixf\n");
        return;
    }
    multiply(Z3MMATRIX(matrix));
    glMultMatrixf(matrix);
}

void glWrapperRotatef(float angle, float x, float y, float z) {
    Z3MMATRIX rotation;
    rotation.setRotation(angle, x, y, z);
    multiply(rotation);
    glRotatef(angle, x, y, z);
}

void glWrapperTranslatef(float x, float y, float z) {
    Z3MMATRIX translation;
    translation.setTranslation(x, y, z);
    multiply(translation);
    glTranslatef(x, y, z);
}

void glWrapperPushMatrix() {
    if (current->isFull()) {
        zlfLog("   [!] Stack overflow in glWrapper\n");
        return;
    }
    const Z3MMATRIX copy = current->top();
    ++current->index;
    current->top() = copy;
    glPushMatrix();
}

void glWrapperPopMatrix() {
    if (current->isEmpty()) {
        zlfLog("   [!] Stack underflow in glWrapper\n");
        return;
    }
    current->top().setIdentity();
    --current->index;
    glPopMatrix();
}

void glWrapperFrustum(double left, double right, double bottom, double top, double zNear,
                      double zFar) {
    const double width = right - left, height = top - bottom, depth = zFar - zNear;
    Z3MMATRIX frustum;
    // On purpose: no factor of the near plane, and the last column and row exchanged.
    frustum.e[0] = static_cast<float>(2 / width);
    frustum.e[5] = static_cast<float>(2 / height);
    frustum.e[2] = static_cast<float>((right + left) / width);
    frustum.e[6] = static_cast<float>((top + bottom) / height);
    frustum.e[10] = static_cast<float>(-(zFar + zNear) / depth);
    frustum.e[11] = static_cast<float>(-(2 * zFar * zNear) / depth);
    frustum.e[14] = -1;
    frustum.e[15] = 0;
    multiply(frustum);
    glFrustum(left, right, bottom, top, zNear, zFar);
}

void glWrapperOrtho(double left, double right, double bottom, double top, double zNear,
                    double zFar) {
    const double width = right - left, height = top - bottom, depth = zFar - zNear;
    Z3MMATRIX ortho;
    ortho.e[0] = static_cast<float>(2 / width);
    ortho.e[5] = static_cast<float>(2 / height);
    ortho.e[10] = static_cast<float>(-2 / depth);
    ortho.e[12] = static_cast<float>(-(right + left) / width);
    ortho.e[13] = static_cast<float>(-(top + bottom) / height);
    ortho.e[14] = static_cast<float>(-(zFar + zNear) / depth);
    multiply(ortho);
    glOrtho(left, right, bottom, top, zNear, zFar);
}

void glWrapperGetFloatv(unsigned int name, float *matrix) {
    if (!matrix) {
        zlfLog("   [!] Invalid params @ glWrapperGetFloatv\n");
        return;
    }
    if (MatrixStack *stack = stackOf(name, GL_MODELVIEW_MATRIX, GL_PROJECTION_MATRIX))
        std::copy(std::begin(stack->top().e), std::end(stack->top().e), matrix);
}
