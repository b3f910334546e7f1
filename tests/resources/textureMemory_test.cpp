// The memory that textures are charged for, and the collector.

#include "tests/engine/openGLAccess.h"
#include "tests/resources/textureCalls.h"

namespace ravolt::test {

namespace {

// --- Budget

class TextureBudget : public TextureCalls {
  protected:
    void SetUp() override {
        TextureCalls::SetUp();
        used = RAVOLT::getUsedVideoMemory();
        texture = makeTexture("a.tga", 8);
    }

    // What the texture is charged for in the video memory and in the main memory.
    void expectCharged(int video, int main) const {
        EXPECT_EQ(static_cast<int>(RAVOLT::getUsedVideoMemory() - used), video);
        EXPECT_EQ(usedMain(), main);
    }

    unsigned int used = 0;
    RVTEXTURE *texture = nullptr;
};

TEST_F(TextureBudget, LoadUpdateUnloadBalances) {
    expectCharged(0, 256);
    for (int time = 0; time < 2; ++time) {
        texture->update();
        expectCharged(256, 256);
    }
    texture->unload(false);
    expectCharged(0, 256);
    texture->unload(true);
    expectCharged(0, 0);
}

TEST_F(TextureBudget, MipmappedTextureCountsFourTimesAndUnloadReleasesMainMemoryTwice) {
    texture->setFilter(true, true, false);
    for (int cycle = 1; cycle <= 2; ++cycle) {
        texture->update();
        expectCharged(1024, 512 - 256 * cycle);
        texture->unload(true);
        expectCharged(0, -256 * cycle);
        texture->load("a.tga");
        expectCharged(0, 256 - 256 * cycle);
    }
}

TEST_F(TextureBudget, EachRepeatedUpdateOfAMipmappedTextureRaisesTheCount) {
    texture->setFilter(true, true, false);
    texture->update();
    texture->update(); // releases 512, counts 1024 twice
    expectCharged(1024 - 512 + 2048, 256);
    texture->update(); // releases 1024, counts 2048 twice
    expectCharged(2560 - 1024 + 4096, 256);
    texture->unload(true);
    expectCharged(5632 - 4096, 256 - 2048);
    texture->load("a.tga"); // and the next cycle balances
    texture->update();
    expectCharged(1536 + 1024, 512 - 2048);
    texture->unload(true);
    EXPECT_EQ(RAVOLT::getUsedVideoMemory(), used + 1536);
}

TEST_F(TextureBudget, FilterWithoutMipmapsDoesNotReleaseHalfOfTheChain) {
    texture->setFilter(true, true, false);
    texture->update();
    texture->setFilter(true, false, false);
    EXPECT_EQ(RAVOLT::getUsedVideoMemory(), used + 1024 - 512 + 512);
    texture->unload(true);
    EXPECT_EQ(RAVOLT::getUsedVideoMemory(), used + 512);
}

// --- Collector

// Without the textures of render targets, which would be among the candidates.
class TextureCollector : public TextureCalls {
  protected:
    void SetUp() override {
        resetCapabilities();
        recorder.hideExtension("GL_EXT_framebuffer_object");
        TextureCalls::SetUp();
    }

    // Used in the order a, c, b.
    void makeThree() {
        a = makeTexture("a.tga"), b = makeTexture("b.tga"), c = makeTexture("c.tga");
        base = RAVOLT::getTimeStamp();
        renderAt(a, base + 5);
        renderAt(c, base + 7);
        renderAt(b, base + 9);
    }

    RVTEXTURE *a = nullptr, *b = nullptr, *c = nullptr;
    long base = 0;
};

TEST_F(TextureCollector, WithoutTexturesThereIsNothingToDo) {
    EXPECT_FALSE(RVTEXTURE::garbageCollect(0));
    EXPECT_NOTHING_LOGGED();
}

TEST_F(TextureCollector, WithoutMemoryItReports) {
    for (int i = 0; i < 64; ++i)
        new RVTEXTURE;
    recorder.failAllocation(64 * sizeof(void *));
    EXPECT_FALSE(RVTEXTURE::garbageCollect(0));
    allocationsWork();
    EXPECT_LOGGED_EXACTLY("   [!] Out of memory @ RVTEXTURE::garbageCollect()\n");
    EXPECT_EQ(RVTEXTURE::getNumberOfTextures(), 64u);
}

TEST_F(TextureCollector, EvictsTheNewestFirst) {
    makeThree();
    const unsigned int used = RAVOLT::getUsedVideoMemory();
    EXPECT_TRUE(RVTEXTURE::garbageCollect(0));
    const auto candidate = [this](int index, const char *name, long frame) {
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
        EXPECT_EQ(texture->getBitmap(), nullptr);
    }
}

TEST_F(TextureCollector, StopsBelowTheMemoryToKeep) {
    makeThree();
    // At the limit itself one more is evicted.
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
    EXPECT_EQ(RVTEXTURE::getNumberOfTextures(), 1u);
    EXPECT_EQ(RVTEXTURE::getFirst(), kept);
    EXPECT_TRUE(kept->isLoaded());
    EXPECT_EQ(RAVOLT::getUsedVideoMemory(), used - 128);
}

// A chain requests its first level alone. Where more is charged than exists, free memory wraps to
// a huge number.
TEST_F(TextureCollector, StartsWhereAByteIsMissing) {
    const struct {
        const char *name;
        bool mipmap;
        unsigned int free, charged;
        bool starts;
    } rows[] = {
        {"exactly enough", false, 256, 0, false},
        {"one byte less", false, 255, 0, true},
        {"enough for the first level of a chain", true, 256, 0, false},
        {"more charged than exists", false, 0, 1, false},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.name);
        RVTEXTURE *texture = makeTexture("a.tga", 8);
        texture->setFilter(true, row.mipmap, false);
        leaveFree(row.free);
        RAVOLT::pushVideoMemory(row.charged);
        markLog();
        EXPECT_TRUE(texture->update());
        EXPECT_TRUE(texture->isLoaded());
        EXPECT_TRUE(loggedTimes("[BEGIN GARBAGE COLLECTOR]", row.starts));
        EXPECT_TRUE(loggedTimes("   Garbage collector at " + std::to_string(RAVOLT::getTimeStamp()),
                                row.starts));
        EXPECT_TRUE(
            loggedTimes("   Memory max. to keep: " + std::to_string(RAVOLT::getVideoMemory() - 256),
                        row.starts));
        delete texture;
        RAVOLT::popVideoMemory(RAVOLT::getUsedVideoMemory());
    }
}

TEST_F(TextureCollector, MakesRoomForAnUpload) {
    RVTEXTURE *resident = makeTexture("resident.tga", 16);
    ASSERT_TRUE(resident->render(nullptr));
    RVTEXTURE *texture = makeTexture("a.tga", 8);
    leaveFree(0);
    EXPECT_TRUE(texture->update());
    EXPECT_FALSE(resident->isLoaded());
    EXPECT_TRUE(texture->isLoaded());
    EXPECT_EQ(RAVOLT::getFreeVideoMemory(), 1024u - 256u);

    // The evicted one is reloaded when it is used.
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
        ASSERT_EQ(RVTEXTURE::getFirst(), texture);
        EXPECT_TRUE(texture->isLoaded());
        EXPECT_EQ(texture->getBitmap(), nullptr);
    }
    EXPECT_TRUE(RVTEXTURE::garbageCollect(0xffffffffu));
    EXPECT_EQ(RVTEXTURE::getNumberOfTextures(), 0u);
}

} // namespace

} // namespace ravolt::test
