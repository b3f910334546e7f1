// The viewer's keys, pressed in its window.

#include "tests/tools/otherWindow.h"
#include "tests/tools/support.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <iterator>
#include <string>
#include <unistd.h>

namespace {

using namespace tool_test;

class ViewKeys : public ::testing::Test {
  protected:
    // Other tests have windows too.
    const std::string file = "keys" + std::to_string(getpid()) + ".obj";
    const std::string title = "ravolt - " + file + " - ";

    void SetUp() override {
        writeFile("m.mtl", "newmtl a\nKd 1 1 1\n");
        writeFile(file, squareObj("m.mtl", "a"));
    }

    void startViewer(const std::string &before = "", const std::string &shown = "") const {
        const std::string command = before + " '" RAVOLT_TOOL "' view " +
                                    (shown.empty() ? file : shown) +
                                    " --seconds 60 --size 160x120 >said 2>&1 </dev/null &";
        ASSERT_EQ(std::system(command.c_str()), 0);
    }

    static std::string said() {
        std::ifstream stream("said");
        return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
    }
};

TEST_F(ViewKeys, OnX11SwitchEffectsWithWhatTheyNeedAndTheTitleTellsThem) {
    startViewer();
    OtherWindow window(title);
    ASSERT_TRUE(window.isThere());
    std::string lines;
    for (const auto &[key, names] : std::vector<std::pair<std::string, std::string>>{
             {"2", "spot light"},
             {"3", "per-pixel lighting, spot light, shadows"},
             {"4", "per-pixel lighting, spot light, shadows, floor"},
             {"6", "per-pixel lighting, spot light, shadows, floor, bloom, tone mapping"},
             {"5", "per-pixel lighting, spot light, shadows, floor"},
             {"7", "per-pixel lighting, spot light, shadows, floor, depth of field"},
             {"1", "spot light, floor, depth of field"},
             {"2", "floor, depth of field"}}) {
        window.press(key);
        EXPECT_EQ(window.titleOnceItIs(title + names), title + names);
        lines += "effects: " + names + "\n";
    }
    window.press("q");
    EXPECT_TRUE(window.goes());
    EXPECT_EQ(said(), lines);
}

TEST_F(ViewKeys, OnX11ChangeTheNumbersOfTheEffectsThatAreOn) {
    startViewer("", file + " --brightness 2");
    OtherWindow window(title);
    ASSERT_TRUE(window.isThere());
    for (const char *key : {"5", "Tab", "Prior", "Prior", "Next", "Home", "Tab", "Next", "q"})
        window.press(key);
    EXPECT_TRUE(window.goes());
    EXPECT_EQ(said(), "effects: per-pixel lighting, bloom\n--bloom-intensity 0.5\n"
                      "--bloom-intensity 0.6\n--bloom-intensity 0.7\n--bloom-intensity 0.6\n"
                      "--bloom-intensity 0.5\n--brightness 2\n--brightness 1.75\n");
}

TEST_F(ViewKeys, OnX11BringBloomWithABrightnessAndTakeItAwayAgain) {
    startViewer();
    OtherWindow window(title);
    ASSERT_TRUE(window.isThere());
    for (const char *key : {"5", "Tab", "Tab", "5", "Tab", "q"}) // the brightness, both times
        window.press(key);
    EXPECT_TRUE(window.goes());
    const std::string text = said(), number = "--brightness ";
    const std::size_t with = text.find(number), without = text.rfind(number);
    ASSERT_NE(with, std::string::npos);
    EXPECT_GT(std::stod(text.substr(with + number.size())), 1.1) << text;
    EXPECT_EQ(text.substr(without), "--brightness 1\n") << text;
}

TEST_F(ViewKeys, OnX11SayWhatTheDisplayCannotDo) {
    startViewer("MESA_EXTENSION_OVERRIDE=-GL_ARB_texture_float");
    OtherWindow window(title);
    ASSERT_TRUE(window.isThere());
    for (const char *key : {"5", "7", "2", "l", "q"})
        window.press(key);
    EXPECT_TRUE(window.goes());
    EXPECT_EQ(said(),
              "bloom: this display cannot do it\ndepth of field: this display cannot do it\n"
              "effects: spot light\nlights: the spot light stands in for the rigs\n");
}

TEST_F(ViewKeys, OnX11ShowTheListOfKeys) {
    startViewer();
    OtherWindow window(title);
    ASSERT_TRUE(window.isThere());
    for (const char *key : {"h", "l", "Escape"})
        window.press(key);
    EXPECT_TRUE(window.goes());
    EXPECT_NE(said().find("  5       bloom\n"), std::string::npos) << said();
    EXPECT_NE(said().find("lights: headlight\n"), std::string::npos) << said();
}

// A frame lasts ten seconds here, so that the clip does not go on by itself.
TEST_F(ViewKeys, OnX11ChooseClipsAndStepThroughThem) {
    const std::string model = "clip" + std::to_string(getpid()) + ".x";
    writeMovingSquare(model);
    startViewer("", model + " --fps 0.1");
    const std::string named = "ravolt - " + model + " - ";
    OtherWindow window(named);
    ASSERT_TRUE(window.isThere());
    const auto shows = [&](const std::string &state) {
        const std::string whole = named + state + " - no effects";
        EXPECT_EQ(window.titleOnceItIs(whole), whole);
    };
    shows("rise 0/1");
    for (const auto &[key, state] :
         std::vector<std::pair<std::string, std::string>>{{"period", "rise 1/1"},
                                                          {"period", "rise 0/1"},
                                                          {"comma", "rise 1/1"},
                                                          {"c", "no clip"},
                                                          {"c", "rise 0/1"},
                                                          {"x", "no clip"},
                                                          {"x", "rise 0/1"}}) {
        window.press(key);
        shows(state);
    }
    for (const char *key : {"k", "k", "q"})
        window.press(key);
    EXPECT_TRUE(window.goes());
    EXPECT_EQ(said(), "clip: rise 1/1\nclip: rise 0/1\nclip: rise 1/1\nclip: no clip\n"
                      "clip: rise 0/1\nclip: no clip\nclip: rise 0/1\nclip: rise 0/1\n"
                      "clip: rise 0/1, standing still\n");
}

TEST_F(ViewKeys, OnX11PlayClips) {
    const std::string model = "play" + std::to_string(getpid()) + ".x";
    writeMovingSquare(model);
    startViewer("", model + " --fps 10");
    OtherWindow window("ravolt - " + model + " - rise 1/1 - no effects");
    EXPECT_TRUE(window.isThere());
    window.press("q");
    EXPECT_TRUE(window.goes());
}

TEST_F(ViewKeys, OnX11SayThatThereIsNoClip) {
    startViewer();
    OtherWindow window(title);
    ASSERT_TRUE(window.isThere());
    window.press("c");
    window.press("q");
    EXPECT_TRUE(window.goes());
    EXPECT_EQ(said(), "clip: there are none\n");
}

} // namespace
