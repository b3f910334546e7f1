// How textures come into OpenGL: update, create, reload, modify.

#include "tests/resources/textureCalls.h"

namespace ravolt::test {

namespace {

constexpr int unpackAlignment = GL_UNPACK_ALIGNMENT;

// --- Upload

TEST_F(TextureCalls, UpdateSetsFiltersWrapAndAnisotropyBeforeThePixels) {
    RVTEXTURE *texture = makeTexture("a.tga", 2);
    texture->setFilter(true, true, false);
    const Calls calls = callsOf([&] { EXPECT_TRUE(texture->update()); });
    const unsigned int name = texture->getGLId();
    EXPECT_NE(name, 0u);
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

TEST_F(TextureCalls, ChainHasALevelForEachHalvingOfTheLargerSize) {
    RVTEXTURE *texture = new RVTEXTURE;
    const Calls calls = callsOf([&] { EXPECT_TRUE(texture->create(16, 4, 4)); });
    const Calls images = calls.named("glTexImage2D");
    ASSERT_EQ(images.size(), 5u);
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
    ASSERT_EQ(images.size(), 3u);
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
            EXPECT_EQ(texture->modify(pixel, true), depth <= 4);
            EXPECT_TRUE(texture->modify(pixel, true));
            EXPECT_TRUE(texture->update());
            EXPECT_TRUE(texture->render(nullptr));
        }
    EXPECT_TRUE(problemsSince(startMark).size() <= 1u); // the start's own
}

TEST_F(TextureCalls, NeverMadeTextureHasNothingToUpload) {
    RVTEXTURE *texture = new RVTEXTURE;
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
    EXPECT_EQ(calls.count("glDeleteTextures"), 1u);
    EXPECT_NE(texture->getGLId(), former);
}

TEST_F(TextureCalls, SetFilterUploadsOnlyWhatIsResident) {
    RVTEXTURE *texture = makeTexture("a.tga");
    EXPECT_TRUE(callsOf([&] { texture->setFilter(false, false, false); }).empty());
    texture->update();
    EXPECT_TRUE(callsOf([&] {
                    EXPECT_TRUE(texture->setFilter(true, false, true));
                }).contains("glTexImage2D"));
}

TEST_F(TextureCalls, UnsupportedFileIsReadOnceAndCountsTheSameAtEachReturn) {
    writeFile("other.tga", tgaHeader(3, 4, 4, 24) + Bytes(4 * 4 * 3, 255));
    RVTEXTURE *texture = new RVTEXTURE;
    texture->setFilter(true, false, false);
    texture->incReferences();
    EXPECT_TRUE(texture->load("other.tga"));
    for (unsigned int frame = 0; frame < 3; ++frame) {
        markLog();
        EXPECT_TRUE(texture->render(nullptr));
        EXPECT_NOTHING_LOGGED();
        EXPECT_TRUE(texture->isLoaded());
        texture->unload(false);
    }
    EXPECT_EQ(usedMain(), 64);
    for (unsigned int collection = 0; collection < 3; ++collection) {
        texture->unload(true);
        EXPECT_EQ(usedMain(), 0);
        EXPECT_TRUE(texture->render(nullptr));
        EXPECT_EQ(usedMain(), 64);
    }
}

TEST_F(TextureCalls, UploadWithoutANameCountsForNothing) {
    RVTEXTURE *texture = makeTexture("a.tga", 8);
    const unsigned int used = RAVOLT::getUsedVideoMemory();
    recorder.refuse("glGenTextures", 0, 1);
    EXPECT_TRUE(texture->update());
    EXPECT_FALSE(texture->isLoaded());
    EXPECT_EQ(RAVOLT::getUsedVideoMemory(), used);
    EXPECT_TRUE(texture->update());
    EXPECT_EQ(RAVOLT::getUsedVideoMemory(), used + 256);
    texture->unload(true);
    EXPECT_EQ(RAVOLT::getUsedVideoMemory(), used);
}

// --- Create

TEST_F(TextureCalls, CreateChecksSizesAndDepth) {
    RVTEXTURE *texture = new RVTEXTURE;
    const std::string name = texture->getFilename();
    const unsigned int bad[][3] = {{4097, 1, 3}, {1, 4097, 3}, {1, 1, 2}, {1, 1, 7}, {1, 1, 0}};
    for (const auto &row : bad) {
        EXPECT_FALSE(texture->create(row[0], row[1], row[2]));
        EXPECT_LOGGED_EXACTLY("   [!] Invalid params @ RVTEXTURE::create\n");
    }
    EXPECT_EQ(texture->getFilename(), name);
    EXPECT_FALSE(texture->isLoaded());
    texture->setFilter(true, false, false);
    EXPECT_TRUE(texture->create(4096, 4096, 3));
    EXPECT_STREQ(texture->getFilename(), "[dynamic]");
    EXPECT_EQ(texture->getSizeX(), 4096u);
    EXPECT_EQ(texture->getSizeY(), 4096u);
}

TEST_F(TextureCalls, CreateWithoutMemoryIsReported) {
    RVTEXTURE *texture = makeTexture("a.tga");
    texture->update();
    recorder.failAllocation(512 * 512 * 3);
    EXPECT_FALSE(texture->create(512, 512, 3));
    allocationsWork();
    EXPECT_LOGGED_EXACTLY("   [!] Out of memory @ RVTEXTURE::create\n");
    EXPECT_EQ(texture->getBitmap(), nullptr);
    EXPECT_FALSE(texture->isLoaded());
    EXPECT_STREQ(texture->getFilename(), "a.tga");
}

TEST_F(TextureCalls, CreateOverALoadedTextureReplacesIt) {
    RVTEXTURE *texture = makeTexture("a.tga");
    texture->update();
    const unsigned int former = texture->getGLId();
    const unsigned int used = RAVOLT::getUsedVideoMemory();
    const Calls calls = callsOf([&] { EXPECT_TRUE(texture->create(8, 8, 5)); });
    EXPECT_EQ(calls[0], (Call{"glDeleteTextures", 1, former}));
    EXPECT_EQ(texture->getBitmap(), nullptr);
    // It still counts what the file counted for, in both ledgers.
    EXPECT_EQ(RAVOLT::getUsedVideoMemory(), used);
    EXPECT_EQ(usedMain(), 64);
}

TEST_F(TextureCalls, DynamicTexturesCountForNothing) {
    const unsigned int used = RAVOLT::getUsedVideoMemory();
    RVTEXTURE *texture = new RVTEXTURE;
    EXPECT_TRUE(texture->create(64, 64, 4));
    EXPECT_EQ(RAVOLT::getUsedVideoMemory(), used);
    EXPECT_EQ(usedMain(), 0);
    EXPECT_TRUE(texture->unload(true));
    EXPECT_EQ(RAVOLT::getUsedVideoMemory(), used);
    EXPECT_EQ(usedMain(), 0);
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
    EXPECT_EQ(texture->getSizeX(), 4u);
    texture->unload(false);
    EXPECT_TRUE(texture->reload());
    EXPECT_EQ(texture->getSizeX(), 4u);
    texture->unload(true);
    EXPECT_TRUE(texture->reload());
    EXPECT_EQ(texture->getSizeX(), 8u);
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
        EXPECT_EQ(calls.count("glTexImage2D"), 1u);
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
    for (const unsigned int depth : {3u, 4u, 6u}) { // all but the first have four channels
        RVTEXTURE *texture = new RVTEXTURE;
        texture->create(2, 2, depth);
        const char pixels[16] = {};
        const Calls calls = callsOf([&] { EXPECT_TRUE(texture->modify(pixels, false)); });
        EXPECT_EQ(calls.without({"glPixelStorei"}),
                  (Calls{{"glActiveTextureARB", GL_TEXTURE0},
                         {"glBindTexture", GL_TEXTURE_2D, texture->getGLId()},
                         {"glTexSubImage2D", GL_TEXTURE_2D, 0, 0, 0, 2, 2,
                          depth == 3 ? GL_RGB : GL_RGBA, GL_UNSIGNED_BYTE, anyAddress}}));
        EXPECT_TRUE(calls.contains(Call("glPixelStorei", unpackAlignment, 1)));
    }
}

TEST_F(TextureCalls, ModifyOfNothingIsRefused) {
    RVTEXTURE *texture = makeTexture("a.tga");
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
    ASSERT_NE(texture->getBitmap(), nullptr);
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
    EXPECT_EQ(texture->getBitmap(), nullptr);
}

TEST_F(TextureCalls, TexturesCanBeModifiedFromTheirOwnCopy) {
    RVTEXTURE *texture = new RVTEXTURE;
    texture->setFilter(true, false, false);
    texture->create(2, 2, 3);
    texture->getBitmap()[0] = 200;
    EXPECT_TRUE(texture->modify(reinterpret_cast<char *>(texture->getBitmap()), true));
    EXPECT_EQ(texture->getBitmap()[0], 200);
}

} // namespace

} // namespace ravolt::test
