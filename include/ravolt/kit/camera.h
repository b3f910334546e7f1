#pragma once

#include "ravolt/Z3MVECTOR3D.h"
#include "ravolt/kit/smoothedValue.h"

class RVCAMERA;

namespace ravolt::kit {

class Input;

// What the kit's cameras have in common: a position and a direction of view, moved by the user or
// by the application, and applied to an RVCAMERA. In each frame:
//
//     camera.handle(input); // or turn, move, zoom ... by the application itself
//     camera.update(RAVOLT::getFPSfactor());
//     camera.apply(*view);
//
// All motion approaches its goal exponentially and is computed exactly, so it does not depend on
// the frame rate: ten updates of 0.01 s lead to the same place as one of 0.1 s, within rounding.
// Angles are in degrees. Yaw 0 looks along -Z, 90 along -X: a positive turn goes to the left, and
// a positive pitch up. Numbers that are not finite are ignored, and lengths and speeds beyond 1e30
// are limited to it.
class Camera {
  public:
    virtual ~Camera() = default;

    // Reads the keys and the pointer of this frame. Dragging with the turn button turns, unless the
    // drag began on a widget.
    virtual void handle(const Input &input);
    // Moves on by so many seconds; 0 and less change nothing, and more than 10 are 10.
    virtual void update(double seconds);

    // Makes the view of an RVCAMERA: its position and rotation, without a target node.
    void apply(RVCAMERA &camera) const;

    // Turns the view, smoothly or at once. The pitch is limited.
    void turn(double yawDegrees, double pitchDegrees);
    void setAngles(double yawDegrees, double pitchDegrees);
    double getYaw() const { return yaw.getValue(); } // -180 to 180
    double getPitch() const { return pitch.getValue(); }

    // Limits of the pitch, within -90 and 90: -89 and 89 by default. Ignored where low exceeds
    // high.
    void setPitchLimits(double low, double high);

    // How fast the view turns: it approaches its goal by the factor e in 1 / rate seconds; 0 for at
    // once. 15 by default.
    void setTurnRate(double perSecond);

    // For `handle`: 0.25 degrees per pixel of the pointer, and button 1 of SDL's; 0 for no button,
    // so that every motion of the pointer turns.
    void setDegreesPerPixel(double degrees) { assign(degreesPerPixel, degrees); }
    void setTurnButton(int button) { turnButton = button; }

    // Sets the position at once, without motion.
    virtual void setPosition(const Z3MVECTOR3D &point) = 0;
    virtual Z3MVECTOR3D getPosition() const = 0;

    // A vector of length 1, into the view.
    Z3MVECTOR3D getForward() const;

    // Takes over the position and the direction of another camera.
    void place(const Camera &other);

  protected:
    Camera();

    // Ignores numbers that are not finite.
    static void assign(double &field, double number);

    // Not beyond 1e30, so that it fits a float.
    static double bounded(double number);

    // Whether no coordinate is infinite or no number.
    static bool isFinite(const Z3MVECTOR3D &point);

    // A number of seconds as `update` takes it.
    static double limitedSeconds(double seconds);

    // World directions for the angles that the view approaches. Motion goes along these, so that it
    // is the same however a turn is cut into frames.
    struct Direction {
        double x; // of length 1
        double y; // upwards
        double z; // towards the viewer at an angle of 0
    };
    // Into the view.
    Direction getGoalForward() const;
    // To the right, level.
    Direction getGoalRight() const;

  private:
    SmoothedValue yaw, pitch;
    double lowestPitch = -89, highestPitch = 89;
    double degreesPerPixel = 0.25;
    int turnButton = 1;
    bool dragging = false;

    double limited(double degrees) const;
};

} // namespace ravolt::kit
