// The viewer draws when something has changed, and sleeps otherwise.

#include "tools/commands.h"
#include "tools/quietStart.h"
#include "tools/scene.h"
#include "tools/show.h"
#include "tools/stage/picture.h"

#include <SDL.h>
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <ravolt/RAVOLT.h>

namespace ravolt::tool {

namespace fs = std::filesystem;

namespace {

constexpr double degreesPerPixel = 0.4;
constexpr double degreesPerKey = 5;
constexpr double zoomPerStep = 1.12;
constexpr double spinDegreesPerSecond = 40;

class Viewer {
  public:
    Viewer(Stage &shown, const ViewOptions &wanted, fs::path stem)
        : stage(shown), options(wanted), pictureStem(std::move(stem)), firstYaw(shown.getYaw()),
          firstPitch(shown.getPitch()), wireframe(wanted.wireframe), normals(wanted.normals),
          boxes(wanted.boxes), spinning(wanted.spin) {}

    void run();

    // What a key does.
    struct Key {
        SDLKey key;
        const char *name;
        const char *what;
        void (Viewer::*action)();
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
    void leave() { open = false; }

    void take(const SDL_Event &event);
    void press(const SDL_Event &event);
    void button(const SDL_Event &event);
    void savePicture();

    Stage &stage;
    const ViewOptions &options;
    fs::path pictureStem;
    double firstYaw, firstPitch;
    bool wireframe, normals, boxes, spinning;
    bool open = true, dragging = false, changed = true, pictureWanted = false;
    int pictures = 0;
};

const std::vector<Viewer::Key> &Viewer::keys() {
    static const std::vector<Key> all = {
        {SDLK_w, "w", "wireframe", &Viewer::toggleWireframe},
        {SDLK_n, "n", "normals", &Viewer::toggleNormals},
        {SDLK_b, "b", "bounding boxes", &Viewer::toggleBoxes},
        {SDLK_l, "l", "next light rig", &Viewer::nextRig},
        {SDLK_p, "p", "screenshot, NAME_001.png in the working folder", &Viewer::picture},
        {SDLK_SPACE, "Space", "turn by itself", &Viewer::spin},
        {SDLK_r, "r", "the first view again", &Viewer::reset},
        {SDLK_LEFT, "Left", "go round the scene", &Viewer::left},
        {SDLK_RIGHT, "Right", "go round the scene", &Viewer::right},
        {SDLK_UP, "Up", "go above it", &Viewer::up},
        {SDLK_DOWN, "Down", "go below it", &Viewer::down},
        {SDLK_PLUS, "+", "nearer", &Viewer::nearer},
        {SDLK_MINUS, "-", "farther", &Viewer::farther},
        {SDLK_q, "q", "leave", &Viewer::leave},
        {SDLK_ESCAPE, "Escape", "leave", &Viewer::leave},
    };
    return all;
}

void Viewer::nextRig() {
    stage.setRig((stage.getRig() + 1) % stage.numberOfRigs());
    std::printf("lights: %s\n", Stage::rigName(stage.getRig()).c_str());
    std::fflush(stdout);
}

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
            (this->*key.action)();
}

void Viewer::button(const SDL_Event &event) {
    const bool down = event.type == SDL_MOUSEBUTTONDOWN;
    if (event.button.button == SDL_BUTTON_LEFT)
        dragging = down;
    if (down && event.button.button == SDL_BUTTON_WHEELUP)
        nearer();
    if (down && event.button.button == SDL_BUTTON_WHEELDOWN)
        farther();
}

void Viewer::take(const SDL_Event &event) {
    changed = true;
    switch (event.type) {
    case SDL_QUIT:
        leave();
        break;
    case SDL_KEYDOWN:
        press(event);
        break;
    case SDL_MOUSEBUTTONDOWN:
    case SDL_MOUSEBUTTONUP:
        button(event);
        break;
    case SDL_MOUSEMOTION:
        changed = dragging;
        if (dragging) {
            stage.setYaw(stage.getYaw() - event.motion.xrel * degreesPerPixel);
            stage.setPitch(stage.getPitch() + event.motion.yrel * degreesPerPixel);
        }
        break;
    case SDL_VIDEORESIZE:
        stage.resize(std::max(1, event.resize.w), std::max(1, event.resize.h));
        break;
    default:
        break;
    }
}

// A name that no file has yet.
void Viewer::savePicture() {
    pictureWanted = false;
    fs::path file;
    std::error_code error;
    do {
        char number[24];
        std::snprintf(number, sizeof number, "_%03d.png", ++pictures);
        file = pictureStem.string() + number;
    } while (fs::exists(file, error));
    writePng(takePicture(), file);
    std::printf("picture: %s\n", file.c_str());
    std::fflush(stdout);
}

void Viewer::run() {
    using Clock = std::chrono::steady_clock;
    const Clock::time_point start = Clock::now();
    Clock::time_point last = start;
    SDL_EnableKeyRepeat(SDL_DEFAULT_REPEAT_DELAY, SDL_DEFAULT_REPEAT_INTERVAL);
    while (open) {
        SDL_Event event;
        while (SDL_PollEvent(&event))
            take(event);
        const Clock::time_point now = Clock::now();
        if (spinning)
            stage.setYaw(stage.getYaw() +
                         spinDegreesPerSecond * std::chrono::duration<double>(now - last).count());
        last = now;
        if (changed || spinning) {
            changed = false;
            stage.draw();
            if (pictureWanted)
                savePicture();
            RAVOLT::swap();
        } else {
            SDL_Delay(10);
        }
        if (options.seconds > 0 &&
            std::chrono::duration<double>(now - start).count() >= options.seconds)
            leave();
    }
}

} // namespace

std::string viewKeys() {
    std::string text = "Mouse: drag with the left button to go round the scene, wheel to zoom.\n"
                       "Keys:\n";
    for (const Viewer::Key &key : Viewer::keys()) {
        std::string name = key.name;
        name.resize(8, ' ');
        text += "  " + name + key.what + "\n";
    }
    return text;
}

void runView(const ViewOptions &options, const Talk &talk) {
    // The engine works in another folder.
    const fs::path pictures = fs::absolute(options.input.stem());
    const SceneToShow scene(options, talk);
    const LogAtEnd logged(talk);
    Engine engine(options.size, "ravolt - " + options.input.filename().string(), true,
                  QuietStart::log());
    Stage stage(engine.load(scene.file()));
    arrange(stage, options);
    warnOfMissingTextures(talk);
    Viewer(stage, options, pictures).run();
}

} // namespace ravolt::tool
