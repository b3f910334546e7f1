// Invariants: a file is looked through once before anything is made of it, so that a bad one costs
// nothing; decoding then needs no test of either end.

#include "resources/tga.h"

#include "resources/tgaFormat.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace ravolt {

namespace {

using tga::repeatFlag;

constexpr unsigned char uncompressedKind[tga::kindBytes] = {0, 0, tga::uncompressed};
constexpr unsigned char runLengthKind[tga::kindBytes] = {0, 0, tga::runLength};
// On purpose: any of the upper four bits of the descriptor counts as an origin at the top.
constexpr unsigned int smallestTopDescriptor = 16;

TgaKind kindOf(const unsigned char *header) {
    if (std::memcmp(header, uncompressedKind, tga::kindBytes) == 0)
        return TgaKind::uncompressed;
    if (std::memcmp(header, runLengthKind, tga::kindBytes) == 0)
        return TgaKind::runLength;
    return TgaKind::unsupported;
}

bool isSupportedSize(unsigned int size) { return size >= 1 && size <= tga::maxSize; }

// The pixels that a packet encodes; its byte below 128 announces that many and one literal ones.
std::size_t packetPixels(unsigned int packet) {
    return packet < repeatFlag ? packet + 1 : packet - (repeatFlag - 1);
}

// Whether the packets end exactly with the image, and the file not before them.
void skipPackets(ByteReader &body, const TgaImage &image) {
    for (std::size_t left = image.pixels(); left > 0 && body.ok();) {
        const unsigned char *const start = body.take(1);
        const unsigned int packet = start ? *start : 0;
        const std::size_t count = packetPixels(packet);
        body.skip((packet < repeatFlag ? count : 1) * image.depth);
        if (count > left)
            body.fail("a packet that is longer than the rest of the image", start);
        left -= std::min(count, left);
    }
}

// The reader fails where the body is not good.
void skipBody(ByteReader &body, const TgaImage &image) {
    switch (image.kind) {
    case TgaKind::uncompressed:
        body.skip(image.bytes());
        break;
    case TgaKind::runLength:
        skipPackets(body, image);
        break;
    case TgaKind::unsupported:
        break;
    }
}

TgaResult readImage(ByteReader &reader, TgaImage &image) {
    const unsigned char *kind = reader.take(tga::kindBytes);
    const unsigned char *sizes = reader.take(0);
    image.width = reader.read<std::uint16_t>();
    image.height = reader.read<std::uint16_t>();
    const unsigned int bits = reader.read<std::uint8_t>();
    const unsigned int descriptor = reader.read<std::uint8_t>();
    if (!reader.ok())
        return TgaResult::corrupted;

    if ((bits != 24 && bits != 32) || !isSupportedSize(image.width) ||
        !isSupportedSize(image.height)) {
        reader.fail("neither 24 nor 32 bits a pixel, or a side of 0 or more than 4096 pixels",
                    sizes);
        return TgaResult::unsupportedDepthOrSizes;
    }
    image.depth = bits / 8;
    image.reverseRows = descriptor >= smallestTopDescriptor;
    image.kind = kindOf(kind);
    image.body = kind + reader.position();
    skipBody(reader, image);
    return reader.ok() ? TgaResult::ok : TgaResult::corrupted;
}

// Files store blue before red.
template <unsigned int depth> void decodePixel(const unsigned char *from, unsigned char *to) {
    to[0] = from[2];
    to[1] = from[1];
    to[2] = from[0];
    if constexpr (depth == 4)
        to[3] = from[3];
}

template <unsigned int depth>
const unsigned char *decodeLiterals(const unsigned char *from, unsigned char *to,
                                    std::size_t count) {
    for (; count > 0; --count, from += depth, to += depth)
        decodePixel<depth>(from, to);
    return from;
}

template <unsigned int depth>
const unsigned char *decodePacket(const unsigned char *from, unsigned char *to) {
    const unsigned int packet = *from++;
    std::size_t count = packetPixels(packet);
    if (packet < repeatFlag)
        return decodeLiterals<depth>(from, to, count);
    for (; count > 0; --count, to += depth)
        decodePixel<depth>(from, to);
    return from + depth;
}

template <unsigned int depth> void decodeBody(const TgaImage &image, unsigned char *to) {
    if (image.kind == TgaKind::uncompressed) {
        decodeLiterals<depth>(image.body, to, image.pixels());
        return;
    }
    const unsigned char *end = to + image.bytes();
    for (const unsigned char *from = image.body; to < end;) {
        const std::size_t written = packetPixels(*from) * depth;
        from = decodePacket<depth>(from, to);
        to += written;
    }
}

void reverseRows(const TgaImage &image, unsigned char *pixels) {
    const std::size_t row = std::size_t(image.width) * image.depth;
    for (unsigned int low = 0; low < image.height / 2; ++low) {
        unsigned char *first = pixels + low * row;
        std::swap_ranges(first, first + row, pixels + (image.height - 1 - low) * row);
    }
}

} // namespace

TgaResult inspectTga(const void *file, std::size_t size, TgaImage &image, FileProblem *problem) {
    ByteReader reader(file, size);
    const TgaResult result = readImage(reader, image);
    if (problem)
        *problem = reader.problem();
    return result;
}

void decodeTga(const TgaImage &image, unsigned char *pixels) {
    if (image.depth == 3)
        decodeBody<3>(image, pixels);
    else
        decodeBody<4>(image, pixels);
    if (image.reverseRows)
        reverseRows(image, pixels);
}

} // namespace ravolt
