// Configurations of terrains, applied to a terrain that only checks them.

#include "effects/terrainConfig.h"
#include "resources/tga.h"
#include "tools/common/geometryPath.h"
#include "tools/inspect/formats.h"
#include "tools/inspect/geometryFile.h"
#include "tools/inspect/values.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace ravolt::tool::inspect {

namespace {

// The elements that the engine reads.
const std::map<std::string, std::set<std::string>> knownElements = {
    {"GEOMETRY", {}},
    {"TERRAIN", {"SHADER_TYPE", "REPEAT", "TEXTURE32_NORMAL_GLOSS", "TEXTURE32_DIFFUSE_HEIGHT"}},
    {"WATER", {"SPEED", "REPEAT", "TEXTURE24_DUDV", "TEXTURE24_NORMAL"}},
    {"SKY", {"SPEED", "TEXTURE24_DIFFUSE"}},
    {"LOD", {"ENABLE", "LEVEL"}}};

constexpr std::size_t comparedThresholds = 5; // the engine draws six levels

Place placeOf(const TerrainEntry &entry) { return atLine(entry.line, entry.column); }

class TerrainCheck : public TerrainTarget {
  public:
    explicit TerrainCheck(Inspection &result) : inspection(result) {}

    bool loadGeometry(const TerrainEntry &filename) override {
        if (levels() > 0)
            return refuse(filename, "a second GEOMETRY");
        const auto folder = folderOfGeometry(filename.text, inspection.file);
        if (folder.empty())
            return refuse(filename, "the geometry " + quoted(filename.text) + " is missing");
        if (!isConfinedGeometry(filename.text, folder))
            inspection.warnOfUnconfined(placeOf(filename), "the geometry", filename.text);
        geometry = readGeometryFile(folder / filename.text);
        if (!geometry.problem.empty())
            return refuse(filename, "the geometry " + quoted(filename.text) + ", at its byte " +
                                        std::to_string(geometry.geometry.problemOffset) + ": " +
                                        geometry.problem);
        if (!geometry.warnings.empty())
            inspection.warn(placeOf(filename), "the geometry " + quoted(filename.text) + ": " +
                                                   geometry.warnings.front().reason);
        inspection.content["geometry"] = {{"file", utf8(filename.text)}};
        inspection.content["geometry"].update(geometry.description());
        return true;
    }
    bool hasWater() const override { return levels() > 0; }
    bool hasSky() const override { return levels() > 0; }
    unsigned int levels() const override {
        return static_cast<unsigned int>(geometry.geometry.levels.size());
    }

    void setLayers(const TerrainLayers &layers) override {
        if (levels() == 0)
            inspection.warn(placeOf(*layers.diffuse[0]),
                            "TERRAIN before GEOMETRY has no effect: there are no chunks yet");
        Json described = Json::array();
        for (std::size_t i = 0; i < terrainLayers; ++i) {
            described.push_back({{"diffuse", utf8(layers.diffuse[i]->text)},
                                 {"normal", utf8(layers.normal[i]->text)},
                                 {"repeat", layers.repeat[i]}});
            for (const TerrainEntry *texture : {layers.diffuse[i], layers.normal[i]})
                if (const std::string problem = problemOf(*texture); !problem.empty())
                    inspection.warn(placeOf(*texture), problem + ": the land has no material");
            checkRepeat(layers.repeat[i], *layers.diffuse[i]);
        }
        inspection.content["layers"] = described;
    }

    void setWaterSpeed(float speed) override { waterSpeed = speed; }
    bool loadWater(const TerrainSection &section, const TerrainEntry *normal,
                   const TerrainEntry *dudv, int repeat) override {
        if (!normal || !dudv)
            return refuse(section, "WATER requires TEXTURE24_NORMAL and TEXTURE24_DUDV");
        for (const TerrainEntry *texture : {normal, dudv})
            if (const std::string problem = problemOf(*texture); !problem.empty())
                return refuse(*texture, problem);
        inspection.content["water"] = {{"normal", utf8(normal->text)},
                                       {"dudv", utf8(dudv->text)},
                                       {"repeat", repeat},
                                       {"speed", number(waterSpeed)}};
        checkRepeat(repeat, section);
        return true;
    }

    void setSkySpeed(float) override {}
    bool loadSky(const TerrainEntry &filename) override {
        if (const std::string problem = problemOf(filename); !problem.empty())
            return refuse(filename, problem);
        inspection.content["sky"] = {{"texture", utf8(filename.text)}};
        return true;
    }

