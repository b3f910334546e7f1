// The treatment of every node type in every pass as literal sets, compared with the table of the
// kinds and with what the passes do.

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

Types allBut(const Types &excluded) {
    Types rest;
    std::set_difference(allTypes.begin(), allTypes.end(), excluded.begin(), excluded.end(),
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

// The names of the types from 0 on; a node's own default name is made from it, or from the second.
const char *const names[][2] = {{"node"},          {"root", "node"},  {"light"},
                                {"mesh"},          {"camera"},        {"emitter"},
                                {"skydome"},       {"water"},         {"terrain", "node"},
                                {"helper"},        {"sound", "node"}, {"box"},
                                {"label"},         {"button"},        {"window"},
                                {"textfield"},     {"hscrollbar"},    {"vscrollbar", "hscrollbar"},
                                {"custom", "node"}};

// The byte before a record of a scene file, and the type of the node that its reader makes.
const std::map<int, int> readerKinds = {
    {0, RV_NODE_TYPE_NODE}, {1, RV_NODE_TYPE_LIGHT}, {2, RV_NODE_TYPE_MESH}};

// A node of any type, as the constructor of its class makes it.
class TypedNode : public RVNODE {
  public:
    explicit TypedNode(int number) { initType(static_cast<RV_NODE_TYPE>(number)); }
};

// Has the type of another class, whose fields must not be read in it. Records how it is drawn.
class ForeignNode : public RVNODE {
  public:
    explicit ForeignNode(int number, std::vector<const RVNODE *> *toRecord = nullptr)
        : order(toRecord) {
        type = static_cast<RV_NODE_TYPE>(number);
    }

    bool render(void *) override {
        profiles.push_back(RVOPENGL::getProfile());
        if (order)
            order->push_back(this);
        return true;
    }

    bool isDrawnOnceIn(RV_OPENGL_PROFILE profile) const {
        return std::count(profiles.begin(), profiles.end(), profile) == 1;
    }

    std::vector<RV_OPENGL_PROFILE> profiles;
    std::vector<const RVNODE *> *order;
};

// The types whose node passes the test.
template <class Test> Types typesThat(const Test &test) {
    Types found;
    for (const int type : allTypes) {
        ForeignNode node(type);
        if (test(node))
            found.insert(type);
        RVELEMENT::reset();
    }
    return found;
}

TEST(NodeTraitsTable, HasTheSetsOfThePasses) {
    const struct {
        const char *what;
        bool (*test)(const NodeTraits &traits);
        Types types;
    } rows[] = {
        {"listed", [](const NodeTraits &t) { return t.listed; }, allBut(withoutEntry)},
        {"clipped", [](const NodeTraits &t) { return t.clipped; }, clipped},
        {"2D block", [](const NodeTraits &t) { return t.inBlock2D; }, allBut(notInBlock2D)},
        {"casts", [](const NodeTraits &t) { return t.casts; }, allBut(notInShadowMap)},
        {"pickable", [](const NodeTraits &t) { return t.pickable; }, pickable},
        {"light", [](const NodeTraits &t) { return t.order == DrawOrder::light; }, lights},
        {"transparent", [](const NodeTraits &t) { return t.order == DrawOrder::transparent; },
         transparent},
        {"by material", [](const NodeTraits &t) { return t.order == DrawOrder::byMaterial; },
         byMaterial},
        {"opaque", [](const NodeTraits &t) { return t.order == DrawOrder::opaque; },
         allBut({2, 3, 5, 9})},
        {"radius", [](const NodeTraits &t) { return t.radius != nullptr; }, {3, 5, 9}},
        {"reader", [](const NodeTraits &t) { return t.reader != nullptr; }, {0, 2, 3}},
    };
    for (const auto &row : rows)
        EXPECT_EQ(typesThat([&](const RVNODE &node) { return row.test(traitsOf(node)); }),
                  row.types)
            << row.what;
    EXPECT_EQ(typesThat([](const RVNODE &node) { return radiusOf(node) != 0; }), Types());
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
}

TEST(NodeTraitsTable, NamesAreThoseOfTheTypes) {
    for (const int type : allTypes) {
        const TypedNode node(type);
        const auto &[name, nodeName] = names[type < 0 || type > 18 ? 18 : type];
        EXPECT_STREQ(node.getTypeName(), name);
        EXPECT_EQ(node.getName(), "[" + std::string(nodeName ? nodeName : name) + " " +
                                      std::to_string(node.getId()) + "]");
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
};

TEST_F(NodesOfAllTypes, AreListedCountedAsLightsAndClipped) {
    const auto passed = [](RVNODE &node) {
        node.setPosition(0, 0, -1000);
        node.pass();
        return RVELEMENT::getNumberOfPassedElements() == 1;
    };
    EXPECT_EQ(typesThat(passed), allBut(withoutEntry));
    EXPECT_EQ(typesThat([&](RVNODE &node) {
                  passed(node);
                  return RVELEMENT::getNumberOfLights() == 1;
              }),
              lights);
    RVELEMENT::clippingOn();
    EXPECT_EQ(typesThat(passed), allBut({0, 3, 9}));
}

TEST_F(NodesOfAllTypes, AreDrawnInTheTwoDimensionalBlock) {
    EXPECT_EQ(typesThat([](ForeignNode &node) {
                  drawFrame2D(&node);
                  return node.profiles.size() == 1;
              }),
              allBut({0, 2, 3}));
}

TEST_F(NodesOfAllTypes, AreDrawnForPicking) {
    EXPECT_EQ(typesThat([](ForeignNode &node) {
                  drawFrame(nullptr, &node);
                  RAVOLT::select(1, 1);
                  return node.isDrawnOnceIn(RV_OPENGL_PROFILE_FLAT);
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
    EXPECT_EQ(typesThat([caster](ForeignNode &node) {
                  node.link(caster);
                  drawFrame(nullptr, caster);
                  node.unlink();
                  return node.isDrawnOnceIn(RV_OPENGL_PROFILE_FLAT);
              }),
              allBut({0, 2, 6, 7, 8}));
}

// Between two opaque nodes in the order of the pass.
TEST_F(NodesOfAllTypes, AreDrawnInTheirGroups) {
    for (const int type : allTypes) {
        RVNODE root;
        std::vector<const RVNODE *> order;
        ForeignNode first(RV_NODE_TYPE_CUSTOM, &order), middle(type, &order),
            last(RV_NODE_TYPE_CUSTOM, &order);
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
