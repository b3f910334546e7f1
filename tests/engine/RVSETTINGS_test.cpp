// The requested settings, their file, and the applied settings before any start. What the window
// does with them is tested in window_test.cpp.

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

struct Field {
    const char *key; // NULL where the file has none
    std::string standard, other;
    std::function<void(RVSETTINGS &, const std::string &)> set;
    std::function<std::string(RVSETTINGS &)> get;

    bool isFlag() const { return other == "1"; }
    bool isText() const { return other[0] == 'f'; }
    std::string line() const { return key + ("=" + (isText() ? '"' + other + '"' : other)) + "\n"; }
};

// Other values are different in each field, and numbers negative: they are taken as they come.
int fieldCount = 300;

Field text(const char *key, void (RVSETTINGS::*set)(const char *), char *(RVSETTINGS::*get)(),
           const std::string &standard = "") {
    return {key, standard, "folder" + std::to_string(++fieldCount) + "/",
            [set](RVSETTINGS &settings, const auto &value) { (settings.*set)(value.c_str()); },
            [get](RVSETTINGS &settings) { return std::string((settings.*get)()); }};
}

Field number(const char *key, int standard, void (RVSETTINGS::*set)(int),
             int (RVSETTINGS::*get)() const) {
    return {key, std::to_string(standard), std::to_string(-++fieldCount),
            [set](RVSETTINGS &settings, const auto &value) { (settings.*set)(std::stoi(value)); },
            [get](RVSETTINGS &settings) { return std::to_string((settings.*get)()); }};
}

Field flag(const char *key, void (RVSETTINGS::*set)(bool), bool (RVSETTINGS::*get)() const) {
    return {key, "0", "1",
            [set](RVSETTINGS &settings, const auto &value) { (settings.*set)(value == "1"); },
            [get](RVSETTINGS &settings) { return std::to_string((settings.*get)()); }};
}

using S = RVSETTINGS;
const std::vector<Field> fields = {
    text("RAVOLT_title", &S::setTitle, &S::getTitle, banner),
    text("RAVOLT_rvePath", &S::setRVEPath, &S::getRVEPath),
    text("RAVOLT_rvaPath", &S::setRVAPath, &S::getRVAPath),
    text("RAVOLT_mpgPath", &S::setMPGPath, &S::getMPGPath),
    text("RAVOLT_texturePath", &S::setTexturePath, &S::getTexturePath),
    text("RAVOLT_shaderPath", &S::setShaderPath, &S::getShaderPath),
    text("RAVOLT_fontPath", &S::setFontPath, &S::getFontPath),
    number("RAVOLT_windowX", 640, &S::setWindowX, &S::getWindowX),
    number("RAVOLT_windowY", 480, &S::setWindowY, &S::getWindowY),
    number("RAVOLT_colorDepth", 16, &S::setColorDepth, &S::getColorDepth),
    number("RAVOLT_zetaDepth", 16, &S::setZetaDepth, &S::getZetaDepth),
    number("RAVOLT_stencilDepth", 0, &S::setStencilDepth, &S::getStencilDepth),
    number("RAVOLT_audioChannels", 16, &S::setAudioChannels, &S::getAudioChannels),
    number("RAVOLT_audioBuffers", 32, &S::setAudioBuffers, &S::getAudioBuffers),
    number("RAVOLT_audioElements", 128, &S::setAudioElements, &S::getAudioElements),
    number("RAVOLT_renderingElements", 0, &S::setRenderingElements, &S::getRenderingElements),
    number("RAVOLT_shadowMapSize", 1024, &S::setShadowMapSize, &S::getShadowMapSize),
    number("RAVOLT_FBOSizeX", 1024, &S::setFBOSizeX, &S::getFBOSizeX),
    number("RAVOLT_FBOSizeY", 768, &S::setFBOSizeY, &S::getFBOSizeY),
    number("RAVOLT_waterSize", 256, &S::setWaterSize, &S::getWaterSize),
    number("RAVOLT_videoMemory", 0, &S::setVideoMemory, &S::getVideoMemory),
    number("RAVOLT_maxAnisotropy", 0, &S::setMaxAnisotropy, &S::getMaxAnisotropy),
    number("RAVOLT_multisampling", 0, &S::setMultisampling, &S::getMultisampling),
    flag("RAVOLT_fullScreen", &S::setFullScreen, &S::isFullScreen),
    flag("RAVOLT_resizable", &S::setResizable, &S::isResizable),
    flag("RAVOLT_landscape", &S::setLandscape, &S::isLandscape),
    flag("RAVOLT_CAVESplashScreen", &S::setCAVESplashScreen, &S::isCAVESplashScreen),
    flag("RAVOLT_useShaders", &S::setShaders, &S::getShaders),
    flag(nullptr, &S::setForceFBO, &S::getForceFBO),
};

