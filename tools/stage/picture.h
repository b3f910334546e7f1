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

// The stage as a picture of any size, drawn into a window of any size.
Picture shoot(Stage &stage, WindowSize size);

// Whether something is to be seen in it.
bool showsSomething(const Picture &picture);

// Throws Failure when the file cannot be written.
void writePng(const Picture &picture, const std::filesystem::path &file);

} // namespace ravolt::tool
