// A thousand copies of one model, which is loaded once and passed a thousand times in each frame.

#include "common.h"

#include <ravolt.h>

#include <algorithm>
#include <cmath>
#include <string>

// How many meshes a model has, and the radius of the largest.
static void measure(RVNODE *node, int &meshes, float &radius) {
    if (node->getType() == RV_NODE_TYPE_MESH) {
        ++meshes;
        radius = std::max(radius, static_cast<RVMESH *>(node)->getRadius());
    }
    for (unsigned int i = 0; i < node->getNumberOfChildren(); ++i)
        measure(node->getChild(i), meshes, radius);
}

int main(int argc, char **argv) {
    Example example(argc, argv, {"SCENE.rve"});
    const std::string folder = folderOf(example.files[0]);
    RVSETTINGS settings;
    settings.setTitle("Ravolt: crowd");
    settings.setVideoMemory(256); // megabytes for textures
    settings.setRVEPath(folder.c_str());
    settings.setTexturePath(folder.c_str());
    RVNODE *model =
        RAVOLT::init(&settings) ? RAVOLT::load(example.files[0] + folder.size()) : nullptr;
    if (!model) {
        RAVOLT::free();
        return 1;
    }
    RVNODE *carrier = new RVNODE(); // the position of the next copy
    model->link(carrier);
    int meshes = 1; // and the light
    float size = 0;
    measure(model, meshes, size);
    const int entries = static_cast<int>(RVELEMENT::getNumberOfElements());
    const int copies = std::min(example.width < 960 ? 100 : 1000, entries / meshes);

    RVELEMENT::stateOrderOn(); // all copies of one part, then all of the next
    RVLIGHT::markersOff();
    RVLIGHT *light = new RVLIGHT();
    light->setLightType(RV_LIGHT_TYPE_DIRECTIONAL);
    light->setDirection(-0.4f, -0.8f, -0.4f);
    RVCAMERA *camera = new RVCAMERA();
    camera->setPosition(0.0f, 8 * size, 14 * size);
    camera->setRotation(-28.0f, 0.0f, 0.0f);
    float time = 0.0f;
    do {
        RAVOLT::clear(true, true, false);
        RAVOLT::begin3D(camera);
        light->pass(true);
        for (int i = 0; i < copies; ++i) {
            const float turn = 2.4f * i + 0.1f * time, way = size * std::sqrt(i + 1.0f);
            carrier->setPosition(way * std::cos(turn), 0.0f, way * std::sin(turn));
            carrier->setRotation(0.0f, -57.3f * turn, 0.0f);
            carrier->pass(true);
        }
        RAVOLT::end3D(true);
        RAVOLT::swap();
        time += example.seconds();
    } while (example.next());
    RAVOLT::free();
}
