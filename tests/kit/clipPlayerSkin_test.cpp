// A skin follows the poses of the clip player, whether the GPU or the processor skins it.

#include "ravolt/RVANIM.h"
#include "ravolt/RVCAMERA.h"
#include "ravolt/RVLIGHT.h"
#include "ravolt/RVMATERIAL.h"
#include "ravolt/RVMESH.h"
#include "ravolt/RVSHADER.h"
#include "ravolt/kit/clipPlayer.h"
#include "tests/models/modelScenes.h"
#include "tests/pictures/cubes.h"
#include "tests/support/engineFixture.h"
#include "tests/support/realDriver.h"

#include <cmath>

namespace ravolt::test {
namespace {

class ClipPlayerSkin : public EngineTest, public testing::WithParamInterface<bool> {
  protected:
    ClipPlayerSkin() { settings.setShaders(GetParam()); }

    void SetUp() override {
        EngineTest::SetUp();
        if (GetParam()) {
            SKIP_WITHOUT_EXTENSIONS(allOf({programExtensions, vertexBufferExtensions}));
        }
    }
};

// The square turns about z, by 80 degrees in a frame; it is seen from the front.
TEST_P(ClipPlayerSkin, ASkinIsSeenInThePoseBetweenTwoFrames) {
    RVNODE *scene = loadScene(
        RveScene{{coloured("paint", {1, 1, 1, 1})},
                 rootOver({skinnedSquare("skin", {"bone"}, 4, "paint"), emptyMesh("bone")})});
    RVMATERIAL *paint = RVMATERIAL::findByName("paint");
    paint->setAmbient(1, 1, 1, 1);
    ASSERT_EQ(RVSHADER::useSkinning(), GetParam());
    auto *clip = new RVANIM;
    clip->setNumberOfBones(1);
    clip->setNumberOfFrames(2);
    clip->setBoneName(0, "bone");
    clip->setFrame(1, 0, 0, 0, 80);
    auto *camera = new RVCAMERA;
    camera->setPosition(0, 0, 5);
    auto *light = new RVLIGHT;
    light->setPosition(0, 0, 5);
    light->setAmbient(1, 1, 1, 1);

    kit::ClipPlayer player(scene);
    ASSERT_TRUE(player.play(clip, {10, 1, false}));
    player.update(0.05f); // half-way: 40 degrees
    for (int number = 0; number < 2; ++number) {
        RAVOLT::clear(true, true, false);
        RAVOLT::begin3D(camera);
        light->pass();
        scene->pass();
        RAVOLT::end3D(true);
    }
    const Pixel background = pixelAt(2, 2);
    const double pixel = 5 * 2 * std::tan(0.3926990816987241) / height;
    const double c = std::cos(0.6981317007977318), s = std::sin(0.6981317007977318);
    int inside = 0, wrong = 0;
    for (int y = 0; y < height; y += 2)
        for (int x = 0; x < width; x += 2) {
            const double right = (x + 0.5 - width / 2) * pixel, up = (height / 2 - y - 0.5) * pixel;
            const double a = std::fabs(right * c + up * s), b = std::fabs(up * c - right * s);
            if (std::fabs(std::max(a, b) - 1) < 1.5 * pixel)
                continue; // at an edge
            inside += std::max(a, b) < 1;
            wrong += (std::max(a, b) < 1) == (pixelAt(x, y) == background);
        }
    EXPECT_EQ(wrong, 0);
    EXPECT_GT(inside, 100);
}

INSTANTIATE_TEST_SUITE_P(WithPrograms, ClipPlayerSkin, testing::Bool());

} // namespace
} // namespace ravolt::test
