#pragma once

#include "ravolt/Z3MVECTOR3D.h"
#include "ravolt/kit/camera.h"
#include "ravolt/kit/smoothedValue.h"

namespace ravolt::kit {

// A camera that flies through everything.
class FlyCamera : public Camera {
  public:
    // At (0, 0, 0).
    FlyCamera();

    // w and s, or the arrows, move forwards and backwards, a and d aside, Page up or Space upwards,
    // Page down or c downwards; Shift hurries.
    void handle(const Input &input) override;
    void update(double seconds) override;

    // The direction to fly in until the next call: -1 to 1 forwards, to the right and straight up.
    // Longer than 1 together they have a length of 1.
    void move(double forward, double right, double up);

    // Units per second: 10 by default; times 4 while it hurries. The speed approaches its goal at a
    // rate of 8 per second.
    void setSpeed(double unitsPerSecond) { assign(speed, unitsPerSecond); }
    void setHurryFactor(double factor) { assign(hurryFactor, factor); }
    void setHurrying(bool on) { hurrying = on; }
    void setMoveRate(double perSecond);

    // Forwards is along the view, or level along the ground (off).
    void setLevel(bool on) { level = on; }

    // Stops there.
    void setPosition(const Z3MVECTOR3D &point) override;
    Z3MVECTOR3D getPosition() const override { return {x, y, z}; }

  private:
    double x = 0, y = 0, z = 0;
    SmoothedValue speedX, speedY, speedZ; // in world axes
    double forwards = 0, rightwards = 0, upwards = 0;
    double speed = 10, hurryFactor = 4;
    bool hurrying = false, level = false;
};

} // namespace ravolt::kit
