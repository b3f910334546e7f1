// The window and its context: opened from the requested settings, and recorded as the applied ones.
// SDL is called in exactly this order: what must be set before the window exists (library,
// attributes, flags, caption), the window, what was obtained.

#include "engine/app/splash.h"
#include "engine/app/windowSystem.h"
#include "foundation/text.h"
#include "ravolt/RAVOLT.h"
#include "ravolt/RVANIM.h"
#include "ravolt/RVFONT.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVSETTINGS.h"
#include "ravolt/RVSHADER.h"
#include "ravolt/RVTEXTURE.h"
#include "ravolt/zlf.h"

#include <SDL/SDL.h>

namespace {

// The mode that the window was opened with. A resize with this mode, and not with the obtained one,
// preserves the context.
struct {
    int bits = 0;
    Uint32 flags = 0;
    bool multisampled = false; // whether SDL's attributes for it are set
} requestedMode;

Uint32 modeFlags(bool fullScreen, bool resizable) {
    return static_cast<Uint32>(SDL_OPENGL) | static_cast<Uint32>(fullScreen  ? SDL_FULLSCREEN
                                                                 : resizable ? SDL_RESIZABLE
                                                                             : 0);
}

int obtained(SDL_GLattr attribute) {
    int value = 0;
    SDL_GL_GetAttribute(attribute, &value);
    return value;
}

void logRequest(RVSETTINGS &requested) {
    zlfLog("   Init settings...\n");
    zlfLog("      Configuration to set:\n");
    zlfLog("          X: %u, Y: %u\n", requested.getWindowX(), requested.getWindowY());
    zlfLog("          depth: %u, zeta: %u, stencil: %u\n", requested.getColorDepth(),
           requested.getZetaDepth(), requested.getStencilDepth());
    zlfLog("          title: '%s'\n", requested.getTitle());
    zlfLog("          fullscreen: %d\n", requested.isFullScreen());
    zlfLog("          resizable : %d\n", requested.isResizable());
    zlfLog("          landscape : %d\n", requested.isLandscape());
    zlfLog("          shaders: %d\n", requested.getShaders());
    zlfLog("          max elems: %d\n", requested.getRenderingElements());
    zlfLog("          audio: c: %d, b: %d, e: %d\n", requested.getAudioChannels(),
           requested.getAudioBuffers(), requested.getAudioElements());
    zlfLog("          shadow map size: %d\n", requested.getShadowMapSize());
    zlfLog("          FBO map sizes  : %d, %d\n", requested.getFBOSizeX(), requested.getFBOSizeY());
    zlfLog("          Water map size : %d\n", requested.getWaterSize());
}

// On purpose: without the video path, which applications pass to RVVIDEO themselves.
void applyPaths(RVSETTINGS &requested) {
    RAVOLT::setRVEPath(requested.getRVEPath());
    zlfLog("          RVE path    : '%s'\n", requested.getRVEPath());
    RVANIM::setRVAPath(requested.getRVAPath());
    zlfLog("          RVA path    : '%s'\n", requested.getRVAPath());
    RVTEXTURE::setPath(requested.getTexturePath());
    zlfLog("          Texture path: '%s'\n", requested.getTexturePath());
    RVSHADER::setPath(requested.getShaderPath());
    zlfLog("          Shader path : '%s'\n", requested.getShaderPath());
    RVFONT::setPath(requested.getFontPath());
    zlfLog("          Font path   : '%s'\n", requested.getFontPath());
}

void setContextAttributes(const RVSETTINGS &requested) {
    const int channel = requested.getColorDepth() == 16 ? 5 : 8;
    const struct {
        SDL_GLattr attribute;
        int value;
    } rows[] = {
        {SDL_GL_RED_SIZE, channel},
        {SDL_GL_GREEN_SIZE, channel},
        {SDL_GL_BLUE_SIZE, channel},
        {SDL_GL_ACCUM_RED_SIZE, 0},
        {SDL_GL_ACCUM_GREEN_SIZE, 0},
        {SDL_GL_ACCUM_BLUE_SIZE, 0},
        {SDL_GL_ACCUM_ALPHA_SIZE, 0},
        {SDL_GL_ALPHA_SIZE, requested.getColorDepth() == 32 ? 8 : 0},
        {SDL_GL_DEPTH_SIZE, requested.getZetaDepth()},
        {SDL_GL_STENCIL_SIZE, requested.getStencilDepth()},
        {SDL_GL_DOUBLEBUFFER, 1},
    };
    SDL_GL_LoadLibrary(nullptr);
    for (const auto &row : rows)
        SDL_GL_SetAttribute(row.attribute, row.value);
}

void setSampleAttributes(int samples) {
    SDL_GL_SetAttribute(SDL_GL_MULTISAMPLEBUFFERS, samples > 0);
    SDL_GL_SetAttribute(SDL_GL_MULTISAMPLESAMPLES, samples);
    requestedMode.multisampled = samples > 0;
}

// OpenGL's number: SDL 1.2's interface on SDL 2 reports the requested one, obtained or not.
int obtainedSamples() {
    GLint samples = 0;
    glGetIntegerv(GL_SAMPLES_ARB, &samples);
    return samples;
}

bool openMode(RVSETTINGS &requested) {
    const bool titled = requested.getTitle()[0] != '\0';
    requestedMode.bits = requested.getColorDepth();
    requestedMode.flags = modeFlags(requested.isFullScreen(), requested.isResizable()) |
                          static_cast<Uint32>(SDL_HWSURFACE) |
                          static_cast<Uint32>(titled ? 0 : SDL_NOFRAME);
    if (!requested.isFullScreen() && titled)
        SDL_WM_SetCaption(requested.getTitle(), nullptr);
    return SDL_SetVideoMode(requested.getWindowX(), requested.getWindowY(), requestedMode.bits,
                            requestedMode.flags) != nullptr;
}

// Without multisampling if there is none: then the mode does not open, or, with SDL 1.2's interface
// on SDL 2, it opens with an incomplete frame buffer.
bool openWindow(RVSETTINGS &requested) {
    if (requested.getMultisampling() > 0) {
        setSampleAttributes(requested.getMultisampling());
        if (openMode(requested) && obtainedSamples() > 0)
            return true;
        setSampleAttributes(0);
    }
    return openMode(requested);
}

} // namespace

