// Scenes: materials and the tree of nodes, with what they refer to.

#include "models/rveFile.h"
#include "models/rveFormat.h"
#include "tools/inspect/formats.h"
#include "tools/inspect/values.h"

#include <cmath>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace ravolt::tool::inspect {

namespace {

bool isNone(const std::string &name) { return name == rve::noName; }

const char *const lightTypes[] = {"omni", "directional", "spot"};

// The warnings about names are made at the end, when all names are known.
struct Reference {
    std::size_t offset;
    std::string name, mesh;
};

class SceneContent : public RveVisitor {
  public:
    SceneContent(Inspection &result, const FileBytes &bytes) : inspection(result), file(bytes) {
        content()["counts"] = {{"materials", 0}, {"nodes", 0},    {"lights", 0}, {"meshes", 0},
                               {"skins", 0},     {"vertices", 0}, {"faces", 0}};
        content()["materials"] = Json::array();
        content()["tree"] = Json::array();
    }

    void visit(const MaterialRecord &material, std::size_t offset) override {
        Json described = {{"name", utf8(material.name)}};
        if (!isNone(material.textureName))
            described["texture"] = utf8(material.textureName);
        if (!isNone(material.shaderName))
            described["shader"] = utf8(material.shaderName);
        described["ambient"] = vector(material.ambient);
        described["diffuse"] = vector(material.diffuse);
        described["specular"] = vector(material.specular);
        described["emission"] = vector(material.selfIllumination);
        described["transparency"] = number(material.transparency);
        described["shininess"] = number(material.shininess);
        content()["materials"].push_back(described);
        count("materials");
        checkMaterial(material, offset);
    }

    void visit(const PlainNodeRecord &node, std::size_t offset, std::size_t level) override {
        Json described = start("node", level, node.name);
        described["auxiliaryId"] = node.auxId;
        described["position"] = vector(node.position);
        described["origin"] = vector(node.origin);
        add(described, "nodes", offset, isFinite(node.position) && isFinite(node.origin));
    }

    void visit(const LightRecord &light, std::size_t offset, std::size_t level) override {
        const bool known = light.lightType < std::size(lightTypes);
        Json described = start("light", level, light.name);
        described["type"] = known ? lightTypes[light.lightType] : "unknown";
        described["position"] = vector(light.position);
        described["direction"] = vector(light.direction);
        described["cutOff"] = number(light.cutOff);
        described["color"] = vector(light.color);
        if (!known)
            inspection.warn(atOffset(offset + 1 + rve::reservedBytes),
                            "light " + quoted(light.name) + " is of type " +
                                std::to_string(light.lightType) +
                                ", and not 0 (omni), 1 (directional) or 2 (spot)");
        add(described, "lights", offset,
            isFinite(light.position) && isFinite(light.direction) && isFinite(light.color) &&
                std::isfinite(light.cutOff));
    }

    void visit(const MeshRecord &mesh, std::size_t offset, std::size_t level) override {
        Json described = start("mesh", level, mesh.name);
        described["position"] = vector(mesh.position);
        described["rotation"] = vector(mesh.rotation);
        described["origin"] = vector(mesh.origin);
        if (!isNone(mesh.materialName))
            described["material"] = utf8(mesh.materialName);
        described["hidden"] = mesh.hidden;
        described["radius"] = number(mesh.radius);
        described["minimum"] = vector(mesh.minimum);
        described["maximum"] = vector(mesh.maximum);
        described["vertices"] = mesh.numberOfVertices;
        described["textureCoordinates"] = mesh.numberOfUVs;
        described["faces"] = mesh.numberOfFaces;
        if (mesh.numberOfWeights)
            describeSkin(mesh, described);
        count("vertices", mesh.numberOfVertices);
        count("faces", mesh.numberOfFaces);
        add(described, "meshes", offset,
            isFinite(mesh.position) && isFinite(mesh.rotation) && isFinite(mesh.origin) &&
                std::isfinite(mesh.radius) && isFinite(mesh.minimum) && isFinite(mesh.maximum));
        checkMesh(mesh, offset);
    }

