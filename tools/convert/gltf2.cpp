// The file's text is not written anew: single values of it are replaced, and items are added to its
// lists.

#include "tools/convert/gltf2.h"

#include "tools/convert/gltfText.h"
#include "tools/convert/json.h"

#include <algorithm>
#include <set>

namespace ravolt::tool {

namespace {

constexpr std::size_t none = static_cast<std::size_t>(-1);

struct Span {
    std::size_t begin = none, end = none;
    bool isThere() const { return begin != none; }
};

struct Node {
    std::string name; // empty: assimp names it by its number
    Span nameText, meshNumber;
    std::size_t mesh = none, skin = none;
};

struct View {
    std::size_t buffer = none, offset = 0, length = 0, stride = 0;
};

struct Accessor {
    std::size_t view = none, offset = 0, componentType = 0, count = 0;
    std::string type;
    bool sparse = false;
};

struct Sampler {
    std::size_t input = none, output = none;
    std::string interpolation;
};

struct Channel {
    std::size_t sampler = none, node = none;
    std::string path;
};

struct Animation {
    std::vector<Sampler> samplers;
    std::vector<Channel> channels;
};

// The parts of the file that matter here.
class Contents {
  public:
    explicit Contents(const std::string &source) : text(source), json(text) {
        json.eachMember([this](const std::string &section) {
            if (section == "scenes")
                return json.eachItem([this](std::size_t) { readScene(); });
            if (section == "nodes")
                return items(nodes, nodesEnd, [this](Node &node) { readNode(node); });
            if (section == "meshes")
                return items(meshes, meshesEnd, [this](Span &mesh) {
                    mesh.begin = json.next();
                    json.skip();
                    mesh.end = json.last();
                });
            if (section == "accessors")
                return items(accessors, accessorsEnd, [this](Accessor &a) { readAccessor(a); });
            if (section == "bufferViews")
                return items(views, viewsEnd, [this](View &view) { readView(view); });
            if (section == "animations")
                return items(animations, animationsEnd, [this](Animation &a) { readAnimation(a); });
            json.skip();
        });
    }

    const std::string &text;
    std::vector<Node> nodes;
    std::vector<Span> meshes;
    std::vector<Accessor> accessors;
    std::vector<View> views;
    std::vector<Animation> animations;
    // Behind the last item of each list.
    std::size_t nodesEnd = none, meshesEnd = none, accessorsEnd = none, viewsEnd = none,
                animationsEnd = none;
    bool severalRoots = false;

  private:
    template <class Item, class Read>
    void items(std::vector<Item> &list, std::size_t &end, const Read &read) {
        json.eachItem([&](std::size_t) {
            read(list.emplace_back());
            end = json.last();
        });
    }

    void readScene() {
        json.eachMember([this](const std::string &key) {
            if (key != "nodes")
                return json.skip();
            std::size_t roots = 0;
            json.eachItem([&](std::size_t) {
                json.skip();
                ++roots;
            });
            severalRoots = severalRoots || roots != 1;
        });
    }

    void readNode(Node &node) {
        json.eachMember([&](const std::string &key) {
            const std::size_t begin = json.next();
            if (key == "name" && json.isText()) {
                node.name = unescaped(json.text());
                node.nameText = {begin, json.last()};
            } else if (key == "mesh") {
                json.number(node.mesh);
                node.meshNumber = {begin, json.last()};
            } else if (key == "skin") {
                json.number(node.skin);
            } else {
                json.skip();
            }
        });
    }

    void readAccessor(Accessor &accessor) {
        json.eachMember([&](const std::string &key) {
            if (key == "bufferView")
                json.number(accessor.view);
            else if (key == "byteOffset")
                json.number(accessor.offset);
            else if (key == "componentType")
                json.number(accessor.componentType);
            else if (key == "count")
                json.number(accessor.count);
            else if (key == "type" && json.isText())
                accessor.type = json.text();
            else {
                accessor.sparse = accessor.sparse || key == "sparse";
                json.skip();
            }
        });
    }

    void readView(View &view) {
        json.eachMember([&](const std::string &key) {
            if (key == "buffer")
                json.number(view.buffer);
            else if (key == "byteOffset")
                json.number(view.offset);
            else if (key == "byteLength")
                json.number(view.length);
            else if (key == "byteStride")
                json.number(view.stride);
            else
                json.skip();
        });
    }

    void readAnimation(Animation &animation) {
        json.eachMember([&](const std::string &key) {
            if (key == "samplers")
                json.eachItem([&](std::size_t) { readSampler(animation.samplers.emplace_back()); });
            else if (key == "channels")
                json.eachItem([&](std::size_t) { readChannel(animation.channels.emplace_back()); });
            else
                json.skip();
        });
    }

