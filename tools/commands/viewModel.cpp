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

namespace ravolt::tool {

namespace fs = std::filesystem;

namespace {

constexpr double degreesPerPixel = 0.4;
constexpr double degreesPerKey = 5;
constexpr double zoomPerStep = 1.12;
constexpr double spinDegreesPerSecond = 40;

class ModelViewer : public ViewLoop {
  public:
    ModelViewer(ViewSession &common, ViewOptions &wanted, RVNODE *root, Stage &shown,
                Playback &played)
        : ViewLoop(common, wanted.input.filename().string()), stage(shown), playback(played),
          options(wanted), scene(root), firstYaw(shown.getYaw()), firstPitch(shown.getPitch()) {
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
    void turn(double yaw, double pitch);
    void zoom(double steps) { stage.setZoom(stage.getZoom() * std::pow(zoomPerStep, steps)); }
    void chooseClip(bool backwards);
    void pause();
    void step(int frames);
    bool advanceClip(double seconds);
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
    EffectParameter parameter = EffectParameter::brightness; // that the keys change
    double brightnessForGlow = 0; // found from the scene when bloom came on
    bool pictureWanted = false;
    int pictures = 0;
    bool paused = false;    // the clip
    double clipSeconds = 0; // since its first frame
};

const std::vector<ViewKey<ModelViewer>> &ModelViewer::keys() {
    using Viewer = ModelViewer;
    static const std::vector<ViewKey<Viewer>> all = [] {
        std::vector<ViewKey<Viewer>> list = {
            {0, "drag", "go round the scene", nullptr},
            {0, "wheel", "nearer and farther", nullptr},
            {SDLK_LEFT, "Left", "go round it", [](Viewer &v) { v.turn(-degreesPerKey, 0); }},
            {SDLK_RIGHT, "Right", "go round it", [](Viewer &v) { v.turn(degreesPerKey, 0); }},
            {SDLK_UP, "Up", "go above it", [](Viewer &v) { v.turn(0, degreesPerKey); }},
            {SDLK_DOWN, "Down", "go below it", [](Viewer &v) { v.turn(0, -degreesPerKey); }},
            {SDLK_PLUS, "+", "nearer", [](Viewer &v) { v.zoom(1); }},
            {SDLK_MINUS, "-", "farther", [](Viewer &v) { v.zoom(-1); }},
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
    clipSeconds = 0;
    sayLine("clip: " + playback.state());
    showState();
}

void ModelViewer::pause() {
    paused = !paused;
    clipSeconds = playback.frame() / options.fps;
    sayLine("clip: " + playback.state() + (paused ? ", standing still" : ""));
}

void ModelViewer::step(int frames) {
    paused = true;
    playback.setFrame(playback.frame() + frames);
    sayLine("clip: " + playback.state());
    showState();
}

// Whether the clip shows another frame now.
bool ModelViewer::advanceClip(double seconds) {
    const int period = playback.period();
    if (paused || period < 2)
        return false;
    clipSeconds = std::fmod(clipSeconds + seconds, period / options.fps);
    const int displayFrame = std::min(static_cast<int>(clipSeconds * options.fps), period - 1);
    if (displayFrame == playback.frame())
        return false;
    playback.setFrame(displayFrame);
    showState();
    return true;
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

void ModelViewer::turn(double yaw, double pitch) {
    stage.setYaw(stage.getYaw() + yaw);
    stage.setPitch(stage.getPitch() + pitch);
}

void ModelViewer::reset() {
    stage.setYaw(firstYaw);
    stage.setPitch(firstPitch);
    stage.setZoom(options.zoom);
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
    const kit::Pixel drag = session.input.getDrag(SDL_BUTTON_LEFT);
    turn(-drag.x * degreesPerPixel, drag.y * degreesPerPixel);
    zoom(session.input.getWheel());
    if (options.spin)
        turn(spinDegreesPerSecond * passed, 0);
    const bool hasNextFrame = advanceClip(passed);
    return hasNextFrame || drag.x != 0 || drag.y != 0 || options.spin ||
           options.content == Content::emitter || stage.getEffects().isOn(Effect::toneMapping);
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
    Playback playback(loaded.root, scene.clips(), scene.skins());
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
