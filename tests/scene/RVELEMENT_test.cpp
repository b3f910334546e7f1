// The render list: capacity, pass, clipping, skeletons and drawing order.

#include "ravolt/RVELEMENT.h"

#include "ravolt/RVCAMERA.h"
#include "ravolt/RVMATERIAL.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVSHADER.h"
#include "ravolt/RVTEXTURE.h"
#include "ravolt/zlf.h"
#include "scene/entryOrder.h"
#include "tests/scene/referenceMatrix.h"
#include "tests/scene/sceneProbes.h"
#include "tests/support/engineFixture.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>
#include <numeric>
#include <random>
#include <string>
#include <utility>
#include <vector>

using namespace ravolt::test;

namespace {

using EmitterProbe = Probe<TypedNode<RV_NODE_TYPE_EMITTER>>; // an application may use the type

unsigned int passed() { return RVELEMENT::getNumberOfPassedElements(); }

NodeList lights() {
    NodeList nodes;
    for (unsigned int index = 0; index < RVELEMENT::getNumberOfLights(); ++index)
        nodes.push_back(RVELEMENT::getLight(index)->getNode());
    EXPECT_EQ(RVELEMENT::getLight(RVELEMENT::getNumberOfLights()), nullptr);
    return nodes;
}

RVMATERIAL *material(float opacity = 1, RVTEXTURE *texture = nullptr) {
    RVMATERIAL *result = new RVMATERIAL;
    result->setTransparency(opacity);
    result->setTexture(0, texture);
    return result;
}

void erase(std::initializer_list<RVNODE *> nodes) {
    for (RVNODE *node : nodes) {
        node->unlink();
        delete node;
    }
}

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

    template <class Node> Node *place(Node *node, float z = 0, RVNODE *parent = nullptr) {
        node->setPosition(0, 0, z);
        node->link(parent ? parent : root);
        return node;
    }
    template <class Node> Node *probe(float z = 0, RVNODE *parent = nullptr) {
        return place(new Node(drawn), z, parent);
    }
    CustomProbe *custom(float z = 0, RVNODE *parent = nullptr) {
        return probe<CustomProbe>(z, parent);
    }
    LightProbe *light(float z = 0) { return probe<LightProbe>(z); }
    HelperProbe *helper(float z, float radius = 0) {
        HelperProbe *node = probe<HelperProbe>(z);
        node->setRadius(radius);
        return node;
    }
    MeshProbe *mesh(RVMATERIAL *material = nullptr, float z = 0) {
        MeshProbe *node = probe<MeshProbe>(z);
        node->setMaterial(material);
        return node;
    }
    MeshProbe *hiddenMesh() {
        MeshProbe *node = mesh();
        node->setDisplayStatus(false);
        return node;
    }
    RVMESH *loaded(const Bytes &body, float z = 0, RVNODE *parent = nullptr) {
        return place(loadMesh(body), z, parent);
    }

    // A frame's list, without drawing it; the number of its entries.
    unsigned int passAll() {
        RVELEMENT::reset();
        glLoadIdentity();
        root->pass();
        return passed();
    }

    // The nodes in the order in which a frame draws them.
    NodeList drawingOrder() {
        drawn.clear();
        drawFrame(nullptr, root);
        return nodesOf(drawn);
    }

    // The nodes that are drawn after `change` has been made to the passed list.
    template <class Change> NodeList drawingOrderAfter(Change change) {
        RAVOLT::begin3D(nullptr);
        root->pass();
        change();
        RAVOLT::end3D(true);
        return nodesOf(drawn);
    }

    RVNODE *root = nullptr;
    Drawings drawn;
};

// --- Storage

TEST_F(ElementTest, CapacityIsTheRequestedOneUpTo4096) {
    for (const auto &[requested, expected] : {std::pair{0u, 4096u},
                                              {5000u, 4096u},
                                              {4097u, 4096u},
                                              {4294967295u, 4096u},
                                              {1u, 1u},
                                              {4096u, 4096u}}) {
        ASSERT_TRUE(RVELEMENT::free());
        EXPECT_TRUE(RVELEMENT::init(requested));
        EXPECT_EQ(RVELEMENT::getNumberOfElements(), expected);
        EXPECT_LOGGED_EXACTLY("   " + std::to_string(expected) + " elements allocated\n");
    }
    EXPECT_TRUE(RVELEMENT::isActive());
    EXPECT_FALSE(RVELEMENT::init(7)) << "a second time";
    EXPECT_LOGGED_EXACTLY("   [!] Already active @ RVELEMENT::init\n");
    EXPECT_EQ(RVELEMENT::getNumberOfElements(), 4096u);
}

