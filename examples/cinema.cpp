// Plays a video into a texture by steps of its decoder.

#include "cinema.h"

#include <ravolt.h>

#include <cstdio>

namespace {

constexpr float length = 5; // seconds

// A video advances by steps of its decoder, of which each frame takes a different number. Playing
// it once without a texture, which drops the frames, counts the steps of the whole video.
unsigned int countSteps(RVVIDEO *video) {
    unsigned int steps = 0;
    for (video->play(); video->getStatus() == RV_VIDEO_PLAY; ++steps)
        video->update(1);
    return steps;
}

} // namespace

Cinema::Cinema(const char *file) : video(new RVVIDEO()), texture(new RVTEXTURE()) {
    texture->setFilter(true, false, true); // mipmaps would still show the first frame
    texture->create(512, 256, 3);
    if (!video->load(file)) {
        std::fprintf(stderr, "The video was not loaded; ravolt_log.txt says why.\n");
        return;
    }
    stepsPerSecond = static_cast<float>(countSteps(video)) / length;
    video->setTexture(texture);
    video->playLoop();
}

void Cinema::showOn(RVNODE *scene, const char *mesh) {
    RVNODE *node = scene->findByNameInHierarchy(mesh);
    if (!node || node->getType() != RV_NODE_TYPE_MESH)
        return;
    if (RVMATERIAL *material = static_cast<RVMESH *>(node)->getMaterial()) {
        material->setTexture(0, texture);
        material->setEmission(1.0f, 1.0f, 1.0f, 1.0f); // independent of lights
    }
}

void Cinema::advance(float seconds) {
    pendingSteps += seconds * stepsPerSecond;
    const unsigned int steps = static_cast<unsigned int>(pendingSteps);
    video->update(steps);
    pendingSteps -= static_cast<float>(steps);
}
