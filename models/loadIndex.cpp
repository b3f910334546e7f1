// Invariant: objects are added in the order in which the finders of their classes search, and
// `emplace` does not replace the first of a name.

#include "models/loadIndex.h"

#include "ravolt/RVMATERIAL.h"
#include "ravolt/RVNODE.h"
#include "ravolt/RVTEXTURE.h"

namespace ravolt {

namespace {

template <class Map> typename Map::mapped_type find(const Map &map, const char *name) {
    const auto found = map.find(name);
    return found == map.end() ? nullptr : found->second;
}

} // namespace

LoadIndex *LoadIndex::current = nullptr;

LoadIndex::LoadIndex() {
    for (RVTEXTURE *texture = RVTEXTURE::getFirst(); texture; texture = texture->getNext())
        add(*texture);
    for (RVMATERIAL *material = RVMATERIAL::getFirst(); material; material = material->getNext())
        add(*material);
    current = this;
}

LoadIndex::~LoadIndex() { current = nullptr; }

void LoadIndex::add(RVTEXTURE &texture) { textures.emplace(texture.getFilename(), &texture); }

void LoadIndex::add(RVMATERIAL &material) { materials.emplace(material.getName(), &material); }

void LoadIndex::addTree(RVNODE &treeRoot) {
    addNodes(treeRoot);
    root = &treeRoot;
}

void LoadIndex::addNodes(RVNODE &node) {
    nodes.emplace(node.getName(), &node);
    for (unsigned int i = 0; i < node.getNumberOfChildren(); ++i)
        addNodes(*node.getChild(i));
}

RVTEXTURE *LoadIndex::findTexture(const char *filename) const { return find(textures, filename); }

RVMATERIAL *LoadIndex::findMaterial(const char *name) {
    return current ? find(current->materials, name) : RVMATERIAL::findByName(name);
}

RVNODE *LoadIndex::findNode(RVNODE &root, const char *name) {
    return current && current->root == &root ? find(current->nodes, name)
                                             : root.findByNameInHierarchy(name);
}

} // namespace ravolt
