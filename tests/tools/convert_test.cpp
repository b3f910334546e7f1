// From a model to a scene: nodes, materials, textures and lights, and what is reported of them.

#include "tests/tools/gltfData.h"
#include "tests/tools/support.h"

#include <array>
#include <cmath>
#include <gtest/gtest.h>
#include <set>

namespace {

using namespace tool_test;
using ravolt::RveColor;
using ravolt::RveVector;

const std::string identity = "1,0,0,0, 0,1,0,0, 0,0,1,0, 0,0,0,1";

// A square on the node 'outer' of that matrix, column by column, and once more on its child
// 'inner', moved by (1, 1, 1).
GltfData squares(const std::string &matrix) {
    GltfData data;
    data.square();
    data.nodes = R"({"name":"outer","matrix":[)" + matrix +
                 R"(],"mesh":0,"children":[1]},{"name":"inner","translation":[1,1,1],"mesh":0})";
    return data;
}

Made makeSquares(const std::string &matrix, double scale = 1) {
    writeFile("model.gltf", squares(matrix).text());
    ConvertOptions options = optionsOf("model.gltf");
    options.scale = scale;
    return make(options);
}

// The squares with one material of these members; `members` are those of the file.
void writeMaterial(const std::string &material, const std::string &members = "",
                   GltfData data = squares(identity)) {
    data.primitive += R"(,"material":0)";
    data.members = R"(,"materials":[{"name":"a",)" + material + "}]" + members;
    writeFile("model.gltf", data.text());
}

const std::string textured = R"("pbrMetallicRoughness":{"baseColorTexture":{"index":0}})";

std::string textureOf(const std::string &uri) {
    return R"(,"textures":[{"source":0}],"images":[{"uri":")" + uri + R"("}])";
}

Vector frontOf(const RveNode &node) {
    const auto at = [&](std::size_t corner) {
        const auto &v = node.mesh.vertices[node.mesh.faces[0][corner]];
        return Vector{v[0], v[1], v[2]};
    };
    return unit(cross(at(1) - at(0), at(2) - at(0)));
}

TEST(Convert, KeepsTheTreeAndItsNames) {
    const Made made = makeSquares("1,0,0,0, 0,1,0,0, 0,0,1,0, 5,6,7,1");
    EXPECT_EQ(made.scene.root.name, "[root]");
    EXPECT_EQ(made.scene.root.kind, RveKind::mesh);
    EXPECT_EQ(made.scene.root.mesh.material, "[none]");
    const RveNode &outer = nodeOf(made, "outer");
    EXPECT_EQ(outer.position, (RveVector{5, 6, 7}));
    ASSERT_EQ(outer.children.size(), 1u);
    EXPECT_EQ(outer.children[0].name, "inner");
    EXPECT_EQ(outer.children[0].position, (RveVector{1, 1, 1}));
}

TEST(Convert, BakesScaleIntoVerticesAndPositionsOfChildren) {
    const Made made = makeSquares("2,0,0,0, 0,3,0,0, 0,0,4,0, 0,0,0,1");
    const RveNode &outer = nodeOf(made, "outer"), &inner = nodeOf(made, "inner");
    EXPECT_TRUE(hasVertex(outer, {2, 3, 0}));
    EXPECT_EQ(inner.position, (RveVector{2, 3, 4}));
    EXPECT_TRUE(hasVertex(inner, {2, 3, 0}));
    EXPECT_FLOAT_EQ(outer.mesh.radius, std::sqrt(13.0f));
    EXPECT_EQ(outer.mesh.maximum, (RveVector{2, 3, 0}));
}

TEST(Convert, ReversesMirroredFaces) {
    EXPECT_NEAR(frontOf(nodeOf(makeSquares(identity), "outer")).z, 1, 1e-6);
    const Made mirrored = makeSquares("-1,0,0,0, 0,1,0,0, 0,0,1,0, 0,0,0,1");
    for (const char *name : {"outer", "inner"}) {
        const RveNode &node = nodeOf(mirrored, name);
        EXPECT_TRUE(hasVertex(node, {-1, 1, 0})) << name;
        EXPECT_NEAR(frontOf(node).z, 1, 1e-6) << name;
        EXPECT_NEAR(node.mesh.normals[0][2], 1, 1e-6) << name;
        EXPECT_EQ(node.rotation, (RveVector{0, 0, 0})) << name;
    }
}

TEST(Convert, StatesRotationsInDegrees) {
    const Made made = makeSquares("0,1,0,0, -1,0,0,0, 0,0,1,0, 0,0,0,1");
    EXPECT_EQ(nodeOf(made, "outer").rotation, (RveVector{0, 0, 90}));
    EXPECT_TRUE(hasVertex(nodeOf(made, "outer"), {1, 1, 0}));
}

TEST(Convert, AppliesTheRequestedScale) {
    const Made made = makeSquares("1,0,0,0, 0,1,0,0, 0,0,1,0, 5,6,7,1", 0.5);
    EXPECT_EQ(nodeOf(made, "outer").position, (RveVector{2.5f, 3, 3.5f}));
    EXPECT_TRUE(hasVertex(nodeOf(made, "outer"), {0.5f, 0.5f, 0}));
    EXPECT_EQ(failureOf([] { makeSquares(identity, 0); }), "the scale must be a number above 0");
}

TEST(Convert, LeavesOutATransformThatIsNotFinite) {
    const Made made = makeSquares("1e39,0,0,0, 0,1,0,0, 0,0,1,0, 0,0,0,1");
    for (const RveNode *mesh : meshesOf(made.scene.root))
        for (const auto &v : mesh->mesh.vertices)
            EXPECT_TRUE(isFinite(Vector{v[0], v[1], v[2]}));
}

TEST(Convert, MakesOneMeshOfEachMaterial) {
    writeFile("two.mtl", "newmtl red\nKd 1 0 0\nnewmtl blue\nKd 0 0 1\nnewmtl idle\nKd 1 1 1\n");
    writeFile("two.obj", "mtllib two.mtl\no thing\nv 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\n"
                         "vn 0 0 1\nusemtl red\nf 1//1 2//1 3//1\nusemtl blue\nf 1//1 3//1 4//1\n"
                         "usemtl red\nf 2//1 3//1 4//1\n");
    const Made made = make("two.obj");
    const RveNode &thing = nodeOf(made, "thing");
    EXPECT_EQ(thing.kind, RveKind::node); // it has no rotation
    ASSERT_EQ(thing.children.size(), 2u);
    EXPECT_EQ(thing.children[0].mesh.material, "red");
    EXPECT_EQ(thing.children[0].mesh.faces.size(), 2u);
    EXPECT_EQ(thing.children[1].mesh.material, "blue");
    EXPECT_EQ(made.scene.materials.size(), 2u); // without the idle one
}

TEST(Convert, GivesMaterialsUniqueNames) {
    GltfData data = squares(identity);
    data.members = R"(,"materials":[{"name":"[none]"}])";
    writeFile("model.gltf", data.text());
    std::set<std::string> names = {"[none]", ""};
    for (const auto &material : make("model.gltf").scene.materials)
        EXPECT_TRUE(names.insert(material.name).second) << material.name;
    EXPECT_GT(names.size(), 2u);

    writeSquare("Kd 1 0 0\n");
    ConvertOptions options = optionsOf("m.obj");
    options.prefix = "house/";
    EXPECT_EQ(make(options).scene.materials[0].name, "house/a");
}

TEST(Convert, ConvertsColorsOpacityAndShininess) {
    writeSquare("Ka 0.1 0.2 0.3\nKd 0.4 0.5 0.6\nKs 0.7 0.8 0.9\nNs 20\nd 0.25\nKe 0.1 0 0\n");
    const ravolt::RveMaterial material = make("m.obj").scene.materials.at(0);
    EXPECT_EQ(material.ambient, (RveColor{0.1f, 0.2f, 0.3f, 1}));
    EXPECT_EQ(material.diffuse, (RveColor{0.4f, 0.5f, 0.6f, 1}));
    EXPECT_EQ(material.specular, (RveColor{0.7f, 0.8f, 0.9f, 1}));
    EXPECT_EQ(material.selfIllumination, (RveColor{0.1f, 0, 0, 1}));
    EXPECT_EQ(material.transparency, 0.25f);
    EXPECT_GT(material.shininess, 1);
    EXPECT_LE(material.shininess, 128);
    EXPECT_EQ(material.texture, "[none]");
}

TEST(Convert, LimitsAnEmissionBrighterThanWhite) {
    writeSquare("Kd 1 1 1\nKe 3 2 100\n");
    EXPECT_EQ(make("m.obj").scene.materials.at(0).selfIllumination, (RveColor{3, 2, 16, 1}));
}

TEST(Convert, TakesAnOpacityOfZeroAsOpaqueAndWarns) {
    writeSquare("Kd 1 1 1\nd 0\n");
    const Made made = make("m.obj");
    EXPECT_EQ(made.scene.materials.at(0).transparency, 1);
    EXPECT_EQ(made.report.warnings(), Lines{"material 'a': opacity 0 taken as opaque"});
}

TEST(Convert, ConvertsLinearColorsToSrgb) {
    writeMaterial(R"("pbrMetallicRoughness":{"baseColorFactor":[0.2140411,0,1,1]})");
    const ravolt::RveMaterial material = make("model.gltf").scene.materials.at(0);
    EXPECT_NEAR(material.diffuse[0], 0.5f, 1e-3);
    EXPECT_EQ(material.diffuse[1], 0);
    EXPECT_FLOAT_EQ(material.diffuse[2], 1);
}

// Such a node's position used to be turned and scaled with it.
TEST(Convert, PositionsNodesOfGltf1) {
    const std::string text =
        R"({"asset": {"version": "1.0"}, "scene": "s", "scenes": {"s": {"nodes":
        ["turned", "stated"]}}, "nodes": {
        "turned": {"name": "translation", "extras": {"translation": [[7], {"a": "}"}]},
            "rotation": [0, 0, 0.70710678, 0.70710678], "scale": [2, 2, 2],
            "meshes": ["m"], "translation": [3, 1e1, -0.5]},
        "stated": {"matrix": [0,1,0,0, -1,0,0,0, 0,0,1,0, 4,5,6,1], "meshes": ["m"]}},
        "meshes": {"m": {"primitives": [{"attributes": {"POSITION": "p"}, "indices": "i",
            "mode": 4}]}},
        "accessors": {
            "p": {"bufferView": "vp", "byteOffset": 0, "byteStride": 12, "componentType": 5126,
                "count": 3, "type": "VEC3"},
            "i": {"bufferView": "vi", "byteOffset": 0, "byteStride": 0, "componentType": 5123,
                "count": 3, "type": "SCALAR"}},
        "bufferViews": {"vp": {"buffer": "b", "byteOffset": 0, "byteLength": 36, "target": 34962},
            "vi": {"buffer": "b", "byteOffset": 36, "byteLength": 6, "target": 34963}},
        "buffers": {"b": {"byteLength": 44, "type": "arraybuffer", "uri": "m.bin"}}})";
    GltfData data;
    data.triangle();
    data.indices({0, 1, 2});
    writeFile("m.bin", data.buffer());
    writeFile("m.gltf", text);
    const Made made = make("m.gltf");
    EXPECT_EQ(nodeOf(made, "turned").position, (RveVector{3, 10, -0.5f}));
    EXPECT_EQ(nodeOf(made, "stated").position, (RveVector{4, 5, 6}));
}

