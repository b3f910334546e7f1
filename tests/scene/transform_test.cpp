// The one definition of a node's transform: final matrices, the pass, and trees of any depth.

#include "ravolt/RVELEMENT.h"
#include "ravolt/RVNODE.h"
#include "ravolt/RVOPENGL.h"
#include "scene/localTransform.h"
#include "tests/scene/referenceMatrix.h"
#include "tests/scene/sceneProbes.h"
#include "tests/support/engineFixture.h"
#include "tests/support/glState.h"

#include <string>
#include <vector>

using namespace ravolt::test;

namespace {

GLint modelviewDepth() { return integerOf(GL_MODELVIEW_STACK_DEPTH); }

Z3MMATRIX modelview() {
    Z3MMATRIX matrix;
    glGetFloatv(GL_MODELVIEW_MATRIX, matrix.e);
    return matrix;
}

class TransformTest : public EngineTest {
  protected:
    void SetUp() override {
        EngineTest::SetUp();
        glLoadIdentity();
        depthBefore = modelviewDepth();
    }
    void TearDown() override {
        EXPECT_EQ(modelviewDepth(), depthBefore);
        EngineTest::TearDown();
    }

    static RVNODE *make(RVNODE *parent = nullptr, const Z3MVECTOR3D &position = Z3MVECTOR3D(),
                        const Z3MVECTOR3D &rotation = Z3MVECTOR3D()) {
        RVNODE *node = new RVNODE;
        node->setPosition(position);
        node->setRotation(rotation);
        if (parent)
            node->link(parent);
        return node;
    }

    // A chain of `length` nodes, each one step along x from the one above it; the lowest.
    static RVNODE *makeChain(int length) {
        RVNODE *node = nullptr;
        for (int level = 0; level < length; ++level)
            node = make(node, Z3MVECTOR3D(1, 0, 0));
        return node;
    }

    static void fillTheStack() {
        const GLint limit = integerOf(GL_MAX_MODELVIEW_STACK_DEPTH);
        while (modelviewDepth() < limit)
            glPushMatrix();
    }

    static Calls transformCalls(const Calls &calls) {
        return calls.named({"glPushMatrix", "glPopMatrix", "glLoadIdentity", "glTranslatef",
                            "glRotatef", "glMultMatrixf"});
    }

