#pragma once

#include "ravolt/RVNODE.h"
#include "ravolt/Z3MMATRIX.h"
#include "ravolt/Z3MVECTOR3D.h"
#include "ravolt/api.h"

// The node that makes the view. RAVOLT::begin3D renders it, which loads the modelview matrix from
// the camera's own fields (its parent and its origin are ignored) and stores it for the rest of
// the frame. Needs the live OpenGL context.
//
// Without a target node the view is made in one of two ways, by the positioning:
// - RV_NODE_POSITIONING_VECTORS: the camera is at `position`, rolled by `rotation.z` about its
//   view axis, then pitched by `rotation.x`, then turned by `rotation.y` about the world's Y, in
//   degrees. All other nodes have another order (see RVNODE).
// - RV_NODE_POSITIONING_MATRIX: `matrix` is the view itself, world to eye; it is not inverted.
// With a target node (setTargetNode, setTarget) the camera looks from its position at the target,
// with `upDirection` upwards. Its position is `position` or, by matrix, the last column of
// `matrix`. A target at the camera's own position, or exactly along `upDirection`, defines no view:
// the matrix is then degenerate, without a log line, and nothing is seen. Choose another up
// direction for such a view.
class RV_API RVCAMERA : public RVNODE {
  public:
    RVCAMERA();
    ~RVCAMERA() override;

    // Loads the view; the argument is ignored. Always true.
    bool render(void *) override;

    RVCAMERA(const RVCAMERA &other);
    RVCAMERA &operator=(const RVCAMERA &) = default;

    // Rotation of the eye space about X, then Y, then Z in degrees, outermost in the view; no
    // effect on an aimed camera.
    void setPreRotation(float x, float y, float z) { preRotation = Z3MVECTOR3D(x, y, z); }
    void setPreRotation(const Z3MVECTOR3D &value) { preRotation = value; }
    Z3MVECTOR3D getPreRotation() const { return preRotation; }

    // The up direction of an aimed camera: (0, 1, 0) by default.
    void setUpDirection(const Z3MVECTOR3D &value) { upDirection = value; }
    Z3MVECTOR3D getUpDirection() const { return upDirection; }

    // World to eye, as of this camera's last render.
    Z3MMATRIX *getThisCameraMatrix() { return &thisCameraMatrix; }

    // The view of the last render, whichever camera it was. The position is that camera's
    // `position` or, by matrix, the last column of its `matrix`, which without a target node is the
    // translation of the view and not the position of the eye. The camera is NULL before the first
    // render and after that camera was deleted.
    static Z3MMATRIX *getCameraMatrix() { return &cameraMatrix; }
    static Z3MVECTOR3D getCameraPosition() { return cameraPosition; }
    static RVCAMERA *getThisPassCamera() { return thisPassCamera; }

    // Moves along the right, up and back axes of the last rendered view: a negative z goes
    // forward. The step in world space is stored in `direction`.
    void moveDoom(float x, float y, float z);
    void moveDoom(const Z3MVECTOR3D &step) { moveDoom(step.x, step.y, step.z); }

  private:
    Z3MVECTOR3D preRotation;
    Z3MVECTOR3D upDirection;
    Z3MMATRIX thisCameraMatrix;

    static RVCAMERA *thisPassCamera;
    static Z3MVECTOR3D cameraPosition;
    static Z3MMATRIX cameraMatrix;
};