TEST_F(ElementTest, FreeEmptiesTheListAndFailsASecondTime) {
    light();
    passAll();
    EXPECT_EQ(lights().size(), 1u);
    EXPECT_TRUE(RVELEMENT::free());
    EXPECT_FALSE(RVELEMENT::isActive());
    EXPECT_EQ(RVELEMENT::getNumberOfElements(), 0u);
    EXPECT_EQ(RVELEMENT::getLight(0), nullptr);
    EXPECT_FALSE(RVELEMENT::sort3D());
    EXPECT_FALSE(RVELEMENT::sort2D());
    EXPECT_FALSE(RVELEMENT::sortLights(Z3MVECTOR3D(0, 0, 0)));
    EXPECT_FALSE(RVELEMENT::free());
    EXPECT_NOTHING_LOGGED();
    EXPECT_FALSE(RVELEMENT::pass(custom(), true));
    EXPECT_LOGGED("   [!] Scene too complex @ RVELEMENT::pass");
}

// The entries are made first, then their order.
TEST_F(ElementTest, InitWithoutMemoryForEitherArrayReleasesBoth) {
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
    EXPECT_EQ(passAll(), 2u);
    EXPECT_EQ(lights().size(), 1u);
    RVELEMENT::reset();
    EXPECT_EQ(passed(), 0u);
    EXPECT_EQ(lights(), NodeList());
}

TEST_F(ElementTest, NewEntryIsEmpty) {
    RVELEMENT entry, other;
    EXPECT_EQ(entry.getNode(), nullptr);
    EXPECT_TRUE(isNear(*entry.getMatrix(), ReferenceMatrix(), 0));
    entry.setParam1(9);
    EXPECT_EQ(entry.getParam1(), 9u);
    entry.setNearestLight(3, &other);
    EXPECT_EQ(entry.getNearestLight(3), &other);
    EXPECT_EQ(entry.getNearestLight(0), nullptr);
    entry.setNearestLight(4, &other);
    EXPECT_EQ(entry.getNearestLight(4), nullptr) << "there are four";
    EXPECT_EQ(entry.getParam1(), 9u) << "the field after them";
}

// --- Pass

TEST_F(ElementTest, PassOfNullIsRefused) {
    EXPECT_FALSE(RVELEMENT::pass(nullptr, true));
    EXPECT_LOGGED_EXACTLY("   [!] Invalid params @ RVELEMENT::pass\n");
}

TEST_F(ElementTest, PlainNodesHaveNoEntry) {
    RVNODE *plain = place(new RVNODE);
    plain->setPosition(1, 2, 3);
    CustomProbe *child = custom(0, plain);
    child->setPosition(10, 0, 0);
    child->setAuxId(42);
    EXPECT_EQ(drawingOrder(), NodeList{child});
    EXPECT_EQ(passed(), 1u);
    EXPECT_TRUE(isNear(drawn[0].matrix, ReferenceMatrix().translate(11, 2, 3)));
    EXPECT_EQ(drawn[0].auxId, 42u);
}

TEST_F(ElementTest, ListHasTheNodesInTheOrderOfThePass) {
    CustomProbe *a = custom();
    MeshProbe *b = mesh();
    CustomProbe *c = custom(), *child = custom(0, a);
    EXPECT_EQ(drawingOrder(), (NodeList{a, child, b, c}));
}

TEST_F(ElementTest, HiddenMeshHasNoEntryUnlikeItsChildren) {
    MeshProbe *hidden = hiddenMesh();
    CustomProbe *child = custom(0, hidden), *unlinked = new CustomProbe(drawn);
    EXPECT_EQ(drawingOrder(), NodeList{child});
    const int stamp = static_cast<int>(RAVOLT::getTimeStamp());
    for (const RVNODE *node : NodeList{root, hidden, child})
        EXPECT_EQ(node->getTimeStamp(), stamp) << node->getName();
    EXPECT_EQ(unlinked->getTimeStamp(), 0);
    hidden->setDisplayStatus(true);
    EXPECT_EQ(drawingOrder(), (NodeList{hidden, child}));
}

