// The speed is smoothed in world axes, along the goal of a turn: its integral is then exact
// whatever turns.

#include "ravolt/kit/flyCamera.h"

#include "kit/movement.h"
#include "ravolt/kit/input.h"

#include <SDL.h>

#include <cmath>

namespace ravolt::kit {

FlyCamera::FlyCamera() { setMoveRate(defaultMoveRate); }

void FlyCamera::handle(const Input &input) {
    Camera::handle(input);
    const auto either = [&input](int key, int other) {
        return input.isKeyDown(key) || input.isKeyDown(other);
    };
    const int up = either(SDLK_PAGEUP, SDLK_SPACE) - either(SDLK_PAGEDOWN, SDLK_c);
    move(forwardKeys(input), rightKeys(input), up);
    setHurrying(isHurryKeyDown(input));
}

void FlyCamera::move(double forward, double right, double up) {
    const double length = std::sqrt(forward * forward + right * right + up * up);
    if (!std::isfinite(length))
        return;
    const double scale = length > 1 ? 1 / length : 1;
    forwards = forward * scale;
    rightwards = right * scale;
    upwards = up * scale;
}

void FlyCamera::update(double seconds) {
    Camera::update(seconds);
    seconds = limitedSeconds(seconds);
    Direction ahead = getGoalForward();
    const Direction right = getGoalRight();
    if (level)
        ahead = {right.z, 0, -right.x};
    const double goal = speed * (hurrying ? hurryFactor : 1);
    speedX.setTarget(goal * (forwards * ahead.x + rightwards * right.x));
    speedY.setTarget(goal * (forwards * ahead.y + upwards));
    speedZ.setTarget(goal * (forwards * ahead.z + rightwards * right.z));
    x = bounded(x + speedX.advance(seconds));
    y = bounded(y + speedY.advance(seconds));
    z = bounded(z + speedZ.advance(seconds));
}

void FlyCamera::setMoveRate(double perSecond) {
    for (SmoothedValue *value : {&speedX, &speedY, &speedZ})
        value->setRate(perSecond);
}

void FlyCamera::setPosition(const Z3MVECTOR3D &point) {
    if (!isFinite(point))
        return;
    x = bounded(double(point.x));
    y = bounded(double(point.y));
    z = bounded(double(point.z));
    for (SmoothedValue *value : {&speedX, &speedY, &speedZ})
        value->jump(0);
}

} // namespace ravolt::kit
