// The OpenGL calls of materials and their order; the programs that they choose.

#include "ravolt/RVMATERIAL.h"

#include "ravolt/RAVOLT.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVSETTINGS.h"
#include "ravolt/RVSHADER.h"
#include "ravolt/RVTEXTURE.h"
#include "tests/resources/programNames.h"
#include "tests/support/engineFixture.h"

#include <gtest/gtest.h>

#include <map>
#include <new>
#include <string>

namespace ravolt::test {

namespace {

Calls renderCalls(RVMATERIAL *material, void *data = nullptr) {
    return callsOf([&] { EXPECT_TRUE(material->render(data)); });
}

Call color(GLenum name, double red, double green, double blue, double alpha) {
    return {"glMaterialfv", GL_FRONT_AND_BACK, name, red, green, blue, alpha};
}

class MaterialCalls : public SilentEngineTest {
  protected:
    void SetUp() override {
        SilentEngineTest::SetUp();
        RVTEXTURE::texturingOff(RV_TEXTURE_UNITS);
        RVOPENGL::blendingOff();
        RVMATERIAL::reset();
        material = new RVMATERIAL;
    }

    static RVTEXTURE *makeTexture() {
        RVTEXTURE *texture = new RVTEXTURE;
        EXPECT_TRUE(texture->create(1, 1, 3));
        return texture;
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
    for (const Z3MVECTOR4D &stored : {material->getAmbient(), material->getDiffuse(),
                                      material->getSpecular(), material->getEmission()})
        EXPECT_EQ(stored.w, 0.5f);
}

TEST_F(MaterialCalls, BlendingIsSwitchedOffAndItsFunctionSetAgain) {
    RVOPENGL::blendingOn();
    material->setTransparency(0.999f);
    Calls calls = renderCalls(material);
    EXPECT_TRUE(calls.contains(Call{"glBlendFunc", GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA}));
    EXPECT_FALSE(calls.contains("glEnable"));
    calls = renderCalls(new RVMATERIAL); // opaque
    EXPECT_TRUE(calls.contains(Call{"glDisable", GL_BLEND}));
    EXPECT_FALSE(calls.contains("glBlendFunc"));
}

TEST_F(MaterialCalls, SlotsAreUnits) {
    material->setTexture(3, makeTexture());
    material->setTexture(15, makeTexture());
    EXPECT_EQ(renderCalls(material).without({"glMaterialfv", "glMaterialf"}),
              (Calls{{"glActiveTextureARB", GL_TEXTURE3},
                     {"glEnable", GL_TEXTURE_2D},
                     {"glActiveTextureARB", GL_TEXTURE3},
                     {"glBindTexture", GL_TEXTURE_2D, material->getTexture(3)->getGLId()},
                     {"glActiveTextureARB", GL_TEXTURE15},
                     {"glEnable", GL_TEXTURE_2D},
                     {"glActiveTextureARB", GL_TEXTURE15},
                     {"glBindTexture", GL_TEXTURE_2D, material->getTexture(15)->getGLId()}}));
}

// The texture bound on each unit after these calls.
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
TEST_F(MaterialCalls, TexturesUploadedByRenderAreBoundOnTheirUnits) {
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
    RVMATERIAL::reset();
    EXPECT_FALSE(renderCalls(material).contains("glBindTexture")) << "the cache matches";
}

TEST_F(MaterialCalls, TextureWithoutAFileIsLoadedOnceAndItsUnitUnbound) {
    RVTEXTURE *missing = new RVTEXTURE, *other = makeTexture();
    other->unload(false);
    material->setTexture(0, other);
    material->setTexture(1, missing);
    markLog();
    std::map<double, double> bound = boundAfter(renderCalls(material));
    EXPECT_LOGGED_TIMES(1, "   [!] Invalid params @ RVTEXTURE::update");
    EXPECT_EQ(bound[GL_TEXTURE0], other->getGLId());
    EXPECT_EQ(bound[GL_TEXTURE1], 0u);
}

TEST_F(MaterialCalls, OnlyUntexturedMaterialsSwitchTheUnitsOff) {
    RVTEXTURE::texturingOn(9);
    RVMATERIAL *textured = new RVMATERIAL;
    textured->setTexture(0, makeTexture());
    EXPECT_FALSE(renderCalls(textured).contains("glDisable"));
    EXPECT_EQ(renderCalls(material).count(Call{"glDisable", GL_TEXTURE_2D}), 2u);
}

TEST_F(MaterialCalls, AppliesOnceUntilResetAlsoWithAnotherLight) {
    renderCalls(material);
    int light = 2;
    RAVOLT::shadowingOn();
    EXPECT_TRUE(renderCalls(material, &light).empty());
    material->setDiffuse(1, 0, 0, 1);
    EXPECT_TRUE(renderCalls(material).empty());
    RVMATERIAL::reset();
    EXPECT_TRUE(renderCalls(material).contains(color(GL_DIFFUSE, 1, 0, 0, 1)));
    renderCalls(new RVMATERIAL);
    EXPECT_FALSE(renderCalls(material).empty()) << "another one between";
}

// Each resets state that a material has set. A cached render stores the time stamp alone.
TEST_F(MaterialCalls, FramesSelectAndThe2DBlockInvalidateTheCurrentMaterial) {
    renderCalls(material);
    for (void (*const invalidate)() :
         {+[] { RAVOLT::begin3D(nullptr); }, +[] { (void)RAVOLT::select(1, 1); },
          +[] { (void)RAVOLT::begin2D(); }}) {
        EXPECT_TRUE(renderCalls(material).empty());
        invalidate();
        EXPECT_FALSE(renderCalls(material).empty());
        EXPECT_EQ(material->getTimeStamp(), RAVOLT::getTimeStamp());
    }
    RAVOLT::end2D();
}

TEST_F(MaterialCalls, NewMaterialAtTheAddressOfADeletedOneIsApplied) {
    alignas(RVMATERIAL) unsigned char storage[sizeof(RVMATERIAL)];
    RVMATERIAL *former = new (storage) RVMATERIAL;
    renderCalls(former);
    former->~RVMATERIAL();
    RVMATERIAL *later = new (storage) RVMATERIAL;
    EXPECT_FALSE(renderCalls(later).empty());
    later->~RVMATERIAL();
}

// --- Programs

class MaterialProgramTest : public MaterialCalls {
  protected:
    MaterialProgramTest() { settings.setShaders(true); }
    void SetUp() override {
        MaterialCalls::SetUp();
        nameOf = programNames();
        RVMATERIAL::reset();
        texture = makeTexture();
    }
    void TearDown() override {
        RAVOLT::shadowingOff();
        RVMATERIAL::reset();
        RVSHADER::reset();
        RVTEXTURE::texturingOff(RV_TEXTURE_UNITS);
        MaterialCalls::TearDown();
    }

