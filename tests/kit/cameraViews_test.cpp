// The cameras applied to the engine's view: the point that a camera looks at is in the middle of
// the picture, and a point that is dragged stays under the pointer.

#include <ravolt/kit/flyCamera.h>
#include <ravolt/kit/input.h>
#include <ravolt/kit/orbitCamera.h>

#include "ravolt/RVCAMERA.h"
#include "ravolt/RVOPENGL.h"
#include "tests/kit/events.h"
#include "tests/support/engineFixture.h"

#include <GL/gl.h>
#include <array>
#include <cmath>

namespace ravolt::test {
namespace {

using kit::FlyCamera;
using kit::Input;
using kit::OrbitCamera;

class CameraViews : public EngineTest {
  protected:
    RVCAMERA *view = nullptr;
    void SetUp() override {
        EngineTest::SetUp();
        view = new RVCAMERA;
    }

    // In pixels of the window, from the top left; and the distance into the view.
    std::array<double, 3> projected(const Z3MVECTOR3D &point) {
        view->render(nullptr);
        const float *m = view->getThisCameraMatrix()->e;
        std::array<double, 3> eye{};
        for (int row = 0; row < 3; ++row)
            eye[std::size_t(row)] = double(m[row] * point.x + m[row + 4] * point.y +
                                           m[row + 8] * point.z + m[row + 12]);
        GLfloat projection[16] = {};
        glGetFloatv(GL_PROJECTION_MATRIX, projection);
        const double x = double(projection[0]) * eye[0] / -eye[2],
                     y = double(projection[5]) * eye[1] / -eye[2];
        return {(x + 1) / 2 * width, (1 - y) / 2 * height, -eye[2]};
    }
};

TEST_F(CameraViews, TheCentreOfAnOrbitIsInTheMiddle) {
    OrbitCamera orbit;
    orbit.setPitchLimits(-90, 90);
    orbit.setCenter({1, 2, 3});
    orbit.setDistance(7);
    for (const auto &[yaw, pitch] :
         {std::pair(0, 0), {30, 40}, {-150, -60}, {77, 90}, {10, -90}, {179, 89}}) {
        orbit.setAngles(yaw, pitch);
        orbit.apply(*view);
        const auto pixel = projected({1, 2, 3});
        EXPECT_NEAR(pixel[0], width / 2, 1e-3);
        EXPECT_NEAR(pixel[1], height / 2, 1e-3);
        EXPECT_NEAR(pixel[2], 7, 1e-4);
    }
}

// What was set on the RVCAMERA before does not count.
TEST_F(CameraViews, ApplyReplacesEveryOtherView) {
    view->setTarget(9.0f, 9.0f, 9.0f);
    view->setTargetNode(view);
    view->setPositioning(RV_NODE_POSITIONING_MATRIX);
    view->setRotation(0, 0, 45);
    FlyCamera fly;
    fly.setPosition({5, 6, 7});
    fly.setAngles(50, 20);
    fly.apply(*view);
    const Z3MVECTOR3D forward = fly.getForward();
    const auto pixel = projected(fly.getPosition() + forward * 4.0f);
    EXPECT_NEAR(pixel[0], width / 2, 1e-3);
    EXPECT_NEAR(pixel[1], height / 2, 1e-3);
    EXPECT_NEAR(pixel[2], 4, 1e-4);
    // Upright: a point above the middle is above it in the picture.
    EXPECT_LT(projected(fly.getPosition() + forward * 4.0f + Z3MVECTOR3D(0, 1, 0))[1], height / 2);
    EXPECT_NEAR(projected(fly.getPosition() + forward * 4.0f + Z3MVECTOR3D(0, 1, 0))[0], width / 2,
                1e-3);
}

TEST_F(CameraViews, ADraggedCentreFollowsThePointer) {
    Input input;
    OrbitCamera orbit;
    orbit.setAngles(35, -25);
    for (const SDL_Event &event :
         {buttonEvent(10, 10, true, SDL_BUTTON_RIGHT), motionEvent(30, 25, 20, 15)})
        input.handle(event);
    orbit.handle(input);
    orbit.update(10);
    orbit.apply(*view);
    const auto pixel = projected({0, 0, 0});
    EXPECT_NEAR(pixel[0], width / 2 + 20, 1e-2);
    EXPECT_NEAR(pixel[1], height / 2 + 15, 1e-2);
    EXPECT_EQ(orbit.getYaw(), 35);
}

TEST_F(CameraViews, AnotherButtonOrNoneShiftsTheCentre) {
    const struct {
        int set;
        Uint8 pressed;
        bool shifts;
    } rows[] = {{3, SDL_BUTTON_RIGHT, true},
                {2, SDL_BUTTON_RIGHT, false},
                {2, SDL_BUTTON_MIDDLE, true},
                {0, SDL_BUTTON_RIGHT, false}};
    for (const auto &row : rows) {
        Input input;
        OrbitCamera orbit;
        orbit.setPanButton(row.set);
        input.handle(buttonEvent(10, 10, true, row.pressed));
        input.handle(motionEvent(30, 10, 20, 0));
        orbit.handle(input);
        orbit.update(10);
        EXPECT_EQ(orbit.getCenter().x != 0, row.shifts) << row.set;
    }
}

} // namespace
} // namespace ravolt::test
