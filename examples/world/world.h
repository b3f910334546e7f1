#pragma once

// Everything in the world of the demo, and how a frame of it is drawn.

#include "examples/panel.h"
#include "examples/world/campFire.h"
#include "examples/world/herd.h"
#include "examples/world/lampProgram.h"
#include "examples/world/land.h"
#include "examples/world/parts.h"
#include "examples/world/village.h"

#include <memory>

class Cinema;
class RVCAMERA;

namespace world {

constexpr float split = 0.5f; // of the picture's width, where a comparison changes sides

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
    // comparison at the same moment, the one without the effect already into the window.
    void draw(const Part &part, float time);

    // In a run for pictures, whose frames are few, each counts as so many seconds. Then flames and
    // smoke have grown before it starts, and the eye has adapted to a part's brightness at its end.
    void startPictures(float frameSeconds);
    void adapt(const Part &part, float time);

    Panel panel;

  private:
    void applyEffects(const Effects &effects);
    void pass(bool withFire, float time) const;
    void drawOnce(const Effects &effects, float time, bool withFire = true);

    Land land;
    CampFire fire;
    Village village;
    Herd herd;
    std::unique_ptr<LampProgram> lampProgram;
    std::unique_ptr<Cinema> cinema;
    RVCAMERA *camera = nullptr;
    float frameDuration = 0; // seconds; 0 for the measured one
    bool night = false, panelOperated = false;
};

} // namespace world