    GLint depthBefore = 0;
};

using FinalMatrix = TransformTest;

TEST_F(FinalMatrix, IsPositionPlusOriginThenTheTurnsAboutXYZ) {
    RVNODE *node = make(nullptr, Z3MVECTOR3D(1, 2, 3), Z3MVECTOR3D(20, 130, -75));
    node->setOrigin(0.5, -4, 10);
    ReferenceMatrix expected;
    expected.node(Z3MVECTOR3D(1.5, -2, 13), Z3MVECTOR3D(20, 130, -75));
    EXPECT_TRUE(isNear(node->getFinalMatrix(nullptr), expected));
}

TEST_F(FinalMatrix, CallsStandInTheirOrder) {
    RVNODE *root = make(nullptr, Z3MVECTOR3D(7, 8, 9));
    root->setPositioning(RV_NODE_POSITIONING_MATRIX);
    RVNODE *node = make(root, Z3MVECTOR3D(1, 2, 3), Z3MVECTOR3D(10, 20, 30));
    EXPECT_EQ(transformCalls(callsOf([&] { node->getFinalMatrix(nullptr); })),
              (Calls{{"glPushMatrix"},
                     {"glLoadIdentity"},
                     {"glMultMatrixf", 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1},
                     {"glTranslatef", 1, 2, 3},
                     {"glRotatef", 10, 1, 0, 0},
                     {"glRotatef", 20, 0, 1, 0},
                     {"glRotatef", 30, 0, 0, 1},
                     {"glPopMatrix"}}));
}

TEST_F(FinalMatrix, LeavesOutTurnsByZero) {
    RVNODE *node = make(nullptr, Z3MVECTOR3D(1, 2, 3), Z3MVECTOR3D(0, 20, -0.0f));
    recorder.start();
    node->getFinalMatrix(nullptr);
    EXPECT_EQ(recorder.stop().named("glRotatef"), (Calls{{"glRotatef", 20, 0, 1, 0}}));
}

TEST_F(FinalMatrix, GoesThroughAllAncestorsOfEitherPositioning) {
    Z3MMATRIX skew(1, 0.5f, 0, 0, 0, 2, 0, 0, 0.25f, 0, 1, 0, 3, -4, 5, 1);
    RVNODE *root = make(nullptr, Z3MVECTOR3D(1, 2, 3), Z3MVECTOR3D(10, 20, 30));
    RVNODE *middle = make(root, Z3MVECTOR3D(100, 100, 100));
    middle->setPositioning(RV_NODE_POSITIONING_MATRIX);
    middle->setMatrix(skew);
    RVNODE *leaf = make(middle, Z3MVECTOR3D(-5, 6, 7), Z3MVECTOR3D(0, 45, 90));
    ReferenceMatrix expected;
    expected.node(Z3MVECTOR3D(1, 2, 3), Z3MVECTOR3D(10, 20, 30)).multiply(skew);
    expected.node(Z3MVECTOR3D(-5, 6, 7), Z3MVECTOR3D(0, 45, 90));
    EXPECT_TRUE(isNear(leaf->getFinalMatrix(nullptr), expected));
}

TEST_F(FinalMatrix, UnknownPositioningIsTheParentsFrame) {
    RVNODE *root = make(nullptr, Z3MVECTOR3D(1, 2, 3), Z3MVECTOR3D(0, 0, 90));
    Drawings drawn;
    CustomProbe *node = new CustomProbe(drawn);
    node->setPosition(50, 50, 50);
    node->setRotation(60, 60, 60);
    node->link(root);
    node->setPositioning(static_cast<RV_NODE_POSITIONING>(2));
    ReferenceMatrix expected;
    expected.node(Z3MVECTOR3D(1, 2, 3), Z3MVECTOR3D(0, 0, 90));
    EXPECT_TRUE(isNear(node->getFinalMatrix(nullptr), expected));
    drawFrame(nullptr, root); // in the pass as well
    ASSERT_EQ(drawn.size(), 1u);
    EXPECT_TRUE(isNear(drawn[0].matrix, expected));
}

TEST_F(FinalMatrix, StopsAtTheNamedAncestorWhichTakesPart) {
    RVNODE *root = make(nullptr, Z3MVECTOR3D(1000, 0, 0));
    RVNODE *upper = make(root, Z3MVECTOR3D(100, 0, 0));
    RVNODE *lower = make(upper, Z3MVECTOR3D(10, 0, 0));
    RVNODE *node = make(lower, Z3MVECTOR3D(1, 0, 0));
    const auto place = [node](const char *stop) {
        return node->getFinalMatrix(stop).getTranslation().x;
    };
    EXPECT_EQ(place(nullptr), 1111);
    EXPECT_EQ(place("nobody"), 1111);
    lower->setName("hip");
    EXPECT_EQ(place("hip"), 11);
    upper->setName("hip");
    EXPECT_EQ(place("hip"), 11);
    lower->setName("other");
    EXPECT_EQ(place("hip"), 111);
    node->setName("self");
    EXPECT_EQ(place("self"), 1111);
}

TEST_F(FinalMatrix, LeavesTheModelviewMatrixAsItWas) {
    glTranslatef(5, 6, 7);
    RVNODE *node = make(nullptr, Z3MVECTOR3D(1, 2, 3));
    EXPECT_TRUE(isNear(node->getFinalMatrix(nullptr), ReferenceMatrix().translate(1, 2, 3)));
    EXPECT_TRUE(isNear(modelview(), ReferenceMatrix().translate(5, 6, 7)));
}

TEST_F(FinalMatrix, Takes63AncestorsAndRefuses64) {
    EXPECT_EQ(makeChain(64)->getFinalMatrix(nullptr).getTranslation().x, 64);
    EXPECT_NOTHING_LOGGED();
    EXPECT_TRUE(isNear(makeChain(65)->getFinalMatrix(nullptr), ReferenceMatrix()));
    EXPECT_LOGGED_EXACTLY("   [!] Depth overflow @ RVNODE::getFinalMatrix()\n");
}

// The 64th ancestor is one too many even where the walk would have ended there.
TEST_F(FinalMatrix, NamedAncestorMustStandBelowThe64th) {
    RVNODE *node = makeChain(65);
    RVNODE *top = node;
    while (top->getParent())
        top = top->getParent();
    top->setName("top");
    EXPECT_EQ(node->getFinalMatrix("top").getTranslation().x, 0);
    EXPECT_LOGGED("   [!] Depth overflow @ RVNODE::getFinalMatrix()");
    node->getParent()->setName("near");
    EXPECT_EQ(node->getFinalMatrix("near").getTranslation().x, 2);
}

TEST_F(FinalMatrix, NeedsNoRoomOnTheStack) {
    RVNODE *node = make(nullptr, Z3MVECTOR3D(1, 2, 3));
    fillTheStack();
    glTranslatef(9, 9, 9);
    EXPECT_TRUE(isNear(node->getFinalMatrix(nullptr), ReferenceMatrix().translate(1, 2, 3)));
    EXPECT_TRUE(isNear(modelview(), ReferenceMatrix().translate(9, 9, 9)));
    while (modelviewDepth() > depthBefore)
        glPopMatrix();
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
}

// --- The same in the pass

using Pass = TransformTest;

TEST_F(Pass, CapturesTheMatrixInTheEntryAndInTheNode) {
    Drawings drawn;
    RVNODE *root = make(nullptr, Z3MVECTOR3D(1, 2, 3), Z3MVECTOR3D(10, 20, 30));
    CustomProbe *node = new CustomProbe(drawn);
    node->setPosition(4, 5, 6);
    node->setOrigin(0, 0, 1);
    node->setRotation(0, 70, 0);
    node->link(root);
    drawFrame(nullptr, root);
    ReferenceMatrix expected;
    expected.node(Z3MVECTOR3D(1, 2, 3), Z3MVECTOR3D(10, 20, 30));
    expected.node(Z3MVECTOR3D(4, 5, 7), Z3MVECTOR3D(0, 70, 0));
    ASSERT_EQ(drawn.size(), 1u);
    EXPECT_TRUE(isNear(drawn[0].matrix, expected));
    EXPECT_TRUE(isNear(*node->getCachedMatrix(), expected));
    EXPECT_TRUE(isNear(node->getFinalMatrix(nullptr), expected));
}

TEST_F(Pass, HoldsTheCamera) {
    Drawings drawn;
    CustomProbe *node = new CustomProbe(drawn);
    node->setPosition(4, 5, 6);
    RAVOLT::begin3D(nullptr);
    glTranslatef(0, 0, -20);
    node->pass();
    RAVOLT::end3D(true);
    ASSERT_EQ(drawn.size(), 1u);
    EXPECT_TRUE(isNear(drawn[0].matrix, ReferenceMatrix().translate(4, 5, -14)));
}

TEST_F(Pass, CallsStandInTheirOrder) {
    RVNODE *root = make(nullptr, Z3MVECTOR3D(1, 2, 3), Z3MVECTOR3D(10, 0, 30));
    make(root, Z3MVECTOR3D(4, 5, 6));
    EXPECT_EQ(transformCalls(callsOf([&] { root->pass(); })), (Calls{{"glPushMatrix"},
                                                                     {"glTranslatef", 1, 2, 3},
                                                                     {"glRotatef", 10, 1, 0, 0},
                                                                     {"glRotatef", 30, 0, 0, 1},
                                                                     {"glPushMatrix"},
                                                                     {"glTranslatef", 4, 5, 6},
                                                                     {"glPopMatrix"},
                                                                     {"glPopMatrix"}}));
}

// A chain in which each level has, behind the next level, a node of its own: where the stack ran
// full, the way back must be right as well.
class DeepTree : public TransformTest, public testing::WithParamInterface<int> {
  protected:
    static constexpr float degrees = 11;

