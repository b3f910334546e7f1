// Programs: the registry, what is asked of OpenGL and in which order, every message. A silent
// driver that compiles everything stands behind.

#include "ravolt/RVSHADER.h"

#include "ravolt/RAVOLT.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVTEXTURE.h"
#include "ravolt/zlf.h"
#include "tests/resources/parameterNames.h"
#include "tests/support/engineFixture.h"
#include "tests/support/files.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <memory>
#include <new>
#include <string>
#include <vector>

namespace ravolt::test {

namespace {

constexpr unsigned int size = 28; // of the parameter table
constexpr unsigned int builtins = 35;

constexpr unsigned int samplerSlots[RV_TEXTURE_UNITS] = {0,  1,  8,  9,  16, 17, 18, 19,
                                                         20, 21, 22, 23, 24, 25, 26, 27};

class ShaderTest : public SilentEngineTest {
  protected:
    ShaderTest() { settings.setShaders(true); }
    void SetUp() override {
        SilentEngineTest::SetUp();
        RVSHADER::reset();
        RVSHADER::setPath(nullptr);
        shader = new RVSHADER;
    }
    void TearDown() override {
        RVSHADER::reset();
        SilentEngineTest::TearDown();
    }

    // Both stages compiled, linked, and out of use again.
    void makeOperative(RVSHADER *made) {
        ASSERT_TRUE(made->loadVertexShader("v", "vertex text"));
        ASSERT_TRUE(made->loadPixelShader("p", "pixel text"));
        ASSERT_TRUE(made->load(nullptr, nullptr, true));
        RVSHADER::disable();
    }

    // OpenGL's name of the program: what it puts in use.
    double programOf(RVSHADER *used) {
        RVSHADER::disable();
        const Calls calls = callsOf([&] { EXPECT_TRUE(used->render(nullptr)); });
        EXPECT_EQ(calls.names(), std::vector<std::string>{"glUseProgramObjectARB"});
        return calls[0].arguments[0];
    }

