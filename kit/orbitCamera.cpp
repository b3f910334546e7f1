// The distance is smoothed by its logarithm, so that a step of the wheel is the same everywhere.

#include "ravolt/kit/orbitCamera.h"

#include "ravolt/RVOPENGL.h"
#include "ravolt/kit/input.h"

#include <algorithm>
#include <cmath>

namespace ravolt::kit {

namespace {

constexpr double degree = 3.14159265358979323846 / 180;
constexpr double moveRate = 10, startDistance = 10, defaultZoomStep = 0.9;
constexpr double nearestByDefault = 0.01, farthestByDefault = 1e6;

bool isPositive(double number) { return number > 0 && std::isfinite(number); }

// Units of the plane through the centre that one pixel shows.
double unitsPerPixel(double distance, const Input &input) {
    const double halfAngle = double(RVOPENGL::getAngleOfView()) / 2 * degree;
    const int height = input.getBlockSize().y;
    return height > 0 ? 2 * distance * std::tan(halfAngle) / height : 0;
}

} // namespace

OrbitCamera::OrbitCamera()
    : x(0, moveRate), y(0, moveRate), z(0, moveRate),
      logDistance(std::log(startDistance), moveRate), lowestLog(std::log(nearestByDefault)),
      highestLog(std::log(farthestByDefault)), logZoomStep(std::log(defaultZoomStep)) {}

void OrbitCamera::handle(const Input &input) {
    Camera::handle(input);
    if (input.wasButtonPressed(panButton))
        panning = !input.isOnWidget();
    if (panning) {
        const Pixel drag = input.getDrag(panButton);
        const double units = unitsPerPixel(getDistance(), input);
        pan(-drag.x * units, drag.y * units);
    }
    zoom(input.getWheel());
}

void OrbitCamera::update(double seconds) {
    Camera::update(seconds);
    for (SmoothedValue *value : {&x, &y, &z, &logDistance})
        value->advance(limitedSeconds(seconds));
}

void OrbitCamera::setCenter(const Z3MVECTOR3D &point) {
    if (!isFinite(point))
        return;
    x.jump(bounded(double(point.x)));
    y.jump(bounded(double(point.y)));
    z.jump(bounded(double(point.z)));
}

Z3MVECTOR3D OrbitCamera::getCenter() const { return {x.getValue(), y.getValue(), z.getValue()}; }

// Up in the view is the right direction crossed with the forward one.
void OrbitCamera::pan(double right, double up) {
    if (!std::isfinite(right) || !std::isfinite(up))
        return;
    const Direction r = getGoalRight(), f = getGoalForward();
    const Direction u = {-r.z * f.y, r.z * f.x - r.x * f.z, r.x * f.y};
    right = bounded(right);
    up = bounded(up);
    x.setTarget(bounded(x.getTarget() + right * r.x + up * u.x));
    y.setTarget(bounded(y.getTarget() + up * u.y));
    z.setTarget(bounded(z.getTarget() + right * r.z + up * u.z));
}

void OrbitCamera::setDistance(double units) {
    if (isPositive(units))
        logDistance.jump(std::clamp(std::log(units), lowestLog, highestLog));
}

double OrbitCamera::getDistance() const { return std::exp(logDistance.getValue()); }

void OrbitCamera::setDistanceLimits(double nearest, double farthest) {
    if (!isPositive(nearest) || !isPositive(farthest) || nearest > farthest)
        return;
    lowestLog = std::log(bounded(nearest));
    highestLog = std::log(bounded(farthest));
    const double target = std::clamp(logDistance.getTarget(), lowestLog, highestLog);
    logDistance.jump(std::clamp(logDistance.getValue(), lowestLog, highestLog));
    logDistance.setTarget(target);
}

void OrbitCamera::zoom(double steps) {
    if (std::isfinite(steps))
        logDistance.setTarget(
            std::clamp(logDistance.getTarget() + steps * logZoomStep, lowestLog, highestLog));
}

void OrbitCamera::setZoomStep(double part) {
    if (isPositive(part))
        logZoomStep = std::log(part);
}

void OrbitCamera::setMoveRate(double perSecond) {
    for (SmoothedValue *value : {&x, &y, &z, &logDistance})
        value->setRate(perSecond);
}

void OrbitCamera::setPosition(const Z3MVECTOR3D &point) {
    if (!isFinite(point))
        return;
    const Z3MVECTOR3D forward = getForward();
    const double distance = getDistance();
    x.jump(bounded(double(point.x) + double(forward.x) * distance));
    y.jump(bounded(double(point.y) + double(forward.y) * distance));
    z.jump(bounded(double(point.z) + double(forward.z) * distance));
}

Z3MVECTOR3D OrbitCamera::getPosition() const {
    const Z3MVECTOR3D forward = getForward();
    const double distance = getDistance();
    return {x.getValue() - double(forward.x) * distance,
            y.getValue() - double(forward.y) * distance,
            z.getValue() - double(forward.z) * distance};
}

} // namespace ravolt::kit
