// The record and its file, and the view before any start. What the window makes of it is tested in
// window_test.cpp.

#include "ravolt/RVSETTINGS.h"

#include "ravolt/zlf.h"
#include "tests/support/files.h"
#include "tests/support/logReader.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

using namespace ravolt::test;

namespace {

const std::string banner = "Ravolt 3D Graphics Engine for PC v1.6.6a (debug)";

struct TextField {
    const char *key;
    void (RVSETTINGS::*set)(const char *);
    char *(RVSETTINGS::*get)();
};

const TextField textFields[] = {
    {"RAVOLT_title", &RVSETTINGS::setTitle, &RVSETTINGS::getTitle},
    {"RAVOLT_rvePath", &RVSETTINGS::setRVEPath, &RVSETTINGS::getRVEPath},
    {"RAVOLT_rvaPath", &RVSETTINGS::setRVAPath, &RVSETTINGS::getRVAPath},
    {"RAVOLT_mpgPath", &RVSETTINGS::setMPGPath, &RVSETTINGS::getMPGPath},
    {"RAVOLT_texturePath", &RVSETTINGS::setTexturePath, &RVSETTINGS::getTexturePath},
    {"RAVOLT_shaderPath", &RVSETTINGS::setShaderPath, &RVSETTINGS::getShaderPath},
    {"RAVOLT_fontPath", &RVSETTINGS::setFontPath, &RVSETTINGS::getFontPath},
};

struct NumberField {
    const char *key; // NULL where the file has none
    int standard;
    void (RVSETTINGS::*set)(int);
    int (RVSETTINGS::*get)() const;
};

const NumberField numberFields[] = {
    {"RAVOLT_windowX", 640, &RVSETTINGS::setWindowX, &RVSETTINGS::getWindowX},
    {"RAVOLT_windowY", 480, &RVSETTINGS::setWindowY, &RVSETTINGS::getWindowY},
    {"RAVOLT_colorDepth", 16, &RVSETTINGS::setColorDepth, &RVSETTINGS::getColorDepth},
    {"RAVOLT_zetaDepth", 16, &RVSETTINGS::setZetaDepth, &RVSETTINGS::getZetaDepth},
    {"RAVOLT_stencilDepth", 0, &RVSETTINGS::setStencilDepth, &RVSETTINGS::getStencilDepth},
    {"RAVOLT_audioChannels", 16, &RVSETTINGS::setAudioChannels, &RVSETTINGS::getAudioChannels},
    {"RAVOLT_audioBuffers", 32, &RVSETTINGS::setAudioBuffers, &RVSETTINGS::getAudioBuffers},
    {"RAVOLT_audioElements", 128, &RVSETTINGS::setAudioElements, &RVSETTINGS::getAudioElements},
    {"RAVOLT_renderingElements", 0, &RVSETTINGS::setRenderingElements,
     &RVSETTINGS::getRenderingElements},
    {"RAVOLT_shadowMapSize", 1024, &RVSETTINGS::setShadowMapSize, &RVSETTINGS::getShadowMapSize},
    {"RAVOLT_FBOSizeX", 1024, &RVSETTINGS::setFBOSizeX, &RVSETTINGS::getFBOSizeX},
    {"RAVOLT_FBOSizeY", 768, &RVSETTINGS::setFBOSizeY, &RVSETTINGS::getFBOSizeY},
    {"RAVOLT_waterSize", 256, &RVSETTINGS::setWaterSize, &RVSETTINGS::getWaterSize},
    {"RAVOLT_videoMemory", 0, &RVSETTINGS::setVideoMemory, &RVSETTINGS::getVideoMemory},
};

struct FlagField {
    const char *key;
    void (RVSETTINGS::*set)(bool);
    bool (RVSETTINGS::*get)() const;
};

const FlagField flagFields[] = {
    {"RAVOLT_fullScreen", &RVSETTINGS::setFullScreen, &RVSETTINGS::isFullScreen},
    {"RAVOLT_resizable", &RVSETTINGS::setResizable, &RVSETTINGS::isResizable},
    {"RAVOLT_landscape", &RVSETTINGS::setLandscape, &RVSETTINGS::isLandscape},
    {"RAVOLT_CAVESplashScreen", &RVSETTINGS::setCAVESplashScreen, &RVSETTINGS::isCAVESplashScreen},
    {"RAVOLT_useShaders", &RVSETTINGS::setShaders, &RVSETTINGS::getShaders},
    {nullptr, &RVSETTINGS::setForceFBO, &RVSETTINGS::getForceFBO},
};

bool loadText(RVSETTINGS &settings, const std::string &text) {
    writeFile("settings.txt", text);
    return settings.load("settings.txt");
}

// All that a record holds, to tell two apart.
std::string dump(RVSETTINGS &settings) {
    std::string all;
    for (const NumberField &field : numberFields)
        all += std::to_string((settings.*field.get)()) + "\n";
    for (const FlagField &field : flagFields)
        all += (settings.*field.get)() ? "on\n" : "off\n";
    for (const TextField &field : textFields)
        all += std::string((settings.*field.get)()) + "\n";
    return all;
}

// A record in which every field with a key has a value of its own, and the file that says so.
RVSETTINGS completeSettings;
const std::string completeFile = [] {
    std::string text = "# A settings file with every key\n";
    int number = 300;
    for (const NumberField &field : numberFields) {
        (completeSettings.*field.set)(++number);
        text += field.key + ("=" + std::to_string(number)) + "\n";
    }
    for (const FlagField &field : flagFields)
        if (field.key) {
            (completeSettings.*field.set)(true);
            text += field.key + std::string("=1\n");
        }
    for (const TextField &field : textFields) {
        const std::string folder = "folder" + std::to_string(++number) + "/";
        (completeSettings.*field.set)(folder.c_str());
        text += field.key + ("=\"" + folder) + "\"\n";
    }
    return text;
}();

class SettingsTest : public testing::Test {
  protected:
    void SetUp() override { markLog(); }
    RVSETTINGS settings;
};

} // namespace

