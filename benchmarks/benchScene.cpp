// Builds the scenes of the benchmarks and loads them into the engine.

#include "benchScene.h"

#include "ravolt/RAVOLT.h"
#include "ravolt/RVCAMERA.h"
#include "ravolt/RVLIGHT.h"
#include "ravolt/RVMATERIAL.h"
#include "ravolt/RVMESH.h"
#include "ravolt/RVNODE.h"
#include "ravolt/RVOPENGL.h"
#include "ravolt/RVSETTINGS.h"
#include "ravolt/RVTEXTURE.h"
#include "ravolt/zlf.h"
#include "tools/writers/rveWriter.h"
#include "tools/writers/tgaWriter.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace bench {

namespace {

using ravolt::RveKind;
using ravolt::RveNode;
using ravolt::RveScene;

std::string numbered(const char *format, int number) {
    char text[64];
    std::snprintf(text, sizeof text, format, number);
    return text;
}

RveNode meshNode(int shapeNumber, const std::string &name, const std::string &material) {
    const Shape shape = makeShape(shapeNumber);
    RveNode node;
    node.kind = RveKind::mesh;
    node.name = name;
    node.mesh.material = material;
    node.mesh.radius = 1.0f;
    fillMesh(shape, node.mesh);
    return node;
}

RveNode plainNode(const std::string &name) {
    RveNode node;
    node.name = name;
    return node;
}

// Opaque materials with a texture each, and one that is transparent.
std::vector<ravolt::RveMaterial> makeMaterials() {
    std::vector<ravolt::RveMaterial> materials;
    for (int i = 0; i <= numberOfShapes; ++i) {
        ravolt::RveMaterial material;
        material.name = numbered("bench%02d", i);
        material.texture = numbered("bench%02d_d.tga", i);
        materials.push_back(material);
        const std::vector<unsigned char> texels = makeTexture(i);
        ravolt::writeTga(material.texture, {64, 64, 3, false, texels.data()});
    }
    ravolt::RveMaterial glass;
    glass.name = "glass";
    glass.transparency = 0.5f;
    materials.push_back(glass);
    return materials;
}

void removeTextures() {
    for (int i = 0; i <= numberOfShapes; ++i)
        std::remove(numbered("bench%02d_d.tga", i).c_str());
}

RVNODE *loadScene(const RveScene &scene) {
    const char *const path = "bench_scene.rve";
    const std::string error = ravolt::writeRve(path, scene);
    if (!error.empty()) {
        std::fprintf(stderr, "%s\n", error.c_str());
        std::exit(1);
    }
    RVNODE *root = RAVOLT::load(path);
    std::remove(path);
    removeTextures();
    return root;
}

// Groups of meshes on a grid that fills the view, shapes mixed. The shape is in the name of a mesh.
RveScene gridScene(int groups, int meshesInGroup, float spacing) {
    RveScene scene;
    scene.materials = makeMaterials();
    scene.root = plainNode("root");
    const int columns = static_cast<int>(std::ceil(std::sqrt(groups * meshesInGroup * 4.0 / 3.0)));
    const int rows = (groups * meshesInGroup + columns - 1) / columns;
    for (int g = 0; g < groups; ++g) {
        RveNode group = plainNode(numbered("group%03d", g));
        group.position = {0.0f, 0.0f, -1.0f};
        for (int m = 0; m < meshesInGroup; ++m) {
            const int number = g * meshesInGroup + m;
            const int shape = number * 7 % numberOfShapes;
            RveNode mesh =
                meshNode(shape, numbered("shape%02d", shape), scene.materials[shape].name);
            mesh.position = {(number % columns - (columns - 1) / 2.0f) * spacing,
                             (number / columns - (rows - 1) / 2.0f) * spacing, 0.0f};
            mesh.rotation = {0.0f, number * 11.0f, 0.0f};
            group.children.push_back(mesh);
        }
        scene.root.children.push_back(group);
    }
    return scene;
}

// A mesh behind the camera that exists for its material alone: with a transparent entry in the
// list, the list is sorted.
RveNode glassNode() {
    RveNode glass = meshNode(0, "glass", "glass");
    glass.position = {0.0f, 0.0f, 5000.0f};
    return glass;
}

constexpr float lightDistance = 60.0f;

// The lights form a ring, half of the way between the camera and the meshes and outside the
// view, so that their markers are not seen. The ring is off the middle, so that no mesh has two of
// them at the same distance.
std::array<float, 3> lightPosition(int number) {
    const float angle = number * 6.2831853f / numberOfLights;
    return {3.7f + 80.0f * std::cos(angle), 1.3f + 80.0f * std::sin(angle), lightDistance / 2};
}

std::array<float, 4> lightColor(int number) {
    return {0.2f + 0.1f * (number % 3), 0.2f + 0.05f * (number % 5), 0.3f, 1.0f};
}

// Squares of the distances from a point in the camera's space to the lights; the four nearest.
int nearestLights(const float *point) {
    std::array<std::pair<float, int>, numberOfLights> lights;
    for (int i = 0; i < numberOfLights; ++i) {
        const auto position = lightPosition(i);
        const float x = position[0] - point[0], y = position[1] - point[1],
                    z = position[2] - lightDistance - point[2];
        lights[i] = {x * x + y * y + z * z, i};
    }
    std::sort(lights.begin(), lights.end());
    int mask = 0;
    for (int i = 0; i < 4; ++i)
        mask |= 1 << lights[i].second;
    return mask;
}

void place(RVNODE *node, std::vector<Placement> &list) {
    int shape = 0;
    if (node->getType() == RV_NODE_TYPE_MESH && std::sscanf(node->getName(), "shape%d", &shape)) {
        Placement placement;
        placement.shape = shape;
        std::memcpy(placement.matrix, node->getCachedMatrix()->e, sizeof placement.matrix);
        placement.lights = nearestLights(placement.matrix + 12);
        list.push_back(placement);
    }
    for (unsigned int i = 0; i < node->getNumberOfChildren(); ++i)
        place(node->getChild(i), list);
}

} // namespace

