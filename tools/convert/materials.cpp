// Colours come from models in many conventions. What reaches the scene are colours for OpenGL's
// fixed-function light: ambient and diffuse reflection as shown on the screen, a highlight only
// if the model has one, and an opacity in `transparency`.

#include "tools/convert/materials.h"

#include <algorithm>
#include <assimp/GltfMaterial.h>
#include <assimp/material.h>
#include <cmath>
#include <cstring>
#include <set>

namespace ravolt::tool {

namespace {

// The engine blends what is not exactly opaque, which a surface whose texture has holes needs.
constexpr float nearlyOpaque = 0.999f;
constexpr float maxHighlight = 128; // OpenGL's largest exponent
constexpr float maxGlow = 16;       // values above 1 glow with bloom

using Color = ravolt::RveColor;

float limited(float value, float low, float high, float otherwise) {
    return std::isfinite(value) ? std::clamp(value, low, high) : otherwise;
}

// A colour of the material; false if it has none of that kind.
bool colorOf(const aiMaterial &material, const char *key, Color &color, float maximum = 1) {
    aiColor4D read;
    if (material.Get(key, 0, 0, read) != aiReturn_SUCCESS)
        return false;
    color = {limited(read.r, 0, maximum, 0), limited(read.g, 0, maximum, 0),
             limited(read.b, 0, maximum, 0), 1};
    return true;
}

float numberOf(const aiMaterial &material, const char *key, float otherwise) {
    float value = otherwise;
    material.Get(key, 0, 0, value);
    return std::isfinite(value) ? value : otherwise;
}

bool flagOf(const aiMaterial &material, const char *key) {
    int value = 0;
    return material.Get(key, 0, 0, value) == aiReturn_SUCCESS && value != 0;
}

bool isBlack(const Color &color) { return color[0] + color[1] + color[2] < 0.001f; }

Color scaled(const Color &color, float factor) {
    return {color[0] * factor, color[1] * factor, color[2] * factor, 1};
}

Color asShown(const Color &linear) {
    Color result = linear;
    for (int i = 0; i < 3; ++i) {
        const float c = linear[static_cast<std::size_t>(i)];
        result[static_cast<std::size_t>(i)] =
            c <= 0.0031308f ? 12.92f * c : 1.055f * std::pow(c, 1 / 2.4f) - 0.055f;
    }
    return result;
}

std::string pathOf(const aiMaterial &material, aiTextureType type) {
    aiString path;
    return material.GetTexture(type, 0, &path) == aiReturn_SUCCESS ? path.C_Str() : "";
}

std::string firstPath(const aiMaterial &material, std::initializer_list<aiTextureType> types,
                      aiTextureType *found = nullptr) {
    for (aiTextureType type : types)
        if (const std::string path = pathOf(material, type); !path.empty()) {
            if (found)
                *found = type;
            return path;
        }
    return "";
}

// The minimum alpha of solid pixels of a glTF material that masks; 0 for any other.
unsigned char cutOf(const aiMaterial &material) {
    aiString mode;
    if (material.Get(AI_MATKEY_GLTF_ALPHAMODE, mode) != aiReturn_SUCCESS ||
        std::strcmp(mode.C_Str(), "MASK") != 0)
        return 0;
    const float cut = limited(numberOf(material, "$mat.gltf.alphaCutoff", 0.5f), 0, 1, 0.5f);
    return static_cast<unsigned char>(std::max(1.0f, std::ceil(cut * 255)));
}

// Whether the format or the material states what the alpha of its picture means.
bool saysAlpha(const aiMaterial &material, const Model &model) {
    int flags = 0;
    material.Get(AI_MATKEY_TEXFLAGS(aiTextureType_DIFFUSE, 0), flags);
    return model.saysAlpha() || !pathOf(material, aiTextureType_OPACITY).empty() ||
           (flags & (aiTextureFlags_UseAlpha | aiTextureFlags_IgnoreAlpha)) != 0 ||
           numberOf(material, "$mat.opacity", 1) < 1;
}

// Whether the alpha of the material's own picture is meant as opacity.
bool usesAlpha(const aiMaterial &material) {
    aiString mode;
    if (material.Get(AI_MATKEY_GLTF_ALPHAMODE, mode) == aiReturn_SUCCESS)
        return std::strcmp(mode.C_Str(), "OPAQUE") != 0;
    int flags = 0;
    material.Get(AI_MATKEY_TEXFLAGS(aiTextureType_DIFFUSE, 0), flags);
    return (flags & aiTextureFlags_UseAlpha) != 0;
}

// A black surface with an emission map uses that map as its texture, which covers the emission too.
bool glowsWithPicture(const aiMaterial &material) {
    Color diffuse;
    return !pathOf(material, aiTextureType_EMISSIVE).empty() &&
           colorOf(material, "$clr.diffuse", diffuse) && isBlack(diffuse);
}

struct Source {
    TextureSet textureSet;
    aiTextureType type = aiTextureType_NONE; // of the colour texture
};

Source textureSetOf(const aiMaterial &material, const std::string &name, bool normalMaps,
                    Report &report) {
    Source source;
    source.textureSet.color =
        firstPath(material, {aiTextureType_DIFFUSE, aiTextureType_BASE_COLOR}, &source.type);
    if (source.textureSet.color.empty() && glowsWithPicture(material))
        source.textureSet.color = firstPath(material, {aiTextureType_EMISSIVE}, &source.type);

    source.textureSet.opacity = pathOf(material, aiTextureType_OPACITY);
    if (source.textureSet.opacity.empty() && usesAlpha(material))
        source.textureSet.opacity = source.textureSet.color;
    if (normalMaps)
        source.textureSet.normals =
            firstPath(material, {aiTextureType_NORMALS, aiTextureType_NORMAL_CAMERA});
    if (source.textureSet.color.empty() && !source.textureSet.opacity.empty())
        report.warn("material '" + name + "': opacity map without a colour texture left out");
    if (source.textureSet.color.empty() && !source.textureSet.normals.empty())
        report.warn("material '" + name + "': normal map without a colour texture left out");
    return source;
}

// What the texture mapping requests and the engine does not support.
void reportMapping(const aiMaterial &material, aiTextureType type, const std::string &name,
                   Report &report) {
    for (const char *key : {_AI_MATKEY_MAPPINGMODE_U_BASE, _AI_MATKEY_MAPPINGMODE_V_BASE}) {
        int mode = aiTextureMapMode_Wrap;
        if (material.Get(key, type, 0, mode) == aiReturn_SUCCESS && mode != aiTextureMapMode_Wrap)
            report.warn("material '" + name +
                        "': its texture is clamped or mirrored, the scene repeats it");
    }
}

// The transform of a glTF 2 texture with AssimpFault::gltf2TextureTransforms: assimp states it
// about the texture's centre with an offset for another centre. Restores the file's own offset,
// whose rows are counted downwards.
TextureTransform transformOf(const aiMaterial &material, aiTextureType type) {
    aiUVTransform stated;
    if (material.Get(AI_MATKEY_UVTRANSFORM(type, 0), stated) != aiReturn_SUCCESS)
        return {};
    const double r = -static_cast<double>(stated.mRotation);
    const double c = std::cos(r), s = std::sin(r);
    const double sx = static_cast<double>(stated.mScaling.x);
    const double sy = static_cast<double>(stated.mScaling.y);
    const double x = static_cast<double>(stated.mTranslation.x) - 0.5 * sx * (1 - c + s);
    const double y = 0.5 * sy * (s + c - 1) + 1 - sy - static_cast<double>(stated.mTranslation.y);
    // u' = c sx u + s sy v + x and v' = -s sx u + c sy v + y, both ways with 1 - v for v.
    const TextureTransform result = {c * sx, -s * sy, s * sy + x, s * sx, c * sy, 1 - c * sy - y};
    for (double value : {result.uu, result.uv, result.u, result.vu, result.vv, result.v})
        if (!std::isfinite(value))
            return {};
    return result;
}

// A texture replaces the colour if a material states none, and if an exporter wrote black.
Color diffuseOf(const aiMaterial &material, bool linear, bool covered) {
    Color diffuse = {0, 0, 0, 1};
    const bool stated =
        colorOf(material, "$clr.diffuse", diffuse) || colorOf(material, "$clr.base", diffuse);
    if (covered && isBlack(diffuse))
        return {1, 1, 1, 1};
    if (!stated)
        return {0.6f, 0.6f, 0.6f, 1};
    return linear ? asShown(diffuse) : diffuse;
}

// If an emission map states which parts glow, which a scene cannot store, nothing glows.
Color emissionOf(const aiMaterial &material, aiTextureType textureSet, bool linear) {
    Color emission = {0, 0, 0, 1};
    for (aiTextureType type : {aiTextureType_EMISSIVE, aiTextureType_EMISSION_COLOR})
        if (type != textureSet && !pathOf(material, type).empty())
            return emission;
    const bool stated = colorOf(material, "$clr.emissive", emission, maxGlow);
    return stated && linear ? asShown(emission) : emission;
}

// Metal and roughness as the nearest highlight of the fixed-function light.
Color highlightOfMetal(const aiMaterial &material, const Color &diffuse) {
    const float metal = limited(numberOf(material, "$mat.metallicFactor", 1), 0, 1, 1);
    const float rough = limited(numberOf(material, "$mat.roughnessFactor", 1), 0, 1, 1);
    Color result = {0, 0, 0, 1};
    for (std::size_t i = 0; i < 3; ++i)
        result[i] = (0.22f * (1 - metal) + diffuse[i] * metal) * (1 - rough);
    return result;
}

void setHighlight(const aiMaterial &material, bool linear, ravolt::RveMaterial &out) {
    Color specular = {0, 0, 0, 1};
    if (!colorOf(material, "$clr.specular", specular) && linear)
        specular = highlightOfMetal(material, out.diffuse);
    const float strength = limited(numberOf(material, "$mat.shinpercent", 1), 0, 1, 1);
    const float exponent = numberOf(material, "$mat.shininess", 0);
    // An exponent near 0 is no highlight: OpenGL would add the colour all over the surface.
    out.specular = exponent < 1 ? Color{0, 0, 0, 1} : scaled(specular, strength);
    out.shininess = exponent < 1 ? 0 : std::min(exponent, maxHighlight);
}

void setOpacity(const aiMaterial &material, bool seeThrough, Report &report,
                ravolt::RveMaterial &out) {
    float opacity = limited(numberOf(material, "$mat.opacity", 1), 0, 1, 1);
    if (opacity <= 0) {
        // Some exporters write the transparency instead.
        report.warn("material '" + out.name + "': opacity 0 taken as opaque");
        opacity = 1;
    }
    out.transparency = seeThrough ? std::min(opacity, nearlyOpaque) : opacity;
}

// The maps that a scene cannot store.
constexpr struct {
    aiTextureType type;
    const char *name;
} unsupportedMaps[] = {
    {aiTextureType_SPECULAR, "specular"},
    {aiTextureType_AMBIENT, "ambient"},
    {aiTextureType_HEIGHT, "height"},
    {aiTextureType_SHININESS, "shininess"},
    {aiTextureType_DISPLACEMENT, "displacement"},
    {aiTextureType_LIGHTMAP, "light"},
    {aiTextureType_REFLECTION, "reflection"},
    {aiTextureType_METALNESS, "metalness"},
    {aiTextureType_DIFFUSE_ROUGHNESS, "roughness"},
    {aiTextureType_AMBIENT_OCCLUSION, "occlusion"},
    {aiTextureType_CLEARCOAT, "clear coat"},
    {aiTextureType_SHEEN, "sheen"},
    {aiTextureType_TRANSMISSION, "transmission"},
};

void reportUnsupportedMaps(const aiMaterial &material, const Source &source, Report &report) {
    for (const auto &map : unsupportedMaps)
        if (!pathOf(material, map.type).empty())
            report.warn(std::string(map.name) + " maps left out: the scene format has none");
    for (aiTextureType type : {aiTextureType_EMISSIVE, aiTextureType_EMISSION_COLOR})
        if (!pathOf(material, type).empty() && source.type != type)
            report.warn("emission maps left out: the scene format has none");
    if (material.GetTextureCount(aiTextureType_DIFFUSE) > 1)
        report.warn("second diffuse textures left out: a material has one");
}

class Converter {
  public:
    Converter(const Model &source, const MaterialOptions &settings, Textures &store, Report &lines)
        : model(source), options(settings), textures(store), report(lines) {}

