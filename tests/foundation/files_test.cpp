#include "foundation/bytes.h"
#include "tests/foundation/ownLog.h"

#include <filesystem>

#include <sys/stat.h>

namespace ravolt::test {
namespace {

TEST(Files, HaveTheirSizeInBytes) {
    writeFile("five", std::string("a\r\n\0b", 5));
    writeFile("empty", "");
    EXPECT_EQ(zlfGetFileSize("five"), 5);
    EXPECT_EQ(zlfGetFileSize("empty"), 0);
}

TEST(Files, WithoutASizeGiveMinusOne) {
    EXPECT_EQ(zlfGetFileSize(nullptr), -1);
    EXPECT_EQ(zlfGetFileSize("nowhere"), -1);
    EXPECT_EQ(zlfGetFileSize("."), -1);
}

TEST(Files, OfMoreThan31BitsHaveNoSize) {
    writeFile("huge", "");
    std::filesystem::resize_file("huge", 0x7FFFFFFF);
    EXPECT_EQ(zlfGetFileSize("huge"), 0x7FFFFFFF);
    std::filesystem::resize_file("huge", 0x80000000);
    EXPECT_EQ(zlfGetFileSize("huge"), -1);
}

TEST(Files, ExistWhenTheyOpenForReading) {
    writeFile("there", "");
    EXPECT_TRUE(zlfFileExists("there"));
    EXPECT_FALSE(zlfFileExists("not there"));
    EXPECT_FALSE(zlfFileExists(nullptr));
    EXPECT_FALSE(zlfFileExists(""));
    EXPECT_FALSE(zlfFileExists(".")) << "a folder is no file";
}

// Without a writer, to open a FIFO for reading would wait for one.
TEST(Files, AreRegularFiles) {
    ASSERT_EQ(mkfifo("fifo", 0600), 0);
    EXPECT_FALSE(zlfFileExists("fifo"));
    EXPECT_EQ(zlfGetFileSize("fifo"), -1);
    EXPECT_FALSE(zlfFileExists("/dev/null"));
    zlfPARSER parser;
    EXPECT_FALSE(zlfOpenParser(&parser, "fifo"));
    FileBytes bytes;
    EXPECT_EQ(bytes.read("fifo"), FileBytes::Result::notOpened);
    writeFile("behind", "text");
    std::filesystem::create_symlink("behind", "link");
    EXPECT_EQ(zlfGetFileSize("link"), 4) << "what is read may stand behind a link";
}

TEST(Files, OpenInTheModeAskedFor) {
    FILE *file = zlfOpenFile("opened", "w");
    ASSERT_NE(file, nullptr);
    std::fputs("text", file);
    std::fclose(file);
    EXPECT_EQ(readText("opened"), "text");
    EXPECT_EQ(zlfOpenFile("nowhere", "r"), nullptr);
    EXPECT_EQ(zlfOpenFile(nullptr, "r"), nullptr);
    EXPECT_EQ(zlfOpenFile("opened", nullptr), nullptr);
}

TEST(Files, DialogsAreNeverConfirmed) {
    char file[260] = "as it was";
    EXPECT_FALSE(zlfOpenFileDialog(file, nullptr));
    EXPECT_FALSE(zlfSaveFileDialog(file, "txt", nullptr));
    EXPECT_STREQ(file, "as it was");
}

TEST(Files, SystemTimeCountsFrom1601InSteps) {
    systemFaults.realTime = 0; // 116444736000000000 steps = 0x19DB1DED53E8000
    EXPECT_EQ(zlfGetSystemTime(), 0xD53E8000u);
    systemFaults.realTime = 1'000'000'700;
    EXPECT_EQ(zlfGetSystemTime(), 0xD53E8000u + 10'000'007u);
    systemFaults = {};
    const unsigned int before = zlfGetSystemTime();
    const timespec pause{0, 2'000'000};
    nanosleep(&pause, nullptr);
    EXPECT_GE(zlfGetSystemTime() - before, 20'000u);
}

} // namespace
} // namespace ravolt::test
