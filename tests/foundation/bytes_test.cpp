// Reading from memory within its bounds, and whole files.

#include "foundation/bytes.h"

#include "ravolt/Z3MMATRIX.h"
#include "tests/foundation/ownLog.h"
#include "tests/support/shortReads.h"

#include <limits>
#include <numeric>

namespace ravolt::test {
namespace {

const unsigned char three[] = {1, 2, 3};

TEST(ByteReader, ReadsLittleEndianNumbersInSequence) {
    const unsigned char bytes[] = {0x01, 0x02, 0x03, 0x04, 0x05, 0xFF, 0xFF, 0, 0, 0x80, 0x3F};
    ByteReader reader(bytes, sizeof bytes);
    EXPECT_EQ(reader.read<std::uint32_t>(), 0x04030201u);
    EXPECT_EQ(reader.read<std::uint8_t>(), 5);
    EXPECT_EQ(reader.read<std::int16_t>(), -1);
    EXPECT_EQ(reader.position(), 7u);
    EXPECT_EQ(reader.left(), 4u);
    EXPECT_EQ(reader.read<float>(), 1.0f);
    EXPECT_EQ(reader.left(), 0u);
    EXPECT_TRUE(reader.ok()) << "the end itself is no failure";
}

TEST(ByteReader, ReadsVectorsAndMatricesWhole) {
    float floats[19];
    std::iota(floats, floats + 19, 0.0f);
    ByteReader reader(floats, sizeof floats);
    EXPECT_EQ(reader.read<Z3MVECTOR3D>(), Z3MVECTOR3D(0, 1, 2));
    EXPECT_EQ(reader.read<Z3MMATRIX>().e[15], 18.0f);
    EXPECT_TRUE(reader.ok());
    EXPECT_EQ(reader.read<Z3MVECTOR4D>(), Z3MVECTOR4D()) << "past the end: a default value";
    EXPECT_FALSE(reader.ok());
}

// After a failure what would have fitted is not read either.
TEST(ByteReader, AReadAcrossTheEndFailsForGood) {
    const auto failing = [](auto fail) {
        ByteReader reader(three, 3);
        fail(reader);
        EXPECT_FALSE(reader.ok());
        EXPECT_EQ(reader.read<std::uint8_t>(), 0);
        EXPECT_EQ(reader.take(0), nullptr);
        EXPECT_EQ(reader.readText(), "");
        return reader.left();
    };
    EXPECT_EQ(failing([](auto &reader) { EXPECT_EQ(reader.template read<std::uint32_t>(), 0u); }),
              0u);
    failing([](auto &reader) { reader.fail(); });
    failing([](auto &reader) { EXPECT_STREQ(reader.readText().data(), "") << "without a zero"; });
    failing([](auto &reader) { reader.skip(4); });
    for (const std::size_t count : {std::size_t{4}, std::numeric_limits<std::size_t>::max()})
        failing([count](auto &reader) { EXPECT_EQ(reader.take(count), nullptr); });
}

TEST(ByteReader, ReportsWhereAndWhyItFailedFirst) {
    const auto problemOf = [](auto fail) {
        ByteReader reader(three, 3, 1);
        EXPECT_EQ(reader.problem().reason, nullptr);
        fail(reader);
        reader.read<std::uint64_t>(); // a later failure
        return std::to_string(reader.problem().offset) + ": " + reader.problem().reason;
    };
    EXPECT_EQ(problemOf([](auto &reader) { reader.skip(3); }), "1: it ends early");
    EXPECT_EQ(problemOf([](auto &reader) { reader.readText(); }), "1: it ends early");
    EXPECT_EQ(problemOf([](auto &reader) { reader.readText(1); }), "1: a text that is too long");
    EXPECT_EQ(problemOf([](auto &reader) { reader.fail("wrong"); }), "1: wrong");
    EXPECT_EQ(problemOf([](auto &reader) { reader.fail("wrong", reader.take(2) + 1); }),
              "2: wrong");
    EXPECT_EQ(ByteReader(three, 3, 4).problem().offset, 3u);
}

TEST(ByteReader, ReadsAndSkipsBlocksUpToTheEnd) {
    for (std::size_t count = 0; count <= 3; ++count) {
        ByteReader reader(three, 3), skipping(three, 3);
        EXPECT_EQ(reader.take(count), three);
        EXPECT_EQ(reader.position(), count);
        EXPECT_EQ(reader.take(3 - count), three + count);
        EXPECT_EQ(reader.take(0), three + 3);
        EXPECT_TRUE(reader.ok());
        skipping.skip(count);
        EXPECT_EQ(skipping.read<std::uint8_t>(), count < 3 ? three[count] : 0);
        EXPECT_EQ(skipping.ok(), count < 3);
    }
}

TEST(ByteReader, StartsAtAnyPosition) {
    EXPECT_EQ(ByteReader(three, 3, 2).read<std::uint8_t>(), 3);
    EXPECT_TRUE(ByteReader(three, 3, 3).ok());
    EXPECT_FALSE(ByteReader(three, 3, 4).ok());
    ByteReader nothing(nullptr, 0);
    EXPECT_TRUE(nothing.ok());
    EXPECT_EQ(nothing.read<std::uint8_t>(), 0);
    EXPECT_FALSE(nothing.ok());
}

TEST(ByteReader, ReadsTextsUpToTheirZero) {
    const char bytes[] = {'a', 'b', 0, 0, 'c', 0};
    ByteReader reader(bytes, sizeof bytes);
    EXPECT_STREQ(reader.readText().data(), "ab");
    EXPECT_EQ(reader.readText(), "");
    EXPECT_EQ(reader.readText(), "c");
    EXPECT_TRUE(reader.ok());
    EXPECT_EQ(reader.readText(), "");
    EXPECT_FALSE(reader.ok());
}

TEST(ByteReader, TextsHaveAMaximumLengthOf255ByDefault) {
    const struct {
        std::string text;
        std::optional<std::size_t> limit;
        bool fits;
    } rows[] = {{std::string(255, 'x'), {}, true},
                {std::string(256, 'x'), {}, false},
                {"abc", 3, true},
                {"abc", 2, false}};
    for (const auto &row : rows) {
        ByteReader reader(row.text.c_str(), row.text.size() + 1);
        EXPECT_EQ(row.limit ? reader.readText(*row.limit) : reader.readText(),
                  row.fits ? row.text : "");
        EXPECT_EQ(reader.ok(), row.fits) << row.text;
    }
}

class FileBytesTest : public testing::Test {
  protected:
    void expectBlocks(int more) { EXPECT_EQ(liveBlocks(), live + more); }
    // The bytes of a file, with the zero after them.
    void expectContent(const std::string &content) {
        ASSERT_EQ(bytes.size(), content.size());
        EXPECT_EQ(std::string(reinterpret_cast<const char *>(bytes.data()), bytes.size() + 1),
                  content + std::string(1, '\0'));
    }

