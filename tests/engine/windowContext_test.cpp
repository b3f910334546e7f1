// The window with a real context: what outlives a resize, the handle and the placement, what the
// two SDL libraries report.

#include "engine/app/windowSystem.h"
#include "ravolt/RAVOLT.h"
#include "ravolt/RVSETTINGS.h"
#include "tests/support/engineFixture.h"
#include "tests/support/glState.h"
#include "tests/support/realDriver.h"

#include <GL/gl.h>
#include <SDL/SDL.h>
#include <SDL/SDL_syswm.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <set>
#include <string>
#include <utility>

using namespace ravolt::test;

namespace {

// The lists of windows that Xlib has returned to this program, and that are not released.
std::set<void *> listsOfWindows;

} // namespace

extern "C" {
Status __real_XQueryTree(Display *display, Window window, Window *root, Window *parent,
                         Window **children, unsigned int *number);
Status __wrap_XQueryTree(Display *display, Window window, Window *root, Window *parent,
                         Window **children, unsigned int *number) {
    const Status status = __real_XQueryTree(display, window, root, parent, children, number);
    if (status && *children)
        listsOfWindows.insert(*children);
    return status;
}

// The linker takes the calls of libraries for calls of this one, and requires it to be visible.
int __real_XFree(void *data);
[[gnu::visibility("default")]] int __wrap_XFree(void *data) {
    listsOfWindows.erase(data);
    return __real_XFree(data);
}
}

namespace {

// Whether the window is an X11 one; the other library draws without a window system.
bool onX11() { return RVSETTINGS::getSDLWindow() != nullptr; }

std::string driver() {
    char name[64] = "";
    SDL_VideoDriverName(name, sizeof name);
    return name;
}

// A window as another client of the X server sees it.
class OtherClient {
  public:
    OtherClient() : display(XOpenDisplay(nullptr)) {}
    OtherClient(const OtherClient &) = delete;
    OtherClient &operator=(const OtherClient &) = delete;
    ~OtherClient() {
        if (display)
            XCloseDisplay(display);
    }

    // x, y, width and height.
    std::array<int, 4> boxOf(Window window) const {
        XWindowAttributes attributes = {};
        XGetWindowAttributes(display, window, &attributes);
        return {attributes.x, attributes.y, attributes.width, attributes.height};
    }
    std::array<int, 2> sizeOf(Window window) const { return {boxOf(window)[2], boxOf(window)[3]}; }

    // The topmost of the root's windows.
    Window topmost() const {
        Window root, parent, *children = nullptr;
        unsigned int number = 0;
        XQueryTree(display, DefaultRootWindow(display), &root, &parent, &children, &number);
        const Window top = number ? children[number - 1] : 0;
        if (children)
            XFree(children);
        return top;
    }

