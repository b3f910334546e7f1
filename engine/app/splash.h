#pragma once

#include <memory>

namespace ravolt {

class SystemWindow;

// Draws the splash into the window just opened, before anything of OpenGL but the context is up,
// and shows it; without memory for it the window is just white. In a CAVE window, which is kept on
// top, it stands on the left half.
void drawSplash(int windowX, int windowY, bool CAVE, const SystemWindow &window);

// The splash picture: square, splashSize pixels a side, three bytes a pixel (blue, green, red),
// rows from the bottom up. Its background is white. NULL when memory runs out.
constexpr int splashSize = 256;
std::unique_ptr<unsigned char[]> splashPicture();

} // namespace ravolt
