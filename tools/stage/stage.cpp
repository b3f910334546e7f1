// Lights of the rigs are directional. Where such a light stands is of no account, except that the
// engine draws a small pyramid there: so they all stand behind the camera.
//
// The engine leaves OpenGL lights on that an object does not need any more. So there are always
// four of them, the most that an object can have; those that a rig does not need are black.

#include "tools/stage/stage.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <ravolt.h>

namespace ravolt::tool {

namespace {

constexpr double degree = std::numbers::pi / 180;
constexpr double angleOfView = 40;
constexpr double margin = 1.08; // of the room that the scene takes in the picture
constexpr std::size_t lightsOfAnObject = 4;
constexpr float background[3] = {0.16f, 0.18f, 0.22f};

// One light of a rig: where it comes from, in the axes of the view or of the world.
struct RigLight {
    double right, up, back;
    float brightness;
};

struct Rig {
    const char *name;
    bool withCamera; // or standing in the world
    float ambient;
    std::vector<RigLight> lights;
};

const std::vector<Rig> &rigs() {
    static const std::vector<Rig> all = {
        {"studio",
         true,
         0.25f,
         {{-0.6, 0.7, 0.7, 0.75f}, {0.9, 0.1, 0.5, 0.3f}, {0.3, 0.6, -0.9, 0.35f}}},
        {"headlight", true, 0.2f, {{0, 0, 1, 0.85f}}},
        {"sun", false, 0.3f, {{0.5, 0.8, 0.4, 0.9f}}},
        {"low sun", false, 0.15f, {{-1, 0.25, 0.2, 0.95f}}},
    };
    return all;
}

Vector vectorFrom(const Z3MVECTOR3D &v) { return {v.x, v.y, v.z}; }

Z3MVECTOR3D floats(const Vector &v) {
    return Z3MVECTOR3D(static_cast<float>(v.x), static_cast<float>(v.y), static_cast<float>(v.z));
}

template <class Visit> void walk(RVNODE *node, const Visit &visit) {
    // The children are counted first: a visit may unlink the node it is given.
    std::vector<RVNODE *> children;
    for (unsigned int i = 0; i < node->getNumberOfChildren(); ++i)
        children.push_back(node->getChild(i));
    visit(node);
    for (RVNODE *child : children)
        walk(child, visit);
}

const RVMESH *visibleMesh(const RVNODE *node) {
    if (node->getType() != RV_NODE_TYPE_MESH)
        return nullptr;
    const RVMESH *mesh = static_cast<const RVMESH *>(node);
    return !mesh->isHidden() && mesh->getNumberOfFaces() > 0 ? mesh : nullptr;
}

Affine worldOf(RVNODE *node) {
    const Z3MMATRIX matrix = node->getFinalMatrix(nullptr);
    const float *m = matrix.e; // column by column
    return {matrixOfColumns({m[0], m[1], m[2]}, {m[4], m[5], m[6]}, {m[8], m[9], m[10]}),
            {m[12], m[13], m[14]}};
}

std::vector<Vector> placesOfVertices(RVNODE *root) {
    std::vector<Vector> places;
    walk(root, [&](RVNODE *node) {
        const RVMESH *mesh = visibleMesh(node);
        if (!mesh)
            return;
        const Affine world = worldOf(node);
        const Z3MVECTOR3D *vertices = mesh->getVertexPtr();
        for (unsigned int i = 0; i < mesh->getNumberOfVertices(); ++i)
            places.push_back(world(vectorFrom(vertices[i])));
    });
    return places;
}

} // namespace

Sphere sphereAround(RVNODE *root) {
    const std::vector<Vector> places = placesOfVertices(root);
    Sphere sphere;
    if (places.empty())
        return sphere;
    Vector low = places[0], high = places[0];
    for (const Vector &p : places) {
        low = {std::min(low.x, p.x), std::min(low.y, p.y), std::min(low.z, p.z)};
        high = {std::max(high.x, p.x), std::max(high.y, p.y), std::max(high.z, p.z)};
    }
    sphere.center = (low + high) * 0.5;
    for (const Vector &p : places)
        sphere.radius = std::max(sphere.radius, length(p - sphere.center));
    return sphere;
}

namespace {

// The direction to the camera that stands there.
Vector backAt(double yaw, double pitch) {
    return {std::sin(yaw * degree) * std::cos(pitch * degree), std::sin(pitch * degree),
            std::cos(yaw * degree) * std::cos(pitch * degree)};
}

// The triangles of a scene as vectors along their normals, each as long as twice its area; scaled
// by the scene's own size, so that nothing overflows.
std::vector<Vector> facings(RVNODE *root, double size) {
    std::vector<Vector> result;
    walk(root, [&](RVNODE *node) {
        const RVMESH *mesh = visibleMesh(node);
        if (!mesh)
            return;
        const Affine world = worldOf(node);
        const auto corner = [&](unsigned int face, int index) {
            const unsigned short vertex = mesh->getFacePtr()[face].vertex[index];
            return world(vectorFrom(mesh->getVertexPtr()[vertex])) * (1 / size);
        };
        for (unsigned int i = 0; i < mesh->getNumberOfFaces(); ++i)
            result.push_back(cross(corner(i, 1) - corner(i, 0), corner(i, 2) - corner(i, 0)));
    });
    return result;
}

} // namespace

struct Stage::View {
    double distance; // from the scene's centre
    Vector right, up, back, eye;
};

Stage::Stage(RVNODE *root) : scene(root), around(sphereAround(root)), camera(new RVCAMERA) {
    if (around.radius == 0)
        around.radius = 1;
    for (std::size_t i = 0; i < lightsOfAnObject; ++i)
        rigLights.push_back(new RVLIGHT);
    walk(scene, [this](RVNODE *node) {
        // One with children cannot leave the tree without them.
        const bool leaf = node->getNumberOfChildren() == 0 && node->getParent();
        if (node->getType() == RV_NODE_TYPE_LIGHT && leaf) {
            sceneLights.push_back(node);
            lightParents.push_back(node->getParent());
        }
    });
    RVOPENGL::setBackgroundColor(background[0], background[1], background[2], 1.0f);
    setRig(0);
    lookFromTheFront();
}

void Stage::lookFromTheFront() {
    const Vector back = backAt(yaw, pitch);
    Vector sum;
    double all = 0, seen = 0;
    for (const Vector &facing : facings(scene, around.radius)) {
        sum = sum + facing;
        all += length(facing);
        seen += std::max(0.0, dot(facing, back));
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

int Stage::numberOfRigs() const {
    return static_cast<int>(rigs().size()) + (sceneLights.empty() ? 0 : 1);
}

std::string Stage::rigName(int index) {
    const auto place = static_cast<std::size_t>(index);
    return place < rigs().size() ? rigs()[place].name : "the scene's own lights";
}

void Stage::setRig(int index) {
    rig = std::clamp(index, 0, numberOfRigs() - 1);
    const auto place = static_cast<std::size_t>(rig);
    const bool own = place >= rigs().size();
    for (std::size_t i = 0; i < sceneLights.size(); ++i)
        if (own && !sceneLights[i]->getParent())
            sceneLights[i]->link(lightParents[i]);
        else if (!own && sceneLights[i]->getParent())
            sceneLights[i]->unlink();

    const float ambient = own ? 0.2f : rigs()[place].ambient;
    RVOPENGL::setGlobalAmbientLight(ambient, ambient, ambient, 1.0f);
    for (std::size_t i = 0; i < rigLights.size(); ++i) {
        const bool lit = !own && i < rigs()[place].lights.size();
        const float b = lit ? rigs()[place].lights[i].brightness : 0;
        rigLights[i]->setLightType(RV_LIGHT_TYPE_DIRECTIONAL);
        rigLights[i]->setExclusive(!own); // nearer lights, which cannot leave the tree, come second
        rigLights[i]->setAmbient(0, 0, 0, 1);
        rigLights[i]->setDiffuse(b, b, b, 1);
        rigLights[i]->setSpecular(b, b, b, 1);
    }
}

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

Stage::View Stage::viewNow() const {
    const double width = part.wholeWidth ? part.wholeWidth : RVSETTINGS::getSDLWindowX();
    const double height = part.wholeHeight ? part.wholeHeight : RVSETTINGS::getSDLWindowY();
    const double aspect = width / std::max(1.0, height);
    const double half = angleOfView * degree / 2;
    const double narrow = std::atan(std::tan(half) * std::min(1.0, aspect));
    View view;
    view.distance = around.radius * margin / std::sin(narrow) / zoom;
    view.back = backAt(yaw, pitch);
    view.right = {std::cos(yaw * degree), 0, -std::sin(yaw * degree)};
    view.up = cross(view.back, view.right);
    view.eye = around.center + view.back * view.distance;
    return view;
}

// The planes stand as close to the scene as the view allows, which gives the depth buffer its best
// resolution at any size.
void Stage::project(double distance) {
    const double reach = around.radius * 1.02;
    const double nearest = std::max(distance - reach, (distance + reach) / 2000);
    RVOPENGL::setAngleOfView(static_cast<float>(angleOfView));
    RVOPENGL::setNearPlane(static_cast<float>(nearest));
    RVOPENGL::setFarPlane(static_cast<float>(distance + reach));
    const int width = RVSETTINGS::getSDLWindowX(), height = RVSETTINGS::getSDLWindowY();
    RVOPENGL::resize(0, 0, width, height);
    if (!part.wholeWidth)
        return;
    const double pixel = 2 * nearest * std::tan(angleOfView * degree / 2) / part.wholeHeight;
    const double left = (part.left - part.wholeWidth / 2.0) * pixel;
    const double bottom = (part.bottom - part.wholeHeight / 2.0) * pixel;
    const auto f = [](double value) { return static_cast<float>(value); };
    RVOPENGL::setFrustum(f(left), f(left + width * pixel), f(bottom), f(bottom + height * pixel),
                         f(nearest), f(distance + reach), false);
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

void Stage::aimLights(const View &view) {
    const auto place = static_cast<std::size_t>(rig);
    const bool own = place >= rigs().size();
    constexpr double pyramid = 10; // well above the size of a light's shape
    const Vector behind = view.eye + view.back * (pyramid + view.distance);
    for (std::size_t i = 0; i < rigLights.size(); ++i) {
        Vector from = view.back;
        if (!own && i < rigs()[place].lights.size()) {
            const RigLight &light = rigs()[place].lights[i];
            from = rigs()[place].withCamera
                       ? view.right * light.right + view.up * light.up + view.back * light.back
                       : Vector{light.right, light.up, light.back};
        }
        rigLights[i]->setDirection(floats(unit(from) * -1.0));
        rigLights[i]->setPosition(floats(behind));
    }
}

// Where the scene's own lights shine, black ones of the rig only fill up what they leave over.
std::size_t Stage::rigLightsNeeded() const {
    const bool own = static_cast<std::size_t>(rig) >= rigs().size();
    return own ? rigLights.size() - std::min(rigLights.size(), sceneLights.size())
               : rigLights.size();
}

void Stage::draw() {
    const View view = viewNow();
    project(view.distance);
    aimCamera(view);
    aimLights(view);
    RAVOLT::clear(true, true, false);
    RAVOLT::begin3D(camera);
    scene->pass();
    for (std::size_t i = 0; i < rigLightsNeeded(); ++i)
        rigLights[i]->pass();
    RAVOLT::end3D(true);
    // The 2D block ends the wireframe and brings culling back.
    RAVOLT::begin2D();
    RAVOLT::end2D();
}

void Stage::resize(int width, int height) { RVSETTINGS::resize(0, 0, width, height); }

} // namespace ravolt::tool
