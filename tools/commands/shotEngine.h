#pragma once

// The engine for the pictures of `shot`.

#include "tools/stage/engine.h"

#include <memory>

namespace ravolt::tool {

struct ShotOptions;

// Starts the engine with programs, if they are needed without effects too, and with a window, and a
// target if one is used, of the size `drawn`, which is a multiple of that of the picture. Where the
// display has no target of that size, `drawn` is set to the next smaller one that it has, with a
// warning. Throws Failure.
std::unique_ptr<Engine> startEngine(const ShotOptions &options, bool programs, bool useTarget,
                                    WindowSize &drawn);

} // namespace ravolt::tool
