// Terrains: the two files and the objects made from them. Both files are read and checked without
// OpenGL, in effects/terrainConfig.h and effects/terrainGeometry.h.

#include "effects/terrainConfig.h"
#include "effects/terrainGeometry.h"
#include "engine/gl/bindings.h"
#include "foundation/registry.h"
#include "foundation/xmlDocument.h"
#include "ravolt/RVSKYDOME.h"
#include "ravolt/RVTERRAIN.h"
#include "ravolt/RVTERRAIN_CHUNK.h"
#include "ravolt/RVTERRAIN_COORDBUFFER.h"
#include "ravolt/RVTERRAIN_INDEXTABLE.h"
#include "ravolt/RVWATER.h"
#include "ravolt/zlf.h"

#include <algorithm>
#include <cfloat>
#include <cstdlib>
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

// The attributes of the element TERRAIN about the layers.
struct Layers {
    std::vector<const char *> diffuse, normal;
    std::vector<int> repeat;
    bool complex = false;
};

constexpr std::size_t numberOfLayers = RVTERRAIN_CHUNK::layers;

bool isComplete(const Layers &layers) {
    return layers.diffuse.size() == numberOfLayers && layers.normal.size() == numberOfLayers &&
           layers.repeat.size() == numberOfLayers;
}

bool addShaderType(const TerrainEntry &entry, Layers &layers) {
    if (!entry.hasText) {
        zlfLog("   [!] Invalid params @ XML::TERRAIN.SHADER_TYPE\n");
        return false;
    }
    layers.complex = entry.text == "COMPLEX";
    return true;
}

bool addRepeat(const TerrainEntry &entry, Layers &layers) {
    if (!entry.hasText) {
        zlfLog("   [!] Invalid params @ XML::TERRAIN.REPEAT\n");
        return false;
    }
    if (layers.repeat.size() == numberOfLayers) {
        zlfLog("   [!] Too many repeat member @ XML::TERRAIN.REPEAT\n");
        return false;
    }
    layers.repeat.push_back(ravolt::xmlInteger(entry.text.c_str()));
    return true;
}

bool addNormal(const TerrainEntry &entry, Layers &layers) {
    if (!entry.hasText) {
        zlfLog("   [!] Invalid params @ XML::TERRAIN.TEXTURE32_NORMAL_GLOSS\n");
        return false;
    }
    if (layers.normal.size() == numberOfLayers) {
        zlfLog("   [!] Too many normal member @ XML::TERRAIN.TEXTURE32_NORMAL_GLOSS\n");
        return false;
    }
    layers.normal.push_back(entry.text.c_str());
    return true;
}

bool addDiffuse(const TerrainEntry &entry, Layers &layers) {
    if (!entry.hasText) {
        zlfLog("   [!] Invalid params @ XML::TERRAIN.TEXTURE32_DIFFUSE_HEIGHT\n");
        return false;
    }
    if (layers.diffuse.size() == numberOfLayers) {
        zlfLog("   [!] Too many diffuse member @ XML::TERRAIN.TEXTURE32_DIFFUSE_HEIGHT\n");
        return false;
    }
    layers.diffuse.push_back(entry.text.c_str());
    return true;
}

bool addToLayers(const TerrainEntry &entry, Layers &layers) {
    if (entry.name == "SHADER_TYPE")
        return addShaderType(entry, layers);
    if (entry.name == "REPEAT")
        return addRepeat(entry, layers);
    if (entry.name == "TEXTURE32_NORMAL_GLOSS")
        return addNormal(entry, layers);
    if (entry.name == "TEXTURE32_DIFFUSE_HEIGHT")
        return addDiffuse(entry, layers);
    return true;
}

float realOf(const TerrainEntry &entry) {
    return static_cast<float>(std::atof(entry.text.c_str()));
}

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

bool RVTERRAIN::loadConfig(const char *filename) {
    std::vector<TerrainSection> sections;
    if (!filename || !ravolt::readTerrainConfig(filename, sections)) {
        zlfLog("   [!] Invalid params @ RVTERRAIN::loadConfig\n");
        return false;
    }
    return std::all_of(sections.begin(), sections.end(),
                       [this](const TerrainSection &section) { return applySection(section); });
}

bool RVTERRAIN::applySection(const TerrainSection &section) {
    if (section.name == "GEOMETRY") {
        if (!section.hasText)
            zlfLog("   [!] Invalid params @ XML::GEOMETRY\n");
        return section.hasText && loadGeometry(section.text.c_str());
    }
    if (section.name == "TERRAIN")
        return applyLayers(section);
    if (section.name == "WATER")
        return applyWater(section);
    if (section.name == "SKY")
        return applySky(section);
    return section.name != "LOD" || applyLod(section);
}

