// The pieces of code in docs/kit.md, run.

#include <ravolt.h>
#include <ravolt/kit.h>

#include "tests/effects/terrainScene.h"
#include "tests/kit/events.h"
#include "tests/support/engineFixture.h"

#include "tests/models/modelScenes.h"
#include "tests/pictures/cubes.h"
#include "tests/support/engineFixture.h"

#include <gtest/gtest.h>

namespace document {
#include "samples.inc"
}

namespace ravolt::test {
namespace {

using namespace document;

class KitDocument : public EngineTest {};

TEST_F(KitDocument, ALampFades) {
    ravolt::kit::SmoothedValue brightness(0, 4);
    const float first = fade(brightness, true, 0.1f);
    EXPECT_GT(first, 0);
    EXPECT_GT(fade(brightness, true, 0.1f), first);
    EXPECT_LT(fade(brightness, true, 0.1f), 1);
    EXPECT_LT(fade(brightness, false, 1), first);
}

TEST_F(KitDocument, AClipPlaysInTwoLayers) {
    auto *root = new RVNODE, *arm = new RVNODE;
    root->setName("root");
    arm->setName("arm");
    arm->link(root);
    RVANIM *clips[] = {new RVANIM, new RVANIM};
    for (RVANIM *clip : clips) {
        clip->setNumberOfBones(1);
        clip->setNumberOfFrames(16); // at 30 frames per second a loop of 16/30 seconds
        clip->setBoneName(0, clip == clips[0] ? "root" : "arm");
        clip->setFrame(15, 0, 0, 90, 0);
    }
    int steps = 0;
    ravolt::kit::ClipPlayer player(root);
    startWalk(player, clips[0], clips[1], arm, [&](const std::string &) { ++steps; });
    RAVOLT::setFrameDuration(0.5f);
    advanceWalk(player);
    RAVOLT::setFrameDuration(0);
    EXPECT_EQ(steps, 1);
    EXPECT_NEAR(root->getRotation().y, 90, 1e-3);
    EXPECT_NEAR(arm->getRotation().y, 90, 1e-3);
    RVANIM::cleanUp();
    RVNODE::cleanUp();
}

TEST_F(KitDocument, AKeyFillsTheScreen) {
    kit::Input input;
    kit::Window window;
    for (const bool filled : {true, false}) {
        SDL_Event press = keyEvent(SDLK_F11), release = keyEvent(SDLK_F11, false);
        SDL_PushEvent(&press);
        SDL_PushEvent(&release);
        EXPECT_TRUE(pollWithWindow(input, window, SDLK_F11));
        EXPECT_EQ(window.isFullScreen(), filled);
    }
}

TEST_F(KitDocument, AnOrbitFollowsThePointer) {
    kit::Input input;
    kit::OrbitCamera orbit;
    input.handle(buttonEvent(5, 5, true));
    input.handle(motionEvent(25, 5, 20, 0));
    auto *view = new RVCAMERA;
    RAVOLT::setFrameDuration(10);
    orbitAround(orbit, input, view);
    RAVOLT::setFrameDuration(0);
    EXPECT_NEAR(view->getRotation().y, -5, 1e-3);
}

TEST_F(KitDocument, AWalkerIsOnItsTerrain) {
    TerrainFile().write(); // of height 1, and 8 by 4
    kit::TerrainHeights heights, none;
    EXPECT_FLOAT_EQ(makeWalker(heights, "land.geo").getPosition().y, 1 + 2 + 1.7f);
    EXPECT_FLOAT_EQ(makeWalker(heights, "land.geo").getPosition().x, 4);
    EXPECT_FLOAT_EQ(makeWalker(none, "gone.geo").getPosition().y, 1.7f);
    EXPECT_LOGGED("   [!] File gone.geo has no heights of a terrain @ TerrainHeights::load");
}

TEST_F(KitDocument, AButtonIsClicked) {
    kit::Input input;
    auto *root = new RVNODE;
    auto *button = new RVBUTTON;
    button->setName("go");
    button->setSizes(20, 10);
    button->link(root);
    bool open = false;
    EXPECT_FALSE(isClicked(input, root, "go", open));
    EXPECT_TRUE(open);
    for (const bool down : {true, false}) {
        SDL_Event event = buttonEvent(5, 5, down);
        SDL_PushEvent(&event);
    }
    EXPECT_TRUE(isClicked(input, root, "go", open));
    EXPECT_FALSE(isClicked(input, root, "stop", open));
    SDL_Event quit = eventOf(SDL_QUIT);
    SDL_PushEvent(&quit);
    EXPECT_FALSE(isClicked(input, root, "go", open));
    EXPECT_FALSE(open);
}

} // namespace
class KitDocumentInWindow : public ravolt::test::EngineTest {
  protected:
    // A red square in the middle of the window.
    static RVNODE *square() {
        using namespace ravolt::test;
        return loadScene(RveScene{{coloured("red", {1, 0, 0, 1})},
                                  rootOver({placed(squareMesh("square", "red"), {0, 0, -5})})});
    }
};

TEST_F(KitDocumentInWindow, PicturesAreSaved) {
    RVNODE *scene = square();
    const auto draw = [scene] { ravolt::test::drawFrame(nullptr, scene); };
    draw();
    EXPECT_TRUE(saveFrame("frame.png"));
    EXPECT_TRUE(savePoster(draw, "poster.png"));
    EXPECT_EQ(ravolt::test::loadPicture("frame.png").width, width);
    EXPECT_EQ(ravolt::test::loadPicture("poster.png").height, height);
}

TEST_F(KitDocumentInWindow, MeshesAndTheGroundArePicked) {
    RVNODE *scene = square();
    auto *camera = new RVCAMERA;
    ravolt::test::drawFrame(camera, scene);
    EXPECT_FALSE(hideAt(1, 1));
    EXPECT_TRUE(hideAt(64, 48));
    EXPECT_TRUE(ravolt::test::meshNamed("square")->isHidden());
    Z3MVECTOR3D point;
    EXPECT_TRUE(groundAt(64, 80, point, [](float, float) { return -1.5f; }));
    EXPECT_NEAR(point.y, -1.5f, 1e-3);
    EXPECT_FALSE(groundAt(64, 10, point, [](float, float) { return -1.5f; }));
}

TEST_F(KitDocumentInWindow, AnOverlayIsDrawn) {
    auto *logo = new RVTEXTURE;
    logo->create(2, 2, RV_TEXTURE_RGB);
    ravolt::kit::FrameStatistics frames;
    ravolt::test::drawFrame(nullptr, nullptr);
    const ravolt::test::Pixel background = ravolt::test::pixelAt(12, 45);
    drawOverlay(frames, logo);
    EXPECT_EQ(ravolt::test::pixelAt(12, 45), (ravolt::test::Pixel{0, 0, 0}));
    EXPECT_FALSE(ravolt::test::pixelAt(12, 45) == background);
    EXPECT_EQ(frames.getNumberOfFrames(), 1u);
}

} // namespace ravolt::test
