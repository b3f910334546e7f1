#pragma once

// Textures, materials and nodes by their names while a scene file is loaded. A file may name tens
// of thousands of them, and a search of the registries or the tree for each name would take
// quadratic time.

#include <string_view>
#include <unordered_map>

class RVMATERIAL;
class RVNODE;
class RVTEXTURE;

namespace ravolt {

// The finders return what the finders of the classes return: the first match in order of creation,
// or for nodes in depth-first order. The static ones use the current index, if there is one, and
// otherwise the finders of the classes. While an index exists no name may change, and nothing in it
// may be deleted before the last search. There is at most one index at a time.
class LoadIndex {
  public:
    // Adds all registered textures and materials.
    LoadIndex();
    ~LoadIndex();
    LoadIndex(const LoadIndex &) = delete;
    LoadIndex &operator=(const LoadIndex &) = delete;

    // To be called for each new object once it has its name.
    void add(RVTEXTURE &texture);
    void add(RVMATERIAL &material);
    // Adds the finished tree.
    void addTree(RVNODE &treeRoot);

    RVTEXTURE *findTexture(const char *filename) const;
    static RVMATERIAL *findMaterial(const char *name);
    // Searches `root` and all nodes below it.
    static RVNODE *findNode(RVNODE &root, const char *name);

  private:
    void addNodes(RVNODE &node);

    // The keys point to the names in the objects.
    template <class T> using ByName = std::unordered_map<std::string_view, T *>;

    ByName<RVTEXTURE> textures;
    ByName<RVMATERIAL> materials;
    ByName<RVNODE> nodes;
    const RVNODE *root = nullptr;

    static LoadIndex *current;
};

} // namespace ravolt