    // What refers to names that the file does not have.
    void finish() {
        for (const Reference &reference : materialReferences)
            if (!materials.count(reference.name))
                inspection.warn(atOffset(reference.offset),
                                "mesh " + quoted(reference.mesh) + " names the material " +
                                    quoted(reference.name) + ", which the file does not have");
        for (const Reference &reference : boneReferences)
            if (!nodes.count(reference.name))
                inspection.warn(atOffset(reference.offset),
                                "mesh " + quoted(reference.mesh) + " names the bone " +
                                    quoted(reference.name) + ", and no node has that name");
        for (const auto &[name, offset] : materials)
            if (!usedMaterials.count(name))
                inspection.warn(atOffset(offset),
                                "material " + quoted(name) + " is used by no mesh");
    }

  private:
    Json &content() { return inspection.content; }

    void count(const char *what, std::size_t number = 1) {
        Json &counter = content()["counts"][what];
        counter = counter.get<std::size_t>() + number;
    }

    Json start(const char *kind, std::size_t level, const char *name) {
        nodes.insert(name);
        return {{"level", level}, {"kind", kind}, {"name", utf8(name)}};
    }

    void add(const Json &described, const char *counter, std::size_t offset, bool finite) {
        content()["tree"].push_back(described);
        count(counter);
        if (!finite)
            inspection.warn(atOffset(offset), "a value of " + described["kind"].get<std::string>() +
                                                  " '" + described["name"].get<std::string>() +
                                                  "' is no number");
    }

    void describeSkin(const MeshRecord &mesh, Json &described) {
        count("skins");
        described["weightsPerVertex"] = mesh.numberOfWeights;
        described["bones"] = Json::array();
        for (unsigned int i = 0; i < mesh.numberOfBones; ++i)
            described["bones"].push_back(utf8(mesh.boneName[i]));
    }

    std::size_t offsetOf(const void *bytes) const {
        return static_cast<std::size_t>(static_cast<const unsigned char *>(bytes) - file.data());
    }

    // --- Materials

    void checkMaterial(const MaterialRecord &material, std::size_t offset) {
        if (!materials.emplace(material.name, offset).second)
            inspection.warn(atOffset(offset), "a second material " + quoted(material.name) +
                                                  ": the first one is used");
        if (!isNone(material.textureName))
            checkName(material.textureName, "texture", {material.textureName});
        if (!isNone(material.shaderName))
            checkName(material.shaderName, "program",
                      {std::string(material.shaderName) + "VS.glsl",
                       std::string(material.shaderName) + "PS.glsl"});
        if (!isFinite(material.ambient) || !isFinite(material.diffuse) ||
            !isFinite(material.specular) || !isFinite(material.selfIllumination) ||
            !std::isfinite(material.transparency) || !std::isfinite(material.shininess))
            inspection.warn(atOffset(offset),
                            "a value of material " + quoted(material.name) + " is no number");
    }

    void checkName(const char *name, const std::string &what,
                   const std::vector<std::string> &files) {
        if (!reportedNames.insert(name).second)
            return;
        const Place place = atOffset(offsetOf(name));
        if (!inspection.requireConfined(place, what, name))
            return;
        for (const std::string &companion : files)
            inspection.requireCompanion(place, what, companion);
    }

    // --- Meshes