    void startLod() override { thresholds.resize(levels() - 1); }
    void setLodEnabled(bool enabled) override { lodEnabled = enabled; }
    void setLodThreshold(std::size_t index, float squaredDistance) override {
        thresholds[index] = squaredDistance;
    }
    void finishLod() override {
        Json levels = Json::array();
        for (const float threshold : thresholds)
            levels.push_back(number(threshold));
        inspection.content["lod"] = {{"enabled", lodEnabled}, {"squaredDistances", levels}};
    }

    void report(const Problem &problem) override { refuse(problem.entry, problem.reason); }

    // What can be said of the whole configuration only.
    void finish(const std::vector<TerrainSection> &sections) {
        for (const TerrainSection &section : sections) {
            warnOfUnknown(section);
            if (section.name == "LOD")
                checkLod(section);
        }
        if (levels() == 0)
            inspection.warn({}, "no GEOMETRY, so that there is nothing to draw");
    }

  private:
    bool refuse(const TerrainEntry &entry, const std::string &reason) {
        inspection.error(placeOf(entry), reason);
        return false;
    }

    // Why the engine would not load a texture; empty where it would, without confinement.
    std::string problemOf(const TerrainEntry &entry) {
        const std::string &texture = entry.text;
        inspection.requireConfined(placeOf(entry), "the texture", texture);
        const auto path = findCompanion(inspection.folders, texture);
        if (path.empty())
            return "the texture " + quoted(texture) + " is missing";
        FileBytes file;
        TgaImage image;
        FileProblem problem;
        if (file.read(path.c_str()) != FileBytes::Result::ok)
            return "the texture " + quoted(texture) + " cannot be read";
        if (inspectTga(file.data(), file.size(), image, &problem) != TgaResult::ok)
            return "the texture " + quoted(texture) + ", at its byte " +
                   std::to_string(problem.offset) + ": " + problem.reason;
        return {};
    }

    void checkRepeat(int repeat, const TerrainEntry &where) {
        if (repeat < 1)
            inspection.warn(placeOf(where), "a REPEAT that is not above 0");
    }

    void warnOfUnknown(const TerrainSection &section) {
        const auto known = knownElements.find(section.name);
        if (known == knownElements.end()) {
            inspection.warn(placeOf(section), "nothing reads the element " + quoted(section.name));
            return;
        }
        for (const TerrainEntry &entry : section.entries) {
            if (!known->second.count(entry.name))
                inspection.warn(placeOf(entry), "nothing reads the element " + quoted(entry.name) +
                                                    " in " + section.name);
            else if (entry.name == "ENABLE" && entry.text != "YES" && entry.text != "NO")
                inspection.warn(placeOf(entry), quoted(entry.text) + " counts as NO");
        }
    }

    // Neighbours are at most their centres' distance nearer to the eye, or farther from it.
    void checkLod(const TerrainSection &section) {
        constexpr double rounding = 1e-4; // of values as text and as floats
        const double required = geometry.centerDistance() * (1 - rounding);
        const std::size_t used = std::min(thresholds.size(), comparedThresholds);
        for (std::size_t i = 0; lodEnabled && i + 1 < used; ++i) {
            const double distance = std::sqrt(std::max(0.0, double{thresholds[i]})),
                         next = std::sqrt(std::max(0.0, double{thresholds[i + 1]}));
            if (next - distance >= required)
                continue;
            inspection.warn(
                placeOf(section),
                "neighbouring chunks may differ by two levels, with gaps between them: the square "
                "roots of LEVEL " +
                    std::to_string(i + 1) + " and " + std::to_string(i + 2) + " differ by " +
                    text(next - distance) + ", and the centres of neighbours by up to " +
                    text(geometry.centerDistance()));
            return;
        }
    }

    static std::string text(double value) {
        char digits[32];
        std::snprintf(digits, sizeof digits, "%.6g", value);
        return digits;
    }

    Inspection &inspection;
    GeometryFile geometry;
    float waterSpeed = 0.005f;
    bool lodEnabled = false;
    std::vector<float> thresholds;
};

} // namespace

void inspectTerrain(Inspection &inspection) {
    std::vector<TerrainSection> sections;
    XmlProblem problem;
    if (!readTerrainConfig(inspection.file.c_str(), sections, &problem)) {
        inspection.error(problem.line ? atLine(problem.line, problem.column) : Place{},
                         problem.text);
        return;
    }
    TerrainCheck terrain(inspection);
    if (applyTerrainConfig(sections, terrain))
        terrain.finish(sections);
}

} // namespace ravolt::tool::inspect
