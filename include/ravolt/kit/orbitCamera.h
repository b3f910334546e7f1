#pragma once

#include "ravolt/Z3MVECTOR3D.h"
#include "ravolt/kit/camera.h"
#include "ravolt/kit/smoothedValue.h"

namespace ravolt::kit {

// A camera that goes round a centre and looks at it.
class OrbitCamera : public Camera {
  public:
    // At (0, 0, 0), seen from 10 units away.
    OrbitCamera();

    // Dragging turns, the wheel zooms, and dragging with the pan button shifts the centre, so that
    // it follows the pointer.
    void handle(const Input &input) override;
    void update(double seconds) override;

    // The centre, at once.
    void setCenter(const Z3MVECTOR3D &point);
    Z3MVECTOR3D getCenter() const;
    // Moves the centre, smoothly: units to the right and upwards in the view.
    void pan(double right, double up);

    // From the eye to the centre, at once; within the limits, which are 0.01 and 1e6 by default.
    // Ignored for 0 and less.
    void setDistance(double units);
    double getDistance() const;
    void setDistanceLimits(double nearest, double farthest);
    // Goes nearer, smoothly: each step by a tenth of the distance; farther for negative steps.
    void zoom(double steps);
    // Each step leads to this part of the distance instead, 0.9 by default. Ignored for 0 and less.
    void setZoomStep(double part);

    // For `handle`: button 3 of SDL's by default; 0 for no button.
    void setPanButton(int button) { panButton = button; }

    // How fast centre and distance approach their goals; 10 per second by default.
    void setMoveRate(double perSecond);

    // Moves the eye at once; the centre stays in front of it, at the present distance.
    void setPosition(const Z3MVECTOR3D &point) override;
    Z3MVECTOR3D getPosition() const override;

  private:
    SmoothedValue x, y, z; // of the centre
    SmoothedValue logDistance;
    double lowestLog, highestLog, logZoomStep;
    int panButton = 3;
    bool panning = false;
};

} // namespace ravolt::kit
