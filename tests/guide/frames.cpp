// Linked into the applications of the guide, which know nothing of it: it ends them after
// GUIDE_FRAMES frames, as if their window had been closed, and saves the last frame as
// GUIDE_PICTURE. Keys of GUIDE_KEYS are pressed, one a frame, and the pointer is in the middle.
// Each frame counts as a thirtieth of a second, so that the picture is the same in each run.
//
// SDL_GL_SwapBuffers here is found before that of SDL, since the program exports its symbols.

#include <ravolt.h>
#include <ravolt/kit.h>

#include <SDL/SDL.h>
#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

struct FixedTime {
    FixedTime() { RAVOLT::setFrameDuration(1.0f / 30); }
} fixedTime;

void savePicture(const char *file) {
    ravolt::kit::Screenshot shot;
    if (!shot.take() || !shot.shrink(2) || !shot.save(file))
        std::fprintf(stderr, "no picture %s\n", file);
}

void press(char character) {
    SDL_Event event = {};
    for (const int type : {SDL_KEYDOWN, SDL_KEYUP}) {
        event.type = static_cast<Uint8>(type);
        event.key.state = type == SDL_KEYDOWN ? SDL_PRESSED : SDL_RELEASED;
        event.key.keysym.sym = static_cast<SDLKey>(character);
        event.key.keysym.unicode = static_cast<Uint16>(character);
        SDL_PushEvent(&event);
    }
}

void point(int x, int y) {
    SDL_Event event = {};
    event.type = SDL_MOUSEMOTION;
    event.motion.x = static_cast<Uint16>(x);
    event.motion.y = static_cast<Uint16>(y);
    SDL_PushEvent(&event);
}

void countFrame() {
    static int frame = 0;
    static const std::string keys = std::getenv("GUIDE_KEYS") ? std::getenv("GUIDE_KEYS") : "";
    const char *number = std::getenv("GUIDE_FRAMES"), *picture = std::getenv("GUIDE_PICTURE");
    if (frame == 0)
        point(RVSETTINGS::getSDLWindowX() / 2, RVSETTINGS::getSDLWindowY() / 2);
    if (frame < static_cast<int>(keys.size()))
        press(keys[static_cast<std::size_t>(frame)]);
    if (number && ++frame == std::atoi(number)) {
        if (picture)
            savePicture(picture);
        SDL_Event quit = {};
        quit.type = SDL_QUIT;
        SDL_PushEvent(&quit);
    }
}

} // namespace

extern "C" void SDL_GL_SwapBuffers() {
    if (RAVOLT::isActive()) // the splash comes before
        countFrame();
    using Swap = void (*)();
    static const Swap swap = reinterpret_cast<Swap>(dlsym(RTLD_NEXT, "SDL_GL_SwapBuffers"));
    swap();
}
