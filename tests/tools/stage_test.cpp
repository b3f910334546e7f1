// Whole pictures through the engine: what a converter got wrong shows there.

#include "tools/stage/stage.h"

#include "tests/tools/support.h"
#include "tools/stage/engine.h"
#include "tools/stage/picture.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <gtest/gtest.h>
#include <numbers>
#include <ravolt.h>

namespace {

using namespace tool_test;

constexpr WindowSize size = {200, 150};

struct Rgb {
    int r, g, b;
};

Rgb at(const Picture &picture, double x, double y) {
    const auto column = static_cast<std::size_t>(x * picture.width);
    const auto row = static_cast<std::size_t>(y * picture.height);
    const unsigned char *p =
        &picture.pixels[3 * (row * static_cast<std::size_t>(picture.width) + column)];
    return {p[0], p[1], p[2]};
}

// How much of the picture is not the background, from 0 to 1.
double coverage(const Picture &picture) {
    std::size_t covered = 0;
    const unsigned char *background = picture.pixels.data();
    for (std::size_t i = 0; i < picture.pixels.size(); i += 3)
        covered += !std::equal(background, background + 3, &picture.pixels[i]);
    return 3.0 * static_cast<double>(covered) / static_cast<double>(picture.pixels.size());
}

void convert(const fs::path &model, bool normalMaps = false) {
    ConvertOptions options;
    options.model = model;
    options.scene = "scene.rve";
    options.normalMaps = normalMaps;
    Report report;
    Progress silent(false);
    convertModel(options, report, silent);
}

class StageTest : public ::testing::Test {
  protected:
    Picture shoot(double yaw, double pitch, double zoom = 1, int rig = 1) {
        Engine engine(size, "test", false, "ravolt_log.txt");
        Stage stage(engine.load("scene.rve"));
        stage.setRig(rig);
        stage.setYaw(yaw);
        stage.setPitch(pitch);
        stage.setZoom(zoom);
        stage.draw();
        EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
        const Picture picture = takePicture();
        RAVOLT::swap();
        return picture;
    }
};

TEST_F(StageTest, ShowsTexturesRightSideUp) {
    std::string picture = "P6 64 64 255\n";
    for (int y = 0; y < 64; ++y)
        for (int x = 0; x < 64; ++x)
            picture += y < 32 ? (x < 32 ? std::string("\xff\0\0", 3) : std::string("\0\xff\0", 3))
                              : (x < 32 ? std::string("\0\0\xff", 3) : "\xff\xff\xff");
    writeFile("picture.ppm", picture);
    writeFile("m.mtl", "newmtl a\nKd 1 1 1\nmap_Kd picture.ppm\n");
    writeFile("m.obj", squareObj("m.mtl", "a"));
    convert("m.obj");
    const Picture shown = shoot(0, 0);
    const Rgb topLeft = at(shown, 0.4, 0.35), topRight = at(shown, 0.6, 0.35);
    const Rgb bottomLeft = at(shown, 0.4, 0.65), bottomRight = at(shown, 0.6, 0.65);
    EXPECT_GT(topLeft.r, 150);
    EXPECT_LT(topLeft.g + topLeft.b, 40);
    EXPECT_GT(topRight.g, 150);
    EXPECT_LT(topRight.r + topRight.b, 40);
    EXPECT_GT(bottomLeft.b, 150);
    EXPECT_LT(bottomLeft.r + bottomLeft.g, 40);
    EXPECT_GT(std::min({bottomRight.r, bottomRight.g, bottomRight.b}), 150);
}

TEST_F(StageTest, HidesSurfacesFromBehindUnlessTheyHaveTwoSides) {
    writeFile("m.mtl", "newmtl a\nKd 1 1 1\n");
    writeFile("m.obj", squareObj("m.mtl", "a"));
    convert("m.obj");
    EXPECT_GT(coverage(shoot(0, 0)), 0.1);
    EXPECT_EQ(coverage(shoot(180, 0)), 0);
    ConvertOptions options;
    options.model = "m.obj";
    options.scene = "scene.rve";
    options.twoSided = true;
    Report report;
    Progress silent(false);
    convertModel(options, report, silent);
    EXPECT_GT(coverage(shoot(180, 0)), 0.1);
}

// The same square at sizes far apart fills the same part of the picture.
TEST_F(StageTest, FramesScenesOfAnySize) {
    writeFile("m.mtl", "newmtl a\nKd 1 1 1\n");
    writeFile("m.obj", squareObj("m.mtl", "a"));
    double first = 0;
    for (double scale : {1.0, 1e-12, 1e-5, 1e5, 1e12}) {
        ConvertOptions options;
        options.model = "m.obj";
        options.scene = "scene.rve";
        options.scale = scale;
        Report report;
        Progress silent(false);
        convertModel(options, report, silent);
        const double covered = coverage(shoot(20, 10));
        if (first == 0)
            first = covered;
        EXPECT_GT(covered, 0.1) << scale;
        EXPECT_NEAR(covered, first, 0.01) << scale;
    }
}

TEST_F(StageTest, ComesNearerWithZoom) {
    writeFile("m.mtl", "newmtl a\nKd 1 1 1\n");
    writeFile("m.obj", squareObj("m.mtl", "a"));
    convert("m.obj");
    EXPECT_GT(coverage(shoot(0, 0, 2)), 1.5 * coverage(shoot(0, 0, 1)));
}

TEST_F(StageTest, LightsTheSceneByEachRig) {
    writeFile("m.mtl", "newmtl a\nKd 1 1 1\n");
    writeFile("m.obj", squareObj("m.mtl", "a"));
    convert("m.obj");
    for (int rig = 0; rig < 4; ++rig) {
        const Picture picture = shoot(0, 0, 1, rig);
        EXPECT_GT(at(picture, 0.5, 0.5).r, 60) << rig;
    }
}

// A ball of radius 1.
std::string ballObj() {
    constexpr int rings = 24, sectors = 48;
    std::string text = "mtllib m.mtl\nusemtl a\n";
    for (int ring = 0; ring <= rings; ++ring)
        for (int sector = 0; sector < sectors; ++sector) {
            const double down = std::numbers::pi * ring / rings,
                         round = 2 * std::numbers::pi * sector / sectors;
            const std::string point = " " + std::to_string(std::sin(down) * std::sin(round)) + " " +
                                      std::to_string(std::cos(down)) + " " +
                                      std::to_string(std::sin(down) * std::cos(round)) + "\n";
            text += "v" + point + "vn" + point;
        }
    const auto corner = [](int ring, int sector) {
        const std::string number = std::to_string(1 + ring * sectors + sector % sectors);
        return " " + number + "//" + number;
    };
    for (int ring = 0; ring < rings; ++ring)
        for (int sector = 0; sector < sectors; ++sector)
            text += "f" + corner(ring, sector) + corner(ring + 1, sector) +
                    corner(ring + 1, sector + 1) + corner(ring, sector + 1) + "\n";
    return text;
}

// The brightness of each pixel that is not background, from dark to bright.
std::vector<int> sortedBrightness(const Picture &picture) {
    std::vector<int> all;
    for (std::size_t i = 0; i < picture.pixels.size(); i += 3) {
        const unsigned char *p = &picture.pixels[i];
        if (!Stage::isBackground(p[0], p[1], p[2]))
            all.push_back((p[0] + p[1] + p[2]) / 3);
    }
    std::sort(all.begin(), all.end());
    return all;
}

TEST_F(StageTest, ShowsTheShapeOfBlackPlasticInTheStudio) {
    writeFile("m.mtl", "newmtl a\nKa 0 0 0\nKd 0.02 0.02 0.02\nKs 0.3 0.3 0.3\nNs 30\nillum 2\n");
    writeFile("m.obj", ballObj());
    convert("m.obj");
    const std::vector<int> values = sortedBrightness(shoot(30, 20, 1, 0));
    ASSERT_GT(values.size(), 1000u);
    EXPECT_GT(values[values.size() * 95 / 100], 60);
    EXPECT_GT(values[values.size() * 75 / 100], 20);
    EXPECT_LT(values[values.size() * 25 / 100], 10); // and it is still black
}

TEST_F(StageTest, DoesNotBurnOutWhiteInTheStudio) {
    writeFile("m.mtl", "newmtl a\nKa 1 1 1\nKd 1 1 1\nKs 0.3 0.3 0.3\nNs 30\nillum 2\n");
    writeFile("m.obj", ballObj());
    convert("m.obj");
    const std::vector<int> values = sortedBrightness(shoot(30, 20, 1, 0));
    ASSERT_GT(values.size(), 1000u);
    EXPECT_LT(values[values.size() * 75 / 100], 250);
    EXPECT_GT(values[values.size() / 2], 150);
}

// Changing from a rig of three lights to one of a single light leaves no light behind.
TEST_F(StageTest, LeavesNoLightOfAnEarlierRigOn) {
    writeFile("m.mtl", "newmtl a\nKd 1 1 1\n");
    writeFile("m.obj", squareObj("m.mtl", "a"));
    convert("m.obj");
    const Rgb fresh = at(shoot(0, 0, 1, 3), 0.5, 0.5);
    Engine engine(size, "test", false, "ravolt_log.txt");
    Stage stage(engine.load("scene.rve"));
    stage.setYaw(0);
    stage.setPitch(0);
    for (int rig : {0, 3}) {
        stage.setRig(rig);
        stage.draw();
        if (rig == 3) {
            const Rgb after = at(takePicture(), 0.5, 0.5);
            EXPECT_NEAR(after.r, fresh.r, 2);
        }
        RAVOLT::swap();
    }
}

TEST_F(StageTest, ShowsLinesAndBoxesOnRequestAndTakesThemAwayAgain) {
    writeFile("m.mtl", "newmtl a\nKd 1 1 1\n");
    writeFile("m.obj", squareObj("m.mtl", "a"));
    convert("m.obj");
    Engine engine(size, "test", false, "ravolt_log.txt");
    Stage stage(engine.load("scene.rve"));
    const auto covered = [&] {
        stage.draw();
        const double result = coverage(takePicture());
        RAVOLT::swap();
        return result;
    };
    const double plain = covered();
    stage.setWireframe(true);
    EXPECT_LT(covered(), plain / 2);
    stage.setWireframe(false);
    EXPECT_DOUBLE_EQ(covered(), plain);
    stage.setNormals(true);
    EXPECT_GT(covered(), plain);
    stage.setNormals(false);
    EXPECT_DOUBLE_EQ(covered(), plain);
    const unsigned int nodes = RVNODE::getNumberOfNodes();
    stage.setBoxes(true);
    EXPECT_EQ(RVNODE::getNumberOfNodes(), nodes + 1);
    EXPECT_GE(covered(), plain);
    stage.setBoxes(false);
    EXPECT_DOUBLE_EQ(covered(), plain);
}

TEST_F(StageTest, LightsTheSceneByItsOwnLightsAlone) {
    ravolt::RveScene scene;
    scene.root.kind = ravolt::RveKind::mesh;
    scene.root.name = "[root]";
    ravolt::RveNode square;
    square.kind = ravolt::RveKind::mesh;
    square.name = "square";
    square.mesh.material = "white";
    square.mesh.vertices = {{-1, -1, 0}, {1, -1, 0}, {1, 1, 0}, {-1, 1, 0}};
    square.mesh.normals = {{0, 0, 1}, {0, 0, 1}, {0, 0, 1}, {0, 0, 1}};
    square.mesh.faces = {{0, 1, 2}, {0, 2, 3}};
    ravolt::RveNode light;
    light.kind = ravolt::RveKind::light;
    light.name = "red";
    light.position = {50, 50, 50};
    light.light.type = ravolt::RveLightType::directional;
    light.light.direction = {0, 0, -1};
    light.light.color = {1, 0, 0};
    scene.root.children = {square, light};
    ravolt::RveMaterial white;
    white.name = "white";
    white.ambient = {0, 0, 0, 1};
    white.diffuse = {1, 1, 1, 1};
    scene.materials = {white};
    ASSERT_EQ(ravolt::writeRve("scene.rve", scene), "");

    Engine engine(size, "test", false, "ravolt_log.txt");
    RVNODE *root = engine.load("scene.rve");
    Stage stage(root);
    stage.setYaw(0);
    stage.setPitch(0);
    ASSERT_EQ(stage.numberOfRigs(), 5);
    const auto center = [&](int rig) {
        stage.setRig(rig);
        stage.draw();
        const Rgb color = at(takePicture(), 0.5, 0.5);
        RAVOLT::swap();
        return color;
    };
    for (int turn = 0; turn < 2; ++turn) {
        const Rgb own = center(4);
        EXPECT_GT(own.r, 200);
        EXPECT_LT(own.g, 30);
        EXPECT_EQ(root->getNumberOfChildren(), 2u);
        const Rgb head = center(1);
        EXPECT_NEAR(head.r, head.g, 2);
        EXPECT_EQ(root->getNumberOfChildren(), 1u);
    }
}

TEST_F(StageTest, FollowsTheWindowsSize) {
    writeFile("m.mtl", "newmtl a\nKd 1 1 1\n");
    writeFile("m.obj", squareObj("m.mtl", "a"));
    convert("m.obj");
    Engine engine(size, "test", true, "ravolt_log.txt");
    Stage stage(engine.load("scene.rve"));
    stage.draw();
    RAVOLT::swap();
    stage.resize(120, 240);
    stage.draw();
    const Picture picture = takePicture();
    EXPECT_EQ(picture.width, 120);
    EXPECT_EQ(picture.height, 240);
    EXPECT_GT(coverage(picture), 0.05);
    EXPECT_GT(at(picture, 0.5, 0.5).r, 60);
    RAVOLT::swap();
}

Picture shootIn(WindowSize window, WindowSize picture) {
    Engine engine(window, "test", false, "ravolt_log.txt");
    Stage stage(engine.load("scene.rve"));
    return shoot(stage, picture);
}

TEST_F(StageTest, DrawsLargePicturesInPartsThatFit) {
    std::string checks = "P6 64 64 255\n";
    for (int i = 0; i < 64 * 64; ++i)
        checks += (i / 8 + i / 512) % 2 ? std::string("\xff\x20\x20") : std::string("\x20\x20\xff");
    writeFile("picture.ppm", checks);
    writeFile("m.mtl", "newmtl a\nKd 1 1 1\nmap_Kd picture.ppm\n");
    writeFile("m.obj", squareObj("m.mtl", "a"));
    convert("m.obj");
    const WindowSize whole = {700, 500};
    const Picture once = shootIn(whole, whole), inParts = shootIn({300, 220}, whole);
    ASSERT_EQ(inParts.width, whole.width);
    ASSERT_EQ(inParts.height, whole.height);
    ASSERT_EQ(inParts.pixels.size(), once.pixels.size());
    EXPECT_GT(coverage(once), 0.1);
    // Each part has a projection of its own, in single precision, so the driver rounds some edges
    // and texture places to the other side: pixels there may differ, others by a step.
    std::size_t different = 0;
    for (std::size_t i = 0; i < once.pixels.size(); ++i)
        different += std::abs(once.pixels[i] - inParts.pixels[i]) > 1;
    EXPECT_LT(different, once.pixels.size() / 1000);
}

// A surface that shines by itself has one colour; only where pixels are halved is there another.
TEST_F(StageTest, SmoothsTheEdgesOfAHalvedPicture) {
    writeFile("m.mtl", "newmtl a\nKa 0 0 0\nKd 0 0 0\nKe 1 1 1\n");
    writeFile("m.obj", squareObj("m.mtl", "a"));
    convert("m.obj");
    const auto between = [](const Picture &picture) {
        int number = 0;
        for (std::size_t i = 0; i < picture.pixels.size(); i += 3)
            number += picture.pixels[i] > 60 && picture.pixels[i] < 230;
        return number;
    };
    Engine engine(size, "test", false, "ravolt_log.txt");
    Stage stage(engine.load("scene.rve"));
    stage.setYaw(20);
    EXPECT_EQ(between(ravolt::tool::shoot(stage, size)), 0);
    const Picture smooth = halved(ravolt::tool::shoot(stage, {2 * size.width, 2 * size.height}));
    EXPECT_EQ(smooth.width, size.width);
    EXPECT_EQ(smooth.height, size.height);
    EXPECT_EQ(smooth.pixels.size(), std::size_t(3 * size.width * size.height));
    EXPECT_GT(between(smooth), 30);
    EXPECT_EQ(at(smooth, 0.5, 0.5).r, 255);
}

TEST(PictureTest, HalvesToTheMeanOfFourPixels) {
    const Picture picture = {
        4, 2, {0, 0, 9, 4, 0, 9, 8, 1, 2, 8, 1, 2, 0, 0, 9, 4, 3, 9, 8, 1, 3, 8, 1, 3}};
    const Picture half = halved(picture);
    EXPECT_EQ(half.width, 2);
    EXPECT_EQ(half.height, 1);
    EXPECT_EQ(half.pixels, (std::vector<unsigned char>{2, 1, 9, 8, 1, 3}));
}

TEST_F(StageTest, TakesTheFewestPartsForALargePicture) {
    const auto window = [](int width, int height) {
        const WindowSize result = windowFor({width, height});
        return std::pair{result.width, result.height};
    };
    EXPECT_EQ(window(960, 640), (std::pair{960, 640}));
    EXPECT_EQ(window(1024, 768), (std::pair{1024, 768}));
    EXPECT_EQ(window(1920, 1080), (std::pair{960, 540}));
    EXPECT_EQ(window(8192, 8191), (std::pair{1024, 745}));
}

// A square that faces +z, turned about the vertical by so many degrees, then about X.
TEST_F(StageTest, LooksAtASurfaceFromItsFront) {
    for (const double degrees : {0.0, 120.0, 180.0, 210.0, 300.0})
        for (const double tilt : {0.0, 90.0, -90.0}) {
            ravolt::RveScene scene;
            scene.root.kind = ravolt::RveKind::mesh;
            scene.root.name = "[root]";
            scene.root.rotation = {static_cast<float>(tilt), static_cast<float>(degrees), 0};
            scene.root.mesh.material = "";
            scene.root.mesh.vertices = {{-1, -1, 0}, {1, -1, 0}, {1, 1, 0}, {-1, 1, 0}};
            scene.root.mesh.normals = {{0, 0, 1}, {0, 0, 1}, {0, 0, 1}, {0, 0, 1}};
            scene.root.mesh.faces = {{0, 1, 2}, {0, 2, 3}};
            ASSERT_EQ(ravolt::writeRve("scene.rve", scene), "");
            const Picture picture = shootIn(size, size);
            EXPECT_TRUE(showsSomething(picture)) << degrees << " " << tilt;
            EXPECT_GT(coverage(picture), 0.02) << degrees << " " << tilt;
        }
}

TEST_F(StageTest, KeepsItsPlaceWhereTheSceneIsSeen) {
    writeFile("m.mtl", "newmtl a\nKd 1 1 1\n");
    writeFile("m.obj", squareObj("m.mtl", "a"));
    convert("m.obj");
    Engine engine(size, "test", false, "ravolt_log.txt");
    const Stage stage(engine.load("scene.rve"));
    EXPECT_EQ(stage.getYaw(), 30);
    EXPECT_EQ(stage.getPitch(), 20);
}

TEST_F(StageTest, TellsAnEmptyPicture) {
    writeFile("m.mtl", "newmtl a\nKd 1 1 1\n");
    writeFile("m.obj", squareObj("m.mtl", "a"));
    convert("m.obj");
    EXPECT_FALSE(showsSomething(shoot(180, 0)));
    EXPECT_TRUE(showsSomething(shoot(0, 0)));
}

// A square at the end of a chain of nodes, each a step to the right of the one before.
TEST_F(StageTest, ShowsAModelOfAHundredLevels) {
    std::string nodes, ends;
    for (int i = 0; i < 100; ++i, ends += "</node>")
        nodes += "<node id=\"n" + std::to_string(i) + "\"><translate>1 0 0</translate>";
    writeFile("deep.dae", R"(<?xml version="1.0"?>
<COLLADA xmlns="http://www.collada.org/2005/11/COLLADASchema" version="1.4.1"><asset>
<up_axis>Y_UP</up_axis></asset><library_geometries><geometry id="g"><mesh>
<source id="p"><float_array id="pa" count="9">0 0 0 1 0 0 0 1 0</float_array><technique_common>
<accessor source="#pa" count="3" stride="3"><param name="X" type="float"/><param name="Y" type="float"/><param name="Z" type="float"/></accessor></technique_common></source>
<vertices id="v"><input semantic="POSITION" source="#p"/></vertices>
<triangles count="1"><input semantic="VERTEX" source="#v" offset="0"/><p>0 1 2</p></triangles></mesh></geometry></library_geometries>
<library_visual_scenes><visual_scene id="s">)" +
                              nodes + "<instance_geometry url=\"#g\"/>" + ends +
                              R"(</visual_scene></library_visual_scenes>
<scene><instance_visual_scene url="#s"/></scene></COLLADA>)");
    convert("deep.dae");
    Engine engine(size, "test", false, "ravolt_log.txt");
    Stage stage(engine.load("scene.rve"));
    EXPECT_NEAR(stage.sphere().center.x, 100.5, 1e-3);
    EXPECT_NEAR(stage.sphere().radius, std::sqrt(0.5), 1e-3);
    EXPECT_GT(coverage(ravolt::tool::shoot(stage, size)), 0.05);
}

TEST_F(StageTest, TellsScenesFromModels) {
    writeFile("a.rve", "RVE file v1.6a");
    writeFile("b.obj", "v 0 0 0");
    EXPECT_TRUE(isScene("a.rve"));
    EXPECT_FALSE(isScene("b.obj"));
    EXPECT_EQ(failureOf([] { isScene("missing"); }), "missing: no such file");
}

// What SDL reports, or nothing, would make the engine load the textures of a larger scene anew in
// each frame.
TEST_F(StageTest, HasRoomForTheTexturesOfALargeScene) {
    Engine engine(size, "test", false, "ravolt_log.txt");
    EXPECT_GE(RAVOLT::getVideoMemory(), 256u << 20);
}

TEST_F(StageTest, PassesOnTheEnginesReasonForABadScene) {
    writeFile("bad.rve", "RVE file v9.9z");
    Engine engine(size, "test", false, "ravolt_log.txt");
    const std::string line = failureOf([&] { engine.load("bad.rve"); });
    EXPECT_EQ(line, "bad.rve: Invalid header in file bad.rve");
}

} // namespace
