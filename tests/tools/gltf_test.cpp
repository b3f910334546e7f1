// What of glTF 2 files assimp alone would lose.

#include "tests/tools/gltfData.h"
#include "tests/tools/support.h"
#include "tools/convert/gltfText.h"
#include "tools/convert/json.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <gtest/gtest.h>
#include <sys/stat.h>

namespace {

using namespace tool_test;

std::string text(int number) { return std::to_string(number); }

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

// Two triangles, each held by a bone of its own; all nodes have a namesake. The buffer is in the
// text, in the binary file, or in the file `buffer`.
std::string twoCharacters(GltfData &data, const std::string &mesh, bool binary = false,
                          const std::string &buffer = "") {
    const int points = data.points({0, 0, 0, 1, 0, 0, 0, 1, 0});
    const int joints = data.joints({0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0});
    const int weights = data.fours({1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0});
    const int bind = data.bindPlaces({{0, 0, 0}});
    const int times = data.scalars({0, 1});
    const int rising = data.points({10, 0, 0, 10, 3, 0});
    const std::string primitive = R"({"primitives":[{"attributes":{"POSITION":)" + text(points) +
                                  R"(,"JOINTS_0":)" + text(joints) + R"(,"WEIGHTS_0":)" +
                                  text(weights) + "}}]}";
    return R"({"asset":{"version":"2.0"},"scene":0,"scenes":[{"nodes":[0,1,2,3]}],"nodes":[
        {"name":"body","mesh":0,"skin":0},{"name":"bone"},
        {"name":"body","mesh":)" +
           mesh + R"(,"skin":1},{"name":"bone","translation":[10,0,0]}],
        "skins":[{"joints":[1],"inverseBindMatrices":)" +
           text(bind) + R"(},{"joints":[3],"inverseBindMatrices":)" + text(bind) +
           R"(}],"meshes":[)" + primitive + "," + primitive +
           R"(],"animations":[{"name":"rise","samplers":[{"input":)" + text(times) +
           R"(,"output":)" + text(rising) +
           R"(}],"channels":[{"sampler":0,"target":{"node":3,"path":"translation"}}]}],)" +
           (binary           ? data.membersOfBinary()
            : buffer.empty() ? data.members()
                             : data.membersWith(buffer)) +
           "}";
}

float leftmost(const ravolt::RveMesh &mesh) {
    float minimum = mesh.vertices.at(0)[0];
    for (const auto &vertex : mesh.vertices)
        minimum = std::min(minimum, vertex[0]);
    return minimum;
}

void expectTwoCharacters(const Made &made) {
    const ravolt::RveNode *first = find(made.scene.root, "body");
    const ravolt::RveNode *second = find(made.scene.root, "body_2");
    ASSERT_TRUE(first && second);
    EXPECT_EQ(first->mesh.skin.bones, (std::vector<std::string>{"bone"}));
    EXPECT_EQ(second->mesh.skin.bones, (std::vector<std::string>{"bone_2"}));
    EXPECT_EQ(leftmost(first->mesh), 0);
    EXPECT_EQ(leftmost(second->mesh), 10);
    ASSERT_EQ(made.clips.size(), 1u);
    EXPECT_EQ(made.clips[0].frames.bones, (std::vector<std::string>{"bone_2"}));
    EXPECT_EQ(made.clips[0].frames.frames.back()[0].translation, (ravolt::RveVector{10, 3, 0}));
}

TEST(Gltf, TellsNodesOfOneNameApart) {
    GltfData data;
    writeFile("two.gltf", twoCharacters(data, "1"));
    const Made made = make("two.gltf");
    expectTwoCharacters(made);
    EXPECT_TRUE(contains(made.report.notes(), "2 nodes renamed: bones and clips find nodes by "
                                              "names, which must differ"));
}

TEST(Gltf, TellsThemApartInBinaryFilesToo) {
    GltfData data;
    const std::string json = twoCharacters(data, "1", true);
    writeFile("two.glb", binaryOf(json, data.buffer()));
    expectTwoCharacters(make("two.glb"));
}

TEST(Gltf, LetsTwoCharactersShareAMesh) {
    GltfData data;
    writeFile("shared.gltf", twoCharacters(data, "0"));
    expectTwoCharacters(make("shared.gltf"));
}

TEST(Gltf, IsConfinedToItsFoldersWhereItsTextIsChangedToo) {
    GltfData data;
    writeFile("m/two.gltf", twoCharacters(data, "1", false, "../far.bin"));
    writeFile("far.bin", data.buffer());
    ConvertOptions options;
    options.model = "m/two.gltf";
    options.scene = "scene.rve";
    EXPECT_NE(failureOf([&] { make(options); }), "");
    options.sources.follow = true;
    expectTwoCharacters(make(options));
    writeFile("m/two.gltf", twoCharacters(data, "1", false, "near.bin"));
    writeFile("m/near.bin", data.buffer());
    options.sources.follow = false;
    expectTwoCharacters(make(options));
}

TEST(Gltf, OfGreatSizeIsReadAsItIs) {
    GltfData data;
    writeFile("two.glb", binaryOf(twoCharacters(data, "1", true), data.buffer()));
    fs::resize_file("two.glb", GltfText::largestFile + 1); // a hole, not bytes
    const Made made = make("two.glb");
    EXPECT_TRUE(contains(made.report.warnings(),
                         "the file has more than 512 MB: equal names of nodes, steps and cubic "
                         "curves of clips are lost"))
        << joined(made.report.warnings());
    ASSERT_EQ(made.clips.size(), 1u);
    EXPECT_EQ(made.clips[0].frames.bones, (std::vector<std::string>{"bone"}));
}

// ---- interpolation -------------------------------------------------------------------------

// A triangle whose node moves by the given sampler and channel; a frame lasts a tenth of a second.
Made makeMoving(GltfData &data, int times, int values, const std::string &interpolation,
                const std::string &path) {
    const int points = data.points({0, 0, 0, 1, 0, 0, 0, 1, 0});
    writeFile("moving.gltf",
              R"({"asset":{"version":"2.0"},"scene":0,"scenes":[{"nodes":[0]}],
        "nodes":[{"name":"a\u00e9\"","mesh":0}],
        "meshes":[{"primitives":[{"attributes":{"POSITION":)" +
                  text(points) + R"(}}]}],"animations":[{"name":"go","samplers":[{"input":)" +
                  text(times) + R"(,"interpolation":")" + interpolation + R"(","output":)" +
                  text(values) + R"(}],"channels":[{"sampler":0,"target":{"node":0,"path":")" +
                  path + R"("}}]}],)" + data.members() + "}");
    ConvertOptions options;
    options.model = "moving.gltf";
    options.scene = "scene.rve";
    options.fps = 10;
    return make(options);
}

