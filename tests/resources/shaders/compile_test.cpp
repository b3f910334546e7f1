// Every built-in program compiles and links without a message of the driver.

#include "ravolt/RVOPENGL.h"
#include "resources/shaderTexts.h"
#include "tests/resources/builtinTable.h"
#include "tests/resources/shaders/programScene.h"

namespace ravolt::test {

using BuiltinTexts = ProgramTest;

TEST_F(BuiltinTexts, CompileAndLinkWithoutWarnings) {
    for (const BuiltinProgram &labels : builtinPrograms) {
        const Program program(labels.vertexLabel, labels.pixelLabel);
        EXPECT_EQ(program.messages, "") << labels.vertexLabel << ", " << labels.pixelLabel;
        EXPECT_TRUE(program.linked) << labels.vertexLabel << ", " << labels.pixelLabel;
    }
}

// So what compiles is of the first version of the language.
TEST_F(BuiltinTexts, AreRefusedWithWordsOfAYoungerLanguage) {
    for (const BuiltinProgram &labels : builtinPrograms) {
        const std::string older = shaderText(labels.pixelLabel);
        EXPECT_EQ(compileMessages(GL_FRAGMENT_SHADER_ARB, older), "");
        const std::string younger = older + "\nfloat two() { return float[2](1.0, 2.0)[1]; }\n";
        EXPECT_NE(compileMessages(GL_FRAGMENT_SHADER_ARB, younger).find("1.10"), std::string::npos);
    }
}

// There the driver is set to it, and compiles the texts of the other tests.
TEST_F(BuiltinTexts, CompileInVersion110WhereTheDriverAcceptsNoLaterLanguage) {
    const std::string rest = "\nvoid main() { gl_FragColor = vec4(1.0); }\n";
    EXPECT_EQ(compileMessages(GL_FRAGMENT_SHADER_ARB, "#version 110" + rest), "");
    EXPECT_NE(compileMessages(GL_FRAGMENT_SHADER_ARB, "#version 120" + rest).find("1.20"),
              std::string::npos);
}

TEST_F(BuiltinTexts, LeaveAMessageWhenTwoDoNotFit) {
    const Program program("pplVSdirect.glsl", "waterPS.glsl");
    EXPECT_NE(program.messages, "");
}

} // namespace ravolt::test