    Display *display;
};

Window engineWindow() {
    return static_cast<Window>(reinterpret_cast<std::uintptr_t>(RVSETTINGS::getSDLWindow()));
}

class WindowContextTest : public EngineTest {};

// On the classic library SDL's own functions end the process when video is not up.
TEST(WithoutVideo, NothingFitsAndNothingIsShown) {
    ASSERT_FALSE(RAVOLT::isActive());
    EXPECT_FALSE(RVSETTINGS().isOk());
    EXPECT_TRUE(RAVOLT::swap());
}

TEST_F(WindowContextTest, AfterTheEngineNothingFitsAndNothingIsShown) {
    ASSERT_TRUE(settings.isOk());
    RAVOLT::free();
    EXPECT_FALSE(settings.isOk());
    EXPECT_TRUE(RAVOLT::swap());
    ASSERT_TRUE(restart());
}

// Large enough for the whole splash.
class SplashTest : public EngineTest {
  protected:
    SplashTest() {
        settings.setWindowX(300);
        settings.setWindowY(280);
    }
};

class CaveWindowTest : public EngineTest {
  protected:
    CaveWindowTest() { settings.setCAVESplashScreen(true); }
};

// Of 16 bits requested 24 are obtained.
class ResizedWindow : public EngineTest, public testing::WithParamInterface<std::pair<bool, int>> {
  protected:
    ResizedWindow() {
        settings.setResizable(GetParam().first);
        settings.setColorDepth(GetParam().second);
    }
};

TEST_P(ResizedWindow, KeepsContextAndObjects) {
    if (GetParam().second == 16) {
        ASSERT_EQ(RVSETTINGS::getSDLColorDepth(), 24);
    }
    std::array<unsigned char, 2 * 2 * 4> pixels = {255, 0, 0,   255, 0, 255, 0, 255,
                                                   0,   0, 255, 255, 9, 8,   7, 6};
    const auto checkers = pixels;
    GLuint texture = 0;
    glGenTextures(1, &texture);
    glBindTexture(GL_TEXTURE_2D, texture);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, 2, 2, 0, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
    glClearColor(0.25f, 0.5f, 0.75f, 1.0f);
    for (const auto &[x, y] : {std::pair(200, 150), {64, 32}, {333, 97}, {128, 96}}) {
        SCOPED_TRACE(testing::Message() << x << " by " << y);
        ASSERT_TRUE(RVSETTINGS::resize(0, 0, x, y));
        EXPECT_TRUE(glIsTexture(texture));
        glBindTexture(GL_TEXTURE_2D, texture);
        pixels.fill(1);
        glGetTexImage(GL_TEXTURE_2D, 0, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
        EXPECT_EQ(pixels, checkers);
        const std::array size{x, y};
        const SDL_Surface *surface = SDL_GetVideoSurface();
        EXPECT_EQ((std::array{RVSETTINGS::getSDLWindowX(), RVSETTINGS::getSDLWindowY()}), size);
        EXPECT_EQ((std::array{surface->w, surface->h}), size);
        EXPECT_EQ((std::array{viewportNow()[2], viewportNow()[3]}), size);
        GLfloat clearColor[4] = {};
        glGetFloatv(GL_COLOR_CLEAR_VALUE, clearColor); // the context is the same one
        EXPECT_EQ(clearColor[2], 0.75f);

        RAVOLT::swap(); // the driver applies the new size with the picture
        RAVOLT::clear(true, true, false);
        EXPECT_PIXEL(pixelAt(x - 1, 0), Pixel{64, 128, 191}, 1);
        EXPECT_PIXEL(pixelAt(x - 1, y - 1), Pixel{64, 128, 191}, 1);
        if (onX11()) {
            EXPECT_EQ(OtherClient().sizeOf(engineWindow()), size);
        }
    }
    glDeleteTextures(1, &texture);
}

INSTANTIATE_TEST_SUITE_P(Of, ResizedWindow,
                         testing::Values(std::pair{false, 32}, std::pair{true, 32},
                                         std::pair{false, 16}));

} // namespace

TEST_F(WindowContextTest, ColorDepthIsWhatWasObtained) {
    GLint red, green, blue, alpha;
    glGetIntegerv(GL_RED_BITS, &red);
    glGetIntegerv(GL_GREEN_BITS, &green);
    glGetIntegerv(GL_BLUE_BITS, &blue);
    glGetIntegerv(GL_ALPHA_BITS, &alpha);
    EXPECT_GE(RVSETTINGS::getSDLColorDepth(), red + green + blue);
    EXPECT_LE(RVSETTINGS::getSDLColorDepth(), red + green + blue + alpha);
    EXPECT_GE(RVSETTINGS::getSDLZetaDepth(), 16);
}

// --- Multisampling, an addition

namespace {

class MultisampledWindow : public EngineTest {
  protected:
    MultisampledWindow() { settings.setMultisampling(4); }

    // A white triangle with slanted edges on black.
    static void drawTriangle() {
        glMatrixMode(GL_PROJECTION);
        glLoadIdentity();
        glMatrixMode(GL_MODELVIEW);
        glLoadIdentity();
        glClearColor(0, 0, 0, 1);
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        glColor4f(1, 1, 1, 1);
        glBegin(GL_TRIANGLES);
        glVertex2f(-0.9f, -0.9f);
        glVertex2f(0.9f, -0.7f);
        glVertex2f(-0.3f, 0.9f);
        glEnd();
    }

    // Of the pixels that are neither black nor white.
    static int greys(const Picture &picture) {
        int count = 0;
        for (std::size_t i = 0; i < picture.bytes.size(); i += 4)
            count += picture.bytes[i] > 8 && picture.bytes[i] < 247;
        return count;
    }

    // As SDL reads the window.
    static Picture readResolved() {
        using Read = decltype(&glReadPixels);
        Picture picture(width, height);
        void *const read = SDL_GL_GetProcAddress("glReadPixels");
        glPixelStorei(GL_PACK_ALIGNMENT, 1);
        reinterpret_cast<Read>(read)(0, 0, width, height, GL_RGBA, GL_UNSIGNED_BYTE,
                                     picture.bytes.data());
        return picture;
    }

