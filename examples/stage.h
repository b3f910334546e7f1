#pragma once

// The stage that several examples play on, media/stage.obj: its window, its light and its camera.

class RVCAMERA;
class RVLIGHT;

constexpr float nearPlane = 0.5f, farPlane = 40; // metres

// Starts the engine, with programs and with textures from the folder of `file`. False when it does
// not start; its log says why.
bool openStage(const char *title, const char *file);

// A spot light that casts soft shadows.
RVLIGHT *makeSpot();

// A camera in front of the stage, on its background.
RVCAMERA *makeCamera();

// Takes the camera some degrees round the stage.
void goRound(RVCAMERA *camera, float degrees);
