// Programs as OpenGL reports them: the engine's own and those of the application.

#include "ravolt/RVSHADER.h"

#include "ravolt/RVOPENGL.h"
#include "tests/resources/parameterNames.h"
#include "tests/support/engineFixture.h"
#include "tests/support/glObjects.h"
#include "tests/support/realDriver.h"

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>

namespace ravolt::test {

namespace {

using Names = std::set<std::string>;

constexpr unsigned int absent = ~0u; // OpenGL's -1

std::string nameIn(const std::string &program, unsigned int slot) {
    static const char *const terrainNames[] = {"inv", "repeat1", "repeat2", "repeat3", "repeat4"};
    if (program.starts_with("terrain") && slot >= 2 && slot <= 6)
        return terrainNames[slot - 2];
    return program.starts_with("water") && slot == 20 ? "repeat" : parameterNames[slot];
}

// "textureSampler0" and so on for the units, and these names.
Names samplers(std::initializer_list<int> units, Names names = {}) {
    for (const int unit : units)
        names.insert("textureSampler" + std::to_string(unit));
    return names;
}

const Names terrain = {"inv", "repeat1", "repeat2", "repeat3", "repeat4"};

const std::map<std::string, Names> parametersOf = {
    {"passthrough", {}},
    {"passthroughA", {"boneQuat", "boneTrans", "boneIndex", "boneWeight"}},
    {"passhtroughZPass", {"near", "far"}},
    {"passhtroughZPassA", {"near", "far", "boneQuat", "boneTrans", "boneIndex", "boneWeight"}},
    {"bloomBright", samplers({0})},
    {"bloomToneMapping", samplers({0}, {"maxLuminance", "exposure"})},
    {"bloomCombine", samplers({0, 1, 2, 3})},
    {"bloomForceAlpha", samplers({0})},
    {"bloomVert", samplers({0}, {"width"})},
    {"bloomHor", samplers({0}, {"height"})},
    {"gaussian", samplers({0})},
    {"emitter", samplers({0})},
    {"dofCombine", samplers({0, 1, 2, 3})},
    {"dof", samplers({0, 1}, {"focus", "range"})},
    {"skydomeShader", samplers({0})},
    {"waterShader", samplers({0, 2, 3, 4}, {"repeat"})},
    {"waterShaderS", samplers({0, 1, 2, 3, 4}, {"width", "height", "repeat"})},
    {"terrainComplex", samplers({0, 2, 3, 4, 5, 6, 7, 8}, terrain)},
    {"terrainSimple", samplers({0, 2, 3, 4}, terrain)}, // and sampler 1, which it does not read
};

// The parameters that a program uses.
Names expectedOf(const std::string &program) {
    if (!program.starts_with("ppl"))
        return parametersOf.at(program);
    const std::string letters = program.substr(program.find_last_not_of("TSA") + 1);
    const auto has = [&](char letter) { return letters.find(letter) != std::string::npos; };
    Names names = has('A') ? parametersOf.at("passthroughA") : Names{};
    if (has('T'))
        names = samplers({0}, names);
    if (has('S'))
        names.insert({"textureSampler1", "width", "height"});
    return names;
}

class ShaderState : public EngineTest {
  protected:
    ShaderState() { settings.setShaders(true); }

    void SetUp() override {
        EngineTest::SetUp();
        SKIP_WITHOUT_EXTENSIONS(programExtensions);
    }

    void TearDown() override {
        RVSHADER::reset();
        EngineTest::TearDown();
    }

    // OpenGL's name of the program, which is in use afterwards.
    GLhandleARB programOf(RVSHADER &shader) {
        RVSHADER::disable();
        const Calls calls = callsOf([&] { EXPECT_TRUE(shader.render(nullptr)); });
        return static_cast<GLhandleARB>(calls.named("glUseProgramObjectARB")[0].arguments[0]);
    }

