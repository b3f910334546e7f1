#include "ravolt/RVNODE.h"

#include "foundation/bytes.h"
#include "ravolt/RAVOLT.h"
#include "ravolt/RVCAMERA.h"
#include "ravolt/RVLIGHT.h"
#include "ravolt/zlf.h"
#include "scene/nodeInternals.h"
#include "scene/nodeRecords.h"
#include "tests/scene/sceneProbes.h"
#include "tests/support/logReader.h"
#include "tests/support/recorder.h"

#include <gtest/gtest.h>

#include <cstring>
#include <new>
#include <string>
#include <vector>

using namespace ravolt::test;

namespace {

class NodeTest : public RecorderTest {
  protected:
    void SetUp() override { markLog(); }
    void TearDown() override {
        RVNODE::cleanUp();
        EXPECT_EQ(RVNODE::getFirstNode(), nullptr);
        RecorderTest::TearDown();
    }

    static RVNODE *make(const char *name, RVNODE *parent = nullptr) {
        RVNODE *node = new RVNODE;
        node->setName(name);
        if (parent)
            node->link(parent);
        return node;
    }

    static std::vector<RVNODE *> childrenOf(const RVNODE &node) {
        std::vector<RVNODE *> children;
        for (unsigned int index = 0; index < node.getNumberOfChildren(); ++index)
            children.push_back(node.getChild(index));
        return children;
    }

    static std::vector<RVNODE *> registry() {
        std::vector<RVNODE *> nodes;
        for (RVNODE *node = RVNODE::getFirstNode(); node; node = node->getNextNode())
            nodes.push_back(node);
        return nodes;
    }

