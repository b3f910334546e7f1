#pragma once

// The engine: started with a scene, stopped, and the errors of its log reported as the tool's own.

#include "tools/common/failure.h"

#include <filesystem>
#include <optional>
#include <set>
#include <string>
#include <vector>

class RVEMITTER;
class RVMATERIAL;
class RVNODE;
class RVSETTINGS;
class RVSHADER;
class RVTERRAIN;
class RVTEXTURE;

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
    // Of textures. Without it 1 with a software driver, which is several times slower with 16, and
    // the driver's own with others.
    std::optional<int> anisotropy;
};

// The display has no render target of the size of the picture.
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

    // Loads a scene file and returns its root, which the engine owns. Throws Failure. Changes to
    // the scene's folder, so that textures are found beside it by their file names.
    RVNODE *load(const std::filesystem::path &scene);

    // The same for the other kinds of files. An emitter has a plain node above it.
    RVNODE *loadInterface(const std::filesystem::path &file);
    RVEMITTER *loadEmitter(const std::filesystem::path &file);
    // In `folder`, from which the path of the geometry leads to it.
    RVTERRAIN *loadTerrain(const std::filesystem::path &file, const std::filesystem::path &folder);

    // Removes textures that could not be loaded from their materials, so that their colours are
    // visible: programs would draw them black. Returns the errors of the engine's log, each once:
    // "Unable to open file a.tga".
    static std::vector<std::string> removeBrokenTextures(const std::filesystem::path &log);

    // Deletes everything that was loaded or made since the engine was started, and switches off
    // what frames have switched on, so that another file can be loaded into the window. Pointers to
    // nodes, stages and such are invalid then. Returns to the working folder of the start.
    void unload();
    // Loaded or made since the start.
    unsigned int numberOfTextures() const;

  private:
    void start(RVSETTINGS &settings, const Drawing &drawing);
    std::string lastError() const;
    std::string terrainError(std::size_t start) const; // of the log from there on
    std::size_t logSize() const;
    // Changes to the file's folder. Throws Failure.
    static void enterFolderOf(const std::filesystem::path &file);

    std::filesystem::path logFile, startFolder;
    std::set<const RVTEXTURE *> ownTextures; // made by the engine at its start
    std::set<const RVMATERIAL *> ownMaterials;
    std::set<const RVSHADER *> ownPrograms;
};

// The size of what is drawn into: the window, or the render target. Needs the running engine.
WindowSize canvasSize();

} // namespace ravolt::tool