bool RVSETTINGS::isOk() {
    // The classic SDL 1.2 reads its driver's table without a test for NULL.
    return SDL_WasInit(SDL_INIT_VIDEO) &&
           SDL_VideoModeOK(windowX, windowY, colorDepth, modeFlags(fullScreen, resizable)) != 0;
}

bool RVSETTINGS::init() {
    if (applied.active) {
        zlfLog("   [!] Settings already active\n");
        return false;
    }
    logRequest(*this);
    if (!isOk()) {
        zlfLog("   [!] Incompatible config @ RVSETTINGS::init\n");
        return false;
    }
    applyPaths(*this);
    setContextAttributes(*this);
    if (!openWindow(*this)) {
        zlfLog("   [!] Unsupported video config (%s) @ RVSETTINGS::init\n", SDL_GetError());
        return false;
    }
    const ravolt::SystemWindow window;
    applied.window = window.handle();
    window.setOuterSize(windowX, windowY); // On purpose: with its frame.
    ravolt::drawSplash(windowX, windowY, CAVESplashScreen, window);
    recordObtainedMode();
    applied.active = true;
    return true;
}

// The depths are those obtained, the rest is as requested.
// On purpose: the audio numbers and the capacity of the render list are not recorded and remain 0.
void RVSETTINGS::recordObtainedMode() {
    const int red = obtained(SDL_GL_RED_SIZE), green = obtained(SDL_GL_GREEN_SIZE),
              blue = obtained(SDL_GL_BLUE_SIZE), alpha = obtained(SDL_GL_ALPHA_SIZE);
    applied.zetaDepth = obtained(SDL_GL_DEPTH_SIZE);
    applied.stencilDepth = obtained(SDL_GL_STENCIL_SIZE);
    obtained(SDL_GL_DOUBLEBUFFER);

    ravolt::copyText(applied.title, title);
    applied.windowX = windowX;
    applied.windowY = windowY;
    applied.colorDepth = red + green + blue + alpha;
    applied.fullScreen = fullScreen;
    applied.resizable = resizable;
    applied.landscape = landscape;
    applied.useShaders = useShaders;
    applied.forceFBO = forceFBO;
    applied.shadowMapSize = shadowMapSize;
    applied.FBOSizeX = FBOSizeX;
    applied.FBOSizeY = FBOSizeY;
    applied.waterSize = waterSize;
    applied.maxAnisotropy = maxAnisotropy;
    applied.multisampling = requestedMode.multisampled ? obtainedSamples() : 0;
    if (multisampling > 0 && applied.multisampling == 0)
        zlfLog("   [!] Unsupported multisampling (%d samples) @ RVSETTINGS::init\n", multisampling);

    zlfLog("      Color bits (RGBA): %d, %d, %d, %d\n", red, green, blue, alpha);
    zlfLog("      Shadow map size: %d\n", applied.shadowMapSize);
    zlfLog("      FBO map sizes  : %d, %d\n", applied.FBOSizeX, applied.FBOSizeY);
    zlfLog("      Configuration used:\n");
    zlfLog("          SizeX: %u, SizeY: %u\n", applied.windowX, applied.windowY);
    zlfLog("          depth: %u, zeta: %u, stencil: %u\n", applied.colorDepth, applied.zetaDepth,
           applied.stencilDepth);
    zlfLog("          title: '%s'\n", applied.title);
    zlfLog("          fullscreen: %d\n", applied.fullScreen);
    zlfLog("          landscape : %d\n", applied.landscape);
    zlfLog("          shaders: %d\n", applied.useShaders);
    zlfLog("          audio: c: %d, b: %d, e: %d\n", applied.audioChannels, applied.audioBuffers,
           applied.audioElements);
    zlfLog("   Settings initialized\n");
}

bool RVSETTINGS::free() {
    if (!applied.active)
        return false;
    zlfLog("   Release settings...\n");
    zlfLog("   Settings released\n");
    if (requestedMode.multisampled) // SDL 1.2's interface on SDL 2 never resets the attributes
        setSampleAttributes(0);
    applied.active = false;
    return true;
}

bool RVSETTINGS::resize(int x, int y, int sizeX, int sizeY) {
    applied.windowX = sizeX; // RVOPENGL::resize reads the new size
    applied.windowY = sizeY;
    RVOPENGL::resize(x, y, sizeX, sizeY);         // whose result is always true
    if (applied.active && sizeX > 0 && sizeY > 0) // SDL takes a size of 0 for the whole screen
        SDL_SetVideoMode(sizeX, sizeY, requestedMode.bits, requestedMode.flags);
    return true;
}
