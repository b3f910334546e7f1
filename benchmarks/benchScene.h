#pragma once

// The scenes of the benchmarks, as scene files written and loaded, and the same geometry as plain
// arrays for the baselines.

#include <string>
#include <vector>

class RVCAMERA;
class RVNODE;

namespace ravolt {
struct RveMesh;
struct RveScene;
} // namespace ravolt

namespace bench {

constexpr int windowWidth = 640, windowHeight = 480;

// Makes sure that the engine is running, with or without its programs; restarts it if it is running
// the other way. Ends the program if it does not start. An engine that is running keeps its limit
// of the anisotropy; 0 is the driver's.
void startEngine(bool programs, int maxAnisotropy = 0);
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

// 1,000 meshes before a wall, under one spot light that casts shadows and is bright enough to glow.
Scene makeEffectScene();

// Loads a scene and looks at it along -z from that distance.
Scene open(const ravolt::RveScene &description, float distance);

void destroy(Scene &scene);

// A frame without the swap, waited for.
void drawByEngine(const Scene &scene);

// What a frame is drawn with, switched on in the engine by `use`; `programs` is per-pixel lighting,
// which all the others include. Needs an engine with programs.
struct Effects {
    const char *name; // of the benchmark
    const char *key;  // on a command line
    bool programs, shadows, bloom, toneMapping, depthOfField;
};
constexpr Effects effects[] = {
    {"plain", "plain", false, false, false, false, false},
    {"per-pixel lighting", "perPixel", true, false, false, false, false},
    {"shadows", "shadows", true, true, false, false, false},
    {"bloom", "bloom", true, false, true, false, false},
    {"tone mapping", "toneMapping", true, false, true, true, false},
    {"depth of field", "depthOfField", true, false, false, false, true},
    {"all", "all", true, true, true, true, true},
};
void use(const Effects &wanted);

// Writes a scene file of that many triangles in meshes of 10,000; its path.
std::string writeTriangleScene(int triangles);

// The shapes of the scenes, for drawing by hand.
struct Shape {
    std::vector<float> positions, normals, uvs; // three, three and two a vertex
    std::vector<unsigned short> indices;
};
constexpr int numberOfShapes = 16;
void fillMesh(const Shape &shape, ravolt::RveMesh &mesh);
Shape makeShape(int number); // that of number 16 is the wall of the effects' scene
std::vector<unsigned char> makeTexture(int number); // 64 by 64, R G B

// The position of mesh `number` of the tree scene in eye space, as OpenGL's column-major matrix.
struct Placement {
    int shape;
    int lights; // bit i: light i is among its four nearest
    float matrix[16];
};
std::vector<Placement> placements(const Scene &scene);

// The spot light of the effects' scene, and how the frame is composed.
struct Spot {
    float position[3], direction[3]; // in the world, whose axes are the camera's
    float diffuse[4], ambient[4];
    float cutOff, nearPlane, farPlane;
    float cameraDistance; // of the camera from the world's origin, along z
};
extern const Spot spot;
constexpr float bloomIntensity = 0.5f, exposure = 1.0f, focus = 0.0585f, range = 100.0f;

// The lights of the lit scene, straight to OpenGL's light `number` with an eye-space position.
constexpr int numberOfLights = 8;
void setLight(int number);

} // namespace bench
