// The motion of the cameras: the same at every frame rate, within the limits, and never below the
// ground.

#include <ravolt/RVCAMERA.h>
#include <ravolt/kit/flyCamera.h>
#include <ravolt/kit/input.h>
#include <ravolt/kit/orbitCamera.h>
#include <ravolt/kit/walkCamera.h>

#include "tests/kit/events.h"

#include <cmath>
#include <functional>
#include <gtest/gtest.h>
#include <limits>

namespace ravolt::test {
namespace {

using kit::Camera;
using kit::FlyCamera;
using kit::Input;
using kit::OrbitCamera;
using kit::WalkCamera;

constexpr double degree = 3.14159265358979323846 / 180;
const double infinite = std::numeric_limits<double>::infinity(), notANumber = std::nan("");

testing::AssertionResult isAt(const Z3MVECTOR3D &point, double x, double y, double z,
                              double tolerance = 1e-5) {
    const double distance = std::hypot(point.x - x, point.y - y, point.z - z);
    if (distance <= tolerance)
        return testing::AssertionSuccess();
    return testing::AssertionFailure()
           << point.x << ", " << point.y << ", " << point.z << " is " << distance << " away";
}

// One update of 0.4 s against 40 of 0.01 s, and 7 of uneven lengths.
void expectTheSame(const std::function<std::unique_ptr<Camera>()> &make) {
    const auto run = [&](const std::vector<double> &durations) {
        auto camera = make();
        for (const double seconds : durations)
            camera->update(seconds);
        return camera;
    };
    const auto one = run({0.4});
    for (const auto &durations :
         {std::vector<double>(40, 0.01), {0.1, 0.01, 0.005, 0.2, 0.035, 0.03, 0.02}}) {
        const auto many = run(durations);
        const Z3MVECTOR3D at = one->getPosition();
        EXPECT_TRUE(isAt(many->getPosition(), at.x, at.y, at.z));
        EXPECT_NEAR(many->getYaw(), one->getYaw(), 1e-9);
        EXPECT_NEAR(many->getPitch(), one->getPitch(), 1e-9);
    }
}

TEST(Cameras, OrbitIsTheSameAtEveryFrameRate) {
    expectTheSame([] {
        auto camera = std::make_unique<OrbitCamera>();
        camera->turn(130, 35);
        camera->zoom(4);
        camera->pan(3, 2);
        return camera;
    });
}

TEST(Cameras, FlightIsTheSameAtEveryFrameRateAlsoInATurn) {
    expectTheSame([] {
        auto camera = std::make_unique<FlyCamera>();
        camera->turn(100, 30);
        camera->move(1, 0.5, -0.25);
        return camera;
    });
}

TEST(Cameras, AWalkIsTheSameAtEveryFrameRateAlsoInATurn) {
    expectTheSame([] {
        auto camera = std::make_unique<WalkCamera>(
            [](double x, double z) { return std::sin(x / 3) + std::cos(z / 4); });
        camera->turn(-70, 10);
        camera->move(1, -1);
        return camera;
    });
}

TEST(Cameras, ATurnIsExponential) {
    FlyCamera camera;
    camera.setTurnRate(2);
    camera.turn(90, 40);
    EXPECT_EQ(camera.getYaw(), 0);
    camera.update(0.5);
    EXPECT_NEAR(camera.getYaw(), 90 * (1 - std::exp(-1.0)), 1e-9);
    EXPECT_NEAR(camera.getPitch(), 40 * (1 - std::exp(-1.0)), 1e-9);
    camera.setTurnRate(0);
    camera.update(0.001);
    EXPECT_NEAR(camera.getYaw(), 90, 1e-9);
}

TEST(Cameras, TheViewIsThatOfTheAngles) {
    FlyCamera camera;
    EXPECT_TRUE(isAt(camera.getForward(), 0, 0, -1));
    camera.setAngles(90, 0);
    EXPECT_TRUE(isAt(camera.getForward(), -1, 0, 0));
    camera.setAngles(0, 45);
    EXPECT_TRUE(isAt(camera.getForward(), 0, std::sqrt(0.5), -std::sqrt(0.5)));
}

TEST(Cameras, ThePitchIsLimited) {
    FlyCamera camera;
    camera.turn(0, 500);
    camera.update(10);
    EXPECT_NEAR(camera.getPitch(), 89, 1e-9);
    camera.turn(0, -10); // from the limit, not from 500
    camera.update(10);
    EXPECT_NEAR(camera.getPitch(), 79, 1e-9);
    camera.setAngles(0, -95);
    EXPECT_EQ(camera.getPitch(), -89);
    camera.setPitchLimits(-20, 10);
    EXPECT_EQ(camera.getPitch(), -20);
    camera.setPitchLimits(30, 20);
    camera.setPitchLimits(notANumber, 20);
    camera.setAngles(0, 50);
    EXPECT_EQ(camera.getPitch(), 10);
    camera.setPitchLimits(-300, 300);
    camera.setAngles(0, 200);
    EXPECT_EQ(camera.getPitch(), 90);
}

TEST(Cameras, TurnsRoundAndRoundStaySmall) {
    FlyCamera camera;
    camera.setTurnRate(0);
    for (int i = 0; i < 1000; ++i) {
        camera.turn(100, 0);
        camera.update(0.01);
        EXPECT_LE(std::abs(camera.getYaw()), 180);
    }
    EXPECT_NEAR(std::remainder(camera.getYaw() - 1000 * 100, 360), 0, 1e-6);
}

TEST(Cameras, NumbersThatAreNotFiniteAreIgnored) {
    OrbitCamera orbit;
    FlyCamera fly;
    WalkCamera walk;
    for (const double bad : {infinite, -infinite, notANumber}) {
        for (Camera *camera : std::initializer_list<Camera *>{&orbit, &fly, &walk}) {
            camera->turn(bad, 0);
            camera->turn(0, bad);
            camera->setAngles(bad, 0);
            camera->setAngles(0, bad);
            camera->setDegreesPerPixel(bad);
        }
        orbit.zoom(bad);
        orbit.pan(bad, 0);
        orbit.setDistance(bad);
        orbit.setDistanceLimits(bad, bad);
        fly.move(bad, 0, 0);
        fly.setSpeed(bad);
        fly.setHurryFactor(bad);
        walk.move(0, bad);
        walk.setSpeed(bad);
        walk.setHurryFactor(bad);
        walk.setMaxSlope(bad);
        walk.setEyeHeight(bad);
        walk.setGravity(bad);
    }
    fly.setHurrying(true);
    walk.setHurrying(true);
    for (Camera *camera : std::initializer_list<Camera *>{&orbit, &fly, &walk}) {
        camera->update(notANumber);
        camera->update(-1);
        EXPECT_EQ(camera->getYaw(), 0);
        EXPECT_EQ(camera->getPitch(), 0);
    }
    fly.update(infinite);
    walk.update(infinite);
    EXPECT_TRUE(isAt(orbit.getPosition(), 0, 0, 10));
    EXPECT_TRUE(isAt(fly.getPosition(), 0, 0, 0));
    EXPECT_TRUE(isAt(walk.getPosition(), 0, 1.7, 0));
}

TEST(OrbitCamera, LooksAtItsCentreFromItsDistance) {
    OrbitCamera camera;
    camera.setCenter({1, 2, 3});
    camera.setDistance(5);
    camera.setAngles(90, 0);
    EXPECT_TRUE(isAt(camera.getPosition(), 6, 2, 3));
    camera.setAngles(0, -90); // the limit is -89
    EXPECT_TRUE(isAt(camera.getPosition(), 1, 2 + 5 * std::sin(89 * degree),
                     3 + 5 * std::cos(89 * degree)));
}

TEST(OrbitCamera, ZoomsByTenthsOfTheDistanceWithinItsLimits) {
    OrbitCamera camera;
    camera.zoom(2);
    camera.update(10);
    EXPECT_NEAR(camera.getDistance(), 8.1, 1e-9);
    camera.zoom(-2);
    camera.update(10);
    EXPECT_NEAR(camera.getDistance(), 10, 1e-9);
    camera.setDistanceLimits(4, 20);
    camera.zoom(1000);
    camera.update(10);
    EXPECT_NEAR(camera.getDistance(), 4, 1e-9);
    camera.zoom(-1); // from the limit
    camera.update(10);
    EXPECT_NEAR(camera.getDistance(), 4 / 0.9, 1e-9);
    camera.setDistance(100);
    EXPECT_NEAR(camera.getDistance(), 20, 1e-9);
    camera.setDistance(0);
    camera.setDistance(-3);
    camera.setDistanceLimits(5, 4);
    camera.setDistanceLimits(0, 4);
    EXPECT_NEAR(camera.getDistance(), 20, 1e-9);
    camera.setDistanceLimits(1, 2);
    EXPECT_NEAR(camera.getDistance(), 2, 1e-9);
}

TEST(OrbitCamera, ZoomsByTheStepThatIsSet) {
    OrbitCamera camera;
    camera.setMoveRate(0);
    camera.setZoomStep(0.5);
    for (const double part : {0.0, -1.0, double(NAN), double(INFINITY)})
        camera.setZoomStep(part);
    camera.zoom(2);
    camera.update(1);
    EXPECT_NEAR(camera.getDistance(), 2.5, 1e-9);
}

TEST(OrbitCamera, PansInTheViewsPlane) {
    OrbitCamera camera;
    camera.setMoveRate(0);
    camera.pan(2, 3);
    camera.update(0.01);
    EXPECT_TRUE(isAt(camera.getCenter(), 2, 3, 0));
    camera.setCenter({0, 0, 0});
    camera.setAngles(90, -30); // looks along -X and down: up leans to -X, right is -Z
    camera.pan(0, 2);
    camera.update(0.01);
    EXPECT_TRUE(isAt(camera.getCenter(), -1, std::sqrt(3.0), 0));
    camera.pan(1, 0);
    camera.update(0.01);
    EXPECT_TRUE(isAt(camera.getCenter(), -1, std::sqrt(3.0), -1));
}

TEST(OrbitCamera, TakesOverThePlaceOfAnotherCamera) {
    FlyCamera fly;
    fly.setPosition({1, 2, 3});
    fly.setAngles(30, -10);
    OrbitCamera orbit;
    orbit.setDistance(7);
    orbit.place(fly);
    EXPECT_TRUE(isAt(orbit.getPosition(), 1, 2, 3));
    EXPECT_NEAR(orbit.getDistance(), 7, 1e-9);
    EXPECT_NEAR(orbit.getYaw(), 30, 1e-9);
    WalkCamera walk;
    walk.place(orbit);
    EXPECT_TRUE(isAt(walk.getPosition(), 1, 2, 3));
    EXPECT_TRUE(walk.isFalling());
}

TEST(FlyCamera, ReachesItsSpeedAndStops) {
    FlyCamera camera;
    camera.setMoveRate(4);
    camera.move(1, 0, 0);
    camera.update(2);
    // 10 (t - (1 - exp(-4 t)) / 4)
    EXPECT_TRUE(isAt(camera.getPosition(), 0, 0, -10 * (2 - (1 - std::exp(-8.0)) / 4)));
    const double before = double(camera.getPosition().z);
    camera.move(0, 0, 0);
    camera.update(5);
    EXPECT_NEAR(double(camera.getPosition().z), before - 2.5 * (1 - std::exp(-8.0)), 1e-4);
    camera.setPosition({0, 0, 0});
    camera.update(1);
    EXPECT_TRUE(isAt(camera.getPosition(), 0, 0, 0));
}

TEST(FlyCamera, FliesAlongTheViewOrLevel) {
    FlyCamera camera;
    camera.setMoveRate(0);
    camera.setSpeed(2);
    camera.setAngles(90, 30);
    camera.move(1, 0, 0);
    camera.update(1);
    EXPECT_TRUE(isAt(camera.getPosition(), -std::sqrt(3.0), 1, 0));
    camera.setPosition({0, 0, 0});
    camera.setLevel(true);
    camera.update(1);
    EXPECT_TRUE(isAt(camera.getPosition(), -2, 0, 0));
    camera.setPosition({0, 0, 0});
    camera.move(0, 1, 0);
    camera.update(1);
    EXPECT_TRUE(isAt(camera.getPosition(), 0, 0, -2));
    camera.setPosition({0, 0, 0});
    camera.move(0, 0, 1);
    camera.setHurrying(true);
    camera.update(1);
    EXPECT_TRUE(isAt(camera.getPosition(), 0, 8, 0));
}

TEST(FlyCamera, ADiagonalIsNotFaster) {
    FlyCamera camera;
    camera.setMoveRate(0);
    camera.setSpeed(1);
    camera.move(1, 1, 0);
    camera.update(1);
    EXPECT_NEAR(std::hypot(camera.getPosition().x, camera.getPosition().z), 1, 1e-6);
}

struct Walk : testing::Test {
    // Walks along +X (yaw -90) at once at 2 units per second.
    static WalkCamera walker(WalkCamera::Ground ground) {
        WalkCamera camera(std::move(ground), 1.5);
        camera.setMoveRate(0);
        camera.setSpeed(2);
        camera.setAngles(-90, 20);
        camera.move(1, 0);
        return camera;
    }
};

TEST_F(Walk, IsLevelWhateverThePitchIs) {
    WalkCamera camera = walker(nullptr);
    camera.update(1);
    EXPECT_TRUE(isAt(camera.getPosition(), 2, 1.5, 0));
    camera.move(0, 1);
    camera.update(1);
    EXPECT_TRUE(isAt(camera.getPosition(), 2, 1.5, 2));
    camera.move(1, 0);
    camera.setHurrying(true);
    camera.update(1);
    EXPECT_TRUE(isAt(camera.getPosition(), 10, 1.5, 2));
}

TEST_F(Walk, FollowsTheGroundUpAndDown) {
    const auto hill = [](double x, double) { return 2 - std::abs(x - 3) * 0.8; }; // 39 degrees
    WalkCamera camera = walker(hill);
    for (int i = 0; i < 60; ++i) {
        camera.update(0.05);
        const Z3MVECTOR3D at = camera.getPosition();
        EXPECT_NEAR(double(at.y), hill(double(at.x), 0) + 1.5, 1e-5);
        EXPECT_FALSE(camera.isFalling());
    }
    EXPECT_NEAR(double(camera.getPosition().x), 6, 1e-4);
}

TEST_F(Walk, StopsAtASlopeThatIsTooSteep) {
    WalkCamera camera = walker([](double x, double) { return x > 1 ? (x - 1) * 2 : 0; }); // 63
    camera.update(3);
    EXPECT_NEAR(double(camera.getPosition().x), 1, 0.1);
    EXPECT_LE(double(camera.getPosition().y), 1.5 + 0.2); // not more than a short step up
    camera.setMaxSlope(70);
    camera.update(1);
    EXPECT_NEAR(double(camera.getPosition().x), 3, 0.1);
}

TEST_F(Walk, SlidesAlongAWall) {
    WalkCamera camera = walker([](double x, double) { return x > 1 ? 10.0 : 0.0; });
    camera.setAngles(-45, 0); // along +X and -Z
    camera.update(2);
    EXPECT_NEAR(double(camera.getPosition().x), 1, 0.1);
    EXPECT_NEAR(double(camera.getPosition().z), -2 * std::sqrt(2.0), 1e-3);
    EXPECT_NEAR(double(camera.getPosition().y), 1.5, 1e-6);
}

// A ridge that is narrower than the way of one update.
TEST_F(Walk, DoesNotPassThroughARidgeBetweenTwoFrames) {
    WalkCamera camera = walker([](double x, double) { return x > 1 && x < 1.2 ? 5.0 : 0.0; });
    camera.update(3);
    EXPECT_LE(double(camera.getPosition().x), 1);
}

TEST_F(Walk, FallsFromACliff) {
    WalkCamera camera = walker([](double x, double) { return x < 1 ? 10.0 : 0.0; });
    camera.setGravity(8);
    camera.update(0.49);
    EXPECT_FALSE(camera.isFalling());
    camera.update(0.05); // over the edge
    EXPECT_TRUE(camera.isFalling());
    const double before = double(camera.getPosition().y);
    camera.update(0.5);
    EXPECT_LT(double(camera.getPosition().y), before - 1);
    EXPECT_GT(double(camera.getPosition().y), 1.5);
    camera.update(5);
    EXPECT_FALSE(camera.isFalling());
    EXPECT_NEAR(double(camera.getPosition().y), 1.5, 1e-6);
}

// On rough ground, at every frame rate, in every direction.
TEST_F(Walk, IsNeverBelowTheGround) {
    const auto rough = [](double x, double z) {
        return 3 * std::sin(x * 1.3) * std::cos(z * 1.7) + (std::fmod(std::abs(x), 5) < 1 ? 4 : 0);
    };
    WalkCamera camera = walker(rough);
    for (int i = 0; i < 3000; ++i) {
        camera.turn(i % 37, 0);
        camera.update(0.001 * (i % 97));
        const Z3MVECTOR3D at = camera.getPosition();
        ASSERT_GE(double(at.y) - 1.5, rough(double(at.x), double(at.z)) - 1e-3) << i;
    }
}

TEST_F(Walk, HeightsThatAreNoNumbersAreNotWalkedOn) {
    WalkCamera camera = walker([](double x, double) { return x > 1 ? notANumber : 0.0; });
    camera.update(3);
    EXPECT_LE(double(camera.getPosition().x), 1);
    WalkCamera nowhere([](double, double) { return notANumber; });
    nowhere.update(1);
    EXPECT_TRUE(isAt(nowhere.getPosition(), 0, 1.7, 0));
}

TEST_F(Walk, IsSetOnTheGroundOrAboveIt) {
    WalkCamera camera([](double x, double) { return x; });
    camera.setOnGround(4, 5);
    EXPECT_TRUE(isAt(camera.getPosition(), 4, 5.7, 5));
    camera.setPosition({4, 1, 5}); // below
    EXPECT_TRUE(isAt(camera.getPosition(), 4, 5.7, 5));
    EXPECT_FALSE(camera.isFalling());
    camera.setPosition({4, 9, 5});
    EXPECT_TRUE(isAt(camera.getPosition(), 4, 9, 5));
    EXPECT_TRUE(camera.isFalling());
    camera.setEyeHeight(1);
    camera.setOnGround(0, 0);
    EXPECT_TRUE(isAt(camera.getPosition(), 0, 1, 0));
}

struct CameraInput : testing::Test {
    Input input;
    FlyCamera camera;

