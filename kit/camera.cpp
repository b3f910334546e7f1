// The direction of view. Its angles are those of an RVCAMERA without a target node, which has no up
// direction that a view straight up or down could meet.

#include "ravolt/kit/camera.h"

#include "ravolt/RVCAMERA.h"
#include "ravolt/kit/input.h"

#include <algorithm>
#include <cmath>

namespace ravolt::kit {

namespace {

constexpr double degree = 3.14159265358979323846 / 180;
constexpr double defaultTurnRate = 15, maxSeconds = 10;
constexpr double maxNumber = 1e30;

struct Angles {
    double yaw, pitch; // degrees

    double forwardX() const { return -std::sin(yaw * degree) * std::cos(pitch * degree); }
    double forwardY() const { return std::sin(pitch * degree); }
    double forwardZ() const { return -std::cos(yaw * degree) * std::cos(pitch * degree); }
};

} // namespace

Camera::Camera() : yaw(0, defaultTurnRate), pitch(0, defaultTurnRate) {}

void Camera::handle(const Input &input) {
    if (input.wasButtonPressed(turnButton))
        dragging = !input.isOnWidget();
    const bool always = turnButton == 0;
    const Pixel motion = always ? input.getMotion() : input.getDrag(turnButton);
    if (dragging || always)
        turn(-motion.x * degreesPerPixel, -motion.y * degreesPerPixel);
}

void Camera::assign(double &field, double number) {
    if (std::isfinite(number))
        field = bounded(number);
}

double Camera::bounded(double number) { return std::clamp(number, -maxNumber, maxNumber); }

bool Camera::isFinite(const Z3MVECTOR3D &point) {
    return std::isfinite(point.x) && std::isfinite(point.y) && std::isfinite(point.z);
}

double Camera::limitedSeconds(double seconds) {
    return seconds > 0 ? std::min(seconds, maxSeconds) : 0;
}

// The yaw stays small: whole turns are removed from the value and from its target.
void Camera::update(double seconds) {
    yaw.advance(limitedSeconds(seconds));
    pitch.advance(limitedSeconds(seconds));
    const double turns = 360 * std::round(yaw.getValue() / 360);
    const double target = yaw.getTarget() - turns;
    yaw.jump(yaw.getValue() - turns);
    yaw.setTarget(target);
}

void Camera::apply(RVCAMERA &camera) const {
    camera.setPositioning(RV_NODE_POSITIONING_VECTORS);
    camera.setTargetNode(nullptr);
    camera.setPosition(getPosition());
    camera.setRotation(Z3MVECTOR3D(getPitch(), getYaw(), 0));
}

double Camera::limited(double degrees) const {
    return std::clamp(degrees, lowestPitch, highestPitch);
}

void Camera::turn(double yawDegrees, double pitchDegrees) {
    const double target = yaw.getTarget() + yawDegrees;
    if (!std::isfinite(target) || !std::isfinite(pitchDegrees))
        return;
    yaw.setTarget(target);
    pitch.setTarget(limited(pitch.getTarget() + pitchDegrees));
}

void Camera::setAngles(double yawDegrees, double pitchDegrees) {
    if (!std::isfinite(yawDegrees) || !std::isfinite(pitchDegrees))
        return;
    yaw.jump(std::remainder(yawDegrees, 360));
    pitch.jump(limited(pitchDegrees));
}

void Camera::setPitchLimits(double low, double high) {
    if (!(low <= high))
        return;
    lowestPitch = std::clamp(low, -90.0, 90.0);
    highestPitch = std::clamp(high, -90.0, 90.0);
    const double target = limited(pitch.getTarget());
    pitch.jump(limited(pitch.getValue()));
    pitch.setTarget(target);
}

void Camera::setTurnRate(double perSecond) {
    yaw.setRate(perSecond);
    pitch.setRate(perSecond);
}

Z3MVECTOR3D Camera::getForward() const {
    const Angles angles = {getYaw(), getPitch()};
    return {angles.forwardX(), angles.forwardY(), angles.forwardZ()};
}

void Camera::place(const Camera &other) {
    setAngles(other.getYaw(), other.getPitch());
    setPosition(other.getPosition());
}

Camera::Direction Camera::getGoalForward() const {
    const Angles angles = {yaw.getTarget(), pitch.getTarget()};
    return {angles.forwardX(), angles.forwardY(), angles.forwardZ()};
}

Camera::Direction Camera::getGoalRight() const {
    return {std::cos(yaw.getTarget() * degree), 0, -std::sin(yaw.getTarget() * degree)};
}

} // namespace ravolt::kit
