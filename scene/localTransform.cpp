// Invariants: `nesting` counts the living scopes, `room` the free entries of the driver's
// stack. Both are measured anew by each outermost scope, since an application may have pushed
// matrices of its own.

#include "scene/localTransform.h"

#include "ravolt/RVOPENGL.h"

namespace ravolt {

namespace {

unsigned int nesting = 0;
int room = 0;

int measureRoom() {
    GLint size = 0;
    GLint used = 0;
    glGetIntegerv(GL_MAX_MODELVIEW_STACK_DEPTH, &size);
    glGetIntegerv(GL_MODELVIEW_STACK_DEPTH, &used);
    return size - used;
}

void turn(float degrees, float x, float y, float z) {
    if (degrees != 0.0f)
        glRotatef(degrees, x, y, z);
}

} // namespace

void applyRotation(const Z3MVECTOR3D &degrees) {
    turn(degrees.x, 1, 0, 0);
    turn(degrees.y, 0, 1, 0);
    turn(degrees.z, 0, 0, 1);
}

ModelviewScope::ModelviewScope() {
    if (nesting++ == 0)
        room = measureRoom();
    pushed = room > 0;
    if (pushed) {
        --room;
        glPushMatrix();
    } else {
        glGetFloatv(GL_MODELVIEW_MATRIX, saved);
    }
}

ModelviewScope::~ModelviewScope() {
    --nesting;
    if (pushed) {
        ++room;
        glPopMatrix();
    } else {
        glLoadMatrixf(saved);
    }
}

} // namespace ravolt