    RVSHADER *shader = nullptr;
};

// The engine never forgets that a driver had shaders; these tests need a process that never saw it.
class NoShaderTest : public SilentEngineTest {
  protected:
    void SetUp() override {
        SilentEngineTest::SetUp();
        if (RVOPENGL::useShaders())
            GTEST_SKIP() << "an earlier test of this process had shaders; run it alone";
    }
};

// --- Registry

TEST_F(ShaderTest, NewProgramIsRegisteredAndInoperative) {
    EXPECT_EQ(shader->getName(), "[shader " + std::to_string(shader->getId()) + "]");
    EXPECT_STREQ(shader->getVSFilename(), "[none]");
    EXPECT_STREQ(shader->getPSFilename(), "[none]");
    EXPECT_FALSE(shader->isOperative());
    for (unsigned int slot = 0; slot < size; ++slot)
        EXPECT_EQ(shader->getParam(slot), 0u);
    EXPECT_EQ(RVSHADER::findById(shader->getId()), shader);
    EXPECT_EQ(RVSHADER::getNumberOfShaders(), builtins + 1);
    EXPECT_EQ(RVSHADER::getFirst(), RVSHADER::pplDirect);
    EXPECT_EQ(shader->getPrevious(), RVSHADER::terrainSimple);
    EXPECT_EQ(RVSHADER::terrainSimple->getNext(), shader);
    EXPECT_EQ(shader->getNext(), nullptr);
}

TEST_F(ShaderTest, CleanUpDeletesAllAndCounts) {
    EXPECT_TRUE(RVSHADER::cleanUp());
    EXPECT_LOGGED_EXACTLY("   36 shader(s) released\n");
    EXPECT_EQ(RVSHADER::getFirst(), nullptr);
    EXPECT_FALSE(RVSHADER::cleanUp());
    EXPECT_EQ(RVSHADER::pplDirect, nullptr); // no pointer is left to what is gone
    EXPECT_EQ(RVSHADER::terrainSimple, nullptr);
}

TEST_F(ShaderTest, DestructorDetachesAndDeletesWhatThereIs) {
    makeOperative(shader);
    const double program = programOf(shader);
    const Calls calls = callsOf([&] { delete shader; });
    ASSERT_EQ(calls.size(), 5u);
    const double vertex = calls[0].arguments[1], pixel = calls[2].arguments[1];
    EXPECT_NE(vertex, pixel);
    EXPECT_EQ(calls, (Calls{{"glDetachObjectARB", program, vertex},
                            {"glDeleteObjectARB", vertex},
                            {"glDetachObjectARB", program, pixel},
                            {"glDeleteObjectARB", pixel},
                            {"glDeleteObjectARB", program}}));
    EXPECT_FALSE(RVSHADER::bindTexture(0)); // it was in use
    EXPECT_TRUE(callsOf([] { delete new RVSHADER; }).empty());
}

TEST_F(ShaderTest, DestructorLeavesOutWhatThereIsNot) {
    shader->loadVertexShader("v", "text"); // in no program
    EXPECT_EQ(callsOf([&] { delete shader; }).names(),
              std::vector<std::string>{"glDeleteObjectARB"});
    writeFile("glowPS.glsl", "p");
    RVSHADER *half = new RVSHADER; // a program of one stage
    ASSERT_TRUE(half->load(nullptr, "glowPS.glsl", false));
    EXPECT_EQ(
        callsOf([&] { delete half; }).names(),
        (std::vector<std::string>{"glDetachObjectARB", "glDeleteObjectARB", "glDeleteObjectARB"}));
}

TEST_F(ShaderTest, NewProgramAtAnOldAddressIsPutInUse) {
    alignas(RVSHADER) unsigned char place[sizeof(RVSHADER)];
    RVSHADER *former = new (place) RVSHADER;
    former->render(nullptr);
    former->~RVSHADER();
    RVSHADER *later = new (place) RVSHADER;
    EXPECT_TRUE(callsOf([&] { later->render(nullptr); }).contains("glUseProgramObjectARB"));
    later->~RVSHADER();
}

// --- Stages

TEST_F(ShaderTest, VertexTextIsCompiledUnderItsLabel) {
    recorder.start();
    EXPECT_TRUE(shader->loadVertexShader("label", "the text"));
    const Calls calls = recorder.stop();
    ASSERT_EQ(calls.names(),
              (std::vector<std::string>{"glCreateShaderObjectARB", "glShaderSourceARB",
                                        "glCompileShaderARB", "glGetObjectParameterivARB"}));
    EXPECT_EQ(calls[0], Call("glCreateShaderObjectARB", GL_VERTEX_SHADER_ARB));
    EXPECT_EQ(calls[1].arguments[1], 1);
    EXPECT_EQ(calls[1].text, "the text");
    EXPECT_EQ(calls[3].arguments[1], GL_OBJECT_COMPILE_STATUS_ARB);
    EXPECT_LOGGED_EXACTLY("   Vertex shader: label, compiled\n");
    EXPECT_STREQ(shader->getVSFilename(), "label");
    EXPECT_STREQ(shader->getPSFilename(), "[none]");
    EXPECT_FALSE(shader->isOperative());
}

TEST_F(ShaderTest, PixelTextIsCompiledUnderItsLabel) {
    const Calls calls = callsOf([&] { EXPECT_TRUE(shader->loadPixelShader("label", "the text")); });
    EXPECT_EQ(calls[0], Call("glCreateShaderObjectARB", GL_FRAGMENT_SHADER_ARB));
    EXPECT_EQ(calls[1].text, "the text");
    EXPECT_LOGGED_EXACTLY("   Pixel shader : label, compiled\n");
    EXPECT_STREQ(shader->getPSFilename(), "label");
    EXPECT_FALSE(shader->isOperative());
    EXPECT_TRUE(shader->loadVertexShader("other", "text"));
    EXPECT_TRUE(shader->isOperative());
    shader->forceDeactivation();
    EXPECT_FALSE(shader->isOperative());
}

// What is wrong, for the vertex stage and the pixel stage, and the lines that say so. On purpose
// two lines of the pixel stage name other methods.
TEST_F(ShaderTest, NullNamesAreRefused) {
    EXPECT_FALSE(shader->loadVertexShader(nullptr, "text"));
    EXPECT_LOGGED_EXACTLY("   [!] Invalid params @ RVSHADER::loadVertexShader\n");
    EXPECT_FALSE(shader->loadPixelShader(nullptr, "text"));
    EXPECT_LOGGED_EXACTLY("   [!] Invalid params @ RVSHADER::loadPixelxShader\n");
}

TEST_F(ShaderTest, MissingFilesAreNamedWithTheirPath) {
    RVSHADER::setPath("nowhere/");
    EXPECT_FALSE(shader->loadVertexShader("a.glsl", nullptr));
    EXPECT_LOGGED_EXACTLY("   [!] File not found nowhere/a.glsl @ RVSHADER::loadVertexShader\n");
    EXPECT_FALSE(shader->loadPixelShader("a.glsl", nullptr));
    EXPECT_LOGGED_EXACTLY("   [!] File not found nowhere/a.glsl @ RVSHADER::loadPixelShader\n");
}

TEST_F(ShaderTest, UnreadableFilesAreNamed) {
    writeFile("large.glsl", std::string(100000, ' '));
    recorder.failAllocation(100000);
    EXPECT_FALSE(shader->loadVertexShader("large.glsl", nullptr));
    EXPECT_FALSE(shader->loadPixelShader("large.glsl", nullptr));
    recorder.allocationsWork();
    zlfFree(nullptr); // what was refused was counted as allocated
    zlfFree(nullptr);
    EXPECT_LOGGED_EXACTLY(
        "   [!] Unable to read from file large.glsl @ RVSHADER::loadVertexShader\n"
        "   [!] Unable to read from file large.glsl @ RVSHADER::loadPixelShader\n");
}

TEST_F(ShaderTest, RefusedObjectsAreReported) {
    recorder.refuse("glCreateShaderObjectARB");
    EXPECT_FALSE(shader->loadVertexShader("v", "text"));
    EXPECT_FALSE(shader->loadPixelShader("p", "text"));
    EXPECT_LOGGED_EXACTLY("   [!] Unable to create shader object @ RVSHADER::loadVertexShader\n"
                          "   [!] Unable to create shader object @ RVSHADER::loadVertexShader\n");
}

TEST_F(ShaderTest, TextsThatDoNotCompileAreReportedByLabel) {
    makeOperative(shader);
    markLog();
    recorder.refuse("glGetObjectParameterivARB");
    EXPECT_FALSE(shader->loadVertexShader("bad.v", "text"));
    EXPECT_FALSE(shader->isOperative());
    EXPECT_FALSE(shader->loadPixelShader("bad.p", "text"));
    EXPECT_LOGGED_EXACTLY("   [!] Vertex shader bad.v not compiled @ RVSHADER::loadVertexShader\n"
                          "   [!] Pixel shader bad.p not compiled @ RVSHADER::loadPixelShader\n");
    EXPECT_STREQ(shader->getVSFilename(), "v"); // the last that compiled
    EXPECT_STREQ(shader->getPSFilename(), "p");
}

TEST_F(ShaderTest, AFailedStageIsInoperativeWhateverFailed) {
    makeOperative(shader);
    EXPECT_FALSE(shader->loadVertexShader("missing", nullptr));
    EXPECT_FALSE(shader->isOperative());
    makeOperative(shader);
    EXPECT_FALSE(shader->loadPixelShader("missing", nullptr));
    EXPECT_FALSE(shader->isOperative());
    makeOperative(shader);
    EXPECT_FALSE(shader->loadVertexShader(nullptr, nullptr)); // refused before it is looked at
    EXPECT_TRUE(shader->isOperative());
}

TEST_F(ShaderTest, FilesAreReadWhole) {
    const std::string text = "first line\nsecond line\n";
    writeFile("own.glsl", text);
    recorder.start();
    EXPECT_TRUE(shader->loadVertexShader("own.glsl", nullptr));
    EXPECT_EQ(recorder.stop().named("glShaderSourceARB")[0].text, text);
    EXPECT_STREQ(shader->getVSFilename(), "own.glsl");
}

TEST_F(ShaderTest, EmptyFilesHaveNoTextAtAll) {
    writeFile("empty.glsl", "");
    const Calls calls = callsOf([&] { shader->loadVertexShader("empty.glsl", nullptr); });
    EXPECT_EQ(calls.named("glShaderSourceARB")[0].text, "");
    EXPECT_TRUE(calls.contains("glCompileShaderARB"));
}

TEST_F(ShaderTest, LongLabelsAreCut) {
    EXPECT_TRUE(shader->loadVertexShader(std::string(300, 'v').c_str(), "text"));
    EXPECT_EQ(shader->getVSFilename(), std::string(255, 'v'));
}

TEST_F(ShaderTest, OldVertexObjectIsDetachedFromItsProgramAlone) {
    shader->loadVertexShader("v", "text");
    Calls calls = callsOf([&] { shader->loadVertexShader("v", "text"); });
    EXPECT_FALSE(calls.contains("glDetachObjectARB")); // there is no program yet
    EXPECT_EQ(calls[0].name, "glDeleteObjectARB");
    makeOperative(shader);
    const double program = programOf(shader);
    calls = callsOf([&] { shader->loadVertexShader("v", "text"); });
    EXPECT_EQ(calls[0].name, "glDetachObjectARB");
    EXPECT_EQ(calls[0].arguments[0], program);
    EXPECT_EQ(calls[1], Call("glDeleteObjectARB", calls[0].arguments[1]));
}

TEST_F(ShaderTest, OldPixelObjectIsDetachedFromNoProgramToo) {
    shader->loadPixelShader("p", "text");
    const Calls calls = callsOf([&] { shader->loadPixelShader("p", "text"); });
    EXPECT_EQ(calls[0].name, "glDetachObjectARB");
    EXPECT_EQ(calls[0].arguments[0], 0);
    EXPECT_EQ(calls[1], Call("glDeleteObjectARB", calls[0].arguments[1]));
}

// --- Load

TEST_F(ShaderTest, LoadLinksAndFindsAllParametersInTheirOrder) {
    shader->loadVertexShader("v", "text");
    shader->loadPixelShader("p", "text");
    const Calls calls = callsOf([&] { EXPECT_TRUE(shader->load(nullptr, nullptr, true)); });
    const double program = calls[1].arguments[0];
    EXPECT_EQ(calls[0].name, "glCreateProgramObjectARB");
    EXPECT_EQ(calls[1].name, "glAttachObjectARB");
    EXPECT_EQ(calls[2].name, "glAttachObjectARB");
    EXPECT_EQ(calls[2].arguments[0], program);
    EXPECT_LT(calls[1].arguments[1], calls[2].arguments[1]); // the vertex object is the older
    EXPECT_EQ(calls[3], Call("glLinkProgramARB", program));
    EXPECT_EQ(calls[4], Call("glUseProgramObjectARB", program));
    for (unsigned int slot = 0; slot < size; ++slot) {
        const Call &call = calls[5 + slot];
        EXPECT_EQ(call.name,
                  slot == 6 || slot == 7 ? "glGetAttribLocationARB" : "glGetUniformLocationARB");
        EXPECT_EQ(call.arguments[0], program);
        EXPECT_EQ(call.text, parameterNames[slot]);
    }
    EXPECT_TRUE(RVSHADER::bindTexture(0)); // it stays in use
}

TEST_F(ShaderTest, LoadPointsEachSamplerAtItsUnit) {
    shader->loadVertexShader("v", "text");
    shader->loadPixelShader("p", "text");
    recorder.start();
    EXPECT_TRUE(shader->load(nullptr, nullptr, true));
    const Calls wired = recorder.stop().named("glUniform1iARB");
    ASSERT_EQ(wired.size(), RV_TEXTURE_UNITS);
    for (unsigned int unit = 0; unit < RV_TEXTURE_UNITS; ++unit)
        EXPECT_EQ(wired[unit], Call("glUniform1iARB", shader->getParam(samplerSlots[unit]), unit));
}

TEST_F(ShaderTest, LoadOfFilesCompilesThem) {
    writeFile("glowVS.glsl", "v");
    writeFile("glowPS.glsl", "p");
    EXPECT_TRUE(shader->load("glowVS.glsl", "glowPS.glsl", false));
    EXPECT_TRUE(shader->isOperative());
    EXPECT_LOGGED_EXACTLY("   Vertex shader: glowVS.glsl, compiled\n"
                          "   Pixel shader : glowPS.glsl, compiled\n");
}

TEST_F(ShaderTest, LoadOfOneFileAttachesItsObjectAlone) {
    writeFile("glowVS.glsl", "v");
    writeFile("glowPS.glsl", "p");
    Calls calls = callsOf([&] { EXPECT_TRUE(shader->load(nullptr, "glowPS.glsl", false)); });
    const double pixel = calls.named("glShaderSourceARB")[0].arguments[0];
    ASSERT_EQ(calls.count("glAttachObjectARB"), 1u);
    EXPECT_EQ(calls.named("glAttachObjectARB")[0].arguments[1], pixel);
    calls = callsOf([&] { EXPECT_TRUE(shader->load("glowVS.glsl", nullptr, false)); });
    ASSERT_EQ(calls.count("glAttachObjectARB"), 1u);
    EXPECT_EQ(calls.named("glAttachObjectARB")[0].arguments[1],
              calls.named("glShaderSourceARB")[0].arguments[0]);
    EXPECT_FALSE(calls.contains(Call("glAttachObjectARB", pixel)));
}

TEST_F(ShaderTest, LoadOfWhatIsCompiledReadsNoFiles) {
    makeOperative(shader);
    markLog();
    const Calls calls = callsOf([&] { EXPECT_TRUE(shader->load("missing", "missing", true)); });
    EXPECT_EQ(calls.count("glAttachObjectARB"), 2u);
    EXPECT_FALSE(calls.contains("glShaderSourceARB"));
    EXPECT_NOTHING_LOGGED();
    EXPECT_STREQ(shader->getVSFilename(), "v");
}

TEST_F(ShaderTest, LoadStopsAtTheFirstFailure) {
    writeFile("glowPS.glsl", "p");
    recorder.start();
    EXPECT_FALSE(shader->load("missing", "glowPS.glsl", false));
    EXPECT_FALSE(shader->load(nullptr, "missing", false));
    EXPECT_TRUE(recorder.stop().empty());
}

TEST_F(ShaderTest, LoadOfNothingFindsTheParametersOfProgramZero) {
    const Calls calls = callsOf([&] { EXPECT_TRUE(shader->load(nullptr, nullptr, false)); });
    EXPECT_FALSE(calls.contains("glCreateProgramObjectARB"));
    EXPECT_EQ(calls[0], Call("glUseProgramObjectARB", 0));
    EXPECT_EQ(calls.named({"glGetUniformLocationARB", "glGetAttribLocationARB"}).size(), size);
}

TEST_F(ShaderTest, LoadAgainReplacesTheProgramAlsoInUse) {
    makeOperative(shader);
    const double old = programOf(shader);
    const Calls calls = callsOf([&] { EXPECT_TRUE(shader->load(nullptr, nullptr, true)); });
    EXPECT_EQ(calls[0], Call("glDeleteObjectARB", old));
    const double program = calls.named("glLinkProgramARB")[0].arguments[0];
    EXPECT_NE(program, old);
    EXPECT_TRUE(calls.contains(Call("glUseProgramObjectARB", program)));
}

// --- Parameters

TEST_F(ShaderTest, SlotsHoldLocations) {
    makeOperative(shader);
    recorder.start();
    EXPECT_TRUE(shader->bindParam(27, "other", false));
    EXPECT_TRUE(recorder.stop().named("glGetUniformLocationARB")[0].text == "other");
    EXPECT_NE(shader->getParam(27), shader->getParam(26));
    EXPECT_EQ(shader->getParam(28), 28u);
    EXPECT_EQ(shader->getParam(~0u), 28u);
}

TEST_F(ShaderTest, LastSlotHoldsTheLastSampler) {
    makeOperative(shader);
    const unsigned int sampler = shader->getParam(27);
    EXPECT_TRUE(shader->bindParam(27, "other", false));
    EXPECT_NE(shader->getParam(27), sampler);
    EXPECT_TRUE(shader->bindParam(27, "textureSampler15", false));
    EXPECT_EQ(shader->getParam(27), sampler);
}

TEST_F(ShaderTest, BadParametersAreRefused) {
    makeOperative(shader);
    markLog();
    EXPECT_FALSE(shader->bindParam(0, nullptr, false));
    EXPECT_FALSE(shader->bindParam(29, "width", false));
    EXPECT_FALSE(shader->bindParam(~0u, "width", false));
    EXPECT_LOGGED_EXACTLY("   [!] Invalid params @ RVSHADER::bindParam\n"
                          "   [!] Invalid params @ RVSHADER::bindParam\n"
                          "   [!] Invalid params @ RVSHADER::bindParam\n");
}

TEST_F(ShaderTest, TheSlotBehindTheTableHarmsNothing) {
    RVSHADER *next = new RVSHADER;
    EXPECT_FALSE(shader->bindParam(28, "width", false));
    EXPECT_LOGGED_EXACTLY("   [!] Invalid params @ RVSHADER::bindParam\n");
    EXPECT_EQ(shader->getNext(), next);
    EXPECT_EQ(shader->getPrevious(), RVSHADER::terrainSimple);
}

TEST_F(ShaderTest, BindParamPutsTheProgramInUse) {
    makeOperative(shader);
    const double program = programOf(shader);
    RVSHADER::disable();
    EXPECT_TRUE(callsOf([&] {
                    shader->bindParam(3, "x", false);
                }).contains(Call("glUseProgramObjectARB", program)));
    EXPECT_FALSE(
        callsOf([&] { shader->bindParam(3, "y", true); }).contains("glUseProgramObjectARB"));
}

// --- In use

TEST_F(ShaderTest, ProgramInUseIsNotPutInUseAgain) {
    makeOperative(shader);
    programOf(shader);
    EXPECT_TRUE(callsOf([&] { EXPECT_TRUE(shader->render(nullptr)); }).empty());
}

TEST_F(ShaderTest, DisableEndsUseOnce) {
    makeOperative(shader);
    programOf(shader);
    EXPECT_EQ(callsOf([] { EXPECT_TRUE(RVSHADER::disable()); }),
              (Calls{{"glUseProgramObjectARB", 0}}));
    EXPECT_TRUE(callsOf([] { EXPECT_TRUE(RVSHADER::disable()); }).empty());
    EXPECT_TRUE(callsOf([] { EXPECT_FALSE(RVSHADER::bindTexture(0)); }).empty());
    EXPECT_TRUE(callsOf([&] { shader->render(nullptr); }).contains("glUseProgramObjectARB"));
    EXPECT_TRUE(RVSHADER::bindTexture(0));
}

TEST_F(ShaderTest, EnableCallsNothing) {
    EXPECT_TRUE(callsOf([] { EXPECT_TRUE(RVSHADER::enable()); }).empty());
    EXPECT_FALSE(RVSHADER::bindTexture(0)); // no program is in use
    EXPECT_EQ(callsOf([] { RVSHADER::disable(); }), (Calls{{"glUseProgramObjectARB", 0}}));
}

TEST_F(ShaderTest, ResetForgetsAndDisables) {
    makeOperative(shader);
    programOf(shader);
    EXPECT_EQ(callsOf([] { RVSHADER::reset(); }), (Calls{{"glUseProgramObjectARB", 0}}));
    EXPECT_TRUE(callsOf([] { RVSHADER::reset(); }).empty());
    EXPECT_FALSE(RVSHADER::bindTexture(0));
}

// --- Values

TEST_F(ShaderTest, ValuesWithoutAProgramDoNothing) {
    for (const bool enabled : {false, true}) {
        SCOPED_TRACE(enabled);
        if (enabled)
            RVSHADER::enable();
        recorder.start();
        EXPECT_FALSE(RVSHADER::bindTexture(0));
        EXPECT_FALSE(RVSHADER::bindTexture(16));
        EXPECT_FALSE(RVSHADER::bindSizes(1, 2));
        EXPECT_FALSE(RVSHADER::bindLuminanceAndExposure(1, 2));
        EXPECT_FALSE(RVSHADER::bindFocusAndRange(1, 2));
        EXPECT_FALSE(RVSHADER::bindNearAndFarPlane(1, 2));
        EXPECT_FALSE(RVSHADER::bindBones(0, nullptr, nullptr, 1, 2));
        EXPECT_FALSE(RVSHADER::unbindBones());
        EXPECT_TRUE(recorder.stop().empty());
    }
}

TEST_F(ShaderTest, BonesOfAProgramThatIsGoneStayAsTheyAre) {
    makeOperative(shader);
    shader->render(nullptr);
    const float zero[4] = {};
    ASSERT_TRUE(RVSHADER::bindBones(1, zero, zero, 1, 2));
    delete shader;
    EXPECT_TRUE(callsOf([] { EXPECT_FALSE(RVSHADER::unbindBones()); }).empty());
    RVSHADER::pplDirectA->render(nullptr);
    EXPECT_TRUE(RVSHADER::unbindBones());
}

TEST_F(ShaderTest, ValuesGoToTheirSlots) {
    makeOperative(shader);
    shader->render(nullptr);
    const auto at = [this](unsigned int slot) { return shader->getParam(slot); };
    EXPECT_EQ(callsOf([] { EXPECT_TRUE(RVSHADER::bindSizes(640, -480)); }),
              (Calls{{"glUniform1fARB", at(2), 640}, {"glUniform1fARB", at(3), -480}}));
    EXPECT_EQ(callsOf([] { EXPECT_TRUE(RVSHADER::bindLuminanceAndExposure(0.5f, 2)); }),
              (Calls{{"glUniform1fARB", at(10), 0.5}, {"glUniform1fARB", at(11), 2}}));
    EXPECT_EQ(callsOf([] { EXPECT_TRUE(RVSHADER::bindFocusAndRange(0.25f, 3)); }),
              (Calls{{"glUniform1fARB", at(12), 0.25}, {"glUniform1fARB", at(13), 3}}));
    EXPECT_EQ(callsOf([] { EXPECT_TRUE(RVSHADER::bindNearAndFarPlane(1, 1024)); }),
              (Calls{{"glUniform1fARB", at(14), 1}, {"glUniform1fARB", at(15), 1024}}));
    for (unsigned int unit = 0; unit < RV_TEXTURE_UNITS; ++unit)
        EXPECT_EQ(callsOf([=] { EXPECT_TRUE(RVSHADER::bindTexture(unit)); }),
                  (Calls{{"glUniform1iARB", at(samplerSlots[unit]), unit}}));
    EXPECT_TRUE(callsOf([] { EXPECT_TRUE(RVSHADER::bindTexture(16)); }).empty());
}

TEST_F(ShaderTest, BonesAreTwoArraysAndTwoBuffers) {
    makeOperative(shader);
    shader->render(nullptr);
    const auto at = [this](unsigned int slot) { return shader->getParam(slot); };
    const float quat[8] = {1, 2, 3, 4, 5, 6, 7, 8}, trans[6] = {9, 10, 11, 12, 13, 14};
    EXPECT_EQ(callsOf([&] { EXPECT_TRUE(RVSHADER::bindBones(2, quat, trans, 7, 9)); }),
              (Calls{{"glUniform4fvARB", at(4), 2, 1, 2, 3, 4, 5, 6, 7, 8},
                     {"glUniform3fvARB", at(5), 2, 9, 10, 11, 12, 13, 14},
                     {"glBindBufferARB", GL_ARRAY_BUFFER_ARB, 7},
                     {"glEnableVertexAttribArrayARB", at(6)},
                     {"glVertexAttribPointerARB", at(6), 4, GL_FLOAT, GL_FALSE, 0, 0},
                     {"glBindBufferARB", GL_ARRAY_BUFFER_ARB, 9},
                     {"glEnableVertexAttribArrayARB", at(7)},
                     {"glVertexAttribPointerARB", at(7), 4, GL_FLOAT, GL_FALSE, 0, 0}}));
    EXPECT_EQ(callsOf([] { EXPECT_TRUE(RVSHADER::unbindBones()); }),
              (Calls{{"glDisableVertexAttribArrayARB", at(6)},
                     {"glDisableVertexAttribArrayARB", at(7)}}));
    EXPECT_TRUE(callsOf([] { EXPECT_FALSE(RVSHADER::unbindBones()); }).empty());
}

TEST_F(ShaderTest, MoreBonesThanTheProgramsHaveAreCut) {
    makeOperative(shader);
    shader->render(nullptr);
    const std::vector<float> quat(400), trans(300); // read beyond, these end the test
    recorder.start();
    EXPECT_TRUE(RVSHADER::bindBones(101, quat.data(), trans.data(), 1, 2));
    const Calls calls = recorder.stop();
    EXPECT_EQ(calls[0].arguments[1], 100);
    EXPECT_EQ(calls[1].arguments[1], 100);
    RVSHADER::unbindBones();
}

TEST_F(ShaderTest, BonesWithoutBuffersAreNotReadFromNowhere) {
    makeOperative(shader);
    shader->render(nullptr);
    const float zero[4] = {};
    recorder.start();
    EXPECT_TRUE(RVSHADER::bindBones(1, zero, zero, 0, 0));
    EXPECT_FALSE(recorder.stop().contains("glEnableVertexAttribArrayARB"));
    RVSHADER::unbindBones();
}

TEST_F(ShaderTest, TexturesPointTheSamplersOfTheProgramInUse) {
    makeOperative(shader);
    RVTEXTURE *texture = new RVTEXTURE;
    ASSERT_TRUE(texture->create(1, 1, 3));
    RVTEXTURE::texturingOff(RV_TEXTURE_UNITS);
    shader->render(nullptr);
    unsigned int unit = 9;
    const Calls calls = callsOf([&] { EXPECT_TRUE(texture->render(&unit)); });
    EXPECT_TRUE(calls.haveInOrder({{"glBindTexture", GL_TEXTURE_2D, texture->getGLId()},
                                   {"glUniform1iARB", shader->getParam(21), 9}}));
    EXPECT_TRUE(callsOf([&] { texture->render(&unit); }).empty()); // cached
    RVTEXTURE::texturingOff(RV_TEXTURE_UNITS);
}

// --- A driver that lacks something

// With any of the entry points missing nothing is called through NULL.
class IncompleteDriverTest : public SilentEngineTest,
                             public testing::WithParamInterface<const char *> {
  protected:
    IncompleteDriverTest() {
        settings.setShaders(true);
        recorder.nullEntryPoint(GetParam());
    }
    void TearDown() override {
        RVSHADER::reset();
        SilentEngineTest::TearDown();
    }
};

TEST_P(IncompleteDriverTest, ProgramsAreUsedWithoutIt) {
    ASSERT_TRUE(RVOPENGL::useShaders());
    std::unique_ptr<RVSHADER> shader(new RVSHADER);
    shader->loadVertexShader("v", "text");
    shader->loadPixelShader("p", "text");
    EXPECT_TRUE(shader->load(nullptr, nullptr, true));
    EXPECT_TRUE(shader->render(nullptr));
    const float values[4] = {};
    RVSHADER::bindBones(1, values, values, 1, 2);
    RVSHADER::unbindBones();
    RVSHADER::bindSizes(1, 1);
    RVSHADER::bindTexture(3);
    shader->loadVertexShader("v", "text");
    shader->loadPixelShader("p", "text");
    RVSHADER::disable();
}

INSTANTIATE_TEST_SUITE_P(
    EntryPoints, IncompleteDriverTest,
    testing::Values("glCreateShaderObjectARB", "glShaderSourceARB", "glCompileShaderARB",
                    "glCreateProgramObjectARB", "glAttachObjectARB", "glLinkProgramARB",
                    "glUseProgramObjectARB", "glDeleteObjectARB", "glDetachObjectARB",
                    "glGetObjectParameterivARB", "glGetUniformLocationARB", "glUniform1iARB",
                    "glUniform1fARB", "glUniform3fvARB", "glUniform4fvARB",
                    "glVertexAttribPointerARB", "glEnableVertexAttribArrayARB",
                    "glDisableVertexAttribArrayARB", "glGetAttribLocationARB", "glBindBufferARB"),
    [](const auto &each) { return std::string(each.param); });

class WithoutCompilerTest : public SilentEngineTest {
  protected:
    WithoutCompilerTest() {
        settings.setShaders(true);
        recorder.nullEntryPoint("glCompileShaderARB");
    }
};

// On purpose: the pixel stage asks for the function, and the vertex stage for the flag.
TEST_F(WithoutCompilerTest, PixelStageIsSilentAndVertexStageSpeaks) {
    ASSERT_TRUE(RVOPENGL::useShaders());
    RVSHADER *shader = new RVSHADER;
    recorder.start();
    EXPECT_FALSE(shader->loadPixelShader("p", "text"));
    EXPECT_FALSE(shader->loadPixelShader(nullptr, "text"));
    EXPECT_FALSE(shader->loadPixelShader("missing", nullptr));
    EXPECT_TRUE(recorder.stop().empty());
    EXPECT_NOTHING_LOGGED();
    EXPECT_FALSE(shader->loadVertexShader(nullptr, "text"));
    EXPECT_LOGGED_EXACTLY("   [!] Invalid params @ RVSHADER::loadVertexShader\n");
    EXPECT_FALSE(RVSHADER::pplDirect->isOperative());
    RVSHADER::reset();
}

TEST_F(NoShaderTest, EverythingIsRefusedInSilence) {
    RVSHADER *shader = new RVSHADER;
    recorder.start();
    EXPECT_FALSE(shader->loadVertexShader("v", "text"));
    EXPECT_FALSE(shader->loadVertexShader(nullptr, nullptr));
    EXPECT_FALSE(shader->loadPixelShader("p", "text"));
    EXPECT_FALSE(shader->loadPixelShader(nullptr, nullptr));
    EXPECT_FALSE(shader->load("v", "p", false));
    EXPECT_FALSE(shader->render(nullptr));
    EXPECT_FALSE(RVSHADER::enable());
    EXPECT_FALSE(RVSHADER::disable());
    RVSHADER::reset();
    EXPECT_FALSE(RVSHADER::bindTexture(0));
    delete shader;
    EXPECT_TRUE(recorder.stop().empty());
    EXPECT_NOTHING_LOGGED();
}

} // namespace

} // namespace ravolt::test
