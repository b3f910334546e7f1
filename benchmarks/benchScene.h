#pragma once

// The scenes of the benchmarks, as scene files written and loaded, and the same geometry as plain
// arrays for the baselines.

#include <string>
#include <vector>

class RVCAMERA;
class RVNODE;

namespace bench {

constexpr int windowWidth = 640, windowHeight = 480;

bool startEngine();
void stopEngine();

struct Scene {
    RVNODE *root = nullptr;
    RVCAMERA *camera = nullptr;
};

// 2,000 nodes in a tree three deep, 1,960 of them meshes that share 16 shapes, materials and
// textures.
Scene makeTreeScene();

// 1,000 meshes and 8 lights.
Scene makeLitScene();

// 4,096 entries: 8 lights, 512 transparent meshes, opaque ones with 16 textures.
Scene makeSortScene();

void destroy(Scene &scene);

// Writes a scene file of that many triangles in meshes of 10,000; its path.
std::string writeTriangleScene(int triangles);

// The shapes as the scenes hold them, for drawing by hand.
struct Shape {
    std::vector<float> positions, normals, uvs; // three, three and two a vertex
    std::vector<unsigned short> indices;
};
constexpr int numberOfShapes = 16;
Shape makeShape(int number);
std::vector<unsigned char> makeTexture(int number); // 64 by 64, R G B

// Where mesh `number` of the tree scene stands in eye space, as OpenGL's column-major matrix.
struct Placement {
    int shape;
    int lights; // bit i: light i is among its four nearest
    float matrix[16];
};
std::vector<Placement> placements(const Scene &scene);

// The lights of the lit scene, straight to OpenGL's light `number` with an eye-space position.
constexpr int numberOfLights = 8;
void setLight(int number);

} // namespace bench
