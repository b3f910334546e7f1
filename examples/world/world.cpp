// Loads the world, and draws its frames.

#include "examples/world/world.h"

#include "examples/cinema.h"
#include "examples/stage.h"
#include "examples/world/titles.h"

#include <ravolt.h>

#include <algorithm>
#include <cmath>

namespace world {

namespace {

constexpr float blurDistance = 12;                  // units from the focus
constexpr float sameMoment = 1e-5f, adaptation = 1; // seconds; after the second the eye has adapted
constexpr float longestStep = 0.1f;

void turn(bool on, void (*switchOn)(), void (*switchOff)()) { on ? switchOn() : switchOff(); }

} // namespace

World::World() = default;
World::~World() = default;

bool World::load() {
    RVLIGHT::markersOff();
    const bool loaded = panel.load("./panel.xml") && loadTitleFont("./") && village.load("./") &&
                        nature.load("./") && herd.load("./", village.getNode());
    if (!loaded)
        return false;
    adjustMaterials();
    cinema = std::make_unique<Cinema>("./video.m2v");
    cinema->showOn(village.getNode(), "screen");
    lampProgram = std::make_unique<LampProgram>();
    RVTEXTURE::setPath("island/");
    if (!land.load("island/terrain.xml") || !fire.load("island/"))
        return false;
    camera = new RVCAMERA();
    camera->setTargetNode(camera);
    RVOPENGL::setNearPlane(nearPlane);
    RVOPENGL::setFarPlane(worldFarPlane); // which also decides how large a sky is
    RVOPENGL::resize(0, 0, RVSETTINGS::getSDLWindowX(), RVSETTINGS::getSDLWindowY());
    RAVOLT::setHDRExposure(6.0f);
    return true;
}

void World::start(const Part &part) {
    if (panelOperated)
        panel.operate(1); // its last frame may have been any
    panelOperated = part.panel;
    night = part.lighting.night;
    land.apply(part.lighting);
    village.setNight(night);
}

// What the part has, unless the panel has switched it off.
void World::applyEffects(const Effects &effects) {
    const bool shadows = effects.shadows && panel.isOn("shadows");
    turn(effects.perPixel, RVSETTINGS::forceShadersOn, RVSETTINGS::forceShadersOff);
    turn(shadows, RAVOLT::shadowingOn, RAVOLT::shadowingOff);
    lampProgram->apply(effects.perPixel && night, shadows);
    turn(effects.bloom > 0 && panel.isOn("bloom"), RAVOLT::bloomingOn, RAVOLT::bloomingOff);
    RAVOLT::setBloomingIntensity(effects.bloom * panel.getBloomFactor());
    turn(effects.tones, RAVOLT::HDROn, RAVOLT::HDROff); // part of bloom
    turn(effects.focus > 0 && panel.isOn("focus"), RAVOLT::DOFOn, RAVOLT::DOFOff);
    turn(panel.isOn("wireframe"), RAVOLT::wireframeOn, RAVOLT::wireframeOff);
    const float focus = effects.focus * panel.getFocusFactor();
    RAVOLT::setDOFFocus((focus + nearPlane) / worldFarPlane); // as the depth pass encodes it
    RAVOLT::setDOFRange(worldFarPlane / blurDistance);
}

// By night an object has the main light and three more: of the lamps, and of the fire near it.
void World::pass(float time, bool withFire) const {
    const Point eye = camera->getPosition();
    const bool nearFire = std::hypot(eye.x - world::fire.x, eye.z - world::fire.z) < 7.5f;
    if (night && nearFire)
        fire.passLight(time);
    if (night)
        village.passLights(nearFire ? 2 : 3);
    land.pass();
    village.pass();
    nature.pass();
    if (withFire)
        fire.pass();
}

void World::drawOnce(const Effects &effects, float time, bool withFire) {
    applyEffects(effects);
    RAVOLT::clear(true, true, false);
    RAVOLT::begin3D(camera);
    pass(time, withFire);
    RAVOLT::end3D(true);
}

void World::advance(const Part &part, float progress, float seconds) {
    camera->setPosition(eyeAt(part, progress));
    camera->setTarget(targetAt(part, progress));
    float rest = seconds;
    while (rest > 0) { // for a gait that changes in between
        herd.advance(std::min(rest, longestStep));
        rest -= longestStep;
    }
    nature.advance(seconds);
    cinema->advance(seconds);
    if (part.panel)
        panel.operate(progress);
}

void World::draw(const Part &part, float time, float split) {
    if (part.comparison) {
        drawOnce(part.before, time);
        copyFrame(0, split);
        RAVOLT::setFrameDuration(sameMoment);
    }
    const bool adapts = part.effects.tones && frameDuration > 0;
    if (adapts)
        RAVOLT::setFrameDuration(adaptation);
    drawOnce(part.effects, time, !adapts); // flames cannot skip a second
    RAVOLT::setFrameDuration(frameDuration);
}

void World::startPictures(float frameSeconds) {
    frameDuration = frameSeconds;
    RAVOLT::setFrameDuration(frameDuration);
    for (int i = 0; i < 60; ++i) {
        RAVOLT::begin3D(camera);
        fire.pass();
        RAVOLT::end3D(true);
    }
}

} // namespace world
