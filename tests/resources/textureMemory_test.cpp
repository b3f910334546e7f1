// What textures count for in the video memory, and the collector.

#include "tests/engine/openGLAccess.h"
#include "tests/resources/textureCalls.h"

namespace ravolt::test {

namespace {

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

// Without the textures of render targets, which would stand among the candidates.
class TextureCollector : public TextureCalls {
  protected:
    void SetUp() override {
        forgetCapabilities();
        recorder.hideExtension("GL_EXT_framebuffer_object");
        TextureCalls::SetUp();
    }

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
