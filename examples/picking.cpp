// What is under the pointer: its name, material, face and point are shown, and a click hides it.

#include "common.h"

#include <ravolt.h>
#include <ravolt/kit.h>

#include <string>

static std::string describe(const ravolt::kit::Pick &pick) {
    if (!pick.node)
        return "nothing";
    const std::string material = pick.material ? pick.material->getName() : "no material";
    return pick.node->getName() + ("\n" + material) + "\nface " + std::to_string(pick.face) + ", " +
           std::to_string(pick.distance) + " away";
}

int main(int argc, char **argv) {
    Example example(argc, argv, {"SCENE.rve"});
    RVSETTINGS settings;
    settings.setTitle("Ravolt: picking");
    RVNODE *model = example.openScene(settings);
    if (!model)
        return 1;
    RVCAMERA *camera = new RVCAMERA();
    camera->setPosition(3.0f, 3.0f, 5.0f);
    camera->setTargetNode(model);
    RVLIGHT *light = new RVLIGHT();
    light->setPosition(5.0f, 100.0f, 50.0f);
    ravolt::kit::Overlay overlay;
    do {
        RAVOLT::clear(true, true, false);
        RAVOLT::begin3D(camera);
        light->pass(true);
        model->pass(true);
        RAVOLT::end3D(true);
        // Before begin2D, which empties the list of what is drawn.
        auto at = example.input.getWindowPointer();
        if (example.frames) // nobody moves the pointer
            at = {300, 250};
        const auto pick = ravolt::kit::Picker().pick(at.x, at.y);
        if (example.input.wasButtonPressed() && pick.node &&
            pick.node->getType() == RV_NODE_TYPE_MESH)
            static_cast<RVMESH *>(pick.node)->setDisplayStatus(false);
        RAVOLT::begin2D();
        overlay.text(10, 10, describe(pick));
        RAVOLT::end2D();
        RAVOLT::swap();
    } while (example.next());
    RAVOLT::free();
}
