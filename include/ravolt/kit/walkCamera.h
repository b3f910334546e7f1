#pragma once

#include "ravolt/Z3MVECTOR3D.h"
#include "ravolt/kit/camera.h"
#include "ravolt/kit/smoothedValue.h"

#include <functional>

namespace ravolt::kit {

// A camera that walks on a ground. It is never below the ground; where it would rise more steeply
// than the slope that it can walk up, it slides along or stops; where the ground drops more steeply
// it falls.
class WalkCamera : public Camera {
  public:
    // The height (Y) of the ground at a point (X, Z), for any numbers; see TerrainHeights. A height
    // that is not finite cannot be walked on.
    using Ground = std::function<double(double x, double z)>;

    // At (0, 0), on the ground; level ground at height 0 without a function.
    explicit WalkCamera(Ground ground = nullptr, double eyeHeight = 1.7);

    // w and s, or the arrows, walk forwards and backwards, a and d aside; Shift hurries.
    void handle(const Input &input) override;
    void update(double seconds) override;

    // The direction to walk in until the next call: -1 to 1 forwards and to the right, level.
    // Longer than 1 together they have a length of 1.
    void move(double forward, double right);

    // Units per second: 3 by default; times 4 while it hurries. The speed approaches its goal at a
    // rate of 8 per second.
    void setSpeed(double unitsPerSecond) { assign(speed, unitsPerSecond); }
    void setHurryFactor(double factor) { assign(hurryFactor, factor); }
    void setHurrying(bool on) { hurrying = on; }
    void setMoveRate(double perSecond);

    // The steepest slope to walk up and down, in degrees from 0 to 89; 50 by default.
    void setMaxSlope(double degrees);
    // Of the eye, above the ground.
    void setEyeHeight(double units) { assign(eyeHeight, units); }
    // Units per second squared, of a fall; 9.81 by default.
    void setGravity(double value) { assign(gravity, value); }

    // Stops there. The eye is at least at its height above the ground; above that it falls.
    void setPosition(const Z3MVECTOR3D &point) override;
    // Stops on the ground there.
    void setOnGround(double atX, double atZ);
    Z3MVECTOR3D getPosition() const override { return {x, feet + eyeHeight, z}; }
    bool isFalling() const { return falling; }

  private:
    double groundAt(double atX, double atZ) const;
    bool canStep(double fromX, double fromZ, double toX, double toZ) const;
    void step(double dx, double dz);
    void goTo(double toX, double toZ);
    void fall(double seconds);
    void stop();

    Ground ground;
    double x = 0, z = 0, feet = 0;
    SmoothedValue speedX, speedZ; // in world axes
    double fallingSpeed = 0;
    bool falling = false;
    double forwards = 0, rightwards = 0;
    double speed = 3, hurryFactor = 4;
    bool hurrying = false;
    double steepest; // the tangent
    double eyeHeight, gravity = 9.81;
};

} // namespace ravolt::kit
