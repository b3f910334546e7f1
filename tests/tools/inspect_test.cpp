// What the inspection of a file finds: errors with their places, warnings of what loads but cannot
// be meant, and what the file holds.

#include "tests/effects/terrainScene.h"
#include "tools/common/failure.h"
#include "tools/inspect/files.h"
#include "tools/inspect/text.h"
#include "tools/writers/rvaWriter.h"
#include "tools/writers/rveWriter.h"
#include "tools/writers/tgaWriter.h"

#include <cmath>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <vector>

using namespace ravolt;
using namespace ravolt::test;
using namespace ravolt::tool::inspect;

namespace {

using Lines = std::vector<std::string>;

Inspection inspect(const std::string &file) { return inspectFile(file, {}); }

// The findings without the name of the file.
Lines findingsOf(const std::string &file) {
    Lines lines;
    const Inspection inspection = inspect(file);
    for (const Finding &finding : inspection.findings)
        lines.push_back(textOf(file, finding).substr(file.size() + 1));
    return lines;
}

Lines findingsOf(const std::string &file, const std::string &text) {
    writeFile(file, text);
    return findingsOf(file);
}

Lines findingsOf(const std::string &file, const Bytes &bytes) {
    writeFile(file, bytes);
    return findingsOf(file);
}

void writeTexture(const std::string &file, unsigned int width = 2, unsigned int height = 2) {
    const Bytes pixels(std::size_t{width} * height * 3);
    ASSERT_TRUE(writeTga(file, {width, height, 3, false, pixels.data()}));
}

// --- Scenes

RveNode meshNamed(const std::string &name, const std::string &material) {
    RveNode node;
    node.kind = RveKind::mesh;
    node.name = name;
    node.mesh.material = material;
    node.mesh.vertices = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
    node.mesh.normals.assign(3, {0, 0, 1});
    node.mesh.uvs = {{0, 0}, {1, 0}, {0, 1}};
    node.mesh.faces = {{0, 1, 2}};
    return node;
}

RveScene sceneOf(const RveNode &node, const std::string &material = "stone") {
    RveScene scene;
    scene.materials.emplace_back();
    scene.materials[0].name = material;
    scene.root.kind = RveKind::mesh;
    scene.root.name = "[root]";
    scene.root.children = {node};
    return scene;
}

Bytes bytesOf(const RveScene &scene, RveVersion version = RveVersion::v16a) {
    const RveResult result = encodeRve(scene, version);
    EXPECT_EQ(result.error, "");
    return result.bytes;
}

Lines warningsOf(const RveScene &scene) { return findingsOf("scene.rve", bytesOf(scene)); }

TEST(InspectedScene, WithoutFaultHasNoFindings) {
    EXPECT_EQ(warningsOf(sceneOf(meshNamed("square", "stone"))), Lines{});
}

TEST(InspectedScene, ErrorsHaveTheOffsetOfTheFirstFault) {
    const Bytes whole = bytesOf(sceneOf(meshNamed("square", "stone")));
    const auto changed = [&](std::size_t at, unsigned char value) {
        Bytes bytes = whole;
        bytes[at] = value;
        return bytes;
    };
    EXPECT_EQ(findingsOf("scene.rve", Bytes(whole.begin(), whole.end() - 1)),
              Lines{std::to_string(whole.size() - 12) + ": error: it ends early"});
    EXPECT_EQ(
        findingsOf("scene.rve", changed(0, 'X')),
        Lines{"0: error: it starts neither with \"RVE file v1.6a\" nor with \"RVE file v1.5a\""});
    EXPECT_EQ(
        findingsOf("scene.rve", changed(whole.size() - 12 - 6, 3)),
        Lines{std::to_string(whole.size() - 18) + ": error: a face's index beyond the vertices"});
    const std::size_t root = 17 + 6 + 7 + 7 + 18 * 4;
    EXPECT_EQ(findingsOf("scene.rve", changed(root, 9)),
              Lines{std::to_string(root) + ": error: a kind of node that is not known"});
}

TEST(InspectedScene, WhatCannotBeMeantIsAWarning) {
    const Bytes whole = bytesOf(sceneOf(meshNamed("square", "stone")));
    EXPECT_EQ(findingsOf("scene.rve", whole + Bytes{1, 2}),
              Lines{std::to_string(whole.size()) +
                    ": warning: 2 bytes after the tree, which are not read"});
    EXPECT_EQ(findingsOf("old.rve", bytesOf(sceneOf(meshNamed("a", "stone")), RveVersion::v15a)),
              Lines{"0: warning: the obsolete version 1.5a"});
    EXPECT_EQ(findingsOf("a.xml.rve", whole),
              Lines{" warning: with .xml in its name RAVOLT::load reads it as an interface"});

    const std::size_t root = 17 + 6 + 7 + 7 + 18 * 4;
    const std::string mesh = std::to_string(root + 1 + 4 + 7 + 36 + 7 + 29 + 10);
    EXPECT_EQ(warningsOf(sceneOf(meshNamed("square", "wood"))),
              (Lines{mesh + ": warning: mesh 'square' names the material 'wood', which the file "
                            "does not have",
                     "17: warning: material 'stone' is used by no mesh"}));
    EXPECT_EQ(warningsOf(sceneOf(meshNamed("square", "[none]"))),
              (Lines{mesh + ": warning: mesh 'square' has no material",
                     "17: warning: material 'stone' is used by no mesh"}));

    RveScene scene = sceneOf(meshNamed("square", "stone"));
    scene.materials.push_back(scene.materials[0]);
    EXPECT_EQ(warningsOf(scene),
              Lines{"109: warning: a second material 'stone': the first one is used"});
    scene = sceneOf(meshNamed("square", "stone"));
    scene.materials[0].texture = "wall_d.tga";
    scene.materials[0].shader = "../glow";
    EXPECT_EQ(warningsOf(scene),
              (Lines{"23: warning: texture 'wall_d.tga' is missing",
                     "34: warning: program '../glow' leaves its folder: RAVOLT::confineFilesOn "
                     "refuses it"}));
    scene.materials[0].shader = "glow";
    writeTexture("wall_d.tga");
    EXPECT_EQ(warningsOf(scene), (Lines{"34: warning: program 'glowVS.glsl' is missing",
                                        "34: warning: program 'glowPS.glsl' is missing"}));
    scene = sceneOf(meshNamed("square", "stone"));
    scene.materials.clear();
    scene.root.children[0].mesh.material = "[none]";
    scene.root.children[0].mesh.faces.clear();
    EXPECT_EQ(warningsOf(scene), Lines{"15: warning: it has no material"});
}

TEST(InspectedScene, ValuesThatCannotBeMeantAreWarnings) {
    RveNode light;
    light.kind = RveKind::light;
    light.name = "lamp";
    light.light.type = static_cast<RveLightType>(7);
    const RveNode mesh = meshNamed("square", "stone");
    RveScene scene = sceneOf(mesh);
    scene.root.children.push_back(light);
    Lines found = warningsOf(scene);
    ASSERT_EQ(found.size(), 1u);
    EXPECT_NE(found[0].find("light 'lamp' is of type 7, and not 0 (omni), 1 (directional) or 2"),
              std::string::npos);

    scene = sceneOf(mesh);
    scene.materials[0].shininess = std::nanf("");
    EXPECT_EQ(warningsOf(scene), Lines{"17: warning: a value of material 'stone' is no number"});

    const auto warningWith = [&](auto change) {
        RveScene changed = sceneOf(mesh);
        change(changed.root.children[0]);
        const Lines lines = warningsOf(changed);
        return lines.size() == 1 ? lines[0].substr(lines[0].find(' ')) : "not one finding";
    };
    const float infinite = INFINITY;
    EXPECT_EQ(warningWith([=](RveNode &node) { node.position[1] = infinite; }),
              " warning: a value of mesh 'square' is no number");
    EXPECT_EQ(warningWith([=](RveNode &node) { node.mesh.vertices[1][2] = infinite; }),
              " warning: a position of mesh 'square' is no number");
    EXPECT_EQ(warningWith([=](RveNode &node) { node.mesh.normals[1][2] = infinite; }),
              " warning: a normal of mesh 'square' is no number");
    EXPECT_EQ(warningWith([=](RveNode &node) { node.mesh.uvs[1][1] = infinite; }),
              " warning: a texture coordinate of mesh 'square' is no number");
    EXPECT_EQ(warningWith([](RveNode &node) {
                  node.mesh.skin = {1, {0, 0, 0}, {1, 1, 0.5f}, {"square"}};
              }),
              " warning: the weights of a vertex of mesh 'square' do not add up to 1");
    EXPECT_EQ(warningWith([](RveNode &node) {
                  node.mesh.skin = {1, {0, 0, 0}, {1, 1, 1}, {"missing"}};
              }),
              " warning: mesh 'square' names the bone 'missing', and no node has that name");
}

TEST(InspectedScene, HasItsMaterialsAndItsTree) {
    writeFile("scene.rve", bytesOf(sceneOf(meshNamed("square", "stone"))));
    const Inspection inspection = inspect("scene.rve");
    EXPECT_EQ(inspection.kind, FileKind::scene);
    const Json &content = inspection.content;
    EXPECT_EQ(content["version"], "1.6a");
    EXPECT_EQ(content["counts"]["meshes"], 2);
    EXPECT_EQ(content["counts"]["vertices"], 3);
    EXPECT_EQ(content["materials"][0]["diffuse"], Json({0.6, 0.6, 0.6, 1.0}));
    EXPECT_EQ(content["tree"][1]["level"], 1);
    EXPECT_EQ(content["tree"][1]["material"], "stone");
}

// --- Clips

Bytes clipOf(const std::vector<std::string> &bones, std::size_t frames, float angle = 0) {
    RvaClip clip;
    clip.bones = bones;
    clip.frames.assign(frames, std::vector<RvaEntry>(bones.size()));
    if (frames > 0 && !bones.empty())
        clip.frames.back().back().rotation[1] = angle;
    const RvaResult result = encodeRva(clip);
    EXPECT_EQ(result.error, "");
    return result.bytes;
}

TEST(InspectedClip, FindingsHaveTheirOffsets) {
    Bytes whole = clipOf({"left", "right"}, 3);
    EXPECT_EQ(findingsOf("clip.rva", whole), Lines{});
    EXPECT_EQ(inspect("clip.rva").content["boneNames"], Json({"left", "right"}));
    EXPECT_EQ(inspect("clip.rva").content["frames"], 3);
    EXPECT_EQ(findingsOf("clip.rva", Bytes(whole.begin(), whole.end() - 1)),
              Lines{"30: error: it ends early"});
    EXPECT_EQ(findingsOf("clip.rva", whole + Bytes{0}),
              Lines{"180: warning: 1 bytes after the last frame, which are not read"});
    EXPECT_EQ(findingsOf("clip.rva", clipOf({"a", "a"}, 1)),
              Lines{"21: warning: a second bone 'a': both move the same node"});
    EXPECT_EQ(findingsOf("clip.rva", clipOf({"a"}, 0)),
              Lines{"15: warning: the clip has no bones or no frames"});
    EXPECT_EQ(findingsOf("clip.rva", clipOf({"a"}, 2, INFINITY)),
              Lines{"46: warning: a rotation or translation is no number"});
    whole[15] = 129;
    EXPECT_EQ(findingsOf("clip.rva", whole), Lines{"19: error: more than 128 bones"});
    whole[0] = 'r';
    EXPECT_EQ(findingsOf("clip.rva", whole),
              Lines{"0: error: it does not start with \"RVA file v1.6a\""});
}

// --- Textures

TEST(InspectedTexture, FindingsHaveTheirOffsets) {
    writeTexture("a.tga", 4, 2);
    EXPECT_EQ(findingsOf("a.tga"), Lines{});
    EXPECT_EQ(inspect("a.tga").content["width"], 4);
    EXPECT_EQ(inspect("a.tga").content["compression"], "none");
    Bytes bytes = readFile("a.tga");
    bytes.pop_back();
    EXPECT_EQ(findingsOf("a.tga", bytes), Lines{"18: error: it ends early"});
    bytes[16] = 16;
    EXPECT_EQ(findingsOf("a.tga", bytes),
              Lines{"12: error: neither 24 nor 32 bits a pixel, or a side of 0 or more than 4096 "
                    "pixels"});
    writeTexture("a.tga", 3, 2);
    EXPECT_EQ(findingsOf("a.tga").size(), 1u) << "no power of two";
    writeTexture("a.tga", 2, 2);
    bytes = readFile("a.tga");
    bytes[2] = 3;
    EXPECT_EQ(findingsOf("a.tga", bytes),
              Lines{"0: warning: a TGA of another type, or with an identification field, a colour "
                    "map or an origin: all its pixels are black"});
    bytes[2] = 10;
    bytes[18] = 0x84;
    EXPECT_EQ(findingsOf("a.tga", bytes),
              Lines{"18: error: a packet that is longer than the rest of the image"});
}

// --- Settings and kerning files

TEST(InspectedSettings, LinesThatNothingReadsAreWarnings) {
    EXPECT_EQ(findingsOf("s.txt", "# ours\nRAVOLT_windowX = 8\nRAVOLT_texturePath=\"a/\"\n"),
              Lines{});
    EXPECT_EQ(inspect("s.txt").content["values"],
              Json({{"RAVOLT_windowX", 8}, {"RAVOLT_texturePath", "a/"}}));
    EXPECT_EQ(findingsOf("s.txt", "RAVOLT_windowZ=8\nRAVOLT_windowX=8\nRAVOLT_windowX=9\n"
                                  "width=4\nRAVOLT_title=Two\nRAVOLT_fontPath=\"f\"\n"),
              (Lines{"1:1: warning: nothing reads 'RAVOLT_windowZ': it is no key of settings",
                     "3:1: warning: 'RAVOLT_windowX' a second time: the first line is read",
                     "4:1: warning: nothing reads this line: it has no key",
                     "5:1: warning: 'RAVOLT_title' has no text in double quotes",
                     "6:1: warning: 'RAVOLT_fontPath' does not end with a slash, and names are "
                     "appended to it as they are"}));
    writeFile("s.txt", "");
    const Inspection empty = inspectFile("s.txt", {FileKind::settings, {}});
    ASSERT_EQ(empty.findings.size(), 1u);
    EXPECT_EQ(textOf("s", empty.findings[0]),
              "s: warning: it is empty, so that nothing is read of it");
}

TEST(InspectedKerning, LinesThatCannotBeMeantAreWarnings) {
    EXPECT_EQ(findingsOf("k.txt", "RAVOLT_kerning_S=4\nRAVOLT_kerning_SPACE=1 # blank\n"), Lines{});
    EXPECT_EQ(inspect("k.txt").content["characters"], Json({{" ", 1}, {"S", 4}}));
    EXPECT_EQ(
        findingsOf("k.txt", "RAVOLT_kerning_SPACE=1\nRAVOLT_kerning_a=200\n"
                            "RAVOLT_kerning_a=2\nwidth=3\n"),
        (Lines{"1:1: warning: SPACE is read for the letter S too, which has no line before it",
               "2:1: warning: 200 is not within -128 to 127, and its low byte is used",
               "3:1: warning: 'a' a second time: the first line is read",
               "4:1: warning: nothing reads this line: it has no character from 0x20 to "
               "0x7E"}));
    writeFile("k.txt", "");
    EXPECT_TRUE(inspectFile("k.txt", {FileKind::kerning, {}}).hasErrors());
    writeFile("k.txt", "nothing\n");
    const Inspection nothing = inspectFile("k.txt", {FileKind::kerning, {}});
    EXPECT_EQ(nothing.findings.back().reason, "no line of it sets a character");
}

// --- Emitters

TEST(InspectedEmitter, ElementsWithoutEffectAreWarnings) {
    writeTexture("a.tga");
    EXPECT_EQ(findingsOf("e.xml", "<emitter><texture value='a.tga'/><radius value='2.5'/>"
                                  "<nbOfParticles value='5'/></emitter>"),
              Lines{});
    EXPECT_EQ(inspect("e.xml").content["values"]["radius"], 2.5);
    EXPECT_EQ(findingsOf("e.xml", "<emitter>\n<texture value='b.tga'/><type value='3'/>\n"
                                  "<nbOfParticles value='5000'/><radius value='2'/><speed/>\n"
                                  "<center x='1'/><radius value='3'/><blendingDst value='7'/>"
                                  "</emitter>"),
              (Lines{"2:1: warning: the texture 'b.tga' is missing",
                     "2:25: warning: type 3 is neither 0 (point), 1 (plane) nor 2 (disc)",
                     "3:1: warning: 5000 particles: there are 1 to 4096 in all emitters together",
                     "4:35: warning: 7 is no factor of glBlendFunc",
                     "3:49: warning: nothing reads the element 'speed'",
                     "4:1: warning: 'center' lacks an attribute",
                     "4:16: warning: 'radius' a second time: the last one is used",
                     "3:30: warning: 'radius' after nbOfParticles: the particles are born without "
                     "it"}));
    EXPECT_EQ(findingsOf("e.xml", "<emitter/>"),
              (Lines{" warning: no nbOfParticles, so that it emits nothing",
                     " warning: no texture, which each frame logs"}));
    EXPECT_EQ(findingsOf("e.xml", "<emitter>\n <type>"),
              Lines{"2:8: error: malformed, or more than 256 levels or attributes"});
}

const std::string leaves = " leaves its folder: RAVOLT::confineFilesOn refuses it";

TEST(InspectedEmitter, NamesThatLeaveTheFolderAreWarnings) {
    std::filesystem::create_directory("inside");
    writeTexture("a.tga");
    const auto findingsWith = [](const std::string &texture) {
        return findingsOf("inside/e.xml", "<emitter><texture value='" + texture +
                                              "'/><nbOfParticles value='5'/></emitter>");
    };
    const std::string absolute = std::filesystem::absolute("a.tga").string();
    for (const std::string &name : {std::string("../a.tga"), std::string("../gone.tga"), absolute})
        EXPECT_EQ(findingsWith(name), Lines{"1:10: warning: the texture '" + name + "'" + leaves});
    writeTexture("inside/a.tga");
    EXPECT_EQ(findingsWith("./a.tga"), Lines{});
}

// --- Interfaces

TEST(InspectedInterface, ElementsWithoutEffectAreWarnings) {
    writeTexture("a.tga");
    const std::string font = "<font><name value='f'/><texture value='a.tga'/></font>";
    EXPECT_EQ(findingsOf("i.xml", "<root><!-- c -->" + font +
                                      "<window><title value='t'/><button><usefont ref='f'/>"
                                      "<kind value='switch'/></button></window></root>"),
              Lines{});
    const Json content = inspect("i.xml").content;
    EXPECT_EQ(content["widgets"][1],
              Json({{"level", 1}, {"element", "button"}, {"usefont", "f"}, {"kind", "switch"}}));
    const struct {
        std::string element;
        Lines findings;
    } rows[] = {
        {"<boxes/>", {"2:1: warning: nothing reads the element 'boxes'"}},
        {"words", {"2:1: warning: nothing reads this text"}},
        {"<name value='x'/>", {"2:1: warning: 'name' is in no widget"}},
        {"<box><size width='3'/></box>", {"2:6: warning: 'size' lacks the attribute height"}},
        {"<box><name value='a' lang='en'/></box>",
         {"2:6: warning: nothing reads the attribute 'lang' of 'name'"}},
        {"<box><title value='t'/></box>", {"2:6: warning: 'title' has no effect on a box"}},
        {"<text><kind value='switch'/></text>", {"2:7: warning: 'kind' has no effect on a text"}},
        {"<label><usefont ref='g'/></label>", {"2:8: warning: no font 'g' before this line"}},
        {"<box><texture value='b.tga'/></box>", {"2:6: warning: the texture 'b.tga' is missing"}},
        {"<font><texture value='a.tga'/><kerning value='k.txt2'/></font>",
         {"2:31: warning: the kerning file 'k.txt2' is missing"}},
        {"<font/>", {"2:1: warning: a font without a texture"}},
        {"<label><write value='5%'/></label>",
         {"2:8: warning: a percent sign that is not doubled"}},
        {"<label><write value='5%%'/></label>", {}},
        {"<button><kind value='Normal'/></button>",
         {"2:9: warning: 'Normal' is neither normal, inverted nor switch"}},
        {"<box><position x='a' y='2'/></box>", {"2:6: warning: 'a' is no number"}},
    };
    for (const auto &row : rows)
        EXPECT_EQ(findingsOf("i.xml", "<root>\n" + row.element + "</root>"), row.findings)
            << row.element;
    EXPECT_EQ(findingsOf("i.xml", "<root/>\n<root/>"),
              Lines{"2:1: warning: nothing reads a second element root"});
    writeFile("i.xml", "<gui/>");
    EXPECT_EQ(inspectFile("i.xml", {FileKind::interface, {}}).findings[0].reason,
              "no element root");
}

TEST(InspectedInterface, NamesThatLeaveTheFolderAreWarnings) {
    EXPECT_EQ(findingsOf("i.xml", "<root>\n<font><texture value='../a.tga'/>\n"
                                  "<kerning value='C:k.txt'/></font></root>"),
              (Lines{"2:7: warning: the texture '../a.tga'" + leaves,
                     "3:1: warning: the kerning file 'C:k.txt'" + leaves}));
}

// --- Terrains

class InspectedTerrain : public testing::Test {
  protected:
    void SetUp() override { writeTerrainTextures(); }

