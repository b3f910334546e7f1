// Numbers that approach their targets: a box follows the pointer, and is bright while a button is
// down. The motion is the same at every frame rate.

#include "common.h"

#include <ravolt.h>
#include <ravolt/kit.h>

int main(int argc, char **argv) {
    Example example(argc, argv);
    RVSETTINGS settings;
    settings.setTitle("Ravolt: smooth");
    if (!RAVOLT::init(&settings))
        return 1;
    RVOPENGL::setBackgroundColor(0.1f, 0.12f, 0.16f, 1);
    constexpr int size = 80;
    RVBOX *box = new RVBOX();
    box->setSizes(size, size);

    // At rest at a start; a rate of 5 per second covers 99 % of the way in 0.92 seconds.
    ravolt::kit::SmoothedValue x(40, 5), y(40, 5), brightness(0.2, 8);
    do {
        ravolt::kit::Pixel goal = example.input.getPointer(); // negative before it has moved
        bool bright = example.input.isButtonDown();
        if (example.frames) { // nobody moves the pointer
            bright = example.frame >= example.frames / 2;
            goal = bright ? ravolt::kit::Pixel{500, 300} : ravolt::kit::Pixel{300, 100};
        }
        if (goal.x >= 0) {
            x.setTarget(goal.x - size / 2);
            y.setTarget(goal.y - size / 2);
        }
        brightness.setTarget(bright ? 1 : 0.2);
        for (auto *value : {&x, &y, &brightness})
            value->advance(example.seconds());

        const float level = static_cast<float>(brightness.getValue());
        box->setColor(level, 0.8f * level, 0.3f * level, 1);
        box->setPosition(static_cast<float>(x.getValue()), static_cast<float>(y.getValue()));
        RAVOLT::clear(true, true, false);
        RAVOLT::begin2D();
        box->pass(true);
        RAVOLT::end2D();
        RAVOLT::swap();
    } while (example.next());
    RAVOLT::free();
    return 0;
}
