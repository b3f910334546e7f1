// What a rendered camera makes of the modelview matrix.

#include "ravolt/RVCAMERA.h"
#include "ravolt/RVOPENGL.h"
#include "tests/scene/referenceMatrix.h"
#include "tests/scene/sceneProbes.h"
#include "tests/support/engineFixture.h"
#include "tests/support/expectNear.h"

#include <cmath>

using namespace ravolt::test;

namespace {

class CameraView : public EngineTest {
  protected:
    void SetUp() override {
        EngineTest::SetUp();
        camera = new RVCAMERA;
        glTranslatef(1, 1, 1); // to be replaced
    }

    // Renders the camera and checks that all that it publishes is one matrix.
    const Z3MMATRIX &view() {
        EXPECT_TRUE(camera->render(nullptr));
        Z3MMATRIX modelview;
        glGetFloatv(GL_MODELVIEW_MATRIX, modelview.e);
        const Z3MMATRIX &own = *camera->getThisCameraMatrix();
        for (int index = 0; index < 16; ++index) {
            EXPECT_FLOAT_EQ(own.e[index], modelview.e[index]);
            EXPECT_FLOAT_EQ(RVCAMERA::getCameraMatrix()->e[index], modelview.e[index]);
        }
        EXPECT_EQ(RVCAMERA::getThisPassCamera(), camera);
        return own;
    }

    RVCAMERA *camera = nullptr;
};

TEST_F(CameraView, UndoesThePositionAndTheTurnsInItsOwnOrder) {
    camera->setPreRotation(5, 6, 7);
    camera->setPosition(1, 2, 3);
    camera->setRotation(20, 30, 40);
    camera->setOrigin(100, 100, 100);
    ReferenceMatrix expected;
    expected.turnX(5).turnY(6).turnZ(7);
    expected.turnZ(-40).turnX(-20).turnY(-30).translate(-1, -2, -3);
    EXPECT_TRUE(isNear(view(), expected));
    expectNear(RVCAMERA::getCameraPosition(), {1, 2, 3});
}

TEST_F(CameraView, CallsStandInTheirOrder) {
    camera->setPreRotation(5, 6, 7);
    camera->setPosition(1, 2, 3);
    camera->setRotation(20, 30, 40);
    recorder.start();
    camera->render(nullptr);
    EXPECT_EQ(recorder.stop().without({"glGetFloatv"}), (Calls{{"glLoadIdentity"},
                                                               {"glRotatef", 5, 1, 0, 0},
                                                               {"glRotatef", 6, 0, 1, 0},
                                                               {"glRotatef", 7, 0, 0, 1},
                                                               {"glRotatef", -40, 0, 0, 1},
                                                               {"glRotatef", -20, 1, 0, 0},
                                                               {"glRotatef", -30, 0, 1, 0},
                                                               {"glTranslatef", -1, -2, -3}}));
}

TEST_F(CameraView, MatrixIsTheViewAsItStands) {
    Z3MMATRIX matrix(0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 1, 0, 3, 4, 5, 1);
    camera->setPreRotation(0, 90, 0);
    camera->setPosition(50, 50, 50);
    camera->setRotation(50, 50, 50);
    camera->setMatrix(matrix);
    camera->setPositioning(RV_NODE_POSITIONING_MATRIX);
    EXPECT_TRUE(isNear(view(), ReferenceMatrix().turnY(90).multiply(matrix)));
    expectNear(RVCAMERA::getCameraPosition(), {3, 4, 5});
}

TEST_F(CameraView, IgnoresItsParent) {
    RVNODE *parent = new RVNODE;
    parent->setPosition(100, 100, 100);
    camera->link(parent);
    camera->setPosition(1, 2, 3);
    EXPECT_TRUE(isNear(view(), ReferenceMatrix().translate(-1, -2, -3)));
    expectNear(RVCAMERA::getCameraPosition(), {1, 2, 3});
}

// Rows x, y and z of the view by the stated steps, in double precision.
ReferenceMatrix lookAt(const double (&eye)[3], const double (&centre)[3], const double (&up)[3]) {
    const auto normalized = [](const double *v, double *result) {
        const double length = std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]);
        for (int index = 0; index < 3; ++index)
            result[index] = v[index] / (length > 0 ? length : 1);
    };
    const auto cross = [](const double *a, const double *b, double *result) {
        for (int index = 0; index < 3; ++index)
            result[index] =
                a[(index + 1) % 3] * b[(index + 2) % 3] - a[(index + 2) % 3] * b[(index + 1) % 3];
    };
    const double back[3] = {eye[0] - centre[0], eye[1] - centre[1], eye[2] - centre[2]};
    double x[3], y[3], z[3];
    normalized(back, z);
    cross(up, z, x);
    cross(z, x, y);
    normalized(x, x);
    normalized(y, y);
    ReferenceMatrix view;
    for (int index = 0; index < 3; ++index) {
        view.e[4 * index] = x[index];
        view.e[4 * index + 1] = y[index];
        view.e[4 * index + 2] = z[index];
    }
    return view.translate(-eye[0], -eye[1], -eye[2]);
}

