#pragma once

// The active texture unit and the bound vertex buffers. Nothing happens where the driver has no
// function for it.

#include "engine/gl/entryPoint.h"
#include "ravolt/RVOPENGL.h"

namespace ravolt {

// Make a texture unit the active one, of the server and of the client. Both act also where the
// units are too few for RVOPENGL::useMultitexturing.
inline void selectUnit(unsigned int unit) {
    callIfPresent<RVOPENGL::glActiveTextureARB>(GL_TEXTURE0 + unit);
}
inline void selectClientUnit(unsigned int unit) {
    callIfPresent<RVOPENGL::glClientActiveTextureARB>(GL_TEXTURE0 + unit);
}

inline bool canBindBuffers() { return RVOPENGL::useVBO() && RVOPENGL::glBindBufferARB; }

// Binds a vertex buffer; 0 makes the arrays come from the application's memory.
inline void bindBuffer(GLenum target, GLuint buffer) {
    if (canBindBuffers())
        RVOPENGL::glBindBufferARB(target, buffer);
}

inline void unbindBuffers() {
    bindBuffer(GL_ARRAY_BUFFER_ARB, 0);
    bindBuffer(GL_ELEMENT_ARRAY_BUFFER_ARB, 0);
}

} // namespace ravolt