// One line per field: "key: value".
std::string dump(RVSETTINGS &settings) {
    std::string all;
    for (const Field &field : fields)
        all += (field.key ? field.key : "forceFBO") + (": " + field.get(settings)) + "\n";
    return all;
}

bool loadText(RVSETTINGS &settings, const std::string &contents) {
    writeFile("settings.txt", contents);
    return settings.load("settings.txt");
}

// Every key with a value of its own.
const std::string completeFile = [] {
    std::string contents = "# A settings file with every key\n";
    for (const Field &field : fields)
        contents += field.key ? field.line() : "";
    return contents;
}();

class SettingsTest : public testing::Test {
  protected:
    void SetUp() override { markLog(); }
    RVSETTINGS settings;
};

} // namespace

// --- The record

TEST_F(SettingsTest, EverySetterChangesItsOwnFieldOnlyFromItsDefault) {
    for (const Field &field : fields) {
        SCOPED_TRACE(field.key ? field.key : "forceFBO");
        RVSETTINGS changed;
        EXPECT_EQ(field.get(changed), field.standard);
        field.set(changed, field.other);
        EXPECT_EQ(field.get(changed), field.other);
        field.set(changed, field.standard); // for a text, as the empty one
        EXPECT_EQ(dump(changed), dump(settings));
    }
    settings.setTitle("");
    EXPECT_STREQ(settings.getTitle(), "");
}

