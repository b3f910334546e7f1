// The effects in turn: a model on a stage, by day under a far spot light and by night in the pool
// of a near one, which casts soft shadows, among lamps that are brighter than white and glow, seen
// by a camera that pulls its focus. A character walks round the model, and beside it a video plays
// on a screen.

#include "cinema.h"
#include "common.h"
#include "stage.h"
#include "walker.h"

#include <ravolt.h>

#include <SDL/SDL.h>

#include <cmath>
#include <cstdio>
#include <string>

namespace {

// One part of the show. The focus moves from one distance to another, in metres from the camera; a
// part without a focus has no depth of field.
struct Part {
    const char *name;
    Daytime time;
    bool perPixel, shadows;
    float bloom; // intensity; 0 for none
    bool tones;
    float focusFrom, focusTo;
    bool (*works)(); // on this display
};

bool always() { return true; }

const Part parts[] = {
    {"1 fixed-function lighting", Daytime::night, false, false, 0, false, 0, 0, always},
    {"2 per-pixel lighting", Daytime::night, true, false, 0, false, 0, 0, RVSHADER::usePPL},
    {"3 soft shadows", Daytime::day, true, true, 0, false, 0, 0, RVSHADER::useShadows},
    {"4 bloom", Daytime::night, true, true, 1.2f, false, 0, 0, RVSHADER::useBloom},
    {"5 bloom with tone mapping", Daytime::night, true, true, 1.2f, true, 0, 0, RVSHADER::useBloom},
    {"6 focus on the truck", Daytime::day, true, true, 0, false, 18, 9.5f, RVSHADER::useDOF},
    {"7 focus pulled to the front", Daytime::day, true, true, 0, false, 9.5f, 5.8f,
     RVSHADER::useDOF},
    {"8 focus pulled to the back", Daytime::day, true, true, 0, false, 5.8f, 18, RVSHADER::useDOF},
    {"9 all effects", Daytime::night, true, true, 1.0f, true, 18, 9.5f, RVSHADER::useDOF},
};
constexpr int numberOfParts = sizeof parts / sizeof *parts;
constexpr float secondsOfAPart = 4;
constexpr float blurDistance = 5; // metres from the focus

void turn(bool on, void (*switchOn)(), void (*switchOff)()) { on ? switchOn() : switchOff(); }

void show(const Part &part, float progress, RVLIGHT *spot) {
    turn(part.perPixel, RVSETTINGS::forceShadersOn, RVSETTINGS::forceShadersOff);
    turn(part.shadows, RAVOLT::shadowingOn, RAVOLT::shadowingOff);
    setDaytime(spot, part.time, part.tones ? 0.75f : 1.0f); // tone mapping brightens
    turn(part.bloom > 0, RAVOLT::bloomingOn, RAVOLT::bloomingOff);
    RAVOLT::setBloomingIntensity(part.bloom);
    turn(part.tones, RAVOLT::HDROn, RAVOLT::HDROff); // part of bloom
    turn(part.focusTo > 0, RAVOLT::DOFOn, RAVOLT::DOFOff);
    const float pulled = 0.5f - 0.5f * std::cos(3.1415927f * std::fmin(1.0f, 1.6f * progress));
    const float focus = part.focusFrom + (part.focusTo - part.focusFrom) * pulled;
    RAVOLT::setDOFFocus((focus + nearPlane) / farPlane); // as the depth pass encodes it
    RAVOLT::setDOFRange(farPlane / blurDistance);
}

void announce(const Part &part) {
    const std::string line = std::string(part.name) + (part.works() ? "" : ": not on this display");
    std::fprintf(stderr, "%s\n", line.c_str());
    SDL_WM_SetCaption(("Ravolt: " + line).c_str(), nullptr);
}

// The GPU skins meshes only by programs, so that a skinned mesh needs a program also where the
// fixed functions light the others.
void setSkinningProgram(RVNODE *node, RVSHADER *program) {
    RVMESH *mesh = node->getType() == RV_NODE_TYPE_MESH ? static_cast<RVMESH *>(node) : nullptr;
    if (mesh && mesh->isSkinned() && mesh->getMaterial())
        mesh->getMaterial()->setShader(program);
    for (unsigned int i = 0; i < node->getNumberOfChildren(); ++i)
        setSkinningProgram(node->getChild(i), program);
}

// Tone mapping adapts to the brightness over time. In a run for pictures, whose frames take any
// time, this frame counts as a second, so that the adaptation is complete.
void adaptToneMapping() {
    RAVOLT::begin2D();
    RAVOLT::end2D();
    RAVOLT::swap();
    SDL_Delay(1000);
}

} // namespace

int main(int argc, char **argv) {
    // init
    Example example(argc, argv,
                    {"SCENE.rve", "STAGE.rve", "CHARACTER.rve", "CLIP.rva", "VIDEO.m2v"});
    if (!openStage("Ravolt: effects", example.files[0], example.width))
        return 1;
    RVNODE *model = RAVOLT::load(example.files[0]), *stage = loadStage(example.files[1]);
    Walker walker(example.files[2], example.files[3]);
    if (!model || !stage || !walker.isReady()) {
        RAVOLT::free();
        return 1;
    }
    model->setRotation(0.0f, -25.0f, 0.0f);
    model->setPosition(0.9f, 0.0f, -0.6f);
    Cinema cinema(example.files[4]);
    cinema.showOn(stage, "screen");
    RVLIGHT *spot = makeSpot();
    RVCAMERA *camera = makeCamera();
    RAVOLT::setHDRExposure(4.0f);

    float time = 0, before = 0; // in parts
    int shown = -1;
    do {
        // update
        if (static_cast<int>(time) != shown)
            announce(parts[(shown = static_cast<int>(time)) % numberOfParts]);
        const Part &part = parts[shown % numberOfParts];
        show(part, time - static_cast<float>(shown), spot);
        setSkinningProgram(walker.getNode(), part.perPixel ? nullptr : RVSHADER::pplSpotTA);
        orbit(camera, 17 + 5 * std::sin(0.5f * time));
        walker.advance((time - before) * secondsOfAPart);
        cinema.advance((time - before) * secondsOfAPart);
        before = time;
        // A run of N frames shows all parts once; the last picture of each is written.
        time = example.frames
                   ? (static_cast<float>(example.frame) + 1.001f) * numberOfParts / example.frames
                   : time + example.seconds() / secondsOfAPart;
        example.label = static_cast<int>(time) != shown ? part.name : nullptr;
        if (part.tones && example.frames && example.label)
            adaptToneMapping();

        // draw
        drawFrame(camera, {spot, stage, model, walker.getNode()});
    } while (example.next());

    // free
    RAVOLT::free();
    return 0;
}
