// Each triangle of different colours has a square of texels in the texture, in which they change as
// they do on the triangle, but for colours that would have to pass black or white beyond its
// longest side, which are cut; triangles of the same colours have the same one. The corners are at
// the middles of its inner texels, so that neither magnification nor the first smaller image of a
// mipmap mixes it with its neighbours.

#include "tools/convert/vertexColors.h"

#include "tools/convert/vertices.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace ravolt::tool {

namespace {

using Texel = std::array<std::uint8_t, 3>;
using Corners = std::array<Texel, 3>; // of a triangle, in the order of its square
constexpr Texel white = {255, 255, 255};

constexpr unsigned int squareSide = 4;
// Where the corners are in their square.
constexpr std::array<std::array<unsigned int, 2>, 3> cornerTexels = {{{1, 1}, {2, 1}, {1, 2}}};

float shown(float linear) {
    return linear <= 0.0031308f ? 12.92f * linear : 1.055f * std::pow(linear, 1 / 2.4f) - 0.055f;
}

std::uint8_t byteOf(float value, bool linear) {
    const float limited = std::isfinite(value) ? std::clamp(value, 0.0f, 1.0f) : 0;
    return static_cast<std::uint8_t>(std::lround(255 * (linear ? shown(limited) : limited)));
}

bool isTextured(const aiMaterial &material) {
    constexpr aiTextureType textureTypes[] = {aiTextureType_DIFFUSE, aiTextureType_BASE_COLOR,
                                              aiTextureType_EMISSIVE};
    return std::any_of(std::begin(textureTypes), std::end(textureTypes),
                       [&](aiTextureType type) { return material.GetTextureCount(type) > 0; });
}

// By how much the texel across from the first corner would pass black and white.
int excess(const Corners &corners) {
    int sum = 0;
    for (std::size_t i = 0; i < 3; ++i) {
        const int opposite = corners[1][i] + corners[2][i] - corners[0][i];
        sum += std::abs(opposite - std::clamp(opposite, 0, 255));
    }
    return sum;
}

// That one first with which the least is cut.
Corners inOrder(const Corners &sorted) {
    const auto &[a, b, c] = sorted;
    Corners best = sorted;
    for (const Corners &other : {Corners{b, a, c}, Corners{c, a, b}})
        if (excess(other) < excess(best))
            best = other;
    return best;
}

// Adds to an array of a scene.
template <class T> unsigned int add(T **&items, unsigned int &number, T *item) {
    T **const longer = new T *[number + 1];
    std::copy(items, items + number, longer);
    longer[number] = item;
    delete[] items;
    items = longer;
    return number++;
}

// The squares of a texture, by the colours of their corners.
class Atlas {
  public:
    void add(const Corners &corners) { squares.try_emplace(corners, squares.size()); }
    std::size_t size() const { return squares.size(); }

    // The smallest power of two whose square has room for all.
    unsigned int side() const {
        unsigned int result = 2 * squareSide;
        while (std::size_t(result / squareSide) * (result / squareSide) < squares.size())
            result *= 2;
        return result;
    }

    // The texture coordinates of a corner, by its index in the sorted order.
    aiVector3D texCoordOf(const Corners &corners, std::size_t corner) const {
        const unsigned int inRow = side() / squareSide;
        const auto number = static_cast<unsigned int>(squares.at(corners));
        const auto texels = static_cast<float>(side());
        const auto middle = [](unsigned int texel) { return static_cast<float>(texel) + 0.5f; };
        return {middle(number % inRow * squareSide + cornerTexels[corner][0]) / texels,
                1 - middle(number / inRow * squareSide + cornerTexels[corner][1]) / texels, 0};
    }

    aiTexture *texture() const {
        auto *const result = new aiTexture;
        result->mWidth = result->mHeight = side();
        result->pcData = new aiTexel[std::size_t(side()) * side()]();
        for (const auto &[corners, number] : squares)
            paint(*result, corners, static_cast<unsigned int>(number));
        return result;
    }