void startEngine(bool programs, int maxAnisotropy) {
    static bool running = false; // with programs
    if (RAVOLT::isActive() && running == programs)
        return;
    stopEngine();
    zlfSetConsoleEcho(false);
    RVSETTINGS settings;
    settings.setWindowX(windowWidth);
    settings.setWindowY(windowHeight);
    settings.setFBOSizeX(windowWidth);
    settings.setFBOSizeY(windowHeight);
    settings.setColorDepth(32);
    settings.setZetaDepth(24);
    settings.setShaders(programs);
    settings.setMaxAnisotropy(maxAnisotropy);
    if (!RAVOLT::init(&settings)) {
        std::fprintf(stderr, "the engine does not start here, see ravolt_log.txt\n");
        std::exit(1);
    }
    running = programs;
}

Scene open(const RveScene &description, float distance) {
    Scene scene;
    scene.root = loadScene(description);
    scene.camera = new RVCAMERA();
    scene.camera->setPosition(0.0f, 0.0f, distance);
    return scene;
}

void fillMesh(const Shape &shape, ravolt::RveMesh &mesh) {
    for (std::size_t i = 0; i < shape.positions.size(); i += 3) {
        mesh.vertices.push_back(
            {shape.positions[i], shape.positions[i + 1], shape.positions[i + 2]});
        mesh.normals.push_back({shape.normals[i], shape.normals[i + 1], shape.normals[i + 2]});
    }
    for (std::size_t i = 0; i < shape.uvs.size(); i += 2)
        mesh.uvs.push_back({shape.uvs[i], shape.uvs[i + 1]});
    for (std::size_t i = 0; i < shape.indices.size(); i += 3)
        mesh.faces.push_back({shape.indices[i], shape.indices[i + 1], shape.indices[i + 2]});
}

void stopEngine() { RAVOLT::free(); }

Scene makeTreeScene() {
    RveScene scene = gridScene(39, 50, 2.4f); // 1 + 39 + 1,950, and the glass
    scene.root.children.push_back(glassNode());
    for (int i = 0; i < 9; ++i) // to make them 2,000
        scene.root.children.push_back(plainNode(numbered("idle%d", i)));
    return open(scene, 120.0f);
}

Scene makeLitScene() {
    RveScene scene = gridScene(20, 50, 1.6f);
    Scene result = open(scene, lightDistance);
    for (int i = 0; i < numberOfLights; ++i) {
        RVLIGHT *light = new RVLIGHT();
        const auto position = lightPosition(i);
        light->setPosition(position[0], position[1], position[2]);
        const auto diffuse = lightColor(i);
        light->setDiffuse(diffuse[0], diffuse[1], diffuse[2], diffuse[3]);
        light->setAmbient(0.05f, 0.05f, 0.05f, 1.0f);
        light->setSpecular(0.0f, 0.0f, 0.0f, 1.0f);
        light->link(result.root);
    }
    return result;
}

