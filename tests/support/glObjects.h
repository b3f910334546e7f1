#pragma once

// What OpenGL reports of the bound texture, frame buffer and render buffer.

#include <GL/gl.h>
#include <GL/glext.h>

#include <SDL.h>

namespace ravolt::test {

template <class Function> Function entryPoint(const char *name) {
    return reinterpret_cast<Function>(SDL_GL_GetProcAddress(name));
}

inline int textureLevel(GLenum name, int level = 0) {
    int value = 0;
    glGetTexLevelParameteriv(GL_TEXTURE_2D, level, name, &value);
    return value;
}

inline int textureParameter(GLenum name) {
    int value = 0;
    glGetTexParameteriv(GL_TEXTURE_2D, name, &value);
    return value;
}

inline int attachmentOf(GLenum attachment, GLenum name) {
    static const auto get = entryPoint<PFNGLGETFRAMEBUFFERATTACHMENTPARAMETERIVEXTPROC>(
        "glGetFramebufferAttachmentParameterivEXT");
    int value = 0;
    get(GL_FRAMEBUFFER_EXT, attachment, name, &value);
    return value;
}

inline int attachedName(GLenum attachment) {
    return attachmentOf(attachment, GL_FRAMEBUFFER_ATTACHMENT_OBJECT_NAME_EXT);
}

inline int attachedType(GLenum attachment) {
    return attachmentOf(attachment, GL_FRAMEBUFFER_ATTACHMENT_OBJECT_TYPE_EXT);
}

inline int renderBufferOf(GLenum name) {
    static const auto get =
        entryPoint<PFNGLGETRENDERBUFFERPARAMETERIVEXTPROC>("glGetRenderbufferParameterivEXT");
    int value = 0;
    get(GL_RENDERBUFFER_EXT, name, &value);
    return value;
}

} // namespace ravolt::test
