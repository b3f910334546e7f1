#pragma once

// The keys and the rate that the cameras that move have in common.

#include "ravolt/kit/input.h"

#include <SDL.h>

namespace ravolt::kit {

constexpr double defaultMoveRate = 8; // per second, at which the speed approaches its goal

inline int forwardKeys(const Input &input) {
    return (input.isKeyDown(SDLK_w) || input.isKeyDown(SDLK_UP)) -
           (input.isKeyDown(SDLK_s) || input.isKeyDown(SDLK_DOWN));
}

inline int rightKeys(const Input &input) {
    return (input.isKeyDown(SDLK_d) || input.isKeyDown(SDLK_RIGHT)) -
           (input.isKeyDown(SDLK_a) || input.isKeyDown(SDLK_LEFT));
}

inline bool isHurryKeyDown(const Input &input) {
    return input.isKeyDown(SDLK_LSHIFT) || input.isKeyDown(SDLK_RSHIFT);
}

} // namespace ravolt::kit
