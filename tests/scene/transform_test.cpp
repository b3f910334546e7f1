// The one definition of a node's transform: final matrices, the pass, and trees of any depth.

#include "ravolt/RVELEMENT.h"
#include "ravolt/RVNODE.h"
#include "ravolt/RVOPENGL.h"
#include "tests/scene/referenceMatrix.h"
#include "tests/scene/sceneProbes.h"
#include "tests/support/engineFixture.h"
#include "tests/support/glState.h"

using namespace ravolt::test;

namespace {

using Vector = Z3MVECTOR3D;

GLint modelviewDepth() { return integerOf(GL_MODELVIEW_STACK_DEPTH); }

class TransformTest : public EngineTest {
  protected:
    void SetUp() override {
        EngineTest::SetUp();
        glLoadIdentity();
        depthBefore = modelviewDepth();
    }
    void TearDown() override {
        EXPECT_EQ(modelviewDepth(), depthBefore);
        EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
        EngineTest::TearDown();
    }

    template <class Node>
    static Node *place(Node *node, RVNODE *parent, const Vector &position,
                       const Vector &rotation = {}) {
        node->setPosition(position);
        node->setRotation(rotation);
        if (parent)
            node->link(parent);
        return node;
    }
    static RVNODE *make(RVNODE *parent, const Vector &position, const Vector &rotation = {}) {
        return place(new RVNODE, parent, position, rotation);
    }
    CustomProbe *probe(RVNODE *parent, const Vector &position, const Vector &rotation = {}) {
        return place(new CustomProbe(drawn), parent, position, rotation);
    }

    // A chain of `length` nodes, each one step along x from the one above it; the lowest.
    static RVNODE *makeChain(int length) {
        RVNODE *node = nullptr;
        for (int level = 0; level < length; ++level)
            node = make(node, {1, 0, 0});
        return node;
    }

    static void fillTheStack() {
        const GLint limit = integerOf(GL_MAX_MODELVIEW_STACK_DEPTH);
        while (modelviewDepth() < limit)
            glPushMatrix();
    }
    void emptyTheStack() {
        while (modelviewDepth() > depthBefore)
            glPopMatrix();
    }

    static void expectFinalMatrix(RVNODE *node, const ReferenceMatrix &expected) {
        EXPECT_TRUE(isNear(node->getFinalMatrix(nullptr), expected));
    }
    static void expectModelview(const ReferenceMatrix &expected) {
        EXPECT_TRUE(isNear(matrixOf(GL_MODELVIEW_MATRIX).data(), expected));
    }

