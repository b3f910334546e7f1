// How the colours of vertices are converted.

#include "tests/support/expectNear.h"
#include "tests/tools/gltfData.h"
#include "tests/tools/support.h"
#include "tools/convert/images.h"
#include "tools/convert/vertexColors.h"

#include <array>
#include <cmath>
#include <gtest/gtest.h>

namespace {

using namespace tool_test;
using ravolt::test::expectNear;
using Color = std::array<double, 3>;

// The texture at a coordinate, as OpenGL filters it without smaller images.
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

Made makeText(const std::string &name, const std::string &text) {
    writeFile(name, text);
    return make(name);
}

TEST(VertexColors, AreTheMaterialsWhereTheyAreAllEqual) {
    const Made made =
        makeText("m.obj", "v 0 0 0 1 0 0.5\nv 1 0 0 1 0 0.5\nv 0 1 0 1 0 0.5\nf 1 2 3\n");
    EXPECT_EQ(joined(made.report.warnings()), "");
    ASSERT_EQ(made.scene.materials.size(), 1u);
    const ravolt::RveMaterial &material = made.scene.materials[0];
    EXPECT_EQ(material.texture, "[none]");
    EXPECT_NEAR(material.diffuse[0], 1, 1e-6);
    EXPECT_NEAR(material.diffuse[1], 0, 1e-6);
    EXPECT_NEAR(material.diffuse[2], 0.5, 0.01);
    EXPECT_EQ(material.ambient, material.diffuse);
}

TEST(VertexColors, ChangeNothingWhereTheyAreWhite) {
    writeFile("m.mtl", "newmtl a\nKd 1 0 0\n");
    const Made made = makeText("m.obj", "mtllib m.mtl\nusemtl a\nv 0 0 0 1 1 1\nv 1 0 0 1 1 1\n"
                                        "v 0 1 0 1 1 1\nf 1 2 3\n");
    EXPECT_EQ(joined(made.report.warnings()), "");
    EXPECT_EQ(made.scene.materials.at(0).diffuse, (ravolt::RveColor{1, 0, 0, 1}));
}

// Two triangles, the colours of which are those of their positions: x, y and a third.
TEST(VertexColors, AreConvertedToATextureThatChangesAsTheyDo) {
    const Made made =
        makeText("m.obj", "v 0 0 0 0 0 0.2\nv 1 0 0 1 0 0.2\nv 1 1 0 1 1 0.2\nv 0 1 0 0 1 0.2\n"
                          "f 1 2 3\nf 1 3 4\n");
    EXPECT_EQ(joined(made.report.warnings()), "");
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
        for (const Color &weights :
             {Color{1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {0.5, 0.5, 0}, {0.2, 0.3, 0.5}}) {
            std::array<double, 2> position = {}, uv = {};
            for (std::size_t k = 0; k < 3; ++k)
                for (std::size_t axis = 0; axis < 2; ++axis) {
                    position[axis] += weights[k] * double{mesh.vertices[face[k]][axis]};
                    uv[axis] += weights[k] * double{mesh.uvs[face[k]][axis]};
                }
            SCOPED_TRACE(std::to_string(position[0]) + " " + std::to_string(position[1]));
            expectNear(sampled(image, uv[0], uv[1]), {255 * position[0], 255 * position[1], 51}, 1);
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

// A triangle with texture coordinates whose corners have these colours.
Made makeColored(const GltfData::Floats &colors, const std::string &material) {
    GltfData data;
    data.triangle();
    data.attribute("COLOR_0", data.vectors(colors));
    data.attribute("TEXCOORD_0", data.floats("VEC2", 2, {0, 0, 1, 0, 0, 1}));
    data.primitive = R"(,"material":0)";
    data.nodes = R"({"mesh":0})";
    data.members = R"(,"materials":[)" + material + "]";
    return makeText("m.gltf", data.text());
}

TEST(VertexColors, AreMultipliedWithTheMaterialsInLinearLightByGltf) {
    const Made made = makeColored({0.5, 1, 0, 0.5, 1, 0, 0.5, 1, 0},
                                  R"({"pbrMetallicRoughness":{"baseColorFactor":[1,0.5,1,1]}})");
    EXPECT_EQ(joined(made.report.warnings()), "");
    const ravolt::RveColor diffuse = made.scene.materials.at(0).diffuse;
    EXPECT_NEAR(diffuse[0], 0.735, 0.005); // half the light
    EXPECT_NEAR(diffuse[1], 0.735, 0.005);
    EXPECT_NEAR(diffuse[2], 0, 1e-6);

    const Made varied = makeColored({0.5, 0, 0, 1, 0, 0, 1, 1, 0}, "{}");
    const ravolt::RveMesh &mesh = meshesOf(varied.scene.root).at(0)->mesh;
    int found = 0;
    for (std::size_t i = 0; i < mesh.vertices.size(); ++i)
        if (mesh.vertices[i][0] == 0 && mesh.vertices[i][1] == 0) {
            expectNear(sampled(textureOf(varied), double{mesh.uvs[i][0]}, double{mesh.uvs[i][1]}),
                       {188, 0, 0}, 1); // half the light
            ++found;
        }
    EXPECT_EQ(found, 1);
}

TEST(VertexColors, AreLeftOutBesideATexture) {
    writeFile("wood.ppm", fourColors());
    const std::string textured =
        R"({"pbrMetallicRoughness":{"baseColorTexture":{"index":0}}}],"textures":[{"source":0}],
        "images":[{"uri":"wood.ppm"})";
    const Made made = makeColored({1, 0, 0, 0, 1, 0, 0, 0, 1}, textured);
    EXPECT_EQ(made.report.warnings(), Lines{"vertex colours of 1 mesh with textures left out"});
    EXPECT_EQ(made.scene.materials.at(0).texture, "wood_d.tga");
    EXPECT_EQ(joined(makeColored(GltfData::Floats(9, 1), textured).report.warnings()), "");
}

TEST(VertexColors, AreLeftOutWhereTheyExceedATexture) {
    std::string vertices, faces;
    for (int i = 0; i < 17; ++i) { // a texture of 16 pixels has room for 16 triangles
        for (const char *corner : {"0 0", "1 0", "0 1"})
            vertices += "v " + std::string(corner) + " " + std::to_string(i) + " 0." +
                        std::to_string(10 + i) + " 0.5 0." + corner[0] + "\n";
        faces += "f " + std::to_string(3 * i + 1) + " " + std::to_string(3 * i + 2) + " " +
                 std::to_string(3 * i + 3) + "\n";
    }
    writeFile("many.obj", vertices + faces);
    ConvertOptions options = optionsOf("many.obj");
    options.largestTexture = 16;
    const Made made = make(options);
    EXPECT_EQ(made.report.warnings(), Lines{"vertex colours of 1 mesh left out: too many for a "
                                            "texture of 16 pixels a side"});
    EXPECT_EQ(made.scene.materials.at(0).texture, "[none]");
    options.largestTexture = 32;
    EXPECT_EQ(joined(make(options).report.warnings()), "");
}

} // namespace
