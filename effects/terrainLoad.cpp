// Terrains: the two files and the objects made from them. Both files are read and checked without
// OpenGL, in effects/terrainConfig.h and effects/terrainGeometry.h.

#include "effects/terrainConfig.h"
#include "effects/terrainGeometry.h"
#include "engine/gl/bindings.h"
#include "foundation/registry.h"
#include "foundation/text.h"
#include "ravolt/RAVOLT.h"
#include "ravolt/RVSKYDOME.h"
#include "ravolt/RVTERRAIN.h"
#include "ravolt/RVTERRAIN_CHUNK.h"
#include "ravolt/RVTERRAIN_COORDBUFFER.h"
#include "ravolt/RVTERRAIN_INDEXTABLE.h"
#include "ravolt/RVWATER.h"
#include "ravolt/zlf.h"

#include <algorithm>
#include <cfloat>
#include <filesystem>
#include <iterator>
#include <new>
#include <string>
#include <vector>

using ravolt::TerrainEntry;
using ravolt::TerrainGeometry;
using ravolt::TerrainLevel;
using ravolt::TerrainSection;

namespace {

// Unbinds the buffers, also after a failure: the next object may be drawn from the application's
// memory.
struct UnbindBuffersAtEnd {
    UnbindBuffersAtEnd() = default;
    ~UnbindBuffersAtEnd() { ravolt::unbindBuffers(); }
    UnbindBuffersAtEnd(const UnbindBuffersAtEnd &) = delete;
    UnbindBuffersAtEnd &operator=(const UnbindBuffersAtEnd &) = delete;
};

RVTERRAIN_INDEXBUFFER *uploadList(const std::vector<unsigned short> &list) {
    return new RVTERRAIN_INDEXBUFFER(list.data(), static_cast<unsigned int>(list.size()));
}

// Whether the configuration may name a file with a name that is or is not confined.
bool mayName(const std::string &name, bool confined) {
    if (!RAVOLT::isConfiningFiles() || confined)
        return true;
    zlfLog("   [!] File name %s leaves its path: refused @ RVTERRAIN::load\n", name.c_str());
    return false;
}

bool mayNameGeometry(const std::string &name) {
    std::error_code error; // the folder is then empty
    return mayName(name, ravolt::isConfinedGeometry(name, std::filesystem::current_path(error)));
}

bool mayName(const std::string &name) { return mayName(name, ravolt::staysBelowPath(name)); }

bool mayName(const TerrainEntry *entry) { return !entry || mayName(entry->text); }

bool mayName(const ravolt::TerrainLayers &layers) {
    const auto allowed = [](const auto &entries) {
        return std::all_of(std::begin(entries), std::end(entries),
                           [](const TerrainEntry *entry) { return mayName(entry); });
    };
    return allowed(layers.diffuse) && allowed(layers.normal);
}

} // namespace

bool RVTERRAIN::load(const char *filename) try {
    if (!loadConfig(filename)) {
        zlfLog("   [!] Error loading config @ RVTERRAIN::load\n");
        return false;
    }
    // So that the first frame computes the planes.
    std::fill(std::begin(cachedModelview), std::end(cachedModelview), FLT_MAX);
    failureReported = false;
    return true;
} catch (const std::bad_alloc &) {
    file.close();
    zlfLog("   [!] Out of memory @ RVTERRAIN::load\n");
    return false;
}

// What the elements of the configuration do to the terrain.
class RVTERRAIN::Configured : public ravolt::TerrainTarget {
  public:
    explicit Configured(RVTERRAIN &object) : terrain(object) {}

    bool loadGeometry(const TerrainEntry &filename) override {
        return mayNameGeometry(filename.text) && terrain.loadGeometry(filename.text.c_str());
    }
    bool hasWater() const override { return terrain.water.get() != nullptr; }
    bool hasSky() const override { return terrain.sky.get() != nullptr; }
    unsigned int levels() const override {
        return terrain.indexTable ? terrain.indexTable->levels : 0;
    }

    // Without chunks, before GEOMETRY, no object uses the textures. As where one cannot be loaded,
    // the chunks are then drawn without them.
    void setLayers(const ravolt::TerrainLayers &layers) override {
        if (!mayName(layers))
            return;
        const auto diffuse = [&](std::size_t i) { return layers.diffuse[i]->text.c_str(); };
        const auto normal = [&](std::size_t i) { return layers.normal[i]->text.c_str(); };
        const std::vector<int> &repeat = layers.repeat;
        forEachChunk([&](RVTERRAIN_CHUNK &chunk) {
            chunk.loadTexture(diffuse(0), normal(0), repeat[0], diffuse(1), normal(1), repeat[1],
                              diffuse(2), normal(2), repeat[2], diffuse(3), normal(3), repeat[3],
                              layers.complex);
        });
    }

    void setWaterSpeed(float speed) override { terrain.water->setSpeed(speed); }
    bool loadWater(const TerrainSection &, const TerrainEntry *normal, const TerrainEntry *dudv,
                   int repeat) override {
        if (!mayName(normal) || !mayName(dudv))
            return false;
        if (!terrain.water->loadTextures(normal ? normal->text.c_str() : nullptr,
                                         dudv ? dudv->text.c_str() : nullptr, repeat))
            return false;
        terrain.fetchBuffers();
        terrain.waterLoaded = true;
        return true;
    }

    void setSkySpeed(float speed) override { terrain.sky->setSpeed(speed); }
    bool loadSky(const TerrainEntry &filename) override {
        return mayName(filename.text) && terrain.sky->loadTexture(filename.text.c_str());
    }

