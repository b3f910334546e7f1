// Reads the vertices of recorded draw calls from their arrays.

#include "tests/gui/drawnArrays.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <ostream>
#include <utility>

namespace ravolt::test {
namespace {

struct Array {
    GLint size = 0;
    GLenum type = 0;
    const void *data = nullptr;

    std::array<float, 4> at(std::size_t vertex) const {
        std::array<float, 4> values{};
        for (std::size_t i = 0; i < static_cast<std::size_t>(size); ++i) {
            const std::size_t element = vertex * static_cast<std::size_t>(size) + i;
            values[i] = type == GL_FLOAT ? static_cast<const float *>(data)[element]
                                         : static_cast<const GLubyte *>(data)[element];
        }
        return values;
    }
};

Array positions, texCoords, colors;
bool active = false;
Drawings drawings;

void setArray(Array &array, GLint size, GLenum type, GLsizei stride, const void *data) {
    if (active) {
        EXPECT_EQ(stride, 0);
        EXPECT_TRUE(type == GL_FLOAT || type == GL_UNSIGNED_BYTE) << type;
    }
    array = {size, type, data};
}

// `index` returns the number of the vertex at each position of the call.
template <class Index> void storeDrawing(GLenum mode, GLsizei count, Index index) {
    if (!active)
        return;
    drawings.push_back({mode, {}});
    for (std::size_t i = 0; i < static_cast<std::size_t>(std::max(count, 0)); ++i) {
        const std::array<float, 4> position = positions.at(index(i)), uv = texCoords.at(index(i));
        drawings.back().vertices.push_back(
            {position[0], position[1], uv[0], uv[1], colors.at(index(i))});
    }
}

} // namespace

void PrintTo(const DrawnVertex &vertex, std::ostream *out) {
    *out << "(" << vertex.x << ", " << vertex.y << ") uv (" << vertex.u << ", " << vertex.v
         << ") color";
    for (const float channel : vertex.color)
        *out << " " << channel;
}

void startDrawings() {
    drawings.clear();
    active = true;
}

Drawings stopDrawings() {
    active = false;
    return std::exchange(drawings, {});
}

} // namespace ravolt::test

using namespace ravolt::test;

extern "C" {
void __real_glVertexPointer(GLint size, GLenum type, GLsizei stride, const GLvoid *data);
void __wrap_glVertexPointer(GLint size, GLenum type, GLsizei stride, const GLvoid *data) {
    setArray(positions, size, type, stride, data);
    __real_glVertexPointer(size, type, stride, data);
}

void __real_glTexCoordPointer(GLint size, GLenum type, GLsizei stride, const GLvoid *data);
void __wrap_glTexCoordPointer(GLint size, GLenum type, GLsizei stride, const GLvoid *data) {
    setArray(texCoords, size, type, stride, data);
    __real_glTexCoordPointer(size, type, stride, data);
}

void __real_glColorPointer(GLint size, GLenum type, GLsizei stride, const GLvoid *data);
void __wrap_glColorPointer(GLint size, GLenum type, GLsizei stride, const GLvoid *data) {
    setArray(colors, size, type, stride, data);
    __real_glColorPointer(size, type, stride, data);
}

void __real_glDrawArrays(GLenum mode, GLint first, GLsizei count);
void __wrap_glDrawArrays(GLenum mode, GLint first, GLsizei count) {
    storeDrawing(mode, count,
                 [first](std::size_t i) { return static_cast<std::size_t>(first) + i; });
    __real_glDrawArrays(mode, first, count);
}

void __real_glDrawElements(GLenum mode, GLsizei count, GLenum type, const GLvoid *indices);
void __wrap_glDrawElements(GLenum mode, GLsizei count, GLenum type, const GLvoid *indices) {
    EXPECT_EQ(type, static_cast<GLenum>(GL_UNSIGNED_SHORT));
    storeDrawing(mode, count, [indices](std::size_t i) -> std::size_t {
        return static_cast<const GLushort *>(indices)[i];
    });
    __real_glDrawElements(mode, count, type, indices);
}
}
