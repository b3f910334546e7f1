// Picking: the last 3D block is drawn once more into one pixel, with object ids as colours. The
// pixel is read and its colour is restored; its depth is lost.

#include "engine/frame/frameSteps.h"
#include "engine/gl/screenQuad.h"
#include "ravolt/RVELEMENT.h"
#include "ravolt/RVLIGHT.h"
#include "ravolt/RVMATERIAL.h"
#include "ravolt/RVNODE.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVSETTINGS.h"
#include "ravolt/RVSHADER.h"
#include "scene/nodeTraits.h"

#include <SDL/SDL.h>
#include <array>

namespace {

using PixelBytes = std::array<GLubyte, 4>; // red, green, blue, alpha

// Wraps for coordinates outside of any window.
int fromTop(int y) {
    return static_cast<int>(static_cast<unsigned int>(RVSETTINGS::getSDLWindowY()) -
                            static_cast<unsigned int>(y));
}

struct WindowPixel {
    int x, y; // from the top left

    // On purpose: one row above the pixel's own in OpenGL's count, where row 0 is the lowest.
    int row() const { return fromTop(y); }
};

WindowPixel turnForDisplay(int x, int y) {
    if (RVSETTINGS::isSDLLandscape())
        return {fromTop(y), x};
    return {x, y};
}

// SDL 1.2's interface on SDL 2 draws a multisampled window into a frame buffer of its own, which
// only its own function reads.
auto pixelReader() {
    using Reader = decltype(&glReadPixels);
    void *const function =
        RVSETTINGS::getSDLMultisampling() ? SDL_GL_GetProcAddress("glReadPixels") : nullptr;
    return function ? reinterpret_cast<Reader>(function) : &glReadPixels;
}

// All zeros outside of the target.
PixelBytes readPixel(const WindowPixel &pixel) {
    PixelBytes bytes = {};
    pixelReader()(pixel.x, pixel.row(), 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, bytes.data());
    return bytes;
}

bool isPickable(const RVNODE &node) { return ravolt::traitsOf(node).pickable; }

// Limits drawing to the pixel, with direct calls: the cached switch is the application's.
void limitTo(const WindowPixel &pixel) {
    glScissor(pixel.x, pixel.row(), 1, 1);
    glEnable(GL_SCISSOR_TEST);
}

// The inverse of the coding of an id as a colour: the lowest byte is red; at 16 bits the fields
// have 5, 6 and 5 bits, and red is the highest.
unsigned int decodeObjectId(const PixelBytes &bytes, int colorDepth) {
    const unsigned int red = bytes[0], green = bytes[1], blue = bytes[2], alpha = bytes[3];
    if (colorDepth == 16)
        return red >> 3 << 11 | green >> 2 << 5 | blue >> 3;
    const unsigned int color = red | green << 8 | blue << 16;
    return colorDepth == 24 ? color : color | alpha << 24;
}

// On purpose: texturing is not changed, so a texture that is still enabled affects the point.
void restorePixel(const WindowPixel &pixel, const PixelBytes &color) {
    const int width = RVSETTINGS::getSDLWindowX(), height = RVSETTINGS::getSDLWindowY();
    glDisable(GL_DEPTH_TEST);
    ravolt::resetProjection();
    ravolt::applyWindowProjection(width, height);
    RVSHADER::disable(); // the last program of the frame may still be active
    RVLIGHT::lightingOff();
    RVOPENGL::blendingOff();
    glBegin(GL_POINTS);
    glColor4ubv(color.data());
    glVertex2i(pixel.x, pixel.y);
    glEnd();
}

using Viewport = std::array<GLint, 4>;

Viewport readViewport() {
    Viewport viewport = {};
    glGetIntegerv(GL_VIEWPORT, viewport.data());
    return viewport;
}

// Restores both matrices, the viewport and the state of the frame at the end of its lifetime.
class SelectionScope {
  public:
    explicit SelectionScope(const Viewport &toRestore) : viewport(toRestore) {
        glMatrixMode(GL_PROJECTION);
        glPushMatrix();
        glMatrixMode(GL_MODELVIEW);
        glPushMatrix();
        if (RVSETTINGS::getSDLMultisampling()) // the mean of two ids would be a third one
            glDisable(GL_MULTISAMPLE_ARB);
    }
    ~SelectionScope() {
        if (RVSETTINGS::getSDLMultisampling())
            glEnable(GL_MULTISAMPLE_ARB);
        glMatrixMode(GL_PROJECTION);
        glPopMatrix();
        glViewport(viewport[0], viewport[1], viewport[2], viewport[3]);
        glMatrixMode(GL_MODELVIEW);
        glPopMatrix();
        glDisable(GL_SCISSOR_TEST);
        glEnable(GL_DEPTH_TEST);
        glDepthFunc(GL_LESS);
    }
    SelectionScope(const SelectionScope &) = delete;
    SelectionScope &operator=(const SelectionScope &) = delete;

  private:
    Viewport viewport;
};

} // namespace

unsigned int RAVOLT::select(int x, int y) {
    const WindowPixel pixel = turnForDisplay(x, y);
    const Viewport viewport = readViewport();
    const PixelBytes before = readPixel(pixel);
    const SelectionScope scope(viewport);

    const Z3MVECTOR4D background = RVOPENGL::getBackgroundColor();
    RVOPENGL::setBackgroundColor(0, 0, 0, 0); // no object has the id 0
    limitTo(pixel);
    clear(true, true, false);
    glDepthFunc(GL_LEQUAL);
    RVOPENGL::setProfile(RV_OPENGL_PROFILE_FLAT);
    Frame::drawList(isPickable);
    RVOPENGL::setBackgroundColor(background);
    RVOPENGL::setProfile(RV_OPENGL_PROFILE_FULL);

    const PixelBytes after = readPixel(pixel);
    restorePixel(pixel, before);
    RVMATERIAL::reset(); // the flat profile has undone what the last material had set
    return decodeObjectId(after, RVSETTINGS::getSDLColorDepth());
}
