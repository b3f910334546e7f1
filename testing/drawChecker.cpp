// Checks what a draw reads: indices, and for each enabled array the vertices between the lowest and
// the highest index. A disabled array is not read.

#include "testing/drawChecker.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace ravolt::test {
namespace {

constexpr GLenum attributeKind = GL_VERTEX_ATTRIB_ARRAY_ENABLED_ARB;
constexpr std::size_t maxFaults = 16;

std::size_t bytesOf(GLenum type) {
    switch (type) {
    case GL_BYTE:
    case GL_UNSIGNED_BYTE:
        return 1;
    case GL_SHORT:
    case GL_UNSIGNED_SHORT:
        return 2;
    case GL_DOUBLE:
        return 8;
    default:
        return 4;
    }
}

// Reads all of it, which a compiler may not omit.
void readMemory(const void *memory, std::size_t size) {
    volatile unsigned char sink = 0;
    unsigned char sum = 0;
    const auto *bytes = static_cast<const unsigned char *>(memory);
    for (std::size_t index = 0; index < size; ++index)
        sum = static_cast<unsigned char>(sum + bytes[index]);
    sink = sum;
    static_cast<void>(sink);
}

std::size_t indexAt(const unsigned char *indices, GLenum type, std::size_t number) {
    std::uint32_t index = 0; // little-endian
    std::memcpy(&index, indices + number * bytesOf(type), std::min(bytesOf(type), sizeof index));
    return index;
}

std::size_t offsetOf(const void *pointer) { return reinterpret_cast<std::uintptr_t>(pointer); }

// Whether `count` bytes from `offset` on are within `size`.
bool fits(std::size_t offset, std::size_t count, std::size_t size) {
    return offset <= size && count <= size - offset;
}

} // namespace

void DrawChecker::bindBuffer(GLenum target, GLuint name) {
    (target == GL_ELEMENT_ARRAY_BUFFER_ARB ? indexBuffer : vertexBuffer) = name;
}

void DrawChecker::setData(GLenum target, GLsizeiptrARB size, const void *data) {
    const GLuint name = target == GL_ELEMENT_ARRAY_BUFFER_ARB ? indexBuffer : vertexBuffer;
    if (!name || size < 0)
        return report("glBufferDataARB without a buffer or with a negative size");
    Buffer &buffer = buffers[name];
    buffer = {static_cast<std::size_t>(size), {}};
    const auto *bytes = static_cast<const unsigned char *>(data);
    if (bytes && target == GL_ELEMENT_ARRAY_BUFFER_ARB)
        buffer.indices.assign(bytes, bytes + size);
    else if (bytes)
        readMemory(bytes, buffer.size);
}

void DrawChecker::deleteBuffers(GLsizei number, const GLuint *names) {
    for (GLsizei index = 0; index < number; ++index) {
        buffers.erase(names[index]);
        for (GLuint *bound : {&vertexBuffer, &indexBuffer})
            if (*bound == names[index])
                *bound = 0;
    }
}

DrawChecker::Key DrawChecker::keyOf(GLenum array) const {
    return {array, array == GL_TEXTURE_COORD_ARRAY ? textureUnit : 0};
}

// The array of colour indices has no effect in RGBA mode.
void DrawChecker::enable(GLenum array, bool enabled) {
    if (array != GL_INDEX_ARRAY)
        arrays[keyOf(array)].enabled = enabled;
}

void DrawChecker::enableAttribute(GLuint index, bool enabled) {
    arrays[{attributeKind, index}].enabled = enabled;
}

void DrawChecker::store(Array &array, GLint components, GLenum type, GLsizei stride,
                        const void *pointer) {
    array.elementBytes = static_cast<std::size_t>(components) * bytesOf(type);
    array.stride = stride ? static_cast<std::size_t>(stride) : array.elementBytes;
    array.buffer = vertexBuffer;
    array.pointer = pointer;
}

void DrawChecker::setArray(GLenum array, GLint components, GLenum type, GLsizei stride,
                           const void *pointer) {
    store(arrays[keyOf(array)], components, type, stride, pointer);
}

