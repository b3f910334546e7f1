#include "tests/tools/support.h"
#include "tools/writers/tgaWriter.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <set>

namespace {

using namespace tool_test;
using ravolt::RveKind;
using ravolt::RveNode;

// A model with a square under a node of the given matrix (column by column) and a child node moved
// by (1, 1, 1) that holds the square a second time.
std::string gltf(const std::string &matrix, const std::string &more = "") {
    return R"({"asset":{"version":"2.0"},"scene":0,"scenes":[{"nodes":[0]}],"nodes":[
        {"name":"outer","matrix":[)" +
           matrix + R"(],"mesh":0,"children":[1]},
        {"name":"inner","translation":[1,1,1],"mesh":0}],
        "meshes":[{"primitives":[{"attributes":{"POSITION":0},"indices":1}]}],
        "accessors":[{"bufferView":0,"componentType":5126,"count":4,"type":"VEC3",
          "min":[0,0,0],"max":[1,1,0]},
          {"bufferView":1,"componentType":5123,"count":6,"type":"SCALAR"}],
        "bufferViews":[{"buffer":0,"byteLength":48},{"buffer":0,"byteOffset":48,"byteLength":12}],
        "buffers":[{"byteLength":60,"uri":"square.bin"}])" +
           more + "}";
}

// Corners (0,0,0) (1,0,0) (1,1,0) (0,1,0) and two triangles.
std::string squareBytes() {
    const float points[] = {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0};
    const unsigned short indices[] = {0, 1, 2, 0, 2, 3};
    return std::string(reinterpret_cast<const char *>(points), sizeof points) +
           std::string(reinterpret_cast<const char *>(indices), sizeof indices);
}

std::string replaced(std::string text, const std::string &from, const std::string &to) {
    const std::size_t at = text.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    return at == std::string::npos ? text : text.replace(at, from.size(), to);
}

Made makeGltf(const std::string &matrix, const std::string &more = "") {
    writeFile("square.bin", squareBytes());
    writeFile("model.gltf", gltf(matrix, more));
    return make("model.gltf");
}

bool hasVertex(const RveNode &node, float x, float y, float z) {
    for (const auto &v : node.mesh.vertices)
        if (std::abs(v[0] - x) + std::abs(v[1] - y) + std::abs(v[2] - z) < 1e-5f)
            return true;
    return false;
}

Vector frontOf(const RveNode &node) {
    const auto at = [&](int corner) {
        const auto &v = node.mesh.vertices[node.mesh.faces[0][static_cast<std::size_t>(corner)]];
        return Vector{v[0], v[1], v[2]};
    };
    return unit(cross(at(1) - at(0), at(2) - at(0)));
}

TEST(Convert, KeepsTheTreeAndItsNames) {
    const Made made = makeGltf("1,0,0,0, 0,1,0,0, 0,0,1,0, 5,6,7,1");
    EXPECT_EQ(made.scene.root.name, "[root]");
    EXPECT_EQ(made.scene.root.kind, RveKind::mesh);
    EXPECT_EQ(made.scene.root.mesh.material, "[none]");
    const RveNode *outer = find(made.scene.root, "outer");
    ASSERT_TRUE(outer);
    EXPECT_EQ(outer->position, (ravolt::RveVector{5, 6, 7}));
    ASSERT_EQ(outer->children.size(), 1u);
    EXPECT_EQ(outer->children[0].name, "inner");
    EXPECT_EQ(outer->children[0].position, (ravolt::RveVector{1, 1, 1}));
}

TEST(Convert, BakesScaleIntoVerticesAndIntoTheChildrensPlaces) {
    const Made made = makeGltf("2,0,0,0, 0,3,0,0, 0,0,4,0, 0,0,0,1");
    const RveNode *outer = find(made.scene.root, "outer");
    ASSERT_TRUE(outer);
    EXPECT_TRUE(hasVertex(*outer, 2, 3, 0));
    const RveNode *inner = find(*outer, "inner");
    ASSERT_TRUE(inner);
    EXPECT_EQ(inner->position, (ravolt::RveVector{2, 3, 4}));
    EXPECT_TRUE(hasVertex(*inner, 2, 3, 0));
    EXPECT_FLOAT_EQ(outer->mesh.radius, std::sqrt(13.0f));
    EXPECT_EQ(outer->mesh.maximum, (ravolt::RveVector{2, 3, 0}));
}

TEST(Convert, TurnsMirroredFacesRound) {
    const Made plain = makeGltf("1,0,0,0, 0,1,0,0, 0,0,1,0, 0,0,0,1");
    EXPECT_NEAR(frontOf(*find(plain.scene.root, "outer")).z, 1, 1e-6);
    const Made mirrored = makeGltf("-1,0,0,0, 0,1,0,0, 0,0,1,0, 0,0,0,1");
    for (const char *name : {"outer", "inner"}) {
        const RveNode *node = find(mirrored.scene.root, name);
        EXPECT_TRUE(hasVertex(*node, -1, 1, 0)) << name;
        EXPECT_NEAR(frontOf(*node).z, 1, 1e-6) << name;
        EXPECT_NEAR(node->mesh.normals[0][2], 1, 1e-6) << name;
        EXPECT_EQ(node->rotation, (ravolt::RveVector{0, 0, 0})) << name;
    }
}

