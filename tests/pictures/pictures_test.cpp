// One small frame of each visible feature. The whole file runs a second time against a library
// whose state caches all miss: what is drawn must be the same.

#include "ravolt/RVCAMERA.h"
#include "ravolt/RVHELPER.h"
#include "ravolt/RVLIGHT.h"
#include "ravolt/RVMESH.h"
#include "ravolt/RVOPENGL.h"
#include "tests/models/modelScenes.h"
#include "tests/pictures/cubes.h"
#include "tests/support/engineFixture.h"
#include "tests/support/realDriver.h"
#include "tools/writers/tgaWriter.h"

#include <array>

using namespace ravolt;
using namespace ravolt::test;

namespace {

// Over SDL 2 the window is drawn upside down into a buffer, which rounds the edges the other way.
constexpr Tolerance edges{
    .maximum = 16, .mean = 0.05, .reason = "samples at edges differ between the two settings"};
constexpr Tolerance lines{
    .maximum = 255, .mean = 0.05, .reason = "single pixels of lines differ between the settings"};

// A board of `cells` by `cells` fields, so that every orientation of it looks different: the fields
// of the upper left quarter are red.
void writeBoard(const char *fileName, unsigned int cells) {
    constexpr unsigned int side = 32;
    std::vector<unsigned char> pixels;
    for (unsigned int y = 0; y < side; ++y)
        for (unsigned int x = 0; x < side; ++x) {
            const bool light = (x * cells / side + y * cells / side) % 2 == 0;
            const bool marked = x < side / 2 && y < side / 2;
            const unsigned char value = light ? 255 : 60;
            const unsigned char others = marked ? value / 4 : value;
            pixels.insert(pixels.end(), {value, others, others});
        }
    ASSERT_TRUE(writeTga(fileName, {.width = side, .height = side, .pixels = pixels.data()}));
}

RveMaterial textured(const std::string &name, const std::string &texture) {
    RveMaterial material = coloured(name, {1, 1, 1, 1});
    material.texture = texture;
    return material;
}

class PictureTest : public EngineTest {
  protected:
    // Three cubes in a row: a board, a plain one, a finer board; before them a pane.
    void SetUp() override {
        EngineTest::SetUp();
        writeBoard("coarse_d.tga", 4);
        writeBoard("fine_d.tga", 8);
        camera = new RVCAMERA;
        camera->setPosition(0, 2, 10);
        camera->setRotation(-10, 0, 0);
    }

    void TearDown() override {
        RVMESH::hideNormals();
        RAVOLT::wireframeOff();
        RAVOLT::setSkybox(nullptr);
        EngineTest::TearDown();
    }

    RVNODE *cubes(bool pane = false) {
        std::vector<RveNode> nodes = {placed(cubeMesh("left", "coarse"), {-3, 0, 0}, {20, 30, 0}),
                                      placed(cubeMesh("middle", "plain"), {0, 0, 0}, {20, 30, 0}),
                                      placed(cubeMesh("right", "fine"), {3, 0, 0}, {20, 30, 0})};
        if (pane)
            nodes.push_back(placed(squareMesh("pane", "glass", 2), {1, 0, 4}));
        return loadScene({{textured("coarse", "coarse_d.tga"), textured("fine", "fine_d.tga"),
                           coloured("plain", {0.9f, 0.6f, 0.1f, 1}),
                           coloured("glass", {0.2f, 0.4f, 1, 1}, 0.5f)},
                          rootOver(nodes)});
    }

    static RVLIGHT *lightAt(RVNODE *root, float x, float y, float z) {
        auto *light = new RVLIGHT;
        light->setPosition(x, y, z);
        light->link(root);
        return light;
    }

