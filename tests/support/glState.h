#pragma once

// The current values of OpenGL's state.

#include <GL/gl.h>

#include <array>

namespace ravolt::test {

// The first of a state's values.
inline int integerOf(GLenum name) {
    int values[4] = {};
    glGetIntegerv(name, values);
    return values[0];
}

// Column by column.
inline std::array<float, 16> matrixOf(GLenum name) {
    std::array<float, 16> numbers{};
    glGetFloatv(name, numbers.data());
    return numbers;
}

// Left, bottom, width and height.
inline std::array<int, 4> viewportNow() {
    std::array<int, 4> box{};
    glGetIntegerv(GL_VIEWPORT, box.data());
    return box;
}

} // namespace ravolt::test
