// Packets of run-length files end with the row, as the format requires.

#include "tools/writers/tgaWriter.h"

#include "kit/files/wholeFile.h"
#include "resources/tgaFormat.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace ravolt {

namespace {

using Bytes = std::vector<unsigned char>;

void writeNumber(Bytes &file, unsigned int number, unsigned int bytes) {
    for (; bytes > 0; --bytes, number >>= 8)
        file.push_back(static_cast<unsigned char>(number));
}

void writeHeader(Bytes &file, const TgaPicture &picture, TgaEncoding encoding) {
    writeNumber(file, 0, 2);
    writeNumber(file, encoding == TgaEncoding::runLength ? tga::runLength : tga::uncompressed, 1);
    file.resize(file.size() + 9);
    writeNumber(file, picture.width, 2);
    writeNumber(file, picture.height, 2);
    writeNumber(file, picture.channels * 8, 1);
    writeNumber(file,
                (picture.topRowFirst ? tga::topLeftOrigin : 0) +
                    (picture.channels == 4 ? tga::alphaBits : 0),
                1);
}

// A row of pixels, and what its packets need.
struct Row {
    const unsigned char *pixels;
    unsigned int width;
    unsigned int channels;

    const unsigned char *at(unsigned int x) const {
        return pixels + static_cast<std::size_t>(x) * channels;
    }

    // How many pixels from x on equal the one at x, that one included, in one packet.
    unsigned int equalFrom(unsigned int x) const {
        unsigned int count = 1;
        while (x + count < width && count < tga::maxPacket &&
               std::memcmp(at(x), at(x + count), channels) == 0)
            ++count;
        return count;
    }

    // How many pixels from x on precede the next two equal neighbours, at least one.
    unsigned int literalFrom(unsigned int x) const {
        unsigned int count = 1;
        while (x + count < width && count < tga::maxPacket && equalFrom(x + count) == 1)
            ++count;
        return count;
    }

    void writePixel(Bytes &file, unsigned int x) const {
        const unsigned char *pixel = at(x);
        file.insert(file.end(), {pixel[2], pixel[1], pixel[0]});
        if (channels == 4)
            file.push_back(pixel[3]);
    }

    void writePixels(Bytes &file, unsigned int x, unsigned int count) const {
        for (; count > 0; --count, ++x)
            writePixel(file, x);
    }

    void writePackets(Bytes &file) const {
        for (unsigned int x = 0; x < width;) {
            const unsigned int equal = equalFrom(x);
            const unsigned int count = equal > 1 ? equal : literalFrom(x);
            writeNumber(file, count - 1 + (equal > 1 ? tga::repeatFlag : 0), 1);
            writePixels(file, x, equal > 1 ? 1 : count);
            x += count;
        }
    }
};

} // namespace

Bytes encodeTga(const TgaPicture &picture, TgaEncoding encoding) {
    Bytes file;
    writeHeader(file, picture, encoding);
    const std::size_t rowSize = static_cast<std::size_t>(picture.width) * picture.channels;
    for (unsigned int y = 0; y < picture.height; ++y) {
        const Row row{picture.pixels + y * rowSize, picture.width, picture.channels};
        if (encoding == TgaEncoding::runLength)
            row.writePackets(file);
        else
            row.writePixels(file, 0, picture.width);
    }
    return file;
}

bool writeTga(const std::string &path, const TgaPicture &picture, TgaEncoding encoding) {
    return writeWholeFile(path, encodeTga(picture, encoding)).empty();
}

} // namespace ravolt
