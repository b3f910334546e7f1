// What becomes of the colours of vertices.

#include "tests/tools/gltfData.h"
#include "tests/tools/support.h"
#include "tools/convert/images.h"
#include "tools/convert/vertexColors.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <gtest/gtest.h>

namespace {

using namespace tool_test;

using Color = std::array<double, 3>;

// The texture at a place, as OpenGL filters it without smaller images.
Color sampled(const Image &image, double u, double v) {
    const double x = u * image.width - 0.5, y = (1 - v) * image.height - 0.5;
    const double left = std::floor(x), top = std::floor(y);
    Color color = {};
    for (const int down : {0, 1})
        for (const int right : {0, 1}) {
            const auto column = static_cast<std::size_t>(left) + static_cast<std::size_t>(right);
            const auto row = static_cast<std::size_t>(top) + static_cast<std::size_t>(down);
            const double weight =
                (right ? x - left : 1 - x + left) * (down ? y - top : 1 - y + top);
            for (std::size_t i = 0; i < 3; ++i)
                color[i] += weight * image.pixels.at(4 * (row * image.width + column) + i);
        }
    return color;
}

Image textureOf(const Made &made) {
    std::string reason;
    return decodeFile(made.scene.materials.at(0).texture, reason);
}

void expectColor(const Color &found, const Color &expected, const std::string &where) {
    for (std::size_t i = 0; i < 3; ++i)
        EXPECT_NEAR(found[i], expected[i], 1) << where;
}

Made makeText(const std::string &name, const std::string &text) {
    writeFile(name, text);
    return make(name);
}

TEST(VertexColors, BecomeTheMaterialsWhereTheyAreAllEqual) {
    const Made made =
        makeText("m.obj", "v 0 0 0 1 0 0.5\nv 1 0 0 1 0 0.5\nv 0 1 0 1 0 0.5\nf 1 2 3\n");
    EXPECT_EQ(made.report.warnings(), std::vector<std::string>{});
    ASSERT_EQ(made.scene.materials.size(), 1u);
    const ravolt::RveMaterial &material = made.scene.materials[0];
    EXPECT_EQ(material.texture, "[none]");
    EXPECT_NEAR(material.diffuse[0], 1, 1e-6);
    EXPECT_NEAR(material.diffuse[1], 0, 1e-6);
    EXPECT_NEAR(material.diffuse[2], 0.5, 0.01);
    EXPECT_EQ(material.ambient, material.diffuse);
}

TEST(VertexColors, SayNothingWhereTheyAreWhite) {
    writeFile("m.mtl", "newmtl a\nKd 1 0 0\n");
    const Made made = makeText("m.obj", "mtllib m.mtl\nusemtl a\nv 0 0 0 1 1 1\nv 1 0 0 1 1 1\n"
                                        "v 0 1 0 1 1 1\nf 1 2 3\n");
    EXPECT_EQ(made.report.warnings(), std::vector<std::string>{});
    EXPECT_EQ(made.scene.materials.at(0).diffuse, (ravolt::RveColor{1, 0, 0, 1}));
}

// Two triangles, the colours of which are those of their places: x, y and a third.
TEST(VertexColors, BecomeATextureThatChangesAsTheyDo) {
    const Made made =
        makeText("m.obj", "v 0 0 0 0 0 0.2\nv 1 0 0 1 0 0.2\nv 1 1 0 1 1 0.2\nv 0 1 0 0 1 0.2\n"
                          "f 1 2 3\nf 1 3 4\n");
    EXPECT_EQ(made.report.warnings(), std::vector<std::string>{});
    ASSERT_EQ(made.scene.materials.size(), 1u);
    EXPECT_EQ(made.scene.materials[0].diffuse, (ravolt::RveColor{1, 1, 1, 1}));
    EXPECT_EQ(made.scene.materials[0].texture, "vertex_colors_1_d.tga");
    const Image image = textureOf(made);
    ASSERT_FALSE(image.empty());
    const auto meshes = meshesOf(made.scene.root);
    ASSERT_EQ(meshes.size(), 1u);
    const ravolt::RveMesh &mesh = meshes[0]->mesh;
    ASSERT_EQ(mesh.faces.size(), 2u);
    ASSERT_EQ(mesh.uvs.size(), mesh.vertices.size());
    for (const auto &face : mesh.faces)
        for (const std::array<double, 3> weights : {std::array<double, 3>{1, 0, 0},
                                                    {0, 1, 0},
                                                    {0, 0, 1},
                                                    {0.5, 0.5, 0},
                                                    {0.2, 0.3, 0.5}}) {
            double x = 0, y = 0, u = 0, v = 0;
            for (std::size_t k = 0; k < 3; ++k) {
                const auto vertex = face[k];
                x += weights[k] * static_cast<double>(mesh.vertices[vertex][0]);
                y += weights[k] * static_cast<double>(mesh.vertices[vertex][1]);
                u += weights[k] * static_cast<double>(mesh.uvs[vertex][0]);
                v += weights[k] * static_cast<double>(mesh.uvs[vertex][1]);
            }
            expectColor(sampled(image, u, v), {255 * x, 255 * y, 51},
                        std::to_string(x) + " " + std::to_string(y));
        }
}

TEST(VertexColors, ShareVerticesWhereTrianglesHaveOneColor) {
    // A square of two green triangles, and a red one beside it.
    const Made made =
        makeText("m.obj", "v 0 0 0 0 1 0\nv 1 0 0 0 1 0\nv 1 1 0 0 1 0\nv 0 1 0 0 1 0\n"
                          "v 5 0 0 1 0 0\nv 6 0 0 1 0 0\nv 5 1 0 1 0 0\nf 1 2 3 4\nf 5 6 7\n");
    const auto meshes = meshesOf(made.scene.root);
    ASSERT_EQ(meshes.size(), 1u);
    EXPECT_EQ(meshes[0]->mesh.vertices.size(), 7u);
}

// A triangle with a texture of its own, or none, whose corners have these colours.
std::string coloredGltf(GltfData &data, const std::vector<float> &colors,
                        const std::string &material) {
    const auto text = [](int number) { return std::to_string(number); };
    const int points = data.points({0, 0, 0, 1, 0, 0, 0, 1, 0});
    const int painted = data.points(colors);
    const int places = data.floats("VEC2", 2, {0, 0, 1, 0, 0, 1});
    return R"({"asset":{"version":"2.0"},"scene":0,"scenes":[{"nodes":[0]}],"nodes":[{"mesh":0}],
        "meshes":[{"primitives":[{"material":0,"attributes":{"POSITION":)" +
           text(points) + R"(,"COLOR_0":)" + text(painted) + R"(,"TEXCOORD_0":)" + text(places) +
           R"(}}]}],"materials":[)" + material + "]," + data.members() + "}";
}

TEST(VertexColors, AreMultipliedWithTheMaterialsInLinearLightByGltf) {
    GltfData data;
    const Made made = makeText(
        "m.gltf", coloredGltf(data, {0.5, 1, 0, 0.5, 1, 0, 0.5, 1, 0},
                              R"({"pbrMetallicRoughness":{"baseColorFactor":[1,0.5,1,1]}})"));
    EXPECT_EQ(made.report.warnings(), std::vector<std::string>{});
    const ravolt::RveColor diffuse = made.scene.materials.at(0).diffuse;
    EXPECT_NEAR(diffuse[0], 0.735, 0.005); // half the light
    EXPECT_NEAR(diffuse[1], 0.735, 0.005);
    EXPECT_NEAR(diffuse[2], 0, 1e-6);

    GltfData other;
    const Made varied = makeText("v.gltf", coloredGltf(other, {0.5, 0, 0, 1, 0, 0, 1, 1, 0}, "{}"));
    const Image image = textureOf(varied);
    const ravolt::RveMesh &mesh = meshesOf(varied.scene.root).at(0)->mesh;
    for (std::size_t i = 0; i < mesh.vertices.size(); ++i)
        if (mesh.vertices[i][0] == 0 && mesh.vertices[i][1] == 0)
            expectColor(sampled(image, static_cast<double>(mesh.uvs[i][0]),
                                static_cast<double>(mesh.uvs[i][1])),
                        {188, 0, 0}, "half the light");
}

TEST(VertexColors, AreLeftOutBesideATexture) {
    writeFile("wood.ppm", fourColors());
    GltfData data;
    const std::string textured =
        R"({"pbrMetallicRoughness":{"baseColorTexture":{"index":0}}}],"textures":[{"source":0}],
        "images":[{"uri":"wood.ppm"})";
    const Made made = makeText("m.gltf", coloredGltf(data, {1, 0, 0, 0, 1, 0, 0, 0, 1}, textured));
    EXPECT_EQ(made.report.warnings(),
              (std::vector<std::string>{"vertex colours of 1 mesh with textures left out"}));
    EXPECT_EQ(made.scene.materials.at(0).texture, "wood_d.tga");
    GltfData plain;
    EXPECT_EQ(makeText("w.gltf", coloredGltf(plain, {1, 1, 1, 1, 1, 1, 1, 1, 1}, textured))
                  .report.warnings(),
              std::vector<std::string>{});
}

TEST(VertexColors, AreLeftOutWhereNoTextureHoldsThem) {
    std::string model;
    constexpr int triangles = 17; // a texture of 16 pixels holds 16
    for (int i = 0; i < triangles; ++i)
        for (const char *corner : {"0 0", "1 0", "0 1"})
            model += "v " + std::string(corner) + " " + std::to_string(i) + " 0." +
                     std::to_string(10 + i) + " 0.5 0." + std::to_string(corner[0] - '0') + "\n";
    for (int i = 0; i < triangles; ++i)
        model += "f " + std::to_string(3 * i + 1) + " " + std::to_string(3 * i + 2) + " " +
                 std::to_string(3 * i + 3) + "\n";
    writeFile("many.obj", model);
    ConvertOptions options;
    options.model = "many.obj";
    options.scene = "scene.rve";
    options.largestTexture = 16;
    const Made made = make(options);
    EXPECT_EQ(made.report.warnings(),
              (std::vector<std::string>{"vertex colours of 1 mesh left out: too many for a texture "
                                        "of 16 pixels a side"}));
    EXPECT_EQ(made.scene.materials.at(0).texture, "[none]");
    options.largestTexture = 32;
    EXPECT_EQ(make(options).report.warnings(), std::vector<std::string>{});
}

} // namespace