    static std::string line(int depth, const RVNODE &node) {
        return std::string(static_cast<std::size_t>(depth), ' ') + "+ " + node.getName() +
               " [id: " + std::to_string(node.getId()) + "]\n";
    }
};

using Nodes = std::vector<RVNODE *>;

void expectVector(const Z3MVECTOR3D &vector, float x, float y, float z) {
    EXPECT_EQ(vector.x, x);
    EXPECT_EQ(vector.y, y);
    EXPECT_EQ(vector.z, z);
}

// --- Identity

TEST_F(NodeTest, NewNodeIsARootAtTheOrigin) {
    const RVNODE *node = new RVNODE;
    EXPECT_GE(node->getId(), 1u);
    EXPECT_LE(node->getId(), 65535u);
    EXPECT_EQ(node->getAuxId(), 0u);
    EXPECT_EQ(node->getName(), "[node " + std::to_string(node->getId()) + "]");
    EXPECT_EQ(node->getType(), RV_NODE_TYPE_NODE);
    EXPECT_STREQ(node->getTypeName(), "node");
    EXPECT_EQ(node->getTimeStamp(), 0);
    EXPECT_FALSE(node->isShared());
    EXPECT_EQ(node->getData(), nullptr);
    EXPECT_EQ(node->getPositioning(), RV_NODE_POSITIONING_VECTORS);
    for (const Z3MVECTOR3D &vector : {node->getPosition(), node->getRotation(), node->getOrigin(),
                                      node->getDirection(), node->getTarget()})
        expectVector(vector, 0, 0, 0);
    EXPECT_EQ(node->getTargetNode(), nullptr);
    const Z3MMATRIX identity;
    EXPECT_EQ(std::memcmp(node->getMatrix().e, identity.e, sizeof identity.e), 0);
    EXPECT_EQ(node->getParent(), nullptr);
    EXPECT_TRUE(node->isRoot());
    EXPECT_EQ(node->getNumberOfChildren(), 0u);
    EXPECT_FALSE(const_cast<RVNODE *>(node)->render(nullptr));
}

// The other constructor leaves what was in the memory.
TEST_F(NodeTest, ConstructorWithArgumentLeavesSharedStatusUnset) {
    for (const bool argument : {false, true}) {
        alignas(RVNODE) unsigned char memory[sizeof(RVNODE)];
        volatile unsigned char *bytes = memory;
        for (std::size_t index = 0; index < sizeof memory; ++index)
            bytes[index] = 2; // no bool has this
        RVNODE *node = new (memory) RVNODE(argument);
        EXPECT_EQ(node->isShared(), true);
        const RVNODE copy(*node);
        EXPECT_EQ(copy.isShared(), true);
        EXPECT_EQ(node->getAuxId(), 0u);
        EXPECT_EQ(RVNODE::getFirstNode(), node);
        node->~RVNODE();
    }
}

TEST_F(NodeTest, TypeNamesStandInTheOrderOfTheTypes) {
    const char *names[] = {"node",      "root",       "light",      "mesh",    "camera",
                           "emitter",   "skydome",    "water",      "terrain", "helper",
                           "sound",     "box",        "label",      "button",  "window",
                           "textfield", "hscrollbar", "vscrollbar", "custom"};
    ASSERT_EQ(std::size(names), std::size(RVNODE::typeName));
    for (std::size_t type = 0; type < std::size(names); ++type)
        EXPECT_STREQ(RVNODE::typeName[type], names[type]);
    EXPECT_EQ(RV_NODE_TYPE_MESH, 3);
    EXPECT_EQ(RV_NODE_TYPE_HELPER, 9);
    EXPECT_EQ(RV_NODE_TYPE_BOX, 11);
    EXPECT_EQ(RV_NODE_TYPE_CUSTOM, 18);
}

TEST_F(NodeTest, SubclassOfTheApplicationSetsItsType) {
    const CustomNode *node = new CustomNode;
    EXPECT_EQ(node->getType(), RV_NODE_TYPE_CUSTOM);
    EXPECT_STREQ(node->getTypeName(), "custom");
}

TEST_F(NodeTest, UnknownTypeIsCalledCustom) {
    class Strange : public RVNODE {
      public:
        Strange() { type = static_cast<RV_NODE_TYPE>(400); }
    };
    EXPECT_STREQ((new Strange)->getTypeName(), "custom");
}

TEST_F(NodeTest, PlainAccessorsKeepWhatTheyAreGiven) {
    RVNODE *node = new RVNODE;
    int something = 0;
    node->setAuxId(4000000000u);
    node->setData(&something);
    node->setSharedStatus(true);
    node->setTargetNode(node);
    node->setPositioning(RV_NODE_POSITIONING_MATRIX);
    EXPECT_EQ(node->getAuxId(), 4000000000u);
    EXPECT_EQ(node->getData(), &something);
    EXPECT_TRUE(node->isShared());
    EXPECT_EQ(node->getTargetNode(), node);
    EXPECT_EQ(node->getPositioning(), RV_NODE_POSITIONING_MATRIX);

    Z3MMATRIX matrix;
    matrix.setTranslation(1, 2, 3);
    node->setPositioning(RV_NODE_POSITIONING_VECTORS);
    node->setMatrix(matrix);
    expectVector(node->getMatrix().getTranslation(), 1, 2, 3);
    EXPECT_EQ(node->getPositioning(), RV_NODE_POSITIONING_VECTORS);
}

TEST_F(NodeTest, TwoNumbersKeepZ) {
    RVNODE *node = new RVNODE;
    node->setPosition(1, 2, 3);
    node->setRotation(Z3MVECTOR3D(4, 5, 6));
    node->setOrigin(7, 8, 9);
    node->setDirection(Z3MVECTOR3D(10, 11, 12));
    node->setTarget(13, 14, 15);
    node->setPosition(-1, -2);
    node->setRotation(-4, -5);
    node->setOrigin(-7, -8);
    node->setDirection(-10, -11);
    node->setTarget(-13, -14);
    expectVector(node->getPosition(), -1, -2, 3);
    expectVector(node->getRotation(), -4, -5, 6);
    expectVector(node->getOrigin(), -7, -8, 9);
    expectVector(node->getDirection(), -10, -11, 12);
    expectVector(node->getTarget(), -13, -14, 15);

    node->move(10, 20);
    node->rotate(10, 20);
    expectVector(node->getPosition(), 9, 18, 3);
    expectVector(node->getRotation(), 6, 15, 6);
}

TEST_F(NodeTest, MoveAndRotateAdd) {
    RVNODE *node = new RVNODE;
    node->setPositioning(RV_NODE_POSITIONING_MATRIX);
    node->move(1, 2, 3);
    node->move(Z3MVECTOR3D(10, 20, 30));
    node->rotate(4, 5, 6);
    node->rotate(Z3MVECTOR3D(40, 50, 60));
    expectVector(node->getPosition(), 11, 22, 33);
    expectVector(node->getRotation(), 44, 55, 66);
    EXPECT_EQ(node->getPositioning(), RV_NODE_POSITIONING_MATRIX);
}

// --- Registry

TEST_F(NodeTest, CleanUpBearsADestructorThatDeletesItsSuccessor) {
    class Owner : public RVNODE {
      public:
        ~Owner() override { delete owned; }
        RVNODE *owned = nullptr;
    };
    Owner *owner = new Owner;
    owner->owned = new RVNODE;
    new RVNODE;
    EXPECT_TRUE(RVNODE::cleanUp());
    EXPECT_EQ(RVNODE::getNumberOfNodes(), 0u);
}

// Parents go before children, and what leaves its parent then finds none.
TEST_F(NodeTest, CleanUpBearsDestructorsThatUnlink) {
    static unsigned int linked;
    class Leaver : public RVNODE {
      public:
        ~Leaver() override {
            linked += !isRoot() + getNumberOfChildren();
            if (!isRoot())
                unlink();
        }
    };
    linked = 0;
    Leaver *root = new Leaver, *middle = new Leaver, *leaf = new Leaver;
    middle->link(root);
    leaf->link(middle);
    make("beside", root);
    EXPECT_TRUE(RVNODE::cleanUp());
    EXPECT_LOGGED_EXACTLY("   4 node(s) released @ RVNODE::cleanUp\n");
    EXPECT_EQ(linked, 0u);
}

TEST_F(NodeTest, TheSkyboxIsForgottenWhenItGoes) {
    RVNODE *sky = make("sky"), *other = make("other");
    RAVOLT::setSkybox(sky);
    { const RVNODE copy(*sky); }
    delete other;
    EXPECT_EQ(RAVOLT::getSkybox(), sky);
    delete sky;
    EXPECT_EQ(RAVOLT::getSkybox(), nullptr);
    RAVOLT::setSkybox(make("sky"));
    RVNODE::cleanUp();
    EXPECT_EQ(RAVOLT::getSkybox(), nullptr);
}

TEST_F(NodeTest, NodeBeyondTheLastIdIsBuiltWithZero) {
    const unsigned int alive = RVNODE::getNumberOfNodes();
    unsigned int last = 1;
    for (unsigned int number = alive; number < 65535 && last; ++number)
        last = (new RVNODE)->getId();
    EXPECT_EQ(last, 65535u);
    const RVNODE *node = new RVNODE;
    EXPECT_LOGGED_EXACTLY("zlfNewId: all ID are used\n");
    EXPECT_EQ(node->getId(), 0u);
    EXPECT_STREQ(node->getName(), "[node 0]");
    EXPECT_EQ(RVNODE::getNumberOfNodes(), 65536u);
}

// --- Tree

TEST_F(NodeTest, LinkAppendsToTheParent) {
    RVNODE *root = make("root"), *a = make("a"), *b = make("b");
    EXPECT_TRUE(a->link(root));
    EXPECT_TRUE(b->link(root));
    EXPECT_EQ(childrenOf(*root), (Nodes{a, b}));
    EXPECT_EQ(a->getParent(), root);
    EXPECT_FALSE(a->isRoot());
    EXPECT_TRUE(root->isRoot());
    EXPECT_NOTHING_LOGGED();
}

TEST_F(NodeTest, LinkRefusesNullAndItself) {
    RVNODE *node = make("node");
    EXPECT_FALSE(node->link(nullptr));
    EXPECT_FALSE(node->link(node));
    EXPECT_LOGGED_EXACTLY("   [!] Invalid param @ RVNODE::link\n"
                          "   [!] Invalid param @ RVNODE::link\n");
    EXPECT_TRUE(node->isRoot());
}

TEST_F(NodeTest, SecondLinkFailsUntilUnlink) {
    RVNODE *first = make("first"), *second = make("second"), *node = make("50%d", first);
    EXPECT_FALSE(node->link(second));
    EXPECT_LOGGED_EXACTLY("   [!] Node 50%d has already a parent @ RVNODE::link\n");
    EXPECT_EQ(second->getNumberOfChildren(), 0u);
    EXPECT_TRUE(node->unlink());
    EXPECT_TRUE(node->link(second));
    EXPECT_EQ(childrenOf(*second), (Nodes{node}));
}

TEST_F(NodeTest, GetChildOutOfRangeLogsAndGivesNull) {
    RVNODE *root = make("root");
    EXPECT_EQ(root->getChild(0), nullptr);
    RVNODE *child = make("child", root);
    EXPECT_EQ(root->getChild(0), child);
    EXPECT_EQ(root->getChild(1), nullptr);
    EXPECT_EQ(root->getChild(4294967295u), nullptr);
    EXPECT_LOGGED_TIMES(3, "   [!] Invalid params @ RVNODE::getChild");
}

TEST_F(NodeTest, UnlinkTakesTheNodeOutAndKeepsTheOthersInOrder) {
    RVNODE *root = make("root");
    RVNODE *a = make("a", root), *b = make("b", root), *c = make("c", root);
    RVNODE *below = make("below", b);
    EXPECT_TRUE(b->unlink());
    EXPECT_EQ(childrenOf(*root), (Nodes{a, c}));
    EXPECT_TRUE(b->isRoot());
    EXPECT_EQ(childrenOf(*b), (Nodes{below}));
    EXPECT_EQ(RVNODE::findByName("b"), b);
    EXPECT_TRUE(c->unlink());
    EXPECT_TRUE(a->unlink());
    EXPECT_EQ(root->getNumberOfChildren(), 0u);
    EXPECT_EQ(root->getChild(0), nullptr);
    EXPECT_TRUE(a->link(root));
    EXPECT_EQ(childrenOf(*root), (Nodes{a}));
}

TEST_F(NodeTest, UnlinkOfARootFails) {
    EXPECT_FALSE(make("alone")->unlink());
    EXPECT_LOGGED_EXACTLY("   [!] Node alone is already unlinked @ RVNODE::unlink\n");
}

// A copy names a parent that does not have it among its children.
TEST_F(NodeTest, UnlinkOfACopyAmongSeveralChildrenFails) {
    RVNODE *root = make("root");
    RVNODE *a = make("a", root), *b = make("b", root);
    RVNODE copy(*a);
    EXPECT_FALSE(copy.unlink());
    EXPECT_LOGGED_EXACTLY("   [!] Consistency problem with a @ RVNODE::unlink\n");
    EXPECT_EQ(childrenOf(*root), (Nodes{a, b}));
    EXPECT_EQ(copy.getParent(), root);
}

TEST_F(NodeTest, UnlinkDoesNotCompareAnOnlyChild) {
    RVNODE *root = make("root"), *only = make("only", root);
    RVNODE copy(*only);
    EXPECT_TRUE(copy.unlink());
    EXPECT_EQ(root->getNumberOfChildren(), 0u);
    EXPECT_EQ(only->getParent(), root);
    EXPECT_FALSE(only->unlink());
    EXPECT_LOGGED_EXACTLY("   [!] Consistency problem with only @ RVNODE::unlink\n");
}

TEST_F(NodeTest, RemovePutsChildrenLastInGrandparent) {
    RVNODE *root = make("root");
    RVNODE *before = make("before", root), *node = make("node", root), *after = make("after", root);
    RVNODE *a = make("a", node), *b = make("b", node), *below = make("below", a);
    EXPECT_TRUE(node->remove());
    EXPECT_EQ(childrenOf(*root), (Nodes{before, after, a, b}));
    EXPECT_EQ(a->getParent(), root);
    EXPECT_EQ(childrenOf(*a), (Nodes{below}));
    EXPECT_TRUE(node->isRoot());
    EXPECT_EQ(node->getNumberOfChildren(), 0u);
    EXPECT_EQ(RVNODE::findByName("node"), node);
    EXPECT_NOTHING_LOGGED();
}

TEST_F(NodeTest, RemoveOfALeafAndOfAnOnlyChild) {
    RVNODE *root = make("root"), *leaf = make("leaf", root);
    EXPECT_TRUE(leaf->remove());
    EXPECT_EQ(root->getNumberOfChildren(), 0u);
    RVNODE *only = make("only", root), *below = make("below", only);
    EXPECT_TRUE(only->remove());
    EXPECT_EQ(childrenOf(*root), (Nodes{below}));
}

TEST_F(NodeTest, RemoveOfARootFailsAndKeepsItsChildren) {
    RVNODE *root = make("root"), *child = make("child", root);
    EXPECT_FALSE(root->remove());
    EXPECT_LOGGED_EXACTLY("   [!] Node root already unlinked @ RVNODE::remove\n");
    EXPECT_EQ(childrenOf(*root), (Nodes{child}));
}

TEST_F(NodeTest, DeletingAChildlessOrAParentNodeReleasesItsArrayAlone) {
    RVNODE *root = make("root"), *child = make("child", root);
    delete root;
    EXPECT_EQ(registry(), (Nodes{child}));
}

TEST_F(NodeTest, SearchInAHierarchyIsDepthFirst) {
    RVNODE *root = make("root");
    RVNODE *left = make("left", root), *right = make("twin", root);
    RVNODE *deep = make("twin", left);
    make("twin");
    EXPECT_EQ(root->findByNameInHierarchy("root"), root);
    EXPECT_EQ(root->findByNameInHierarchy("twin"), deep);
    EXPECT_EQ(right->findByNameInHierarchy("twin"), right);
    EXPECT_EQ(root->findByNameInHierarchy("nobody"), nullptr);
    EXPECT_EQ(root->findByNameInHierarchy(nullptr), nullptr);
    EXPECT_EQ(root->findByIdInHierarchy(deep->getId()), deep);
    EXPECT_EQ(root->findByIdInHierarchy(root->getId()), root);
    EXPECT_EQ(left->findByIdInHierarchy(right->getId()), nullptr);
}

// --- Display

TEST_F(NodeTest, DisplayTreeIndentsByTwo) {
    RVNODE *root = make("root");
    RVNODE *left = make("left %s", root), *deep = make("deep", left), *right = make("right", root);
    EXPECT_TRUE(RVNODE::displayTree(root));
    EXPECT_LOGGED_EXACTLY("   Tree for root:\n" + line(3, *root) + line(5, *left) + line(7, *deep) +
                          line(5, *right) + "\n");
}

TEST_F(NodeTest, DisplayTreeOfALeafIsEmpty) {
    RVNODE *leaf = make("leaf");
    EXPECT_TRUE(RVNODE::displayTree(leaf));
    EXPECT_LOGGED_EXACTLY("   Tree for leaf:\n   empty\n\n");
}

TEST_F(NodeTest, DisplayTreeOfNullIsRefused) {
    EXPECT_FALSE(RVNODE::displayTree(nullptr));
    EXPECT_LOGGED_EXACTLY("   [!] Invalid params @ RVNODE::displayTree\n");
    EXPECT_EQ(RVNODE::displayTreeRecursive(nullptr, 3), nullptr);
}

TEST_F(NodeTest, DisplayTreeRecursiveLogsFromItsDepth) {
    RVNODE *node = make("node");
    EXPECT_EQ(RVNODE::displayTreeRecursive(node, 4), nullptr);
    EXPECT_LOGGED_EXACTLY(line(4, *node));
}

// One line a node, cut where it would be longer than the log takes.
TEST_F(NodeTest, DisplayTreeCutsItsLines) {
    RVNODE *node = make(std::string(255, 'n').c_str());
    RVNODE::displayTreeRecursive(node, 900);
    RVNODE::displayTreeRecursive(node, 5000);
    RVNODE::displayTreeRecursive(node, -7);
    const std::string cut = (std::string(900, ' ') + "+ " + std::string(255, 'n')).substr(0, 1022);
    EXPECT_LOGGED_EXACTLY(cut + "\n" + std::string(1022, ' ') + "\n" + line(0, *node));
}

// --- Copies

void expectSameFields(const RVNODE &copy, const RVNODE &node) {
    EXPECT_EQ(copy.getId(), node.getId());
    EXPECT_EQ(copy.getAuxId(), node.getAuxId());
    EXPECT_STREQ(copy.getName(), node.getName());
    EXPECT_EQ(copy.getType(), node.getType());
    EXPECT_EQ(copy.getTimeStamp(), node.getTimeStamp());
    EXPECT_EQ(copy.isShared(), node.isShared());
    EXPECT_EQ(copy.getData(), node.getData());
    EXPECT_EQ(copy.getPositioning(), node.getPositioning());
    EXPECT_TRUE(copy.getPosition() == node.getPosition());
    EXPECT_TRUE(copy.getRotation() == node.getRotation());
    EXPECT_TRUE(copy.getOrigin() == node.getOrigin());
    EXPECT_TRUE(copy.getDirection() == node.getDirection());
    EXPECT_TRUE(copy.getTarget() == node.getTarget());
    EXPECT_EQ(copy.getTargetNode(), node.getTargetNode());
    EXPECT_EQ(std::memcmp(copy.getMatrix().e, node.getMatrix().e, sizeof node.getMatrix().e), 0);
    EXPECT_EQ(const_cast<RVNODE &>(copy).getCachedMatrix()->e[13],
              const_cast<RVNODE &>(node).getCachedMatrix()->e[13]);
}

void expectSamePlace(const RVNODE &copy, const RVNODE &node) {
    EXPECT_EQ(copy.getPreviousNode(), node.getPreviousNode());
    EXPECT_EQ(copy.getNextNode(), node.getNextNode());
    EXPECT_EQ(copy.getParent(), node.getParent());
    ASSERT_EQ(copy.getNumberOfChildren(), node.getNumberOfChildren());
    for (unsigned int index = 0; index < node.getNumberOfChildren(); ++index)
        EXPECT_EQ(copy.getChild(index), node.getChild(index));
}

class CopyTest : public NodeTest {
  protected:
    void SetUp() override {
        root = make("root");
        node = make("node", root);
        child = make("child", node);
        last = make("last", node);
        node->setAuxId(5);
        node->setSharedStatus(true);
        node->setData(&root);
        node->setPositioning(RV_NODE_POSITIONING_MATRIX);
        node->setPosition(1, 2, 3);
        node->setRotation(4, 5, 6);
        node->setOrigin(7, 8, 9);
        node->setDirection(10, 11, 12);
        node->setTarget(13, 14, 15);
        node->setTargetNode(last);
        Z3MMATRIX matrix;
        matrix.setTranslation(1, 2, 3);
        node->setMatrix(matrix);
        node->getCachedMatrix()->setTranslation(4, 5, 6);
        markLog();
    }