    // As the screen shows it.
    static Picture readScreen() {
        const OtherClient other;
        XImage *image =
            XGetImage(other.display, engineWindow(), 0, 0, width, height, AllPlanes, ZPixmap);
        Picture picture(width, height);
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x)
                picture.bytes[static_cast<std::size_t>(4 * (y * width + x))] =
                    static_cast<unsigned char>(XGetPixel(image, x, y) & 255);
        XDestroyImage(image);
        return picture;
    }
};

} // namespace

TEST_F(MultisampledWindow, WithoutX11HasSmoothEdges) {
    ASSERT_FALSE(onX11());
    SKIP_WITHOUT_SAMPLES(4);
    EXPECT_EQ(RVSETTINGS::getSDLMultisampling(), 4);
    drawTriangle();
    EXPECT_GT(greys(readResolved()), 50);
}

TEST_F(MultisampledWindow, HasSmoothEdgesOnX11) {
    ASSERT_TRUE(onX11());
    SKIP_WITHOUT_SAMPLES(4);
    EXPECT_EQ(RVSETTINGS::getSDLMultisampling(), 4);
    drawTriangle();
    RAVOLT::swap();
    EXPECT_GT(greys(readScreen()), 50);
    settings.setMultisampling(0);
    ASSERT_TRUE(restart());
    drawTriangle();
    RAVOLT::swap();
    EXPECT_EQ(greys(readScreen()), 0);
}

TEST_F(MultisampledWindow, OpensWithoutWhatTheDriverRefuses) {
    settings.setMultisampling(64);
    markLog();
    ASSERT_TRUE(restart());
    EXPECT_EQ(RVSETTINGS::getSDLMultisampling(), 0);
    EXPECT_LOGGED_TIMES(1, "   [!] Unsupported multisampling (64 samples) @ RVSETTINGS::init");
    drawTriangle();
    const Picture picture = readFrame();
    EXPECT_EQ(greys(picture), 0);
    EXPECT_PIXEL(picture.at(50, 48), (Pixel{255, 255, 255}), 0);
}

TEST_F(WindowContextTest, VideoMemoryIsReportedOrSupposed) {
    const unsigned int reported = SDL_GetVideoInfo()->video_mem;
    if (driver() == "x11") {
        EXPECT_EQ(reported, 0u);
        EXPECT_EQ(RAVOLT::getVideoMemory(), 16777216u);
    } else {
        EXPECT_EQ(RAVOLT::getVideoMemory(), 268435456u);
    }
    markLog();
}

TEST_F(WindowContextTest, HandleIsTheWindowOfTheWindowSystem) {
    if (driver() != "x11") {
        EXPECT_EQ(RVSETTINGS::getSDLWindow(), nullptr);
        return;
    }
    ASSERT_NE(RVSETTINGS::getSDLWindow(), nullptr);
    EXPECT_EQ(OtherClient().sizeOf(engineWindow()), (std::array{width, height}));
}

TEST_F(WindowContextTest, WithoutX11PlacementDoesNothing) {
    ASSERT_FALSE(onX11());
    const ravolt::SystemWindow window;
    EXPECT_EQ(window.handle(), nullptr);
    window.setOuterSize(1, 1);
    window.raiseToTop();
    EXPECT_EQ(SDL_GetVideoSurface()->w, width);
}

// The test does what a window manager does: it puts a frame around the window.
TEST_F(WindowContextTest, OnX11TheFrameGetsTheSizeRequestedForTheContent) {
    ASSERT_TRUE(onX11());
    const OtherClient manager;
    const Window window = engineWindow();
    const Window frame = XCreateSimpleWindow(manager.display, DefaultRootWindow(manager.display),
                                             40, 30, width + 10, height + 24, 1, 0, 0);
    XReparentWindow(manager.display, window, frame, 5, 19);
    XMapWindow(manager.display, frame);
    XSync(manager.display, False);

    ravolt::SystemWindow().setOuterSize(width, height);
    EXPECT_TRUE(listsOfWindows.empty()); // that of the frame's children was among them
    const std::array inside{5, 19, width - 12, height - 26}; // 5 pixels and a border on each side
    EXPECT_EQ(manager.boxOf(window), inside);

    XResizeWindow(manager.display, frame, width - 2, height - 2); // the manager follows
    XSync(manager.display, False);
    ravolt::SystemWindow().setOuterSize(width, height); // nothing more to do
    EXPECT_EQ(manager.boxOf(window), inside);
    EXPECT_EQ(manager.sizeOf(frame)[0] + 2, width);
    ravolt::SystemWindow().setOuterSize(width, height + 8); // one of the two sizes
    EXPECT_EQ(manager.boxOf(window), (std::array{5, 19, width - 12, height - 18}));
    ravolt::SystemWindow().setOuterSize(width + 8, height);
    EXPECT_EQ(manager.boxOf(window), (std::array{5, 19, width - 4, height - 18}));

    XReparentWindow(manager.display, window, DefaultRootWindow(manager.display), 0, 0);
    XSync(manager.display, False);
}

