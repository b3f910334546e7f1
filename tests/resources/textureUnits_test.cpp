// Textures on their units, and the cache of the bound textures.

#include "tests/resources/textureCalls.h"
#include "tests/support/callNames.h"

#include <functional>
#include <new>

namespace ravolt::test {

namespace {

Call bound(const RVTEXTURE *texture) {
    return {"glBindTexture", GL_TEXTURE_2D, texture->getGLId()};
}

TEST_F(TextureCalls, RenderEnablesSelectsAndBinds) {
    RVTEXTURE *texture = makeTexture("a.tga");
    texture->update();
    for (const unsigned int unit : {3u, 15u, 0u})
        EXPECT_EQ(unit ? renderCalls(texture, unit)
                       : callsOf([&] { EXPECT_TRUE(texture->render(nullptr)); }),
                  (Calls{{"glActiveTextureARB", GL_TEXTURE0 + unit},
                         {"glEnable", GL_TEXTURE_2D},
                         {"glActiveTextureARB", GL_TEXTURE0 + unit},
                         bound(texture)}));
    RAVOLT::begin3D(nullptr);
    const int stamp = texture->getTimeStamp();
    for (unsigned int unit : {16u, 17u, 0xffffffffu}) {
        EXPECT_TRUE(callsOf([&] { EXPECT_FALSE(texture->render(&unit)); }).empty());
        EXPECT_LOGGED_EXACTLY("   [!] Invalid params @ RVTEXTURE::render\n");
    }
    EXPECT_EQ(texture->getTimeStamp(), stamp);
}

TEST_F(TextureCalls, CachedRenderOnAUnitStoresTheTimeStampAlone) {
    RVTEXTURE *texture = makeTexture("a.tga"), *other = makeTexture("b.tga");
    renderCalls(texture, 2);
    EXPECT_EQ(texture->getTimeStamp(), RAVOLT::getTimeStamp());
    EXPECT_TRUE(renderCalls(texture, 2).empty());
    EXPECT_EQ(renderCalls(texture, 4).count("glBindTexture"), 1u);
    EXPECT_TRUE(renderCalls(texture, 2).empty());
    RAVOLT::begin3D(nullptr);
    renderCalls(other, 2);
    EXPECT_TRUE(renderCalls(texture, 2).contains("glBindTexture"));
    EXPECT_EQ(texture->getTimeStamp(), RAVOLT::getTimeStamp());
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
        EXPECT_EQ(on.count(Call{"glEnable", GL_TEXTURE_2D}), 15u);
        const Calls units = on.named("glActiveTextureARB");
        ASSERT_EQ(units.size(), 15u);
        for (unsigned int each = 0; each < 15; ++each)
            EXPECT_EQ(units[each],
                      (Call{"glActiveTextureARB", GL_TEXTURE0 + (each < 7 ? each : each + 1)}));
        const Calls off = callsOf([&] { EXPECT_TRUE(RVTEXTURE::texturingOff(unit)); });
        EXPECT_EQ(off.count(Call{"glDisable", GL_TEXTURE_2D}), 16u);
        EXPECT_TRUE(callsOf([&] { EXPECT_TRUE(RVTEXTURE::texturingOff(unit)); }).empty());
    }
}

TEST_F(TextureCalls, OnlySwitchingAllUnitsOffInvalidatesTheirTextures) {
    RVTEXTURE *texture = makeTexture("a.tga");
    renderCalls(texture, 1);
    RVTEXTURE::texturingOff(1);
    EXPECT_TRUE(renderCalls(texture, 1).empty());
    RVTEXTURE::texturingOff(RV_TEXTURE_UNITS);
    EXPECT_EQ(namesOf(renderCalls(texture, 1)),
              "glActiveTextureARB glEnable glActiveTextureARB glBindTexture");
}

TEST_F(TextureCalls, UploadsInvalidateUnit0Alone) {
    RVTEXTURE *texture = makeTexture("a.tga"), *other = makeTexture("b.tga");
    const char pixels[4 * 4 * 3] = {};
    const std::function<void()> uploads[] = {
        [&] { EXPECT_TRUE(renderCalls(other, 3).contains("glTexImage2D")); }, // inside render
        [&] { other->update(); }, [&] { other->modify(pixels, false); }};
    for (const auto &upload : uploads) {
        renderCalls(texture, 0);
        renderCalls(texture, 1);
        upload();
        EXPECT_TRUE(renderCalls(texture, 1).empty());
        EXPECT_TRUE(renderCalls(texture, 0).contains(bound(texture)));
    }
    renderCalls(other, 3);
    EXPECT_TRUE(renderCalls(other, 3).empty());
}

TEST_F(TextureCalls, NewNameIsBoundOnEveryUnitAgain) {
    RVTEXTURE *texture = makeTexture("a.tga");
    renderCalls(texture, 0);
    renderCalls(texture, 6);
    texture->setFilter(false, false, false);
    for (const unsigned int unit : {6u, 0u})
        EXPECT_TRUE(renderCalls(texture, unit).contains(bound(texture)));
}

// A texture without a name, since its file is missing, is bound as 0.
TEST_F(TextureCalls, FirstNameIsBoundWhereItWasMissing) {
    RVTEXTURE *texture = makeTexture("a.tga");
    texture->unload(true);
    std::remove("a.tga");
    EXPECT_TRUE(renderCalls(texture, 3).contains(Call{"glBindTexture", GL_TEXTURE_2D, 0}));
    writeFile("a.tga", plainTga(4, 4));
    EXPECT_TRUE(texture->reload());
    EXPECT_TRUE(renderCalls(texture, 3).contains(bound(texture)));
}

TEST_F(TextureCalls, NewTextureAtTheAddressOfADeletedOneIsBound) {
    alignas(RVTEXTURE) unsigned char storage[sizeof(RVTEXTURE)];
    RVTEXTURE *former = new (storage) RVTEXTURE;
    former->create(1, 1, 3);
    renderCalls(former, 2);
    former->~RVTEXTURE();
    RVTEXTURE *later = new (storage) RVTEXTURE;
    later->create(1, 1, 3);
    EXPECT_TRUE(renderCalls(later, 2).contains(bound(later)));
    later->~RVTEXTURE();
}

TEST_F(TextureCalls, EvictedTextureIsReloadedInTheSameFrame) {
    RVTEXTURE *texture = makeTexture("a.tga");
    renderCalls(texture, 2);
    EXPECT_TRUE(texture->unload(true));
    const Calls calls = renderCalls(texture, 2);
    EXPECT_TRUE(texture->isLoaded());
    EXPECT_TRUE(calls.haveInOrder(
        {{"glTexImage2D", GL_TEXTURE_2D, 0, GL_RGB, 4, 4, 0, GL_RGB, GL_UNSIGNED_BYTE, anyAddress},
         {"glActiveTextureARB", GL_TEXTURE2},
         bound(texture)}));
}

// A new context has every unit off, also after units were on in the former one.
TEST_F(TextureCalls, UnitsAreEnabledAnewAfterARestart) {
    RVTEXTURE::texturingOn(0);
    RVTEXTURE::texturingOn(2);
    ASSERT_TRUE(restart());
    RVTEXTURE *texture = makeTexture("a.tga");
    for (unsigned int unit : {0u, 2u})
        EXPECT_TRUE(renderCalls(texture, unit).contains(Call{"glEnable", GL_TEXTURE_2D})) << unit;
}

TEST_F(TextureCalls, StartWithUnitsOffDoesNotSelectThem) {
    const Calls calls = callsOf([this] { ASSERT_TRUE(restart()); });
    EXPECT_TRUE(calls.contains("glClearColor"));
    // The render targets are made on unit 0; no other one is selected.
    EXPECT_EQ(calls.count(Call{"glActiveTextureARB", GL_TEXTURE0}),
              calls.count("glActiveTextureARB"));
}

TEST_F(TextureCalls, TooFewUnitsAreSelectedForUploadsAlone) {
    recorder.setTextureUnits(8);
    ASSERT_TRUE(restart());
    ASSERT_FALSE(RVOPENGL::useMultitexturing());
    RVTEXTURE::texturingOff(RV_TEXTURE_UNITS);
    RVTEXTURE *texture = makeTexture("a.tga");
    EXPECT_TRUE(
        callsOf([&] { texture->update(); }).contains(Call{"glActiveTextureARB", GL_TEXTURE0}));
    EXPECT_EQ(renderCalls(texture, 3), (Calls{{"glEnable", GL_TEXTURE_2D}, bound(texture)}));
    EXPECT_EQ(callsOf([] { RVTEXTURE::texturingOff(3); }), (Calls{{"glDisable", GL_TEXTURE_2D}}));
}

} // namespace

} // namespace ravolt::test
