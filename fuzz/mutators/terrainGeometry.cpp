// The mutator of terrain geometries: after each mutation it makes the sizes small and the file as
// long as its header says, without which no reader gets past the header.

#include "effects/terrainGeometry.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

using namespace ravolt;

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t *data, std::size_t size, std::size_t maxSize);

namespace {

void limit(RVTERRAIN_HEADER &header) {
    const auto chunks = [&](unsigned short vertices) {
        const int cells = header.chunkSize - 1;
        return static_cast<unsigned short>(cells * (1 + vertices % 3) + 1);
    };
    header.chunkSize = static_cast<unsigned short>(2 + header.chunkSize % 6);
    header.terrainSizeX = chunks(header.terrainSizeX);
    header.terrainSizeY = chunks(header.terrainSizeY);
    header.levels = static_cast<unsigned char>(1 + header.levels % 4);
}

// Most indices are those of vertices.
void limitIndices(std::uint8_t *data, const RVTERRAIN_HEADER &header, std::size_t end) {
    const unsigned int vertices = header.chunkSize * header.chunkSize;
    const std::size_t coordinates = vertices * 2 * sizeof(float);
    const std::size_t lists = terrainChunkOffset(header, 0) - coordinates;
    for (std::size_t offset = sizeof header; offset + 2 <= std::min(lists, end); offset += 2) {
        std::uint16_t index = 0;
        std::memcpy(&index, data + offset, sizeof index);
        index = static_cast<std::uint16_t>(index % vertices);
        std::memcpy(data + offset, &index, sizeof index);
    }
}

} // namespace

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t *data, std::size_t size,
                                               std::size_t maxSize, unsigned int seed) {
    size = LLVMFuzzerMutate(data, size, maxSize);
    RVTERRAIN_HEADER header;
    if (seed % 8 == 0 || size < sizeof header)
        return size;
    std::memcpy(&header, data, sizeof header);
    limit(header);
    const std::uint64_t chunks =
        std::uint64_t{(header.terrainSizeX - 1u) / (header.chunkSize - 1u)} *
        ((header.terrainSizeY - 1u) / (header.chunkSize - 1u));
    const std::uint64_t bytes = terrainChunkOffset(header, chunks) + 1; // with the switches
    if (bytes > maxSize)
        return size;
    std::memcpy(data, &header, sizeof header);
    if (bytes > size)
        std::memset(data + size, 0, bytes - size);
    if (seed % 4)
        limitIndices(data, header, bytes);
    return bytes;
}
