// Reads configurations, and applies them in the order of their elements.

#include "effects/terrainConfig.h"

#include "foundation/text.h"

#include <tinyxml.h>

#include <algorithm>
#include <cstdlib>
#include <new>
#include <system_error>

namespace ravolt {

namespace {

TerrainEntry entryOf(const TiXmlElement &xml) {
    const char *text = xml.GetText();
    return {xml.Value(), text ? text : "", text != nullptr, xml.Row(), xml.Column()};
}

float realOf(const TerrainEntry &entry) {
    return static_cast<float>(std::atof(entry.text.c_str()));
}

int integerOf(const TerrainEntry &entry) { return xmlInteger(entry.text.c_str()); }

// Applies the sections to a target. The lines of the log are complete at each call.
class TerrainConfiguration {
  public:
    explicit TerrainConfiguration(TerrainTarget &object) : target(object) {}

    bool apply(const TerrainSection &section) {
        if (section.name == "GEOMETRY")
            return requireText(section, "   [!] Invalid params @ XML::GEOMETRY\n") &&
                   target.loadGeometry(section);
        if (section.name == "TERRAIN")
            return applyLayers(section);
        if (section.name == "WATER")
            return applyWater(section);
        if (section.name == "SKY")
            return applySky(section);
        return section.name != "LOD" || applyLod(section);
    }

  private:
    bool refuse(const TerrainEntry &entry, const char *logLine, const char *reason) {
        target.report({logLine, reason, entry});
        return false;
    }

    bool requireText(const TerrainEntry &entry, const char *logLine) {
        return entry.hasText || refuse(entry, logLine, "the element has no text");
    }

    // --- TERRAIN

    template <class T>
    bool add(std::vector<T> &values, const T &value, const TerrainEntry &entry,
             const char *tooMany) {
        if (values.size() == terrainLayers)
            return refuse(entry, tooMany, "there are four layers, and this is a fifth");
        values.push_back(value);
        return true;
    }

    bool addToLayers(const TerrainEntry &entry, TerrainLayers &layers) {
        if (entry.name == "SHADER_TYPE") {
            layers.complex = entry.text == "COMPLEX";
            return requireText(entry, "   [!] Invalid params @ XML::TERRAIN.SHADER_TYPE\n");
        }
        if (entry.name == "REPEAT")
            return requireText(entry, "   [!] Invalid params @ XML::TERRAIN.REPEAT\n") &&
                   add(layers.repeat, integerOf(entry), entry,
                       "   [!] Too many repeat member @ XML::TERRAIN.REPEAT\n");
        if (entry.name == "TEXTURE32_NORMAL_GLOSS")
            return requireText(entry,
                               "   [!] Invalid params @ XML::TERRAIN.TEXTURE32_NORMAL_GLOSS\n") &&
                   add(layers.normal, &entry, entry,
                       "   [!] Too many normal member @ XML::TERRAIN.TEXTURE32_NORMAL_GLOSS\n");
        if (entry.name == "TEXTURE32_DIFFUSE_HEIGHT")
            return requireText(entry,
                               "   [!] Invalid params @ XML::TERRAIN.TEXTURE32_DIFFUSE_HEIGHT\n") &&
                   add(layers.diffuse, &entry, entry,
                       "   [!] Too many diffuse member @ XML::TERRAIN.TEXTURE32_DIFFUSE_HEIGHT\n");
        return true;
    }

    bool applyLayers(const TerrainSection &section) {
        TerrainLayers layers;
        for (const TerrainEntry &entry : section.entries)
            if (!addToLayers(entry, layers))
                return false;
        if (layers.diffuse.size() < terrainLayers || layers.normal.size() < terrainLayers ||
            layers.repeat.size() < terrainLayers)
            return refuse(section, "   [!] not enought argument @ XML::TERRAIN.\n",
                          "fewer than four layers: four each of REPEAT, TEXTURE32_NORMAL_GLOSS and "
                          "TEXTURE32_DIFFUSE_HEIGHT are required");
        target.setLayers(layers);
        return true;
    }

    // --- WATER and SKY

    struct Water {
        const TerrainEntry *normal = nullptr, *dudv = nullptr;
        int repeat = 1;
    };

