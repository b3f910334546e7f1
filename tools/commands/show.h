#pragma once

// What `view` and `shot` have in common: the stage as the options want it, and the engine's log
// for those who ask for it.

#include "tools/commands/showOptions.h"
#include "tools/stage/engine.h"
#include "tools/stage/stage.h"

namespace ravolt::tool {

class Playback;

// How the engine has to be started for the effects; `programs` also when none of them is on yet.
Drawing drawingFor(const ShowOptions &options, bool programs);

// Throws WrongOptions for a rig that the scene does not have. Warns of effects that the display
// cannot do.
void arrange(Stage &stage, const ShowOptions &options, const Verbosity &verbosity);

// With bloom, and without a brightness among the options, makes the light so bright that some of
// the scene glows. Call it when the scene is arranged for drawing.
void makeGlow(Stage &stage, const ShowOptions &options);

// Draws materials without textures that the engine could not load, and warns of each of these.
void removeBrokenTextures(const Verbosity &verbosity);

// Warns of nodes that the chosen clip moves and the scene does not have.
void warnOfMissingNodes(const Playback &playback, const Verbosity &verbosity);

// Copies the engine's log to standard error at its end when `verbose`, also when a job fails.
class LogAtEnd {
  public:
    explicit LogAtEnd(const Verbosity &wanted) : verbosity(wanted) {}
    ~LogAtEnd();
    LogAtEnd(const LogAtEnd &) = delete;
    LogAtEnd &operator=(const LogAtEnd &) = delete;

  private:
    const Verbosity &verbosity;
};

} // namespace ravolt::tool