// --- The record

TEST_F(SettingsTest, DefaultsAreThoseOfASmallPlainWindow) {
    EXPECT_EQ(settings.getTitle(), banner);
    for (const NumberField &field : numberFields)
        EXPECT_EQ((settings.*field.get)(), field.standard) << field.key;
    for (const FlagField &field : flagFields)
        EXPECT_FALSE((settings.*field.get)()) << (field.key ? field.key : "forceFBO");
    for (const TextField &field : textFields)
        EXPECT_EQ((settings.*field.get)(),
                  field.get == &RVSETTINGS::getTitle ? banner : std::string())
            << field.key;
}

TEST_F(SettingsTest, EverySetterChangesItsOwnFieldOnly) {
    for (const NumberField &field : numberFields) {
        RVSETTINGS changed;
        (changed.*field.set)(-12345); // numbers are taken as they come
        EXPECT_EQ((changed.*field.get)(), -12345) << field.key;
        (changed.*field.set)(field.standard);
        EXPECT_EQ(dump(changed), dump(settings)) << field.key;
    }
    for (const FlagField &field : flagFields) {
        RVSETTINGS changed;
        (changed.*field.set)(true);
        EXPECT_TRUE((changed.*field.get)());
        (changed.*field.set)(false);
        EXPECT_EQ(dump(changed), dump(settings));
    }
    for (const TextField &field : textFields) {
        RVSETTINGS changed;
        (changed.*field.set)("some/where");
        EXPECT_STREQ((changed.*field.get)(), "some/where") << field.key;
        (changed.*field.set)((settings.*field.get)());
        EXPECT_EQ(dump(changed), dump(settings)) << field.key;
    }
}

TEST_F(SettingsTest, TextOf256BytesOrMoreLeavesTheOldOne) {
    const std::string longest(255, 'a'), tooLong(256, 'b');
    for (const TextField &field : textFields) {
        (settings.*field.set)(longest.c_str());
        EXPECT_EQ((settings.*field.get)(), longest) << field.key;
        (settings.*field.set)(tooLong.c_str());
        EXPECT_EQ((settings.*field.get)(), longest) << field.key;
        (settings.*field.set)(nullptr);
        EXPECT_EQ((settings.*field.get)(), longest) << field.key;
    }
    EXPECT_NOTHING_LOGGED();
}

