// Key files: opening, lines, comments, numbers and texts.

#include "tests/foundation/ownLog.h"
#include "tests/support/shortReads.h"

#include <filesystem>
#include <limits>
#include <vector>

namespace ravolt::test {
namespace {

using Lines = std::vector<std::string>;

class Parser : public OwnLog {
  protected:
    ~Parser() override {
        if (parser.data)
            zlfCloseParser(&parser);
    }

    // Opens a file of these bytes.
    void open(const std::string &bytes) {
        if (parser.data)
            zlfCloseParser(&parser);
        writeFile("keys.txt", bytes);
        ASSERT_TRUE(zlfOpenParser(&parser, "keys.txt"));
    }

    // All results of `read`, which is zlfReadLine or zlfReadToken.
    Lines read(const std::string &bytes, bool (*function)(zlfPARSER *, char *) = zlfReadLine) {
        open(bytes);
        Lines lines;
        for (char line[256]; function(&parser, line);)
            lines.push_back(line);
        return lines;
    }
    void expectLine(const char *expected) {
        char line[256];
        ASSERT_TRUE(zlfReadLine(&parser, line));
        EXPECT_STREQ(line, expected);
    }

    // The value of `key`, or -99 when it is not found.
    int intOf(const char *key) {
        int value = -99;
        const bool found = zlfGetInt(&parser, key, &value);
        EXPECT_EQ(found, value != -99);
        return value;
    }
    float floatOf(const char *key) {
        float value = -99;
        EXPECT_TRUE(zlfGetFloat(&parser, key, &value));
        return value;
    }
    // The result of zlfGetString, and what is in a buffer of "before" then.
    std::string stringOf(const char *key) {
        char value[256] = "before";
        const bool found = zlfGetString(&parser, key, value);
        return (found ? "true " : "false ") + std::string(value);
    }