TEST(Convert, StatesRotationsInDegrees) {
    const Made made = makeGltf("0,1,0,0, -1,0,0,0, 0,0,1,0, 0,0,0,1");
    const RveNode *outer = find(made.scene.root, "outer");
    EXPECT_EQ(outer->rotation, (ravolt::RveVector{0, 0, 90}));
    EXPECT_TRUE(hasVertex(*outer, 1, 1, 0));
}

TEST(Convert, AppliesTheScaleAsked) {
    makeGltf("1,0,0,0, 0,1,0,0, 0,0,1,0, 5,6,7,1");
    ConvertOptions options;
    options.model = "model.gltf";
    options.scene = "scene.rve";
    options.scale = 0.5;
    const Made made = make(options);
    const RveNode *outer = find(made.scene.root, "outer");
    EXPECT_EQ(outer->position, (ravolt::RveVector{2.5f, 3, 3.5f}));
    EXPECT_TRUE(hasVertex(*outer, 0.5f, 0.5f, 0));
    options.scale = 0;
    EXPECT_EQ(failureOf([&] { make(options); }), "the scale must be a number above 0");
}

TEST(Convert, LeavesOutATransformThatIsNone) {
    const Made made = makeGltf("1e39,0,0,0, 0,1,0,0, 0,0,1,0, 0,0,0,1");
    for (const RveNode *mesh : meshesOf(made.scene.root))
        for (const auto &v : mesh->mesh.vertices)
            for (float value : v)
                EXPECT_TRUE(std::isfinite(value));
}

TEST(Convert, MakesOneMeshOfEachMaterial) {
    writeFile("two.mtl", "newmtl red\nKd 1 0 0\nnewmtl blue\nKd 0 0 1\nnewmtl idle\nKd 1 1 1\n");
    writeFile("two.obj", "mtllib two.mtl\no thing\nv 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\n"
                         "vn 0 0 1\nusemtl red\nf 1//1 2//1 3//1\nusemtl blue\nf 1//1 3//1 4//1\n"
                         "usemtl red\nf 2//1 3//1 4//1\n");
    const Made made = make("two.obj");
    const RveNode *thing = find(made.scene.root, "thing");
    ASSERT_TRUE(thing);
    EXPECT_EQ(thing->kind, RveKind::node); // it has no rotation
    ASSERT_EQ(thing->children.size(), 2u);
    EXPECT_EQ(thing->children[0].mesh.material, "red");
    EXPECT_EQ(thing->children[0].mesh.faces.size(), 2u);
    EXPECT_EQ(thing->children[1].mesh.material, "blue");
    EXPECT_EQ(made.scene.materials.size(), 2u); // the idle one is left out
}

TEST(Convert, GivesMaterialsNamesOfTheirOwn) {
    const Made made =
        makeGltf("1,0,0,0, 0,1,0,0, 0,0,1,0, 0,0,0,1", R"(,"materials":[{"name":"[none]"}])");
    std::set<std::string> names;
    for (const auto &material : made.scene.materials) {
        EXPECT_TRUE(names.insert(material.name).second) << material.name;
        EXPECT_NE(material.name, "[none]");
        EXPECT_NE(material.name, "");
    }

    writeFile("same.mtl", "newmtl a\nKd 1 0 0\n");
    writeFile("same.obj", squareObj("same.mtl", "a"));
    ConvertOptions options;
    options.model = "same.obj";
    options.scene = "scene.rve";
    options.prefix = "house/";
    EXPECT_EQ(make(options).scene.materials[0].name, "house/a");
}

TEST(Convert, CarriesColorsOpacityAndShininess) {
    writeFile("m.mtl", "newmtl a\nKa 0.1 0.2 0.3\nKd 0.4 0.5 0.6\nKs 0.7 0.8 0.9\nNs 20\nd 0.25\n"
                       "Ke 0.1 0 0\n");
    writeFile("m.obj", squareObj("m.mtl", "a"));
    const ravolt::RveMaterial material = make("m.obj").scene.materials.at(0);
    EXPECT_EQ(material.ambient, (ravolt::RveColor{0.1f, 0.2f, 0.3f, 1}));
    EXPECT_EQ(material.diffuse, (ravolt::RveColor{0.4f, 0.5f, 0.6f, 1}));
    EXPECT_EQ(material.specular, (ravolt::RveColor{0.7f, 0.8f, 0.9f, 1}));
    EXPECT_EQ(material.selfIllumination, (ravolt::RveColor{0.1f, 0, 0, 1}));
    EXPECT_EQ(material.transparency, 0.25f);
    EXPECT_GT(material.shininess, 1);
    EXPECT_LE(material.shininess, 128);
    EXPECT_EQ(material.texture, "[none]");
}

