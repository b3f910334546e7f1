// Uploads of textures: update, create, reload, modify.

#include "tests/resources/textureCalls.h"

namespace ravolt::test {

namespace {

constexpr int unpackAlignment = GL_UNPACK_ALIGNMENT;

Call imageCall(int level, int sizeX, int sizeY, int format) {
    return {"glTexImage2D", GL_TEXTURE_2D,    level,     format, sizeX, sizeY, 0,
            format,         GL_UNSIGNED_BYTE, anyAddress};
}

Calls updateCalls(RVTEXTURE *texture) {
    return callsOf([&] { EXPECT_TRUE(texture->update()); });
}

// --- Upload

TEST_F(TextureCalls, UpdateSetsFiltersWrapAndAnisotropyBeforeThePixels) {
    RVTEXTURE *texture = makeTexture("a.tga", 2);
    texture->setFilter(true, true, false);
    const Calls calls = updateCalls(texture);
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
                         imageCall(0, 2, 2, GL_RGB),
                         imageCall(1, 1, 1, GL_RGB),
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
    const Calls calls = updateCalls(makeTexture("a.tga"));
    EXPECT_TRUE(calls.contains("glTexImage2D"));
    EXPECT_FALSE(calls.contains("glTexParameterf"));
}

TEST_F(TextureCalls, AnisotropyIsTheDriversUnlessTheSettingsLimitIt) {
    const float driver = RVOPENGL::getAnisotropicLevel();
    const struct {
        int requested;
        float applied;
    } rows[] = {{0, driver}, {-1, driver}, {1, 1.0f}, {2, 2.0f}, {1000, driver}};
    for (const auto &row : rows) {
        settings.setMaxAnisotropy(row.requested);
        ASSERT_TRUE(restart());
        EXPECT_EQ(RVSETTINGS::getSDLMaxAnisotropy(), row.requested);
        EXPECT_EQ(
            updateCalls(makeTexture("a.tga")).named("glTexParameterf"),
            (Calls{{"glTexParameterf", GL_TEXTURE_2D, GL_TEXTURE_MAX_ANISOTROPY_EXT, row.applied}}))
            << row.requested;
    }
}

TEST_F(TextureCalls, ChainHasALevelForEachHalvingOfTheLargerSizeRoundedDown) {
    for (const bool odd : {false, true}) {
        RVTEXTURE *texture = new RVTEXTURE;
        const Calls calls = callsOf(
            [&] { EXPECT_TRUE(odd ? texture->create(7, 1, 3) : texture->create(16, 4, 4)); });
        EXPECT_EQ(calls.named("glTexImage2D"),
                  odd ? (Calls{imageCall(0, 7, 1, GL_RGB), imageCall(1, 3, 1, GL_RGB),
                               imageCall(2, 1, 1, GL_RGB)})
                      : (Calls{imageCall(0, 16, 4, GL_RGBA), imageCall(1, 8, 2, GL_RGBA),
                               imageCall(2, 4, 1, GL_RGBA), imageCall(3, 2, 1, GL_RGBA),
                               imageCall(4, 1, 1, GL_RGBA)}));
    }
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

TEST_F(TextureCalls, NewTextureHasNothingToUpload) {
    RVTEXTURE *texture = new RVTEXTURE;
    EXPECT_TRUE(callsOf([&] { EXPECT_FALSE(texture->update()); }).empty());
    EXPECT_LOGGED_EXACTLY("   [!] Invalid params @ RVTEXTURE::update\n");
}

TEST_F(TextureCalls, RepeatedUpdateDeletesTheFormerName) {
    RVTEXTURE *texture = makeTexture("a.tga");
    texture->update();
    const unsigned int former = texture->getGLId();
    const Calls calls = updateCalls(texture);
    EXPECT_EQ(calls[0], (Call{"glDeleteTextures", 1, former}));
    EXPECT_EQ(calls.count("glDeleteTextures"), 1u);
    EXPECT_NE(texture->getGLId(), former);
}

TEST_F(TextureCalls, SetFilterUploadsResidentTexturesOnly) {
    RVTEXTURE *texture = makeTexture("a.tga");
    const auto setFilter = [&] { EXPECT_TRUE(texture->setFilter(true, false, true)); };
    EXPECT_TRUE(callsOf(setFilter).empty());
    texture->update();
    EXPECT_TRUE(callsOf(setFilter).contains("glTexImage2D"));
}

TEST_F(TextureCalls, UnsupportedFileIsReadOnceAndAlwaysCountsTheSame) {
    writeFile("other.tga", tgaHeader(3, 4, 4, 24) + Bytes(4 * 4 * 3, 255));
    RVTEXTURE *texture = new RVTEXTURE;
    texture->setFilter(true, false, false);
    texture->incReferences();
    EXPECT_TRUE(texture->load("other.tga"));
    for (const bool all : {false, false, true, true}) {
        if (!all)
            markLog();
        EXPECT_TRUE(texture->render(nullptr));
        EXPECT_TRUE(texture->isLoaded());
        EXPECT_EQ(usedMain(), 64);
        if (!all) {
            EXPECT_NOTHING_LOGGED();
        }
        texture->unload(all);
        EXPECT_EQ(usedMain(), all ? 0 : 64);
    }
}

TEST_F(TextureCalls, UploadWithoutANameIsNotCounted) {
    RVTEXTURE *texture = makeTexture("a.tga", 8);
    const unsigned int used = RAVOLT::getUsedVideoMemory();
    recorder.failCalls("glGenTextures", 0, 1);
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

TEST_F(TextureCalls, CreateAndModifyWithoutMemoryAreReported) {
    RVTEXTURE *texture = makeTexture("a.tga");
    texture->update();
    recorder.failAllocation(512 * 512 * 3);
    EXPECT_FALSE(texture->create(512, 512, 3));
    allocationsWork();
    EXPECT_LOGGED_EXACTLY("   [!] Out of memory @ RVTEXTURE::create\n");
    EXPECT_EQ(texture->getBitmap(), nullptr);
    EXPECT_FALSE(texture->isLoaded());
    EXPECT_STREQ(texture->getFilename(), "a.tga");

    RVTEXTURE *other = makeTexture("b.tga", 64);
    other->update();
    other->unload(true);
    markLog();
    const Bytes pixels(64 * 64 * 3);
    recorder.failAllocation(64 * 64 * 3);
    EXPECT_FALSE(other->modify(reinterpret_cast<const char *>(pixels.data()), true));
    allocationsWork();
    EXPECT_LOGGED_EXACTLY("   [!] Out of memory @ RVTEXTURE::modify\n");
    EXPECT_EQ(other->getBitmap(), nullptr);
}

TEST_F(TextureCalls, CreateOverALoadedTextureReplacesIt) {
    RVTEXTURE *texture = makeTexture("a.tga");
    texture->update();
    const unsigned int former = texture->getGLId();
    const unsigned int used = RAVOLT::getUsedVideoMemory();
    const Calls calls = callsOf([&] { EXPECT_TRUE(texture->create(8, 8, 5)); });
    EXPECT_EQ(calls[0], (Call{"glDeleteTextures", 1, former}));
    EXPECT_EQ(texture->getBitmap(), nullptr);
    // The file's bytes are still counted in both kinds of memory.
    EXPECT_EQ(RAVOLT::getUsedVideoMemory(), used);
    EXPECT_EQ(usedMain(), 64);
}

TEST_F(TextureCalls, DynamicTexturesAreNotCounted) {
    const unsigned int used = RAVOLT::getUsedVideoMemory();
    RVTEXTURE *texture = new RVTEXTURE;
    for (const bool made : {true, false}) {
        EXPECT_TRUE(made ? texture->create(64, 64, 4) : texture->unload(true));
        EXPECT_EQ(RAVOLT::getUsedVideoMemory(), used);
        EXPECT_EQ(usedMain(), 0);
    }
}

// --- Reload

TEST_F(TextureCalls, ReloadReadsTheFileOnlyWithoutPixels) {
    RVTEXTURE *texture = makeTexture("a.tga");
    texture->update();
    EXPECT_TRUE(callsOf([&] { EXPECT_FALSE(texture->reload()); }).empty()) << "resident";
    writeFile("a.tga", plainTga(8, 8));
    for (const bool all : {false, true}) {
        texture->unload(all);
        EXPECT_TRUE(texture->reload());
        EXPECT_TRUE(texture->isLoaded());
        EXPECT_EQ(texture->getSizeX(), all ? 8u : 4u);
    }
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

TEST_F(TextureCalls, ReloadWithoutAFileFailsInItsUpdate) {
    RVTEXTURE *dynamic = new RVTEXTURE, *missing = makeTexture("a.tga");
    dynamic->create(16, 8, 3);
    std::remove("a.tga");
    for (RVTEXTURE *texture : {dynamic, missing}) {
        texture->unload(true);
        markLog();
        EXPECT_TRUE(texture->reload());
        EXPECT_LOGGED_EXACTLY(
            std::string(texture == missing
                            ? "   [!] Unable to open file a.tga @ RVTEXTURE::loadTGA\n"
                            : "") +
            "   [!] Invalid params @ RVTEXTURE::update\n");
        EXPECT_FALSE(texture->isLoaded());
    }
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

TEST_F(TextureCalls, ModifyRefusesNull) {
    RVTEXTURE *texture = makeTexture("a.tga");
    EXPECT_TRUE(callsOf([&] { EXPECT_FALSE(texture->modify(nullptr, false)); }).empty());
    EXPECT_LOGGED_EXACTLY("   [!] Invalid params @ RVTEXTURE::modify\n");
}

TEST_F(TextureCalls, FirstModifyWithACopyOnlyAllocatesAndTheSecondUploads) {
    RVTEXTURE *texture = new RVTEXTURE;
    texture->create(1, 2, 4);
    texture->unload(true);
    const Bytes pixels = {1, 2, 3, 4, 5, 6, 7, 8};
    const char *bits = reinterpret_cast<const char *>(pixels.data());
    EXPECT_TRUE(callsOf([&] { EXPECT_FALSE(texture->modify(bits, true)); }).empty());
    ASSERT_NE(texture->getBitmap(), nullptr);
    EXPECT_EQ(Bytes(8), Bytes(texture->getBitmap(), texture->getBitmap() + 8));
    EXPECT_TRUE(
        callsOf([&] { EXPECT_TRUE(texture->modify(bits, true)); }).contains("glTexSubImage2D"));
    EXPECT_EQ(pixels, Bytes(texture->getBitmap(), texture->getBitmap() + 8));
    EXPECT_TRUE(texture->modify(reinterpret_cast<char *>(texture->getBitmap()), true));
    EXPECT_EQ(texture->getBitmap()[0], 1) << "from its own copy";
}

} // namespace

} // namespace ravolt::test
