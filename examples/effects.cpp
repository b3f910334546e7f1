// The effects in turn: a model on a stage under a spot light, which casts soft shadows, among lamps
// that are brighter than white and glow, seen by a camera that pulls its focus.

#include "common.h"

#include <ravolt.h>

#include <SDL/SDL.h>

#include <cmath>
#include <cstdio>
#include <string>

namespace {

// One part of the show. The focus goes from one distance to another, in metres from the camera; a
// part without a focus has no depth of field.
struct Part {
    const char *name;
    bool perPixel, shadows, bloom, tones;
    float focusFrom, focusTo;
    bool (*works)(); // on this display
};

bool always() { return true; }

const Part parts[] = {
    {"1 fixed-function lighting", false, false, false, false, 0, 0, always},
    {"2 per-pixel lighting", true, false, false, false, 0, 0, RVSHADER::usePPL},
    {"3 soft shadows", true, true, false, false, 0, 0, RVSHADER::useShadows},
    {"4 bloom", true, false, true, false, 0, 0, RVSHADER::useBloom},
    {"5 bloom with tone mapping", true, false, true, true, 0, 0, RVSHADER::useBloom},
    {"6 focus on the truck", true, false, false, false, 18, 9.5f, RVSHADER::useDOF},
    {"7 focus pulled to the front", true, false, false, false, 9.5f, 5.8f, RVSHADER::useDOF},
    {"8 focus pulled to the back", true, false, false, false, 5.8f, 18, RVSHADER::useDOF},
    {"9 all effects", true, true, true, true, 18, 9.5f, RVSHADER::useDOF},
};
constexpr int numberOfParts = sizeof parts / sizeof *parts;
constexpr float secondsOfAPart = 4, nearPlane = 0.5f, farPlane = 40;
constexpr float blurredAfter = 5; // metres before and behind the focus

void turn(bool on, void (*switchOn)(), void (*switchOff)()) { on ? switchOn() : switchOff(); }

void show(const Part &part, float progress) {
    turn(part.perPixel, RVSETTINGS::forceShadersOn, RVSETTINGS::forceShadersOff);
    turn(part.shadows, RAVOLT::shadowingOn, RAVOLT::shadowingOff);
    turn(part.bloom, RAVOLT::bloomingOn, RAVOLT::bloomingOff);
    turn(part.tones, RAVOLT::HDROn, RAVOLT::HDROff); // acts within bloom alone
    turn(part.focusTo > 0, RAVOLT::DOFOn, RAVOLT::DOFOff);
    const float pulled = 0.5f - 0.5f * std::cos(3.1415927f * std::fmin(1.0f, 1.6f * progress));
    const float focus = part.focusFrom + (part.focusTo - part.focusFrom) * pulled;
    RAVOLT::setDOFFocus((focus + nearPlane) / farPlane); // the code of a depth
    RAVOLT::setDOFRange(farPlane / blurredAfter);
}

void announce(const Part &part) {
    const std::string line = std::string(part.name) + (part.works() ? "" : ": not on this display");
    std::fprintf(stderr, "%s\n", line.c_str());
    SDL_WM_SetCaption(("Ravolt: " + line).c_str(), nullptr);
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

} // namespace

int main(int argc, char **argv) {
    // init
    Example example(argc, argv);
    if (!example.stage) {
        std::fprintf(stderr,
                     "usage: effects [--frames N] [--picture FILE.png] SCENE.rve STAGE.rve\n");
        return 2;
    }
    const std::string scene = example.scene;
    RVSETTINGS settings;
    settings.setTitle("Ravolt: effects");
    settings.setWindowX(960);
    settings.setWindowY(600);
    settings.setFBOSizeX(960);
    settings.setFBOSizeY(600);
    settings.setShadowMapSize(384); // the smaller, the softer
    settings.setColorDepth(32);
    settings.setZetaDepth(24);
    settings.setShaders(true);
    settings.setTexturePath(scene.substr(0, scene.find_last_of('/') + 1).c_str());
    if (!RAVOLT::init(&settings))
        return 1;
    RVNODE *model = RAVOLT::load(example.scene), *stage = RAVOLT::load(example.stage);
    if (!model || !stage) {
        RAVOLT::free();
        return 1;
    }
    model->setRotation(0.0f, -25.0f, 0.0f);
    model->setPosition(0.9f, 0.0f, -0.6f);
    RVLIGHT *spot = makeSpot();
    RVCAMERA *camera = new RVCAMERA();
    camera->setTarget(0.2f, 0.9f, 0.0f);
    camera->setTargetNode(camera);
    RVOPENGL::setNearPlane(nearPlane);
    RVOPENGL::setFarPlane(farPlane);
    RVOPENGL::resize(0, 0, RVSETTINGS::getSDLWindowX(), RVSETTINGS::getSDLWindowY());
    RVOPENGL::setBackgroundColor(0.03f, 0.04f, 0.07f, 1.0f);
    RVOPENGL::setGlobalAmbientLight(0.2f, 0.2f, 0.24f, 1.0f);
    RAVOLT::setBloomingIntensity(0.8f);
    RAVOLT::setHDRExposure(8.0f);

    float time = 0; // in parts
    int shown = -1;
    do {
        // update
        if (static_cast<int>(time) != shown)
            announce(parts[(shown = static_cast<int>(time)) % numberOfParts]);
        show(parts[shown % numberOfParts], time - static_cast<float>(shown));
        const float angle = 0.25f + 0.15f * std::sin(0.5f * time);
        camera->setPosition(10.0f * std::sin(angle), 2.4f, 10.0f * std::cos(angle));
        // A run of N frames goes through all parts once; the last picture of each is kept.
        time = example.frames
                   ? (static_cast<float>(example.frame) + 1.001f) * numberOfParts / example.frames
                   : time + example.seconds() / secondsOfAPart;
        example.label =
            static_cast<int>(time) != shown ? parts[shown % numberOfParts].name : nullptr;

        // draw
        RAVOLT::clear(true, true, false);
        RAVOLT::begin3D(camera);
        spot->pass(true);
        stage->pass(true);
        model->pass(true);
        RAVOLT::end3D(true);
        RAVOLT::swap();
    } while (example.next());

    // free
    RAVOLT::free();
    return 0;
}
