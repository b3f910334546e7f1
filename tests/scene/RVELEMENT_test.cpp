#include "ravolt/RVELEMENT.h"

#include "ravolt/RVCAMERA.h"
#include "ravolt/RVMATERIAL.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVTEXTURE.h"
#include "ravolt/zlf.h"
#include "scene/entryOrder.h"
#include "tests/scene/referenceMatrix.h"
#include "tests/scene/sceneProbes.h"
#include "tests/support/engineFixture.h"

#include <algorithm>
#include <cstring>
#include <initializer_list>
#include <limits>
#include <new>
#include <random>
#include <string>
#include <vector>

using namespace ravolt::test;

namespace {

using Nodes = std::vector<const RVNODE *>;

class ElementTest : public EngineTest {
  protected:
    void SetUp() override {
        EngineTest::SetUp();
        root = new RVNODE;
    }
    void TearDown() override {
        RVELEMENT::clippingOff();
        RVELEMENT::setClippingRadius(128);
        EngineTest::TearDown();
    }

    template <class Node> Node *place(Node *node, float x, float y, float z) {
        node->setPosition(x, y, z);
        node->link(root);
        return node;
    }
    CustomProbe *custom(float z = 0) { return place(new CustomProbe(drawn), 0, 0, z); }
    LightProbe *light(float z = 0) { return place(new LightProbe(drawn), 0, 0, z); }
    HelperProbe *helper(float z, float radius = 0) {
        HelperProbe *node = place(new HelperProbe(drawn), 0, 0, z);
        node->setRadius(radius);
        return node;
    }
    MeshProbe *mesh(RVMATERIAL *material = nullptr, float z = 0) {
        MeshProbe *node = place(new MeshProbe(drawn), 0, 0, z);
        node->setMaterial(material);
        return node;
    }
    static RVMATERIAL *material(float opacity = 1, RVTEXTURE *texture = nullptr) {
        RVMATERIAL *result = new RVMATERIAL;
        result->setTransparency(opacity);
        result->setTexture(0, texture);
        return result;
    }

    // A frame's list, without drawing it.
    void passAll() {
        RVELEMENT::reset();
        glLoadIdentity();
        root->pass();
    }

    // The nodes in the order in which a frame draws them.
    Nodes drawingOrder() {
        drawn.clear();
        drawFrame(nullptr, root);
        Nodes nodes;
        for (const Drawn &drawing : drawn)
            nodes.push_back(drawing.node);
        return nodes;
    }