TEST_F(ElementTest, CachedMatrixOfAHiddenMeshIsStale) {
    MeshProbe *node = mesh(nullptr, -3);
    drawingOrder();
    node->setPosition(0, 0, -9);
    node->setDisplayStatus(false);
    drawingOrder();
    EXPECT_EQ(node->getCachedMatrix()->e[14], -3);
}

TEST_F(ElementTest, EmptySlotsAmongTheChildrenAreSkipped) {
    place(loadNode<RVNODE>(plainNodeBody("parent", 2)));
    CustomProbe *next = custom();
    EXPECT_EQ(drawingOrder(), NodeList{next});
    EXPECT_NOTHING_LOGGED();
}

// --- Nodes with the fields of another class

// Memory in which every unwritten field is true.
struct Filled {
    Filled() { std::memset(bytes, 1, sizeof bytes); }
    RVNODE *copyOf(const RVNODE &node) { return new (bytes) RVNODE(node); }
    alignas(RVMESH) unsigned char bytes[sizeof(RVMESH) + sizeof(RVLIGHT)];
};

TEST_F(ElementTest, CopyOfAMeshAsANodeIsNoMesh) {
    Filled memory;
    RVNODE *copy = memory.copyOf(*loadMesh(meshBody("skin", 500, {"bone"})));
    EXPECT_EQ(copy->getType(), RV_NODE_TYPE_MESH);
    RAVOLT::begin3D(nullptr);
    copy->pass(); // a mesh would be hidden, by the memory
    EXPECT_NOTHING_LOGGED();
    EXPECT_EQ(passed(), 1u);
    RAVOLT::end3D(true);
    copy->setPosition(0, 0, -200);
    RVELEMENT::clippingOn();
    RAVOLT::begin3D(nullptr);
    copy->pass(); // has no radius
    EXPECT_EQ(passed(), 0u);
    EXPECT_LOGGED_EXACTLY(" (clipped) skin at distance 200.00\n");
    copy->~RVNODE();
}

TEST_F(ElementTest, CopyOfALightAsANodeIsNoLight) {
    Filled memory;
    RVNODE *copy = memory.copyOf(*light());
    copy->setPosition(0, 0, -9);
    LightProbe *near = light(-1);
    RAVOLT::begin3D(nullptr);
    copy->pass();
    near->pass();
    RVELEMENT::sortLights(Z3MVECTOR3D(0, 0, 0));
    EXPECT_EQ(lights(), (NodeList{near, copy})); // a light would be exclusive
    copy->~RVNODE();
    EXPECT_EQ(lights(), NodeList{near});
}

TEST_F(ElementTest, AssignmentDoesNotChangeTheClassOfANode) {
    RVMESH *plainMesh = loadMesh(meshBody("rock", 3));
    plainMesh->setMaterial(material(0.5f));
    for (const RVNODE *source : NodeList{plainMesh, new RVLIGHT, new RVHELPER})
        *place(new RVNODE) = *source;
    mesh(material());
    RVELEMENT::clippingOn();
    RVLIGHT::lightingOn();
    EXPECT_EQ(drawingOrder().size(), 1u);
    EXPECT_EQ(passed(), 4u);
    RVLIGHT::lightingOff();
    EXPECT_NOTHING_LOGGED();
}

// The mesh reads the type of the light of its entry.
TEST_F(ElementTest, MeshIsDrawnUnderALightThatIsAPlainNode) {
    *place(new RVNODE) = *new RVLIGHT;
    loaded(meshBody("rock", 3))->setMaterial(material());
    RVLIGHT::lightingOn();
    drawFrame(nullptr, root);
    RVLIGHT::lightingOff();
    EXPECT_EQ(passed(), 2u);
}

TEST_F(ElementTest, CopiesAsTheirOwnClassHaveItsTraits) {
    RVMESH meshCopy(*hiddenMesh());
    RVLIGHT *exclusive = new RVLIGHT;
    exclusive->setExclusive(true);
    RVLIGHT lightCopy(*exclusive);
    HelperProbe helperCopy(*helper(0, 50));
    lightCopy.setPosition(0, 0, -9);
    helperCopy.setPosition(0, 0, -200);
    LightProbe *near = light(-1);

    RVELEMENT::clippingOn();
    RAVOLT::begin3D(nullptr);
    for (RVNODE *node : std::initializer_list<RVNODE *>{near, &lightCopy, &helperCopy, &meshCopy})
        node->pass();
    EXPECT_EQ(passed(), 3u);
    RVELEMENT::sort3D();
    RVELEMENT::sortLights(Z3MVECTOR3D(0, 0, 0));
    EXPECT_EQ(lights(), (NodeList{&lightCopy, near}));
    EXPECT_NOTHING_LOGGED();
}

