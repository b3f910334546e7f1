// Scroll bars on both axes. "Along" is the axis of the bar, "across" the other one.

#include "ravolt/RVHSCROLLBAR.h"
#include "ravolt/RVVSCROLLBAR.h"
#include "tests/gui/drawnBoxes.h"
#include "tests/gui/widgetTest.h"

#include <climits>
#include <cmath>
#include <limits>

using namespace ravolt::test;

namespace {

// The coordinates of a list, which are X first, with the axis of the bar first.
template <class Bar, class List> List alongFirst(List list) {
    if constexpr (std::is_same_v<Bar, RVVSCROLLBAR>)
        for (std::size_t index = 0; index + 1 < list.size(); index += 2)
            std::swap(list[index], list[index + 1]);
    return list;
}

template <class Bar> class ScrollBarTest : public WidgetTest {
  protected:
    void SetUp() override {
        WidgetTest::SetUp();
        tested = new Bar;
        tested->link(root);
    }

    static constexpr bool horizontal = std::is_same_v<Bar, RVHSCROLLBAR>;

    // Position and sizes of the cursor.
    std::vector<float> cursor() { return alongFirst<Bar>(rectangleOf(*tested->getCursor())); }
    void placeCursor(float along) {
        horizontal ? tested->getCursor()->setPosition(along, -2)
                   : tested->getCursor()->setPosition(-2, along);
    }
    void setLength(RVBOX &box, int length) {
        horizontal ? box.setSizeX(length) : box.setSizeY(length);
    }

    Bar *tested = nullptr;
};

using Bars = testing::Types<RVHSCROLLBAR, RVVSCROLLBAR>;
TYPED_TEST_SUITE(ScrollBarTest, Bars);

using Floats = std::vector<float>;
using Limits = std::vector<int>;

TYPED_TEST(ScrollBarTest, IsATrackWithACursorInItsMiddle) {
    TypeParam &bar = *this->tested;
    EXPECT_EQ(bar.getType(), this->horizontal ? RV_NODE_TYPE_HSCROLLBAR : RV_NODE_TYPE_VSCROLLBAR);
    EXPECT_EQ(bar.getName(), "[hscrollbar " + std::to_string(bar.getId()) + "]");
    EXPECT_EQ(alongFirst<TypeParam>(rectangleOf(bar)), (Floats{0, 0, 64, 4}));
    EXPECT_EQ(bar.getColor(), Z3MVECTOR4D(0.6f, 0.2f, 0, 0.35f));
    EXPECT_FALSE(bar.getCheckStatus());
    EXPECT_TRUE(bar.isStatic());
    EXPECT_EQ(bar.getMinValue(), 0);
    EXPECT_EQ(bar.getMaxValue(), 1);

    RVBUTTON &cursor = *bar.getCursor();
    EXPECT_EQ(bar.getNumberOfChildren(), 1u);
    EXPECT_EQ(bar.getChild(0), &cursor);
    EXPECT_EQ(this->cursor(), (Floats{24, -2, 16, 8}));
    EXPECT_EQ(alongFirst<TypeParam>(limitsOf(cursor)), (Limits{-8, -2, 72, 6}));
    EXPECT_EQ(cursor.getColor(), Z3MVECTOR4D(0.8f, 0.3f, 0, 0.9f));
    EXPECT_FALSE(cursor.isStatic());
    EXPECT_TRUE(cursor.getLimitStatus());
    EXPECT_TRUE(cursor.getCheckStatus());
    EXPECT_EQ(cursor.getEventType(), RV_BUTTON_NORMAL);
    EXPECT_GT(cursor.getForemostTimeStamp(), bar.getForemostTimeStamp());
    EXPECT_EQ(bar.getValue(), 0.5f);
}

TYPED_TEST(ScrollBarTest, ValuesMoveTheCursorWithinTheRange) {
    TypeParam &bar = *this->tested;
    constexpr float none = std::numeric_limits<float>::quiet_NaN();
    struct Case {
        float min, max, value;
        float along;    // of the cursor
        float readBack; // without the cursor's rounding
    };
    for (const Case &c : {
             Case{0, 1, 0, -8, 0},
             {0, 1, 1, 56, 1},
             {0, 1, 0.25f, 8, 0.25f},
             {0, 1, 1.5f, 56, 1},
             {0, 1, -0.5f, -8, 0},
             {10, 20, 15, 24, 15},
             {10, 20, 25, 56, 20},
             {-8, 8, -4, 8, -4},
             {5, 5, 5, -8, 5}, // an empty range
             {5, 5, 7, -8, 5},
             {9, 1, 5, -8, 9}, // reversed: the largest value is applied last, 1, and then 9
             {0, 1, none, -8, 0},
         }) {
        SCOPED_TRACE(testing::Message() << c.value << " in " << c.min << " to " << c.max);
        bar.setMinValue(c.min);
        bar.setMaxValue(c.max);
        EXPECT_EQ(bar.getMinValue(), c.min);
        EXPECT_EQ(bar.getMaxValue(), c.max);
        this->placeCursor(3);
        if (c.min > c.max) {
            bar.setValue(c.value);
            EXPECT_EQ(bar.getValue(), c.readBack);
            continue;
        }
        bar.setValue(c.value);
        EXPECT_EQ(this->cursor(), (Floats{c.along, -2, 16, 8}));
        EXPECT_EQ(bar.getValue(), c.readBack);
    }
    EXPECT_NOTHING_LOGGED();
}

TYPED_TEST(ScrollBarTest, TheRangeDoesNotMoveTheCursor) {
    this->tested->setMinValue(100);
    this->tested->setMaxValue(200);
    EXPECT_EQ(this->cursor(), (Floats{24, -2, 16, 8}));
    EXPECT_EQ(this->tested->getValue(), 150);
}

TYPED_TEST(ScrollBarTest, ReadsTheValueOfTheCursorsMiddle) {
    TypeParam &bar = *this->tested;
    bar.setMaxValue(10);
    for (const auto &[along, value] :
         {std::pair{-8.0f, 0.0f}, {-9, 0}, {-1000, 0}, {56, 10}, {57, 10}, {8, 2.5f}, {40, 7.5f}}) {
        this->placeCursor(along);
        EXPECT_FLOAT_EQ(bar.getValue(), value) << along;
    }
    this->setLength(bar, 0);
    EXPECT_EQ(bar.getValue(), 0) << "no track";
    bar.setMinValue(3);
    EXPECT_EQ(bar.getValue(), 3);
}

// The pointer drags the cursor far beyond both ends.
TYPED_TEST(ScrollBarTest, ADraggedCursorReachesBothEndsExactly) {
    TypeParam &bar = *this->tested;
    bar.setPosition(20, 30);
    const int start = 32, end = 1000;
    const auto input = [this, &bar](int along, int left) {
        this->show();
        const int x = this->horizontal ? along : 0, y = this->horizontal ? 0 : along;
        RVELEMENT::manageGUIEvents(0, 20 + x, 30 + y, left, 0, nullptr);
        return bar.getValue();
    };
    input(start, 0);
    EXPECT_EQ(input(start, 1), 0.5f);
    EXPECT_EQ(input(start + 16, 1), 0.75f);
    EXPECT_EQ(input(end, 1), 1.0f);
    EXPECT_EQ(input(-end, 1), 0.0f);
    input(-end, 0);
    EXPECT_EQ(this->cursor(), (Floats{-8, -2, 16, 8}));
}

TYPED_TEST(ScrollBarTest, ANewSizeOfTheCursorKeepsItsMiddle) {
    for (const auto &[size, along] : {std::pair{32, 16.0f}, {8, 28}, {9, 27.5f}, {0, 32}}) {
        this->tested->setCursorSize(size);
        EXPECT_EQ(this->cursor(), (Floats{along, -2, static_cast<float>(size), 8})) << size;
        EXPECT_EQ(this->tested->getValue(), 0.5f);
    }
}

TYPED_TEST(ScrollBarTest, SetsTheLimitsOfTheCursorWhenItIsDrawn) {
    TypeParam &bar = *this->tested;
    RVBUTTON &cursor = *bar.getCursor();
    this->setLength(bar, 101);
    cursor.setSizes(7, 7);
    EXPECT_EQ(alongFirst<TypeParam>(limitsOf(cursor)), (Limits{-8, -2, 72, 6}));
    const std::vector<Quad> quads = quadsOf(drawingsOf([&] { EXPECT_TRUE(bar.render(nullptr)); }));
    EXPECT_EQ(alongFirst<TypeParam>(limitsOf(cursor)), (Limits{-3, -1, 104, 6}));
    ASSERT_FALSE(quads.empty());
    EXPECT_EQ(quads[0], this->horizontal ? (Quad{0, 0, 101, 4, {0.6f, 0.2f, 0, 0.35f}})
                                         : (Quad{0, 0, 4, 101, {0.6f, 0.2f, 0, 0.35f}}));
    this->setLength(bar, INT_MAX);
    cursor.setSizes(INT_MIN, INT_MIN);
    bar.RVBOX::setDisplayStatus(false);
    EXPECT_FALSE(bar.render(nullptr));
    EXPECT_EQ(alongFirst<TypeParam>(limitsOf(cursor)),
              (Limits{1 << 30, 1 << 29, INT_MAX - (1 << 30), -3 * (1 << 29)}));
}

TYPED_TEST(ScrollBarTest, IsShownAndHiddenWithItsChild) {
    TypeParam &bar = *this->tested;
    RVBUTTON *const cursor = bar.getCursor();
    RVBOX *const second = this->addBox(0, 0, 1, 1, &bar);
    bar.setDisplayStatus(false);
    EXPECT_FALSE(bar.getDisplayStatus());
    EXPECT_FALSE(cursor->getDisplayStatus());
    EXPECT_TRUE(second->getDisplayStatus()) << "child 1";
    bar.setDisplayStatus(true);
    EXPECT_TRUE(bar.getDisplayStatus() && cursor->getDisplayStatus());
    this->erase(cursor);
    EXPECT_EQ(bar.getCursor(), nullptr) << "child 0 is no button";
    bar.setDisplayStatus(false);
    EXPECT_FALSE(second->getDisplayStatus()) << "now child 0";
    this->erase(second);
    bar.setDisplayStatus(true);
    EXPECT_EQ(bar.getCursor(), nullptr);
    EXPECT_NOTHING_LOGGED();
}

TYPED_TEST(ScrollBarTest, ReportsAMissingCursor) {
    TypeParam &bar = *this->tested;
    this->erase(bar.getCursor());
    bar.setValue(0.5f);
    EXPECT_LOGGED_EXACTLY(this->horizontal
                              ? "   [!] Invalid cursor reference @ RVHSCROLLBAR::setValue\n"
                              : "   [!] Invalid cursor reference @ RVVSCROLLBAR::setValue\n");
    EXPECT_EQ(bar.getValue(), 0);
    EXPECT_LOGGED_EXACTLY(this->horizontal
                              ? "   [!] Invalid cursor reference @ RVHSCROLLBAR::getValue\n"
                              : "   [!] Invalid cursor reference @ RVVSCROLLBAR::getValue\n");
    bar.setCursorSize(20);
    EXPECT_TRUE(bar.render(nullptr));
    EXPECT_NOTHING_LOGGED();
}

TYPED_TEST(ScrollBarTest, CopiesShareTheCursor) {
    TypeParam &bar = *this->tested;
    bar.setMinValue(2);
    bar.setMaxValue(4);
    TypeParam copy(bar), assigned;
    RVBUTTON *const other = assigned.getCursor();
    assigned = bar;
    for (TypeParam *each : {&copy, &assigned}) {
        EXPECT_EQ(each->getMinValue(), 2);
        EXPECT_EQ(each->getMaxValue(), 4);
        each->setValue(4);
        EXPECT_EQ(this->cursor(), (Floats{56, -2, 16, 8}));
        bar.setValue(2);
        EXPECT_EQ(each->getValue(), 2);
    }
    this->erase(bar.getCursor());
    EXPECT_EQ(copy.getValue(), 0) << "of both";
    other->unlink();
}

// A bar of an application may be made where no memory is left for the cursor.
TYPED_TEST(ScrollBarTest, HasNoCursorWithoutMemory) {
    void *const memory = ::operator new(sizeof(TypeParam));
    this->recorder.failAllocation(sizeof(RVBUTTON), 0, 1);
    TypeParam *const bar = new (memory) TypeParam;
    this->recorder.allocationsWork();
    EXPECT_EQ(bar->getCursor(), nullptr);
    EXPECT_EQ(bar->getNumberOfChildren(), 0u);
    EXPECT_LOGGED_EXACTLY("   [!] Out of memory for the cursor @ RVSCROLLBAR::RVSCROLLBAR\n");
}

} // namespace
