#include "tests/foundation/ownLog.h"

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

    Lines linesOf(const std::string &bytes) {
        open(bytes);
        Lines lines;
        char line[256];
        while (zlfReadLine(&parser, line))
            lines.push_back(line);
        return lines;
    }

    Lines tokensOf(const std::string &bytes) {
        open(bytes);
        Lines tokens;
        char token[256];
        while (zlfReadToken(&parser, token))
            tokens.push_back(token);
        return tokens;
    }

    // The value of `key`, or -99 when it is not found.
    int intOf(const std::string &bytes, const char *key) {
        open(bytes);
        int value = -99;
        const bool found = zlfGetInt(&parser, key, &value);
        EXPECT_EQ(found, value != -99);
        return value;
    }

    // What zlfGetString leaves in a buffer of "before", and its result in front.
    std::string stringOf(const std::string &bytes, const char *key) {
        open(bytes);
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
}

TEST_F(Parser, RefusesToOpenWithoutItsArguments) {
    EXPECT_FALSE(zlfOpenParser(nullptr, "keys.txt"));
    EXPECT_LOGGED_EXACTLY("zlfOpenParser: invalid params\n");
    EXPECT_FALSE(zlfOpenParser(&parser, nullptr));
    EXPECT_LOGGED_EXACTLY("zlfOpenParser: invalid params\n");
}

TEST_F(Parser, RefusesAFileThatDoesNotOpen) {
    EXPECT_FALSE(zlfOpenParser(&parser, "no such file"));
    EXPECT_LOGGED_EXACTLY("zlfOpenParser: unable to open file no such file\n");
    EXPECT_FALSE(zlfOpenParser(&parser, "."));
    EXPECT_LOGGED_EXACTLY("zlfOpenParser: unable to open file .\n");
}

TEST_F(Parser, RefusesAnEmptyFile) {
    writeFile("keys.txt", "");
    EXPECT_FALSE(zlfOpenParser(&parser, "keys.txt"));
    EXPECT_LOGGED_EXACTLY("zlfOpenParser: file 'keys.txt' is empty\n");
}

TEST_F(Parser, RefusesAFileWithoutMemoryForIt) {
    writeFile("keys.txt", "0123456789");
    systemFaults.failMallocOf = 11;
    EXPECT_FALSE(zlfOpenParser(&parser, "keys.txt"));
    EXPECT_LOGGED_EXACTLY("zlfOpenParser: out of memory (11 bytes needed)\n");
    EXPECT_EQ(parser.data, nullptr);
}

TEST_F(Parser, RefusesAShortReadAndDoesNotCountItsRelease) {
    writeFile("keys.txt", "0123456789");
    const int live = liveBlocks();
    systemFaults.shortRead = true;
    EXPECT_FALSE(zlfOpenParser(&parser, "keys.txt"));
    EXPECT_LOGGED_EXACTLY("zlfOpenParser: file 'keys.txt' is corrupted\n");
    EXPECT_EQ(liveBlocks(), live + 1);
    EXPECT_NE(parser.data, nullptr);

    // The dead value is never followed.
    char text[256];
    int value;
    EXPECT_FALSE(zlfReadLine(&parser, text));
    EXPECT_FALSE(zlfGetInt(&parser, "0", &value));
    EXPECT_FALSE(zlfRemoveComments(&parser, '0'));
    EXPECT_FALSE(zlfCloseParser(&parser));
    EXPECT_LOGGED_EXACTLY("zlfCloseParser: parser already free\n");
    EXPECT_EQ(liveBlocks(), live + 1);
    parser.data = nullptr;
}

TEST_F(Parser, RefusesAFileOfMoreThan31Bits) {
    writeFile("huge", "");
    std::filesystem::resize_file("huge", 0x7FFFFFFE);
    const int live = liveBlocks();
    EXPECT_FALSE(zlfOpenParser(&parser, "huge"));
    EXPECT_LOGGED_EXACTLY("zlfOpenParser: file 'huge' is corrupted\n");
    EXPECT_EQ(liveBlocks(), live);
}

