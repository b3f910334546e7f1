// A file whose text is no UTF-8 has no replacement: assimp reads it, the JSON parser here does not.

#include "tools/convert/gltf2.h"

#include "tools/convert/assimpFaults.h"
#include "tools/convert/gltfText.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <set>

namespace ravolt::tool {

namespace {

using Json = nlohmann::ordered_json; // attributes and the like are written in the file's order

constexpr std::size_t none = static_cast<std::size_t>(-1);

// An empty list where the object has none of that name.
const Json &listOf(const Json &object, const char *key) {
    static const Json empty = Json::array();
    const auto found = object.find(key);
    return found != object.end() && found->is_array() ? *found : empty;
}

// The item of that number; null where the list is shorter.
const Json &itemOf(const Json &list, std::size_t index) {
    static const Json null;
    return index < list.size() ? list[index] : null;
}

const Json &objectOf(const Json &object, const char *key) {
    static const Json null;
    const auto found = object.find(key);
    return found != object.end() ? *found : null;
}

std::size_t numberOf(const Json &object, const char *key, std::size_t otherwise = none) {
    const auto found = object.find(key);
    return found != object.end() && found->is_number_unsigned() ? found->get<std::size_t>()
                                                                : otherwise;
}

std::string textOf(const Json &object, const char *key) {
    const auto found = object.find(key);
    return found != object.end() && found->is_string() ? found->get<std::string>() : "";
}

bool hasSeveralRoots(const Json &document) {
    const Json &scenes = listOf(document, "scenes");
    return std::any_of(scenes.begin(), scenes.end(), [](const Json &scene) {
        return scene.contains("nodes") && listOf(scene, "nodes").size() != 1;
    });
}

// The names that assimp gives the nodes of the document.
std::vector<std::string> nodeNamesOf(const Json &document) {
    std::vector<std::string> names;
    for (const Json &node : listOf(document, "nodes")) {
        names.push_back(textOf(node, "name"));
        if (names.back().empty()) // assimp names it by its number
            names.back() = "nodes[" + std::to_string(names.size() - 1) + "]";
    }
    return names;
}

// Renames nodes in the document and in `names` until all names differ. Returns how many.
std::size_t makeNamesUnique(Json &document, std::vector<std::string> &names) {
    const Json &nodes = listOf(document, "nodes");
    std::size_t renamed = 0;
    std::set<std::string> taken;
    if (hasSeveralRoots(document))
        taken.insert("ROOT"); // of the parent that assimp creates for them
    for (std::size_t i = 0; i < nodes.size(); ++i)
        if (textOf(nodes[i], "name").empty())
            taken.insert(names[i]);
    std::map<std::string, int> numbers;
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        std::string &name = names[i];
        if (textOf(nodes[i], "name").empty() || taken.insert(name).second)
            continue;
        int &number = numbers.try_emplace(name, 1).first->second;
        std::string unique;
        do
            unique = name + "_" + std::to_string(++number);
        while (!taken.insert(unique).second);
        document["nodes"][i]["name"] = name = unique;
        ++renamed;
    }
    return renamed;
}

// A mesh that is used with several skins, or with and without one, gets a copy for each of them.
// Returns whether there was one.
bool copySharedMeshes(Json &document) {
    const std::size_t meshes = listOf(document, "meshes").size();
    std::map<std::size_t, std::size_t> first; // skin of each mesh
    std::map<std::pair<std::size_t, std::size_t>, std::size_t> copies;
    for (std::size_t i = 0; i < listOf(document, "nodes").size(); ++i) {
        Json &node = document["nodes"][i];
        const std::size_t mesh = numberOf(node, "mesh"), skin = numberOf(node, "skin");
        if (mesh >= meshes || first.try_emplace(mesh, skin).first->second == skin)
            continue;
        const auto [copy, isNew] = copies.try_emplace({mesh, skin}, meshes + copies.size());
        node["mesh"] = copy->second;
        if (isNew) {
            Json same = document["meshes"][mesh];
            document["meshes"].push_back(std::move(same));
        }
    }
    return !copies.empty();
}

InterpolationMode kindOf(const Json &sampler) {
    const std::string interpolation = textOf(sampler, "interpolation");
    if (interpolation == "STEP")
        return InterpolationMode::step;
    return interpolation == "CUBICSPLINE" ? InterpolationMode::cubic : InterpolationMode::linear;
}

Interpolations interpolationsOf(const Json &document, const std::vector<std::string> &names) {
    Interpolations result;
    const Json &animations = listOf(document, "animations");
    for (std::size_t i = 0; i < animations.size(); ++i)
        for (const Json &channel : listOf(animations[i], "channels")) {
            const Json &target = objectOf(channel, "target");
            const std::size_t node = numberOf(target, "node");
            const InterpolationMode kind =
                kindOf(itemOf(listOf(animations[i], "samplers"), numberOf(channel, "sampler")));
            if (node >= names.size() || kind == InterpolationMode::linear)
                continue;
            Interpolation &way = result[{i, names[node]}];
            const std::string path = textOf(target, "path");
            if (path == "translation")
                way.positions = kind;
            else if (path == "rotation")
                way.rotations = kind;
            else if (path == "scale")
                way.scalings = kind;
        }
    return result;
}

// Adds to the document, for each animation with cubic samplers, one that has the tangents into its
// keys as values, and one that has those out of them.
class TangentWriter {
  public:
    explicit TangentWriter(Json &target) : document(target) {}

