// Boxes: fields, texture coordinates, limits, the test of the pointer, stamps and the order of
// drawing.

#include "ravolt/RVVSCROLLBAR.h"
#include "ravolt/RVWINDOW.h"
#include "scene/renderList.h"
#include "tests/gui/widgetTest.h"
#include "tests/scene/sceneProbes.h"

#include <climits>
#include <cmath>

using namespace ravolt::test;

namespace {

using Floats = std::vector<float>;

Floats floatsOf(const RVBOXCOORD &coords) {
    Floats values;
    for (const Z3MVECTOR2D &pair :
         {coords.topLeft, coords.topRight, coords.bottomLeft, coords.bottomRight})
        values.insert(values.end(), {pair.x, pair.y});
    return values;
}

Floats floatsOf(const Z3MVECTOR4D &color) { return {color.x, color.y, color.z, color.w}; }

using Flags = std::vector<bool>;
Flags flagsOf(const RVBOX &box) {
    return {box.getCheckStatus(),   box.getDisplayStatus(), box.isStatic(),
            box.getClickedStatus(), box.getLimitStatus(),   box.getScissorStatus()};
}

class BoxTest : public WidgetTest {
  protected:
    void SetUp() override {
        WidgetTest::SetUp();
        box = new RVBOX;
        box->link(root);
    }