TEST_F(ElementTest, SubclassOfAMeshMayBeACustomNode) {
    class CustomMesh : public RVMESH {
      public:
        CustomMesh() { type = RV_NODE_TYPE_CUSTOM; }
    };
    auto *node = probe<Probe<CustomMesh>>(-500);
    node->setDisplayStatus(false);
    RVELEMENT::clippingOn();
    EXPECT_EQ(drawingOrder(), NodeList{node});
    EXPECT_NOTHING_LOGGED();
}

// --- Nodes that are deleted while the list refers to them

TEST_F(ElementTest, DeletedNodesAreRemovedAndTheOthersStayInOrder) {
    CustomProbe *a = custom(-1), *b = custom(-2), *c = custom(-3), *d = custom(-4);
    CustomProbe *late = nullptr;
    const NodeList order = drawingOrderAfter([&] {
        erase({b, d});
        EXPECT_EQ(passed(), 2u);
        late = custom(-5);
        late->pass();
    });
    EXPECT_EQ(order, (NodeList{a, c, late}));
    EXPECT_EQ(drawn[0].matrix.e[14], -1);
    EXPECT_EQ(drawn[1].matrix.e[14], -3);
}

TEST_F(ElementTest, DeletedLightsAndTransparentNodesAreNotCounted) {
    LightProbe *lamp = light(-1), *otherLamp = light(-2);
    CustomProbe *opaque = custom(-5);
    HelperProbe *deleted = helper(-7), *glass = helper(-9);
    MeshProbe *window = mesh(material(0.5f), -8);
    const NodeList order = drawingOrderAfter([&] {
        RVELEMENT::sort3D();
        erase({lamp, deleted, window});
        EXPECT_EQ(passed(), 3u);
        EXPECT_EQ(lights(), NodeList{otherLamp});
    });
    EXPECT_EQ(order, (NodeList{otherLamp, opaque, glass}));
}

// Whatever the time stamp is: copied from another node, or never set.
TEST_F(ElementTest, NodesOfAnyTimeStampAreRemoved) {
    CustomProbe *assigned = new CustomProbe(drawn), *entered = new CustomProbe(drawn);
    const NodeList order = drawingOrderAfter([&] {
        assigned->pass();
        assigned->pass(); // two entries
        static_cast<RVNODE &>(*assigned) = *root;
        EXPECT_TRUE(RVELEMENT::pass(entered, true));
        {
            CustomProbe copy(*entered);
            copy.pass();
            EXPECT_EQ(passed(), 4u);
        }
        EXPECT_EQ(passed(), 3u);
        delete assigned;
        EXPECT_EQ(passed(), 1u);
        delete entered;
        EXPECT_EQ(passed(), 0u);
    });
    EXPECT_EQ(order, NodeList());
}

TEST_F(ElementTest, ANodeMayDeleteOthersAndItselfWhileItIsDrawn) {
    class Deleter : public CustomProbe {
      public:
        using CustomProbe::CustomProbe;
        bool render(void *entry) override {
            CustomProbe::render(entry);
            for (RVNODE *victim : std::exchange(victims, {}))
                erase({victim});
            return true;
        }
        std::vector<RVNODE *> victims;
    };
    CustomProbe *first = custom(), *second = custom();
    Deleter *deleter = probe<Deleter>();
    CustomProbe *third = custom(), *fourth = custom(), *fifth = custom();
    deleter->victims = {fourth};
    EXPECT_EQ(drawingOrder(), (NodeList{first, second, deleter, third, fifth}));
    deleter->victims = {first};
    EXPECT_EQ(drawingOrder(), (NodeList{first, second, deleter, third, fifth}));
    deleter->victims = {second, third, deleter};
    EXPECT_EQ(drawingOrder(), (NodeList{second, deleter, fifth}));
    EXPECT_EQ(drawingOrder(), NodeList{fifth});
}

// --- Capacity

TEST_F(ElementTest, NodesBeyondTheCapacityAreDropped) {
    ASSERT_TRUE(RVELEMENT::free());
    ASSERT_TRUE(RVELEMENT::init(2));
    CustomProbe *a = custom(), *b = custom(), *dropped = custom();
    custom(0, dropped);
    markLog();
    EXPECT_EQ(drawingOrder(), (NodeList{a, b}));
    EXPECT_LOGGED_EXACTLY("   [!] Scene too complex @ RVELEMENT::pass\n");
    EXPECT_FALSE(RVELEMENT::pass(dropped, true));
    EXPECT_LOGGED("   [!] Scene too complex @ RVELEMENT::pass");
    EXPECT_TRUE(dropped->pass(true));
    EXPECT_EQ(passed(), 2u);
}

