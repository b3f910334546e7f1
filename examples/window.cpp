// A window whose size changes while its textures stay: plus and minus resize it, Alt and Enter fill
// the screen. A run of N frames does all of that by itself.

#include "common.h"

#include <ravolt.h>
#include <ravolt/kit.h>

#include <SDL/SDL.h>

#include <cstdio>

// A texture, which would be lost with its context: here it is drawn once more in every frame.
static RVTEXTURE *makeCheckers() {
    RVTEXTURE *checkers = new RVTEXTURE();
    checkers->create(64, 64, 3);
    for (unsigned int i = 0; i < 64 * 64; ++i)
        for (unsigned int channel = 0; channel < 3; ++channel)
            checkers->getBitmap()[3 * i + channel] =
                (i / 8 + i / 512) % 2 ? 230 : static_cast<unsigned char>(40 + 60 * channel);
    checkers->update();
    return checkers;
}

int main(int argc, char **argv) {
    Example example(argc, argv);
    RVSETTINGS settings;
    settings.setTitle("Ravolt: window");
    settings.setResizable(true);
    if (!RAVOLT::init(&settings))
        return 1;
    RVBOX *box = new RVBOX();
    box->setTexture(makeCheckers());
    box->setColor(1, 1, 1, 1);
    bool changed = true;
    do {
        // It fills the window, whatever its size is.
        const ravolt::kit::Pixel size = ravolt::kit::Input::getWindowSize();
        box->setSizes(size.x, size.y);
        RAVOLT::clear(true, true, false);
        RAVOLT::begin2D();
        box->pass();
        RAVOLT::end2D();
        RAVOLT::swap();

        const auto pressed = [&](int key) { return example.input.wasKeyPressed(key); };
        const int step = 40 * (pressed(SDLK_PLUS) - pressed(SDLK_MINUS));
        if (step)
            example.window.resize(size.x + step, size.y + step);
        if (example.frames && example.frame == 0)
            changed = example.window.setFullScreen(true) && example.window.setFullScreen(false);
        if (example.frames && example.frame == 1)
            changed = changed && example.window.resize(400, 250);
    } while (example.next());
    RAVOLT::free();
    if (!changed)
        std::fprintf(stderr, "this display does not change the window; ravolt_log.txt says why\n");
    return !changed;
}