// To OpenGL's light of that number, in eye space under an identity: the camera does not turn.
void setLight(int number) {
    const GLenum light = GL_LIGHT0 + number;
    const auto position = lightPosition(number);
    const auto diffuse = lightColor(number);
    const float ambient[] = {0.05f, 0.05f, 0.05f, 1.0f}, specular[] = {0.0f, 0.0f, 0.0f, 1.0f};
    const float eye[] = {position[0], position[1], position[2] - lightDistance, 1.0f};
    glLightfv(light, GL_AMBIENT, ambient);
    glLightfv(light, GL_DIFFUSE, diffuse.data());
    glLightfv(light, GL_SPECULAR, specular);
    glLightfv(light, GL_POSITION, eye);
}

Scene makeSortScene() {
    RveScene scene = gridScene(64, 62, 1.0f); // 3,968
    for (std::size_t g = 0; g < scene.root.children.size(); ++g)
        for (int i = 0; i < 8; ++i) // 512 of them transparent
            scene.root.children[g].children[i * 7].mesh.material = "glass";
    Scene result = open(scene, 90.0f);
    for (int i = 0; i < 128; ++i)
        (new RVLIGHT())->link(result.root);
    return result;
}

const Spot spot = {{15.0f, 45.0f, 50.0f},
                   {-0.2f, -0.6f, -0.77f},
                   {2.5f, 2.5f, 2.4f, 1.0f},
                   {0.2f, 0.2f, 0.2f, 1.0f},
                   40.0f,
                   20.0f,
                   150.0f,
                   lightDistance};

Scene makeEffectScene() {
    RveScene scene = gridScene(20, 50, 1.6f);
    RveNode wall = meshNode(numberOfShapes, numbered("shape%02d", numberOfShapes),
                            scene.materials[numberOfShapes].name);
    wall.position = {0.0f, 0.0f, -6.0f};
    scene.root.children.push_back(wall);
    Scene result = open(scene, spot.cameraDistance);
    RVLIGHT *light = new RVLIGHT();
    light->setLightType(RV_LIGHT_TYPE_SPOT);
    light->setPosition(spot.position[0], spot.position[1], spot.position[2]);
    light->setDirection(Z3MVECTOR3D(spot.direction[0], spot.direction[1], spot.direction[2]));
    light->setDiffuse(spot.diffuse[0], spot.diffuse[1], spot.diffuse[2], spot.diffuse[3]);
    light->setAmbient(spot.ambient[0], spot.ambient[1], spot.ambient[2], spot.ambient[3]);
    light->setSpecular(0.0f, 0.0f, 0.0f, 1.0f);
    light->setCutOff(spot.cutOff);
    light->castShadows(true);
    light->setShadowNearPlane(spot.nearPlane);
    light->setShadowFarPlane(spot.farPlane);
    light->link(result.root);
    return result;
}

void drawByEngine(const Scene &scene) {
    RAVOLT::clear(true, true, false);
    RAVOLT::begin3D(scene.camera);
    scene.root->pass(true);
    RAVOLT::end3D(true);
    glFinish();
}

void use(const Effects &wanted) {
    wanted.programs ? RVSETTINGS::forceShadersOn() : RVSETTINGS::forceShadersOff();
    wanted.shadows ? RAVOLT::shadowingOn() : RAVOLT::shadowingOff();
    wanted.bloom ? RAVOLT::bloomingOn() : RAVOLT::bloomingOff();
    wanted.toneMapping ? RAVOLT::HDROn() : RAVOLT::HDROff();
    wanted.depthOfField ? RAVOLT::DOFOn() : RAVOLT::DOFOff();
    RAVOLT::setBloomingIntensity(bloomIntensity);
    RAVOLT::setHDRExposure(exposure);
    RAVOLT::setDOFFocus(focus);
    RAVOLT::setDOFRange(range);
}

void destroy(Scene &scene) {
    RVNODE::cleanUp();
    RVMATERIAL::cleanUp();
    for (int i = 0; i <= numberOfShapes; ++i) // the engine has textures of its own
        delete RVTEXTURE::findByFilename(numbered("bench%02d_d.tga", i).c_str());
    RVTEXTURE::texturingOff(RV_TEXTURE_UNITS);
    scene = Scene();
}

