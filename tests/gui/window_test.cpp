// Windows: their text, their title bar and scroll bar, scrolling and clipping.

#include "ravolt/RVHSCROLLBAR.h"
#include "ravolt/RVLABEL.h"
#include "ravolt/RVLIGHT.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVTEXTFIELD.h"
#include "ravolt/RVVSCROLLBAR.h"
#include "tests/gui/drawnBoxes.h"
#include "tests/gui/fontTest.h"
#include "tests/gui/widgetTest.h"

#include <climits>

using namespace ravolt::test;

namespace {

using Floats = std::vector<float>;

class WindowTest : public WidgetTest {
  protected:
    void SetUp() override {
        WidgetTest::SetUp();
        window = add(new RVWINDOW, 10, 20);
        title = window->getTitleBar();
        bar = window->getScrollBar();
        title->setCaption("");
    }

    // The glyphs of a drawing of the window.
    std::string textOfDrawing() {
        std::vector<Drawing> texts;
        for (const Drawing &drawing : drawingsOf([this] { EXPECT_TRUE(window->render(nullptr)); }))
            if (drawing.mode == GL_TRIANGLES)
                texts.push_back(drawing);
        return glyphsOf(texts);
    }

    RVWINDOW *window = nullptr;
    RVBUTTON *title = nullptr;
    RVVSCROLLBAR *bar = nullptr;
};

TEST_F(WindowTest, StartsWithItsDefaultsAndItsTwoChildren) {
    RVWINDOW &made = *new RVWINDOW;
    EXPECT_EQ(made.getType(), RV_NODE_TYPE_WINDOW);
    EXPECT_EQ(made.getName(), "[window " + std::to_string(made.getId()) + "]");
    EXPECT_EQ(rectangleOf(made), (Floats{0, 19, 128, 128}));
    EXPECT_EQ(made.getColor(), Z3MVECTOR4D(0, 0, 0.6f, 0.9f));
    EXPECT_EQ(made.getThickness(), 2u);
    EXPECT_TRUE(made.getCheckStatus());
    EXPECT_FALSE(made.isStatic());
    EXPECT_TRUE(made.getScissorStatus());
    EXPECT_STREQ(made.getCaption(), "");
    EXPECT_FALSE(made.isMinimized());
    EXPECT_EQ(made.getScrollLine(), 0);
    EXPECT_EQ(textOf(made) + formattedTextOf(made), "");
    EXPECT_EQ(made.getNumberOfChildren(), 2u);

    RVBUTTON &itsTitle = *made.getTitleBar();
    EXPECT_EQ(made.getChild(0), &itsTitle);
    EXPECT_EQ(rectangleOf(itsTitle), (Floats{0, -19, 128, 19}));
    EXPECT_EQ(itsTitle.getColor(), Z3MVECTOR4D(0.8f, 0.3f, 0, 0.9f));
    EXPECT_EQ(itsTitle.getEventType(), RV_BUTTON_TITLEBAR);
    EXPECT_FALSE(itsTitle.isStatic());
    EXPECT_FALSE(itsTitle.getScissorStatus());
    EXPECT_TRUE(itsTitle.getCheckStatus());

    RVVSCROLLBAR &itsBar = *made.getScrollBar();
    EXPECT_EQ(made.getChild(1), &itsBar);
    EXPECT_EQ(rectangleOf(itsBar), (Floats{120, 16, 4, 96}));
    EXPECT_EQ(rectangleOf(*itsBar.getCursor()), (Floats{-2, -8, 8, 16}));
    EXPECT_EQ(itsBar.getValue(), 0);
}

// --- Text

TEST_F(WindowTest, TakesTextUntilItIsFull) {
    EXPECT_TRUE(window->write("%s %d%%", "a", 5));
    EXPECT_TRUE(window->write("%s", ""));
    EXPECT_EQ(textOf(*window), "a 5%");
    std::string all = "a 5%" + std::string(3963 - 4, 'x');
    EXPECT_TRUE(window->write("%s", all.c_str() + 4));
    EXPECT_FALSE(window->write("%s", "12345")) << "3,968 characters";
    EXPECT_LOGGED_EXACTLY("   [!] Text overflow @ RVWINDOW::write\n");
    EXPECT_EQ(textOf(*window), all) << "not even a part";
    EXPECT_TRUE(window->write("%s", "1234"));
    EXPECT_EQ(textOf(*window), all + "1234") << "3,967 characters";
    EXPECT_TRUE(window->write("%s", ""));
    EXPECT_NOTHING_LOGGED();

    window->clear();
    for (const auto &[length, fits] : {std::pair{5000, false}, {3968, false}, {3967, true}}) {
        EXPECT_EQ(window->write("%s", std::string(static_cast<std::size_t>(length), 'y').c_str()),
                  fits);
        EXPECT_EQ(textOf(*window).size(), fits ? 3967u : 0u);
    }
    EXPECT_LOGGED_TIMES(2, "   [!] Text overflow @ RVWINDOW::write");
    const wchar_t unencodable[] = {0x7fffffff, 0};
    EXPECT_FALSE(window->write("%ls", unencodable));
    EXPECT_EQ(textOf(*window).size(), 3967u);
    markLog();
    const char *none = nullptr;
    EXPECT_FALSE(window->write(none));
    EXPECT_LOGGED_EXACTLY("   [!] Invalid params @ RVWINDOW::write\n");
}

TEST_F(WindowTest, FormatsItsTextToItsWidth) {
    window->setSizes(50, 100);
    window->write("aa bb\ncc");
    EXPECT_FALSE(window->format()) << "no font";
    RVFONT *const font = makeFont();
    window->setFont(font);
    EXPECT_EQ(formattedTextOf(*window), "");
    EXPECT_TRUE(window->format());
    EXPECT_EQ(formattedTextOf(*window), "aa\nbb\ncc");
    EXPECT_EQ(textHeightOf(*window), 32);
    EXPECT_EQ(textOf(*window), "aa bb\ncc");
    window->clear();
    EXPECT_EQ(textOf(*window), "");
    EXPECT_EQ(textHeightOf(*window), 0);
    EXPECT_EQ(formattedTextOf(*window), "aa\nbb\ncc") << "until the next format";
    EXPECT_TRUE(window->format());
    EXPECT_EQ(formattedTextOf(*window), "");
    delete font;
    EXPECT_FALSE(window->format());
}

TEST_F(WindowTest, CutsAFormattedTextThatIsTooLong) {
    window->setFont(makeFont());
    window->setSizes(16, 16); // each character needs a line, and one more byte
    window->write("%s", std::string(3967, 'x').c_str());
    markLog();
    EXPECT_TRUE(window->format());
    EXPECT_EQ(formattedTextOf(*window).size(), 3967u);
    EXPECT_EQ(problemsSince(logMark()).size(), 0u);
    textOfDrawing();
}

// --- Title bar and scroll bar

TEST_F(WindowTest, ASizeIsAlsoThatOfItsBars) {
    bar->setValue(1);
    window->setSizes(200, 132);
    EXPECT_EQ(rectangleOf(*window), (Floats{10, 20, 200, 132}));
    EXPECT_EQ(rectangleOf(*title), (Floats{0, -19, 200, 19}));
    EXPECT_EQ(rectangleOf(*bar), (Floats{192, 16, 4, 100}));
    EXPECT_EQ(rectangleOf(*bar->getCursor()), (Floats{-2, -8, 8, 16}));
    for (const int extreme : {INT_MIN, INT_MAX, 32, 0}) {
        window->setSizes(extreme, extreme);
        EXPECT_TRUE(window->render(nullptr));
        EXPECT_EQ(window->getSizeX(), extreme);
        EXPECT_EQ(title->getSizeX(), extreme);
    }
}

TEST_F(WindowTest, MarksTheCaptionOfAMinimizedWindow) {
    const std::string full(251, 'f'), tooLong(252, 'l'), longest(255, 'm');
    struct Case {
        std::string caption, minimized, maximized;
    };
    for (const Case &c : {Case{"Log", "[+] Log", "Log"},
                          {"", "[+] ", ""},
                          {"[+] x", "[+] [+] x", "[+] x"},
                          {full, "[+] " + full, full},
                          {tooLong, tooLong, tooLong},
                          {longest, longest, longest}}) {
        SCOPED_TRACE(c.caption);
        window->setCaption(c.caption.c_str());
        EXPECT_EQ(title->getCaption(), c.caption);
        EXPECT_FALSE(window->minmaximize());
        EXPECT_TRUE(window->isMinimized());
        EXPECT_EQ(title->getCaption(), c.minimized);
        EXPECT_TRUE(window->minmaximize());
        EXPECT_FALSE(window->isMinimized());
        EXPECT_EQ(title->getCaption(), c.maximized);
    }
    window->minmaximize();
    for (const auto &[changed, expected] :
         {std::pair{"abc", "abc"}, {"abcd", ""}, {"abcde", "e"}}) {
        window->setCaption(changed);
        EXPECT_TRUE(window->minmaximize());
        EXPECT_STREQ(title->getCaption(), expected) << "four characters, if there are";
        EXPECT_FALSE(window->minmaximize());
    }
    EXPECT_STREQ(window->getCaption(), "") << "its own";
}

TEST_F(WindowTest, PassesCaptionAndFontToItsTitleBar) {
    RVFONT *const font = makeFont();
    window->setFont(font);
    EXPECT_EQ(title->getFont(), font);
    EXPECT_EQ(window->getFont(), font);
    window->setCaption("ab");
    EXPECT_STREQ(title->getCaption(), "ab");
    EXPECT_EQ(textOfDrawing(), "") << "not in the body";
}

TEST_F(WindowTest, WorksWithoutItsTitleBar) {
    window->write("x");
    erase(title);
    EXPECT_EQ(window->getTitleBar(), nullptr);
    window->setCaption("y");
    EXPECT_FALSE(window->minmaximize());
    EXPECT_TRUE(window->minmaximize());
    window->setFont(makeFont());
    window->setSizes(90, 90);
    EXPECT_EQ(bar->getSizeY(), 58);
    EXPECT_TRUE(window->format());
    EXPECT_EQ(textOfDrawing(), "x 0 0");
    EXPECT_NOTHING_LOGGED();
}

TEST_F(WindowTest, WorksWithoutItsScrollBar) {
    RVBOX *const lower = addBox(0, 200, 10, 10, window);
    RVBOX *const upper = addBox(0, 0, 10, 10, window);
    erase(bar);
    EXPECT_EQ(window->getScrollBar(), nullptr);
    window->setSizes(90, 90);
    EXPECT_EQ(title->getSizeX(), 90);
    window->setScrollLine(7);
    EXPECT_TRUE(window->render(nullptr));
    EXPECT_EQ(window->getScrollLine(), 0) << "the content, from child 2 on, is not taller";
    EXPECT_EQ(positionOf(*lower), (Floats{0, 200})) << "now child 1";
    RVBOX *const tall = addBox(0, 0, 10, 500, window);
    window->setScrollLine(7);
    EXPECT_TRUE(window->render(nullptr));
    EXPECT_EQ(window->getScrollLine(), 7);
    for (const RVBOX *each : {upper, tall})
        EXPECT_EQ(positionOf(*each), (Floats{0, -7}));
    for (const int extreme : {INT_MIN, INT_MAX, INT_MIN}) {
        window->setScrollLine(extreme);
        EXPECT_TRUE(window->render(nullptr));
    }
    EXPECT_NOTHING_LOGGED();
}

TEST_F(WindowTest, IsMadeWithoutMemoryForItsBars) {
    void *const memory = ::operator new(sizeof(RVWINDOW));
    recorder.failAllocation(sizeof(RVBOX));
    RVWINDOW *const made = new (memory) RVWINDOW;
    recorder.allocationsWork();
    EXPECT_LOGGED_EXACTLY("   [!] Out of memory for the title bar @ RVWINDOW::RVWINDOW\n"
                          "   [!] Out of memory for the scroll bar @ RVWINDOW::RVWINDOW\n");
    EXPECT_EQ(made->getTitleBar(), nullptr);
    EXPECT_EQ(made->getScrollBar(), nullptr);
    EXPECT_EQ(made->getNumberOfChildren(), 0u);
    EXPECT_TRUE(made->render(nullptr));
}

TEST_F(WindowTest, CopiesHaveEveryFieldAndShareTheBars) {
    window->setFont(makeFont());
    window->write("text");
    window->format();
    window->setCaption("C");
    window->minmaximize();
    window->setScrollLine(3);
    lastScrollLineOf(*window) = 4;
    contentHeightOf(*window) = 5;
    textHeightOf(*window) = 6;
    RVWINDOW copy(*window), assigned;
    const auto ownBars = {assigned.getChild(0), assigned.getChild(1)};
    assigned = *window;
    RVWINDOW &same = assigned;
    assigned = same;
    for (RVWINDOW *each : {&copy, &assigned}) {
        EXPECT_EQ(textOf(*each), "text");
        EXPECT_EQ(formattedTextOf(*each), "text");
        EXPECT_TRUE(each->isMinimized());
        EXPECT_EQ(each->getFont(), window->getFont());
        EXPECT_EQ(each->getTitleBar(), title);
        EXPECT_EQ(each->getScrollBar(), bar);
        EXPECT_EQ(each->getScrollLine(), 3);
        EXPECT_EQ(lastScrollLineOf(*each), 4);
        EXPECT_EQ(contentHeightOf(*each), 5);
        EXPECT_EQ(textHeightOf(*each), 6);
        each->minmaximize();
        EXPECT_STREQ(title->getCaption(), "C") << "the mark is copied, too";
        window->setCaption("[+] C");
    }
    for (RVNODE *own : ownBars)
        own->unlink();
}

// --- Scrolling

// A window of 100 by 100, whose scroll bar has 68 pixels.
TEST_F(WindowTest, MeasuresItsContentAndMovesItByTheScrollOffset) {
    enum Kind { none, label, box, field, innerWindow, light };
    struct Case {
        const char *what;
        int textHeight, last, scroll;
        Kind kind;
        float y;
        int height;                       // of a child that is no label
        int content, cursor, scrollAfter; // no cursor: 0, the bar is hidden
        float yAfter;
    };
    for (const Case &c : {
             Case{"nothing", 0, 0, 0, none, 0, 0, 0, 0, 0, 0},
             {"as high as the window", 100, 0, 5, none, 0, 0, 100, 0, 0, 0},
             {"one pixel more", 101, 0, 5, none, 0, 0, 101, 67, 5, 0},
             {"twice the height", 200, 0, 0, none, 0, 0, 200, 34, 0, 0},
             {"the shortest cursor", 850, 0, 0, none, 0, 0, 850, 8, 0, 0},
             {"a very tall text", 100000, 0, 0, none, 0, 0, 100000, 8, 0, 0},
             {"a label that fits", 0, 0, 0, label, 84, 0, 100, 0, 0, 84},
             {"a label that does not", 0, 0, 0, label, 85, 0, 101, 67, 0, 85},
             {"a label is truncated", 0, 0, 0, label, 85.9f, 0, 101, 67, 0, 85.9f},
             {"a label within the text", 300, 0, 0, label, 85, 0, 300, 22, 0, 85},
             {"a label on the last line", 101, 0, 0, label, 85, 0, 101, 67, 0, 85},
             {"a scrolled label, with a hundredth", 0, 100, 100, label, 0, 0, 117, 58, 100, 0},
             {"a label by the new offset alone", 110, 100, 0, label, 0, 0, 110, 61, 0, 100},
             {"a label by the new offset, to the last one", 110, 0, 100, label, 0, 0, 16, 0, 0, 0},
             {"a box that fits", 0, 0, 0, box, 40.9f, 60, 100, 0, 0, 40.9f},
             {"a box is compared truncated", 100, 0, 0, box, 40.9f, 60, 100, 0, 0, 40.9f},
             {"a box that does not", 0, 0, 0, box, 50.7f, 60, 110, 61, 0, 50.7f},
             {"a scrolled box, with a hundredth", 0, 100, 100, box, -20, 50, 131, 51, 100, -20},
             {"a box counts with the last offset", 0, 50, 20, box, 0, 100, 150, 45, 20, 30},
             {"a text field is a box", 0, 0, 0, field, 10, 100, 110, 61, 0, 10},
             {"a window does not count", 0, 0, 0, innerWindow, 500, 100, 0, 0, 0, 500},
             {"nor is it moved", 200, 30, 10, innerWindow, 5, 10, 200, 34, 10, 5},
             {"what is no box does not count", 0, 0, 0, light, 500, 0, 0, 0, 0, 500},
             {"but is moved", 200, 30, 10, light, 5, 0, 200, 34, 10, 25},
             {"moved up", 200, 10, 30, box, 5, 10, 200, 34, 30, -15},
             {"moved back when nothing scrolls", 50, 30, 30, box, 5, 10, 50, 0, 0, 35},
         }) {
        SCOPED_TRACE(c.what);
        RVWINDOW &tested = *new RVWINDOW;
        tested.setSizes(100, 100);
        RVNODE *child = nullptr;
        switch (c.kind) {
        case none:
            break;
        case label:
            child = add(new RVLABEL, 3, c.y, &tested);
            break;
        case box:
            child = addBox(3, c.y, 10, c.height, &tested);
            break;
        case field: {
            RVTEXTFIELD *const made = add(new RVTEXTFIELD, 3, c.y, &tested);
            made->setSizes(10, c.height);
            child = made;
            break;
        }
        case innerWindow: {
            RVWINDOW *const made = add(new RVWINDOW, 3, c.y, &tested);
            made->setSizes(10, c.height);
            child = made;
            break;
        }
        case light:
            child = add(new RVLIGHT, 3, c.y, &tested);
            break;
        }
        textHeightOf(tested) = c.textHeight;
        lastScrollLineOf(tested) = c.last;
        tested.setScrollLine(c.scroll);
        EXPECT_TRUE(tested.updateScroll());
        EXPECT_EQ(contentHeightOf(tested), c.content);
        RVVSCROLLBAR &itsBar = *tested.getScrollBar();
        EXPECT_EQ(itsBar.getDisplayStatus(), c.cursor != 0);
        EXPECT_EQ(itsBar.getCursor()->getDisplayStatus(), c.cursor != 0);
        if (c.cursor != 0) {
            EXPECT_EQ(itsBar.getCursor()->getSizeY(), c.cursor);
        }
        EXPECT_EQ(tested.getScrollLine(), c.scrollAfter);
        EXPECT_EQ(lastScrollLineOf(tested), c.last) << "until it is drawn";
        if (child) {
            EXPECT_EQ(positionOf(*child), (Floats{3, c.yAfter}));
        }
        EXPECT_EQ(positionOf(itsBar), (Floats{92, 16}));
        EXPECT_EQ(positionOf(*tested.getTitleBar()), (Floats{0, -19}));
    }
}

TEST_F(WindowTest, TheHighestContentCounts) {
    window->setSizes(100, 100);
    for (const float y : {100.0f, 300.0f, 200.0f})
        addBox(0, y, 10, 10, window);
    add(new RVLABEL, 0, 290, window);
    window->updateScroll();
    EXPECT_EQ(contentHeightOf(*window), 310);
}

// The children move at once, which the next pass shows, and so is the text in the next frame.
TEST_F(WindowTest, ScrollsOneFrameAfterItsBar) {
    window->setSizes(100, 100);
    window->setFont(makeFont());
    window->write("a");
    window->format();
    RVBOX *const child = addBox(0, 0, 10, 300, window);
    const auto frame = [&] {
        const std::string text = textOfDrawing();
        return text + " | " + std::to_string(window->getScrollLine()) + " | " +
               std::to_string(static_cast<int>(child->getPosition().y));
    };
    EXPECT_EQ(frame(), "a 0 0 | 0 | 0");
    bar->setValue(0.5f);
    EXPECT_EQ(frame(), "a 0 0 | 100 | -100");
    EXPECT_EQ(frame(), "a 0 -100 | 100 | -100");
    EXPECT_EQ(contentHeightOf(*window), 301) << "the hundredth of the offset";
    window->setClickedStatus(true);
    EXPECT_EQ(frame(), "a 1 -99 | 100 | -100");
    window->setClickedStatus(false);
    bar->setValue(0);
    EXPECT_EQ(frame(), "a 0 -100 | 0 | 0");
    EXPECT_EQ(frame(), "a 0 0 | 0 | 0");
    bar->setValue(1);
    EXPECT_EQ(frame(), "a 0 0 | 200 | -200");
    child->setSizeY(10);
    EXPECT_EQ(frame(), "a 0 -200 | 0 | 0") << "nothing scrolls any more";
    EXPECT_FALSE(bar->getDisplayStatus());
}

// --- Drawing

Calls scissorCalls(const Calls &calls) {
    return calls.named({"glScissor", "glEnable", "glDisable", "glDrawArrays", "glDrawElements"})
        .where([](const Call &call) {
            return call.name.rfind("glDraw", 0) == 0 || call.name == "glScissor" ||
                   call.arguments[0] == GL_SCISSOR_TEST;
        });
}

TEST_F(WindowTest, CutsItsFillAndItsTextAtItsEdges) {
    window->setThickness(0);
    window->setFont(makeFont());
    window->write("a");
    window->format();
    const auto calls = [this] {
        return scissorCalls(callsOf([this] { EXPECT_TRUE(window->render(nullptr)); }));
    };
    const Call on("glEnable", GL_SCISSOR_TEST), off("glDisable", GL_SCISSOR_TEST);
    const Call fill("glDrawArrays", GL_TRIANGLE_STRIP, 0, 4);
    const Call text("glDrawElements", GL_TRIANGLES, 6, GL_UNSIGNED_SHORT, anyAddress);
    EXPECT_EQ(calls(), (Calls{on,
                              {"glScissor", 10, height - 20 - 128, 128, 128},
                              fill,
                              off,
                              on,
                              off, // of the caption
                              on,
                              text,
                              off}));
    window->setScissorStatus(false);
    EXPECT_EQ(calls(), (Calls{fill, text}));
    window->setDisplayStatus(false);
    EXPECT_EQ(callsOf([this] { EXPECT_TRUE(window->render(nullptr)); }), Calls());
    window->setDisplayStatus(true);
    window->minmaximize();
    bar->setValue(1);
    contentHeightOf(*window) = 1000;
    EXPECT_EQ(callsOf([this] { EXPECT_TRUE(window->render(nullptr)); }), Calls());
    EXPECT_EQ(window->getScrollLine(), 0);
}

TEST_F(WindowTest, TheScissorIsTheWindowInThePixelsOfTheViewport) {
    RVWINDOW *const inner = add(new RVWINDOW, 5.75f, 6.75f, window);
    inner->setSizes(30, 40);
    EXPECT_EQ(callsOf([inner] { inner->enableScissor(); }),
              (Calls{{"glEnable", GL_SCISSOR_TEST},
                     {"glGetIntegerv", GL_VIEWPORT},
                     {"glPushMatrix"},
                     {"glLoadIdentity"},
                     {"glScissor", 15, height - 26 - 40, 30, 40},
                     {"glPopMatrix"}}));
    EXPECT_EQ(callsOf([inner] { inner->disableScissor(); }),
              (Calls{{"glScissor", 0, 0, width, height}, {"glDisable", GL_SCISSOR_TEST}}));
    glViewport(0, 0, 64, 48);
    EXPECT_TRUE(callsOf([inner] {
                    inner->enableScissor();
                }).contains({"glScissor", 15, 48 - 26 - 40, 30, 40}));
    inner->disableScissor();
    inner->setPosition(1e20f, 1e20f);
    EXPECT_TRUE(callsOf([inner] {
                    inner->enableScissor();
                }).contains({"glScissor", INT_MAX, 48 - 40 - double(INT_MAX), 30, 40}));
    inner->disableScissor();
}

class LandscapeWindow : public WindowTest {
  protected:
    LandscapeWindow() { settings.setLandscape(true); }
};

TEST_F(LandscapeWindow, TheScissorIsTurned) {
    window->setSizes(30, 40);
    EXPECT_EQ(callsOf([this] { window->enableScissor(); }).named("glScissor"),
              (Calls{{"glScissor", 20, 10, 40, 30}}));
    EXPECT_EQ(callsOf([this] { window->disableScissor(); }),
              (Calls{{"glScissor", 0, 0, RVSETTINGS::getSDLWindowY(), RVSETTINGS::getSDLWindowX()},
                     {"glDisable", GL_SCISSOR_TEST}}));
}

} // namespace
