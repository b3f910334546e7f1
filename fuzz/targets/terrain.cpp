// Terrains: configurations with a good geometry, and geometries with a good configuration.

#include "fuzz/support/input.h"
#include "fuzz/support/silentRun.h"
#include "fuzz/support/smallTerrain.h"
#include "ravolt/RVCAMERA.h"
#include "ravolt/RVTERRAIN.h"

namespace ravolt::fuzz {
namespace {

Bytes bytesOf(const std::string &text) {
    return {reinterpret_cast<const std::uint8_t *>(text.data()), text.size()};
}

void runTerrain(const std::string &config, bool shaders) {
    const SilentRun run(shaders);
    auto *const terrain = new RVTERRAIN;
    if (terrain->load(config.c_str()))
        drawFrames(terrain, 2);
}

} // namespace

// In the text, @ stands for the path of the geometry.
void terrainConfig(Bytes bytes) {
    Input input(bytes);
    const bool shaders = input.flag();
    const std::string geometry = writeFile("g.geo", smallTerrain());
    std::string config;
    for (const std::uint8_t character : input.bytes())
        if (character == '@' && config.size() < 65536)
            config += geometry;
        else
            config += static_cast<char>(character);
    runTerrain(writeFile("i.xml", bytesOf(config)), shaders);
}

void terrainGeometry(Bytes bytes) {
    Input input(bytes);
    const bool shaders = input.flag();
    const std::string geometry = writeFile("i.geo", input.bytes());
    runTerrain(writeFile("g.xml", bytesOf(smallTerrainConfig(geometry))), shaders);
}

} // namespace ravolt::fuzz
