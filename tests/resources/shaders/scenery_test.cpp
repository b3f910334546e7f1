// The programs of particles, water and terrain against their formulas in double precision.

#include "tests/resources/shaders/programScene.h"

namespace ravolt::test {
namespace {

void light(ProgramScene &scene) {
    scene.light.ambient = {0.1, 0.15, 0.2, 1};
    scene.light.diffuse = {1.5, 1.25, 1, 1};
    scene.light.specular = {2, 1, 1.5, 1};
    scene.light.position = {2, 3, 1, 1};
}

Vec texCoordAt(int corner) {
    const Vec coords[] = {{-0.3, 0.15, 0, 1}, {1.4, 0.2, 0, 1}, {0.45, 1.7, 0, 1}};
    return coords[corner];
}

Vec sampleAt(const ProgramScene &scene, Trace &trace, int unit, Vec place) {
    return scene.sample(trace, unit, place.x, place.y);
}

// Emitter

ProgramScene particle(double size, double spin) {
    ProgramScene scene;
    scene.modelview = translation(0.3, -0.2, -4) * turn(50, {0, 1, 0, 0});
    scene.images[0] = Image::random(8, 8, 3, 0, 2);
    const Vec positions[] = {{-0.5, -0.5, 0.1, 1}, {0.5, -0.5, -0.05, 1}, {-0.5, 0.5, 0, 1}};
    const Vec texCoords[] = {{0, 0, 0, 1}, {1, 0, 0, 1}, {0, 1, 0, 1}};
    const Vec colors[] = {{1, 0.5, 0.25, 0.75}, {0.2, 0.9, 0.6, 0.5}, {0.4, 0.1, 1, 1}};
    for (int i = 0; i < 3; ++i) {
        scene.corners[i] = {positions[i], {0.1, 0.05, -0.03, 0}, colors[i], {}, {}, {}};
        scene.corners[i].texCoord[0] = texCoords[i];
        scene.corners[i].texCoord[1] = {size, spin, 0, 1};
    }
    return scene;
}

VertexResult particleVertex(const ProgramScene &scene, const Vertex &vertex) {
    const double size = vertex.texCoord[1].x;
    Matrix modelview = scale(size, size, size);
    modelview[3] = scene.modelview[3];
    const Vec place =
        turn(vertex.texCoord[1].y, {0, 0, 1, 0}) * vertex.position + xyz(vertex.normal);
    return {scene.projection * (modelview * place),
            {{"texCoord", vertex.texCoord[0]}, {"color", vertex.color}}};
}

Vec particlePixel(const ProgramScene &scene, const Varyings &in, Trace &trace) {
    return in.at("color") * sampleAt(scene, trace, 0, in.at("texCoord"));
}

// Water

VertexResult waterVertex(const ProgramScene &scene, const Vertex &vertex) {
    const Matrix toEye = normalMatrix(scene.modelview);
    const Matrix frame = {toEye * Vec{1, 0, 0, 0}, toEye * Vec{0, 0, 1, 0}, toEye * Vec{0, 1, 0, 0},
                          Vec{}};
    const Vec place = scene.modelview * vertex.position;
    const Vec clip = scene.projection * place;
    const Matrix toTexture = translation(0.5, 0.5, 0.5) * scale(0.5, 0.5, 0.5);
    VertexResult result{clip, {}};
    result.varyings["eyeVec"] = -place * frame;
    result.varyings["lightDir"] = (scene.light.position - place) * frame;
    result.varyings["position"] = toTexture * clip;
    result.varyings["time"] = {vertex.color.x};
    result.varyings["camZ"] = {affineInverse(scene.modelview)[3].y};
    result.varyings["texCoord"] = vertex.texCoord[0];
    result.varyings["shadow"] = scene.textureMatrix1 * place;
    result.varyings["clipVertex"] = place;
    return result;
}

Vec waterPixel(const ProgramScene &scene, const Varyings &in, Trace &trace) {
    const double time = in.at("time").x;
    const Vec coord = in.at("texCoord") * scene.integers.at("repeat");
    const Vec distortion = sampleAt(scene, trace, 4, coord + time * Vec{3, 1, 0, 0});
    const Vec dudv = Vec{distortion.x * 2 - 1, distortion.y * 2 - 1, 0, 0} * 0.019;
    const Vec bump = sampleAt(scene, trace, 3, coord + time * Vec{2, 3, 0, 0} + dudv);
    const Vec onScreen = in.at("position") * (1 / in.at("position").w) + dudv;
    const Vec refraction = sampleAt(scene, trace, 2, onScreen);
    const Vec reflection = sampleAt(scene, trace, 0, onScreen);

    const Vec N = normalize(bump * 2 - Vec{1, 1, 1, 0});
    const Vec L = normalize(in.at("lightDir"));
    const Vec eye = normalize(in.at("eyeVec"));
    const double side = in.at("camZ").x > 0 ? 1 : -1;
    const double fresnel = std::max(dot(eye, side * N), 0.0);
    const Vec diffuse = reflection * (1 - fresnel) + refraction * fresnel;
    Vec color = scene.light.ambient;
    const double lambert = dot(N, L);
    if (trace.above(lambert, 0, "lit")) {
        color += scene.light.diffuse * lambert * diffuse;
        color += scene.light.specular * std::pow(std::max(dot(N, normalize(L + eye)), 0.0), 60);
    }
    if (scene.shadowMap.depths.empty())
        return withW(color, 1);
    const Vec loc = in.at("shadow") + dudv * 30;
    return withW(color * scene.lightReaching(trace, loc), 1);
}

ProgramScene waterScene(double cameraHeight) {
    ProgramScene scene;
    scene.modelview = turn(15, {1, 0, 0, 0}) * translation(0.5, -cameraHeight, -1);
    light(scene);
    for (const int unit : {0, 2})
        scene.images[unit] = Image::random(8, 8, 20u + static_cast<unsigned int>(unit), 0, 2);
    scene.images[4] = Image::random(8, 8, 24, 0, 1);
    scene.images[3] = Image::random(4, 4, 23, 0, 1);
    scene.integers["repeat"] = 3;
    for (int i = 0; i < 3; ++i) {
        scene.corners[i].texCoord[0] = texCoordAt(i);
        scene.corners[i].color = {0.37, 0.9, 0.1, 0.5}; // the time, and unused values
    }
    return scene;
}

// Terrain

// The corners' weights of the blend, tangents and texture coordinates, and the maps of the grounds.
ProgramScene terrainScene(double inv) {
    ProgramScene scene;
    scene.modelview =
        translation(0.25, -0.5, -2) * turn(40, normalize({1, 1, 0.5, 0})) * scale(1.25, 0.8, 1);
    light(scene);
    for (const int unit : {0, 2, 3, 4})
        scene.images[unit] = Image::random(4, 4, 40u + static_cast<unsigned int>(unit), 0, 1);
    scene.floats["inv"] = inv;
    scene.integers = {{"repeat1", 3}, {"repeat2", 2}, {"repeat3", 4}, {"repeat4", 5}};
    const Vec weights[] = {{0.1, 0.9, 0.3, 0}, {0.7, 0.6, 0.2, 0}, {0.25, 0.35, 0.8, 0}};
    const Vec tangents[] = {{1, 0.1, 0, 0.5}, {0.8, 0.2, 0.3, 0.6}, {0.9, -0.4, 0.1, 0.7}};
    for (int i = 0; i < 3; ++i) {
        scene.corners[i].normal = weights[i];
        scene.corners[i].color = tangents[i];
        scene.corners[i].texCoord[0] = texCoordAt(i);
    }
    return scene;
}

Vec mirrored(const ProgramScene &scene, const Vertex &vertex) {
    Vec v = vertex.position;
    v.y *= scene.number("inv");
    return v;
}

VertexResult complexVertex(const ProgramScene &scene, const Vertex &vertex) {
    const Matrix toEye = normalMatrix(scene.modelview);
    const Vec color = xyz(vertex.color);
    const Matrix frame = {toEye * color, toEye * cross(color, vertex.normal), toEye * vertex.normal,
                          Vec{}};
    const Vec place = scene.modelview * vertex.position;
    const Vec drawn = scene.modelview * mirrored(scene, vertex);
    return {scene.projection * drawn,
            {{"eyeVec", -place * frame},
             {"lightDir", (scene.light.position - place) * frame},
             {"normal", vertex.normal},
             {"texCoord", vertex.texCoord[0]},
             {"clipVertex", drawn}}};
}

Vec blend(const Varyings &in, Vec a, Vec b, Vec c, Vec d) {
    const Vec n = in.at("normal");
    Vec x = a * (1 - n.z) + b * n.z;
    x = x * (1 - n.x) + c * n.x;
    return x * n.y + d * (1 - n.y);
}

// Four maps from a unit on, by the blend; each at its own tiling, shifted.
Vec ground(const ProgramScene &scene, const Varyings &in, Trace &trace, const int (&units)[4],
           Vec shift) {
    Vec maps[4];
    for (int i = 0; i < 4; ++i) {
        const int tiling = scene.integers.at("repeat" + std::to_string(i + 1));
        maps[i] = sampleAt(scene, trace, units[i], in.at("texCoord") * tiling + shift);
    }
    return blend(in, maps[0], maps[1], maps[2], maps[3]);
}

Vec complexPixel(const ProgramScene &scene, const Varyings &in, Trace &trace) {
    const int colors[] = {0, 2, 3, 4}, normals[] = {5, 6, 7, 8};
    const double parallax = ground(scene, in, trace, colors, {}).w * 0.034 - 0.004;
    const Vec eye = normalize(in.at("eyeVec"));
    const Vec shift = Vec{eye.x, eye.y, 0, 0} * parallax;
    const Vec normalGloss = ground(scene, in, trace, normals, shift);
    const Vec diff = ground(scene, in, trace, colors, shift);
    const Vec N = normalize(normalGloss * 2 - Vec{1, 1, 1, 0});
    const Vec L = normalize(in.at("lightDir"));
    Vec color = scene.light.ambient;
    const double lambert = dot(N, L);
    if (trace.above(lambert, 0, "lit")) {
        color += scene.light.diffuse * lambert * diff;
        color += scene.light.specular *
                 (std::pow(std::max(dot(N, normalize(L + eye)), 0.0), 60) * normalGloss.w);
    }
    return withW(color, 1);
}

VertexResult simpleVertex(const ProgramScene &scene, const Vertex &vertex) {
    const Vec drawn = scene.modelview * mirrored(scene, vertex);
    return {scene.projection * drawn,
            {{"normalL", normalMatrix(scene.modelview) * vertex.normal},
             {"lightDir", scene.light.position - scene.modelview * vertex.position},
             {"normal", vertex.normal},
             {"texCoord", vertex.texCoord[0]},
             {"clipVertex", drawn}}};
}

Vec simplePixel(const ProgramScene &scene, const Varyings &in, Trace &trace) {
    const Vec diff = ground(scene, in, trace, {0, 2, 3, 4}, {});
    const double facing = dot(normalize(in.at("normalL")), normalize(in.at("lightDir")));
    const double lambert = trace.above(facing, 0, "lit") ? facing : 0;
    return withW(scene.light.ambient + scene.light.diffuse * lambert * diff, 1);
}

} // namespace

class SceneryProgram : public ProgramTest {
  protected:
    static void expectTerrain(const char *vertexLabel, const char *pixelLabel, ProgramScene scene,
                              const VertexReference &vertex, const PixelReference &pixel) {
        place(scene);
        for (Vertex &corner : scene.corners)
            corner.position.y *= scene.number("inv"); // drawn where it was placed
        const std::set<std::string> both = {"lit", "not lit"};
        EXPECT_EQ(compare(vertexLabel, pixelLabel, scene, vertex, pixel).visited, both);
        compareCut(vertexLabel, pixelLabel, scene, vertex, pixel);
    }
};

TEST_F(SceneryProgram, EmitterBuildsARotatedSquareThatFacesTheCamera) {
    for (const double spin : {0.0, 25.0, 140.0}) {
        ProgramScene scene = particle(5.5, spin);
        const Vertex corners[] = {scene.corners[0], scene.corners[1], scene.corners[2]};
        place(scene); // for the projection
        std::copy(corners, corners + 3, scene.corners);
        compare("emitterShaderVS.glsl", "emitterShaderPS.glsl", scene, particleVertex,
                particlePixel);
    }
}

TEST_F(SceneryProgram, WaterMixesReflectionAndRefractionFromAboveAndBelowAndAShadowDarkensAll) {
    for (const bool shadowed : {false, true})
        for (const double cameraHeight : {1.5, -1.5}) {
            ProgramScene scene = waterScene(cameraHeight);
            std::set<std::string> branches = {"lit", "not lit"};
            if (shadowed) {
                scene.addShadowMap();
                branches.insert({"in shadow", "not in shadow"});
            }
            place(scene);
            const std::string name = shadowed ? "waterS" : "water";
            EXPECT_EQ(
                compare(name + "VS.glsl", name + "PS.glsl", scene, waterVertex, waterPixel).visited,
                branches);
            compareCut(name + "VS.glsl", name + "PS.glsl", scene, waterVertex, waterPixel);
        }
}

TEST_F(SceneryProgram, ComplexTerrainBlendsShiftsAndMirrors) {
    for (const double inv : {1.0, -1.0}) {
        ProgramScene scene = terrainScene(inv);
        for (const int unit : {5, 6, 7, 8})
            scene.images[unit] = Image::random(4, 4, 50u + static_cast<unsigned int>(unit), 0, 1);
        expectTerrain("terrainComplexVS.glsl", "terrainComplexPS.glsl", scene, complexVertex,
                      complexPixel);
    }
}

TEST_F(SceneryProgram, SimpleTerrainBlendsAndMirrors) {
    for (const double inv : {1.0, -1.0}) {
        ProgramScene scene = terrainScene(inv);
        scene.light.position = {-1, 0, -4.5, 1}; // so near that a part is turned away
        expectTerrain("terrainSimpleVS.glsl", "terrainSimplePS.glsl", scene, simpleVertex,
                      simplePixel);
    }
}

} // namespace ravolt::test
