// Marker boxes seen through an orbiting camera: the smallest whole application.

#include "common.h"

#include <ravolt.h>

#include <cmath>

namespace {

// A ring of boxes around the origin, each one a node of the tree.
RVNODE *makeRing(int count) {
    RVNODE *ring = new RVNODE();
    for (int i = 0; i < count; ++i) {
        const float turn = static_cast<float>(i) / count;
        const float angle = turn * 6.2831853f;
        RVHELPER *box = new RVHELPER();
        box->setPosition(6.0f * std::cos(angle), 0.0f, 6.0f * std::sin(angle));
        box->setRotation(0.0f, -360.0f * turn, 0.0f);
        box->setColor(0.3f + 0.7f * turn, 0.8f, 1.0f - 0.7f * turn, 0.6f);
        box->link(ring);
    }
    return ring;
}

RVCAMERA *makeCamera(RVNODE *target) {
    RVCAMERA *camera = new RVCAMERA();
    camera->setPosition(0.0f, 7.0f, 16.0f);
    camera->setTargetNode(target);
    return camera;
}

RVLIGHT *makeLight() {
    RVLIGHT *light = new RVLIGHT();
    light->setPosition(4.0f, 30.0f, 14.0f);
    return light;
}

} // namespace

int main(int argc, char **argv) {
    Example example(argc, argv);

    RVSETTINGS settings;
    settings.setTitle("Ravolt: boxes");
    settings.setColorDepth(32);
    settings.setZetaDepth(24);
    if (!RAVOLT::init(&settings))
        return 1;

    // Everything made with new belongs to the engine from here on; RAVOLT::free deletes it.
    RVNODE *ring = makeRing(9);
    RVCAMERA *camera = makeCamera(ring);
    RVLIGHT *light = makeLight();

    do {
        RAVOLT::clear(true, true, false);
        RAVOLT::begin3D(camera);
        light->pass(true);
        ring->pass(true);
        RAVOLT::end3D(true);
        RAVOLT::swap();
        ring->rotate(0.0f, 40.0f * example.seconds(), 0.0f);
    } while (example.next());

    RAVOLT::free();
    return 0;
}
