// A camera goes round the scene, whose clips are played. With tone mapping, which adapts to the
// brightness over time, and with particles every frame is drawn.

#include "tools/commands/viewModel.h"

#include "tools/commands/scene.h"
#include "tools/commands/show.h"
#include "tools/common/failure.h"
#include "tools/common/message.h"
#include "tools/common/report.h"
#include "tools/stage/particles.h"
#include "tools/stage/picture.h"
#include "tools/stage/playback.h"
#include "tools/stage/walk.h"

#include <SDL.h>
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <ravolt/RVMESH.h>
#include <ravolt/kit/orbitCamera.h>
#include <tuple>

namespace ravolt::tool {

namespace fs = std::filesystem;

namespace {

constexpr double degreesPerPixel = 0.4;
constexpr double degreesPerKey = 5;
constexpr double zoomPerStep = 1.12, minZoom = 0.05, maxZoom = 50;
constexpr double spinDegreesPerSecond = 40;

class ModelViewer : public ViewLoop {
  public:
    ModelViewer(ViewSession &common, ViewOptions &wanted, RVNODE *root, Stage &shown,
                Playback &played)
        : ViewLoop(common, wanted.input.filename().string()), stage(shown), playback(played),
          options(wanted), scene(root), firstYaw(shown.getYaw()), firstPitch(shown.getPitch()) {
        orbit.setTurnRate(0);
        orbit.setMoveRate(0);
        orbit.setDegreesPerPixel(degreesPerPixel);
        orbit.setPanButton(0);
        orbit.setZoomStep(1 / zoomPerStep);
        orbit.setDistanceLimits(1 / maxZoom, 1 / minZoom);
        reset();
        fitBrightness();
        showState();
    }

    static const std::vector<ViewKey<ModelViewer>> &keys();

  private:
    bool advance(double passed) override;
    void draw() override;
    void onDrawn() override;
    bool shift(const PicturePart &part) override {
        stage.setPart(part);
        return true;
    }
    bool press(int key) override;
    TextRows help() const override;
    TextRows information() const override;

    void toggleWireframe() { stage.setWireframe(options.wireframe = !options.wireframe); }
    void toggleNormals() { stage.setNormals(options.normals = !options.normals); }
    void toggleBoxes() { stage.setBoxes(options.boxes = !options.boxes); }
    void nextRig();
    void picture() { pictureWanted = true; }
    void reset();
    void spin() { options.spin = !options.spin; }
    bool moveOnOrbit(double seconds);
    void chooseClip(bool backwards);
    void pause();
    void step(int frames);
    void toggle(Effect effect);
    void fitBrightness();
    void nextParameter();
    void changeParameter(double value);
    void addToParameter(int steps);
    void showState();
    void savePicture();