// ---- textures --------------------------------------------------------------------------------

TEST(Convert, WritesTexturesBesideTheScene) {
    writeFile("picture.ppm", fourColors());
    writeSquare("Kd 1 1 1\nmap_Kd picture.ppm\n");
    fs::create_directory("out");
    const Made made = make(optionsOf("m.obj", "out/scene.rve"));
    EXPECT_EQ(made.scene.materials.at(0).texture, "picture_d.tga");
    EXPECT_TRUE(fs::exists("out/picture_d.tga"));
    EXPECT_EQ(joined(made.report.warnings()), "");
    EXPECT_EQ(meshesOf(made.scene.root).at(0)->mesh.uvs.size(), 4u);
}

TEST(Convert, UsesNoTextureThatIsMissingOrBroken) {
    writeFile("broken.png", "this is no picture");
    for (const auto &[file, fault] :
         {std::pair<std::string, std::string>{"missing.png", "not found"},
          {"broken.png", "is in no picture format that is known here"}}) {
        writeSquare("Kd 0.5 0.25 1\nmap_Kd " + file + "\n");
        const Made made = make("m.obj");
        EXPECT_EQ(joined(made.report.warnings()),
                  "texture '" + file + "' " + fault + ": the material's colours are used\n");
        ASSERT_EQ(made.scene.materials.size(), 1u);
        EXPECT_EQ(made.scene.materials[0].texture, "[none]");
        EXPECT_EQ(meshesOf(made.scene.root).size(), 1u);
    }
}