    void checkMesh(const MeshRecord &mesh, std::size_t offset) {
        const bool named = *mesh.materialName && !isNone(mesh.materialName);
        if (named)
            materialReferences.push_back({offset, mesh.materialName, mesh.name});
        else if (mesh.numberOfFaces)
            inspection.warn(atOffset(offset), "mesh " + quoted(mesh.name) + " has no material");
        usedMaterials.insert(mesh.materialName);
        for (unsigned int i = 0; i < mesh.numberOfBones; ++i)
            boneReferences.push_back({offsetOf(mesh.boneName[i]), mesh.boneName[i], mesh.name});
        if (mesh.numberOfUVs && mesh.numberOfUVs != mesh.numberOfVertices)
            inspection.warn(atOffset(offset),
                            "mesh " + quoted(mesh.name) + " has " +
                                std::to_string(mesh.numberOfVertices) + " vertices and " +
                                std::to_string(mesh.numberOfUVs) + " texture coordinates");
        checkFloats(mesh, mesh.vertices, mesh.numberOfVertices * std::size_t{3}, "a position");
        checkFloats(mesh, mesh.vertexNormals, mesh.numberOfVertices * std::size_t{3}, "a normal");
        checkFloats(mesh, mesh.uvs, mesh.numberOfUVs * std::size_t{2}, "a texture coordinate");
        checkWeights(mesh);
    }

    void checkFloats(const MeshRecord &mesh, const unsigned char *bytes, std::size_t number,
                     const char *what) {
        ByteReader reader(bytes, bytes ? number * sizeof(float) : 0);
        while (reader.left() > 0) {
            const std::size_t at = reader.position();
            if (std::isfinite(reader.read<float>()))
                continue;
            inspection.warn(atOffset(offsetOf(bytes + at)),
                            std::string(what) + " of mesh " + quoted(mesh.name) + " is no number");
            return;
        }
    }

    void checkWeights(const MeshRecord &mesh) {
        constexpr float tolerance = 0.01f;
        ByteReader reader(mesh.boneWeights, mesh.boneWeights
                                                ? std::size_t{mesh.numberOfVertices} *
                                                      mesh.numberOfWeights * sizeof(float)
                                                : 0);
        while (reader.left() > 0) {
            const std::size_t at = reader.position();
            float sum = 0;
            for (unsigned int i = 0; i < mesh.numberOfWeights; ++i)
                sum += reader.read<float>();
            if (std::abs(sum - 1) <= tolerance)
                continue;
            inspection.warn(atOffset(offsetOf(mesh.boneWeights + at)),
                            "the weights of a vertex of mesh " + quoted(mesh.name) +
                                " do not add up to 1");
            return;
        }
    }

    Inspection &inspection;
    const FileBytes &file;
    std::map<std::string, std::size_t> materials; // and their offsets
    std::set<std::string> usedMaterials, nodes, reportedNames;
    std::vector<Reference> materialReferences, boneReferences;
};

void warnOfHeader(bool obsolete, Inspection &inspection) {
    inspection.content["version"] = obsolete ? "1.5a" : "1.6a";
    if (obsolete)
        inspection.warn(atOffset(0), "the obsolete version 1.5a");
    const std::string name = inspection.file.filename().string();
    if (name.find(".xml") != name.npos || name.find(".XML") != name.npos)
        inspection.warn({}, "with .xml in its name RAVOLT::load reads it as an interface");
}

} // namespace

void inspectScene(Inspection &inspection) {
    FileBytes file;
    readBytes(inspection, file);
    bool obsolete = false;
    if (!readRveHeader(file.data(), file.size(), obsolete)) {
        inspection.error(atOffset(0), "it starts neither with \"" + std::string(rve::magic) +
                                          "\" nor with \"" + std::string(rve::obsoleteMagic) +
                                          "\"");
        return;
    }
    warnOfHeader(obsolete, inspection);
    SceneContent content(inspection, file);
    ByteReader reader(file.data(), file.size(), rve::headerBytes);
    if (checkRve(reader, obsolete, &content) != RveVerdict::good) {
        inspection.error(atOffset(reader.problem().offset), reader.problem().reason);
        return;
    }
    content.finish();
    if (inspection.content["materials"].empty())
        inspection.warn(atOffset(rve::headerBytes), "it has no material");
    if (reader.position() < file.size())
        inspection.warn(atOffset(reader.position()),
                        std::to_string(file.size() - reader.position()) +
                            " bytes after the tree, which are not read");
}

} // namespace ravolt::tool::inspect
