// The texts by their labels, and a second compiler's word on them.

#include "resources/shaderTexts.h"
#include "tests/resources/shaders/labels.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <set>
#include <string>

namespace ravolt::test {
namespace {

std::string contents(const std::string &path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

void write(const std::string &path, const char *text) { std::ofstream(path) << text; }

// Compiles and links the two texts with the reference compiler; what it says but for file names.
std::string secondOpinion(const char *vertexText, const char *pixelText, int &result) {
    write("stage.vert", vertexText);
    write("stage.frag", pixelText);
    result = std::system("glslangValidator -l stage.vert stage.frag >messages.txt 2>&1");
    std::string messages = contents("messages.txt");
    for (const char *name : {"stage.vert\n", "stage.frag\n"})
        if (const std::size_t at = messages.find(name); at != std::string::npos)
            messages.erase(at, std::string(name).size());
    return messages;
}

} // namespace

TEST(shaderTexts, HaveEveryLabel) {
    std::set<std::string> labels;
    for (const ProgramLabels &program : allPrograms) {
        for (const char *label : {program.vertex, program.pixel}) {
            ASSERT_NE(shaderText(label), nullptr) << label;
            EXPECT_NE(std::string(shaderText(label)).find("void main()"), std::string::npos);
            labels.insert(label);
        }
    }
    EXPECT_EQ(labels.size(), 70u);
}

TEST(shaderTexts, HaveNoOtherLabel) {
    EXPECT_EQ(shaderText(nullptr), nullptr);
    EXPECT_EQ(shaderText(""), nullptr);
    EXPECT_EQ(shaderText("pplVSdirectS.glsl"), nullptr);
    EXPECT_EQ(shaderText("pplVSspotTSA.glsl "), nullptr);
}

TEST(shaderTexts, AreTheSameForAPixelStageWithAndWithoutSkinning) {
    const char *pairs[][2] = {{"pplPSdirect.glsl", "pplPSdirectA.glsl"},
                              {"pplPSomniT.glsl", "pplPSomniTA.glsl"},
                              {"pplPSspotTS.glsl", "pplPSspotTSA.glsl"},
                              {"passthroughPS.glsl", "passthroughPSA.glsl"},
                              {"passthroughZPassPS.glsl", "passthroughZPassPSA.glsl"}};
    for (const auto &pair : pairs)
        EXPECT_STREQ(shaderText(pair[0]), shaderText(pair[1]));
    EXPECT_STRNE(shaderText("pplVSspotTS.glsl"), shaderText("pplVSspotTSA.glsl"));
}

TEST(shaderTexts, AreAcceptedByASecondCompiler) {
    ASSERT_EQ(std::system("command -v glslangValidator >/dev/null"), 0)
        << "needs glslangValidator: apt-get install glslang-tools";
    for (const ProgramLabels &program : allPrograms) {
        int result = -1;
        const std::string messages =
            secondOpinion(shaderText(program.vertex), shaderText(program.pixel), result);
        EXPECT_EQ(result, 0) << program.vertex << ", " << program.pixel;
        EXPECT_EQ(messages, "") << program.vertex << ", " << program.pixel;
    }
}

TEST(shaderTexts, WouldBeRefusedByTheSecondCompilerInAnotherLanguage) {
    int result = 0;
    const std::string text = std::string(shaderText("passthroughVS.glsl")) + "half wrong;";
    EXPECT_NE(secondOpinion(text.c_str(), shaderText("passthroughPS.glsl"), result), "");
    EXPECT_NE(result, 0);
}

} // namespace ravolt::test
