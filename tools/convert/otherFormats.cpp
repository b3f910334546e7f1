#include "tools/convert/morePictures.h"

#include <cstring>

namespace ravolt::tool {

namespace {

struct Signature {
    std::size_t length;
    const char *bytes;
    const char *format;
};

constexpr Signature signatures[] = {{2, "\x01\xda", "SGI"},
                                    {4, "DDS ", "DDS"},
                                    {4, "II*\0", "TIFF"},
                                    {4, "MM\0*", "TIFF"},
                                    {12, "\0\0\0\x0cjP  \r\n\x87\n", "JP2"},
                                    {4, "\xff\x4f\xff\x51", "J2K"},
                                    {3, "\x0a\x05\x01", "PCX"}};

} // namespace

const char *otherFormatOf(const unsigned char *bytes, std::size_t size) {
    const auto has = [&](std::size_t at, std::size_t length, const char *text) {
        return size >= at + length && std::memcmp(bytes + at, text, length) == 0;
    };
    if (has(0, 4, "RIFF") && has(8, 4, "WEBP"))
        return "WEBP";
    for (const Signature &known : signatures)
        if (has(0, known.length, known.bytes))
            return known.format;
    return nullptr;
}

} // namespace ravolt::tool
