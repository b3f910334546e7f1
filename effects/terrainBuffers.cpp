// The buffers that the chunks of a terrain share: texture coordinates and lists of indices.

#include "engine/gl/bindings.h"
#include "ravolt/RVTERRAIN_COORDBUFFER.h"
#include "ravolt/RVTERRAIN_INDEXTABLE.h"
#include "ravolt/Z3MVECTOR2D.h"

#include <algorithm>
#include <cstddef>

RVTERRAIN_COORDBUFFER::RVTERRAIN_COORDBUFFER(Z3MVECTOR2D *coords, unsigned short chunkSize)
    : buffer(ravolt::createBuffer(GL_ARRAY_BUFFER_ARB, coords,
                                  std::size_t{chunkSize} * chunkSize * sizeof *coords)) {}

RVTERRAIN_COORDBUFFER::~RVTERRAIN_COORDBUFFER() { ravolt::deleteBuffer(buffer); }

RVTERRAIN_INDEXBUFFER::RVTERRAIN_INDEXBUFFER(const unsigned short *indices, unsigned int number)
    : buffer(ravolt::createBuffer(GL_ELEMENT_ARRAY_BUFFER_ARB, indices,
                                  std::size_t{number} * sizeof *indices)),
      count(number) {}

RVTERRAIN_INDEXBUFFER::~RVTERRAIN_INDEXBUFFER() { ravolt::deleteBuffer(buffer); }

// The index array has no pointer: glIndexPointer does not accept unsigned shorts and would only
// raise an OpenGL error, which an application's own check would find.
void RVTERRAIN_INDEXBUFFER::draw() const {
    if (!buffer || count == 0)
        return;
    ravolt::bindBuffer(GL_ELEMENT_ARRAY_BUFFER_ARB, buffer);
    glDrawElements(GL_TRIANGLE_STRIP, static_cast<GLsizei>(count), GL_UNSIGNED_SHORT, nullptr);
}

namespace {

using List = RVTERRAIN_INDEXBUFFER *;

void deleteLists(List *&table, std::size_t entries) {
    if (table)
        std::for_each(table, table + entries, [](List list) { delete list; });
    delete[] table;
    table = nullptr;
}

} // namespace

RVTERRAIN_INDEXTABLE::RVTERRAIN_INDEXTABLE(unsigned char numberOfLevels)
    : body(nullptr), edgeCoarse{}, edgeSame{}, levels(numberOfLevels) {}

// The size of the chunks is not stored: the lengths of the lists depend on it. Delegates, so that
// the destructor runs when memory runs out here.
RVTERRAIN_INDEXTABLE::RVTERRAIN_INDEXTABLE(unsigned short, unsigned char numberOfLevels)
    : RVTERRAIN_INDEXTABLE(numberOfLevels) {
    body = new List[levels]();
    for (unsigned int edge = 0; edge < edges; ++edge) {
        edgeCoarse[edge] = new List[std::size_t{levels} * corners]();
        edgeSame[edge] = new List[std::size_t{levels} * corners]();
    }
}

RVTERRAIN_INDEXTABLE::~RVTERRAIN_INDEXTABLE() {
    deleteLists(body, levels);
    for (unsigned int edge = 0; edge < edges; ++edge) {
        deleteLists(edgeCoarse[edge], std::size_t{levels} * corners);
        deleteLists(edgeSame[edge], std::size_t{levels} * corners);
    }
}
