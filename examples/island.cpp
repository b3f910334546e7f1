// A flight over an island by day, below its water, and by night: a terrain with its sky and its
// water, a camp fire with smoke and sparks, and on a paved place a truck that a character walks
// round, with shadows, bloom, tone mapping and depth of field. The terrain, its textures and the
// fire are what `ravolt terrain --island` makes.

#include "common.h"
#include "panel.h"
#include "stage.h"
#include "walker.h"

#include <ravolt.h>

#include <SDL/SDL.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

using Point = Z3MVECTOR3D;

// Where `ravolt terrain --island 7` leaves level ground, and how much higher than its heights a
// terrain is drawn.
const Point square(162.7f, 6.53f, 116.3f);
constexpr float islandFarPlane = 900; // the sky reaches nine tenths as far

struct Lighting {
    Point from; // the light, seen from the paved place
    float red, green, blue;
    float ambientRed, ambientGreen, ambientBlue;
    float hazeRed, hazeGreen, hazeBlue; // where the terrain and the sky end
    const char *sky;
};

constexpr char daySky[] = "sky_day.tga", nightSky[] = "sky_night.tga";
const Lighting day = {{-112, 70, -28}, 0.98f, 0.92f, 0.80f, 0.22f, 0.23f,
                      0.26f,           0.72f, 0.81f, 0.88f, daySky};
const Lighting underWater = {{-112, 70, -28}, 0.30f, 0.60f, 0.62f, 0.06f, 0.17f,
                             0.22f,           0.10f, 0.30f, 0.38f, daySky};
const Lighting night = {{105, 80, -30}, 0.30f, 0.36f, 0.52f, 0.10f,   0.10f,
                        0.12f,          0.03f, 0.04f, 0.09f, nightSky};

// One part of the flight: the camera and its target each move from one point to another.
// The focus is in units from the camera; a part without one has no depth of field.
struct Part {
    const char *name;
    const Lighting &lighting;
    Point eyeFrom, eyeTo, targetFrom, targetTo;
    float bloom; // intensity; 0 for none
    float focus;
};

const Point fire = square + Point(2, 0, -14.5f); // where its shadow is beside the place

const Part parts[] = {
    {"1 the island", day, {330, 75, -90}, {215, 42, 10}, {256, 20, 250}, {200, 14, 180}, 0.35f, 0},
    {"2 along the shore",
     day,
     {60, 9, 60},
     {112, 7, 74},
     {190, 14, 150},
     square + Point(0, 4, 10),
     0.35f,
     0},
    {"3 the paved place", day, square + Point(-9, 3.2f, -9), square + Point(-1.5f, 2.5f, -11.5f),
     square + Point(0.5f, 1, 0), square + Point(0, 1.2f, 0), 0.3f, 11},
    {"4 the camp fire", day, fire + Point(-3, 1.4f, -5), fire + Point(3, 2.6f, -5.5f),
     fire + Point(0, 1.2f, 0), fire + Point(0, 1.6f, 0), 0.4f, 5.8f},
    {"5 at the surface",
     day,
     {60, 2.2f, 30},
     {92, 1.3f, 52},
     {230, 22, 190},
     {230, 18, 190},
     0.35f,
     0},
    {"6 under water",
     underWater,
     {92, -3, 40},
     {104, -5, 60},
     {190, -6, 110},
     {190, -3, 120},
     0.0f,
     0},
    {"7 night",
     night,
     {60, 14, 40},
     {110, 10, 66},
     {220, 30, 180},
     square + Point(0, 8, 20),
     0.5f,
     0},
    {"8 the camp fire by night", night, fire + Point(-5, 2, -6), fire + Point(1, 1.6f, -6.5f),
     fire + Point(0, 1.2f, 1), fire + Point(0, 1.6f, 2), 0.8f, 6.5f},
    {"9 the paved place by night", night, square + Point(8, 2.6f, -9.5f),
     square + Point(-4, 2.2f, -11), square + Point(0, 1.2f, 0), square + Point(0, 1.4f, 0), 0.8f,
     0},
};
constexpr int numberOfParts = sizeof parts / sizeof *parts;
constexpr float secondsOfAPart = 9;
constexpr float blurDistance = 14; // units from the focus

