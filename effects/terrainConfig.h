#pragma once

// Reader of a terrain's configuration file: returns the two levels of elements below the root as
// texts, in their order. The terrain applies them in that order.

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
