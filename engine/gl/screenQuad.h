#pragma once

// Drawing in pixels, with the origin at the top left corner and y pointing down: the projection,
// and the quad that covers an area with an upright image. Core OpenGL 1.1 alone.

#include <GL/gl.h>

namespace ravolt {

// Makes the projection the current matrix and loads identity.
inline void resetProjection() {
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
}

// The same on a new slot of the projection stack.
inline void pushProjection() {
    glMatrixMode(GL_PROJECTION);
    glPushMatrix();
    glLoadIdentity();
}

// Removes that slot and makes the modelview matrix the current one.
inline void popProjection() {
    glMatrixMode(GL_PROJECTION);
    glPopMatrix();
    glMatrixMode(GL_MODELVIEW);
}

// Multiplies the projection of a width by height area onto the projection, which is the current
// matrix, and ends with identity on the modelview matrix.
inline void applyPixelProjection(int width, int height) {
    glOrtho(0, width, height, 0, -1, 1);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
}

// The same for a window, whose viewport it sets.
inline void applyWindowProjection(int width, int height) {
    glViewport(0, 0, width, height);
    applyPixelProjection(width, height);
}

// The projection of a width by height area for the lifetime of the object, on a slot of its own.
// The modelview matrix is identity and is not restored.
class PixelProjection {
  public:
    PixelProjection(int width, int height) {
        pushProjection();
        applyPixelProjection(width, height);
    }
    ~PixelProjection() { popProjection(); }
    PixelProjection(const PixelProjection &) = delete;
    PixelProjection &operator=(const PixelProjection &) = delete;
};

// Draws the whole texture of unit 0 over an area. The first row of the texture is the lowest row of
// the image, so V runs against y.
inline void drawQuad(int left, int top, int right, int bottom) {
    glBegin(GL_QUADS);
    glTexCoord2f(0, 1);
    glVertex2i(left, top);
    glTexCoord2f(0, 0);
    glVertex2i(left, bottom);
    glTexCoord2f(1, 0);
    glVertex2i(right, bottom);
    glTexCoord2f(1, 1);
    glVertex2i(right, top);
    glEnd();
}

// The area from the origin to (width, height).
inline void drawQuad(int width, int height) { drawQuad(0, 0, width, height); }

} // namespace ravolt
