// What the frame is drawn into, and reading from it.

#include "kit/surface.h"

#include "ravolt/RAVOLT.h"
#include "ravolt/RVFBO.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVSETTINGS.h"

#include <SDL/SDL.h>

namespace ravolt::kit {

namespace {

// A target that was deleted while it was bound is still recorded; OpenGL has bound the window then.
RVFBO *boundTarget() {
    GLint bound = 0;
    if (RVFBO::getCurrent())
        glGetIntegerv(GL_FRAMEBUFFER_BINDING_EXT, &bound);
    return bound ? RVFBO::getCurrent() : nullptr;
}

} // namespace

Surface boundSurface() {
    if (RVFBO *const target = boundTarget())
        return {target, target->getSizeX(), target->getSizeY()};
    return {nullptr, RVSETTINGS::getSDLWindowX(), RVSETTINGS::getSDLWindowY()};
}

// The engine alone knows: settings, effects, and whether they are supported. To clear nothing binds
// the target all the same.
Surface bindDrawnSurface() {
    RAVOLT::clear(false, false, false);
    return boundSurface();
}

// SDL 1.2's interface on SDL 2 draws a multisampled window into a frame buffer of its own, which
// only its own function reads.
void readPixels(int x, int y, int width, int height, unsigned int format, unsigned int type,
                void *pixels) {
    using Reader = decltype(&glReadPixels);
    void *const own =
        RVSETTINGS::getSDLMultisampling() ? SDL_GL_GetProcAddress("glReadPixels") : nullptr;
    const Reader reader = own ? reinterpret_cast<Reader>(own) : &glReadPixels;
    reader(x, y, width, height, format, type, pixels);
}

BindingScope::BindingScope() : target(boundTarget()) { glGetIntegerv(GL_VIEWPORT, viewport); }

BindingScope::~BindingScope() {
    if (target)
        target->render(nullptr);
    else
        RVFBO::unbind();
    glViewport(viewport[0], viewport[1], viewport[2], viewport[3]);
}

} // namespace ravolt::kit
