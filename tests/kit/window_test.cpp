// The window is resized and fills the screen while textures, buffers and programs stay alive: a
// picture that needs all of them is drawn again.

#include <ravolt/kit/input.h>
#include <ravolt/kit/window.h>

#include "ravolt/RVCAMERA.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVSHADER.h"
#include "testing/recorderState.h"
#include "tests/kit/events.h"
#include "tests/support/engineFixture.h"
#include "tests/support/realDriver.h"

#include <SDL/SDL.h>
#include <array>

namespace {
bool objectsAreLost = false, toggleFails = false;
}

// Calls of the kit, which these definitions hide from the libraries.
extern "C" GLboolean glIsList(GLuint list) {
    static auto *const real =
        reinterpret_cast<GLboolean (*)(GLuint)>(ravolt::test::realFunction("glIsList"));
    return objectsAreLost ? GLboolean(GL_FALSE) : real(list);
}
extern "C" int SDL_WM_ToggleFullScreen(SDL_Surface *surface) {
    static auto *const real = reinterpret_cast<int (*)(SDL_Surface *)>(
        ravolt::test::realFunction("SDL_WM_ToggleFullScreen"));
    return toggleFails ? 0 : real(surface);
}

namespace ravolt::test {
namespace {

using kit::Input;
using kit::Window;

// A texture, a vertex buffer and a program, and a picture made of them: the left half of the window
// in the colour of the texture, times that of the program.
class ContextObjects {
  public:
    ContextObjects() {
        const std::array<unsigned char, 16> texels = {200, 100, 50, 255, 200, 100, 50, 255,
                                                      200, 100, 50, 255, 200, 100, 50, 255};
        glGenTextures(1, &texture);
        glBindTexture(GL_TEXTURE_2D, texture);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
        glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 2, 2, 0, GL_RGBA, GL_UNSIGNED_BYTE, texels.data());
        const std::array<float, 8> corners = {-1, -1, 0, -1, 0, 1, -1, 1};
        RVOPENGL::glGenBuffersARB(1, &buffer);
        RVOPENGL::glBindBufferARB(GL_ARRAY_BUFFER_ARB, buffer);
        RVOPENGL::glBufferDataARB(GL_ARRAY_BUFFER_ARB, sizeof corners, corners.data(),
                                  GL_STATIC_DRAW_ARB);
        RVOPENGL::glBindBufferARB(GL_ARRAY_BUFFER_ARB, 0);
        const char *source = "uniform sampler2D map;"
                             "void main() { gl_FragColor = 0.5 * texture2D(map, vec2(0.5)); }";
        shader = RVOPENGL::glCreateShaderObjectARB(GL_FRAGMENT_SHADER_ARB);
        RVOPENGL::glShaderSourceARB(shader, 1, &source, nullptr);
        RVOPENGL::glCompileShaderARB(shader);
        program = RVOPENGL::glCreateProgramObjectARB();
        RVOPENGL::glAttachObjectARB(program, shader);
        RVOPENGL::glLinkProgramARB(program);
    }
    ContextObjects(const ContextObjects &) = delete;
    ContextObjects &operator=(const ContextObjects &) = delete;
    ~ContextObjects() {
        RVOPENGL::glDeleteObjectARB(program);
        RVOPENGL::glDeleteObjectARB(shader);
        RVOPENGL::glDeleteBuffersARB(1, &buffer);
        glDeleteTextures(1, &texture);
    }

    bool areAlive() const {
        GLint linked = 0;
        RVOPENGL::glGetObjectParameterivARB(program, GL_OBJECT_LINK_STATUS_ARB, &linked);
        return glIsTexture(texture) && linked;
    }

