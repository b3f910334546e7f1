#pragma once

// Shared by the tests of the content tool: small files made on the spot, and walks over scenes.

#include "tests/support/files.h"
#include "tools/common/algebra.h"
#include "tools/common/failure.h"
#include "tools/convert/convert.h"
#include "tools/convert/images.h"
#include "tools/writers/tgaWriter.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <stdexcept>
#include <string>
#include <vector>

namespace tool_test {

namespace fs = std::filesystem;
using namespace ravolt::tool;
using ravolt::RveKind;
using ravolt::RveNode;
using ravolt::test::readText;

using Alphas = std::vector<unsigned char>;
using Lines = std::vector<std::string>;

// ---- files -----------------------------------------------------------------------------------

inline void writeFile(const fs::path &file, const std::string &text) {
    if (!file.parent_path().empty())
        fs::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << text;
}

// A picture file of two by two pixels, rows from the top down: red green, blue white.
inline std::string fourColors() {
    using namespace std::string_literals;
    return "P6 2 2 255\n\xff\0\0\0\xff\0\0\0\xff\xff\xff\xff"s;
}

// A TGA file of R G B A pixels, as many each way.
inline void writeTexture(const std::string &file, unsigned int side, const Alphas &rgba) {
    ASSERT_TRUE(ravolt::writeTga(file, {side, side, 4, false, rgba.data()}));
}

// Four pixels of these alphas.
inline void writeAlphas(const std::string &file, const Alphas &alphas) {
    Alphas pixels;
    for (unsigned char alpha : alphas)
        pixels.insert(pixels.end(), {9, 9, 9, alpha});
    writeTexture(file, 2, pixels);
}

// From the lowest up.
inline Alphas alphasIn(const std::string &file) {
    std::string reason;
    const Image image = decodeFile(file, reason);
    Alphas alphas;
    for (std::size_t i = 3; i < image.pixels.size(); i += 4)
        alphas.push_back(image.pixels[i]);
    std::sort(alphas.begin(), alphas.end());
    return alphas;
}

// A square in the plane z = 0 that faces +z, from (0, 0) to (1, 1), covered by `material`.
inline std::string squareObj(const std::string &library, const std::string &material) {
    return "mtllib " + library + "\nv 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\n" +
           "vt 0 0\nvt 1 0\nvt 1 1\nvt 0 1\nvn 0 0 1\nusemtl " + material +
           "\nf 1/1/1 2/2/1 3/3/1 4/4/1\n";
}

// The square, covered by the material 'a' of these lines.
inline void writeSquare(const std::string &material = "Kd 1 1 1\n",
                        const fs::path &model = "m.obj") {
    const std::string library = model.stem().string() + ".mtl";
    writeFile(fs::path(model).replace_filename(library), "newmtl a\n" + material);
    writeFile(model, squareObj(library, "a"));
}

// A square that rises by one, or by the digit, in a tenth of a second.
inline void writeMovingSquare(const fs::path &file, const std::string &membersOfMesh = "",
                              char rise = '1') {
    writeFile(file, R"(xof 0303txt 0032
Frame square {
  FrameTransformMatrix {
    1.0,0.0,0.0,0.0,0.0,1.0,0.0,0.0,0.0,0.0,1.0,0.0,0.0,0.0,0.0,1.0;;
  }
  Mesh {
    4; 0.0;0.0;0.0;, 0.0;1.0;0.0;, 1.0;1.0;0.0;, 1.0;0.0;0.0;;
    1; 4;0;1;2;3;;
)" + membersOfMesh + R"(  }
}
AnimTicksPerSecond { 10; }
AnimationSet rise {
  Animation {
    {square}
    AnimationKey { 2; 2; 0;3;0.0,0.0,0.0;;, 1;3;0.0,)" +
                        rise + ".0,0.0;;; }\n  }\n}\n");
}

// ---- conversions -----------------------------------------------------------------------------

inline ConvertOptions optionsOf(const fs::path &model, const fs::path &scene = "scene.rve") {
    ConvertOptions options;
    options.model = model;
    options.scene = scene;
    return options;
}

struct Made {
    ravolt::RveScene scene;
    std::vector<Clip> clips;
    Report report;
};

// Converts without writing the scene file itself; textures are written.
inline Made make(const ConvertOptions &options) {
    Made made;
    Progress silent(false);
    ravolt::FileTransaction files;
    InputFiles inputs;
    Converted converted = makeScene(options, made.report, silent, files, inputs);
    made.scene = std::move(converted.scene);
    made.clips = std::move(converted.clips);
    const std::string error = files.commit();
    if (!error.empty())
        throw Failure(error);
    return made;
}

inline Made make(const fs::path &model) { return make(optionsOf(model)); }

// The whole, written.
inline void writeScene(const ConvertOptions &options) {
    Report report;
    Progress silent(false);
    convertModel(options, report, silent);
}

inline void writeScene(const fs::path &model = "m.obj") { writeScene(optionsOf(model)); }

// The line of the Failure that `job` throws; empty when it throws none.
template <class Job> std::string failureOf(const Job &job) {
    try {
        job();
    } catch (const Failure &failure) {
        return failure.what();
    }
    return "";
}

// ---- scenes ----------------------------------------------------------------------------------

inline const RveNode *find(const RveNode &node, const std::string &name) {
    if (node.name == name)
        return &node;
    for (const RveNode &child : node.children)
        if (const RveNode *found = find(child, name))
            return found;
    return nullptr;
}

// Throws where there is none.
inline const RveNode &nodeOf(const Made &made, const std::string &name) {
    const RveNode *node = find(made.scene.root, name);
    return node ? *node : throw std::out_of_range("no node " + name);
}

inline std::vector<const RveNode *> meshesOf(const RveNode &node) {
    std::vector<const RveNode *> result;
    if (node.kind == RveKind::mesh && !node.mesh.faces.empty())
        result.push_back(&node);
    for (const RveNode &child : node.children)
        for (const RveNode *mesh : meshesOf(child))
            result.push_back(mesh);
    return result;
}

inline bool hasVertex(const RveNode &node, const ravolt::RveVector &position) {
    return std::any_of(node.mesh.vertices.begin(), node.mesh.vertices.end(), [&](const auto &v) {
        const Vector offset{v[0] - position[0], v[1] - position[1], v[2] - position[2]};
        return length(offset) < 1e-5;
    });
}

// The heights of the first bone of a clip.
inline std::vector<float> heights(const Clip &clip) {
    std::vector<float> result;
    for (const auto &frame : clip.frames.frames)
        result.push_back(frame[0].translation[1]);
    return result;
}

inline RveNode meshNode(const std::string &name, bool hidden = false) {
    RveNode node;
    node.kind = RveKind::mesh;
    node.name = name;
    node.mesh.material = "";
    node.mesh.hidden = hidden;
    return node;
}

// A square that faces +z, from (low, low) to (1, 1).
inline RveNode squareNode(const std::string &name, float low = -1) {
    RveNode node = meshNode(name);
    node.mesh.vertices = {{low, low, 0}, {1, low, 0}, {1, 1, 0}, {low, 1, 0}};
    node.mesh.normals.assign(4, {0, 0, 1});
    node.mesh.faces = {{0, 1, 2}, {0, 2, 3}};
    return node;
}

// All its vertices follow the one bone.
inline RveNode skinnedSquare(const std::string &name, const std::string &bone, float low = -1) {
    RveNode node = squareNode(name, low);
    node.mesh.skin.weightsPerVertex = 4;
    node.mesh.skin.bones = {bone};
    node.mesh.skin.boneIndices.assign(16, 0);
    for (int vertex = 0; vertex < 4; ++vertex)
        node.mesh.skin.boneWeights.insert(node.mesh.skin.boneWeights.end(), {1, 0, 0, 0});
    return node;
}

inline bool contains(const Lines &lines, const std::string &line) {
    return std::find(lines.begin(), lines.end(), line) != lines.end();
}

// Texts over several lines, for messages of failed tests.
inline std::string joined(const Lines &lines) {
    std::string text;
    for (const std::string &line : lines)
        text += line + "\n";
    return text;
}

} // namespace tool_test
