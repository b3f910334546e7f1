// Reads and writes the JSON chunk of text and binary glTF files.

#include "tools/convert/gltfText.h"

#include <cstdint>
#include <cstring>
#include <fstream>
#include <iterator>

namespace ravolt::tool {

namespace {

// "glTF", a version and the length of the file; then the length of the JSON and its kind.
constexpr std::size_t headerSize = 20, fileLengthAt = 8, jsonLengthAt = 12;

} // namespace

GltfText::GltfText(const std::filesystem::path &file) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(file, error))
        return;
    const std::uintmax_t size = std::filesystem::file_size(file, error);
    tooLarge = !error && size > maxFileSize;
    if (error || tooLarge)
        return;
    std::ifstream stream(file, std::ios::binary);
    text.assign(std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>());
    if (text.size() < headerSize || text.compare(0, 4, "glTF") != 0)
        return;
    std::uint32_t length = 0;
    std::memcpy(&length, text.data() + jsonLengthAt, sizeof length);
    header = text.substr(0, headerSize);
    if (length < text.size() - headerSize)
        rest = text.substr(headerSize + length);
    text = text.substr(headerSize, length);
}

std::string GltfText::with(const std::string &json) const {
    if (header.empty())
        return json;
    const std::string padded = json + std::string((4 - json.size() % 4) % 4, ' ');
    std::string whole = header + padded + rest;
    const auto setNumber = [&](std::size_t offset, std::size_t number) {
        const auto value = static_cast<std::uint32_t>(number);
        std::memcpy(whole.data() + offset, &value, sizeof value);
    };
    setNumber(fileLengthAt, whole.size());
    setNumber(jsonLengthAt, padded.size());
    return whole;
}

} // namespace ravolt::tool
