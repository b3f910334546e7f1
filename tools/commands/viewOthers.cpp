// On a terrain one walks and flies; an interface is operated, and names what is clicked.

#include "tools/commands/viewOthers.h"

#include "tools/commands/show.h"
#include "tools/common/failure.h"
#include "tools/process/logRedirect.h"
#include "tools/process/signals.h"
#include "tools/stage/landscape.h"
#include "tools/stage/panel.h"

#include <SDL.h>
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <numbers>
#include <ravolt/RAVOLT.h>
#include <ravolt/RVNODE.h>
#include <ravolt/kit/flyCamera.h>
#include <ravolt/kit/input.h>
#include <ravolt/kit/terrainHeights.h>
#include <ravolt/kit/walkCamera.h>
#include <ravolt/kit/window.h>

namespace ravolt::tool {

namespace {

constexpr double degree = std::numbers::pi / 180;
constexpr double eyeHeight = 1.7;                   // of who walks, above the ground as it is drawn
constexpr double walkingPace = 12, flyingPace = 60; // units a second
constexpr double steepest = 75;                     // degrees of a slope that is walked on
constexpr double longestStep = 0.2;                 // seconds; the rest of a slow frame is left out

void say(const std::string &line) {
    std::printf("%s\n", line.c_str());
    std::fflush(stdout);
}

// The loop of a viewer: events, then a frame, as long as it is open.
class Loop {
  public:
    explicit Loop(double limit) : seconds(limit) {}
    virtual ~Loop() = default;

    void run() {
        using Clock = std::chrono::steady_clock;
        const Clock::time_point start = Clock::now();
        Clock::time_point last = start;
        while (poll()) {
            throwIfInterrupted();
            const Clock::time_point now = Clock::now();
            frame(std::chrono::duration<double>(now - last).count());
            last = now;
            RAVOLT::swap();
            if (seconds > 0 && std::chrono::duration<double>(now - start).count() >= seconds)
                input.close();
        }
    }

  protected:
    virtual void frame(double passed) = 0;

    kit::Input input;

  private:
    bool poll() {
        return input.poll([this](const SDL_Event &event) { return window.handle(event); }) &&
               !input.wasKeyPressed(SDLK_ESCAPE);
    }

    kit::Window window;
    double seconds;
};

class TerrainViewer : public Loop {
  public:
    // Throws Failure for a geometry without heights.
    TerrainViewer(Landscape &shown, const TerrainFiles &files, double limit)
        : Loop(limit), landscape(shown),
          walker([this](double x, double z) { return heights.drawnAt(x, z); }, eyeHeight) {
        if (!heights.load(files.geometry.string().c_str()))
            throw Failure(files.geometry.string(), "has no heights of a terrain");
        walker.setSpeed(walkingPace);
        walker.setMaxSlope(steepest);
        flyer.setSpeed(flyingPace);
        flyer.setLevel(true);
        const Vector ahead = landscape.getTarget() - landscape.getEye();
        focus = length(ahead);
        flyer.setAngles(std::atan2(-ahead.x, -ahead.z) / degree,
                        std::asin(ahead.y / focus) / degree);
        flyer.setPosition(
            Z3MVECTOR3D(landscape.getEye().x, landscape.getEye().y, landscape.getEye().z));
    }

  private:
    bool isWalking() const { return camera == &walker; }

    void frame(double passed) override {
        applyKeys();
        camera->handle(input);
        camera->update(std::min(passed, longestStep));
        const Z3MVECTOR3D at = camera->getPosition(), ahead = camera->getForward();
        const Vector eye = {double(at.x), double(at.y), double(at.z)};
        landscape.setEye(eye);
        landscape.lookAt(eye + Vector(double(ahead.x), double(ahead.y), double(ahead.z)) * focus);
        landscape.draw();
    }

    void applyKeys() {
        if (input.wasKeyPressed(SDLK_t))
            landscape.setWireframe(!landscape.isWireframe());
        if (input.wasKeyPressed(SDLK_b)) {
            landscape.setChunks(!landscape.isShowingChunks());
            if (landscape.isShowingChunks())
                say(landscape.chunkCounts());
        }
        if (input.wasKeyPressed(SDLK_g)) {
            changeCamera();
            say(isWalking() ? "walking" : "flying");
        }
        if (input.wasKeyPressed(SDLK_h))
            say(terrainKeys());
    }

    // Who lands stands on the ground at once.
    void changeCamera() {
        kit::Camera &next = isWalking() ? static_cast<kit::Camera &>(flyer) : walker;
        next.place(*camera);
        camera = &next;
        if (isWalking())
            walker.setOnGround(double(walker.getPosition().x), double(walker.getPosition().z));
    }

    Landscape &landscape;
    kit::TerrainHeights heights;
    kit::WalkCamera walker;
    kit::FlyCamera flyer;
    kit::Camera *camera = &flyer;
    double focus = 1; // from the eye to what it looks at
};

class InterfaceViewer : public Loop {
  public:
    InterfaceViewer(Panel &shown, RVNODE *root, std::string itsTitle, double limit)
        : Loop(limit), panel(shown), widgets(root), title(std::move(itsTitle)) {}

  private:
    void frame(double) override {
        panel.draw();
        if (const unsigned int used = input.manageGUI())
            name(used);
    }

    void name(unsigned int id) const {
        RVNODE *node = widgets->findByIdInHierarchy(id);
        const std::string event =
            "event " + std::to_string(id) + (node ? std::string(": ") + node->getName() : "");
        say(event);
        SDL_WM_SetCaption((title + " - " + event).c_str(), nullptr);
    }

    Panel &panel;
    RVNODE *widgets;
    std::string title;
};

std::string titleOf(const ShowOptions &options) {
    return "ravolt - " + options.input.filename().string();
}

} // namespace

void viewTerrain(const ShowOptions &options, double seconds) {
    const TerrainFiles files = findTerrain(options.input);
    const LogAtEnd logged(options.verbosity);
    Engine engine(options.size, titleOf(options), true, LogRedirect::log(),
                  drawingFor(options, true));
    Landscape landscape(engine, files);
    arrange(landscape, options);
    removeBrokenTextures(options.verbosity);
    TerrainViewer(landscape, files, seconds).run();
}

void viewInterface(const ShowOptions &options, double seconds) {
    const LogAtEnd logged(options.verbosity);
    const WindowSize size = options.sizeIsGiven ? options.size : sizeOfInterface(options);
    Engine engine(size, titleOf(options), true, LogRedirect::log(), drawingFor(options, false));
    RVNODE *root = engine.loadInterface(options.input);
    Panel panel(root);
    removeBrokenTextures(options.verbosity);
    InterfaceViewer(panel, root, titleOf(options), seconds).run();
}

std::string terrainKeys() {
    return "On a terrain: drag to look around; w, s, a, d or the arrows to move, PgUp or Space to\n"
           "rise, PgDown or c to sink, Shift to hurry; g to walk on the ground or fly; t for\n"
           "triangles; b for the chunks in the colours of their levels; Escape to leave.\n"
           "Alt and Enter fill the screen.\n"
           "An interface is operated; the title names each event.\n";
}

} // namespace ravolt::tool
