#pragma once

// What `view` and `shot` have in common: the stage as the options want it, and the engine's log
// for those who ask for it.

#include "tools/commands.h"
#include "tools/stage/stage.h"

namespace ravolt::tool {

// Throws Failure for a rig that the scene does not have.
void arrange(Stage &stage, const ShowOptions &options);

// Copies the engine's log to standard error when `verbose`.
void sayLog(const Talk &talk);

} // namespace ravolt::tool
