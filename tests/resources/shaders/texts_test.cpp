// The texts by their labels, and the messages of a second compiler.

#include "resources/shaderTexts.h"
#include "tests/resources/builtinTable.h"
#include "tests/support/files.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <set>
#include <string>

namespace ravolt::test {
namespace {

// Compiles and links the two texts with the reference compiler; its messages without file names.
std::string secondOpinion(const char *vertexText, const char *pixelText, int &result) {
    writeFile("stage.vert", vertexText);
    writeFile("stage.frag", pixelText);
    result = std::system("glslangValidator -l stage.vert stage.frag >messages.txt 2>&1");
    std::string messages = readText("messages.txt");
    for (const char *name : {"stage.vert\n", "stage.frag\n"})
        if (const std::size_t at = messages.find(name); at != std::string::npos)
            messages.erase(at, std::string(name).size());
    return messages;
}

} // namespace

TEST(shaderTexts, HaveEveryLabelAndNoOther) {
    std::set<std::string> labels;
    for (const BuiltinProgram &program : builtinPrograms) {
        for (const char *label : {program.vertexLabel, program.pixelLabel}) {
            ASSERT_NE(shaderText(label), nullptr) << label;
            EXPECT_NE(std::string(shaderText(label)).find("void main()"), std::string::npos);
            labels.insert(label);
        }
    }
    EXPECT_EQ(labels.size(), 70u);
    for (const char *other :
         {static_cast<const char *>(nullptr), "", "pplVSdirectS.glsl", "pplVSspotTSA.glsl "})
        EXPECT_EQ(shaderText(other), nullptr);
}

// The labels of skinned programs end with an A.
TEST(shaderTexts, AreTheSameForAPixelStageWithAndWithoutSkinning) {
    unsigned int skinned = 0;
    for (const BuiltinProgram &program : builtinPrograms) {
        const std::string ending = "A.glsl", pixel = program.pixelLabel,
                          vertex = program.vertexLabel;
        if (pixel.size() < ending.size() || pixel.substr(pixel.size() - ending.size()) != ending)
            continue;
        const auto rigid = [&](const std::string &label) {
            return shaderText((label.substr(0, label.size() - ending.size()) + ".glsl").c_str());
        };
        EXPECT_STREQ(shaderText(program.pixelLabel), rigid(pixel)) << pixel;
        EXPECT_STRNE(shaderText(program.vertexLabel), rigid(vertex)) << vertex;
        ++skinned;
    }
    EXPECT_EQ(skinned, 10u);
}

TEST(shaderTexts, OfTheSimpleTerrainDeclareASamplerThatTheyDoNotRead) {
    const std::string text = shaderText("terrainSimplePS.glsl");
    const std::size_t declared = text.find("uniform sampler2D textureSampler1;");
    ASSERT_NE(declared, std::string::npos);
    EXPECT_EQ(text.find("textureSampler1,"), std::string::npos);
}

TEST(shaderTexts, AreAcceptedByASecondCompiler) {
    ASSERT_EQ(std::system("command -v glslangValidator >/dev/null"), 0)
        << "needs glslangValidator: apt-get install glslang-tools";
    for (const BuiltinProgram &program : builtinPrograms) {
        int result = -1;
        const std::string messages =
            secondOpinion(shaderText(program.vertexLabel), shaderText(program.pixelLabel), result);
        EXPECT_EQ(result, 0) << program.vertexLabel << ", " << program.pixelLabel;
        EXPECT_EQ(messages, "") << program.vertexLabel << ", " << program.pixelLabel;
    }
}

TEST(shaderTexts, WouldBeRefusedByTheSecondCompilerInAYoungerLanguage) {
    int result = 0;
    const std::string text = std::string(shaderText("passthroughVS.glsl")) +
                             "\nfloat two() { return float[2](1.0, 2.0)[1]; }\n";
    EXPECT_NE(secondOpinion(text.c_str(), shaderText("passthroughPS.glsl"), result), "");
    EXPECT_NE(result, 0);
}

} // namespace ravolt::test
