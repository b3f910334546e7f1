// Lights as OpenGL holds them after they were picked for an object.

#include "ravolt/RVELEMENT.h"
#include "ravolt/RVLIGHT.h"
#include "ravolt/RVOPENGL.h"
#include "tests/scene/sceneProbes.h"
#include "tests/support/engineFixture.h"
#include "tests/support/expectNear.h"

#include <array>
#include <cmath>
#include <vector>

using namespace ravolt::test;

namespace {

using Numbers = std::vector<float>;

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

    RVLIGHT *makeLight(float x = 0, float y = 0, float z = 0) {
        RVLIGHT *light = new RVLIGHT;
        light->setPosition(x, y, z);
        light->link(root);
        return light;
    }

    // The list of a frame seen from (0, 0, 10), lights in front.
    void collect() {
        RVELEMENT::reset();
        glLoadIdentity();
        glTranslatef(0, 0, -10);
        root->pass();
        RVELEMENT::sort3D();
    }

    bool activate() {
        collect();
        return RVLIGHT::activateNearest(&object);
    }

    static Numbers lightValues(GLenum slot, GLenum name, std::size_t count) {
        Numbers values(4, -99);
        glGetLightfv(slot, name, values.data());
        values.resize(count);
        return values;
    }
    static Numbers place(GLenum slot = GL_LIGHT0) { return lightValues(slot, GL_POSITION, 4); }
    static Numbers direction(GLenum slot = GL_LIGHT0) {
        return lightValues(slot, GL_SPOT_DIRECTION, 3);
    }
    static float value(GLenum name, GLenum slot = GL_LIGHT0) {
        return lightValues(slot, name, 1)[0];
    }

