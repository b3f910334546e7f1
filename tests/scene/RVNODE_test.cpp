// Nodes as far as they need no context: fields, registry, tree, display, copies and records.

#include "ravolt/RVNODE.h"

#include "ravolt/RAVOLT.h"
#include "ravolt/RVCAMERA.h"
#include "ravolt/RVLIGHT.h"
#include "scene/nodeInternals.h"
#include "tests/scene/sceneProbes.h"
#include "tests/support/logReader.h"
#include "tests/support/recorder.h"

#include <cstring>
#include <new>

using namespace ravolt::test;

namespace {

using Numbers = std::vector<float>;

class NodeTest : public RecorderTest {
  protected:
    void SetUp() override { markLog(); }
    void TearDown() override {
        RVNODE::cleanUp();
        EXPECT_EQ(RVNODE::getFirstNode(), nullptr);
        RecorderTest::TearDown();
    }

    static RVNODE *make(const std::string &name, RVNODE *parent = nullptr) {
        RVNODE *node = new RVNODE;
        node->setName(name.c_str());
        if (parent)
            node->link(parent);
        return node;
    }

    static NodeList childrenOf(const RVNODE &node) {
        NodeList children;
        for (unsigned int index = 0; index < node.getNumberOfChildren(); ++index)
            children.push_back(node.getChild(index));
        return children;
    }

    static NodeList registry() {
        NodeList nodes;
        for (RVNODE *node = RVNODE::getFirstNode(); node; node = node->getNextNode())
            nodes.push_back(node);
        return nodes;
    }

