// The effects on meshes, with their lights, materials and programs: where shadows fall, computed
// here from the geometry alone, and what the passes leave for each other.

#include "ravolt/RAVOLT.h"
#include "ravolt/RVCAMERA.h"
#include "ravolt/RVFBO.h"
#include "ravolt/RVLIGHT.h"
#include "ravolt/RVMATERIAL.h"
#include "ravolt/RVMESH.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVSHADER.h"
#include "ravolt/RVTEXTURE.h"
#include "tests/engine/resetEffects.h"
#include "tests/models/modelScenes.h"
#include "tests/pictures/cubes.h"
#include "tests/support/engineFixture.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string>
#include <vector>

namespace ravolt::test {
namespace {

// The cube that casts, from -1 to 1 about its centre, larger or smaller by a margin.
struct Box {
    Z3MVECTOR3D centre;
    float margin = 0;

    // Whether the way from one place to another one meets it.
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

// The place on the floor, y = 0, that a pixel shows, counted from the top left; and the eye.
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

class MeshEffects : public EngineTest {
  protected:
    RVCAMERA *camera = nullptr;

    MeshEffects() {
        settings.setShaders(true);
        settings.setShadowMapSize(512);
    }

    void SetUp() override {
        EngineTest::SetUp();
        camera = new RVCAMERA;
    }

    void TearDown() override {
        resetEffects();
        RAVOLT::setSkybox(nullptr);
        EngineTest::TearDown();
    }
};

// --- where shadows fall

// A cube over a floor. The shadowed colour is that of the ambient light alone: the material's 0.2
// by the light's 0.2 and the scene's 0.2.
constexpr Pixel shadowed{20, 20, 20};

class ShadowsOnTheFloor : public MeshEffects {
  protected:
    RVNODE *root = nullptr;

    void SetUp() override {
        MeshEffects::SetUp();
        root =
            loadScene({{coloured("paint", {0.8f, 0.8f, 0.8f, 1})},
                       rootOver({placed(squareMesh("floor", "paint", 20), {0, 0, 0}, {-90, 0, 0}),
                                 cubeMesh("box", "paint")})});
        camera->setPosition(0, 7, 9);
        camera->setRotation(-38, 0, 0);
    }