    static bool isLinked(GLhandleARB program) {
        GLint status = 0;
        RVOPENGL::glGetObjectParameterivARB(program, GL_OBJECT_LINK_STATUS_ARB, &status);
        return status != 0;
    }
};

// --- The engine's own programs

// The samplers are assigned before any texture is bound: two kinds of samplers on one unit would
// make a program fail.
TEST_F(ShaderState, BuiltinProgramsAreLinkedWithTheirParametersAndSamplerUnits) {
    SKIP_WITHOUT_EXTENSIONS(targetExtensions);
    const auto getUniform = entryPoint<PFNGLGETUNIFORMIVARBPROC>("glGetUniformivARB");
    unsigned int programs = 0, assigned = 0;
    for (RVSHADER *shader = RVSHADER::getFirst(); shader; shader = shader->getNext(), ++programs) {
        const std::string program = shader->getName();
        SCOPED_TRACE(program);
        EXPECT_TRUE(shader->isOperative());
        const GLhandleARB handle = programOf(*shader);
        EXPECT_TRUE(isLinked(handle));
        Names found;
        for (unsigned int slot = 0; slot < RVSHADER::parameters; ++slot) {
            const std::string name = nameIn(program, slot);
            const bool isAttribute = slot == 7 || (slot == 6 && !program.starts_with("terrain"));
            const GLint location = isAttribute
                                       ? RVOPENGL::glGetAttribLocationARB(handle, name.c_str())
                                       : RVOPENGL::glGetUniformLocationARB(handle, name.c_str());
            EXPECT_EQ(shader->getParam(slot), static_cast<unsigned int>(location)) << name;
            if (shader->getParam(slot) == absent)
                continue;
            found.insert(name);
            if (!name.starts_with("textureSampler"))
                continue;
            GLint unit = -1;
            getUniform(handle, location, &unit);
            EXPECT_EQ("textureSampler" + std::to_string(unit), name);
            ++assigned;
        }
        if (program == "terrainSimple")
            found.erase("textureSampler1"); // a driver may report what is not read
        EXPECT_EQ(found, expectedOf(program));
    }
    EXPECT_EQ(programs, 35u);
    EXPECT_GT(assigned, 35u);
}

TEST_F(ShaderState, ValuesArriveInTheProgramInUse) {
    const auto getUniform = entryPoint<PFNGLGETUNIFORMFVARBPROC>("glGetUniformfvARB");
    const struct {
        RVSHADER *shader;
        bool (*bind)();
        unsigned int slot;
        float values[2];
    } cases[] = {
        {RVSHADER::passthroughZPass,
         [] { return RVSHADER::bindNearAndFarPlane(0.5f, 300); },
         14,
         {0.5f, 300}},
        {RVSHADER::dof, [] { return RVSHADER::bindFocusAndRange(0.25f, 3); }, 12, {0.25f, 3}},
        {RVSHADER::bloomToneMapping,
         [] { return RVSHADER::bindLuminanceAndExposure(0.75f, 2); },
         10,
         {0.75f, 2}},
        {RVSHADER::pplSpotS, [] { return RVSHADER::bindSizes(640, 480); }, 2, {640, 480}},
    };
    for (const auto &c : cases) {
        const GLhandleARB handle = programOf(*c.shader);
        EXPECT_TRUE(c.bind());
        for (const unsigned int i : {0u, 1u}) {
            GLfloat found = -1;
            getUniform(handle, static_cast<GLint>(c.shader->getParam(c.slot + i)), &found);
            EXPECT_EQ(found, c.values[i]) << parameterNames[c.slot + i];
        }
    }
}

// The fixture would see an error.
TEST_F(ShaderState, ValuesWithoutAParameterAreNoError) {
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

TEST_F(ShaderState, TextThatDoesNotCompileIsReportedByItsLabel) {
    RVSHADER *shader = new RVSHADER;
    EXPECT_TRUE(shader->loadPixelShader("fine", "void main() { gl_FragColor = vec4(1.0); }"));
    EXPECT_FALSE(shader->loadVertexShader("half", "void main() { gl_Position = ; }"));
    EXPECT_LOGGED_EXACTLY("   Pixel shader : fine, compiled\n"
                          "   [!] Vertex shader half not compiled @ RVSHADER::loadVertexShader\n");
    EXPECT_FALSE(shader->isOperative());
    EXPECT_STREQ(shader->getVSFilename(), "[none]");
}

TEST_F(ShaderState, ProgramThatDoesNotLinkIsNotDetected) {
    RVSHADER *shader = new RVSHADER;
    ASSERT_TRUE(shader->loadVertexShader("v", "void main() { gl_Position = ftransform(); }"));
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
    while (glGetError() != GL_NO_ERROR) { // OpenGL's own
    }
}

} // namespace

} // namespace ravolt::test