TEST_F(CameraView, AimsAtItsTargetAndForgetsThePreRotation) {
    camera->setPreRotation(30, 40, 50);
    camera->setPosition(3, 4, 5);
    camera->setRotation(70, 80, 90);
    camera->setTarget(-1, 2, 10);
    camera->setTargetNode(camera);
    EXPECT_TRUE(isNear(view(), lookAt({3, 4, 5}, {-1, 2, 10}, {0, 1, 0})));
    expectNear(RVCAMERA::getCameraPosition(), {3, 4, 5});
}

// Known numbers: from (5, 0, 0) to the origin, the world's -x is ahead.
TEST_F(CameraView, LooksDownItsBackAxis) {
    camera->setPosition(5, 0, 0);
    camera->setTargetNode(camera);
    const Z3MMATRIX &matrix = view();
    expectNear(matrix.getTranslation(), {0, 0, -5});
    expectNear(matrix.rotate(Z3MVECTOR3D(-1, 0, 0)), {0, 0, -1});
    expectNear(matrix.rotate(Z3MVECTOR3D(0, 1, 0)), {0, 1, 0});
    expectNear(matrix.rotate(Z3MVECTOR3D(0, 0, -1)), {1, 0, 0});
}

TEST_F(CameraView, UpDirectionTurnsAnAimedCamera) {
    camera->setUpDirection(Z3MVECTOR3D(1, 0.25, 0));
    camera->setPosition(0, 0, 5);
    camera->setTargetNode(camera);
    EXPECT_TRUE(isNear(view(), lookAt({0, 0, 5}, {0, 0, 0}, {1, 0.25, 0})));
}

TEST_F(CameraView, AimsFromTheTranslationOfItsMatrix) {
    Z3MMATRIX matrix;
    matrix.setRotation(33, 0, 1, 0);
    matrix.setTranslation(7, 8, 9);
    camera->setMatrix(matrix);
    camera->setPositioning(RV_NODE_POSITIONING_MATRIX);
    camera->setTarget(1, 2, 3);
    camera->setTargetNode(camera);
    EXPECT_TRUE(isNear(view(), lookAt({7, 8, 9}, {1, 2, 3}, {0, 1, 0})));
    expectNear(RVCAMERA::getCameraPosition(), {7, 8, 9});
}

TEST_F(CameraView, AimsAtAnotherNodeWhereverItsParentsPutIt) {
    RVNODE *parent = new RVNODE;
    parent->setPosition(10, 0, 0);
    parent->setRotation(0, 0, 90);
    RVNODE *node = new RVNODE;
    node->setPosition(5, 0, 0);
    node->link(parent);
    camera->setPreRotation(30, 40, 50);
    camera->setPosition(1, 2, 30);
    camera->setTargetNode(node);
    EXPECT_TRUE(isNear(view(), lookAt({1, 2, 30}, {10, 5, 0}, {0, 1, 0})));
}