TEST_F(SettingsTest, ATextMayBeEmptied) {
    settings.setTitle("");
    EXPECT_STREQ(settings.getTitle(), "");
}

// --- The file

TEST_F(SettingsTest, LoadRefusesNullAndMissingFiles) {
    const std::string before = dump(settings);
    EXPECT_FALSE(settings.load(nullptr));
    EXPECT_FALSE(settings.load("nowhere.txt"));
    EXPECT_LOGGED_EXACTLY("   [!] Invalid params @ RVSETTINGS::load\n"
                          "   [!] File not found (nowhere.txt) @ RVSETTINGS::load\n");
    EXPECT_EQ(dump(settings), before);
}

TEST_F(SettingsTest, LoadReadsEveryKey) {
    ASSERT_TRUE(loadText(settings, completeFile));
    EXPECT_EQ(dump(settings), dump(completeSettings));
    EXPECT_NOTHING_LOGGED();
}

TEST_F(SettingsTest, EachPlainKeyReadsItsOwnFieldOnly) {
    for (const NumberField &field : numberFields) {
        RVSETTINGS read, wanted;
        ASSERT_TRUE(loadText(read, std::string(field.key) + "=321\n"));
        (wanted.*field.set)(321);
        EXPECT_EQ(dump(read), dump(wanted)) << field.key;
    }
    for (const TextField &field : textFields) {
        RVSETTINGS read, wanted;
        ASSERT_TRUE(loadText(read, std::string(field.key) + "=\"value\"\n"));
        (wanted.*field.set)("value");
        EXPECT_EQ(dump(read), dump(wanted)) << field.key;
    }
}

TEST_F(SettingsTest, NoKeySetsForceFBO) {
    ASSERT_TRUE(loadText(settings, "RAVOLT_forceFBO=1\n"));
    EXPECT_FALSE(settings.getForceFBO());
}

TEST_F(SettingsTest, FileWithoutKeysChangesNothing) {
    ASSERT_TRUE(loadText(settings, completeFile));
    const std::string before = dump(settings);
    ASSERT_TRUE(loadText(settings, "nothing of ours\n"));
    EXPECT_EQ(dump(settings), before);
}

TEST_F(SettingsTest, UnreadableFileIsLoggedAndStillTrue) {
    const std::string before = dump(settings);
    EXPECT_TRUE(loadText(settings, ""));
    EXPECT_LOGGED_EXACTLY("zlfOpenParser: file 'settings.txt' is empty\n"
                          "zlfCloseParser: parser already free\n");
    EXPECT_EQ(dump(settings), before);
}

TEST_F(SettingsTest, CommentsAreBlankedAlsoInQuotes) {
    ASSERT_TRUE(loadText(settings, "#RAVOLT_windowX=1\n"
                                   "RAVOLT_windowY=72 # behind a value\n"
                                   "RAVOLT_title=\"Storm#7\"\n"));
    EXPECT_EQ(settings.getWindowX(), 640);
    EXPECT_EQ(settings.getWindowY(), 72);
    EXPECT_STREQ(settings.getTitle(), "\"Storm"); // without its closing quote: the raw rest
}

TEST_F(SettingsTest, QuotedTitleLosesItsBlanks) {
    ASSERT_TRUE(loadText(settings, "RAVOLT_title = \"Two\t words\"\n"));
    EXPECT_STREQ(settings.getTitle(), "Twowords");
}

TEST_F(SettingsTest, AnEmptyQuotedTitleIsEmpty) {
    ASSERT_TRUE(loadText(settings, "RAVOLT_title=\"\"\r\n"));
    EXPECT_STREQ(settings.getTitle(), "");
}

TEST_F(SettingsTest, LongTextInTheFileIsCutAtTheBuffer) {
    const std::string endless(1000, 'x');
    ASSERT_TRUE(loadText(settings, "RAVOLT_rvePath=\"" + endless + "\"\nRAVOLT_windowX=5\n"));
    EXPECT_LT(std::strlen(settings.getRVEPath()), 256u);
    EXPECT_NE(std::strstr(settings.getRVEPath(), "xxxxxxxx"), nullptr);
    EXPECT_STREQ(settings.getRVAPath(), "");
    EXPECT_EQ(settings.getWindowX(), 5);
}

