// Cameras before any of them was rendered.

#include "ravolt/RVCAMERA.h"

#include <gtest/gtest.h>

#include <string>

namespace {

class CameraTest : public testing::Test {
  protected:
    void TearDown() override { RVNODE::cleanUp(); }
};

TEST_F(CameraTest, NewCameraHasItsDefaults) {
    RVCAMERA *camera = new RVCAMERA;
    EXPECT_EQ(camera->getType(), RV_NODE_TYPE_CAMERA);
    EXPECT_STREQ(camera->getTypeName(), "camera");
    EXPECT_EQ(camera->getName(), "[camera " + std::to_string(camera->getId()) + "]");
    EXPECT_TRUE(camera->getPreRotation() == Z3MVECTOR3D(0, 0, 0));
    EXPECT_TRUE(camera->getUpDirection() == Z3MVECTOR3D(0, 1, 0));
    for (int index = 0; index < 16; ++index)
        EXPECT_EQ(camera->getThisCameraMatrix()->e[index], index % 5 == 0 ? 1 : 0);
    EXPECT_EQ(RVCAMERA::getThisPassCamera(), nullptr);
    EXPECT_TRUE(RVCAMERA::getCameraPosition() == Z3MVECTOR3D(0, 0, 0));
}

TEST_F(CameraTest, AccessorsKeepWhatTheyAreGiven) {
    RVCAMERA *camera = new RVCAMERA;
    camera->setPreRotation(1, 2, 3);
    EXPECT_TRUE(camera->getPreRotation() == Z3MVECTOR3D(1, 2, 3));
    camera->setPreRotation(Z3MVECTOR3D(4, 5, 6));
    EXPECT_TRUE(camera->getPreRotation() == Z3MVECTOR3D(4, 5, 6));
    camera->setUpDirection(Z3MVECTOR3D(0, 0, 1));
    EXPECT_TRUE(camera->getUpDirection() == Z3MVECTOR3D(0, 0, 1));
}

TEST_F(CameraTest, MoveDoomBeforeAnyRenderMovesAlongTheWorldAxes) {
    RVCAMERA *camera = new RVCAMERA;
    camera->setPosition(10, 20, 30);
    camera->moveDoom(1, 2, 3);
    EXPECT_TRUE(camera->getPosition() == Z3MVECTOR3D(11, 22, 33));
    EXPECT_TRUE(camera->getDirection() == Z3MVECTOR3D(1, 2, 3));
    camera->moveDoom(Z3MVECTOR3D(0, 0, -1));
    EXPECT_TRUE(camera->getPosition() == Z3MVECTOR3D(11, 22, 32));
    EXPECT_TRUE(camera->getDirection() == Z3MVECTOR3D(0, 0, -1));
}

} // namespace