Point mix(const Point &from, const Point &to, float ratio) {
    return Point(from.x + (to.x - from.x) * ratio, from.y + (to.y - from.y) * ratio,
                 from.z + (to.z - from.z) * ratio);
}

// Terrain, sky and water, with the sun or the moon. The light is a spot, which casts the shadows of
// the paved place; for a terrain every light is one without a cone.
struct Land {
    RVTERRAIN *terrain = new RVTERRAIN();
    RVLIGHT *light = new RVLIGHT();

    bool load(const char *file) {
        RVTERRAIN::restoreTargetOn(); // it is drawn into the target of the effects
        light->setLightType(RV_LIGHT_TYPE_SPOT);
        light->setTargetNode(light);
        light->setTarget(square);
        light->setCutOff(14);
        light->setExponent(0);
        light->setShadowNearPlane(60);
        light->setShadowFarPlane(200);
        light->setExclusive(true); // the terrain takes the first light
        light->castShadows(true);
        return terrain->load(file) && terrain->getSkydome()->loadTexture(nightSky);
    }

    void apply(const Lighting &rig) const {
        light->setPosition(square + rig.from);
        light->setDiffuse(rig.red, rig.green, rig.blue, 1);
        light->setSpecular(rig.red * 0.5f, rig.green * 0.5f, rig.blue * 0.5f, 1);
        light->setAmbient(rig.ambientRed, rig.ambientGreen, rig.ambientBlue, 1);
        RVOPENGL::setGlobalAmbientLight(rig.ambientRed, rig.ambientGreen, rig.ambientBlue, 1);
        RVOPENGL::setBackgroundColor(rig.hazeRed, rig.hazeGreen, rig.hazeBlue, 1);
        terrain->getSkydome()->loadTexture(rig.sky);
    }
};

// Flames and smoke from their files, and sparks.
struct CampFire {
    RVEMITTER *flames = new RVEMITTER(), *smoke = new RVEMITTER(), *sparks = new RVEMITTER();

    bool load(const std::string &folder) {
        const std::string fireFile = folder + "fire.xml", smokeFile = folder + "smoke.xml";
        if (!flames->load(fireFile.c_str()) || !smoke->load(smokeFile.c_str()) ||
            !sparks->load(fireFile.c_str()))
            return false;
        sparks->setMaximumParticuleSize(2);
        sparks->setMaximumVelocity(5);
        sparks->setMaximumEnergy(180);
        sparks->setGravity(Point(0.6f, 0.9f, 0.2f));
        sparks->setColorStart(Point(1, 0.8f, 0.4f));
        sparks->setColorEnd(Point(1, 0.3f, 0.05f));
        sparks->setNumberOfParticles(40);
        flames->setPosition(fire);
        sparks->setPosition(fire + Point(0, 0.3f, 0));
        smoke->setPosition(fire + Point(0, 1.4f, 0));
        return true;
    }

    void pass() const {
        smoke->pass(true);
        flames->pass(true);
        sparks->pass(true);
    }
};

void hide(RVNODE *scene, const char *mesh) {
    RVNODE *node = scene->findByNameInHierarchy(mesh);
    if (node && node->getType() == RV_NODE_TYPE_MESH)
        static_cast<RVMESH *>(node)->setDisplayStatus(false);
}

// The paved place: the floor and the lamps of the stage, a model and who walks round it.
RVNODE *makeSquare(RVNODE *stage, RVNODE *model, const Walker &walker) {
    for (const char *mesh : {"grass", "screen", "frame", "leg1", "leg2"})
        hide(stage, mesh);
    RVNODE *place = new RVNODE();
    place->setPosition(square);
    stage->link(place);
    model->link(place);
    model->setRotation(0.0f, -25.0f, 0.0f);
    model->setPosition(0.9f, 0.0f, -0.6f);
    walker.getNode()->link(place);
    return place;
}

void turn(bool on, void (*switchOn)(), void (*switchOff)()) { on ? switchOn() : switchOff(); }