// --- Clipping

TEST_F(ElementTest, ClippingIsOffByDefaultWithARadiusOf128) {
    EXPECT_EQ(RVELEMENT::getClippingRadius(), 128);
    helper(-1e6f);
    EXPECT_EQ(passAll(), 1u);
}

TEST_F(ElementTest, ClipsHelpersBeyondTheRadiusAndTwiceTheirOwn) {
    HelperProbe *node = helper(-200, 36);
    node->setName("far %d");
    RVELEMENT::clippingOn();
    EXPECT_EQ(drawingOrder(), NodeList{node}); // 128 + 72 is not less than 200
    EXPECT_NOTHING_LOGGED();
    node->setRadius(35.5f);
    EXPECT_EQ(drawingOrder(), NodeList());
    EXPECT_LOGGED_EXACTLY(" (clipped) far %d at distance 200.00\n");
    node->setPosition(3, 0, -4);
    RVELEMENT::setClippingRadius(-67);
    EXPECT_EQ(drawingOrder(), NodeList());
    EXPECT_LOGGED_EXACTLY(" (clipped) far %d at distance 5.00\n");
    RVELEMENT::clippingOff();
    EXPECT_EQ(drawingOrder(), NodeList{node});
}

TEST_F(ElementTest, ClipsMeshesByTheirRadius) {
    RVMESH *node = loaded(meshBody("rock", 10), -149);
    RVELEMENT::clippingOn();
    EXPECT_EQ(passAll(), 0u);
    EXPECT_LOGGED_EXACTLY(" (clipped) rock at distance 149.00\n");
    node->setPosition(0, -147, 0);
    EXPECT_EQ(passAll(), 1u);
}

TEST_F(ElementTest, ClipsByTheDistanceFromTheEye) {
    RVCAMERA camera;
    camera.setPosition(0, 0, -1000);
    HelperProbe *node = helper(-1010);
    RVELEMENT::clippingOn();
    drawFrame(&camera, root);
    EXPECT_EQ(passed(), 1u);
    EXPECT_EQ(node->getCachedMatrix()->e[14], -10);
}

TEST_F(ElementTest, ClippedMeshStillTestsItsChildren) {
    MeshProbe *far = mesh(nullptr, -500);
    HelperProbe *near = probe<HelperProbe>(490, far);
    RVELEMENT::clippingOn();
    EXPECT_EQ(drawingOrder(), NodeList{near});
    EXPECT_EQ(far->getTimeStamp(), static_cast<int>(RAVOLT::getTimeStamp()));
}

TEST_F(ElementTest, LightsCamerasAndCustomNodesAreNeverClipped) {
    const NodeList far = {light(-5000), probe<Probe<RVCAMERA>>(-5000), custom(-5000)};
    RVELEMENT::clippingOn();
    EXPECT_EQ(drawingOrder(), far);
    EXPECT_NOTHING_LOGGED();
}

// --- Skeletons

TEST_F(ElementTest, PassSkeletonRefusesNull) {
    RVMESH *skinned = new RVMESH;
    EXPECT_FALSE(RVELEMENT::passSkeleton(nullptr, skinned));
    EXPECT_FALSE(RVELEMENT::passSkeleton(skinned, nullptr));
    EXPECT_LOGGED_TIMES(2, "   [!] Invalid params @ RVELEMENT::skeletonPass");
}

// A skinned mesh, with the geometry of another one, that records its slots in the cache and whether
// it was drawn.
class SkinProbe : public RVMESH {
  public:
    using RVMESH::RVMESH;
    explicit SkinProbe(const RVMESH &original) : RVMESH(original) {}
    bool render(void *entry) override {
        slots.push_back(static_cast<RVELEMENT *>(entry)->getParam1());
        results.push_back(RVMESH::render(entry));
        return results.back();
    }

    std::vector<unsigned int> slots;
    std::vector<bool> results;
};