    ravolt::RveMaterial convert(const aiMaterial &material, Surface &surface);

  private:
    std::string freeName(const aiMaterial &material);

    const Model &model;
    const MaterialOptions &options;
    Textures &textures;
    Report &report;
    std::set<std::string> names;
};

// The engine knows materials by name, so every one needs its own.
std::string Converter::freeName(const aiMaterial &material) {
    aiString stated;
    material.Get(AI_MATKEY_NAME, stated);
    std::string base = options.prefix + (stated.length ? stated.C_Str() : "material");
    if (base == "[none]")
        base = "none"; // in the format it means no material
    constexpr std::size_t suffixLength = 12;
    base.resize(std::min(base.size(), ravolt::rveTextLength - suffixLength));
    std::string name = base;
    for (int number = 2; !names.insert(name).second; ++number)
        name = base + "_" + std::to_string(number);
    return name;
}

ravolt::RveMaterial Converter::convert(const aiMaterial &material, Surface &surface) {
    const bool linear = model.hasLinearColors();
    ravolt::RveMaterial out;
    out.name = surface.name = freeName(material);

    Source source = textureSetOf(material, out.name, options.normalMaps, report);
    source.textureSet.cut = cutOf(material);
    if (!saysAlpha(material, model))
        source.textureSet.alpha = options.alpha;
    const TextureFile file = textures.file(source.textureSet);
    if (!file.name.empty()) {
        out.texture = file.name;
        reportMapping(material, source.type, out.name, report);
        int channel = 0;
        if (material.Get(AI_MATKEY_UVWSRC(source.type, 0), channel) == aiReturn_SUCCESS &&
            channel >= 0 && channel < AI_MAX_NUMBER_OF_TEXTURECOORDS)
            surface.channel = static_cast<unsigned int>(channel);
        if (model.hasTextureTransforms())
            surface.texture = transformOf(material, source.type);
    }

    const bool glows = source.type == aiTextureType_EMISSIVE;
    out.diffuse = diffuseOf(material, linear, !file.name.empty() && !glows);
    if (!colorOf(material, "$clr.ambient", out.ambient) || isBlack(out.ambient))
        out.ambient = out.diffuse; // left out, or unused by the program that wrote it
    out.selfIllumination = emissionOf(material, source.type, linear);
    setHighlight(material, linear, out);
    setOpacity(material, file.seeThrough, report, out);
    surface.bothSides =
        (options.twoSided || flagOf(material, "$mat.twosided")) && out.transparency == 1;
    reportUnsupportedMaps(material, source, report);
    return out;
}

} // namespace

std::vector<Surface> convertMaterials(const Model &model, const MaterialOptions &options,
                                      Textures &textures, Report &report, Progress &progress,
                                      std::vector<ravolt::RveMaterial> &out) {
    const aiScene &scene = model.scene();
    std::vector<Surface> surfaces(scene.mNumMaterials);
    for (unsigned int i = 0; i < scene.mNumMeshes; ++i)
        if (scene.mMeshes[i]->mMaterialIndex < surfaces.size() &&
            (scene.mMeshes[i]->mPrimitiveTypes & aiPrimitiveType_TRIANGLE))
            surfaces[scene.mMeshes[i]->mMaterialIndex].used = true;

    Converter converter(model, options, textures, report);
    for (unsigned int i = 0; i < scene.mNumMaterials; ++i) {
        progress.update(static_cast<double>(i) / scene.mNumMaterials);
        if (surfaces[i].used)
            out.push_back(converter.convert(*scene.mMaterials[i], surfaces[i]));
    }
    return surfaces;
}

} // namespace ravolt::tool