    RVNODE *root = nullptr;
    Drawings drawn;
};

// --- Storage

TEST_F(ElementTest, CapacityIsWhatWasAskedForUpTo4096) {
    for (const auto &[asked, wanted] : {std::pair{0u, 4096u},
                                        {5000u, 4096u},
                                        {4097u, 4096u},
                                        {4294967295u, 4096u},
                                        {1u, 1u},
                                        {4096u, 4096u}}) {
        ASSERT_TRUE(RVELEMENT::free());
        EXPECT_TRUE(RVELEMENT::init(asked));
        EXPECT_EQ(RVELEMENT::getNumberOfElements(), wanted);
        EXPECT_LOGGED_EXACTLY("   " + std::to_string(wanted) + " elements allocated\n");
    }
}

TEST_F(ElementTest, SecondInitIsRefused) {
    EXPECT_TRUE(RVELEMENT::isActive());
    EXPECT_FALSE(RVELEMENT::init(7));
    EXPECT_LOGGED_EXACTLY("   [!] Already active @ RVELEMENT::init\n");
    EXPECT_NE(RVELEMENT::getNumberOfElements(), 7u);
}

TEST_F(ElementTest, FreeEmptiesAndIsFalseWhenThereIsNothing) {
    light();
    passAll();
    EXPECT_EQ(RVELEMENT::getNumberOfLights(), 1u);
    EXPECT_TRUE(RVELEMENT::free());
    EXPECT_FALSE(RVELEMENT::isActive());
    EXPECT_EQ(RVELEMENT::getNumberOfElements(), 0u);
    EXPECT_EQ(RVELEMENT::getLight(0), nullptr);
    EXPECT_FALSE(RVELEMENT::sort3D());
    EXPECT_FALSE(RVELEMENT::sort2D());
    EXPECT_FALSE(RVELEMENT::sortLights(Z3MVECTOR3D(0, 0, 0)));
    EXPECT_FALSE(RVELEMENT::free());
    EXPECT_NOTHING_LOGGED();
}

// First the entries are made, then their order.
TEST_F(ElementTest, NothingIsKeptWhenStorageOrOrderCannotBeMade) {
    constexpr unsigned int count = 1000;
    for (const unsigned int after : {0u, 1u}) {
        ASSERT_TRUE(RVELEMENT::free());
        recorder.failAllocation(count * sizeof(RVELEMENT *), after);
        EXPECT_FALSE(RVELEMENT::init(count));
        recorder.allocationsWork();
        EXPECT_LOGGED_EXACTLY("   [!] Out of memory @ RVELEMENT::init\n");
        EXPECT_FALSE(RVELEMENT::isActive());
        EXPECT_EQ(RVELEMENT::getNumberOfElements(), 0u);
        EXPECT_TRUE(RVELEMENT::init(count));
        EXPECT_LOGGED_EXACTLY("   1000 elements allocated\n");
    }
    zlfFree(nullptr); // the allocator counts its failure as a block
}

TEST_F(ElementTest, ResetEmptiesTheList) {
    light();
    custom();
    passAll();
    EXPECT_EQ(RVELEMENT::getNumberOfPassedElements(), 2u);
    EXPECT_EQ(RVELEMENT::getNumberOfLights(), 1u);
    RVELEMENT::reset();
    EXPECT_EQ(RVELEMENT::getNumberOfPassedElements(), 0u);
    EXPECT_EQ(RVELEMENT::getNumberOfLights(), 0u);
    EXPECT_EQ(RVELEMENT::getLight(0), nullptr);
}

TEST_F(ElementTest, NewEntryIsEmpty) {
    RVELEMENT entry;
    EXPECT_EQ(entry.getNode(), nullptr);
    EXPECT_TRUE(isNear(*entry.getMatrix(), ReferenceMatrix(), 0));
    entry.setParam1(9);
    EXPECT_EQ(entry.getParam1(), 9u);
    RVELEMENT other;
    entry.setNearestLight(3, &other);
    EXPECT_EQ(entry.getNearestLight(3), &other);
    EXPECT_EQ(entry.getNearestLight(0), nullptr);
}

// --- Pass

TEST_F(ElementTest, PassOfNullIsRefused) {
    EXPECT_FALSE(RVELEMENT::pass(nullptr, true));
    EXPECT_LOGGED_EXACTLY("   [!] Invalid params @ RVELEMENT::pass\n");
}

TEST_F(ElementTest, PlainNodesTakeNoEntry) {
    RVNODE *plain = place(new RVNODE, 1, 2, 3);
    CustomProbe *below = new CustomProbe(drawn);
    below->setPosition(10, 0, 0);
    below->setAuxId(42);
    below->link(plain);
    EXPECT_EQ(drawingOrder(), (Nodes{below}));
    EXPECT_EQ(RVELEMENT::getNumberOfPassedElements(), 1u);
    EXPECT_TRUE(isNear(drawn[0].matrix, ReferenceMatrix().translate(11, 2, 3)));
    EXPECT_EQ(drawn[0].auxId, 42u);
}

TEST_F(ElementTest, ListHoldsTheNodesInTheOrderOfThePass) {
    CustomProbe *a = custom();
    MeshProbe *b = mesh();
    CustomProbe *c = custom();
    CustomProbe *below = new CustomProbe(drawn);
    below->link(a);
    EXPECT_EQ(drawingOrder(), (Nodes{a, below, b, c}));
}

TEST_F(ElementTest, HiddenMeshTakesNoEntryAndItsChildrenDo) {
    MeshProbe *hidden = mesh();
    hidden->setDisplayStatus(false);
    CustomProbe *below = new CustomProbe(drawn);
    below->link(hidden);
    EXPECT_EQ(drawingOrder(), (Nodes{below}));
    hidden->setDisplayStatus(true);
    EXPECT_EQ(drawingOrder(), (Nodes{hidden, below}));
}

TEST_F(ElementTest, EachPassedNodeHasTheFramesStamp) {
    MeshProbe *hidden = mesh();
    hidden->setDisplayStatus(false);
    CustomProbe *below = new CustomProbe(drawn);
    below->link(hidden);
    CustomProbe *elsewhere = new CustomProbe(drawn);
    drawingOrder();
    const int stamp = static_cast<int>(RAVOLT::getTimeStamp());
    EXPECT_EQ(root->getTimeStamp(), stamp);
    EXPECT_EQ(hidden->getTimeStamp(), stamp);
    EXPECT_EQ(below->getTimeStamp(), stamp);
    EXPECT_EQ(elsewhere->getTimeStamp(), 0);
}

TEST_F(ElementTest, CachedMatrixOfAHiddenMeshIsStale) {
    MeshProbe *node = mesh(nullptr, -3);
    drawingOrder();
    node->setPosition(0, 0, -9);
    node->setDisplayStatus(false);
    drawingOrder();
    EXPECT_EQ(node->getCachedMatrix()->e[14], -3);
}

TEST_F(ElementTest, EmptyPlacesAmongTheChildrenAreSkipped) {
    const Bytes body = plainNodeBody("holder", 2);
    const auto bytes = body.exact();
    long cursor = 0;
    RVNODE *holder = RVNODE::load(bytes.get(), &cursor);
    holder->link(root);
    CustomProbe *after = custom();
    EXPECT_EQ(drawingOrder(), (Nodes{after}));
    EXPECT_NOTHING_LOGGED();
}

// --- Nodes with the fields of others

// Memory that says "yes" wherever a field was not written.
struct Marked {
    Marked() { std::memset(bytes, 1, sizeof bytes); }
    alignas(RVMESH) unsigned char bytes[sizeof(RVMESH) + sizeof(RVLIGHT)];
};

TEST_F(ElementTest, CopyOfAMeshAsANodeIsNoMesh) {
    Marked memory;
    RVMESH *original = loadMesh(meshBody("skin", 500, {"bone"}));
    RVNODE *copy = new (memory.bytes) RVNODE(*original);
    EXPECT_EQ(copy->getType(), RV_NODE_TYPE_MESH);
    RAVOLT::begin3D(nullptr);
    copy->pass(); // a mesh would be hidden, by the memory
    EXPECT_NOTHING_LOGGED();
    EXPECT_EQ(RVELEMENT::getNumberOfPassedElements(), 1u);
    RAVOLT::end3D(true);
    copy->setPosition(0, 0, -200);
    RVELEMENT::clippingOn();
    RAVOLT::begin3D(nullptr);
    copy->pass(); // has no radius
    EXPECT_EQ(RVELEMENT::getNumberOfPassedElements(), 0u);
    EXPECT_LOGGED_EXACTLY(" (clipped) skin at distance 200.00\n");
    copy->~RVNODE();
}

TEST_F(ElementTest, CopyOfALightAsANodeIsNoLight) {
    Marked memory;
    RVNODE *copy = new (memory.bytes) RVNODE(*light());
    copy->setPosition(0, 0, -9);
    LightProbe *near = light(-1);
    RAVOLT::begin3D(nullptr);
    copy->pass();
    near->pass();
    RVELEMENT::sortLights(Z3MVECTOR3D(0, 0, 0));
    EXPECT_EQ(RVELEMENT::getNumberOfLights(), 2u);
    EXPECT_EQ(RVELEMENT::getLight(0)->getNode(), near); // a light would be exclusive
    copy->~RVNODE();
    EXPECT_EQ(RVELEMENT::getNumberOfLights(), 1u);
}

TEST_F(ElementTest, AssignmentMakesNoNodeAnotherClass) {
    RVMESH *plainMesh = loadMesh(meshBody("rock", 3));
    plainMesh->setMaterial(material(0.5f));
    RVLIGHT *plainLight = new RVLIGHT;
    RVHELPER *plainHelper = new RVHELPER;
    for (RVNODE *source : std::initializer_list<RVNODE *>{plainMesh, plainLight, plainHelper}) {
        RVNODE *node = new RVNODE;
        *node = *source;
        node->link(root);
    }
    mesh(material());
    RVELEMENT::clippingOn();
    RVLIGHT::lightingOn();
    EXPECT_EQ(drawingOrder().size(), 1u);
    EXPECT_EQ(RVELEMENT::getNumberOfPassedElements(), 4u);
    RVLIGHT::lightingOff();
    EXPECT_NOTHING_LOGGED();
}

// The type of the light that it holds is asked by the mesh that it lights.
TEST_F(ElementTest, MeshIsDrawnUnderALightThatIsAPlainNode) {
    RVNODE *node = new RVNODE;
    *node = *new RVLIGHT;
    node->link(root);
    RVMESH *lit = loadMesh(meshBody("rock", 3));
    lit->setMaterial(material());
    lit->link(root);
    RVLIGHT::lightingOn();
    drawFrame(nullptr, root);
    RVLIGHT::lightingOff();
    EXPECT_EQ(RVELEMENT::getNumberOfPassedElements(), 2u);
}

TEST_F(ElementTest, CopiesAsTheirOwnClassStayWhatTheyAre) {
    RVMESH *hidden = new RVMESH;
    hidden->setDisplayStatus(false);
    const RVMESH meshCopy(*hidden);
    RVLIGHT *exclusive = new RVLIGHT;
    exclusive->setExclusive(true);
    RVLIGHT lightCopy(*exclusive);
    HelperProbe *original = new HelperProbe(drawn);
    original->setRadius(50);
    HelperProbe helperCopy(*original);
    lightCopy.setPosition(0, 0, -9);
    helperCopy.setPosition(0, 0, -200);
    LightProbe *near = light(-1);

    RVELEMENT::clippingOn();
    RAVOLT::begin3D(nullptr);
    near->pass();
    lightCopy.pass();
    helperCopy.pass();
    RVMESH(meshCopy).pass();
    EXPECT_EQ(RVELEMENT::getNumberOfPassedElements(), 3u);
    RVELEMENT::sort3D();
    RVELEMENT::sortLights(Z3MVECTOR3D(0, 0, 0));
    EXPECT_EQ(RVELEMENT::getLight(0)->getNode(), &lightCopy);
    EXPECT_NOTHING_LOGGED();
}

TEST_F(ElementTest, SubclassOfAMeshMayBeACustomNode) {
    class CustomMesh : public RVMESH {
      public:
        CustomMesh() { type = RV_NODE_TYPE_CUSTOM; }
    };
    Probe<CustomMesh> *node = place(new Probe<CustomMesh>(drawn), 0, 0, -500);
    node->setDisplayStatus(false);
    RVELEMENT::clippingOn();
    EXPECT_EQ(drawingOrder(), (Nodes{node}));
    EXPECT_NOTHING_LOGGED();
}

// --- Nodes that go while the list holds them

TEST_F(ElementTest, DeletedNodesLeaveTheListInItsOrder) {
    CustomProbe *a = custom(), *b = custom(), *c = custom(), *d = custom();
    RAVOLT::begin3D(nullptr);
    root->pass();
    for (CustomProbe *node : {b, d}) {
        node->unlink();
        delete node;
    }
    EXPECT_EQ(RVELEMENT::getNumberOfPassedElements(), 2u);
    CustomProbe *late = custom();
    late->pass();
    RAVOLT::end3D(true);
    ASSERT_EQ(drawn.size(), 3u);
    EXPECT_EQ(drawn[0].node, a);
    EXPECT_EQ(drawn[1].node, c);
    EXPECT_EQ(drawn[2].node, late);
}

TEST_F(ElementTest, EntriesThatStayKeepTheirMatrices) {
    CustomProbe *gone = custom(-1), *near = custom(-2), *far = custom(-3);
    RAVOLT::begin3D(nullptr);
    root->pass();
    gone->unlink();
    delete gone;
    RAVOLT::end3D(true);
    ASSERT_EQ(drawn.size(), 2u);
    EXPECT_EQ(drawn[0].node, near);
    EXPECT_EQ(drawn[0].matrix.e[14], -2);
    EXPECT_EQ(drawn[1].node, far);
    EXPECT_EQ(drawn[1].matrix.e[14], -3);
}

TEST_F(ElementTest, DeletedLightsAndTransparentNodesAreCountedNoMore) {
    LightProbe *lamp = light(-1), *otherLamp = light(-2);
    CustomProbe *opaque = custom(-5);
    HelperProbe *gone = helper(-7), *glass = helper(-9);
    MeshProbe *window = mesh(material(0.5f), -8);
    RAVOLT::begin3D(nullptr);
    root->pass();
    RVELEMENT::sort3D();
    for (RVNODE *node : std::initializer_list<RVNODE *>{lamp, gone, window}) {
        node->unlink();
        delete node;
    }
    EXPECT_EQ(RVELEMENT::getNumberOfPassedElements(), 3u);
    EXPECT_EQ(RVELEMENT::getNumberOfLights(), 1u);
    EXPECT_EQ(RVELEMENT::getLight(0)->getNode(), otherLamp);
    EXPECT_EQ(RVELEMENT::getLight(1), nullptr);
    RAVOLT::end3D(true);
    ASSERT_EQ(drawn.size(), 3u);
    EXPECT_EQ(drawn[0].node, otherLamp);
    EXPECT_EQ(drawn[1].node, opaque);
    EXPECT_EQ(drawn[2].node, glass);
}

// Whatever its stamp says: it came with the fields of another, or was never set.
TEST_F(ElementTest, NodesOfAnyStampLeaveTheList) {
    CustomProbe *assigned = new CustomProbe(drawn), *entered = new CustomProbe(drawn);
    RAVOLT::begin3D(nullptr);
    assigned->pass();
    assigned->pass(); // two entries
    static_cast<RVNODE &>(*assigned) = *root;
    EXPECT_TRUE(RVELEMENT::pass(entered, true));
    {
        CustomProbe copy(*entered);
        copy.pass();
        EXPECT_EQ(RVELEMENT::getNumberOfPassedElements(), 4u);
    }
    EXPECT_EQ(RVELEMENT::getNumberOfPassedElements(), 3u);
    delete assigned;
    EXPECT_EQ(RVELEMENT::getNumberOfPassedElements(), 1u);
    delete entered;
    EXPECT_EQ(RVELEMENT::getNumberOfPassedElements(), 0u);
    RAVOLT::end3D(true);
    EXPECT_TRUE(drawn.empty());
}

TEST_F(ElementTest, ANodeMayDeleteALaterOneWhileItIsDrawn) {
    class Deleter : public CustomProbe {
      public:
        using CustomProbe::CustomProbe;
        bool render(void *entry) override {
            victim->unlink();
            delete victim;
            return CustomProbe::render(entry);
        }
        RVNODE *victim = nullptr;
    };
    Deleter *deleter = place(new Deleter(drawn), 0, 0, 0);
    CustomProbe *between = custom();
    deleter->victim = custom();
    EXPECT_EQ(drawingOrder(), (Nodes{deleter, between}));
}

// --- Capacity

TEST_F(ElementTest, SceneTooComplexDropsWhatDoesNotFit) {
    ASSERT_TRUE(RVELEMENT::free());
    ASSERT_TRUE(RVELEMENT::init(2));
    CustomProbe *a = custom(), *b = custom(), *dropped = custom();
    CustomProbe *below = new CustomProbe(drawn);
    below->link(dropped);
    markLog();
    EXPECT_EQ(drawingOrder(), (Nodes{a, b}));
    EXPECT_LOGGED_EXACTLY("   [!] Scene too complex @ RVELEMENT::pass\n");
    markLog();
    EXPECT_FALSE(RVELEMENT::pass(dropped, true));
    EXPECT_LOGGED("   [!] Scene too complex @ RVELEMENT::pass");
    EXPECT_TRUE(dropped->pass(true));
    EXPECT_EQ(RVELEMENT::getNumberOfPassedElements(), 2u);
}

TEST_F(ElementTest, InactiveListIsFull) {
    ASSERT_TRUE(RVELEMENT::free());
    EXPECT_FALSE(RVELEMENT::pass(custom(), true));
    EXPECT_LOGGED("   [!] Scene too complex @ RVELEMENT::pass");
}

// --- Clipping

TEST_F(ElementTest, ClippingIsOffAtFirstWithARadiusOf128) {
    EXPECT_EQ(RVELEMENT::getClippingRadius(), 128);
    helper(-1e6f);
    passAll();
    EXPECT_EQ(RVELEMENT::getNumberOfPassedElements(), 1u);
}

TEST_F(ElementTest, ClipsHelpersBeyondTheRadiusAndTwiceTheirOwn) {
    HelperProbe *node = helper(-200, 36);
    node->setName("far %d");
    RVELEMENT::clippingOn();
    EXPECT_EQ(drawingOrder(), (Nodes{node})); // 128 + 72 is not less than 200
    EXPECT_NOTHING_LOGGED();
    node->setRadius(35.5f);
    EXPECT_EQ(drawingOrder(), Nodes());
    EXPECT_LOGGED_EXACTLY(" (clipped) far %d at distance 200.00\n");
    node->setPosition(3, 0, -4);
    RVELEMENT::setClippingRadius(-67);
    EXPECT_EQ(drawingOrder(), Nodes());
    EXPECT_LOGGED_EXACTLY(" (clipped) far %d at distance 5.00\n");
    RVELEMENT::clippingOff();
    EXPECT_EQ(drawingOrder(), (Nodes{node}));
}

TEST_F(ElementTest, ClipsMeshesByTheirRadius) {
    RVMESH *node = loadMesh(meshBody("rock", 10));
    node->setPosition(0, -149, 0);
    node->link(root);
    RVELEMENT::clippingOn();
    passAll();
    EXPECT_EQ(RVELEMENT::getNumberOfPassedElements(), 0u);
    EXPECT_LOGGED_EXACTLY(" (clipped) rock at distance 149.00\n");
    node->setPosition(0, -147, 0);
    passAll();
    EXPECT_EQ(RVELEMENT::getNumberOfPassedElements(), 1u);
}

TEST_F(ElementTest, ClipsByTheDistanceFromTheEye) {
    RVCAMERA camera;
    camera.setPosition(0, 0, -1000);
    HelperProbe *node = helper(-1010);
    RVELEMENT::clippingOn();
    RAVOLT::begin3D(&camera);
    root->pass();
    EXPECT_EQ(RVELEMENT::getNumberOfPassedElements(), 1u);
    RAVOLT::end3D(true);
    EXPECT_EQ(node->getCachedMatrix()->e[14], -10);
}

TEST_F(ElementTest, ClippedMeshStillTestsItsChildren) {
    MeshProbe *far = mesh(nullptr, -500);
    HelperProbe *near = new HelperProbe(drawn);
    near->setPosition(0, 0, 490);
    near->link(far);
    RVELEMENT::clippingOn();
    EXPECT_EQ(drawingOrder(), (Nodes{near}));
    EXPECT_EQ(far->getTimeStamp(), static_cast<int>(RAVOLT::getTimeStamp()));
}

TEST_F(ElementTest, LightsCamerasAndCustomNodesAreNeverClipped) {
    LightProbe *farLight = light(-5000);
    Probe<RVCAMERA> *farCamera = place(new Probe<RVCAMERA>(drawn), 0, 0, -5000);
    CustomProbe *farNode = custom(-5000);
    RVELEMENT::clippingOn();
    EXPECT_EQ(drawingOrder(), (Nodes{farLight, farCamera, farNode}));
    EXPECT_NOTHING_LOGGED();
}

// --- Skeletons

TEST_F(ElementTest, PassSkeletonRefusesNull) {
    RVMESH *skinned = new RVMESH;
    EXPECT_FALSE(RVELEMENT::passSkeleton(nullptr, skinned));
    EXPECT_FALSE(RVELEMENT::passSkeleton(skinned, nullptr));
    EXPECT_LOGGED_TIMES(2, "   [!] Invalid params @ RVELEMENT::skeletonPass");
}

// A skinned mesh, with the geometry of another one, that notes what its drawing came to.
class SkinProbe : public RVMESH {
  public:
    SkinProbe(const RVMESH &original, std::vector<unsigned int> &itsPlaces,
              std::vector<bool> &itsResults)
        : RVMESH(original), places(itsPlaces), results(itsResults) {}
    bool render(void *entry) override {
        places.push_back(static_cast<RVELEMENT *>(entry)->getParam1());
        results.push_back(RVMESH::render(entry));
        return results.back();
    }

