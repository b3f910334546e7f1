// The modelview matrix of a rendered camera.

#include "ravolt/RVCAMERA.h"
#include "ravolt/RVOPENGL.h"
#include "tests/scene/referenceMatrix.h"
#include "tests/scene/sceneProbes.h"
#include "tests/support/engineFixture.h"
#include "tests/support/expectNear.h"
#include "tests/support/glState.h"

using namespace ravolt::test;

namespace {

using Vector = Z3MVECTOR3D;

// The rows x, y and z of a view by the stated steps, in double precision.
ReferenceMatrix lookAt(const double (&eye)[3], const double (&center)[3],
                       const double (&up)[3] = {0, 1, 0}) {
    const auto normalize = [](double *v) {
        const double length = std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]);
        for (int index = 0; index < 3; ++index)
            v[index] /= length > 0 ? length : 1;
    };
    const auto cross = [](const double *a, const double *b, double *result) {
        for (int i = 0, j = 1, k = 2; i < 3; ++i, j = (j + 1) % 3, k = (k + 1) % 3)
            result[i] = a[j] * b[k] - a[k] * b[j];
    };
    double x[3], y[3], z[3] = {eye[0] - center[0], eye[1] - center[1], eye[2] - center[2]};
    normalize(z);
    cross(up, z, x);
    cross(z, x, y);
    normalize(x);
    normalize(y);
    ReferenceMatrix view;
    for (int row = 0; row < 3; ++row)
        for (int index = 0; index < 3; ++index)
            view.e[4 * index + row] = (row == 0 ? x : row == 1 ? y : z)[index];
    return view.translate(-eye[0], -eye[1], -eye[2]);
}

class CameraView : public EngineTest {
  protected:
    void SetUp() override {
        EngineTest::SetUp();
        camera = new RVCAMERA;
        glTranslatef(1, 1, 1); // to be replaced
    }

    // Renders the camera and checks that everything it publishes is one matrix.
    const Z3MMATRIX &view() {
        EXPECT_TRUE(camera->render(nullptr));
        const auto modelview = matrixOf(GL_MODELVIEW_MATRIX);
        const Z3MMATRIX &own = *camera->getThisCameraMatrix();
        for (std::size_t index = 0; index < 16; ++index) {
            EXPECT_FLOAT_EQ(own.e[index], modelview[index]);
            EXPECT_FLOAT_EQ(RVCAMERA::getCameraMatrix()->e[index], modelview[index]);
        }
        EXPECT_EQ(RVCAMERA::getThisPassCamera(), camera);
        return own;
    }
    void expectView(const ReferenceMatrix &expected, const Vector &position) {
        EXPECT_TRUE(isNear(view(), expected));
        const Vector published = RVCAMERA::getCameraPosition();
        expectNear(std::array{published.x, published.y, published.z},
                   {position.x, position.y, position.z});
    }
    void setMatrix(const Z3MMATRIX &matrix) {
        camera->setMatrix(matrix);
        camera->setPositioning(RV_NODE_POSITIONING_MATRIX);
    }
    void place(const Vector &position, RVNODE *target, const Vector &rotation = {},
               const Vector &preRotation = {}) {
        camera->setPosition(position);
        camera->setTargetNode(target);
        camera->setRotation(rotation);
        camera->setPreRotation(preRotation);
    }

    RVCAMERA *camera = nullptr;
};

TEST_F(CameraView, InvertsThePositionAndTheRotationsInItsOwnOrder) {
    place({1, 2, 3}, nullptr, {20, 30, 40}, {5, 6, 7});
    camera->setOrigin(100, 100, 100);
    RVNODE *parent = new RVNODE;
    parent->setPosition(100, 100, 100);
    camera->link(parent); // is ignored
    ReferenceMatrix expected;
    expected.turnX(5).turnY(6).turnZ(7);
    expected.turnZ(-40).turnX(-20).turnY(-30).translate(-1, -2, -3);
    expectView(expected, {1, 2, 3});
    EXPECT_EQ(callsOf([&] { camera->render(nullptr); }).without({"glGetFloatv"}).text(),
              "glLoadIdentity()\nglRotatef(5, 1, 0, 0)\nglRotatef(6, 0, 1, 0)\n"
              "glRotatef(7, 0, 0, 1)\nglRotatef(-40, 0, 0, 1)\nglRotatef(-20, 1, 0, 0)\n"
              "glRotatef(-30, 0, 1, 0)\nglTranslatef(-1, -2, -3)\n");
}

