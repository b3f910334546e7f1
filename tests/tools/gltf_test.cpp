// What of glTF 2 files assimp alone would lose.

#include "tests/tools/gltfData.h"
#include "tests/tools/support.h"
#include "tools/convert/gltfText.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <gtest/gtest.h>
#include <sys/stat.h>

namespace {

using namespace tool_test;

// A binary file of that text and buffer.
std::string binaryOf(std::string json, const std::string &buffer = "") {
    json.resize((json.size() + 3) / 4 * 4, ' ');
    const auto word = [](std::size_t value) {
        const auto number = static_cast<std::uint32_t>(value);
        return std::string(reinterpret_cast<const char *>(&number), sizeof number);
    };
    const std::string kind("BIN\0", 4);
    const std::string rest = buffer.empty() ? "" : word(buffer.size()) + kind + buffer;
    return "glTF" + word(2) + word(20 + json.size() + rest.size()) + word(json.size()) + "JSON" +
           json + rest;
}

// Two triangles, each on a bone of its own; two nodes have each name. The second triangle is that
// mesh.
GltfData twoCharacters(const std::string &mesh) {
    GltfData data;
    data.triangle();
    data.joints({0, 0, 0});
    data.meshes = 2;
    data.roots = "0,1,2,3";
    data.nodes = R"({"name":"body","mesh":0,"skin":0},{"name":"bone"},{"name":"body","mesh":)" +
                 mesh + R"(,"skin":1},{"name":"bone","translation":[10,0,0]})";
    const std::string bind = R"(],"inverseBindMatrices":)" + data.bindMatrices({{0, 0, 0}});
    data.members = R"(,"skins":[{"joints":[1)" + bind + R"(},{"joints":[3)" + bind +
                   R"(}],"animations":[{"name":"rise","samplers":[{"input":)" +
                   data.scalars({0, 1}) + R"(,"output":)" + data.vectors({10, 0, 0, 10, 3, 0}) +
                   R"(}],"channels":[{"sampler":0,"target":{"node":3,"path":"translation"}}]}])";
    return data;
}

float minimumX(const ravolt::RveMesh &mesh) {
    return (*std::min_element(mesh.vertices.begin(), mesh.vertices.end()))[0];
}

void expectTwoCharacters(const Made &made) {
    const ravolt::RveMesh &first = nodeOf(made, "body").mesh, &second = nodeOf(made, "body_2").mesh;
    EXPECT_EQ(first.skin.bones, Lines{"bone"});
    EXPECT_EQ(second.skin.bones, Lines{"bone_2"});
    EXPECT_EQ(minimumX(first), 0);
    EXPECT_EQ(minimumX(second), 10);
    ASSERT_EQ(made.clips.size(), 1u);
    EXPECT_EQ(made.clips[0].frames.bones, Lines{"bone_2"});
    EXPECT_EQ(made.clips[0].frames.frames.back()[0].translation, (ravolt::RveVector{10, 3, 0}));
}

TEST(Gltf, DistinguishesNodesOfOneName) {
    writeFile("two.gltf", twoCharacters("1").text());
    const Made made = make("two.gltf");
    expectTwoCharacters(made);
    EXPECT_TRUE(contains(made.report.notes(), "2 nodes renamed: bones and clips find nodes by "
                                              "names, which must differ"));
    // In a binary file, and where they share a mesh.
    const GltfData data = twoCharacters("1");
    writeFile("two.glb", binaryOf(data.textWith(""), data.buffer()));
    expectTwoCharacters(make("two.glb"));
    writeFile("shared.gltf", twoCharacters("0").text());
    expectTwoCharacters(make("shared.gltf"));
}

TEST(Gltf, IsConfinedToItsFoldersWhereItsTextIsChangedToo) {
    const GltfData data = twoCharacters("1");
    writeFile("m/two.gltf", data.textWith("../far.bin"));
    writeFile("far.bin", data.buffer());
    ConvertOptions options = optionsOf("m/two.gltf");
    EXPECT_NE(failureOf([&] { make(options); }), "");
    options.sources.follow = true;
    expectTwoCharacters(make(options));
    writeFile("m/two.gltf", data.textWith("near.bin"));
    writeFile("m/near.bin", data.buffer());
    options.sources.follow = false;
    expectTwoCharacters(make(options));
}

TEST(Gltf, WithInvalidUtf8IsReadAsItIs) {
    std::string text = twoCharacters("1").text();
    text.replace(text.find("rise"), 4, "ris\xe9");
    writeFile("latin.gltf", text);
    const Made made = make("latin.gltf");
    EXPECT_TRUE(contains(made.report.warnings(),
                         "the file's text is invalid JSON or UTF-8: equal names of nodes, steps "
                         "and cubic curves of clips are lost"));
    EXPECT_EQ(made.clips.size(), 1u);
}

TEST(Gltf, AboveALimitIsReadAsItIs) {
    const GltfData data = twoCharacters("1");
    writeFile("two.glb", binaryOf(data.textWith(""), data.buffer()));
    fs::resize_file("two.glb", GltfText::maxFileSize + 1); // a hole, not bytes
    const Made made = make("two.glb");
    EXPECT_TRUE(contains(made.report.warnings(),
                         "the file has more than 512 MB: equal names of nodes, steps and cubic "
                         "curves of clips are lost"))
        << joined(made.report.warnings());
    ASSERT_EQ(made.clips.size(), 1u);
    EXPECT_EQ(made.clips[0].frames.bones, Lines{"bone"});
}

// ---- interpolation -------------------------------------------------------------------------

using Floats = GltfData::Floats;

// A triangle whose node moves by that channel; a frame lasts a tenth of a second.
Made makeMoving(const Floats &times, const Floats &values, const std::string &interpolation,
                const std::string &path = "translation", int stride = 0) {
    GltfData data;
    data.triangle();
    const std::string input = data.scalars(times);
    const std::string output = path == "rotation" ? data.fours(values) : data.vectors(values);
    if (stride)
        data.strideOfLast(stride);
    data.nodes = R"({"name":"a\u00e9\"","mesh":0})";
    data.members = R"(,"animations":[{"name":"go","samplers":[{"input":)" + input +
                   R"(,"interpolation":")" + interpolation + R"(","output":)" + output +
                   R"(}],"channels":[{"sampler":0,"target":{"node":0,"path":")" + path +
                   R"("}}]}])";
    writeFile("moving.gltf", data.text());
    ConvertOptions options = optionsOf("moving.gltf");
    options.fps = 10;
    return make(options);
}

