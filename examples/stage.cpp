#include "stage.h"

#include "common.h"

#include <ravolt.h>

#include <cmath>

bool openStage(const char *title, const char *file) {
    RVSETTINGS settings;
    settings.setTitle(title);
    settings.setWindowX(960);
    settings.setWindowY(600);
    settings.setFBOSizeX(960);
    settings.setFBOSizeY(600);
    settings.setShadowMapSize(384); // the smaller, the softer
    settings.setColorDepth(32);
    settings.setZetaDepth(24);
    settings.setShaders(true);
    settings.setTexturePath(folderOf(file).c_str());
    return RAVOLT::init(&settings);
}

RVLIGHT *makeSpot() {
    RVLIGHT *spot = new RVLIGHT();
    spot->setLightType(RV_LIGHT_TYPE_SPOT);
    spot->setPosition(7.0f, 9.0f, 5.0f); // not straight above: such a light casts no shadow
    spot->setTargetNode(spot);
    spot->setTarget(0.0f, 0.5f, 0.0f);
    spot->setCutOff(32.0f);
    spot->setExponent(10.0f);
    spot->setAmbient(0.0f, 0.0f, 0.0f, 1.0f);
    spot->setDiffuse(1.1f, 1.05f, 0.95f, 1.0f);
    spot->setSpecular(1.0f, 1.0f, 1.0f, 1.0f);
    spot->castShadows(true);
    spot->setShadowNearPlane(4.0f);
    spot->setShadowFarPlane(40.0f);
    return spot;
}

RVCAMERA *makeCamera() {
    RVCAMERA *camera = new RVCAMERA();
    camera->setTarget(0.2f, 0.9f, 0.0f);
    camera->setTargetNode(camera);
    goRound(camera, 17);
    RVOPENGL::setNearPlane(nearPlane);
    RVOPENGL::setFarPlane(farPlane);
    RVOPENGL::resize(0, 0, RVSETTINGS::getSDLWindowX(), RVSETTINGS::getSDLWindowY());
    RVOPENGL::setBackgroundColor(0.03f, 0.04f, 0.07f, 1.0f);
    RVOPENGL::setGlobalAmbientLight(0.2f, 0.2f, 0.24f, 1.0f);
    return camera;
}

void goRound(RVCAMERA *camera, float degrees) {
    const float angle = degrees * 3.1415927f / 180;
    camera->setPosition(10.0f * std::sin(angle), 2.4f, 10.0f * std::cos(angle));
}
