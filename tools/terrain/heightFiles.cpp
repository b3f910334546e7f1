// Detects the format of a height file and decodes its values.

#include "tools/terrain/heightFiles.h"

#include "tools/common/failure.h"
#include "tools/terrain/voids.h"

#include <algorithm>
#include <bit>
#include <cctype>
#include <climits>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <memory>
#include <new>

#define STB_IMAGE_IMPLEMENTATION
#define STB_IMAGE_STATIC
#define STBI_ONLY_PNG
#define STBI_NO_STDIO
#include <stb/stb_image.h>

namespace ravolt::tool::terrain {

namespace {

namespace fs = std::filesystem;
using Bytes = std::vector<unsigned char>;

constexpr unsigned int hgtCoarse = 1201; // values a side of a tile of 3 seconds
constexpr unsigned int hgtFine = 3601;   // of 1 second
constexpr double degreeInMetres = 111120;

Bytes readAll(const fs::path &file) {
    std::error_code error;
    if (fs::is_directory(file, error))
        throw Failure(file.string(), "is a folder");
    std::ifstream stream(file, std::ios::binary);
    if (!stream)
        throw Failure(file.string(), fs::exists(file, error) ? "cannot be opened" : "no such file");
    Bytes bytes;
    constexpr std::size_t part = 1 << 20;
    while (stream) {
        if (bytes.size() > INT_MAX - part)
            throw Failure(file.string(), "is too large");
        const std::size_t size = bytes.size();
        bytes.resize(size + part);
        stream.read(reinterpret_cast<char *>(bytes.data() + size), part);
        bytes.resize(size + static_cast<std::size_t>(stream.gcount()));
    }
    if (stream.bad())
        throw Failure(file.string(), "cannot be read");
    if (bytes.empty())
        throw Failure(file.string(), "is empty");
    return bytes;
}

void checkSides(const fs::path &file, std::uint64_t width, std::uint64_t depth) {
    if (width < 2 || depth < 2 || width > maxHeightsSide || depth > maxHeightsSide)
        throw Failure(file.string(), "has " + std::to_string(width) + " x " +
                                         std::to_string(depth) + " values; 2 to " +
                                         std::to_string(maxHeightsSide) + " a side are possible");
}

template <class Value>
Heights heightsFrom(const Value *values, unsigned int width, unsigned int depth) {
    Heights heights(width, depth);
    std::copy_n(values, heights.values.size(), heights.values.begin());
    return heights;
}

// --- PNG

bool isPng(const Bytes &bytes) {
    return bytes.size() >= 8 && std::memcmp(bytes.data(), "\x89PNG\r\n\x1a\n", 8) == 0;
}

[[noreturn]] void refusePng(const fs::path &file) {
    if (std::strcmp(stbi_failure_reason(), "outofmem") == 0)
        throw std::bad_alloc(); // the picture is as good as any
    throw Failure(file.string(), std::string("is broken (") + stbi_failure_reason() + ")");
}

// Colours count by their brightness.
template <class Value, class Load>
Heights decodePng(const fs::path &file, const Bytes &bytes, Load load) {
    int width = 0, depth = 0, channels = 0;
    const std::unique_ptr<Value, decltype(&stbi_image_free)> values(
        load(bytes.data(), static_cast<int>(bytes.size()), &width, &depth, &channels, 1),
        &stbi_image_free);
    if (!values)
        refusePng(file);
    return heightsFrom(values.get(), static_cast<unsigned int>(width),
                       static_cast<unsigned int>(depth));
}

HeightFile readPng(const fs::path &file, const Bytes &bytes) {
    const int size = static_cast<int>(bytes.size());
    int width = 0, depth = 0, channels = 0;
    if (!isPng(bytes))
        throw Failure(file.string(), "is no PNG picture");
    if (!stbi_info_from_memory(bytes.data(), size, &width, &depth, &channels))
        refusePng(file);
    checkSides(file, static_cast<unsigned int>(width), static_cast<unsigned int>(depth));
    HeightFile result;
    result.coarse = !stbi_is_16_bit_from_memory(bytes.data(), size);
    result.heights = result.coarse ? decodePng<stbi_uc>(file, bytes, stbi_load_from_memory)
                                   : decodePng<stbi_us>(file, bytes, stbi_load_16_from_memory);
    return result;
}

// --- Values of 16 bits

std::uint16_t valueAt(const Bytes &bytes, std::size_t number, bool bigEndian) {
    const unsigned int first = bytes[2 * number], second = bytes[2 * number + 1];
    return static_cast<std::uint16_t>(bigEndian ? first << 8 | second : second << 8 | first);
}

// The side of a square of `values` values; 0 where they make none.
std::uint64_t squareSide(std::uint64_t values) {
    std::uint64_t side = 0;
    for (std::uint64_t bit = 1 << 16; bit; bit >>= 1)
        if ((side + bit) * (side + bit) <= values)
            side += bit;
    return side * side == values ? side : 0;
}

HeightFile readRaw(const fs::path &file, const Bytes &bytes, const HeightFileOptions &options) {
    std::uint64_t width = options.rawWidth, depth = options.rawDepth;
    if (width == 0)
        width = depth = bytes.size() % 2 ? 0 : squareSide(bytes.size() / 2);
    if (width == 0)
        throw Failure(file.string(), "has " + std::to_string(bytes.size()) +
                                         " bytes, which is no square of 16-bit values; state "
                                         "--raw-size");
    checkSides(file, width, depth);
    if (bytes.size() != 2 * width * depth)
        throw Failure(file.string(), "has " + std::to_string(bytes.size()) + " bytes; " +
                                         std::to_string(width) + " x " + std::to_string(depth) +
                                         " values of 16 bits have " +
                                         std::to_string(2 * width * depth));
    HeightFile result;
    result.heights = Heights(static_cast<unsigned int>(width), static_cast<unsigned int>(depth));
    for (std::size_t i = 0; i < result.heights.values.size(); ++i)
        result.heights.values[i] = valueAt(bytes, i, options.bigEndian);
    return result;
}

HeightFile readHgt(const fs::path &file, const Bytes &bytes) {
    constexpr std::int16_t missing = -32768;
    unsigned int side = 0;
    for (const unsigned int known : {hgtCoarse, hgtFine})
        if (bytes.size() == std::size_t(2) * known * known)
            side = known;
    if (side == 0)
        throw Failure(file.string(), "has " + std::to_string(bytes.size()) +
                                         " bytes; an .hgt file has 1201 x 1201 or 3601 x 3601 "
                                         "values of 2 bytes");
    HeightFile result;
    result.heights = Heights(side, side);
    std::vector<bool> known(result.heights.values.size());
    for (std::size_t i = 0; i < known.size(); ++i) {
        const auto value = std::bit_cast<std::int16_t>(valueAt(bytes, i, true));
        known[i] = value != missing;
        result.filled += !known[i];
        result.heights.values[i] = value;
    }
    if (result.filled == known.size())
        throw Failure(file.string(), "has no known height");
    fillVoids(result.heights, known);
    result.stepsPerSample = degreeInMetres / (side - 1);
    return result;
}

// --- Which one it is

HeightFormat formatOf(const fs::path &file, const Bytes &bytes, const HeightFileOptions &options) {
    if (options.format != HeightFormat::automatic)
        return options.format;
    std::string ending = file.extension().string();
    std::transform(ending.begin(), ending.end(), ending.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    if (isPng(bytes))
        return HeightFormat::png;
    if (options.rawWidth || ending == ".raw" || ending == ".r16")
        return HeightFormat::raw;
    if (ending == ".hgt")
        return HeightFormat::hgt;
    throw Failure(file.string(), "is no PNG picture, and its name ends neither in .raw or .r16 nor "
                                 "in .hgt; state --format");
}

} // namespace

HeightFile readHeights(const fs::path &file, const HeightFileOptions &options) {
    const Bytes bytes = readAll(file);
    switch (formatOf(file, bytes, options)) {
    case HeightFormat::raw:
        return readRaw(file, bytes, options);
    case HeightFormat::hgt:
        return readHgt(file, bytes);
    default:
        return readPng(file, bytes);
    }
}

} // namespace ravolt::tool::terrain