    // The calls of the first render for a light's type, from another program that is in use.
    Calls render(int *light) {
        RVMATERIAL::reset();
        RVSHADER::gaussian->render(nullptr);
        return renderCalls(material, light);
    }

    // The name of the program that is used; "" for the fixed functions.
    std::string programFor(int *light) {
        const Calls used = render(light).named("glUseProgramObjectARB");
        EXPECT_EQ(used.size(), 1u);
        return used.empty() ? "the one before" : nameOf[used[0].arguments[0]];
    }
    std::string programFor(int light) { return programFor(&light); }

    std::map<double, std::string> nameOf; // by OpenGL's name of the program
    RVTEXTURE *texture = nullptr;
};

TEST_F(MaterialProgramTest, ProgramIsChosenByLightTextureSkinAndShadow) {
    const std::string lights[] = {"pplOmni", "pplDirect", "pplSpot"};
    material->setTexture(3, texture); // other slots than 0 do not count
    for (const bool shadowed : {false, true}) {
        if (shadowed)
            RAVOLT::shadowingOn();
        ASSERT_EQ(RAVOLT::isShadowed(), shadowed);
        for (int light = 0; light < 3; ++light)
            for (const bool textured : {false, true})
                for (const bool skinned : {false, true}) {
                    material->setTexture(0, textured ? texture : nullptr);
                    material->setSkinning(skinned);
                    const std::string expected = lights[light] + (textured ? "T" : "") +
                                                 (shadowed && light == 2 ? "S" : "") +
                                                 (skinned ? "A" : "");
                    EXPECT_EQ(programFor(light), expected);
                }
    }
}

TEST_F(MaterialProgramTest, WithoutAKnownLightShadersOrAProgramTheFixedFunctionsDraw) {
    EXPECT_EQ(programFor(nullptr), "");
    for (const int unknown : {3, -1, 0x7fffffff})
        EXPECT_EQ(programFor(unknown), "");
    RVSHADER::pplSpot->forceDeactivation();
    EXPECT_EQ(programFor(2), "");
    delete RVSHADER::pplOmni;
    EXPECT_EQ(programFor(0), "");
    RVSETTINGS::forceShadersOff();
    EXPECT_EQ(programFor(1), "");
    material->setShader(RVSHADER::skydome); // an explicit one is used
    EXPECT_EQ(programFor(nullptr), "skydomeShader");
    RVSETTINGS::forceShadersOn();
}

TEST_F(MaterialProgramTest, ExplicitProgramReplacesTheChosenOne) {
    material->setShader(RVSHADER::water);
    EXPECT_EQ(programFor(nullptr), "waterShader");
    EXPECT_EQ(programFor(2), "waterShader");
    RVSHADER inoperative;
    material->setShader(&inoperative);
    EXPECT_EQ(programFor(1), ""); // and not the chosen one
    material->setShader(nullptr);
}

TEST_F(MaterialProgramTest, ShadowProgramGetsTheMapsSizeAndUnit) {
    RAVOLT::shadowingOn();
    material->setTexture(0, texture);
    material->setSkinning(true);
    int spot = 2;
    const Calls calls = render(&spot);
    const RVSHADER &program = *RVSHADER::pplSpotTSA;
    const auto size = RVSETTINGS::getSDLShadowMapSize();
    EXPECT_TRUE(calls.haveInOrder({{"glUniform1fARB", program.getParam(2), size},
                                   {"glUniform1fARB", program.getParam(3), size},
                                   {"glUniform1iARB", program.getParam(1), 1},
                                   {"glBindTexture", GL_TEXTURE_2D, texture->getGLId()},
                                   {"glUniform1iARB", program.getParam(0), 0}}))
        << calls.text();
    EXPECT_EQ(calls[0].name, "glUseProgramObjectARB"); // before the textures set its samplers
}

TEST_F(MaterialProgramTest, ExplicitShadowProgramsGetTheMapsSizeToo) {
    for (RVSHADER *program : {RVSHADER::pplSpotS, RVSHADER::pplSpotSA, RVSHADER::pplSpotTS,
                              RVSHADER::pplSpotTSA, RVSHADER::pplSpotT}) {
        material->setShader(program);
        EXPECT_EQ(render(nullptr).count("glUniform1fARB"), program == RVSHADER::pplSpotT ? 0u : 2u)
            << program->getName();
    }
}

// The failed shadow feature deactivates all its programs but one.
TEST_F(MaterialProgramTest, ShadowedSkinUsesItsProgramWhereTheOthersFailed) {
    RAVOLT::shadowingOn();
    recorder.failCalls("glGetObjectParameterivARB", 2 * 14, 1); // pplSpotTS
    ASSERT_TRUE(restart());
    ASSERT_FALSE(RVSHADER::useShadows());
    ASSERT_TRUE(RAVOLT::isShadowed()); // switched on before
    material = new RVMATERIAL;
    material->setSkinning(true);
    int spot = 2;
    RVMATERIAL::reset();
    material->render(&spot);
    EXPECT_TRUE(callsOf([] { EXPECT_TRUE(RVSHADER::pplSpotSA->render(nullptr)); }).empty());
}

TEST_F(MaterialProgramTest, ProgramIsUsedOnceUntilReset) {
    int light = 1;
    material->render(&light);
    RVMATERIAL *other = new RVMATERIAL; // with the same program
    EXPECT_FALSE(renderCalls(other, &light).contains("glUseProgramObjectARB"));
    light = 2;
    EXPECT_TRUE(renderCalls(other, &light).empty());
    RVMATERIAL::reset();
    EXPECT_TRUE(renderCalls(other, &light).contains("glUseProgramObjectARB"));
}

} // namespace

} // namespace ravolt::test
