// The engine takes row 0 of an upload for the bottom of the picture, as OpenGL does, and keeps the
// rows of a TGA file whose origin is at the bottom left as stored. Texture coordinates of the scene
// have their origin at the bottom left too. So the rows are written bottom first.

#include "tools/convert/textures.h"

#include "tools/common/failure.h"
#include "tools/convert/plainName.h"
#include "tools/writers/tgaWriter.h"

#include <algorithm>
#include <cstring>

namespace ravolt::tool {

namespace {

// Pixels for the writer: bottom row first, with alpha only if it is used.
std::vector<unsigned char> bottomUp(const Image &image, unsigned int channels) {
    std::vector<unsigned char> result;
    result.reserve(std::size_t(channels) * image.width * image.height);
    for (unsigned int row = image.height; row-- > 0;)
        for (unsigned int column = 0; column < image.width; ++column) {
            const unsigned char *pixel =
                &image.pixels[4 * (std::size_t(row) * image.width + column)];
            result.insert(result.end(), pixel, pixel + channels);
        }
    return result;
}

std::string sizeText(unsigned int width, unsigned int height) {
    return std::to_string(width) + "x" + std::to_string(height);
}

// The texture's name in messages: embedded ones have a number only.
std::string called(const std::string &path) {
    return path[0] == '*' ? "embedded texture " + path.substr(1) : "texture '" + path + "'";
}

// The last part of a path of any system, without its ending.
std::string stemOf(const std::string &path) {
    const std::size_t slash = path.find_last_of("/\\");
    const std::string name = slash == std::string::npos ? path : path.substr(slash + 1);
    const std::size_t dot = name.rfind('.');
    return dot == std::string::npos || dot == 0 ? name : name.substr(0, dot);
}

std::string nameOf(const aiTexture *embedded, const std::string &path) {
    if (path[0] != '*')
        return stemOf(path);
    const std::string own = embedded ? stemOf(embedded->mFilename.C_Str()) : "";
    return own.empty() || own[0] == '*' ? "texture" + path.substr(1) : own;
}

constexpr const char *colorEnding = "_d.tga";
constexpr const char *normalEnding = "_n.tga";

} // namespace

Textures::Textures(const aiScene &model, ModelFiles &modelFiles, const Options &settings,
                   Report &lines, FileTransaction &transaction, InputFiles &allInputs)
    : scene(model), sources(modelFiles), options(settings), report(lines), files(transaction),
      inputs(allInputs) {
    addInputs();
}

void Textures::addInputs() {
    for (unsigned int i = 0; i < scene.mNumMaterials; ++i)
        for (int type = 0; type <= AI_TEXTURE_TYPE_MAX; ++type) {
            const aiMaterial &material = *scene.mMaterials[i];
            const auto kind = static_cast<aiTextureType>(type);
            for (unsigned int k = 0; k < material.GetTextureCount(kind); ++k) {
                aiString path;
                if (material.GetTexture(kind, k, &path) == aiReturn_SUCCESS &&
                    !scene.GetEmbeddedTexture(path.C_Str()))
                    sources.texture(path.C_Str());
            }
        }
    for (const std::filesystem::path &file : sources.opened())
        inputs.add(file);
}

Image Textures::readFile(const std::string &path, std::string &reason) {
    const auto [file, outside] = sources.texture(path);
    if (file.empty()) {
        reason = outside ? "lies outside the model's folders, which --follow allows" : "not found";
        return {};
    }
    if (outside)
        report.warn(called(path) + " lies outside the model's folders: '" + file.string() +
                    "' is used in its place; --follow opens it");
    return decodeFile(file, reason);
}

Image Textures::read(const std::string &path) {
    std::string reason;
    Image image;
    if (const aiTexture *embedded = scene.GetEmbeddedTexture(path.c_str())) {
        image = decodeEmbedded(*embedded, reason);
    } else {
        image = readFile(path, reason);
    }
    if (image.empty())
        report.warn(called(path) + " " + reason + ": the material's colours are used");
    return image;
}

Image Textures::fitted(Image image, const std::string &path, bool sRgb) {
    const unsigned int side = textureSide(image.width, image.height, options.maxSide);
    if (image.width == side && image.height == side)
        return image;
    const std::string line = called(path) + " resized from " + sizeText(image.width, image.height) +
                             " to " + sizeText(side, side);
    if (side < std::max(image.width, image.height))
        report.warn(line + ": larger textures are not allowed");
    else
        report.note(line);
    return resized(image, side, side, sRgb);
}

// The file that is read and would be replaced by one of that name; empty for none.
std::string Textures::overwrittenInput(const std::string &name) const {
    for (const char *ending : {colorEnding, normalEnding})
        if (inputs.contains(options.scene.parent_path() / (name + ending)))
            return name + ending;
    return "";
}

// Names that differ by letter case only are one file on some systems.
std::string Textures::freeName(const std::string &path) {
    const std::string base =
        plainName(options.prefix + nameOf(scene.GetEmbeddedTexture(path.c_str()), path));
    std::string name = base;
    const std::string sceneName = inSmallLetters(options.scene.filename().string());
    const auto isTaken = [&](const std::string &wanted) {
        const std::string small = inSmallLetters(wanted);
        return small + colorEnding == sceneName || small + normalEnding == sceneName ||
               !overwrittenInput(wanted).empty() || !names.insert(small).second;
    };
    for (int number = 2; isTaken(name); ++number)
        name = base + "_" + std::to_string(number);
    if (const std::string taken = overwrittenInput(base); !taken.empty())
        report.warn(called(path) + " is written to '" + name + colorEnding +
                    "', as the model reads '" + taken + "'");
    return name;
}

void Textures::write(const std::string &name, const Image &image, bool withAlpha) {
    if (!options.forbidden.empty())
        throw Failure(options.forbidden);
    const unsigned int channels = withAlpha ? 4 : 3;
    const std::vector<unsigned char> pixels = bottomUp(image, channels);
    const std::filesystem::path file = options.scene.parent_path() / name;
    ravolt::TgaPicture picture;
    picture.width = image.width;
    picture.height = image.height;
    picture.channels = channels;
    picture.pixels = pixels.data();
    const std::string error =
        files.stage(file.string(), ravolt::encodeTga(picture, ravolt::TgaEncoding::runLength));
    if (!error.empty())
        throw Failure(error);
}

void Textures::applyAlphaUse(Image &image, const TextureSet &textureSet) {
    constexpr unsigned char half = 128;
    AlphaUse use = textureSet.alpha;
    if (use == AlphaUse::picture) {
        const Alpha found = alphaOf(image);
        use = found == Alpha::opaque   ? AlphaUse::opaque
              : found == Alpha::cutout ? AlphaUse::cutout
                                       : AlphaUse::blended;
        if (use == AlphaUse::cutout)
            report.note(called(textureSet.color) + ": its alpha cuts holes");
        if (use == AlphaUse::blended)
            report.note(called(textureSet.color) + ": its alpha blends");
    }
    if (use == AlphaUse::opaque)
        cutOut(image, 0);
    if (use == AlphaUse::cutout)
        cutOut(image, half);
    if (use == AlphaUse::stated && textureSet.cut)
        cutOut(image, textureSet.cut);
}

TextureFile Textures::make(const TextureSet &textureSet) {
    Image image = read(textureSet.color);
    if (image.empty())
        return {};
    image = fitted(std::move(image), textureSet.color, true);
    if (!textureSet.opacity.empty() && textureSet.opacity != textureSet.color)
        if (const Image map = read(textureSet.opacity); !map.empty())
            applyOpacity(image, map);

    applyAlphaUse(image, textureSet);
    const bool seeThrough = (!textureSet.opacity.empty() || textureSet.alpha != AlphaUse::stated) &&
                            isSeeThrough(image);
    const std::string name = freeName(textureSet.color);
    write(name + colorEnding, image, seeThrough);
    if (!textureSet.normals.empty())
        if (Image normals = read(textureSet.normals); !normals.empty())
            write(name + normalEnding, fitted(std::move(normals), textureSet.normals, false),
                  false);
    return {name + colorEnding, seeThrough};
}

TextureFile Textures::file(const TextureSet &textureSet) {
    if (textureSet.color.empty())
        return {};
    const auto known = made.find(textureSet);
    if (known != made.end())
        return known->second;
    return made[textureSet] = make(textureSet);
}

} // namespace ravolt::tool