  private:
    std::vector<unsigned int> &places;
    std::vector<bool> &results;
};

TEST_F(ElementTest, TheSkinnedMeshBeyondTheCacheHasTheNumber256AndIsNotDrawn) {
    RVMESH *original = loadMesh(meshBody("skin", 1, {"bone"}));
    original->link(root);
    ASSERT_TRUE(original->resetBones(root));
    std::vector<unsigned int> places, wanted;
    std::vector<bool> results, drawnAll(256, true);
    SkinProbe probe(*original, places, results);
    RAVOLT::begin3D(nullptr);
    for (unsigned int number = 0; number < 257; ++number) {
        probe.pass();
        wanted.push_back(number);
    }
    markLog();
    RAVOLT::end3D(true);
    EXPECT_LOGGED_EXACTLY("   [!] Animation not computed (cache full) @ RVMESH::animate\n");
    EXPECT_EQ(places, wanted);
    drawnAll.push_back(false);
    EXPECT_EQ(results, drawnAll);
}

TEST_F(ElementTest, SkinnedRootHasNoSkeletonSpace) {
    RVMESH *skinned = loadMesh(meshBody("skin", 1, {"bone"}));
    RAVOLT::begin3D(nullptr);
    skinned->pass();
    EXPECT_LOGGED_EXACTLY("   [!] Invalid params @ RVELEMENT::skeletonPass\n");
    EXPECT_EQ(RVELEMENT::getNumberOfPassedElements(), 1u);
    RVELEMENT::reset();
}

// From an identity through the parent's own transform down to each bone, which is read where it
// stands; other nodes are walked through. A bone that no node moves is not read.
TEST_F(ElementTest, SkeletonPassReadsEachBoneInTheSpaceOfTheParent) {
    root->setPosition(1, 0, 0);
    RVNODE *joint = place(new RVNODE, 0, 4, 0);
    RVMESH *bone = loadMesh(meshBody("bone", 1)), *other = loadMesh(meshBody("other", 1));
    bone->setPosition(0, 0, 5);
    bone->link(joint);
    other->setPosition(0, 0, 6);
    other->link(root);
    RVMESH *skinned = loadMesh(meshBody("skin", 1, {"nobody", "bone"}));
    skinned->setPosition(0, 2, 0);
    skinned->link(root);
    ASSERT_TRUE(skinned->resetBones(root));
    for (RVMESH *node : {bone, other})
        node->setDisplayStatus(false);

    RAVOLT::begin3D(nullptr);
    recorder.start();
    root->pass();
    const Calls calls = recorder.stop().named(
        {"glPushMatrix", "glPopMatrix", "glLoadIdentity", "glTranslatef", "glGetFloatv"});
    const Calls skeleton{{"glPushMatrix"},
                         {"glLoadIdentity"},
                         {"glPushMatrix"},
                         {"glTranslatef", 1, 0, 0},
                         {"glPushMatrix"},
                         {"glTranslatef", 0, 4, 0},
                         {"glPushMatrix"},
                         {"glTranslatef", 0, 0, 5},
                         {"glGetFloatv", GL_MODELVIEW_MATRIX},
                         {"glPopMatrix"},
                         {"glPopMatrix"},
                         {"glPushMatrix"},
                         {"glTranslatef", 0, 0, 6},
                         {"glPopMatrix"},
                         {"glPushMatrix"},
                         {"glTranslatef", 0, 2, 0},
                         {"glPopMatrix"},
                         {"glPopMatrix"},
                         {"glPopMatrix"}};
    // Behind it, the pass leaves the mesh and the root.
    ASSERT_GE(calls.size(), skeleton.size() + 2);
    const auto end = calls.end() - 2;
    EXPECT_EQ(Calls(std::vector<Call>(end - static_cast<std::ptrdiff_t>(skeleton.size()), end)),
              skeleton);
    EXPECT_EQ(calls.count("glGetFloatv"), 2u); // the mesh itself, and one bone
    RVELEMENT::reset();
}

// The walk starts with the parent's own transform, from an identity: the pass around it, its
// matrix too, goes on as before.
TEST_F(ElementTest, SkeletonPassLeavesThePassAsItWas) {
    RVMESH *skinned = loadMesh(meshBody("skin", 1, {"bone"}));
    root->setPosition(1, 0, 0);
    skinned->setPosition(0, 2, 0);
    skinned->link(root);
    CustomProbe *after = custom();
    after->setPosition(0, 0, 3);
    RAVOLT::begin3D(nullptr);
    root->pass();
    EXPECT_TRUE(isNear(*skinned->getCachedMatrix(), ReferenceMatrix().translate(1, 2, 0)));
    EXPECT_TRUE(isNear(*after->getCachedMatrix(), ReferenceMatrix().translate(1, 0, 3)));
    RVELEMENT::reset();
}

// --- Order

TEST_F(ElementTest, SortIsFalseOnAnEmptyList) {
    RVELEMENT::reset();
    EXPECT_FALSE(RVELEMENT::sort3D());
    EXPECT_FALSE(RVELEMENT::sort2D());
    EXPECT_FALSE(RVELEMENT::sortLights(Z3MVECTOR3D(0, 0, 0)));
    custom();
    passAll();
    EXPECT_TRUE(RVELEMENT::sort3D());
    EXPECT_TRUE(RVELEMENT::sort2D());
    EXPECT_FALSE(RVELEMENT::sortLights(Z3MVECTOR3D(0, 0, 0)));
}

TEST_F(ElementTest, PassOrderStandsWithoutLightsAndTransparentEntries) {
    RVTEXTURE *red = new RVTEXTURE, *blue = new RVTEXTURE;
    MeshProbe *a = mesh(material(1, blue)), *b = mesh(material(1, red)),
              *c = mesh(material(1, blue));
    EXPECT_EQ(drawingOrder(), (Nodes{a, b, c}));
}

TEST_F(ElementTest, LightsComeFirstThenOpaqueThenTransparent) {
    MeshProbe *glass = mesh(material(0.5f));
    CustomProbe *node = custom();
    LightProbe *firstLight = light();
    MeshProbe *plain = mesh();
    LightProbe *secondLight = light();
    EXPECT_EQ(drawingOrder(), (Nodes{firstLight, secondLight, node, plain, glass}));
    ASSERT_EQ(RVELEMENT::getNumberOfLights(), 2u);
    EXPECT_EQ(RVELEMENT::getLight(0)->getNode(), firstLight);
    EXPECT_EQ(RVELEMENT::getLight(1)->getNode(), secondLight);
    EXPECT_EQ(RVELEMENT::getLight(2), nullptr);
}

TEST_F(ElementTest, OpaqueMeshesGoByTextureAndMaterial) {
    RVTEXTURE *red = new RVTEXTURE, *blue = new RVTEXTURE;
    // Made in an order in which the materials alone would part the two red ones.
    RVMATERIAL *redOne = material(1, red);
    RVMATERIAL *blueOne = material(1, blue);
    RVMATERIAL *redTwo = material(1, red);
    light();
    MeshProbe *a = mesh(redTwo), *b = mesh(blueOne), *c = mesh(redOne), *d = mesh(blueOne),
              *e = mesh(redTwo), *f = mesh(redOne);
    Nodes order = drawingOrder();
    order.erase(order.begin());
    EXPECT_EQ(order, (Nodes{c, f, a, e, b, d}));
}

TEST_F(ElementTest, TransparentEntriesGoFromBackToFront) {
    MeshProbe *near = mesh(material(0.5f), -2);
    CustomProbe *node = custom(-50);
    MeshProbe *far = mesh(material(0.5f), -20);
    HelperProbe *middle = helper(-10, 1);
    EXPECT_EQ(drawingOrder(), (Nodes{node, far, middle, near}));
}

// The far end counts: the place minus the radius.
// Each sort leaves its keys in the table.
TEST_F(ElementTest, OneTransparentEntryIsNotSortedByDepth) {
    helper(-5);
    custom(-1);
    drawingOrder();
    EXPECT_EQ(ravolt::orderedEntries[0].entry->getNode()->getType(), RV_NODE_TYPE_CUSTOM);
    helper(-6);
    drawingOrder();
    EXPECT_EQ(ravolt::orderedEntries[0].entry->getNode()->getType(), RV_NODE_TYPE_HELPER);
}

TEST_F(ElementTest, RadiusTakesPartInTheDepth) {
    HelperProbe *small = helper(-10, 1);
    HelperProbe *large = helper(-5, 7);
    EXPECT_EQ(drawingOrder(), (Nodes{large, small}));
    large->setRadius(5);
    EXPECT_EQ(drawingOrder(), (Nodes{small, large}));
    RVMESH *mesh20 = loadMesh(meshBody("glass", 20));
    mesh20->setMaterial(material(0.5f));
    mesh20->setPosition(0, 0, -1);
    mesh20->link(root);
    passAll();
    EXPECT_TRUE(RVELEMENT::sort3D());
    EXPECT_EQ(drawingOrder(), (Nodes{small, large})); // the mesh itself draws, and before them
}

TEST_F(ElementTest, HelperIsTransparentWhateverItsAlpha) {
    HelperProbe *node = helper(0);
    node->setColor(1, 1, 1, 1);
    CustomProbe *opaque = custom();
    EXPECT_EQ(drawingOrder(), (Nodes{opaque, node}));
}

// Made by an application, which may use the type.
class EmitterNode : public RVNODE {
  public:
    EmitterNode() { type = RV_NODE_TYPE_EMITTER; }
};

TEST_F(ElementTest, NodesOfTheTypeOfEmittersAreTransparent) {
    using EmitterProbe = Probe<EmitterNode>;
    EmitterProbe *near = place(new EmitterProbe(drawn), 0, 0, -3);
    HelperProbe *middle = helper(-6);
    EmitterProbe *far = place(new EmitterProbe(drawn), 0, 0, -9);
    CustomProbe *opaque = custom(-1);
    EXPECT_EQ(drawingOrder(), (Nodes{opaque, far, middle, near})) << "back to front";
}

// Counted in the pass: two take part in the sort by depth.
TEST_F(ElementTest, TwoNodesOfTheTypeOfEmittersAreSortedByDepth) {
    using EmitterProbe = Probe<EmitterNode>;
    EmitterProbe *near = place(new EmitterProbe(drawn), 0, 0, -3);
    EmitterProbe *far = place(new EmitterProbe(drawn), 0, 0, -9);
    EXPECT_EQ(drawingOrder(), (Nodes{far, near}));
    far->unlink();
    delete far;
    EXPECT_EQ(drawingOrder(), (Nodes{near}));
}

TEST_F(ElementTest, NaNAndInfiniteDepthsHaveTheirPlace) {
    constexpr float infinity = std::numeric_limits<float>::infinity();
    constexpr float nan = std::numeric_limits<float>::quiet_NaN();
    Nodes all;
    for (int number = 0; number < 200; ++number) {
        const float depth[] = {nan, -1.0f * static_cast<float>(number), infinity, -infinity};
        all.push_back(helper(depth[number % 4]));
    }
    Nodes order = drawingOrder();
    std::sort(order.begin(), order.end());
    std::sort(all.begin(), all.end());
    EXPECT_EQ(order, all);
}

TEST_F(ElementTest, FullListOfTransparentEntriesIsSorted) {
    std::mt19937 random(7);
    for (int number = 0; number < 4096; ++number)
        helper(-1.0f * static_cast<float>(random() % 1000));
    drawingOrder();
    ASSERT_EQ(drawn.size(), 4096u);
    EXPECT_TRUE(std::is_sorted(drawn.begin(), drawn.end(), [](const Drawn &a, const Drawn &b) {
        return a.matrix.e[14] < b.matrix.e[14];
    }));
}

TEST_F(ElementTest, OrderOf2DIsThatOfThePass) {
    CustomProbe *a = custom(-1), *b = custom(-9), *c = custom(-5);
    drawFrame2D(root);
    Nodes order;
    for (const Drawn &drawing : drawn)
        order.push_back(drawing.node);
    EXPECT_EQ(order, (Nodes{a, b, c}));
}

TEST_F(ElementTest, SortLightsPutsExclusiveOnesFirstThenTheNearest) {
    LightProbe *far = light(-30), *exclusive = light(-90), *near = light(-10),
               *exclusiveToo = light(-80);
    custom(-20);
    exclusive->setExclusive(true);
    exclusiveToo->setExclusive(true);
    passAll();
    RVELEMENT::sort3D();
    EXPECT_TRUE(RVELEMENT::sortLights(Z3MVECTOR3D(0, 0, 0)));
    const auto lights = [] {
        Nodes nodes;
        for (unsigned int index = 0; index < RVELEMENT::getNumberOfLights(); ++index)
            nodes.push_back(RVELEMENT::getLight(index)->getNode());
        return nodes;
    };
    EXPECT_EQ(lights(), (Nodes{exclusiveToo, exclusive, near, far}));
    EXPECT_EQ(RVELEMENT::getLight(2)->getDistance(), 10);
    EXPECT_EQ(RVELEMENT::getLight(3)->getDistance(), 30);
    EXPECT_TRUE(RVELEMENT::sortLights(Z3MVECTOR3D(3, 0, -34)));
    EXPECT_EQ(lights(), (Nodes{exclusiveToo, exclusive, far, near}));
    EXPECT_EQ(RVELEMENT::getLight(2)->getDistance(), 5);
}

// --- No allocation

TEST_F(ElementTest, PassAndSortAllocateNothing) {
    for (int number = 0; number < 300; ++number) {
        helper(-1.0f * static_cast<float>(number % 17));
        light(-1.0f * static_cast<float>(number % 13));
        mesh(material(number % 3 ? 1 : 0.5f));
    }
    passAll();
    RVELEMENT::sort3D();
    const unsigned long before = recorder.allocations();
    passAll();
    RVELEMENT::sort3D();
    RVELEMENT::sortLights(Z3MVECTOR3D(1, 2, 3));
    EXPECT_EQ(recorder.allocations(), before);
}

} // namespace
