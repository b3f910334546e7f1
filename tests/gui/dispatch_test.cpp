// Pointer and keys for the widgets: sequences of calls of manageGUIEvents, a frame before each one.

#include "gui/boxNodes.h"
#include "gui/interaction.h"
#include "ravolt/RVCAMERA.h"
#include "ravolt/RVHELPER.h"
#include "ravolt/RVHSCROLLBAR.h"
#include "ravolt/RVTEXTFIELD.h"
#include "ravolt/RVVSCROLLBAR.h"
#include "tests/gui/widgetTest.h"
#include "tests/scene/sceneProbes.h"

#include <map>
#include <sstream>

using namespace ravolt::test;

namespace {

// What one call passes, and what can be seen after it: whether the pointer was used, the widget
// that is reported, and each widget that is clicked, has been moved or has another text than at the
// start.
struct Step {
    int x, y, left;
    const char *expected;
    char key = 0;
};

struct Sequence {
    const char *what;
    std::vector<Step> steps;
};

class DispatchTest : public WidgetTest {
  protected:
    void SetUp() override {
        WidgetTest::SetUp();
        makeScene();
    }

    // Widgets of 20 by 20 in rows of 30 pixels, and below them a window with a button in it.
    void makeScene() {
        addButton("normal", 0, 0, RV_BUTTON_NORMAL);
        addButton("inverted", 30, 0, RV_BUTTON_INVERTED);
        addButton("switch", 60, 0, RV_BUTTON_SWITCH);
        addNamed("plain", addBox(90, 0, 20, 20));

        addNamed("movable", addBox(0, 30, 20, 20))->setStaticStatus(false);
        RVBOX *const limited = addNamed("limited", addBox(30, 30, 20, 20));
        limited->setStaticStatus(false);
        limited->setLimitStatus(true);
        limited->setLimits(25, 25, 60, 55);
        RVTEXTFIELD *const field = addNamed("field", add(new RVTEXTFIELD, 60, 30));
        field->setSizes(100, 20);
        field->clear();
        field->setFont(makeFont());
        addNamed("unchecked", addBox(90, 60, 20, 20))->setCheckStatus(false);

        window = addNamed("window", add(new RVWINDOW, 0, 100));
        window->setSizes(100, 40);
        addNamed("title", window->getTitleBar())->setCaption("T");
        inside = addButton("inside", 10, 10, RV_BUTTON_NORMAL, window);
        store();
    }

    template <class Box> Box *addNamed(const char *name, Box *box) {
        box->setName(name);
        return box;
    }
    RVBUTTON *addButton(const char *name, float x, float y, RV_BUTTON_EVENT type,
                        RVNODE *parent = nullptr) {
        RVBUTTON *const button = addNamed(name, add(new RVBUTTON, x, y, parent));
        button->setSizes(20, 20);
        button->setEventType(type);
        button->setCaption("");
        return button;
    }
    template <class Box = RVBOX> Box *find(const char *name) {
        return static_cast<Box *>(RVNODE::findByName(name));
    }

    // The state that a step is compared with.
    void store() {
        states.clear();
        for (RVNODE *node = RVNODE::getFirstNode(); node; node = node->getNextNode())
            states[node] = stateOf(*node);
    }

    static std::string stateOf(RVNODE &node) {
        std::ostringstream text;
        const RVBOX *box = ravolt::asBox(&node);
        text << node.getPosition().x << "," << node.getPosition().y;
        RVBUTTON *button = ravolt::asTextField(&node);
        if (!button)
            button = ravolt::asButton(&node);
        if (button && button->getCaption()[0])
            text << " " << button->getCaption();
        return text.str() + (box && box->isClicked() ? " clicked" : "");
    }

    std::string input(const Step &step, unsigned int *eventId) {
        show();
        const bool used =
            RVELEMENT::manageGUIEvents(step.key, step.x, step.y, step.left, right, eventId);
        std::string result = used ? "used" : "-";
        for (RVNODE *node = RVNODE::getFirstNode(); node; node = node->getNextNode())
            if (const std::string state = stateOf(*node); states[node] != state)
                result += " | " + std::string(node->getName()) + " " + state;
        if (eventId && *eventId != 0)
            result += " | reports " + std::string(RVNODE::findById(*eventId)->getName());
        return result;
    }
    std::string input(int x, int y, int left, char key = 0) {
        unsigned int event = 999;
        return input({x, y, left, "", key}, &event);
    }