    std::vector<const RVNODE *> picked() const {
        std::vector<const RVNODE *> nodes;
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
    EXPECT_TRUE(activate());
    EXPECT_TRUE(glIsEnabled(GL_LIGHT0));
    EXPECT_FALSE(glIsEnabled(GL_LIGHT1));
    expectNear(lightValues(GL_LIGHT0, GL_AMBIENT, 4), {0.1f, 0.2f, 0.3f, 0.4f});
    expectNear(lightValues(GL_LIGHT0, GL_DIFFUSE, 4), {0.5f, 0.6f, 0.7f, 0.8f});
    expectNear(lightValues(GL_LIGHT0, GL_SPECULAR, 4), {0.9f, 0.8f, 0.7f, 0.6f});
    EXPECT_EQ(value(GL_CONSTANT_ATTENUATION), 0.5f);
    EXPECT_EQ(value(GL_LINEAR_ATTENUATION), 0.25f);
    EXPECT_EQ(value(GL_QUADRATIC_ATTENUATION), 0.125f);
    EXPECT_EQ(value(GL_SPOT_EXPONENT), 12);
    EXPECT_NOTHING_LOGGED();
}

TEST_F(LightShading, SetUpFollowsItsOrder) {
    RVLIGHT *light = makeLight();
    light->setLightType(RV_LIGHT_TYPE_SPOT);
    light->setCutOff(30);
    light->setExponent(12);
    light->setAttenuation(0.5f, 0.25f, 0.125f);
    light->setDirection(0, 0, -1);
    collect();
    RVLIGHT::lightingOff();
    RVELEMENT *entry = RVELEMENT::getLight(0);
    entry->setParam1(2);
    const Calls calls = callsOf([&] { light->render(entry); });
    ASSERT_GE(calls.size(), 13u);
    EXPECT_EQ(Calls(std::vector<Call>(calls.begin(), calls.begin() + 13)),
              (Calls{{"glEnable", GL_LIGHTING},
                     {"glEnable", GL_LIGHT2},
                     {"glLightfv", GL_LIGHT2, GL_AMBIENT, 0.2f, 0.2f, 0.2f, 1},
                     {"glLightfv", GL_LIGHT2, GL_DIFFUSE, 0.7f, 0.7f, 0.7f, 1},
                     {"glLightfv", GL_LIGHT2, GL_SPECULAR, 0.2f, 0.2f, 0.2f, 1},
                     {"glLightf", GL_LIGHT2, GL_SPOT_CUTOFF, 30},
                     {"glLightf", GL_LIGHT2, GL_SPOT_EXPONENT, 12},
                     {"glLightf", GL_LIGHT2, GL_CONSTANT_ATTENUATION, 0.5},
                     {"glLightf", GL_LIGHT2, GL_LINEAR_ATTENUATION, 0.25},
                     {"glLightf", GL_LIGHT2, GL_QUADRATIC_ATTENUATION, 0.125},
                     {"glLoadMatrixf", 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, -10, 1},
                     {"glLightfv", GL_LIGHT2, GL_POSITION, 0, 0, 0, 1},
                     {"glLightfv", GL_LIGHT2, GL_SPOT_DIRECTION, 0, 0, -1}}));
}

// An omnidirectional light stands at its place in eye space and has no cone, a directional one
// comes from against its direction, and a spot shines along it.
TEST_F(LightShading, EachTypeHasItsPlaceDirectionAndCone) {
    const struct {
        RV_LIGHT_TYPE type;
        Numbers place, direction;
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
        EXPECT_TRUE(activate());
        expectNear(place(), row.place);
        expectNear(direction(), row.direction);
        EXPECT_EQ(value(GL_SPOT_CUTOFF), row.cutOff);
    }
}

TEST_F(LightShading, SpotWithTheStandardCutOffShinesAllAround) {
    makeLight()->setLightType(RV_LIGHT_TYPE_SPOT);
    EXPECT_TRUE(activate());
    EXPECT_EQ(value(GL_SPOT_CUTOFF), 180);
}

TEST_F(LightShading, RotatedLightTurnsTwice) {
    RVLIGHT *spot = makeLight();
    spot->setLightType(RV_LIGHT_TYPE_SPOT);
    spot->setDirection(1, 0, 0);
    spot->setRotation(0, 0, 30);
    EXPECT_TRUE(activate());
    const float twice = 60 * 3.14159265f / 180;
    expectNear(direction(), {std::cos(twice), std::sin(twice), 0});
    spot->setLightType(RV_LIGHT_TYPE_DIRECTIONAL);
    EXPECT_TRUE(activate());
    expectNear(place(), {-std::cos(twice), -std::sin(twice), 0, 0});
}

TEST_F(LightShading, RotationIsAppliedAboutXYZOnTopOfTheMatrix) {
    RVLIGHT *light = makeLight();
    light->setRotation(10, 20, 30);
    collect();
    RVELEMENT *entry = RVELEMENT::getLight(0);
    entry->setParam1(2);
    recorder.start();
    EXPECT_TRUE(light->render(entry));
    const Calls calls = recorder.stop().named({"glEnable", "glRotatef", "glLightfv"});
    EXPECT_TRUE(calls.haveInOrder({{"glEnable", GL_LIGHT2},
                                   {"glRotatef", 10, 1, 0, 0},
                                   {"glRotatef", 20, 0, 1, 0},
                                   {"glRotatef", 30, 0, 0, 1},
                                   {"glLightfv", GL_LIGHT2, GL_POSITION, 0, 0, 0, 1}}));
    const Call last = calls.named("glLightfv").back();
    EXPECT_EQ(last.arguments.at(1), GL_SPOT_DIRECTION);
}

TEST_F(LightShading, UnknownTypeIsLoggedAndTheLightGoesOn) {
    RVLIGHT *light = makeLight(1, 2, 3);
    light->setName("odd");
    light->setLightType(static_cast<RV_LIGHT_TYPE>(7));
    EXPECT_TRUE(activate());
    EXPECT_LOGGED_EXACTLY("   [!] Consistency broken: unknow type for odd @ RVLIGHT::render\n");
    EXPECT_TRUE(glIsEnabled(GL_LIGHT0));
    EXPECT_EQ(picked().size(), 1u);
}

// --- Aim

TEST_F(LightShading, AimsAtItsTarget) {
    RVLIGHT *light = makeLight(0, 10, 0);
    light->setLightType(RV_LIGHT_TYPE_SPOT);
    light->setDirection(3, 0, 0);
    light->setTarget(0, 10, 5);
    EXPECT_TRUE(activate());
    EXPECT_TRUE(light->getDirection() == Z3MVECTOR3D(3, 0, 0)) << "without a target node";
    light->setTargetNode(light);
    EXPECT_TRUE(activate());
    expectNear(direction(), {0, 0, 1});
    EXPECT_TRUE(light->getDirection() == Z3MVECTOR3D(0, 0, 1));
    light->setTarget(0, 10, 0);
    EXPECT_TRUE(activate());
    EXPECT_TRUE(light->getDirection() == Z3MVECTOR3D(0, 0, 0)) << "at its own place";
}

TEST_F(LightShading, AimsFromTheTranslationOfItsMatrix) {
    RVLIGHT *light = makeLight(50, 50, 50);
    Z3MMATRIX matrix;
    matrix.setTranslation(0, 10, 0);
    light->setMatrix(matrix);
    light->setPositioning(RV_NODE_POSITIONING_MATRIX);
    light->setTarget(-4, 10, 0);
    light->setTargetNode(light);
    EXPECT_TRUE(activate());
    EXPECT_TRUE(light->getDirection() == Z3MVECTOR3D(-1, 0, 0));
}

TEST_F(LightShading, AimsAtAnotherNodeWhereverItsParentsPutIt) {
    RVNODE *parent = new RVNODE;
    parent->setPosition(0, 0, 100);
    RVNODE *node = new RVNODE;
    node->setPosition(3, 0, 0);
    node->link(parent);
    RVLIGHT *light = makeLight(3, 7, 100);
    light->setTargetNode(node);
    EXPECT_TRUE(activate());
    EXPECT_TRUE(light->getDirection() == Z3MVECTOR3D(0, -1, 0));
}

// --- Picking

TEST_F(LightShading, NearestFourOfFiveReachTheObject) {
    RVLIGHT *light[5];
    const float x[5] = {50, 10, 40, 20, 30};
    for (int index = 0; index < 5; ++index)
        light[index] = makeLight(x[index]);
    object.getMatrix()->setTranslation(0, 0, -10);
    EXPECT_TRUE(activate());
    EXPECT_EQ(picked(), (std::vector<const RVNODE *>{light[1], light[3], light[4], light[2]}));
    for (GLenum slot = 0; slot < 4; ++slot) {
        EXPECT_EQ(object.getNearestLight(slot)->getParam1(), slot);
        expectNear(place(GL_LIGHT0 + slot), {10.0f * static_cast<float>(slot + 1), 0, -10, 1});
        EXPECT_TRUE(glIsEnabled(GL_LIGHT0 + slot));
    }
    EXPECT_FALSE(glIsEnabled(GL_LIGHT4));

    object.getMatrix()->setTranslation(60, 0, -10);
    EXPECT_TRUE(RVLIGHT::activateNearest(&object));
    EXPECT_EQ(picked(), (std::vector<const RVNODE *>{light[0], light[2], light[4], light[3]}));
}

TEST_F(LightShading, ExclusiveLightIsAlwaysAmongTheFour) {
    RVLIGHT *light[5];
    for (int index = 0; index < 5; ++index)
        light[index] = makeLight(10.0f * static_cast<float>(index + 1));
    light[4]->setExclusive(true);
    EXPECT_TRUE(activate());
    EXPECT_EQ(picked(), (std::vector<const RVNODE *>{light[4], light[0], light[1], light[2]}));
}

TEST_F(LightShading, SlotsBeyondTheLightsStayAsTheyWere) {
    RVLIGHT *first = makeLight(1), *second = makeLight(2);
    EXPECT_TRUE(activate());
    EXPECT_EQ(picked(), (std::vector<const RVNODE *>{first, second}));
    const RVELEMENT *stale = object.getNearestLight(1);
    delete (second->unlink(), second);
    EXPECT_TRUE(activate());
    EXPECT_EQ(object.getNearestLight(0)->getNode(), first);
    EXPECT_EQ(object.getNearestLight(1), stale);
    EXPECT_TRUE(glIsEnabled(GL_LIGHT1));
}

TEST_F(LightShading, WithLightingOffNothingIsTouched) {
    makeLight();
    collect();
    RVLIGHT::lightingOff();
    RVELEMENT *const before = object.getNearestLight(0);
    EXPECT_EQ(callsOf([&] { EXPECT_FALSE(RVLIGHT::activateNearest(&object)); }), Calls());
    EXPECT_EQ(object.getNearestLight(0), before);
    EXPECT_NOTHING_LOGGED();
}

TEST_F(LightShading, ActivateWithoutLightsIsTrue) {
    RVELEMENT::reset();
    EXPECT_TRUE(RVLIGHT::activateNearest(&object));
    EXPECT_TRUE(picked().empty());
}

TEST_F(LightShading, UnsortedListIsAConsistencyError) {
    CustomNode *node = new CustomNode;
    node->link(root);
    makeLight();
    RVELEMENT::reset();
    root->pass(); // and no sort: the custom node stands in front
    EXPECT_FALSE(RVLIGHT::activateNearest(&object));
    EXPECT_LOGGED_EXACTLY("   [!] Consistency error: invalid object passed as light @ "
                          "RVLIGHT::activateNearest\n");
    EXPECT_TRUE(picked().empty());
}

// --- The switch, and the shape

TEST_F(LightShading, LightingIsACachedSwitch) {
    RVLIGHT::lightingOff();
    recorder.start();
    RVLIGHT::lightingOn();
    RVLIGHT::lightingOn();
    EXPECT_TRUE(RVLIGHT::getLighting());
    RVLIGHT::lightingOff();
    RVLIGHT::lightingOff();
    EXPECT_FALSE(RVLIGHT::getLighting());
    EXPECT_EQ(recorder.stop(), (Calls{{"glEnable", GL_LIGHTING}, {"glDisable", GL_LIGHTING}}));
}

TEST_F(LightShading, EachSetUpDrawsAPyramidInTheDiffuseColor) {
    RVLIGHT *light = makeLight(1, 2, 3);
    light->setRotation(0, 0, 45);
    light->setDiffuse(0.25, 0.5, 0.75, 1);
    collect();
    const Calls calls = callsOf([&] { EXPECT_TRUE(RVLIGHT::activateNearest(&object)); });
    const Call corner[] = {
        {"glVertex3fv", 0, 2, 0}, {"glVertex3fv", 2, -2, -2}, {"glVertex3fv", -2, -2, -2},
        {"glVertex3fv", 0, 2, 0}, {"glVertex3fv", 2, -2, 2},  {"glVertex3fv", -2, -2, 2},
        {"glVertex3fv", 0, 2, 0}, {"glVertex3fv", 2, -2, 2},  {"glVertex3fv", 2, -2, -2},
        {"glVertex3fv", 0, 2, 0}, {"glVertex3fv", -2, -2, 2}, {"glVertex3fv", -2, -2, -2}};
    std::vector<Call> expected = {{"glDisable", GL_LIGHTING},
                                  Call("glLoadMatrixf", std::vector<double>()),
                                  {"glColor4fv", 0.25, 0.5, 0.75, 1},
                                  {"glBegin", GL_LINE_STRIP}};
    for (const float element : RVELEMENT::getLight(0)->getMatrix()->e)
        expected[1].arguments.push_back(static_cast<double>(element));
    expected.insert(expected.end(), std::begin(corner), std::end(corner));
    expected.push_back({"glEnd"});
    expected.push_back({"glEnable", GL_LIGHTING});
    ASSERT_GE(calls.size(), expected.size());
    const auto tail = calls.end() - static_cast<std::ptrdiff_t>(expected.size());
    EXPECT_EQ(Calls(std::vector<Call>(tail, calls.end())), Calls(expected));
}

TEST_F(LightShading, EveryLitObjectDrawsTheShapesAgain) {
    makeLight();
    makeLight(1);
    collect();
    recorder.start();
    RVLIGHT::activateNearest(&object);
    RVLIGHT::activateNearest(&object);
    EXPECT_EQ(recorder.stop().count(Call("glBegin", GL_LINE_STRIP)), 4u);
}

TEST_F(LightShading, RenderSwitchesLightingOn) {
    RVLIGHT *light = makeLight();
    RVLIGHT::lightingOff();
    collect();
    EXPECT_TRUE(light->render(RVELEMENT::getLight(0)));
    EXPECT_TRUE(RVLIGHT::getLighting());
}

// An entry that a skinned mesh had in an earlier frame holds no number of a light.
TEST_F(LightShading, NumberBeyondOpenGLsLightsProgramsNone) {
    RVLIGHT *light = makeLight();
    collect();
    for (const unsigned int number : {8u, 256u, 4294967295u}) {
        RVELEMENT::getLight(0)->setParam1(number);
        const Calls calls = callsOf([&] { EXPECT_TRUE(light->render(RVELEMENT::getLight(0))); });
        EXPECT_FALSE(calls.contains("glLightfv"));
        EXPECT_TRUE(calls.contains(Call("glBegin", GL_LINE_STRIP)));
    }
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
}

} // namespace
