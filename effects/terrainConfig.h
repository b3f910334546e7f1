#pragma once

// A terrain's configuration file: its elements, and how they are applied. Applying them needs no
// OpenGL: what they act on is a TerrainTarget, which is the terrain or what only checks the file.

#include "foundation/xmlDocument.h"

#include <array>
#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

namespace ravolt {

struct TerrainEntry {
    std::string name;
    std::string text;
    bool hasText;
    int line = 0, column = 0; // in the file
};

// A child of the root, with its own children.
struct TerrainSection : TerrainEntry {
    std::vector<TerrainEntry> entries;
};

// Returns the two levels of elements below the root as texts, in their order. False, with nothing
// logged, when the file cannot be read, is no XML or exceeds the limits of
// foundation/xmlDocument.h.
bool readTerrainConfig(const char *path, std::vector<TerrainSection> &sections,
                       XmlProblem *problem = nullptr);

constexpr std::size_t terrainLayers = 4;

// The element TERRAIN. The names are those of the section.
struct TerrainLayers {
    std::vector<const TerrainEntry *> diffuse, normal;
    std::vector<int> repeat;
    bool complex = false;
};

// What a configuration acts on. The members are called in the order of the file; after one that
// returns false, having reported why, nothing follows.
class TerrainTarget {
  public:
    virtual ~TerrainTarget() = default;

    // GEOMETRY. The next three say what it has created.
    virtual bool loadGeometry(const TerrainEntry &filename) = 0;
    virtual bool hasWater() const = 0;
    virtual bool hasSky() const = 0;
    virtual unsigned int levels() const = 0; // of detail; 0 without a geometry

    virtual void setLayers(const TerrainLayers &layers) = 0;

    virtual void setWaterSpeed(float speed) = 0;
    // At the end of the section; NULL for what it does not name.
    virtual bool loadWater(const TerrainSection &section, const TerrainEntry *normal,
                           const TerrainEntry *dudv, int repeat) = 0;

    virtual void setSkySpeed(float speed) = 0;
    virtual bool loadSky(const TerrainEntry &filename) = 0;

    virtual void startLod() = 0;
    virtual void setLodEnabled(bool enabled) = 0;
    virtual void setLodThreshold(std::size_t number, float squaredDistance) = 0;
    virtual void finishLod() = 0;

    // A configuration that is wrong: the line for the log, and the reason for a reader of the file.
    struct Problem {
        const char *logLine;
        const char *reason;
        const TerrainEntry &entry;
    };
    virtual void report(const Problem &problem) = 0;
};

// Whether RAVOLT::confineFilesOn accepts the name of a geometry. No path is put in front of it, so
// that an absolute one may be in the working directory.
bool isConfinedGeometry(const std::string &name, const std::filesystem::path &workingDirectory);

// False after the first problem.
bool applyTerrainConfig(const std::vector<TerrainSection> &sections, TerrainTarget &target);

} // namespace ravolt
