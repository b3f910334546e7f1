// The pictures of boxes, scroll bars and windows.

#include "tests/gui/pixelFont.h"
#include "tests/resources/tgaFiles.h"
#include "tests/support/engineFixture.h"
#include "tests/support/realDriver.h"

#include "ravolt/RVBUTTON.h"
#include "ravolt/RVFONT.h"
#include "ravolt/RVHSCROLLBAR.h"
#include "ravolt/RVTEXTURE.h"
#include "ravolt/RVVSCROLLBAR.h"
#include "ravolt/RVWINDOW.h"

using namespace ravolt::test;

namespace {

constexpr Tolerance rounding{
    .maximum = 4, .mean = 0.05, .reason = "drivers round blended and filtered colors differently"};

class BoxPictures : public EngineTest {
  protected:
    void SetUp() override {
        EngineTest::SetUp();
        font = makePixelFont();
        root = new RVNODE;
    }

    template <class Box>
    Box *add(float x, float y, int sizeX, int sizeY, RVNODE *parent = nullptr) {
        Box *const box = new Box;
        box->setSizes(sizeX, sizeY);
        box->setPosition(x, y, 0);
        box->link(parent ? parent : root);
        return box;
    }

    // With a text of many lines, a button that is cut at the lower edge and one at the right.
    RVWINDOW *addWindow() {
        RVWINDOW *const window = add<RVWINDOW>(4, 24, 84, 64);
        window->setFont(font);
        window->setCaption("Ravolt");
        for (int line = 0; line < 8; ++line)
            window->write("%d Ra ", line % 4);
        EXPECT_TRUE(window->format());
        addCaption(add<RVBUTTON>(30, 54, 40, 20, window), "10");
        addCaption(add<RVBUTTON>(60, 24, 40, 20, window), "23");
        return window;
    }
    void addCaption(RVBUTTON *button, const char *caption) {
        button->setFont(font);
        button->setCaption(caption);
    }

    // With the scroll offset of the frame before.
    Picture draw() {
        for (int frame = 0; frame < 2; ++frame) {
            RAVOLT::clear(true, true, false);
            drawFrame2D(root);
        }
        return readFrame();
    }

    RVFONT *font = nullptr;
    RVNODE *root = nullptr;
};

TEST_F(BoxPictures, BoxesAreRaisedAndSunkenTexturedAndTransparent) {
    RVBOX *const raised = add<RVBOX>(8, 8, 50, 36), *const sunken = add<RVBOX>(70, 8, 50, 36);
    sunken->setClickedStatus(true);
    for (RVBOX *box : {raised, sunken})
        box->setThickness(6);
    writeFile("colors.tga", plainTga(4, 4, 250, 200, 0));
    RVTEXTURE *const texture = new RVTEXTURE;
    ASSERT_TRUE(texture->load("colors.tga"));
    RVBOX *const textured = add<RVBOX>(8, 54, 50, 36);
    textured->setTexture(texture);
    textured->setColor(1, 1, 1, 1);
    textured->setThickness(2);
    RVBOX *const transparent = add<RVBOX>(40, 30, 50, 50);
    transparent->setColor(1, 0, 0, 0.5f);
    transparent->setThickness(0);
    RVHSCROLLBAR *const bar = new RVHSCROLLBAR;
    bar->setPosition(56, 84, 0);
    bar->setValue(0.75f);
    bar->link(root);
    EXPECT_PICTURE(draw(), "gui_boxes", rounding);
}

TEST_F(BoxPictures, AWindowCutsWhatIsInItAndScrolls) {
    SKIP_WITHOUT_EXTENSIONS(anisotropyExtensions);
    RVWINDOW *const window = addWindow();
    EXPECT_PICTURE(draw(), "gui_window", rounding);
    window->getScrollBar()->setValue(0.5f);
    EXPECT_PICTURE(draw(), "gui_windowScrolled", rounding);
}

TEST_F(BoxPictures, OfAMinimizedWindowTheTitleBarIsDrawn) {
    SKIP_WITHOUT_EXTENSIONS(anisotropyExtensions);
    addWindow()->minmaximize();
    EXPECT_PICTURE(draw(), "gui_windowMinimized", rounding);
}

class LandscapePictures : public BoxPictures {
  protected:
    LandscapePictures() { settings.setLandscape(true); }
};

TEST_F(LandscapePictures, AWindowIsTurnedWithWhatIsInIt) {
    SKIP_WITHOUT_EXTENSIONS(anisotropyExtensions);
    addWindow();
    EXPECT_PICTURE(draw(), "gui_landscape", rounding);
}

} // namespace
