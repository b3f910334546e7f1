// Cubes as meshes of scene files.

#include "tests/pictures/cubes.h"

#include "tests/models/modelScenes.h"

#include <array>

namespace ravolt::test {

RveNode cubeMesh(const std::string &name, const std::string &material) {
    RveNode node = squareMesh(name, material);
    RveMesh &mesh = node.mesh;
    mesh.radius = 1.75f;
    mesh.minimum = {-1, -1, -1};
    mesh.maximum = {1, 1, 1};
    mesh.vertices.clear();
    mesh.normals.clear();
    mesh.uvs.clear();
    mesh.faces.clear();
    for (std::size_t axis = 0; axis < 3; ++axis)
        for (float side : {-1.0f, 1.0f}) {
            const auto first = static_cast<std::uint16_t>(mesh.vertices.size());
            for (const auto &[u, v] : {std::array{0, 0}, {1, 0}, {1, 1}, {0, 1}}) {
                RveVector vertex, normal = {0, 0, 0};
                normal[axis] = vertex[axis] = side;
                vertex[(axis + 1) % 3] = side * static_cast<float>(2 * u - 1);
                vertex[(axis + 2) % 3] = static_cast<float>(2 * v - 1);
                mesh.vertices.push_back(vertex);
                mesh.normals.push_back(normal);
                mesh.uvs.push_back({static_cast<float>(u), static_cast<float>(v)});
            }
            const auto at = [first](int corner) {
                return static_cast<std::uint16_t>(first + corner);
            };
            mesh.faces.push_back({at(0), at(1), at(2)});
            mesh.faces.push_back({at(0), at(2), at(3)});
        }
    return node;
}

RveMaterial coloured(const std::string &name, RveColor diffuse, float transparency) {
    RveMaterial material = materialNamed(name, transparency);
    material.diffuse = diffuse;
    return material;
}

} // namespace ravolt::test
