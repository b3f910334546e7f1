// What textures ask of OpenGL, in which order, and what they count for.

#include "ravolt/RVTEXTURE.h"

#include "ravolt/RAVOLT.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/zlf.h"
#include "tests/resources/tgaFiles.h"
#include "tests/support/engineFixture.h"

#include <gtest/gtest.h>

#include <new>

namespace ravolt::test {

namespace {

constexpr int unpackAlignment = GL_UNPACK_ALIGNMENT;

class TextureCalls : public SilentEngineTest {
  protected:
    void SetUp() override {
        SilentEngineTest::SetUp();
        RVTEXTURE::texturingOff(RV_TEXTURE_UNITS);
        usedBefore = RVTEXTURE::getUsedMemory();
    }

    // A texture from a file of its own, with a reference, of one level.
    RVTEXTURE *makeTexture(const std::string &name, unsigned int size = 4) {
        writeFile(name, plainTga(size, size));
        RVTEXTURE *texture = new RVTEXTURE;
        EXPECT_TRUE(texture->load(name.c_str()));
        texture->setFilter(true, false, false);
        texture->incReferences();
        return texture;
    }

    template <class Action> Calls callsOf(Action action) {
        recorder.start();
        action();
        return recorder.stop();
    }

    Calls renderCalls(RVTEXTURE *texture, unsigned int unit = 0) {
        return callsOf([&] { EXPECT_TRUE(texture->render(&unit)); });
    }

    void renderAt(RVTEXTURE *texture, long stamp) {
        while (RAVOLT::getTimeStamp() < stamp)
            RAVOLT::begin3D(nullptr);
        EXPECT_TRUE(texture->render(nullptr));
    }

    // Charges the video memory until so many bytes are free.
    void leaveFree(unsigned int bytes) {
        RAVOLT::pushVideoMemory(RAVOLT::getFreeVideoMemory() - bytes);
    }

    // Ends the lie, and the count of a live block that the failed call has left.
    void allocationsWork() {
        recorder.allocationsWork();
        zlfFree(nullptr);
    }

    int usedMain() const { return RVTEXTURE::getUsedMemory() - usedBefore; }

