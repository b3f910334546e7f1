// Buttons and their captions.

#include "tests/gui/fontTest.h"

#include "ravolt/RVBUTTON.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVWINDOW.h"

using namespace ravolt::test;

namespace {

class Button : public FontTest {
  protected:
    void SetUp() override {
        FontTest::SetUp();
        button = new RVBUTTON;
        button->setFont(font);
    }

    RVBUTTON *button = nullptr;
};

TEST_F(Button, HasItsDefaults) {
    const std::string name = "[button " + std::to_string(button->getId()) + "]";
    EXPECT_EQ(button->getType(), RV_NODE_TYPE_BUTTON);
    EXPECT_EQ(button->getName(), name);
    EXPECT_EQ(button->getCaption(), name);
    EXPECT_EQ(RVBUTTON().getFont(), nullptr);
    EXPECT_EQ(button->getFont(), font);
    EXPECT_EQ(button->getEventType(), RV_BUTTON_NORMAL);
    EXPECT_EQ(button->getColor(), Z3MVECTOR4D(0.8f, 0.3f, 0, 0.9f));
    EXPECT_TRUE(button->getCheckStatus());
    EXPECT_EQ(button->getThickness(), 3u);
    EXPECT_EQ(button->getSizeX(), 64);
    const RV_BUTTON_EVENT events[] = {RV_BUTTON_NORMAL, RV_BUTTON_INVERTED, RV_BUTTON_SWITCH,
                                      RV_BUTTON_TITLEBAR};
    for (int value = 0; value < 4; ++value) {
        EXPECT_EQ(events[value], value);
        button->setEventType(events[value]);
        EXPECT_EQ(button->getEventType(), events[value]);
    }
    EXPECT_NOTHING_LOGGED();
}

TEST_F(Button, CaptionIsAtMost255Bytes) {
    const std::string longest(255, 'x');
    button->setCaption("old");
    button->setCaption(nullptr);
    EXPECT_STREQ(button->getCaption(), "old");
    button->setCaption((longest + "x").c_str());
    EXPECT_STREQ(button->getCaption(), "old");
    button->setCaption(longest.c_str());
    EXPECT_EQ(button->getCaption(), longest);
    button->setCaption(button->getCaption() + 4);
    EXPECT_EQ(button->getCaption(), longest.substr(4)) << "a part of itself";
    button->setCaption("");
    EXPECT_STREQ(button->getCaption(), "");
    EXPECT_NOTHING_LOGGED();
}

TEST_F(Button, DrawsItsCaptionWhereItIsNarrowerThanTheBox) {
    const std::string ellipsis = "[ 1 1, . 17 1, . 33 1, . 49 1, ] 65 1";
    font->setKerning('i', 12);
    const struct {
        const char *what, *caption;
        int width;
        bool clicked;
        std::string text;
    } cases[] = {
        {"narrower", "ab", 33, false, "a 1 1, b 17 1"},
        {"clicked", "ab", 33, true, "a 2 2, b 18 2"},
        {"empty", "", 100, false, ""},
        {"exactly as wide", "abcdef", 96, false, ellipsis},
        {"a pixel wider", "abcdef", 97, false, "a 1 1, b 17 1, c 33 1, d 49 1, e 65 1, f 81 1"},
        {"room for the ellipsis", "abcdef", 81, false, ellipsis},
        {"the ellipsis, clicked", "abcdef", 81, true, "[ 2 2, . 18 2, . 34 2, . 50 2, ] 66 2"},
        {"exactly as wide as the ellipsis", "abcdef", 80, false, ""},
        {"no width", "a", 0, false, ""},
        {"a negative width counts as a large one", "a", -1, false, "a 1 1"},
        {"kerning", "iii", 13, false, "i 1 1, i 5 1, i 9 1"},
        {"colours have no width", "^c8008a", 17, false, "a 1 1 #255.0.0.255"},
        {"offsets have one", "^x0010a", 26, false, ""},
        {"two percent signs are measured, one is drawn", "%%", 33, false, "% 1 1"},
        {"and so do not fit", "%%", 32, false, ""},
        {"no arguments", "%s%", 64, false, "% 1 1, s 17 1, % 33 1"},
        {"a truncated tag", "a^c8", 64, false, ""},
    };
    for (const auto &c : cases) {
        button->setCaption(c.caption);
        button->setSizeX(c.width);
        button->setClickedStatus(c.clicked);
        EXPECT_EQ(textOf(button), c.text) << c.what;
        RVFONT::reset();
    }
    EXPECT_NOTHING_LOGGED();
}

TEST_F(Button, WithoutAFontOnlyTheBoxIsDrawn) {
    button->setSizeX(300);
    EXPECT_NE(textOf(button), "");
    button->setFont(nullptr);
    EXPECT_EQ(textOf(button), "");
    EXPECT_EQ(drawingsOf([this] { button->render(&element); }).size(), 25u);
    button->setFont(font);
    delete font;
    EXPECT_EQ(button->getFont(), nullptr);
    EXPECT_EQ(textOf(button), "");
    EXPECT_NOTHING_LOGGED();
}

TEST_F(Button, DrawsNothingWhenItIsNotShown) {
    button->setDisplayStatus(false);
    EXPECT_TRUE(renderCalls(button).empty());
}

// The box ends with the scissor test off; its rectangle is used again.
TEST_F(Button, CutsItsCaptionAsItsBox) {
    button->setCaption("a");
    button->setThickness(0);
    const auto calls = [this] {
        return renderCalls(button)
            .named({"glEnable", "glScissor", "glDisable", "glDrawArrays", "glDrawElements"})
            .where([](const Call &call) {
                return !call.name.ends_with("able") || call.arguments[0] == GL_SCISSOR_TEST;
            });
    };
    const Call box("glDrawArrays", GL_TRIANGLE_STRIP, 0, 4);
    const Call text("glDrawElements", GL_TRIANGLES, 6, GL_UNSIGNED_SHORT, anyAddress);
    const Call on("glEnable", GL_SCISSOR_TEST), off("glDisable", GL_SCISSOR_TEST);
    EXPECT_EQ(calls(), (Calls{{"glScissor", 0, 0, width, height}, box, on, text, off}));
    auto *window = new RVWINDOW;
    button->link(window);
    EXPECT_EQ(calls(),
              (Calls{on, {"glScissor", 0, height - 19 - 128, 128, 128}, box, off, on, text, off}));
    button->setScissorStatus(false);
    EXPECT_EQ(calls(), (Calls{box, text}));
}

TEST_F(Button, ACopyHasItsFields) {
    button->setCaption("ab");
    button->setEventType(RV_BUTTON_SWITCH);
    auto *assigned = new RVBUTTON;
    {
        RVBUTTON copy(*button);
        *assigned = *button;
        for (RVBUTTON *each : {&copy, assigned}) {
            EXPECT_STREQ(each->getCaption(), "ab");
            EXPECT_EQ(each->getFont(), font);
            EXPECT_EQ(each->getEventType(), RV_BUTTON_SWITCH);
            EXPECT_EQ(textOf(each), "a 1 1, b 17 1");
        }
        EXPECT_EQ(copy.getType(), RV_NODE_TYPE_BUTTON);
    }
    delete font;
    EXPECT_EQ(assigned->getFont(), nullptr);
}

} // namespace