TEST(Convert, KeepsAnEmissionThatIsBrighterThanWhite) {
    writeFile("m.mtl", "newmtl a\nKd 1 1 1\nKe 3 2 100\n");
    writeFile("m.obj", squareObj("m.mtl", "a"));
    EXPECT_EQ(make("m.obj").scene.materials.at(0).selfIllumination,
              (ravolt::RveColor{3, 2, 16, 1}));
}

// Such a node's place used to be turned and scaled with it.
TEST(Convert, PutsNodesOfGltf1WhereTheyAre) {
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
    const float corners[9] = {0, 0, 0, 1, 0, 0, 0, 1, 0};
    const unsigned short indices[4] = {0, 1, 2, 0};
    writeFile("m.bin", std::string(reinterpret_cast<const char *>(corners), sizeof corners) +
                           std::string(reinterpret_cast<const char *>(indices), sizeof indices));
    writeFile("m.gltf", text);
    const Made made = make("m.gltf");
    const ravolt::RveNode *turned = find(made.scene.root, "turned");
    const ravolt::RveNode *stated = find(made.scene.root, "stated");
    ASSERT_TRUE(turned && stated);
    EXPECT_EQ(turned->position, (ravolt::RveVector{3, 10, -0.5f}));
    EXPECT_EQ(stated->position, (ravolt::RveVector{4, 5, 6}));
}

TEST(Convert, TakesAnOpacityOfZeroAsOpaqueAndSaysSo) {
    writeFile("m.mtl", "newmtl a\nKd 1 1 1\nd 0\n");
    writeFile("m.obj", squareObj("m.mtl", "a"));
    const Made made = make("m.obj");
    EXPECT_EQ(made.scene.materials.at(0).transparency, 1);
    EXPECT_EQ(made.report.warnings(),
              (std::vector<std::string>{"material 'a': opacity 0 taken as opaque"}));
}

TEST(Convert, ShowsLinearColorsAsTheyLook) {
    writeFile("square.bin", squareBytes());
    std::string text = gltf(
        "1,0,0,0, 0,1,0,0, 0,0,1,0, 0,0,0,1",
        R"(,"materials":[{"name":"a","pbrMetallicRoughness":{"baseColorFactor":[0.2140411,0,1,1]}}])");
    text = replaced(text, "\"indices\":1", "\"indices\":1,\"material\":0");
    writeFile("model.gltf", text);
    const ravolt::RveMaterial material = make("model.gltf").scene.materials.at(0);
    EXPECT_NEAR(material.diffuse[0], 0.5f, 1e-3);
    EXPECT_EQ(material.diffuse[1], 0);
    EXPECT_FLOAT_EQ(material.diffuse[2], 1);
}

TEST(Convert, WritesTexturesBesideTheScene) {
    writeFile("picture.ppm", fourColors());
    writeFile("m.mtl", "newmtl a\nKd 1 1 1\nmap_Kd picture.ppm\n");
    writeFile("m.obj", squareObj("m.mtl", "a"));
    fs::create_directory("out");
    ConvertOptions options;
    options.model = "m.obj";
    options.scene = "out/scene.rve";
    const Made made = make(options);
    EXPECT_EQ(made.scene.materials.at(0).texture, "picture_d.tga");
    EXPECT_TRUE(fs::exists("out/picture_d.tga"));
    EXPECT_TRUE(made.report.warnings().empty()) << joined(made.report.warnings());
    EXPECT_EQ(meshesOf(made.scene.root).at(0)->mesh.uvs.size(), 4u);
}

TEST(Convert, GoesOnWithoutATextureThatIsMissingOrBroken) {
    writeFile("broken.png", "this is no picture");
    writeFile("m.mtl", "newmtl a\nKd 0.5 0.25 1\nmap_Kd missing.png\n"
                       "newmtl b\nKd 0 1 0\nmap_Kd broken.png\n");
    for (const auto &[name, line] :
         {std::pair<std::string, std::string>{
              "a", "texture 'missing.png' not found: the material's colours are used"},
          {"b", "texture 'broken.png' is in no picture format that is known here: the material's "
                "colours are used"}}) {
        writeFile("m.obj", squareObj("m.mtl", name));
        const Made made = make("m.obj");
        EXPECT_EQ(made.report.warnings(), std::vector<std::string>{line});
        ASSERT_EQ(made.scene.materials.size(), 1u);
        EXPECT_EQ(made.scene.materials[0].texture, "[none]");
        EXPECT_EQ(meshesOf(made.scene.root).size(), 1u);
    }
}

