// The splash is drawn with OpenGL 1.1 alone and directly: the cached switches of RVOPENGL start
// only after it, so it leaves what they cache as a new context has it.

#include "engine/app/splash.h"

#include "engine/app/windowSystem.h"
#include "ravolt/RAVOLT.h"
#include "ravolt/zlf.h"

#include <GL/gl.h>
#include <GL/glext.h>

namespace {

void setPixelCoordinates(int windowX, int windowY) {
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glViewport(0, 0, windowX, windowY);
    glOrtho(0, windowX, windowY, 0, -1, 1);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
}

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
    const int left = areaX / 2 - half, right = areaX / 2 + half;
    const int top = areaY / 2 - half, bottom = areaY / 2 + half;
    glBegin(GL_QUADS);
    glTexCoord2f(0, 1);
    glVertex2i(left, top);
    glTexCoord2f(0, 0);
    glVertex2i(left, bottom);
    glTexCoord2f(1, 0);
    glVertex2i(right, bottom);
    glTexCoord2f(1, 1);
    glVertex2i(right, top);
    glEnd();
}

} // namespace

namespace ravolt {

void drawSplash(int windowX, int windowY, bool CAVE, const SystemWindow &window) {
    glClearColor(1, 1, 1, 1);
    glClear(GL_COLOR_BUFFER_BIT);
    setPixelCoordinates(windowX, windowY);

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
