#pragma once

// TGA files for the tests, made byte by byte.

#include "tests/support/files.h"

#include <cstdint>

namespace ravolt::test {

constexpr unsigned int plainType = 2, packedType = 10;
constexpr std::size_t tgaHeaderSize = 18;

inline Bytes tgaHeader(unsigned int type, unsigned int width, unsigned int height,
                       unsigned int bits, unsigned int descriptor = 0) {
    Bytes header(12);
    header[2] = static_cast<unsigned char>(type);
    for (const unsigned int number : {width, height}) {
        header.push_back(static_cast<unsigned char>(number));
        header.push_back(static_cast<unsigned char>(number >> 8));
    }
    header.push_back(static_cast<unsigned char>(bits));
    header.push_back(static_cast<unsigned char>(descriptor));
    return header;
}

inline Bytes repeated(std::size_t times, const Bytes &bytes) {
    Bytes all;
    for (; times > 0; --times)
        all.insert(all.end(), bytes.begin(), bytes.end());
    return all;
}

// Bytes that differ from their neighbours and from row to row.
inline Bytes pattern(std::size_t size) {
    Bytes bytes(size);
    std::uint32_t state = 12345;
    for (unsigned char &byte : bytes) {
        state = state * 1664525u + 1013904223u;
        byte = static_cast<unsigned char>(state >> 24);
    }
    return bytes;
}

// A plain file of one colour, 24 bits.
inline Bytes plainTga(unsigned int width, unsigned int height, unsigned char red = 10,
                      unsigned char green = 20, unsigned char blue = 30) {
    return tgaHeader(plainType, width, height, 24) +
           repeated(std::size_t(width) * height, {blue, green, red});
}

} // namespace ravolt::test