    void readSampler(Sampler &sampler) {
        json.eachMember([&](const std::string &key) {
            if (key == "input")
                json.number(sampler.input);
            else if (key == "output")
                json.number(sampler.output);
            else if (key == "interpolation" && json.isText())
                sampler.interpolation = json.text();
            else
                json.skip();
        });
    }

    void readChannel(Channel &channel) {
        json.eachMember([&](const std::string &key) {
            if (key == "sampler")
                json.number(channel.sampler);
            else if (key == "target")
                json.eachMember([&](const std::string &part) {
                    if (part == "node")
                        json.number(channel.node);
                    else if (part == "path" && json.isText())
                        channel.path = json.text();
                    else
                        json.skip();
                });
            else
                json.skip();
        });
    }

    Json json;
};

// Replaced and added pieces of a text.
class Edits {
  public:
    void replace(const Span &span, const std::string &by) {
        pieces.emplace(span.begin, Piece{span.end, by});
    }
    void insert(std::size_t place, const std::string &what) {
        pieces.emplace(place, Piece{place, what});
    }
    bool empty() const { return pieces.empty(); }

    std::string applied(const std::string &text) const {
        std::string result;
        std::size_t at = 0;
        for (const auto &[begin, piece] : pieces) {
            result.append(text, at, begin - at);
            result += piece.text;
            at = piece.end;
        }
        return result + text.substr(at);
    }

  private:
    struct Piece {
        std::size_t end;
        std::string text;
    };
    std::multimap<std::size_t, Piece> pieces; // equal places in the order that they came in
};

// Gives nodes names of their own, and returns how many got another one.
std::size_t nameApart(Contents &file, Edits &edits) {
    std::set<std::string> names;
    if (file.severalRoots)
        names.insert("ROOT"); // of the node that assimp puts above them
    for (std::size_t i = 0; i < file.nodes.size(); ++i)
        if (file.nodes[i].name.empty())
            names.insert(file.nodes[i].name = "nodes[" + std::to_string(i) + "]");
    std::size_t renamed = 0;
    std::map<std::string, int> numbers;
    for (Node &node : file.nodes) {
        if (!node.nameText.isThere() || node.nameText.end - node.nameText.begin <= 2 ||
            names.insert(node.name).second)
            continue;
        int &number = numbers.try_emplace(node.name, 1).first->second;
        std::string ending;
        do
            ending = std::string("_").append(std::to_string(++number));
        while (!names.insert(node.name + ending).second);
        node.name += ending;
        edits.insert(node.nameText.end - 1, ending);
        ++renamed;
    }
    return renamed;
}

// A mesh that is used with several skins, or with and without one, gets a copy for each of them.
void copySharedMeshes(const Contents &file, Edits &edits) {
    std::map<std::size_t, std::size_t> first; // skin of each mesh
    std::map<std::pair<std::size_t, std::size_t>, std::size_t> copies;
    for (const Node &node : file.nodes) {
        if (node.mesh >= file.meshes.size() ||
            first.try_emplace(node.mesh, node.skin).first->second == node.skin)
            continue;
        const std::size_t next = file.meshes.size() + copies.size();
        const auto [copy, isNew] = copies.try_emplace({node.mesh, node.skin}, next);
        edits.replace(node.meshNumber, std::to_string(copy->second));
        const Span &mesh = file.meshes[node.mesh];
        if (isNew)
            edits.insert(file.meshesEnd,
                         std::string(",").append(file.text, mesh.begin, mesh.end - mesh.begin));
    }
}

Between kindOf(const Sampler &sampler) {
    if (sampler.interpolation == "STEP")
        return Between::step;
    return sampler.interpolation == "CUBICSPLINE" ? Between::cubic : Between::linear;
}

Interpolations interpolationsOf(const Contents &file) {
    Interpolations result;
    for (std::size_t i = 0; i < file.animations.size(); ++i)
        for (const Channel &channel : file.animations[i].channels) {
            const Animation &animation = file.animations[i];
            if (channel.node >= file.nodes.size() || channel.sampler >= animation.samplers.size())
                continue;
            const Between kind = kindOf(animation.samplers[channel.sampler]);
            if (kind == Between::linear)
                continue;
            Interpolation &way = result[{i, file.nodes[channel.node].name}];
            if (channel.path == "translation")
                way.positions = kind;
            else if (channel.path == "rotation")
                way.rotations = kind;
            else if (channel.path == "scale")
                way.scalings = kind;
        }
    return result;
}

// Adds to the file, for each animation with cubic samplers, one that has the tangents into its keys
// as values, and one that has those out of them.
class TangentWriter {
  public:
    TangentWriter(const Contents &all, Edits &target) : file(all), edits(target) {}

