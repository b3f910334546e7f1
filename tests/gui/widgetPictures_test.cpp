// The pictures of texts, labels, buttons and text fields.

#include "tests/gui/pixelFont.h"
#include "tests/support/engineFixture.h"

#include "ravolt/RVFONT.h"
#include "ravolt/RVLABEL.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVTEXTFIELD.h"

using namespace ravolt::test;

namespace {

class WidgetPictures : public EngineTest {
  protected:
    // Some drivers filter linearly with any anisotropy.
    WidgetPictures() { settings.setMaxAnisotropy(1); }

    void SetUp() override {
        EngineTest::SetUp();
        font = makePixelFont();
        root = new RVNODE;
        recorder.stopClock();
        RAVOLT::updateTimer();
    }

    // At (x, y), linked.
    template <class Widget> Widget *add(float x, float y) {
        auto *widget = new Widget;
        widget->setPosition(x, y, 0);
        widget->setFont(font);
        widget->link(root);
        return widget;
    }
    template <class Widget> Widget *addButton(float x, float y, int sizeX, const char *caption) {
        auto *widget = add<Widget>(x, y);
        widget->setSizes(sizeX, 22);
        widget->setCaption(caption);
        return widget;
    }

    Picture draw() {
        RAVOLT::clear(true, true, false);
        drawFrame2D(root);
        return readFrame();
    }

    // Half of the cursor's cycle.
    void passHalfACycle() {
        RAVOLT::swap();
        recorder.advanceClock(0.5);
        RAVOLT::updateTimer();
    }

    RVFONT *font = nullptr;
    RVNODE *root = nullptr;
};

TEST_F(WidgetPictures, TextHasTagsKerningAndLines) {
    font->setKerning('l', 7);
    auto *label = add<RVLABEL>(8, 4);
    label->write("Ravolt\n^c8008Ra^c0808vo^c4008lt ^c8884123\n"
                 "^c8888R^y-008a^y0008v^x0020o^x-010o^y0012\n2 [0] 3");
    const Picture picture = draw();
    EXPECT_PICTURE(picture, "font_text", Tolerance{});
    for (int again = 0; again < 2; ++again) {
        RAVOLT::swap();
        EXPECT_EQ(differenceOf(draw(), picture).maximum, 0) << "the state before does not count";
    }
}

TEST_F(WidgetPictures, AButtonsCaptionSinksAndGivesWayToAnEllipsis) {
    addButton<RVBUTTON>(4, 4, 78, "Ravolt");
    addButton<RVBUTTON>(4, 36, 78, "Ravolt")->setClickedStatus(true);
    addButton<RVBUTTON>(4, 68, 72, "Ravolt"); // exactly as wide
    addButton<RVBUTTON>(88, 4, 36, "Ravolt"); // narrower than the ellipsis
    addButton<RVBUTTON>(88, 36, 36, "21");
    addButton<RVBUTTON>(88, 68, 36, "3")->setDisplayStatus(false);
    EXPECT_PICTURE(draw(), "button_states", Tolerance{});
}

TEST_F(WidgetPictures, ATextFieldIsAHollowWithABlinkingCursor) {
    addButton<RVTEXTFIELD>(4, 4, 100, "Ravolt");
    auto *focused = addButton<RVTEXTFIELD>(4, 36, 100, "Ravolt");
    auto *clicked = addButton<RVTEXTFIELD>(4, 68, 60, "t");
    clicked->setClickedStatus(true);
    for (RVTEXTFIELD *field : {focused, clicked})
        field->setThickness(3);
    passHalfACycle();
    focused->manageKey(0);
    const Picture off = draw();
    focused->manageKey(0);
    clicked->manageKey('0');
    const Picture on = draw();
    EXPECT_PICTURE(on, "textField_states", Tolerance{});
    EXPECT_NE(off.at(80, 46), on.at(80, 46)) << "the cursor";
    EXPECT_EQ(off.at(80, 46), on.at(90, 46)) << "beside it";
}

} // namespace
