// Encodes PNG pictures of heights.

#include "tests/tools/heightPictures.h"

#include <algorithm>
#include <cstdint>

namespace terrain_test {

namespace {

std::string bigEndian(std::uint32_t number, int bytes = 4) {
    std::string text;
    while (bytes-- > 0)
        text += static_cast<char>(number >> 8 * bytes & 255);
    return text;
}

std::uint32_t crcOf(const std::string &data) {
    std::uint32_t crc = 0xffffffff;
    for (const char c : data) {
        crc ^= static_cast<unsigned char>(c);
        for (int bit = 0; bit < 8; ++bit)
            crc = crc & 1 ? crc >> 1 ^ 0xedb88320u : crc >> 1;
    }
    return ~crc;
}

std::uint32_t adlerOf(const std::string &data) {
    std::uint32_t a = 1, b = 0;
    for (const char c : data) {
        a = (a + static_cast<unsigned char>(c)) % 65521;
        b = (b + a) % 65521;
    }
    return b << 16 | a;
}

std::string chunk(const std::string &kind, const std::string &data) {
    return bigEndian(static_cast<std::uint32_t>(data.size())) + kind + data +
           bigEndian(crcOf(kind + data));
}

std::string stored(const std::string &data) {
    std::string stream = "\x78\x01";
    constexpr std::size_t longest = 65535;
    for (std::size_t at = 0; at < data.size(); at += longest) {
        const std::string part = data.substr(at, longest);
        const auto size = static_cast<std::uint32_t>(part.size());
        stream += at + longest >= data.size() ? '\1' : '\0';
        for (const std::uint32_t length : {size, ~size}) {
            stream += static_cast<char>(length & 255);
            stream += static_cast<char>(length >> 8 & 255);
        }
        stream += part;
    }
    return stream + bigEndian(adlerOf(data));
}

} // namespace

std::string pngOf(unsigned int width, unsigned int bits, const std::vector<unsigned int> &values) {
    std::string rows;
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (i % width == 0)
            rows += '\0'; // no filter
        rows += bigEndian(values[i], static_cast<int>(bits / 8));
    }
    const auto depth = static_cast<std::uint32_t>(values.size() / width);
    return "\x89PNG\r\n\x1a\n" +
           chunk("IHDR", bigEndian(width) + bigEndian(depth) + static_cast<char>(bits) +
                             std::string(4, '\0')) +
           chunk("IDAT", stored(rows)) + chunk("IEND", "");
}

} // namespace terrain_test
