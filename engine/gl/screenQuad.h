#pragma once

// Drawing in pixels: a projection whose origin is the top left corner, on a slot of its own of the
// projection stack, and the quad that covers an area with an upright image.

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

// Draws in pixels of a width by height area as long as it lives, from an identity on the modelview
// matrix, which stays as it is at the end.
class PixelProjection {
  public:
    PixelProjection(int width, int height) {
        pushProjection();
        screenOrtho(width, height);
        glMatrixMode(GL_MODELVIEW);
        glLoadIdentity();
    }
    ~PixelProjection() { popProjection(); }
    PixelProjection(const PixelProjection &) = delete;
    PixelProjection &operator=(const PixelProjection &) = delete;
};

// The whole of the texture on unit 0 over the area from the origin to (width, height). Its first
// row is the lowest of the image, so that V runs against y.
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

} // namespace ravolt
