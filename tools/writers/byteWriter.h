#pragma once

// What the writers of binary formats share. Everything is little-endian and packed. A file is
// checked while it is written; after the first error every function does nothing.

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace ravolt {

// Either the bytes of the file or, with no bytes, one line with the error.
struct WrittenBytes {
    std::vector<unsigned char> bytes;
    std::string error;
    bool ok() const { return error.empty(); }
};

constexpr std::size_t writtenTextLength = 255; // characters of any text

class ByteWriter {
  public:
    bool ok() const { return result.ok(); }

    // `where` names the object with the error.
    void fail(const std::string &where, const std::string &reason);

    void writeBytes(const void *data, std::size_t size);
    void writeZeros(std::size_t size);
    void writeByte(std::uint8_t number) { writeBytes(&number, sizeof(number)); }
    void writeFloat(float number) { writeBytes(&number, sizeof(number)); }

    template <class Item> void writeArray(const std::vector<Item> &items) {
        writeBytes(items.data(), items.size() * sizeof(Item));
    }

    template <std::size_t N> void writeFloats(const std::array<float, N> &numbers) {
        writeBytes(numbers.data(), sizeof(numbers));
    }

    // As 16 bits. More than `maximum` of `what`, which is at most 65535, is an error.
    void writeCount(const std::string &where, std::size_t count, std::size_t maximum,
                    const char *what);

    // With a terminating zero. More than writtenTextLength characters, or a zero among them, is an
    // error.
    void writeText(const std::string &where, const std::string &text);

    // Returns the bytes and ends the writing.
    WrittenBytes take();

  private:
    WrittenBytes result;
};

// Returns the error, or an empty text. A file that cannot be written completely is unchanged.
std::string writeFile(const std::string &path, const WrittenBytes &written);

} // namespace ravolt