TEST_F(ElementTest, TheSkinnedMeshBeyondTheCacheHasTheNumber256AndIsNotDrawn) {
    RVMESH *original = loaded(meshBody("skin", 1, {"bone"}));
    ASSERT_TRUE(original->resetBones(root));
    SkinProbe skin(*original);
    RAVOLT::begin3D(nullptr);
    for (unsigned int number = 0; number < 257; ++number)
        skin.pass();
    markLog();
    RAVOLT::end3D(true);
    EXPECT_LOGGED_EXACTLY("   [!] Animation not computed (cache full) @ RVMESH::animate\n");
    std::vector<unsigned int> slots(257);
    std::iota(slots.begin(), slots.end(), 0u);
    std::vector<bool> results(257, true);
    results.back() = false;
    EXPECT_EQ(skin.slots, slots);
    EXPECT_EQ(skin.results, results);
}

TEST_F(ElementTest, SkeletonPassSucceedsAlsoWhenTheCacheIsFull) {
    RVMESH *skinned = loaded(meshBody("skin", 1, {"bone"}));
    ASSERT_TRUE(skinned->resetBones(root));
    RAVOLT::begin3D(nullptr);
    for (unsigned int number = 0; number < 2; ++number) {
        EXPECT_TRUE(RVELEMENT::passSkeleton(root, skinned)) << number;
        for (unsigned int mesh = 0; mesh < 256; ++mesh)
            skinned->pass();
    }
    EXPECT_EQ(passed(), 512u) << "the skeleton's pass adds none";
    RVELEMENT::reset();
}

TEST_F(ElementTest, SkinnedRootHasNoSkeletonSpace) {
    RVMESH *skinned = loadMesh(meshBody("skin", 1, {"bone"}));
    RAVOLT::begin3D(nullptr);
    skinned->pass();
    EXPECT_LOGGED_EXACTLY("   [!] Invalid params @ RVELEMENT::skeletonPass\n");
    EXPECT_EQ(passed(), 1u);
    RVELEMENT::reset();
}

// The matrices of the bones are tested where they skin a mesh. The pass itself, its matrix too,
// continues as before; the calls of OpenGL's matrix stack may be absent.
TEST_F(ElementTest, SkeletonPassDoesNotChangeThePass) {
    root->setPosition(1, 0, 0);
    RVNODE *joint = place(new RVNODE);
    joint->setPosition(0, 4, 0);
    RVMESH *bone = loaded(meshBody("bone", 1), 5, joint);
    RVMESH *other = loaded(meshBody("other", 1), 6);
    RVMESH *skinned = loaded(meshBody("skin", 1, {"nobody", "bone"}));
    skinned->setPosition(0, 2, 0);
    ASSERT_TRUE(skinned->resetBones(root));
    for (RVMESH *node : {bone, other})
        node->setDisplayStatus(false);

    RAVOLT::begin3D(nullptr);
    EXPECT_EQ(callsOf([&] { root->pass(); }).text(), "glGetFloatv(GL_MODELVIEW_MATRIX)\n");

    RVELEMENT::reset();
    CustomProbe *next = custom(3);
    root->pass();
    EXPECT_TRUE(isNear(*skinned->getCachedMatrix(), ReferenceMatrix().translate(1, 2, 0)));
    EXPECT_TRUE(isNear(*next->getCachedMatrix(), ReferenceMatrix().translate(1, 0, 3)));
    RVELEMENT::reset();
}

// --- Order

TEST_F(ElementTest, SortFailsOnAnEmptyList) {
    RVELEMENT::reset();
    for (const bool filled : {false, true}) {
        EXPECT_EQ(RVELEMENT::sort3D(), filled);
        EXPECT_EQ(RVELEMENT::sort2D(), filled);
        EXPECT_FALSE(RVELEMENT::sortLights(Z3MVECTOR3D(0, 0, 0)));
        custom();
        passAll();
    }
}

TEST_F(ElementTest, PassOrderIsUnchangedWithoutLightsAndTransparentEntries) {
    RVTEXTURE *red = new RVTEXTURE, *blue = new RVTEXTURE;
    const NodeList meshes = {mesh(material(1, blue)), mesh(material(1, red)),
                             mesh(material(1, blue))};
    EXPECT_EQ(drawingOrder(), meshes);
}

TEST_F(ElementTest, LightsComeFirstThenOpaqueThenTransparent) {
    MeshProbe *glass = mesh(material(0.5f));
    CustomProbe *node = custom();
    LightProbe *firstLight = light();
    MeshProbe *plain = mesh();
    LightProbe *secondLight = light();
    EXPECT_EQ(drawingOrder(), (NodeList{firstLight, secondLight, node, plain, glass}));
    EXPECT_EQ(lights(), (NodeList{firstLight, secondLight}));
}

