// A flight over an island and through its village, by day, below the water and by night: terrain
// with sky and water, animals that walk and run, a camp fire, a screen with its video, a control
// panel, and each effect beside the same picture without it. It ends by itself after one and a half
// minutes, but who operates the panel flies on.
//
// Reads the files of the working directory that scripts/makeWorld.sh has made there.

#include "examples/common.h"
#include "examples/stage.h"
#include "examples/world/titles.h"
#include "examples/world/world.h"

#include <ravolt.h>
#include <ravolt/kit/frameStatistics.h>

#include <SDL/SDL.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

using namespace world;

constexpr float pictureStep = 1.0f / 30.0f; // seconds of a frame in a run for pictures
constexpr float longestStep = 1;            // else; still slower machines fly longer
constexpr float moment = 0.7f;              // of a part, of which there is a picture

void announce(const Part &part) {
    std::fprintf(stderr, "%s\n", part.name);
    SDL_WM_SetCaption(("Ravolt: " + std::string(part.name)).c_str(), nullptr);
}

// Where the flight is: the number of the part, and how much of it is over.
class Flight {
  public:
    float time = 0, before = 0; // in parts
    std::size_t shown = numberOfParts;

    std::size_t number() const { return static_cast<std::size_t>(time); }
    float progress() const { return time - static_cast<float>(number()); }
    bool isOver() const { return number() >= numberOfParts; }
    void startAgain() {
        time -= static_cast<float>(numberOfParts);
        before -= static_cast<float>(numberOfParts);
    }

    // A run of N frames shows all parts once; the last picture of each is written.
    explicit Flight(const Example &example) : time(timeOf(example, 0)) {}

    void advance(Example &example, float seconds) {
        shown = number();
        before = time;
        const Part &part = parts[shown];
        time = example.frames ? timeOf(example, example.frame + 1)
                              : time + std::min(seconds, longestStep) / part.seconds;
        example.label = number() != shown ? part.name : nullptr;
    }

  private:
    static float timeOf(const Example &example, int frame) {
        return example.frames
                   ? (static_cast<float>(frame) + moment) * static_cast<float>(numberOfParts) /
                         static_cast<float>(example.frames)
                   : 0;
    }
};

// Where a comparison changes sides, of the picture's width: the line moves over most of it, and is
// in the middle at the moment of the picture.
float splitAt(float progress) { return 0.5f + 0.35f * std::sin(6.2831853f * (moment - progress)); }

// The seconds since the last call.
float clockSeconds() {
    static Uint32 last = SDL_GetTicks();
    const Uint32 now = SDL_GetTicks(), passed = now - last;
    last = now;
    return static_cast<float>(passed) / 1000;
}

} // namespace

int main(int argc, char **argv) {
    // init
    Example example(argc, argv);
    if (!openStage("Ravolt: island", "./", example.width))
        return 1;
    World world;
    if (!world.load()) {
        RAVOLT::free();
        return 1;
    }
    if (example.frames) { // pictures are the same in each run
        std::srand(1);
        world.startPictures(pictureStep);
        world.panel.fixRate(1 / pictureStep);
    }

    ravolt::kit::FrameStatistics statistics;
    Flight flight(example);
    bool pointerMoved = false; // who moves it wants to operate the panel
    do {
        // update
        const Part &part = parts[flight.number()];
        if (flight.number() != flight.shown) {
            announce(part);
            world.start(part);
        }
        const float progress = flight.progress(), seconds = progress * part.seconds;
        world.advance(part, progress, (flight.time - flight.before) * part.seconds);
        const float frameSeconds = clockSeconds();
        statistics.add(frameSeconds);
        flight.advance(example, frameSeconds);
        const float split = splitAt(progress);

        // draw
        world.draw(part, seconds, split);
        const auto [right, down] = example.input.getMotion();
        pointerMoved = pointerMoved || right || down;
        const bool panelShown = part.panel || (!example.frames && pointerMoved);
        showFrame(
            panelShown ? world.panel.getNode() : nullptr, [&] { drawTitles(part, seconds, split); },
            part.comparison ? split : 0);
        world.panel.update(example);
        if (const std::string name = world.panel.takePictureName(); !name.empty())
            Example::writePicture((name + ".png").c_str());
        if (flight.isOver() && pointerMoved && !example.frames)
            flight.startAgain();
    } while (example.next() && !flight.isOver());
    std::fprintf(stderr, "%s\n", statistics.getText().c_str());

    // free
    RAVOLT::free();
    return 0;
}
