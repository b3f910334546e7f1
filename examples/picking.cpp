// What is under the pointer: a click on a mesh of the scene hides it, a click on the background
// shows all again.

#include "common.h"

#include <ravolt.h>

#include <cstdio>
#include <string>

namespace {

void showAll(RVNODE *node) {
    if (node->getType() == RV_NODE_TYPE_MESH)
        static_cast<RVMESH *>(node)->setDisplayStatus(true);
    for (unsigned int i = 0; i < node->getNumberOfChildren(); ++i)
        showAll(node->getChild(i));
}

void hide(RVNODE *scene, unsigned int id) {
    RVNODE *node = scene->findByIdInHierarchy(id);
    if (node && node->getType() == RV_NODE_TYPE_MESH) {
        std::printf("hidden: %s\n", node->getName());
        static_cast<RVMESH *>(node)->setDisplayStatus(false);
    }
}

} // namespace

int main(int argc, char **argv) {
    Example example(argc, argv, {"SCENE.rve"});
    const std::string scene = example.files[0], folder = folderOf(scene);

    RVSETTINGS settings;
    settings.setTitle("Ravolt: picking");
    settings.setVideoMemory(256); // megabytes for textures
    settings.setColorDepth(32);   // all four bytes of an identifier fit into a pixel
    settings.setRVEPath(folder.c_str());
    settings.setTexturePath(folder.c_str());
    if (!RAVOLT::init(&settings))
        return 1;
    RVNODE *model = RAVOLT::load(scene.substr(folder.size()).c_str());
    if (!model) {
        RAVOLT::free();
        return 1;
    }

    RVCAMERA *camera = new RVCAMERA();
    camera->setPosition(3.0f, 3.0f, 5.0f);
    camera->setTargetNode(model);
    RVLIGHT *light = new RVLIGHT();
    light->setPosition(5.0f, 100.0f, 50.0f);

    do {
        RAVOLT::clear(true, true, false);
        RAVOLT::begin3D(camera);
        light->pass(true);
        model->pass(true);
        RAVOLT::end3D(true);

        // select uses the list of end3D, so this comes before begin2D.
        if (example.mouseX >= 0) {
            const unsigned int id = RAVOLT::select(example.mouseX, example.mouseY);
            id ? hide(model, id) : showAll(model);
        }
        RAVOLT::swap();
    } while (example.next());

    RAVOLT::free();
    return 0;
}
