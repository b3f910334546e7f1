// The viewer draws when something has changed, and sleeps otherwise; with tone mapping, which
// adapts to the brightness over time, it draws all the time.

#include "tools/commands/command.h"
#include "tools/commands/scene.h"
#include "tools/commands/show.h"
#include "tools/commands/viewOthers.h"
#include "tools/common/failure.h"
#include "tools/common/message.h"
#include "tools/common/ranges.h"
#include "tools/process/display.h"
#include "tools/process/logRedirect.h"
#include "tools/process/signals.h"
#include "tools/stage/particles.h"
#include "tools/stage/picture.h"
#include "tools/stage/playback.h"

#include <CLI/CLI.hpp>
#include <SDL.h>
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <functional>
#include <memory>
#include <ravolt/RAVOLT.h>
#include <ravolt/kit/input.h>
#include <ravolt/kit/window.h>

namespace ravolt::tool {

namespace fs = std::filesystem;

namespace {

constexpr double degreesPerPixel = 0.4;
constexpr double degreesPerKey = 5;
constexpr double zoomPerStep = 1.12;
constexpr double spinDegreesPerSecond = 40;

struct ViewOptions : ShowOptions {
    bool spin = false;  // turns by itself
    double seconds = 0; // ends by itself after that time; 0: when the window is closed
};

// The keys, for the help.
std::string viewKeys();

class Viewer {
  public:
    Viewer(Stage &shown, Playback &played, const ViewOptions &wanted, std::string itsTitle,
           fs::path stem)
        : stage(shown), playback(played), options(wanted), title(std::move(itsTitle)),
          pictureStem(std::move(stem)), firstYaw(shown.getYaw()), firstPitch(shown.getPitch()),
          wireframe(wanted.wireframe), normals(wanted.normals), boxes(wanted.boxes),
          spinning(wanted.spin) {}

    void run();

    // What a key does.
    struct Key {
        SDLKey key;
        std::string name;
        std::string what;
        std::function<void(Viewer &)> action;
    };
    static const std::vector<Key> &keys();

  private:
    void toggleWireframe() { stage.setWireframe(wireframe = !wireframe); }
    void toggleNormals() { stage.setNormals(normals = !normals); }
    void toggleBoxes() { stage.setBoxes(boxes = !boxes); }
    void nextRig();
    void picture() { pictureWanted = true; }
    void reset();
    void spin() { spinning = !spinning; }
    void left() { stage.setYaw(stage.getYaw() - degreesPerKey); }
    void right() { stage.setYaw(stage.getYaw() + degreesPerKey); }
    void up() { stage.setPitch(stage.getPitch() + degreesPerKey); }
    void down() { stage.setPitch(stage.getPitch() - degreesPerKey); }
    void nearer() { stage.setZoom(stage.getZoom() * zoomPerStep); }
    void farther() { stage.setZoom(stage.getZoom() / zoomPerStep); }
    void quit() { input.close(); }
    void help() { say(viewKeys()); }
    void nextClip() { chooseClip(false); }
    void previousClip() { chooseClip(true); }
    void pause();
    void nextFrame() { step(1); }
    void previousFrame() { step(-1); }
    void chooseClip(bool backwards);
    void step(int frames);
    bool advanceClip(double seconds);
    void toggle(Effect effect);
    void fitBrightness();
    void nextParameter();
    void changeParameter(double value);
    void more();
    void less();
    void resetParameter();

    void say(const std::string &line);
    void showState();
    void drawFrame();
    bool take(const SDL_Event &event);
    void takePointer();
    void press(const SDL_Event &event);
    void savePicture();

