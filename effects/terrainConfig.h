#pragma once

// Reader of a terrain's configuration file: the elements below its root and below those, in their
// order, as texts. What they do to a terrain, which depends on that order, is its own matter.

#include <string>
#include <vector>

namespace ravolt {

struct TerrainEntry {
    std::string name;
    std::string text;
    bool hasText;
};

// A child of the root, with its own children.
struct TerrainSection : TerrainEntry {
    std::vector<TerrainEntry> entries;
};

// False, with nothing logged, when the file cannot be read, is no XML or exceeds the limits of
// foundation/xmlDocument.h.
bool readTerrainConfig(const char *path, std::vector<TerrainSection> &sections);

} // namespace ravolt
