// Nodes, meshes and materials for the scene files of tests.

#include "tests/models/modelScenes.h"

#include "ravolt/RAVOLT.h"
#include "ravolt/RVLIGHT.h"
#include "ravolt/RVMATERIAL.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVTEXTURE.h"
#include "ravolt/zlf.h"

#include <gtest/gtest.h>

namespace ravolt::test {

RveNode rootOver(std::vector<RveNode> children) {
    return emptyMesh("[root]", {0, 0, 0}, std::move(children));
}

RveNode nodeNamed(const std::string &name, std::vector<RveNode> children) {
    RveNode node;
    node.name = name;
    node.children = std::move(children);
    return node;
}

RveNode emptyMesh(const std::string &name, RveVector position, std::vector<RveNode> children) {
    RveNode node = nodeNamed(name, std::move(children));
    node.kind = RveKind::mesh;
    node.position = position;
    return node;
}

RveNode squareMesh(const std::string &name, const std::string &material, float half) {
    RveNode node = emptyMesh(name);
    RveMesh &mesh = node.mesh;
    mesh.material = material;
    mesh.radius = half * 1.5f;
    mesh.minimum = {-half, -half, 0};
    mesh.maximum = {half, half, 0};
    mesh.vertices = {{-half, -half, 0}, {half, -half, 0}, {half, half, 0}, {-half, half, 0}};
    mesh.normals.assign(4, {0, 0, 1});
    mesh.uvs = {{0, 0}, {1, 0}, {1, 1}, {0, 1}};
    mesh.faces = {{0, 1, 2}, {0, 2, 3}};
    return node;
}

RveSkin skinOf(std::vector<std::string> bones, unsigned int weights) {
    if (!weights)
        return {};
    const std::size_t number = 4 * std::size_t{weights};
    return {weights, std::vector<std::uint8_t>(number, 0),
            std::vector<float>(number, 1.0f / static_cast<float>(weights)), std::move(bones)};
}

RveNode skinnedSquare(const std::string &name, std::vector<std::string> bones, unsigned int weights,
                      const std::string &material) {
    RveNode square = squareMesh(name, material);
    square.mesh.skin = skinOf(std::move(bones), weights);
    return square;
}

RveNode placed(RveNode node, RveVector position, RveVector rotation) {
    node.position = position;
    node.rotation = rotation;
    return node;
}

RveMaterial materialNamed(const std::string &name, float transparency) {
    RveMaterial material;
    material.name = name;
    material.transparency = transparency;
    return material;
}

Bytes bytesOf(const RveScene &scene, RveVersion version) {
    const RveResult result = encodeRve(scene, version);
    EXPECT_EQ(result.error, "");
    return result.bytes;
}

RVNODE *loadBytes(const Bytes &bytes) {
    writeFile("scene.rve", bytes);
    return RAVOLT::load("scene.rve");
}

RVNODE *loadScene(const RveScene &scene, RveVersion version) {
    RVNODE *root = loadBytes(bytesOf(scene, version));
    EXPECT_NE(root, nullptr);
    return root;
}

RVNODE *loadScene(std::vector<RveNode> childrenOfRoot) {
    return loadScene(RveScene{{}, rootOver(std::move(childrenOfRoot))});
}

LoadTraces::LoadTraces()
    : nodes(RVNODE::getNumberOfNodes()), materials(RVMATERIAL::getNumberOfMaterials()),
      textures(RVTEXTURE::getNumberOfTextures()), nextId(zlfNewId()) {
    releaseId(nextId);
}

void disableDrawingState() {
    RVMESH::reset();
    RVMATERIAL::reset();
    RVLIGHT::lightingOff();
    RVTEXTURE::texturingOff(RV_TEXTURE_UNITS);
    RVOPENGL::blendingOff();
    RVOPENGL::twoSideOff();
}

RVMESH *meshNamed(const std::string &name) {
    RVNODE *node = RVNODE::findByName(name.c_str());
    EXPECT_TRUE(node && node->getType() == RV_NODE_TYPE_MESH) << name;
    return static_cast<RVMESH *>(node);
}

} // namespace ravolt::test
