// Programs: the registry, the OpenGL calls and their order, every message. The silent driver
// compiles everything.

#include "ravolt/RVSHADER.h"

#include "ravolt/RAVOLT.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVTEXTURE.h"
#include "ravolt/zlf.h"
#include "tests/resources/parameterNames.h"
#include "tests/support/callNames.h"
#include "tests/support/engineFixture.h"
#include "tests/support/files.h"

#include <gtest/gtest.h>

#include <functional>
#include <new>
#include <string>
#include <vector>

namespace ravolt::test {

namespace {

constexpr unsigned int size = 28; // of the parameter table
constexpr unsigned int builtins = 35;

constexpr unsigned int samplerSlots[RV_TEXTURE_UNITS] = {0,  1,  8,  9,  16, 17, 18, 19,
                                                         20, 21, 22, 23, 24, 25, 26, 27};

struct Stage {
    const char *title; // in the log
    bool (RVSHADER::*load)(const char *, const char *);
    char *(RVSHADER::*label)();
    GLenum kind;
};
const Stage stages[] = {{"   Vertex shader: ", &RVSHADER::loadVertexShader,
                         &RVSHADER::getVSFilename, GL_VERTEX_SHADER_ARB},
                        {"   Pixel shader : ", &RVSHADER::loadPixelShader, &RVSHADER::getPSFilename,
                         GL_FRAGMENT_SHADER_ARB}};

class ShaderTest : public SilentEngineTest {
  protected:
    ShaderTest() { settings.setShaders(true); }
    void SetUp() override {
        SilentEngineTest::SetUp();
        RVSHADER::reset();
        RVSHADER::setPath(nullptr);
        writeFile("glowVS.glsl", "v");
        writeFile("glowPS.glsl", "p");
        shader = new RVSHADER;
    }
    void TearDown() override {
        RVSHADER::reset();
        SilentEngineTest::TearDown();
    }

    void compileStages() {
        ASSERT_TRUE(shader->loadVertexShader("v", "vertex text"));
        ASSERT_TRUE(shader->loadPixelShader("p", "pixel text"));
    }

    Calls loadCalls(const char *vertexFile, const char *pixelFile, bool alreadyCompiled) {
        return callsOf([&] { EXPECT_TRUE(shader->load(vertexFile, pixelFile, alreadyCompiled)); });
    }

    RVSHADER *shader = nullptr;
};

// With a program that is compiled, linked and in use.
class OperativeShaderTest : public ShaderTest {
  protected:
    void SetUp() override {
        ShaderTest::SetUp();
        makeOperative();
    }

    void makeOperative() {
        compileStages();
        ASSERT_TRUE(shader->load(nullptr, nullptr, true));
        RVSHADER::disable();
        const Calls calls = callsOf([&] { EXPECT_TRUE(shader->render(nullptr)); });
        ASSERT_EQ(namesOf(calls), "glUseProgramObjectARB");
        program = calls[0].arguments[0];
        markLog();
    }

