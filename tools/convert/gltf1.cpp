// assimp has read the file before, so it is JSON. Where it is not, the rest of the nodes stays as
// assimp has it.

#include "tools/convert/gltf1.h"

#include "tools/convert/gltfText.h"
#include "tools/convert/json.h"

#include <array>
#include <assimp/scene.h>
#include <string>

namespace ravolt::tool {

void placeGltf1Nodes(aiScene &scene, const std::filesystem::path &file) {
    const GltfText text(file);
    Json json(text.json());
    json.eachMember([&](const std::string &section) {
        if (section != "nodes")
            return json.skip();
        json.eachMember([&](const std::string &name) {
            json.eachMember([&](const std::string &key) {
                std::array<float, 3> place;
                if (key != "translation")
                    return json.skip();
                aiNode *node =
                    json.vector(place) ? scene.mRootNode->FindNode(name.c_str()) : nullptr;
                if (!node)
                    return;
                node->mTransformation.a4 = place[0];
                node->mTransformation.b4 = place[1];
                node->mTransformation.c4 = place[2];
            });
        });
    });
}

} // namespace ravolt::tool