TEST(Convert, DistinguishesTexturesOfTheSameName) {
    writeFile("x/wall.ppm", fourColors());
    writeFile("y/Wall.ppm", fourColors());
    writeFile("m.mtl", "newmtl a\nKd 1 1 1\nmap_Kd x/wall.ppm\nnewmtl b\nKd 1 1 1\n"
                       "map_Kd y/Wall.ppm\n");
    writeFile("m.obj", squareObj("m.mtl", "a") + "usemtl b\nf 1/1/1 3/1/1 2/1/1\n");
    const Made made = make("m.obj");
    ASSERT_EQ(made.scene.materials.size(), 2u);
    EXPECT_EQ(made.scene.materials[0].texture, "wall_d.tga");
    EXPECT_EQ(made.scene.materials[1].texture, "Wall_2_d.tga");
}

TEST(Convert, ResizesTexturesToASquareOfAPowerOfTwo) {
    writeFile("wide.ppm", "P6 3 1 255\n" + std::string(9, '\x7f'));
    writeSquare("Kd 1 1 1\nmap_Kd wide.ppm\n");
    EXPECT_EQ(make("m.obj").report.notes(), Lines{"texture 'wide.ppm' resized from 3x1 to 4x4"});
    ConvertOptions options = optionsOf("m.obj");
    options.largestTexture = 2;
    EXPECT_EQ(make(options).report.warnings(),
              Lines{"texture 'wide.ppm' resized from 3x1 to 2x2: larger textures are not allowed"});
}