    double program = 0; // OpenGL's name
};

// Once detected, the capability stays set: these tests need a process that never detected it.
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
    EXPECT_EQ(RVSHADER::pplDirect, nullptr); // no dangling pointers
    EXPECT_EQ(RVSHADER::terrainSimple, nullptr);
}

TEST_F(OperativeShaderTest, DestructorDetachesAndDeletesItsObjects) {
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
}

TEST_F(ShaderTest, DestructorOmitsMissingObjects) {
    EXPECT_TRUE(callsOf([] { delete new RVSHADER; }).empty());
    shader->loadVertexShader("v", "text"); // in no program
    EXPECT_EQ(namesOf(callsOf([&] { delete shader; })), "glDeleteObjectARB");
    shader = new RVSHADER;
    ASSERT_TRUE(shader->load(nullptr, "glowPS.glsl", false)); // a program of one stage
    EXPECT_EQ(namesOf(callsOf([&] { delete shader; })),
              "glDetachObjectARB glDeleteObjectARB glDeleteObjectARB");
}

TEST_F(ShaderTest, NewProgramAtTheAddressOfADeletedOneIsBound) {
    alignas(RVSHADER) unsigned char storage[sizeof(RVSHADER)];
    RVSHADER *former = new (storage) RVSHADER;
    former->render(nullptr);
    former->~RVSHADER();
    RVSHADER *later = new (storage) RVSHADER;
    EXPECT_TRUE(callsOf([&] { later->render(nullptr); }).contains("glUseProgramObjectARB"));
    later->~RVSHADER();
}

// --- Stages

TEST_F(ShaderTest, TextsAreCompiledUnderTheirLabels) {
    for (const Stage &stage : stages) {
        SCOPED_TRACE(stage.title);
        EXPECT_FALSE(shader->isOperative());
        EXPECT_STREQ(std::invoke(stage.label, shader), "[none]");
        recorder.start();
        const bool compiled = std::invoke(stage.load, shader, "label", "the text");
        const Calls calls = recorder.stop();
        EXPECT_TRUE(compiled);
        ASSERT_EQ(namesOf(calls), "glCreateShaderObjectARB glShaderSourceARB glCompileShaderARB "
                                  "glGetObjectParameterivARB");
        EXPECT_EQ(calls[0], Call("glCreateShaderObjectARB", stage.kind));
        EXPECT_EQ(calls[1].arguments[1], 1);
        EXPECT_EQ(calls[1].text, "the text");
        EXPECT_EQ(calls[3].arguments[1], GL_OBJECT_COMPILE_STATUS_ARB);
        EXPECT_LOGGED_EXACTLY(stage.title + std::string("label, compiled\n"));
        EXPECT_STREQ((shader->*stage.label)(), "label");
    }
    EXPECT_TRUE(shader->isOperative());
    shader->forceDeactivation();
    EXPECT_FALSE(shader->isOperative());
    EXPECT_TRUE(shader->loadVertexShader(std::string(300, 'v').c_str(), "text"));
    EXPECT_EQ(shader->getVSFilename(), std::string(255, 'v')) << "cut";
}

// On purpose two lines of the pixel stage name other methods.
TEST_F(OperativeShaderTest, FailedStagesAreLoggedAndInoperative) {
    const struct {
        const char *what, *name, *source;
        std::function<void()> lie;
        const char *lines[2];
        bool operative = false;
    } cases[] = {
        {"no name",
         nullptr,
         "text",
         [] {},
         {"   [!] Invalid params @ RVSHADER::loadVertexShader\n",
          "   [!] Invalid params @ RVSHADER::loadPixelxShader\n"},
         true}, // refused before the stage is touched
        {"missing file",
         "a.glsl",
         nullptr,
         [] { RVSHADER::setPath("nowhere/"); },
         {"   [!] File not found nowhere/a.glsl @ RVSHADER::loadVertexShader\n",
          "   [!] File not found nowhere/a.glsl @ RVSHADER::loadPixelShader\n"}},
        {"unreadable file",
         "large.glsl",
         nullptr,
         [this] { recorder.failAllocation(100000, 0, 1); },
         {"   [!] Unable to read from file large.glsl @ RVSHADER::loadVertexShader\n",
          "   [!] Unable to read from file large.glsl @ RVSHADER::loadPixelShader\n"}},
        {"no object",
         "a",
         "text",
         [this] { recorder.failCalls("glCreateShaderObjectARB", 0, 1); },
         {"   [!] Unable to create shader object @ RVSHADER::loadVertexShader\n",
          "   [!] Unable to create shader object @ RVSHADER::loadVertexShader\n"}},
        {"not compiled",
         "bad",
         "text",
         [this] { recorder.failCalls("glGetObjectParameterivARB", 0, 1); },
         {"   [!] Vertex shader bad not compiled @ RVSHADER::loadVertexShader\n",
          "   [!] Pixel shader bad not compiled @ RVSHADER::loadPixelShader\n"}},
    };
    writeFile("large.glsl", std::string(100000, ' '));
    for (const auto &c : cases)
        for (const int pixel : {0, 1}) {
            SCOPED_TRACE(testing::Message() << c.what << ", stage " << pixel);
            makeOperative();
            c.lie();
            const bool compiled = std::invoke(stages[pixel].load, shader, c.name, c.source);
            EXPECT_FALSE(compiled);
            EXPECT_LOGGED_EXACTLY(c.lines[pixel]);
            EXPECT_EQ(shader->isOperative(), c.operative);
            EXPECT_STREQ(shader->getVSFilename(), "v"); // the last that compiled
            EXPECT_STREQ(shader->getPSFilename(), "p");
            RVSHADER::setPath(nullptr);
            if (c.what == std::string("unreadable file"))
                zlfFree(nullptr); // the failed allocation was counted
        }
    recorder.allocationsWork();
}

TEST_F(ShaderTest, FilesAreReadWhole) {
    for (const char *text : {"first line\nsecond line\n", ""}) {
        writeFile("own.glsl", text);
        const Calls calls =
            callsOf([&] { EXPECT_TRUE(shader->loadVertexShader("own.glsl", nullptr)); });
        EXPECT_EQ(calls.named("glShaderSourceARB")[0].text, text);
        EXPECT_TRUE(calls.contains("glCompileShaderARB"));
        EXPECT_STREQ(shader->getVSFilename(), "own.glsl");
    }
}

TEST_F(OperativeShaderTest, NewVertexObjectReplacesTheOneInTheProgram) {
    const Calls calls = callsOf([&] { shader->loadVertexShader("v", "text"); });
    const double former = calls[0].arguments[1];
    EXPECT_EQ(calls[0], Call("glDetachObjectARB", program, former));
    EXPECT_EQ(calls[1], Call("glDeleteObjectARB", former));
}

// On purpose: the pixel object alone is detached from no program too.
TEST_F(ShaderTest, ReplacedObjectsOfNoProgramAreDeleted) {
    compileStages();
    Calls calls = callsOf([&] { shader->loadVertexShader("v", "text"); });
    EXPECT_FALSE(calls.contains("glDetachObjectARB"));
    EXPECT_EQ(calls[0].name, "glDeleteObjectARB");
    calls = callsOf([&] { shader->loadPixelShader("p", "text"); });
    EXPECT_EQ(calls[0], Call("glDetachObjectARB", 0, calls[0].arguments[1]));
    EXPECT_EQ(calls[1], Call("glDeleteObjectARB", calls[0].arguments[1]));
}

// --- Load

TEST_F(ShaderTest, LoadLinksThenFindsParametersAndAssignsSamplerUnits) {
    compileStages();
    const Calls calls = loadCalls(nullptr, nullptr, true);
    const double program = calls[1].arguments[0];
    EXPECT_EQ(calls[0].name, "glCreateProgramObjectARB");
    EXPECT_EQ(calls[1].name, "glAttachObjectARB");
    EXPECT_EQ(calls[2], Call("glAttachObjectARB", program, calls[2].arguments[1]));
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
    const Calls samplers = calls.named("glUniform1iARB");
    ASSERT_EQ(samplers.size(), RV_TEXTURE_UNITS);
    for (unsigned int unit = 0; unit < RV_TEXTURE_UNITS; ++unit)
        EXPECT_EQ(samplers[unit],
                  Call("glUniform1iARB", shader->getParam(samplerSlots[unit]), unit));
    EXPECT_TRUE(RVSHADER::bindTexture(0)); // it stays in use
}

TEST_F(ShaderTest, LoadOfFilesCompilesThemAndAttachesThoseOfTheCallAlone) {
    const char *const vertex = "glowVS.glsl", *const pixel = "glowPS.glsl";
    for (const auto &[vertexFile, pixelFile] :
         {std::pair{vertex, pixel}, {nullptr, pixel}, {vertex, nullptr}}) {
        const Calls calls = loadCalls(vertexFile, pixelFile, false);
        const Calls attached = calls.named("glAttachObjectARB"),
                    compiled = calls.named("glShaderSourceARB");
        ASSERT_EQ(attached.size(), vertexFile && pixelFile ? 2u : 1u);
        ASSERT_EQ(compiled.size(), attached.size());
        for (std::size_t i = 0; i < attached.size(); ++i)
            EXPECT_EQ(attached[i].arguments[1], compiled[i].arguments[0]);
        EXPECT_TRUE(shader->isOperative());
        EXPECT_LOGGED_EXACTLY(
            std::string(vertexFile ? "   Vertex shader: glowVS.glsl, compiled\n" : "") +
            (pixelFile ? "   Pixel shader : glowPS.glsl, compiled\n" : ""));
    }
}

TEST_F(OperativeShaderTest, LoadOfCompiledStagesReadsNoFilesAndReplacesTheProgramInUse) {
    const Calls calls = loadCalls("missing", "missing", true);
    EXPECT_EQ(calls[0], Call("glDeleteObjectARB", program));
    const double later = calls.named("glLinkProgramARB")[0].arguments[0];
    EXPECT_NE(later, program);
    EXPECT_TRUE(calls.contains(Call("glUseProgramObjectARB", later)));
    EXPECT_EQ(calls.count("glAttachObjectARB"), 2u);
    EXPECT_FALSE(calls.contains("glShaderSourceARB"));
    EXPECT_NOTHING_LOGGED();
    EXPECT_STREQ(shader->getVSFilename(), "v");
}

TEST_F(ShaderTest, LoadStopsAtTheFirstFailure) {
    recorder.start();
    EXPECT_FALSE(shader->load("missing", "glowPS.glsl", false));
    EXPECT_FALSE(shader->load(nullptr, "missing", false));
    EXPECT_TRUE(recorder.stop().empty());
}

TEST_F(ShaderTest, LoadOfNothingFindsTheParametersOfProgramZero) {
    const Calls calls = loadCalls(nullptr, nullptr, false);
    EXPECT_FALSE(calls.contains("glCreateProgramObjectARB"));
    EXPECT_EQ(calls[0], Call("glUseProgramObjectARB", 0));
    EXPECT_EQ(calls.named({"glGetUniformLocationARB", "glGetAttribLocationARB"}).size(), size);
}

// --- Parameters

TEST_F(OperativeShaderTest, BindParamStoresTheLocationOfAnotherName) {
    const unsigned int sampler = shader->getParam(27);
    recorder.start();
    EXPECT_TRUE(shader->bindParam(27, "other", false));
    EXPECT_EQ(recorder.stop().named("glGetUniformLocationARB")[0].text, "other");
    EXPECT_NE(shader->getParam(27), sampler);
    EXPECT_NE(shader->getParam(27), shader->getParam(26));
    EXPECT_TRUE(shader->bindParam(27, "textureSampler15", false));
    EXPECT_EQ(shader->getParam(27), sampler);
    EXPECT_EQ(shader->getParam(28), 28u);
    EXPECT_EQ(shader->getParam(~0u), 28u);
}

TEST_F(OperativeShaderTest, BadParametersAreRefused) {
    RVSHADER *next = new RVSHADER;
    for (const auto &[slot, name] : {std::pair<unsigned int, const char *>{0u, nullptr},
                                     {28u, "width"}, // one past the table
                                     {29u, "width"},
                                     {~0u, "width"}}) {
        EXPECT_FALSE(shader->bindParam(slot, name, false)) << slot;
        EXPECT_LOGGED_EXACTLY("   [!] Invalid params @ RVSHADER::bindParam\n");
    }
    EXPECT_EQ(shader->getNext(), next);
    EXPECT_EQ(shader->getPrevious(), RVSHADER::terrainSimple);
}

TEST_F(OperativeShaderTest, BindParamUsesTheProgramOnce) {
    const auto calls = [&] { return callsOf([&] { shader->bindParam(3, "x", false); }); };
    RVSHADER::disable();
    EXPECT_TRUE(calls().contains(Call("glUseProgramObjectARB", program)));
    EXPECT_FALSE(calls().contains("glUseProgramObjectARB"));
}

// --- In use

TEST_F(OperativeShaderTest, RenderAndDisableCallOpenGLOnce) {
    const auto render = [this] { EXPECT_TRUE(shader->render(nullptr)); };
    const auto disable = [] { EXPECT_TRUE(RVSHADER::disable()); };
    EXPECT_TRUE(callsOf(render).empty());
    EXPECT_EQ(callsOf(disable), (Calls{{"glUseProgramObjectARB", 0}}));
    EXPECT_TRUE(callsOf(disable).empty());
    EXPECT_TRUE(callsOf([] { EXPECT_FALSE(RVSHADER::bindTexture(0)); }).empty());
    EXPECT_TRUE(callsOf(render).contains("glUseProgramObjectARB"));
    EXPECT_TRUE(RVSHADER::bindTexture(0));
}

TEST_F(ShaderTest, EnableCallsNothing) {
    EXPECT_TRUE(callsOf([] { EXPECT_TRUE(RVSHADER::enable()); }).empty());
    EXPECT_FALSE(RVSHADER::bindTexture(0)); // no program is in use
    EXPECT_EQ(callsOf([] { RVSHADER::disable(); }), (Calls{{"glUseProgramObjectARB", 0}}));
}

TEST_F(OperativeShaderTest, ResetDisablesOnce) {
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

TEST_F(OperativeShaderTest, BonesOfADeletedProgramAreNotUnbound) {
    const float zero[4] = {};
    ASSERT_TRUE(RVSHADER::bindBones(1, zero, zero, 1, 2));
    delete shader;
    EXPECT_TRUE(callsOf([] { EXPECT_FALSE(RVSHADER::unbindBones()); }).empty());
    RVSHADER::pplDirectA->render(nullptr);
    EXPECT_TRUE(RVSHADER::unbindBones());
}

TEST_F(OperativeShaderTest, ValuesGoToTheirSlots) {
    const struct {
        bool (*bind)();
        unsigned int slot;
        double first, second;
    } pairs[] = {
        {[] { return RVSHADER::bindSizes(640, -480); }, 2, 640, -480},
        {[] { return RVSHADER::bindLuminanceAndExposure(0.5f, 2); }, 10, 0.5, 2},
        {[] { return RVSHADER::bindFocusAndRange(0.25f, 3); }, 12, 0.25, 3},
        {[] { return RVSHADER::bindNearAndFarPlane(1, 1024); }, 14, 1, 1024},
    };
    for (const auto &pair : pairs)
        EXPECT_EQ(callsOf([&] { EXPECT_TRUE(pair.bind()); }),
                  (Calls{{"glUniform1fARB", shader->getParam(pair.slot), pair.first},
                         {"glUniform1fARB", shader->getParam(pair.slot + 1), pair.second}}));
    for (unsigned int unit = 0; unit < RV_TEXTURE_UNITS; ++unit)
        EXPECT_EQ(callsOf([=] { EXPECT_TRUE(RVSHADER::bindTexture(unit)); }),
                  (Calls{{"glUniform1iARB", shader->getParam(samplerSlots[unit]), unit}}));
    EXPECT_TRUE(callsOf([] { EXPECT_TRUE(RVSHADER::bindTexture(16)); }).empty());
}

TEST_F(OperativeShaderTest, BonesAreTwoArraysAndTwoBuffers) {
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
    // Without buffers the attributes would be read from address 0.
    EXPECT_FALSE(callsOf([&] {
                     EXPECT_TRUE(RVSHADER::bindBones(1, quat, trans, 0, 0));
                 }).contains("glEnableVertexAttribArrayARB"));
    RVSHADER::unbindBones();
    const std::vector<float> all(400); // read beyond these, more bones than 100 end the test
    const Calls calls = callsOf([&] { RVSHADER::bindBones(101, all.data(), &all[100], 1, 2); });
    EXPECT_EQ(calls[0].arguments[1], 100);
    EXPECT_EQ(calls[1].arguments[1], 100);
    RVSHADER::unbindBones();
}

TEST_F(OperativeShaderTest, BonesWithoutArraysAreRefused) {
    const float values[4] = {};
    for (const auto &[quat, trans] : {std::pair<const float *, const float *>{nullptr, values},
                                      {values, nullptr},
                                      {nullptr, nullptr}}) {
        recorder.start();
        EXPECT_FALSE(RVSHADER::bindBones(1, quat, trans, 7, 9));
        EXPECT_TRUE(recorder.stop().empty());
        EXPECT_LOGGED_EXACTLY("   [!] Invalid params @ RVSHADER::bindBones\n");
        EXPECT_FALSE(RVSHADER::unbindBones()) << "none are bound";
    }
}

TEST_F(OperativeShaderTest, TexturesAssignTheSamplersOfTheProgramInUse) {
    RVTEXTURE *texture = new RVTEXTURE;
    ASSERT_TRUE(texture->create(1, 1, 3));
    RVTEXTURE::texturingOff(RV_TEXTURE_UNITS);
    unsigned int unit = 9;
    const auto render = [&] { EXPECT_TRUE(texture->render(&unit)); };
    EXPECT_TRUE(callsOf(render).haveInOrder({{"glBindTexture", GL_TEXTURE_2D, texture->getGLId()},
                                             {"glUniform1iARB", shader->getParam(21), 9}}));
    EXPECT_TRUE(callsOf(render).empty()); // cached
    RVTEXTURE::texturingOff(RV_TEXTURE_UNITS);
}

// --- Incomplete drivers

// With any of the entry points missing nothing is called through NULL.
class IncompleteDriverTest : public ShaderTest, public testing::WithParamInterface<const char *> {
  protected:
    IncompleteDriverTest() { recorder.nullEntryPoint(GetParam()); }
};

TEST_P(IncompleteDriverTest, ProgramsAreUsedWithoutIt) {
    ASSERT_TRUE(RVOPENGL::useShaders());
    const auto loadStages = [this] {
        shader->loadVertexShader("v", "text");
        shader->loadPixelShader("p", "text");
    };
    loadStages();
    EXPECT_TRUE(shader->load(nullptr, nullptr, true));
    EXPECT_TRUE(shader->render(nullptr));
    const float values[4] = {};
    RVSHADER::bindBones(1, values, values, 1, 2);
    RVSHADER::unbindBones();
    RVSHADER::bindSizes(1, 1);
    RVSHADER::bindTexture(3);
    loadStages();
    RVSHADER::disable();
    delete shader;
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

class WithoutCompilerTest : public ShaderTest {
  protected:
    WithoutCompilerTest() { recorder.nullEntryPoint("glCompileShaderARB"); }
};

// On purpose: the pixel stage tests the function, and the vertex stage the capability.
TEST_F(WithoutCompilerTest, PixelStageIsSilentAndVertexStageLogs) {
    ASSERT_TRUE(RVOPENGL::useShaders());
    recorder.start();
    EXPECT_FALSE(shader->loadPixelShader("p", "text"));
    EXPECT_FALSE(shader->loadPixelShader(nullptr, "text"));
    EXPECT_FALSE(shader->loadPixelShader("missing", nullptr));
    EXPECT_TRUE(recorder.stop().empty());
    EXPECT_NOTHING_LOGGED();
    EXPECT_FALSE(shader->loadVertexShader(nullptr, "text"));
    EXPECT_LOGGED_EXACTLY("   [!] Invalid params @ RVSHADER::loadVertexShader\n");
    EXPECT_FALSE(RVSHADER::pplDirect->isOperative());
}

TEST_F(NoShaderTest, EverythingIsRefusedSilently) {
    RVSHADER *shader = new RVSHADER;
    recorder.start();
    for (const char *name : {"v", static_cast<const char *>(nullptr)}) {
        EXPECT_FALSE(shader->loadVertexShader(name, name));
        EXPECT_FALSE(shader->loadPixelShader(name, name));
    }
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
