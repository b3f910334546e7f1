#pragma once

// Vertex arrays and buffers of the simulated driver. Each draw reads what a driver would read, and
// one that reads past the end of a buffer is a fault. Memory of the program is read, so that a
// sanitizer reports what the program may not read.

#include <GL/gl.h>
#include <GL/glext.h>

#include <map>
#include <string>
#include <utility>
#include <vector>

namespace ravolt::test {

class DrawChecker {
  public:
    void bindBuffer(GLenum target, GLuint name);
    void setData(GLenum target, GLsizeiptrARB size, const void *data);
    void deleteBuffers(GLsizei number, const GLuint *names);

    void setTextureUnit(GLenum unit) { textureUnit = unit; }
    void enable(GLenum array, bool enabled);
    void setArray(GLenum array, GLint components, GLenum type, GLsizei stride, const void *pointer);
    void enableAttribute(GLuint index, bool enabled);
    void setAttribute(GLuint index, GLint components, GLenum type, GLsizei stride,
                      const void *pointer);

    void drawArrays(GLint first, GLsizei count);
    void drawElements(GLsizei count, GLenum type, const void *indices);

    // Images: rows of pixels as glPixelStorei has set them.
    void setUnpacking(GLenum name, GLint value);
    void readImage(GLsizei width, GLsizei height, std::size_t pixelBytes, const void *pixels);

    // One line for each draw that was wrong, at most 16.
    const std::vector<std::string> &faults() const { return found; }

  private:
    struct Buffer {
        std::size_t size = 0;
        std::vector<unsigned char> indices; // the contents, of a buffer of indices alone
    };
    struct Array {
        bool enabled = false;
        std::size_t elementBytes = 0, stride = 0;
        GLuint buffer = 0; // 0 for the program's memory
        const void *pointer = nullptr;
    };
    // The kind of array and the texture unit, or the number of the attribute.
    using Key = std::pair<GLenum, GLuint>;

    Key keyOf(GLenum array) const;
    void store(Array &array, GLint components, GLenum type, GLsizei stride, const void *pointer);
    void readVertices(const char *function, std::size_t first, std::size_t last);
    void report(const std::string &text);

    GLenum textureUnit = GL_TEXTURE0;
    GLuint vertexBuffer = 0, indexBuffer = 0;
    std::map<GLuint, Buffer> buffers;
    std::map<Key, Array> arrays;
    std::size_t alignment = 4, rowLength = 0;
    std::vector<std::string> found;
};

} // namespace ravolt::test