TEST(Convert, WritesNormalMapsOnRequestOnly) {
    writeFile("c.ppm", fourColors());
    writeFile("n.ppm", fourColors());
    writeMaterial(textured + R"(,"normalTexture":{"index":1})",
                  R"(,"textures":[{"source":0},{"source":1}],
                  "images":[{"uri":"c.ppm"},{"uri":"n.ppm"}])");
    ConvertOptions options = optionsOf("model.gltf");
    for (const bool normalMaps : {false, true}) {
        options.normalMaps = normalMaps;
        make(options);
        EXPECT_TRUE(fs::exists("c_d.tga"));
        EXPECT_EQ(fs::exists("c_n.tga"), normalMaps);
    }
}

// Bits of a pixel, as the header of a TGA file states them.
int bitsOf(const std::string &file) { return readText(file).at(16); }

float opacityOf(const Made &made) { return made.scene.materials.at(0).transparency; }

// Without alphas its texture is opaque.
void expectAlphas(const Made &made, const Alphas &expected) {
    EXPECT_EQ(opacityOf(made) == 1, expected.empty());
    EXPECT_EQ(bitsOf("c_d.tga"), expected.empty() ? 24 : 32);
    if (!expected.empty()) {
        EXPECT_EQ(alphasIn("c_d.tga"), expected);
    }
}

