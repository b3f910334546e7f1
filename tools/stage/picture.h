#pragma once

// Pictures of the stage, and of what else is drawable.

#include "tools/stage/engine.h"

#include <filesystem>
#include <ravolt/kit/screenshot.h>
#include <vector>

namespace ravolt::tool {

class Drawable;

using Picture = kit::Screenshot;

// Between the end of a frame's drawing and RAVOLT::swap. Throws std::bad_alloc.
Picture takePicture();

// Draws it over the window, pixel by pixel, before RAVOLT::swap.
void showPicture(const Picture &picture);

// The window that a picture of that size is drawn in: in parts if it is larger than any screen
// certainly is.
WindowSize windowFor(WindowSize picture);

// A picture of any size, drawn into a window of any size; with effects that work on
// the picture as a whole the engine must draw into a render target.
Picture shoot(Drawable &drawable, WindowSize size);

// The same frames, which are discarded.
void drawUnseen(Drawable &drawable, WindowSize size);

// Draws a frame that is discarded, if the effects need one: after a pause the engine would count
// the whole pause as the duration of the first frame, and in the very first frame depth of field
// and shadows know no lights, so that meshes with bones cast the shadow of their bind pose.
void drawAfterPause(Drawable &drawable);

// Draws frames that are discarded until effects that depend on earlier frames have settled: tone
// mapping adapts to the brightness within a second.
void settle(Drawable &drawable);

// Whether it shows anything but the background.
bool showsSomething(const Picture &picture);

// As a PNG file. Throws std::bad_alloc.
std::vector<unsigned char> encodePng(const Picture &picture);

// To standard output.
void printPng(const Picture &picture);

// Throws Failure when the file cannot be written, which is unchanged then.
void writePng(const Picture &picture, const std::filesystem::path &file);

} // namespace ravolt::tool
