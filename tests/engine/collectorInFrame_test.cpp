// The texture collector while a frame is drawn through the engine's targets: the picture is the
// same as without it. Textures that the application unloads are uploaded again in the next frame.

#include "tests/engine/brightSquare.h"
#include "tests/engine/effectsTest.h"
#include "tests/resources/tgaFiles.h"

namespace ravolt::test {
namespace {

constexpr int targets = 14;

class CollectorInFrame : public EffectsTest {
  protected:
    BrightSquare *square = nullptr;

    void SetUp() override {
        EffectsTest::SetUp();
        if (IsSkipped())
            return;
        square = new BrightSquare;
        RAVOLT::bloomingOn();
        RAVOLT::DOFOn();
        RAVOLT::setDOFFocus(0);
        RAVOLT::setDOFRange(1);
    }

    static RVTEXTURE *textureFromAFile() {
        writeFile("picture.tga", plainTga(8, 8));
        auto *texture = new RVTEXTURE;
        texture->incReferences();
        texture->setFilter(true, false, true);
        EXPECT_TRUE(texture->load("picture.tga"));
        return texture;
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
        EXPECT_EQ(changeFrom(plain), 0) << "the frame after " << profile;
    }
}

TEST_F(CollectorInFrame, AnUploadThatFindsNoRoomDoesNotChangeThePicture) {
    const Picture plain = pictureOfAFrame();
    RVTEXTURE *late = textureFromAFile();
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

// The collector does not evict them: a map that is kept over frames could not be restored.
TEST_F(CollectorInFrame, TexturesOfTheTargetsAreUnloadedByTheApplicationAlone) {
    const auto nameOf = [](int index) { return RVOPENGL::getFbo(index)->getTexture()->getGLId(); };
    const Picture plain = pictureOfAFrame();
    std::vector<unsigned int> before;
    for (int index = 0; index < targets; ++index)
        before.push_back(nameOf(index));
    RVTEXTURE::garbageCollect(0);
    for (int index = 0; index < targets; ++index)
        EXPECT_EQ(nameOf(index), before[static_cast<std::size_t>(index)]);
    EXPECT_NOT_LOGGED("   [dynamic] unloaded");

    for (int index = 0; index < targets; ++index)
        EXPECT_TRUE(RVOPENGL::getFbo(index)->getTexture()->unload(true));
    EXPECT_EQ(changeFrom(plain), 0);
    for (int index = 0; index < targets; ++index)
        EXPECT_TRUE(RVOPENGL::getFbo(index)->isOk()) << index;
}

TEST_F(CollectorInFrame, AnImageFromAFileInATargetIsEvictedAndReloaded) {
    RVTEXTURE *image = textureFromAFile();
    image->render(nullptr);
    auto *target = new RVFBO;
    ASSERT_TRUE(target->bindTexture(0, image));
    EXPECT_TRUE(target->isOk());
    RVFBO::unbind();
    RVTEXTURE::garbageCollect(0);
    EXPECT_FALSE(image->isLoaded());
    EXPECT_TRUE(target->isOk());
    EXPECT_TRUE(image->isLoaded());
    RVFBO::unbind();
}

} // namespace
} // namespace ravolt::test
