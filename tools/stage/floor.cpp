// The engine loads meshes from scene files only, so the floor is written to one.

#include "tools/stage/floor.h"

#include "tools/common/failure.h"
#include "tools/common/temporaryFolder.h"
#include "tools/writers/rveWriter.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <ravolt/RAVOLT.h>

namespace ravolt::tool {

namespace {

// Fine enough to show a spot light without programs too.
constexpr int rings = 40, sectors = 72;
constexpr double gap = 0.002; // below the scene, in its radii

RveMaterial paint() {
    RveMaterial material;
    material.name = "[floor of the stage]";
    material.ambient = {0.5f, 0.5f, 0.52f, 1};
    material.diffuse = {0.5f, 0.5f, 0.52f, 1};
    material.specular = {0, 0, 0, 1};
    return material;
}

RveMesh disc(const Sphere &scene) {
    const double radius = scene.radius * floorRadii;
    RveMesh mesh;
    mesh.material = paint().name;
    mesh.radius = static_cast<float>(radius);
    for (int ring = 0; ring <= rings; ++ring)
        for (int sector = 0; sector < sectors; ++sector) {
            const double turn = 2 * std::numbers::pi * sector / sectors;
            const double far = radius * ring / rings;
            mesh.vertices.push_back({static_cast<float>(far * std::sin(turn)), 0,
                                     static_cast<float>(far * std::cos(turn))});
            mesh.normals.push_back({0, 1, 0});
        }
    const auto vertex = [](int ring, int sector) {
        return static_cast<std::uint16_t>(ring * sectors + sector % sectors);
    };
    for (int ring = 0; ring < rings; ++ring)
        for (int sector = 0; sector < sectors; ++sector) {
            const std::uint16_t a = vertex(ring, sector), b = vertex(ring + 1, sector),
                                c = vertex(ring + 1, sector + 1), d = vertex(ring, sector + 1);
            mesh.faces.push_back({a, b, c});
            if (ring > 0) // the innermost ring is a point
                mesh.faces.push_back({a, c, d});
        }
    return mesh;
}

} // namespace

RVNODE *makeFloor(const Sphere &scene) {
    RveScene floor;
    floor.materials = {paint()};
    floor.root.kind = RveKind::mesh;
    floor.root.name = "[root]";
    floor.root.mesh = disc(scene);
    floor.root.position = {static_cast<float>(scene.center.x),
                           static_cast<float>(scene.lowest - gap * scene.radius),
                           static_cast<float>(scene.center.z)};
    const TemporaryFolder folder;
    const std::string file = (folder.path() / "floor.rve").string();
    const std::string error = writeRve(file, floor);
    if (!error.empty())
        throw Failure(file, error);
    RVNODE *root = RAVOLT::load(file.c_str());
    if (!root)
        throw Failure(file, "the engine does not take it");
    return root;
}

} // namespace ravolt::tool