TEST_F(SettingsTest, TextOf256BytesOrMoreDoesNotReplaceTheOldOne) {
    const std::string longest(255, 'a'), tooLong(256, 'b');
    for (const Field &field : fields)
        if (field.isText()) {
            field.set(settings, longest);
            EXPECT_EQ(field.get(settings), longest) << field.key;
            field.set(settings, tooLong);
            EXPECT_EQ(field.get(settings), longest) << field.key;
        }
    for (auto set : {&S::setTitle, &S::setRVEPath, &S::setRVAPath, &S::setMPGPath,
                     &S::setTexturePath, &S::setShaderPath, &S::setFontPath})
        (settings.*set)(nullptr);
    for (const Field &field : fields)
        EXPECT_EQ(field.get(settings), field.isText() ? longest : field.standard);
    EXPECT_NOTHING_LOGGED();
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

TEST_F(SettingsTest, LoadReadsEveryKeyAndAFileWithoutKeysChangesNothing) {
    RVSETTINGS wanted;
    for (const Field &field : fields)
        if (field.key)
            field.set(wanted, field.other);
    for (const char *contents :
         {completeFile.c_str(), "nothing of ours\n", "RAVOLT_forceFBO=1\n"}) {
        ASSERT_TRUE(loadText(settings, contents));
        EXPECT_EQ(dump(settings), dump(wanted)) << contents;
    }
    EXPECT_NOTHING_LOGGED();
}

TEST_F(SettingsTest, EachPlainKeyReadsItsOwnFieldOnly) {
    for (const Field &field : fields)
        if (!field.isFlag()) {
            RVSETTINGS read, wanted;
            ASSERT_TRUE(loadText(read, field.line()));
            field.set(wanted, field.other);
            EXPECT_EQ(dump(read), dump(wanted)) << field.key;
        }
}

TEST_F(SettingsTest, UnreadableFileIsLoggedAndStillTrue) {
    const std::string before = dump(settings);
    EXPECT_TRUE(loadText(settings, ""));
    EXPECT_LOGGED_EXACTLY("zlfOpenParser: file 'settings.txt' is empty\n"
                          "zlfCloseParser: parser already free\n");
    EXPECT_EQ(dump(settings), before);
}

TEST_F(SettingsTest, CommentsAreBlankedAndQuotedTextLosesItsBlanks) {
    const struct {
        const char *file, *title;
    } rows[] = {
        {"RAVOLT_title=\"Storm#7\"\n", "\"Storm"}, // no closing quote: the raw rest of the line
        {"RAVOLT_title = \"Two\t words\"\n", "Twowords"},
        {"RAVOLT_title=\"\"\r\n", ""},
    };
    for (const auto &row : rows) {
        ASSERT_TRUE(loadText(settings, row.file));
        EXPECT_STREQ(settings.getTitle(), row.title) << row.file;
    }
    ASSERT_TRUE(loadText(settings, "#RAVOLT_windowX=1\nRAVOLT_windowY=72 # after a value\n"));
    EXPECT_EQ(settings.getWindowX(), 640);
    EXPECT_EQ(settings.getWindowY(), 72);
}

TEST_F(SettingsTest, LongTextInTheFileIsCutAtTheBuffer) {
    const std::string endless(1000, 'x');
    ASSERT_TRUE(loadText(settings, "RAVOLT_rvePath=\"" + endless + "\"\nRAVOLT_windowX=5\n"));
    EXPECT_LT(std::strlen(settings.getRVEPath()), 256u);
    EXPECT_NE(std::strstr(settings.getRVEPath(), "xxxxxxxx"), nullptr);
    EXPECT_STREQ(settings.getRVAPath(), "");
    EXPECT_EQ(settings.getWindowX(), 5);
}

// A flag in the file is stored as a number of four bytes: over the flags after it and the audio
// channels, which are read later. Its truth is the low byte.
TEST_F(SettingsTest, AFlagInTheFileOverwritesFlagsAndBytesAfterItsOwn) {
    constexpr int audio = 0x7A6B5C4D;
    const struct {
        std::string before; // full screen, resizable, landscape, CAVE splash screen
        int audioBefore;
        const char *file;
        std::string flags;
        int audio;
    } rows[] = {
        {"0111", 16, "RAVOLT_fullScreen=1\n", "1000", 16},
        {"1100", 16, "RAVOLT_landscape=1\n", "1110", 0},
        {"0000", 16, "RAVOLT_CAVESplashScreen=1\n", "0001", 0},
        {"0000", 16, "RAVOLT_audioChannels=24\nRAVOLT_CAVESplashScreen=1\n", "0001", 24},
        {"0000", 16, "RAVOLT_fullScreen=256\n", "0100", 16},
        {"0100", 16, "RAVOLT_fullScreen=2\n", "1000", 16},
        {"0000", 16, "RAVOLT_fullScreen=-1\n", "1111", 16},
        {"0000", 16, "RAVOLT_landscape=0\nRAVOLT_fullScreen=-1\n", "1100", 0},
        {"0000", audio, "RAVOLT_fullScreen=0\n", "0000", audio},
        {"0000", audio, "RAVOLT_resizable=0\n", "0000", 0x7A6B5C00},
        {"0000", audio, "RAVOLT_landscape=0\n", "0000", 0x7A6B0000},
        {"0000", audio, "RAVOLT_CAVESplashScreen=0\n", "0000", 0x7A000000},
        {"0000", audio, "RAVOLT_resizable=-1\n", "0111", 0x7A6B5CFF},
        {"0000", audio, "RAVOLT_landscape=-1\n", "0011", 0x7A6BFFFF},
        {"0000", audio, "RAVOLT_CAVESplashScreen=-1\n", "0001", 0x7AFFFFFF},
        {"0000", audio, "RAVOLT_CAVESplashScreen=305419896\n", "0001", 0x7A123456}, // 0x12345678
    };
    for (const auto &row : rows) {
        RVSETTINGS read;
        read.setFullScreen(row.before[0] == '1');
        read.setResizable(row.before[1] == '1');
        read.setLandscape(row.before[2] == '1');
        read.setCAVESplashScreen(row.before[3] == '1');
        read.setAudioChannels(row.audioBefore);
        ASSERT_TRUE(loadText(read, row.file));
        std::string flags;
        for (auto get :
             {&S::isFullScreen, &S::isResizable, &S::isLandscape, &S::isCAVESplashScreen})
            flags += (read.*get)() ? '1' : '0';
        EXPECT_EQ(flags, row.flags) << row.file;
        EXPECT_EQ(read.getAudioChannels(), row.audio) << row.file;
        EXPECT_EQ(read.getAudioBuffers(), 32) << row.file;
    }
}

TEST_F(SettingsTest, UseShadersOverwritesNoOtherField) {
    for (const auto &[line, wanted] :
         {std::pair{"RAVOLT_useShaders=-1\n", true}, {"RAVOLT_useShaders=256\n", false}}) {
        RVSETTINGS shaders;
        shaders.setShaders(wanted);
        ASSERT_TRUE(loadText(settings, line));
        EXPECT_EQ(dump(settings), dump(shaders));
    }
}

// --- Bad input

class BadSettingsTest : public SettingsTest {
  protected:
    void SetUp() override { zlfSetConsoleEcho(false); }
    void TearDown() override { zlfSetConsoleEcho(true); }

    static void expectTerminatedTexts(const std::string &bytes) {
        RVSETTINGS read;
        ASSERT_TRUE(loadText(read, bytes));
        for (auto get : {&S::getTitle, &S::getRVEPath, &S::getRVAPath, &S::getMPGPath,
                         &S::getTexturePath, &S::getShaderPath, &S::getFontPath})
            ASSERT_LT(strnlen((read.*get)(), 256), 256u);
    }
};

TEST_F(BadSettingsTest, AFileCutAtAnyByteIsReadAsFarAsItGoes) {
    for (std::size_t size = 0; size < completeFile.size(); ++size) {
        SCOPED_TRACE(size);
        expectTerminatedTexts(completeFile.substr(0, size));
        ASSERT_FALSE(HasFatalFailure());
    }
    EXPECT_EQ(finalMemoryRatio(), 0);
}

TEST_F(BadSettingsTest, AnyByteMayHaveAnyValue) {
    ASSERT_LT(completeFile.size(), 4096u);
    for (std::size_t offset = 0; offset < completeFile.size(); ++offset)
        for (const int value : {0, 1, 127, 128, 255}) {
            SCOPED_TRACE(testing::Message() << "byte " << offset << " is " << value);
            std::string bytes = completeFile;
            bytes[offset] = static_cast<char>(value);
            expectTerminatedTexts(bytes);
            ASSERT_FALSE(HasFatalFailure());
        }
    EXPECT_EQ(finalMemoryRatio(), 0);
}

TEST_F(BadSettingsTest, NumbersBeyondAnIntStayInsideTheRecord) {
    std::string contents;
    for (const Field &field : fields)
        if (field.key && !field.isText())
            contents +=
                field.key + std::string(field.isFlag() ? "=-" : "=") + "99999999999999999999\n";
    expectTerminatedTexts(contents);
}

// --- The applied settings

TEST(AppliedSettingsTest, AreZeroBeforeTheFirstStartButShadersAreForcedDirectly) {
    EXPECT_FALSE(S::isActive());
    EXPECT_STREQ(S::getSDLTitle(), "");
    for (int (*get)() : {S::getSDLWindowX, S::getSDLWindowY, S::getSDLColorDepth,
                         S::getSDLZetaDepth, S::getSDLStencilDepth, S::getSDLShadowMapSize,
                         S::getSDLFBOSizeX, S::getSDLFBOSizeY, S::getSDLWaterSize,
                         S::getZLAAudioChannels, S::getZLAAudioBuffers, S::getZLAAudioElements})
        EXPECT_EQ(get(), 0);
    for (bool (*get)() : {S::isSDLFullScreen, S::isSDLResizable, S::isSDLLandscape,
                          S::getSDLShaders, S::getSDLForceFBO})
        EXPECT_FALSE(get());
    EXPECT_EQ(S::getSDLWindow(), nullptr);
    S::forceShadersOn();
    EXPECT_TRUE(S::getSDLShaders());
    S::forceShadersOff();
    EXPECT_FALSE(S::getSDLShaders());
}
