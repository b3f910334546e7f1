// Reads a whole file into memory, in one block that its owner can take over.

#include "foundation/bytes.h"

#include "foundation/platform.h"
#include "ravolt/zlf.h"

#include <cstdio>
#include <utility>

namespace ravolt {

FileBytes::~FileBytes() {
    if (block)
        zlfFree(block);
}

FileBytes::Result FileBytes::read(const char *path) {
    const File file = platform::openForReading(path);
    if (!file || std::fseek(file.get(), 0, SEEK_END) != 0)
        return Result::notOpened;
    const long end = std::ftell(file.get());
    if (end < 0 || std::fseek(file.get(), 0, SEEK_SET) != 0)
        return Result::notOpened;

    const std::size_t wanted = static_cast<std::size_t>(end);
    unsigned char *bytes = static_cast<unsigned char *>(zlfMalloc(wanted + 1));
    if (!bytes)
        return Result::outOfMemory;
    bytes[wanted] = 0;
    if (std::fread(bytes, 1, wanted, file.get()) != wanted) {
        zlfFree(bytes);
        return Result::shortRead;
    }
    if (block)
        zlfFree(block);
    block = bytes;
    length = wanted;
    return Result::ok;
}

unsigned char *FileBytes::release() {
    length = 0;
    return std::exchange(block, nullptr);
}

} // namespace ravolt
