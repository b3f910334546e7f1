#pragma once

// Drawing in pixels: a projection whose origin is the top left corner, on a slot of its own of the
// projection stack.

#include <GL/gl.h>

namespace ravolt {

// Pixels of a width by height area, y pointing down, multiplied onto the current matrix.
inline void screenOrtho(int width, int height) { glOrtho(0, width, height, 0, -1, 1); }

// Leaves the projection mode current with identity loaded on a fresh slot of its stack.
inline void pushProjection() {
    glMatrixMode(GL_PROJECTION);
    glPushMatrix();
    glLoadIdentity();
}

// Takes that slot off again and leaves the modelview mode current.
inline void popProjection() {
    glMatrixMode(GL_PROJECTION);
    glPopMatrix();
    glMatrixMode(GL_MODELVIEW);
}

} // namespace ravolt
