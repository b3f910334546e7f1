// The effects on meshes, with their lights, materials and programs: where shadows fall, computed
// here from the geometry alone, and how one pass affects the next.

#include "ravolt/RVMATERIAL.h"
#include "ravolt/RVMESH.h"
#include "tests/engine/effectsTest.h"
#include "tests/models/modelScenes.h"
#include "tests/pictures/cubes.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace ravolt::test {
namespace {

// The cube that casts, from -1 to 1 about its centre, larger or smaller by a margin.
struct Box {
    Z3MVECTOR3D centre;
    float margin = 0;

    // Whether the line from one point to another one meets it.
    bool isMetBetween(const Z3MVECTOR3D &from, const Z3MVECTOR3D &to) const {
        const float half = 1 + margin;
        const float start[] = {from.x - centre.x, from.y - centre.y, from.z - centre.z};
        const float way[] = {to.x - from.x, to.y - from.y, to.z - from.z};
        float enter = 0, leave = 1;
        for (int axis = 0; axis < 3; ++axis) {
            if (std::abs(way[axis]) < 1e-6f) {
                if (std::abs(start[axis]) > half)
                    return false;
                continue;
            }
            const float a = (-half - start[axis]) / way[axis], b = (half - start[axis]) / way[axis];
            enter = std::max(enter, std::min(a, b));
            leave = std::min(leave, std::max(a, b));
        }
        return enter <= leave;
    }
};

// The point on the floor, y = 0, that a pixel shows, counted from the top left; and the eye.
struct View {
    Z3MVECTOR3D eye;
    Z3MMATRIX toWorld;

    View() : toWorld(*RVCAMERA::getCameraMatrix()) {
        toWorld.invert();
        eye = toWorld.getTranslation();
    }

    bool floorAt(int x, int y, Z3MVECTOR3D &place) const {
        const float slope = std::tan(22.5f * 3.14159265f / 180), aspect = 128.0f / 96;
        const Z3MVECTOR3D way =
            toWorld.rotate(Z3MVECTOR3D(((static_cast<float>(x) + 0.5f) / 64 - 1) * slope * aspect,
                                       (1 - (static_cast<float>(y) + 0.5f) / 48) * slope, -1));
        if (way.y > -0.05f)
            return false;
        place = eye + way * (-eye.y / way.y);
        return true;
    }
};

// --- where shadows fall

// A cube over a floor. The shadowed colour is that of the ambient light alone: the material's 0.2
// by the light's 0.2 and the scene's 0.2.
constexpr Pixel shadowed{20, 20, 20};

class ShadowsOnTheFloor : public EffectsTest {
  protected:
    RVNODE *root = nullptr, *sky = nullptr;

    const Z3MVECTOR3D left{-6, 11, 1}, box{0, 2, 0};

    ShadowsOnTheFloor() { settings.setShadowMapSize(512); }

    void SetUp() override {
        EffectsTest::SetUp();
        if (IsSkipped())
            return;
        root =
            loadScene({{coloured("paint", {0.8f, 0.8f, 0.8f, 1})},
                       rootOver({placed(squareMesh("floor", "paint", 20), {0, 0, 0}, {-90, 0, 0}),
                                 cubeMesh("box", "paint")})});
        camera->setPosition(0, 7, 9);
        camera->setRotation(-38, 0, 0);
    }

    RVLIGHT *newCasterAt(Z3MVECTOR3D target, Z3MVECTOR3D position) {
        Z3MVECTOR3D direction = target - position;
        direction.normalize();
        RVLIGHT *light = newCaster(position, direction, 35, 2);
        light->link(root);
        return light;
    }

    static void moveBox(const Z3MVECTOR3D &place) {
        meshNamed("box")->setPosition(place.x, place.y, place.z);
    }

    Picture frame() {
        drawFrame(camera, root);
        return readFrame();
    }