TEST(Convert, KeepsTexturesOfTheSameNameApart) {
    writeFile("x/wall.ppm", fourColors());
    writeFile("y/Wall.ppm", fourColors());
    writeFile("m.mtl", "newmtl a\nKd 1 1 1\nmap_Kd x/wall.ppm\nnewmtl b\nKd 1 1 1\n"
                       "map_Kd y/Wall.ppm\n");
    writeFile("m.obj", "mtllib m.mtl\nv 0 0 0\nv 1 0 0\nv 1 1 0\nvt 0 0\nvn 0 0 1\nusemtl a\n"
                       "f 1/1/1 2/1/1 3/1/1\nusemtl b\nf 1/1/1 3/1/1 2/1/1\n");
    const Made made = make("m.obj");
    ASSERT_EQ(made.scene.materials.size(), 2u);
    EXPECT_EQ(made.scene.materials[0].texture, "wall_d.tga");
    EXPECT_EQ(made.scene.materials[1].texture, "Wall_2_d.tga");
}

TEST(Convert, ResizesTexturesToASquareOfAPowerOfTwo) {
    std::string wide = "P6 3 1 255\n";
    wide += std::string(9, '\x7f');
    writeFile("wide.ppm", wide);
    writeFile("m.mtl", "newmtl a\nKd 1 1 1\nmap_Kd wide.ppm\n");
    writeFile("m.obj", squareObj("m.mtl", "a"));
    const Made made = make("m.obj");
    EXPECT_EQ(made.report.notes(),
              (std::vector<std::string>{"texture 'wide.ppm' resized from 3x1 to 4x4"}));
    ConvertOptions options;
    options.model = "m.obj";
    options.scene = "scene.rve";
    options.largestTexture = 2;
    EXPECT_EQ(make(options).report.warnings(),
              (std::vector<std::string>{"texture 'wide.ppm' resized from 3x1 to 2x2: larger "
                                        "textures are not allowed"}));
}

TEST(Convert, WritesNormalMapsOnRequestOnly) {
    writeFile("square.bin", squareBytes());
    writeFile("c.ppm", fourColors());
    writeFile("n.ppm", fourColors());
    std::string text =
        gltf("1,0,0,0, 0,1,0,0, 0,0,1,0, 0,0,0,1",
             R"(,"materials":[{"name":"a","pbrMetallicRoughness":{"baseColorTexture":{"index":0}},
            "normalTexture":{"index":1}}],"textures":[{"source":0},{"source":1}],
            "images":[{"uri":"c.ppm"},{"uri":"n.ppm"}])");
    text = replaced(text, "\"indices\":1", "\"indices\":1,\"material\":0");
    writeFile("model.gltf", text);
    ConvertOptions options;
    options.model = "model.gltf";
    options.scene = "scene.rve";
    make(options);
    EXPECT_TRUE(fs::exists("c_d.tga"));
    EXPECT_FALSE(fs::exists("c_n.tga"));
    options.normalMaps = true;
    make(options);
    EXPECT_TRUE(fs::exists("c_n.tga"));
}

// A TGA of one colour, as a model's own picture.
void writeTexture(const std::string &file, std::vector<unsigned char> rgba) {
    ravolt::TgaPicture picture;
    picture.width = picture.height = 1;
    picture.channels = 4;
    picture.pixels = rgba.data();
    ASSERT_TRUE(ravolt::writeTga(file, picture));
}

// Bits of a pixel, as the header of a TGA file states them.
int bitsOf(const std::string &file) {
    std::ifstream stream(file, std::ios::binary);
    char header[18] = {};
    stream.read(header, sizeof header);
    return header[16];
}

Made makeBlended(const std::string &mode, unsigned char alpha) {
    writeFile("square.bin", squareBytes());
    writeTexture("c.tga", {1, 2, 3, alpha});
    std::string text = gltf("1,0,0,0, 0,1,0,0, 0,0,1,0, 0,0,0,1",
                            R"(,"materials":[{"name":"a","alphaMode":")" + mode +
                                R"(","pbrMetallicRoughness":{"baseColorTexture":{"index":0}}}],
            "textures":[{"source":0}],"images":[{"uri":"c.tga"}])");
    writeFile("model.gltf", replaced(text, "\"indices\":1", "\"indices\":1,\"material\":0"));
    return make("model.gltf");
}

TEST(Convert, BlendsWhereTheModelWantsItsTexturesAlpha) {
    EXPECT_LT(makeBlended("BLEND", 100).scene.materials.at(0).transparency, 1);
    EXPECT_EQ(bitsOf("c_d.tga"), 32);
    EXPECT_LT(makeBlended("MASK", 100).scene.materials.at(0).transparency, 1);
    EXPECT_EQ(makeBlended("OPAQUE", 100).scene.materials.at(0).transparency, 1);
    EXPECT_EQ(bitsOf("c_d.tga"), 24);
    EXPECT_EQ(makeBlended("BLEND", 255).scene.materials.at(0).transparency, 1);
}

