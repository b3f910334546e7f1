// What the engine knows of OpenGL's state while it draws the render list, and what makes it
// unknown.

#include "engine/gl/stateCache.h"

#include "ravolt/RAVOLT.h"
#include "ravolt/RVLIGHT.h"
#include "ravolt/RVMATERIAL.h"
#include "ravolt/RVMESH.h"
#include "ravolt/RVOPENGL.h"
#include "tests/scene/sceneProbes.h"
#include "tests/support/engineFixture.h"

#include <functional>

using namespace ravolt::test;
using ravolt::KnownState;

namespace {

TEST(KnownStateTest, IsKnownFromOneOwnNodeToTheNext) {
    EXPECT_EQ(KnownState::period(), 0u);
    unsigned int first = 0;
    {
        KnownState state;
        EXPECT_EQ(KnownState::period(), 0u);
        state.beforeNode(true);
        first = KnownState::period();
        EXPECT_NE(first, 0u);
        EXPECT_TRUE(KnownState::hit(first, true));
        EXPECT_FALSE(KnownState::hit(first, false));
        state.beforeNode(true);
        EXPECT_TRUE(KnownState::hit(first, true));
        state.beforeNode(false);
        EXPECT_FALSE(KnownState::hit(first, true));
        EXPECT_FALSE(KnownState::hit(KnownState::period(), true));
        state.beforeNode(true);
        EXPECT_FALSE(KnownState::hit(first, true));
    }
    EXPECT_EQ(KnownState::period(), 0u);
    EXPECT_FALSE(KnownState::hit(0, true));
}

TEST(KnownStateTest, IsUnknownInAndAfterAnInnerList) {
    KnownState outer;
    outer.beforeNode(true);
    const unsigned int before = KnownState::period();
    {
        KnownState inner;
        EXPECT_FALSE(KnownState::hit(before, true));
        inner.beforeNode(true);
        EXPECT_FALSE(KnownState::hit(before, true));
    }
    EXPECT_FALSE(KnownState::hit(before, true));
    EXPECT_TRUE(KnownState::hit(KnownState::period(), true));
}

// A node of an application that calls OpenGL.
template <class Node> class Calling : public Node {
  public:
    explicit Calling(const std::function<void()> &functionToCall) : call(functionToCall) {}
    bool render(void *) override {
        call();
        return true;
    }

  private:
    std::function<void()> call;
};

unsigned int occurrences(const std::string &text, const std::string &word) {
    unsigned int number = 0;
    for (std::size_t at = text.find(word); at != std::string::npos; at = text.find(word, at + 1))
        ++number;
    return number;
}

void breakLight() {
    const float black[4] = {0, 0, 0, 1};
    glLightfv(GL_LIGHT0, GL_DIFFUSE, black);
}

class KnownStateInFrame : public EngineTest {
  protected:
    void SetUp() override {
        EngineTest::SetUp();
        root = new RVNODE;
        light = link(new RVLIGHT);
        light->setDiffuse(0.25f, 0.5f, 0.75f, 1);
        RVLIGHT::lightingOn();
    }
    void TearDown() override {
        RVLIGHT::lightingOff();
        EngineTest::TearDown();
    }

    template <class Node> Node *link(Node *node) {
        node->link(root);
        return node;
    }
    Calls frame() {
        RAVOLT::begin3D(nullptr);
        root->pass();
        return callsOf([] { RAVOLT::end3D(true); });
    }
    static float redOfLight() {
        float color[4] = {};
        glGetLightfv(GL_LIGHT0, GL_DIFFUSE, color);
        return color[0];
    }

