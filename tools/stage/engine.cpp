// Starts and stops the engine, with a window or off screen.

#include "tools/stage/engine.h"

#include <algorithm>
#include <fstream>
#include <ravolt/RAVOLT.h>
#include <ravolt/RVFBO.h>
#include <ravolt/RVMATERIAL.h>
#include <ravolt/RVOPENGL.h>
#include <ravolt/RVSETTINGS.h>
#include <ravolt/RVTEXTURE.h>

namespace ravolt::tool {

namespace fs = std::filesystem;

namespace {

// "   [!] Invalid header in file a.rve @ RAVOLT::load" as "invalid header in file a.rve".
std::string errorText(const std::string &line) {
    constexpr const char *mark = "[!] ";
    std::string text = line.substr(line.find(mark) + 4);
    const std::size_t place = text.rfind(" @ ");
    if (place != std::string::npos)
        text.erase(place);
    return text;
}

constexpr int videoMemory = 512; // megabytes

// A texture that could not be loaded, or whose name leads out of the scene's folder.
bool isOfATexture(const std::string &line) {
    return line.find("[!] ") != std::string::npos &&
           (line.ends_with(" @ RVTEXTURE::loadTGA") || line.ends_with(": refused @ RAVOLT::load"));
}

bool usesTarget() { return RVSETTINGS::getSDLForceFBO() && RVOPENGL::useFBO(); }

} // namespace

WindowSize canvasSize() {
    if (!usesTarget())
        return {RVSETTINGS::getSDLWindowX(), RVSETTINGS::getSDLWindowY()};
    return {RVSETTINGS::getSDLFBOSizeX(), RVSETTINGS::getSDLFBOSizeY()};
}

std::string Engine::lastError() const {
    std::ifstream log(logFile);
    std::string line, last = "the engine gave no reason";
    while (std::getline(log, line))
        if (line.find("[!] ") != std::string::npos)
            last = errorText(line);
    return last;
}

std::vector<std::string> Engine::removeBrokenTextures(const fs::path &log) {
    for (RVMATERIAL *material = RVMATERIAL::getFirst(); material; material = material->getNext())
        for (unsigned int slot = 0; slot < RV_TEXTURE_UNITS; ++slot) {
            const RVTEXTURE *texture = material->getTexture(slot);
            // One that was only thrown out of video memory again has a size.
            if (texture && !texture->isLoaded() && texture->getSizeX() == 0)
                material->setTexture(slot, nullptr);
        }
    std::ifstream stream(log);
    std::vector<std::string> errors;
    for (std::string line; std::getline(stream, line);) {
        if (!isOfATexture(line))
            continue;
        const std::string error = errorText(line);
        if (std::find(errors.begin(), errors.end(), error) == errors.end())
            errors.push_back(error);
    }
    return errors;
}

Engine::Engine(WindowSize size, const std::string &title, bool resizable, const fs::path &log,
               const Drawing &drawing)
    : logFile(fs::absolute(log)) {
    RVSETTINGS settings;
    settings.setTitle(title.c_str());
    settings.setWindowX(size.width);
    settings.setWindowY(size.height);
    settings.setResizable(resizable);
    settings.setColorDepth(24);
    settings.setZetaDepth(24);
    settings.setVideoMemory(videoMemory);
    settings.setShaders(drawing.programs);
    settings.setShadowMapSize(drawing.shadowMap);
    settings.setFBOSizeX(drawing.picture.width);
    settings.setFBOSizeY(drawing.picture.height);
    settings.setForceFBO(drawing.useTarget);
    if (!RAVOLT::init(&settings))
        throw Failure("cannot open a window: " + lastError());
    if (drawing.useTarget && usesTarget() && !RVOPENGL::getFbo(0)->isOk()) {
        RAVOLT::free();
        throw PictureTooLarge("the display cannot draw effects into a picture of that size");
    }
}

Engine::~Engine() { RAVOLT::free(); }

RVNODE *Engine::load(const fs::path &scene) {
    std::error_code error;
    const fs::path file = fs::absolute(scene);
    fs::current_path(file.parent_path(), error);
    RAVOLT::confineFilesOn(); // scenes come from anywhere
    RVNODE *root = error ? nullptr : RAVOLT::load(file.filename().c_str());
    if (!root)
        throw Failure(scene.string(), error ? error.message() : lastError());
    return root;
}

bool isScene(const fs::path &file) {
    std::error_code error;
    if (!fs::exists(file, error))
        throw Failure(file.string(), "no such file");
    if (fs::is_directory(file, error))
        throw Failure(file.string(), "is a folder, not a scene or a model");
    if (!fs::is_regular_file(file, error)) // it is read more than once
        throw Failure(file.string(), "is no regular file");
    std::ifstream stream(file, std::ios::binary);
    if (!stream)
        throw Failure(file.string(), "cannot be read");
    constexpr const char *magic = "RVE file v";
    std::string start(10, '\0');
    stream.read(start.data(), static_cast<std::streamsize>(start.size()));
    return start == magic;
}

} // namespace ravolt::tool