    Stage &stage;
    Playback &playback;
    ViewOptions &options;
    RVNODE *scene;
    double firstYaw, firstPitch;
    kit::OrbitCamera orbit; // moved at once; at a distance of 1 the whole scene is seen
    EffectParameter parameter = EffectParameter::brightness; // that the keys change
    double brightnessForGlow = 0; // found from the scene when bloom came on
    bool pictureWanted = false;
    int pictures = 0;
    bool paused = false; // the clip
};

const std::vector<ViewKey<ModelViewer>> &ModelViewer::keys() {
    using Viewer = ModelViewer;
    static const std::vector<ViewKey<Viewer>> all = [] {
        std::vector<ViewKey<Viewer>> list = {
            {0, "drag", "go round the scene", nullptr},
            {0, "wheel", "nearer and farther", nullptr},
            {SDLK_LEFT, "Left", "go round it", [](Viewer &v) { v.orbit.turn(-degreesPerKey, 0); }},
            {SDLK_RIGHT, "Right", "go round it", [](Viewer &v) { v.orbit.turn(degreesPerKey, 0); }},
            {SDLK_UP, "Up", "go above it", [](Viewer &v) { v.orbit.turn(0, -degreesPerKey); }},
            {SDLK_DOWN, "Down", "go below it", [](Viewer &v) { v.orbit.turn(0, degreesPerKey); }},
            {SDLK_PLUS, "+", "nearer", [](Viewer &v) { v.orbit.zoom(1); }},
            {SDLK_MINUS, "-", "farther", [](Viewer &v) { v.orbit.zoom(-1); }},
            {SDLK_SPACE, "Space", "turn by itself", &Viewer::spin},
            {SDLK_r, "r", "the first view again", &Viewer::reset},
            {SDLK_w, "w", "wireframe", &Viewer::toggleWireframe},
            {SDLK_n, "n", "normals", &Viewer::toggleNormals},
            {SDLK_b, "b", "bounding boxes", &Viewer::toggleBoxes},
            {SDLK_l, "l", "next light rig", &Viewer::nextRig},
        };
        static constexpr const char *digits[] = {"1", "2", "3", "4", "5", "6", "7"};
        static_assert(std::size(digits) == numberOfEffects);
        for (const EffectRow &row : effectTable()) {
            const auto index = static_cast<std::size_t>(row.effect);
            list.push_back({SDLK_1 + static_cast<int>(index), digits[index], row.name,
                            [&row](Viewer &viewer) { viewer.toggle(row.effect); }});
        }
        const std::vector<ViewKey<Viewer>> rest = {
            {SDLK_TAB, "Tab", "next parameter of the effects that are on", &Viewer::nextParameter},
            {SDLK_RIGHTBRACKET, "]", "more of it", [](Viewer &v) { v.addToParameter(1); }},
            {SDLK_LEFTBRACKET, "[", "less of it", [](Viewer &v) { v.addToParameter(-1); }},
            {SDLK_HOME, "Home", "its default",
             [](Viewer &v) { v.changeParameter(rowOf(v.parameter).start); }},
            {SDLK_c, "c", "next clip; after the last one the scene as loaded",
             [](Viewer &v) { v.chooseClip(false); }},
            {SDLK_x, "x", "previous clip", [](Viewer &v) { v.chooseClip(true); }},
            {SDLK_k, "k", "pause the clip, and resume it", &Viewer::pause},
            {SDLK_PERIOD, ".", "one frame of the clip forwards", [](Viewer &v) { v.step(1); }},
            {SDLK_COMMA, ",", "one frame backwards", [](Viewer &v) { v.step(-1); }},
            {SDLK_p, "p", "screenshot without text, NAME_001.png in the working folder",
             &Viewer::picture},
            {SDLK_q, "q", "quit", [](Viewer &v) { v.close(); }},
        };
        list.insert(list.end(), rest.begin(), rest.end());
        return list;
    }();
    return all;
}

TextRows ModelViewer::help() const {
    TextRows rows = modelKeys();
    for (const auto &row : rowsOf(commonKeys()))
        rows.push_back(row);
    return rows;
}

// Shows the state in the window's title.
void ModelViewer::showState() {
    std::string state = titleOf(options.input);
    if (!playback.empty())
        state += " - " + playback.state();
    state += " - " + stage.getEffects().names();
    SDL_WM_SetCaption(state.c_str(), nullptr);
}

void ModelViewer::nextRig() {
    if (stage.getEffects().isOn(Effect::spot)) {
        sayLine("lights: the spot light stands in for the rigs");
        return;
    }
    stage.setRig(options.rig = (stage.getRig() + 1) % stage.numberOfRigs());
    sayLine("lights: " + Stage::rigName(stage.getRig()));
}

void ModelViewer::toggle(Effect effect) {
    Effects effects = stage.getEffects();
    if (!canBeDone(effect)) {
        sayLine(rowOf(effect).name + std::string(": this display cannot do it"));
        return;
    }
    effects.isOn(effect) ? effects.switchOff(effect) : effects.switchOn(effect);
    stage.setEffects(effects);
    for (const EffectRow &row : effectTable())
        options.effects.on[static_cast<std::size_t>(row.effect)] = effects.isOn(row.effect);
    fitBrightness();
    sayLine("effects: " + effects.names());
    showState();
}

// Bloom switches its brightness on and off with it, unless the user has chosen another.
void ModelViewer::fitBrightness() {
    Effects effects = stage.getEffects();
    const double defaultValue = rowOf(EffectParameter::brightness).start,
                 now = effects.get(EffectParameter::brightness);
    if (effects.isOn(Effect::bloom) && now == defaultValue) {
        makeGlow(stage, options);
        brightnessForGlow = stage.getEffects().get(EffectParameter::brightness);
    } else if (!effects.isOn(Effect::bloom) && now == brightnessForGlow) {
        effects.set(EffectParameter::brightness, defaultValue);
        stage.setEffects(effects);
    }
}

void ModelViewer::chooseClip(bool backwards) {
    if (playback.empty()) {
        sayLine("clip: there are none");
        return;
    }
    try {
        playback.next(backwards);
    } catch (const Failure &failure) {
        sayLine(failure.what());
        return;
    }
    stage.setSphere(playback.sphere());
    sayLine("clip: " + playback.state());
    showState();
}

void ModelViewer::pause() {
    paused = !paused;
    playback.setFrame(playback.frame()); // from its beginning
    sayLine("clip: " + playback.state() + (paused ? ", standing still" : ""));
}

void ModelViewer::step(int frames) {
    paused = true;
    playback.setFrame(playback.frame() + frames);
    sayLine("clip: " + playback.state());
    showState();
}

void ModelViewer::nextParameter() {
    const auto isShown = [this](const EffectParameterRow &row) {
        return !row.of || stage.getEffects().isOn(*row.of);
    };
    auto index = static_cast<std::size_t>(parameter);
    do
        index = (index + 1) % numberOfEffectParameters;
    while (!isShown(effectParameterTable()[index])); // the first is always shown
    parameter = effectParameterTable()[index].parameter;
    changeParameter(stage.getEffects().get(parameter));
}

void ModelViewer::changeParameter(double value) {
    Effects effects = stage.getEffects();
    effects.set(parameter, value);
    stage.setEffects(effects);
    char text[32];
    std::snprintf(text, sizeof text, " %g", std::round(effects.get(parameter) * 1000) / 1000);
    sayLine(rowOf(parameter).option + std::string(text));
}

void ModelViewer::addToParameter(int steps) {
    changeParameter(stage.getEffects().get(parameter) + steps * rowOf(parameter).step);
}

void ModelViewer::reset() {
    orbit.setAngles(firstYaw, -firstPitch);
    orbit.setDistance(1 / options.zoom);
}

// Whether the view is another one now. The stage counts its pitch from where it looks from,
// upwards.
bool ModelViewer::moveOnOrbit(double seconds) {
    if (options.spin)
        orbit.turn(spinDegreesPerSecond * seconds, 0);
    orbit.handle(session.input);
    orbit.update(seconds);
    const auto view = [this] {
        return std::tuple(stage.getYaw(), stage.getPitch(), stage.getZoom());
    };
    const auto before = view();
    stage.setYaw(orbit.getYaw());
    stage.setPitch(-orbit.getPitch());
    stage.setZoom(1 / orbit.getDistance());
    return view() != before;
}

bool ModelViewer::press(int key) {
    // On many keyboards the plus shares a key with the equals sign.
    if (key == SDLK_EQUALS || key == SDLK_KP_PLUS)
        key = SDLK_PLUS;
    if (key == SDLK_KP_MINUS)
        key = SDLK_MINUS;
    return pressOf(keys(), key, *this);
}

bool ModelViewer::advance(double passed) {
    const bool moved = moveOnOrbit(passed);
    const bool hasNextFrame = !paused && playback.advance(passed);
    if (hasNextFrame)
        showState();
    return moved || hasNextFrame || options.content == Content::emitter ||
           stage.getEffects().isOn(Effect::toneMapping);
}

// A name that no file has yet.
void ModelViewer::savePicture() {
    pictureWanted = false;
    fs::path file;
    std::error_code error;
    do {
        char number[24];
        std::snprintf(number, sizeof number, "_%03d.png", ++pictures);
        file = options.pictures / (options.input.stem().string() + number);
    } while (fs::exists(file, error));
    writePng(takePicture(), file);
    sayLine("picture: " + file.string());
}

void ModelViewer::draw() {
    if (!hasDrawn())
        drawAfterPause(stage);
    stage.draw();
}

void ModelViewer::onDrawn() {
    if (pictureWanted)
        savePicture();
}

TextRows ModelViewer::information() const {
    unsigned int nodes = 0, triangles = 0;
    walk(scene, [&](RVNODE *node) {
        ++nodes;
        if (const RVMESH *mesh = visibleMesh(node))
            triangles += mesh->getNumberOfFaces();
    });
    TextRows rows;
    if (!playback.empty()) {
        char text[64];
        std::snprintf(text, sizeof text, ", %.2f of %.2f s", playback.frame() / options.fps,
                      playback.period() / options.fps);
        rows.emplace_back("clip", playback.state() + text + (paused ? ", paused" : ""));
    }
    rows.emplace_back("scene", counted(triangles, "triangle", "triangles") + ", " +
                                   counted(nodes, "node", "nodes") + ", " +
                                   counted(session.numberOfTextures(), "texture", "textures"));
    rows.emplace_back("lights", stage.getEffects().isOn(Effect::spot)
                                    ? "the spot light"
                                    : Stage::rigName(stage.getRig()));
    rows.emplace_back("effects", stage.getEffects().names());
    return rows;
}

// The first clip that can be played.
void chooseFirst(Playback &playback, const Verbosity &verbosity) {
    while (!playback.empty())
        try {
            return playback.next(false);
        } catch (const Failure &failure) {
            warn(failure.what(), verbosity);
        }
}

// The clip of the command line, or the first one.
void startClip(Playback &playback, const SceneToShow &scene, const ShowOptions &options) {
    if (!options.clip.empty())
        playback.choose(scene.requestedClip());
    else
        chooseFirst(playback, options.verbosity);
    warnOfMissingNodes(playback, options.verbosity);
}

} // namespace

Ending viewModel(ViewSession &session, ViewOptions &options) {
    const bool isLater = session.isOpen(); // than the file of the command line
    const SceneToShow scene(options, options.verbosity);
    const LoadedScene loaded = load(session.open(options, options.size), scene, options);
    Stage stage(loaded.root);
    Playback playback(loaded.root, scene.clips(), scene.skins(), options.fps);
    startClip(playback, scene, options);
    stage.setSphere(loaded.emitter ? sphereAround(*loaded.emitter) : playback.sphere());
    if (isLater && options.rig >= stage.numberOfRigs())
        options.rig = 0; // it has no lights of its own
    arrange(stage, options);
    removeBrokenTextures(options.verbosity);
    return ModelViewer(session, options, loaded.root, stage, playback).run();
}

TextRows modelKeys() { return rowsOf(ModelViewer::keys()); }

} // namespace ravolt::tool