    RVNODE *root, *node, *child, *last;
};

TEST_F(CopyTest, CopyHasEveryFieldAndIsNotRegistered) {
    const RVNODE copy(*node);
    expectSameFields(copy, *node);
    expectSamePlace(copy, *node);
    EXPECT_EQ(registry(), (Nodes{root, node, child, last}));
}

TEST_F(CopyTest, CopyGivesNothingBack) {
    { const RVNODE copy(*node); }
    EXPECT_EQ(registry(), (Nodes{root, node, child, last}));
    EXPECT_EQ(childrenOf(*node), (Nodes{child, last}));
    const unsigned int id = node->getId();
    EXPECT_NE((new RVNODE)->getId(), id);
    EXPECT_NOTHING_LOGGED();
}

TEST_F(CopyTest, CopyOutlivesItsOriginal) {
    const RVNODE copy(*node);
    const unsigned int id = node->getId();
    delete node;
    EXPECT_EQ((new RVNODE)->getId(), id);
    EXPECT_EQ(copy.getId(), id);
    EXPECT_NOTHING_LOGGED();
}

TEST_F(CopyTest, CopyOfACopyIsNotRegisteredEither) {
    {
        const RVNODE copy(*node);
        const RVNODE second(copy);
        expectSameFields(second, *node);
    }
    EXPECT_EQ(childrenOf(*node), (Nodes{child, last}));
    EXPECT_NOTHING_LOGGED();
}

TEST_F(CopyTest, CopyOfASubclassAsANodeHasTheNodesRender) {
    RVLIGHT *light = new RVLIGHT;
    RVNODE copy(*light);
    EXPECT_EQ(copy.getType(), RV_NODE_TYPE_LIGHT);
    EXPECT_FALSE(copy.render(nullptr));
    EXPECT_NOTHING_LOGGED();
}

TEST_F(CopyTest, AssignmentLeavesARegisteredNodeInItsPlace) {
    RVNODE *other = make("other"), *below = make("below", other), *tail = make("tail");
    const unsigned int id = other->getId();
    *other = *node;
    expectSameFields(*other, *node);
    EXPECT_EQ(other->getParent(), nullptr);
    EXPECT_EQ(childrenOf(*other), (Nodes{below}));
    EXPECT_EQ(registry(), (Nodes{root, node, child, last, other, below, tail}));
    delete other;
    EXPECT_EQ(registry(), (Nodes{root, node, child, last, below, tail}));
    EXPECT_EQ((new RVNODE)->getId(), id);
    EXPECT_NOTHING_LOGGED();
}

TEST_F(CopyTest, AssignmentToACopyCopiesEveryField) {
    RVNODE copy(*last);
    copy = *node;
    expectSameFields(copy, *node);
    expectSamePlace(copy, *node);
}

TEST_F(CopyTest, AssignmentToItselfChangesNothing) {
    RVNODE &same = *node;
    *node = same;
    EXPECT_EQ(childrenOf(*node), (Nodes{child, last}));
    EXPECT_EQ(registry(), (Nodes{root, node, child, last}));
}

TEST_F(CopyTest, SubclassesCopyTheirOwnFieldsToo) {
    RVLIGHT *light = new RVLIGHT;
    light->setCutOff(12);
    RVCAMERA *camera = new RVCAMERA;
    camera->setUpDirection(Z3MVECTOR3D(1, 0, 0));
    {
        RVLIGHT lightCopy(*light);
        EXPECT_EQ(lightCopy.getCutOff(), 12);
        RVCAMERA cameraCopy(*camera);
        expectVector(cameraCopy.getUpDirection(), 1, 0, 0);
    }
    RVLIGHT *second = new RVLIGHT;
    const unsigned int id = second->getId();
    *second = *light;
    EXPECT_EQ(second->getCutOff(), 12);
    delete second;
    EXPECT_EQ((new RVNODE)->getId(), id);
    EXPECT_NOTHING_LOGGED();
}

TEST_F(CopyTest, LinkRefusesACopyWhoseChildrenAreTheOriginals) {
    RVNODE copy(*node);
    RVNODE *more = make("more");
    EXPECT_FALSE(more->link(&copy));
    EXPECT_LOGGED_EXACTLY("   [!] Invalid param @ RVNODE::link\n");
    EXPECT_TRUE(more->isRoot());
    EXPECT_EQ(childrenOf(*node), (Nodes{child, last}));
    EXPECT_EQ(childrenOf(copy), (Nodes{child, last}));
    RVNODE childless(*last);
    EXPECT_TRUE(more->link(&childless));
    EXPECT_TRUE(more->unlink());
}

// --- Bodies of scene files

TEST_F(NodeTest, LoadReadsAPlainNodeAndMovesTheCursor) {
    Bytes body;
    body.add(std::uint8_t{9});
    const auto node = plainNodeBody("from file", 3);
    const auto exact = node.exact();
    std::string file("?");
    file.append(exact.get(), node.size());
    long cursor = 1;
    const RVNODE *loaded = RVNODE::load(file.data(), &cursor);
    ASSERT_NE(loaded, nullptr);
    EXPECT_EQ(cursor, static_cast<long>(1 + node.size()));
    EXPECT_EQ(loaded->getAuxId(), 77u);
    EXPECT_STREQ(loaded->getName(), "from file");
    expectVector(loaded->getPosition(), 1, 2, 3);
    expectVector(loaded->getOrigin(), 10, 20, 30);
    EXPECT_EQ(loaded->getNumberOfChildren(), 3u);
    EXPECT_EQ(loaded->getType(), RV_NODE_TYPE_NODE);
}

TEST_F(NodeTest, AnnouncedChildrenAreEmptyPlacesThatWalksSkip) {
    const auto body = plainNodeBody("root", 3);
    const auto bytes = body.exact();
    long cursor = 0;
    RVNODE *root = RVNODE::load(bytes.get(), &cursor);
    RVNODE *middle = make("middle");
    ravolt::NodeInternals::setChild(*root, 1, *middle);
    EXPECT_EQ(childrenOf(*root), (Nodes{nullptr, middle, nullptr}));
    EXPECT_EQ(middle->getParent(), root);
    EXPECT_EQ(root->findByNameInHierarchy("middle"), middle);
    EXPECT_EQ(root->findByNameInHierarchy("nobody"), nullptr);
    RVNODE::displayTree(root);
    EXPECT_LOGGED_EXACTLY("   Tree for root:\n" + line(3, *root) + line(5, *middle) + "\n");
    RVNODE *grandparent = make("grandparent");
    root->link(grandparent);
    EXPECT_TRUE(root->remove());
    EXPECT_EQ(childrenOf(*grandparent), (Nodes{middle}));
}

TEST_F(NodeTest, LoadRefusesANameOf256Characters) {
    const auto body = plainNodeBody(std::string(256, 'n'));
    const auto bytes = body.exact();
    long cursor = 0;
    EXPECT_EQ(RVNODE::load(bytes.get(), &cursor), nullptr);
    EXPECT_LOGGED_EXACTLY("   [!] Consistency error: node == NULL @ RVNODE::load\n");
    EXPECT_EQ(cursor, 0);
    EXPECT_EQ(RVNODE::getNumberOfNodes(), 0u);
}

TEST_F(NodeTest, LoadWithoutMemoryLeavesNothingBehind) {
    const auto body = plainNodeBody("name", 2000);
    const auto bytes = body.exact();
    for (const std::size_t failing : {sizeof(RVNODE), 2000 * sizeof(RVNODE *)}) {
        long cursor = 0;
        recorder.failAllocation(failing);
        const RVNODE *node = RVNODE::load(bytes.get(), &cursor);
        recorder.allocationsWork();
        EXPECT_EQ(node, nullptr);
        EXPECT_LOGGED_EXACTLY("   [!] Consistency error: node == NULL @ RVNODE::load\n");
        EXPECT_EQ(cursor, 0);
        EXPECT_EQ(RVNODE::getNumberOfNodes(), 0u);
    }
}

TEST_F(NodeTest, LoadTakesANameOf255Characters) {
    const auto body = plainNodeBody(std::string(255, 'n'));
    const auto bytes = body.exact();
    long cursor = 0;
    const RVNODE *node = RVNODE::load(bytes.get(), &cursor);
    ASSERT_NE(node, nullptr);
    EXPECT_EQ(node->getName(), std::string(255, 'n'));
}

TEST_F(NodeTest, RecordCutOffAnywhereIsRefused) {
    const auto body = plainNodeBody("name");
    for (std::size_t size = 0; size <= body.size(); ++size) {
        std::unique_ptr<char[]> bytes(new char[size]);
        std::memcpy(bytes.get(), body.exact().get(), size);
        ravolt::ByteReader reader(bytes.get(), size);
        ravolt::PlainNodeRecord record;
        EXPECT_EQ(ravolt::readPlainNodeRecord(reader, record), size == body.size()) << size;
    }
}

} // namespace