// Of a format that has no word on the alpha of textures.
Made makeSilent(const std::string &more = "", AlphaUse alpha = AlphaUse::picture) {
    writeFile("m.mtl", "newmtl a\nKd 1 1 1\nmap_Kd c.tga\n" + more);
    writeFile("m.obj", squareObj("m.mtl", "a"));
    ConvertOptions options;
    options.model = "m.obj";
    options.scene = "scene.rve";
    options.alpha = alpha;
    return make(options);
}

float opacityOf(const Made &made) { return made.scene.materials.at(0).transparency; }

TEST(Convert, LooksAtThePixelsWhereAFormatIsSilentOnAlpha) {
    writeAlphas("c.tga", {255, 255, 0, 255});
    const Made cut = makeSilent();
    EXPECT_LT(opacityOf(cut), 1);
    EXPECT_EQ(bitsOf("c_d.tga"), 32);
    EXPECT_EQ(cut.report.notes(),
              std::vector<std::string>{"texture 'c.tga': its alpha cuts holes"});
    writeAlphas("c.tga", {255, 100, 0, 255});
    const Made blended = makeSilent();
    EXPECT_LT(opacityOf(blended), 1);
    EXPECT_EQ(blended.report.notes(),
              std::vector<std::string>{"texture 'c.tga': its alpha blends"});
    for (unsigned char same : {0, 255}) {
        writeAlphas("c.tga", {same, same, same, same});
        EXPECT_EQ(opacityOf(makeSilent()), 1);
        EXPECT_EQ(bitsOf("c_d.tga"), 24);
    }
    writeAlphas("c.tga", {255, 255, 0, 255});
    EXPECT_EQ(opacityOf(makeSilent("d 0.5\n")), 0.5f); // said
    EXPECT_EQ(bitsOf("c_d.tga"), 24);
}

TEST(Convert, UsesAlphaAsTheCallerSays) {
    writeAlphas("c.tga", {255, 120, 130, 0});
    EXPECT_EQ(opacityOf(makeSilent("", AlphaUse::opaque)), 1);
    EXPECT_EQ(bitsOf("c_d.tga"), 24);
    EXPECT_LT(opacityOf(makeSilent("", AlphaUse::cutout)), 1);
    EXPECT_EQ(alphasIn("c_d.tga"), (std::vector<unsigned char>{0, 0, 255, 255}));
    EXPECT_LT(opacityOf(makeSilent("", AlphaUse::blended)), 1);
    EXPECT_EQ(alphasIn("c_d.tga"), (std::vector<unsigned char>{0, 120, 130, 255}));
    writeAlphas("c.tga", {255, 255, 255, 255});
    EXPECT_EQ(opacityOf(makeSilent("", AlphaUse::blended)), 1); // nothing to blend
}

TEST(Convert, CutsOutWhereAMaterialMasks) {
    makeBlended("MASK", 100);
    EXPECT_EQ(alphasIn("c_d.tga"), std::vector<unsigned char>{0});
    EXPECT_EQ(opacityOf(makeBlended("MASK", 130)), 1);
    EXPECT_EQ(bitsOf("c_d.tga"), 24);
}

TEST(Convert, PutsAnOpacityMapIntoTheTexture) {
    writeTexture("c.tga", {255, 255, 255, 255});
    writeTexture("o.tga", {0, 0, 0, 255});
    writeFile("m.mtl", "newmtl a\nKd 1 1 1\nmap_Kd c.tga\nmap_d o.tga\n");
    writeFile("m.obj", squareObj("m.mtl", "a"));
    EXPECT_LT(make("m.obj").scene.materials.at(0).transparency, 1);
    EXPECT_EQ(bitsOf("c_d.tga"), 32);
}

TEST(Convert, TakesEmbeddedTextures) {
    writeFile("square.bin", squareBytes());
    // "P6 1 1 255\n" and one pixel, in base 64
    std::string text =
        gltf("1,0,0,0, 0,1,0,0, 0,0,1,0, 0,0,0,1",
             R"(,"materials":[{"pbrMetallicRoughness":{"baseColorTexture":{"index":0}}}],
            "textures":[{"source":0}],"images":[{"uri":"data:image/png;base64,UDYgMSAxIDI1NQpBQkM="}])");
    writeFile("model.gltf", replaced(text, "\"indices\":1", "\"indices\":1,\"material\":0"));
    const Made made = make("model.gltf");
    EXPECT_TRUE(made.report.warnings().empty()) << joined(made.report.warnings());
    EXPECT_EQ(made.scene.materials.at(0).texture, "texture0_d.tga");
    EXPECT_TRUE(fs::exists("texture0_d.tga"));
}

TEST(Convert, SaysThatATextureIsNotRepeatedInTheModel) {
    writeFile("square.bin", squareBytes());
    writeFile("c.ppm", fourColors());
    std::string text = gltf("1,0,0,0, 0,1,0,0, 0,0,1,0, 0,0,0,1",
                            R"(,"materials":[{"name":"a","pbrMetallicRoughness":{"baseColorTexture":
            {"index":0}}}],"samplers":[{"wrapS":33071,"wrapT":33071}],
            "textures":[{"source":0,"sampler":0}],"images":[{"uri":"c.ppm"}])");
    writeFile("model.gltf", replaced(text, "\"indices\":1", "\"indices\":1,\"material\":0"));
    EXPECT_EQ(make("model.gltf").report.warnings(),
              (std::vector<std::string>{
                  "material 'a': its texture is clamped or mirrored, the scene repeats it"}));
}