void DrawChecker::setAttribute(GLuint index, GLint components, GLenum type, GLsizei stride,
                               const void *pointer) {
    store(arrays[{attributeKind, index}], components, type, stride, pointer);
}

void DrawChecker::readVertices(const char *function, std::size_t first, std::size_t last) {
    for (const auto &[key, array] : arrays) {
        if (!array.enabled)
            continue;
        const std::size_t begin = first * array.stride;
        const std::size_t size = (last - first) * array.stride + array.elementBytes;
        if (!array.buffer) {
            if (array.pointer)
                readMemory(static_cast<const unsigned char *>(array.pointer) + begin, size);
            else
                report(std::string(function) + ": an enabled array has no memory");
            continue;
        }
        const auto buffer = buffers.find(array.buffer);
        const std::size_t bytes = buffer == buffers.end() ? 0 : buffer->second.size;
        if (!fits(offsetOf(array.pointer) + begin, size, bytes))
            report(std::string(function) + ": vertex " + std::to_string(last) +
                   " is outside a buffer of " + std::to_string(bytes) + " bytes");
    }
}

void DrawChecker::drawArrays(GLint first, GLsizei count) {
    if (first < 0 || count < 0)
        return report("glDrawArrays: a negative number");
    if (count)
        readVertices("glDrawArrays", static_cast<std::size_t>(first),
                     static_cast<std::size_t>(first) + static_cast<std::size_t>(count) - 1);
}

void DrawChecker::drawElements(GLsizei count, GLenum type, const void *indices) {
    if (count < 0)
        return report("glDrawElements: a negative number");
    if (!count)
        return;
    const std::size_t size = static_cast<std::size_t>(count) * bytesOf(type);
    const auto *bytes = static_cast<const unsigned char *>(indices);
    if (indexBuffer) {
        const auto buffer = buffers.find(indexBuffer);
        const std::size_t available = buffer == buffers.end() ? 0 : buffer->second.indices.size();
        if (!fits(offsetOf(indices), size, available))
            return report("glDrawElements: " + std::to_string(count) +
                          " indices are more than a buffer of " + std::to_string(available) +
                          " bytes has");
        bytes = buffer->second.indices.data() + offsetOf(indices);
    } else if (!indices) {
        return report("glDrawElements: no indices");
    }
    std::size_t lowest = indexAt(bytes, type, 0), highest = lowest;
    for (std::size_t number = 1; number < static_cast<std::size_t>(count); ++number) {
        const std::size_t index = indexAt(bytes, type, number);
        lowest = std::min(lowest, index);
        highest = std::max(highest, index);
    }
    readVertices("glDrawElements", lowest, highest);
}

void DrawChecker::setUnpacking(GLenum name, GLint value) {
    if (name == GL_UNPACK_ALIGNMENT)
        alignment = static_cast<std::size_t>(std::max(value, 1));
    if (name == GL_UNPACK_ROW_LENGTH)
        rowLength = static_cast<std::size_t>(std::max(value, 0));
}

// The ends of each row are enough to find a size that is wrong.
void DrawChecker::readImage(GLsizei width, GLsizei height, std::size_t pixelBytes,
                            const void *pixels) {
    if (width < 0 || height < 0)
        return report("an image of negative size");
    if (!pixels || !width)
        return;
    const std::size_t size = static_cast<std::size_t>(width) * pixelBytes;
    const std::size_t row = rowLength ? rowLength * pixelBytes : size;
    const std::size_t distance = (row + alignment - 1) / alignment * alignment;
    const auto *bytes = static_cast<const unsigned char *>(pixels);
    for (std::size_t number = 0; number < static_cast<std::size_t>(height); ++number) {
        readMemory(bytes + number * distance, 1);
        readMemory(bytes + number * distance + size - 1, 1);
    }
}

void DrawChecker::report(const std::string &text) {
    if (found.size() < maxFaults)
        found.push_back(text);
}

} // namespace ravolt::test
