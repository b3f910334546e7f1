// Files by name, file dialogs and the system time.

#include "foundation/bytes.h"
#include "tests/foundation/ownLog.h"

#include <filesystem>

#include <sys/stat.h>

namespace ravolt::test {
namespace {

TEST(Files, HaveASizeAndExistWhereTheyAreRegularFiles) {
    writeFile("five", std::string("a\r\n\0b", 5));
    writeFile("empty", "");
    writeFile("largest", "");
    writeFile("huge", "");
    std::filesystem::resize_file("largest", 0x7FFFFFFF);
    std::filesystem::resize_file("huge", 0x80000000);
    std::filesystem::create_symlink("five", "link");
    ASSERT_EQ(mkfifo("fifo", 0600), 0); // to open it for reading would wait for a writer
    const struct {
        const char *name;
        int size;
        bool exists;
    } rows[] = {{"five", 5, true},      {"empty", 0, true},      {"largest", 0x7FFFFFFF, true},
                {"huge", -1, true},     {"link", 5, true},       {nullptr, -1, false},
                {"nowhere", -1, false}, {"", -1, false},         {".", -1, false},
                {"fifo", -1, false},    {"/dev/null", -1, false}};
    for (const auto &row : rows) {
        SCOPED_TRACE(testing::PrintToString(row.name));
        EXPECT_EQ(zlfGetFileSize(row.name), row.size);
        EXPECT_EQ(zlfFileExists(row.name), row.exists);
    }
    zlfPARSER parser;
    EXPECT_FALSE(zlfOpenParser(&parser, "fifo"));
    FileBytes bytes;
    EXPECT_EQ(bytes.read("fifo"), FileBytes::Result::notOpened);
}

TEST(Files, HaveNoSizeWhereTheirPositionsFail) {
    writeFile("five", "12345");
    systemFaults.failSeek = 0;
    EXPECT_EQ(zlfGetFileSize("five"), -1);
    systemFaults.failTell = true;
    EXPECT_EQ(zlfGetFileSize("five"), -1);
    systemFaults = {};
    EXPECT_EQ(zlfGetFileSize("five"), 5);
}

TEST(Files, OpenInTheRequestedMode) {
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
    char file[260] = "unchanged";
    EXPECT_FALSE(zlfOpenFileDialog(file, nullptr));
    EXPECT_FALSE(zlfSaveFileDialog(file, "txt", nullptr));
    EXPECT_STREQ(file, "unchanged");
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
