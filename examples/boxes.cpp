// Marker boxes seen through an orbiting camera: dragging turns it, the wheel zooms.

#include "common.h"

#include <ravolt.h>
#include <ravolt/kit.h>

#include <cmath>

// A ring of boxes around the origin, each one a node of the tree.
static RVNODE *makeRing(int count) {
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
    RVLIGHT *light = new RVLIGHT();
    light->setPosition(4.0f, 30.0f, 14.0f);
    RVCAMERA *camera = new RVCAMERA();
    ravolt::kit::OrbitCamera orbit; // round the origin
    orbit.setDistance(17.5);
    orbit.setAngles(0, -24);

    do {
        orbit.handle(example.input);
        orbit.update(example.seconds());
        orbit.apply(*camera);
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
