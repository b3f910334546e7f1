#pragma once

// The stage that several examples play on, media/stage.obj: its window, its sky, its light and its
// camera.

#include <functional>
#include <initializer_list>

class RVCAMERA;
class RVLIGHT;
class RVNODE;

constexpr float nearPlane = 0.5f, farPlane = 125; // metres

enum class Daytime {
    day,  // a far spot light for the sun
    night // one above the stage, whose cone ends on it
};

// Starts the engine, with programs and with textures from the folder of `file`. False when it does
// not start; its log says why. Shadows are coarse where the width of the window is small.
bool openStage(const char *title, const char *file, int width);

// The stage itself, without its skies. NULL when it cannot be loaded.
RVNODE *loadStage(const char *file);

// The stage's only light, which casts soft shadows.
RVLIGHT *makeSpot(Daytime time = Daytime::day);

// Light and sky for a time of the day.
void setDaytime(RVLIGHT *spot, Daytime time, float brightness = 1);

// A camera in front of the stage.
RVCAMERA *makeCamera();

// Moves the camera to this angle on a circle round the stage.
void orbit(RVCAMERA *camera, float degrees);

// Shows the frame in the window, in place of RAVOLT::swap. Frames are drawn twice as large into
// render target 0, so that edges are smooth. An interface is drawn over the frame, and so is what
// `overlay` draws, in pixels of the window. Columns before `from`, 0 to 1, are as copyFrame made
// them.
void showFrame(RVNODE *interface = nullptr, const std::function<void()> &overlay = nullptr,
               float from = 0);

// A whole frame: draws nodes, seen by the camera, and shows them.
void drawFrame(RVCAMERA *camera, std::initializer_list<RVNODE *> nodes,
               const std::function<void()> &overlay = nullptr);

// Draws the columns between two numbers from 0 to 1 into the window, which is not shown yet:
// another picture of the same frame follows, with showFrame. Without render targets it has no
// effect.
void copyFrame(float from, float to);