    int usedBefore = 0;
};

// --- Upload

TEST_F(TextureCalls, UpdateSetsFiltersWrapAndAnisotropyBeforeThePixels) {
    RVTEXTURE *texture = makeTexture("a.tga", 2);
    texture->setFilter(true, true, false);
    const Calls calls = callsOf([&] { EXPECT_TRUE(texture->update()); });
    const unsigned int name = texture->getGLId();
    EXPECT_NE(0u, name);
    EXPECT_EQ(calls, (Calls{
                         {"glGenTextures", 1, name},
                         {"glPrioritizeTextures", 1, name, 1.0},
                         {"glActiveTextureARB", GL_TEXTURE0},
                         {"glBindTexture", GL_TEXTURE_2D, name},
                         {"glTexParameteri", GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR},
                         {"glTexParameteri", GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER,
                          GL_LINEAR_MIPMAP_LINEAR},
                         {"glPixelStorei", unpackAlignment, 1},
                         {"glTexParameteri", GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_REPEAT},
                         {"glTexParameteri", GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_REPEAT},
                         {"glTexParameterf", GL_TEXTURE_2D, GL_TEXTURE_MAX_ANISOTROPY_EXT,
                          RVOPENGL::getAnisotropicLevel()},
                         {"glTexImage2D", GL_TEXTURE_2D, 0, GL_RGB, 2, 2, 0, GL_RGB,
                          GL_UNSIGNED_BYTE, anyAddress},
                         {"glTexImage2D", GL_TEXTURE_2D, 1, GL_RGB, 1, 1, 0, GL_RGB,
                          GL_UNSIGNED_BYTE, anyAddress},
                     }));
    EXPECT_GT(RVOPENGL::getAnisotropicLevel(), 0.0f);
}

TEST_F(TextureCalls, NearestFilterAndClampReachOpenGL) {
    RVTEXTURE *texture = makeTexture("a.tga");
    texture->setFilter(false, false, true);
    const Calls calls = callsOf([&] { texture->update(); });
    EXPECT_TRUE(calls.haveInOrder(
        {{"glTexParameteri", GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST},
         {"glTexParameteri", GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST},
         {"glTexParameteri", GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE},
         {"glTexParameteri", GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE}}));
    EXPECT_EQ(1u, calls.count("glTexImage2D"));

    texture->setFilter(true, false, true);
    EXPECT_TRUE(
        callsOf([&] {
            texture->update();
        }).contains(Call{"glTexParameteri", GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR}));
    texture->setFilter(false, true, true);
    EXPECT_TRUE(callsOf([&] { texture->update(); })
                    .contains(Call{"glTexParameteri", GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER,
                                   GL_NEAREST_MIPMAP_NEAREST}));
}

class WithoutAnisotropy : public TextureCalls {
  protected:
    void SetUp() override {
        if (RVOPENGL::useAnisotropic())
            GTEST_SKIP() << "an earlier start of this process has found the extension";
        recorder.hideExtension("GL_EXT_texture_filter_anisotropic");
        TextureCalls::SetUp();
    }
    void TearDown() override {
        if (!IsSkipped())
            TextureCalls::TearDown();
    }
};

TEST_F(WithoutAnisotropy, NoLevelIsSet) {
    RVTEXTURE *texture = makeTexture("a.tga");
    const Calls calls = callsOf([&] { EXPECT_TRUE(texture->update()); });
    EXPECT_TRUE(calls.contains("glTexImage2D"));
    EXPECT_FALSE(calls.contains("glTexParameterf"));
}

TEST_F(TextureCalls, ShadowMapComparesAndHasNoPixels) {
    RVTEXTURE *texture = new RVTEXTURE;
    texture->setFilter(true, false, true);
    const Calls calls = callsOf([&] { EXPECT_TRUE(texture->create(64, 32, 5)); });
    EXPECT_TRUE(calls.haveInOrder(
        {{"glTexParameteri", GL_TEXTURE_2D, GL_TEXTURE_COMPARE_MODE, GL_COMPARE_R_TO_TEXTURE},
         {"glTexParameteri", GL_TEXTURE_2D, GL_TEXTURE_COMPARE_FUNC, GL_LEQUAL},
         {"glTexImage2D", GL_TEXTURE_2D, 0, GL_DEPTH_COMPONENT, 64, 32, 0, GL_DEPTH_COMPONENT,
          GL_UNSIGNED_BYTE, 0}}));
    EXPECT_FALSE(calls.contains("glTexParameterf"));
    EXPECT_EQ(nullptr, texture->getBitmap());
}

TEST_F(TextureCalls, FloatTargetHasNoPixelsAndNoLevelsOfItsOwn) {
    RVTEXTURE *texture = new RVTEXTURE;
    const Calls calls = callsOf([&] { EXPECT_TRUE(texture->create(64, 32, 6)); });
    EXPECT_EQ(calls.named("glTexImage2D"), (Calls{{"glTexImage2D", GL_TEXTURE_2D, 0, GL_RGBA16F_ARB,
                                                   64, 32, 0, GL_RGBA, GL_HALF_FLOAT_ARB, 0}}));
    EXPECT_TRUE(calls.contains(
        Call{"glTexParameteri", GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_LINEAR}));
    EXPECT_FALSE(calls.contains("glTexParameterf"));
    EXPECT_FALSE(
        calls.contains(Call{"glTexParameteri", GL_TEXTURE_2D, GL_TEXTURE_COMPARE_FUNC, GL_LEQUAL}));
}

TEST_F(TextureCalls, ChainHasALevelForEachHalvingOfTheLargerSize) {
    RVTEXTURE *texture = new RVTEXTURE;
    const Calls calls = callsOf([&] { EXPECT_TRUE(texture->create(16, 4, 4)); });
    const Calls images = calls.named("glTexImage2D");
    ASSERT_EQ(5u, images.size());
    const int sizes[][2] = {{16, 4}, {8, 2}, {4, 1}, {2, 1}, {1, 1}};
    for (std::size_t level = 0; level < images.size(); ++level)
        EXPECT_EQ(images[level],
                  (Call{"glTexImage2D", GL_TEXTURE_2D, level, GL_RGBA, sizes[level][0],
                        sizes[level][1], 0, GL_RGBA, GL_UNSIGNED_BYTE, anyAddress}));
}

TEST_F(TextureCalls, OddSizesHalveRoundedDown) {
    RVTEXTURE *texture = new RVTEXTURE;
    const Calls images =
        callsOf([&] { EXPECT_TRUE(texture->create(7, 1, 3)); }).named("glTexImage2D");
    ASSERT_EQ(3u, images.size());
    EXPECT_EQ(images[1], (Call{"glTexImage2D", GL_TEXTURE_2D, 1, GL_RGB, 3, 1, 0, GL_RGB,
                               GL_UNSIGNED_BYTE, anyAddress}));
    EXPECT_EQ(images[2], (Call{"glTexImage2D", GL_TEXTURE_2D, 2, GL_RGB, 1, 1, 0, GL_RGB,
                               GL_UNSIGNED_BYTE, anyAddress}));
}

TEST_F(TextureCalls, TexturesWithoutASizeAreHarmless) {
    const unsigned int sizes[][2] = {{0, 0}, {0, 8}, {8, 0}};
    for (const auto &size : sizes)
        for (unsigned int depth = 3; depth <= 6; ++depth) {
            RVTEXTURE *texture = new RVTEXTURE;
            EXPECT_TRUE(texture->create(size[0], size[1], depth));
            EXPECT_TRUE(texture->isLoaded());
            const char pixel[4] = {};
            EXPECT_EQ(depth <= 4, texture->modify(pixel, true));
            EXPECT_TRUE(texture->modify(pixel, true));
            EXPECT_TRUE(texture->update());
            EXPECT_TRUE(texture->render(nullptr));
        }
    EXPECT_TRUE(problemsSince(startMark).size() <= 1u); // the start's own
}

TEST_F(TextureCalls, NeverMadeTextureHasNothingToUpload) {
    RVTEXTURE *texture = new RVTEXTURE;
    markLog();
    const Calls calls = callsOf([&] { EXPECT_FALSE(texture->update()); });
    EXPECT_TRUE(calls.empty());
    EXPECT_LOGGED_EXACTLY("   [!] Invalid params @ RVTEXTURE::update\n");
}

TEST_F(TextureCalls, RepeatedUpdateDeletesTheFormerName) {
    RVTEXTURE *texture = makeTexture("a.tga");
    texture->update();
    const unsigned int former = texture->getGLId();
    const Calls calls = callsOf([&] { EXPECT_TRUE(texture->update()); });
    EXPECT_EQ(calls[0], (Call{"glDeleteTextures", 1, former}));
    EXPECT_EQ(1u, calls.count("glDeleteTextures"));
    EXPECT_NE(former, texture->getGLId());
}

TEST_F(TextureCalls, SetFilterUploadsOnlyWhatIsResident) {
    RVTEXTURE *texture = makeTexture("a.tga");
    EXPECT_TRUE(callsOf([&] { texture->setFilter(false, false, false); }).empty());
    texture->update();
    EXPECT_TRUE(callsOf([&] {
                    EXPECT_TRUE(texture->setFilter(true, false, true));
                }).contains("glTexImage2D"));
}

// --- Create

TEST_F(TextureCalls, CreateChecksSizesAndDepth) {
    RVTEXTURE *texture = new RVTEXTURE;
    const std::string name = texture->getFilename();
    const unsigned int bad[][3] = {{4097, 1, 3}, {1, 4097, 3}, {1, 1, 2}, {1, 1, 7}, {1, 1, 0}};
    for (const auto &row : bad) {
        markLog();
        EXPECT_FALSE(texture->create(row[0], row[1], row[2]));
        EXPECT_LOGGED_EXACTLY("   [!] Invalid params @ RVTEXTURE::create\n");
    }
    EXPECT_EQ(name, texture->getFilename());
    EXPECT_FALSE(texture->isLoaded());
    texture->setFilter(true, false, false);
    EXPECT_TRUE(texture->create(4096, 4096, 3));
    EXPECT_STREQ("[dynamic]", texture->getFilename());
    EXPECT_EQ(4096u, texture->getSizeX());
    EXPECT_EQ(4096u, texture->getSizeY());
}

TEST_F(TextureCalls, CreateWithoutMemoryIsReported) {
    RVTEXTURE *texture = makeTexture("a.tga");
    texture->update();
    markLog();
    recorder.failAllocation(512 * 512 * 3);
    EXPECT_FALSE(texture->create(512, 512, 3));
    allocationsWork();
    EXPECT_LOGGED_EXACTLY("   [!] Out of memory @ RVTEXTURE::create\n");
    EXPECT_EQ(nullptr, texture->getBitmap());
    EXPECT_FALSE(texture->isLoaded());
    EXPECT_STREQ("a.tga", texture->getFilename());
}

TEST_F(TextureCalls, CreateOverALoadedTextureReplacesIt) {
    RVTEXTURE *texture = makeTexture("a.tga");
    texture->update();
    const unsigned int former = texture->getGLId();
    const unsigned int used = RAVOLT::getUsedVideoMemory();
    const Calls calls = callsOf([&] { EXPECT_TRUE(texture->create(8, 8, 5)); });
    EXPECT_EQ(calls[0], (Call{"glDeleteTextures", 1, former}));
    EXPECT_EQ(nullptr, texture->getBitmap());
    // It still counts what the file counted for, in both ledgers.
    EXPECT_EQ(used, RAVOLT::getUsedVideoMemory());
    EXPECT_EQ(64, usedMain());
}

TEST_F(TextureCalls, DynamicTexturesCountForNothing) {
    const unsigned int used = RAVOLT::getUsedVideoMemory();
    RVTEXTURE *texture = new RVTEXTURE;
    EXPECT_TRUE(texture->create(64, 64, 4));
    EXPECT_EQ(used, RAVOLT::getUsedVideoMemory());
    EXPECT_EQ(0, usedMain());
    EXPECT_TRUE(texture->unload(true));
    EXPECT_EQ(used, RAVOLT::getUsedVideoMemory());
    EXPECT_EQ(0, usedMain());
}

// --- Reload

TEST_F(TextureCalls, ReloadOfAResidentTextureDoesNothing) {
    RVTEXTURE *texture = makeTexture("a.tga");
    texture->update();
    EXPECT_TRUE(callsOf([&] { EXPECT_FALSE(texture->reload()); }).empty());
}

TEST_F(TextureCalls, ReloadReadsTheFileOnlyWhenThePixelsAreGone) {
    RVTEXTURE *texture = makeTexture("a.tga");
    writeFile("a.tga", plainTga(8, 8));
    EXPECT_TRUE(texture->reload());
    EXPECT_EQ(4u, texture->getSizeX());
    texture->unload(false);
    EXPECT_TRUE(texture->reload());
    EXPECT_EQ(4u, texture->getSizeX());
    texture->unload(true);
    EXPECT_TRUE(texture->reload());
    EXPECT_EQ(8u, texture->getSizeX());
    EXPECT_TRUE(texture->isLoaded());
}

TEST_F(TextureCalls, ReloadOfRenderTargetsMakesAnEmptyTexture) {
    for (const unsigned int depth : {5u, 6u}) {
        RVTEXTURE *texture = new RVTEXTURE;
        texture->create(16, 8, depth);
        EXPECT_TRUE(texture->unload(true));
        EXPECT_FALSE(texture->isLoaded());
        markLog();
        const Calls calls = callsOf([&] { EXPECT_TRUE(texture->reload()); });
        EXPECT_EQ(1u, calls.count("glTexImage2D"));
        EXPECT_TRUE(texture->isLoaded());
        EXPECT_NOTHING_LOGGED();
    }
}

TEST_F(TextureCalls, ReloadOfADynamicTextureWithoutPixelsFailsInItsUpdate) {
    RVTEXTURE *texture = new RVTEXTURE;
    texture->create(16, 8, 3);
    texture->unload(true);
    markLog();
    EXPECT_TRUE(texture->reload());
    EXPECT_LOGGED_EXACTLY("   [!] Invalid params @ RVTEXTURE::update\n");
    EXPECT_FALSE(texture->isLoaded());
}

TEST_F(TextureCalls, ReloadOfAMissingFileStillUpdates) {
    RVTEXTURE *texture = makeTexture("a.tga");
    texture->unload(true);
    std::remove("a.tga");
    markLog();
    EXPECT_TRUE(texture->reload());
    EXPECT_LOGGED_EXACTLY("   [!] Unable to open file a.tga @ RVTEXTURE::loadTGA\n"
                          "   [!] Invalid params @ RVTEXTURE::update\n");
}

// --- Modify

TEST_F(TextureCalls, ModifyUploadsTheWholeImageOnUnit0) {
    RVTEXTURE *texture = new RVTEXTURE;
    texture->create(2, 2, 3);
    const char pixels[12] = {};
    const Calls calls = callsOf([&] { EXPECT_TRUE(texture->modify(pixels, false)); });
    EXPECT_EQ(calls, (Calls{{"glActiveTextureARB", GL_TEXTURE0},
                            {"glBindTexture", GL_TEXTURE_2D, texture->getGLId()},
                            {"glPixelStorei", unpackAlignment, 1},
                            {"glTexSubImage2D", GL_TEXTURE_2D, 0, 0, 0, 2, 2, GL_RGB,
                             GL_UNSIGNED_BYTE, anyAddress}}));
}

TEST_F(TextureCalls, ModifyOfOtherDepthsSendsFourChannels) {
    for (const unsigned int depth : {4u, 6u}) {
        RVTEXTURE *texture = new RVTEXTURE;
        texture->create(2, 2, depth);
        const char pixels[16] = {};
        const Calls calls = callsOf([&] { EXPECT_TRUE(texture->modify(pixels, false)); });
        EXPECT_EQ(calls.back(), (Call{"glTexSubImage2D", GL_TEXTURE_2D, 0, 0, 0, 2, 2, GL_RGBA,
                                      GL_UNSIGNED_BYTE, anyAddress}));
    }
}

TEST_F(TextureCalls, ModifyOfNothingIsRefused) {
    RVTEXTURE *texture = makeTexture("a.tga");
    markLog();
    EXPECT_TRUE(callsOf([&] { EXPECT_FALSE(texture->modify(nullptr, false)); }).empty());
    EXPECT_LOGGED_EXACTLY("   [!] Invalid params @ RVTEXTURE::modify\n");
}

TEST_F(TextureCalls, FirstKeepOnlyMakesRoomAndTheSecondUploads) {
    RVTEXTURE *texture = new RVTEXTURE;
    texture->create(1, 2, 4);
    texture->unload(true);
    const Bytes pixels = {1, 2, 3, 4, 5, 6, 7, 8};
    const char *bits = reinterpret_cast<const char *>(pixels.data());
    EXPECT_TRUE(callsOf([&] { EXPECT_FALSE(texture->modify(bits, true)); }).empty());
    ASSERT_NE(nullptr, texture->getBitmap());
    EXPECT_EQ(Bytes(8), Bytes(texture->getBitmap(), texture->getBitmap() + 8));
    const Calls calls = callsOf([&] { EXPECT_TRUE(texture->modify(bits, true)); });
    EXPECT_TRUE(calls.contains("glTexSubImage2D"));
    EXPECT_EQ(pixels, Bytes(texture->getBitmap(), texture->getBitmap() + 8));
}

TEST_F(TextureCalls, KeepWithoutMemoryIsReported) {
    RVTEXTURE *texture = makeTexture("a.tga", 64);
    texture->update();
    texture->unload(true);
    markLog();
    const Bytes pixels(64 * 64 * 3);
    recorder.failAllocation(64 * 64 * 3);
    EXPECT_FALSE(texture->modify(reinterpret_cast<const char *>(pixels.data()), true));
    allocationsWork();
    EXPECT_LOGGED_EXACTLY("   [!] Out of memory @ RVTEXTURE::modify\n");
    EXPECT_EQ(nullptr, texture->getBitmap());
}

TEST_F(TextureCalls, TexturesCanBeModifiedFromTheirOwnCopy) {
    RVTEXTURE *texture = new RVTEXTURE;
    texture->setFilter(true, false, false);
    texture->create(2, 2, 3);
    texture->getBitmap()[0] = 200;
    EXPECT_TRUE(texture->modify(reinterpret_cast<char *>(texture->getBitmap()), true));
    EXPECT_EQ(200, texture->getBitmap()[0]);
}

// --- Units

TEST_F(TextureCalls, RenderEnablesSelectsAndBinds) {
    RVTEXTURE *texture = makeTexture("a.tga");
    texture->update();
    EXPECT_EQ(renderCalls(texture, 3),
              (Calls{{"glActiveTextureARB", GL_TEXTURE3},
                     {"glEnable", GL_TEXTURE_2D},
                     {"glActiveTextureARB", GL_TEXTURE3},
                     {"glBindTexture", GL_TEXTURE_2D, texture->getGLId()}}));
}

TEST_F(TextureCalls, RenderWithoutDataIsUnit0) {
    RVTEXTURE *texture = makeTexture("a.tga");
    texture->update();
    const Calls calls = callsOf([&] { EXPECT_TRUE(texture->render(nullptr)); });
    EXPECT_EQ(calls.named("glActiveTextureARB"),
              (Calls{{"glActiveTextureARB", GL_TEXTURE0}, {"glActiveTextureARB", GL_TEXTURE0}}));
}

TEST_F(TextureCalls, RenderReachesUnit15AndRefuses16) {
    RVTEXTURE *texture = makeTexture("a.tga");
    texture->update();
    EXPECT_TRUE(renderCalls(texture, 15).contains(Call{"glActiveTextureARB", GL_TEXTURE15}));
    RAVOLT::begin3D(nullptr);
    const int stamp = texture->getTimeStamp();
    for (unsigned int unit : {16u, 17u, 0xffffffffu}) {
        markLog();
        EXPECT_TRUE(callsOf([&] { EXPECT_FALSE(texture->render(&unit)); }).empty());
        EXPECT_LOGGED_EXACTLY("   [!] Invalid params @ RVTEXTURE::render\n");
    }
    EXPECT_EQ(stamp, texture->getTimeStamp());
}

TEST_F(TextureCalls, SecondRenderOnAUnitCallsNothingButRefreshesTheStamp) {
    RVTEXTURE *texture = makeTexture("a.tga");
    renderCalls(texture, 2);
    EXPECT_EQ(RAVOLT::getTimeStamp(), texture->getTimeStamp());
    EXPECT_TRUE(renderCalls(texture, 2).empty());
    EXPECT_EQ(1u, renderCalls(texture, 4).count("glBindTexture"));
    EXPECT_TRUE(renderCalls(texture, 2).empty());

    RVTEXTURE *other = makeTexture("b.tga");
    RAVOLT::begin3D(nullptr);
    renderCalls(other, 2);
    EXPECT_TRUE(renderCalls(texture, 2).contains("glBindTexture"));
    EXPECT_EQ(RAVOLT::getTimeStamp(), texture->getTimeStamp());
}

TEST_F(TextureCalls, UnitsAreSwitchedOnce) {
    EXPECT_EQ(callsOf([] { EXPECT_TRUE(RVTEXTURE::texturingOn(5)); }),
              (Calls{{"glActiveTextureARB", GL_TEXTURE5}, {"glEnable", GL_TEXTURE_2D}}));
    EXPECT_TRUE(callsOf([] { EXPECT_TRUE(RVTEXTURE::texturingOn(5)); }).empty());
    EXPECT_EQ(callsOf([] { EXPECT_TRUE(RVTEXTURE::texturingOff(5)); }),
              (Calls{{"glActiveTextureARB", GL_TEXTURE5}, {"glDisable", GL_TEXTURE_2D}}));
    EXPECT_TRUE(callsOf([] { EXPECT_TRUE(RVTEXTURE::texturingOff(5)); }).empty());
}

TEST_F(TextureCalls, Unit16AndAboveMeansAllUnitsInOrder) {
    for (const unsigned int unit : {16u, 17u, 0xffffffffu}) {
        RVTEXTURE::texturingOn(7);
        const Calls on = callsOf([&] { EXPECT_TRUE(RVTEXTURE::texturingOn(unit)); });
        EXPECT_EQ(15u, on.count(Call{"glEnable", GL_TEXTURE_2D}));
        const Calls units = on.named("glActiveTextureARB");
        ASSERT_EQ(15u, units.size());
        for (unsigned int each = 0; each < 15; ++each)
            EXPECT_EQ(units[each],
                      (Call{"glActiveTextureARB", GL_TEXTURE0 + (each < 7 ? each : each + 1)}));
        const Calls off = callsOf([&] { EXPECT_TRUE(RVTEXTURE::texturingOff(unit)); });
        EXPECT_EQ(16u, off.count(Call{"glDisable", GL_TEXTURE_2D}));
        EXPECT_TRUE(callsOf([&] { EXPECT_TRUE(RVTEXTURE::texturingOff(unit)); }).empty());
    }
}

TEST_F(TextureCalls, OneUnitSwitchedOffStaysOffForTheSameTexture) {
    RVTEXTURE *texture = makeTexture("a.tga");
    renderCalls(texture, 1);
    RVTEXTURE::texturingOff(1);
    EXPECT_TRUE(renderCalls(texture, 1).empty());
}

TEST_F(TextureCalls, AllUnitsSwitchedOffForgetTheirTextures) {
    RVTEXTURE *texture = makeTexture("a.tga");
    renderCalls(texture, 1);
    RVTEXTURE::texturingOff(RV_TEXTURE_UNITS);
    EXPECT_EQ(renderCalls(texture, 1),
              (Calls{{"glActiveTextureARB", GL_TEXTURE1},
                     {"glEnable", GL_TEXTURE_2D},
                     {"glActiveTextureARB", GL_TEXTURE1},
                     {"glBindTexture", GL_TEXTURE_2D, texture->getGLId()}}));
}

TEST_F(TextureCalls, UpdateAndModifyForgetUnit0Alone) {
    RVTEXTURE *texture = makeTexture("a.tga");
    RVTEXTURE *other = makeTexture("b.tga");
    for (const bool modify : {false, true}) {
        renderCalls(texture, 0);
        renderCalls(texture, 1);
        const char pixels[4 * 4 * 3] = {};
        if (modify)
            other->modify(pixels, false);
        else
            other->update();
        EXPECT_TRUE(renderCalls(texture, 1).empty());
        EXPECT_TRUE(renderCalls(texture, 0).contains("glBindTexture"));
    }
}

TEST_F(TextureCalls, NewNameIsBoundOnEveryUnitAgain) {
    RVTEXTURE *texture = makeTexture("a.tga");
    renderCalls(texture, 0);
    renderCalls(texture, 6);
    texture->setFilter(false, false, false);
    EXPECT_TRUE(
        renderCalls(texture, 6).contains(Call{"glBindTexture", GL_TEXTURE_2D, texture->getGLId()}));
    EXPECT_TRUE(
        renderCalls(texture, 0).contains(Call{"glBindTexture", GL_TEXTURE_2D, texture->getGLId()}));
}

TEST_F(TextureCalls, NewTextureAtAnOldAddressIsBound) {
    alignas(RVTEXTURE) unsigned char place[sizeof(RVTEXTURE)];
    RVTEXTURE *former = new (place) RVTEXTURE;
    former->create(1, 1, 3);
    renderCalls(former, 2);
    former->~RVTEXTURE();
    RVTEXTURE *later = new (place) RVTEXTURE;
    later->create(1, 1, 3);
    EXPECT_TRUE(
        renderCalls(later, 2).contains(Call{"glBindTexture", GL_TEXTURE_2D, later->getGLId()}));
    later->~RVTEXTURE();
}

TEST_F(TextureCalls, ThrownOutTextureComesBackInTheSameFrame) {
    RVTEXTURE *texture = makeTexture("a.tga");
    renderCalls(texture, 2);
    EXPECT_TRUE(texture->unload(true));
    const Calls calls = renderCalls(texture, 2);
    EXPECT_TRUE(texture->isLoaded());
    EXPECT_TRUE(calls.haveInOrder(
        {{"glTexImage2D", GL_TEXTURE_2D, 0, GL_RGB, 4, 4, 0, GL_RGB, GL_UNSIGNED_BYTE, anyAddress},
         {"glActiveTextureARB", GL_TEXTURE2},
         {"glBindTexture", GL_TEXTURE_2D, texture->getGLId()}}));
}

TEST_F(TextureCalls, TooFewUnitsAreNeverSelectedButForAnUpload) {
    recorder.setTextureUnits(8);
    ASSERT_TRUE(restart());
    ASSERT_FALSE(RVOPENGL::useMultitexturing());
    RVTEXTURE::texturingOff(RV_TEXTURE_UNITS);
    RVTEXTURE *texture = makeTexture("a.tga");
    EXPECT_TRUE(
        callsOf([&] { texture->update(); }).contains(Call{"glActiveTextureARB", GL_TEXTURE0}));
    EXPECT_EQ(
        renderCalls(texture, 3),
        (Calls{{"glEnable", GL_TEXTURE_2D}, {"glBindTexture", GL_TEXTURE_2D, texture->getGLId()}}));
    EXPECT_EQ(callsOf([] { RVTEXTURE::texturingOff(3); }), (Calls{{"glDisable", GL_TEXTURE_2D}}));
}

// --- Budget

TEST_F(TextureCalls, LoadUpdateUnloadBalances) {
    const unsigned int used = RAVOLT::getUsedVideoMemory();
    RVTEXTURE *texture = makeTexture("a.tga", 8);
    EXPECT_EQ(256, usedMain());
    texture->update();
    EXPECT_EQ(used + 256, RAVOLT::getUsedVideoMemory());
    texture->unload(false);
    EXPECT_EQ(used, RAVOLT::getUsedVideoMemory());
    EXPECT_EQ(256, usedMain());
    texture->unload(true);
    EXPECT_EQ(0, usedMain());
    EXPECT_EQ(used, RAVOLT::getUsedVideoMemory());
}

TEST_F(TextureCalls, MipmappedTextureCountsFourTimesAndUnloadTakesTwiceFromMainMemory) {
    const unsigned int used = RAVOLT::getUsedVideoMemory();
    RVTEXTURE *texture = makeTexture("a.tga", 8);
    texture->setFilter(true, true, false);
    for (int cycle = 1; cycle <= 2; ++cycle) {
        texture->update();
        EXPECT_EQ(used + 1024, RAVOLT::getUsedVideoMemory());
        texture->unload(true);
        EXPECT_EQ(used, RAVOLT::getUsedVideoMemory());
        EXPECT_EQ(-256 * cycle, usedMain());
        texture->load("a.tga");
        EXPECT_EQ(256 - 256 * cycle, usedMain());
    }
}

TEST_F(TextureCalls, EachRepeatedUpdateOfAMipmappedTextureRaisesTheCount) {
    const unsigned int used = RAVOLT::getUsedVideoMemory();
    RVTEXTURE *texture = makeTexture("a.tga", 8);
    texture->setFilter(true, true, false);
    texture->update();
    texture->update(); // takes back 512, counts 1024 twice
    EXPECT_EQ(used + 1024 - 512 + 2048, RAVOLT::getUsedVideoMemory());
    texture->update(); // takes back 1024, counts 2048 twice
    EXPECT_EQ(used + 2560 - 1024 + 4096, RAVOLT::getUsedVideoMemory());
    texture->unload(true);
    EXPECT_EQ(used + 5632 - 4096, RAVOLT::getUsedVideoMemory());
    EXPECT_EQ(256 - 2048, usedMain());

    const unsigned int drifted = RAVOLT::getUsedVideoMemory();
    texture->load("a.tga"); // and the next cycle balances
    texture->update();
    EXPECT_EQ(drifted + 1024, RAVOLT::getUsedVideoMemory());
    texture->unload(true);
    EXPECT_EQ(drifted, RAVOLT::getUsedVideoMemory());
}

TEST_F(TextureCalls, RepeatedUpdateOfOneLevelBalances) {
    const unsigned int used = RAVOLT::getUsedVideoMemory();
    RVTEXTURE *texture = makeTexture("a.tga", 8);
    texture->update();
    texture->update();
    EXPECT_EQ(used + 256, RAVOLT::getUsedVideoMemory());
}

TEST_F(TextureCalls, FilterWithoutMipmapsLeavesHalfOfTheChainCounted) {
    const unsigned int used = RAVOLT::getUsedVideoMemory();
    RVTEXTURE *texture = makeTexture("a.tga", 8);
    texture->setFilter(true, true, false);
    texture->update();
    texture->setFilter(true, false, false);
    EXPECT_EQ(used + 1024 - 512 + 512, RAVOLT::getUsedVideoMemory());
    texture->unload(true);
    EXPECT_EQ(used + 512, RAVOLT::getUsedVideoMemory());
}

// --- Collector

class TextureCollector : public TextureCalls {
  protected:
    void expectNoCollection() { EXPECT_NOT_LOGGED("[BEGIN GARBAGE COLLECTOR]"); }
};

TEST_F(TextureCollector, WithoutTexturesThereIsNothingToDo) {
    markLog();
    EXPECT_FALSE(RVTEXTURE::garbageCollect(0));
    EXPECT_NOTHING_LOGGED();
}

TEST_F(TextureCollector, WithoutMemoryItReports) {
    for (int i = 0; i < 64; ++i)
        new RVTEXTURE;
    markLog();
    recorder.failAllocation(64 * sizeof(void *));
    EXPECT_FALSE(RVTEXTURE::garbageCollect(0));
    allocationsWork();
    EXPECT_LOGGED_EXACTLY("   [!] Out of memory @ RVTEXTURE::garbageCollect()\n");
    EXPECT_EQ(64u, RVTEXTURE::getNumberOfTextures());
}

TEST_F(TextureCollector, NewestGoFirst) {
    RVTEXTURE *a = makeTexture("a.tga"), *b = makeTexture("b.tga"), *c = makeTexture("c.tga");
    const long base = RAVOLT::getTimeStamp();
    renderAt(a, base + 5);
    renderAt(c, base + 7);
    renderAt(b, base + 9);
    const unsigned int used = RAVOLT::getUsedVideoMemory();
    markLog();
    EXPECT_TRUE(RVTEXTURE::garbageCollect(0));
    const auto candidate = [=](int index, const char *name, long frame) {
        return "      " + std::to_string(index) + ". " + name + " (" +
               std::to_string(base + frame) + ")\n";
    };
    EXPECT_LOGGED_EXACTLY(
        "[BEGIN GARBAGE COLLECTOR]\n\n"
        "   Memory used before : " +
        std::to_string(used) + "\n   Memory max. to keep: 0\n   Candidates:\n" +
        candidate(0, "b.tga", 9) + candidate(1, "c.tga", 7) + candidate(2, "a.tga", 5) +
        "   b.tga unloaded\n   c.tga unloaded\n   a.tga unloaded\n"
        "   Memory used after : " +
        std::to_string(used - 192) + "\n   Dead textures     : 0\n\n[END GARBAGE COLLECTOR]\n");
    for (const RVTEXTURE *texture : {a, b, c}) {
        EXPECT_FALSE(texture->isLoaded());
        EXPECT_EQ(nullptr, texture->getBitmap());
    }
}

TEST_F(TextureCollector, StopsUnloadingBelowWhatIsToBeKept) {
    RVTEXTURE *a = makeTexture("a.tga"), *b = makeTexture("b.tga"), *c = makeTexture("c.tga");
    const long base = RAVOLT::getTimeStamp();
    renderAt(a, base + 5);
    renderAt(c, base + 7);
    renderAt(b, base + 9);
    // At the bound itself one more goes.
    EXPECT_TRUE(RVTEXTURE::garbageCollect(RAVOLT::getUsedVideoMemory() - 64));
    EXPECT_FALSE(b->isLoaded());
    EXPECT_FALSE(c->isLoaded());
    EXPECT_TRUE(a->isLoaded());
}

TEST_F(TextureCollector, AboveTheUsedCountItOnlyDeletesTheDead) {
    RVTEXTURE *kept = makeTexture("kept.tga");
    RVTEXTURE *dead = makeTexture("dead.tga");
    RVTEXTURE *over = makeTexture("over.tga");
    dead->decReferences();
    over->decReferences();
    over->decReferences();
    for (RVTEXTURE *texture : {kept, dead, over})
        texture->update();
    const unsigned int used = RAVOLT::getUsedVideoMemory();
    markLog();
    EXPECT_TRUE(RVTEXTURE::garbageCollect(used + 1));
    EXPECT_LOGGED("   Dead textures     : 2");
    EXPECT_LOGGED_TIMES(1, "   dead.tga unloaded");
    EXPECT_NOT_LOGGED("   kept.tga unloaded");
    EXPECT_EQ(1u, RVTEXTURE::getNumberOfTextures());
    EXPECT_EQ(kept, RVTEXTURE::getFirst());
    EXPECT_TRUE(kept->isLoaded());
    EXPECT_EQ(used - 128, RAVOLT::getUsedVideoMemory());
}

TEST_F(TextureCollector, ExactlyEnoughFreeMemoryDoesNotStartIt) {
    RVTEXTURE *texture = makeTexture("a.tga", 8);
    leaveFree(256);
    markLog();
    EXPECT_TRUE(texture->update());
    expectNoCollection();
}

TEST_F(TextureCollector, OneByteLessStartsIt) {
    RVTEXTURE *texture = makeTexture("a.tga", 8);
    leaveFree(255);
    markLog();
    EXPECT_TRUE(texture->update());
    EXPECT_LOGGED("   Garbage collector at " + std::to_string(RAVOLT::getTimeStamp()));
    EXPECT_LOGGED("   Memory max. to keep: " + std::to_string(RAVOLT::getVideoMemory() - 256));
    EXPECT_TRUE(texture->isLoaded());
}

TEST_F(TextureCollector, LevelsOfAChainAreNotAskedFor) {
    RVTEXTURE *texture = makeTexture("a.tga", 8);
    texture->setFilter(true, true, false);
    leaveFree(256);
    markLog();
    EXPECT_TRUE(texture->update());
    expectNoCollection();
}

TEST_F(TextureCollector, MakesRoomForAnUpload) {
    RVTEXTURE *resident = makeTexture("resident.tga", 16);
    ASSERT_TRUE(resident->render(nullptr));
    RVTEXTURE *texture = makeTexture("a.tga", 8);
    leaveFree(0);
    EXPECT_TRUE(texture->update());
    EXPECT_FALSE(resident->isLoaded());
    EXPECT_TRUE(texture->isLoaded());
    EXPECT_EQ(1024u - 256u, RAVOLT::getFreeVideoMemory());

    // The one thrown out comes back on use.
    RAVOLT::begin3D(nullptr);
    RAVOLT::popVideoMemory(4096);
    EXPECT_TRUE(resident->render(nullptr));
    EXPECT_TRUE(resident->isLoaded());
}

TEST_F(TextureCollector, UploadSurvivesTheCollectorThatItStarts) {
    RVTEXTURE *texture = makeTexture("a.tga", 8);
    texture->setFilter(true, true, false);
    for (const int references : {1, 0, -5}) {
        while (texture->getReferences() > references)
            texture->decReferences();
        texture->unload(true);
        leaveFree(0);
        markLog();
        EXPECT_TRUE(texture->render(nullptr));
        EXPECT_LOGGED("[BEGIN GARBAGE COLLECTOR]");
        EXPECT_LOGGED("   a.tga unloaded");
        EXPECT_LOGGED("   Dead textures     : 0");
        ASSERT_EQ(texture, RVTEXTURE::getFirst());
        EXPECT_TRUE(texture->isLoaded());
        EXPECT_EQ(nullptr, texture->getBitmap());
    }
    EXPECT_TRUE(RVTEXTURE::garbageCollect(0xffffffffu));
    EXPECT_EQ(0u, RVTEXTURE::getNumberOfTextures());
}

TEST_F(TextureCollector, CountsLargerThanTheBudgetWrap) {
    // More is charged than exists, so that free memory looks endless and nothing starts.
    RVTEXTURE *texture = makeTexture("a.tga", 8);
    leaveFree(0);
    RAVOLT::pushVideoMemory(1);
    markLog();
    EXPECT_TRUE(texture->update());
    expectNoCollection();
}

} // namespace

} // namespace ravolt::test