TEST_F(CameraView, TargetAtItsOwnPlaceGivesZeroAxes) {
    camera->setPosition(1, 2, 3);
    camera->setTarget(1, 2, 3);
    camera->setTargetNode(camera);
    const Z3MMATRIX &matrix = view();
    for (int index = 0; index < 15; ++index)
        EXPECT_EQ(matrix.e[index], 0) << index;
    EXPECT_EQ(matrix.e[15], 1);
}

TEST_F(CameraView, AimAlongItsUpDirectionHasNoSideAndNoTop) {
    camera->setPosition(0, 5, 0);
    camera->setTargetNode(camera); // at the origin, straight below
    const Z3MMATRIX &matrix = view();
    for (const int column : {0, 4, 8, 12}) {
        EXPECT_EQ(matrix.e[column], 0) << column;
        EXPECT_EQ(matrix.e[column + 1], 0) << column;
    }
    EXPECT_FLOAT_EQ(matrix.e[6], 1);
}

// The view is the matrix itself; the position published is its last column, not where the eye is.
TEST_F(CameraView, PositionOfAMatrixIsItsLastColumnAlsoWhereThatIsNotTheEye) {
    Z3MMATRIX matrix;
    matrix.setTranslation(0, 0, -5); // the view from (0, 0, 5)
    camera->setMatrix(matrix);
    camera->setPosition(1, 2, 3);
    camera->setPositioning(RV_NODE_POSITIONING_MATRIX);
    expectNear(view().getTranslation(), {0, 0, -5});
    expectNear(RVCAMERA::getCameraPosition(), {0, 0, -5});
}

TEST_F(CameraView, LastRenderPublishesTheStatics) {
    RVCAMERA *other = new RVCAMERA;
    other->setPosition(9, 0, 0);
    camera->setPosition(1, 0, 0);
    camera->render(nullptr);
    other->render(nullptr);
    EXPECT_EQ(RVCAMERA::getThisPassCamera(), other);
    EXPECT_EQ(RVCAMERA::getCameraMatrix()->e[12], -9);
    EXPECT_EQ(camera->getThisCameraMatrix()->e[12], -1);
    EXPECT_EQ(RVCAMERA::getCameraPosition().x, 9);
    delete other;
    EXPECT_EQ(RVCAMERA::getThisPassCamera(), nullptr);
    EXPECT_EQ(RVCAMERA::getCameraMatrix()->e[12], -9);
}

TEST_F(CameraView, StandardCameraIsGoneAfterBegin) {
    camera->setPosition(1, 0, 0);
    camera->render(nullptr);
    RAVOLT::begin3D(nullptr);
    EXPECT_EQ(RVCAMERA::getThisPassCamera(), nullptr);
    EXPECT_EQ(RVCAMERA::getCameraMatrix()->e[12], 0);
    RAVOLT::end3D(true);
}

TEST_F(CameraView, TakesAnEntryOfItsOwn) {
    Drawings drawn;
    Probe<RVCAMERA> *probe = new Probe<RVCAMERA>(drawn);
    RAVOLT::begin3D(nullptr);
    probe->pass();
    EXPECT_EQ(RVELEMENT::getNumberOfPassedElements(), 1u);
    RAVOLT::end3D(true);
    EXPECT_EQ(drawn.size(), 1u);
}

TEST_F(CameraView, MoveDoomFollowsTheAxesOfTheLastView) {
    camera->setPosition(0, 0, 10);
    camera->setRotation(0, 90, 0); // looks along -x
    camera->render(nullptr);
    RVCAMERA *other = new RVCAMERA;
    other->moveDoom(0, 0, -2);
    expectNear(other->getPosition(), {-2, 0, 0});
    expectNear(other->getDirection(), {-2, 0, 0});
    other->moveDoom(3, 0, 0); // to the right
    expectNear(other->getPosition(), {-2, 0, -3});
    other->moveDoom(Z3MVECTOR3D(0, 4, 0));
    expectNear(other->getPosition(), {-2, 4, -3});
    expectNear(other->getDirection(), {0, 4, 0});
}

} // namespace
