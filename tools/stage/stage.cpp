// The stage's own camera and projection are worked out in double precision.

#include "tools/stage/stage.h"

#include "tools/stage/floor.h"
#include "tools/stage/vectors.h"
#include "tools/stage/walk.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <ravolt.h>

namespace ravolt::tool {

namespace {

constexpr double angleOfView = 40;
constexpr double margin = 1.08;       // of the room that the scene takes in the picture
constexpr double normalLength = 0.02; // in radii of the scene

} // namespace

Stage::Stage(RVNODE *root)
    : scene(root), around(sphereAround(root)), camera(new RVCAMERA), lights(root) {
    setSphere(around);
    RVOPENGL::setBackgroundColor(background[0], background[1], background[2], 1.0f);
    lookFromFront();
    walk(scene, [this](RVNODE *node) {
        const RVMESH *mesh = visibleMesh(node);
        skinnedByPrograms =
            skinnedByPrograms || (mesh && mesh->isSkinned() && RVSHADER::useSkinning());
    });
}

void Stage::setSphere(const Sphere &wanted) {
    around = wanted;
    if (around.radius == 0)
        around.radius = 1;
    RVMESH::setNormalLength(static_cast<float>(normalLength * around.radius));
}

void Stage::lookFromFront() {
    const Vector back = directionAt(yaw, pitch);
    Vector sum;
    double all = 0, seen = 0;
    for (const Vector &normal : areaNormals(scene, around.radius)) {
        sum = sum + normal;
        all += length(normal);
        seen += std::max(0.0, dot(normal, back));
    }
    // Enough is seen, or the surface has no one front.
    if (seen >= 0.15 * all || length(sum) <= 0.1 * all)
        return;
    const Vector front = unit(sum);
    if (std::hypot(front.x, front.z) > 0.1)
        yaw += std::atan2(front.x, front.z) / degree;
    if (front.y < 0)
        pitch = -pitch;
}

bool Stage::isBackground(int red, int green, int blue) {
    const auto near = [](int shown, float stated) {
        return std::abs(static_cast<float>(shown) - stated * 255) <= 1;
    };
    return near(red, background[0]) && near(green, background[1]) && near(blue, background[2]);
}

void Stage::setPitch(double degrees) { pitch = std::clamp(degrees, -89.0, 89.0); }

void Stage::setZoom(double factor) { zoom = std::clamp(factor, 0.05, 50.0); }

void Stage::setWireframe(bool on) { on ? RAVOLT::wireframeOn() : RAVOLT::wireframeOff(); }

void Stage::setNormals(bool on) { on ? RVMESH::showNormals() : RVMESH::hideNormals(); }

void Stage::setBoxes(bool on) {
    if (on && boxes.empty())
        walk(scene, [this](RVNODE *node) {
            if (const RVMESH *mesh = visibleMesh(node)) {
                RVHELPER *box = new RVHELPER;
                box->setRadius(mesh->getRadius());
                box->setMin(mesh->getMinimum());
                box->setMax(mesh->getMaximum());
                box->setColor(1.0f, 0.8f, 0.2f, 0.15f);
                box->setData(node);
                boxes.push_back(box);
            }
        });
    for (RVHELPER *box : boxes)
        if (on && !box->getParent())
            box->link(static_cast<RVNODE *>(box->getData()));
        else if (!on && box->getParent())
            box->unlink();
}

void Stage::setEffects(const Effects &wanted) {
    effects = wanted;
    if (effects.isOn(Effect::floor) && !floor)
        floor = makeFloor(around);
}

View Stage::viewNow() const {
    const double aspect = aspectOf(part);
    const double half = angleOfView * degree / 2;
    const double narrow = std::atan(std::tan(half) * std::min(1.0, aspect));
    View view;
    view.distance = around.radius * margin / std::sin(narrow) / zoom;
    view.back = directionAt(yaw, pitch);
    view.right = {std::cos(yaw * degree), 0, -std::sin(yaw * degree)};
    view.up = cross(view.back, view.right);
    view.eye = around.center + view.back * view.distance;
    return view;
}

// The planes are as close to the scene as the view allows, which gives the depth buffer its best
// resolution at any size.
void Stage::projectFrom(double distance) {
    const double reach =
        around.radius * (effects.isOn(Effect::floor) ? std::hypot(floorRadii, 1) : 1) * 1.02;
    const double nearest = std::max(distance - reach, (distance + reach) / 2000);
    project({angleOfView, nearest, distance + reach}, part);
}

// As a matrix, made in double precision, for scenes so large or small that the camera's own aiming
// would overflow.
void Stage::aimCamera(const View &view) {
    const Vector &r = view.right, &u = view.up, &b = view.back;
    const Vector move = {-dot(r, view.eye), -dot(u, view.eye), -dot(b, view.eye)};
    const auto f = [](double value) { return static_cast<float>(value); };
    camera->setPositioning(RV_NODE_POSITIONING_MATRIX);
    camera->setMatrix(Z3MMATRIX(f(r.x), f(u.x), f(b.x), 0, f(r.y), f(u.y), f(b.y), 0, f(r.z),
                                f(u.z), f(b.z), 0, f(move.x), f(move.y), f(move.z), 1));
}

// The engine codes the depth of a thing as (distance + near plane) / far plane.
void Stage::focus(double distance) {
    const double nearest = RVOPENGL::getNearPlane(), farthest = RVOPENGL::getFarPlane();
    const double sharp = distance + (2 * effects.get(EffectParameter::focus) - 1) * around.radius;
    const double depth = 2 * effects.get(EffectParameter::focusDepth) * around.radius;
    RAVOLT::setDOFFocus(static_cast<float>((sharp + nearest) / farthest));
    RAVOLT::setDOFRange(static_cast<float>(farthest / depth));
}

void Stage::applyEffects(double distance) {
    // Without programs a mesh that they skin would be drawn in its bind pose.
    switchTo(effects.isOn(Effect::perPixel) || skinnedByPrograms, RVSETTINGS::forceShadersOn,
             RVSETTINGS::forceShadersOff);
    switchTo(effects.isOn(Effect::shadows), RAVOLT::shadowingOn, RAVOLT::shadowingOff);
    applyToPicture(effects, !RAVOLT::isWireframed()); // which would draw a picture's outline only
    focus(distance);
}

void Stage::draw() {
    const View view = viewNow();
    projectFrom(view.distance);
    aimCamera(view);
    lights.arrange(view, around, effects);
    applyEffects(view.distance);
    RVFBO::unbind(); // so that a picture in a target gets the target's size
    RAVOLT::clear(true, true, false);
    RAVOLT::begin3D(camera);
    scene->pass();
    if (effects.isOn(Effect::floor))
        floor->pass();
    lights.pass();
    endFrame();
}

} // namespace ravolt::tool
