#pragma once

// Shared by the tests of the content tool: small files made on the spot, and walks over scenes.

#include "tools/common/algebra.h"
#include "tools/common/failure.h"
#include "tools/convert/convert.h"
#include "tools/convert/images.h"
#include "tools/writers/tgaWriter.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace tool_test {

namespace fs = std::filesystem;
using namespace ravolt::tool;

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

// Four pixels of these alphas.
inline void writeAlphas(const std::string &file, std::vector<unsigned char> alphas) {
    std::vector<unsigned char> pixels;
    for (unsigned char alpha : alphas)
        pixels.insert(pixels.end(), {9, 9, 9, alpha});
    ravolt::TgaPicture picture;
    picture.width = picture.height = 2;
    picture.channels = 4;
    picture.pixels = pixels.data();
    ASSERT_TRUE(ravolt::writeTga(file, picture));
}

// From the lowest up.
inline std::vector<unsigned char> alphasIn(const std::string &file) {
    std::string reason;
    const Image image = decodeFile(file, reason);
    std::vector<unsigned char> alphas;
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

// A square that rises by one in a tenth of a second.
inline void writeMovingSquare(const fs::path &file) {
    writeFile(file, R"(xof 0303txt 0032
Frame square {
  FrameTransformMatrix {
    1.0,0.0,0.0,0.0,0.0,1.0,0.0,0.0,0.0,0.0,1.0,0.0,0.0,0.0,0.0,1.0;;
  }
  Mesh {
    4; 0.0;0.0;0.0;, 0.0;1.0;0.0;, 1.0;1.0;0.0;, 1.0;0.0;0.0;;
    1; 4;0;1;2;3;;
  }
}
AnimTicksPerSecond { 10; }
AnimationSet rise {
  Animation {
    {square}
    AnimationKey { 2; 2; 0;3;0.0,0.0,0.0;;, 1;3;0.0,1.0,0.0;;; }
  }
}
)");
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

inline Made make(const fs::path &model) {
    ConvertOptions options;
    options.model = model;
    options.scene = "scene.rve";
    return make(options);
}

// The line of the Failure that `job` throws; empty when it throws none.
template <class Job> std::string failureOf(const Job &job) {
    try {
        job();
    } catch (const Failure &failure) {
        return failure.what();
    }
    return "";
}

inline const ravolt::RveNode *find(const ravolt::RveNode &node, const std::string &name) {
    if (node.name == name)
        return &node;
    for (const ravolt::RveNode &child : node.children)
        if (const ravolt::RveNode *found = find(child, name))
            return found;
    return nullptr;
}

inline std::vector<const ravolt::RveNode *> meshesOf(const ravolt::RveNode &node) {
    std::vector<const ravolt::RveNode *> result;
    if (node.kind == ravolt::RveKind::mesh && !node.mesh.faces.empty())
        result.push_back(&node);
    for (const ravolt::RveNode &child : node.children)
        for (const ravolt::RveNode *mesh : meshesOf(child))
            result.push_back(mesh);
    return result;
}

inline bool contains(const std::vector<std::string> &lines, const std::string &line) {
    for (const std::string &one : lines)
        if (one == line)
            return true;
    return false;
}

// Texts over several lines, for messages of failed tests.
inline std::string joined(const std::vector<std::string> &lines) {
    std::string text;
    for (const std::string &line : lines)
        text += line + "\n";
    return text;
}

} // namespace tool_test
