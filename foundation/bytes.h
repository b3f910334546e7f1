#pragma once

// Binary files: the whole file in memory, and a reader that stays within it.

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <type_traits>

namespace ravolt {

// Where and why a file is refused; a reason of NULL for one that is not.
struct FileProblem {
    std::size_t offset = 0;
    const char *reason = nullptr;
};

// Reads little-endian values from a block of memory. A read past the end gives zeros and marks the
// reader as failed for good, so a run of reads needs one test at its end. The block must outlive
// the reader.
class ByteReader {
  public:
    ByteReader(const void *data, std::size_t size, std::size_t position = 0)
        : start(static_cast<const unsigned char *>(data)), end(size), cursor(position) {
        if (cursor > end) {
            cursor = end;
            fail();
        }
    }

    bool ok() const { return !reason; }
    // The first failure: its offset is where the read starts that failed.
    FileProblem problem() const { return {failedAt, reason}; }
    std::size_t position() const { return cursor; }
    std::size_t left() const { return end - cursor; }

    // The next `count` bytes, in place; NULL when fewer are left.
    const unsigned char *take(std::size_t count) {
        if (reason || count > left()) {
            fail();
            return nullptr;
        }
        const unsigned char *bytes = start + cursor;
        cursor += count;
        return bytes;
    }

    void skip(std::size_t count) { take(count); }

    // A number, or a packed structure of floats such as a vector.
    template <class T> T read() {
        static_assert(std::is_trivially_copyable_v<T> || std::is_standard_layout_v<T>);
        T value{};
        if (const unsigned char *bytes = take(sizeof(T)))
            std::memcpy(static_cast<void *>(&value), bytes, sizeof(T));
        return value;
    }

    // A zero-terminated text of at most `maxLength` characters, in place and without its zero, so
    // that data() is a C string. A longer or unterminated one is a failure and reads as empty.
    std::string_view readText(std::size_t maxLength = 255) {
        const std::size_t window = reason ? 0 : (left() < maxLength + 1 ? left() : maxLength + 1);
        const void *zero = window ? std::memchr(start + cursor, 0, window) : nullptr;
        if (!zero) {
            fail(window > maxLength ? "a text that is too long" : endsEarly);
            return std::string_view("", 0);
        }
        const char *text = reinterpret_cast<const char *>(start + cursor);
        const std::size_t length = static_cast<std::size_t>(static_cast<const char *>(zero) - text);
        cursor += length + 1;
        return {text, length};
    }

    static constexpr char endsEarly[] = "it ends early";

    // Marks the reader as failed here, or at a byte that it has returned: what was read is invalid.
    void fail(const char *why = endsEarly) { failAt(cursor, why); }
    void fail(const char *why, const unsigned char *at) {
        failAt(static_cast<std::size_t>(at - start), why);
    }

  private:
    // Only the first failure counts.
    void failAt(std::size_t position, const char *why) {
        if (!reason) {
            reason = why;
            failedAt = position;
        }
        cursor = end;
    }

    const unsigned char *start;
    std::size_t end;
    std::size_t cursor;
    const char *reason = nullptr;
    std::size_t failedAt = 0;
};

// A file read whole into one block from zlfMalloc. Each loader reports a failure in its own words.
class FileBytes {
  public:
    enum class Result { ok, notOpened, outOfMemory, shortRead };

    FileBytes() = default;
    FileBytes(const FileBytes &) = delete;
    FileBytes &operator=(const FileBytes &) = delete;
    ~FileBytes();

    Result read(const char *path);

    // The file's bytes, followed by one zero.
    const unsigned char *data() const { return block; }
    std::size_t size() const { return length; }

    // Transfers the block to the caller, who releases it with zlfFree.
    unsigned char *release();

  private:
    unsigned char *block = nullptr;
    std::size_t length = 0;
};

} // namespace ravolt