// The position published is the last column of the matrix, also where that is not the eye.
TEST_F(CameraView, MatrixIsTheViewItself) {
    const Z3MMATRIX matrix(0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 1, 0, 3, 4, 5, 1);
    place({50, 50, 50}, nullptr, {50, 50, 50}, {0, 90, 0});
    setMatrix(matrix);
    expectView(ReferenceMatrix().turnY(90).multiply(matrix), {3, 4, 5});
}

TEST_F(CameraView, LooksAtItsTargetWithoutThePreRotation) {
    place({3, 4, 5}, camera, {70, 80, 90}, {30, 40, 50});
    camera->setTarget(-1, 2, 10);
    expectView(lookAt({3, 4, 5}, {-1, 2, 10}), {3, 4, 5});
    camera->setUpDirection({1, 0.25, 0});
    expectView(lookAt({3, 4, 5}, {-1, 2, 10}, {1, 0.25, 0}), {3, 4, 5});

    camera->setUpDirection({0, 1, 0});
    Z3MMATRIX matrix;
    matrix.setRotation(33, 0, 1, 0);
    matrix.setTranslation(7, 8, 9);
    setMatrix(matrix);
    expectView(lookAt({7, 8, 9}, {-1, 2, 10}), {7, 8, 9});
}

TEST_F(CameraView, LooksAtAnotherNodeInItsFinalPosition) {
    RVNODE *parent = new RVNODE, *node = new RVNODE;
    parent->setPosition(10, 0, 0);
    parent->setRotation(0, 0, 90);
    node->setPosition(5, 0, 0);
    node->link(parent);
    place({1, 2, 30}, node, {}, {30, 40, 50});
    expectView(lookAt({1, 2, 30}, {10, 5, 0}), {1, 2, 30});
}

// Known numbers: from (5, 0, 0) to the origin, the world's -x is ahead.
TEST_F(CameraView, LooksAlongItsNegativeZAxis) {
    place({5, 0, 0}, camera);
    const Z3MMATRIX &matrix = view();
    expectNear(matrix.getTranslation(), {0, 0, -5});
    expectNear(matrix.rotate(Vector(-1, 0, 0)), {0, 0, -1});
    expectNear(matrix.rotate(Vector(0, 1, 0)), {0, 1, 0});
    expectNear(matrix.rotate(Vector(0, 0, -1)), {1, 0, 0});
}

TEST_F(CameraView, TargetWithoutADirectionHasZeroAxes) {
    place({1, 2, 3}, camera);
    camera->setTarget(1, 2, 3); // its own position
    for (int index = 0; index < 16; ++index)
        EXPECT_EQ(view().e[index], index == 15 ? 1 : 0) << index;

    place({0, 5, 0}, camera);
    camera->setTarget(0, 0, 0); // along its up direction: neither x nor y
    const Z3MMATRIX &matrix = view();
    for (const int element : {0, 4, 8, 12, 1, 5, 9, 13})
        EXPECT_EQ(matrix.e[element], 0) << element;
    EXPECT_FLOAT_EQ(matrix.e[6], 1);
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
    camera->render(nullptr);
    RAVOLT::begin3D(nullptr);
    EXPECT_EQ(RVCAMERA::getThisPassCamera(), nullptr) << "the default camera is none";
    EXPECT_EQ(RVCAMERA::getCameraMatrix()->e[12], 0);
    RAVOLT::end3D(true);
}

TEST_F(CameraView, HasAnEntryOfItsOwn) {
    Drawings drawn;
    drawFrame(nullptr, new Probe<RVCAMERA>(drawn));
    EXPECT_EQ(RVELEMENT::getNumberOfPassedElements(), 1u);
    EXPECT_EQ(drawn.size(), 1u);
}

TEST_F(CameraView, MoveDoomUsesTheAxesOfTheLastView) {
    place({0, 0, 10}, nullptr, {0, 90, 0}); // looks along -x
    camera->render(nullptr);
    RVCAMERA *other = new RVCAMERA;
    other->moveDoom(0, 0, -2);
    expectNear(other->getPosition(), {-2, 0, 0});
    expectNear(other->getDirection(), {-2, 0, 0});
    other->moveDoom(3, 0, 0); // to the right
    expectNear(other->getPosition(), {-2, 0, -3});
    other->moveDoom(Vector(0, 4, 0));
    expectNear(other->getPosition(), {-2, 4, -3});
    expectNear(other->getDirection(), {0, 4, 0});
}

} // namespace
