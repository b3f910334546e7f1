#pragma once

// The headers of a terrain's geometry file as they are in it: little-endian, without gaps.

// The first 24 bytes of the file.
struct RVTERRAIN_HEADER {
    unsigned short chunkSize;    // vertices along a side of a chunk
    unsigned short terrainSizeY; // vertices along the terrain, in the direction of Z
    unsigned short terrainSizeX; // and in that of X
    unsigned char unread6[2];    // not read
    float vertexScale;           // units of the scene between two vertices
    unsigned char unread12[8];   // not read
    unsigned char levels;        // of detail
    unsigned char unread21[3];   // not read
};
static_assert(sizeof(RVTERRAIN_HEADER) == 24, "as in the file");

// The 20 bytes before the vertices of a chunk.
struct RVTERRAIN_CHUNK_HEADER {
    unsigned short gridX, gridY; // position in chunks along X and Z
    float minHeight, maxHeight;  // of the vertices
    // Numbers of chunks, counted from 1 in the order of the file, and 0 for none. The first and the
    // second are on opposite sides, and so are the third and the fourth.
    unsigned short neighbour[4];
};
static_assert(sizeof(RVTERRAIN_CHUNK_HEADER) == 20, "as in the file");
