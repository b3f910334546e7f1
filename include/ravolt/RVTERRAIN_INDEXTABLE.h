#pragma once

#include "ravolt/api.h"

// A list of vertex numbers, a strip of triangles, in an index buffer that it owns.
class RV_API RVTERRAIN_INDEXBUFFER {
  public:
    // Uploads `count` numbers; none without vertex buffers.
    RVTERRAIN_INDEXBUFFER(const unsigned short *indices, unsigned int count);
    ~RVTERRAIN_INDEXBUFFER();
    RVTERRAIN_INDEXBUFFER(const RVTERRAIN_INDEXBUFFER &) = delete;
    RVTERRAIN_INDEXBUFFER &operator=(const RVTERRAIN_INDEXBUFFER &) = delete;

    // OpenGL's name; 0 for none.
    unsigned int getBuffer() const { return buffer; }
    unsigned int getCount() const { return count; }

    // Draws the strip from the arrays that are bound; an empty list draws nothing.
    void draw() const;

  private:
    unsigned int buffer;
    unsigned int count;
};

// The lists that all chunks of a terrain share, each an object that the table owns, or NULL. A
// chunk is drawn as the body of its level and, except at the coarsest level, as four edges around
// it. An edge has a list for a neighbour of the same or a finer level and one, with every second
// vertex of the rim, for a coarser neighbour; each of them in four variants, by which of the two
// adjacent edges lie at a coarser neighbour.
struct RV_API RVTERRAIN_INDEXTABLE {
    static constexpr unsigned int edges = 4;   // of a chunk
    static constexpr unsigned int corners = 4; // variants of an edge

    // All lists are NULL. Throws std::bad_alloc.
    RVTERRAIN_INDEXTABLE(unsigned short chunkSize, unsigned char levels);
    ~RVTERRAIN_INDEXTABLE();
    RVTERRAIN_INDEXTABLE(const RVTERRAIN_INDEXTABLE &) = delete;
    RVTERRAIN_INDEXTABLE &operator=(const RVTERRAIN_INDEXTABLE &) = delete;

    RVTERRAIN_INDEXBUFFER **body;              // by level
    RVTERRAIN_INDEXBUFFER **edgeCoarse[edges]; // by level * corners + variant
    RVTERRAIN_INDEXBUFFER **edgeSame[edges];   // by level * corners + variant
    unsigned char levels;                      // of detail

  private:
    explicit RVTERRAIN_INDEXTABLE(unsigned char levels); // without tables
};
