// The OpenGL state of the lights that are chosen for an object.

#include "ravolt/RVELEMENT.h"
#include "ravolt/RVLIGHT.h"
#include "ravolt/RVOPENGL.h"
#include "tests/scene/sceneProbes.h"
#include "tests/support/engineFixture.h"
#include "tests/support/expectNear.h"

#include <cmath>

using namespace ravolt::test;

namespace {

using Numbers = std::vector<float>;

// The first or the last calls of a sequence.
Calls firstOf(const Calls &calls, std::size_t count) {
    return Calls(std::vector<Call>(
        calls.begin(), calls.begin() + static_cast<std::ptrdiff_t>(std::min(count, calls.size()))));
}
Calls lastOf(const Calls &calls, std::size_t count) {
    return Calls(std::vector<Call>(
        calls.end() - static_cast<std::ptrdiff_t>(std::min(count, calls.size())), calls.end()));
}

class LightShading : public EngineTest {
  protected:
    void SetUp() override {
        EngineTest::SetUp();
        root = new RVNODE;
        RVLIGHT::lightingOn();
        for (GLenum slot = GL_LIGHT0; slot <= GL_LIGHT7; ++slot)
            glDisable(slot);
    }
    void TearDown() override {
        RVLIGHT::lightingOff();
        EngineTest::TearDown();
    }

    RVLIGHT *makeLight(float x = 0, float y = 0, float z = 0,
                       RV_LIGHT_TYPE type = RV_LIGHT_TYPE_OMNI) {
        RVLIGHT *light = new RVLIGHT;
        light->setPosition(x, y, z);
        light->setLightType(type);
        light->link(root);
        return light;
    }
    RVLIGHT *makeSpot(float y = 0) { return makeLight(0, y, 0, RV_LIGHT_TYPE_SPOT); }

    // The list of a frame seen from (0, 0, 10), lights first; its first entry.
    RVELEMENT *collect() {
        RVELEMENT::reset();
        glLoadIdentity();
        glTranslatef(0, 0, -10);
        root->pass();
        RVELEMENT::sort3D();
        return RVELEMENT::getLight(0);
    }

    void activate() {
        collect();
        EXPECT_TRUE(RVLIGHT::activateNearest(&object));
    }

    static Numbers valuesOf(GLenum name, std::size_t count, GLenum slot = GL_LIGHT0) {
        Numbers values(4, -99);
        glGetLightfv(slot, name, values.data());
        values.resize(count);
        return values;
    }
    static Numbers position(GLenum slot = GL_LIGHT0) { return valuesOf(GL_POSITION, 4, slot); }
    static Numbers direction() { return valuesOf(GL_SPOT_DIRECTION, 3); }
    static float valueOf(GLenum name) { return valuesOf(name, 1)[0]; }

    // The nodes of the object's nearest lights.
    NodeList nearest() const {
        NodeList nodes;
        for (unsigned int slot = 0; slot < 4; ++slot)
            if (const RVELEMENT *light = object.getNearestLight(slot))
                nodes.push_back(light->getNode());
        return nodes;
    }

