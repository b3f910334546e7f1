#pragma once

// A small reader of terrains' geometry files, from the description of the format alone: it shares
// nothing with the writer.

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace terrain_test {

using Indices = std::vector<std::uint16_t>;

struct Level {
    Indices body;
    Indices coarse[4][4], same[4][4]; // by corner variant and edge
};

struct Vertex {
    std::array<float, 3> position, weights, tangent;
};

struct Chunk {
    unsigned int gridX = 0, gridY = 0;
    float minHeight = 0, maxHeight = 0;
    std::array<unsigned int, 4> neighbours{};
    std::vector<Vertex> vertices;

    std::array<float, 3> center(const struct File &file) const;
};

struct File {
    unsigned int chunkSize = 0, sizeX = 0, sizeY = 0, numberOfLevels = 0;
    float scale = 0;
    std::vector<Level> levels;
    std::vector<std::array<float, 2>> coords;
    std::vector<Chunk> chunks;
    std::size_t bytesAfterwards = 0;

    const Vertex &at(const Chunk &chunk, unsigned int i, unsigned int j) const {
        return chunk.vertices[j * chunkSize + i];
    }
};

// Throws std::out_of_range for a file that ends early.
File parse(const std::string &bytes);

// All texts of an element in an XML file, in their order.
std::vector<std::string> textsOf(const std::string &xml, const std::string &element);

// What the engine's program makes of a layer's vertex: light in the frame of the vertex, against a
// normal of the map. From -1 to 1.
double lambert(const Vertex &vertex, const std::array<double, 3> &mapNormal,
               const std::array<double, 3> &light);

} // namespace terrain_test
