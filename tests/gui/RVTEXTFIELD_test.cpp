// Text fields: keys, the cursor and the frame.

#include "tests/gui/fontTest.h"

#include "ravolt/RVOPENGL.h"
#include "ravolt/RVTEXTFIELD.h"
#include "ravolt/RVWINDOW.h"

#include <climits>

using namespace ravolt::test;

namespace {

class TextField : public FontTest {
  protected:
    void SetUp() override {
        FontTest::SetUp();
        field = new RVTEXTFIELD;
        field->setFont(font);
        field->clear();
        recorder.stopClock();
        RAVOLT::swap();        // so that the clock is read
        RAVOLT::updateTimer(); // the time since the start belongs to no frame
    }

    // The length of the last frame.
    void setFrame(double seconds) {
        RAVOLT::swap();
        recorder.advanceClock(seconds);
        RAVOLT::updateTimer();
        ASSERT_NEAR(RAVOLT::getFPSfactor(), seconds, 1e-4);
    }

    RVTEXTFIELD *field = nullptr;
};

TEST_F(TextField, HasItsDefaults) {
    RVTEXTFIELD made;
    const std::string id = std::to_string(made.getId());
    EXPECT_EQ(made.getType(), RV_NODE_TYPE_TEXTFIELD);
    EXPECT_EQ(made.getName(), "[textfield " + id + "]");
    EXPECT_EQ(made.getCaption(), "[button " + id + "]");
    EXPECT_EQ(made.getFont(), nullptr);
    EXPECT_EQ(made.getThickness(), 1u);
    EXPECT_TRUE(made.getCheckStatus());
    EXPECT_EQ(made.getColor(), Z3MVECTOR4D(0.8f, 0.3f, 0, 0.9f));
    EXPECT_EQ(made.getEventType(), RV_BUTTON_NORMAL);
    made.clear();
    EXPECT_STREQ(made.getCaption(), "");
    EXPECT_NOTHING_LOGGED();
}

TEST_F(TextField, KeysChangeItsCaptionWhereThereIsRoom) {
    font->setKerning('i', 1);
    font->setKerning('W', -1);
    font->setKerning('0', 16);
    const std::string longest(255, '0');
    const struct {
        const char *what;
        std::string caption;
        int key, width;
        std::string expected;
    } cases[] = {
        {"the first", "", 'a', 64, "a"},
        {"the lowest", "a", 0x20, 64, "a "},
        {"the highest", "a", 0x7f, 64, "a\x7f"},
        {"too low", "a", 0x1f, 64, "a"},
        {"too high", "a", 0x80, 64, "a"},
        {"negative", "a", -1, 64, "a"},
        {"none", "a", 0, 64, "a"},
        {"return", "a", '\r', 64, "a"},
        {"the text is as wide as the box less a cell", "aaa", 'a', 64, "aaaa"},
        {"a pixel too wide", "aaa", 'a', 63, "aaa"},
        {"the kerning of the key is added", "aaa", 'i', 64, "aaa"},
        {"and fits", "aaa", 'i', 65, "aaai"},
        {"negative kerning makes room", "aaa", 'W', 63, "aaaW"},
        {"but is large in an empty field", "", 'W', 64, ""},
        {"kerning of the text", "iii", 'a', 61, "iiia"},
        {"narrower than a cell", "aaa", 'a', 15, "aaaa"},
        {"a cell", "", 'a', 16, "a"},
        {"tags have no width", "^c8000", 'a', 16, "^c8000a"},
        {"254 characters", longest.substr(1), '0', 64, longest},
        {"255 characters", longest, '0', 64, longest},
        {"backspace", "abc", 8, 64, "ab"},
        {"backspace on one", "a", 8, 0, ""},
        {"backspace on none", "", 8, 64, ""},
    };
    for (const auto &c : cases) {
        field->setCaption(c.caption.c_str());
        field->setSizeX(c.width);
        EXPECT_TRUE(field->manageKey(static_cast<char>(c.key))) << c.what;
        EXPECT_EQ(field->getCaption(), c.expected) << c.what;
    }
    EXPECT_NOTHING_LOGGED();
}

TEST_F(TextField, WithoutAFontItTakesNoKeyAndShowsNoCursor) {
    setFrame(0.5);
    field->setCaption("ab");
    field->manageKey(0);
    textOf(field); // half of the cycle
    for (const bool deleted : {false, true}) {
        if (deleted)
            delete font;
        else
            field->setFont(nullptr);
        for (const char key : {'a', '\b', '\0'})
            EXPECT_FALSE(field->manageKey(key));
        EXPECT_EQ(textOf(field), "");
        if (!deleted) {
            field->setFont(font);
            EXPECT_EQ(textOf(field), "a 1 1, b 17 1 | a 1 1, b 17 1") << "no focus";
        }
    }
    EXPECT_STREQ(field->getCaption(), "ab");
    EXPECT_NOTHING_LOGGED();
}

TEST_F(TextField, TheCursorBlinksWhileTheFieldHasKeys) {
    field->setCaption("a");
    const std::string off = "a 1 1 | a 1 1", on = "a 1 1 | a 1 1, \x7f 17 1";
    const struct {
        double frame; // which the phase grows by after the drawing
        bool focused;
        const std::string *text;
    } frames[] = {
        {0.2, true, &off},  // 0
        {0.2, true, &off},  // 0.2
        {0.2, true, &on},   // 0.4
        {0.2, false, &off}, // no key: the phase does not change
        {0.3, true, &on},   // 0.6
        {0.3, true, &on},   // 0.9
        {0.1, true, &off},  // 1.2, which is 0
        {0.1, true, &off},  // 0.1
        {0.3, true, &off},  // 0.2
        {0.5, true, &on},   // 0.5
        {0.5, true, &off},  // 1, which is 0
        {0.1, true, &on},   // 0.5
    };
    for (const auto &frame : frames) {
        setFrame(frame.frame);
        if (frame.focused)
            field->manageKey(0);
        EXPECT_EQ(textOf(field), *frame.text) << "frame " << &frame - frames;
    }
    EXPECT_STREQ(field->getCaption(), "a");
}

TEST_F(TextField, DrawsItsTextOnceMoreWhereACellIsLeft) {
    const std::string ellipsis = "[ 1 1, . 17 1, . 33 1, . 49 1, ] 65 1";
    const std::string ab = "a 1 1, b 17 1", cursor = ", \x7f 33 1";
    const struct {
        const char *what, *caption;
        int width;
        bool focused, clicked;
        std::string text;
    } cases[] = {
        {"twice", "ab", 64, false, false, ab + " | " + ab},
        {"with the cursor", "ab", 64, true, false, ab + " | " + ab + cursor},
        {"clicked", "ab", 64, true, true, "a 2 2, b 18 2 | a 2 2, b 18 2, \x7f 34 2"},
        {"a pixel more than a cell left", "ab", 49, true, false, ab + " | " + ab + cursor},
        {"a cell is left", "ab", 48, true, false, ab},
        {"as wide as the box", "ab", 32, true, false, ""},
        {"the ellipsis has no cursor", "abcdef", 96, true, false, ellipsis},
        {"narrower than a cell", "ab", 15, false, false, ab},
        {"an empty field shows its cursor", "", 64, true, false, "\x7f 1 1"},
        {"percent signs", "%%", 64, true, false, "% 1 1 | % 1 1, \x7f 17 1"},
        {"a percent sign before the cursor", "%", 64, true, false, "% 1 1 | % 1 1, \x7f 17 1"},
    };
    setFrame(0.5);
    field->manageKey(0);
    textOf(field);
    setFrame(1e-3); // and so the cursor is on
    for (const auto &c : cases) {
        field->setCaption(c.caption);
        field->setSizeX(c.width);
        field->setClickedStatus(c.clicked);
        if (c.focused)
            field->manageKey(0);
        RVFONT::reset();
        EXPECT_EQ(textOf(field), c.text) << c.what;
    }
}

TEST_F(TextField, TheLongestCaptionHasACursorToo) {
    font->setKerning('0', 16);
    field->setCaption(std::string(255, '0').c_str());
    setFrame(0.5);
    for (int frame = 0; frame < 2; ++frame) {
        field->manageKey('0');
        const Drawings drawings = drawingsOf([this] { field->render(&element); });
        EXPECT_EQ(drawings.back().vertices.size(), 6u * (frame ? 256 : 255));
    }
}

// Lines and points of a ring from `i`, of a frame of `w` by `h`.
std::vector<Call> ring(int i, int w, int h, bool clicked) {
    const float dark = clicked ? 1.3f : 0.7f, light = clicked ? 0.7f : 1.3f;
    const float darkest = clicked ? 1.6f : 0.4f, lightest = clicked ? 0.4f : 1.6f;
    const struct {
        GLenum primitive;
        int x1, y1, x2, y2;
        float factor;
    } rows[] = {
        {GL_LINES, i + 1, i + 1, w - i - 1, i + 1, dark},
        {GL_LINES, i, i + 1, i, h - i - 1, dark},
        {GL_LINES, i + 1, h - i, w - i - 1, h - i, light},
        {GL_LINES, w - i - 1, i + 1, w - i - 1, h - i - 1, light},
        {GL_POINTS, i, i + 1, 0, 0, darkest},
        {GL_POINTS, i, h - i, 0, 0, 1},
        {GL_POINTS, w - i - 1, i + 1, 0, 0, 1},
        {GL_POINTS, w - i - 1, h - i, 0, 0, lightest},
    };
    std::vector<Call> calls;
    for (const auto &row : rows) {
        calls.emplace_back("glBegin", row.primitive);
        calls.emplace_back("glColor4fv", 0.5f * row.factor, 0.25f * row.factor, row.factor, 0.5f);
        calls.emplace_back("glVertex2i", row.x1, row.y1);
        if (row.primitive == GL_LINES)
            calls.emplace_back("glVertex2i", row.x2, row.y2);
        calls.emplace_back("glEnd");
    }
    return calls;
}

TEST_F(TextField, ItsFrameLooksLikeAHollowAndClickedLikeARidge) {
    field->setColor(0.5f, 0.25f, 1, 1);
    field->setSizes(20, 10);
    for (const bool clicked : {false, true})
        for (const int thickness : {1, 2, 0}) {
            SCOPED_TRACE(std::to_string(thickness) + (clicked ? ", clicked" : ""));
            field->setClickedStatus(clicked);
            field->setThickness(static_cast<unsigned int>(thickness));
            const Calls calls = renderCalls(field).named(
                {"glTranslatef", "glBegin", "glColor4fv", "glVertex2i", "glEnd"});
            std::vector<Call> expected;
            if (thickness)
                expected.emplace_back("glTranslatef", thickness, thickness, 0);
            for (int i = 0; i < thickness; ++i)
                for (const Call &call : ring(i, 20 - 2 * thickness, 10 - 2 * thickness, clicked))
                    expected.push_back(call);
            if (thickness)
                expected.emplace_back("glTranslatef", -thickness, -thickness, 0);
            EXPECT_EQ(calls, Calls(expected));
            EXPECT_EQ(field->getSizeX(), 20);
            EXPECT_EQ(field->getSizeY(), 10);
        }
}

TEST_F(TextField, ItsFrameIsInsideTheWholeThicknessAlsoBeyondTheLargestNumberOfRings) {
    field->setSizes(20000, 20000);
    field->setThickness(5000);
    const Calls calls = renderCalls(field);
    EXPECT_EQ(calls.count("glBegin"), 8u * 4096);
    EXPECT_TRUE(calls.haveInOrder({{"glTranslatef", 5000, 5000, 0},
                                   {"glVertex2i", 1, 1},
                                   {"glVertex2i", 9999, 1},
                                   {"glVertex2i", 0, 1},
                                   {"glVertex2i", 0, 9999}}));
}

TEST_F(TextField, SizesBeyondAllNumbersAreDrawn) {
    field->setSizes(INT_MIN, INT_MIN);
    for (const unsigned int thickness : {1u, ~0u}) {
        field->setThickness(thickness);
        const Calls calls = renderCalls(field);
        EXPECT_TRUE(calls.haveInOrder({{"glBegin", GL_LINES},
                                       {"glVertex2i", 1, 1},
                                       {"glVertex2i", INT_MIN, 1},
                                       {"glVertex2i", 0, 1},
                                       {"glVertex2i", 0, INT_MIN}}));
    }
}

TEST_F(TextField, ItsFrameIsBlendedWithoutATexture) {
    field->setCaption("a");
    EXPECT_TRUE(renderCalls(field).haveInOrder(
        {{"glDrawElements", GL_TRIANGLES, 6, GL_UNSIGNED_SHORT, anyAddress},
         {"glDisable", GL_TEXTURE_2D},
         {"glBegin", GL_LINES}}));
    field->setDisplayStatus(false);
    field->setFont(nullptr);
    RVOPENGL::blendingOff();
    EXPECT_TRUE(renderCalls(field).haveInOrder({{"glEnable", GL_BLEND}, {"glBegin", GL_LINES}}));
}

TEST_F(TextField, DrawsTextAndFrameWhenItIsNotShown) {
    field->setCaption("ab");
    field->setDisplayStatus(false);
    EXPECT_EQ(textOf(field), "a 1 1, b 17 1");
    const Calls calls = renderCalls(field);
    EXPECT_FALSE(calls.contains("glLoadMatrixf"));
    EXPECT_FALSE(calls.contains("glDrawArrays")) << "no box";
    EXPECT_EQ(calls.count("glBegin"), 8u);
}

TEST_F(TextField, OnlyItsBoxAndCaptionAreCut) {
    field->setCaption("a");
    auto *window = new RVWINDOW;
    field->link(window);
    const Calls calls = renderCalls(field).where([](const Call &call) {
        return call.name == "glDrawElements" ||
               (call.name.ends_with("able") && call.arguments[0] == GL_SCISSOR_TEST);
    });
    EXPECT_EQ(calls.names(),
              (std::vector<std::string>{"glEnable", "glDisable", "glEnable", "glDrawElements",
                                        "glDisable", "glDrawElements"}));
}

TEST_F(TextField, ACopyHasItsFocusAndPhase) {
    setFrame(0.5);
    field->setCaption("a");
    field->manageKey(0);
    textOf(field);
    field->manageKey(0);
    auto *assigned = new RVTEXTFIELD;
    {
        RVTEXTFIELD copy(*field);
        *assigned = *field;
        EXPECT_EQ(copy.getType(), RV_NODE_TYPE_TEXTFIELD);
        for (RVTEXTFIELD *each : {&copy, assigned})
            EXPECT_EQ(textOf(each), "a 1 1 | a 1 1, \x7f 17 1");
    }
}

} // namespace