TEST_F(Parser, RefusesToCloseWhatIsNotOpen) {
    EXPECT_FALSE(zlfCloseParser(nullptr));
    EXPECT_LOGGED_EXACTLY("zlfCloseParser: invalid params\n");
    EXPECT_FALSE(zlfCloseParser(&parser));
    EXPECT_LOGGED_EXACTLY("zlfCloseParser: parser already free\n");
    open("a");
    EXPECT_TRUE(zlfCloseParser(&parser));
    EXPECT_FALSE(zlfCloseParser(&parser));
    EXPECT_LOGGED_EXACTLY("zlfCloseParser: parser already free\n");
}

TEST_F(Parser, IsSafeWithoutAFileAndWithoutArguments) {
    char text[256] = "as it was";
    int number = 7;
    float real = 7.0f;
    EXPECT_FALSE(zlfReadLine(&parser, text));
    EXPECT_FALSE(zlfReadToken(&parser, text));
    EXPECT_FALSE(zlfRemoveComments(&parser, '#'));
    EXPECT_FALSE(zlfGetInt(&parser, "", &number));
    open("key=1\n");
    for (zlfPARSER *none : {static_cast<zlfPARSER *>(nullptr)}) {
        EXPECT_FALSE(zlfReadLine(none, text));
        EXPECT_FALSE(zlfReadToken(none, text));
        EXPECT_FALSE(zlfRemoveComments(none, '#'));
        EXPECT_FALSE(zlfGetInt(none, "key", &number));
        EXPECT_FALSE(zlfGetFloat(none, "key", &real));
        EXPECT_FALSE(zlfGetString(none, "key", text));
    }
    EXPECT_FALSE(zlfReadLine(&parser, nullptr));
    EXPECT_FALSE(zlfReadToken(&parser, nullptr));
    EXPECT_FALSE(zlfGetInt(&parser, nullptr, &number));
    EXPECT_FALSE(zlfGetFloat(&parser, nullptr, &real));
    EXPECT_FALSE(zlfGetString(&parser, nullptr, text));
    EXPECT_FALSE(zlfGetInt(&parser, "key", nullptr));
    EXPECT_FALSE(zlfGetFloat(&parser, "key", nullptr));
    EXPECT_FALSE(zlfGetString(&parser, "key", nullptr));
    EXPECT_STREQ(text, "as it was");
    EXPECT_EQ(number, 7);
    EXPECT_EQ(real, 7.0f);
    EXPECT_EQ(parser.position, 0);
}

// --- Lines

TEST_F(Parser, ReadsLinesUpToTheirLineFeed) {
    EXPECT_EQ(linesOf("one\ntwo\n\nfour\n"), (Lines{"one", "two", "", "four"}));
    EXPECT_EQ(linesOf("\n"), Lines{""});
}

TEST_F(Parser, ALastLineWithoutAnEndLosesNothing) {
    EXPECT_EQ(linesOf("one\ntwo"), (Lines{"one", "two"}));
    EXPECT_EQ(linesOf("x"), Lines{"x"});
}

TEST_F(Parser, ACarriageReturnBeforeALineFeedStays) {
    EXPECT_EQ(linesOf("one\r\ntwo\r\n\r\n"), (Lines{"one\r", "two\r", "\r"}));
}

TEST_F(Parser, ALoneCarriageReturnIsNoEndWhileALineFeedIsLeft) {
    EXPECT_EQ(linesOf("one\rtwo\nthree"), (Lines{"one\rtwo", "three"}));
}

TEST_F(Parser, ALoneCarriageReturnTakesTheLastCharacterWhenNoLineFeedIsLeft) {
    EXPECT_EQ(linesOf("one\rtwo\rthree"), (Lines{"on", "tw", "three"}));
    EXPECT_EQ(linesOf("zero\none\rtwo\r"), (Lines{"zero", "on", "tw"}));
    EXPECT_EQ(linesOf("\r\ra\r"), (Lines{"", "", ""}));
}

TEST_F(Parser, MovesItsPositionBehindTheEndMark) {
    char line[256];
    open("one\nno\r.");
    ASSERT_TRUE(zlfReadLine(&parser, line));
    EXPECT_EQ(parser.position, 4);
    ASSERT_TRUE(zlfReadLine(&parser, line));
    EXPECT_EQ(parser.position, 7);
    ASSERT_TRUE(zlfReadLine(&parser, line));
    EXPECT_EQ(parser.position, parser.size + 2);
    EXPECT_FALSE(zlfReadLine(&parser, line));
    EXPECT_STREQ(line, ".");
}