    const int live = liveBlocks();
    FileBytes bytes;
};

TEST_F(FileBytesTest, AreTheLastFileWholeAndAZero) {
    for (const std::string &content :
         {std::string("a\0b\r\n\xFF", 6), std::string(), std::string("old")}) {
        writeFile("bytes", content);
        ASSERT_EQ(bytes.read("bytes"), FileBytes::Result::ok);
        expectContent(content);
        expectBlocks(1);
    }
    EXPECT_EQ(bytes.read("nowhere"), FileBytes::Result::notOpened);
    expectContent("old");
    unsigned char *block;
    {
        FileBytes other;
        ASSERT_EQ(other.read("bytes"), FileBytes::Result::ok);
        block = other.release();
        EXPECT_EQ(other.data(), nullptr);
        EXPECT_EQ(other.size(), 0u);
        ASSERT_EQ(other.read("bytes"), FileBytes::Result::ok);
        expectBlocks(3);
    }
    EXPECT_STREQ(reinterpret_cast<const char *>(block), "old");
    expectBlocks(2);
    zlfFree(block);
}

TEST_F(FileBytesTest, SayWhyAFileCannotBeRead) {
    writeFile("bytes", "0123456789");
    for (const char *name : {"nowhere", static_cast<const char *>(nullptr), "."})
        EXPECT_EQ(bytes.read(name), FileBytes::Result::notOpened);
    {
        const ShortReads shortReads;
        EXPECT_EQ(bytes.read("bytes"), FileBytes::Result::shortRead);
    }
    for (const unsigned int seek : {0u, 1u}) { // to the end, and back
        systemFaults.failSeek = seek;
        EXPECT_EQ(bytes.read("bytes"), FileBytes::Result::notOpened) << seek;
    }
    systemFaults.failTell = true;
    EXPECT_EQ(bytes.read("bytes"), FileBytes::Result::notOpened);
    systemFaults = {};
    expectBlocks(0);
    EXPECT_EQ(withoutMemory(11, [&] { return bytes.read("bytes"); }),
              FileBytes::Result::outOfMemory);
    EXPECT_EQ(bytes.data(), nullptr);
    EXPECT_EQ(bytes.size(), 0u);
    expectBlocks(1); // the failed allocation has counted
}

} // namespace
} // namespace ravolt::test
