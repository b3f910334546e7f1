// The simulated driver's state: matrix stacks, switches, object names, images.

#include "testing/silentDriver.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <numbers>

namespace ravolt::test {
namespace {

constexpr SilentDriver::Matrix identity{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

constexpr const char *extensions =
    "GL_EXT_texture_filter_anisotropic GL_ARB_multitexture GL_ARB_vertex_buffer_object "
    "GL_ARB_vertex_shader GL_ARB_fragment_shader GL_ARB_shader_objects GL_ARB_depth_texture "
    "GL_ARB_shadow GL_ARB_texture_non_power_of_two GL_ARB_texture_float "
    "GL_EXT_framebuffer_object GL_ARB_occlusion_query ";

template <class Number> SilentDriver::Matrix fromArray(const Number *numbers) {
    SilentDriver::Matrix matrix;
    std::copy_n(numbers, matrix.size(), matrix.begin());
    return matrix;
}

// Element of row and column, both from 0.
double &at(SilentDriver::Matrix &matrix, int row, int column) {
    return matrix[static_cast<std::size_t>(column * 4 + row)];
}

} // namespace

SilentDriver::SilentDriver() {
    for (GLenum mode : {GL_MODELVIEW, GL_PROJECTION, GL_TEXTURE})
        stacks[mode] = {identity};
    integers = {{GL_MAX_TEXTURE_IMAGE_UNITS_ARB, 16},
                {GL_MAX_TEXTURE_UNITS_ARB, 8},
                {GL_MAX_TEXTURE_COORDS_ARB, 8},
                {GL_MAX_TEXTURE_SIZE, 8192},
                {GL_MAX_TEXTURE_MAX_ANISOTROPY_EXT, 16},
                {GL_MAX_LIGHTS, 8},
                {GL_MAX_MODELVIEW_STACK_DEPTH, 32},
                {GL_ACTIVE_TEXTURE, GL_TEXTURE0},
                {GL_DRAW_BUFFER, GL_BACK},
                {GL_READ_BUFFER, GL_BACK},
                {GL_FRAMEBUFFER_BINDING_EXT, 0}};
}

const GLubyte *SilentDriver::glGetString(GLenum name) {
    const char *text = name == GL_VENDOR       ? "Nobody"
                       : name == GL_RENDERER   ? "Silent"
                       : name == GL_VERSION    ? "2.1"
                       : name == GL_EXTENSIONS ? extensions
                                               : nullptr;
    return reinterpret_cast<const GLubyte *>(text);
}

std::vector<double> SilentDriver::values(GLenum name) const {
    const struct {
        GLenum matrix, depth, mode;
    } rows[] = {{GL_MODELVIEW_MATRIX, GL_MODELVIEW_STACK_DEPTH, GL_MODELVIEW},
                {GL_PROJECTION_MATRIX, GL_PROJECTION_STACK_DEPTH, GL_PROJECTION},
                {GL_TEXTURE_MATRIX, GL_TEXTURE_STACK_DEPTH, GL_TEXTURE}};
    for (const auto &row : rows) {
        const std::vector<Matrix> &stack = stacks.at(row.mode);
        if (name == row.matrix)
            return {stack.back().begin(), stack.back().end()};
        if (name == row.depth)
            return {static_cast<double>(stack.size())};
    }
    if (name == GL_VIEWPORT)
        return {viewport.begin(), viewport.end()};
    if (name == GL_MATRIX_MODE)
        return {static_cast<double>(matrixMode)};
    if (auto found = integers.find(name); found != integers.end())
        return {static_cast<double>(found->second)};
    return {enabled.count(name) ? 1.0 : 0.0};
}

void SilentDriver::glGetIntegerv(GLenum name, GLint *out) {
    for (double value : values(name))
        *out++ = static_cast<GLint>(value);
}

void SilentDriver::glGetFloatv(GLenum name, GLfloat *out) {
    for (double value : values(name))
        *out++ = static_cast<GLfloat>(value);
}

void SilentDriver::glGetBooleanv(GLenum name, GLboolean *out) {
    for (double value : values(name))
        *out++ = value != 0 ? GL_TRUE : GL_FALSE;
}

void SilentDriver::multiply(const Matrix &matrix) {
    Matrix left = top();
    Matrix right = matrix;
    for (int row = 0; row < 4; ++row)
        for (int column = 0; column < 4; ++column) {
            double sum = 0;
            for (int index = 0; index < 4; ++index)
                sum += at(left, row, index) * at(right, index, column);
            at(top(), row, column) = sum;
        }
}

void SilentDriver::glLoadIdentity() { top() = identity; }
void SilentDriver::glLoadMatrixf(const GLfloat *matrix) { top() = fromArray(matrix); }
void SilentDriver::glLoadMatrixd(const GLdouble *matrix) { top() = fromArray(matrix); }
void SilentDriver::glMultMatrixf(const GLfloat *matrix) { multiply(fromArray(matrix)); }

void SilentDriver::glTranslatef(GLfloat x, GLfloat y, GLfloat z) {
    multiply({1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, x, y, z, 1});
}

void SilentDriver::glScalef(GLfloat x, GLfloat y, GLfloat z) {
    multiply({x, 0, 0, 0, 0, y, 0, 0, 0, 0, z, 0, 0, 0, 0, 1});
}

void SilentDriver::glRotatef(GLfloat degrees, GLfloat x, GLfloat y, GLfloat z) {
    const double length = std::sqrt(double(x) * x + double(y) * y + double(z) * z);
    if (length == 0)
        return;
    const double axis[3] = {x / length, y / length, z / length};
    const double angle = degrees * std::numbers::pi / 180;
    const double c = std::cos(angle), s = std::sin(angle);
    Matrix matrix = identity;
    for (int row = 0; row < 3; ++row)
        for (int column = 0; column < 3; ++column)
            at(matrix, row, column) = axis[row] * axis[column] * (1 - c) + (row == column ? c : 0);
    for (int i = 0; i < 3; ++i) {
        const int j = (i + 1) % 3, k = (i + 2) % 3;
        at(matrix, k, j) += s * axis[i];
        at(matrix, j, k) -= s * axis[i];
    }
    multiply(matrix);
}

void SilentDriver::glOrtho(GLdouble left, GLdouble right, GLdouble bottom, GLdouble top,
                           GLdouble zNear, GLdouble zFar) {
    const double width = right - left, height = top - bottom, depth = zFar - zNear;
    multiply({2 / width, 0, 0, 0, 0, 2 / height, 0, 0, 0, 0, -2 / depth, 0, -(right + left) / width,
              -(top + bottom) / height, -(zFar + zNear) / depth, 1});
}

void SilentDriver::glFrustum(GLdouble left, GLdouble right, GLdouble bottom, GLdouble top,
                             GLdouble zNear, GLdouble zFar) {
    const double width = right - left, height = top - bottom, depth = zFar - zNear;
    multiply({2 * zNear / width, 0, 0, 0, 0, 2 * zNear / height, 0, 0, (right + left) / width,
              (top + bottom) / height, -(zFar + zNear) / depth, -1, 0, 0, -2 * zFar * zNear / depth,
              0});
}

// The usual depth of drivers: an overflow or underflow changes nothing.
void SilentDriver::glPushMatrix() {
    if (stacks[matrixMode].size() < 32)
        stacks[matrixMode].push_back(Matrix(top()));
}

void SilentDriver::glPopMatrix() {
    if (stacks[matrixMode].size() > 1)
        stacks[matrixMode].pop_back();
}

void SilentDriver::generate(GLsizei number, GLuint *names) {
    for (GLsizei index = 0; index < number; ++index)
        names[index] = ++lastName;
}

GLuint SilentDriver::glGenLists(GLsizei range) {
    const GLuint first = lastName + 1;
    lastName += static_cast<GLuint>(range);
    return first;
}

// Everything compiles and links, with an empty log.
void SilentDriver::glGetObjectParameterivARB(GLhandleARB, GLenum name, GLint *value) {
    *value = name == GL_OBJECT_INFO_LOG_LENGTH_ARB ? 0 : 1;
}

GLint SilentDriver::location(const char *name) {
    return locations.try_emplace(name, static_cast<GLint>(locations.size())).first->second;
}

void SilentDriver::glReadPixels(GLint, GLint, GLsizei width, GLsizei height, GLenum format,
                                GLenum type, GLvoid *pixels) {
    std::memset(pixels, 0, bytesOfPixel(format, type) * static_cast<std::size_t>(width * height));
}

void SilentDriver::glTexImage2D(GLenum, GLint, GLint, GLsizei width, GLsizei height, GLint,
                                GLenum format, GLenum type, const GLvoid *pixels) {
    draws.readImage(width, height, bytesOfPixel(format, type), pixels);
}

void SilentDriver::glTexSubImage2D(GLenum, GLint, GLint, GLint, GLsizei width, GLsizei height,
                                   GLenum format, GLenum type, const GLvoid *pixels) {
    draws.readImage(width, height, bytesOfPixel(format, type), pixels);
}

std::size_t bytesOfPixel(GLenum format, GLenum type) {
    const std::size_t channels = format == GL_RGBA || format == GL_BGRA_EXT ? 4
                                 : format == GL_RGB || format == GL_BGR_EXT ? 3
                                 : format == GL_LUMINANCE_ALPHA             ? 2
                                                                            : 1;
    const std::size_t size = type == GL_FLOAT || type == GL_INT || type == GL_UNSIGNED_INT ? 4
                             : type == GL_SHORT || type == GL_UNSIGNED_SHORT               ? 2
                                                                                           : 1;
    return channels * size;
}

} // namespace ravolt::test
