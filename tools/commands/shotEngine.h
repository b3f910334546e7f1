#pragma once

// The engine for the pictures of `shot`.

#include "tools/stage/engine.h"

#include <memory>
#include <string>

namespace ravolt::tool {

struct ShotOptions;

// Starts the engine with a window, and a target where `drawing` has one, of the size `drawn`. Where
// the display has no target of that size, which is twice that of the picture, `drawn` is set to the
// size of the picture and `warning` is printed. Throws Failure.
std::unique_ptr<Engine> startEngine(const ShotOptions &options, Drawing drawing, WindowSize &drawn,
                                    const std::string &warning);

} // namespace ravolt::tool
