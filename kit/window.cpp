// The window is changed by SDL alone; what SDL does with the context depends on its video driver.
// SDL 1.2's own X11 driver preserves it, and so do all drivers of SDL 1.2's interface on SDL 2.

#include "ravolt/kit/window.h"

#include "ravolt/RVOPENGL.h"
#include "ravolt/RVSETTINGS.h"
#include "ravolt/zlf.h"

#include <SDL.h>

#include <algorithm>
#include <array>
#include <cstring>

namespace ravolt::kit {

namespace {

constexpr int firstPatchOnSdl2 = 50; // the versions of the interface on SDL 2 are 1.2.50 and later

struct DriverName {
    char text[64] = "";
    DriverName() { SDL_VideoDriverName(text, sizeof text); }
};

bool preservesContext(const DriverName &driver) {
    return SDL_Linked_Version()->patch >= firstPatchOnSdl2 || !std::strcmp(driver.text, "x11");
}

bool isDrawable(int width, int height) {
    std::array<GLint, 2> largest = {};
    glGetIntegerv(GL_MAX_VIEWPORT_DIMS, largest.data());
    return width > 0 && height > 0 && width <= largest[0] && height <= largest[1];
}

bool isSize(int width, int height) {
    const SDL_Surface *surface = SDL_GetVideoSurface();
    return surface && surface->w == width && surface->h == height;
}

// An object of the context: it is lost with all others. A display list needs no binding.
class Witness {
  public:
    Witness() : list(glGenLists(1)) {}
    ~Witness() { glDeleteLists(list, 1); }
    Witness(const Witness &) = delete;
    Witness &operator=(const Witness &) = delete;
    bool isAlive() const { return glIsList(list); }

  private:
    GLuint list;
};

// Whether the full screen is `on` now. SDL's result alone is not enough: some drivers report a
// change that they do not make.
bool toggleTo(bool on, const Window &window) {
    if (window.isFullScreen() != on)
        SDL_WM_ToggleFullScreen(SDL_GetVideoSurface());
    return window.isFullScreen() == on;
}

} // namespace

bool Window::handle(const SDL_Event &event) {
    if (event.type == SDL_VIDEORESIZE) {
        if (!isFullScreen() && event.resize.w > 0 && event.resize.h > 0)
            resize(event.resize.w, event.resize.h);
        return true;
    }
    const SDL_keysym &key = event.key.keysym;
    if (event.type != SDL_KEYDOWN || key.sym != SDLK_RETURN || !(key.mod & KMOD_ALT))
        return false;
    setFullScreen(!isFullScreen());
    return true;
}

bool Window::resize(int width, int height) {
    if (!RVSETTINGS::isActive() || !isDrawable(width, height)) {
        zlfLog("   [!] Invalid size %d by %d @ Window::resize\n", width, height);
        return false;
    }
    const DriverName driver;
    if (!preservesContext(driver)) {
        zlfLog("   [!] Video driver %s does not preserve textures @ Window::resize\n", driver.text);
        return false;
    }
    const int oldWidth = RVSETTINGS::getSDLWindowX(), oldHeight = RVSETTINGS::getSDLWindowY();
    const bool fullScreen = isFullScreen();
    const Witness witness;
    RVSETTINGS::resize(0, 0, width, height);
    toggleTo(fullScreen, *this); // the engine resizes to the mode that it has started with
    if (!isSize(width, height)) {
        zlfLog("   [!] SDL does not change the size to %d by %d @ Window::resize\n", width, height);
        RVSETTINGS::resize(0, 0, oldWidth, oldHeight);
        return false;
    }
    if (!witness.isAlive())
        zlfLog("   [!] Textures are lost @ Window::resize\n");
    return witness.isAlive();
}

bool Window::isFullScreen() const {
    const SDL_Surface *surface = RVSETTINGS::isActive() ? SDL_GetVideoSurface() : nullptr;
    return surface && (surface->flags & SDL_FULLSCREEN);
}

bool Window::setFullScreen(bool on) {
    const DriverName driver;
    if (RVSETTINGS::isActive() && preservesContext(driver)) {
        const Witness witness;
        const bool changed = toggleTo(on, *this);
        if (!witness.isAlive()) {
            zlfLog("   [!] Textures are lost @ Window::setFullScreen\n");
            return false;
        }
        if (changed)
            return true;
    }
    zlfLog("   [!] Video driver %s has no such change @ Window::setFullScreen\n", driver.text);
    return false;
}

} // namespace ravolt::kit
