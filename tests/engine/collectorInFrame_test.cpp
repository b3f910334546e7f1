// The collector of textures while a frame is drawn through the engine's targets: the picture is the
// same as without it. Textures that the application throws out are back with the next frame.

#include "ravolt/RAVOLT.h"
#include "ravolt/RVCAMERA.h"
#include "ravolt/RVFBO.h"
#include "tests/engine/brightSquare.h"
#include "tests/engine/resetEffects.h"
#include "tests/resources/tgaFiles.h"
#include "tests/support/engineFixture.h"

#include <array>

namespace ravolt::test {
namespace {

constexpr int targets = 14;

std::array<unsigned int, targets> texturesOfThePool() {
    std::array<unsigned int, targets> names{};
    for (int index = 0; index < targets; ++index)
        names[static_cast<std::size_t>(index)] = RVOPENGL::getFbo(index)->getTexture()->getGLId();
    return names;
}

class CollectorInFrame : public EngineTest {
  protected:
    RVCAMERA *camera = nullptr;
    BrightSquare *square = nullptr;

    CollectorInFrame() { settings.setShaders(true); }

    void SetUp() override {
        EngineTest::SetUp();
        camera = new RVCAMERA;
        square = new BrightSquare;
        RAVOLT::bloomingOn();
        RAVOLT::DOFOn();
        RAVOLT::setDOFFocus(0);
        RAVOLT::setDOFRange(1);
    }

    void TearDown() override {
        resetEffects();
        EngineTest::TearDown();
    }

    Picture pictureOfAFrame() {
        drawFrame(camera, square);
        return readFrame();
    }

    // The largest difference of a channel in the next frame.
    int changeFrom(const Picture &plain) { return differenceOf(pictureOfAFrame(), plain).maximum; }

    // Does it once, in the draw of that profile.
    void during(RV_OPENGL_PROFILE profile, const std::function<void()> &action) {
        square->meanwhile = [profile, action, done = false]() mutable {
            if (!done && RVOPENGL::getProfile() == profile) {
                done = true;
                action();
            }
        };
    }
};

TEST_F(CollectorInFrame, ThePictureIsTheSameWhereverItRuns) {
    const Picture plain = pictureOfAFrame();
    EXPECT_NE(plain.at(64, 48).red, plain.at(2, 2).red);
    for (const RV_OPENGL_PROFILE profile : {RV_OPENGL_PROFILE_ZPASS, RV_OPENGL_PROFILE_FULL}) {
        during(profile, [] { EXPECT_TRUE(RVTEXTURE::garbageCollect(0)); });
        EXPECT_EQ(changeFrom(plain), 0) << profile;
        EXPECT_EQ(changeFrom(plain), 0) << "the frame behind " << profile;
    }
}

TEST_F(CollectorInFrame, AnUploadThatFindsNoRoomLeavesThePictureAlone) {
    const Picture plain = pictureOfAFrame();
    writeFile("late.tga", plainTga(8, 8));
    auto *late = new RVTEXTURE;
    late->incReferences();
    ASSERT_TRUE(late->load("late.tga"));
    const unsigned int taken = RAVOLT::getFreeVideoMemory();
    RAVOLT::pushVideoMemory(taken);
    during(RV_OPENGL_PROFILE_FULL, [late] { late->render(nullptr); });
    markLog();
    EXPECT_EQ(changeFrom(plain), 0);
    EXPECT_LOGGED("[BEGIN GARBAGE COLLECTOR]");
    EXPECT_NOT_LOGGED("   [dynamic] unloaded");
    EXPECT_TRUE(late->isLoaded());
    RAVOLT::popVideoMemory(taken);
}

// A map that is kept over frames could not come back.
TEST_F(CollectorInFrame, TheTexturesOfTheTargetsStayWithTheirContents) {
    pictureOfAFrame();
    const auto before = texturesOfThePool();
    RVTEXTURE::garbageCollect(0);
    EXPECT_EQ(texturesOfThePool(), before);
    EXPECT_NOT_LOGGED("   [dynamic] unloaded");
}

TEST_F(CollectorInFrame, TexturesThrownOutByTheApplicationAreBackWithTheNextFrame) {
    const Picture plain = pictureOfAFrame();
    for (int index = 0; index < targets; ++index)
        EXPECT_TRUE(RVOPENGL::getFbo(index)->getTexture()->unload(true));
    EXPECT_EQ(changeFrom(plain), 0);
    for (int index = 0; index < targets; ++index)
        EXPECT_TRUE(RVOPENGL::getFbo(index)->isOk()) << index;
}

// What counts for something goes, and its file brings it back.
TEST_F(CollectorInFrame, AnImageFromAFileInATargetIsEvictedAndReloaded) {
    writeFile("held.tga", plainTga(8, 8));
    auto *held = new RVTEXTURE;
    held->incReferences();
    held->setFilter(true, false, true);
    ASSERT_TRUE(held->load("held.tga"));
    held->render(nullptr);
    auto *target = new RVFBO;
    ASSERT_TRUE(target->bindTexture(0, held));
    EXPECT_TRUE(target->isOk());
    RVFBO::unbind();
    RVTEXTURE::garbageCollect(0);
    EXPECT_FALSE(held->isLoaded());
    EXPECT_TRUE(target->isOk());
    EXPECT_TRUE(held->isLoaded());
    RVFBO::unbind();
}

} // namespace
} // namespace ravolt::test