  private:
    void paint(aiTexture &texture, const Corners &corners, unsigned int number) const {
        const unsigned int inRow = side() / squareSide;
        for (unsigned int y = 0; y < squareSide; ++y)
            for (unsigned int x = 0; x < squareSide; ++x) {
                const auto channel = [&](std::size_t i) {
                    const int first = corners[0][i];
                    const int value = first + (static_cast<int>(x) - 1) * (corners[1][i] - first) +
                                      (static_cast<int>(y) - 1) * (corners[2][i] - first);
                    return static_cast<unsigned char>(std::clamp(value, 0, 255));
                };
                aiTexel &texel =
                    texture.pcData[std::size_t(number / inRow * squareSide + y) * texture.mWidth +
                                   number % inRow * squareSide + x];
                texel.r = channel(0);
                texel.g = channel(1);
                texel.b = channel(2);
                texel.a = 255;
            }
    }

    std::map<Corners, std::size_t> squares;
};

class Baker {
  public:
    Baker(aiScene &model, const VertexColorOptions &settings) : scene(model), options(settings) {}

    void run(Report &report) {
        sortMeshes();
        for (const auto &[key, meshes] : plain)
            paint(key.first, key.second, meshes);
        for (const auto &[material, meshes] : varied)
            bake(material, meshes);
        if (covered)
            report.warn("vertex colours of " + counted(covered, "mesh", "meshes") +
                        " with textures left out");
        if (tooMany)
            report.warn("vertex colours of " + counted(tooMany, "mesh", "meshes") +
                        " left out: too many for a texture of " +
                        std::to_string(options.largestSide) + " pixels a side");
    }

  private:
    using Meshes = std::vector<aiMesh *>;

    Texel texelOf(const aiMesh &mesh, unsigned int vertex) const {
        const aiColor4D &color = mesh.mColors[0][vertex];
        return {byteOf(color.r, options.linear), byteOf(color.g, options.linear),
                byteOf(color.b, options.linear)};
    }

    template <class Visit> static void eachTriangle(const aiMesh &mesh, const Visit &visit) {
        for (unsigned int i = 0; i < mesh.mNumFaces; ++i)
            if (isTriangle(mesh.mFaces[i]))
                visit(mesh.mFaces[i]);
    }

    Corners cornersOf(const aiMesh &mesh, const aiFace &face) const {
        Corners corners = {texelOf(mesh, face.mIndices[0]), texelOf(mesh, face.mIndices[1]),
                           texelOf(mesh, face.mIndices[2])};
        std::sort(corners.begin(), corners.end());
        return inOrder(corners);
    }

    // White alone has no meaning: programs write it for meshes without painted colours.
    void sortMeshes() {
        for (unsigned int i = 0; i < scene.mNumMeshes; ++i) {
            aiMesh &mesh = *scene.mMeshes[i];
            if (!mesh.HasVertexColors(0) || mesh.mMaterialIndex >= scene.mNumMaterials)
                continue;
            std::vector<Texel> colors; // the first two
            eachTriangle(mesh, [&](const aiFace &face) {
                for (const Texel &color : cornersOf(mesh, face))
                    if (colors.size() < 2 && (colors.empty() || colors[0] != color))
                        colors.push_back(color);
            });
            if (colors.empty() || (colors.size() == 1 && colors[0] == white))
                continue;
            if (isTextured(*scene.mMaterials[mesh.mMaterialIndex]))
                ++covered;
            else if (colors.size() == 1)
                plain[{mesh.mMaterialIndex, colors[0]}].push_back(&mesh);
            else
                varied[mesh.mMaterialIndex].push_back(&mesh);
        }
    }

