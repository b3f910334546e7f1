// Pictures of the frame: S saves it as it is, P as a poster with smooth edges. A run of N frames
// saves both with its last one.

#include "common.h"

#include <ravolt.h>
#include <ravolt/kit.h>

int main(int argc, char **argv) {
    Example example(argc, argv, {"SCENE.rve"});
    RVSETTINGS settings;
    settings.setTitle("Ravolt: poster");
    settings.setMaxAnisotropy(1); // software drivers are several times faster
    RVNODE *model = example.openScene(settings);
    if (!model)
        return 1;
    RVCAMERA *camera = new RVCAMERA();
    camera->setPosition(3.0f, 3.0f, 5.0f);
    camera->setTargetNode(model);
    RVLIGHT *light = new RVLIGHT();
    light->setPosition(5.0f, 100.0f, 50.0f);

    const auto draw = [&] { // a frame without RAVOLT::swap
        RAVOLT::clear(true, true, false);
        RAVOLT::begin3D(camera);
        light->pass(true);
        model->pass(true);
        RAVOLT::end3D(true);
    };
    do {
        draw();
        const bool last = example.frames && example.frame + 1 == example.frames;
        ravolt::kit::Screenshot shot;
        if ((last || example.input.wasKeyPressed('s')) && shot.take())
            shot.save("screenshot.png");
        if ((last || example.input.wasKeyPressed('p')) && shot.takeSmooth(draw, 4))
            shot.save("poster.png");
        RAVOLT::swap();
        model->rotate(0.0f, 30.0f * example.seconds(), 0.0f);
    } while (example.next());
    RAVOLT::free();
    return 0;
}