    RVLIGHT *newCaster(Z3MVECTOR3D place, Z3MVECTOR3D target) {
        auto *light = new RVLIGHT;
        light->setLightType(RV_LIGHT_TYPE_SPOT);
        light->setPosition(place.x, place.y, place.z);
        Z3MVECTOR3D way = target - place;
        way.normalize();
        light->setDirection(way);
        light->setCutOff(35);
        light->setShadowNearPlane(2);
        light->setShadowFarPlane(40);
        light->castShadows(true);
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

    Picture frameWithoutShadows() {
        RAVOLT::shadowingOff();
        const Picture picture = frame();
        RAVOLT::shadowingOn();
        return picture;
    }

    // Each pixel of the floor, but those at the edges of the shadow: dark where the box that cast
    // stands before the light, and elsewhere as without shadows.
    static void expectShadow(const Picture &picture, const Picture &plain, const Z3MVECTOR3D &light,
                             const Z3MVECTOR3D &casting, const Z3MVECTOR3D &standing) {
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

TEST_P(ShadowOfALight, FallsWhereTheGeometrySays) {
    const Placing &at = GetParam();
    camera->setRotation(-38, at.turn, 0);
    markLog();
    newCaster(at.light, at.target);
    moveBox(at.box);
    const Picture plain = frameWithoutShadows();
    expectShadow(frame(), plain, at.light, at.box, at.box);
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

// The light stands under a turned and moved node, and shines along its own -x.
TEST_F(ShadowsOnTheFloor, OfALightUnderATurnedNodeFallWhereTheGeometrySays) {
    RAVOLT::shadowingOn();
    RVLIGHT *light = newCaster({0, 0, 0}, {-1, 0, 0});
    auto *arm = new RVNODE;
    light->unlink();
    light->link(arm);
    arm->link(root);
    const Z3MVECTOR3D place(-6, 11, 1);
    arm->setPosition(place.x, place.y, place.z);
    arm->setRotation(0, 170, 50);
    const Z3MVECTOR3D aim = light->getFinalMatrix(nullptr).rotate(Z3MVECTOR3D(-1, 0, 0));
    ASSERT_LT(aim.y, -0.5f) << "down";
    ASSERT_GT(aim.x, 0.3f) << "to the box";
    moveBox({0, 2, 0});
    const Picture plain = frameWithoutShadows();
    expectShadow(frame(), plain, place, {0, 2, 0}, {0, 2, 0});
}

TEST_F(ShadowsOnTheFloor, StayForOneFrameWhereTheMapWasKept) {
    const Z3MVECTOR3D light(-6, 11, 1), before(-1, 2, 1), after(1.5f, 2, -1);
    newCaster(light, {0, 0, 0});
    moveBox(before);
    const Picture plainBefore = frameWithoutShadows();
    expectShadow(frame(), plainBefore, light, before, before);

    moveBox(after);
    const Picture plainAfter = frameWithoutShadows();
    RAVOLT::skipShadowsGeneration();
    expectShadow(frame(), plainAfter, light, before, after);
    expectShadow(frame(), plainAfter, light, after, after);
}

TEST_F(ShadowsOnTheFloor, OfTwoCastersComeFromTheLaterOne) {
    const Z3MVECTOR3D left(-6, 11, 1), right(7, 11, 3), box(0, 2, 0);
    RVLIGHT *first = newCaster(left, {0, 0, 0});
    newCaster(right, {0, 0, 0});
    moveBox(box);
    Picture plain = frameWithoutShadows();
    expectShadow(frame(), plain, right, box, box);

    first->unlink();
    first->link(root); // passed last now
    plain = frameWithoutShadows();
    expectShadow(frame(), plain, left, box, box);

    first->castShadows(false);
    expectShadow(frame(), plain, right, box, box);
}

// The sky is far larger than the cone: in the map it would darken everything.
TEST_F(ShadowsOnTheFloor, DoNotComeFromTheSkybox) {
    const Z3MVECTOR3D light(-6, 11, 1), box(0, 2, 0);
    newCaster(light, {0, 0, 0});
    moveBox(box);
    const Picture plain = frameWithoutShadows();
    RVNODE *sky = loadScene({cubeMesh("sky", "paint")});
    RAVOLT::setSkybox(sky);
    expectShadow(frame(), plain, light, box, box);
}

// --- the offset of the map

// Each face once more from behind, as a two-sided material has it.
RveNode doubled(RveNode node) {
    RveMesh &mesh = node.mesh;
    const auto count = static_cast<std::uint16_t>(mesh.vertices.size());
    for (std::uint16_t index = 0; index < count; ++index) {
        mesh.vertices.push_back(mesh.vertices[index]);
        const RveVector &normal = mesh.normals[index];
        mesh.normals.push_back({-normal[0], -normal[1], -normal[2]});
        mesh.uvs.push_back(mesh.uvs[index]);
    }
    const std::size_t faces = mesh.faces.size();
    const auto behind = [count](std::uint16_t index) {
        return static_cast<std::uint16_t>(index + count);
    };
    for (std::size_t face = 0; face < faces; ++face) {
        const auto [a, b, c] = mesh.faces[face];
        mesh.faces.push_back({behind(a), behind(c), behind(b)});
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
        for (int y = 0; y < picture.height; ++y)
            for (int x = 0; x < picture.width; ++x)
                different += !pixelNear(picture.at(x, y), single.at(x, y), 8);
        return different / static_cast<double>(picture.width * picture.height);
    }

    void SetUp() override {
        ShadowsOnTheFloor::SetUp();
        RveNode floor = placed(squareMesh("floor2", "paint", 20), {0, 0, 0}, {-90, 0, 0});
        twice = loadScene({{coloured("paint", {0.8f, 0.8f, 0.8f, 1})},
                           rootOver({doubled(floor), doubled(cubeMesh("box2", "paint"))})});
        for (const char *box : {"box", "box2"}) {
            meshNamed(box)->setPosition(0, 2, 0);
            meshNamed(box)->setRotation(20, 30, 0);
        }
    }

    RVNODE *twice = nullptr;
};

TEST_F(ShadowsOfDoubledFaces, AreStripedWithoutAnOffsetAndThoseOfSingleFacesWithIt) {
    RAVOLT::shadowingOn();
    RVLIGHT *light = newCaster({-6, 11, 1}, {0, 0, 0});
    const Picture single = frame();
    light->unlink();
    light->link(twice);
    EXPECT_GT(shareThatDiffers(single), 0.1);
    RAVOLT::setShadowOffset(4, 8);
    EXPECT_LT(shareThatDiffers(single), 0.01);
}

// --- what the passes leave for each other

// The map is drawn without materials, and so must not leave one for applied.
TEST_F(MeshEffects, AMeshThatSharesItsMaterialWithTheSkyGetsItAfterTheMap) {
    RVNODE *root = loadScene(
        {{materialNamed("stone"), materialNamed("other")},
         rootOver({placed(squareMesh("wall", "stone"), {0, 0, -5}), squareMesh("sky", "other")})});
    RVMESH *sky = meshNamed("sky");
    sky->unlink();
    auto *holder = new RVNODE;
    sky->link(holder);
    auto *light = new RVLIGHT;
    light->setLightType(RV_LIGHT_TYPE_SPOT);
    light->setDirection(Z3MVECTOR3D(0, 0, -1));
    light->setCutOff(40);
    light->castShadows(true);
    light->link(root);
    RAVOLT::setSkybox(holder);
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

// Alpha of target 1 at the centre: the depth that was coded there.
float codedDepth() {
    const RVFBO *target = RVOPENGL::getFbo(1);
    std::vector<float> values(static_cast<std::size_t>(target->getSizeX() * target->getSizeY()) *
                              4);
    RVTEXTURE::texturingOff(RV_TEXTURE_UNITS);
    target->getTexture()->render(nullptr);
    glGetTexImage(GL_TEXTURE_2D, 0, GL_RGBA, GL_FLOAT, values.data());
    RVTEXTURE::texturingOff(RV_TEXTURE_UNITS);
    return values[static_cast<std::size_t>((24 * target->getSizeX() + 32) * 4 + 3)];
}

TEST_F(MeshEffects, TheFirstFrameCodesNoDepthSinceNoLightWasPickedYet) {
    RVNODE *root = loadScene(
        {{materialNamed("stone")}, rootOver({placed(squareMesh("wall", "stone"), {0, 0, -50})})});
    meshNamed("wall")->setPosition(0, 0, -3);
    auto *light = new RVLIGHT;
    light->link(root);
    RAVOLT::DOFOn();
    glColor4f(0, 0, 0, 1);
    drawFrame(camera, root);
    EXPECT_NEAR(codedDepth(), 1, 0.001);
    drawFrame(camera, root);
    EXPECT_NEAR(codedDepth(), (3 + RVOPENGL::getNearPlane()) / RVOPENGL::getFarPlane(), 1e-5);
}

} // namespace
} // namespace ravolt::test
