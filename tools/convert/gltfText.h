#pragma once

// The JSON of a glTF file, be it a text or a binary file.

#include <cstddef>
#include <filesystem>
#include <string>

namespace ravolt::tool {

class GltfText {
  public:
    // In bytes; all of it is in memory, several times if it is changed.
    static constexpr std::size_t maxFileSize = std::size_t(512) << 20;

    // Without a text if the file is too large, or is no regular file, which can be read only once.
    explicit GltfText(const std::filesystem::path &file);

    bool isTooLarge() const { return tooLarge; }
    const std::string &json() const { return text; }
    // The whole file with other JSON.
    std::string with(const std::string &json) const;

  private:
    std::string header, text, rest; // a text file has but the text
    bool tooLarge = false;
};

} // namespace ravolt::tool
