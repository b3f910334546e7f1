// Opens the window of the stage, loads it, and sets its light and camera.

#include "stage.h"

#include "common.h"

#include <ravolt.h>

#include <cmath>

namespace {

struct Lighting {
    float x, y, z; // not straight above: such a light casts no shadow
    float cutOff, exponent;
    float red, green, blue;
    float shadowNear, shadowFar;
    float ambientRed, ambientGreen, ambientBlue;
};

const Lighting day = {-30, 36, 30, 38, 0, 0.80f, 0.77f, 0.70f, 30, 110, 0.36f, 0.38f, 0.42f};
const Lighting night = {-3.5f, 12, 9, 20, 10, 0.9f, 0.85f, 0.76f, 4, 40, 0.16f, 0.17f, 0.24f};

RVNODE *skies[2] = {}; // each under a node of its own, by Daytime

// Detaches a dome from the stage, to be drawn round the camera.
RVNODE *takeSky(RVNODE *stage, const char *name) {
    RVNODE *parent = new RVNODE();
    if (RVNODE *dome = stage->findByNameInHierarchy(name)) {
        dome->unlink();
        dome->link(parent);
    }
    return parent;
}

} // namespace

static int shadowMapFor(int width) { return width < 480 ? 256 : width < 960 ? 2048 : 4096; }

bool openStage(const char *title, const char *file, int width) {
    const int height = width * 5 / 8;
    RVSETTINGS settings;
    settings.setTitle(title);
    settings.setWindowX(width);
    settings.setWindowY(height);
    settings.setFBOSizeX(2 * width);
    settings.setFBOSizeY(2 * height);
    settings.setForceFBO(true);
    // Smaller shadow maps show steps on faces that the light grazes.
    settings.setShadowMapSize(shadowMapFor(width));
    settings.setVideoMemory(256); // megabytes; SDL reports none, and 16 would be assumed
    settings.setMaxAnisotropy(1); // software drivers are several times faster, and texts sharp
    settings.setColorDepth(32);
    settings.setZetaDepth(24);
    settings.setShaders(true);
    settings.setTexturePath(folderOf(file).c_str());
    if (!RAVOLT::init(&settings))
        return false;
    RAVOLT::setShadowOffset(4, 8); // two-sided surfaces would shadow themselves in stripes
    return true;
}

RVNODE *loadStage(const char *file) {
    RVNODE *stage = RAVOLT::load(file);
    if (stage) {
        skies[static_cast<int>(Daytime::day)] = takeSky(stage, "sky_day");
        skies[static_cast<int>(Daytime::night)] = takeSky(stage, "sky_night");
    }
    return stage;
}

RVLIGHT *makeSpot(Daytime time) {
    RVLIGHT *spot = new RVLIGHT();
    spot->setLightType(RV_LIGHT_TYPE_SPOT);
    spot->setTargetNode(spot);
    spot->setTarget(0.4f, 0.5f, 0.0f);
    spot->setAmbient(0.0f, 0.0f, 0.0f, 1.0f);
    spot->castShadows(true);
    setDaytime(spot, time);
    return spot;
}

void setDaytime(RVLIGHT *spot, Daytime time, float brightness) {
    const Lighting &light = time == Daytime::day ? day : night;
    spot->setPosition(light.x, light.y, light.z);
    spot->setCutOff(light.cutOff);
    spot->setExponent(light.exponent);
    const Z3MVECTOR4D color(light.red * brightness, light.green * brightness,
                            light.blue * brightness, 1.0f);
    spot->setDiffuse(color);
    spot->setSpecular(color);
    spot->setShadowNearPlane(light.shadowNear);
    spot->setShadowFarPlane(light.shadowFar);
    RVOPENGL::setGlobalAmbientLight(light.ambientRed, light.ambientGreen, light.ambientBlue, 1.0f);
    RAVOLT::setSkybox(skies[static_cast<int>(time)]);
}

RVCAMERA *makeCamera() {
    RVCAMERA *camera = new RVCAMERA();
    camera->setTarget(0.0f, 1.2f, 0.0f);
    camera->setTargetNode(camera);
    orbit(camera, 17);
    RVOPENGL::setNearPlane(nearPlane);
    RVOPENGL::setFarPlane(farPlane);
    RVOPENGL::resize(0, 0, RVSETTINGS::getSDLWindowX(), RVSETTINGS::getSDLWindowY());
    return camera;
}

void orbit(RVCAMERA *camera, float degrees) {
    const float angle = degrees * 3.1415927f / 180;
    camera->setPosition(10.0f * std::sin(angle), 2.4f, 10.0f * std::cos(angle));
}

// The part of target 0 between two columns, from 0 to 1. Its filter takes the mean of four pixels.
static void drawTarget(float from, float to) {
    const float width = static_cast<float>(RVSETTINGS::getSDLWindowX());
    const float height = static_cast<float>(RVSETTINGS::getSDLWindowY());
    RVOPENGL::getFbo(0)->getTexture()->render(nullptr);
    glColor4f(1, 1, 1, 1);
    glBegin(GL_QUADS);
    glTexCoord2f(from, 1), glVertex2f(from * width, 0);
    glTexCoord2f(from, 0), glVertex2f(from * width, height);
    glTexCoord2f(to, 0), glVertex2f(to * width, height);
    glTexCoord2f(to, 1), glVertex2f(to * width, 0);
    glEnd();
}

// Starts the 2D block of the window, with a part of the frame.
static void beginWindow(float from, float to) {
    const bool inTarget = RVOPENGL::useFBO(); // else the frame is in the window already
    if (inTarget) {
        RVFBO::unbind();
        glViewport(0, 0, RVSETTINGS::getSDLWindowX(), RVSETTINGS::getSDLWindowY());
    }
    RAVOLT::begin2D();
    if (inTarget)
        drawTarget(from, to);
}

void copyFrame(float from, float to) {
    beginWindow(from, to);
    RAVOLT::end2D();
}

void showFrame(RVNODE *interface, const std::function<void()> &overlay, float from) {
    beginWindow(from, 1);
    if (overlay)
        overlay();
    if (interface)
        interface->pass(true);
    RAVOLT::end2D();
    RAVOLT::swap();
}

void drawFrame(RVCAMERA *camera, std::initializer_list<RVNODE *> nodes,
               const std::function<void()> &overlay) {
    RAVOLT::clear(true, true, false);
    RAVOLT::begin3D(camera);
    for (RVNODE *node : nodes)
        node->pass(true);
    RAVOLT::end3D(true);
    showFrame(nullptr, overlay);
}
