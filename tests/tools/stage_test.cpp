// Whole pictures through the engine: what a converter got wrong is visible there.

#include "tests/tools/gltfData.h"
#include "tests/tools/openStage.h"

#include <array>
#include <functional>
#include <gtest/gtest.h>
#include <numbers>
#include <numeric>
#include <ravolt/RVLIGHT.h>
#include <ravolt/RVSETTINGS.h>

namespace {

using namespace tool_test;

constexpr WindowSize size = {200, 150};

void writeTwoSided() {
    ConvertOptions options = optionsOf("m.obj");
    options.twoSided = true;
    writeScene(options);
}

class StageTest : public ::testing::Test {
  protected:
    StageTest() {
        writeSquare();
        writeScene();
    }
};

TEST_F(StageTest, ShowsTexturesUpright) {
    // A quarter each: red, green, blue, white.
    const bool colors[4][3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {1, 1, 1}};
    std::string picture = "P6 64 64 255\n";
    for (int i = 0; i < 64 * 64; ++i)
        for (const bool value : colors[i / 2048 * 2 + i / 32 % 2])
            picture += value ? '\xff' : '\0';
    writeFile("picture.ppm", picture);
    writeSquare("Kd 1 1 1\nmap_Kd picture.ppm\n");
    writeScene();
    const Picture shown = OpenStage().shoot();
    for (int quarter = 0; quarter < 4; ++quarter)
        for (std::size_t i = 0; i < 3; ++i) {
            const int value = colorAt(shown, quarter % 2 ? 0.6 : 0.4, quarter / 2 ? 0.65 : 0.35)[i];
            EXPECT_TRUE(colors[quarter][i] ? value > 150 : value < 20)
                << quarter << " " << i << ": " << value;
        }
}

TEST_F(StageTest, HidesSurfacesFromBehindUnlessTheyHaveTwoSides) {
    {
        OpenStage open;
        EXPECT_GT(coverage(open.shoot()), 0.1);
        EXPECT_TRUE(showsSomething(open.shoot()));
        const Picture behind = open.shootFrom(180);
        EXPECT_EQ(coverage(behind), 0);
        EXPECT_FALSE(showsSomething(behind));
    }
    writeTwoSided();
    EXPECT_GT(coverage(OpenStage().shootFrom(180)), 0.1);
}

// The same square at sizes far apart fills the same part of the picture.
TEST_F(StageTest, FramesScenesOfAnySize) {
    const double expected = coverage(OpenStage().shootFrom(20, 10));
    EXPECT_GT(expected, 0.1);
    for (double scale : {1e-12, 1e12}) {
        ConvertOptions options = optionsOf("m.obj");
        options.scale = scale;
        writeScene(options);
        EXPECT_NEAR(coverage(OpenStage().shootFrom(20, 10)), expected, 0.01) << scale;
    }
}

TEST_F(StageTest, ComesNearerWithZoom) {
    OpenStage open;
    EXPECT_EQ(open.stage.getZoom(), 1);
    const double usual = coverage(open.shoot());
    open.stage.setZoom(2);
    EXPECT_GT(coverage(open.shoot()), 1.5 * usual);
}

// Changing from a rig of three lights to one of a single light turns the others off.
TEST_F(StageTest, LightsTheSceneByEachRigAlone) {
    OpenStage open;
    const auto center = [&](int rig) {
        open.stage.setRig(rig);
        return colorAt(open.shoot(), 0.5, 0.5)[0];
    };
    const int single = center(3);
    for (int rig = 0; rig < 4; ++rig)
        EXPECT_GT(center(rig), 60) << rig;
    center(0);
    EXPECT_NEAR(center(3), single, 2);
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

// The brightness that so many percent of the ball's pixels do not reach.
std::function<int(std::size_t)> studioBrightness(const std::string &colors) {
    writeSquare(colors + "Ks 0.3 0.3 0.3\nNs 30\nillum 2\n");
    writeFile("m.obj", ballObj());
    writeScene();
    OpenStage open;
    open.stage.setRig(0);
    const std::vector<int> values = brightnesses(open.shootFrom(30, 20));
    EXPECT_GT(values.size(), 1000u);
    return [values](std::size_t percent) { return values.at(values.size() * percent / 100); };
}

TEST_F(StageTest, ShowsTheShapesOfBlackAndWhiteInTheStudio) {
    const auto black = studioBrightness("Ka 0 0 0\nKd 0.02 0.02 0.02\n");
    EXPECT_GT(black(95), 60);
    EXPECT_GT(black(75), 20);
    EXPECT_LT(black(25), 10); // and it is still black
    const auto white = studioBrightness("Ka 1 1 1\nKd 1 1 1\n");
    EXPECT_LT(white(75), 250);
    EXPECT_GT(white(50), 150);
}

TEST_F(StageTest, ShowsLinesAndBoxesOnRequestAlone) {
    OpenStage open;
    open.stage.setYaw(30);
    open.stage.setPitch(20);
    const auto covered = [&] { return coverage(open.shoot()); };
    const double plain = covered();
    open.stage.setWireframe(true);
    EXPECT_LT(covered(), plain / 2);
    open.stage.setWireframe(false);
    EXPECT_DOUBLE_EQ(covered(), plain);
    open.stage.setNormals(true);
    EXPECT_GT(covered(), plain);
    open.stage.setNormals(false);
    EXPECT_DOUBLE_EQ(covered(), plain);
    const unsigned int nodes = RVNODE::getNumberOfNodes();
    open.stage.setBoxes(true);
    EXPECT_EQ(RVNODE::getNumberOfNodes(), nodes + 1);
    EXPECT_GE(covered(), plain);
    open.stage.setBoxes(false);
    EXPECT_DOUBLE_EQ(covered(), plain);
}

TEST_F(StageTest, ShowsNormalsOfALengthThatFitsTheScene) {
    OpenStage open;
    EXPECT_FLOAT_EQ(RVMESH::getNormalLength(), float(0.02 * open.stage.sphere().radius));
    Sphere large = open.stage.sphere();
    large.radius *= 100;
    open.stage.setSphere(large);
    EXPECT_FLOAT_EQ(RVMESH::getNormalLength(), float(0.02 * large.radius));
}

TEST_F(StageTest, LightsTheSceneByItsOwnLightsAlone) {
    RveNode square = squareNode("square"), light;
    square.mesh.material = "white";
    light.kind = RveKind::light;
    light.name = "red";
    light.position = {50, 50, 50};
    light.light.type = ravolt::RveLightType::directional;
    light.light.direction = {0, 0, -1};
    light.light.color = {1, 0, 0};
    writeRve({square, light}, "white");
    OpenStage open;
    ASSERT_EQ(open.stage.numberOfRigs(), 5);
    const auto center = [&](int rig) {
        open.stage.setRig(rig);
        return colorAt(open.shoot(), 0.5, 0.5);
    };
    for (int turn = 0; turn < 2; ++turn) {
        const auto own = center(4);
        EXPECT_GT(own[0], 200);
        EXPECT_LT(own[1], 30);
        EXPECT_EQ(open.root->getNumberOfChildren(), 2u);
        const auto head = center(1);
        EXPECT_NEAR(head[0], head[1], 2);
        EXPECT_EQ(open.root->getNumberOfChildren(), 1u);
    }
}

TEST_F(StageTest, FollowsTheWindowsSize) {
    OpenStage open(size, {}, true);
    open.stage.draw();
    RAVOLT::swap();
    RVSETTINGS::resize(0, 0, 120, 240);
    open.stage.draw();
    const Picture picture = takePicture();
    RAVOLT::swap();
    EXPECT_EQ(picture.getWidth(), 120);
    EXPECT_EQ(picture.getHeight(), 240);
    EXPECT_GT(coverage(picture), 0.05);
    EXPECT_GT(colorAt(picture, 0.5, 0.5)[0], 60);
}

TEST_F(StageTest, DrawsLargePicturesInPartsThatFit) {
    std::string checks = "P6 64 64 255\n";
    for (int i = 0; i < 64 * 64; ++i)
        checks += (i / 8 + i / 512) % 2 ? "\xff\x20\x20" : "\x20\x20\xff";
    writeFile("picture.ppm", checks);
    writeSquare("Kd 1 1 1\nmap_Kd picture.ppm\n");
    writeScene();
    const WindowSize whole = {700, 500};
    const Picture once = OpenStage(whole).shootFrom(30, 20);
    EXPECT_GT(coverage(once), 0.1);
    OpenStage inParts({300, 220});
    inParts.picture = whole;
    // Each part has a projection of its own, in single precision, so the driver rounds some edges
    // and texture coordinates to the other side: pixels there may differ, others by a step.
    EXPECT_LT(differences(inParts.shootFrom(30, 20), once, 1), once.getPixels().size() / 1000);

    const auto window = [](int width, int height) {
        const WindowSize result = windowFor({width, height}); // for the fewest parts
        return std::pair{result.width, result.height};
    };
    EXPECT_EQ(window(960, 640), (std::pair{960, 640}));
    EXPECT_EQ(window(1024, 768), (std::pair{1024, 768}));
    EXPECT_EQ(window(1920, 1080), (std::pair{960, 540}));
    EXPECT_EQ(window(8192, 8191), (std::pair{1024, 745}));
}

// A surface that shines by itself has one colour; only the mean of samples is another.
TEST_F(StageTest, SamplesSmoothEdgesAndKeepTheMeanColor) {
    writeSquare("Ka 0 0 0\nKd 0 0 0\nKe 1 1 1\n");
    writeScene();
    const auto between = [](const Picture &picture) {
        return std::count_if(picture.getPixels().begin(), picture.getPixels().end(),
                             [](unsigned char value) { return value > 60 && value < 230; });
    };
    const auto mean = [](const Picture &picture) {
        return std::accumulate(picture.getPixels().begin(), picture.getPixels().end(), 0.0) /
               static_cast<double>(picture.getPixels().size());
    };
    OpenStage open;
    const Picture jagged = open.shootFrom(20);
    EXPECT_EQ(between(jagged), 0);
    for (const int side : {2, 3, 4}) {
        SCOPED_TRACE(side * side);
        open.picture = {side * size.width, side * size.height};
        Picture smooth = open.shoot();
        smooth.shrink(side);
        EXPECT_EQ(smooth.getWidth(), size.width);
        EXPECT_EQ(smooth.getHeight(), size.height);
        EXPECT_EQ(smooth.getPixels().size(), std::size_t(3 * size.width * size.height));
        EXPECT_GT(between(smooth), 90);
        // Point samples err by up to half a pixel along an edge of a hundred.
        EXPECT_NEAR(mean(smooth), mean(jagged), 2 * 100 * 0.5 * 215 / (size.width * size.height));
        EXPECT_EQ(colorAt(smooth, 0.5, 0.5)[0], 255);
    }
}

// The square in the plane of X and Z, whose Z axis is up.
TEST_F(StageTest, ShowsAModelWhoseZAxisIsUpUpright) {
    const Picture plain = OpenStage().shootFrom(30, 20);
    std::string turned, rest = readText("m.obj");
    for (std::istringstream lines(rest); std::getline(lines, rest);) {
        float x = 0, y = 0;
        if (std::sscanf(rest.c_str(), "v %f %f 0", &x, &y) == 2)
            rest = "v " + std::to_string(x) + " 0 " + std::to_string(y);
        if (rest == "vn 0 0 1")
            rest = "vn 0 -1 0";
        turned += rest + "\n";
    }
    writeFile("m.obj", turned);
    writeScene();
    EXPECT_GT(differences(OpenStage().shootFrom(30, 20), plain, 20), 1000u);
    ConvertOptions options = optionsOf("m.obj");
    options.zUp = true;
    writeScene(options);
    EXPECT_LT(differences(OpenStage().shootFrom(30, 20), plain, 20), 30u);
}

// The engine's marker of a light would be seen beside the square.
TEST_F(StageTest, ShowsNoMarkersOfLights) {
    RveNode square = squareNode("square"), light;
    square.mesh.material = "white";
    light.kind = RveKind::light;
    light.name = "lamp";
    light.position = {0.2f, 0.2f, 1.5f};
    writeRve({square, light}, "white");
    OpenStage open;
    open.stage.setRig(1);
    const double plain = coverage(open.shootFrom(40));
    open.stage.setRig(4);
    EXPECT_EQ(coverage(open.shoot()), plain);
    RVLIGHT::markersOn();
    EXPECT_GT(coverage(open.shoot()), plain);
}

// A square that faces +z, turned about X by some degrees, then about the vertical.
TEST_F(StageTest, LooksAtASurfaceFromItsFront) {
    OpenStage open;
    for (const float tilt : {0.0f, 90.0f, -90.0f})
        for (const float degrees : {0.0f, 120.0f, 180.0f, 210.0f, 300.0f}) {
            open.root->setRotation(tilt, degrees, 0);
            Stage stage(open.root);
            const Picture picture = shoot(stage, size);
            EXPECT_TRUE(showsSomething(picture)) << degrees << " " << tilt;
            EXPECT_GT(coverage(picture), 0.02) << degrees << " " << tilt;
            if (tilt == 0 && degrees == 0) {
                EXPECT_EQ(stage.getYaw(), 30);
                EXPECT_EQ(stage.getPitch(), 20);
            }
        }
}

TEST_F(StageTest, ShowsAModelOfAHundredLevels) {
    writeFile("deep.gltf", chainOfNodes(100));
    writeScene("deep.gltf");
    OpenStage open;
    EXPECT_NEAR(open.stage.sphere().center.x, 100.5, 1e-3);
    EXPECT_NEAR(open.stage.sphere().radius, std::sqrt(0.5), 1e-3);
    EXPECT_GT(coverage(open.shoot()), 0.05);
}

// With what SDL reports, or nothing, the engine would load the textures of a larger scene anew in
// each frame.
TEST_F(StageTest, HasMemoryForTheTexturesOfALargeSceneAndStatesWhyASceneIsBad) {
    writeFile("bad.rve", "RVE file v9.9z");
    Engine engine(size, "test", false, "ravolt_log.txt");
    EXPECT_GE(RAVOLT::getVideoMemory(), 256u << 20);
    EXPECT_EQ(failureOf([&] { engine.load("bad.rve"); }),
              "bad.rve: Invalid header in file bad.rve");
}

} // namespace
