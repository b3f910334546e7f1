// A scene file on a turntable, lit by a key, a fill and a rim light; dragging goes round it, and
// the wheel zooms.

#include "common.h"

#include <ravolt.h>
#include <ravolt/kit.h>

#include <cmath>

namespace {

// The corners of the box around all loaded meshes, in the world.
void measure(Z3MVECTOR3D &low, Z3MVECTOR3D &high) {
    for (RVNODE *node = RVNODE::getFirstNode(); node; node = node->getNextNode()) {
        if (node->getType() != RV_NODE_TYPE_MESH)
            continue;
        RVMESH *mesh = static_cast<RVMESH *>(node);
        Z3MMATRIX world = mesh->getFinalMatrix(nullptr);
        for (unsigned int i = 0; i < mesh->getNumberOfVertices(); ++i) {
            const Z3MVECTOR4D point = world.transform(mesh->getVertexPtr()[i]);
            for (int axis = 0; axis < 3; ++axis) {
                low[axis] = std::fmin(low[axis], point[axis]);
                high[axis] = std::fmax(high[axis], point[axis]);
            }
        }
    }
}

RVLIGHT *makeLight(const Z3MVECTOR3D &from, float brightness) {
    RVLIGHT *light = new RVLIGHT();
    light->setLightType(RV_LIGHT_TYPE_DIRECTIONAL);
    light->setDirection(Z3MVECTOR3D(-from.x, -from.y, -from.z).normalize());
    light->setDiffuse(brightness, brightness, brightness, 1.0f);
    light->setAmbient(0.02f, 0.02f, 0.03f, 1.0f);
    return light;
}

} // namespace

int main(int argc, char **argv) {
    Example example(argc, argv, {"SCENE.rve"});
    RVSETTINGS settings;
    settings.setTitle("Ravolt: turntable");
    settings.setWindowX(960);
    settings.setWindowY(600);
    settings.setZetaDepth(24);
    RVNODE *model = example.openScene(settings);
    if (!model)
        return 1;

    Z3MVECTOR3D low(1e30f, 1e30f, 1e30f), high(-1e30f, -1e30f, -1e30f);
    measure(low, high);
    const Z3MVECTOR3D centre = (low + high) * 0.5f;
    const float size = (high - low).length();

    // The model is the child of a node that turns, so that it turns about its own centre.
    RVNODE *table = new RVNODE();
    model->move(-centre.x, -centre.y, -centre.z);
    model->link(table);

    RVCAMERA *camera = new RVCAMERA();
    ravolt::kit::OrbitCamera orbit; // round the origin
    orbit.setDistanceLimits(0.3 * size, 5 * size);
    orbit.setDistance(size);
    orbit.setAngles(0, -17.5);
    RVOPENGL::setNearPlane(0.05f * size);
    RVOPENGL::setFarPlane(10.0f * size);
    RVOPENGL::resize(0, 0, RVSETTINGS::getSDLWindowX(), RVSETTINGS::getSDLWindowY());
    RVOPENGL::setBackgroundColor(0.16f, 0.18f, 0.22f, 1.0f);

    RVLIGHT::markersOff(); // of the lights' positions
    RVLIGHT *lights[] = {makeLight(Z3MVECTOR3D(0.6f, 0.8f, 1.0f), 0.65f),
                         makeLight(Z3MVECTOR3D(-1.0f, 0.2f, 0.5f), 0.2f),
                         makeLight(Z3MVECTOR3D(0.2f, 0.6f, -1.0f), 0.3f)};

    do {
        orbit.handle(example.input);
        orbit.update(example.seconds());
        orbit.apply(*camera);
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