std::vector<float> heights(const Made &made) {
    std::vector<float> result;
    for (const auto &frame : made.clips.at(0).frames.frames)
        result.push_back(frame[0].translation[1]);
    return result;
}

TEST(Gltf, KeepsStepsAsSteps) {
    GltfData data;
    const int times = data.scalars({0, 0.3f, 0.5f});
    const Made made =
        makeMoving(data, times, data.points({0, 0, 0, 0, 6, 0, 0, 9, 0}), "STEP", "translation");
    EXPECT_EQ(heights(made), (std::vector<float>{0, 0, 0, 6, 6, 9}));
    EXPECT_TRUE(made.report.warnings().empty()) << joined(made.report.warnings());
}

TEST(Gltf, MovesAlongCubicCurves) {
    GltfData data;
    const int times = data.scalars({0, 0.4f, 0.8f});
    // For each key: the tangent in, the value, the tangent out.
    const int values = data.points({9, 9, 9, 0, 0, 0, 0, 10,  0, //
                                    0, 0, 0, 0, 4, 0, 0, -20, 0, //
                                    0, 5, 0, 0, 4, 0, 9, 9,   9});
    const Made made = makeMoving(data, times, values, "CUBICSPLINE", "translation");
    const auto curve = [](float a, float out, float b, float in, float t) {
        const float span = 0.4f;
        return (2 * t * t * t - 3 * t * t + 1) * a + (t * t * t - 2 * t * t + t) * span * out +
               (3 * t * t - 2 * t * t * t) * b + (t * t * t - t * t) * span * in;
    };
    const std::vector<float> shown = heights(made);
    ASSERT_EQ(shown.size(), 9u);
    for (std::size_t i = 0; i < 9; ++i) {
        const float t = static_cast<float>(i % 4) / 4;
        const float expected = i == 8 ? 4 : i < 4 ? curve(0, 10, 4, 0, t) : curve(4, -20, 4, 5, t);
        EXPECT_NEAR(shown[i], expected, 1e-5) << i;
    }
    EXPECT_TRUE(made.report.warnings().empty()) << joined(made.report.warnings());
}

TEST(Gltf, TurnsAlongCubicCurves) {
    GltfData data;
    const int times = data.scalars({0, 0.4f});
    const float half = std::sqrt(0.5f);
    const int values =
        data.fours({0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 5, 0, 0, 0, 0, 0, 0, 0, half, half, 0, 0, 0, 0});
    const Made made = makeMoving(data, times, values, "CUBICSPLINE", "rotation");
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
TEST(Gltf, SaysWhereCubicCurvesBecomeStraight) {
    GltfData data;
    const int times = data.scalars({0, 0.4f});
    const int values = data.points({0, 0, 0, 0, 0, 0, 0, 10, 0, 0, 0, 0, 0, 4, 0, 0, 0, 0});
    data.strideOfLast(12);
    const Made made = makeMoving(data, times, values, "CUBICSPLINE", "translation");
    EXPECT_EQ(made.report.warnings(),
              (std::vector<std::string>{
                  "clip 'go': cubic interpolation of 1 node replaced by a linear one"}));
    EXPECT_NEAR(heights(made).at(1), 1, 1e-5);
}

// ---- the text ------------------------------------------------------------------------------

TEST(Json, ReplacesEscapes) {
    EXPECT_EQ(unescaped(R"(a\"\\\/\n\u00e9\u20ac\ud83d\ude00)"), "a\"\\/\n\xc3\xa9\xe2\x82\xac"
                                                                 "\xf0\x9f\x98\x80");
    for (const char *broken : {"\\", "\\u", "\\u12", "\\ud800", "\\ud800\\u"})
        unescaped(broken);
}

TEST(Json, EndsAtWhatIsNone) {
    for (const std::string broken : {"", "{", "{\"a\"", "{\"a\":[1,", "[}", "[1 2", "{\"a\":}"}) {
        Json json(broken);
        json.eachMember(
            [&](const std::string &) { json.eachItem([&](std::size_t) { json.skip(); }); });
        json.eachItem([&](std::size_t) { json.skip(); });
    }
}

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