TEST(Convert, BlendsOrCutsOutAsAGltfMaterialStates) {
    const auto expect = [](const std::string &mode, unsigned char alpha, const Alphas &written) {
        SCOPED_TRACE(mode + std::to_string(alpha));
        writeTexture("c.tga", 1, {1, 2, 3, alpha});
        writeMaterial(R"("alphaMode":")" + mode + "\"," + textured, textureOf("c.tga"));
        expectAlphas(make("model.gltf"), written);
    };
    expect("BLEND", 100, {100});
    expect("BLEND", 255, {});
    expect("MASK", 100, {0});
    expect("MASK", 130, {});
    expect("OPAQUE", 100, {});
}

// In a format that does not define the alpha of textures.
TEST(Convert, UsesAlphaByItsPixelsOrAsTheCallerRequests) {
    ConvertOptions options = optionsOf("m.obj");
    const auto expect = [&](AlphaUse use, const Alphas &alphas, const Alphas &written,
                            const Lines &notes = {}) {
        SCOPED_TRACE(testing::PrintToString(alphas) + " " + std::to_string(int(use)));
        writeAlphas("c.tga", alphas);
        options.alpha = use;
        const Made made = make(options);
        expectAlphas(made, written);
        EXPECT_EQ(made.report.notes(), notes);
    };
    writeSquare("Kd 1 1 1\nmap_Kd c.tga\n");
    expect(AlphaUse::picture, {255, 255, 0, 255}, {0, 255, 255, 255},
           {"texture 'c.tga': its alpha cuts holes"});
    expect(AlphaUse::picture, {255, 100, 0, 255}, {0, 100, 255, 255},
           {"texture 'c.tga': its alpha blends"});
    expect(AlphaUse::picture, {0, 0, 0, 0}, {});
    expect(AlphaUse::picture, {255, 255, 255, 255}, {});
    expect(AlphaUse::opaque, {255, 127, 128, 0}, {});
    expect(AlphaUse::cutout, {255, 127, 128, 0}, {0, 0, 255, 255});
    expect(AlphaUse::blended, {255, 127, 128, 0}, {0, 127, 128, 255});
    expect(AlphaUse::blended, {255, 255, 255, 255}, {}); // nothing to blend
    writeAlphas("c.tga", {255, 255, 0, 255});
    writeSquare("Kd 1 1 1\nmap_Kd c.tga\nd 0.5\n"); // the opacity is stated
    EXPECT_EQ(opacityOf(make("m.obj")), 0.5f);
    EXPECT_EQ(bitsOf("c_d.tga"), 24);
}

TEST(Convert, WritesAnOpacityMapIntoTheTexture) {
    writeTexture("c.tga", 1, {255, 255, 255, 255});
    writeTexture("o.tga", 1, {0, 0, 0, 255});
    writeSquare("Kd 1 1 1\nmap_Kd c.tga\nmap_d o.tga\n");
    EXPECT_LT(opacityOf(make("m.obj")), 1);
    EXPECT_EQ(bitsOf("c_d.tga"), 32);
}

TEST(Convert, WritesEmbeddedTextures) {
    // "P6 1 1 255\n" and one pixel, in base 64
    writeMaterial(textured, textureOf("data:image/png;base64,UDYgMSAxIDI1NQpBQkM="));
    const Made made = make("model.gltf");
    EXPECT_EQ(joined(made.report.warnings()), "");
    EXPECT_EQ(made.scene.materials.at(0).texture, "texture0_d.tga");
    EXPECT_TRUE(fs::exists("texture0_d.tga"));
}

TEST(Convert, WarnsThatATextureIsNotRepeatedInTheModel) {
    writeFile("c.ppm", fourColors());
    writeMaterial(textured, R"(,"samplers":[{"wrapS":33071,"wrapT":33071}],
        "textures":[{"source":0,"sampler":0}],"images":[{"uri":"c.ppm"}])");
    EXPECT_EQ(make("model.gltf").report.warnings(),
              Lines{"material 'a': its texture is clamped or mirrored, the scene repeats it"});
}