TEST_F(Parser, APositionOutsideTheFileReadsNothing) {
    char line[256];
    open("one\ntwo\n");
    for (const int position : {8, 9, 1000000, -1, -1000000}) {
        parser.position = position;
        EXPECT_FALSE(zlfReadLine(&parser, line));
        EXPECT_FALSE(zlfReadToken(&parser, line));
    }
    parser.position = 4;
    ASSERT_TRUE(zlfReadLine(&parser, line));
    EXPECT_STREQ(line, "two");
}

TEST_F(Parser, AZeroByteEndsTheText) {
    EXPECT_EQ(linesOf(std::string("one\ntw\0o\nthree\n", 15)), (Lines{"one", "tw"}));
}

TEST_F(Parser, CutsALineAt255Bytes) {
    const std::string long255(255, 'a'), long256(256, 'b'), huge(100000, 'c');
    EXPECT_EQ(linesOf(long255 + "\n" + long256 + "\n" + huge + "\nend"),
              (Lines{long255, long256.substr(1), huge.substr(0, 255), "end"}));
    EXPECT_EQ(linesOf(huge), Lines{huge.substr(0, 255)});
    EXPECT_EQ(tokensOf(huge + "\nend"), (Lines{huge.substr(0, 255), "end"}));
}

TEST_F(Parser, TokensHaveNoBlanksAndTabs) {
    EXPECT_EQ(tokensOf(" a b\t= \" c d \"\n\t \n\nx\r\n"), (Lines{"ab=\"cd\"", "", "", "x\r"}));
}

// --- Comments

TEST_F(Parser, RemovesCommentsUpToTheEndOfTheirLine) {
    open("a=1 # one\nb=2\r\n#c=3\rd#\n");
    EXPECT_TRUE(zlfRemoveComments(&parser, '#'));
    EXPECT_EQ(std::string(parser.data, static_cast<std::size_t>(parser.size)),
              "a=1      \nb=2\r\n    \rd \n");
    EXPECT_EQ(parser.data[parser.size], '\0');
    EXPECT_FALSE(zlfRemoveComments(&parser, '#')) << "none is left";
}

TEST_F(Parser, RemovesACommentUpToTheEndOfTheFile) {
    open("a#b");
    EXPECT_TRUE(zlfRemoveComments(&parser, '#'));
    EXPECT_EQ(std::string(parser.data, 4), std::string("a  \0", 4));
}

TEST_F(Parser, RemovesAllCommentsWhereverItStands) {
    char line[256];
    open("#one\ntwo\n#three\n");
    ASSERT_TRUE(zlfReadLine(&parser, line));
    EXPECT_TRUE(zlfRemoveComments(&parser, '#'));
    EXPECT_EQ(parser.position, 5);
    EXPECT_EQ(std::string(parser.data, 4), "    ");
    ASSERT_TRUE(zlfReadLine(&parser, line));
    EXPECT_STREQ(line, "two");
    ASSERT_TRUE(zlfReadLine(&parser, line));
    EXPECT_STREQ(line, "      ");
}

TEST_F(Parser, ReportsThatThereWasNoComment) {
    open("a=1\n");
    EXPECT_FALSE(zlfRemoveComments(&parser, '#'));
    EXPECT_STREQ(parser.data, "a=1\n");
}

TEST_F(Parser, TakesAnyByteAsACommentMarker) {
    for (int marker = -128; marker < 128; ++marker) {
        open("a b\n\r\n\"c\"");
        zlfRemoveComments(&parser, static_cast<char>(marker));
        EXPECT_EQ(parser.data[parser.size], '\0');
    }
    open("a\n\nb");
    EXPECT_TRUE(zlfRemoveComments(&parser, '\n'));
    EXPECT_STREQ(parser.data, "a   ") << "a line feed that is a marker ends no comment";
}

TEST_F(Parser, AKeyBehindAMarkerDoesNotCount) {
    open("# key=1\nkey=2 # key=3\n");
    zlfRemoveComments(&parser, '#');
    int value = 0;
    EXPECT_TRUE(zlfGetInt(&parser, "key", &value));
    EXPECT_EQ(value, 2);
}