// What the part has, unless the panel has switched it off.
void applyEffects(const Part &part, const Panel &panel) {
    turn(part.bloom > 0 && panel.isOn("bloom"), RAVOLT::bloomingOn, RAVOLT::bloomingOff);
    RAVOLT::setBloomingIntensity(part.bloom * panel.getBloomFactor());
    turn(part.focus > 0 && panel.isOn("focus"), RAVOLT::DOFOn, RAVOLT::DOFOff);
    turn(panel.isOn("shadows"), RAVOLT::shadowingOn, RAVOLT::shadowingOff);
    turn(panel.isOn("wireframe"), RAVOLT::wireframeOn, RAVOLT::wireframeOff);
    const float focus = part.focus * panel.getFocusFactor();
    RAVOLT::setDOFFocus((focus + nearPlane) / islandFarPlane); // as the depth pass encodes it
    RAVOLT::setDOFRange(islandFarPlane / blurDistance);
}

void moveCamera(RVCAMERA *camera, const Part &part, float progress) {
    const float ratio = 0.5f - 0.5f * std::cos(3.1415927f * progress);
    camera->setPosition(mix(part.eyeFrom, part.eyeTo, ratio));
    camera->setTarget(mix(part.targetFrom, part.targetTo, ratio));
}

RVCAMERA *makeFlyingCamera() {
    RVCAMERA *camera = new RVCAMERA();
    camera->setTargetNode(camera);
    return camera;
}

// The far plane decides how large a sky is made.
void setPlanes() {
    RVOPENGL::setNearPlane(nearPlane);
    RVOPENGL::setFarPlane(islandFarPlane);
    RVOPENGL::resize(0, 0, RVSETTINGS::getSDLWindowX(), RVSETTINGS::getSDLWindowY());
}

void announce(const Part &part) {
    std::fprintf(stderr, "%s\n", part.name);
    SDL_WM_SetCaption(("Ravolt: " + std::string(part.name)).c_str(), nullptr);
}

} // namespace

int main(int argc, char **argv) {
    // init
    Example example(
        argc, argv,
        {"TERRAIN.xml", "STAGE.rve", "SCENE.rve", "CHARACTER.rve", "CLIP.rva", "PANEL.xml"});
    if (!openStage("Ravolt: island", example.files[1], example.draft))
        return 1;
    setPlanes();
    RVNODE *stage = loadStage(example.files[1]), *model = RAVOLT::load(example.files[2]);
    Walker walker(example.files[3], example.files[4]);
    Panel panel;
    const bool panelLoaded = panel.load(example.files[5]);
    const std::string folder = folderOf(example.files[0]);
    RVTEXTURE::setPath(folder.c_str());
    Land land;
    CampFire campFire;
    if (!stage || !model || !walker.isReady() || !panelLoaded || !land.load(example.files[0]) ||
        !campFire.load(folder)) {
        RAVOLT::free();
        return 1;
    }
    RVNODE *place = makeSquare(stage, model, walker);
    RVCAMERA *camera = makeFlyingCamera();
    if (example.frames) { // pictures are the same in each run
        std::srand(1);
        RAVOLT::setFrameDuration(1.0f / 30.0f);
    }

    float time = 0; // in parts
    int shown = -1;
    do {
        // update
        const bool starts = static_cast<int>(time) != shown;
        shown = static_cast<int>(time);
        const Part &part = parts[shown % numberOfParts];
        if (starts) {
            announce(part);
            land.apply(part.lighting);
        }
        applyEffects(part, panel);
        moveCamera(camera, part, time - static_cast<float>(shown));
        walker.advance(example.seconds());
        // A run of N frames shows all parts once; the last picture of each is written.
        time = example.frames
                   ? (static_cast<float>(example.frame) + 1.001f) * numberOfParts / example.frames
                   : time + example.seconds() / secondsOfAPart;
        example.label = static_cast<int>(time) != shown ? part.name : nullptr;

        // draw
        RAVOLT::clear(true, true, false);
        RAVOLT::begin3D(camera);
        land.light->pass(true);
        land.terrain->pass(true);
        place->pass(true);
        campFire.pass();
        RAVOLT::end3D(true);
        showFrame(example.frames ? nullptr : panel.getNode()); // pictures are without the panel
        panel.update(example);
        if (const std::string name = panel.takePictureName(); !name.empty())
            Example::writePicture((name + ".png").c_str());
    } while (example.next());

    // free
    RAVOLT::free();
    return 0;
}