    // The back buffer, not swapped.
    void draw() const {
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        glPushAttrib(GL_ALL_ATTRIB_BITS);
        glDisable(GL_DEPTH_TEST);
        glDisable(GL_CULL_FACE);
        glDisable(GL_LIGHTING);
        glMatrixMode(GL_PROJECTION);
        glPushMatrix();
        glLoadIdentity();
        glMatrixMode(GL_MODELVIEW);
        glLoadIdentity();
        glBindTexture(GL_TEXTURE_2D, texture);
        RVOPENGL::glUseProgramObjectARB(program);
        RVOPENGL::glBindBufferARB(GL_ARRAY_BUFFER_ARB, buffer);
        glPushClientAttrib(GL_CLIENT_VERTEX_ARRAY_BIT);
        glEnableClientState(GL_VERTEX_ARRAY);
        glVertexPointer(2, GL_FLOAT, 0, nullptr);
        glDrawArrays(GL_QUADS, 0, 4);
        glPopClientAttrib();
        RVOPENGL::glBindBufferARB(GL_ARRAY_BUFFER_ARB, 0);
        RVOPENGL::glUseProgramObjectARB(0);
        glMatrixMode(GL_PROJECTION);
        glPopMatrix();
        glMatrixMode(GL_MODELVIEW);
        glPopAttrib();
    }

  private:
    GLuint texture = 0, buffer = 0;
    GLhandleARB shader = 0, program = 0;
};

class KitWindow : public EngineTest {
  protected:
    Window window;
    Input input;

    KitWindow() {
        settings.setResizable(true);
        settings.setShaders(true);
    }

    void poll() {
        input.poll([this](const SDL_Event &event) { return window.handle(event); });
    }

    static void expectSize(int x, int y) {
        const SDL_Surface *surface = SDL_GetVideoSurface();
        EXPECT_EQ((std::array{RVSETTINGS::getSDLWindowX(), RVSETTINGS::getSDLWindowY()}),
                  (std::array{x, y}));
        EXPECT_EQ((std::array{surface->w, surface->h}), (std::array{x, y}));
    }