    // A material like that one, for these meshes alone.
    aiMaterial &copyFor(unsigned int material, const Meshes &meshes) {
        auto *const copy = new aiMaterial;
        aiMaterial::CopyPropertyList(copy, scene.mMaterials[material]);
        const unsigned int number = add(scene.mMaterials, scene.mNumMaterials, copy);
        for (aiMesh *mesh : meshes)
            mesh->mMaterialIndex = number;
        return *copy;
    }

    // In place of the material's own; its ambient colour then follows from that.
    static void setDiffuse(aiMaterial &material, const aiColor4D &color) {
        material.AddProperty(&color, 1, AI_MATKEY_COLOR_DIFFUSE);
        material.RemoveProperty(AI_MATKEY_COLOR_AMBIENT);
    }

    void paint(unsigned int from, const Texel &texel, const Meshes &meshes) {
        aiMaterial &material = copyFor(from, meshes);
        aiColor4D color(static_cast<float>(texel[0]) / 255, static_cast<float>(texel[1]) / 255,
                        static_cast<float>(texel[2]) / 255, 1);
        if (!options.linear)
            return setDiffuse(material, color);
        color = meshes[0]->mColors[0][meshes[0]->mFaces[0].mIndices[0]]; // as it is stated
        for (const char *key : {"$clr.diffuse", "$clr.base"}) {
            aiColor4D own;
            if (material.Get(key, 0, 0, own) != aiReturn_SUCCESS)
                continue;
            const aiColor4D product(own.r * color.r, own.g * color.g, own.b * color.b, own.a);
            material.AddProperty(&product, 1, key, 0, 0);
        }
    }

    void bake(unsigned int from, const Meshes &meshes) {
        Atlas atlas;
        for (const aiMesh *mesh : meshes)
            eachTriangle(*mesh, [&](const aiFace &face) { atlas.add(cornersOf(*mesh, face)); });
        if (atlas.side() > options.largestSide) {
            tooMany += meshes.size();
            return;
        }
        aiTexture *const texture = atlas.texture();
        const unsigned int number = add(scene.mTextures, scene.mNumTextures, texture);
        texture->mFilename = "vertex_colors_" + std::to_string(number + 1);
        aiMaterial &material = copyFor(from, meshes);
        const aiString path("*" + std::to_string(number));
        material.AddProperty(&path, AI_MATKEY_TEXTURE_DIFFUSE(0));
        if (!options.linear)
            setDiffuse(material, aiColor4D(1, 1, 1, 1));
        for (aiMesh *mesh : meshes)
            setCoordinates(*mesh, atlas);
    }

    // Corners of equal colours have these texels in the order of the corners.
    void setCoordinates(aiMesh &mesh, const Atlas &atlas) const {
        separateCorners(mesh);
        for (aiVector3D *&channel : mesh.mTextureCoords)
            delete[] std::exchange(channel, nullptr);
        mesh.mTextureCoords[0] = new aiVector3D[mesh.mNumVertices];
        mesh.mNumUVComponents[0] = 2;
        eachTriangle(mesh, [&](const aiFace &face) {
            const Corners corners = cornersOf(mesh, face);
            const bool plainOne = corners[0] == corners[1] && corners[0] == corners[2];
            std::array<bool, 3> taken = {};
            for (int k = 0; k < 3; ++k) {
                const unsigned int vertex = face.mIndices[k];
                std::size_t corner = 0;
                while (!plainOne && (taken[corner] || corners[corner] != texelOf(mesh, vertex)))
                    ++corner;
                taken[corner] = true;
                mesh.mTextureCoords[0][vertex] = atlas.texCoordOf(corners, corner);
            }
        });
    }

    aiScene &scene;
    const VertexColorOptions &options;
    std::map<std::pair<unsigned int, Texel>, Meshes> plain; // by material and colour
    std::map<unsigned int, Meshes> varied;                  // by material
    std::size_t covered = 0, tooMany = 0;
};

} // namespace

void bakeVertexColors(aiScene &scene, const VertexColorOptions &options, Report &report) {
    Baker(scene, options).run(report);
}

} // namespace ravolt::tool
