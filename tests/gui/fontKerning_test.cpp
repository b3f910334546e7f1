// The kerning of characters, set one by one and read from files.

#include "ravolt/RVFONT.h"
#include "tests/support/files.h"
#include "tests/support/logReader.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

using namespace ravolt::test;

namespace {

class FontKerning : public testing::Test {
  protected:
    void SetUp() override { markLog(); }
    void TearDown() override { RVFONT::setPath(nullptr); }

    // All entries that are not 0, as "a5 b-3".
    std::string kerning() const {
        std::string entries;
        for (int c = 0; c < 256; ++c)
            if (const int value = font.getKerning(static_cast<char>(c)))
                entries += (entries.empty() ? "" : " ") + std::string(1, static_cast<char>(c)) +
                           std::to_string(value);
        return entries;
    }

    RVFONT font;
};

TEST_F(FontKerning, IsSetForCharactersFrom20To7F) {
    for (int c = 0; c < 256; ++c) {
        const bool accepted = c >= 0x20 && c <= 0x7f;
        const char character = static_cast<char>(c);
        EXPECT_EQ(font.getKerning(character), 0) << c;
        EXPECT_EQ(font.setKerning(character, -3), accepted) << c;
        EXPECT_LOGGED_EXACTLY(accepted ? "" : "   [!] Invalid params @ RVFONT::setKerning\n");
        EXPECT_EQ(font.getKerning(character), accepted ? -3 : 0) << c;
    }
    for (const int value : {-128, 127, 0}) {
        EXPECT_TRUE(font.setKerning('a', static_cast<char>(value)));
        EXPECT_EQ(font.getKerning('a'), value);
    }
    EXPECT_EQ(font.getKerning('b'), -3);
}

TEST_F(FontKerning, IsReadFromTheLinesOfAFile) {
    const struct {
        const char *what;
        std::string file, entries;
    } cases[] = {
        {"some entries, the others do not change",
         "RAVOLT_kerning_a=5\nRAVOLT_kerning_B=-6\nRAVOLT_kerning_~=7\n", "B-6 a5 z9 ~7"},
        {"no line end", "RAVOLT_kerning_a=5", "a5 z9"},
        {"carriage returns", "RAVOLT_kerning_a=5\r\nRAVOLT_kerning_b=6\r\n", "a5 b6 z9"},
        {"blanks and tabs", "\t RAVOLT_\tkerning_ a \t = \t 5 \n", "a5 z9"},
        {"a digit, a percent sign", "RAVOLT_kerning_1=5\nRAVOLT_kerning_%=6\n", "%6 15 z9"},
        {"the case of the key", "ravolt_kerning_a=5\n", "z9"},
        {"anywhere in a line", "my RAVOLT_kerning_a=5\n", "a5 z9"},
        {"the first line wins", "RAVOLT_kerning_a=5\nRAVOLT_kerning_a=6\n", "a5 z9"},
        {"any separator", "RAVOLT_kerning_a:5\n", "a5 z9"},
        {"no number", "RAVOLT_kerning_a=x\nRAVOLT_kerning_z=\n", ""},
        {"nothing after the key", "RAVOLT_kerning_z\n", ""},
        {"signed bytes", "RAVOLT_kerning_a=127\nRAVOLT_kerning_b=128\nRAVOLT_kerning_c=300\n",
         "a127 b-128 c44 z9"},
        {"a comment", "#RAVOLT_kerning_a=5\nRAVOLT_kerning_b=6 # RAVOLT_kerning_c=7\n", "b6 z9"},
        {"a comment is no entry", "RAVOLT_kerning_#=5\n", "z9"},
        {"a blank is no key", "RAVOLT_kerning_ =5\n", "z9"},
        {"names", "RAVOLT_kerning_SPACE=1\nRAVOLT_kerning_DIESIS=2\nRAVOLT_kerning_EQUAL=3\n",
         " 1 #2 =3 z9"},
        {"the plain separator", "RAVOLT_kerning_==5\n", "=5 z9"},
        {"its name wins", "RAVOLT_kerning_==5\nRAVOLT_kerning_EQUAL=3\n", "=3 z9"},
        {"a letter before the name that starts with it",
         "RAVOLT_kerning_S=4\nRAVOLT_kerning_SPACE=1\n", " 1 S4 z9"},
        {"after it the letter is 0", "RAVOLT_kerning_SPACE=1\nRAVOLT_kerning_S=4\n", " 1 z9"},
        {"the cursor is no key", "RAVOLT_kerning_\x7f=5\n", "z9"},
        {"nothing that is known", "other=5\n\n", "z9"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.what);
        for (int character = 0x20; character < 0x80; ++character)
            font.setKerning(static_cast<char>(character), 0);
        font.setKerning('z', 9);
        writeFile("kerning.txt", c.file);
        EXPECT_TRUE(font.loadKerning("kerning.txt"));
        EXPECT_EQ(kerning(), c.entries);
    }
    EXPECT_NOTHING_LOGGED();
}

TEST_F(FontKerning, OfEachCharacterIsReadAndTheCursorsDoesNotChange) {
    std::string file;
    for (char c = 0x20; c < 0x7f; ++c) {
        const std::string key = c == ' '   ? "SPACE"
                                : c == '#' ? "DIESIS"
                                : c == '=' ? "EQUAL"
                                           : std::string(1, c);
        const std::string line = "RAVOLT_kerning_" + key + "=" + std::to_string(c - 80) + "\n";
        file = key.size() == 1 ? line + file : file + line; // letters before names
    }
    writeFile("kerning.txt", file);
    font.setKerning(0x7f, 3);
    EXPECT_TRUE(font.loadKerning("kerning.txt"));
    for (char c = 0x20; c < 0x7f; ++c)
        EXPECT_EQ(font.getKerning(c), c - 80) << c;
    EXPECT_EQ(font.getKerning(0x7f), 3);
}

TEST_F(FontKerning, NamesOfFilesAreAddedToThePath) {
    std::filesystem::create_directory("folder");
    writeFile("folder/kerning.txt", "RAVOLT_kerning_a=5\n");
    writeFile("pre-kerning.txt", "RAVOLT_kerning_a=6\n");
    const struct {
        const char *path, *name, *entries;
    } cases[] = {{nullptr, "folder/kerning.txt", "a5"},
                 {"pre-", "kerning.txt", "a6"},
                 {"folder/", "kerning.txt", "a5"}};
    for (const auto &c : cases) {
        RVFONT::setPath(c.path);
        EXPECT_TRUE(font.loadKerning(c.name)) << c.name;
        EXPECT_EQ(kerning(), c.entries) << c.name;
    }
    EXPECT_NOTHING_LOGGED();
}

TEST_F(FontKerning, FilesThatCannotBeReadAreRefused) {
    std::filesystem::create_directory("folder");
    writeFile("folder/empty.txt", "");
    const std::string none = "   [!] File not found (none.txt) @ RVFONT::loadKerning\n";
    const struct {
        const char *path, *name;
        std::string log;
    } cases[] = {
        {"", nullptr, "   [!] Invalid params @ RVFONT::loadKerning\n"},
        {"folder/", nullptr, "   [!] Invalid params @ RVFONT::loadKerning\n"},
        {"", "none.txt", none},
        {"folder/", "none.txt", none},
        {"none/", "none.txt", none},
        {"", "", "   [!] File not found () @ RVFONT::loadKerning\n"},
        {"", "folder", "   [!] File not found (folder) @ RVFONT::loadKerning\n"},
        {"folder/", "", "   [!] File not found () @ RVFONT::loadKerning\n"},
        {"folder/", "empty.txt", "zlfOpenParser: file 'folder/empty.txt' is empty\n"},
    };
    font.setKerning('a', 5);
    for (const auto &c : cases) {
        RVFONT::setPath(c.path);
        EXPECT_FALSE(font.loadKerning(c.name)) << c.log;
        EXPECT_LOGGED_EXACTLY(c.log);
    }
    EXPECT_EQ(kerning(), "a5");
}

} // namespace