    // A second element writes into the array of the first, to which the chunks refer.
    void startLod() override {
        if (!terrain.lodThresholds)
            terrain.lodThresholds = new float[levels() - 1]();
    }
    void setLodEnabled(bool enabled) override { terrain.lodEnabled = enabled; }
    void setLodThreshold(std::size_t number, float squaredDistance) override {
        terrain.lodThresholds[number] = squaredDistance;
    }
    void finishLod() override {
        forEachChunk(
            [this](RVTERRAIN_CHUNK &chunk) { chunk.setLodThresholds(terrain.lodThresholds); });
    }

    void report(const Problem &problem) override { zlfLog("%s", problem.logLine); }

  private:
    template <class Action> void forEachChunk(Action action) {
        std::for_each(terrain.chunks, terrain.chunks + terrain.numberOfChunks,
                      [&](RVTERRAIN_CHUNK *chunk) { action(*chunk); });
    }

    RVTERRAIN &terrain;
};

bool RVTERRAIN::loadConfig(const char *filename) {
    std::vector<TerrainSection> sections;
    if (!filename || !ravolt::readTerrainConfig(filename, sections)) {
        zlfLog("   [!] Invalid params @ RVTERRAIN::loadConfig\n");
        return false;
    }
    Configured configured(*this);
    return ravolt::applyTerrainConfig(sections, configured);
}

// The file is checked as a whole before anything is made from it.
bool RVTERRAIN::loadGeometry(const char *filename) {
    if (indexTable) {
        zlfLog("   [!] A second geometry %s @ RVTERRAIN_MANAGER::loadGeometry\n", filename);
        return false;
    }
    std::error_code unreadable;
    if (std::filesystem::is_regular_file(filename, unreadable)) // opening a FIFO would wait
        file.open(filename, std::ios::binary);
    if (!file.is_open()) {
        zlfLog("   [!] Invalid params @ RVTERRAIN_MANAGER::loadGeometry\n");
        return false;
    }
    TerrainGeometry geometry;
    const char *problem = ravolt::readTerrainGeometry(file, geometry);
    if (!problem && !createTerrain(geometry))
        problem = "it has become shorter";
    file.close();
    file.clear();
    if (problem) {
        zlfLog("   [!] Corrupted file %s: %s @ RVTERRAIN_MANAGER::loadGeometry\n", filename,
               problem);
        return false;
    }
    createSky();
    createWater();
    return true;
}

bool RVTERRAIN::createTerrain(const TerrainGeometry &geometry) {
    const UnbindBuffersAtEnd unbinding;
    header = geometry.header;
    loadIndex(geometry);
    loadTextureUV(geometry);
    return loadVertices(geometry);
}

void RVTERRAIN::loadIndex(const TerrainGeometry &geometry) {
    indexTable = new RVTERRAIN_INDEXTABLE(header.chunkSize, header.levels);
    for (std::size_t level = 0; level < geometry.levels.size(); ++level) {
        const TerrainLevel &lists = geometry.levels[level];
        indexTable->body[level] = uploadList(lists.body);
        for (std::size_t corner = 0; corner < TerrainLevel::corners; ++corner) {
            const std::size_t entry = level * RVTERRAIN_INDEXTABLE::corners + corner;
            const auto &variant = lists.edge[corner];
            for (std::size_t edge = 0; edge < TerrainLevel::edges; ++edge)
                indexTable->edgeCoarse[edge][entry] = uploadList(variant[edge]);
            for (std::size_t edge = 0; edge < TerrainLevel::edges; ++edge)
                indexTable->edgeSame[edge][entry] = uploadList(variant[TerrainLevel::edges + edge]);
        }
    }
}

void RVTERRAIN::loadTextureUV(const TerrainGeometry &geometry) {
    std::vector<Z3MVECTOR2D> coords = geometry.texCoords;
    coordBuffer = new RVTERRAIN_COORDBUFFER(coords.data(), header.chunkSize);
}

bool RVTERRAIN::loadVertices(const TerrainGeometry &geometry) {
    chunks = new RVTERRAIN_CHUNK *[geometry.chunks.size()]();
    std::vector<unsigned char> vertices(ravolt::terrainVertexBytes(header));
    for (numberOfChunks = 0; numberOfChunks < geometry.chunks.size(); ++numberOfChunks) {
        if (!ravolt::readTerrainVertices(file, geometry, numberOfChunks, vertices))
            return false;
        chunks[numberOfChunks] = new RVTERRAIN_CHUNK(header, geometry.chunks[numberOfChunks],
                                                     vertices.data(), indexTable, coordBuffer);
    }
    linkNeighbours(geometry);
    return true;
}

void RVTERRAIN::linkNeighbours(const TerrainGeometry &geometry) {
    for (unsigned int number = 0; number < numberOfChunks; ++number)
        for (unsigned int side = 0; side < RVTERRAIN_CHUNK::neighbourCount; ++side) {
            const unsigned short neighbour = geometry.chunks[number].neighbour[side];
            chunks[number]->setNeighbour(side, neighbour ? chunks[neighbour - 1] : nullptr);
        }
}

void RVTERRAIN::createSky() { sky.set(new RVSKYDOME); }

void RVTERRAIN::createWater() {
    water.set(new RVWATER);
    water->init(static_cast<float>(header.terrainSizeX) * header.vertexScale,
                static_cast<float>(header.terrainSizeY) * header.vertexScale);
}