    void expectSequence(const Sequence &sequence, bool withEvents) {
        SCOPED_TRACE(sequence.what);
        SCOPED_TRACE(withEvents ? "with an event" : "without an event");
        int number = 0;
        for (const Step &step : sequence.steps) {
            unsigned int event = 999;
            std::string expected = step.expected;
            if (const auto report = expected.find(" | reports"); !withEvents)
                expected = expected.substr(0, report);
            EXPECT_EQ(input(step, withEvents ? &event : nullptr), expected)
                << "step " << number << ": " << step.x << ", " << step.y << ", " << step.left;
            ++number;
        }
    }

    void startAnew() {
        RVNODE::cleanUp();
        ravolt::resetInteraction();
        root = new RVNODE;
        makeScene();
    }

    int right = 0; // the other button of the pointer
    RVWINDOW *window = nullptr;
    RVBUTTON *inside = nullptr;
    std::map<RVNODE *, std::string> states;
};

const Sequence sequences[] = {
    {"a normal button reports itself when it is released",
     {{25, 10, 0, "-"},
      {10, 10, 0, "used"},
      {10, 10, 1, "used"},
      {11, 10, -5, "used | normal 0,0 clicked"},
      {11, 10, 0, "- | reports normal"},
      {11, 10, 0, "used"}}},
    {"a normal button is released beside it",
     {{10, 10, 1, "used"},
      {10, 10, 1, "used | normal 0,0 clicked"},
      {21, 10, 1, "used"},
      {20, 20, 1, "used | normal 0,0 clicked"},
      {21, 20, 1, "used"},
      {21, 20, 0, "-"},
      {10, 10, 0, "used"}}},
    {"a normal button is clicked until it is released beside it",
     {{10, 10, 1, "used"}, {10, 10, 1, "used | normal 0,0 clicked"}, {25, 25, 0, "-"}}},
    {"a press that begins beside a button does not reach it",
     {{25, 10, 1, "-"}, {10, 10, 1, "-"}, {10, 10, 0, "-"}, {10, 10, 1, "used"}}},
    {"an inverted button reports itself while it is held",
     {{40, 10, 0, "used"},
      {40, 10, 1, "used | reports inverted"},
      {40, 10, 1, "used | inverted 30,0 clicked | reports inverted"},
      {41, 10, 1, "used | inverted 30,0 clicked | reports inverted"},
      {55, 10, 1, "used"},
      {40, 10, 1, "used | inverted 30,0 clicked | reports inverted"},
      {40, 10, 0, "-"}}},
    {"a switch reports itself once for a press",
     {{70, 10, 1, "used | switch 60,0 clicked | reports switch"},
      {70, 10, 1, "- | switch 60,0 clicked"},
      {70, 10, 0, "- | switch 60,0 clicked"},
      {70, 10, 0, "used | switch 60,0 clicked"},
      {70, 10, 1, "used | reports switch"},
      {70, 10, 1, "-"},
      {10, 10, 1, "-"},
      {10, 10, 0, "-"}}},
    {"a plain box is clicked and reports nothing",
     {{100, 10, 1, "used"},
      {105, 10, 1, "used | plain 90,0 clicked"},
      {100, 10, 0, "-"},
      {90, 60, 0, "-"},
      {95, 65, 1, "-"}}},
    {"a box that is not static follows the pointer from the second call on",
     {{10, 50, 0, "used"},
      {10, 40, 1, "used"},
      {10, 40, 1, "used | movable 0,30 clicked"},
      {15, 37, 1, "used | movable 5,27 clicked"},
      {80, 10, 1, "used | movable 70,0 clicked"},
      {80, 10, 1, "used | movable 70,0 clicked"},
      {99, 99, 0, "- | movable 70,0"}}},
    {"it stays within its limits",
     {{40, 40, 1, "used"},
      {42, 41, 1, "used | limited 32,31 clicked"},
      {90, 10, 1, "used | limited 40,25 clicked"},
      {90, 11, 1, "used | limited 40,26 clicked"},
      {0, 200, 1, "used | limited 25,35 clicked"},
      {0, 200, 0, "- | limited 25,35"}}},
    {"the body of a window moves it, with what is in it",
     {{50, 120, 1, "used"},
      {53, 118, 1, "used | window 3,98 clicked"},
      {53, 118, 0, "- | window 3,98"},
      {20, 112, 1, "used | window 3,98"},
      {20, 112, 1, "used | window 3,98 | inside 10,10 clicked"},
      {20, 112, 0, "- | window 3,98 | reports inside"}}},
    {"a click on the title bar minimizes and maximizes",
     {{50, 90, 1, "used"},
      {50, 90, 1, "used | title 0,-19 T clicked"},
      {50, 90, 0, "- | title 0,-19 [+] T"},
      {50, 120, 0, "- | title 0,-19 [+] T"},
      {20, 112, 1, "- | title 0,-19 [+] T"},
      {50, 90, 0, "- | title 0,-19 [+] T"},
      {50, 90, 0, "used | title 0,-19 [+] T"},
      {50, 90, 1, "used | title 0,-19 [+] T"},
      {50, 90, 0, "-"},
      {50, 120, 0, "used"}}},
    {"a drag of the title bar by one pixel moves the window and does not minimize it",
     {{50, 90, 1, "used"},
      {51, 90, 1, "used | window 1,100 | title 0,-19 T clicked"},
      {51, 90, 1, "used | window 1,100 | title 0,-19 T clicked"},
      {51, 90, 0, "- | window 1,100"},
      {51, 90, 1, "used | window 1,100"},
      {51, 90, 0, "- | window 1,100 | title 0,-19 [+] T"}}},
    {"a minimized window is dragged by its title bar",
     {{50, 90, 1, "used"},
      {50, 90, 0, "- | title 0,-19 [+] T"},
      {50, 90, 1, "used | title 0,-19 [+] T"},
      {40, 70, 1, "used | window -10,80 | title 0,-19 [+] T clicked"},
      {40, 70, 0, "- | window -10,80 | title 0,-19 [+] T"}}},
    {"a title bar that is released beside it does not minimize",
     {{50, 90, 1, "used"}, {50, 150, 0, "-"}}},
    {"keys reach the field with the focus, which a press on another widget takes away",
     {{70, 40, 0, "used", 'x'},
      {70, 40, 1, "used", 'x'},
      {70, 40, 1, "used | field 60,30 a clicked", 'a'},
      {70, 40, 0, "- | field 60,30 ab", 'b'},
      {25, 10, 1, "- | field 60,30 abc", 'c'},
      {25, 10, 0, "- | field 60,30 abc"},
      {25, 10, 0, "- | field 60,30 ab", 8},
      {10, 10, 0, "used | field 60,30 abd", 'd'},
      {10, 10, 1, "used | field 60,30 abde", 'e'},
      {10, 10, 1, "used | normal 0,0 clicked | field 60,30 abde", 'f'},
      {10, 10, 0, "- | field 60,30 abde | reports normal", 'g'},
      {70, 40, 1, "used | field 60,30 abde", 'h'},
      {70, 40, 0, "- | field 60,30 abdei", 'i'}}},
};

TEST_F(DispatchTest, FollowsThePointerAndTheKeys) {
    for (const Sequence &sequence : sequences)
        for (const bool withEvents : {true, false}) {
            startAnew();
            right = withEvents; // without an effect
            expectSequence(sequence, withEvents);
        }
}

// In landscape mode the interface is turned: its X is the height less the window's Y, its Y the
// window's X.
class LandscapeDispatch : public DispatchTest {
  protected:
    LandscapeDispatch() { settings.setLandscape(true); }
};

TEST_F(LandscapeDispatch, TurnsThePointer) {
    ASSERT_TRUE(RVSETTINGS::isSDLLandscape());
    const int top = RVSETTINGS::getSDLWindowY(); // of X 0
    EXPECT_EQ(input(10, top - 10, 0), "used");
    EXPECT_EQ(input(10, top - 25, 0), "-");
    EXPECT_EQ(input(40, top - 10, 1), "used");
    EXPECT_EQ(input(47, top - 15, 1), "used | movable 5,37 clicked");
    EXPECT_EQ(input(47, top - 15, 0), "- | movable 5,37");
}

// --- Which box is hit

TEST_F(DispatchTest, HitsTheForemostShownBoxUnderThePointer) {
    RVBOX *const lower = addNamed("lower", addBox(200, 0, 20, 20));
    RVBOX *const upper = addNamed("upper", addBox(200, 0, 20, 20));
    const auto hit = [this] {
        store();
        input(210, 10, 0);
        input(210, 10, 1);
        const std::string held = input(210, 10, 1);
        input(210, 10, 0);
        return held;
    };
    const std::string isUpper = "used | upper 200,0 clicked",
                      isLower = "used | lower 200,0 clicked";
    EXPECT_EQ(hit(), isUpper);
    lower->setForemost(0);
    EXPECT_EQ(hit(), isLower);
    lower->setDisplayStatus(false);
    EXPECT_EQ(hit(), isUpper);
    lower->setDisplayStatus(true);
    upper->setCheckStatus(false);
    EXPECT_EQ(hit(), isLower);
    upper->setCheckStatus(true);
    stampOf(*upper) = stampOf(*lower);
    EXPECT_EQ(hit(), isLower) << "of equal stamps the first one of the pass";
    stampOf(*lower) = 0;
    EXPECT_EQ(hit(), isUpper) << "a stamp of 0 never hits";
    stampOf(*upper) = 0;
    EXPECT_EQ(hit(), "-");
}

TEST_F(DispatchTest, RaisesWindowsAndParentsOfTitleBarsAlone) {
    RVWINDOW *const other = add(new RVWINDOW, 200, 100);
    const auto stamps = [](RVWINDOW *of) {
        std::vector<long> all{of->getForemostTimeStamp()};
        for (unsigned int index = 0; index < of->getNumberOfChildren(); ++index)
            all.push_back(static_cast<RVBOX *>(of->getChild(index))->getForemostTimeStamp());
        all.push_back(of->getScrollBar()->getCursor()->getForemostTimeStamp());
        const long top = RVBOX::getNextCounter();
        for (long &stamp : all)
            stamp -= top;
        return all;
    };
    const auto press = [this](int x, int y) {
        input(x, y, 0);
        input(x, y, 1);
    };
    // The window, its title bar, scroll bar and button, and the cursor of the scroll bar.
    const std::vector<long> raised{-9, -7, -5, -1, -3};
    press(50, 120);
    EXPECT_EQ(stamps(window), raised);
    input(50, 120, 0);
    press(250, 90);
    EXPECT_EQ(stamps(other), (std::vector<long>{-7, -5, -3, -1})) << "by its title bar";
    const long top = RVBOX::getNextCounter();
    input(250, 90, 0);
    input(250, 90, 0);
    press(20, 120); // the button in the first window
    press(10, 10);
    EXPECT_EQ(RVBOX::getNextCounter(), top + 1) << "no other widget is raised";
}

// --- Other nodes in the list

// A node that crashes the test when it is read as a box: no memory follows RVNODE's fields.
TEST_F(DispatchTest, PassesOverWhatIsNoBox) {
    add(new CustomNode);
    add(new RVLIGHT);
    add(new RVMESH);
    add(new RVHELPER);
    add(new RVCAMERA);
    add(new TypedNode<RV_NODE_TYPE_EMITTER>);
    add(new TypedNode<RV_NODE_TYPE_BOX>);
    add(new TypedNode<RV_NODE_TYPE_WINDOW>, 0, 0, window);
    store();
    EXPECT_EQ(input(10, 10, 1), "used");
    EXPECT_EQ(input(10, 10, 1), "used | normal 0,0 clicked");
    EXPECT_EQ(input(10, 10, 0), "- | reports normal");
    EXPECT_EQ(input(500, 10, 1), "-");
    EXPECT_EQ(input(500, 10, 0), "-");
    EXPECT_EQ(input(50, 120, 1), "used") << "the window raises its boxes";

    drawFrame(nullptr, root);
    EXPECT_TRUE(RVELEMENT::manageGUIEvents(0, 50, 120, 1, 0, nullptr))
        << "a list in three dimensions";
    RVELEMENT::reset();
    EXPECT_TRUE(RVELEMENT::manageGUIEvents(0, 50, 120, 1, 0, nullptr)) << "still held";
    EXPECT_FALSE(RVELEMENT::manageGUIEvents(0, 50, 120, 0, 0, nullptr));
    EXPECT_FALSE(RVELEMENT::manageGUIEvents(0, 50, 120, 1, 0, nullptr)) << "an empty list";
}

TEST_F(DispatchTest, ATitleBarWithoutAWindowMovesItsParentOrItself) {
    RVNODE *const parent = addNamed("parent", add(new RVNODE));
    RVBUTTON *const bar = addButton("bar", 200, 0, RV_BUTTON_TITLEBAR, parent);
    bar->setStaticStatus(false);
    store();
    EXPECT_EQ(input(210, 10, 1), "used");
    EXPECT_EQ(input(215, 12, 1), "used | parent 5,2 | bar 200,0 clicked");
    EXPECT_EQ(input(215, 12, 0), "- | parent 5,2");
    EXPECT_EQ(input(215, 12, 1), "used | parent 5,2");
    EXPECT_EQ(input(215, 12, 0), "- | parent 5,2") << "a click";
    bar->unlink();
    input(210, 10, 0);
    const auto call = [bar](int x, int left) {
        drawFrame2D(bar);
        return RVELEMENT::manageGUIEvents(0, x, 10, left, 0, nullptr);
    };
    EXPECT_TRUE(call(210, 1));
    EXPECT_TRUE(call(213, 1));
    EXPECT_EQ(positionOf(*bar), (std::vector<float>{203, 0}));
    EXPECT_FALSE(call(213, 0));
}

// A drag that the limits have reduced to nothing is a drag, too.
TEST_F(DispatchTest, ATitleBarAtItsLimitsIsDraggedWithoutAMovement) {
    RVBUTTON *const title = window->getTitleBar();
    title->setLimitStatus(true);
    title->setLimits(0, -19, 100, 0);
    EXPECT_EQ(input(50, 90, 1), "used");
    EXPECT_EQ(input(55, 92, 1), "used | title 0,-19 T clicked");
    EXPECT_EQ(input(55, 92, 0), "-");
}

// --- The end of widgets and of the engine

TEST_F(DispatchTest, ReleasesADeletedWidget) {
    input(10, 10, 1);
    EXPECT_EQ(input(10, 10, 1), "used | normal 0,0 clicked");
    erase(find("normal"));
    EXPECT_EQ(input(10, 10, 1), "-");
    EXPECT_EQ(input(10, 10, 0), "-");

    input(70, 40, 1);
    input(70, 40, 0);
    EXPECT_EQ(input(70, 40, 0, 'a'), "used | field 60,30 a");
    show();
    erase(find("field")); // it is in the list
    EXPECT_FALSE(RVELEMENT::manageGUIEvents('b', 70, 40, 0, 0, nullptr));
    EXPECT_EQ(input(70, 40, 0, 'c'), "-");

    input(50, 90, 1);
    RVBUTTON *const title = window->getTitleBar();
    title->unlink();
    erase(window);
    EXPECT_EQ(input(50, 90, 0), "-") << "a title bar that has lost its window";
}

TEST_F(DispatchTest, ARestartReleasesEverything) {
    input(70, 40, 1);
    input(70, 40, 1);
    ASSERT_TRUE(restart());
    root = new RVNODE;
    makeScene();
    EXPECT_EQ(input(40, 10, 1, 'x'), "used | reports inverted") << "as after a release";
    EXPECT_EQ(input(40, 10, 0), "-");
}

// A copy is not in the registry: the end of the engine does not delete it.
TEST_F(DispatchTest, ARestartReleasesAlsoWhatItDoesNotDelete) {
    RVTEXTFIELD copy(*new RVTEXTFIELD);
    copy.clear();
    drawFrame2D(&copy);
    EXPECT_TRUE(RVELEMENT::manageGUIEvents(0, 10, 10, 1, 0, nullptr));
    ASSERT_TRUE(restart());
    EXPECT_FALSE(RVELEMENT::manageGUIEvents(0, 10, 10, 1, 0, nullptr)) << "held";
    copy.setFont(makeFont());
    EXPECT_FALSE(RVELEMENT::manageGUIEvents('a', 10, 10, 0, 0, nullptr));
    EXPECT_STREQ(copy.getCaption(), "") << "the focus";
}

} // namespace
