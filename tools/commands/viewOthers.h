#pragma once

// Viewers of what is shown on no stage.

#include <string>

namespace ravolt::tool {

struct ShowOptions;

// End when the window is closed, or after `seconds` unless that is 0.
void viewTerrain(const ShowOptions &options, double seconds);
void viewInterface(const ShowOptions &options, double seconds);

// Their keys, for the help.
std::string terrainKeys();

} // namespace ravolt::tool
