#include "foundation/bytes.h"

#include "ravolt/Z3MMATRIX.h"
#include "tests/foundation/ownLog.h"

#include <limits>

namespace ravolt::test {
namespace {

TEST(ByteReader, ReadsLittleEndianNumbersInTurn) {
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
    for (int i = 0; i < 19; ++i)
        floats[i] = static_cast<float>(i);
    ByteReader reader(floats, sizeof floats);
    EXPECT_EQ(reader.read<Z3MVECTOR3D>(), Z3MVECTOR3D(0, 1, 2));
    EXPECT_EQ(reader.read<Z3MMATRIX>().e[15], 18.0f);
    EXPECT_TRUE(reader.ok());
    EXPECT_EQ(reader.read<Z3MVECTOR4D>(), Z3MVECTOR4D()) << "past the end: a default value";
    EXPECT_FALSE(reader.ok());
}

TEST(ByteReader, AReadAcrossTheEndFailsForGood) {
    const unsigned char bytes[] = {1, 2, 3};
    ByteReader reader(bytes, sizeof bytes);
    EXPECT_EQ(reader.read<std::uint32_t>(), 0u);
    EXPECT_FALSE(reader.ok());
    EXPECT_EQ(reader.left(), 0u);
    EXPECT_EQ(reader.read<std::uint8_t>(), 0) << "also what would have fitted";
    EXPECT_EQ(reader.take(0), nullptr);
    EXPECT_EQ(reader.readText(), "");
}

TEST(ByteReader, TakesBlocksUpToTheEndAndNoFurther) {
    const unsigned char bytes[] = {1, 2, 3};
    for (std::size_t count = 0; count <= 3; ++count) {
        ByteReader reader(bytes, sizeof bytes);
        EXPECT_EQ(reader.take(count), bytes);
        EXPECT_EQ(reader.position(), count);
        EXPECT_EQ(reader.take(3 - count), bytes + count);
        EXPECT_EQ(reader.take(0), bytes + 3);
        EXPECT_TRUE(reader.ok());
    }
    for (const std::size_t count : {std::size_t{4}, std::numeric_limits<std::size_t>::max()}) {
        ByteReader reader(bytes, sizeof bytes);
        EXPECT_EQ(reader.take(count), nullptr);
        EXPECT_FALSE(reader.ok());
    }
}

TEST(ByteReader, SkipsLikeItTakes) {
    const unsigned char bytes[] = {1, 2, 3};
    ByteReader reader(bytes, sizeof bytes);
    reader.skip(2);
    EXPECT_EQ(reader.read<std::uint8_t>(), 3);
    reader.skip(1);
    EXPECT_FALSE(reader.ok());
}

TEST(ByteReader, StartsAtAnyPosition) {
    const unsigned char bytes[] = {1, 2, 3};
    EXPECT_EQ(ByteReader(bytes, 3, 2).read<std::uint8_t>(), 3);
    EXPECT_TRUE(ByteReader(bytes, 3, 3).ok());
    EXPECT_FALSE(ByteReader(bytes, 3, 4).ok());
    EXPECT_TRUE(ByteReader(nullptr, 0).ok());
    ByteReader nothing(nullptr, 0);
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

TEST(ByteReader, ATextWithoutAZeroFails) {
    const char bytes[] = {'a', 'b', 'c'};
    ByteReader reader(bytes, sizeof bytes);
    EXPECT_STREQ(reader.readText().data(), "");
    EXPECT_FALSE(reader.ok());
}

TEST(ByteReader, ATextIsNoLongerThanItMayBe) {
    const std::string text(255, 'x'), longer(256, 'x');
    ByteReader fits(text.c_str(), text.size() + 1);
    EXPECT_EQ(fits.readText(), text);
    EXPECT_TRUE(fits.ok());
    ByteReader tooLong(longer.c_str(), longer.size() + 1);
    EXPECT_EQ(tooLong.readText(), "");
    EXPECT_FALSE(tooLong.ok());
    ByteReader bounded("abc", 4);
    EXPECT_EQ(bounded.readText(3), "abc");
    ByteReader tooBounded("abc", 4);
    EXPECT_EQ(tooBounded.readText(2), "");
    EXPECT_FALSE(tooBounded.ok());
}

TEST(ByteReader, CanBeGivenUp) {
    const unsigned char bytes[] = {1, 2, 3};
    ByteReader reader(bytes, sizeof bytes);
    reader.fail();
    EXPECT_FALSE(reader.ok());
    EXPECT_EQ(reader.read<std::uint8_t>(), 0);
}

TEST(FileBytes, AreTheWholeFileAndAZero) {
    const std::string content("a\0b\r\n\xFF", 6);
    writeFile("bytes", content);
    const int live = liveBlocks();
    {
        FileBytes bytes;
        ASSERT_EQ(bytes.read("bytes"), FileBytes::Result::ok);
        ASSERT_EQ(bytes.size(), 6u);
        EXPECT_EQ(std::string(reinterpret_cast<const char *>(bytes.data()), 7),
                  content + std::string(1, '\0'));
        EXPECT_EQ(liveBlocks(), live + 1);
    }
    EXPECT_EQ(liveBlocks(), live);
}

TEST(FileBytes, OfAnEmptyFileAreNone) {
    writeFile("bytes", "");
    FileBytes bytes;
    ASSERT_EQ(bytes.read("bytes"), FileBytes::Result::ok);
    EXPECT_EQ(bytes.size(), 0u);
    EXPECT_EQ(bytes.data()[0], 0);
}

TEST(FileBytes, SayWhyAFileCannotBeRead) {
    writeFile("bytes", "0123456789");
    const int live = liveBlocks();
    FileBytes bytes;
    EXPECT_EQ(bytes.read("nowhere"), FileBytes::Result::notOpened);
    EXPECT_EQ(bytes.read(nullptr), FileBytes::Result::notOpened);
    EXPECT_EQ(bytes.read("."), FileBytes::Result::notOpened);
    systemFaults.shortRead = true;
    EXPECT_EQ(bytes.read("bytes"), FileBytes::Result::shortRead);
    EXPECT_EQ(liveBlocks(), live);
    systemFaults = {};
    systemFaults.failMallocOf = 11;
    EXPECT_EQ(bytes.read("bytes"), FileBytes::Result::outOfMemory);
    systemFaults = {};
    EXPECT_EQ(bytes.data(), nullptr);
    EXPECT_EQ(bytes.size(), 0u);
    EXPECT_EQ(liveBlocks(), live + 1) << "the failed allocation has counted";
}

TEST(FileBytes, KeepTheOldFileWhenTheNextCannotBeRead) {
    writeFile("bytes", "old");
    FileBytes bytes;
    ASSERT_EQ(bytes.read("bytes"), FileBytes::Result::ok);
    EXPECT_EQ(bytes.read("nowhere"), FileBytes::Result::notOpened);
    EXPECT_EQ(bytes.size(), 3u);
    EXPECT_EQ(bytes.data()[0], 'o');
}

TEST(FileBytes, ReleaseTheOldFileForTheNext) {
    writeFile("bytes", "old");
    writeFile("more bytes", "newer");
    const int live = liveBlocks();
    FileBytes bytes;
    ASSERT_EQ(bytes.read("bytes"), FileBytes::Result::ok);
    ASSERT_EQ(bytes.read("more bytes"), FileBytes::Result::ok);
    EXPECT_EQ(bytes.size(), 5u);
    EXPECT_EQ(liveBlocks(), live + 1);
}

TEST(FileBytes, CanBeHandedOver) {
    writeFile("bytes", "abc");
    const int live = liveBlocks();
    unsigned char *block;
    {
        FileBytes bytes;
        ASSERT_EQ(bytes.read("bytes"), FileBytes::Result::ok);
        block = bytes.release();
        EXPECT_EQ(bytes.data(), nullptr);
        EXPECT_EQ(bytes.size(), 0u);
    }
    EXPECT_STREQ(reinterpret_cast<const char *>(block), "abc");
    EXPECT_EQ(liveBlocks(), live + 1);
    zlfFree(block);
}

} // namespace
} // namespace ravolt::test
