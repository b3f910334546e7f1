#pragma once

// What the window shows, as a picture.

#include "tools/stage/engine.h"

#include <cstddef>
#include <filesystem>
#include <vector>

namespace ravolt::tool {

class Stage;

// Rows from the top down, R G B.
struct Picture {
    int width = 0;
    int height = 0;
    std::vector<unsigned char> pixels;
};

// Between the end of a frame's drawing and RAVOLT::swap.
Picture takePicture();

// The window that a picture of that size is drawn in, a part at a time where it is larger than
// every screen is sure to be.
WindowSize windowFor(WindowSize picture);

// The stage as a picture of any size, drawn into a window of any size; with effects that work on
// the picture as a whole the engine must keep the picture.
Picture shoot(Stage &stage, WindowSize size);

// After a pause the engine would take the first frame for one that lasted all that time, and in the
// very first one depth of field and shadows have no lights to go by, without which meshes with
// bones cast the shadow of their bind pose. So this draws one that is not kept, where the effects
// ask for it.
void drawAfterPause(Stage &stage);

// Draws frames that are not kept until effects which look at earlier frames have settled: tone
// mapping takes a second to get used to the light.
void settle(Stage &stage);

// Half as wide and as high: each pixel is the mean of four, so that edges are smooth.
Picture halved(const Picture &picture);

// Whether something is to be seen in it.
bool showsSomething(const Picture &picture);

// As a PNG file. Throws std::bad_alloc.
std::vector<unsigned char> encodePng(const Picture &picture);

// To standard output.
void printPng(const Picture &picture);

// Throws Failure when the file cannot be written, which then stays as it was.
void writePng(const Picture &picture, const std::filesystem::path &file);

} // namespace ravolt::tool