// The extension states: turned and scaled about the picture's upper left corner, then moved, with
// rows counted downwards.
TEST(Convert, AppliesTheTextureTransformsOfGltf2) {
    writeFile("c.ppm", fourColors());
    GltfData data = squares(identity);
    data.attribute("TEXCOORD_0", data.floats("VEC2", 2, {0, 0, 1, 0, 1, 1, 0, 1}));
    writeMaterial(R"("pbrMetallicRoughness":{"baseColorTexture":{"index":0,"extensions":{
        "KHR_texture_transform":{"offset":[-0.2,0.1],"rotation":0.3,"scale":[1.5,0.5]}}}})",
                  R"(,"extensionsUsed":["KHR_texture_transform"])" + textureOf("c.ppm"), data);
    const Made made = make("model.gltf");
    const ravolt::RveMesh &mesh = nodeOf(made, "outer").mesh;
    ASSERT_EQ(mesh.uvs.size(), 4u);
    for (std::size_t i = 0; i < 4; ++i) {
        // In the file the corner's position is its texture coordinate too.
        const double u = 1.5 * static_cast<double>(mesh.vertices[i][0]);
        const double v = 0.5 * static_cast<double>(mesh.vertices[i][1]);
        EXPECT_NEAR(mesh.uvs[i][0], std::cos(0.3) * u + std::sin(0.3) * v - 0.2, 1e-5) << i;
        EXPECT_NEAR(mesh.uvs[i][1], 1 - (std::cos(0.3) * v - std::sin(0.3) * u + 0.1), 1e-5) << i;
    }
}

// ---- limits of a scene -----------------------------------------------------------------------

TEST(Convert, SplitsAMeshAboveTheLimit) {
    constexpr int side = 257; // 66,049 vertices
    std::string text = "o big\nvn 0 0 1\n";
    const auto corner = [](int x, int y) { return std::to_string(y * side + x + 1) + "//1 "; };
    for (int i = 0; i < side * side; ++i)
        text += "v " + std::to_string(i % side) + " " + std::to_string(i / side) + " " +
                std::to_string(i % side * (i / side) % 7) + "\n";
    for (int y = 0; y + 1 < side; ++y)
        for (int x = 0; x + 1 < side; ++x)
            text += "f " + corner(x, y) + corner(x + 1, y) + corner(x + 1, y + 1) +
                    corner(x, y + 1) + "\n";
    writeFile("big.obj", text);
    const Made made = make("big.obj");
    const auto meshes = meshesOf(made.scene.root);
    std::size_t faces = 0;
    for (const RveNode *mesh : meshes) {
        EXPECT_LE(mesh->mesh.vertices.size(), 65535u);
        EXPECT_LE(mesh->mesh.faces.size(), 65535u);
        faces += mesh->mesh.faces.size();
    }
    EXPECT_EQ(faces, 2u * (side - 1) * (side - 1));
    EXPECT_GE(meshes.size(), 3u);
    EXPECT_TRUE(ravolt::encodeRve(made.scene).ok());
    ASSERT_EQ(made.report.notes().size(), 1u);
    EXPECT_EQ(made.report.notes()[0].rfind("node 'big': mesh split into ", 0), 0u);
}

