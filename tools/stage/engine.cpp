// Starts and stops the engine, with a window or off screen.

#include "tools/stage/engine.h"

#include <algorithm>
#include <fstream>
#include <ravolt.h>
#include <string_view>

namespace ravolt::tool {

namespace fs = std::filesystem;

namespace {

// "   [!] Invalid header in file a.rve @ RAVOLT::load" as "Invalid header in file a.rve", and
// "   [!] Invalid params @ XML::LOD.LEVEL" as "Invalid params in LOD.LEVEL".
std::string errorText(const std::string &line) {
    constexpr const char *mark = "[!] ";
    const std::string text = line.substr(line.find(mark) + 4);
    const std::size_t place = text.rfind(" @ ");
    if (place == std::string::npos)
        return text;
    constexpr std::string_view ofXml = " @ XML::";
    if (text.compare(place, ofXml.size(), ofXml) == 0)
        return text.substr(0, place) + " in " + text.substr(place + ofXml.size());
    return text.substr(0, place);
}

constexpr int videoMemory = 512; // megabytes

// A texture that could not be loaded, or whose name leads out of the scene's folder.
bool isOfATexture(const std::string &line) {
    return line.find("[!] ") != std::string::npos &&
           (line.ends_with(" @ RVTEXTURE::loadTGA") || line.ends_with(": refused @ RAVOLT::load"));
}

bool isSoftware() {
    const char *renderer = reinterpret_cast<const char *>(glGetString(GL_RENDERER));
    const std::string name = renderer ? renderer : "";
    return name.find("llvmpipe") != std::string::npos || name.find("softpipe") != std::string::npos;
}

// Those that exist now.
template <class Object> std::set<const Object *> registered() {
    std::set<const Object *> all;
    for (const Object *each = Object::getFirst(); each; each = each->getNext())
        all.insert(each);
    return all;
}

template <class Object> void deleteOthers(const std::set<const Object *> &own) {
    for (Object *each = Object::getFirst(); each;) {
        Object *const current = each;
        each = each->getNext();
        if (!own.contains(current))
            delete current;
    }
}

void switchEverythingOff() {
    RAVOLT::wireframeOff();
    RVMESH::hideNormals();
    RVSETTINGS::forceShadersOff();
    RAVOLT::shadowingOff();
    RAVOLT::bloomingOff();
    RAVOLT::HDROff();
    RAVOLT::DOFOff();
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

std::size_t Engine::logSize() const {
    std::error_code error;
    const std::uintmax_t size = fs::file_size(logFile, error);
    return error ? 0 : static_cast<std::size_t>(size);
}

// The last error that is not the consequence of another.
std::string Engine::terrainError(std::size_t start) const {
    std::ifstream log(logFile);
    log.seekg(static_cast<std::streamoff>(start));
    std::string line, last = "the engine gave no reason";
    while (std::getline(log, line))
        if (line.find("[!] ") != std::string::npos &&
            line.find("[!] Invalid params @ RV") == std::string::npos &&
            (!line.ends_with(" @ RVTERRAIN::load") ||
             line.ends_with(": refused @ RVTERRAIN::load")))
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
    : logFile(fs::absolute(log)), startFolder(fs::current_path()) {
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
    settings.setMaxAnisotropy(drawing.anisotropy.value_or(0));
    start(settings, drawing);
    if (!drawing.anisotropy && isSoftware()) {
        RAVOLT::free();
        settings.setMaxAnisotropy(1);
        start(settings, drawing);
    }
    ownTextures = registered<RVTEXTURE>();
    ownMaterials = registered<RVMATERIAL>();
    ownPrograms = registered<RVSHADER>();
}

void Engine::start(RVSETTINGS &settings, const Drawing &drawing) {
    RVLIGHT::markersOff();
    if (!RAVOLT::init(&settings))
        throw Failure("cannot open a window: " + lastError());
    if (drawing.useTarget && usesTarget() && !RVOPENGL::getFbo(0)->isOk()) {
        RAVOLT::free();
        throw PictureTooLarge("the display cannot draw effects into a picture of that size");
    }
}

Engine::~Engine() { RAVOLT::free(); }

void Engine::unload() {
    switchEverythingOff();
    RVNODE::cleanUp();
    RVFONT::cleanUp();
    deleteOthers(ownMaterials);
    deleteOthers(ownPrograms);
    deleteOthers(ownTextures);
    RVANIM::cleanUp();
    RVVIDEO::cleanUp();
    std::error_code error;
    fs::current_path(startFolder, error);
}

unsigned int Engine::numberOfTextures() const {
    return RVTEXTURE::getNumberOfTextures() - static_cast<unsigned int>(ownTextures.size());
}

void Engine::enterFolderOf(const fs::path &file) {
    std::error_code error;
    fs::current_path(fs::absolute(file).parent_path(), error);
    if (error)
        throw Failure(file.string(), error.message());
    RAVOLT::confineFilesOn(); // files come from anywhere
}

RVNODE *Engine::load(const fs::path &scene) {
    enterFolderOf(scene);
    RVNODE *root = RAVOLT::load(scene.filename().c_str());
    if (!root)
        throw Failure(scene.string(), lastError());
    return root;
}

RVNODE *Engine::loadInterface(const fs::path &file) {
    enterFolderOf(file);
    RVNODE *root = RAVOLT::loadXML(file.filename().c_str());
    if (!root)
        throw Failure(file.string(), lastError());
    return root;
}

RVEMITTER *Engine::loadEmitter(const fs::path &file) {
    enterFolderOf(file);
    RVEMITTER *emitter = new RVEMITTER;
    if (!emitter->load(file.filename().c_str()))
        throw Failure(file.string(), lastError());
    emitter->link(new RVNODE);
    if (!emitter->getParent())
        throw Failure(file.string(), lastError());
    return emitter;
}

// Textures are beside the configuration, wherever the geometry is looked for.
RVTERRAIN *Engine::loadTerrain(const fs::path &file, const fs::path &folder) {
    const fs::path config = fs::absolute(file);
    enterFolderOf(folder / "");
    const std::string before = RVTEXTURE::getPath();
    RVTEXTURE::setPath((config.parent_path() / "").c_str());
    const std::size_t logged = logSize();
    RVTERRAIN *terrain = new RVTERRAIN;
    const bool loaded = terrain->load(config.c_str());
    RVTEXTURE::setPath(before.c_str());
    if (!loaded)
        throw Failure(file.string(), terrainError(logged));
    return terrain;
}

} // namespace ravolt::tool