    void frame(std::initializer_list<SDL_Event> events) {
        input.beginFrame();
        for (const SDL_Event &event : events)
            input.handle(event);
        camera.handle(input);
        camera.update(10);
    }
};

TEST_F(CameraInput, ADragTurns) {
    frame({motionEvent(10, 10, 10, 10)});
    EXPECT_EQ(camera.getYaw(), 0);
    frame({buttonEvent(10, 10, true), motionEvent(30, 50, 20, 40)});
    EXPECT_NEAR(camera.getYaw(), -5, 1e-6); // to the right
    EXPECT_NEAR(camera.getPitch(), -10, 1e-6);
    frame({motionEvent(30, 40, 0, -10)});
    EXPECT_NEAR(camera.getPitch(), -7.5, 1e-6);
    frame({motionEvent(34, 40, 4, 0), buttonEvent(34, 40, false)}); // the last one
    EXPECT_NEAR(camera.getYaw(), -6, 1e-6);
    frame({motionEvent(90, 90, 60, 50)});
    EXPECT_NEAR(camera.getYaw(), -6, 1e-6);
}

TEST_F(CameraInput, MotionBeforeAPressAndAfterItsReleaseIsNoDrag) {
    OrbitCamera orbit;
    frame({motionEvent(300, 0, 300, 0), buttonEvent(300, 0, true), buttonEvent(300, 0, false)});
    EXPECT_EQ(camera.getYaw(), 0);
    frame({motionEvent(310, 0, 10, 0), buttonEvent(310, 0, true), motionEvent(314, 0, 4, 0),
           buttonEvent(314, 0, false), motionEvent(600, 0, 286, 0)});
    EXPECT_NEAR(camera.getYaw(), -1, 1e-6);
    input.beginFrame();
    input.handle(motionEvent(200, 0, 200, 0));
    input.handle(buttonEvent(200, 0, true, SDL_BUTTON_RIGHT));
    orbit.handle(input);
    orbit.update(10);
    EXPECT_NEAR(orbit.getCenter().x, 0, 1e-6);
    EXPECT_EQ(input.getDrag(-1).x, 0);
    EXPECT_EQ(input.getDrag(99).x, 0);
}

TEST_F(CameraInput, AnotherButtonOrNoneTurns) {
    camera.setTurnButton(SDL_BUTTON_RIGHT);
    camera.setDegreesPerPixel(1);
    frame({buttonEvent(0, 0, true), motionEvent(4, 0, 4, 0)});
    EXPECT_EQ(camera.getYaw(), 0);
    frame({buttonEvent(0, 0, true, SDL_BUTTON_RIGHT), motionEvent(4, 0, 4, 0)});
    EXPECT_NEAR(camera.getYaw(), -4, 1e-6);
    camera.setTurnButton(0);
    frame({buttonEvent(0, 0, false, SDL_BUTTON_RIGHT), motionEvent(4, 0, -4, 0)});
    EXPECT_NEAR(camera.getYaw(), 0, 1e-6);
}

TEST_F(CameraInput, KeysMove) {
    const struct {
        std::initializer_list<SDLKey> keys;
        double x, y, z;
    } rows[] = {
        {{SDLK_w}, 0, 0, -1},        {{SDLK_DOWN}, 0, 0, 1},
        {{SDLK_d}, 1, 0, 0},         {{SDLK_LEFT}, -1, 0, 0},
        {{SDLK_PAGEUP}, 0, 1, 0},    {{SDLK_c}, 0, -1, 0},
        {{SDLK_w, SDLK_s}, 0, 0, 0}, {{SDLK_SPACE, SDLK_RSHIFT}, 0, 4, 0},
    };
    for (const auto &row : rows) {
        FlyCamera fly;
        fly.setSpeed(1);
        fly.setMoveRate(0);
        Input keys;
        for (const SDLKey key : row.keys)
            keys.handle(keyEvent(key));
        fly.handle(keys);
        fly.update(1);
        EXPECT_TRUE(isAt(fly.getPosition(), row.x, row.y, row.z));
    }
    WalkCamera walk;
    walk.setMoveRate(0);
    Input keys;
    keys.handle(keyEvent(SDLK_UP));
    keys.handle(keyEvent(SDLK_LSHIFT));
    walk.handle(keys);
    walk.update(1);
    EXPECT_TRUE(isAt(walk.getPosition(), 0, 1.7, -12));
}

TEST_F(CameraInput, TheWheelZooms) {
    OrbitCamera orbit;
    input.handle(buttonEvent(0, 0, true, SDL_BUTTON_WHEELUP));
    orbit.handle(input);
    orbit.update(10);
    EXPECT_NEAR(orbit.getDistance(), 9, 1e-9);
}

} // namespace
} // namespace ravolt::test
