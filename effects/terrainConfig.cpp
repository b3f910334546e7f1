#include "effects/terrainConfig.h"

#include "foundation/xmlDocument.h"

#include <tinyxml.h>

#include <new>

namespace ravolt {

namespace {

TerrainEntry entryOf(const TiXmlElement &xml) {
    const char *text = xml.GetText();
    return {xml.Value(), text ? text : "", text != nullptr};
}

} // namespace

bool readTerrainConfig(const char *path, std::vector<TerrainSection> &sections) try {
    TiXmlDocument document;
    if (!loadXml(path, document) || !document.RootElement())
        return false;
    for (const TiXmlElement *xml = document.RootElement()->FirstChildElement(); xml;
         xml = xml->NextSiblingElement()) {
        TerrainSection section{entryOf(*xml), {}};
        for (const TiXmlElement *child = xml->FirstChildElement(); child;
             child = child->NextSiblingElement())
            section.entries.push_back(entryOf(*child));
        sections.push_back(section);
    }
    return true;
} catch (const std::bad_alloc &) {
    return false;
}

} // namespace ravolt