    kit::Input input;
    kit::Window window;
    Stage &stage;
    Playback &playback;
    const ViewOptions &options;
    std::string title;
    fs::path pictureStem;
    double firstYaw, firstPitch;
    bool wireframe, normals, boxes, spinning;
    EffectParameter parameter = EffectParameter::brightness; // that the keys change
    double brightnessForGlow = 0; // found from the scene when bloom came on
    bool changed = true, pictureWanted = false;
    bool drawn = false; // in the last turn of the loop
    int pictures = 0;
    bool paused = false;    // the clip
    double clipSeconds = 0; // since its first frame
};

const std::vector<Viewer::Key> &Viewer::keys() {
    static const std::vector<Key> all = [] {
        std::vector<Key> list = {
            {SDLK_w, "w", "wireframe", &Viewer::toggleWireframe},
            {SDLK_n, "n", "normals", &Viewer::toggleNormals},
            {SDLK_b, "b", "bounding boxes", &Viewer::toggleBoxes},
            {SDLK_l, "l", "next light rig", &Viewer::nextRig},
        };
        for (const EffectRow &row : effectTable()) {
            const int digit = 1 + static_cast<int>(row.effect);
            list.push_back({static_cast<SDLKey>(SDLK_0 + digit), std::to_string(digit), row.name,
                            [&row](Viewer &viewer) { viewer.toggle(row.effect); }});
        }
        const std::vector<Key> rest = {
            {SDLK_c, "c", "next clip; behind the last one stands the scene as loaded",
             &Viewer::nextClip},
            {SDLK_x, "x", "the clip before", &Viewer::previousClip},
            {SDLK_k, "k", "let the clip stand still, and go on", &Viewer::pause},
            {SDLK_PERIOD, ".", "one frame of the clip on", &Viewer::nextFrame},
            {SDLK_COMMA, ",", "one frame of it back", &Viewer::previousFrame},
            {SDLK_TAB, "Tab", "next number of the effects that are on", &Viewer::nextParameter},
            {SDLK_PAGEUP, "PgUp", "more of it", &Viewer::more},
            {SDLK_PAGEDOWN, "PgDown", "less of it", &Viewer::less},
            {SDLK_HOME, "Home", "as much of it as usual", &Viewer::resetParameter},
            {SDLK_p, "p", "screenshot, NAME_001.png in the working folder", &Viewer::picture},
            {SDLK_SPACE, "Space", "turn by itself", &Viewer::spin},
            {SDLK_r, "r", "the first view again", &Viewer::reset},
            {SDLK_LEFT, "Left", "go round the scene", &Viewer::left},
            {SDLK_RIGHT, "Right", "go round the scene", &Viewer::right},
            {SDLK_UP, "Up", "go above it", &Viewer::up},
            {SDLK_DOWN, "Down", "go below it", &Viewer::down},
            {SDLK_PLUS, "+", "nearer", &Viewer::nearer},
            {SDLK_MINUS, "-", "farther", &Viewer::farther},
            {SDLK_h, "h", "show these keys", &Viewer::help},
            {SDLK_q, "q", "leave", &Viewer::quit},
            {SDLK_ESCAPE, "Escape", "leave", &Viewer::quit},
        };
        list.insert(list.end(), rest.begin(), rest.end());
        return list;
    }();
    return all;
}

void Viewer::say(const std::string &line) {
    std::printf("%s\n", line.c_str());
    std::fflush(stdout);
}

// Shows the state in the window's title.
void Viewer::showState() {
    std::string state = title;
    if (!playback.empty())
        state += " - " + playback.state();
    state += " - " + stage.getEffects().names();
    SDL_WM_SetCaption(state.c_str(), nullptr);
}

void Viewer::nextRig() {
    if (stage.getEffects().isOn(Effect::spot)) {
        say("lights: the spot light stands in for the rigs");
        return;
    }
    stage.setRig((stage.getRig() + 1) % stage.numberOfRigs());
    say("lights: " + Stage::rigName(stage.getRig()));
}

void Viewer::toggle(Effect effect) {
    Effects effects = stage.getEffects();
    if (!canBeDone(effect)) {
        say(rowOf(effect).name + std::string(": this display cannot do it"));
        return;
    }
    effects.isOn(effect) ? effects.switchOff(effect) : effects.switchOn(effect);
    stage.setEffects(effects);
    fitBrightness();
    say("effects: " + effects.names());
    showState();
}

// Bloom switches its brightness on and off with it, unless the user has chosen another.
void Viewer::fitBrightness() {
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

void Viewer::chooseClip(bool backwards) {
    if (playback.empty()) {
        say("clip: there are none");
        return;
    }
    try {
        playback.next(backwards);
    } catch (const Failure &failure) {
        say(failure.what());
        return;
    }
    stage.setSphere(playback.sphere());
    clipSeconds = 0;
    say("clip: " + playback.state());
    showState();
}

void Viewer::pause() {
    paused = !paused;
    clipSeconds = playback.frame() / options.fps;
    say("clip: " + playback.state() + (paused ? ", standing still" : ""));
}

void Viewer::step(int frames) {
    paused = true;
    playback.setFrame(playback.frame() + frames);
    say("clip: " + playback.state());
    showState();
}

// Whether the clip shows another frame now.
bool Viewer::advanceClip(double seconds) {
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

void Viewer::nextParameter() {
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

void Viewer::changeParameter(double value) {
    Effects effects = stage.getEffects();
    effects.set(parameter, value);
    stage.setEffects(effects);
    char text[32];
    std::snprintf(text, sizeof text, " %g", std::round(effects.get(parameter) * 1000) / 1000);
    say(rowOf(parameter).option + std::string(text));
}

void Viewer::more() { changeParameter(stage.getEffects().get(parameter) + rowOf(parameter).step); }

void Viewer::less() { changeParameter(stage.getEffects().get(parameter) - rowOf(parameter).step); }

void Viewer::resetParameter() { changeParameter(rowOf(parameter).start); }

void Viewer::reset() {
    stage.setYaw(firstYaw);
    stage.setPitch(firstPitch);
    stage.setZoom(options.zoom);
}

void Viewer::press(const SDL_Event &event) {
    SDLKey pressed = event.key.keysym.sym;
    // On many keyboards the plus shares a key with the equals sign.
    if (pressed == SDLK_EQUALS || pressed == SDLK_KP_PLUS)
        pressed = SDLK_PLUS;
    if (pressed == SDLK_KP_MINUS)
        pressed = SDLK_MINUS;
    for (const Key &key : keys())
        if (key.key == pressed)
            key.action(*this);
}

// The keys of the table repeat, so their events are used and not their states.
bool Viewer::take(const SDL_Event &event) {
    changed = changed || event.type != SDL_MOUSEMOTION;
    if (window.handle(event))
        return true;
    if (event.type == SDL_KEYDOWN)
        press(event);
    return false;
}

void Viewer::takePointer() {
    const kit::Pixel drag = input.getDrag(SDL_BUTTON_LEFT);
    changed = changed || drag.x != 0 || drag.y != 0;
    stage.setYaw(stage.getYaw() - drag.x * degreesPerPixel);
    stage.setPitch(stage.getPitch() + drag.y * degreesPerPixel);
    stage.setZoom(stage.getZoom() * std::pow(zoomPerStep, input.getWheel()));
}

// A name that no file has yet.
void Viewer::savePicture() {
    pictureWanted = false;
    fs::path file;
    std::error_code error;
    do {
        char ending[24];
        std::snprintf(ending, sizeof ending, "_%03d.png", ++pictures);
        file = pictureStem.string() + ending;
    } while (fs::exists(file, error));
    writePng(takePicture(), file);
    say("picture: " + file.string());
}

void Viewer::drawFrame() {
    if (!drawn)
        drawAfterPause(stage);
    stage.draw();
    if (pictureWanted)
        savePicture();
    RAVOLT::swap();
}

void Viewer::run() {
    using Clock = std::chrono::steady_clock;
    const Clock::time_point start = Clock::now();
    Clock::time_point last = start;
    fitBrightness();
    showState();
    while (input.poll([this](const SDL_Event &event) { return take(event); })) {
        throwIfInterrupted();
        takePointer();
        const Clock::time_point now = Clock::now();
        const double passed = std::chrono::duration<double>(now - last).count();
        last = now;
        if (spinning)
            stage.setYaw(stage.getYaw() + spinDegreesPerSecond * passed);
        changed = advanceClip(passed) || changed;
        const bool redraw = changed || spinning || options.content == Content::emitter ||
                            stage.getEffects().isOn(Effect::toneMapping);
        if (redraw) {
            changed = false;
            drawFrame();
        } else {
            SDL_Delay(10);
        }
        drawn = redraw;
        if (options.seconds > 0 &&
            std::chrono::duration<double>(now - start).count() >= options.seconds)
            quit();
    }
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

std::string viewKeys() {
    std::string text = "Mouse: drag with the left button to go round the scene, wheel to zoom.\n"
                       "Alt and Enter fill the screen.\n"
                       "Keys:\n";
    for (const Viewer::Key &key : Viewer::keys()) {
        std::string name = key.name;
        name.resize(8, ' ');
        text += "  " + name + key.what + "\n";
    }
    return text;
}

void view(const ViewOptions &options) {
    const Verbosity &verbosity = options.verbosity;
    // The engine works in another folder.
    const fs::path pictures = fs::absolute(options.input.stem());
    const SceneToShow scene(options, verbosity);
    const LogAtEnd logged(verbosity);
    const std::string title = "ravolt - " + options.input.filename().string();
    Engine engine(options.size, title, true, LogRedirect::log(), drawingFor(options, true));
    const LoadedScene loaded = load(engine, scene, options);
    Stage stage(loaded.root);
    Playback playback(loaded.root, scene.clips(), scene.skins());
    if (!options.clip.empty())
        playback.choose(scene.requestedClip());
    else
        chooseFirst(playback, verbosity);
    warnOfMissingNodes(playback, verbosity);
    stage.setSphere(loaded.emitter ? sphereAround(*loaded.emitter) : playback.sphere());
    arrange(stage, options);
    removeBrokenTextures(verbosity);
    Viewer(stage, playback, options, title, pictures).run();
}

} // namespace

std::function<void()> addView(CLI::App &app) {
    const auto options = std::make_shared<ViewOptions>();
    addShow(app, *options);
    app.add_flag("--spin", options->spin, "Turn by itself");
    app.add_option("--seconds", options->seconds, "End by itself after that time");
    app.footer(viewKeys() + terrainKeys());
    return [options, &app] {
        check(app, *options);
        requireWithin("--seconds", options->seconds, 0, 1e9);
        options->size = sizeFrom(options->sizeText);
        requireDisplay();
        const Content content = contentFor(app, *options);
        if (content == Content::terrain)
            viewTerrain(*options, options->seconds);
        else if (content == Content::interface)
            viewInterface(*options, options->seconds);
        else
            view(*options);
    };
}

} // namespace ravolt::tool