TEST(Convert, SplitsAMeshAboveTheLimit) {
    std::string text = "o big\n";
    constexpr int side = 300;
    for (int y = 0; y < side; ++y)
        for (int x = 0; x < side; ++x)
            text += "v " + std::to_string(x) + " " + std::to_string(y) + " " +
                    std::to_string((x * y) % 7) + "\n";
    text += "vn 0 0 1\n";
    for (int y = 0; y + 1 < side; ++y)
        for (int x = 0; x + 1 < side; ++x) {
            const auto corner = [&](int dx, int dy) {
                return std::to_string((y + dy) * side + x + dx + 1) + "//1 ";
            };
            text += "f " + corner(0, 0) + corner(1, 0) + corner(1, 1) + corner(0, 1) + "\n";
        }
    writeFile("big.obj", text);
    const Made made = make("big.obj");
    const auto meshes = meshesOf(made.scene.root);
    std::size_t faces = 0;
    for (const RveNode *mesh : meshes) {
        EXPECT_LE(mesh->mesh.vertices.size(), 65535u);
        EXPECT_LE(mesh->mesh.faces.size(), 65535u);
        faces += mesh->mesh.faces.size();
    }
    EXPECT_EQ(faces, 2u * 299 * 299);
    EXPECT_GE(meshes.size(), 3u);
    EXPECT_TRUE(ravolt::encodeRve(made.scene).ok());
    ASSERT_EQ(made.report.notes().size(), 1u);
    EXPECT_EQ(made.report.notes()[0].rfind("node 'big': mesh split into ", 0), 0u);
}

TEST(Convert, NamesWhatASceneCannotHold) {
    writeFile("square.bin", squareBytes());
    const std::string more =
        R"(,"cameras":[{"type":"perspective","perspective":{"yfov":1,"znear":0.1}}],
        "animations":[{"channels":[{"sampler":0,"target":{"node":0,"path":"translation"}}],
        "samplers":[{"input":2,"output":3}]}])";
    std::string text = gltf("1,0,0,0, 0,1,0,0, 0,0,1,0, 0,0,0,1", more);
    text = replaced(text, "\"matrix\":[1,0,0,0, 0,1,0,0, 0,0,1,0, 0,0,0,1]", "\"camera\":0");
    text = replaced(text, "\"count\":6,\"type\":\"SCALAR\"}", R"("count":6,"type":"SCALAR"},
        {"bufferView":0,"componentType":5126,"count":2,"type":"SCALAR"},
        {"bufferView":0,"componentType":5126,"count":2,"type":"VEC3"})");
    writeFile("model.gltf", text);
    const Made made = make("model.gltf");
    EXPECT_TRUE(contains(made.report.warnings(), "1 camera left out"))
        << joined(made.report.warnings());

    writeFile("lines.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\nl 1 2\nl 2 3\n");
    EXPECT_TRUE(contains(make("lines.obj").report.warnings(),
                         "2 lines left out: only triangles are drawn"));
}

TEST(Convert, MovesNodesUpThatLieTooDeep) {
    std::string nodes;
    constexpr int depth = 100;
    for (int i = 0; i < depth; ++i)
        nodes +=
            (i ? ",{\"name\":\"n" : "{\"name\":\"n") + std::to_string(i) +
            "\",\"translation\":[1,0,0]" +
            (i + 1 < depth ? ",\"children\":[" + std::to_string(i + 1) + "]}" : ",\"mesh\":0}");
    std::string text = gltf("1");
    const std::size_t from = text.find("\"nodes\":[\n"), to = text.find("\"meshes\"");
    text.replace(from, to - from, "\"nodes\":[" + nodes + "],");
    writeFile("square.bin", squareBytes());
    writeFile("deep.gltf", text);
    const Made made = make("deep.gltf");
    EXPECT_TRUE(contains(made.report.warnings(),
                         "nodes below level 60 moved up to it: the engine tells places in the "
                         "world down to there"))
        << joined(made.report.warnings());
    // Down the tree to the mesh, its place must be the sum of all steps.
    double place = 0;
    int levels = 0;
    const RveNode *node = &made.scene.root;
    const std::string last = "n" + std::to_string(depth - 1);
    while (node->name != last) {
        const RveNode *next = nullptr;
        for (const RveNode &child : node->children)
            if (find(child, last))
                next = &child;
        ASSERT_TRUE(next);
        node = next;
        place += node->position[0];
        ++levels;
    }
    EXPECT_EQ(place, depth);
    EXPECT_EQ(levels, 60);
}

