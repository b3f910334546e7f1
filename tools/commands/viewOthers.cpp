// On a terrain one walks and flies; an interface is operated, and names what is clicked.

#include "tools/commands/viewOthers.h"

#include "tools/commands/show.h"
#include "tools/process/logRedirect.h"
#include "tools/process/signals.h"
#include "tools/stage/landscape.h"
#include "tools/stage/panel.h"
#include "tools/stage/terrainHeights.h"

#include <SDL.h>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ravolt/RAVOLT.h>
#include <ravolt/RVELEMENT.h>
#include <ravolt/RVNODE.h>

namespace ravolt::tool {

namespace {

constexpr double degreesPerPixel = 0.25;
constexpr double eyeHeight = 1.7; // of who walks, above the ground as it is drawn
constexpr double landLift = 2;    // the engine draws the land this much higher
constexpr double walkingPace = 12, flyingPace = 60, faster = 4; // units a second

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
        while (open) {
            throwIfInterrupted();
            for (SDL_Event event; SDL_PollEvent(&event);)
                handle(event);
            const Clock::time_point now = Clock::now();
            frame(std::chrono::duration<double>(now - last).count());
            last = now;
            RAVOLT::swap();
            open = open &&
                   !(seconds > 0 && std::chrono::duration<double>(now - start).count() >= seconds);
        }
    }

  protected:
    virtual void take(const SDL_Event &event) = 0;
    virtual void frame(double passed) = 0;
    virtual void resize(int width, int height) = 0;

  private:
    void handle(const SDL_Event &event) {
        if (event.type == SDL_QUIT ||
            (event.type == SDL_KEYDOWN && event.key.keysym.sym == SDLK_ESCAPE))
            open = false;
        else if (event.type == SDL_VIDEORESIZE)
            resize(std::max(1, event.resize.w), std::max(1, event.resize.h));
        else
            take(event);
    }

    double seconds;
    bool open = true;
};

class TerrainViewer : public Loop {
  public:
    TerrainViewer(Landscape &shown, const TerrainFiles &files, double limit)
        : Loop(limit), landscape(shown), heights(files.geometry) {}

  private:
    void take(const SDL_Event &event) override {
        if (event.type == SDL_MOUSEBUTTONDOWN || event.type == SDL_MOUSEBUTTONUP)
            dragging = event.type == SDL_MOUSEBUTTONDOWN;
        else if (event.type == SDL_MOUSEMOTION && dragging)
            landscape.turn(event.motion.xrel * degreesPerPixel,
                           -event.motion.yrel * degreesPerPixel);
        else if (event.type == SDL_KEYDOWN)
            press(event.key.keysym.sym);
    }

    void press(SDLKey key) {
        if (key == SDLK_t)
            landscape.setWireframe(!landscape.isWireframe());
        if (key == SDLK_b)
            landscape.setChunks(!landscape.isShowingChunks());
        if (key == SDLK_b && landscape.isShowingChunks())
            say(landscape.chunkCounts());
        if (key == SDLK_g)
            say((walking = !walking) ? "walking" : "flying");
        if (key == SDLK_h)
            say(terrainKeys());
    }

    void frame(double passed) override {
        move(passed);
        landscape.draw();
    }

    void move(double passed) {
        const Uint8 *keys = SDL_GetKeyState(nullptr);
        const auto axis = [keys](SDLKey plus, SDLKey otherPlus, SDLKey minus, SDLKey otherMinus) {
            return (keys[plus] || keys[otherPlus]) - (keys[minus] || keys[otherMinus]);
        };
        const bool hurried = keys[SDLK_LSHIFT] || keys[SDLK_RSHIFT];
        const double step =
            std::min(passed, 0.2) * (walking ? walkingPace : flyingPace) * (hurried ? faster : 1);
        landscape.move(step * axis(SDLK_w, SDLK_UP, SDLK_s, SDLK_DOWN),
                       step * axis(SDLK_d, SDLK_RIGHT, SDLK_a, SDLK_LEFT),
                       step * axis(SDLK_PAGEUP, SDLK_SPACE, SDLK_PAGEDOWN, SDLK_c));
        if (walking) {
            const Vector &eye = landscape.getEye();
            landscape.move(0, 0, heights.at(eye.x, eye.z) + landLift + eyeHeight - eye.y);
        }
    }

    void resize(int width, int height) override { landscape.resize(width, height); }

    Landscape &landscape;
    TerrainHeights heights;
    bool dragging = false, walking = false;
};

class InterfaceViewer : public Loop {
  public:
    InterfaceViewer(Panel &shown, RVNODE *root, std::string itsTitle, double limit)
        : Loop(limit), panel(shown), widgets(root), title(std::move(itsTitle)) {
        SDL_EnableUNICODE(1); // characters as they are typed
    }

  private:
    void take(const SDL_Event &event) override {
        if (event.type == SDL_MOUSEMOTION) {
            x = event.motion.x;
            y = event.motion.y;
        }
        if (event.type == SDL_MOUSEBUTTONDOWN || event.type == SDL_MOUSEBUTTONUP)
            pressed = event.type == SDL_MOUSEBUTTONDOWN;
        if (event.type == SDL_KEYDOWN && event.key.keysym.unicode < 0x80)
            typed = static_cast<char>(event.key.keysym.unicode);
    }

    void frame(double) override {
        panel.draw();
        unsigned int used = 0;
        RVELEMENT::manageGUIEvents(typed, x, y, pressed, 0, &used);
        typed = 0;
        if (used)
            name(used);
    }

    void name(unsigned int id) const {
        RVNODE *node = widgets->findByIdInHierarchy(id);
        const std::string event =
            "event " + std::to_string(id) + (node ? std::string(": ") + node->getName() : "");
        say(event);
        SDL_WM_SetCaption((title + " - " + event).c_str(), nullptr);
    }

    void resize(int width, int height) override { panel.resize(width, height); }

    Panel &panel;
    RVNODE *widgets;
    std::string title;
    int x = -1, y = -1;
    bool pressed = false;
    char typed = 0;
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
           "An interface is operated; the title names each event.\n";
}

} // namespace ravolt::tool
