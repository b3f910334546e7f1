#pragma once

// The files of terrains for the tests, made byte by byte, and terrains loaded from them.

#include "tests/support/files.h"

#include <cstddef>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

class RVTERRAIN;
class RVWATER;

namespace ravolt::test {

struct TerrainShape {
    unsigned int side = 5; // vertices along a side of a chunk
    unsigned int columns = 2, rows = 1;
    unsigned int levels = 3;
    float scale = 1;
    // By the vertex's numbers along X and Z.
    std::function<float(unsigned int, unsigned int)> height = [](auto, auto) { return 1.0f; };
};

// Numbers of the file's header and of a chunk's, by their offsets.
constexpr std::size_t chunkSizeAt = 0, terrainSizeZAt = 2, terrainSizeXAt = 4, scaleAt = 8,
                      levelsAt = 20, terrainHeaderBytes = 24;
constexpr std::size_t gridXAt = 0, gridZAt = 2, minHeightAt = 4, maxHeightAt = 8, neighboursAt = 12,
                      chunkHeaderBytes = 20;
constexpr std::size_t terrainVertexSize = 36; // position, weights of the layers, tangent

// A geometry file. Front faces are seen from above. The neighbours of a chunk lie towards -Z, +Z,
// -X and +X; the rims of two levels that differ by one fit. The four variants of an edge are alike.
class TerrainFile {
  public:
    static constexpr std::size_t listsPerLevel = 33; // the body, then 4 times 8 edges

    explicit TerrainFile(const TerrainShape &wanted = {});

    Bytes bytes;
    // As they are in the file, level by level.
    std::vector<std::vector<unsigned short>> lists;

    // Offsets in the file.
    std::size_t list(std::size_t number) const;
    std::size_t coords() const { return list(lists.size()); }
    std::size_t chunk(std::size_t number) const;
    std::size_t vertices(std::size_t number) const { return chunk(number) + chunkHeaderBytes; }
    std::size_t verticesOfChunk() const { return std::size_t{shape.side} * shape.side; }
    std::size_t numberOfChunks() const { return std::size_t{shape.columns} * shape.rows; }

    // Damages one number.
    template <class T> TerrainFile &set(std::size_t offset, T value) {
        std::memcpy(bytes.data() + offset, &value, sizeof value);
        return *this;
    }
    TerrainFile &cut(std::size_t length) {
        bytes.resize(length);
        return *this;
    }

    void write() const { writeFile("land.geo", bytes); }

  private:
    template <class T> void add(T value) {
        const auto *first = reinterpret_cast<const unsigned char *>(&value);
        bytes.insert(bytes.end(), first, first + sizeof value);
    }
    void addLists(unsigned int level);
    void addList(const std::vector<unsigned short> &numbers);
    std::vector<unsigned short> bodyOf(unsigned int cells, unsigned int step, bool last) const;
    std::vector<unsigned short> edgeOf(unsigned int edge, unsigned int cells, unsigned int step,
                                       bool coarse) const;
    void addCoords();
    void addChunk(unsigned int column, unsigned int row);
    unsigned short numberOf(unsigned int column, unsigned int row) const;

    TerrainShape shape;
};

// Elements of a configuration file. Their textures are those of writeTerrainTextures.
inline const std::string geometryXml = "<GEOMETRY>land.geo</GEOMETRY>";
inline const std::string waterXml =
    "<WATER><SPEED>0</SPEED><REPEAT>3</REPEAT><TEXTURE24_DUDV>dudv.tga</TEXTURE24_DUDV>"
    "<TEXTURE24_NORMAL>bump.tga</TEXTURE24_NORMAL></WATER>";
inline const std::string skyXml =
    "<SKY><SPEED>0</SPEED><TEXTURE24_DIFFUSE>sky.tga</TEXTURE24_DIFFUSE></SKY>";
std::string element(const std::string &name, const std::string &content);
// Four layers, of which the first repeats once and the last four times, and what follows them.
std::string layersXml(const std::string &more = "");
std::string lodXml(const std::vector<std::string> &levels, const std::string &enable = "YES");

// Writes these elements below a root as "land.xml".
void writeTerrainConfig(const std::string &elements);

// Colour and height d1.tga to d4.tga (red, green, blue, grey), normals n1.tga to n4.tga that point
// up, bump.tga and dudv.tga of a calm water, a magenta sky.tga.
void writeTerrainTextures();

// A new terrain of these files; a failure fails the test.
RVTERRAIN *loadTerrain(const TerrainFile &file, const std::string &elements);

// The first water that there is; NULL for none.
RVWATER *findWater();

} // namespace ravolt::test
