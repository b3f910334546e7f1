#pragma once

// The engine in the tool's hands: started, fed with a scene, stopped, and its complaints made
// into the tool's own.

#include "tools/common/failure.h"

#include <filesystem>
#include <string>
#include <vector>

class RVNODE;

namespace ravolt::tool {

struct WindowSize {
    int width = 960;
    int height = 640;
};

// How the engine is to draw.
struct Drawing {
    bool programs = false;  // GLSL: without them there are no effects
    int shadowMap = 1024;   // its side in pixels
    WindowSize picture;     // drawn with effects that work on the picture as a whole
    bool useTarget = false; // in its target, where it is larger than every window may be
};

// The display has no target of the size of a picture that is to be kept.
class PictureTooLarge : public Failure {
  public:
    using Failure::Failure;
};

class Engine {
  public:
    // Opens the window; throws Failure with the engine's reason, or PictureTooLarge. `log` is the
    // file that the engine writes its log to.
    Engine(WindowSize size, const std::string &title, bool resizable,
           const std::filesystem::path &log, const Drawing &drawing = {});
    ~Engine();
    Engine(const Engine &) = delete;
    Engine &operator=(const Engine &) = delete;

    // Loads a scene file and returns its root, which the engine owns. Throws Failure. Goes to the
    // scene's folder, so that textures are found beside it by their bare names.
    RVNODE *load(const std::filesystem::path &scene);

    // Takes the textures that could not be loaded off their materials, whose colours are seen then:
    // programs would make black of them. Returns the complaints of the engine's log, each once:
    // "Unable to open file a.tga".
    static std::vector<std::string> removeBrokenTextures(const std::filesystem::path &log);

  private:
    std::string complaint() const;

    std::filesystem::path logFile;
};

// Of what is drawn into: the window, or the target that keeps the picture. Needs the live engine.
WindowSize canvasSize();

// Whether a file is a scene file rather than a model. Throws Failure when it cannot be read.
bool isScene(const std::filesystem::path &file);

} // namespace ravolt::tool
