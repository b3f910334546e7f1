// The viewer's keys, pressed in its window.

#include "tests/support/limitedDriver.h"
#include "tests/tools/otherWindow.h"
#include "tests/tools/support.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <unistd.h>

namespace {

using namespace tool_test;

class ViewKeys : public ::testing::Test {
  protected:
    // Other tests have windows too.
    const std::string number = std::to_string(getpid()), file = "keys" + number + ".obj",
                      title = "ravolt - " + file + " - ";

    // Starts the viewer and finds its window by the title.
    void open(const std::string &arguments, const std::string &part,
              const std::string &before = "") {
        writeSquare("Kd 1 1 1\n", file);
        const std::string command = before + " '" RAVOLT_TOOL "' view " + arguments +
                                    " --seconds 60 --size 160x120 >said 2>&1 </dev/null &";
        ASSERT_EQ(std::system(command.c_str()), 0);
        window.emplace(part);
        ASSERT_TRUE(window->isThere());
    }

    // The output of a viewer that these keys end.
    std::string said(const Lines &keys) {
        for (const std::string &key : keys)
            window->press(key);
        EXPECT_TRUE(window->isClosed());
        return readText("said");
    }

    void pressAndAwait(const std::string &key, const std::string &end) {
        window->press(key);
        for (int tries = 0; tries < 500 && !readText("said").ends_with(end); ++tries)
            usleep(20'000);
        EXPECT_TRUE(readText("said").ends_with(end)) << readText("said");
    }

    std::string saidAfter(const std::string &options, const Lines &keys,
                          const std::string &before = "") {
        open(file + options, title, before);
        return HasFatalFailure() ? "" : said(keys);
    }

    std::optional<OtherWindow> window;
};

TEST_F(ViewKeys, OnX11SwitchEffectsWithWhatTheyNeedAndTheTitleShowsThem) {
    SKIP_ON_LIMITED_DRIVER();
    ASSERT_NO_FATAL_FAILURE(open(file, title));
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
        window->press(key);
        EXPECT_EQ(window->titleOnceItIs(title + names), title + names);
        lines += "effects: " + names + "\n";
    }
    EXPECT_EQ(said({"q"}), lines);
}

TEST_F(ViewKeys, OnX11ChangeTheNumbersOfTheEffectsThatAreOn) {
    SKIP_ON_LIMITED_DRIVER();
    EXPECT_EQ(saidAfter(" --brightness 2", {"5", "Tab", "bracketright", "bracketright",
                                            "bracketleft", "Home", "Tab", "bracketleft", "q"}),
              "effects: per-pixel lighting, bloom\n--bloom-intensity 0.5\n"
              "--bloom-intensity 0.6\n--bloom-intensity 0.7\n--bloom-intensity 0.6\n"
              "--bloom-intensity 0.5\n--brightness 2\n--brightness 1.75\n");
}

TEST_F(ViewKeys, OnX11SwitchBloomWithABrightness) {
    SKIP_ON_LIMITED_DRIVER();
    // The brightness, both times.
    const std::string text = saidAfter("", {"5", "Tab", "Tab", "5", "Tab", "q"}),
                      option = "--brightness ";
    const std::size_t with = text.find(option), without = text.rfind(option);
    ASSERT_NE(with, std::string::npos);
    EXPECT_GT(std::stod(text.substr(with + option.size())), 1.1) << text;
    EXPECT_EQ(text.substr(without), "--brightness 1\n") << text;
}

TEST_F(ViewKeys, OnX11PrintWhatTheDisplayDoesNotSupport) {
    EXPECT_EQ(saidAfter("", {"5", "7", "2", "l", "c", "q"},
                        "MESA_EXTENSION_OVERRIDE=-GL_ARB_texture_float"),
              "bloom: this display cannot do it\ndepth of field: this display cannot do it\n"
              "effects: spot light\nlights: the spot light stands in for the rigs\n"
              "clip: there are none\n");
}

// Of a square that stands at an angle, so that its edges are steps. Without steps there are more
// colours, which take more bytes. A screenshot is one of the next frame, so each key is awaited.
TEST_F(ViewKeys, OnX11SmoothTheEdgesAndGoBack) {
    ASSERT_NO_FATAL_FAILURE(open(file + " --yaw 30", title));
    const auto picture = [this](const std::string &end) {
        return readText("keys" + number + end + ".png");
    };
    pressAndAwait("p", "_001.png\n");
    pressAndAwait("F4", "edges: smooth\n");
    pressAndAwait("p", "_002.png\n");
    pressAndAwait("F4", "edges: as they are\n");
    pressAndAwait("p", "_003.png\n");
    said({"q"});
    EXPECT_GT(picture("_002").size(), picture("_001").size());
    EXPECT_EQ(picture("_003"), picture("_001"));
}

TEST_F(ViewKeys, OnX11ShowTheListOfKeys) {
    const std::string text = saidAfter("", {"h", "l", "Escape"});
    EXPECT_NE(text.find("  5         bloom\n"), std::string::npos) << text;
    EXPECT_NE(text.find("lights: headlight\n"), std::string::npos) << text;
}

// A frame lasts ten seconds here, so that the clip does not advance by itself.
TEST_F(ViewKeys, OnX11ChooseClipsAndStepThroughThem) {
    const std::string model = "clip" + number + ".x", named = "ravolt - " + model + " - ";
    writeMovingSquare(model);
    ASSERT_NO_FATAL_FAILURE(open(model + " --fps 0.1", named));
    std::string lines;
    for (const auto &[key, state] :
         std::vector<std::pair<std::string, std::string>>{{"", "rise 0/1"},
                                                          {"period", "rise 1/1"},
                                                          {"period", "rise 0/1"},
                                                          {"comma", "rise 1/1"},
                                                          {"c", "no clip"},
                                                          {"c", "rise 0/1"},
                                                          {"x", "no clip"},
                                                          {"x", "rise 0/1"}}) {
        if (!key.empty()) {
            window->press(key);
            lines += "clip: " + state + "\n";
        }
        const std::string whole = named + state + " - no effects";
        EXPECT_EQ(window->titleOnceItIs(whole), whole);
    }
    EXPECT_EQ(said({"k", "k", "q"}), lines + "clip: rise 0/1\nclip: rise 0/1, standing still\n");
}

TEST_F(ViewKeys, OnX11PlayClips) {
    const std::string model = "play" + number + ".x";
    writeMovingSquare(model);
    ASSERT_NO_FATAL_FAILURE(
        open(model + " --fps 10", "ravolt - " + model + " - rise 1/1 - no effects"));
    said({"q"});
}

} // namespace
