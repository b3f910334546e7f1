#pragma once

// What `view` and `shot` have in common: the stage by the options, and the engine's log with
// --verbose.

#include "tools/commands/showOptions.h"
#include "tools/stage/engine.h"
#include "tools/stage/stage.h"

namespace ravolt::tool {

class Landscape;
class Playback;
class SceneToShow;

// How the engine is started for the effects; with `programs` even if none of them is on yet.
Drawing drawingFor(const ShowOptions &options, bool programs);

// Throws WrongOptions for a rig that the scene does not have. Warns of effects that the display
// cannot do.
void arrange(Stage &stage, const ShowOptions &options);

// The same for a terrain.
void arrange(Landscape &landscape, const ShowOptions &options);

// A loaded scene; an emitter has its root above it.
struct LoadedScene {
    RVNODE *root = nullptr;
    RVEMITTER *emitter = nullptr;
};
LoadedScene load(Engine &engine, const SceneToShow &scene, const ShowOptions &options);

// Of the window that shows all widgets: the engine is started to load them.
WindowSize sizeOfInterface(const ShowOptions &options);

// With bloom, and without --brightness, raises the brightness until some of the scene glows. Call
// it after `arrange`.
void makeGlow(Stage &stage, const ShowOptions &options);

// Draws materials without textures that the engine could not load, and warns of each of these.
void removeBrokenTextures(const Verbosity &verbosity);

// Warns of nodes that the chosen clip moves and the scene does not have.
void warnOfMissingNodes(const Playback &playback, const Verbosity &verbosity);

// Copies the engine's log to standard error at its end when `verbose`, even if a job fails.
class LogAtEnd {
  public:
    explicit LogAtEnd(const Verbosity &requested) : verbosity(requested) {}
    ~LogAtEnd();
    LogAtEnd(const LogAtEnd &) = delete;
    LogAtEnd &operator=(const LogAtEnd &) = delete;

  private:
    const Verbosity &verbosity;
};

} // namespace ravolt::tool