    RVNODE *root = nullptr;
    RVELEMENT object;
};

TEST_F(LightShading, ColorsAttenuationAndExponentReachOpenGL) {
    RVLIGHT *light = makeLight();
    light->setAmbient(0.1f, 0.2f, 0.3f, 0.4f);
    light->setDiffuse(0.5f, 0.6f, 0.7f, 0.8f);
    light->setSpecular(0.9f, 0.8f, 0.7f, 0.6f);
    light->setAttenuation(0.5f, 0.25f, 0.125f);
    light->setExponent(12);
    activate();
    EXPECT_TRUE(glIsEnabled(GL_LIGHT0));
    EXPECT_FALSE(glIsEnabled(GL_LIGHT1));
    expectNear(valuesOf(GL_AMBIENT, 4), {0.1f, 0.2f, 0.3f, 0.4f});
    expectNear(valuesOf(GL_DIFFUSE, 4), {0.5f, 0.6f, 0.7f, 0.8f});
    expectNear(valuesOf(GL_SPECULAR, 4), {0.9f, 0.8f, 0.7f, 0.6f});
    EXPECT_EQ(valueOf(GL_CONSTANT_ATTENUATION), 0.5f);
    EXPECT_EQ(valueOf(GL_LINEAR_ATTENUATION), 0.25f);
    EXPECT_EQ(valueOf(GL_QUADRATIC_ATTENUATION), 0.125f);
    EXPECT_EQ(valueOf(GL_SPOT_EXPONENT), 12);
    EXPECT_NOTHING_LOGGED();
}

TEST_F(LightShading, SetUpIsInItsOrder) {
    RVLIGHT *light = makeSpot();
    light->setCutOff(30);
    light->setExponent(12);
    light->setAttenuation(0.5f, 0.25f, 0.125f);
    light->setDirection(0, 0, -1);
    RVELEMENT *entry = collect();
    RVLIGHT::lightingOff();
    entry->setParam1(2);
    EXPECT_EQ(firstOf(callsOf([&] { light->render(entry); }), 13).text(),
              "glEnable(GL_LIGHTING)\nglEnable(GL_LIGHT2)\n"
              "glLightfv(GL_LIGHT2, GL_AMBIENT, 0.200000003, 0.200000003, 0.200000003, 1)\n"
              "glLightfv(GL_LIGHT2, GL_DIFFUSE, 0.699999988, 0.699999988, 0.699999988, 1)\n"
              "glLightfv(GL_LIGHT2, GL_SPECULAR, 0.200000003, 0.200000003, 0.200000003, 1)\n"
              "glLightf(GL_LIGHT2, GL_SPOT_CUTOFF, 30)\n"
              "glLightf(GL_LIGHT2, GL_SPOT_EXPONENT, 12)\n"
              "glLightf(GL_LIGHT2, GL_CONSTANT_ATTENUATION, 0.5)\n"
              "glLightf(GL_LIGHT2, GL_LINEAR_ATTENUATION, 0.25)\n"
              "glLightf(GL_LIGHT2, GL_QUADRATIC_ATTENUATION, 0.125)\n"
              "glLoadMatrixf(1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, -10, 1)\n"
              "glLightfv(GL_LIGHT2, GL_POSITION, 0, 0, 0, 1)\n"
              "glLightfv(GL_LIGHT2, GL_SPOT_DIRECTION, 0, 0, -1)\n");
    EXPECT_TRUE(RVLIGHT::getLighting());

    light->setRotation(10, 20, 30);
    const Calls calls = callsOf([&] { light->render(entry); }).named({"glRotatef", "glLightfv"});
    EXPECT_EQ(lastOf(calls, 5).text().find("glRotatef(10, 1, 0, 0)\nglRotatef(20, 0, 1, 0)\n"
                                           "glRotatef(30, 0, 0, 1)\n"
                                           "glLightfv(GL_LIGHT2, GL_POSITION, 0, 0, 0, 1)\n"
                                           "glLightfv(GL_LIGHT2, GL_SPOT_DIRECTION"),
              0u);
}

// An omnidirectional light is at its position in eye space and has no cone, a directional one comes
// from against its direction, and a spot shines along it.
TEST_F(LightShading, EachTypeHasItsPositionDirectionAndCone) {
    const struct {
        RV_LIGHT_TYPE type;
        Numbers position, direction;
        float cutOff;
    } rows[] = {
        {RV_LIGHT_TYPE_OMNI, {1, 2, -6, 1}, {0, 0, 0}, 180},
        {RV_LIGHT_TYPE_DIRECTIONAL, {-0.5, 1, -0.25, 0}, {0, 0, 0}, 180},
        {RV_LIGHT_TYPE_SPOT, {1, 2, -6, 1}, {0.5, -1, 0.25}, 25},
    };
    RVLIGHT *light = makeLight(1, 2, 3);
    light->setOrigin(0, 0, 1);
    light->setDirection(0.5, -1, 0.25);
    light->setCutOff(25);
    for (const auto &row : rows) {
        SCOPED_TRACE(row.type);
        light->setLightType(row.type);
        activate();
        expectNear(position(), row.position);
        expectNear(direction(), row.direction);
        EXPECT_EQ(valueOf(GL_SPOT_CUTOFF), row.cutOff);
    }
    light->setCutOff(180);
    activate();
    EXPECT_EQ(valueOf(GL_SPOT_CUTOFF), 180) << "a spot by default";
}

TEST_F(LightShading, RotationOfALightIsAppliedTwice) {
    RVLIGHT *spot = makeSpot();
    spot->setDirection(1, 0, 0);
    spot->setRotation(0, 0, 30);
    activate();
    const float twice = 60 * 3.14159265f / 180;
    expectNear(direction(), {std::cos(twice), std::sin(twice), 0});
    spot->setLightType(RV_LIGHT_TYPE_DIRECTIONAL);
    activate();
    expectNear(position(), {-std::cos(twice), -std::sin(twice), 0, 0});
}

TEST_F(LightShading, UnknownTypeIsLoggedAndTheLightIsEnabled) {
    makeLight(1, 2, 3, static_cast<RV_LIGHT_TYPE>(7))->setName("odd");
    activate();
    EXPECT_LOGGED_EXACTLY("   [!] Consistency broken: unknow type for odd @ RVLIGHT::render\n");
    EXPECT_TRUE(glIsEnabled(GL_LIGHT0));
    EXPECT_EQ(nearest().size(), 1u);
}

// --- Targets

TEST_F(LightShading, PointsAtItsTarget) {
    RVLIGHT *light = makeSpot(10);
    light->setDirection(3, 0, 0);
    light->setTarget(0, 10, 5);
    activate();
    EXPECT_EQ(light->getDirection(), Z3MVECTOR3D(3, 0, 0)) << "without a target node";
    light->setTargetNode(light);
    activate();
    expectNear(direction(), {0, 0, 1});
    EXPECT_EQ(light->getDirection(), Z3MVECTOR3D(0, 0, 1));
    light->setTarget(0, 10, 0);
    activate();
    EXPECT_EQ(light->getDirection(), Z3MVECTOR3D(0, 0, 0)) << "at its own position";

    Z3MMATRIX matrix;
    matrix.setTranslation(0, -10, 0);
    light->setMatrix(matrix);
    light->setPositioning(RV_NODE_POSITIONING_MATRIX);
    light->setTarget(-4, -10, 0);
    activate();
    EXPECT_EQ(light->getDirection(), Z3MVECTOR3D(-1, 0, 0)) << "from the matrix";
}

TEST_F(LightShading, PointsAtAnotherNodeInItsFinalPosition) {
    RVNODE *parent = new RVNODE, *node = new RVNODE;
    parent->setPosition(0, 0, 100);
    node->setPosition(3, 0, 0);
    node->link(parent);
    RVLIGHT *light = makeLight(3, 7, 100);
    light->setTargetNode(node);
    activate();
    EXPECT_EQ(light->getDirection(), Z3MVECTOR3D(0, -1, 0));
}

// --- Choice

TEST_F(LightShading, NearestFourOfFiveReachTheObject) {
    RVLIGHT *light[5];
    for (int index = 0; index < 5; ++index)
        light[index] = makeLight(std::vector<float>{50, 10, 40, 20, 30}[std::size_t(index)]);
    object.getMatrix()->setTranslation(0, 0, -10);
    activate();
    EXPECT_EQ(nearest(), (NodeList{light[1], light[3], light[4], light[2]}));
    for (GLenum slot = 0; slot < 4; ++slot) {
        EXPECT_EQ(object.getNearestLight(slot)->getParam1(), slot);
        expectNear(position(GL_LIGHT0 + slot), {10.0f * static_cast<float>(slot + 1), 0, -10, 1});
        EXPECT_TRUE(glIsEnabled(GL_LIGHT0 + slot));
    }
    EXPECT_FALSE(glIsEnabled(GL_LIGHT4));

    object.getMatrix()->setTranslation(60, 0, -10);
    EXPECT_TRUE(RVLIGHT::activateNearest(&object));
    EXPECT_EQ(nearest(), (NodeList{light[0], light[2], light[4], light[3]}));
    light[1]->setExclusive(true);
    EXPECT_TRUE(RVLIGHT::activateNearest(&object));
    EXPECT_EQ(nearest(), (NodeList{light[1], light[0], light[2], light[4]})) << "always chosen";
}

TEST_F(LightShading, SlotsBeyondTheLightsAreUnchanged) {
    RVLIGHT *first = makeLight(1), *second = makeLight(2);
    activate();
    EXPECT_EQ(nearest(), (NodeList{first, second}));
    const RVELEMENT *stale = object.getNearestLight(1);
    delete (second->unlink(), second);
    activate();
    EXPECT_EQ(object.getNearestLight(0)->getNode(), first);
    EXPECT_EQ(object.getNearestLight(1), stale);
    EXPECT_TRUE(glIsEnabled(GL_LIGHT1));
}

TEST_F(LightShading, NothingIsChangedWithLightingOff) {
    makeLight();
    collect();
    RVLIGHT::lightingOff();
    EXPECT_EQ(callsOf([&] { EXPECT_FALSE(RVLIGHT::activateNearest(&object)); }), Calls());
    EXPECT_EQ(nearest(), NodeList());
    EXPECT_NOTHING_LOGGED();
}

TEST_F(LightShading, UnsortedListIsAConsistencyError) {
    RVELEMENT::reset();
    EXPECT_TRUE(RVLIGHT::activateNearest(&object)) << "an empty list is none";
    (new CustomNode)->link(root);
    makeLight();
    root->pass(); // and no sort: the custom node is the first entry
    EXPECT_FALSE(RVLIGHT::activateNearest(&object));
    EXPECT_LOGGED_EXACTLY("   [!] Consistency error: invalid object passed as light @ "
                          "RVLIGHT::activateNearest\n");
    EXPECT_EQ(nearest(), NodeList());
}

// Its type is that of a light, but its class lights itself where it is drawn.
TEST_F(LightShading, AMeshAssignedFromALightIsAConsistencyError) {
    RVLIGHT *light = makeLight();
    auto *mesh = new RVMESH;
    static_cast<RVNODE &>(*mesh) = *static_cast<RVNODE *>(light);
    mesh->link(root);
    collect();
    ASSERT_TRUE(RVELEMENT::getLight(0));
    markLog();
    EXPECT_FALSE(RVLIGHT::activateNearest(&object) && RVLIGHT::activateNearest(&object));
    EXPECT_LOGGED("   [!] Consistency error: invalid object passed as light @ "
                  "RVLIGHT::activateNearest");
}

// --- The switch, and the shape

TEST_F(LightShading, LightingIsACachedSwitch) {
    RVLIGHT::lightingOff();
    EXPECT_EQ(callsOf([] {
                  RVLIGHT::lightingOn();
                  RVLIGHT::lightingOn();
                  EXPECT_TRUE(RVLIGHT::getLighting());
                  RVLIGHT::lightingOff();
                  RVLIGHT::lightingOff();
                  EXPECT_FALSE(RVLIGHT::getLighting());
              }),
              (Calls{{"glEnable", GL_LIGHTING}, {"glDisable", GL_LIGHTING}}));
}

TEST_F(LightShading, EachSetUpDrawsAPyramidInTheDiffuseColor) {
    RVLIGHT *light = makeLight(1, 2, 3);
    light->setRotation(0, 0, 45);
    light->setDiffuse(0.25, 0.5, 0.75, 1);
    const float *matrix = collect()->getMatrix()->e;
    Call load("glLoadMatrixf", std::vector<double>(matrix, matrix + 16));
    const std::string corners = "glVertex3fv(0, 2, 0)\nglVertex3fv(2, -2, -2)\n"
                                "glVertex3fv(-2, -2, -2)\nglVertex3fv(0, 2, 0)\n"
                                "glVertex3fv(2, -2, 2)\nglVertex3fv(-2, -2, 2)\n"
                                "glVertex3fv(0, 2, 0)\nglVertex3fv(2, -2, 2)\n"
                                "glVertex3fv(2, -2, -2)\nglVertex3fv(0, 2, 0)\n"
                                "glVertex3fv(-2, -2, 2)\nglVertex3fv(-2, -2, -2)\n";
    const Calls calls = callsOf([&] { EXPECT_TRUE(RVLIGHT::activateNearest(&object)); });
    EXPECT_EQ(lastOf(calls, 18).text(),
              "glDisable(GL_LIGHTING)\n" + Calls{load}.text() +
                  "glColor4fv(0.25, 0.5, 0.75, 1)\nglBegin(GL_LINE_STRIP)\n" + corners +
                  "glEnd()\nglEnable(GL_LIGHTING)\n");
    EXPECT_EQ(callsOf([&] { RVLIGHT::activateNearest(&object); }).count("glBegin"), 1u)
        << "for every lit object";
}

TEST_F(LightShading, MarkersCanBeHidden) {
    RVLIGHT *light = makeLight(1, 2, 3);
    RVELEMENT *entry = collect();
    EXPECT_TRUE(RVLIGHT::isShowingMarkers()) << "by default";
    const Calls shown = callsOf([&] { light->render(entry); });
    RVLIGHT::markersOff();
    EXPECT_FALSE(RVLIGHT::isShowingMarkers());
    const Calls hidden = callsOf([&] { EXPECT_TRUE(light->render(entry)); });
    EXPECT_EQ(hidden, firstOf(shown, shown.size() - 18)) << "all but the marker's calls";
    EXPECT_FALSE(hidden.contains("glBegin"));
    EXPECT_TRUE(RVLIGHT::getLighting());
    RVLIGHT::markersOn();
    EXPECT_EQ(callsOf([&] { light->render(entry); }), shown);
}

// An entry that a skinned mesh had in an earlier frame has no number of a light.
TEST_F(LightShading, NumberBeyondOpenGLsLightsProgramsNone) {
    RVLIGHT *light = makeLight();
    RVELEMENT *entry = collect();
    for (const unsigned int number : {8u, 256u, 4294967295u}) {
        entry->setParam1(number);
        const Calls calls = callsOf([&] { EXPECT_TRUE(light->render(entry)); });
        EXPECT_FALSE(calls.contains("glLightfv"));
        EXPECT_TRUE(calls.contains(Call("glBegin", GL_LINE_STRIP)));
    }
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
}

} // namespace