    // Which animations have them.
    std::vector<std::size_t> write() {
        std::vector<std::size_t> curved;
        for (std::size_t i = 0; i < file.animations.size(); ++i)
            if (add(file.animations[i]))
                curved.push_back(i);
        return curved;
    }

  private:
    bool add(const Animation &animation) {
        std::vector<const Channel *> cubic;
        for (const Channel &channel : animation.channels)
            if (channel.path != "weights" && channel.sampler < animation.samplers.size() &&
                isReadable(animation.samplers[channel.sampler]))
                cubic.push_back(&channel);
        for (const std::size_t which : {0, 2})
            if (!cubic.empty())
                addAnimation(animation, cubic, which);
        return !cubic.empty();
    }

    // Each key has three values: a tangent, the key's own, and a tangent.
    bool isReadable(const Sampler &sampler) const {
        if (kindOf(sampler) != Between::cubic || sampler.output >= file.accessors.size() ||
            sampler.input >= file.accessors.size())
            return false;
        const Accessor &values = file.accessors[sampler.output];
        constexpr std::size_t floats = 5126;
        return values.view < file.views.size() && !values.sparse &&
               values.componentType == floats && file.views[values.view].stride == 0 &&
               values.count == 3 * file.accessors[sampler.input].count;
    }

    void addAnimation(const Animation &animation, const std::vector<const Channel *> &cubic,
                      std::size_t which) {
        std::string samplers, channels;
        for (const Channel *channel : cubic) {
            const std::string comma = samplers.empty() ? "" : ",";
            const Sampler &sampler = animation.samplers[channel->sampler];
            channels += comma + "{\"sampler\":" + std::to_string(samplersMade(samplers)) +
                        ",\"target\":{\"node\":" + std::to_string(channel->node) + ",\"path\":\"" +
                        channel->path + "\"}}";
            samplers += comma + "{\"input\":" + std::to_string(sampler.input) +
                        ",\"output\":" + std::to_string(addValues(sampler, which)) + "}";
        }
        edits.insert(file.animationsEnd,
                     ",{\"samplers\":[" + samplers + "],\"channels\":[" + channels + "]}");
    }

    static std::size_t samplersMade(const std::string &samplers) {
        return static_cast<std::size_t>(std::count(samplers.begin(), samplers.end(), '{'));
    }

    // An accessor of every third value from that one on.
    std::size_t addValues(const Sampler &sampler, std::size_t which) {
        const Accessor &values = file.accessors[sampler.output];
        const View &view = file.views[values.view];
        const std::size_t size = sizeof(float) * (values.type == "VEC4" ? 4 : 3);
        edits.insert(file.viewsEnd, ",{\"buffer\":" + std::to_string(view.buffer) +
                                        ",\"byteOffset\":" + std::to_string(view.offset) +
                                        ",\"byteLength\":" + std::to_string(view.length) +
                                        ",\"byteStride\":" + std::to_string(3 * size) + "}");
        edits.insert(file.accessorsEnd,
                     ",{\"bufferView\":" + std::to_string(file.views.size() + made) +
                         ",\"byteOffset\":" + std::to_string(values.offset + which * size) +
                         ",\"componentType\":5126,\"count\":" + std::to_string(values.count / 3) +
                         ",\"type\":\"" + values.type + "\"}");
        return file.accessors.size() + made++;
    }

    const Contents &file;
    Edits &edits;
    std::size_t made = 0;
};

const aiNodeAnim *channelOf(const aiAnimation &animation, const std::string &node) {
    for (unsigned int i = 0; i < animation.mNumChannels; ++i)
        if (node == animation.mChannels[i]->mNodeName.C_Str())
            return animation.mChannels[i];
    return nullptr;
}

} // namespace

Gltf2File::Gltf2File(const std::filesystem::path &path, Report &report) {
    const GltfText file(path);
    if (file.isTooLarge()) {
        report.warn("the file has more than " + std::to_string(GltfText::largestFile >> 20) +
                    " MB: equal names of nodes, steps and cubic curves of clips are lost");
        return;
    }
    Contents contents(file.json());
    Edits edits;
    renamed = nameApart(contents, edits);
    copySharedMeshes(contents, edits);
    curved = TangentWriter(contents, edits).write();
    interpolations = interpolationsOf(contents);
    animations = contents.animations.size();
    if (!edits.empty())
        bytes = file.with(edits.applied(file.json()));
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
