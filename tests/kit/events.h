#pragma once

// SDL's events, as a test makes them.

#include <SDL/SDL.h>

namespace ravolt::test {

inline SDL_Event keyEvent(SDLKey key, bool down = true, Uint16 character = 0) {
    SDL_Event event = {};
    event.type = static_cast<Uint8>(down ? SDL_KEYDOWN : SDL_KEYUP);
    event.key.state = down ? SDL_PRESSED : SDL_RELEASED;
    event.key.keysym.sym = key;
    event.key.keysym.unicode = character;
    return event;
}

inline SDL_Event buttonEvent(int x, int y, bool down, Uint8 button = SDL_BUTTON_LEFT) {
    SDL_Event event = {};
    event.type = static_cast<Uint8>(down ? SDL_MOUSEBUTTONDOWN : SDL_MOUSEBUTTONUP);
    event.button.button = button;
    event.button.state = down ? SDL_PRESSED : SDL_RELEASED;
    event.button.x = static_cast<Uint16>(x);
    event.button.y = static_cast<Uint16>(y);
    return event;
}

inline SDL_Event motionEvent(int x, int y, int dx = 0, int dy = 0) {
    SDL_Event event = {};
    event.type = SDL_MOUSEMOTION;
    event.motion.x = static_cast<Uint16>(x);
    event.motion.y = static_cast<Uint16>(y);
    event.motion.xrel = static_cast<Sint16>(dx);
    event.motion.yrel = static_cast<Sint16>(dy);
    return event;
}

inline SDL_Event focusEvent(Uint8 state, bool gained) {
    SDL_Event event = {};
    event.type = SDL_ACTIVEEVENT;
    event.active.state = state;
    event.active.gain = gained;
    return event;
}

inline SDL_Event eventOf(Uint8 type) {
    SDL_Event event = {};
    event.type = type;
    return event;
}

} // namespace ravolt::test
