// The treatment of every node type in every pass, written out once more as literal sets, and
// compared with the table of the kinds and with what the passes do.

#include "scene/nodeTraits.h"

#include "ravolt/RAVOLT.h"
#include "ravolt/RVELEMENT.h"
#include "ravolt/RVLIGHT.h"
#include "ravolt/RVNODE.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVSHADER.h"
#include "tests/engine/openGLAccess.h"
#include "tests/support/engineFixture.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace ravolt::test {
namespace {

using Types = std::set<int>;

// All numbers that a type may have here: the nineteen, and two unknown ones.
const Types allTypes = {-1, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19};

Types allBut(const Types &left) {
    Types rest;
    std::set_difference(allTypes.begin(), allTypes.end(), left.begin(), left.end(),
                        std::inserter(rest, rest.end()));
    return rest;
}

// The passes, by the types that take part.
const Types withoutEntry = {0};
const Types clipped = {3, 9};
const Types lights = {2};
const Types transparent = {5, 9};
const Types byMaterial = {3};
const Types notInBlock2D = {2, 3};
const Types notInShadowMap = {6, 7, 8}; // and lights, which are before the range that is drawn
const Types pickable = {3, 18};

const std::map<int, std::string> typeNames = {
    {0, "node"},       {1, "root"},        {2, "light"},       {3, "mesh"},    {4, "camera"},
    {5, "emitter"},    {6, "skydome"},     {7, "water"},       {8, "terrain"}, {9, "helper"},
    {10, "sound"},     {11, "box"},        {12, "label"},      {13, "button"}, {14, "window"},
    {15, "textfield"}, {16, "hscrollbar"}, {17, "vscrollbar"}, {18, "custom"}, {19, "custom"},
    {-1, "custom"}};

const std::map<int, std::string> defaultNames = {
    {0, "[node "},        {1, "[node "},        {2, "[light "},   {3, "[mesh "},
    {4, "[camera "},      {5, "[emitter "},     {6, "[skydome "}, {7, "[water "},
    {8, "[node "},        {9, "[helper "},      {10, "[node "},   {11, "[box "},
    {12, "[label "},      {13, "[button "},     {14, "[window "}, {15, "[textfield "},
    {16, "[hscrollbar "}, {17, "[hscrollbar "}, {18, "[node "},   {19, "[node "},
    {-1, "[node "}};

// The byte before a record of a scene file, and the type of the node that its reader makes.
const std::map<int, int> readerKinds = {
    {0, RV_NODE_TYPE_NODE}, {1, RV_NODE_TYPE_LIGHT}, {2, RV_NODE_TYPE_MESH}};

// A node of any type, as the constructor of its class makes it, that records how it is drawn.
class TypedNode : public RVNODE {
  public:
    explicit TypedNode(int number) { initType(static_cast<RV_NODE_TYPE>(number)); }

    bool render(void *) override {
        profiles.push_back(RVOPENGL::getProfile());
        return true;
    }

    std::size_t drawsIn(RV_OPENGL_PROFILE profile) const {
        return static_cast<std::size_t>(std::count(profiles.begin(), profiles.end(), profile));
    }

    std::vector<RV_OPENGL_PROFILE> profiles;
};

// Has the type of another class, whose fields nothing may read in it.
class ForeignNode : public TypedNode {
  public:
    explicit ForeignNode(int number) : TypedNode(RV_NODE_TYPE_NODE) {
        type = static_cast<RV_NODE_TYPE>(number);
    }
};

// Records the order of drawing.
class OrderedNode : public ForeignNode {
  public:
    explicit OrderedNode(std::vector<const RVNODE *> &toRecord, int number = RV_NODE_TYPE_CUSTOM)
        : ForeignNode(number), order(toRecord) {}

    bool render(void *) override {
        order.push_back(this);
        return true;
    }