    zlfPARSER parser;
};

// --- Opening and closing

TEST_F(Parser, ReadsAFileWhole) {
    const int live = liveBlocks();
    writeFile("keys.txt", "abc\n");
    ASSERT_TRUE(zlfOpenParser(&parser, "keys.txt"));
    EXPECT_EQ(parser.size, 4);
    EXPECT_EQ(parser.position, 0);
    EXPECT_EQ(std::string(parser.data, 4), "abc\n");
    EXPECT_EQ(liveBlocks(), live + 1);
    EXPECT_TRUE(zlfCloseParser(&parser));
    EXPECT_EQ(parser.data, nullptr);
    EXPECT_EQ(parser.size, 0);
    EXPECT_EQ(parser.position, 0);
    EXPECT_EQ(liveBlocks(), live);
    EXPECT_NOTHING_LOGGED();
    EXPECT_FALSE(zlfCloseParser(&parser));
    EXPECT_LOGGED_EXACTLY("zlfCloseParser: parser already free\n");
    EXPECT_FALSE(zlfCloseParser(nullptr));
    EXPECT_LOGGED_EXACTLY("zlfCloseParser: invalid params\n");
}

TEST_F(Parser, RefusesToOpenWhatCannotBeRead) {
    writeFile("empty", "");
    writeFile("ten", "0123456789");
    const struct {
        const char *file, *message;
    } rows[] = {{nullptr, "invalid params"},
                {"no such file", "unable to open file no such file"},
                {".", "unable to open file ."},
                {"empty", "file 'empty' is empty"},
                {"ten", "out of memory (11 bytes needed)"}};
    for (const auto &row : rows) {
        EXPECT_FALSE(withoutMemory(11, [&] { return zlfOpenParser(&parser, row.file); }));
        EXPECT_LOGGED_EXACTLY("zlfOpenParser: " + std::string(row.message) + "\n");
        EXPECT_EQ(parser.data, nullptr);
    }
    EXPECT_FALSE(zlfOpenParser(nullptr, "ten"));
    EXPECT_LOGGED_EXACTLY("zlfOpenParser: invalid params\n");

    writeFile("huge", "");
    std::filesystem::resize_file("huge", 0x7FFFFFFE);
    const int live = liveBlocks();
    EXPECT_FALSE(zlfOpenParser(&parser, "huge"));
    EXPECT_LOGGED_EXACTLY("zlfOpenParser: file 'huge' is corrupted\n");
    EXPECT_EQ(liveBlocks(), live);
}

TEST_F(Parser, RefusesAFileWhosePositionsFail) {
    writeFile("keys.txt", "0123456789");
    systemFaults.failSeek = 0;
    EXPECT_FALSE(zlfOpenParser(&parser, "keys.txt"));
    EXPECT_LOGGED_EXACTLY("zlfOpenParser: file 'keys.txt' is empty\n");
    systemFaults.failTell = true;
    EXPECT_FALSE(zlfOpenParser(&parser, "keys.txt"));
    EXPECT_LOGGED_EXACTLY("zlfOpenParser: file 'keys.txt' is empty\n");
    EXPECT_EQ(parser.data, nullptr);
    systemFaults = {};
    systemFaults.failSeek = 1; // back to the start
    EXPECT_FALSE(zlfOpenParser(&parser, "keys.txt"));
    EXPECT_LOGGED_EXACTLY("zlfOpenParser: file 'keys.txt' is corrupted\n");
    EXPECT_EQ(parser.size, 0);
    parser.data = nullptr; // dangling
}

TEST_F(Parser, RefusesAShortReadAndDoesNotCountItsRelease) {
    writeFile("keys.txt", "0123456789");
    const int live = liveBlocks();
    {
        const ShortReads shortReads;
        EXPECT_FALSE(zlfOpenParser(&parser, "keys.txt"));
    }
    EXPECT_LOGGED_EXACTLY("zlfOpenParser: file 'keys.txt' is corrupted\n");
    EXPECT_EQ(liveBlocks(), live + 1);
    EXPECT_NE(parser.data, nullptr);

    // The dangling pointer is not dereferenced.
    char text[256];
    EXPECT_FALSE(zlfReadLine(&parser, text));
    EXPECT_EQ(intOf("0"), -99);
    EXPECT_FALSE(zlfRemoveComments(&parser, '0'));
    EXPECT_FALSE(zlfCloseParser(&parser));
    EXPECT_LOGGED_EXACTLY("zlfCloseParser: parser already free\n");
    EXPECT_EQ(liveBlocks(), live + 1);
    parser.data = nullptr;
}

TEST_F(Parser, IsSafeWithoutAFileOrArguments) {
    char text[256] = "unchanged";
    int number = 7;
    float real = 7.0f;
    for (zlfPARSER *none : {&parser, static_cast<zlfPARSER *>(nullptr)}) {
        EXPECT_FALSE(zlfReadLine(none, text));
        EXPECT_FALSE(zlfReadToken(none, text));
        EXPECT_FALSE(zlfRemoveComments(none, '#'));
        EXPECT_FALSE(zlfGetInt(none, "", &number));
        EXPECT_FALSE(zlfGetFloat(none, "key", &real));
        EXPECT_FALSE(zlfGetString(none, "key", text));
    }
    open("key=1\n");
    EXPECT_FALSE(zlfReadLine(&parser, nullptr));
    EXPECT_FALSE(zlfReadToken(&parser, nullptr));
    for (const char *key : {static_cast<const char *>(nullptr), "other"}) {
        EXPECT_FALSE(zlfGetInt(&parser, key, &number));
        EXPECT_FALSE(zlfGetFloat(&parser, key, &real));
        EXPECT_FALSE(zlfGetString(&parser, key, text));
    }
    EXPECT_FALSE(zlfGetInt(&parser, "key", nullptr));
    EXPECT_FALSE(zlfGetFloat(&parser, "key", nullptr));
    EXPECT_FALSE(zlfGetString(&parser, "key", nullptr));
    EXPECT_STREQ(text, "unchanged");
    EXPECT_EQ(number, 7);
    EXPECT_EQ(real, 7.0f);
    EXPECT_EQ(parser.position, 0);
    EXPECT_NOTHING_LOGGED();
}

// --- Lines

TEST_F(Parser, ReadsLines) {
    const std::string long255(255, 'a'), long256(256, 'b'), huge(100000, 'c');
    const struct {
        const char *what;
        std::string file;
        Lines lines;
    } rows[] = {
        {"up to their line feed", "one\ntwo\n\nfour\n", {"one", "two", "", "four"}},
        {"an empty one", "\n", {""}},
        {"the last one without an end", "one\ntwo", {"one", "two"}},
        {"one character", "x", {"x"}},
        {"with a carriage return before the line feed",
         "one\r\ntwo\r\n\r\n",
         {"one\r", "two\r", "\r"}},
        {"with a carriage return while a line feed follows",
         "one\rtwo\nthree",
         {"one\rtwo", "three"}},
        {"which lose a character to the carriage return when no line feed follows",
         "one\rtwo\rthree",
         {"on", "tw", "three"}},
        {"the same after a line feed", "zero\none\rtwo\r", {"zero", "on", "tw"}},
        {"and empty ones", "\r\ra\r", {"", "", ""}},
        {"up to a zero byte", std::string("one\ntw\0o\nthree\n", 15), {"one", "tw"}},
        {"cut at 255 bytes",
         long255 + "\n" + long256 + "\n" + huge + "\nend",
         {long255, long256.substr(1), huge.substr(0, 255), "end"}},
        {"and the only one", huge, {huge.substr(0, 255)}},
    };
    for (const auto &row : rows)
        EXPECT_EQ(read(row.file), row.lines) << row.what;
    EXPECT_EQ(read(huge + "\nend", zlfReadToken), (Lines{huge.substr(0, 255), "end"}));
    EXPECT_EQ(read(" a b\t= \" c d \"\n\t \n\nx\r\n", zlfReadToken),
              (Lines{"ab=\"cd\"", "", "", "x\r"}))
        << "tokens have no blanks and tabs";
}

TEST_F(Parser, MovesItsPositionBeyondTheEndOfTheLine) {
    open("one\nno\r.");
    for (const int position : {4, 7, parser.size + 2}) {
        char line[256];
        ASSERT_TRUE(zlfReadLine(&parser, line));
        EXPECT_EQ(parser.position, position);
    }
    char line[256] = "unchanged";
    for (const int position : {8, 9, 1000000, -1, -1000000}) {
        parser.position = position;
        EXPECT_FALSE(zlfReadLine(&parser, line));
        EXPECT_FALSE(zlfReadToken(&parser, line));
        EXPECT_STREQ(line, "unchanged");
    }
    parser.position = 4;
    expectLine("n");
}

// --- Comments

TEST_F(Parser, RemovesCommentsUpToTheEndOfTheirLine) {
    open("a=1 # one\nb=2\r\n#c=3\rd#\n");
    EXPECT_TRUE(zlfRemoveComments(&parser, '#'));
    EXPECT_EQ(std::string(parser.data, static_cast<std::size_t>(parser.size)),
              "a=1      \nb=2\r\n    \rd \n");
    EXPECT_EQ(parser.data[parser.size], '\0');
    EXPECT_FALSE(zlfRemoveComments(&parser, '#')) << "none is there";
    open("a#b");
    EXPECT_TRUE(zlfRemoveComments(&parser, '#')) << "up to the end of the file";
    EXPECT_EQ(std::string(parser.data, 4), std::string("a  \0", 4));
    open("a=1\n");
    EXPECT_FALSE(zlfRemoveComments(&parser, '#'));
    EXPECT_STREQ(parser.data, "a=1\n");
}

TEST_F(Parser, RemovesAllCommentsWhateverItsPosition) {
    open("#one\ntwo\n#three\n");
    expectLine("#one");
    EXPECT_TRUE(zlfRemoveComments(&parser, '#'));
    EXPECT_EQ(parser.position, 5);
    EXPECT_EQ(std::string(parser.data, 4), "    ");
    expectLine("two");
    expectLine("      ");
}

TEST_F(Parser, AcceptsAnyByteAsACommentMarker) {
    for (int marker = -128; marker < 128; ++marker) {
        open("a b\n\r\n\"c\"");
        zlfRemoveComments(&parser, static_cast<char>(marker));
        EXPECT_EQ(parser.data[parser.size], '\0');
    }
    open("a\n\nb");
    EXPECT_TRUE(zlfRemoveComments(&parser, '\n'));
    EXPECT_STREQ(parser.data, "a   ") << "a line feed that is a marker ends no comment";
}

TEST_F(Parser, KeysAndTextsInACommentDoNotCount) {
    open("# key=1\nkey=2 # key=3\ntitle=\"No # 1\"\n");
    zlfRemoveComments(&parser, '#');
    EXPECT_EQ(intOf("key"), 2);
    EXPECT_EQ(stringOf("title"), "false \"No");
}

// --- Values

TEST_F(Parser, ReadsNumbers) {
    const std::string x251(251, 'x'), x253(253, 'x');
    const struct {
        std::string file;
        const char *key;
        int value;
        const char *what = "";
    } rows[] = {
        {"key=5\n", "key", 5},
        {"key=1\n", "key", 1},
        {"key:-5\n", "key", -5},
        {"  k e\ty =\t1 2 \n", "key", 12},
        {"key 57\n", "key", 7, "the first digit is the separator"},
        {"my key=5 apples\r\n", "key", 5},
        {"key=\n", "key", 0, "a missing number is zero"},
        {"key=", "key", 0},
        {"key=\r\n", "key", 0},
        {"key\n", "key", 0, "the key ends the line"},
        {"key", "key", 0, "the key ends the file"},
        {"key=x5\n", "key", 0},
        {"key=1\nkey=2\n", "key", 1, "the first line with the key is read"},
        {"keyLong=1\nkey=2\n", "key", 0, "the longer key's line comes first"},
        {"key=2\nkeyLong=1\n", "keyLong", 1},
        {"key key=3\n", "key", 0, "and in it the first match"},
        {"kekey=3\n", "key", 3, "after a partial match"},
        {"KEY=1\nkey=2\n", "key", 2},
        {"ke\ny=1\nk ey=2\n", "key", 2, "a key does not cross the end of a line"},
        {"ke", "key", -99},
        {"my key=1\n", "my key", -99, "a key with a blank is never found"},
        {"mykey=1\n", " ", -99},
        {"-17\n", "", 17, "an empty key is in every line"},
        {"\n5\n", "", 0},
        {"key\rkey=3", "key", 3, "a key in the lost character is not found"},
        {"key=12\rother", "key", 1},
        {x251 + "key=5\nkey=6\n", "key", 0, "the line is cut after the separator"},
        {x253 + "key=5\nkey=6\n", "key", 6, "or within the key"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(testing::PrintToString(row.file) + " " + row.what);
        open(row.file);
        EXPECT_EQ(intOf(row.key), row.value);
    }
    open("key=99999999999999999999999\nother=-99999999999999999999999\n"); // for the sanitizers
    intOf("key");
    intOf("other");
    int value = -1;
    open("key=1\n");
    EXPECT_TRUE(zlfGetInt(&parser, "key", &value));
    EXPECT_EQ(value, 1) << "all four bytes are stored";
}

TEST_F(Parser, ReadingKeysDoesNotMoveThePosition) {
    open("one=1\ntwo=2\nthree=3\n");
    expectLine("one=1");
    EXPECT_EQ(intOf("three"), 3);
    EXPECT_EQ(intOf("one"), 1);
    expectLine("two=2");
}

TEST_F(Parser, ReadsReals) {
    open("a=1.5\nb = - 2.5e1 x\nc=\nd=1e300\n");
    EXPECT_EQ(floatOf("a"), 1.5f);
    EXPECT_EQ(floatOf("b"), -25.0f);
    EXPECT_EQ(floatOf("c"), 0.0f);
    EXPECT_EQ(floatOf("d"), std::numeric_limits<float>::infinity());
}

TEST_F(Parser, ReadsTheTextBetweenTheFirstAndTheLastQuote) {
    const std::string text(400, 't');
    const std::pair<std::string, std::string> rows[] = {
        {"key=\"text\"\n", "true text"},
        {"key = \"two words\" behind\r\n", "true twowords"},
        {"key=\"a\"b\"c\"\n", "true a\"b\"c"},
        {"key=before\"text\"", "true text"},
        {"key=\"\"\n", "true "},
        // Without two quotes the raw text is copied.
        {"key= raw text\n", "false rawtext"},
        {"key=\"half\n", "false \"half"},
        {"key=half\"\r\n", "false half\"\r"},
        {"key=", "false "},
        {"key", "false "},
        {"other=\"x\"\n", "false before"},
        {"key\"text\"\n", "false text\""}, // the first one is the separator
        {"key=\"" + text + "\"\n", "false \"" + text.substr(0, 250)},
        {"key=\"" + text.substr(0, 249) + "\"\n", "true " + text.substr(0, 249)},
    };
    for (const auto &[file, expected] : rows) {
        open(file);
        EXPECT_EQ(stringOf("key"), expected) << file;
    }
}

TEST_F(Parser, ReadsKeysOfLargeFilesInTime) {
    std::string lines, returns;
    for (int i = 0; i < 20000; ++i)
        lines += "some key that is not searched, number " + std::to_string(i) + " = 1\n";
    open(lines + "last=42\n");
    for (int i = 0; i < 50; ++i)
        ASSERT_EQ(intOf("last"), 42);
    for (int i = 0; i < 100000; ++i)
        returns += "some line\r";
    open(returns + "last=42");
    EXPECT_EQ(intOf("last"), 42);
}

} // namespace
} // namespace ravolt::test
