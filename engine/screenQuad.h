#pragma once

// Drawing in pixels: a projection whose origin is the top left corner, as a scope, and the quad
// that covers it. Immediate mode; nothing here looks at caches.

#include <GL/gl.h>

namespace ravolt {

// Pixels of a width by height area, y pointing down, multiplied onto the current matrix.
inline void screenOrtho(int width, int height) { glOrtho(0, width, height, 0, -1, 1); }

// A quad over the whole area. Its texture stands upright, since y points down.
inline void drawQuad(int width, int height) {
    glBegin(GL_QUADS);
    glTexCoord2f(0, 1);
    glVertex2i(0, 0);
    glTexCoord2f(0, 0);
    glVertex2i(0, height);
    glTexCoord2f(1, 0);
    glVertex2i(width, height);
    glTexCoord2f(1, 1);
    glVertex2i(width, 0);
    glEnd();
}

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

// Between construction and destruction the projection is what the caller multiplies onto a fresh
// identity; the matrix mode at the end is modelview.
struct ProjectionScope {
    ProjectionScope() { pushProjection(); }
    ~ProjectionScope() { popProjection(); }
    ProjectionScope(const ProjectionScope &) = delete;
    ProjectionScope &operator=(const ProjectionScope &) = delete;
};

} // namespace ravolt