// --- Numbers stored over flags

TEST_F(SettingsTest, FullScreenInTheFileClearsTheFlagsAfterIt) {
    settings.setResizable(true);
    settings.setLandscape(true);
    settings.setCAVESplashScreen(true);
    ASSERT_TRUE(loadText(settings, "RAVOLT_fullScreen=1\n"));
    EXPECT_TRUE(settings.isFullScreen());
    EXPECT_FALSE(settings.isResizable());
    EXPECT_FALSE(settings.isLandscape());
    EXPECT_FALSE(settings.isCAVESplashScreen());
    EXPECT_EQ(settings.getAudioChannels(), 16);
}

TEST_F(SettingsTest, FlagsBeforeTheKeyStay) {
    settings.setFullScreen(true);
    settings.setResizable(true);
    ASSERT_TRUE(loadText(settings, "RAVOLT_landscape=1\n"));
    EXPECT_TRUE(settings.isFullScreen());
    EXPECT_TRUE(settings.isResizable());
    EXPECT_TRUE(settings.isLandscape());
}

TEST_F(SettingsTest, CAVESplashScreenInTheFileClearsTheAudioChannels) {
    ASSERT_TRUE(loadText(settings, "RAVOLT_CAVESplashScreen=1\n"));
    EXPECT_TRUE(settings.isCAVESplashScreen());
    EXPECT_EQ(settings.getAudioChannels(), 0);
}

TEST_F(SettingsTest, AudioChannelsInTheFileAreReadLaterAndStand) {
    ASSERT_TRUE(loadText(settings, "RAVOLT_audioChannels=24\nRAVOLT_CAVESplashScreen=1\n"));
    EXPECT_EQ(settings.getAudioChannels(), 24);
}

TEST_F(SettingsTest, EachFlagReachesItsOwnNumberOfAudioBytes) {
    constexpr int audio = 0x7A6B5C4D;
    const struct {
        const char *line;
        int audioChannels;
    } rows[] = {
        {"RAVOLT_fullScreen=0\n", audio},
        {"RAVOLT_resizable=0\n", 0x7A6B5C00},
        {"RAVOLT_landscape=0\n", 0x7A6B0000},
        {"RAVOLT_CAVESplashScreen=0\n", 0x7A000000},
        {"RAVOLT_resizable=-1\n", 0x7A6B5CFF},
        {"RAVOLT_landscape=-1\n", 0x7A6BFFFF},
        {"RAVOLT_CAVESplashScreen=-1\n", 0x7AFFFFFF},
        {"RAVOLT_CAVESplashScreen=305419896\n", 0x7A123456}, // 0x12345678
    };
    for (const auto &row : rows) {
        settings.setAudioChannels(audio);
        ASSERT_TRUE(loadText(settings, row.line));
        EXPECT_EQ(settings.getAudioChannels(), row.audioChannels) << row.line;
        EXPECT_EQ(settings.getAudioBuffers(), 32) << row.line;
    }
}

TEST_F(SettingsTest, TheTruthOfAFlagIsTheLowByte) {
    ASSERT_TRUE(loadText(settings, "RAVOLT_fullScreen=256\n"));
    EXPECT_FALSE(settings.isFullScreen());
    EXPECT_TRUE(settings.isResizable()); // the second byte
    ASSERT_TRUE(loadText(settings, "RAVOLT_fullScreen=2\n"));
    EXPECT_TRUE(settings.isFullScreen());
    EXPECT_FALSE(settings.isResizable());
    ASSERT_TRUE(loadText(settings, "RAVOLT_fullScreen=-1\n"));
    EXPECT_TRUE(settings.isFullScreen() && settings.isResizable() && settings.isLandscape() &&
                settings.isCAVESplashScreen());
}

TEST_F(SettingsTest, LaterFlagsRepairTheirOwnByteOnward) {
    ASSERT_TRUE(loadText(settings, "RAVOLT_landscape=0\nRAVOLT_fullScreen=-1\n"));
    EXPECT_TRUE(settings.isFullScreen());
    EXPECT_TRUE(settings.isResizable());
    EXPECT_FALSE(settings.isLandscape());
    EXPECT_FALSE(settings.isCAVESplashScreen());
}