    static Lines findingsWith(const std::string &elements) {
        writeTerrainConfig(elements);
        Lines lines = findingsOf("land.xml");
        for (std::string &line : lines)
            line = line.substr(line.find(' ') + 1);
        return lines;
    }

    // With centres that are 4 apart.
    static Lines findingsWithLevels(const std::vector<std::string> &levels,
                                    const std::string &enable = "YES") {
        TerrainFile({.side = 5, .columns = 2, .rows = 2, .levels = 3}).write();
        return findingsWith(geometryXml + layersXml() + lodXml(levels, enable));
    }
};

TEST_F(InspectedTerrain, WholeConfigurationHasNoFindings) {
    TerrainFile({.side = 5, .levels = 3}).write();
    EXPECT_EQ(findingsWith(geometryXml + layersXml() + waterXml + skyXml + lodXml({"16", "64"})),
              Lines{});
    const Json content = inspect("land.xml").content;
    EXPECT_EQ(content["geometry"]["chunks"], 2);
    EXPECT_EQ(content["layers"][3]["diffuse"], "d4.tga");
    EXPECT_EQ(content["water"]["repeat"], 3);
    EXPECT_EQ(content["lod"]["squaredDistances"], Json({16.0, 64.0}));
}

TEST_F(InspectedTerrain, NeighboursThatMayDifferByTwoLevelsAreAWarning) {
    const std::string two = "warning: neighbouring chunks may differ by two levels, with gaps "
                            "between them: the square roots of LEVEL 1 and 2 differ by ";
    EXPECT_EQ(findingsWithLevels({"100", "196"}), Lines{});
    EXPECT_EQ(findingsWithLevels({"100", "190"}),
              Lines{two + "3.78405, and the centres of neighbours by up to 4"});
    EXPECT_EQ(findingsWithLevels({"100", "50"}),
              Lines{two + "-2.92893, and the centres of neighbours by up to 4"});
    EXPECT_EQ(findingsWithLevels({"100", "50"}, "NO"), Lines{});
    EXPECT_EQ(findingsWithLevels({"100", "196"}, "yes"), Lines{"warning: 'yes' counts as NO"});
}

TEST_F(InspectedTerrain, WhatIsRefusedHasItsReasonAndWhatHasNoEffectAWarning) {
    TerrainFile({.side = 5, .levels = 3}).write();
    EXPECT_EQ(findingsWith("<GEOMETRY>gone.geo</GEOMETRY>"),
              Lines{"error: the geometry 'gone.geo' is missing"});
    EXPECT_EQ(findingsWith(geometryXml + geometryXml), Lines{"error: a second GEOMETRY"});
    EXPECT_EQ(findingsWith(geometryXml + "<WATER/>"),
              Lines{"error: WATER requires TEXTURE24_NORMAL and TEXTURE24_DUDV"});
    EXPECT_EQ(findingsWith(geometryXml + "<SKY><TEXTURE24_DIFFUSE>gone.tga</TEXTURE24_DIFFUSE>"
                                         "</SKY>"),
              Lines{"error: the texture 'gone.tga' is missing"});
    EXPECT_EQ(findingsWith(geometryXml + "<SKY><SPEED/></SKY>"),
              Lines{"error: the element has no text"});
    EXPECT_EQ(findingsWith(geometryXml + "<SUN/><SKY><COLOR>1</COLOR></SKY>"),
              (Lines{"warning: nothing reads the element 'SUN'",
                     "warning: nothing reads the element 'COLOR' in SKY"}));
    EXPECT_EQ(findingsWith(layersXml() + geometryXml),
              Lines{"warning: TERRAIN before GEOMETRY has no effect: there are no chunks yet"});
    EXPECT_EQ(findingsWith(layersXml()),
              (Lines{"warning: TERRAIN before GEOMETRY has no effect: there are no chunks yet",
                     "warning: no GEOMETRY, so that there is nothing to draw"}));
    std::filesystem::remove("d2.tga");
    EXPECT_EQ(findingsWith(geometryXml + layersXml()),
              Lines{"warning: the texture 'd2.tga' is missing: the land has no material"});
    writeTerrainConfig(geometryXml + "<LOD/>");
    EXPECT_EQ(findingsOf("land.xml").at(0).find("1:"), 0u) << "the line of the element";
}

TEST_F(InspectedTerrain, TexturesThatLeaveTheFolderAreWarnings) {
    TerrainFile({.side = 5, .levels = 3}).write();
    const std::string good = geometryXml + layersXml() + waterXml + skyXml;
    const std::string folder = std::filesystem::current_path().filename().string();
    for (const char *texture : {"d2.tga", "n3.tga", "bump.tga", "dudv.tga", "sky.tga"}) {
        const std::string outside = "../" + folder + "/" + texture;
        std::string config = good;
        config.replace(config.find(texture), std::string(texture).size(), outside);
        EXPECT_EQ(findingsWith(config), Lines{"warning: the texture '" + outside + "'" + leaves});
    }
    EXPECT_EQ(findingsWith(geometryXml + "<SKY><TEXTURE24_DIFFUSE>../gone.tga</TEXTURE24_DIFFUSE>"
                                         "</SKY>"),
              (Lines{"warning: the texture '../gone.tga'" + leaves,
                     "error: the texture '../gone.tga' is missing"}));
}

TEST_F(InspectedTerrain, GeometryMayBeAbsoluteInTheFolderOfItsConfiguration) {
    TerrainFile({.side = 5, .levels = 3}).write();
    const auto geometry = [](const std::string &name) {
        return "<GEOMETRY>" + name + "</GEOMETRY>";
    };
    const std::filesystem::path folder = std::filesystem::current_path();
    const std::string inside = (folder / "land.geo").string();
    EXPECT_EQ(findingsWith(geometry(inside)), Lines{});
    const std::string relative = "../" + folder.filename().string() + "/land.geo";
    EXPECT_EQ(findingsWith(geometry(relative)),
              Lines{"warning: the geometry '" + relative + "'" + leaves});
    std::filesystem::create_directory("inside");
    writeFile("inside/land.xml", "<a>" + geometry(inside) + "</a>");
    const std::string start = "1:4: ";
    EXPECT_EQ(findingsOf("inside/land.xml"),
              Lines{start + "warning: the geometry '" + inside + "'" + leaves});
}

TEST(InspectedGeometry, FindingsHaveTheirOffsets) {
    const TerrainFile whole({.side = 5, .levels = 3});
    const auto findingsWith = [&](auto change) {
        TerrainFile file = whole;
        change(file);
        return findingsOf("land.geo", file.bytes);
    };
    const auto at = [](std::size_t offset, const std::string &text) {
        return Lines{std::to_string(offset) + ": " + text};
    };
    EXPECT_EQ(findingsWith([](TerrainFile &) {}), Lines{});
    EXPECT_EQ(inspect("land.geo").content["columns"], 2);
    EXPECT_EQ(findingsWith([&](TerrainFile &f) { f.cut(f.bytes.size() - 1); }),
              at(whole.bytes.size() - 1, "error: shorter than its header says"));
    EXPECT_EQ(findingsWith([&](TerrainFile &f) { f.set(f.list(1) + 4, std::uint16_t{25}); }),
              at(whole.list(1) + 4, "error: an index beyond the vertices"));
    EXPECT_EQ(findingsWith(
                  [&](TerrainFile &f) { f.set(f.chunk(1) + neighboursAt + 2, std::uint16_t{3}); }),
              at(whole.chunk(1) + neighboursAt + 2, "error: a neighbour beyond the chunks"));
    EXPECT_EQ(findingsWith([](TerrainFile &f) { f.bytes.push_back(0); }),
              at(whole.bytes.size(), "warning: 1 bytes after the last chunk, which are not read"));
    EXPECT_EQ(findingsWith([](TerrainFile &f) { f.set(scaleAt, -1.0f); }),
              at(8, "warning: a distance between two vertices that is not above 0"));
    EXPECT_EQ(findingsWith([](TerrainFile &f) { f.set(terrainSizeXAt, std::uint16_t{10}); }),
              at(2, "warning: the sizes of the terrain are no whole numbers of chunks"));
    EXPECT_EQ(findingsWith([&](TerrainFile &f) { f.set(f.chunk(0) + minHeightAt, 2.0f); }),
              (Lines{std::to_string(whole.chunk(0) + 4) +
                         ": warning: the lowest height of chunk 1 is above its highest, or no "
                         "number",
                     std::to_string(whole.vertices(0)) +
                         ": warning: a vertex is not between the lowest and the highest height of "
                         "its chunk, which vanishes while the vertex is seen"}));
    EXPECT_EQ(findingsWith([&](TerrainFile &f) { f.set(f.vertices(1) + 24, INFINITY); }),
              at(whole.vertices(1), "warning: a value of a vertex is no number"));
    EXPECT_EQ(findingsWith(
                  [&](TerrainFile &f) { f.set(f.chunk(1) + neighboursAt + 4, std::uint16_t{0}); }),
              at(whole.chunk(0) + neighboursAt + 6,
                 "warning: chunk 2 is a neighbour of chunk 1, and not the other way round"));
    EXPECT_EQ(
        findingsWith([&](TerrainFile &f) { f.set(f.chunk(0) + neighboursAt, std::uint16_t{1}); }),
        at(whole.chunk(0) + neighboursAt,
           "warning: chunk 1 is a neighbour of chunk 1 and not next to it"));
    EXPECT_EQ(findingsWith([&](TerrainFile &f) { f.set(f.chunk(1), std::uint16_t{0}); }).at(0),
              std::to_string(whole.chunk(0) + neighboursAt + 6) +
                  ": warning: chunk 2 is a neighbour of chunk 1 and not next to it");
    EXPECT_EQ(findingsOf("deep.geo", TerrainFile({.side = 5, .levels = 4}).bytes),
              at(20, "warning: the levels of detail do not divide the 4 cells along a side of a "
                     "chunk: there are gaps"));
    EXPECT_EQ(findingsOf("deep.geo", TerrainFile({.side = 65, .levels = 7}).bytes),
              at(20, "warning: more than six levels of detail: the engine draws the first six"));
}

// --- Videos

TEST(InspectedVideo, HeaderOfTheSequenceIsRead) {
    const Bytes sequence = {0, 0, 1, 0xb3, 0x16, 0x01, 0x20, 0x13, 0xff, 0xff, 0xe0, 0xa0};
    EXPECT_EQ(findingsOf("v.m1v", sequence), Lines{});
    EXPECT_EQ(
        inspect("v.m1v").content,
        Json({{"standard", "MPEG-1"}, {"width", 352}, {"height", 288}, {"framesPerSecond", 25.0}}));
    findingsOf("v.m2v", sequence + Bytes{0, 0, 1, 0xb5, 0x14, 0x8a, 0, 1, 0, 0});
    EXPECT_EQ(inspect("v.m2v").content["standard"], "MPEG-2");
    EXPECT_EQ(findingsOf("v.mpg", Bytes{0, 0, 1, 0xba, 0, 0} + sequence),
              Lines{"0: warning: a program stream: only elementary video streams are decoded"});
    EXPECT_EQ(findingsOf("v.mpg", Bytes{1, 2, 3}),
              Lines{"0: warning: no header of a sequence in the first megabyte"});
    EXPECT_EQ(findingsOf("v.m1v", Bytes{0, 0, 1, 0xb3, 0, 0, 0x20, 0x13, 0, 0, 0, 0}),
              Lines{"4: warning: 0 x 32 pixels: none of its frames is shown"});
}

// --- Kinds

TEST(InspectedFile, KindFollowsFromTheExtensionAndTheContent) {
    const struct {
        const char *name;
        std::string text;
        FileKind kind;
    } rows[] = {{"a.rve", "damaged", FileKind::scene},
                {"a", "RVE file v1.6a", FileKind::scene},
                {"a.TGA", "", FileKind::texture},
                {"b", "RVA file v1.6a", FileKind::clip},
                {"c.xml", "<?xml?><!-- root --><emitter/>", FileKind::emitter},
                {"c.xml", " <root>", FileKind::interface},
                {"c.xml", "<A><GEOMETRY>", FileKind::terrain},
                {"d.txt", "RAVOLT_kerning_a=3", FileKind::kerning},
                {"d.txt", "RAVOLT_windowX=3", FileKind::settings},
                {"e", std::string("\0\0\1\xb3", 4), FileKind::video},
                {"f.geo", "", FileKind::geometry}};
    for (const auto &row : rows) {
        writeFile(row.name, row.text);
        EXPECT_EQ(kindOf(row.name), row.kind) << row.name << row.text;
        EXPECT_EQ(kindNamed(nameOf(row.kind)), row.kind);
    }
    for (const char *text : {"", "words", "<a/>"}) {
        writeFile("g", text);
        EXPECT_THROW(kindOf("g"), tool::Failure) << text;
    }
}

TEST(InspectedFile, NamesOfAnyBytesArePrintable) {
    EXPECT_EQ(findingsOf("i.xml", "<root><label><usefont ref='\xe4\n'/></label></root>"),
              Lines{"1:14: warning: no font '\xc3\xa4?' before this line"});
    RveScene scene = sceneOf(meshNamed("a\x01"
                                       "b",
                                       "[none]"));
    const Lines lines = warningsOf(scene);
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_NE(lines[0].find("mesh 'a?b'"), std::string::npos);
}

} // namespace