    // Three frames of the same scene are equal: the first one has no influence on the others.
    void expectPicture(RVNODE *root, const char *name, const Tolerance &tolerance = edges) {
        drawFrame(camera, root);
        const Picture first = readFrame();
        EXPECT_PICTURE(first, name, tolerance);
        for (int again = 0; again < 2; ++again) {
            RAVOLT::swap();
            drawFrame2D(nullptr);
            drawFrame(camera, root);
            EXPECT_EQ(differenceOf(readFrame(), first).maximum, 0) << name << " changes";
        }
    }

    RVCAMERA *camera = nullptr;
};

TEST_F(PictureTest, TexturedCubesUnderAnOmniLight) {
    SKIP_WITHOUT_EXTENSIONS(anisotropyExtensions);
    RVNODE *root = cubes();
    lightAt(root, 2, 5, 8);
    expectPicture(root, "cubes_omni");
}

TEST_F(PictureTest, CubesUnderASpot) {
    SKIP_WITHOUT_EXTENSIONS(anisotropyExtensions);
    RVNODE *root = cubes();
    RVLIGHT *light = lightAt(root, 0, 0, 12);
    light->setLightType(RV_LIGHT_TYPE_SPOT);
    light->setDirection(Z3MVECTOR3D(0, 0, -1));
    light->setCutOff(12);
    light->setExponent(2);
    expectPicture(root, "cubes_spot");
}

TEST_F(PictureTest, CubesUnderFiveLightsOfWhichFourShine) {
    SKIP_WITHOUT_EXTENSIONS(anisotropyExtensions);
    RVNODE *root = cubes();
    const std::array<Z3MVECTOR4D, 5> colors = {
        {{1, 0, 0, 1}, {0, 1, 0, 1}, {0, 0, 1, 1}, {1, 1, 0, 1}, {0, 1, 1, 1}}};
    for (std::size_t index = 0; index < colors.size(); ++index) {
        RVLIGHT *light = lightAt(root, static_cast<float>(index) * 3 - 6, 3, 3);
        light->setDiffuse(colors[index]);
        light->setAmbient(0, 0, 0, 1);
    }
    expectPicture(root, "cubes_fiveLights", lines);
}

TEST_F(PictureTest, GlassBeforeTheCubes) {
    SKIP_WITHOUT_EXTENSIONS(anisotropyExtensions);
    RVNODE *root = cubes(true);
    lightAt(root, 2, 5, 8);
    expectPicture(root, "cubes_glass");
}

TEST_F(PictureTest, HelperBetweenMeshes) {
    SKIP_WITHOUT_EXTENSIONS(anisotropyExtensions);
    RVNODE *root = cubes(true);
    lightAt(root, 2, 5, 8);
    auto *helper = new RVHELPER;
    helper->setPosition(-3, 0, 0);
    helper->setMin(Z3MVECTOR3D(-1.5f, -1.5f, -1.5f));
    helper->setMax(Z3MVECTOR3D(1.5f, 1.5f, 1.5f));
    helper->link(root);
    expectPicture(root, "cubes_helper", lines);
}

TEST_F(PictureTest, NormalsOfTheCubes) {
    RVMESH::showNormals();
    RVNODE *root = cubes();
    lightAt(root, 2, 5, 8);
    expectPicture(root, "cubes_normals", lines);
}

TEST_F(PictureTest, Wireframe) {
    RVNODE *root = cubes();
    lightAt(root, 2, 5, 8);
    RAVOLT::wireframeOn();
    expectPicture(root, "cubes_wireframe", lines);
}

// Only the holder's first child is drawn, around the eye and without its own transform.
TEST_F(PictureTest, SkyboxBehindTheCubes) {
    SKIP_WITHOUT_EXTENSIONS(anisotropyExtensions);
    RVNODE *root = cubes();
    lightAt(root, 2, 5, 8);
    RveNode wall = squareMesh("sky", "sky", 60);
    for (RveVector &vertex : wall.mesh.vertices)
        vertex[2] = -80;
    RAVOLT::setSkybox(loadScene({{textured("sky", "coarse_d.tga")}, rootOver({wall})}));
    expectPicture(root, "cubes_skybox");
}

} // namespace
