// Programs as OpenGL holds them: the engine's own ones and those of the application.

#include "ravolt/RVSHADER.h"

#include "ravolt/RVOPENGL.h"
#include "tests/resources/parameterNames.h"
#include "tests/support/engineFixture.h"

#include <SDL.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <map>
#include <set>
#include <string>

namespace ravolt::test {

namespace {

using Names = std::set<std::string>;

constexpr unsigned int absent = ~0u; // OpenGL's -1

const std::map<unsigned int, std::string> terrainNames = {
    {2, "inv"}, {3, "repeat1"}, {4, "repeat2"}, {5, "repeat3"}, {6, "repeat4"}};

std::string nameIn(const std::string &program, unsigned int slot) {
    if (program.rfind("terrain", 0) == 0 && terrainNames.count(slot))
        return terrainNames.at(slot);
    return program.rfind("water", 0) == 0 && slot == 20 ? "repeat" : parameterNames[slot];
}

// "sampler0" and so on for the units.
Names samplers(std::initializer_list<int> units) {
    Names names;
    for (const int unit : units)
        names.insert("textureSampler" + std::to_string(unit));
    return names;
}

Names operator+(Names a, const Names &b) {
    a.insert(b.begin(), b.end());
    return a;
}

const Names size = {"width", "height"};
const Names bones = {"boneQuat", "boneTrans", "boneIndex", "boneWeight"};
const Names depths = {"near", "far"};
const Names terrain = {"inv", "repeat1", "repeat2", "repeat3", "repeat4"};

const std::map<std::string, Names> heldBy = {
    {"passthrough", {}},
    {"passthroughA", bones},
    {"passhtroughZPass", depths},
    {"passhtroughZPassA", depths + bones},
    {"bloomBright", samplers({0})},
    {"bloomToneMapping", samplers({0}) + Names{"maxLuminance", "exposure"}},
    {"bloomCombine", samplers({0, 1, 2, 3})},
    {"bloomForceAlpha", samplers({0})},
    {"bloomVert", samplers({0}) + Names{"width"}},
    {"bloomHor", samplers({0}) + Names{"height"}},
    {"gaussian", samplers({0})},
    {"emitter", samplers({0})},
    {"dofCombine", samplers({0, 1, 2, 3})},
    {"dof", samplers({0, 1}) + Names{"focus", "range"}},
    {"skydomeShader", samplers({0})},
    {"waterShader", samplers({0, 2, 3, 4}) + Names{"repeat"}},
    {"waterShaderS", samplers({0, 1, 2, 3, 4}) + size + Names{"repeat"}},
    {"terrainComplex", samplers({0, 2, 3, 4, 5, 6, 7, 8}) + terrain},
    {"terrainSimple", samplers({0, 2, 3, 4}) + terrain}, // and sampler 1, which it does not read
};

// What a program uses, and so must hold.
Names expectedOf(const std::string &program) {
    if (program.rfind("ppl", 0) != 0)
        return heldBy.at(program);
    const std::string letters = program.substr(program.find_last_not_of("TSA") + 1);
    const auto has = [&](char letter) { return letters.find(letter) != std::string::npos; };
    Names names;
    if (has('T'))
        names = names + samplers({0});
    if (program.rfind("pplSpot", 0) == 0 && has('S'))
        names = names + samplers({1}) + size;
    return has('A') ? names + bones : names;
}

template <class Function> Function fetch(const char *name) {
    return reinterpret_cast<Function>(SDL_GL_GetProcAddress(name));
}

class ShaderState : public EngineTest {
  protected:
    ShaderState() { settings.setShaders(true); }
    void TearDown() override {
        RVSHADER::reset();
        EngineTest::TearDown();
    }

    // OpenGL's name of the program, which is in use afterwards.
    GLhandleARB programOf(RVSHADER &shader) {
        RVSHADER::disable();
        recorder.start();
        EXPECT_TRUE(shader.render(nullptr));
        return static_cast<GLhandleARB>(
            recorder.stop().named("glUseProgramObjectARB")[0].arguments[0]);
    }

