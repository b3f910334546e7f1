// A scene file on a turntable, lit by a key, a fill and a rim light.

#include "common.h"

#include <ravolt.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>

namespace {

struct Bounds {
    Z3MVECTOR3D low{1e30f, 1e30f, 1e30f}, high{-1e30f, -1e30f, -1e30f};

    void add(const Z3MVECTOR3D &point) {
        for (int axis = 0; axis < 3; ++axis) {
            low[axis] = std::min(low.operator[](axis), point[axis]);
            high[axis] = std::max(high.operator[](axis), point[axis]);
        }
    }
};

// The box around all meshes below `node`, in world space.
void measure(RVNODE *node, Bounds &bounds) {
    if (node->getType() == RV_NODE_TYPE_MESH) {
        RVMESH *mesh = static_cast<RVMESH *>(node);
        Z3MMATRIX world = mesh->getFinalMatrix(nullptr);
        for (unsigned int i = 0; i < mesh->getNumberOfVertices(); ++i) {
            const Z3MVECTOR4D point = world.transform(mesh->getVertexPtr()[i]);
            bounds.add(Z3MVECTOR3D(point.x, point.y, point.z));
        }
    }
    for (unsigned int i = 0; i < node->getNumberOfChildren(); ++i)
        measure(node->getChild(i), bounds);
}

RVLIGHT *makeLight(const Z3MVECTOR3D &from, float brightness) {
    RVLIGHT *light = new RVLIGHT();
    light->setLightType(RV_LIGHT_TYPE_DIRECTIONAL);
    Z3MVECTOR3D direction(-from.x, -from.y, -from.z);
    light->setDirection(direction.normalize());
    light->setDiffuse(brightness, brightness, brightness, 1.0f);
    light->setAmbient(0.02f, 0.02f, 0.03f, 1.0f);
    // A light draws a small marker at its position, which is therefore out of sight.
    light->setPosition(from.x * 1e4f, from.y * 1e4f, from.z * 1e4f);
    return light;
}

} // namespace

int main(int argc, char **argv) {
    Example example(argc, argv, {"SCENE.rve"});
    const std::string scene = example.files[0], folder = folderOf(scene);

    RVSETTINGS settings;
    settings.setTitle("Ravolt: turntable");
    settings.setWindowX(960);
    settings.setWindowY(600);
    settings.setVideoMemory(256); // megabytes for textures
    settings.setColorDepth(32);
    settings.setZetaDepth(24);
    settings.setRVEPath(folder.c_str());
    settings.setTexturePath(folder.c_str());
    if (!RAVOLT::init(&settings))
        return 1;

    RVNODE *model = RAVOLT::load(scene.substr(folder.size()).c_str());
    if (!model) {
        RAVOLT::free();
        return 1;
    }

    Bounds bounds;
    measure(model, bounds);
    const Z3MVECTOR3D centre = (bounds.low + bounds.high) * 0.5f;
    const float size = (bounds.high - bounds.low).length();

    // The model is the child of a node that turns, so that it turns about its own centre.
    RVNODE *table = new RVNODE();
    model->move(-centre.x, -centre.y, -centre.z);
    model->link(table);

    RVCAMERA *camera = new RVCAMERA();
    camera->setPosition(0.0f, 0.3f * size, 0.95f * size);
    camera->setTarget(0.0f, 0.0f, 0.0f);
    camera->setTargetNode(camera);
    RVOPENGL::setNearPlane(0.05f * size);
    RVOPENGL::setFarPlane(10.0f * size);
    RVOPENGL::resize(0, 0, RVSETTINGS::getSDLWindowX(), RVSETTINGS::getSDLWindowY());
    RVOPENGL::setBackgroundColor(0.16f, 0.18f, 0.22f, 1.0f);

    RVLIGHT *lights[] = {makeLight(Z3MVECTOR3D(0.6f, 0.8f, 1.0f), 0.65f),
                         makeLight(Z3MVECTOR3D(-1.0f, 0.2f, 0.5f), 0.2f),
                         makeLight(Z3MVECTOR3D(0.2f, 0.6f, -1.0f), 0.3f)};

    do {
        RAVOLT::clear(true, true, false);
        RAVOLT::begin3D(camera);
        for (RVLIGHT *light : lights)
            light->pass(true);
        table->pass(true);
        RAVOLT::end3D(true);
        RAVOLT::swap();
        // A run of N frames turns once in all.
        const float turn = example.frames ? 360.0f / example.frames : 30.0f * example.seconds();
        table->rotate(0.0f, turn, 0.0f);
    } while (example.next());

    RAVOLT::free();
    return 0;
}
