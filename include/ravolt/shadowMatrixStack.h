#pragma once

// A mirror of OpenGL's modelview and projection stacks, from which a matrix can be read without a
// round trip to the driver. Each call changes the mirror and then calls the OpenGL function of the
// same name. Do all matrix work through it, since the mirror does not see direct calls; the engine
// itself makes direct calls. Both stacks start as identity; each takes 32 pushes, which may be more
// than OpenGL's own. A context must be current, except for glWrapperGetFloatv. NULL for a matrix
// logs a line and changes nothing.

#include "ravolt/api.h"

// Chooses the stack: GL_MODELVIEW or GL_PROJECTION. Any other mode is passed to OpenGL alone and
// does not change the mirror.
RV_API void glWrapperMatrixMode(unsigned int mode);

// Replace the top of the stack by an identity or a matrix, or multiply it by one. Sixteen floats in
// OpenGL's order, translation in elements 12 to 14.
RV_API void glWrapperLoadIdentity();
RV_API void glWrapperLoadMatrixf(const float *matrix);
RV_API void glWrapperMultMatrixf(const float *matrix);

// Angle in degrees.
RV_API void glWrapperRotatef(float angle, float x, float y, float z);
RV_API void glWrapperTranslatef(float x, float y, float z);

// A push onto a full stack and a pop from an empty one log a line and have no other effect; OpenGL
// is not called.
RV_API void glWrapperPushMatrix();
RV_API void glWrapperPopMatrix();

// The mirrored matrix differs from OpenGL's on purpose: it lacks the factor of the near plane in
// elements 0 and 5, and its last column and last row are exchanged.
RV_API void glWrapperFrustum(double left, double right, double bottom, double top, double zNear,
                             double zFar);

// The parallel projection of OpenGL's glOrtho: the six planes in eye space. The mirror divides by
// the differences of each pair, which OpenGL refuses when they are 0.
RV_API void glWrapperOrtho(double left, double right, double bottom, double top, double zNear,
                           double zFar);

// Copies the top of a stack for GL_MODELVIEW_MATRIX or GL_PROJECTION_MATRIX to `matrix`, which must
// have room for sixteen floats; any other name does nothing.
RV_API void glWrapperGetFloatv(unsigned int name, float *matrix);
