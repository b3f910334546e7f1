#include "tools/convert/gltf1.h"

#include "tools/convert/gltfText.h"

#include <algorithm>
#include <assimp/scene.h>
#include <nlohmann/json.hpp>

namespace ravolt::tool {

namespace {

using Json = nlohmann::json;

void setTranslation(aiNode &node, const Json &translation) {
    const bool isVector = translation.is_array() && translation.size() == 3 &&
                          std::all_of(translation.begin(), translation.end(),
                                      [](const Json &number) { return number.is_number(); });
    if (!isVector)
        return;
    node.mTransformation.a4 = translation[0].get<float>();
    node.mTransformation.b4 = translation[1].get<float>();
    node.mTransformation.c4 = translation[2].get<float>();
}

} // namespace

void restoreGltf1Translations(aiScene &scene, const std::filesystem::path &file) {
    const Json document = Json::parse(GltfText(file).json(), nullptr, false);
    const auto nodes = document.find("nodes");
    if (nodes == document.end() || !nodes->is_object())
        return;
    for (const auto &[name, stated] : nodes->items())
        if (aiNode *node = scene.mRootNode->FindNode(name.c_str()))
            if (const auto translation = stated.find("translation"); translation != stated.end())
                setTranslation(*node, *translation);
}

} // namespace ravolt::tool