    RVBOX *box = nullptr;
};

// --- Fields

TEST(BoxCoord, GivesThePairsOfTheStripUprightOrFlipped) {
    EXPECT_EQ(floatsOf(RVBOXCOORD()), (Floats{0, 1, 1, 1, 0, 0, 1, 0}));
    EXPECT_EQ(floatsOf(RVBOXCOORD(0.5f, 0.25f, false)),
              (Floats{0, 0.25f, 0.5f, 0.25f, 0, 0, 0.5f, 0}));
    const RVBOXCOORD flipped(0.5f, 0.25f, true);
    const Floats expected{0, 0, 0.5f, 0, 0, 0.25f, 0.5f, 0.25f};
    EXPECT_EQ(floatsOf(flipped), expected);
    RVBOXCOORD assigned;
    assigned = flipped;
    EXPECT_EQ(floatsOf(assigned), expected);
}

TEST_F(BoxTest, StartsWithItsDefaults) {
    EXPECT_EQ(box->getType(), RV_NODE_TYPE_BOX);
    EXPECT_EQ(box->getName(), "[box " + std::to_string(box->getId()) + "]");
    EXPECT_EQ(rectangleOf(*box), (Floats{0, 0, 64, 64}));
    EXPECT_EQ(limitsOf(*box), (std::vector<int>{0, 0, 0, 0}));
    EXPECT_EQ(box->getThickness(), 3u);
    EXPECT_EQ(floatsOf(box->getColor()), (Floats{0.5f, 0.5f, 0.5f, 1}));
    EXPECT_EQ(flagsOf(*box), (Flags{false, true, true, false, false, true}));
    EXPECT_EQ(box->getTexture(), nullptr);
    EXPECT_EQ(floatsOf(box->getBoxCoord()), floatsOf(RVBOXCOORD()));
    EXPECT_FALSE(box->isTransparent());
    const long stamp = box->getForemostTimeStamp();
    EXPECT_EQ((new RVBOX)->getForemostTimeStamp(), stamp + 1);
    EXPECT_EQ(RVBOX::getNextCounter(), stamp + 2);
}

// All fields away from their defaults.
void change(RVBOX &box) {
    box.setSizes(10, 20);
    box.setLimits(1, 2, 3, 4);
    box.setThickness(7);
    box.setColor(0.1f, 0.2f, 0.3f, 0.4f);
    box.setBoxCoords(RVBOXCOORD(0.5f, 0.5f, true));
    box.setCheckStatus(true);
    box.setDisplayStatus(false);
    box.setStaticStatus(false);
    box.setClickedStatus(true);
    box.setLimitStatus(true);
    box.setScissorStatus(false);
    box.setPosition(5, 6);
}

void expectChanged(const RVBOX &box) {
    EXPECT_EQ(rectangleOf(box), (Floats{5, 6, 10, 20}));
    EXPECT_EQ(limitsOf(box), (std::vector<int>{1, 2, 3, 4}));
    EXPECT_EQ(box.getThickness(), 7u);
    EXPECT_EQ(floatsOf(box.getColor()), (Floats{0.1f, 0.2f, 0.3f, 0.4f}));
    EXPECT_TRUE(box.isTransparent());
    EXPECT_EQ(floatsOf(box.getBoxCoord()), floatsOf(RVBOXCOORD(0.5f, 0.5f, true)));
    EXPECT_EQ(flagsOf(box), (Flags{true, false, false, true, true, false}));
    EXPECT_TRUE(box.isClicked());
}

TEST_F(BoxTest, StoresWhatIsSet) {
    change(*box);
    expectChanged(*box);
    box->setSizeX(30);
    box->setSizeY(40);
    EXPECT_EQ(box->getSizeX(), 30);
    EXPECT_EQ(box->getSizeY(), 40);
    box->setColor(Z3MVECTOR4D(1, 0.5f, 0.25f, 1));
    EXPECT_EQ(floatsOf(box->getColor()), (Floats{1, 0.5f, 0.25f, 1}));
    EXPECT_FALSE(box->isTransparent());
    // Each flag alone.
    struct Flag {
        void (RVBOX::*set)(bool);
        bool (RVBOX::*get)() const;
    };
    for (const Flag &flag : {Flag{&RVBOX::setCheckStatus, &RVBOX::getCheckStatus},
                             {&RVBOX::setDisplayStatus, &RVBOX::getDisplayStatus},
                             {&RVBOX::setStaticStatus, &RVBOX::isStatic},
                             {&RVBOX::setClickedStatus, &RVBOX::isClicked},
                             {&RVBOX::setLimitStatus, &RVBOX::getLimitStatus},
                             {&RVBOX::setScissorStatus, &RVBOX::getScissorStatus}}) {
        const Flags before = flagsOf(*box);
        RVBOX &changed = *box;
        const bool on = (changed.*flag.get)();
        (changed.*flag.set)(!on);
        int changes = 0;
        for (std::size_t index = 0; index < before.size(); ++index)
            changes += before[index] != flagsOf(*box)[index];
        EXPECT_EQ(changes, 1);
    }
}

TEST_F(BoxTest, CopiesHaveEveryFieldAndAddNoReference) {
    RVTEXTURE *const texture = new RVTEXTURE;
    change(*box);
    box->setTexture(texture);
    const int references = texture->getReferences();
    {
        RVBOX copy(*box), assigned;
        assigned = *box;
        for (RVBOX *each : {&copy, &assigned}) {
            expectChanged(*each);
            EXPECT_EQ(each->getTexture(), texture);
            EXPECT_EQ(each->getForemostTimeStamp(), box->getForemostTimeStamp());
        }
    }
    EXPECT_EQ(texture->getReferences(), references);
    RVBOX &same = *box;
    *box = same;
    expectChanged(*box);
}

TEST_F(BoxTest, CountsAsAUserOfItsTextureUntilAnotherIsSet) {
    RVTEXTURE *const first = new RVTEXTURE, *const second = new RVTEXTURE;
    const int before = first->getReferences();
    const auto added = [&] {
        return std::vector<int>{first->getReferences() - before, second->getReferences() - before};
    };
    EXPECT_TRUE(box->setTexture(first));
    EXPECT_EQ(added(), (std::vector<int>{1, 0}));
    EXPECT_TRUE(box->setTexture(first));
    EXPECT_EQ(added(), (std::vector<int>{1, 0}));
    EXPECT_TRUE(box->setTexture(second));
    EXPECT_EQ(added(), (std::vector<int>{0, 1}));
    EXPECT_TRUE(box->setTexture(nullptr));
    EXPECT_EQ(added(), (std::vector<int>{0, 0}));
    EXPECT_EQ(box->getTexture(), nullptr);
    box->setTexture(first);
    erase(box);
    EXPECT_EQ(added(), (std::vector<int>{1, 0})) << "on purpose not released";
    RVBOX *const other = add(new RVBOX);
    other->setTexture(second);
    delete second;
    EXPECT_EQ(other->getTexture(), nullptr);
}

// --- Limits

TEST_F(BoxTest, ClampsAStepToItsLimits) {
    RVBOX *const parent = addBox(100.9f, 50.9f, 10, 10);
    struct Case {
        const char *what;
        float x, y; // in the parent
        int size;
        std::vector<int> limits;
        int dx, dy;
        std::vector<int> expected;
    };
    for (const Case &c : {
             Case{"inside", 10, 10, 20, {0, 0, 100, 100}, 5, -5, {5, -5}},
             Case{"at the start", 10, 10, 20, {0, 0, 100, 100}, -10, -10, {-10, -10}},
             Case{"below the start", 10, 10, 20, {0, 5, 100, 100}, -11, -11, {-10, -5}},
             Case{"at the end", 10, 10, 20, {0, 0, 100, 90}, 70, 60, {70, 60}},
             Case{"above the end", 10, 10, 20, {0, 0, 100, 90}, 71, 99, {70, 60}},
             Case{"both: the end wins", 10, 10, 20, {0, 0, 15, 15}, -20, 0, {-15, -15}},
             Case{"positions are truncated",
                  10.9f,
                  -10.9f,
                  20,
                  {0, -20, 100, 100},
                  -20,
                  -20,
                  {-10, -10}},
             Case{"negative limits", 0, 0, 4, {-8, -2, 72, 6}, -20, 20, {-8, 2}},
             Case{"a step beyond all numbers",
                  10,
                  10,
                  20,
                  {0, 0, 100, 100},
                  INT_MAX,
                  INT_MIN,
                  {70, -10}},
             Case{"limits beyond all numbers",
                  10,
                  10,
                  20,
                  {INT_MIN, INT_MIN, INT_MAX, INT_MAX},
                  INT_MAX,
                  INT_MIN,
                  {INT_MAX - 30, INT_MIN}},
             Case{"a position beyond all numbers",
                  1e20f,
                  -1e20f,
                  20,
                  {0, 0, 100, 100},
                  0,
                  0,
                  {80 - INT_MAX, INT_MAX}},
             Case{"no position", NAN, NAN, 20, {0, 0, 100, 100}, 90, -5, {80, 0}},
         }) {
        SCOPED_TRACE(c.what);
        RVBOX *const moved = addBox(c.x, c.y, c.size, c.size, parent);
        moved->setLimits(c.limits[0], c.limits[1], c.limits[2], c.limits[3]);
        int dx = c.dx, dy = c.dy;
        EXPECT_FALSE(moved->checkLimits(&dx, &dy)) << "they are switched off";
        EXPECT_EQ((std::vector<int>{dx, dy}), (std::vector<int>{c.dx, c.dy}));
        moved->setLimitStatus(true);
        EXPECT_TRUE(moved->checkLimits(&dx, &dy));
        EXPECT_EQ((std::vector<int>{dx, dy}), c.expected);
    }
    EXPECT_NOTHING_LOGGED();
}

TEST_F(BoxTest, ReportsAMissingStep) {
    int step = 5;
    EXPECT_FALSE(box->checkLimits(nullptr, &step));
    EXPECT_FALSE(box->checkLimits(&step, nullptr));
    EXPECT_EQ(step, 5);
    EXPECT_LOGGED_EXACTLY("   [!] Invalid params @ RVBOX::checkLimits\n"
                          "   [!] Invalid params @ RVBOX::checkLimits\n");
}

// --- The test of the pointer

TEST_F(BoxTest, IsHitInsideAndOnItsEdges) {
    RVNODE *const shifted = add(new RVNODE, 5, 7);
    RVBOX *const parent = addBox(100, 200, 1, 1, shifted);
    // From (115, 227) to (145, 267), and half a pixel to the lower right.
    RVBOX *const whole = addBox(10, 20, 30, 40, parent);
    RVBOX *const half = addBox(10.5f, 20.5f, 30, 40, parent);
    const struct {
        int x, y;
        bool hitsWhole, hitsHalf;
    } cases[] = {
        {130, 250, true, true},       {115, 250, true, false},     {114, 250, false, false},
        {116, 250, true, true},       {145, 250, true, true},      {146, 250, false, false},
        {130, 227, true, false},      {130, 226, false, false},    {130, 228, true, true},
        {130, 267, true, true},       {130, 268, false, false},    {115, 227, true, false},
        {145, 267, true, true},       {146, 268, false, false},    {-130, 250, false, false},
        {INT_MAX, 250, false, false}, {130, INT_MIN, false, false}};
    for (const auto &c : cases) {
        EXPECT_EQ(whole->checkBoundaries(c.x, c.y), c.hitsWhole) << c.x << ", " << c.y;
        EXPECT_EQ(half->checkBoundaries(c.x, c.y), c.hitsHalf) << c.x << ", " << c.y;
        whole->setCheckStatus(false);
        EXPECT_FALSE(whole->checkBoundaries(c.x, c.y));
        whole->setCheckStatus(true);
    }
    whole->setDisplayStatus(false);
    EXPECT_TRUE(whole->checkBoundaries(130, 250)) << "whether it is shown does not count";
}

// A window from (100, 100) to (200, 200) in another one from (0, 50) to (90, 150).
TEST_F(BoxTest, IsHitWithinTheFirstWindowAroundItUnlessItIsTheTitleBar) {
    RVWINDOW *const outer = add(new RVWINDOW, 0, 50);
    outer->setSizes(90, 100);
    RVWINDOW *const window = add(new RVWINDOW, 100, 50, outer);
    window->setSizes(100, 100);
    RVBOX *const inside = addBox(80, 80, 60, 60, window);
    RVBOX *const deeper = addBox(0, 0, 60, 60, inside);
    RVBUTTON *const title = window->getTitleBar();
    RVBOX *const ofTitle = addBox(0, 0, 10, 10, title);

    EXPECT_TRUE(window->checkBoundaries(150, 150)) << "no window is tested for a window";
    EXPECT_TRUE(inside->checkBoundaries(190, 190));
    EXPECT_FALSE(inside->checkBoundaries(210, 190)) << "beyond the window";
    EXPECT_TRUE(deeper->checkBoundaries(190, 190));
    EXPECT_FALSE(deeper->checkBoundaries(190, 210));
    EXPECT_TRUE(title->checkBoundaries(150, 90)) << "child 0 is outside of the window";
    EXPECT_FALSE(title->checkBoundaries(150, 70));
    EXPECT_FALSE(ofTitle->checkBoundaries(105, 85)) << "but not what is in it";

    window->setCheckStatus(false);
    EXPECT_FALSE(inside->checkBoundaries(190, 190)) << "the window is not checked";
    EXPECT_TRUE(title->checkBoundaries(150, 90));
}

// --- Stamps

TEST_F(BoxTest, RaisesItselfAndItsChildrenInDepth) {
    RVBOX *const first = addBox(0, 0, 1, 1, box), *const below = addBox(0, 0, 1, 1, first);
    RVNODE *const custom = add(new CustomNode, 0, 0, box);
    RVBOX *const unreached = addBox(0, 0, 1, 1, custom);
    RVBOX *const second = addBox(0, 0, 1, 1, box);
    RVBOX *const other = addBox(0, 0, 1, 1);
    const long top = other->getForemostTimeStamp(), unchanged = unreached->getForemostTimeStamp();
    EXPECT_TRUE(box->setForemost(-7));
    std::vector<long> stamps;
    for (const RVBOX *each : {box, first, below, second})
        stamps.push_back(each->getForemostTimeStamp() - top);
    EXPECT_EQ(stamps, (std::vector<long>{1, 3, 5, 7})) << "one is skipped for each child";
    EXPECT_EQ(unreached->getForemostTimeStamp(), unchanged) << "a child that is no box";
    EXPECT_EQ(RVBOX::getNextCounter(), top + 8);
}

TEST_F(BoxTest, BoxesAreSortedByStampAboveWhatIsNoBox) {
    EXPECT_FALSE(RVELEMENT::sort2D()) << "an empty list";
    RVBOX *const low = addBox(0, 0, 1, 1), *const high = addBox(0, 0, 1, 1);
    RVNODE *const custom = add(new CustomNode), *const light = add(new RVLIGHT);
    RVBOX *const middle = addBox(0, 0, 1, 1);
    RVNODE *const mesh = add(new RVMESH);
    stampOf(*low) = -5; // as no box has
    high->setForemost(0);
    RAVOLT::begin2D();
    root->pass();
    EXPECT_TRUE(RVELEMENT::sort2D());
    NodeList order;
    for (unsigned int index = 0; index < RVELEMENT::getNumberOfPassedElements(); ++index)
        order.push_back(ravolt::RenderList::entry(index)->getNode());
    EXPECT_EQ(order, (NodeList{custom, light, mesh, low, box, middle, high}));
    RAVOLT::end2D();
}

// The lights and the meshes of the list are not drawn in the 2D block, the others are.
TEST_F(BoxTest, DrawsWhatIsNoBoxBelowTheBoxes) {
    Drawings drawn;
    using BoxProbe = Probe<RVBOX>;
    BoxProbe *const probe = add(new BoxProbe(drawn));
    add(new LightProbe(drawn));
    CustomProbe *const custom = add(new CustomProbe(drawn));
    add(new MeshProbe(drawn));
    HelperProbe *const helper = add(new HelperProbe(drawn));
    show();
    EXPECT_EQ(nodesOf(drawn), (NodeList{custom, helper, probe}));
}

TEST_F(BoxTest, OfAMinimizedWindowOnlyTheTitleBarIsPassed) {
    RVWINDOW *const window = add(new RVWINDOW);
    RVBOX *const child = addBox(0, 0, 1, 1, window), *const ofTitle =
                                                         addBox(0, 0, 1, 1, window->getTitleBar());
    const auto passedNodes = [this] {
        show();
        NodeList nodes;
        for (unsigned int index = 0; index < RVELEMENT::getNumberOfPassedElements(); ++index)
            nodes.push_back(ravolt::RenderList::entry(index)->getNode());
        return nodes;
    };
    RVVSCROLLBAR *const bar = window->getScrollBar();
    EXPECT_EQ(passedNodes(), (NodeList{box, window, window->getTitleBar(), bar, bar->getCursor(),
                                       child, ofTitle}));
    window->minmaximize();
    EXPECT_EQ(passedNodes(), (NodeList{box, window, window->getTitleBar(), ofTitle}));
    erase(window->getTitleBar());
    erase(bar);
    erase(child);
    EXPECT_EQ(passedNodes(), (NodeList{box, window})) << "it has no child 0";
}

} // namespace
