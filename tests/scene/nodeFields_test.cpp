// Lights and cameras as far as they need no context: their fields.

#include "ravolt/RVLIGHT.h"

#include "ravolt/RVCAMERA.h"
#include "tests/support/logReader.h"

#include <string>
#include <vector>

using namespace ravolt::test;

namespace {

using Numbers = std::vector<float>;

class NodeFields : public testing::Test {
  protected:
    void TearDown() override { RVNODE::cleanUp(); }
    RVLIGHT *light = new RVLIGHT;
    RVCAMERA *camera = new RVCAMERA;
};

// The type, ambient, diffuse and specular color, attenuation, cut-off and exponent, the two flags,
// and the planes of the shadow.
Numbers numbersOf(const RVLIGHT &light) {
    Numbers all{static_cast<float>(light.getLightType())};
    for (const Z3MVECTOR4D &color : {light.getAmbient(), light.getDiffuse(), light.getSpecular()})
        all.insert(all.end(), {color.x, color.y, color.z, color.w});
    const Z3MVECTOR3D attenuation = light.getAttenuation();
    all.insert(all.end(), {attenuation.x, attenuation.y, attenuation.z});
    all.insert(all.end(), {light.getCutOff(), light.getExponent(), float(light.isExclusive()),
                           float(light.isShadowCaster()), light.getShadowNearPlane(),
                           light.getShadowFarPlane()});
    return all;
}

TEST_F(NodeFields, OfANewLight) {
    EXPECT_EQ(light->getType(), RV_NODE_TYPE_LIGHT);
    EXPECT_EQ(light->getName(), "[light " + std::to_string(light->getId()) + "]");
    EXPECT_EQ(numbersOf(*light),
              (Numbers{0,    0.2f, 0.2f, 0.2f, 1, 0.7f, 0.7f, 0.7f, 1, 0.2f, 0.2f,
                       0.2f, 1,    1,    0,    0, 180,  0,    0,    0, 1,    1024}));
    EXPECT_EQ(RV_LIGHT_TYPE_OMNI, 0);
    EXPECT_EQ(RV_LIGHT_TYPE_DIRECTIONAL, 1);
    EXPECT_EQ(RV_LIGHT_TYPE_SPOT, 2);
}

TEST_F(NodeFields, OfALightAreWhatWasSet) {
    light->setLightType(RV_LIGHT_TYPE_SPOT);
    light->setAmbient(1, 2, 3, 4);
    light->setDiffuse(5, 6, 7, 8);
    light->setSpecular(9, 10, 11, 12);
    light->setAttenuation(13, 14, 15);
    light->setCutOff(16);
    light->setExponent(17);
    light->setExclusive(true);
    light->setShadowNearPlane(18);
    light->setShadowFarPlane(19);
    EXPECT_EQ(numbersOf(*light), (Numbers{2,  1,  2,  3,  4,  5,  6,  7, 8, 9,  10,
                                          11, 12, 13, 14, 15, 16, 17, 1, 0, 18, 19}));
    light->setExclusive(false);
    light->castShadows(true);
    light->setAmbient(Z3MVECTOR4D(4, 3, 2, 1));
    light->setDiffuse(Z3MVECTOR4D(8, 7, 6, 5));
    light->setSpecular(Z3MVECTOR4D(12, 11, 10, 9));
    EXPECT_EQ(numbersOf(*light), (Numbers{2,  4, 3,  2,  1,  8,  7,  6, 5, 12, 11,
                                          10, 9, 13, 14, 15, 16, 17, 0, 1, 18, 19}));
}

TEST_F(NodeFields, OfNoLightAreRefused) {
    markLog();
    EXPECT_FALSE(light->render(nullptr));
    EXPECT_FALSE(RVLIGHT::activateNearest(nullptr));
    EXPECT_LOGGED_EXACTLY("   [!] Invalid params @ RVLIGHT::render\n"
                          "   [!] Invalid params @ RVLIGHT::activateNearest\n");
}

TEST_F(NodeFields, OfANewCamera) {
    EXPECT_EQ(camera->getType(), RV_NODE_TYPE_CAMERA);
    EXPECT_STREQ(camera->getTypeName(), "camera");
    EXPECT_EQ(camera->getName(), "[camera " + std::to_string(camera->getId()) + "]");
    EXPECT_EQ(camera->getPreRotation(), Z3MVECTOR3D(0, 0, 0));
    EXPECT_EQ(camera->getUpDirection(), Z3MVECTOR3D(0, 1, 0));
    for (int index = 0; index < 16; ++index)
        EXPECT_EQ(camera->getThisCameraMatrix()->e[index], index % 5 == 0 ? 1 : 0);
    EXPECT_EQ(RVCAMERA::getThisPassCamera(), nullptr);
    EXPECT_EQ(RVCAMERA::getCameraPosition(), Z3MVECTOR3D(0, 0, 0));
}

TEST_F(NodeFields, OfACameraAreWhatWasSet) {
    camera->setPreRotation(1, 2, 3);
    EXPECT_EQ(camera->getPreRotation(), Z3MVECTOR3D(1, 2, 3));
    camera->setPreRotation(Z3MVECTOR3D(4, 5, 6));
    EXPECT_EQ(camera->getPreRotation(), Z3MVECTOR3D(4, 5, 6));
    camera->setUpDirection(Z3MVECTOR3D(0, 0, 1));
    EXPECT_EQ(camera->getUpDirection(), Z3MVECTOR3D(0, 0, 1));
}

TEST_F(NodeFields, MoveDoomBeforeAnyRenderMovesAlongTheWorldAxes) {
    camera->setPosition(10, 20, 30);
    camera->moveDoom(1, 2, 3);
    EXPECT_EQ(camera->getPosition(), Z3MVECTOR3D(11, 22, 33));
    EXPECT_EQ(camera->getDirection(), Z3MVECTOR3D(1, 2, 3));
    camera->moveDoom(Z3MVECTOR3D(0, 0, -1));
    EXPECT_EQ(camera->getPosition(), Z3MVECTOR3D(11, 22, 32));
    EXPECT_EQ(camera->getDirection(), Z3MVECTOR3D(0, 0, -1));
}

} // namespace
