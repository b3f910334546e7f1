#pragma once

// Scene files for the tests, described by a few lines and written into the test's own folder.

#include "ravolt/RVMESH.h"
#include "ravolt/RVNODE.h"
#include "tests/support/files.h"
#include "tools/writers/rveWriter.h"

#include <string>
#include <vector>

namespace ravolt::test {

// A mesh without geometry, named "[root]", over these children.
RveNode rootOver(std::vector<RveNode> children);

// A plain node over these children.
RveNode nodeNamed(const std::string &name, std::vector<RveNode> children = {});

// A mesh without geometry; as a bone it is a joint.
RveNode emptyMesh(const std::string &name, RveVector position = {0, 0, 0},
                  std::vector<RveNode> children = {});

// A square of two triangles that faces +z, from -half to +half, with texture coordinates.
RveNode squareMesh(const std::string &name, const std::string &material = "[none]",
                   float half = 1.0f);

// Four vertices with as many equal weights each, all of the first bone; without weights no skin.
RveSkin skinOf(std::vector<std::string> bones, unsigned int weights = 1);
RveNode skinnedSquare(const std::string &name, std::vector<std::string> bones,
                      unsigned int weights = 1, const std::string &material = "[none]");

RveNode placed(RveNode node, RveVector position, RveVector rotation = {0, 0, 0});

RveMaterial materialNamed(const std::string &name, float transparency = 1.0f);

// The scene as the bytes of its file; an error of the writer fails the test.
Bytes bytesOf(const RveScene &scene, RveVersion version = RveVersion::v16a);

// Loads these bytes as "scene.rve".
RVNODE *loadBytes(const Bytes &bytes);

// Writes and loads the scene; NULL fails the test.
RVNODE *loadScene(const RveScene &scene, RveVersion version = RveVersion::v16a);
RVNODE *loadScene(std::vector<RveNode> childrenOfRoot);

// Number of objects and the next identifier: what a failed load must not change.
struct LoadTraces {
    LoadTraces();
    unsigned int nodes, materials, textures, nextId;
    friend bool operator==(const LoadTraces &, const LoadTraces &) = default;
};

// Disables everything that a drawing may have enabled and that outlasts a test.
void disableDrawingState();

// The mesh of that name; NULL fails the test.
RVMESH *meshNamed(const std::string &name);

} // namespace ravolt::test