    // Each pixel of the floor, but those at the edges of the shadow: dark where the casting box is
    // in the way of the light, and elsewhere as without shadows. `standing` is the box in the
    // picture.
    void expectShadow(const Z3MVECTOR3D &light, const Z3MVECTOR3D &casting,
                      const Z3MVECTOR3D &standing) {
        RAVOLT::shadowingOff();
        RAVOLT::setSkybox(nullptr);
        const Picture plain = frame();
        RAVOLT::shadowingOn();
        RAVOLT::setSkybox(sky);
        const Picture picture = frame();
        constexpr float edge = 0.12f; // four texels of the map, and what a pixel covers
        const View view;
        int dark = 0, lit = 0, wrong = 0;
        for (int y = 0; y < 96; ++y)
            for (int x = 0; x < 128; ++x) {
                Z3MVECTOR3D place;
                if (!view.floorAt(x, y, place) || Box{standing, edge}.isMetBetween(view.eye, place))
                    continue;
                const bool inShadow = Box{casting, -edge}.isMetBetween(place, light);
                if (inShadow != Box{casting, edge}.isMetBetween(place, light))
                    continue;
                const Pixel wanted = inShadow ? shadowed : plain.at(x, y);
                if (!pixelNear(picture.at(x, y), wanted, 2) && ++wrong <= 5)
                    ADD_FAILURE() << "at " << x << ", " << y << ", the place " << place.x << ", "
                                  << place.z << ": " << testing::PrintToString(picture.at(x, y))
                                  << " where it should be " << (inShadow ? "dark" : "lit");
                if (plain.at(x, y).red > 40)
                    ++(inShadow ? dark : lit);
            }
        EXPECT_EQ(wrong, 0);
        EXPECT_GT(dark, 150) << "pixels in a shadow that the light would reach";
        EXPECT_GT(lit, 1500) << "pixels that are lit";
    }
};

struct Placing {
    const char *name;
    Z3MVECTOR3D light, target, box;
    float turn = 0; // of the camera
};

class ShadowOfALight : public ShadowsOnTheFloor, public testing::WithParamInterface<Placing> {};

TEST_P(ShadowOfALight, FallsAtTheComputedPosition) {
    const Placing &at = GetParam();
    camera->setRotation(-38, at.turn, 0);
    markLog();
    newCasterAt(at.target, at.light);
    moveBox(at.box);
    expectShadow(at.light, at.box, at.box);
    EXPECT_NOTHING_LOGGED();
}

INSTANTIATE_TEST_SUITE_P(
    Placings, ShadowOfALight,
    testing::Values(Placing{"fromTheLeft", {-6, 11, 1}, {0, 0, 0}, {0, 2, 0}},
                    Placing{"fromTheRight", {7, 12, 2}, {0, 0, 0}, {0, 1.5f, 0}},
                    Placing{"fromBesideTheCamera", {6, 13, 9}, {-1, 0, 0}, {1, 3, 2}},
                    Placing{"fromTheFarSide", {-2, 12, -8}, {0, 0, 0}, {0, 2, -1}},
                    Placing{"aside", {3, 14, 5}, {-1, 0, -1}, {-1.5f, 3, 0}},
                    Placing{"atTheEdgeOfTheCone", {-6, 11, 1}, {3.5f, 0, -2}, {-1.5f, 1.5f, 2}},
                    Placing{"underATurnedCamera", {-5, 11, 4}, {0, 0, 0}, {0, 2, 0}, 12}),
    [](const auto &test) { return std::string(test.param.name); });

// The light is linked to a turned and moved node, and shines along its own -x.
TEST_F(ShadowsOnTheFloor, OfALightBelowARotatedNodeFallAtTheComputedPosition) {
    RVLIGHT *light = newCasterAt({-1, 0, 0}, {0, 0, 0});
    auto *arm = new RVNODE;
    light->unlink();
    light->link(arm);
    arm->link(root);
    arm->setPosition(left.x, left.y, left.z);
    arm->setRotation(0, 170, 50);
    const Z3MVECTOR3D aim = light->getFinalMatrix(nullptr).rotate(Z3MVECTOR3D(-1, 0, 0));
    ASSERT_LT(aim.y, -0.5f) << "down";
    ASSERT_GT(aim.x, 0.3f) << "to the box";
    moveBox(box);
    expectShadow(left, box, box);
}

TEST_F(ShadowsOnTheFloor, StayForOneFrameWhereTheMapWasKept) {
    const Z3MVECTOR3D before(-1, 2, 1), after(1.5f, 2, -1);
    newCasterAt({0, 0, 0}, left);
    moveBox(before);
    expectShadow(left, before, before);

    moveBox(after);
    RAVOLT::skipShadowsGeneration();
    expectShadow(left, before, after);
    expectShadow(left, after, after);
}

TEST_F(ShadowsOnTheFloor, OfTwoCastersComeFromTheLaterOne) {
    const Z3MVECTOR3D right(7, 11, 3);
    RVLIGHT *first = newCasterAt({0, 0, 0}, left);
    newCasterAt({0, 0, 0}, right);
    moveBox(box);
    expectShadow(right, box, box);
    first->unlink();
    first->link(root); // passed last now
    expectShadow(left, box, box);
    first->castShadows(false);
    expectShadow(right, box, box);
}

// The sky is far larger than the cone: in the map it would darken everything.
TEST_F(ShadowsOnTheFloor, DoNotComeFromTheSkybox) {
    newCasterAt({0, 0, 0}, left);
    moveBox(box);
    sky = loadScene({cubeMesh("sky", "paint")});
    expectShadow(left, box, box);
}

// --- the offset of the map

// Each face a second time as its back side, as a two-sided material has it.
RveNode doubled(RveNode node) {
    RveMesh &mesh = node.mesh;
    const std::size_t vertices = mesh.vertices.size(), faces = mesh.faces.size();
    for (std::size_t index = 0; index < vertices; ++index) {
        mesh.vertices.push_back(mesh.vertices[index]);
        const auto [x, y, z] = mesh.normals[index];
        mesh.normals.push_back({-x, -y, -z});
        mesh.uvs.push_back(mesh.uvs[index]);
    }
    const auto back = [vertices](std::uint16_t index) {
        return static_cast<std::uint16_t>(index + vertices);
    };
    for (std::size_t face = 0; face < faces; ++face) {
        const auto [a, b, c] = mesh.faces[face];
        mesh.faces.push_back({back(a), back(c), back(b)});
    }
    return node;
}

class ShadowsOfDoubledFaces : public ShadowsOnTheFloor {
  protected:
    // Of the pixels, those that differ from the picture of the same scene with faces doubled.
    double shareThatDiffers(const Picture &single) {
        drawFrame(camera, twice);
        const Picture picture = readFrame();
        int different = 0;
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x)
                different += !pixelNear(picture.at(x, y), single.at(x, y), 8);
        return different / double(width * height);
    }

