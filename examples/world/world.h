#pragma once

// Everything in the world of the demo, and how a frame of it is drawn.

#include "examples/panel.h"
#include "examples/world/campFire.h"
#include "examples/world/herd.h"
#include "examples/world/lampProgram.h"
#include "examples/world/land.h"
#include "examples/world/nature.h"
#include "examples/world/parts.h"
#include "examples/world/village.h"

#include <memory>

class Cinema;
class RVCAMERA;

namespace world {

class World {
  public:
    World();
    ~World();

    // Loads the files of the working directory. False when one is missing.
    bool load();

    // Light and sky of a part that begins.
    void start(const Part &part);

    // Moves the camera, what walks and the video. `progress` of the part is from 0 to 1.
    void advance(const Part &part, float progress, float seconds);

    // Draws the frame into the target, `time` seconds after the start of the part; both sides of a
    // comparison at the same moment, the one without the effect already into the window, up to
    // `split` of its width.
    void draw(const Part &part, float time, float split);

    // In a run for pictures each frame counts as so many seconds. Flames and smoke have grown
    // before it starts, and the eye adapts to the brightness within one frame.
    void startPictures(float frameSeconds);

    Panel panel;

  private:
    void applyEffects(const Effects &effects);
    void pass(float time, bool withFire) const;
    void drawOnce(const Effects &effects, float time, bool withFire = true);

    Land land;
    CampFire fire;
    Village village;
    Nature nature;
    Herd herd;
    std::unique_ptr<LampProgram> lampProgram;
    std::unique_ptr<Cinema> cinema;
    RVCAMERA *camera = nullptr;
    float frameDuration = 0; // seconds; 0 for the measured one
    bool night = false, panelOperated = false;
};

} // namespace world