TEST_F(SettingsTest, UseShadersOverwritesNoOtherField) {
    ASSERT_TRUE(loadText(settings, "RAVOLT_useShaders=-1\n"));
    EXPECT_TRUE(settings.getShaders());
    EXPECT_EQ(settings.getShadowMapSize(), 1024);
    EXPECT_EQ(settings.getRenderingElements(), 0);
    ASSERT_TRUE(loadText(settings, "RAVOLT_useShaders=256\n"));
    EXPECT_FALSE(settings.getShaders());
}

// --- Bad input

class BadSettingsTest : public SettingsTest {
  protected:
    void SetUp() override { zlfSetConsoleEcho(false); }
    void TearDown() override { zlfSetConsoleEcho(true); }

    static void expectSound(const std::string &bytes) {
        RVSETTINGS read;
        ASSERT_TRUE(loadText(read, bytes));
        for (const TextField &field : textFields)
            ASSERT_LT(strnlen((read.*field.get)(), 256), 256u);
    }
};

TEST_F(BadSettingsTest, AFileCutAtAnyByteIsReadAsFarAsItGoes) {
    for (std::size_t size = 0; size < completeFile.size(); ++size) {
        SCOPED_TRACE(size);
        expectSound(completeFile.substr(0, size));
        ASSERT_FALSE(HasFatalFailure());
    }
    EXPECT_EQ(finalMemoryRatio(), 0);
}

TEST_F(BadSettingsTest, AnyByteMayHaveAnyValue) {
    ASSERT_LT(completeFile.size(), 4096u);
    for (std::size_t place = 0; place < completeFile.size(); ++place)
        for (const int value : {0, 1, 127, 128, 255}) {
            SCOPED_TRACE(testing::Message() << "byte " << place << " is " << value);
            std::string bytes = completeFile;
            bytes[place] = static_cast<char>(value);
            expectSound(bytes);
            ASSERT_FALSE(HasFatalFailure());
        }
    EXPECT_EQ(finalMemoryRatio(), 0);
}

TEST_F(BadSettingsTest, NumbersBeyondAnIntStayInsideTheRecord) {
    std::string text;
    for (const NumberField &field : numberFields)
        text += std::string(field.key) + "=99999999999999999999\n";
    for (const FlagField &field : flagFields)
        if (field.key)
            text += std::string(field.key) + "=-99999999999999999999\n";
    expectSound(text);
}

// --- The view

TEST(SettingsInForceTest, IsZeroBeforeTheFirstStart) {
    EXPECT_FALSE(RVSETTINGS::isActive());
    EXPECT_STREQ(RVSETTINGS::getSDLTitle(), "");
    for (int (*figure)() :
         {RVSETTINGS::getSDLWindowX, RVSETTINGS::getSDLWindowY, RVSETTINGS::getSDLColorDepth,
          RVSETTINGS::getSDLZetaDepth, RVSETTINGS::getSDLStencilDepth,
          RVSETTINGS::getSDLShadowMapSize, RVSETTINGS::getSDLFBOSizeX, RVSETTINGS::getSDLFBOSizeY,
          RVSETTINGS::getSDLWaterSize, RVSETTINGS::getZLAAudioChannels,
          RVSETTINGS::getZLAAudioBuffers, RVSETTINGS::getZLAAudioElements})
        EXPECT_EQ(figure(), 0);
    for (bool (*flag)() :
         {RVSETTINGS::isSDLFullScreen, RVSETTINGS::isSDLResizable, RVSETTINGS::isSDLLandscape,
          RVSETTINGS::getSDLShaders, RVSETTINGS::getSDLForceFBO})
        EXPECT_FALSE(flag());
    EXPECT_EQ(RVSETTINGS::getSDLWindow(), nullptr);
}

TEST(SettingsInForceTest, ShadersAreForcedDirectly) {
    RVSETTINGS::forceShadersOn();
    EXPECT_TRUE(RVSETTINGS::getSDLShaders());
    RVSETTINGS::forceShadersOff();
    EXPECT_FALSE(RVSETTINGS::getSDLShaders());
}
