// The reader never reads beyond the file, independent of its counts: it stops where the file ends
// early, and then there are no skins.

#include "tools/stage/skins.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <fstream>
#include <iterator>

namespace ravolt::tool {

namespace {

constexpr std::size_t maxVertices = 20000; // that are followed

class Reader {
  public:
    explicit Reader(std::string file) : bytes(std::move(file)) {}

    bool isGood() const { return good; }

    bool skip(std::size_t count) {
        good = good && count <= bytes.size() - at;
        if (good)
            at += count;
        return good;
    }

    template <class T> T number() {
        T value{};
        const std::size_t from = at;
        if (skip(sizeof value))
            std::memcpy(&value, bytes.data() + from, sizeof value);
        return value;
    }

    template <class T> std::vector<T> numbers(std::size_t count) {
        const std::size_t from = at;
        if (!skip(count * sizeof(T)))
            return {};
        std::vector<T> values(count);
        if (count > 0)
            std::memcpy(values.data(), bytes.data() + from, count * sizeof(T));
        return values;
    }

    std::string text() {
        const std::size_t end = good ? bytes.find('\0', at) : std::string::npos;
        good = good && end != std::string::npos;
        if (!good)
            return "";
        const std::string result = bytes.substr(at, end - at);
        at = end + 1;
        return result;
    }

  private:
    std::string bytes;
    std::size_t at = 0;
    bool good = true;
};

class SkinReader {
  public:
    explicit SkinReader(std::string file) : in(std::move(file)) {}

    std::vector<SceneSkin> read() {
        const std::vector<char> magic = in.numbers<char>(15);
        if (!in.isGood() || std::memcmp(magic.data(), "RVE file v1.", 12) != 0)
            return {};
        old = magic[12] == '5';
        for (int materials = in.number<std::uint16_t>(); materials > 0 && in.isGood(); --materials)
            readMaterial();
        // The records follow one another; how many are still to come is all there is to
        // their tree.
        for (std::size_t pending = 1; pending > 0 && in.isGood(); ++nodes)
            pending += readNode() - 1;
        return in.isGood() ? std::move(skins) : std::vector<SceneSkin>();
    }

  private:
    static constexpr std::size_t vec3 = 12;

    void readMaterial() {
        for (int i = 0; i < 3; ++i)
            in.text();
        in.skip(4 * 16 + 2 * 4);
    }

    // Returns how many children follow.
    std::size_t readNode() {
        const int kind = in.number<std::uint8_t>();
        if (kind > 2)
            return in.skip(static_cast<std::size_t>(-1)), 1;
        in.skip(4);
        if (kind == 1)
            in.skip(1);
        in.text();
        if (kind == 2)
            return readMesh();
        in.skip(kind == 0 ? 2 * vec3 : 3 * vec3 + 4);
        return in.number<std::uint16_t>();
    }

    std::size_t readMesh() {
        in.skip(3 * vec3);
        in.text();
        in.skip(4 + 2 * vec3 + 1);
        const std::size_t vertices = in.number<std::uint16_t>(), uvs = in.number<std::uint16_t>(),
                          faces = in.number<std::uint16_t>(), children = in.number<std::uint16_t>();
        SceneSkin skin;
        skin.node = nodes;
        skin.weightsPerVertex = in.number<std::uint16_t>();
        for (std::size_t i = 0; i < vertices && in.isGood(); ++i) {
            const auto place = in.numbers<float>(3);
            if (in.isGood() && skin.weightsPerVertex)
                skin.vertices.push_back({place[0], place[1], place[2]});
        }
        in.skip(vertices * (old ? 2 * vec3 : vec3) + uvs * 8 + faces * (6 + vec3 + (old ? 16 : 0)));
        if (skin.weightsPerVertex)
            readWeights(skin);
        return children;
    }

    void readWeights(SceneSkin &skin) {
        const std::size_t number = skin.vertices.size() * skin.weightsPerVertex;
        skin.boneIndices = in.numbers<std::uint8_t>(number);
        skin.boneWeights = in.numbers<float>(number);
        for (int bones = in.number<std::uint16_t>(); bones > 0 && in.isGood(); --bones)
            skin.bones.push_back(in.text());
        skins.push_back(std::move(skin));
    }

    Reader in;
    bool old = false;
    std::size_t nodes = 0;
    std::vector<SceneSkin> skins;
};

// Every `step`th vertex.
SceneSkin thinned(const SceneSkin &whole, std::size_t step) {
    SceneSkin result{whole.node, whole.weightsPerVertex, {}, {}, {}, whole.bones};
    for (std::size_t i = 0; i < whole.vertices.size(); i += step) {
        result.vertices.push_back(whole.vertices[i]);
        for (std::size_t k = i * whole.weightsPerVertex; k < (i + 1) * whole.weightsPerVertex;
             ++k) {
            result.boneIndices.push_back(whole.boneIndices[k]);
            result.boneWeights.push_back(whole.boneWeights[k]);
        }
    }
    return result;
}

} // namespace

std::vector<SceneSkin> readSkins(const std::filesystem::path &scene) {
    std::ifstream stream(scene, std::ios::binary);
    std::vector<SceneSkin> skins = SkinReader(std::string(std::istreambuf_iterator<char>(stream),
                                                          std::istreambuf_iterator<char>()))
                                       .read();
    std::size_t vertices = 0;
    for (const SceneSkin &skin : skins)
        vertices += skin.vertices.size();
    const std::size_t step = vertices / maxVertices + 1;
    for (SceneSkin &skin : skins)
        if (step > 1)
            skin = thinned(skin, step);
    return skins;
}

} // namespace ravolt::tool