// Without chunks, before GEOMETRY, no object uses the textures.
bool RVTERRAIN::applyLayers(const TerrainSection &section) {
    Layers layers;
    for (const TerrainEntry &entry : section.entries)
        if (!addToLayers(entry, layers))
            return false;
    if (!isComplete(layers)) {
        zlfLog("   [!] not enought argument @ XML::TERRAIN.\n");
        return false;
    }
    const auto &diffuse = layers.diffuse, &normal = layers.normal;
    const auto &repeat = layers.repeat;
    std::for_each(chunks, chunks + numberOfChunks, [&](RVTERRAIN_CHUNK *chunk) {
        chunk->loadTexture(diffuse[0], normal[0], repeat[0], diffuse[1], normal[1], repeat[1],
                           diffuse[2], normal[2], repeat[2], diffuse[3], normal[3], repeat[3],
                           layers.complex);
    });
    return true;
}

bool RVTERRAIN::applyWater(const TerrainSection &section) {
    if (!water) {
        zlfLog("   [!] GEOMETRY must come first @ XML::WATER\n");
        return false;
    }
    const char *normal = nullptr, *dudv = nullptr;
    int repeat = 1;
    for (const TerrainEntry &entry : section.entries) {
        if (entry.name == "SPEED") {
            if (!entry.hasText) {
                zlfLog("   [!] Invalid params @ XML::WATER.SPEED\n");
                return false;
            }
            water->setSpeed(realOf(entry));
        } else if (entry.name == "REPEAT") {
            if (!entry.hasText) {
                zlfLog("   [!] Invalid params @ XML::WATER.REPEAT\n");
                return false;
            }
            repeat = ravolt::xmlInteger(entry.text.c_str());
        } else if (entry.name == "TEXTURE24_DUDV") {
            if (!entry.hasText) {
                zlfLog("   [!] Invalid params @ XML::WATER.TEXTURE24_DUDV\n");
                return false;
            }
            dudv = entry.text.c_str();
        } else if (entry.name == "TEXTURE24_NORMAL") {
            if (!entry.hasText) {
                zlfLog("   [!] Invalid params @ XML::WATER.TEXTURE24_NORMAL\n");
                return false;
            }
            normal = entry.text.c_str();
        }
    }
    if (!water->loadTextures(normal, dudv, repeat))
        return false;
    fetchBuffers();
    waterLoaded = true;
    return true;
}

bool RVTERRAIN::applySky(const TerrainSection &section) {
    if (!sky) {
        zlfLog("   [!] GEOMETRY must come first @ XML::SKY\n");
        return false;
    }
    for (const TerrainEntry &entry : section.entries) {
        if (entry.name == "SPEED") {
            if (!entry.hasText) {
                zlfLog("   [!] Invalid params @ XML::SKY.SPEED\n");
                return false;
            }
            sky->setSpeed(realOf(entry));
        } else if (entry.name == "TEXTURE24_DIFFUSE") {
            if (!entry.hasText) {
                zlfLog("   [!] Invalid params @ XML::SKY.TEXTURE24_DIFFUSE\n");
                return false;
            }
            if (!sky->loadTexture(entry.text.c_str()))
                return false;
        }
    }
    return true;
}

// A second element writes into the array of the first, to which the chunks refer.
bool RVTERRAIN::applyLod(const TerrainSection &section) {
    if (!indexTable) {
        zlfLog("   [!] GEOMETRY must come first @ XML::LOD\n");
        return false;
    }
    const std::size_t thresholds = indexTable->levels - 1u;
    if (!lodThresholds)
        lodThresholds = new float[thresholds]();
    std::size_t number = 0;
    for (const TerrainEntry &entry : section.entries) {
        if (entry.name == "ENABLE") {
            if (!entry.hasText) {
                zlfLog("   [!] Invalid params @ XML::LOD.ENABLE\n");
                return false;
            }
            lodEnabled = entry.text == "YES";
        } else if (entry.name == "LEVEL") {
            if (!entry.hasText) {
                zlfLog("   [!] Invalid params @ XML::LOD.LEVEL\n");
                return false;
            }
            if (number == thresholds) {
                zlfLog("   [!] Too many lod level @ XML::LOD.LEVEL\n");
                return false;
            }
            lodThresholds[number++] = realOf(entry);
        }
    }
    if (number < thresholds) {
        zlfLog("   [!] Not enought lod level @ XML::LOD.LEVEL\n");
        return false;
    }
    std::for_each(chunks, chunks + numberOfChunks,
                  [this](RVTERRAIN_CHUNK *chunk) { chunk->setLodThresholds(lodThresholds); });
    return true;
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
