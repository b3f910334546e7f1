// Labels: what is written into them and what they draw.

#include "tests/gui/fontTest.h"

#include "ravolt/RVLABEL.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVWINDOW.h"

using namespace ravolt::test;

namespace {

class Label : public FontTest {
  protected:
    void SetUp() override {
        FontTest::SetUp();
        label = new RVLABEL;
        label->setFont(font);
        label->setScissorStatus(false);
        markLog();
    }

    RVLABEL *label = nullptr;
};

TEST_F(Label, LogsItsConstructorAndItsDestructor) {
    auto *made = new RVLABEL;
    EXPECT_LOGGED_EXACTLY("   RVLABEL() called\n");
    EXPECT_EQ(made->getType(), RV_NODE_TYPE_LABEL);
    EXPECT_EQ(made->getName(), "[label " + std::to_string(made->getId()) + "]");
    EXPECT_STREQ(made->getText(), "");
    EXPECT_FALSE(made->getCheckStatus());
    EXPECT_TRUE(made->getScissorStatus());
    EXPECT_EQ(made->getSizeX(), 64);
    delete made;
    EXPECT_LOGGED_EXACTLY("   ~RVLABEL() called\n");
}

TEST_F(Label, ExpandsItsTextWhenItIsWrittenAndDrawn) {
    const std::string letters(600, 'a');
    const std::string cut = "   [!] Text is cut at 255 bytes @ RVFONT::format\n";
    const struct {
        const char *what;
        std::string written, text, log;
    } cases[] = {
        {"plain", "abc", "abc", ""},
        {"empty", "", "", ""},
        {"percent sign", "5%", "5%", ""},
        {"line breaks and tags", "a\nb^c8000^x0004c", "a\nb^c8000^x0004c", ""},
        {"fits", letters.substr(0, 255), letters.substr(0, 255), ""},
        {"a byte too long", letters.substr(0, 256), letters.substr(0, 255), cut},
        {"the buffer", letters.substr(0, 511), letters.substr(0, 255), cut},
        {"more than the buffer", letters, letters.substr(0, 255), cut},
        {"tags are not divided", letters.substr(0, 253) + "^c8000a", letters.substr(0, 253),
         "   [!] Text is cut at 253 bytes @ RVFONT::format\n"},
    };
    for (const auto &c : cases) {
        EXPECT_TRUE(label->write("%s", c.written.c_str())) << c.what;
        EXPECT_EQ(label->getText(), c.text) << c.what;
        EXPECT_LOGGED_EXACTLY(c.log) << c.what;
    }
    EXPECT_TRUE(label->write("%d%%%% of %s", 5, "10%d"));
    EXPECT_STREQ(label->getText(), "5%% of 10%d");
    EXPECT_TRUE(label->write("%s", "5%%"));
    EXPECT_EQ(textOf(label), "5 0 0, % 16 0");
    EXPECT_TRUE(label->write("5%%"));
    EXPECT_EQ(textOf(label), "5 0 0, % 16 0");
    EXPECT_TRUE(label->write("%s", "%d%s"));
    EXPECT_EQ(textOf(label), "% 0 0, d 16 0, % 32 0, s 48 0") << "no argument is read";
    EXPECT_NOTHING_LOGGED();
}

TEST_F(Label, BreaksNoLineBelow65000Pixels) {
    font->setCharSizeX(1000);
    const std::string letters(66, 'a');
    EXPECT_TRUE(label->write("%s", letters.substr(1).c_str()));
    EXPECT_EQ(label->getText(), letters.substr(1));
    EXPECT_TRUE(label->write("%s", letters.c_str()));
    EXPECT_EQ(label->getText(), letters.substr(1) + "\na");
}

TEST_F(Label, RefusesNullAndTextsWithoutAFont) {
    const char *volatile null = nullptr;
    EXPECT_TRUE(label->write("old"));
    EXPECT_FALSE(label->write(null));
    EXPECT_LOGGED_EXACTLY("   [!] Invalid params @ RVLABEL::write\n");
    const wchar_t unencodable[] = {0x7fffffff, 0};
    EXPECT_FALSE(label->write("%ls", unencodable));
    EXPECT_LOGGED_EXACTLY("   [!] Invalid params @ RVLABEL::write\n");
    for (const bool deleted : {false, true}) {
        if (deleted)
            delete font;
        else
            label->setFont(nullptr);
        EXPECT_FALSE(label->write("new"));
        EXPECT_LOGGED_EXACTLY("   [!] Font not specified @ RVLABEL::write\n");
        EXPECT_FALSE(label->write(null)) << "which comes first";
        EXPECT_LOGGED_EXACTLY("   [!] Invalid params @ RVLABEL::write\n");
        EXPECT_EQ(textOf(label), "");
        if (!deleted)
            label->setFont(font);
    }
    EXPECT_STREQ(label->getText(), "old");
}

TEST_F(Label, DrawsItsTextAloneAlsoWhenItIsNotShown) {
    label->write("a^c8008b");
    element.getMatrix()->setTranslation(4, 5, 0);
    for (const bool shown : {true, false}) {
        label->setDisplayStatus(shown);
        Calls calls;
        EXPECT_EQ(glyphsOf(drawingsOf([&] { calls = renderCalls(label); })),
                  "a 0 0, b 16 0 #255.0.0.255")
            << "no box";
        EXPECT_EQ(calls[0], Call("glLoadMatrixf", 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 4, 5, 0, 1));
        EXPECT_EQ(calls.count("glLoadMatrixf"), 1u);
        EXPECT_FALSE(calls.contains("glScissor"));
    }
    EXPECT_FALSE(
        callsOf([this] { EXPECT_TRUE(label->render(nullptr)); }).contains("glLoadMatrixf"));
    label->write("truncated^");
    EXPECT_EQ(textOf(label), "");
}

// Unlike a box it sets no rectangle without a window.
TEST_F(Label, IsCutAtTheFirstWindowAroundIt) {
    label->write("a");
    auto *window = new RVWINDOW, *inner = new RVWINDOW;
    auto *box = new RVBOX;
    box->link(inner);
    inner->link(window);
    label->link(box);
    inner->setPosition(10, 20, 0);
    window->setPosition(1, 2, 0);
    inner->setSizes(30, 40);
    const Calls unset = renderCalls(label);
    EXPECT_FALSE(unset.contains("glScissor"));
    EXPECT_FALSE(unset.contains(Call("glDisable", GL_SCISSOR_TEST)));
    label->setScissorStatus(true);
    const Calls set =
        renderCalls(label).named({"glEnable", "glScissor", "glDrawElements", "glDisable"});
    EXPECT_EQ(set, (Calls{{"glEnable", GL_SCISSOR_TEST},
                          {"glScissor", 11, height - 22 - 40, 30, 40},
                          {"glDrawElements", GL_TRIANGLES, 6, GL_UNSIGNED_SHORT, anyAddress},
                          {"glDisable", GL_SCISSOR_TEST}}));
    label->unlink();
    EXPECT_FALSE(renderCalls(label).contains("glScissor"));
    RVOPENGL::scissorOn();
    EXPECT_TRUE(renderCalls(label).contains(Call("glDisable", GL_SCISSOR_TEST)));
}

TEST_F(Label, ACopyHasItsTextAndFont) {
    label->write("ab");
    auto *assigned = new RVLABEL;
    markLog();
    {
        RVLABEL copy(*label);
        EXPECT_NOTHING_LOGGED();
        *assigned = *label;
        for (RVLABEL *each : {&copy, assigned}) {
            EXPECT_STREQ(each->getText(), "ab");
            EXPECT_EQ(textOf(each), "a 0 0, b 16 0");
        }
        EXPECT_EQ(copy.getType(), RV_NODE_TYPE_LABEL);
        label->write("c");
        EXPECT_STREQ(copy.getText(), "ab");
    }
    delete font;
    EXPECT_EQ(textOf(assigned), "") << "its font is deleted";
}

} // namespace