    // The picture fills the window of this size.
    static void expectPicture(const ContextObjects &objects, int x, int y) {
        EXPECT_TRUE(objects.areAlive());
        RAVOLT::swap(); // the driver applies the new size with the picture
        objects.draw();
        const Pixel drawn = {100, 50, 25}, background = pixelAt(x - 1, y / 2);
        for (const auto &[atX, atY] :
             {std::pair(0, 0), {0, y - 1}, {x / 2 - 2, 0}, {x / 2 - 2, y - 1}})
            EXPECT_PIXEL(pixelAt(atX, atY), drawn, 1) << atX << ", " << atY;
        for (const auto &[atX, atY] : {std::pair(x / 2 + 2, 0), {x - 1, 0}, {x - 1, y - 1}})
            EXPECT_PIXEL(pixelAt(atX, atY), background, 1) << atX << ", " << atY;
        EXPECT_FALSE(background == drawn);
    }
};

TEST_F(KitWindow, IsResizedWithItsObjects) {
    SKIP_WITHOUT_EXTENSIONS(allExtensions);
    const ContextObjects objects;
    expectPicture(objects, width, height);
    for (const auto &[x, y] : {std::pair(200, 150), {64, 48}, {333, 97}, {width, height}}) {
        EXPECT_TRUE(window.resize(x, y));
        expectSize(x, y);
        expectPicture(objects, x, y);
    }
}

TEST_F(KitWindow, FollowsTheUser) {
    SKIP_WITHOUT_EXTENSIONS(allExtensions);
    const ContextObjects objects;
    SDL_Event event = eventOf(SDL_VIDEORESIZE);
    event.resize.w = 220;
    event.resize.h = 140;
    SDL_PushEvent(&event);
    poll();
    expectSize(220, 140);
    expectPicture(objects, 220, 140);
    event.resize.h = 0;
    EXPECT_TRUE(window.handle(event));
    expectSize(220, 140);
    EXPECT_FALSE(window.handle(keyEvent(SDLK_RETURN)));
    EXPECT_FALSE(window.handle(motionEvent(1, 1)));
}

TEST_F(KitWindow, FillsTheScreenAndReturnsWithItsObjects) {
    SKIP_WITHOUT_EXTENSIONS(allExtensions);
    const ContextObjects objects;
    for (const bool on : {true, true, false, false, true, false}) {
        EXPECT_TRUE(window.setFullScreen(on));
        EXPECT_EQ(window.isFullScreen(), on);
        expectSize(width, height);
        expectPicture(objects, width, height);
    }
}

TEST_F(KitWindow, AltAndEnterToggleTheFullScreen) {
    SDL_Event event = keyEvent(SDLK_RETURN);
    event.key.keysym.mod = KMOD_LALT;
    SDL_PushEvent(&event);
    poll();
    EXPECT_TRUE(window.isFullScreen());
    EXPECT_FALSE(input.wasKeyPressed(SDLK_RETURN));
    SDL_PushEvent(&event);
    poll();
    EXPECT_FALSE(window.isFullScreen());
}

TEST_F(KitWindow, IsResizedOnTheFullScreen) {
    SKIP_WITHOUT_EXTENSIONS(allExtensions);
    const ContextObjects objects;
    ASSERT_TRUE(window.setFullScreen(true));
    EXPECT_TRUE(window.resize(160, 120));
    EXPECT_TRUE(window.isFullScreen());
    expectSize(160, 120);
    expectPicture(objects, 160, 120);
    EXPECT_TRUE(window.setFullScreen(false));
    expectPicture(objects, 160, 120);
}

TEST_F(KitWindow, RefusesOtherSizes) {
    for (const auto &[x, y] : {std::pair(0, 10), {10, -1}, {1 << 24, 10}, {10, 1 << 24}}) {
        EXPECT_FALSE(window.resize(x, y));
        EXPECT_LOGGED_EXACTLY("   [!] Invalid size " + std::to_string(x) + " by " +
                              std::to_string(y) + " @ Window::resize\n");
        expectSize(width, height);
    }
}

TEST_F(KitWindow, HasItsFormerSizeWhereSdlRefuses) {
    SKIP_WITHOUT_EXTENSIONS(allExtensions);
    recorder.failSetVideoMode();
    EXPECT_FALSE(window.resize(200, 150));
    EXPECT_LOGGED_EXACTLY("   [!] SDL does not change the size to 200 by 150 @ Window::resize\n");
    expectSize(width, height);
    recorder.reset();
    expectPicture(ContextObjects(), width, height);
}

TEST_F(KitWindow, ReportsLostObjects) {
    objectsAreLost = true;
    EXPECT_FALSE(window.resize(200, 150));
    EXPECT_LOGGED_EXACTLY("   [!] Textures are lost @ Window::resize\n");
    EXPECT_FALSE(window.setFullScreen(true));
    EXPECT_LOGGED_EXACTLY("   [!] Textures are lost @ Window::setFullScreen\n");
    objectsAreLost = false;
    EXPECT_TRUE(window.setFullScreen(false));
}

TEST_F(KitWindow, ReportsADriverWithoutAFullScreen) {
    toggleFails = true;
    EXPECT_FALSE(window.setFullScreen(true));
    char driver[64] = "";
    SDL_VideoDriverName(driver, sizeof driver);
    EXPECT_LOGGED_EXACTLY("   [!] Video driver " + std::string(driver) +
                          " has no such change @ Window::setFullScreen\n");
    EXPECT_FALSE(window.isFullScreen());
    EXPECT_TRUE(window.setFullScreen(false));
    toggleFails = false;
}

// Only the classic library has drivers that lose the context.
TEST_F(KitWindow, RefusesWhereTheDriverWouldLoseObjectsOnX11) {
    recorder.driverName("windib");
    EXPECT_FALSE(window.resize(200, 150));
    EXPECT_LOGGED_EXACTLY(
        "   [!] Video driver windib does not preserve textures @ Window::resize\n");
    expectSize(width, height);
    EXPECT_FALSE(window.setFullScreen(true));
    EXPECT_LOGGED_EXACTLY(
        "   [!] Video driver windib has no such change @ Window::setFullScreen\n");
    EXPECT_FALSE(window.isFullScreen());
}

TEST(KitWindowWithoutEngine, ChangesNothing) {
    Window window;
    markLog();
    EXPECT_FALSE(window.resize(10, 10));
    EXPECT_LOGGED_EXACTLY("   [!] Invalid size 10 by 10 @ Window::resize\n");
    EXPECT_FALSE(window.setFullScreen(true));
    EXPECT_FALSE(window.isFullScreen());
}

} // namespace
} // namespace ravolt::test