TEST_F(Parser, AMarkerInAQuotedTitleCutsIt) {
    open("title=\"No # 1\"\n");
    zlfRemoveComments(&parser, '#');
    char value[256] = "";
    EXPECT_FALSE(zlfGetString(&parser, "title", value));
    EXPECT_STREQ(value, "\"No");
}

// --- Numbers

TEST_F(Parser, ReadsTheNumberBehindAnySeparator) {
    EXPECT_EQ(intOf("key=5\n", "key"), 5);
    EXPECT_EQ(intOf("key:-5\n", "key"), -5);
    EXPECT_EQ(intOf("  k e\ty =\t1 2 \n", "key"), 12);
    EXPECT_EQ(intOf("key 57\n", "key"), 7) << "the first digit is the separator";
    EXPECT_EQ(intOf("my key=5 apples\r\n", "key"), 5);
}

TEST_F(Parser, AMissingNumberIsZero) {
    EXPECT_EQ(intOf("key=\n", "key"), 0);
    EXPECT_EQ(intOf("key=", "key"), 0);
    EXPECT_EQ(intOf("key=\r\n", "key"), 0);
    EXPECT_EQ(intOf("key\n", "key"), 0) << "the key ends the line";
    EXPECT_EQ(intOf("key", "key"), 0) << "the key ends the file";
    EXPECT_EQ(intOf("key=x5\n", "key"), 0);
}

TEST_F(Parser, TheFirstLineWithTheKeyWins) {
    EXPECT_EQ(intOf("key=1\nkey=2\n", "key"), 1);
    EXPECT_EQ(intOf("keyLong=1\nkey=2\n", "key"), 0) << "the longer key's line comes first";
    EXPECT_EQ(intOf("key=2\nkeyLong=1\n", "keyLong"), 1);
    EXPECT_EQ(intOf("key key=3\n", "key"), 0) << "and in it the first place";
    EXPECT_EQ(intOf("kekey=3\n", "key"), 3) << "behind a false start";
    EXPECT_EQ(intOf("KEY=1\nkey=2\n", "key"), 2);
}

TEST_F(Parser, AKeyDoesNotRunOverTheEndOfALine) {
    EXPECT_EQ(intOf("ke\ny=1\nk ey=2\n", "key"), 2);
    EXPECT_EQ(intOf("ke", "key"), -99);
}

TEST_F(Parser, AKeyWithABlankIsNeverFound) {
    EXPECT_EQ(intOf("my key=1\n", "my key"), -99);
    EXPECT_EQ(intOf("mykey=1\n", " "), -99);
}

TEST_F(Parser, AnEmptyKeyIsInEveryLine) {
    EXPECT_EQ(intOf("-17\n", ""), 17);
    EXPECT_EQ(intOf("\n5\n", ""), 0);
}

TEST_F(Parser, AKeyInTheLostCharacterIsNotFound) {
    EXPECT_EQ(intOf("key\rkey=3", "key"), 3);
    EXPECT_EQ(intOf("key=12\rother", "key"), 1);
}

TEST_F(Parser, AKeyBeyondTheCutIsNotFound) {
    EXPECT_EQ(intOf(std::string(251, 'x') + "key=5\nkey=6\n", "key"), 0)
        << "the cut is behind the separator";
    EXPECT_EQ(intOf(std::string(253, 'x') + "key=5\nkey=6\n", "key"), 6);
}

TEST_F(Parser, AskingForKeysDoesNotMoveThePosition) {
    char line[256];
    open("one=1\ntwo=2\nthree=3\n");
    ASSERT_TRUE(zlfReadLine(&parser, line));
    int value = 0;
    EXPECT_TRUE(zlfGetInt(&parser, "three", &value));
    EXPECT_EQ(value, 3);
    EXPECT_TRUE(zlfGetInt(&parser, "one", &value));
    EXPECT_EQ(value, 1);
    ASSERT_TRUE(zlfReadLine(&parser, line));
    EXPECT_STREQ(line, "two=2");
}

