// A walk over a terrain: w, s, a, d or the arrows move, dragging looks around, Shift hurries, and g
// takes off and lands. The files are what `ravolt terrain --island 7 -o island` makes.

#include "common.h"

#include <ravolt.h>
#include <ravolt/kit.h>

#include <SDL/SDL.h>

int main(int argc, char **argv) {
    Example example(argc, argv, {"TERRAIN.xml", "GEOMETRY"});
    const std::string folder = folderOf(example.files[0]);
    RVSETTINGS settings;
    settings.setTitle("Ravolt: walk");
    settings.setShaders(true);
    settings.setVideoMemory(256); // megabytes for textures
    settings.setMaxAnisotropy(1); // software drivers are several times faster
    settings.setColorDepth(32);
    settings.setZetaDepth(24);
    settings.setTexturePath(folder.c_str());
    if (!RAVOLT::init(&settings))
        return 1;
    RVOPENGL::setFarPlane(900); // before the sky is made, which reaches nine tenths as far
    RVOPENGL::resize(0, 0, RVSETTINGS::getSDLWindowX(), RVSETTINGS::getSDLWindowY());
    RVOPENGL::setBackgroundColor(0.72f, 0.81f, 0.88f, 1);
    RVTERRAIN *terrain = new RVTERRAIN();
    ravolt::kit::TerrainHeights heights;
    if (!terrain->load(example.files[0]) || !heights.load(example.files[1])) {
        RAVOLT::free();
        return 1;
    }
    RVLIGHT *sun = new RVLIGHT();
    sun->setPosition(-4000.0f, 2500.0f, -1000.0f);
    RVCAMERA *view = new RVCAMERA();
    ravolt::kit::WalkCamera walk([&](double x, double z) { return heights.drawnAt(x, z); });
    walk.setSpeed(6);
    walk.setOnGround(heights.getWidth() / 2, heights.getDepth() / 2);
    ravolt::kit::FlyCamera fly;
    fly.setSpeed(25);
    ravolt::kit::Camera *camera = &walk, *other = &fly;
    do {
        if (example.input.wasKeyPressed(SDLK_g)) {
            std::swap(camera, other);
            camera->place(*other);
        }
        camera->handle(example.input);
        if (example.frames) // nobody presses a key
            walk.move(1, 0);
        camera->update(example.seconds());
        camera->apply(*view);
        RAVOLT::clear(true, true, false);
        RAVOLT::begin3D(view);
        sun->pass();
        terrain->pass();
        RAVOLT::end3D(true);
        RAVOLT::swap();
    } while (example.next());
    RAVOLT::free();
}