    static bool isLinked(GLhandleARB program) {
        GLint status = 0;
        RVOPENGL::glGetObjectParameterivARB(program, GL_OBJECT_LINK_STATUS_ARB, &status);
        return status != 0;
    }
};

template <class Action> void forEachProgram(Action action) {
    for (RVSHADER *each = RVSHADER::getFirst(); each; each = each->getNext()) {
        SCOPED_TRACE(each->getName());
        action(*each);
    }
}

// --- The engine's own programs

TEST_F(ShaderState, BuiltinProgramsAreOperativeAndLinked) {
    unsigned int number = 0;
    forEachProgram([&](RVSHADER &shader) {
        EXPECT_TRUE(shader.isOperative());
        EXPECT_TRUE(isLinked(programOf(shader)));
        ++number;
    });
    EXPECT_EQ(number, 35u);
}

TEST_F(ShaderState, BuiltinProgramsHoldTheParametersThatTheyUseAndNoOthers) {
    forEachProgram([](RVSHADER &shader) {
        Names held;
        for (unsigned int slot = 0; slot < RVSHADER::parameters; ++slot)
            if (shader.getParam(slot) != absent)
                held.insert(nameIn(shader.getName(), slot));
        if (&shader == RVSHADER::terrainSimple)
            held.erase("textureSampler1"); // a driver may keep what is not read
        EXPECT_EQ(held, expectedOf(shader.getName()));
    });
}

TEST_F(ShaderState, SlotsAreOpenGLsLocations) {
    forEachProgram([this](RVSHADER &shader) {
        const GLhandleARB program = programOf(shader);
        const bool isTerrain = shader.getName() == std::string("terrainComplex") ||
                               shader.getName() == std::string("terrainSimple");
        for (unsigned int slot = 0; slot < RVSHADER::parameters; ++slot) {
            const std::string name = nameIn(shader.getName(), slot);
            const bool isAttribute = slot == 7 || (slot == 6 && !isTerrain);
            const GLint location = isAttribute
                                       ? RVOPENGL::glGetAttribLocationARB(program, name.c_str())
                                       : RVOPENGL::glGetUniformLocationARB(program, name.c_str());
            EXPECT_EQ(shader.getParam(slot), static_cast<unsigned int>(location)) << name;
        }
    });
}

// Also before any texture is bound: samplers of two kinds on one unit would stop a program.
TEST_F(ShaderState, SamplersPointAtTheirUnitsFromTheStart) {
    const auto get = fetch<PFNGLGETUNIFORMIVARBPROC>("glGetUniformivARB");
    unsigned int number = 0;
    forEachProgram([&](RVSHADER &shader) {
        const GLhandleARB program = programOf(shader);
        for (int unit = 0; unit < static_cast<int>(RV_TEXTURE_UNITS); ++unit) {
            const std::string name = "textureSampler" + std::to_string(unit);
            const GLint location = RVOPENGL::glGetUniformLocationARB(program, name.c_str());
            if (location < 0)
                continue;
            GLint found = -1;
            get(program, location, &found);
            EXPECT_EQ(found, unit);
            ++number;
        }
    });
    EXPECT_GT(number, 35u);
}

TEST_F(ShaderState, ValuesArriveInTheProgramInUse) {
    const auto get = fetch<PFNGLGETUNIFORMFVARBPROC>("glGetUniformfvARB");
    const auto expectValue = [&](RVSHADER &shader, unsigned int slot, float expected) {
        GLfloat found = -1;
        get(programOf(shader), static_cast<GLint>(shader.getParam(slot)), &found);
        EXPECT_EQ(found, expected) << parameterNames[slot];
    };
    RVSHADER::passthroughZPass->render(nullptr);
    EXPECT_TRUE(RVSHADER::bindNearAndFarPlane(0.5f, 300));
    expectValue(*RVSHADER::passthroughZPass, 14, 0.5f);
    expectValue(*RVSHADER::passthroughZPass, 15, 300);
    RVSHADER::dof->render(nullptr);
    EXPECT_TRUE(RVSHADER::bindFocusAndRange(0.25f, 3));
    expectValue(*RVSHADER::dof, 12, 0.25f);
    expectValue(*RVSHADER::dof, 13, 3);
    RVSHADER::bloomToneMapping->render(nullptr);
    EXPECT_TRUE(RVSHADER::bindLuminanceAndExposure(0.75f, 2));
    expectValue(*RVSHADER::bloomToneMapping, 10, 0.75f);
    expectValue(*RVSHADER::bloomToneMapping, 11, 2);
    RVSHADER::pplSpotS->render(nullptr);
    EXPECT_TRUE(RVSHADER::bindSizes(640, 480));
    expectValue(*RVSHADER::pplSpotS, 2, 640);
    expectValue(*RVSHADER::pplSpotS, 3, 480);
}

// The fixture would see an error.
TEST_F(ShaderState, ValuesThatAProgramDoesNotHoldAreNoError) {
    RVSHADER::passthrough->render(nullptr);
    for (unsigned int slot = 0; slot < RVSHADER::parameters; ++slot)
        ASSERT_EQ(RVSHADER::passthrough->getParam(slot), absent);
    EXPECT_TRUE(RVSHADER::bindSizes(1, 2));
    EXPECT_TRUE(RVSHADER::bindLuminanceAndExposure(1, 2));
    EXPECT_TRUE(RVSHADER::bindFocusAndRange(1, 2));
    EXPECT_TRUE(RVSHADER::bindNearAndFarPlane(1, 2));
    for (unsigned int unit = 0; unit < RV_TEXTURE_UNITS; ++unit)
        EXPECT_TRUE(RVSHADER::bindTexture(unit));
}

// --- The application's

constexpr char plainVertex[] = "void main() { gl_Position = ftransform(); }";

TEST_F(ShaderState, TextThatDoesNotCompileIsReportedByItsLabel) {
    RVSHADER *shader = new RVSHADER;
    EXPECT_TRUE(shader->loadPixelShader("fine", "void main() { gl_FragColor = vec4(1.0); }"));
    EXPECT_FALSE(shader->loadVertexShader("half", "void main() { gl_Position = ; }"));
    EXPECT_LOGGED_EXACTLY("   Pixel shader : fine, compiled\n"
                          "   [!] Vertex shader half not compiled @ RVSHADER::loadVertexShader\n");
    EXPECT_FALSE(shader->isOperative());
    EXPECT_STREQ(shader->getVSFilename(), "[none]");
}

TEST_F(ShaderState, ProgramThatDoesNotLinkIsFoundOutAtNoPoint) {
    RVSHADER *shader = new RVSHADER;
    ASSERT_TRUE(shader->loadVertexShader("v", plainVertex));
    ASSERT_TRUE(shader->loadPixelShader(
        "p", "varying vec4 missing; uniform float width;"
             "void main() { gl_FragColor = missing * width; }")); // no vertex stage writes it
    EXPECT_TRUE(shader->load(nullptr, nullptr, true));
    EXPECT_LOGGED_EXACTLY("   Vertex shader: v, compiled\n   Pixel shader : p, compiled\n");
    EXPECT_TRUE(shader->isOperative());
    EXPECT_FALSE(isLinked(programOf(*shader)));
    for (unsigned int slot = 0; slot < RVSHADER::parameters; ++slot)
        EXPECT_EQ(shader->getParam(slot), absent);
    EXPECT_TRUE(RVSHADER::bindSizes(1, 1));
    while (glGetError() != GL_NO_ERROR) { // OpenGL knows
    }
}

} // namespace

} // namespace ravolt::test