TEST_F(ElementTest, OpaqueMeshesAreSortedByTextureAndMaterial) {
    RVTEXTURE *red = new RVTEXTURE, *blue = new RVTEXTURE;
    // Made in an order in which the materials alone would separate the two red ones.
    RVMATERIAL *redOne = material(1, red), *blueOne = material(1, blue), *redTwo = material(1, red);
    LightProbe *lamp = light();
    MeshProbe *a = mesh(redTwo), *b = mesh(blueOne), *c = mesh(redOne), *d = mesh(blueOne),
              *e = mesh(redTwo), *f = mesh(redOne);
    EXPECT_EQ(drawingOrder(), (NodeList{lamp, c, f, a, e, b, d}));
}

TEST_F(ElementTest, TransparentEntriesAreSortedFromBackToFront) {
    MeshProbe *near = mesh(material(0.5f), -2);
    CustomProbe *node = custom(-50);
    MeshProbe *far = mesh(material(0.5f), -20);
    HelperProbe *middle = helper(-10, 1);
    EmitterProbe *back = probe<EmitterProbe>(-30), *front = probe<EmitterProbe>(-1);
    EXPECT_EQ(drawingOrder(), (NodeList{node, back, far, middle, near, front}));
}

// Each sort writes its keys into the table.
TEST_F(ElementTest, OneTransparentEntryIsNotSortedByDepth) {
    helper(-5);
    custom(-1);
    drawingOrder();
    EXPECT_EQ(ravolt::orderedEntries[0].entry->getNode()->getType(), RV_NODE_TYPE_CUSTOM);
    helper(-6);
    drawingOrder();
    EXPECT_EQ(ravolt::orderedEntries[0].entry->getNode()->getType(), RV_NODE_TYPE_HELPER);
}

// The far end counts: the position minus the radius.
TEST_F(ElementTest, RadiusIsPartOfTheDepth) {
    HelperProbe *small = helper(-10, 1);
    HelperProbe *large = helper(-5, 7);
    EXPECT_EQ(drawingOrder(), (NodeList{large, small}));
    large->setRadius(5);
    EXPECT_EQ(drawingOrder(), (NodeList{small, large}));
    loaded(meshBody("glass", 20), -1)->setMaterial(material(0.5f));
    passAll();
    EXPECT_TRUE(RVELEMENT::sort3D());
    EXPECT_EQ(drawingOrder(), (NodeList{small, large})); // the mesh itself draws, and before them
}

TEST_F(ElementTest, HelperIsTransparentWhateverItsAlpha) {
    HelperProbe *node = helper(0);
    node->setColor(1, 1, 1, 1);
    CustomProbe *opaque = custom();
    EXPECT_EQ(drawingOrder(), (NodeList{opaque, node}));
}

// Counted in the pass: two are sorted by depth.
TEST_F(ElementTest, TwoNodesOfTheTypeOfEmittersAreSortedByDepth) {
    EmitterProbe *near = probe<EmitterProbe>(-3), *far = probe<EmitterProbe>(-9);
    EXPECT_EQ(drawingOrder(), (NodeList{far, near}));
    erase({far});
    EXPECT_EQ(drawingOrder(), NodeList{near});
}

TEST_F(ElementTest, NodesOfNaNAndInfiniteDepthsAreAllDrawn) {
    using Limits = std::numeric_limits<float>;
    NodeList all;
    for (int number = 0; number < 200; ++number) {
        const float depth[] = {Limits::quiet_NaN(), -1.0f * static_cast<float>(number),
                               Limits::infinity(), -Limits::infinity()};
        all.push_back(helper(depth[number % 4]));
    }
    NodeList order = drawingOrder();
    std::sort(order.begin(), order.end());
    std::sort(all.begin(), all.end());
    EXPECT_EQ(order, all);
}

TEST_F(ElementTest, FullListOfTransparentEntriesIsSorted) {
    std::mt19937 random(7);
    for (int number = 0; number < 4096; ++number)
        helper(-1.0f * static_cast<float>(random() % 1000));
    EXPECT_EQ(drawingOrder().size(), 4096u);
    EXPECT_TRUE(std::is_sorted(drawn.begin(), drawn.end(), [](const Drawn &a, const Drawn &b) {
        return a.matrix.e[14] < b.matrix.e[14];
    }));
}

