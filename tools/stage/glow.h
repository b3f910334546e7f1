#pragma once

// How bright the light has to be for bloom to be seen.

namespace ravolt::tool {

class Stage;

// The brightness at which a twentieth of what is seen of the scene is brighter than white, and so
// glows; from 1 to 6.6, and 1 where the brightness changes nothing. Draws frames that are
// discarded. Needs the running engine with programs.
double brightnessForBloom(Stage &stage);

} // namespace ravolt::tool