    // Returns which animations have them.
    std::vector<std::size_t> write() {
        std::vector<std::size_t> curved;
        const std::size_t animations = listOf(document, "animations").size();
        for (std::size_t i = 0; i < animations; ++i)
            if (add(i))
                curved.push_back(i);
        return curved;
    }

  private:
    bool add(std::size_t index) {
        const Json animation = listOf(document, "animations")[index];
        std::vector<Json> cubic; // channels
        for (const Json &channel : listOf(animation, "channels"))
            if (textOf(objectOf(channel, "target"), "path") != "weights" &&
                isReadable(samplerOf(animation, channel)))
                cubic.push_back(channel);
        for (const std::size_t which : {0, 2})
            if (!cubic.empty())
                addAnimation(animation, cubic, which);
        return !cubic.empty();
    }

    static const Json &samplerOf(const Json &animation, const Json &channel) {
        return itemOf(listOf(animation, "samplers"), numberOf(channel, "sampler"));
    }

    // Each key has three values: a tangent, the key's own, and a tangent.
    bool isReadable(const Json &sampler) const {
        const Json &accessors = listOf(document, "accessors");
        const Json &values = itemOf(accessors, numberOf(sampler, "output"));
        const Json &times = itemOf(accessors, numberOf(sampler, "input"));
        const Json &view = itemOf(listOf(document, "bufferViews"), numberOf(values, "bufferView"));
        constexpr std::size_t floats = 5126;
        return kindOf(sampler) == InterpolationMode::cubic && !times.is_null() && !view.is_null() &&
               !values.contains("sparse") && numberOf(values, "componentType") == floats &&
               numberOf(view, "byteStride", 0) == 0 &&
               numberOf(values, "count", 0) == 3 * numberOf(times, "count", 0);
    }

    void addAnimation(const Json &animation, const std::vector<Json> &cubic, std::size_t which) {
        Json samplers = Json::array(), channels = Json::array();
        for (const Json &channel : cubic) {
            const Json &sampler = samplerOf(animation, channel);
            const Json &target = objectOf(channel, "target");
            channels.push_back(
                {{"sampler", samplers.size()},
                 {"target",
                  {{"node", numberOf(target, "node")}, {"path", textOf(target, "path")}}}});
            samplers.push_back({{"input", numberOf(sampler, "input")},
                                {"output", addValues(numberOf(sampler, "output"), which)}});
        }
        document["animations"].push_back({{"samplers", samplers}, {"channels", channels}});
    }

    // An accessor of every third value from that one on.
    std::size_t addValues(std::size_t output, std::size_t which) {
        Json &accessors = document["accessors"], &views = document["bufferViews"];
        const Json values = accessors[output];
        const std::string type = textOf(values, "type");
        const std::size_t size = sizeof(float) * (type == "VEC4" ? 4 : 3);
        Json view = views[numberOf(values, "bufferView")];
        view["byteStride"] = 3 * size;
        accessors.push_back({{"bufferView", views.size()},
                             {"byteOffset", numberOf(values, "byteOffset", 0) + which * size},
                             {"componentType", values["componentType"]},
                             {"count", numberOf(values, "count") / 3},
                             {"type", type}});
        views.push_back(std::move(view));
        return accessors.size() - 1;
    }

    Json &document;
};

const aiNodeAnim *channelOf(const aiAnimation &animation, const std::string &node) {
    for (unsigned int i = 0; i < animation.mNumChannels; ++i)
        if (node == animation.mChannels[i]->mNodeName.C_Str())
            return animation.mChannels[i];
    return nullptr;
}

} // namespace

Gltf2File::Gltf2File(const std::filesystem::path &path, Report &report) {
    constexpr const char *lost = ": equal names of nodes, steps and cubic curves of clips are lost";
    const GltfText file(path);
    if (file.isTooLarge()) {
        report.warn("the file has more than " + std::to_string(GltfText::maxFileSize >> 20) +
                    " MB" + lost);
        return;
    }
    if (file.json().empty())
        return;
    Json document = Json::parse(file.json(), nullptr, false);
    if (document.is_discarded())
        report.warn(std::string("the file's text is invalid JSON or UTF-8") + lost);
    if (!document.is_object())
        return;
    animations = listOf(document, "animations").size();
    std::vector<std::string> names = nodeNamesOf(document);
    if (hasFault(AssimpFault::gltf2EqualNames))
        renamed = makeNamesUnique(document, names);
    const bool copied = hasFault(AssimpFault::gltf2SharedMeshes) && copySharedMeshes(document);
    if (hasFault(AssimpFault::gltf2Interpolation)) {
        interpolations = interpolationsOf(document, names);
        curved = TangentWriter(document).write();
    }
    if (renamed || copied || !curved.empty())
        bytes = file.with(document.dump());
}

Interpolations Gltf2File::takeInterpolations(aiScene &scene) {
    Interpolations result = interpolations;
    if (scene.mNumAnimations != animations + 2 * curved.size())
        return result;
    for (std::size_t i = animations; i < scene.mNumAnimations; ++i)
        tangents.emplace_back(scene.mAnimations[i]);
    scene.mNumAnimations = static_cast<unsigned int>(animations);
    for (auto &[where, way] : result) {
        const auto &[animation, node] = where;
        const auto found = std::find(curved.begin(), curved.end(), animation);
        if (found == curved.end())
            continue;
        const std::size_t pair = 2 * static_cast<std::size_t>(found - curved.begin());
        way.incoming = channelOf(*tangents[pair], node);
        way.outgoing = channelOf(*tangents[pair + 1], node);
        way.ticksPerSecond = tangents[pair]->mTicksPerSecond;
    }
    return result;
}

} // namespace ravolt::tool
