#pragma once

// Textures, materials and nodes by their names while a scene file is loaded. A file may name tens
// of thousands of them, and to walk the registries or the tree for each name would take the square
// of that.

#include <string_view>
#include <unordered_map>

class RVMATERIAL;
class RVNODE;
class RVTEXTURE;

namespace ravolt {

// The finders give what the classes' own ones give: the first match in order of creation, or for
// nodes in order of the walk. They use the index that lives, for what it has taken in, and the
// classes' own finders otherwise. No name may change while an index lives, and nothing in it may be
// deleted before the last look-up. One lives at a time.
class LoadIndex {
  public:
    // Takes in all textures and materials that there are.
    LoadIndex();
    ~LoadIndex();
    LoadIndex(const LoadIndex &) = delete;
    LoadIndex &operator=(const LoadIndex &) = delete;

    // Each new one, once it has its name.
    void add(RVTEXTURE &texture);
    void add(RVMATERIAL &material);
    // The finished tree.
    void addTree(RVNODE &treeRoot);

    static RVTEXTURE *findTexture(const char *filename);
    static RVMATERIAL *findMaterial(const char *name);
    // Anywhere under `root`, itself included.
    static RVNODE *findNode(RVNODE &root, const char *name);

  private:
    void addNodes(RVNODE &node);

    // The keys are the objects' own texts.
    template <class T> using ByName = std::unordered_map<std::string_view, T *>;

    ByName<RVTEXTURE> textures;
    ByName<RVMATERIAL> materials;
    ByName<RVNODE> nodes;
    const RVNODE *root = nullptr;

    static LoadIndex *current;
};

} // namespace ravolt
