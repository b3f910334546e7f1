// A flat terrain, made of the numbers of the reader, and its configuration as text.

#include "fuzz/support/smallTerrain.h"

#include "effects/terrainGeometry.h"

#include <cstring>
#include <vector>

namespace ravolt::fuzz {
namespace {

RVTERRAIN_HEADER smallHeader() {
    RVTERRAIN_HEADER header{};
    header.chunkSize = 5;
    header.terrainSizeY = 9;
    header.terrainSizeX = 5;
    header.vertexScale = 1;
    header.levels = 2;
    return header;
}

// Lists, coordinates and vertices are zeros.
std::vector<std::uint8_t> makeTerrain() {
    const RVTERRAIN_HEADER header = smallHeader();
    std::vector<std::uint8_t> bytes(terrainChunkOffset(header, 2));
    std::memcpy(bytes.data(), &header, sizeof header);
    for (unsigned short number = 0; number < 2; ++number) {
        RVTERRAIN_CHUNK_HEADER chunk{};
        chunk.gridX = number;
        chunk.maxHeight = 1;
        chunk.neighbour[number ? 2 : 3] = static_cast<unsigned short>(number ? 1 : 2);
        std::memcpy(bytes.data() + terrainChunkOffset(header, number), &chunk, sizeof chunk);
    }
    return bytes;
}

std::string element(const std::string &name, const std::string &text) {
    return "<" + name + ">" + text + "</" + name + ">";
}

} // namespace

Bytes smallTerrain() {
    static const std::vector<std::uint8_t> bytes = makeTerrain();
    return bytes;
}

std::string smallTerrainConfig(const std::string &geometry) {
    std::string layers = element("SHADER_TYPE", "COMPLEX");
    for (int layer = 0; layer < 4; ++layer)
        layers += element("REPEAT", "2") + element("TEXTURE32_DIFFUSE_HEIGHT", "t.tga") +
                  element("TEXTURE32_NORMAL_GLOSS", "t.tga");
    return element("CONFIG", element("GEOMETRY", geometry) + element("TERRAIN", layers) +
                                 element("WATER", element("SPEED", "1") + element("REPEAT", "3") +
                                                      element("TEXTURE24_NORMAL", "t.tga") +
                                                      element("TEXTURE24_DUDV", "t.tga")) +
                                 element("SKY", element("SPEED", "1") +
                                                    element("TEXTURE24_DIFFUSE", "t.tga")) +
                                 element("LOD", element("ENABLE", "YES") + element("LEVEL", "9")));
}

} // namespace ravolt::fuzz
