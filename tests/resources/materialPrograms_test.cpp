// Which program a material puts in use, and what it tells it.

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
#include <string>

namespace ravolt::test {

namespace {

class MaterialProgramTest : public SilentEngineTest {
  protected:
    MaterialProgramTest() { settings.setShaders(true); }
    void SetUp() override {
        SilentEngineTest::SetUp();
        nameOf = programNames();
        RVMATERIAL::reset();
        material = new RVMATERIAL;
        texture = new RVTEXTURE;
        ASSERT_TRUE(texture->create(1, 1, 3));
    }
    void TearDown() override {
        RAVOLT::shadowingOff();
        RVMATERIAL::reset();
        RVSHADER::reset();
        RVTEXTURE::texturingOff(RV_TEXTURE_UNITS);
        SilentEngineTest::TearDown();
    }

    // What a fresh render of the material calls, from another program that is in use.
    Calls render(const int *lightType) {
        RVMATERIAL::reset();
        RVSHADER::gaussian->render(nullptr);
        int type = lightType ? *lightType : 0;
        return callsOf([&] { EXPECT_TRUE(material->render(lightType ? &type : nullptr)); });
    }

    // The name of the program that is put in use; "" for the fixed functions.
    std::string programFor(const int *lightType) {
        const Calls used = render(lightType).named("glUseProgramObjectARB");
        EXPECT_EQ(used.size(), 1u);
        return used.empty() ? "the one before" : nameOf[used[0].arguments[0]];
    }
    std::string programFor(int lightType) { return programFor(&lightType); }

    std::map<double, std::string> nameOf; // by OpenGL's name of the program
    RVMATERIAL *material = nullptr;
    RVTEXTURE *texture = nullptr;
};

TEST_F(MaterialProgramTest, ProgramIsChosenByLightTextureSkinAndShadow) {
    const std::string lights[] = {"pplOmni", "pplDirect", "pplSpot"};
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

TEST_F(MaterialProgramTest, OtherSlotsAreNoTexture) {
    material->setTexture(3, texture);
    EXPECT_EQ(programFor(0), "pplOmni");
}

TEST_F(MaterialProgramTest, WithoutALightOrAnUnknownOneTheFixedFunctionsDraw) {
    EXPECT_EQ(programFor(nullptr), "");
    EXPECT_EQ(programFor(3), "");
    EXPECT_EQ(programFor(-1), "");
    EXPECT_EQ(programFor(0x7fffffff), "");
}

TEST_F(MaterialProgramTest, WithoutTheWishForShadersTheFixedFunctionsDraw) {
    RVSETTINGS::forceShadersOff();
    EXPECT_EQ(programFor(0), "");
    material->setShader(RVSHADER::skydome); // asked for by name, it is used
    EXPECT_EQ(programFor(nullptr), "skydomeShader");
    RVSETTINGS::forceShadersOn();
}

TEST_F(MaterialProgramTest, ExplicitProgramWinsAlsoWithoutALight) {
    material->setShader(RVSHADER::water);
    EXPECT_EQ(programFor(nullptr), "waterShader");
    EXPECT_EQ(programFor(2), "waterShader");
}

TEST_F(MaterialProgramTest, InoperativeProgramsGiveWayToTheFixedFunctions) {
    RVSHADER::pplOmni->forceDeactivation();
    EXPECT_EQ(programFor(0), "");
    RVSHADER own;
    material->setShader(&own);
    EXPECT_EQ(programFor(1), ""); // and not to the chosen one
    material->setShader(nullptr);
}

TEST_F(MaterialProgramTest, DeletedProgramsGiveWayToo) {
    delete RVSHADER::pplOmni;
    EXPECT_EQ(programFor(0), "");
}

TEST_F(MaterialProgramTest, ShadowProgramLearnsTheMapsSizeAndUnit) {
    RAVOLT::shadowingOn();
    material->setTexture(0, texture);
    material->setSkinning(true);
    const int spot = 2;
    const Calls calls = render(&spot);
    const RVSHADER &program = *RVSHADER::pplSpotTSA;
    const auto size = RVSETTINGS::getSDLShadowMapSize();
    EXPECT_TRUE(calls.haveInOrder({{"glUniform1fARB", program.getParam(2), size},
                                   {"glUniform1fARB", program.getParam(3), size},
                                   {"glUniform1iARB", program.getParam(1), 1},
                                   {"glBindTexture", GL_TEXTURE_2D, texture->getGLId()},
                                   {"glUniform1iARB", program.getParam(0), 0}}))
        << calls.text();
    EXPECT_EQ(calls[0].name, "glUseProgramObjectARB"); // before the textures, which tell it more
}

TEST_F(MaterialProgramTest, ShadowProgramThatIsChosenByHandLearnsThemToo) {
    for (RVSHADER *program :
         {RVSHADER::pplSpotS, RVSHADER::pplSpotSA, RVSHADER::pplSpotTS, RVSHADER::pplSpotTSA}) {
        material->setShader(program);
        EXPECT_EQ(render(nullptr).count("glUniform1fARB"), 2u) << program->getName();
    }
    material->setShader(RVSHADER::pplSpotT);
    EXPECT_FALSE(render(nullptr).contains("glUniform1fARB"));
}

// A failed shadow feature leaves one of its programs.
TEST_F(MaterialProgramTest, ShadowedSkinKeepsItsProgramWhereTheOthersFell) {
    RAVOLT::shadowingOn();
    recorder.refuse("glGetObjectParameterivARB", 2 * 14, 1); // pplSpotTS
    ASSERT_TRUE(restart());
    ASSERT_FALSE(RVSHADER::useShadows());
    ASSERT_TRUE(RAVOLT::isShadowed()); // switched on before
    material = new RVMATERIAL;
    material->setSkinning(true);
    int spot = 2;
    RVMATERIAL::reset();
    material->render(&spot);
    recorder.start();
    EXPECT_TRUE(RVSHADER::pplSpotSA->render(nullptr));
    EXPECT_TRUE(recorder.stop().empty()); // in use already
}

TEST_F(MaterialProgramTest, SameMaterialKeepsItsProgramUntilReset) {
    int light = 0;
    RVMATERIAL::reset();
    material->render(&light);
    light = 2;
    EXPECT_TRUE(callsOf([&] { material->render(&light); }).empty());
    RVMATERIAL::reset();
    EXPECT_TRUE(callsOf([&] { material->render(&light); }).contains("glUseProgramObjectARB"));
}

TEST_F(MaterialProgramTest, NextMaterialWithTheSameProgramDoesNotPutItInUseAgain) {
    RVMATERIAL *other = new RVMATERIAL;
    int light = 1;
    material->render(&light);
    EXPECT_FALSE(callsOf([&] { other->render(&light); }).contains("glUseProgramObjectARB"));
}

} // namespace

} // namespace ravolt::test