  private:
    std::vector<const RVNODE *> &order;
};

template <class Test> Types typesWith(const Test &test) {
    Types found;
    for (const int type : allTypes) {
        const ForeignNode node(type);
        if (test(traitsOf(node)))
            found.insert(type);
    }
    return found;
}

TEST(NodeTraitsTable, HasTheSetsOfThePasses) {
    EXPECT_EQ(typesWith([](const NodeTraits &traits) { return traits.listed; }),
              allBut(withoutEntry));
    EXPECT_EQ(typesWith([](const NodeTraits &traits) { return traits.clipped; }), clipped);
    EXPECT_EQ(typesWith([](const NodeTraits &traits) { return traits.inBlock2D; }),
              allBut(notInBlock2D));
    EXPECT_EQ(typesWith([](const NodeTraits &traits) { return traits.casts; }),
              allBut(notInShadowMap));
    EXPECT_EQ(typesWith([](const NodeTraits &traits) { return traits.pickable; }), pickable);
}

TEST(NodeTraitsTable, HasTheGroupsOfTheDrawingOrder) {
    const auto typesOf = [](DrawOrder order) {
        return typesWith([order](const NodeTraits &traits) { return traits.order == order; });
    };
    EXPECT_EQ(typesOf(DrawOrder::light), lights);
    EXPECT_EQ(typesOf(DrawOrder::transparent), transparent);
    EXPECT_EQ(typesOf(DrawOrder::byMaterial), byMaterial);
    EXPECT_EQ(typesOf(DrawOrder::opaque), allBut({2, 3, 5, 9}));
}

TEST(NodeTraitsTable, OnlyMeshesEmittersAndHelpersHaveARadius) {
    EXPECT_EQ(typesWith([](const NodeTraits &traits) { return traits.radius != nullptr; }),
              (Types{3, 5, 9}));
    for (const int type : allTypes)
        EXPECT_EQ(radiusOf(ForeignNode(type)), 0.0f) << type;
}

TEST(NodeTraitsTable, ThreeBytesHaveAReader) {
    for (int byte = 0; byte < 256; ++byte) {
        const NodeReader *reader = readerOf(static_cast<unsigned char>(byte));
        const auto expected = readerKinds.find(byte);
        ASSERT_EQ(reader != nullptr, expected != readerKinds.end()) << byte;
        if (reader) {
            EXPECT_EQ(reader->kind, byte);
            EXPECT_EQ(traitsOf(ForeignNode(expected->second)).reader, reader) << byte;
        }
    }
    EXPECT_EQ(typesWith([](const NodeTraits &traits) { return traits.reader != nullptr; }),
              (Types{0, 2, 3}));
}

TEST(NodeTraitsTable, NamesAreThoseOfTheTypes) {
    for (const int type : allTypes) {
        TypedNode node(type);
        EXPECT_EQ(node.getTypeName(), typeNames.at(type)) << type;
        EXPECT_EQ(node.getName(), defaultNames.at(type) + std::to_string(node.getId()) + "]")
            << type;
    }
}

class NodesOfAllTypes : public SilentEngineTest {
  protected:
    NodesOfAllTypes() { settings.setShaders(true); }

    void SetUp() override {
        resetCapabilities();
        SilentEngineTest::SetUp();
    }
    void TearDown() override {
        RAVOLT::shadowingOff();
        RVELEMENT::clippingOff();
        RVSHADER::reset();
        SilentEngineTest::TearDown();
        resetCapabilities();
    }

    // The types whose node passes the test.
    template <class Test> static Types typesThat(const Test &test) {
        Types found;
        for (const int type : allTypes) {
            ForeignNode node(type);
            if (test(node))
                found.insert(type);
            RVELEMENT::reset();
        }
        return found;
    }
};

TEST_F(NodesOfAllTypes, TakeAnEntryUnlessTheyArePlain) {
    EXPECT_EQ(typesThat([](RVNODE &node) {
                  node.pass();
                  return RVELEMENT::getNumberOfPassedElements() == 1;
              }),
              allBut(withoutEntry));
}

TEST_F(NodesOfAllTypes, CountAsLights) {
    EXPECT_EQ(typesThat([](RVNODE &node) {
                  node.pass();
                  return RVELEMENT::getNumberOfLights() == 1;
              }),
              lights);
}

TEST_F(NodesOfAllTypes, AreClippedByTheirDistance) {
    RVELEMENT::clippingOn();
    EXPECT_EQ(typesThat([](RVNODE &node) {
                  node.setPosition(0, 0, -1000);
                  node.pass();
                  return RVELEMENT::getNumberOfPassedElements() == 0;
              }),
              (Types{0, 3, 9}));
}

TEST_F(NodesOfAllTypes, AreDrawnInTheTwoDimensionalBlock) {
    EXPECT_EQ(typesThat([](TypedNode &node) {
                  drawFrame2D(&node);
                  return node.profiles.size() == 1;
              }),
              allBut({0, 2, 3}));
}

TEST_F(NodesOfAllTypes, AreDrawnForPicking) {
    EXPECT_EQ(typesThat([](TypedNode &node) {
                  drawFrame(nullptr, &node);
                  RAVOLT::select(1, 1);
                  return node.drawsIn(RV_OPENGL_PROFILE_FLAT) == 1;
              }),
              pickable);
}

TEST_F(NodesOfAllTypes, AreDrawnIntoTheShadowMap) {
    auto *caster = new RVLIGHT;
    caster->setLightType(RV_LIGHT_TYPE_SPOT);
    caster->setDirection(Z3MVECTOR3D(0.6f, 0, -0.8f));
    caster->setCutOff(40);
    caster->castShadows(true);
    RAVOLT::shadowingOn();
    ASSERT_TRUE(RAVOLT::isShadowed());
    EXPECT_EQ(typesThat([caster](TypedNode &node) {
                  node.link(caster);
                  drawFrame(nullptr, caster);
                  node.unlink();
                  return node.drawsIn(RV_OPENGL_PROFILE_FLAT) == 1;
              }),
              allBut({0, 2, 6, 7, 8}));
}

// Between two opaque nodes in the order of the pass.
TEST_F(NodesOfAllTypes, AreDrawnInTheirGroups) {
    for (const int type : allTypes) {
        RVNODE root;
        std::vector<const RVNODE *> order;
        OrderedNode first(order), middle(order, type), last(order);
        for (RVNODE *child : {&first, &middle, &last})
            child->link(&root);
        drawFrame(nullptr, &root);
        std::vector<const RVNODE *> expected = {&first, &middle, &last};
        if (withoutEntry.count(type))
            expected = {&first, &last};
        else if (lights.count(type))
            expected = {&middle, &first, &last};
        else if (transparent.count(type))
            expected = {&first, &last, &middle};
        EXPECT_EQ(order, expected) << type;
        RVELEMENT::reset();
    }
}

} // namespace
} // namespace ravolt::test