    RVNODE *root = nullptr;
    RVLIGHT *light = nullptr;
};

// Of three meshes the second and the third may have no calls that set the light up.
TEST_F(KnownStateInFrame, ALightThatIsSetUpIsNotSetUpAgain) {
    for (int mesh = 0; mesh < 3; ++mesh)
        link(new RVMESH);
    for (int repeated = 0; repeated < 2; ++repeated) {
        EXPECT_EQ(frame().count("glLightfv"), 5u) << "three colours, position and direction";
    }
}

// Two lights take turns in the first two slots: of the calls that set a light up only those whose
// values differ between the lights must be present.
TEST_F(KnownStateInFrame, OnlyParametersThatDifferAreSet) {
    RVLIGHT *other = link(new RVLIGHT);
    other->setDiffuse(1, 1, 1, 1);
    light->setPosition(-10, 0, 0);
    other->setPosition(10, 0, 0);
    for (int mesh = 0; mesh < 4; ++mesh)
        link(new RVMESH)->setPosition(mesh % 2 ? 10.0f : -10.0f, 0, 0);
    const std::string text = frame().text();
    EXPECT_GE(occurrences(text, "GL_DIFFUSE"), 8u);
    EXPECT_EQ(occurrences(text, "GL_SPECULAR"), 2u);
    EXPECT_EQ(redOfLight(), 1.0f) << "the last mesh is near the second light";
}

template <class Node> void changeBetweenMeshes(RVNODE *root) {
    for (int mesh = 0; mesh < 2; ++mesh) {
        (new RVMESH)->link(root);
        if (mesh == 0)
            (new Calling<Node>(breakLight))->link(root);
    }
}

TEST_F(KnownStateInFrame, ANodeOfAnApplicationMayChangeALight) {
    changeBetweenMeshes<CustomNode>(root);
    frame();
    EXPECT_EQ(redOfLight(), 0.25f);
}

TEST_F(KnownStateInFrame, AMeshOfAnApplicationMayChangeALight) {
    changeBetweenMeshes<RVMESH>(root);
    frame();
    EXPECT_EQ(redOfLight(), 0.25f);
}

// It is rendered in the list, and as the second light of each mesh: then the first light is set up
// anew for the next mesh.
TEST_F(KnownStateInFrame, ALightOfAnApplicationMayChangeALight) {
    light->setExclusive(true);
    link(new Calling<RVLIGHT>(breakLight));
    link(new RVMESH);
    link(new RVMESH);
    EXPECT_EQ(frame().count("glLightfv"), 5u + 1u + 2 * (5u + 1u));
}

// The second material's colours are those that OpenGL has: its calls may be absent.
TEST_F(KnownStateInFrame, ColorsThatAreSetAreNotSetAgain) {
    for (int mesh = 0; mesh < 2; ++mesh)
        link(new RVMESH)->setMaterial(new RVMATERIAL);
    for (int repeated = 0; repeated < 2; ++repeated) {
        const Calls calls = frame();
        EXPECT_EQ(calls.count("glMaterialfv"), 4u);
        EXPECT_EQ(calls.count("glMaterialf"), 1u);
    }
}

TEST_F(KnownStateInFrame, ANodeOfAnApplicationMayChangeAColor) {
    link(new RVMESH)->setMaterial(new RVMATERIAL);
    link(new Calling<CustomNode>([] {
        const float black[4] = {0, 0, 0, 1};
        glMaterialfv(GL_FRONT_AND_BACK, GL_DIFFUSE, black);
    }));
    link(new RVMESH)->setMaterial(new RVMATERIAL);
    frame();
    float color[4] = {};
    glGetMaterialfv(GL_FRONT, GL_DIFFUSE, color);
    EXPECT_EQ(color[0], 0.6f);
}

TEST_F(KnownStateInFrame, AnApplicationMayChangeALightBeforeTheListIsDrawn) {
    link(new RVMESH);
    frame();
    RAVOLT::begin3D(nullptr);
    root->pass();
    breakLight();
    RAVOLT::end3D(true);
    EXPECT_EQ(redOfLight(), 0.25f);
}

// Its own calls of the engine change what they are to change.
TEST_F(KnownStateInFrame, ANodeOfAnApplicationMayDrawAMeshItself) {
    RVMESH *mesh = new RVMESH;
    RVELEMENT element;
    float red = 0;
    link(new Calling<CustomNode>([&] {
        breakLight();
        mesh->render(&element);
        red = redOfLight();
    }));
    frame();
    EXPECT_EQ(red, 0.25f);
}

} // namespace
