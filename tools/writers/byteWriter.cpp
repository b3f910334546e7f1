// Appends little-endian values to the bytes of a file, and records the first error.

#include "tools/writers/byteWriter.h"

#include "kit/files/wholeFile.h"

#include <cstring>

namespace ravolt {

void ByteWriter::fail(const std::string &where, const std::string &reason) {
    if (ok())
        result.error = where + ": " + reason;
}

void ByteWriter::writeBytes(const void *data, std::size_t size) {
    if (!ok() || !size)
        return;
    const std::size_t end = result.bytes.size();
    result.bytes.resize(end + size);
    std::memcpy(result.bytes.data() + end, data, size);
}

void ByteWriter::writeZeros(std::size_t size) {
    if (ok())
        result.bytes.resize(result.bytes.size() + size);
}

void ByteWriter::writeCount(const std::string &where, std::size_t count, std::size_t maximum,
                            const char *what) {
    if (count > maximum)
        fail(where, std::to_string(count) + " " + what + ", at most " + std::to_string(maximum));
    const std::uint16_t number = static_cast<std::uint16_t>(count);
    writeBytes(&number, sizeof(number));
}

void ByteWriter::writeText(const std::string &where, const std::string &text) {
    if (text.size() > writtenTextLength)
        fail(where, "a text of " + std::to_string(text.size()) + " characters, at most " +
                        std::to_string(writtenTextLength));
    if (text.find('\0') != std::string::npos)
        fail(where, "a text with a zero byte in it");
    writeBytes(text.c_str(), text.size() + 1);
}

WrittenBytes ByteWriter::take() {
    if (!ok())
        result.bytes.clear();
    return std::move(result);
}

std::string writeFile(const std::string &path, const WrittenBytes &written) {
    if (!written.ok())
        return written.error;
    return writeWholeFile(path, written.bytes);
}

} // namespace ravolt