std::string writeTriangleScene(int triangles) {
    RveScene scene;
    scene.root = plainNode("root");
    for (int done = 0; done < triangles; done += 10000) {
        RveNode node;
        node.kind = RveKind::mesh;
        node.name = numbered("mesh%d", done);
        for (int i = 0; i < 10000; ++i) {
            const float x = static_cast<float>(i % 100), y = static_cast<float>(i / 100);
            node.mesh.vertices.push_back({x, y, 0.0f});
            node.mesh.normals.push_back({0.0f, 0.0f, 1.0f});
            node.mesh.uvs.push_back({x / 100, y / 100});
            const auto a = static_cast<std::uint16_t>(i);
            node.mesh.faces.push_back({a, static_cast<std::uint16_t>((i + 1) % 10000),
                                       static_cast<std::uint16_t>((i + 100) % 10000)});
        }
        scene.root.children.push_back(node);
    }
    const std::string path = "bench_triangles.rve";
    ravolt::writeRve(path, scene);
    return path;
}

namespace {

// Two triangles for each cell of a grid of vertices, which are stored row by row.
void addCells(Shape &shape, int rows, int columns) {
    for (int r = 0; r < rows; ++r) {
        for (int c = 0; c < columns; ++c) {
            const auto a = static_cast<unsigned short>(r * (columns + 1) + c);
            const auto b = static_cast<unsigned short>(a + columns + 1);
            for (int index : {a + 0, a + 1, b + 0, a + 1, b + 1, b + 0})
                shape.indices.push_back(static_cast<unsigned short>(index));
        }
    }
}

// A square that faces the camera.
Shape makeWall() {
    constexpr int cells = 16;
    Shape shape;
    for (int r = 0; r <= cells; ++r) {
        for (int c = 0; c <= cells; ++c) {
            const float u = static_cast<float>(c) / cells, v = static_cast<float>(r) / cells;
            for (float p : {80.0f * (u - 0.5f), 80.0f * (0.5f - v), 0.0f})
                shape.positions.push_back(p);
            for (float n : {0.0f, 0.0f, 1.0f})
                shape.normals.push_back(n);
            for (float t : {4.0f * u, 4.0f * v})
                shape.uvs.push_back(t);
        }
    }
    addCells(shape, cells, cells);
    for (std::size_t i = 0; i < shape.indices.size(); i += 3) // the front is counterclockwise
        std::swap(shape.indices[i + 1], shape.indices[i + 2]);
    return shape;
}

} // namespace

// A ball with dents, another one for each number: 12 segments by 6 rings.
Shape makeShape(int number) {
    if (number == numberOfShapes)
        return makeWall();
    constexpr int segments = 12, rings = 6;
    Shape shape;
    for (int r = 0; r <= rings; ++r) {
        for (int s = 0; s <= segments; ++s) {
            const float along = static_cast<float>(r) / rings * 3.14159265f;
            const float around = static_cast<float>(s) / segments * 6.28318531f;
            const float normal[] = {std::sin(along) * std::cos(around), std::cos(along),
                                    std::sin(along) * std::sin(around)};
            const float radius = 0.85f + 0.15f * std::cos((1 + number % 6) * around) *
                                             std::sin((1 + number % 3) * along);
            for (float n : normal) {
                shape.normals.push_back(n);
                shape.positions.push_back(n * radius);
            }
            shape.uvs.push_back(static_cast<float>(s) / segments);
            shape.uvs.push_back(static_cast<float>(r) / rings);
        }
    }
    addCells(shape, rings, segments);
    return shape;
}

std::vector<unsigned char> makeTexture(int number) {
    std::vector<unsigned char> texels;
    for (int y = 0; y < 64; ++y)
        for (int x = 0; x < 64; ++x) {
            const bool light = ((x >> 3) ^ (y >> 3)) & 1;
            texels.push_back(static_cast<unsigned char>(light ? 230 : 40 + number * 12));
            texels.push_back(static_cast<unsigned char>(light ? 200 : 220 - number * 12));
            texels.push_back(static_cast<unsigned char>(light ? 180 : 90));
        }
    return texels;
}

std::vector<Placement> placements(const Scene &scene) {
    std::vector<Placement> list;
    place(scene.root, list);
    return list;
}

} // namespace bench
