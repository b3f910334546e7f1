#pragma once

// What the writers of binary formats share. Everything is little-endian and packed. A file is
// checked while it is written; the first error ends the work, since every putter does nothing
// after one.

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace ravolt {

// Either the bytes of the file or, with no bytes, one line that says what is wrong.
struct WrittenBytes {
    std::vector<unsigned char> bytes;
    std::string error;
    bool ok() const { return error.empty(); }
};

constexpr std::size_t writtenTextLength = 255; // characters of any text

class ByteWriter {
  public:
    bool ok() const { return result.ok(); }

    // `where` names the thing that is wrong.
    void fail(const std::string &where, const std::string &reason);

    void put(const void *data, std::size_t size);
    void putZeros(std::size_t size);
    void putByte(std::uint8_t number) { put(&number, sizeof(number)); }
    void putFloat(float number) { put(&number, sizeof(number)); }

    template <class Item> void putArray(const std::vector<Item> &items) {
        put(items.data(), items.size() * sizeof(Item));
    }

    template <std::size_t N> void putFloats(const std::array<float, N> &numbers) {
        put(numbers.data(), sizeof(numbers));
    }

    // As 16 bits. More than `most` of `what`, which is at most 65535, is an error.
    void putCount(const std::string &where, std::size_t count, std::size_t maximum,
                  const char *what);

    // With a terminating zero. More than writtenTextLength characters, or a zero among them, is an
    // error.
    void putText(const std::string &where, const std::string &text);

    // Ends the work.
    WrittenBytes take();

  private:
    WrittenBytes result;
};

// What is wrong, or an empty text. A file that cannot be written whole stays as it was.
std::string writeFile(const std::string &path, const WrittenBytes &written);

} // namespace ravolt
