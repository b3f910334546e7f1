// Lights as far as they need no context: fields and the body of a scene file.

#include "ravolt/RVLIGHT.h"

#include "foundation/bytes.h"
#include "scene/nodeRecords.h"
#include "tests/scene/sceneProbes.h"
#include "tests/support/logReader.h"
#include "tests/support/recorder.h"

#include <gtest/gtest.h>

#include <string>

using namespace ravolt::test;

namespace {

class LightTest : public RecorderTest {
  protected:
    void SetUp() override { markLog(); }
    void TearDown() override {
        RVNODE::cleanUp();
        RecorderTest::TearDown();
    }
};

TEST_F(LightTest, NewLightHasItsDefaults) {
    const RVLIGHT *light = new RVLIGHT;
    EXPECT_EQ(light->getType(), RV_NODE_TYPE_LIGHT);
    EXPECT_EQ(light->getName(), "[light " + std::to_string(light->getId()) + "]");
    EXPECT_EQ(light->getLightType(), RV_LIGHT_TYPE_OMNI);
    EXPECT_TRUE(light->getAmbient() == Z3MVECTOR4D(0.2, 0.2, 0.2, 1));
    EXPECT_TRUE(light->getDiffuse() == Z3MVECTOR4D(0.7, 0.7, 0.7, 1));
    EXPECT_TRUE(light->getSpecular() == Z3MVECTOR4D(0.2, 0.2, 0.2, 1));
    EXPECT_TRUE(light->getAttenuation() == Z3MVECTOR3D(1, 0, 0));
    EXPECT_EQ(light->getCutOff(), 180);
    EXPECT_EQ(light->getExponent(), 0);
    EXPECT_FALSE(light->isExclusive());
    EXPECT_FALSE(light->isShadowCaster());
    EXPECT_EQ(light->getShadowNearPlane(), 1);
    EXPECT_EQ(light->getShadowFarPlane(), 1024);
    EXPECT_EQ(RV_LIGHT_TYPE_DIRECTIONAL, 1);
    EXPECT_EQ(RV_LIGHT_TYPE_SPOT, 2);
}

TEST_F(LightTest, AccessorsKeepWhatTheyAreGiven) {
    RVLIGHT *light = new RVLIGHT;
    light->setLightType(RV_LIGHT_TYPE_SPOT);
    light->setAmbient(1, 2, 3, 4);
    light->setDiffuse(5, 6, 7, 8);
    light->setSpecular(9, 10, 11, 12);
    light->setAttenuation(13, 14, 15);
    light->setCutOff(16);
    light->setExponent(17);
    light->setExclusive(true);
    light->castShadows(true);
    light->setShadowNearPlane(18);
    light->setShadowFarPlane(19);
    EXPECT_EQ(light->getLightType(), RV_LIGHT_TYPE_SPOT);
    EXPECT_TRUE(light->getAmbient() == Z3MVECTOR4D(1, 2, 3, 4));
    EXPECT_TRUE(light->getDiffuse() == Z3MVECTOR4D(5, 6, 7, 8));
    EXPECT_TRUE(light->getSpecular() == Z3MVECTOR4D(9, 10, 11, 12));
    EXPECT_TRUE(light->getAttenuation() == Z3MVECTOR3D(13, 14, 15));
    EXPECT_EQ(light->getCutOff(), 16);
    EXPECT_EQ(light->getExponent(), 17);
    EXPECT_TRUE(light->isExclusive());
    EXPECT_TRUE(light->isShadowCaster());
    EXPECT_EQ(light->getShadowNearPlane(), 18);
    EXPECT_EQ(light->getShadowFarPlane(), 19);
    light->setAmbient(Z3MVECTOR4D(4, 3, 2, 1));
    light->setDiffuse(Z3MVECTOR4D(8, 7, 6, 5));
    light->setSpecular(Z3MVECTOR4D(12, 11, 10, 9));
    EXPECT_TRUE(light->getAmbient() == Z3MVECTOR4D(4, 3, 2, 1));
    EXPECT_TRUE(light->getDiffuse() == Z3MVECTOR4D(8, 7, 6, 5));
    EXPECT_TRUE(light->getSpecular() == Z3MVECTOR4D(12, 11, 10, 9));
}

TEST_F(LightTest, RenderAndActivateNearestRefuseNull) {
    EXPECT_FALSE((new RVLIGHT)->render(nullptr));
    EXPECT_FALSE(RVLIGHT::activateNearest(nullptr));
    EXPECT_LOGGED_EXACTLY("   [!] Invalid params @ RVLIGHT::render\n"
                          "   [!] Invalid params @ RVLIGHT::activateNearest\n");
}

TEST_F(LightTest, LoadReadsALightAndMovesTheCursor) {
    const auto body = lightBody("lamp", 2, 1);
    const auto bytes = body.exact();
    long cursor = 0;
    const RVNODE *node = RVLIGHT::load(bytes.get(), &cursor);
    ASSERT_NE(node, nullptr);
    ASSERT_EQ(node->getType(), RV_NODE_TYPE_LIGHT);
    const RVLIGHT *light = static_cast<const RVLIGHT *>(node);
    EXPECT_EQ(cursor, static_cast<long>(body.size()));
    EXPECT_STREQ(light->getName(), "lamp");
    EXPECT_EQ(light->getLightType(), RV_LIGHT_TYPE_SPOT);
    EXPECT_TRUE(light->getPosition() == Z3MVECTOR3D(1, 2, 3));
    EXPECT_TRUE(light->getDirection() == Z3MVECTOR3D(4, 5, 6));
    EXPECT_TRUE(light->getTarget() == Z3MVECTOR3D(5, 7, 9));
    EXPECT_EQ(light->getTargetNode(), nullptr);
    EXPECT_EQ(light->getCutOff(), 35);
    EXPECT_TRUE(light->getAmbient() == Z3MVECTOR4D(1.0f / 5, 0.5f / 5, 0.25f / 5, 1));
    EXPECT_TRUE(light->getDiffuse() == Z3MVECTOR4D(1, 0.5, 0.25, 1));
    EXPECT_TRUE(light->getSpecular() == Z3MVECTOR4D(1.0f / 10, 0.5f / 10, 0.25f / 10, 1));
    EXPECT_EQ(light->getNumberOfChildren(), 1u);
    EXPECT_EQ(light->getChild(0), nullptr);
}

TEST_F(LightTest, LoadRefusesANameOf256Characters) {
    const auto body = lightBody(std::string(256, 'n'));
    const auto bytes = body.exact();
    long cursor = 0;
    EXPECT_EQ(RVLIGHT::load(bytes.get(), &cursor), nullptr);
    EXPECT_LOGGED_EXACTLY("   [!] Consistency error: light == NULL @ RVLIGHT::load\n");
    EXPECT_EQ(cursor, 0);
    EXPECT_EQ(RVNODE::getNumberOfNodes(), 0u);
}

TEST_F(LightTest, LoadWithoutMemoryLeavesNothingBehind) {
    const auto body = lightBody("name", 2, 2000);
    const auto bytes = body.exact();
    for (const std::size_t failing : {sizeof(RVLIGHT), 2000 * sizeof(RVNODE *)}) {
        long cursor = 0;
        recorder.failAllocation(failing);
        const RVNODE *light = RVLIGHT::load(bytes.get(), &cursor);
        recorder.allocationsWork();
        EXPECT_EQ(light, nullptr);
        EXPECT_LOGGED_EXACTLY("   [!] Consistency error: light == NULL @ RVLIGHT::load\n");
        EXPECT_EQ(cursor, 0);
        EXPECT_EQ(RVNODE::getNumberOfNodes(), 0u);
    }
}

TEST_F(LightTest, RecordCutOffAnywhereIsRefused) {
    const auto body = lightBody("name");
    const auto whole = body.exact();
    for (std::size_t size = 0; size <= body.size(); ++size) {
        std::unique_ptr<char[]> bytes(new char[size]);
        std::memcpy(bytes.get(), whole.get(), size);
        ravolt::ByteReader reader(bytes.get(), size);
        ravolt::LightRecord record;
        EXPECT_EQ(ravolt::readLightRecord(reader, record), size == body.size()) << size;
    }
}

} // namespace
