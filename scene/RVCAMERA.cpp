// Invariant: the statics store the view of the last render, and `thisPassCamera` an existing camera
// or NULL.

#include "ravolt/RVCAMERA.h"

#include "ravolt/RVOPENGL.h"

namespace {

Z3MVECTOR3D eyeOf(const RVCAMERA &camera) {
    return camera.getPositioning() == RV_NODE_POSITIONING_MATRIX
               ? camera.getMatrix().getTranslation()
               : camera.getPosition();
}

// On purpose: a matrix is the view itself and not inverted, the vectors are undone in an order of
// their own, and the origin is ignored.
void applyOwnView(const RVCAMERA &camera) {
    if (camera.getPositioning() == RV_NODE_POSITIONING_MATRIX) {
        glMultMatrixf(camera.getMatrix().e);
        return;
    }
    const Z3MVECTOR3D degrees = camera.getRotation();
    const Z3MVECTOR3D position = camera.getPosition();
    glRotatef(-degrees.z, 0, 0, 1);
    glRotatef(-degrees.x, 1, 0, 0);
    glRotatef(-degrees.y, 0, 1, 0);
    glTranslatef(-position.x, -position.y, -position.z);
}

// On purpose: the whole matrix is replaced, so the pre-rotation has no effect on an aimed camera.
void lookAt(const RVCAMERA &camera, const Z3MVECTOR3D &centre) {
    const Z3MVECTOR3D from = eyeOf(camera);
    Z3MVECTOR3D z = from - centre;
    z.normalize();
    Z3MVECTOR3D x = camera.getUpDirection() ^ z;
    Z3MVECTOR3D y = z ^ x;
    x.normalize();
    y.normalize();
    const Z3MMATRIX turn(x.x, y.x, z.x, 0, x.y, y.y, z.y, 0, x.z, y.z, z.z, 0, 0, 0, 0, 1);
    glLoadMatrixf(turn.e);
    glTranslatef(-from.x, -from.y, -from.z);
}

} // namespace

RVCAMERA *RVCAMERA::thisPassCamera = nullptr;
Z3MVECTOR3D RVCAMERA::cameraPosition;
Z3MMATRIX RVCAMERA::cameraMatrix;

RVCAMERA::RVCAMERA() : upDirection(0, 1, 0) { initType(RV_NODE_TYPE_CAMERA); }

RVCAMERA::RVCAMERA(const RVCAMERA &other) : RVNODE(other) {
    *this = other;
    setDynamicClass(RV_NODE_TYPE_CAMERA);
}

// The camera may be a temporary one: its view is still valid afterwards, the pointer is not.
RVCAMERA::~RVCAMERA() {
    if (thisPassCamera == this)
        thisPassCamera = nullptr;
}

bool RVCAMERA::render(void *) {
    glLoadIdentity();
    glRotatef(preRotation.x, 1, 0, 0);
    glRotatef(preRotation.y, 0, 1, 0);
    glRotatef(preRotation.z, 0, 0, 1);

    RVNODE *const aim = getTargetNode();
    if (!aim) {
        applyOwnView(*this);
    } else if (aim == this) {
        lookAt(*this, getTarget());
    } else {
        const Z3MVECTOR3D centre = aim->getFinalMatrix(nullptr).getTranslation();
        glLoadIdentity();
        lookAt(*this, centre);
    }

    cameraPosition = eyeOf(*this);
    glGetFloatv(GL_MODELVIEW_MATRIX, cameraMatrix.e);
    thisCameraMatrix = cameraMatrix;
    thisPassCamera = this;
    return true;
}

void RVCAMERA::moveDoom(float x, float y, float z) {
    const float *m = cameraMatrix.e;
    const Z3MVECTOR3D right(m[0], m[4], m[8]);
    const Z3MVECTOR3D up(m[1], m[5], m[9]);
    const Z3MVECTOR3D back(m[2], m[6], m[10]);
    setDirection(right * x + up * y + back * z);
    move(getDirection());
}
