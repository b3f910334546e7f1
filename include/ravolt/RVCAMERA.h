#pragma once

#include "ravolt/RVNODE.h"
#include "ravolt/Z3MMATRIX.h"
#include "ravolt/Z3MVECTOR3D.h"
#include "ravolt/api.h"

// The node that makes the view. RAVOLT::begin3D renders it, which loads the modelview matrix from
// the camera's own fields (a parent plays no part, nor does the origin) and publishes it for the
// rest of the frame. Aim it with setTargetNode and setTarget. Needs the live OpenGL context.
class RV_API RVCAMERA : public RVNODE {
  public:
    RVCAMERA();
    ~RVCAMERA() override;

    // Loads the view; the argument is ignored. Always true.
    bool render(void *) override;

    RVCAMERA(const RVCAMERA &other);
    RVCAMERA &operator=(const RVCAMERA &) = default;

    // Rotation about X, Y and Z in degrees, put before the view; no effect on an aimed camera.
    void setPreRotation(float x, float y, float z) { preRotation = Z3MVECTOR3D(x, y, z); }
    void setPreRotation(const Z3MVECTOR3D &value) { preRotation = value; }
    Z3MVECTOR3D getPreRotation() const { return preRotation; }

    // What is up for an aimed camera: (0, 1, 0) at first.
    void setUpDirection(const Z3MVECTOR3D &value) { upDirection = value; }
    Z3MVECTOR3D getUpDirection() const { return upDirection; }

    // World to eye, as of this camera's last render.
    Z3MMATRIX *getThisCameraMatrix() { return &thisCameraMatrix; }

    // The view of the last render, whichever camera it was. The camera is NULL before the first
    // render and after that camera is gone.
    static Z3MMATRIX *getCameraMatrix() { return &cameraMatrix; }
    static Z3MVECTOR3D getCameraPosition() { return cameraPosition; }
    static RVCAMERA *getThisPassCamera() { return thisPassCamera; }

    // Moves along the right, up and back axes of the last rendered view: a negative z goes
    // forward. The step in world space stays in `direction`.
    void moveDoom(float x, float y, float z);
    void moveDoom(const Z3MVECTOR3D &step) { moveDoom(step.x, step.y, step.z); }

  private:
    Z3MVECTOR3D eye() const;
    void applyOwnView() const;
    void lookAt(const Z3MVECTOR3D &centre) const;

    Z3MVECTOR3D preRotation;
    Z3MVECTOR3D upDirection;
    Z3MMATRIX thisCameraMatrix;

    static RVCAMERA *thisPassCamera;
    static Z3MVECTOR3D cameraPosition;
    static Z3MMATRIX cameraMatrix;
};
