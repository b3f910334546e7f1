// The ground of a terrain under the pointer, compared with the depths that the terrain has drawn.

#include "ravolt/RVCAMERA.h"
#include "ravolt/RVFBO.h"
#include "ravolt/RVLIGHT.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVTERRAIN.h"
#include "ravolt/kit/picker.h"
#include "ravolt/kit/terrainHeights.h"
#include "tests/effects/terrainScene.h"
#include "tests/support/engineFixture.h"
#include "tests/support/realDriver.h"

#include <cmath>

namespace ravolt::test {
namespace {

using kit::Pick;
using kit::Picker;
using kit::Ray;

// A ridge along Z between two slopes; the ground between four vertices is plane.
float ridge(unsigned int column, unsigned int) {
    return 4 + std::fabs(static_cast<float>(column) - 6) * -0.8f +
           0.1f * static_cast<float>(column);
}

struct Surface {
    const char *name;
    void (*prepare)(RVSETTINGS &);
    void (*start)();
    bool inTarget;
};

class TerrainPicking : public EngineTest, public testing::WithParamInterface<Surface> {
  protected:
    TerrainPicking() {
        settings.setShaders(true);
        GetParam().prepare(settings);
    }

    void SetUp() override {
        EngineTest::SetUp();
        SKIP_WITHOUT_EXTENSIONS(vertexBufferExtensions);
        if (GetParam().inTarget) {
            SKIP_WITHOUT_EXTENSIONS(allOf({programExtensions, targetExtensions}));
        }
    }

    void TearDown() override {
        RAVOLT::bloomingOff();
        RVTERRAIN::restoreTargetOff();
        RVFBO::unbind();
        EngineTest::TearDown();
    }

    // Of the drawn picture, at a pixel of the window.
    float depthAt(int x, int y) const {
        const RVFBO *current = RVFBO::getCurrent();
        const int ofColumns = 2 * RVSETTINGS::getSDLWindowX(),
                  ofRows = 2 * RVSETTINGS::getSDLWindowY();
        int columns = ofColumns / 2, rows = ofRows / 2;
        if (GetParam().inTarget) {
            RVOPENGL::getFbo(0)->render(nullptr);
            columns = RVOPENGL::getFbo(0)->getSizeX();
            rows = RVOPENGL::getFbo(0)->getSizeY();
        }
        float depth = -1;
        glReadPixels((2 * x + 1) * columns / ofColumns, (ofRows - 2 * y - 1) * rows / ofRows, 1, 1,
                     GL_DEPTH_COMPONENT, GL_FLOAT, &depth);
        if (!current) {
            RVFBO::unbind();
            glViewport(0, 0, RVSETTINGS::getSDLWindowX(), RVSETTINGS::getSDLWindowY());
        }
        return depth;
    }
};

TEST_P(TerrainPicking, TheGroundIsWhereItIsSeen) {
    GetParam().start();
    writeTerrainTextures();
    auto *root = new RVNODE;
    auto *light = new RVLIGHT;
    light->setPosition(20, 60, 10);
    light->link(root);
    RVTERRAIN *terrain = loadTerrain(
        TerrainFile({.side = 9, .columns = 2, .rows = 2, .levels = 4, .scale = 2, .height = ridge}),
        geometryXml + layersXml() + lodXml({"1000000", "2000000", "3000000"}));
    ASSERT_NE(terrain, nullptr);
    terrain->link(root);
    const Z3MVECTOR3D place(-3, 1, 2);
    terrain->setPosition(place);
    auto *camera = new RVCAMERA;
    camera->setPosition(2, 13, 34);
    camera->setRotation(-24, -20, 0);
    drawFrame(camera, root);
    drawFrame(camera, root);

    kit::TerrainHeights heights;
    ASSERT_TRUE(heights.load("land.geo"));
    Picker picker;
    picker.setGround(
        [&](float x, float z) {
            const float u = x - place.x, v = z - place.z;
            const bool isLand =
                u >= 0 && v >= 0 && u <= heights.getWidth() && v <= heights.getDepth();
            return isLand ? static_cast<float>(heights.drawnAt(u, v)) + place.y : std::nanf("");
        },
        0.25f);
    const double far = static_cast<double>(RVOPENGL::getFarPlane()),
                 near = static_cast<double>(RVOPENGL::getNearPlane());
    Z3MVECTOR3D forward = Picker::rayAt(64, 48).direction + Picker::rayAt(63, 47).direction +
                          Picker::rayAt(63, 48).direction + Picker::rayAt(64, 47).direction;
    forward.normalize();
    int land = 0, wrong = 0;
    for (int y = 2; y < height; y += 6)
        for (int x = 2; x < width; x += 6) {
            const double depth = static_cast<double>(depthAt(x, y));
            const Pick pick = picker.pick(x, y);
            const Ray ray = Picker::rayAt(x, y);
            if (depth >= 1) {
                wrong += pick.isGround;
                continue;
            }
            const double alongView = 2 * far * near / (far + near - (2 * depth - 1) * (far - near));
            const double cosine =
                static_cast<double>(ray.direction.x * forward.x + ray.direction.y * forward.y +
                                    ray.direction.z * forward.z);
            const double distance = (alongView - near) / cosine;
            const bool agrees =
                pick.isGround &&
                std::fabs(distance - static_cast<double>(pick.distance)) < 0.05 + 0.01 * distance;
            ++land;
            wrong += !agrees;
        }
    EXPECT_GT(land, 60);
    EXPECT_LE(wrong, land / 50) << "at the edges of the land";
}

const Surface surfaces[] = {
    {"Window", [](RVSETTINGS &) {}, [] {}, false},
    {"Landscape", [](RVSETTINGS &s) { s.setLandscape(true); }, [] {}, false},
    {"ForcedTarget", [](RVSETTINGS &s) { s.setForceFBO(true); }, [] {}, true},
    {"Bloom", [](RVSETTINGS &s) { s.setFBOSizeX(256), s.setFBOSizeY(192); },
     [] {
         RAVOLT::bloomingOn();
         RVTERRAIN::restoreTargetOn();
     },
     true},
};

INSTANTIATE_TEST_SUITE_P(Kinds, TerrainPicking, testing::ValuesIn(surfaces),
                         [](const auto &test) { return test.param.name; });

} // namespace
} // namespace ravolt::test
