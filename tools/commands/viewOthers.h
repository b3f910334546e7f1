#pragma once

// Viewers of what is shown on no stage.

#include "tools/commands/viewLoop.h"

namespace ravolt::tool {

Ending viewTerrain(ViewSession &session, const ShowOptions &options);
Ending viewInterface(ViewSession &session, const ShowOptions &options);

// Their keys, without the common ones.
TextRows terrainKeys();

} // namespace ravolt::tool
