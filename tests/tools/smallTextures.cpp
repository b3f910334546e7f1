// Preloaded into the tool: a display that has no memory for textures of more than 1,100 pixels.

#include <GL/gl.h>
#include <dlfcn.h>

extern "C" __attribute__((visibility("default"))) void
glTexImage2D(GLenum target, GLint level, GLint internalFormat, GLsizei width, GLsizei height,
             GLint border, GLenum format, GLenum type, const void *pixels) {
    static const auto real =
        reinterpret_cast<decltype(&glTexImage2D)>(dlsym(RTLD_NEXT, "glTexImage2D"));
    if (width <= 1100 && height <= 1100)
        real(target, level, internalFormat, width, height, border, format, type, pixels);
}
