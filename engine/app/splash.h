#pragma once

#include <memory>

namespace ravolt {

class SystemWindow;

// Draws the splash into the new window, before RVOPENGL has started, and presents it. Without
// memory for the picture the window is white. In a CAVE window, which is raised to the top, the
// splash is in the middle of the left half.
void drawSplash(int windowX, int windowY, bool CAVE, const SystemWindow &window);

// The splash picture: square, splashSize pixels a side, three bytes a pixel (blue, green, red),
// rows from the bottom up. Its background is white. NULL when memory runs out.
constexpr int splashSize = 256;
std::unique_ptr<unsigned char[]> splashPicture();

} // namespace ravolt
