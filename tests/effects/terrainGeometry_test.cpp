// The reader of geometry files: what it reads, in which order, and which files it refuses.

#include "effects/terrainGeometry.h"

#include "tests/effects/terrainScene.h"

#include <algorithm>
#include <array>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

using namespace ravolt;
using namespace ravolt::test;

namespace {

struct Reading {
    std::istringstream file;
    TerrainGeometry geometry;
    const char *problem;

    explicit Reading(const TerrainFile &terrain)
        : file({reinterpret_cast<const char *>(terrain.bytes.data()), terrain.bytes.size()}),
          problem(readTerrainGeometry(file, geometry)) {}

    std::string result() const { return problem ? problem : "read"; }
};

std::string resultOf(const TerrainFile &terrain) { return Reading(terrain).result(); }

// In the order of the file.
std::vector<std::vector<unsigned short>> listsOf(const TerrainGeometry &geometry) {
    std::vector<std::vector<unsigned short>> lists;
    for (const TerrainLevel &level : geometry.levels) {
        lists.push_back(level.body);
        for (const auto &variant : level.edge)
            lists.insert(lists.end(), variant.begin(), variant.end());
    }
    return lists;
}

TEST(TerrainGeometryTest, EverythingIsReadInTheOrderOfTheFile) {
    const TerrainShape shapes[] = {{.side = 5},
                                   {.side = 9, .columns = 1, .rows = 2, .levels = 4},
                                   {.side = 17, .columns = 3, .rows = 2, .levels = 5},
                                   {.side = 33, .levels = 6},
                                   {.side = 2, .columns = 1, .rows = 4, .levels = 1},
                                   {.side = 5, .levels = 20}};
    for (const TerrainShape &shape : shapes) {
        SCOPED_TRACE(shape.side);
        TerrainFile terrain(shape);
        // So that no two of the lists, coordinates and vertices are alike.
        const auto vary = [&](std::size_t from, std::size_t to, std::size_t step) {
            for (std::size_t at = from; at < to; at += step)
                terrain.bytes[at] = static_cast<unsigned char>(at % terrain.verticesOfChunk());
        };
        for (std::size_t i = 0; i < terrain.lists.size(); ++i)
            for (std::size_t k = 0; k < terrain.lists[i].size(); ++k) {
                auto &number = terrain.lists[i][k];
                number = static_cast<unsigned short>((number + i) % terrain.verticesOfChunk());
                terrain.set(terrain.list(i) + 2 * k, number);
            }
        vary(terrain.coords(), terrain.chunk(0), 4);
        Reading reading(terrain);
        ASSERT_EQ(reading.result(), "read");
        const TerrainGeometry &geometry = reading.geometry;
        EXPECT_EQ(std::memcmp(&geometry.header, terrain.bytes.data(), sizeof geometry.header), 0);
        EXPECT_EQ(geometry.header.chunkSize, shape.side);
        EXPECT_EQ(geometry.header.terrainSizeX, shape.columns * (shape.side - 1) + 1);
        EXPECT_EQ(geometry.header.terrainSizeY, shape.rows * (shape.side - 1) + 1);
        EXPECT_EQ(geometry.header.levels, shape.levels);
        EXPECT_EQ(geometry.header.vertexScale, 1.0f);
        EXPECT_EQ(listsOf(geometry), terrain.lists);
        ASSERT_EQ(geometry.texCoords.size(), terrain.verticesOfChunk());
        EXPECT_EQ(std::memcmp(geometry.texCoords.data(), &terrain.bytes[terrain.coords()],
                              8 * geometry.texCoords.size()),
                  0);
        ASSERT_EQ(geometry.chunks.size(), terrain.numberOfChunks());
        std::vector<unsigned char> vertices(terrainVertexBytes(geometry.header));
        ASSERT_EQ(vertices.size(), terrain.verticesOfChunk() * terrainVertexSize);
        for (std::size_t i = terrain.numberOfChunks(); i-- > 0;) {
            EXPECT_EQ(std::memcmp(&geometry.chunks[i], &terrain.bytes[terrain.chunk(i)],
                                  chunkHeaderBytes),
                      0);
            ASSERT_TRUE(readTerrainVertices(reading.file, geometry, i, vertices));
            EXPECT_TRUE(std::equal(vertices.begin(), vertices.end(),
                                   terrain.bytes.begin() +
                                       static_cast<std::ptrdiff_t>(terrain.vertices(i))));
        }
    }
}

// On purpose: a negative length is that of an empty list.
TEST(TerrainGeometryTest, LengthsOfListsFollowFromTheCellsOfTheLevel) {
    const struct {
        unsigned short chunkSize;
        unsigned char levels;
        unsigned int level;
        std::size_t body, edge;
    } cases[] = {{33, 6, 0, 1918, 66}, {33, 6, 1, 446, 34}, {33, 6, 2, 94, 18}, {33, 6, 3, 14, 10},
                 {33, 6, 4, 0, 6},     {33, 6, 5, 4, 4},    {6, 1, 0, 68, 12},  {5, 3, 0, 14, 10},
                 {5, 3, 1, 0, 6},      {5, 3, 2, 4, 4},     {2, 1, 0, 4, 4},    {2, 20, 0, 0, 4},
                 {2, 20, 17, 0, 2},    {2, 20, 19, 0, 2},   {2, 255, 254, 0, 2}};
    for (const auto &c : cases) {
        SCOPED_TRACE(testing::Message() << c.chunkSize << ", level " << c.level);
        RVTERRAIN_HEADER header{};
        header.chunkSize = c.chunkSize;
        header.levels = c.levels;
        EXPECT_EQ(terrainBodyLength(header, c.level), c.body);
        EXPECT_EQ(terrainEdgeLength(header, c.level), c.edge);
    }
}

TEST(TerrainGeometryTest, ImpossibleNumbersAreRefused) {
    const std::string zero = "a size or the levels are 0", odd = "an odd number of chunks",
                      tooShort = "shorter than its header says";
    const struct {
        const char *what;
        std::size_t offset;
        std::uint16_t value;
        std::string result;
    } cases[] = {{"no vertices", chunkSizeAt, 0, zero},
                 {"one vertex a side", chunkSizeAt, 1, zero},
                 {"no vertices along X", terrainSizeXAt, 0, zero},
                 {"no vertices along Z", terrainSizeZAt, 0, zero},
                 {"less than a chunk along X", terrainSizeXAt, 4, zero},
                 {"less than a chunk along Z", terrainSizeZAt, 4, zero},
                 {"no levels", levelsAt, 0, zero},
                 {"one chunk", terrainSizeXAt, 5, odd},
                 {"three chunks", terrainSizeXAt, 13, odd},
                 {"one chunk and a rest", terrainSizeXAt, 8, odd},
                 {"four chunks", terrainSizeXAt, 17, tooShort},
                 {"two rows", terrainSizeZAt, 9, tooShort},
                 {"an immense chunk", chunkSizeAt, 65535, zero},
                 {"an immense terrain", terrainSizeXAt, 65529, tooShort},
                 {"a level more", levelsAt, 4, tooShort},
                 {"255 levels", levelsAt, 255, tooShort}};
    for (const auto &c : cases)
        EXPECT_EQ(resultOf(TerrainFile().set(c.offset, c.value)), c.result) << c.what;
    TerrainFile immense;
    for (const std::size_t size : {chunkSizeAt, terrainSizeXAt, terrainSizeZAt})
        immense.set(size, std::uint16_t{65535});
    EXPECT_EQ(resultOf(immense), odd);
    immense.set(chunkSizeAt, std::uint16_t{32768}); // two by two chunks of 36 GB
    EXPECT_EQ(resultOf(immense), tooShort);
}

TEST(TerrainGeometryTest, IndicesAreBelowTheNumberOfVertices) {
    const TerrainFile whole({.side = 5, .levels = 4});
    const auto number = static_cast<std::uint16_t>(whole.verticesOfChunk());
    for (std::size_t i = 0; i < whole.lists.size(); ++i)
        for (const std::size_t entry : {std::size_t{0}, whole.lists[i].size() - 1}) {
            if (whole.lists[i].empty())
                continue;
            SCOPED_TRACE(testing::Message() << "list " << i << ", entry " << entry);
            TerrainFile damaged = whole;
            damaged.set(whole.list(i) + 2 * entry, number);
            EXPECT_EQ(resultOf(damaged), "an index beyond the vertices");
            damaged.set(whole.list(i) + 2 * entry, static_cast<std::uint16_t>(number - 1));
            EXPECT_EQ(resultOf(damaged), "read");
        }
}

TEST(TerrainGeometryTest, NeighboursAreInTheTableOfChunks) {
    for (std::size_t i = 0; i < 2; ++i)
        for (std::size_t side = 0; side < 4; ++side)
            for (const std::uint16_t neighbour : {0, 1, 2, 3, 65535}) {
                TerrainFile terrain;
                terrain.set(terrain.chunk(i) + neighboursAt + 2 * side, neighbour);
                EXPECT_EQ(resultOf(terrain),
                          neighbour <= 2 ? "read" : "a neighbour beyond the chunks")
                    << i << ", side " << side << ", neighbour " << neighbour;
            }
}

TEST(TerrainGeometryTest, FileCutAnywhereIsRefusedAndALongerOneIsNot) {
    const TerrainFile whole;
    for (std::size_t length = 0; length < whole.bytes.size(); ++length)
        EXPECT_EQ(resultOf(TerrainFile(whole).cut(length)), length < terrainHeaderBytes
                                                                ? "shorter than its header"
                                                                : "shorter than its header says")
            << length;
    EXPECT_EQ(resultOf(TerrainFile(whole).cut(whole.bytes.size() + 1)), "read");
}

TEST(TerrainGeometryTest, SizeOfTheFileFollowsFromItsHeader) {
    for (const TerrainShape &shape :
         {TerrainShape{.side = 5}, TerrainShape{.side = 17, .levels = 5}}) {
        TerrainFile terrain(shape);
        const std::size_t size = terrain.bytes.size();
        EXPECT_EQ(terrainFileBytes(Reading(terrain.cut(size + 7)).geometry), size);
    }
}

TEST(TerrainGeometryTest, VerticesOfAFileThatBecameShorterAreMissing) {
    const TerrainFile whole;
    Reading reading(whole);
    std::vector<unsigned char> vertices(terrainVertexBytes(reading.geometry.header));
    reading.file.str(std::string(whole.bytes.begin(), whole.bytes.end() - 1));
    EXPECT_TRUE(readTerrainVertices(reading.file, reading.geometry, 0, vertices));
    EXPECT_FALSE(readTerrainVertices(reading.file, reading.geometry, 1, vertices));
}

// A stream that cannot tell its size, and one that fails after it.
TEST(TerrainGeometryTest, UnreadableStreamIsRefused) {
    struct Unseekable : std::stringbuf {
        using std::stringbuf::stringbuf;
        pos_type seekoff(off_type, std::ios::seekdir, std::ios::openmode) override { return -1; }
    };
    const TerrainFile whole;
    Unseekable buffer(std::string(whole.bytes.begin(), whole.bytes.end()), std::ios::in);
    std::istream file(&buffer);
    TerrainGeometry geometry;
    EXPECT_STREQ(readTerrainGeometry(file, geometry), "shorter than its header");

    struct Ending : std::stringbuf { // ends before the size that it states
        std::streamsize left;
        Ending(const std::string &text, std::streamsize end)
            : std::stringbuf(text, std::ios::in), left(end) {}
        std::streamsize xsgetn(char *to, std::streamsize count) override {
            const std::streamsize read = std::stringbuf::xsgetn(to, std::min(count, left));
            left -= read;
            return read;
        }
    };
    for (const std::size_t end : {whole.list(1), whole.list(2), whole.coords(), whole.chunk(0)}) {
        Ending ending(std::string(whole.bytes.begin(), whole.bytes.end()),
                      static_cast<std::streamsize>(end) - 2);
        std::istream cut(&ending);
        TerrainGeometry unread;
        EXPECT_STREQ(readTerrainGeometry(cut, unread), "it cannot be read") << end;
    }
}

TEST(TerrainGeometryTest, WhateverIsReadIsInRange) {
    const TerrainFile whole;
    for (std::size_t at = 0; at < whole.chunk(1); ++at)
        for (const unsigned char value : {0x00, 0x01, 0x7f, 0x80, 0xff}) {
            const Reading reading(TerrainFile(whole).set(at, value));
            if (reading.problem)
                continue;
            const TerrainGeometry &geometry = reading.geometry;
            const unsigned int vertices = geometry.header.chunkSize * geometry.header.chunkSize;
            ASSERT_EQ(geometry.chunks.size() % 2, 0u) << at;
            ASSERT_EQ(geometry.texCoords.size(), vertices) << at;
            for (const auto &list : listsOf(geometry))
                for (const unsigned short index : list)
                    ASSERT_LT(index, vertices) << at;
            for (const RVTERRAIN_CHUNK_HEADER &chunk : geometry.chunks)
                for (const unsigned short neighbour : chunk.neighbour)
                    ASSERT_LE(neighbour, geometry.chunks.size()) << at;
        }
}

} // namespace