    static std::string line(int depth, const RVNODE &node) {
        return std::string(static_cast<std::size_t>(depth), ' ') + "+ " + node.getName() +
               " [id: " + std::to_string(node.getId()) + "]\n";
    }
};

// Position, rotation, origin, direction and target.
Numbers vectorsOf(const RVNODE &node) {
    Numbers numbers;
    for (const Z3MVECTOR3D &vector : {node.getPosition(), node.getRotation(), node.getOrigin(),
                                      node.getDirection(), node.getTarget()})
        numbers.insert(numbers.end(), {vector.x, vector.y, vector.z});
    return numbers;
}

Numbers elementsOf(const Z3MMATRIX &matrix) { return {matrix.e, matrix.e + 16}; }

// --- Identity and fields

TEST_F(NodeTest, NewNodeIsARootAtTheOrigin) {
    RVNODE *node = new RVNODE;
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
    EXPECT_EQ(vectorsOf(*node), Numbers(15));
    EXPECT_EQ(node->getTargetNode(), nullptr);
    EXPECT_EQ(elementsOf(node->getMatrix()), elementsOf(Z3MMATRIX()));
    EXPECT_EQ(node->getParent(), nullptr);
    EXPECT_TRUE(node->isRoot());
    EXPECT_EQ(node->getNumberOfChildren(), 0u);
    EXPECT_FALSE(node->render(nullptr));
}

// The other constructor does not write the field.
TEST_F(NodeTest, ConstructorWithArgumentDoesNotSetTheSharedStatus) {
    for (const bool argument : {false, true}) {
        alignas(RVNODE) unsigned char memory[sizeof(RVNODE)];
        volatile unsigned char *bytes = memory;
        for (std::size_t index = 0; index < sizeof memory; ++index)
            bytes[index] = 2; // no bool has this
        RVNODE *node = new (memory) RVNODE(argument);
        EXPECT_EQ(node->isShared(), true);
        EXPECT_EQ(RVNODE(static_cast<const RVNODE &>(*node)).isShared(), true);
        EXPECT_EQ(node->getAuxId(), 0u);
        EXPECT_EQ(RVNODE::getFirstNode(), node);
        node->~RVNODE();
    }
}

// The names of all types: see the table of the node kinds.
TEST_F(NodeTest, TypesHaveTheirNumbersAndNames) {
    EXPECT_EQ(RV_NODE_TYPE_MESH, 3);
    EXPECT_EQ(RV_NODE_TYPE_HELPER, 9);
    EXPECT_EQ(RV_NODE_TYPE_BOX, 11);
    EXPECT_EQ(RV_NODE_TYPE_CUSTOM, 18);
    EXPECT_EQ(std::size(RVNODE::typeName), 19u);
    EXPECT_STREQ(RVNODE::typeName[18], "custom");
    EXPECT_STREQ((new CustomNode)->getTypeName(), "custom");
    EXPECT_STREQ((new TypedNode<static_cast<RV_NODE_TYPE>(400)>)->getTypeName(), "custom");
}

TEST_F(NodeTest, AccessorsReadWhatWasSet) {
    RVNODE *node = new RVNODE;
    int something = 0;
    Z3MMATRIX matrix;
    matrix.setTranslation(1, 2, 3);
    node->setAuxId(4000000000u);
    node->setData(&something);
    node->setSharedStatus(true);
    node->setTargetNode(node);
    node->setMatrix(matrix);
    EXPECT_EQ(node->getPositioning(), RV_NODE_POSITIONING_VECTORS);
    node->setPositioning(RV_NODE_POSITIONING_MATRIX);
    EXPECT_EQ(node->getAuxId(), 4000000000u);
    EXPECT_EQ(node->getData(), &something);
    EXPECT_TRUE(node->isShared());
    EXPECT_EQ(node->getTargetNode(), node);
    EXPECT_EQ(node->getPositioning(), RV_NODE_POSITIONING_MATRIX);
    EXPECT_EQ(elementsOf(node->getMatrix()), elementsOf(matrix));
}

TEST_F(NodeTest, VectorsAreSetMovedAndRotatedAndTwoNumbersDoNotChangeZ) {
    RVNODE *node = new RVNODE;
    node->setPosition(1, 2, 3);
    node->setRotation(Z3MVECTOR3D(4, 5, 6));
    node->setOrigin(7, 8, 9);
    node->setDirection(Z3MVECTOR3D(10, 11, 12));
    node->setTarget(13, 14, 15);
    EXPECT_EQ(vectorsOf(*node), (Numbers{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15}));
    node->setPosition(-1, -2);
    node->setRotation(-4, -5);
    node->setOrigin(-7, -8);
    node->setDirection(-10, -11);
    node->setTarget(-13, -14);
    EXPECT_EQ(vectorsOf(*node),
              (Numbers{-1, -2, 3, -4, -5, 6, -7, -8, 9, -10, -11, 12, -13, -14, 15}));

    node->setPositioning(RV_NODE_POSITIONING_MATRIX);
    node->move(10, 20);
    node->rotate(10, 20);
    EXPECT_EQ(node->getPosition(), Z3MVECTOR3D(9, 18, 3));
    EXPECT_EQ(node->getRotation(), Z3MVECTOR3D(6, 15, 6));
    node->move(1, 2, 3);
    node->move(Z3MVECTOR3D(10, 20, 30));
    node->rotate(4, 5, 6);
    node->rotate(Z3MVECTOR3D(40, 50, 60));
    EXPECT_EQ(node->getPosition(), Z3MVECTOR3D(20, 40, 36));
    EXPECT_EQ(node->getRotation(), Z3MVECTOR3D(50, 70, 72));
    EXPECT_EQ(node->getPositioning(), RV_NODE_POSITIONING_MATRIX);
}

// --- Registry

TEST_F(NodeTest, CleanUpSurvivesADestructorThatDeletesItsSuccessor) {
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

// Parents are deleted before children, which are unlinked by then.
TEST_F(NodeTest, CleanUpSurvivesDestructorsThatUnlink) {
    static unsigned int linked;
    class Unlinker : public RVNODE {
      public:
        ~Unlinker() override {
            linked += !isRoot() + getNumberOfChildren();
            if (!isRoot())
                unlink();
        }
    };
    linked = 0;
    Unlinker *root = new Unlinker, *middle = new Unlinker, *leaf = new Unlinker;
    middle->link(root);
    leaf->link(middle);
    make("beside", root);
    EXPECT_TRUE(RVNODE::cleanUp());
    EXPECT_LOGGED_EXACTLY("   4 node(s) released @ RVNODE::cleanUp\n");
    EXPECT_EQ(linked, 0u);
}

TEST_F(NodeTest, TheSkyboxIsNoneOnceItsNodeIsDeleted) {
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

TEST_F(NodeTest, NodeBeyondTheLastIdHasTheIdZero) {
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

// --- Tree: root with the children before, node and after, and a and b below node

class TreeTest : public NodeTest {
  protected:
    RVNODE *root = make("root"), *before = make("before", root), *node = make("node", root),
           *after = make("after", root), *a = make("a", node), *b = make("b", node);
};

TEST_F(TreeTest, LinkAppendsToTheParent) {
    RVNODE *more = make("more");
    EXPECT_TRUE(more->link(root));
    EXPECT_EQ(childrenOf(*root), (NodeList{before, node, after, more}));
    EXPECT_EQ(more->getParent(), root);
    EXPECT_FALSE(more->isRoot());
    EXPECT_TRUE(root->isRoot());
    EXPECT_NOTHING_LOGGED();
    EXPECT_FALSE(root->link(nullptr));
    EXPECT_FALSE(root->link(root));
    EXPECT_LOGGED_EXACTLY("   [!] Invalid param @ RVNODE::link\n"
                          "   [!] Invalid param @ RVNODE::link\n");
    EXPECT_TRUE(root->isRoot());
}

TEST_F(TreeTest, SecondLinkFailsUntilUnlink) {
    RVNODE *child = make("50%d", root);
    EXPECT_FALSE(child->link(after));
    EXPECT_LOGGED_EXACTLY("   [!] Node 50%d has already a parent @ RVNODE::link\n");
    EXPECT_EQ(after->getNumberOfChildren(), 0u);
    EXPECT_TRUE(child->unlink());
    EXPECT_TRUE(child->link(after));
    EXPECT_EQ(childrenOf(*after), NodeList{child});
}

TEST_F(TreeTest, GetChildOutOfRangeLogsAndReturnsNull) {
    EXPECT_EQ(after->getChild(0), nullptr);
    EXPECT_EQ(node->getChild(1), b);
    EXPECT_EQ(node->getChild(2), nullptr);
    EXPECT_EQ(node->getChild(4294967295u), nullptr);
    EXPECT_LOGGED_TIMES(3, "   [!] Invalid params @ RVNODE::getChild");
}

TEST_F(TreeTest, UnlinkRemovesTheNodeAndTheOthersStayInOrder) {
    EXPECT_TRUE(node->unlink());
    EXPECT_EQ(childrenOf(*root), (NodeList{before, after}));
    EXPECT_TRUE(node->isRoot());
    EXPECT_EQ(childrenOf(*node), (NodeList{a, b}));
    EXPECT_EQ(RVNODE::findByName("node"), node);
    EXPECT_TRUE(after->unlink());
    EXPECT_TRUE(before->unlink());
    EXPECT_EQ(root->getNumberOfChildren(), 0u);
    EXPECT_EQ(root->getChild(0), nullptr);
    EXPECT_TRUE(before->link(root));
    EXPECT_EQ(childrenOf(*root), NodeList{before});
    markLog();
    EXPECT_FALSE(root->unlink());
    EXPECT_LOGGED_EXACTLY("   [!] Node root is already unlinked @ RVNODE::unlink\n");
}

// Entries are freed at both ends and in the middle, and used again, at every length.
TEST_F(TreeTest, ChildrenStayInOrderThroughManyLinksAndUnlinks) {
    std::vector<RVNODE *> nodes, expected;
    for (int index = 0; index < 60; ++index)
        nodes.push_back(make("child"));
    const auto link = [&](RVNODE *child) {
        EXPECT_TRUE(child->link(after));
        expected.push_back(child);
    };
    const auto unlink = [&](std::size_t index) {
        EXPECT_TRUE(expected[index]->unlink());
        expected.erase(expected.begin() + static_cast<std::ptrdiff_t>(index));
    };
    for (std::size_t step = 0; step < 600; ++step) {
        if (step % 7 < 4 || expected.empty()) {
            RVNODE *child = nodes[step * 31 % nodes.size()];
            if (child->isRoot())
                link(child);
        } else {
            unlink(step % 3 == 0 ? 0 : step * 13 % expected.size());
        }
        ASSERT_EQ(childrenOf(*after), NodeList(expected.begin(), expected.end())) << step;
    }
    while (!expected.empty())
        unlink(0);
    EXPECT_EQ(after->getNumberOfChildren(), 0u);
    EXPECT_NOTHING_LOGGED();
}

TEST_F(TreeTest, LinkingThousandsOfChildrenAllocatesRarely) {
    std::vector<RVNODE *> children;
    for (int index = 0; index < 20000; ++index)
        children.push_back(new RVNODE);
    const unsigned long allocations = recorder.allocations();
    for (RVNODE *child : children)
        child->link(after);
    EXPECT_LT(recorder.allocations() - allocations, 40u);
    EXPECT_EQ(childrenOf(*after), NodeList(children.begin(), children.end()));
}

// A copy has a parent that does not have it among its children.
TEST_F(TreeTest, UnlinkOfACopyAmongSeveralChildrenFails) {
    RVNODE copy(*a);
    EXPECT_FALSE(copy.unlink());
    EXPECT_LOGGED_EXACTLY("   [!] Consistency problem with a @ RVNODE::unlink\n");
    EXPECT_EQ(childrenOf(*node), (NodeList{a, b}));
    EXPECT_EQ(copy.getParent(), node);
}

TEST_F(TreeTest, UnlinkDoesNotCompareAnOnlyChild) {
    RVNODE *only = make("only", after);
    RVNODE copy(*only);
    EXPECT_TRUE(copy.unlink());
    EXPECT_EQ(after->getNumberOfChildren(), 0u);
    EXPECT_EQ(only->getParent(), after);
    EXPECT_FALSE(only->unlink());
    EXPECT_LOGGED_EXACTLY("   [!] Consistency problem with only @ RVNODE::unlink\n");
}

// The address sanitizer finds an array that is not released.
TEST_F(TreeTest, ACopyOfAChildlessNodeHasChildrenOfItsOwn) {
    RVNODE copy(*after);
    ASSERT_TRUE(node->unlink());
    ASSERT_TRUE(before->unlink());
    ASSERT_TRUE(node->link(&copy));
    ASSERT_TRUE(before->link(&copy));
    EXPECT_EQ(childrenOf(copy), (NodeList{node, before}));
    EXPECT_TRUE(node->remove());
    EXPECT_EQ(childrenOf(copy), (NodeList{before, a, b}));
    EXPECT_TRUE(before->unlink());
    EXPECT_TRUE(node->link(&copy));
    EXPECT_EQ(childrenOf(copy), (NodeList{a, b, node}));
    EXPECT_NOTHING_LOGGED();
}

TEST_F(TreeTest, ACopyWithChildrenOfItsOwnMayBeAssignedOthers) {
    RVNODE copy(*after), childless(*after);
    ASSERT_TRUE(before->unlink());
    ASSERT_TRUE(before->link(&copy));
    copy = *node;
    EXPECT_EQ(childrenOf(copy), (NodeList{a, b}));
    EXPECT_EQ(before->getParent(), nullptr);
    EXPECT_EQ(a->getParent(), node);
    RVNODE *const other = make("other");
    EXPECT_FALSE(other->link(&copy));
    EXPECT_LOGGED_EXACTLY("   [!] Invalid param @ RVNODE::link\n");
    copy = childless;
    EXPECT_TRUE(other->link(&copy));
    EXPECT_EQ(childrenOf(copy), NodeList{other});
    EXPECT_EQ(childrenOf(*node), (NodeList{a, b}));
    RVNODE same(copy);
    copy = same;
    EXPECT_EQ(other->getParent(), &copy);
    EXPECT_TRUE(other->unlink());
    EXPECT_EQ(copy.getNumberOfChildren(), 0u);
}

TEST_F(TreeTest, RemoveAppendsTheChildrenToTheGrandparent) {
    RVNODE *leaf = make("leaf", a);
    EXPECT_TRUE(node->remove());
    EXPECT_EQ(childrenOf(*root), (NodeList{before, after, a, b}));
    EXPECT_EQ(a->getParent(), root);
    EXPECT_EQ(childrenOf(*a), NodeList{leaf});
    EXPECT_TRUE(node->isRoot());
    EXPECT_EQ(node->getNumberOfChildren(), 0u);
    EXPECT_EQ(RVNODE::findByName("node"), node);
    EXPECT_TRUE(leaf->remove());
    EXPECT_EQ(a->getNumberOfChildren(), 0u);
    EXPECT_TRUE(leaf->link(a));
    RVNODE *only = make("only", leaf), *below = make("below", only);
    EXPECT_TRUE(only->remove());
    EXPECT_EQ(childrenOf(*leaf), NodeList{below});
    EXPECT_NOTHING_LOGGED();
    EXPECT_FALSE(root->remove());
    EXPECT_LOGGED_EXACTLY("   [!] Node root already unlinked @ RVNODE::remove\n");
    EXPECT_EQ(childrenOf(*root), (NodeList{before, after, a, b}));
}

TEST_F(TreeTest, DeletingAParentDoesNotDeleteItsChildren) {
    delete node;
    EXPECT_EQ(registry(), (NodeList{root, before, after, a, b}));
}

TEST_F(TreeTest, SearchInAHierarchyIsDepthFirst) {
    after->setName("twin");
    b->setName("twin");
    make("twin");
    EXPECT_EQ(root->findByNameInHierarchy("root"), root);
    EXPECT_EQ(root->findByNameInHierarchy("twin"), b);
    EXPECT_EQ(after->findByNameInHierarchy("twin"), after);
    EXPECT_EQ(root->findByNameInHierarchy("nobody"), nullptr);
    EXPECT_EQ(root->findByNameInHierarchy(nullptr), nullptr);
    EXPECT_EQ(root->findByIdInHierarchy(b->getId()), b);
    EXPECT_EQ(root->findByIdInHierarchy(root->getId()), root);
    EXPECT_EQ(node->findByIdInHierarchy(after->getId()), nullptr);
}

// --- Display

TEST_F(TreeTest, DisplayTreeIndentsByTwo) {
    node->setName("node %s");
    EXPECT_TRUE(RVNODE::displayTree(root));
    EXPECT_LOGGED_EXACTLY("   Tree for root:\n" + line(3, *root) + line(5, *before) +
                          line(5, *node) + line(7, *a) + line(7, *b) + line(5, *after) + "\n");
    EXPECT_TRUE(RVNODE::displayTree(after));
    EXPECT_LOGGED_EXACTLY("   Tree for after:\n   empty\n\n");
    EXPECT_FALSE(RVNODE::displayTree(nullptr));
    EXPECT_LOGGED_EXACTLY("   [!] Invalid params @ RVNODE::displayTree\n");
}

// One line a node, truncated to the length that the log accepts.
TEST_F(NodeTest, DisplayTreeRecursiveLogsFromItsDepthAndCutsItsLines) {
    RVNODE *node = make(std::string(255, 'n'));
    EXPECT_EQ(RVNODE::displayTreeRecursive(nullptr, 3), nullptr);
    for (const int depth : {4, 900, 5000, -7})
        EXPECT_EQ(RVNODE::displayTreeRecursive(node, depth), nullptr);
    EXPECT_LOGGED_EXACTLY(line(4, *node) + line(900, *node).substr(0, 1022) + "\n" +
                          std::string(1022, ' ') + "\n" + line(0, *node));
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
    EXPECT_EQ(vectorsOf(copy), vectorsOf(node));
    EXPECT_EQ(copy.getTargetNode(), node.getTargetNode());
    EXPECT_EQ(elementsOf(copy.getMatrix()), elementsOf(node.getMatrix()));
    EXPECT_EQ(elementsOf(*const_cast<RVNODE &>(copy).getCachedMatrix()),
              elementsOf(*const_cast<RVNODE &>(node).getCachedMatrix()));
}

class CopyTest : public NodeTest {
  protected:
    void SetUp() override {
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

    // The links too.
    void expectCopyOfNode(const RVNODE &copy) {
        expectSameFields(copy, *node);
        EXPECT_EQ(copy.getPreviousNode(), node->getPreviousNode());
        EXPECT_EQ(copy.getNextNode(), node->getNextNode());
        EXPECT_EQ(copy.getParent(), node->getParent());
        EXPECT_EQ(childrenOf(copy), (NodeList{child, last}));
        expectTreeUnchanged();
    }
    void expectTreeUnchanged() {
        EXPECT_EQ(registry(), (NodeList{root, node, child, last}));
        EXPECT_EQ(childrenOf(*node), (NodeList{child, last}));
    }

    RVNODE *root = make("root"), *node = make("node", root), *child = make("child", node),
           *last = make("last", node);
};

TEST_F(CopyTest, CopyHasEveryFieldAndIsNotRegistered) {
    {
        const RVNODE copy(*node), second(copy);
        expectCopyOfNode(copy);
        expectCopyOfNode(second);
        RVNODE assigned(*last);
        assigned = *node;
        expectCopyOfNode(assigned);
    }
    RVNODE &same = *node;
    *node = same;
    expectTreeUnchanged();
    const unsigned int id = node->getId();
    EXPECT_NE((new RVNODE)->getId(), id) << "a copy released the identifier";
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

TEST_F(CopyTest, AssignmentDoesNotChangeTheLinksOfARegisteredNode) {
    RVNODE *other = make("other"), *below = make("below", other), *tail = make("tail");
    const unsigned int id = other->getId();
    *other = *node;
    expectSameFields(*other, *node);
    EXPECT_EQ(other->getParent(), nullptr);
    EXPECT_EQ(childrenOf(*other), NodeList{below});
    EXPECT_EQ(registry(), (NodeList{root, node, child, last, other, below, tail}));
    delete other;
    EXPECT_EQ(registry(), (NodeList{root, node, child, last, below, tail}));
    EXPECT_EQ((new RVNODE)->getId(), id);
    EXPECT_NOTHING_LOGGED();
}

TEST_F(CopyTest, SubclassesCopyTheirOwnFieldsToo) {
    RVLIGHT *light = new RVLIGHT, *second = new RVLIGHT;
    light->setCutOff(12);
    RVCAMERA *camera = new RVCAMERA;
    camera->setUpDirection(Z3MVECTOR3D(1, 0, 0));
    EXPECT_EQ(RVLIGHT(*light).getCutOff(), 12);
    EXPECT_EQ(RVCAMERA(*camera).getUpDirection(), Z3MVECTOR3D(1, 0, 0));
    RVNODE copy(*light);
    EXPECT_EQ(copy.getType(), RV_NODE_TYPE_LIGHT);
    EXPECT_FALSE(copy.render(nullptr)) << "as a node it has the node's render";
    const unsigned int id = second->getId();
    *second = *light;
    EXPECT_EQ(second->getCutOff(), 12);
    delete second;
    EXPECT_EQ((new RVNODE)->getId(), id);
    EXPECT_NOTHING_LOGGED();
}

TEST_F(CopyTest, LinkRefusesACopyWhoseChildrenAreTheOriginals) {
    RVNODE copy(*node), childless(*last);
    RVNODE *more = make("more");
    EXPECT_FALSE(more->link(&copy));
    EXPECT_LOGGED_EXACTLY("   [!] Invalid param @ RVNODE::link\n");
    EXPECT_TRUE(more->isRoot());
    EXPECT_EQ(childrenOf(*node), (NodeList{child, last}));
    EXPECT_EQ(childrenOf(copy), (NodeList{child, last}));
    EXPECT_TRUE(more->link(&childless));
    EXPECT_TRUE(more->unlink());
}

// --- Children of a scene file

TEST_F(NodeTest, AnnouncedChildrenAreEmptySlotsThatWalksSkip) {
    RVNODE *root = loadNode<RVNODE>(plainNodeBody("root", 3)), *middle = make("middle");
    ravolt::NodeInternals::setChild(*root, 1, *middle);
    EXPECT_EQ(childrenOf(*root), (NodeList{nullptr, middle, nullptr}));
    EXPECT_EQ(middle->getParent(), root);
    EXPECT_EQ(root->findByNameInHierarchy("middle"), middle);
    EXPECT_EQ(root->findByNameInHierarchy("nobody"), nullptr);
    RVNODE::displayTree(root);
    EXPECT_LOGGED_EXACTLY("   Tree for root:\n" + line(3, *root) + line(5, *middle) + "\n");
    RVNODE *grandparent = make("grandparent");
    root->link(grandparent);
    EXPECT_TRUE(root->remove());
    EXPECT_EQ(childrenOf(*grandparent), NodeList{middle});
}

} // namespace