    bool addToWater(const TerrainEntry &entry, Water &water) {
        if (entry.name == "SPEED") {
            if (!requireText(entry, "   [!] Invalid params @ XML::WATER.SPEED\n"))
                return false;
            target.setWaterSpeed(realOf(entry));
        } else if (entry.name == "REPEAT") {
            water.repeat = integerOf(entry);
            return requireText(entry, "   [!] Invalid params @ XML::WATER.REPEAT\n");
        } else if (entry.name == "TEXTURE24_DUDV") {
            water.dudv = &entry;
            return requireText(entry, "   [!] Invalid params @ XML::WATER.TEXTURE24_DUDV\n");
        } else if (entry.name == "TEXTURE24_NORMAL") {
            water.normal = &entry;
            return requireText(entry, "   [!] Invalid params @ XML::WATER.TEXTURE24_NORMAL\n");
        }
        return true;
    }

    bool applyWater(const TerrainSection &section) {
        if (!target.hasWater())
            return refuse(section, "   [!] GEOMETRY must come first @ XML::WATER\n",
                          "GEOMETRY must come before WATER");
        Water water;
        for (const TerrainEntry &entry : section.entries)
            if (!addToWater(entry, water))
                return false;
        return target.loadWater(section, water.normal, water.dudv, water.repeat);
    }

    bool applySky(const TerrainSection &section) {
        if (!target.hasSky())
            return refuse(section, "   [!] GEOMETRY must come first @ XML::SKY\n",
                          "GEOMETRY must come before SKY");
        for (const TerrainEntry &entry : section.entries) {
            if (entry.name == "SPEED") {
                if (!requireText(entry, "   [!] Invalid params @ XML::SKY.SPEED\n"))
                    return false;
                target.setSkySpeed(realOf(entry));
            } else if (entry.name == "TEXTURE24_DIFFUSE") {
                if (!requireText(entry, "   [!] Invalid params @ XML::SKY.TEXTURE24_DIFFUSE\n") ||
                    !target.loadSky(entry))
                    return false;
            }
        }
        return true;
    }

    // --- LOD

    bool addToLod(const TerrainEntry &entry, std::size_t thresholds, std::size_t &number) {
        if (entry.name == "ENABLE") {
            if (!requireText(entry, "   [!] Invalid params @ XML::LOD.ENABLE\n"))
                return false;
            target.setLodEnabled(entry.text == "YES");
        } else if (entry.name == "LEVEL") {
            if (!requireText(entry, "   [!] Invalid params @ XML::LOD.LEVEL\n"))
                return false;
            if (number == thresholds)
                return refuse(entry, "   [!] Too many lod level @ XML::LOD.LEVEL\n",
                              "more LEVELs than the geometry has levels of detail, less one");
            target.setLodThreshold(number++, realOf(entry));
        }
        return true;
    }

    bool applyLod(const TerrainSection &section) {
        if (target.levels() == 0)
            return refuse(section, "   [!] GEOMETRY must come first @ XML::LOD\n",
                          "GEOMETRY must come before LOD");
        const std::size_t thresholds = target.levels() - 1;
        target.startLod();
        std::size_t number = 0;
        for (const TerrainEntry &entry : section.entries)
            if (!addToLod(entry, thresholds, number))
                return false;
        if (number < thresholds)
            return refuse(section, "   [!] Not enought lod level @ XML::LOD.LEVEL\n",
                          "fewer LEVELs than the geometry has levels of detail, less one");
        target.finishLod();
        return true;
    }

    TerrainTarget &target;
};

} // namespace

bool readTerrainConfig(const char *path, std::vector<TerrainSection> &sections,
                       XmlProblem *problem) try {
    TiXmlDocument document;
    if (!loadXml(path, document, problem))
        return false;
    if (!document.RootElement()) {
        if (problem)
            *problem = {1, 1, "no element"};
        return false;
    }
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

bool isConfinedGeometry(const std::string &name, const std::filesystem::path &workingDirectory) {
    if (!name.starts_with('/') || workingDirectory.empty())
        return staysBelowPath(name);
    std::error_code error, unknown;
    const auto file = std::filesystem::weakly_canonical(name, error);
    const auto folder = std::filesystem::weakly_canonical(workingDirectory, unknown);
    return !error && !unknown && staysBelowPath(file.lexically_relative(folder).string());
}

bool applyTerrainConfig(const std::vector<TerrainSection> &sections, TerrainTarget &target) {
    TerrainConfiguration configuration(target);
    return std::all_of(sections.begin(), sections.end(),
                       [&](const TerrainSection &section) { return configuration.apply(section); });
}

} // namespace ravolt