    GLint depthBefore = 0;
    Drawings drawn;
};

using FinalMatrix = TransformTest;

// Those of the matrix stack may be absent, since the matrix is not OpenGL's to compute.
TEST_F(FinalMatrix, CallsNothingOfOpenGL) {
    RVNODE *root = make(nullptr, {7, 8, 9});
    root->setPositioning(RV_NODE_POSITIONING_MATRIX);
    RVNODE *node = make(root, {1, 2, 3}, {10, 20, 30});
    EXPECT_EQ(callsOf([&] { node->getFinalMatrix(nullptr); }).text(), "");
}

// The order of the steps, and the floats that OpenGL's own stack gives.
TEST_F(FinalMatrix, EqualsThatOfTheMatrixStack) {
    const Z3MMATRIX skew(1, 0.5f, 0, 0, 0, 2, 0, 0, 0.25f, 0, 1, 0, 3, -4, 5, 1);
    RVNODE *root = make(nullptr, {1, 2, 3}, {20, 130, -75}), *middle = make(root, {});
    middle->setPositioning(RV_NODE_POSITIONING_MATRIX);
    middle->setMatrix(skew);
    RVNODE *node = make(middle, {-5, 6.3, 7}, {0, -45.6, 91});
    node->setOrigin(0.1, 0.2, 0.3);
    glPushMatrix();
    glTranslatef(1, 2, 3);
    glRotatef(20, 1, 0, 0);
    glRotatef(130, 0, 1, 0);
    glRotatef(-75, 0, 0, 1);
    glMultMatrixf(skew.e);
    const Vector position = node->getPosition() + node->getOrigin();
    glTranslatef(position.x, position.y, position.z);
    glRotatef(-45.6f, 0, 1, 0);
    glRotatef(91, 0, 0, 1);
    const auto stack = matrixOf(GL_MODELVIEW_MATRIX);
    glPopMatrix();
    const Z3MMATRIX matrix = node->getFinalMatrix(nullptr);
    for (std::size_t i = 0; i < 16; ++i)
        EXPECT_FLOAT_EQ(matrix.e[i], stack[i]) << i;
}

TEST_F(FinalMatrix, IncludesAllAncestorsOfEitherPositioning) {
    const Z3MMATRIX skew(1, 0.5f, 0, 0, 0, 2, 0, 0, 0.25f, 0, 1, 0, 3, -4, 5, 1);
    RVNODE *root = make(nullptr, {1, 2, 3}, {20, 130, -75});
    root->setOrigin(0.5, -4, 10);
    RVNODE *middle = make(root, {100, 100, 100});
    middle->setPositioning(RV_NODE_POSITIONING_MATRIX);
    middle->setMatrix(skew);
    RVNODE *leaf = make(middle, {-5, 6, 7}, {0, 45, 90});
    ReferenceMatrix expected;
    expected.node({1.5, -2, 13}, {20, 130, -75}); // position plus origin, then the rotations
    expectFinalMatrix(root, expected);
    expected.multiply(skew);
    expectFinalMatrix(middle, expected);
    expectFinalMatrix(leaf, expected.node({-5, 6, 7}, {0, 45, 90}));
}

TEST_F(FinalMatrix, UnknownPositioningIsTheParentsFrame) {
    RVNODE *root = make(nullptr, {1, 2, 3}, {0, 0, 90});
    CustomProbe *node = probe(root, {50, 50, 50}, {60, 60, 60});
    node->setPositioning(static_cast<RV_NODE_POSITIONING>(2));
    ReferenceMatrix expected;
    expectFinalMatrix(node, expected.node({1, 2, 3}, {0, 0, 90}));
    drawFrame(nullptr, root); // in the pass as well
    ASSERT_EQ(drawn.size(), 1u);
    EXPECT_TRUE(isNear(drawn[0].matrix, expected));
}

TEST_F(FinalMatrix, EndsWithTheNamedAncestor) {
    RVNODE *root = make(nullptr, {1000, 0, 0}), *upper = make(root, {100, 0, 0});
    RVNODE *lower = make(upper, {10, 0, 0}), *node = make(lower, {1, 0, 0});
    const auto xUpTo = [node](const char *name) {
        return node->getFinalMatrix(name).getTranslation().x;
    };
    EXPECT_EQ(xUpTo(nullptr), 1111);
    EXPECT_EQ(xUpTo("nobody"), 1111);
    lower->setName("hip");
    EXPECT_EQ(xUpTo("hip"), 11);
    upper->setName("hip");
    EXPECT_EQ(xUpTo("hip"), 11);
    lower->setName("other");
    EXPECT_EQ(xUpTo("hip"), 111);
    node->setName("self");
    EXPECT_EQ(xUpTo("self"), 1111);
}

TEST_F(FinalMatrix, AcceptsUpTo63Ancestors) {
    EXPECT_EQ(makeChain(64)->getFinalMatrix(nullptr).getTranslation().x, 64);
    EXPECT_NOTHING_LOGGED();
    RVNODE *node = makeChain(65);
    expectFinalMatrix(node, ReferenceMatrix());
    EXPECT_LOGGED_EXACTLY("   [!] Depth overflow @ RVNODE::getFinalMatrix()\n");
    // The 64th ancestor is one too many even where the walk would have ended there.
    RVNODE *top = node;
    while (top->getParent())
        top = top->getParent();
    top->setName("top");
    EXPECT_EQ(node->getFinalMatrix("top").getTranslation().x, 0);
    EXPECT_LOGGED_EXACTLY("   [!] Depth overflow @ RVNODE::getFinalMatrix()\n");
    node->getParent()->setName("near");
    EXPECT_EQ(node->getFinalMatrix("near").getTranslation().x, 2);
}

TEST_F(FinalMatrix, DoesNotChangeTheModelviewMatrixAndWorksOnAFullStack) {
    RVNODE *node = make(nullptr, {1, 2, 3});
    for (int full = 0; full < 2; ++full) {
        glTranslatef(5, 6, 7);
        expectFinalMatrix(node, ReferenceMatrix().translate(1, 2, 3));
        expectModelview(ReferenceMatrix().translate(5, 6, 7));
        glLoadIdentity();
        fillTheStack();
    }
    emptyTheStack();
}

// --- The same in the pass

using Pass = TransformTest;

TEST_F(Pass, CapturesTheMatrixInTheEntryAndInTheNode) {
    RVNODE *root = make(nullptr, {1, 2, 3}, {10, 20, 30});
    CustomProbe *node = probe(root, {4, 5, 6}, {0, 70, 0});
    node->setOrigin(0, 0, 1);
    drawFrame(nullptr, root);
    ReferenceMatrix expected;
    expected.node({1, 2, 3}, {10, 20, 30}).node({4, 5, 7}, {0, 70, 0});
    ASSERT_EQ(drawn.size(), 1u);
    EXPECT_TRUE(isNear(drawn[0].matrix, expected));
    EXPECT_TRUE(isNear(*node->getCachedMatrix(), expected));
    expectFinalMatrix(node, expected);
}

TEST_F(Pass, StartsWithTheMatrixOfTheCamera) {
    CustomProbe *node = probe(nullptr, {4, 5, 6});
    RAVOLT::begin3D(nullptr);
    glTranslatef(0, 0, -20);
    node->pass();
    RAVOLT::end3D(true);
    ASSERT_EQ(drawn.size(), 1u);
    EXPECT_TRUE(isNear(drawn[0].matrix, ReferenceMatrix().translate(4, 5, -14)));
}

// Those of the matrix stack may be absent, since the matrices are not OpenGL's to compute.
TEST_F(Pass, OnlyReadsTheMatrixItStartsWith) {
    RVNODE *root = make(nullptr, {1, 2, 3}, {10, 0, 30});
    probe(make(root, {4, 5, 6}), {});
    EXPECT_EQ(callsOf([&] { root->pass(); }).text(), "glGetFloatv(GL_MODELVIEW_MATRIX)\n");
}

// A chain in which each level has, after the next level, a node of its own: deeper than OpenGL's
// stack, and with the right matrix on the way back as well.
class DeepTree : public TransformTest, public testing::WithParamInterface<int> {};

TEST_P(DeepTree, HasTheRightMatrixOnEachLevel) {
    const int levels = GetParam();
    std::vector<RVNODE *> chain(1);
    for (int level = 0; level < levels; ++level)
        chain.push_back(make(chain.back(), {1, 0.5, 0}, {0, 0, 11}));
    for (int level = 1; level <= levels; ++level)
        probe(chain[static_cast<std::size_t>(level)], {0, 0, 1});
    drawFrame(nullptr, chain[1]);
    ASSERT_EQ(drawn.size(), static_cast<std::size_t>(levels));
    ReferenceMatrix expected;
    for (int level = 0; level < levels; ++level) {
        expected.node({1, 0.5, 0}, {0, 0, 11});
        // The lowest level was passed first.
        const Drawn &entry = drawn[static_cast<std::size_t>(levels - 1 - level)];
        ReferenceMatrix probe = expected;
        ASSERT_TRUE(isNear(entry.matrix, probe.translate(0, 0, 1), 1e-6 * (levels + 10)))
            << "level " << level;
    }
    expectModelview(ReferenceMatrix());
}

INSTANTIATE_TEST_SUITE_P(Levels, DeepTree, testing::Values(1, 31, 32, 33, 100, 1000));

TEST_F(Pass, WorksWithAStackThatTheApplicationHasFilled) {
    RVNODE *root = make(nullptr, {1, 0, 0});
    probe(root, {10, 0, 0});
    probe(root, {0, 10, 0});
    RAVOLT::begin3D(nullptr);
    fillTheStack();
    root->pass();
    expectModelview(ReferenceMatrix());
    emptyTheStack();
    RAVOLT::end3D(true);
    ASSERT_EQ(drawn.size(), 2u);
    EXPECT_TRUE(isNear(drawn[0].matrix, ReferenceMatrix().translate(11, 0, 0)));
    EXPECT_TRUE(isNear(drawn[1].matrix, ReferenceMatrix().translate(1, 10, 0)));
}

} // namespace
