#pragma once

// The active texture unit, and vertex buffers. Nothing happens where the driver has no function for
// it. Only here may vertex buffers be generated, filled and deleted.

#include "engine/gl/entryPoint.h"
#include "engine/gl/stateCache.h"
#include "ravolt/RVOPENGL.h"

#include <cstddef>

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

// The buffer that was last bound to a target: the first is that of arrays, the second of indices.
struct BoundBuffer {
    unsigned int period; // of KnownState
    GLuint name;
};
inline BoundBuffer boundBuffers[2] = {};
inline BoundBuffer &boundBuffer(GLenum target) {
    return boundBuffers[target == GL_ELEMENT_ARRAY_BUFFER_ARB];
}

// Binds a vertex buffer, also where RVOPENGL::useVBO is false. The driver has the function.
inline void bindBufferAlways(GLenum target, GLuint buffer) {
    BoundBuffer &bound = boundBuffer(target);
    if (KnownState::hit(bound.period, bound.name == buffer))
        return;
    bound = {KnownState::period(), buffer};
    RVOPENGL::glBindBufferARB(target, buffer);
}

// Binds a vertex buffer; 0 makes the arrays come from the application's memory.
inline void bindBuffer(GLenum target, GLuint buffer) {
    if (canBindBuffers())
        bindBufferAlways(target, buffer);
}

// Before arrays, or indices, in the application's memory are drawn: a mesh that was drawn before
// leaves its buffer bound, and OpenGL would take their addresses as offsets in it.
inline void useMemory(GLenum target) {
    if (!cacheHit(boundBuffer(target).name == 0))
        bindBuffer(target, 0);
}

inline void unbindBuffers() {
    bindBuffer(GL_ARRAY_BUFFER_ARB, 0);
    bindBuffer(GL_ELEMENT_ARRAY_BUFFER_ARB, 0);
}

inline bool canCreateBuffers() {
    return RVOPENGL::glGenBuffersARB && RVOPENGL::glBindBufferARB && RVOPENGL::glBufferDataARB;
}

// OpenGL's name of a new buffer with these contents, which stays bound; 0 without one.
inline GLuint createBuffer(GLenum target, const void *data, std::size_t bytes) {
    if (!canCreateBuffers())
        return 0;
    GLuint buffer = 0;
    RVOPENGL::glGenBuffersARB(1, &buffer);
    if (!buffer) // 0 is no buffer that could be filled
        return 0;
    bindBufferAlways(target, buffer);
    RVOPENGL::glBufferDataARB(target, static_cast<GLsizeiptrARB>(bytes), data, GL_STATIC_DRAW_ARB);
    return buffer;
}

// 0 is no buffer.
inline void deleteBuffer(GLuint buffer) {
    if (buffer)
        callIfPresent<RVOPENGL::glDeleteBuffersARB>(1, &buffer);
}

} // namespace ravolt
