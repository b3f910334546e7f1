#pragma once

// The scene of the tests that draw water and terrains: a camera that looks down, and a light.

#include "ravolt/RAVOLT.h"
#include "ravolt/RVCAMERA.h"
#include "ravolt/RVLIGHT.h"
#include "tests/support/engineFixture.h"

namespace ravolt::test {

class LitSceneTest : public EngineTest {
  protected:
    LitSceneTest() { settings.setShaders(true); }

    // A new camera, and a new root with a white light.
    void makeLitRoot(const Z3MVECTOR3D &eye, float pitch, const Z3MVECTOR3D &lightAt) {
        camera = new RVCAMERA;
        camera->setPosition(eye);
        camera->setRotation(pitch, 0, 0);
        root = new RVNODE;
        light = new RVLIGHT;
        light->setPosition(lightAt);
        light->setDiffuse(1, 1, 1, 1);
        light->link(root);
        RVLIGHT::lightingOn();
    }

    Picture draw() {
        RAVOLT::swap(); // starts the next frame of the clock
        drawFrame(camera, root);
        return readFrame();
    }

    RVCAMERA *camera = nullptr;
    RVNODE *root = nullptr;
    RVLIGHT *light = nullptr;
};

} // namespace ravolt::test