TEST_F(ElementTest, OrderOf2DIsThatOfThePass) {
    const NodeList nodes = {custom(-1), custom(-9), custom(-5)};
    drawFrame2D(root);
    EXPECT_EQ(nodesOf(drawn), nodes);
}

// The identifiers below `next` that are free, so that `next` is that of the next object.
class ReservedIds {
  public:
    explicit ReservedIds(unsigned int next) {
        while (ids.empty() || ids.back() + 1 < next)
            ids.push_back(zlfNewId());
    }
    ReservedIds(const ReservedIds &) = delete;
    ReservedIds &operator=(const ReservedIds &) = delete;
    ~ReservedIds() {
        for (const unsigned int id : ids)
            releaseId(id);
    }

  private:
    std::vector<unsigned int> ids;
};

class StateOrderTest : public ElementTest {
  protected:
    StateOrderTest() { RVELEMENT::stateOrderOn(); }
    ~StateOrderTest() override { RVELEMENT::stateOrderOff(); }

    MeshProbe *meshOf(RVTEXTURE *texture, RVSHADER *program) {
        RVMATERIAL *made = material(1, texture);
        made->setShader(program);
        return mesh(made);
    }
};

TEST_F(ElementTest, StateOrderIsOffByDefault) { EXPECT_FALSE(RVELEMENT::isStateOrdered()); }

TEST_F(StateOrderTest, IsByProgramThenTextureThenMaterial) {
    auto *red = new RVTEXTURE, *blue = new RVTEXTURE;
    auto *first = new RVSHADER, *second = new RVSHADER;
    RVMATERIAL *shared = material(1, red);
    MeshProbe *a = meshOf(blue, second), *b = meshOf(red, second), *c = meshOf(blue, first);
    MeshProbe *d = meshOf(red, first), *e = mesh(shared), *f = mesh(), *g = meshOf(red, nullptr);
    MeshProbe *h = mesh(shared);
    EXPECT_EQ(drawingOrder(), (NodeList{f, e, h, g, d, c, b, a}));
    RVELEMENT::stateOrderOff();
    EXPECT_EQ(drawingOrder(), (NodeList{a, b, c, d, e, f, g, h}));
}

// A bit of the texture's identifier that has no room is not one of the program's.
TEST_F(StateOrderTest, IsByProgramWithLargeIdentifiers) {
    const ReservedIds below(1025);
    auto *program = new RVSHADER;
    const ReservedIds between(4097);
    auto *texture = new RVTEXTURE;
    ASSERT_EQ(program->getId(), 1025u);
    ASSERT_EQ(texture->getId(), 4097u);
    MeshProbe *a = meshOf(texture, nullptr), *b = meshOf(texture, program);
    MeshProbe *c = meshOf(texture, nullptr);
    EXPECT_EQ(drawingOrder(), (NodeList{a, c, b}));
}

TEST_F(StateOrderTest, IsThatOfOpaqueMeshesAlone) {
    auto *red = new RVTEXTURE, *blue = new RVTEXTURE;
    MeshProbe *farGlass = mesh(material(0.5f, blue), -9), *last = meshOf(blue, nullptr);
    MeshProbe *nearGlass = mesh(material(0.5f, red), -3), *first = meshOf(red, nullptr);
    CustomProbe *node = custom(), *otherNode = custom();
    LightProbe *lamp = light(), *otherLamp = light();
    EXPECT_EQ(drawingOrder(),
              (NodeList{lamp, otherLamp, node, otherNode, first, last, farGlass, nearGlass}));
}

TEST_F(StateOrderTest, AllocatesNothing) {
    for (int number = 0; number < 300; ++number)
        mesh(material(number % 3 ? 1 : 0.5f));
    passAll();
    const unsigned long before = recorder.allocations();
    RVELEMENT::sort3D();
    EXPECT_EQ(recorder.allocations(), before);
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
    EXPECT_EQ(lights(), (NodeList{exclusiveToo, exclusive, near, far}));
    EXPECT_EQ(RVELEMENT::getLight(2)->getDistance(), 10);
    EXPECT_EQ(RVELEMENT::getLight(3)->getDistance(), 30);
    EXPECT_TRUE(RVELEMENT::sortLights(Z3MVECTOR3D(3, 0, -34)));
    EXPECT_EQ(lights(), (NodeList{exclusiveToo, exclusive, far, near}));
    EXPECT_EQ(RVELEMENT::getLight(2)->getDistance(), 5);
}

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
