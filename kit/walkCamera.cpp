// A walk is made of short steps, each of which looks at the ground, so that no ridge between two
// frames is crossed. A step that is too steep is tried along one axis and along the other.

#include "ravolt/kit/walkCamera.h"

#include "kit/movement.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace ravolt::kit {

namespace {

constexpr double degree = 3.14159265358979323846 / 180;
constexpr double defaultSlope = 50, maxSlope = 89, defaultEyeHeight = 1.7;
constexpr double stepsPerEyeHeight = 16; // the length of a step
constexpr double maxSteps = 2000;        // of one update

double tangent(double degrees) { return std::tan(std::clamp(degrees, 0.0, maxSlope) * degree); }

} // namespace

WalkCamera::WalkCamera(Ground function, double height)
    : ground(std::move(function)), steepest(tangent(defaultSlope)), eyeHeight(defaultEyeHeight) {
    setEyeHeight(height);
    setMoveRate(defaultMoveRate);
    setOnGround(0, 0);
}

double WalkCamera::groundAt(double atX, double atZ) const {
    const double height = ground ? ground(atX, atZ) : 0;
    return std::isfinite(height) ? bounded(height) : height;
}

void WalkCamera::handle(const Input &input) {
    Camera::handle(input);
    move(forwardKeys(input), rightKeys(input));
    setHurrying(isHurryKeyDown(input));
}

void WalkCamera::move(double forward, double right) {
    const double length = std::hypot(forward, right);
    if (!std::isfinite(length))
        return;
    const double scale = length > 1 ? 1 / length : 1;
    forwards = forward * scale;
    rightwards = right * scale;
}

void WalkCamera::update(double seconds) {
    Camera::update(seconds);
    seconds = limitedSeconds(seconds);
    const Direction right = getGoalRight();
    const double goal = speed * (hurrying ? hurryFactor : 1);
    speedX.setTarget(goal * (forwards * right.z + rightwards * right.x));
    speedZ.setTarget(goal * (-forwards * right.x + rightwards * right.z));
    const double dx = speedX.advance(seconds), dz = speedZ.advance(seconds);
    const double length = std::max(eyeHeight, 0.01) / stepsPerEyeHeight;
    const double steps = std::clamp(std::ceil(std::hypot(dx, dz) / length), 1.0, maxSteps);
    for (int i = 0; i < static_cast<int>(steps); ++i)
        step(dx / steps, dz / steps);
    fall(seconds);
}

// Not higher than the slope allows, or than the feet of who falls.
bool WalkCamera::canStep(double fromX, double fromZ, double toX, double toZ) const {
    const double height = groundAt(toX, toZ);
    const double reach = std::hypot(toX - fromX, toZ - fromZ) * steepest;
    return std::isfinite(height) && height <= feet + reach + 1e-9;
}

void WalkCamera::step(double dx, double dz) {
    if (canStep(x, z, x + dx, z + dz)) {
        goTo(x + dx, z + dz);
        return;
    }
    const bool alongX = dx != 0 && canStep(x, z, x + dx, z);
    if (alongX)
        goTo(x + dx, z);
    const bool alongZ = dz != 0 && canStep(x, z, x, z + dz);
    if (alongZ)
        goTo(x, z + dz);
    if (!alongX)
        speedX.jump(0);
    if (!alongZ)
        speedZ.jump(0);
}

// The feet follow the ground, unless it drops too steeply.
void WalkCamera::goTo(double toX, double toZ) {
    const double reach = std::hypot(toX - x, toZ - z) * steepest;
    const double height = groundAt(toX, toZ);
    x = bounded(toX);
    z = bounded(toZ);
    if (height >= feet || (!falling && height >= feet - reach - 1e-9))
        feet = height;
    else
        falling = true;
}

void WalkCamera::fall(double seconds) {
    const double height = groundAt(x, z);
    falling = feet > height;
    if (falling) {
        feet = bounded(feet - fallingSpeed * seconds - gravity * seconds * seconds / 2);
        fallingSpeed = bounded(fallingSpeed + gravity * seconds);
        falling = feet > height;
    }
    if (!falling) {
        feet = std::isfinite(height) ? height : feet;
        fallingSpeed = 0;
    }
}

void WalkCamera::setMoveRate(double perSecond) {
    speedX.setRate(perSecond);
    speedZ.setRate(perSecond);
}

void WalkCamera::setMaxSlope(double degrees) {
    if (std::isfinite(degrees))
        steepest = tangent(degrees);
}

void WalkCamera::stop() {
    speedX.jump(0);
    speedZ.jump(0);
    fallingSpeed = 0;
}

void WalkCamera::setPosition(const Z3MVECTOR3D &point) {
    if (!isFinite(point))
        return;
    setOnGround(double(point.x), double(point.z));
    feet = std::max(feet, bounded(double(point.y) - eyeHeight));
    falling = feet > groundAt(x, z);
}

void WalkCamera::setOnGround(double atX, double atZ) {
    if (!std::isfinite(atX) || !std::isfinite(atZ))
        return;
    x = bounded(atX);
    z = bounded(atZ);
    const double height = groundAt(x, z);
    feet = std::isfinite(height) ? height : 0;
    falling = false;
    stop();
}

} // namespace ravolt::kit