TEST(Gltf, SamplesSteps) {
    const Made made = makeMoving({0, 0.3f, 0.5f}, {0, 0, 0, 0, 6, 0, 0, 9, 0}, "STEP");
    EXPECT_EQ(heights(made.clips.at(0)), (Floats{0, 0, 0, 6, 6, 9}));
    EXPECT_EQ(joined(made.report.warnings()), "");
}

TEST(Gltf, SamplesCubicCurvesOfTranslations) {
    // For each key: the tangent in, the value, the tangent out.
    const Floats values = {9, 9, 9, 0, 0, 0, 0, 10,  0, //
                           0, 0, 0, 0, 4, 0, 0, -20, 0, //
                           0, 5, 0, 0, 4, 0, 9, 9,   9};
    const Made made = makeMoving({0, 0.4f, 0.8f}, values, "CUBICSPLINE");
    const auto curve = [](float a, float out, float b, float in, float t) {
        const float span = 0.4f;
        return (2 * t * t * t - 3 * t * t + 1) * a + (t * t * t - 2 * t * t + t) * span * out +
               (3 * t * t - 2 * t * t * t) * b + (t * t * t - t * t) * span * in;
    };
    const Floats shown = heights(made.clips.at(0));
    ASSERT_EQ(shown.size(), 9u);
    for (std::size_t i = 0; i < 9; ++i) {
        const float t = static_cast<float>(i % 4) / 4;
        const float expected = i == 8 ? 4 : i < 4 ? curve(0, 10, 4, 0, t) : curve(4, -20, 4, 5, t);
        EXPECT_NEAR(shown[i], expected, 1e-5) << i;
    }
    EXPECT_EQ(joined(made.report.warnings()), "");
}

TEST(Gltf, SamplesCubicCurvesOfRotations) {
    const float half = std::sqrt(0.5f);
    const Made made = makeMoving(
        {0, 0.4f}, {0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 5, 0, 0, 0, 0, 0, 0, 0, half, half, 0, 0, 0, 0},
        "CUBICSPLINE", "rotation");
    // A quarter of the way: of z and w, made one long.
    const float t = 0.25f, to = 3 * t * t - 2 * t * t * t;
    const float z = to * half + (t * t * t - 2 * t * t + t) * 0.4f * 5;
    const float w = 1 - to + to * half;
    const auto &frames = made.clips.at(0).frames.frames;
    ASSERT_EQ(frames.size(), 5u);
    EXPECT_NEAR(frames[1][0].rotation[2], 2 * std::atan2(z, w) * 180 / 3.14159265f, 1e-3);
    EXPECT_NEAR(frames[4][0].rotation[2], 90, 1e-3);
}

// Tangents in a form that cannot be read: interleaved with something else.
TEST(Gltf, WarnsWhereCubicCurvesAreReplacedByLinearOnes) {
    const Made made = makeMoving({0, 0.4f}, {0, 0, 0, 0, 0, 0, 0, 10, 0, 0, 0, 0, 0, 4, 0, 0, 0, 0},
                                 "CUBICSPLINE", "translation", 12);
    EXPECT_EQ(made.report.warnings(),
              Lines{"clip 'go': cubic interpolation of 1 node replaced by a linear one"});
    EXPECT_NEAR(heights(made.clips.at(0)).at(1), 1, 1e-5);
}

// ---- the text ------------------------------------------------------------------------------

TEST(GltfText, HasTheJsonOfABinaryFile) {
    writeFile("a.glb", binaryOf("{\"a\":1}") + "more");
    const GltfText file("a.glb");
    EXPECT_EQ(file.json(), "{\"a\":1} ");
    EXPECT_EQ(file.with("{}"), binaryOf("{}").replace(8, 1, 1, '\x1c') + "more");
}

TEST(GltfText, IsNotReadFromAPipe) {
    ASSERT_EQ(mkfifo("pipe.gltf", 0600), 0);
    EXPECT_EQ(GltfText("pipe.gltf").json(), "");
    EXPECT_FALSE(GltfText("pipe.gltf").isTooLarge());
}

} // namespace