TEST_F(Parser, WithoutTheKeyTheValueIsLeftAlone) {
    open("one=1\n");
    int number = 7;
    float real = 7.5f;
    char text[256] = "as it was";
    EXPECT_FALSE(zlfGetInt(&parser, "two", &number));
    EXPECT_FALSE(zlfGetFloat(&parser, "two", &real));
    EXPECT_FALSE(zlfGetString(&parser, "two", text));
    EXPECT_EQ(number, 7);
    EXPECT_EQ(real, 7.5f);
    EXPECT_STREQ(text, "as it was");
    EXPECT_NOTHING_LOGGED();
}

TEST_F(Parser, StoresAllFourBytesOfAnInt) {
    open("key=1\n");
    int value = -1;
    EXPECT_TRUE(zlfGetInt(&parser, "key", &value));
    EXPECT_EQ(value, 1);
}

TEST_F(Parser, ReadsReals) {
    open("a=1.5\nb = - 2.5e1 x\nc=\nd=1e300\n");
    float value = 0.0f;
    EXPECT_TRUE(zlfGetFloat(&parser, "a", &value));
    EXPECT_EQ(value, 1.5f);
    EXPECT_TRUE(zlfGetFloat(&parser, "b", &value));
    EXPECT_EQ(value, -25.0f);
    EXPECT_TRUE(zlfGetFloat(&parser, "c", &value));
    EXPECT_EQ(value, 0.0f);
    EXPECT_TRUE(zlfGetFloat(&parser, "d", &value));
    EXPECT_EQ(value, std::numeric_limits<float>::infinity());
}

TEST_F(Parser, NumbersThatDoNotFitAreSomeNumber) {
    intOf("key=99999999999999999999999\n", "key");
    intOf("key=-99999999999999999999999\n", "key");
    SUCCEED() << "for the sanitizers";
}

// --- Texts

TEST_F(Parser, ReadsTheTextBetweenTheFirstAndTheLastQuote) {
    EXPECT_EQ(stringOf("key=\"text\"\n", "key"), "true text");
    EXPECT_EQ(stringOf("key = \"two words\" behind\r\n", "key"), "true twowords");
    EXPECT_EQ(stringOf("key=\"a\"b\"c\"\n", "key"), "true a\"b\"c");
    EXPECT_EQ(stringOf("key=before\"text\"", "key"), "true text");
    EXPECT_EQ(stringOf("key=\"\"\n", "key"), "true ");
}

TEST_F(Parser, WithoutAPairOfQuotesTheRawTextIsLeft) {
    EXPECT_EQ(stringOf("key= raw text\n", "key"), "false rawtext");
    EXPECT_EQ(stringOf("key=\"half\n", "key"), "false \"half");
    EXPECT_EQ(stringOf("key=half\"\r\n", "key"), "false half\"\r");
    EXPECT_EQ(stringOf("key=", "key"), "false ");
    EXPECT_EQ(stringOf("key", "key"), "false ");
    EXPECT_EQ(stringOf("other=\"x\"\n", "key"), "false before");
}

TEST_F(Parser, AQuoteInPlaceOfTheSeparatorIsNoQuote) {
    EXPECT_EQ(stringOf("key\"text\"\n", "key"), "false text\"");
}

TEST_F(Parser, CutsATextWithItsLine) {
    const std::string text(400, 't');
    EXPECT_EQ(stringOf("k=\"" + text + "\"\n", "k"), "false \"" + text.substr(0, 252));
    EXPECT_EQ(stringOf("k=\"" + text.substr(0, 251) + "\"\n", "k"), "true " + text.substr(0, 251));
}

TEST_F(Parser, AsksForManyKeysOfALargeFile) {
    std::string file;
    for (int i = 0; i < 20000; ++i)
        file += "some key that is not wanted, number " + std::to_string(i) + " = 1\n";
    file += "last=42\n";
    open(file);
    for (int i = 0; i < 50; ++i) {
        int value = 0;
        ASSERT_TRUE(zlfGetInt(&parser, "last", &value));
        ASSERT_EQ(value, 42);
    }
}

TEST_F(Parser, AsksForAKeyOfALargeFileWithoutLineFeeds) {
    std::string file;
    for (int i = 0; i < 100000; ++i)
        file += "some line\r";
    file += "last=42";
    open(file);
    int value = 0;
    ASSERT_TRUE(zlfGetInt(&parser, "last", &value));
    ASSERT_EQ(value, 42);
}

} // namespace
} // namespace ravolt::test