TEST_F(WindowContextTest, OnX11AnUnframedWindowKeepsItsSizeAndPosition) {
    ASSERT_TRUE(onX11());
    const OtherClient other;
    XMoveWindow(other.display, engineWindow(), 33, 44);
    XSync(other.display, False);
    ravolt::SystemWindow().setOuterSize(width, height);
    EXPECT_EQ(other.boxOf(engineWindow()), (std::array{33, 44, width, height}));
}

TEST_F(CaveWindowTest, OnX11IsOnTopWithItsSize) {
    ASSERT_TRUE(onX11());
    const OtherClient other;
    EXPECT_EQ(other.boxOf(engineWindow()), (std::array{0, 0, width, height}));
    const Window cover =
        XCreateSimpleWindow(other.display, DefaultRootWindow(other.display), 0, 0, 50, 50, 0, 0, 0);
    XMapRaised(other.display, cover);
    XSync(other.display, False);
    ASSERT_EQ(other.topmost(), cover);
    ravolt::SystemWindow().raiseToTop();
    EXPECT_EQ(other.topmost(), engineWindow());
    XDestroyWindow(other.display, cover);
}

TEST_F(WindowContextTest, OnX11TheManagerIsRequestedToShowTheWindowAlwaysOnTop) {
    ASSERT_TRUE(onX11());
    const OtherClient manager;
    XSelectInput(manager.display, DefaultRootWindow(manager.display), SubstructureNotifyMask);
    XSync(manager.display, True);
    ravolt::SystemWindow().raiseToTop();
    XSync(manager.display, False);
    XEvent event = {};
    ASSERT_TRUE(XCheckTypedEvent(manager.display, ClientMessage, &event));
    EXPECT_EQ(event.xclient.window, engineWindow());
    EXPECT_EQ(event.xclient.format, 32);
    const auto atom = [&manager](const char *name) {
        return XInternAtom(manager.display, name, False);
    };
    EXPECT_EQ(event.xclient.message_type, atom("_NET_WM_STATE"));
    const long *const data = event.xclient.data.l;
    EXPECT_EQ(data[0], 1) << "add";
    EXPECT_EQ(data[1], static_cast<long>(atom("_NET_WM_STATE_ABOVE")));
    EXPECT_EQ(data[2], 0);
    EXPECT_EQ(data[3], 1) << "from an application";
}

namespace {
int otherErrors = 0; // those that the application's handler gets
}

TEST_F(WindowContextTest, OnX11TheApplicationGetsItsErrorsFromBeforeAPlacement) {
    ASSERT_TRUE(onX11());
    SDL_SysWMinfo info = {};
    SDL_VERSION(&info.version);
    ASSERT_EQ(SDL_GetWMInfo(&info), 1);
    const XErrorHandler before = XSetErrorHandler([](Display *, XErrorEvent *) {
        ++otherErrors;
        return 0;
    });
    otherErrors = 0;
    XMapWindow(info.info.x11.display, 1); // no window, which the server has not answered yet
    ravolt::SystemWindow().raiseToTop();
    EXPECT_EQ(otherErrors, 1);
    XSetErrorHandler(before);
}

// With the software drivers this buffer still has the presented frame.
TEST_F(SplashTest, IsUprightInTheMiddleOfAWhiteWindow) {
    EXPECT_PICTURE(readFrame(), "RVSETTINGS_splash",
                   Tolerance{.maximum = 2, .mean = 0.1, .reason = "filtering between drivers"});
}

TEST_F(WindowContextTest, RunsEndWithAMemoryRatioOfZero) {
    drawFrame(nullptr, nullptr);
    RAVOLT::swap();
    ASSERT_TRUE(RAVOLT::free());
    EXPECT_EQ(finalMemoryRatio(), 0);
    ASSERT_TRUE(restart());
}
