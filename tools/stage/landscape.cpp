// The camera, the sun and the boxes of chunks, all in the terrain's own units.

#include "tools/stage/landscape.h"

#include "tools/common/failure.h"
#include "tools/common/fileStart.h"
#include "tools/common/geometryPath.h"
#include "tools/stage/content.h"
#include "tools/stage/engine.h"
#include "tools/stage/lights.h"
#include "tools/stage/vectors.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <ravolt.h>
#include <ravolt/RVTERRAIN.h>
#include <ravolt/RVTERRAIN_CHUNK.h>

namespace ravolt::tool {

namespace fs = std::filesystem;

namespace {

constexpr double landAngle = 50;
constexpr double landLift = 2;       // that the engine draws the land above its heights
constexpr double skyHorizon = 0.216; // in V, since the sky is sunk by a third of its radius

float f(double value) { return static_cast<float>(value); }

// The first text of an element below the root, or below `section` of it.
std::string textOf(const std::vector<XmlElement> &elements, const std::string &section,
                   const std::string &name = "") {
    bool inside = false;
    for (const XmlElement &element : elements) {
        if (element.depth == 1)
            inside = element.name == section;
        if (inside &&
            (name.empty() ? element.depth == 1 : element.depth == 2 && element.name == name))
            return element.text;
    }
    return {};
}

// From the head of a geometry file.
void readSize(TerrainFiles &files) {
    std::array<char, 12> head{};
    std::ifstream stream(files.geometry, std::ios::binary);
    if (!stream.read(head.data(), head.size()))
        throw Failure(files.geometry.string(), "is no geometry of a terrain");
    std::uint16_t alongX, alongZ;
    float scale;
    std::memcpy(&alongX, &head[2], sizeof alongX);
    std::memcpy(&alongZ, &head[4], sizeof alongZ);
    std::memcpy(&scale, &head[8], sizeof scale);
    files.width = (alongX - 1.0) * static_cast<double>(scale);
    files.depth = (alongZ - 1.0) * static_cast<double>(scale);
    if (!(std::min(files.width, files.depth) > 0) || std::max(files.width, files.depth) > 1e9)
        throw Failure(files.geometry.string(), "is no geometry of a terrain");
}

// Its mean colour at the horizon.
std::array<double, 3> horizonOf(RVTEXTURE &sky) {
    const auto width = static_cast<std::size_t>(sky.getSizeX());
    const std::size_t height = sky.getSizeY();
    std::vector<unsigned char> pixels(3 * width * height);
    sky.render(nullptr);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glGetTexImage(GL_TEXTURE_2D, 0, GL_RGB, GL_UNSIGNED_BYTE, pixels.data());
    RVTEXTURE::texturingOff(0);
    std::array<double, 3> color{};
    const std::size_t row = 3 * width * static_cast<std::size_t>(skyHorizon * double(height));
    for (std::size_t i = 0; i < 3 * width; ++i)
        color[i % 3] += pixels[row + i] / (255.0 * static_cast<double>(width));
    return color;
}

struct LevelColor {
    const char *name;
    float red, green, blue;
};
constexpr std::array<LevelColor, 6> levelColors = {{{"red", 1, 0.1f, 0.1f},
                                                    {"orange", 1, 0.55f, 0},
                                                    {"yellow", 1, 1, 0.1f},
                                                    {"green", 0.1f, 1, 0.1f},
                                                    {"cyan", 0, 0.9f, 1},
                                                    {"blue", 0.2f, 0.3f, 1}}};

const LevelColor &colorOf(const RVTERRAIN_CHUNK &chunk) {
    return levelColors[std::min<std::size_t>(chunk.getLevel(), levelColors.size() - 1)];
}

} // namespace

TerrainFiles findTerrain(const fs::path &config) {
    const std::vector<XmlElement> elements = elementsOf(startOf(config));
    const std::string path = textOf(elements, "GEOMETRY");
    if (path.empty())
        throw Failure(config.string(), "names no geometry");
    TerrainFiles files;
    files.config = config;
    files.folder = folderOfGeometry(path, config);
    if (files.folder.empty())
        throw Failure(config.string(), "its geometry " + path + " is neither below its folder, " +
                                           "nor below one above that, nor below the working "
                                           "folder");
    files.geometry = files.folder / path;
    files.sky = textOf(elements, "SKY", "TEXTURE24_DIFFUSE");
    readSize(files);
    return files;
}

Landscape::Landscape(Engine &engine, const TerrainFiles &files)
    : ground(files), sun(new RVLIGHT), camera(new RVCAMERA) {
    RVTERRAIN::restoreTargetOn();
    RVOPENGL::setFarPlane(f(farthest())); // which is the size of the sky, too
    terrain = engine.loadTerrain(files.config, files.folder);
    for (unsigned int i = 0; i < terrain->getNumberOfChunks(); ++i)
        addToGround(*terrain->getChunk(i));
    setBackground();
    target = {ground.width / 2, highest / 4, ground.depth / 2};
    orbit(defaultYaw, defaultPitch, 1);
}

void Landscape::addToGround(const RVTERRAIN_CHUNK &chunk) {
    const Z3MVECTOR3D corner = chunk.getMaximum();
    ground.width = std::max(ground.width, static_cast<double>(corner.x));
    ground.depth = std::max(ground.depth, static_cast<double>(corner.z));
    highest = std::max(highest, corner.y + landLift);
}

// Where the sky and the water end.
void Landscape::setBackground() {
    RVTEXTURE *sky = RVTEXTURE::findByFilename(ground.sky.c_str());
    const bool hasPixels = sky && sky->getSizeX() > 0;
    const std::array<double, 3> color =
        hasPixels ? horizonOf(*sky) : std::array<double, 3>{0.7, 0.78, 0.86};
    RVOPENGL::setBackgroundColor(f(color[0]), f(color[1]), f(color[2]), 1);
}

void Landscape::lookAt(const Vector &point) {
    if (length(point - eye) > 0)
        target = point;
}

void Landscape::orbit(double yaw, double pitch, double zoom) {
    const double narrow = std::min(1.0, aspectOf(part));
    const double distance = 0.8 * size() / narrow / zoom;
    eye = target + directionAt(yaw, pitch) * distance;
}

// In the east, as in the tool's skies; so far away that its rays are parallel.
void Landscape::shine() {
    const Vector center = {ground.width / 2, 0, ground.depth / 2};
    RVOPENGL::setGlobalAmbientLight(0, 0, 0, 1); // which would brighten the sky
    const float brightness = f(effects.get(EffectParameter::brightness));
    sun->setPosition(floats(center + directionAt(90, 35) * (20 * size())));
    sun->setAmbient(0.1f, 0.11f, 0.13f, 1);
    sun->setDiffuse(1.1f * brightness, 1.07f * brightness, brightness, 1);
    sun->setSpecular(0.3f, 0.3f, 0.28f, 1);
}

// The terrain computes the planes of the view only when the camera moves, not when another part of
// the picture is drawn: a step that nobody sees lets it do so.
void Landscape::aim() {
    project({landAngle, farthest() / 5000, farthest()}, part);
    nudged = !nudged;
    const Vector nudge = {nudged && part.wholeWidth ? size() * 1e-6 : 0, 0, 0};
    camera->setPosition(floats(eye + nudge));
    const Vector ahead = target - eye;
    const bool upright = std::hypot(ahead.x, ahead.z) < std::abs(ahead.y) * 1e-4;
    camera->setUpDirection(upright ? Z3MVECTOR3D(0, 0, -1) : Z3MVECTOR3D(0, 1, 0));
    camera->setTarget(floats(target));
    camera->setTargetNode(camera);
}

void Landscape::applyEffects() {
    applyToPicture(effects, !wireframe);
    switchTo(wireframe, RAVOLT::wireframeOn, RAVOLT::wireframeOff);
    const double nearest = RVOPENGL::getNearPlane(), farthest = RVOPENGL::getFarPlane();
    const double sharp = length(target - eye) * 2 * effects.get(EffectParameter::focus);
    RAVOLT::setDOFFocus(f((sharp + nearest) / farthest));
    RAVOLT::setDOFRange(f(farthest / (effects.get(EffectParameter::focusDepth) * size())));
}

// As the last frame has drawn them.
void Landscape::passChunks() {
    while (boxes.size() < terrain->getNumberOfChunks()) {
        const RVTERRAIN_CHUNK &chunk = *terrain->getChunk(static_cast<unsigned int>(boxes.size()));
        RVHELPER *box = new RVHELPER;
        box->setMin(chunk.getMinimum());
        box->setMax(chunk.getMaximum());
        box->setPosition(0, f(landLift), 0);
        box->setThickness(2);
        boxes.push_back(box);
    }
    for (std::size_t i = 0; i < boxes.size(); ++i) {
        const RVTERRAIN_CHUNK &chunk = *terrain->getChunk(static_cast<unsigned int>(i));
        const LevelColor &color = colorOf(chunk);
        boxes[i]->setColor(color.red, color.green, color.blue, 0.12f);
        if (chunk.isVisible())
            boxes[i]->pass();
    }
}

std::string Landscape::chunkCounts() const {
    std::array<int, levelColors.size()> counts{};
    int seen = 0;
    for (unsigned int i = 0; i < terrain->getNumberOfChunks(); ++i) {
        const RVTERRAIN_CHUNK &chunk = *terrain->getChunk(i);
        seen += chunk.isVisible();
        if (chunk.isVisible())
            ++counts[static_cast<std::size_t>(&colorOf(chunk) - levelColors.data())];
    }
    std::string text =
        "chunks: " + std::to_string(seen) + " of " + std::to_string(terrain->getNumberOfChunks());
    for (std::size_t level = 0; level < counts.size(); ++level)
        if (counts[level] > 0)
            text += ", level " + std::to_string(level) + " (" + levelColors[level].name + ") " +
                    std::to_string(counts[level]);
    return text;
}

void Landscape::draw() {
    aim();
    shine();
    applyEffects();
    RVFBO::unbind(); // so that a picture in a target gets the target's size
    RAVOLT::clear(true, true, false);
    RAVOLT::begin3D(camera);
    sun->pass();
    terrain->pass();
    if (showChunks)
        passChunks();
    endFrame();
}

} // namespace ravolt::tool
