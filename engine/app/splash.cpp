// The splash is drawn with direct calls of OpenGL 1.1. It runs before the start of RVOPENGL, whose
// cached switches expect the state of a new context, and so restores that state.

#include "engine/app/splash.h"

#include "engine/app/windowSystem.h"
#include "engine/gl/screenQuad.h"
#include "ravolt/RAVOLT.h"
#include "ravolt/zlf.h"

#include <GL/gl.h>
#include <GL/glext.h>

namespace {

// Makes the picture the bound texture and returns its name.
GLuint uploadPicture(const unsigned char *picture) {
    GLuint texture = 0;
    glGenTextures(1, &texture);
    glBindTexture(GL_TEXTURE_2D, texture);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    glTexImage2D(GL_TEXTURE_2D, 0, 3, ravolt::splashSize, ravolt::splashSize, 0, GL_BGR_EXT,
                 GL_UNSIGNED_BYTE, picture);
    return texture;
}

void drawPicture(int areaX, int areaY) {
    constexpr int half = ravolt::splashSize / 2;
    const int x = areaX / 2, y = areaY / 2;
    ravolt::drawQuad(x - half, y - half, x + half, y + half);
}

} // namespace

namespace ravolt {

void drawSplash(int windowX, int windowY, bool CAVE, const SystemWindow &window) {
    glClearColor(1, 1, 1, 1);
    glClear(GL_COLOR_BUFFER_BIT);
    resetProjection();
    applyWindowProjection(windowX, windowY);

    const std::unique_ptr<unsigned char[]> picture = splashPicture();
    if (!picture)
        zlfLog("   [!] Out of memory for the splash picture @ RVSETTINGS::init\n");

    glEnable(GL_TEXTURE_2D);
    const GLuint texture = uploadPicture(picture.get());
    glColor4f(1, 1, 1, 1);
    if (CAVE)
        window.raiseToTop();
    if (picture)
        drawPicture(CAVE ? windowX / 2 : windowX, windowY);
    glDisable(GL_TEXTURE_2D);

    RAVOLT::swap();
    glDeleteTextures(1, &texture);
}

} // namespace ravolt
