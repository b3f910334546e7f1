// What materials ask of OpenGL, and in which order.

#include "ravolt/RVMATERIAL.h"

#include "ravolt/RAVOLT.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVTEXTURE.h"
#include "tests/support/engineFixture.h"

#include <gtest/gtest.h>

#include <map>
#include <new>

namespace ravolt::test {

namespace {

class MaterialCalls : public SilentEngineTest {
  protected:
    void SetUp() override {
        SilentEngineTest::SetUp();
        RVTEXTURE::texturingOff(RV_TEXTURE_UNITS);
        RVOPENGL::blendingOff();
        RVMATERIAL::reset();
        material = new RVMATERIAL;
    }

    RVTEXTURE *makeTexture() {
        RVTEXTURE *texture = new RVTEXTURE;
        EXPECT_TRUE(texture->create(1, 1, 3));
        return texture;
    }

    Calls renderCalls(RVMATERIAL *rendered, void *data = nullptr) {
        return callsOf([&] { EXPECT_TRUE(rendered->render(data)); });
    }

    static Call color(GLenum name, double red, double green, double blue, double alpha) {
        return {"glMaterialfv", GL_FRONT_AND_BACK, name, red, green, blue, alpha};
    }

    RVMATERIAL *material = nullptr;
};

TEST_F(MaterialCalls, NewMaterialAppliesItsColoursAndNothingElse) {
    EXPECT_EQ(renderCalls(material), (Calls{color(GL_EMISSION, 0, 0, 0, 1),
                                            color(GL_AMBIENT, 0.2f, 0.2f, 0.2f, 1),
                                            color(GL_DIFFUSE, 0.6f, 0.6f, 0.6f, 1),
                                            color(GL_SPECULAR, 0.2f, 0.2f, 0.2f, 1),
                                            {"glMaterialf", GL_FRONT_AND_BACK, GL_SHININESS, 0}}));
    EXPECT_EQ(material->getTimeStamp(), RAVOLT::getTimeStamp());
}

TEST_F(MaterialCalls, TransparentMaterialOverwritesAlphaBlendsAndThenBinds) {
    material->setTransparency(0.5f);
    material->setAmbient(0.1f, 0.2f, 0.3f, 0.9f);
    material->setDiffuse(0.4f, 0.5f, 0.6f, 0.8f);
    material->setSpecular(0.7f, 0.8f, 0.9f, 0.7f);
    material->setEmission(0.2f, 0.1f, 0.0f, 0.6f);
    material->setShininess(12);
    RVTEXTURE *texture = makeTexture();
    material->setTexture(0, texture);
    EXPECT_EQ(renderCalls(material), (Calls{color(GL_EMISSION, 0.2f, 0.1f, 0.0f, 0.5),
                                            color(GL_AMBIENT, 0.1f, 0.2f, 0.3f, 0.5),
                                            color(GL_DIFFUSE, 0.4f, 0.5f, 0.6f, 0.5),
                                            color(GL_SPECULAR, 0.7f, 0.8f, 0.9f, 0.5),
                                            {"glMaterialf", GL_FRONT_AND_BACK, GL_SHININESS, 12},
                                            {"glBlendFunc", GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA},
                                            {"glEnable", GL_BLEND},
                                            {"glActiveTextureARB", GL_TEXTURE0},
                                            {"glEnable", GL_TEXTURE_2D},
                                            {"glActiveTextureARB", GL_TEXTURE0},
                                            {"glBindTexture", GL_TEXTURE_2D, texture->getGLId()}}));
    EXPECT_EQ(material->getAmbient().w, 0.5f);
    EXPECT_EQ(material->getDiffuse().w, 0.5f);
    EXPECT_EQ(material->getSpecular().w, 0.5f);
    EXPECT_EQ(material->getEmission().w, 0.5f);
}

TEST_F(MaterialCalls, OpaqueMaterialSwitchesBlendingOff) {
    RVOPENGL::blendingOn();
    const Calls calls = renderCalls(material);
    EXPECT_TRUE(calls.contains(Call{"glDisable", GL_BLEND}));
    EXPECT_FALSE(calls.contains("glBlendFunc"));
}

TEST_F(MaterialCalls, BlendFunctionIsSetAgainWhenBlendingIsOn) {
    RVOPENGL::blendingOn();
    material->setTransparency(0.999f);
    const Calls calls = renderCalls(material);
    EXPECT_TRUE(calls.contains(Call{"glBlendFunc", GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA}));
    EXPECT_FALSE(calls.contains("glEnable"));
}

TEST_F(MaterialCalls, SlotsAreUnits) {
    material->setTexture(3, makeTexture());
    material->setTexture(15, makeTexture());
    EXPECT_FALSE(material->isTextured());
    const Calls calls = renderCalls(material);
    EXPECT_EQ(calls.named({"glBindTexture", "glEnable"}),
              (Calls{{"glEnable", GL_TEXTURE_2D},
                     {"glBindTexture", GL_TEXTURE_2D, material->getTexture(3)->getGLId()},
                     {"glEnable", GL_TEXTURE_2D},
                     {"glBindTexture", GL_TEXTURE_2D, material->getTexture(15)->getGLId()}}));
    EXPECT_EQ(calls.named("glActiveTextureARB"), (Calls{{"glActiveTextureARB", GL_TEXTURE3},
                                                        {"glActiveTextureARB", GL_TEXTURE3},
                                                        {"glActiveTextureARB", GL_TEXTURE15},
                                                        {"glActiveTextureARB", GL_TEXTURE15}}));
}

// What each unit has bound once these calls are made.
std::map<double, double> boundAfter(const Calls &calls) {
    std::map<double, double> bound;
    double unit = GL_TEXTURE0;
    for (const Call &call : calls)
        if (call.name == "glActiveTextureARB")
            unit = call.arguments[0];
        else if (call.name == "glBindTexture")
            bound[unit] = call.arguments[1];
    return bound;
}

// Uploads bind on unit 0.
TEST_F(MaterialCalls, TexturesThatComeBackWithinRenderStandOnTheirUnits) {
    constexpr unsigned int slots[] = {0, 1, 4};
    for (const unsigned int slot : slots) {
        RVTEXTURE *texture = makeTexture();
        texture->unload(false);
        material->setTexture(slot, texture);
    }
    const Calls calls = renderCalls(material);
    EXPECT_EQ(calls.count("glTexImage2D"), 3u);
    std::map<double, double> bound = boundAfter(calls);
    for (const unsigned int slot : slots)
        EXPECT_EQ(bound[GL_TEXTURE0 + slot], material->getTexture(slot)->getGLId()) << slot;
    // And the cache knows it.
    RVMATERIAL::reset();
    EXPECT_FALSE(renderCalls(material).contains("glBindTexture"));
}

TEST_F(MaterialCalls, TextureWithoutAFileIsLookedForOnceAndLeavesItsUnitUnbound) {
    RVTEXTURE *missing = new RVTEXTURE;
    RVTEXTURE *other = makeTexture();
    other->unload(false);
    material->setTexture(0, other);
    material->setTexture(1, missing);
    markLog();
    const Calls calls = renderCalls(material);
    EXPECT_LOGGED_TIMES(1, "   [!] Invalid params @ RVTEXTURE::update");
    std::map<double, double> bound = boundAfter(calls);
    EXPECT_EQ(bound[GL_TEXTURE0], other->getGLId());
    EXPECT_EQ(bound[GL_TEXTURE1], 0u);
}

TEST_F(MaterialCalls, UntexturedMaterialSwitchesAllUnitsOff) {
    RVTEXTURE::texturingOn(0);
    RVTEXTURE::texturingOn(9);
    const Calls calls = renderCalls(material);
    EXPECT_EQ(calls.count(Call{"glDisable", GL_TEXTURE_2D}), 2u);
}

TEST_F(MaterialCalls, TexturedMaterialLeavesOtherUnitsOn) {
    RVTEXTURE::texturingOn(9);
    material->setTexture(0, makeTexture());
    EXPECT_FALSE(renderCalls(material).contains("glDisable"));
}

TEST_F(MaterialCalls, AppliesOnceUntilResetWhateverTheLight) {
    renderCalls(material);
    int light = 2;
    RAVOLT::shadowingOn();
    EXPECT_TRUE(renderCalls(material, &light).empty());
    material->setDiffuse(1, 0, 0, 1);
    EXPECT_TRUE(renderCalls(material).empty());
    RVMATERIAL::reset();
    EXPECT_TRUE(renderCalls(material).contains(color(GL_DIFFUSE, 1, 0, 0, 1)));
}

TEST_F(MaterialCalls, AnotherMaterialBetweenAppliesAgain) {
    RVMATERIAL *other = new RVMATERIAL;
    renderCalls(material);
    EXPECT_FALSE(renderCalls(other).empty());
    EXPECT_FALSE(renderCalls(material).empty());
}

TEST_F(MaterialCalls, CachedRenderRefreshesTheStampOnly) {
    renderCalls(material);
    RAVOLT::begin3D(nullptr); // resets
    renderCalls(material);
    EXPECT_EQ(material->getTimeStamp(), RAVOLT::getTimeStamp());
    EXPECT_TRUE(renderCalls(material).empty());
}

TEST_F(MaterialCalls, NewMaterialAtAnOldAddressIsApplied) {
    alignas(RVMATERIAL) unsigned char place[sizeof(RVMATERIAL)];
    RVMATERIAL *former = new (place) RVMATERIAL;
    renderCalls(former);
    former->~RVMATERIAL();
    RVMATERIAL *later = new (place) RVMATERIAL;
    EXPECT_FALSE(renderCalls(later).empty());
    later->~RVMATERIAL();
}

// Both undo state that a material has set.
TEST_F(MaterialCalls, SelectAndTheFlatBlockForgetTheCurrentMaterial) {
    renderCalls(material);
    EXPECT_TRUE(renderCalls(material).empty());
    RAVOLT::select(1, 1);
    EXPECT_FALSE(renderCalls(material).empty());
    EXPECT_TRUE(renderCalls(material).empty());
    RAVOLT::begin2D();
    EXPECT_FALSE(renderCalls(material).empty());
    RAVOLT::end2D();
}

} // namespace

} // namespace ravolt::test
