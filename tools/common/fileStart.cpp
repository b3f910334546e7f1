#include "tools/common/fileStart.h"

#include "tools/common/failure.h"

#include <fstream>
#include <system_error>

namespace ravolt::tool {

namespace fs = std::filesystem;

void requireRegularFile(const fs::path &file) {
    std::error_code error;
    if (!fs::exists(file, error))
        throw Failure(file.string(), "no such file");
    if (!fs::is_regular_file(file, error))
        throw Failure(file.string(), "is no regular file");
}

std::string startOf(const fs::path &file, std::size_t bytes) {
    requireRegularFile(file);
    std::ifstream stream(file, std::ios::binary);
    if (!stream)
        throw Failure(file.string(), "cannot be read");
    std::string start(bytes, '\0');
    stream.read(start.data(), static_cast<std::streamsize>(start.size()));
    start.resize(static_cast<std::size_t>(stream.gcount()));
    return start;
}

bool isXml(std::string_view text) {
    constexpr std::string_view mark = "\xef\xbb\xbf"; // of UTF-8
    const std::size_t first =
        text.find_first_not_of(blanks, text.starts_with(mark) ? mark.size() : 0);
    return first != text.npos && text[first] == '<';
}

} // namespace ravolt::tool
