// Random scenes, clips and textures, written by the writers of the content tool.

#include "fuzz/support/randomFiles.h"

#include "tools/writers/rvaWriter.h"
#include "tools/writers/rveWriter.h"
#include "tools/writers/tgaWriter.h"

#include <random>
#include <string>

namespace ravolt::fuzz {
namespace {

class Random {
  public:
    explicit Random(unsigned int seed) : engine(seed) {}

    unsigned int below(unsigned int limit) { return static_cast<unsigned int>(engine() % limit); }
    bool oneIn(unsigned int number) { return below(number) == 0; }
    float real() { return static_cast<float>(below(41)) / 4.0f - 5.0f; }
    std::array<float, 3> vector() { return {real(), real(), real()}; }

    // Few names, so that they are found, and equal ones exist.
    std::string name() {
        static constexpr const char *names[] = {"[root]", "a", "b", "Bone", "HumanoidRoot", ""};
        return names[below(std::size(names))];
    }

  private:
    std::minstd_rand engine;
};

RveMaterial makeMaterial(Random &random) {
    RveMaterial material;
    material.name = random.name();
    if (random.oneIn(2))
        material.texture = random.oneIn(2) ? "t.tga" : "t_d.tga";
    if (random.oneIn(4))
        material.shader = "s";
    material.transparency = random.oneIn(3) ? 0.5f : 1.0f;
    return material;
}

void addSkin(Random &random, RveMesh &mesh) {
    RveSkin &skin = mesh.skin;
    skin.weightsPerVertex = 1 + random.below(5);
    for (unsigned int bone = 0; bone <= random.below(4); ++bone)
        skin.bones.push_back(random.name());
    const std::size_t weights = skin.weightsPerVertex * mesh.vertices.size();
    for (std::size_t weight = 0; weight < weights; ++weight) {
        skin.boneIndices.push_back(
            static_cast<std::uint8_t>(random.below(static_cast<unsigned int>(skin.bones.size()))));
        skin.boneWeights.push_back(random.real());
    }
}

RveMesh makeMesh(Random &random) {
    RveMesh mesh;
    mesh.material = random.name();
    mesh.radius = random.real();
    mesh.minimum = random.vector();
    mesh.maximum = random.vector();
    mesh.hidden = random.oneIn(8);
    const unsigned int vertices = random.below(6);
    for (unsigned int vertex = 0; vertex < vertices; ++vertex) {
        mesh.vertices.push_back(random.vector());
        mesh.normals.push_back(random.vector());
    }
    if (random.oneIn(2))
        mesh.uvs.resize(vertices, {0.5f, 0.25f});
    const auto index = [&] { return static_cast<std::uint16_t>(random.below(vertices)); };
    for (unsigned int face = vertices ? random.below(5) : 0; face > 0; --face)
        mesh.faces.push_back({index(), index(), index()});
    if (random.oneIn(3))
        addSkin(random, mesh);
    return mesh;
}

RveNode makeNode(Random &random, unsigned int depth) {
    RveNode node;
    node.kind = static_cast<RveKind>(random.below(3));
    node.name = random.name();
    node.position = random.vector();
    node.light.type = static_cast<RveLightType>(random.below(3));
    node.light.direction = random.vector();
    if (node.kind == RveKind::mesh)
        node.mesh = makeMesh(random);
    for (unsigned int child = depth ? random.below(4) : 0; child > 0; --child)
        node.children.push_back(makeNode(random, depth - 1));
    return node;
}

} // namespace

std::vector<std::uint8_t> randomScene(unsigned int seed) {
    Random random(seed + 1);
    RveScene scene;
    for (unsigned int material = random.below(3); material > 0; --material)
        scene.materials.push_back(makeMaterial(random));
    scene.root = makeNode(random, 3);
    return encodeRve(scene, random.oneIn(3) ? RveVersion::v15a : RveVersion::v16a).bytes;
}

std::vector<std::uint8_t> randomClip(unsigned int seed) {
    Random random(seed + 1);
    RvaClip clip;
    for (unsigned int bone = random.below(5); bone > 0; --bone)
        clip.bones.push_back(random.name());
    clip.frames.resize(random.below(6));
    for (std::vector<RvaEntry> &frame : clip.frames)
        for (std::size_t bone = 0; bone < clip.bones.size(); ++bone)
            frame.push_back({random.vector(), random.vector(), random.oneIn(2)});
    return encodeRva(clip).bytes;
}

std::vector<std::uint8_t> randomTexture(unsigned int seed) {
    Random random(seed + 1);
    TgaPicture picture;
    picture.width = 1 + random.below(16);
    picture.height = 1 + random.below(16);
    picture.channels = 3 + random.below(2);
    picture.topRowFirst = random.oneIn(2);
    std::vector<unsigned char> pixels(picture.width * picture.height * picture.channels);
    for (unsigned char &value : pixels)
        value = static_cast<unsigned char>(64 * random.below(3));
    picture.pixels = pixels.data();
    return encodeTga(picture, random.oneIn(2) ? TgaEncoding::runLength : TgaEncoding::uncompressed);
}

} // namespace ravolt::fuzz
