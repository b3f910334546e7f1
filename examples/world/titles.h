#pragma once

// The texts of the demo, in pixels of the window.

#include <string>

namespace world {

struct Part;

// To be called in the 2D block: the name of the part, which fades in and out, and in a comparison
// what is seen on either side, with a line between them at `split` of the window's width.
void drawTitles(const Part &part, float secondsOfPart, float split);

// The font of the titles, title.tga and title.txt in this folder, which ends with '/'.
bool loadTitleFont(const std::string &folder);

} // namespace world