    void build(int levels) {
        RVNODE *above = nullptr;
        std::vector<RVNODE *> chain;
        for (int level = 0; level < levels; ++level) {
            above = make(above, Z3MVECTOR3D(1, 0.5, 0), Z3MVECTOR3D(0, 0, degrees));
            chain.push_back(above);
        }
        root = chain.front();
        for (RVNODE *node : chain) {
            CustomProbe *probe = new CustomProbe(drawn);
            probe->setPosition(0, 0, 1);
            probe->link(node);
        }
    }

    RVNODE *root = nullptr;
    Drawings drawn;
};

TEST_P(DeepTree, HasTheRightMatrixOnEachLevel) {
    const int levels = GetParam();
    build(levels);
    drawFrame(nullptr, root);
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
    ASSERT_EQ(drawn.size(), static_cast<std::size_t>(levels));
    ReferenceMatrix expected;
    for (int level = 0; level < levels; ++level) {
        expected.node(Z3MVECTOR3D(1, 0.5, 0), Z3MVECTOR3D(0, 0, degrees));
        // The deepest level was passed first.
        const Drawn &entry = drawn[static_cast<std::size_t>(levels - 1 - level)];
        ReferenceMatrix probe = expected;
        ASSERT_TRUE(isNear(entry.matrix, probe.translate(0, 0, 1), 1e-6 * (levels + 10)))
            << "level " << level;
    }
    EXPECT_TRUE(isNear(modelview(), ReferenceMatrix()));
}

INSTANTIATE_TEST_SUITE_P(Levels, DeepTree, testing::Values(1, 31, 32, 33, 100, 1000));

TEST_F(Pass, ApplicationsOwnMatricesMayFillTheStack) {
    Drawings drawn;
    RVNODE *root = make(nullptr, Z3MVECTOR3D(1, 0, 0));
    CustomProbe *first = new CustomProbe(drawn);
    CustomProbe *second = new CustomProbe(drawn);
    first->setPosition(10, 0, 0);
    second->setPosition(0, 10, 0);
    first->link(root);
    second->link(root);
    RAVOLT::begin3D(nullptr);
    fillTheStack();
    root->pass();
    EXPECT_TRUE(isNear(modelview(), ReferenceMatrix()));
    while (modelviewDepth() > depthBefore)
        glPopMatrix();
    RAVOLT::end3D(true);
    ASSERT_EQ(drawn.size(), 2u);
    EXPECT_TRUE(isNear(drawn[0].matrix, ReferenceMatrix().translate(11, 0, 0)));
    EXPECT_TRUE(isNear(drawn[1].matrix, ReferenceMatrix().translate(1, 10, 0)));
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
}

} // namespace
