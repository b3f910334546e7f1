// The sixteen lighting programs against their formulas in double precision.

#include "tests/resources/shaders/programScene.h"

#include <ostream>

namespace ravolt::test {
namespace {

enum class Kind { direct, omni, spot };

// The suffix of "pplVS" and "pplPS".
class Variant {
  public:
    explicit Variant(const char *suffix)
        : name(suffix), kind(name.starts_with("direct") ? Kind::direct
                             : name.starts_with("omni") ? Kind::omni
                                                        : Kind::spot),
          textured(has('T')), shadowed(has('S')), skinned(has('A')),
          skinnedLight(kind == Kind::spot && skinned && name != "spotA") {}

    std::string name;
    Kind kind;
    bool textured, shadowed, skinned;
    bool skinnedLight; // the light terms take the skinned vertex

  private:
    bool has(char letter) const { return name.find(letter) != std::string::npos; }
};

void PrintTo(const Variant &variant, std::ostream *out) { *out << variant.name; }

VertexResult vertexStage(const Variant &variant, const ProgramScene &scene, const Vertex &vertex) {
    const Material &material = scene.material;
    const Light &light = scene.light;
    VertexResult result;
    Varyings &out = result.varyings;
    const Matrix skin = variant.skinned ? scene.skinning(vertex) : identity;
    const Vec position = skin * vertex.position;
    out["ambient"] = material.ambient * light.ambient;
    out["ambientGlobal"] = withW(scene.lightModelAmbient, 0) * material.ambient + material.emission;
    out["diffuse"] = material.diffuse * light.diffuse;
    out["normal"] = normalize(normalMatrix(scene.modelview) * xyz(skin * xyz(vertex.normal)));
    if (variant.kind == Kind::direct) {
        out["LPos"] = normalize(light.position);
        out["halfVector"] = normalize(normalize(light.position) + Vec{0, 0, 1, 0});
    } else {
        const Vec lit = scene.modelview * (variant.skinnedLight ? position : vertex.position);
        out["TPos"] = xyz(lit);
        out["LPos"] = xyz(light.position);
        out["shadow"] = scene.textureMatrix1 * lit;
    }
    out["texCoord"] = vertex.texCoord[0];
    result.position = scene.projection * (scene.modelview * position);
    return result;
}

Vec specularTerm(const ProgramScene &scene, double NdotHV) {
    return scene.material.specular * scene.light.specular *
           std::pow(NdotHV, scene.material.shininess);
}

// The highlight's cosine; a pixel that faces away from the light has none.
double highlight(Vec n, Vec halfway, bool lit, Trace &trace) {
    const double NdotHV = dot(n, halfway);
    if (lit)
        return trace.above(NdotHV, 0, "highlight") ? NdotHV : 0;
    if (NdotHV > 0.3)
        trace.visited.insert("highlight suppressed");
    return 0;
}

Vec directColor(const ProgramScene &scene, const Varyings &in, Trace &trace) {
    const Vec n = normalize(in.at("normal"));
    const double NdotL = dot(n, normalize(in.at("LPos")));
    Vec color = in.at("ambientGlobal") + in.at("ambient");
    const bool lit = trace.above(NdotL, 0, "lit");
    const double NdotHV = highlight(n, normalize(in.at("halfVector")), lit, trace);
    if (lit) {
        color += in.at("diffuse") * NdotL;
        color += specularTerm(scene, NdotHV);
    }
    return color;
}

double attenuationSum(const Light &light, double distance) {
    return light.constant + light.linear * distance + light.quadratic * distance * distance;
}

Vec omniColor(const ProgramScene &scene, const Varyings &in, Trace &trace) {
    const Vec n = normalize(in.at("normal"));
    const Vec aux = in.at("LPos") - in.at("TPos");
    const Vec reflected = normalize(normalize(-in.at("TPos")) + normalize(aux));
    const double att = 1 / attenuationSum(scene.light, length(aux));
    const double NdotL = dot(n, normalize(aux));
    Vec color = in.at("ambientGlobal") + att * in.at("ambient");
    const bool lit = trace.above(NdotL, 0, "lit");
    const double NdotHV = highlight(n, reflected, lit, trace);
    if (lit) {
        color += att * (in.at("diffuse") * NdotL);
        color += att * specularTerm(scene, NdotHV);
    }
    return color;
}

// What the cone adds; nothing for a pixel that faces away.
Vec coneColor(const ProgramScene &scene, const Varyings &in, Trace &trace) {
    const Vec n = normalize(in.at("normal"));
    const Vec aux = in.at("LPos") - in.at("TPos");
    const Vec direction = normalize(aux);
    const double NdotL = dot(n, direction);
    if (!trace.above(NdotL, 0, "lit"))
        return {};
    double spotEffect = dot(normalize(scene.light.spotDirection), -direction);
    if (!trace.above(spotEffect, std::cos(radians(scene.light.cutoff)), "inside the cone"))
        return {};
    spotEffect = std::pow(spotEffect, scene.light.exponent);
    const double satt = spotEffect / attenuationSum(scene.light, length(aux));
    const Vec reflected = normalize(normalize(-in.at("TPos")) + direction);
    return satt * (in.at("diffuse") * NdotL + in.at("ambient")) +
           satt * specularTerm(scene, highlight(n, reflected, true, trace));
}

Vec pixelStage(const Variant &variant, const ProgramScene &scene, const Varyings &in,
               Trace &trace) {
    Vec texel{1, 1, 1, 1};
    if (variant.textured)
        texel = scene.sample(trace, 0, in.at("texCoord").x, in.at("texCoord").y);
    if (variant.kind == Kind::direct)
        return directColor(scene, in, trace) * texel;
    if (variant.kind == Kind::omni)
        return omniColor(scene, in, trace) * texel;
    const Vec ambient = in.at("ambient") + in.at("ambientGlobal");
    if (!variant.shadowed)
        return (ambient + coneColor(scene, in, trace)) * texel;
    const double sum = scene.lightReaching(trace, in.at("shadow"));
    Vec color = coneColor(scene, in, trace);
    if (sum == 0.25 && color.w > 0)
        trace.visited.insert("reached by a quarter");
    if (!trace.above(sum, 0.1, color.w > 0 ? "reached" : "reached outside the cone"))
        color = {};
    // A depth texture read as luminance has an alpha of 1, with any result of the comparison.
    return ambient * texel + Vec{sum, sum, sum, 1} * texel * color;
}

void addBones(ProgramScene &scene) {
    for (int i = 0; i < 100; ++i) {
        const double half = 0.05 + 0.004 * i;
        const Vec axis = normalize({1, 0.3 * (i % 5), -0.5 * (i % 3), 0});
        scene.boneQuat.push_back(withW(axis * std::sin(half), std::cos(half)));
        scene.boneTrans.push_back({0.03 * (i % 7), -0.02 * (i % 11), 0.01 * (i % 13), 0});
    }
    const Vec indices[] = {{0, 17, 42, 99}, {3, 3, 64, 1}, {98, 5, 33, 70}};
    const Vec weights[] = {{0.4, 0.3, 0.2, 0.1}, {0.25, 0.25, 0.25, 0.25}, {0.7, 0.1, 0.15, 0.05}};
    for (int i = 0; i < 3; ++i) {
        scene.corners[i].boneIndex = indices[i];
        scene.corners[i].boneWeight = weights[i];
    }
}

ProgramScene sceneFor(const Variant &variant) {
    ProgramScene scene;
    scene.modelview =
        translation(0.5, -1, -3) * turn(35, normalize({1, 2, -1, 0})) * scale(1.25, 0.75, 1.5);
    scene.material = {{0.3, 0.4, 0.5, 0.75},
                      {0.9, 0.8, 0.7, 0.75},
                      {1, 0.5, 0.75, 0.75},
                      {0.05, 0.1, 0.02, 0.75},
                      2.5};
    scene.lightModelAmbient = {0.2, 0.1, 0.3, 0.8};
    scene.light.ambient = {0.5, 0.25, 0.4, 0.9};
    scene.light.diffuse = {2, 1.5, 1, 0.8};
    scene.light.specular = {1, 2, 1.5, 0.7};
    if (variant.kind == Kind::direct) {
        scene.light.position = {1, 2, -1, 0};
    } else {
        scene.light.position = {-6, -1.5, -5, 1};
        scene.light.constant = 0.5;
        scene.light.linear = 0.125;
        scene.light.quadratic = 0.03125;
    }
    if (variant.kind == Kind::spot) {
        scene.light.position = {-1.5, 5.5, -10, 1};
        scene.light.spotDirection = {-1.5, -1, 1, 0};
        scene.light.cutoff = 50;
        scene.light.exponent = 3;
    }
    if (variant.textured)
        scene.images[0] = Image::random(8, 4, 7, 0.1, 1.5);
    if (variant.shadowed)
        scene.addShadowMap();
    const Vec texCoords[] = {{-0.3, 0.1, 0, 1}, {1.7, 0.2, 0, 1}, {0.4, 2.3, 0, 1}};
    for (int i = 0; i < 3; ++i)
        scene.corners[i].texCoord[0] = texCoords[i];
    if (variant.skinned)
        addBones(scene);
    return scene;
}

// Normals that look at the light, away from it and past it, as the eye sees them.
void setNormals(ProgramScene &scene) {
    const Vec seen[] = {{0.2, 0.3, 0.9, 0}, {0.4, 0.5, 0.6, 0}, {-0.8, 0.4, -0.65, 0}};
    Matrix toEye = normalMatrix(scene.modelview);
    toEye[3] = identity[3];
    for (int i = 0; i < 3; ++i) {
        Vertex &corner = scene.corners[i];
        corner.normal = affineInverse(toEye) * seen[i];
        if (!scene.boneQuat.empty())
            corner.normal = affineInverse(scene.skinning(corner)) * corner.normal;
        corner.normal = corner.normal * 1.5; // the programs normalise
    }
}

} // namespace

class LightingProgram : public ProgramTest, public testing::WithParamInterface<Variant> {};

TEST_P(LightingProgram, ComputesItsFormula) {
    const Variant &variant = GetParam();
    ProgramScene scene = sceneFor(variant);
    place(scene);
    setNormals(scene);
    const Comparison result = compare(
        "pplVS" + variant.name + ".glsl", "pplPS" + variant.name + ".glsl", scene,
        [&](const ProgramScene &s, const Vertex &v) { return vertexStage(variant, s, v); },
        [&](const ProgramScene &s, const Varyings &in, Trace &trace) {
            return pixelStage(variant, s, in, trace);
        });
    std::set<std::string> branches = {"lit", "not lit", "highlight", "not highlight"};
    if (variant.kind == Kind::spot)
        branches.insert({"inside the cone", "not inside the cone"});
    else
        branches.insert("highlight suppressed");
    if (variant.shadowed)
        branches.insert({"reached by a quarter", "in shadow", "not in shadow", "reached",
                         "not reached", "reached outside the cone",
                         "not reached outside the cone"});
    EXPECT_EQ(result.visited, branches);
}

INSTANTIATE_TEST_SUITE_P(All, LightingProgram,
                         testing::Values("direct", "omni", "spot", "directA", "omniA", "spotA",
                                         "directT", "omniT", "spotT", "directTA", "omniTA",
                                         "spotTA", "spotS", "spotSA", "spotTS", "spotTSA"),
                         [](const auto &each) { return each.param.name; });

} // namespace ravolt::test