// The extension states: turned and scaled about the picture's upper left corner, then moved, with
// rows counted downwards.
TEST(Convert, AppliesTheTextureTransformsOfGltf2) {
    const float places[] = {0, 0, 1, 0, 1, 1, 0, 1};
    writeFile("square.bin",
              squareBytes() + std::string(reinterpret_cast<const char *>(places), sizeof places));
    writeFile("c.ppm", fourColors());
    std::string text = gltf("1,0,0,0, 0,1,0,0, 0,0,1,0, 0,0,0,1",
                            R"(,"extensionsUsed":["KHR_texture_transform"],
            "materials":[{"pbrMetallicRoughness":{"baseColorTexture":{"index":0,"extensions":{
              "KHR_texture_transform":{"offset":[-0.2,0.1],"rotation":0.3,"scale":[1.5,0.5]}}}}}],
            "textures":[{"source":0}],"images":[{"uri":"c.ppm"}])");
    text = replaced(text, "\"POSITION\":0}", "\"POSITION\":0,\"TEXCOORD_0\":2},\"material\":0");
    text = replaced(text, "\"type\":\"SCALAR\"}", R"("type":"SCALAR"},
          {"bufferView":2,"componentType":5126,"count":4,"type":"VEC2"})");
    text = replaced(text, "\"byteLength\":12}", R"("byteLength":12},
          {"buffer":0,"byteOffset":60,"byteLength":32})");
    text = replaced(text, "\"byteLength\":60,", "\"byteLength\":92,");
    writeFile("model.gltf", text);
    const Made made = make("model.gltf");
    const RveNode *outer = find(made.scene.root, "outer");
    ASSERT_TRUE(outer);
    ASSERT_EQ(outer->mesh.uvs.size(), 4u);
    for (std::size_t i = 0; i < 4; ++i) {
        const auto &corner = outer->mesh.vertices[i]; // its own texture place in the file
        const double u = 1.5 * static_cast<double>(corner[0]);
        const double v = 0.5 * static_cast<double>(corner[1]);
        EXPECT_NEAR(outer->mesh.uvs[i][0], std::cos(0.3) * u + std::sin(0.3) * v - 0.2, 1e-5) << i;
        EXPECT_NEAR(outer->mesh.uvs[i][1], 1 - (std::cos(0.3) * v - std::sin(0.3) * u + 0.1), 1e-5)
            << i;
    }
}

TEST(Convert, WritesNoTexturesBesideWhatIsNoRegularFile) {
    writeFile("picture.ppm", fourColors());
    writeFile("m.mtl", "newmtl a\nKd 1 1 1\nmap_Kd picture.ppm\n");
    writeFile("m.obj", squareObj("m.mtl", "a"));
    fs::create_symlink("/dev/null", "device.rve");
    ConvertOptions options;
    options.model = "m.obj";
    options.scene = "device.rve";
    EXPECT_EQ(failureOf([&] { make(options); }),
              "device.rve: is no regular file, so the textures cannot stand beside it");
    EXPECT_FALSE(fs::exists("picture_d.tga"));
    EXPECT_TRUE(fs::is_symlink("device.rve"));
    // Without textures it is taken.
    writeFile("m.mtl", "newmtl a\nKd 1 1 1\n");
    EXPECT_EQ(failureOf([&] { make(options); }), "");
}

TEST(Convert, CarriesLights) {
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
<accessor source="#pa" count="3" stride="3"><param name="X" type="float"/><param name="Y" type="float"/><param name="Z" type="float"/></accessor></technique_common></source>
<vertices id="v"><input semantic="POSITION" source="#p"/></vertices>
<triangles count="1"><input semantic="VERTEX" source="#v" offset="0"/><p>0 1 2</p></triangles></mesh></geometry></library_geometries>
<library_visual_scenes><visual_scene id="s">
<node id="thing" name="thing"><instance_geometry url="#g"/></node>
<node id="sunNode" name="sunNode"><rotate>1 0 0 -90</rotate><instance_light url="#sun"/></node>
<node id="lampNode" name="lampNode"><translate>1 2 3</translate><instance_light url="#lamp"/></node>
<node id="coneNode" name="coneNode"><translate>4 5 6</translate><instance_light url="#cone"/></node>
<node id="glowNode" name="glowNode"><instance_light url="#glow"/></node>
</visual_scene></library_visual_scenes><scene><instance_visual_scene url="#s"/></scene></COLLADA>)";
    writeFile("lights.dae", dae);
    const Made made = make("lights.dae");
    const RveNode *sun = find(made.scene.root, "sunNode");
    ASSERT_TRUE(sun);
    EXPECT_EQ(sun->kind, RveKind::light);
    EXPECT_EQ(sun->light.type, ravolt::RveLightType::directional);
    EXPECT_NEAR(sun->light.direction[1], -1, 1e-5); // -z turned down
    EXPECT_NEAR(sun->light.color[1], 0.5, 1e-5);

    const RveNode *lamp = find(made.scene.root, "lampNode");
    ASSERT_TRUE(lamp);
    EXPECT_EQ(lamp->light.type, ravolt::RveLightType::omni);
    EXPECT_EQ(lamp->position, (ravolt::RveVector{1, 2, 3}));

    const RveNode *cone = find(made.scene.root, "coneNode");
    ASSERT_TRUE(cone);
    EXPECT_EQ(cone->light.type, ravolt::RveLightType::spot);
    EXPECT_GT(cone->light.cutOff, 0);
    EXPECT_LE(cone->light.cutOff, 90);
    EXPECT_EQ(cone->light.color, (ravolt::RveVector{1, 0.5f, 0})); // dimmed as a whole
    EXPECT_TRUE(contains(made.report.warnings(), "light 'glowNode' left out: it is ambient light"))
        << joined(made.report.warnings());
}

