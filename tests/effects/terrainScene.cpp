// Writes the files of a small terrain: its index lists, heights and configuration.

#include "tests/effects/terrainScene.h"

#include "ravolt/RVTERRAIN.h"
#include "ravolt/RVWATER.h"
#include "tests/resources/tgaFiles.h"

#include <algorithm>
#include <cstdint>

#include <gtest/gtest.h>

namespace ravolt::test {

TerrainFile::TerrainFile(const TerrainShape &wanted) : shape(wanted) {
    add(static_cast<std::uint16_t>(shape.side));
    add(static_cast<std::uint16_t>(shape.rows * (shape.side - 1) + 1));
    add(static_cast<std::uint16_t>(shape.columns * (shape.side - 1) + 1));
    add(std::uint16_t{0xeeee}); // not read
    add(shape.scale);
    add(~std::uint64_t{0}); // not read
    add(std::uint32_t{0xeeeeee00} | shape.levels);
    for (unsigned int level = 0; level < shape.levels; ++level)
        addLists(level);
    addCoords();
    for (unsigned int row = 0; row < shape.rows; ++row)
        for (unsigned int column = 0; column < shape.columns; ++column)
            addChunk(column, row);
}

std::size_t TerrainFile::list(std::size_t number) const {
    std::size_t offset = terrainHeaderBytes;
    for (std::size_t before = 0; before < number; ++before)
        offset += lists[before].size() * sizeof(unsigned short);
    return offset;
}

std::size_t TerrainFile::chunk(std::size_t number) const {
    return coords() + verticesOfChunk() * 8 +
           number * (chunkHeaderBytes + verticesOfChunk() * terrainVertexSize);
}

void TerrainFile::addList(const std::vector<unsigned short> &numbers) {
    for (const unsigned short number : numbers)
        add(number);
    lists.push_back(numbers);
}

void TerrainFile::addLists(unsigned int level) {
    const unsigned int step = 1u << level, cells = (shape.side - 1) / step;
    addList(bodyOf(cells, step, level + 1 == shape.levels));
    for (int corner = 0; corner < 4; ++corner)
        for (const bool coarse : {true, false})
            for (unsigned int edge = 0; edge < 4; ++edge)
                addList(edgeOf(edge, cells, step, coarse));
}

// Rows of cells, each a strip, joined by repeating the last number of one and the first of the
// next. Only the last level has the cells at the rim.
std::vector<unsigned short> TerrainFile::bodyOf(unsigned int cells, unsigned int step,
                                                bool last) const {
    std::vector<unsigned short> list;
    const unsigned int first = last ? 0 : 1;
    if (cells < 2 * first + 1)
        return list;
    const unsigned int end = cells - first;
    for (unsigned int row = first; row < end; ++row)
        for (unsigned int column = first; column <= end; ++column) {
            const auto upper = static_cast<unsigned short>((row * shape.side + column) * step);
            const auto lower =
                static_cast<unsigned short>(((row + 1) * shape.side + column) * step);
            if (column == first && row > first)
                list.insert(list.end(), {list.back(), upper});
            list.insert(list.end(), {upper, lower});
        }
    return list;
}

// Between the rim and the body's outer row.
std::vector<unsigned short> TerrainFile::edgeOf(unsigned int edge, unsigned int cells,
                                                unsigned int step, bool coarse) const {
    const bool alongX = edge < 2, far = edge % 2 == 1, rimFirst = edge == 0 || edge == 3;
    const unsigned int most = shape.side - 1;
    const auto vertex = [&](unsigned int along, unsigned int inwards) {
        along = std::min(along * step, most);
        inwards = std::min(inwards * step, most);
        const unsigned int across = far ? most - inwards : inwards;
        return static_cast<unsigned short>(alongX ? across * shape.side + along
                                                  : along * shape.side + across);
    };
    std::vector<unsigned short> list;
    for (unsigned int k = 0; k <= cells; ++k) {
        const unsigned short rim = vertex(coarse ? k & ~1u : k, 0);
        const unsigned short inner = vertex(std::max(1u, std::min(k, std::max(cells, 1u) - 1)), 1);
        list.insert(list.end(), {rimFirst ? rim : inner, rimFirst ? inner : rim});
    }
    return list;
}

void TerrainFile::addCoords() {
    const auto cells = static_cast<float>(shape.side - 1);
    for (unsigned int z = 0; z < shape.side; ++z)
        for (unsigned int x = 0; x < shape.side; ++x)
            for (const unsigned int number : {x, z})
                add(static_cast<float>(number) / cells);
}

unsigned short TerrainFile::numberOf(unsigned int column, unsigned int row) const {
    const bool inside = column < shape.columns && row < shape.rows;
    return static_cast<unsigned short>(inside ? row * shape.columns + column + 1 : 0);
}

void TerrainFile::addChunk(unsigned int column, unsigned int row) {
    const unsigned int firstX = column * (shape.side - 1), firstZ = row * (shape.side - 1);
    std::vector<float> heights;
    for (unsigned int z = firstZ; z < firstZ + shape.side; ++z)
        for (unsigned int x = firstX; x < firstX + shape.side; ++x)
            heights.push_back(shape.height(x, z));
    const auto [low, high] = std::minmax_element(heights.begin(), heights.end());
    add(static_cast<std::uint16_t>(column));
    add(static_cast<std::uint16_t>(row));
    add(*low);
    add(*high);
    // 0 - 1 is beyond all columns and rows.
    for (const unsigned short neighbour : {numberOf(column, row - 1), numberOf(column, row + 1),
                                           numberOf(column - 1, row), numberOf(column + 1, row)})
        add(neighbour);
    for (std::size_t i = 0; i < heights.size(); ++i) {
        const auto x = static_cast<float>(firstX + i % shape.side),
                   z = static_cast<float>(firstZ + i / shape.side);
        for (const float number : {x * shape.scale, heights[i], z * shape.scale, // position
                                   0.0f, 1.0f, 0.0f,                             // weights
                                   1.0f, 0.0f, 0.0f})                            // tangent
            add(number);
    }
}

std::string element(const std::string &name, const std::string &content) {
    return "<" + name + ">" + content + "</" + name + ">";
}

std::string layersXml(const std::string &more) {
    std::string children = element("SHADER_TYPE", "COMPLEX");
    for (const std::string layer : {"1", "2", "3", "4"})
        children += element("REPEAT", layer) +
                    element("TEXTURE32_DIFFUSE_HEIGHT", "d" + layer + ".tga") +
                    element("TEXTURE32_NORMAL_GLOSS", "n" + layer + ".tga");
    return element("TERRAIN", children + more);
}

std::string lodXml(const std::vector<std::string> &levels, const std::string &enable) {
    std::string children = element("ENABLE", enable);
    for (const std::string &level : levels)
        children += element("LEVEL", level);
    return element("LOD", children);
}

void writeTerrainConfig(const std::string &elements) {
    writeFile("land.xml", element("CONFIG", elements));
}

void writeTerrainTextures() {
    const auto plain = [](const std::string &name, const Bytes &pixel) { // blue, green, red
        writeFile(name, tgaHeader(plainType, 4, 4, static_cast<unsigned int>(8 * pixel.size())) +
                            repeated(16, pixel));
    };
    plain("d1.tga", {40, 40, 220, 120});
    plain("d2.tga", {40, 220, 40, 120});
    plain("d3.tga", {220, 40, 40, 120});
    plain("d4.tga", {120, 120, 120, 120});
    for (const char *name : {"n1.tga", "n2.tga", "n3.tga", "n4.tga"})
        plain(name, {255, 128, 128, 0});
    plain("bump.tga", {255, 128, 128});
    plain("dudv.tga", {128, 128, 128});
    plain("sky.tga", {200, 20, 200});
}

RVTERRAIN *loadTerrain(const TerrainFile &file, const std::string &elements) {
    file.write();
    writeTerrainConfig(elements);
    auto *terrain = new RVTERRAIN;
    EXPECT_TRUE(terrain->load("land.xml"));
    return terrain;
}

RVWATER *findWater() {
    for (RVNODE *node = RVNODE::getFirstNode(); node; node = node->getNextNode())
        if (node->getType() == RV_NODE_TYPE_WATER)
            return static_cast<RVWATER *>(node);
    return nullptr;
}

} // namespace ravolt::test