TEST(Convert, WarnsOfWhatASceneCannotContain) {
    GltfData data = squares(identity);
    data.nodes = R"({"name":"outer","camera":0,"mesh":0})";
    data.members =
        R"(,"cameras":[{"type":"perspective","perspective":{"yfov":1,"znear":0.1}}],
        "animations":[{"channels":[{"sampler":0,"target":{"node":0,"path":"translation"}}],
        "samplers":[{"input":)" +
        data.scalars({0, 0}) + R"(,"output":)" + data.vectors({0, 0, 0, 1, 0, 0}) + "}]}]";
    writeFile("model.gltf", data.text());
    const Lines warnings = make("model.gltf").report.warnings();
    EXPECT_TRUE(contains(warnings, "1 camera left out")) << joined(warnings);

    writeFile("lines.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\nl 1 2\nl 2 3\n");
    EXPECT_TRUE(contains(make("lines.obj").report.warnings(),
                         "2 lines left out: only triangles are drawn"));
}

TEST(Convert, MovesNodesUpThatAreTooDeep) {
    constexpr int depth = 100;
    writeFile("deep.gltf", chainOfNodes(depth));
    const Made made = make("deep.gltf");
    EXPECT_TRUE(contains(made.report.warnings(),
                         "nodes below level 60 moved up to it: the engine tells places in the "
                         "world down to there"))
        << joined(made.report.warnings());
    // Down the tree to the mesh, its position must be the sum of all steps.
    double x = 0;
    int levels = 0;
    const std::string last = "n" + std::to_string(depth - 1);
    for (const RveNode *node = &made.scene.root; node->name != last; ++levels) {
        const auto next = std::find_if(node->children.begin(), node->children.end(),
                                       [&](const RveNode &child) { return find(child, last); });
        ASSERT_TRUE(next != node->children.end());
        node = &*next;
        x += node->position[0];
    }
    EXPECT_EQ(x, depth);
    EXPECT_EQ(levels, 60);
}

TEST(Convert, ConvertsLights) {
    const std::string dae = R"(<?xml version="1.0"?>
<COLLADA xmlns="http://www.collada.org/2005/11/COLLADASchema" version="1.4.1"><asset>
<up_axis>Y_UP</up_axis></asset>
<library_lights>
<light id="sun"><technique_common><directional><color>1 0.5 0</color></directional></technique_common></light>
<light id="lamp"><technique_common><point><color>0.2 0.2 0.2</color></point></technique_common></light>
<light id="cone"><technique_common><spot><color>2 1 0</color><falloff_angle>60</falloff_angle></spot></technique_common></light>
<light id="glow"><technique_common><ambient><color>1 1 1</color></ambient></technique_common></light>
</library_lights>
<library_geometries><geometry id="g"><mesh>
<source id="p"><float_array id="pa" count="9">0 0 0 1 0 0 0 1 0</float_array><technique_common>
<accessor source="#pa" count="3" stride="3"><param name="X" type="float"/>
<param name="Y" type="float"/><param name="Z" type="float"/></accessor></technique_common></source>
<vertices id="v"><input semantic="POSITION" source="#p"/></vertices>
<triangles count="1"><input semantic="VERTEX" source="#v" offset="0"/><p>0 1 2</p></triangles>
</mesh></geometry></library_geometries>
<library_visual_scenes><visual_scene id="s">
<node id="thing" name="thing"><instance_geometry url="#g"/></node>
<node id="sunNode" name="sunNode"><rotate>1 0 0 -90</rotate><instance_light url="#sun"/></node>
<node id="lampNode" name="lampNode"><translate>1 2 3</translate><instance_light url="#lamp"/></node>
<node id="coneNode" name="coneNode"><translate>4 5 6</translate><instance_light url="#cone"/></node>
<node id="glowNode" name="glowNode"><instance_light url="#glow"/></node>
</visual_scene></library_visual_scenes><scene><instance_visual_scene url="#s"/></scene></COLLADA>)";
    writeFile("lights.dae", dae);
    const Made made = make("lights.dae");
    const RveNode &sun = nodeOf(made, "sunNode"), &lamp = nodeOf(made, "lampNode");
    EXPECT_EQ(sun.kind, RveKind::light);
    EXPECT_EQ(sun.light.type, ravolt::RveLightType::directional);
    EXPECT_NEAR(sun.light.direction[1], -1, 1e-5); // -z turned down
    EXPECT_NEAR(sun.light.color[1], 0.5, 1e-5);
    EXPECT_EQ(lamp.light.type, ravolt::RveLightType::omni);
    EXPECT_EQ(lamp.position, (RveVector{1, 2, 3}));
    const ravolt::RveLight &cone = nodeOf(made, "coneNode").light;
    EXPECT_EQ(cone.type, ravolt::RveLightType::spot);
    EXPECT_GT(cone.cutOff, 0);
    EXPECT_LE(cone.cutOff, 90);
    EXPECT_EQ(cone.color, (RveVector{1, 0.5f, 0})); // dimmed as a whole
    EXPECT_TRUE(contains(made.report.warnings(), "light 'glowNode' left out: it is ambient light"))
        << joined(made.report.warnings());
}

// ---- files -----------------------------------------------------------------------------------

TEST(Convert, WritesNothingWhenItFails) {
    writeFile("picture.ppm", fourColors());
    writeSquare("Kd 1 1 1\nmap_Kd picture.ppm\n");
    fs::create_directory("taken");
    const std::string tooLong = std::string(300, 'x') + ".rve";
    for (const auto &[scene, line] : std::vector<std::pair<std::string, std::string>>{
             {"no/such/folder/scene.rve", "no/such/folder: no such folder"},
             {"taken", "taken: is a folder; name a file"},
             {"m.obj", "m.obj: is the model itself; name another file"},
             {tooLong, tooLong + ": cannot be written"}}) {
        EXPECT_EQ(failureOf([&] { writeScene(optionsOf("m.obj", scene)); }), line);
        EXPECT_FALSE(fs::exists("picture_d.tga")) << line;
    }
    fs::create_symlink("/dev/null", "device.rve");
    const ConvertOptions options = optionsOf("m.obj", "device.rve");
    EXPECT_EQ(failureOf([&] { make(options); }),
              "device.rve: is no regular file, so the textures cannot stand beside it");
    EXPECT_FALSE(fs::exists("picture_d.tga"));
    EXPECT_TRUE(fs::is_symlink("device.rve"));
    writeSquare(); // without textures it is written
    EXPECT_EQ(failureOf([&] { make(options); }), "");
}

TEST(Convert, NeverWritesToAFileThatItReads) {
    fs::create_directories("own");
    writeTexture("own/wood_d.tga", 1, {1, 2, 3, 255});
    writeFile("own/wood.ppm", fourColors());
    writeFile("own/m.mtl", "newmtl a\nmap_Kd wood.ppm\nnewmtl b\nmap_Kd wood_d.tga\n");
    writeFile("own/m.obj", squareObj("m.mtl", "a") + "usemtl b\nf 1/1/1 2/2/1 3/3/1\n");
    const auto before = fs::last_write_time("own/wood_d.tga");
    const std::string former = readText("own/wood_d.tga");
    const auto makeAs = [](const std::string &scene) {
        return make(optionsOf("own/m.obj", scene)).report.warnings();
    };
    const Lines warnings = makeAs("own/scene.rve");
    EXPECT_EQ(readText("own/wood_d.tga"), former);
    EXPECT_EQ(fs::last_write_time("own/wood_d.tga"), before);
    EXPECT_TRUE(fs::exists("own/wood_2_d.tga") && fs::exists("own/wood_d_d.tga"));
    EXPECT_TRUE(contains(warnings, "texture 'wood.ppm' is written to 'wood_2_d.tga', as the model "
                                   "reads 'wood_d.tga'"))
        << joined(warnings);

    // Through a link it is the same file.
    fs::create_hard_link("own/wood.ppm", "own/linked.rve");
    fs::create_symlink("m.mtl", "own/library.rve");
    for (const std::string name :
         {"own/wood.ppm", "own/m.mtl", "own/linked.rve", "own/library.rve"})
        EXPECT_EQ(failureOf([&] { makeAs(name); }),
                  name + ": is read by this conversion; name another file");

    // Nor does a texture get the scene's own name.
    fs::remove("own/wood_2_d.tga");
    makeAs("own/wood_2_d.tga");
    EXPECT_TRUE(fs::exists("own/wood_3_d.tga"));
    EXPECT_FALSE(fs::exists("own/wood_2_d.tga")) << "which is the scene's";
}

TEST(Report, HasEachLineOnceAndNoControlCharacters) {
    Report report;
    for (const char *line : {"a", "b", "a", "a\x1b[31m\nb"})
        report.warn(line);
    EXPECT_EQ(report.warnings(), (Lines{"a", "b", "a?[31m?b"}));
}

} // namespace