TEST(Convert, LeavesNothingBehindWhenItFails) {
    writeFile("picture.ppm", fourColors());
    writeFile("m.mtl", "newmtl a\nKd 1 1 1\nmap_Kd picture.ppm\n");
    writeFile("m.obj", squareObj("m.mtl", "a"));
    ConvertOptions options;
    options.model = "m.obj";
    Progress silent(false);
    Report report;
    options.scene = "no/such/folder/scene.rve";
    EXPECT_EQ(failureOf([&] { convertModel(options, report, silent); }),
              "no/such/folder: no such folder");
    fs::create_directory("taken");
    options.scene = "taken";
    EXPECT_EQ(failureOf([&] { convertModel(options, report, silent); }),
              "taken: is a folder; name a file");
    options.scene = "m.obj";
    EXPECT_EQ(failureOf([&] { convertModel(options, report, silent); }),
              "m.obj: is the model itself; name another file");
    // A scene file that cannot be written takes its textures with it.
    options.scene = std::string(300, 'x') + ".rve";
    EXPECT_EQ(failureOf([&] { convertModel(options, report, silent); }),
              options.scene.string() + ": cannot be written");
    EXPECT_FALSE(fs::exists("picture_d.tga"));
}

TEST(Report, SaysEachLineOnce) {
    Report report;
    report.warn("a");
    report.warn("b");
    report.warn("a");
    EXPECT_EQ(report.warnings(), (std::vector<std::string>{"a", "b"}));
}

TEST(Report, HasNoControlCharacters) {
    Report report;
    report.warn("a\x1b[31m\nb");
    EXPECT_EQ(report.warnings(), std::vector<std::string>{"a?[31m?b"});
}

TEST(Convert, NeverWritesToAFileThatItReads) {
    fs::create_directories("own");
    ravolt::TgaPicture picture;
    const unsigned char pixel[] = {1, 2, 3};
    picture.width = picture.height = 1;
    picture.channels = 3;
    picture.pixels = pixel;
    ASSERT_TRUE(ravolt::writeTga("own/wood_d.tga", picture));
    writeFile("own/wood.ppm", fourColors());
    writeFile("own/m.mtl", "newmtl a\nmap_Kd wood.ppm\nnewmtl b\nmap_Kd wood_d.tga\n");
    std::string model = squareObj("m.mtl", "a");
    model += "usemtl b\nf 1/1/1 2/2/1 3/3/1\n";
    writeFile("own/m.obj", model);
    const auto before = fs::last_write_time("own/wood_d.tga");
    const auto size = fs::file_size("own/wood_d.tga");

    ConvertOptions options;
    options.model = "own/m.obj";
    options.scene = "own/scene.rve";
    const Made made = make(options);
    EXPECT_EQ(fs::file_size("own/wood_d.tga"), size);
    EXPECT_EQ(fs::last_write_time("own/wood_d.tga"), before);
    EXPECT_TRUE(fs::exists("own/wood_2_d.tga"));
    EXPECT_TRUE(fs::exists("own/wood_d_d.tga"));
    EXPECT_TRUE(contains(made.report.warnings(),
                         "texture 'wood.ppm' is written to 'wood_2_d.tga', as the model reads "
                         "'wood_d.tga'"))
        << joined(made.report.warnings());

    // Through a link it is the same file.
    fs::create_hard_link("own/wood.ppm", "own/linked.rve");
    fs::create_symlink("m.mtl", "own/library.rve");
    for (const char *name : {"own/wood.ppm", "own/m.mtl", "own/linked.rve", "own/library.rve"}) {
        options.scene = name;
        EXPECT_EQ(failureOf([&] { make(options); }),
                  std::string(name) + ": is read by this conversion; name another file");
    }

    // Nor does a texture take the scene's own name.
    options.scene = "own/wood_2_d.tga";
    fs::remove("own/wood_2_d.tga");
    make(options);
    EXPECT_TRUE(fs::exists("own/wood_3_d.tga"));
    EXPECT_FALSE(fs::exists("own/wood_2_d.tga")) << "which is left to the scene";
}

} // namespace