    void SetUp() override {
        ShadowsOnTheFloor::SetUp();
        if (IsSkipped())
            return;
        RveNode floor = placed(squareMesh("floor2", "paint", 20), {0, 0, 0}, {-90, 0, 0});
        twice = loadScene({{coloured("paint", {0.8f, 0.8f, 0.8f, 1})},
                           rootOver({doubled(floor), doubled(cubeMesh("box2", "paint"))})});
        for (const char *name : {"box", "box2"}) {
            meshNamed(name)->setPosition(0, 2, 0);
            meshNamed(name)->setRotation(20, 30, 0);
        }
    }

    RVNODE *twice = nullptr;
};

TEST_F(ShadowsOfDoubledFaces, AreStripedWithoutAnOffsetAndThoseOfSingleFacesWithIt) {
    RAVOLT::shadowingOn();
    RVLIGHT *light = newCasterAt({0, 0, 0}, {-6, 11, 1});
    const Picture single = frame();
    light->unlink();
    light->link(twice);
    EXPECT_GT(shareThatDiffers(single), 0.1);
    RAVOLT::setShadowOffset(4, 8);
    EXPECT_LT(shareThatDiffers(single), 0.01);
}

// --- how one pass affects the next

class MeshEffects : public EffectsTest {};

// The map is drawn without materials, and so no material may count as applied after it.
TEST_F(MeshEffects, AMeshThatSharesItsMaterialWithTheSkyGetsItAfterTheMap) {
    RVNODE *root = loadScene(
        {{materialNamed("stone"), materialNamed("other")},
         rootOver({placed(squareMesh("wall", "stone"), {0, 0, -5}), squareMesh("sky", "other")})});
    RVMESH *sky = meshNamed("sky");
    sky->unlink();
    auto *skybox = new RVNODE;
    sky->link(skybox);
    newCaster({0, 0, 0}, {0, 0, -1})->link(root);
    RAVOLT::setSkybox(skybox);
    RAVOLT::shadowingOn();
    const auto programs = [&] {
        const Calls calls = callsOf([&] { drawFrame(camera, root); });
        return calls.named({"glUseProgramObjectARB", "glShadeModel", "glDrawElements"});
    };
    programs(); // the lights are picked
    const Calls apart = programs();
    sky->setMaterial(RVMATERIAL::findByName("stone"));
    EXPECT_EQ(programs(), apart);
    ASSERT_TRUE(apart.contains("glUseProgramObjectARB"));
}

TEST_F(MeshEffects, TheFirstFrameCodesNoDepthSinceNoLightWasPickedYet) {
    RVNODE *root = loadScene(
        {{materialNamed("stone")}, rootOver({placed(squareMesh("wall", "stone"), {0, 0, -50})})});
    meshNamed("wall")->setPosition(0, 0, -3);
    (new RVLIGHT)->link(root);
    RAVOLT::DOFOn();
    glColor4f(0, 0, 0, 1);
    const float coded = (3 + RVOPENGL::getNearPlane()) / RVOPENGL::getFarPlane();
    for (const auto &[depth, tolerance] : {std::pair{1.0f, 1e-3}, {coded, 1e-5}}) {
        drawFrame(camera, root);
        EXPECT_NEAR(texelOf(1, 32, 24)[3], depth, tolerance); // in alpha
    }
}

} // namespace
} // namespace ravolt::test
